// Deferred calls: an NSInvocation built from C++ values, to be invoked once
// later (after authentication) or dropped.
#pragma once

#include <cstddef>
#include <utility>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"

namespace kv::platform {

// Returns a new invocation of `sel` on `target` with the target's method
// signature, target and selector set and no argument yet; nil when the
// target is nil or does not answer a signature for `sel`.
Retained newInvocation(id target, SEL sel);

// Sets argument `index` (2 for the first after self and _cmd) from the bytes
// at `value`. False when the invocation has no such argument.
bool setInvocationArgument(id invocation, void* value, UInteger index);

// Returns the number of arguments of the invocation's signature, self and
// _cmd included (0 for nil).
UInteger invocationArgumentCount(id invocation);

// Builds an invocation of `sel` on `target` and sets the given arguments at
// index 2, 3, ... in order (fewer than the method takes leaves the rest
// unset). Each argument is passed as its own C++ type, which must have the
// size the method's signature gives it. nil when no invocation can be made.
template <typename... A>
Retained invocationOf(id target, SEL sel, A... args) {
  Retained invocation = newInvocation(target, sel);
  if (!invocation || invocationArgumentCount(invocation.get()) < sizeof...(A) + 2)
    return Retained();
  UInteger index = 2;
  (setInvocationArgument(invocation.get(), static_cast<void*>(&args), index++), ...);
  return invocation;
}

// Tells the invocation to retain its object arguments (and copy its C strings).
void retainArguments(id invocation);

// Invokes it.
void invoke(id invocation);

// Returns `[NSValue valueWithPointer:p]`, autoreleased.
id pointerValue(const void* p);

}  // namespace kv::platform
