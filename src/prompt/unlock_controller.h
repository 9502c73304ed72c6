// KavelinUnlockController: SpringBoard matches a finger on the lock screen
// of a device without passcode (the system itself does not match then) and
// unlocks it on a match.
#pragma once

namespace kv::prompt {

// Registers KavelinUnlockController with the runtime (once).
void defineUnlockController();

}  // namespace kv::prompt
