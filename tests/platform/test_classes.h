// Classes made at run time for the platform tests, the way the simulated
// frameworks make theirs.
#pragma once

#include <initializer_list>

#include "platform/objc.h"

namespace kv::test {

struct MethodDef {
  const char* name;
  IMP imp;
  const char* types;
};

// Registers class `name` (subclass of `superName`, "NSObject" by default)
// with the given instance and class methods; returns it.
Class defineClass(const char* name, const char* superName,
                  std::initializer_list<MethodDef> instanceMethods,
                  std::initializer_list<MethodDef> classMethods = {});

// Returns a new instance of `cls` (alloc/init; the caller owns it).
id newInstance(Class cls);

template <typename F>
IMP imp(F* f) {
  return reinterpret_cast<IMP>(f);
}

// A struct passed and returned by value, larger than two registers.
struct Box {
  double x, y, w, h;
};

}  // namespace kv::test

#include "platform/encoding.h"
KV_STRUCT_ENCODING(kv::test::Box, "{Box=dddd}");
