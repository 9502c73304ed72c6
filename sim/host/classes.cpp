// Defines Objective-C classes at run time for the simulated frameworks.
#include "sim/host/classes.h"

#include "platform/runtime.h"

// GCC's runtime: rebuilds the dispatch tables of a class and its subclasses.
extern "C" void __objc_update_dispatch_table_for_class(Class cls);

namespace kv::sim::host {

ClassBuilder::ClassBuilder(const char* name, const char* superclassName)
    : name_(name), superclass_(superclassName ? superclassName : "NSObject") {}

ClassBuilder& ClassBuilder::instance(const char* selector, IMP imp, const char* types) {
  methods_.push_back({selector, imp, types, false});
  return *this;
}

ClassBuilder& ClassBuilder::classMethod(const char* selector, IMP imp, const char* types) {
  methods_.push_back({selector, imp, types, true});
  return *this;
}

ClassBuilder& ClassBuilder::ivar(const char* name, const char* type) {
  ivars_.emplace_back(name);
  ivarTypes_.emplace_back(type);
  return *this;
}

Class ClassBuilder::build() {
  if (Class existing = platform::classNamed(name_.c_str())) return existing;
  Class super = platform::classNamed(superclass_.c_str());
  if (super == nullptr) return nullptr;  // never a new root class by mistake
  Class cls = objc_allocateClassPair(super, name_.c_str(), 0);
  if (cls == nullptr) return nullptr;
  for (size_t i = 0; i < ivars_.size(); ++i) {
    class_addIvar(cls, ivars_[i].c_str(), sizeof(void*), sizeof(void*) == 8 ? 3 : 2,
                  ivarTypes_[i].c_str());
  }
  for (const auto& m : methods_) {
    Class target = m.classSide ? platform::metaclassOf(cls) : cls;
    class_addMethod(target, platform::selector(m.selector.c_str()), m.imp, m.types.c_str());
  }
  objc_registerClassPair(cls);
  return cls;
}

id newObject(Class cls) {
  static const platform::Sel kAlloc("alloc"), kInit("init");
  return platform::send<id>(platform::sendClass<id>(cls, kAlloc), kInit);
}

void refreshDispatchTables(Class cls) {
  if (cls != nullptr) __objc_update_dispatch_table_for_class(cls);
}

}  // namespace kv::sim::host
