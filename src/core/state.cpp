// The coordinator's process-wide state.
#include "core/state.h"

namespace kv::core {

CoordinatorState& state() {
  // Never destroyed: it holds platform objects that must not be released
  // after the runtime has gone at exit.
  static auto* s = new CoordinatorState();
  return *s;
}

}  // namespace kv::core
