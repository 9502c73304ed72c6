// Caller-name protection as SpringBoard drives it: whenever the call status
// changes, decide whether the in-call screen may show the caller's name and
// start or stop the in-call matching.
#pragma once

namespace kv::core {

// "TUCallCenterCallStatusChangedNotification".
void callStatusChanged();

// A match during a call showed the caller's name (set by the in-call matcher).
void noteNamesShownDuringCall();

}  // namespace kv::core
