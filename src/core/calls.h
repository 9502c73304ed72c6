// Caller-name protection as SpringBoard drives it: whenever the call status
// changes, decide whether the in-call screen may show the caller's name and
// start or stop the in-call matching.
#pragma once

namespace kv::core {

// "TUCallCenterCallStatusChangedNotification".
void callStatusChanged();

}  // namespace kv::core
