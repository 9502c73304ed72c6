// C++ state of simulated platform objects, dropped when the object goes.
#include "sim/frameworks/state.h"

#include <cstdio>
#include <cstdlib>
#include <unordered_set>
#include <vector>

#include "platform/hook.h"
#include "platform/runtime.h"
#include "sim/host/classes.h"

namespace kv::sim::frameworks {

namespace {

std::vector<std::function<void(id)>>& forgetters() {
  static auto* list = new std::vector<std::function<void(id)>>();
  return *list;
}

// The objects that hold state in any table: a deallocation looks here first,
// so that the many objects without state cost one lookup.
std::unordered_set<id>& holders() {
  static auto* set = new std::unordered_set<id>();
  return *set;
}

// Every -dealloc ends in NSObject's: the object's state goes with it, after
// its own class's -dealloc (which may still read it) has run.
void objectDealloc(id self, SEL cmd) {
  if (holders().erase(self) != 0) {
    for (auto& forget : forgetters()) forget(self);
  }
  platform::Hook<&objectDealloc>::original(self, cmd);
}

const platform::Row kRows[] = {
    platform::replaced<&objectDealloc>("NSObject", "-dealloc"),
};

}  // namespace

void addStateTable(std::function<void(id)> forget) {
  if (forgetters().empty()) {
    // Without it a new object could inherit a freed one's state: fatal.
    for (const auto& record : platform::installRows(kRows)) {
      if (record.status == platform::InstallStatus::kInstalled) continue;
      std::fprintf(stderr, "simulated state: %s\n", platform::describe(record).c_str());
      std::abort();
    }
    // Subclasses that were messaged already keep copies of NSObject's -dealloc.
    host::refreshDispatchTables(platform::classNamed("NSObject"));
  }
  forgetters().push_back(std::move(forget));
}

void noteStateHolder(id obj) {
  holders().insert(obj);
}

id autoreleasedNew(id cls) {
  using platform::Sel;
  using platform::send;
  return send<id>(send<id>(send<id>(cls, Sel("alloc")), Sel("init")), Sel("autorelease"));
}

}  // namespace kv::sim::frameworks
