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

template <typename F>
IMP impOf(F* f) {
  return reinterpret_cast<IMP>(f);
}

// An instance method whose encoding is the one its C signature stands for.
template <typename R, typename... A>
MethodSpec method(const char* selector, R (*f)(id, SEL, A...)) {
  return MethodSpec{selector, reinterpret_cast<IMP>(f), methodEncoding<R, A...>(), false};
}

// The same for a class method (`self` is the class).
template <typename R, typename... A>
MethodSpec classMethod(const char* selector, R (*f)(id, SEL, A...)) {
  return MethodSpec{selector, reinterpret_cast<IMP>(f), methodEncoding<R, A...>(), true};
}

}  // namespace kv::platform
