// The platform's private functions that the library looks up by name. Each
// is built into a library of its own (KV_PROVIDE names which), so that a
// scenario can leave any one of them off the device.
#include <string>

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"

namespace kv::sim::host {
void logEvent(const std::string& kind, const std::string& details);
}  // namespace kv::sim::host

using kv::platform::Sel;

// A Wi-Fi network is a dictionary: "SSID_STR", "BSSID" and, when the device
// knows it, "password".
extern "C" {

#if defined(KV_PROVIDE_WiFiNetworkGetProperty)
CFTypeRef WiFiNetworkGetProperty(CFTypeRef network, CFStringRef property) {
  id value = kv::platform::objectForKey(kv::platform::ns(network),
                                        kv::platform::toString(kv::platform::ns(property)).c_str());
  return value;  // not retained: a get, not a copy
}
#endif

#if defined(KV_PROVIDE_WiFiNetworkCopyPassword)
CFStringRef WiFiNetworkCopyPassword(CFTypeRef network) {
  id password = kv::platform::objectForKey(kv::platform::ns(network), "password");
  kv::sim::host::logEvent(
      "wifi", "password copied for " + kv::platform::toString(kv::platform::objectForKey(
                                           kv::platform::ns(network), "SSID_STR")));
  return kv::platform::cf(kv::platform::Retained(password).take());
}
#endif

#if defined(KV_PROVIDE_FigVibratorInitialize)
void FigVibratorInitialize(void) {
  kv::sim::host::logEvent("vibrator", "initialized");
}
#endif

#if defined(KV_PROVIDE_FigVibratorPlayVibrationWithDictionary)
// Logged with its two further arguments, which callers pass as zero.
void FigVibratorPlayVibrationWithDictionary(CFDictionaryRef pattern, int first, int second) {
  kv::sim::host::logEvent("vibrator",
                          "vibrate " + kv::platform::valueOf(kv::platform::ns(pattern)).describe() +
                              " arguments " + std::to_string(first) + " " + std::to_string(second));
}
#endif

}  // extern "C"
