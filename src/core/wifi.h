// The Wi-Fi framework's private functions, resolved by name at start-up;
// either may be absent.
#pragma once

#include "platform/functions.h"

namespace kv::core {

using WiFiNetworkGetPropertyFn = CFTypeRef (*)(CFTypeRef network, CFStringRef property);
using WiFiNetworkCopyPasswordFn = CFStringRef (*)(CFTypeRef network);

// Looks both functions up through the default symbol search.
void resolveWiFiFunctions();

// The functions found (nullptr when absent).
WiFiNetworkGetPropertyFn wifiNetworkGetProperty();
WiFiNetworkCopyPasswordFn wifiNetworkCopyPassword();

}  // namespace kv::core
