// Classes the library registers with the runtime (delegates, observers,
// message targets): a name, a superclass and methods given as C functions.
#pragma once

#include <initializer_list>
#include <span>
#include <string>

#include "platform/encoding.h"
#include "platform/objc.h"

namespace kv::platform {

struct MethodSpec {
  const char* selector;
  IMP imp;
  std::string types;
  bool classMethod = false;
};

// Registers class `name` under `superclassName` with `methods` and returns
// it; an existing class of that name is returned unchanged, and a missing
// superclass answers nullptr.
Class defineClass(const char* name, const char* superclassName,
                  std::span<const MethodSpec> methods);
Class defineClass(const char* name, const char* superclassName,
                  std::initializer_list<MethodSpec> methods);

// The same with instance variables, each holding an object ("@"), for a
// class whose instances keep other objects as the platform's own views do.
Class defineClass(const char* name, const char* superclassName,
                  std::initializer_list<const char*> objectIvars,
                  std::initializer_list<MethodSpec> methods);

template <typename F>
IMP impOf(F* f) {
  return reinterpret_cast<IMP>(f);
}

// The method encoding the C signature of `f` stands for, kept for the life of
// the process (one string per signature).
template <typename R, typename... A>
const char* encodingOf(R (*)(id, SEL, A...)) {
  static const std::string kEncoding = methodEncoding<R, A...>();
  return kEncoding.c_str();
}

// A method given by its C function, its encoding taken from the signature, so
// that what the runtime is told always matches what the function takes.
template <typename R, typename... A>
MethodSpec method(const char* selector, R (*f)(id, SEL, A...), bool classMethod = false) {
  return MethodSpec{selector, impOf(f), encodingOf(f), classMethod};
}

// The same for a class method (`self` is the class).
template <typename R, typename... A>
MethodSpec classMethod(const char* selector, R (*f)(id, SEL, A...)) {
  return method(selector, f, true);
}

}  // namespace kv::platform
