// Classes the library registers with the runtime.
#include "platform/classes.h"

#include "platform/runtime.h"

namespace kv::platform {

Class defineClass(const char* name, const char* superclassName,
                  std::span<const MethodSpec> methods) {
  if (Class existing = classNamed(name)) return existing;
  Class super = classNamed(superclassName);
  if (super == nullptr) return nullptr;
  Class cls = objc_allocateClassPair(super, name, 0);
  if (cls == nullptr) return nullptr;
  for (const auto& m : methods) {
    class_addMethod(m.classMethod ? metaclassOf(cls) : cls, selector(m.selector), m.imp,
                    m.types.c_str());
  }
  objc_registerClassPair(cls);
  return cls;
}

Class defineClass(const char* name, const char* superclassName,
                  std::initializer_list<MethodSpec> methods) {
  return defineClass(name, superclassName,
                     std::span<const MethodSpec>(methods.begin(), methods.size()));
}

}  // namespace kv::platform
