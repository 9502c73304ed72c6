// The Wi-Fi framework's private functions.
#include "core/wifi.h"

#include <dlfcn.h>

namespace kv::core {

namespace {
WiFiNetworkGetPropertyFn gGetProperty = nullptr;
WiFiNetworkCopyPasswordFn gCopyPassword = nullptr;
}  // namespace

void resolveWiFiFunctions() {
  gGetProperty =
      reinterpret_cast<WiFiNetworkGetPropertyFn>(dlsym(RTLD_DEFAULT, "WiFiNetworkGetProperty"));
  gCopyPassword =
      reinterpret_cast<WiFiNetworkCopyPasswordFn>(dlsym(RTLD_DEFAULT, "WiFiNetworkCopyPassword"));
}

WiFiNetworkGetPropertyFn wifiNetworkGetProperty() {
  return gGetProperty;
}
WiFiNetworkCopyPasswordFn wifiNetworkCopyPassword() {
  return gCopyPassword;
}

}  // namespace kv::core
