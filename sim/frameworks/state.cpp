// C++ state of simulated platform objects.
#include "sim/frameworks/state.h"

namespace kv::sim::frameworks {

std::vector<std::function<void(id)>>& stateForgetters() {
  static auto* list = new std::vector<std::function<void(id)>>();
  return *list;
}

void forgetState(id obj) {
  for (auto& forget : stateForgetters()) forget(obj);
}

}  // namespace kv::sim::frameworks
