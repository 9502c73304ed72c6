// The session: whether a successful authentication keeps protected items
// unlocked until the device is next unlocked.
#pragma once

namespace kv::base {

// The process-wide session flag (set on success, cleared on device unlock).
bool& sessionUnlocked();

}  // namespace kv::base
