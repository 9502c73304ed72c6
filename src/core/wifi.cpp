// The Wi-Fi framework's private functions.
#include "core/wifi.h"

namespace kv::core {

namespace {
WiFiNetworkGetPropertyFn gGetProperty = nullptr;
WiFiNetworkCopyPasswordFn gCopyPassword = nullptr;
}  // namespace

void resolveWiFiFunctions() {
  gGetProperty = platform::symbolNamed<WiFiNetworkGetPropertyFn>("WiFiNetworkGetProperty");
  gCopyPassword = platform::symbolNamed<WiFiNetworkCopyPasswordFn>("WiFiNetworkCopyPassword");
}

WiFiNetworkGetPropertyFn wifiNetworkGetProperty() {
  return gGetProperty;
}
WiFiNetworkCopyPasswordFn wifiNetworkCopyPassword() {
  return gCopyPassword;
}

}  // namespace kv::core
