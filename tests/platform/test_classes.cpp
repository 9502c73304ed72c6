// Classes made at run time for the platform tests.
#include "test_classes.h"

#include "platform/runtime.h"

namespace kv::test {

Class defineClass(const char* name, const char* superName,
                  std::initializer_list<MethodDef> instanceMethods,
                  std::initializer_list<MethodDef> classMethods) {
  Class super = platform::classNamed(superName ? superName : "NSObject");
  Class cls = objc_allocateClassPair(super, name, 0);
  for (const auto& m : instanceMethods) {
    class_addMethod(cls, platform::selector(m.name), m.imp, m.types);
  }
  for (const auto& m : classMethods) {
    class_addMethod(platform::metaclassOf(cls), platform::selector(m.name), m.imp, m.types);
  }
  objc_registerClassPair(cls);
  return cls;
}

id newInstance(Class cls) {
  static const platform::Sel kAlloc("alloc"), kInit("init");
  return platform::send<id>(platform::sendClass<id>(cls, kAlloc), kInit);
}

}  // namespace kv::test
