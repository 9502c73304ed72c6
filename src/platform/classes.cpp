// Classes the library registers with the runtime.
#include "platform/classes.h"

#include <cstdint>

#include "platform/runtime.h"

namespace kv::platform {

namespace {

Class define(const char* name, const char* superclassName,
             std::initializer_list<const char*> objectIvars, std::span<const MethodSpec> methods) {
  if (Class existing = classNamed(name)) return existing;
  Class super = classNamed(superclassName);
  if (super == nullptr) return nullptr;
  Class cls = objc_allocateClassPair(super, name, 0);
  if (cls == nullptr) return nullptr;
  // Alignment is given as its base-2 logarithm.
  constexpr uint8_t kPointerAlignment = sizeof(id) == 8 ? 3 : 2;
  for (const char* ivar : objectIvars) {
    class_addIvar(cls, ivar, sizeof(id), kPointerAlignment, "@");
  }
  for (const auto& m : methods) {
    class_addMethod(m.classMethod ? metaclassOf(cls) : cls, selector(m.selector), m.imp,
                    m.types.c_str());
  }
  objc_registerClassPair(cls);
  return cls;
}

}  // namespace

Class defineClass(const char* name, const char* superclassName,
                  std::span<const MethodSpec> methods) {
  return define(name, superclassName, {}, methods);
}

Class defineClass(const char* name, const char* superclassName,
                  std::initializer_list<MethodSpec> methods) {
  return defineClass(name, superclassName,
                     std::span<const MethodSpec>(methods.begin(), methods.size()));
}

Class defineClass(const char* name, const char* superclassName,
                  std::initializer_list<const char*> objectIvars,
                  std::initializer_list<MethodSpec> methods) {
  return define(name, superclassName, objectIvars,
                std::span<const MethodSpec>(methods.begin(), methods.size()));
}

}  // namespace kv::platform
