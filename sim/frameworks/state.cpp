// C++ state of simulated platform objects.
#include "sim/frameworks/state.h"

#include "platform/runtime.h"

namespace kv::sim::frameworks {

std::vector<std::function<void(id)>>& stateForgetters() {
  static auto* list = new std::vector<std::function<void(id)>>();
  return *list;
}

void forgetState(id obj) {
  for (auto& forget : stateForgetters()) forget(obj);
}

void forgettingDealloc(id self, SEL cmd) {
  forgetState(self);
  platform::sendSuper<void>(platform::classNamed("NSObject"), self, cmd);
}

id autoreleasedNew(id cls) {
  using platform::Sel;
  using platform::send;
  return send<id>(send<id>(send<id>(cls, Sel("alloc")), Sel("init")), Sel("autorelease"));
}

}  // namespace kv::sim::frameworks
