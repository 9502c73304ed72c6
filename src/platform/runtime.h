// Runtime access for the library: classes, selectors, typed message sends,
// super sends, capability probes and instance-variable reads.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <type_traits>

#include "platform/objc.h"

namespace kv::platform {

// Returns the class registered under `name`, or nullptr.
Class classNamed(const char* name);

// Returns the metaclass of `cls` (where its class methods live), or nullptr.
Class metaclassOf(Class cls);

// Returns the superclass of `cls`, or nullptr for a root class or nullptr.
Class superclassOf(Class cls);

// Returns the class of `obj` (the metaclass when `obj` is a class), or
// nullptr for nil.
Class classOf(id obj);

// Returns true iff `obj` is a class object (a message to it reaches its
// class methods).
bool isClassObject(id obj);

// Returns the name `cls` is registered under, or "nil".
const char* className(Class cls);

// Returns the interned selector for `name`.
SEL selector(const char* name);

// Returns the selector's name.
const char* selectorName(SEL sel);

// A selector written once as a constant; interned on first use.
class Sel {
 public:
  constexpr explicit Sel(const char* name) : name_(name) {}
  operator SEL() const {  // NOLINT(google-explicit-constructor)
    if (!sel_) sel_ = selector(name_);
    return sel_;
  }
  const char* name() const { return name_; }

 private:
  const char* name_;
  mutable SEL sel_ = nullptr;
};

inline id asId(Class cls) {
  return reinterpret_cast<id>(cls);
}

// What an argument of type T is passed as: a Sel constant as the SEL it names.
template <typename T>
struct Passed {
  using type = T;
};
template <>
struct Passed<Sel> {
  using type = SEL;
};
template <typename T>
using PassedAs = typename Passed<T>::type;

// True iff a send returning R goes through the runtime's struct-return entry
// (the caller passes a hidden pointer for the result): never on arm64;
// structs over 16 bytes on x86_64; structs over 4 bytes on armv7. Floating
// point needs no entry of its own: only the x87 long double would, and the
// platform returns none.
template <typename R>
constexpr bool returnsInMemory() {
  if constexpr (!std::is_class_v<R>) {
    return false;
  } else {
#if defined(__arm64__) || defined(__aarch64__)
    return false;
#elif defined(__x86_64__)
    return sizeof(R) > 16;
#else
    return sizeof(R) > 4;
#endif
  }
}
template <typename R>
inline constexpr bool kReturnsInMemory = returnsInMemory<R>();

// Typed message send. A nil receiver answers zero (or a zeroed struct).
// Arguments pass as their own types (write 2.0 for a double, not 2), except
// that a Sel constant passes as its SEL.
template <typename R = void, typename... A>
R send(id self, SEL op, A... args) {
  if (self == nullptr) {
    if constexpr (std::is_void_v<R>) {
      return;
    } else {
      return R{};
    }
  }
#if KV_APPLE_RUNTIME
#if !(defined(__arm64__) || defined(__aarch64__))
  if constexpr (kReturnsInMemory<R>) {
    return reinterpret_cast<R (*)(id, SEL, PassedAs<A>...)>(objc_msgSend_stret)(
        self, op, PassedAs<A>(args)...);
  }
#endif
  return reinterpret_cast<R (*)(id, SEL, PassedAs<A>...)>(objc_msgSend)(self, op,
                                                                        PassedAs<A>(args)...);
#else
  IMP imp = objc_msg_lookup(self, op);
  return reinterpret_cast<R (*)(id, SEL, PassedAs<A>...)>(imp)(self, op, PassedAs<A>(args)...);
#endif
}

// Returns true iff `obj` answers `op` (asks the object, so forwarding counts).
bool respondsTo(id obj, SEL op);

// Sends `op` only when `self` answers it; otherwise answers zero, as a
// message to nil does. For the platform's optional methods: an unknown
// selector would raise in the host.
template <typename R = void, typename... A>
R sendIfResponds(id self, SEL op, A... args) {
  if (!respondsTo(self, op)) {
    if constexpr (std::is_void_v<R>) {
      return;
    } else {
      return R{};
    }
  }
  return send<R>(self, op, args...);
}

// Typed message send to a class object.
template <typename R = void, typename... A>
R sendClass(Class cls, SEL op, A... args) {
  return send<R>(asId(cls), op, args...);
}

// Sends `op` to `self` with the method lookup starting at `lookupClass`
// (a call to super when `lookupClass` is the superclass of the method's class).
template <typename R = void, typename... A>
R sendSuper(Class lookupClass, id self, SEL op, A... args) {
  if (self == nullptr || lookupClass == nullptr) {
    if constexpr (std::is_void_v<R>) {
      return;
    } else {
      return R{};
    }
  }
#if KV_APPLE_RUNTIME
  objc_super sup{self, lookupClass};
#if !(defined(__arm64__) || defined(__aarch64__))
  if constexpr (kReturnsInMemory<R>) {
    return reinterpret_cast<R (*)(objc_super*, SEL, PassedAs<A>...)>(objc_msgSendSuper_stret)(
        &sup, op, PassedAs<A>(args)...);
  }
#endif
  return reinterpret_cast<R (*)(objc_super*, SEL, PassedAs<A>...)>(objc_msgSendSuper)(
      &sup, op, PassedAs<A>(args)...);
#else
  objc_super sup{self, lookupClass};
  IMP imp = objc_msg_lookup_super(&sup, op);
  return reinterpret_cast<R (*)(id, SEL, PassedAs<A>...)>(imp)(self, op, PassedAs<A>(args)...);
#endif
}

// Returns true iff instances of `cls` answer `op`, without messaging anything.
bool instancesRespondTo(Class cls, SEL op);

// Returns true iff `obj` is an instance of `cls` or of a subclass of it.
bool isKindOf(id obj, Class cls);

// Returns true iff `obj` is a kind of the class named `className` (false when
// that class does not exist).
bool isKindOf(id obj, const char* className);

// Returns the class name of `obj`, or "nil".
const char* classNameOf(id obj);

// Returns `[obj valueForKey:key]`, or nil when `obj` is nil or does not
// answer valueForKey:. An unknown key raises in Foundation, as on a device.
id valueForKey(id obj, const char* key);

// Returns the address of the instance variable `name` of `obj`, or nullptr
// when `obj` is nil or its class has no such variable.
void* ivarAddress(id obj, const char* name);

// Returns the value of the instance variable `name` of `obj` (searching its
// class and superclasses), or nullopt when there is none.
template <typename T>
std::optional<T> ivar(id obj, const char* name) {
  void* where = ivarAddress(obj, name);
  if (where == nullptr) return std::nullopt;
  T value;
  std::memcpy(&value, where, sizeof(T));
  return value;
}

}  // namespace kv::platform
