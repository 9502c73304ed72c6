// The session flag.
#include "core/session.h"

namespace kv::core {

bool& sessionUnlocked() {
  static bool unlocked = false;
  return unlocked;
}

}  // namespace kv::core
