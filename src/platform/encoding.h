// Objective-C type encodings: the encoding a C++ method signature stands for,
// and whether a platform method's encoding is call-compatible with it.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "platform/objc.h"

namespace kv::platform {

// The encoding of one C++ type. Structs passed by value declare theirs with
// a specialisation (see KV_STRUCT_ENCODING).
template <typename T, typename = void>
struct Encoding;

#define KV_SCALAR_ENCODING(T, E)           \
  template <>                              \
  struct Encoding<T> {                     \
    static std::string get() { return E; } \
  }

KV_SCALAR_ENCODING(void, "v");
KV_SCALAR_ENCODING(id, "@");
KV_SCALAR_ENCODING(Class, "#");
KV_SCALAR_ENCODING(SEL, ":");
KV_SCALAR_ENCODING(bool, "B");
KV_SCALAR_ENCODING(char, "c");
KV_SCALAR_ENCODING(signed char, "c");
KV_SCALAR_ENCODING(unsigned char, "C");
KV_SCALAR_ENCODING(short, "s");
KV_SCALAR_ENCODING(unsigned short, "S");
KV_SCALAR_ENCODING(int, "i");
KV_SCALAR_ENCODING(unsigned int, "I");
KV_SCALAR_ENCODING(long long, "q");
KV_SCALAR_ENCODING(unsigned long long, "Q");
KV_SCALAR_ENCODING(float, "f");
KV_SCALAR_ENCODING(double, "d");
KV_SCALAR_ENCODING(const char*, "r*");
KV_SCALAR_ENCODING(char*, "*");
#if KV_APPLE_RUNTIME && defined(__LP64__)
KV_SCALAR_ENCODING(long, "q");
KV_SCALAR_ENCODING(unsigned long, "Q");
#else
KV_SCALAR_ENCODING(long, "l");
KV_SCALAR_ENCODING(unsigned long, "L");
#endif

// Any other pointer: "^" and what it points to, or "^v" when that has no
// encoding of its own.
template <typename T>
struct Encoding<
    T*, std::enable_if_t<!std::is_same_v<std::remove_cv_t<T>, char> && !std::is_function_v<T>>> {
  static std::string get() { return "^v"; }
};

// Function pointers.
template <typename R, typename... A>
struct Encoding<R (*)(A...)> {
  static std::string get() { return "^?"; }
};

// Blocks.
template <typename R, typename... A>
struct Encoding<R (^)(A...)> {
  static std::string get() { return "@?"; }
};

// Declares the encoding of a struct passed by value, e.g.
// KV_STRUCT_ENCODING(CGRect, "{CGRect={CGPoint=dd}{CGSize=dd}}").
#define KV_STRUCT_ENCODING(T, E)           \
  template <>                              \
  struct kv::platform::Encoding<T> {       \
    static std::string get() { return E; } \
  }

// Returns the method encoding (return type, self, _cmd, arguments, no
// offsets) of a method implemented by R (*)(id, SEL, A...).
template <typename R, typename... A>
std::string methodEncoding() {
  std::string out = Encoding<R>::get();
  out += "@:";
  ((out += Encoding<A>::get()), ...);
  return out;
}

// Returns true iff a method with the runtime encoding `actual` can be called
// through a function of the encoding `expected`: the same number of
// arguments, and each type of the same calling class (objects and classes;
// selectors; pointers; integers of one size, signedness aside, so that BOOL
// as signed char, unsigned char or bool all agree; float; double; structs of
// one name and layout; void). Qualifiers and offsets are ignored. A malformed
// encoding is never compatible.
bool encodingsCompatible(std::string_view actual, std::string_view expected);

// Returns the number of argument types (self and _cmd included) in a method
// encoding, or -1 when it is malformed.
int encodingArgumentCount(std::string_view encoding);

}  // namespace kv::platform
