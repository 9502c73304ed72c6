// Classes the library registers with the runtime (delegates, observers,
// message targets): a name, a superclass and methods given as C functions.
#pragma once

#include <initializer_list>

#include "platform/objc.h"

namespace kv::platform {

struct MethodSpec {
  const char* selector;
  IMP imp;
  const char* types;
  bool classMethod = false;
};

// Registers class `name` under `superclassName` with `methods` and returns
// it; an existing class of that name is returned unchanged, and a missing
// superclass answers nullptr.
Class defineClass(const char* name, const char* superclassName,
                  std::initializer_list<MethodSpec> methods);

template <typename F>
IMP impOf(F* f) {
  return reinterpret_cast<IMP>(f);
}

}  // namespace kv::platform
