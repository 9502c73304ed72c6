// The session flag.
#include "base/session.h"

namespace kv::base {

bool& sessionUnlocked() {
  static bool unlocked = false;
  return unlocked;
}

}  // namespace kv::base
