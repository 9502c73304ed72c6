// Deferred calls built from C++ values.
#include "platform/invocation.h"

namespace kv::platform {

namespace {
const Sel kMethodSignatureForSelector("methodSignatureForSelector:");
const Sel kInvocationWithMethodSignature("invocationWithMethodSignature:");
const Sel kSetTarget("setTarget:");
const Sel kSetSelector("setSelector:");
const Sel kSetArgument("setArgument:atIndex:");
const Sel kMethodSignature("methodSignature");
const Sel kNumberOfArguments("numberOfArguments");
const Sel kRetainArguments("retainArguments");
const Sel kInvoke("invoke");
const Sel kValueWithPointer("valueWithPointer:");
}  // namespace

Retained newInvocation(id target, SEL sel) {
  if (target == nullptr || sel == nullptr || !respondsTo(target, sel)) return Retained();
  id signature = send<id>(target, kMethodSignatureForSelector, sel);
  if (signature == nullptr) return Retained();
  Retained invocation(
      sendClass<id>(classNamed("NSInvocation"), kInvocationWithMethodSignature, signature));
  send<void>(invocation.get(), kSetTarget, target);
  send<void>(invocation.get(), kSetSelector, sel);
  return invocation;
}

UInteger invocationArgumentCount(id invocation) {
  return send<UInteger>(send<id>(invocation, kMethodSignature), kNumberOfArguments);
}

bool setInvocationArgument(id invocation, void* value, UInteger index) {
  if (invocation == nullptr || index < 2 || index >= invocationArgumentCount(invocation))
    return false;
  send<void>(invocation, kSetArgument, value, static_cast<Integer>(index));
  return true;
}

void retainArguments(id invocation) {
  send<void>(invocation, kRetainArguments);
}

void invoke(id invocation) {
  send<void>(invocation, kInvoke);
}

id pointerValue(const void* p) {
  return sendClass<id>(classNamed("NSValue"), kValueWithPointer, p);
}

}  // namespace kv::platform
