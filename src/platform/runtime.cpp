// Runtime access for the library.
#include "platform/runtime.h"

namespace kv::platform {

Class classNamed(const char* name) {
  if (name == nullptr) return nullptr;
#if KV_APPLE_RUNTIME
  return objc_getClass(name);
#else
  // GCC's objc_getClass consults the class-lookup hook; objc_lookUpClass does
  // not, but both answer nil for an unknown name, which is all we rely on.
  return objc_lookUpClass(name);
#endif
}

Class metaclassOf(Class cls) {
  if (cls == nullptr) return nullptr;
  return object_getClass(asId(cls));
}

Class superclassOf(Class cls) {
  return cls == nullptr ? nullptr : class_getSuperclass(cls);
}

Class classOf(id obj) {
  return obj == nullptr ? nullptr : object_getClass(obj);
}

bool isClassObject(id obj) {
  Class cls = classOf(obj);
  return cls != nullptr && class_isMetaClass(cls);
}

const char* className(Class cls) {
  return cls == nullptr ? "nil" : class_getName(cls);
}

SEL selector(const char* name) {
  return sel_registerName(name);
}

const char* selectorName(SEL sel) {
  return sel == nullptr ? "" : sel_getName(sel);
}

bool respondsTo(id obj, SEL op) {
  static const Sel kRespondsToSelector("respondsToSelector:");
  if (obj == nullptr || op == nullptr) return false;
  Class cls = object_getClass(obj);
  if (!class_respondsToSelector(cls, kRespondsToSelector)) return class_respondsToSelector(cls, op);
  return send<BOOL>(obj, kRespondsToSelector, op) != 0;
}

bool instancesRespondTo(Class cls, SEL op) {
  return cls != nullptr && op != nullptr && class_respondsToSelector(cls, op);
}

bool isKindOf(id obj, Class cls) {
  if (obj == nullptr || cls == nullptr) return false;
  for (Class c = object_getClass(obj); c != nullptr; c = class_getSuperclass(c)) {
    if (c == cls) return true;
  }
  return false;
}

bool isKindOf(id obj, const char* className) {
  return isKindOf(obj, classNamed(className));
}

const char* classNameOf(id obj) {
  if (obj == nullptr) return "nil";
  return class_getName(object_getClass(obj));
}

void* ivarAddress(id obj, const char* name) {
  if (obj == nullptr || name == nullptr) return nullptr;
  Ivar var = class_getInstanceVariable(object_getClass(obj), name);
  if (var == nullptr) return nullptr;
  return reinterpret_cast<char*>(obj) + ivar_getOffset(var);
}

}  // namespace kv::platform
