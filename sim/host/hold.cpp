// The "hold" and "replay" actions: a developer's stand-in for a guard that
// parks a call and invokes it after authentication. "hold CLASS SELECTOR"
// keeps the next call of that instance method as an NSInvocation (arguments
// retained, blocks copied) instead of running it, and the caller gets zero;
// "replay" invokes the kept call, through the same method, whenever the
// scenario says; "replay N" first clears every argument after the first N,
// as a guard whose stored call carries fewer arguments replays it. Until a call is caught, the
// method's implementation is a libffi closure of the method's own signature.
#include <ffi.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::host {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

struct Held {
  Class cls = nullptr;
  SEL sel = nullptr;
  Method method = nullptr;  // the method whose implementation catches the next call
  IMP original = nullptr;   // its own implementation, put back once a call is caught
  Retained invocation;      // the caught call
  // The catching closure and its call interface. A closure is freed only by
  // the next hold: the one that caught a call is still returning.
  ffi_closure* closure = nullptr;
  ffi_cif cif{};
  std::vector<ffi_type*> types;
};

Held& held() {
  static auto* h = new Held();
  return *h;
}

std::string nameOf(const Held& h) {
  return std::string(class_getName(h.cls)) + " -" + sel_getName(h.sel);
}

// Lets calls through again.
void stopCatching(Held& h) {
  if (h.method != nullptr) {
    method_setImplementation(h.method, h.original);
    refreshDispatchTables(h.cls);
  }
  h.method = nullptr;
}

// The libffi type of one argument or return type, by its encoding; nullptr
// for what a closure here cannot take (structs, unions, arrays).
ffi_type* ffiTypeOf(const char* type) {
  while (*type != '\0' && std::strchr("rnNoORV", *type) != nullptr) ++type;
  switch (*type) {
    case 'v': return &ffi_type_void;
    case '@':
    case '#':
    case ':':
    case '^':
    case '*': return &ffi_type_pointer;
    case 'c': return &ffi_type_sint8;
    case 'C':
    case 'B': return &ffi_type_uint8;
    case 's': return &ffi_type_sint16;
    case 'S': return &ffi_type_uint16;
    case 'i': return &ffi_type_sint32;
    case 'I': return &ffi_type_uint32;
    case 'l':
    case 'q': return &ffi_type_sint64;
    case 'L':
    case 'Q': return &ffi_type_uint64;
    case 'f': return &ffi_type_float;
    case 'd': return &ffi_type_double;
    default: return nullptr;
  }
}

// The closure's body: the call becomes an invocation with retained
// arguments, the method runs normally again, and the caller gets zero.
void catchCall(ffi_cif* cif, void* result, void** args, void* data) {
  auto& h = *static_cast<Held*>(data);
  id self = *static_cast<id*>(args[0]);
  SEL sel = *static_cast<SEL*>(args[1]);
  if (cif->rtype != &ffi_type_void) {
    std::memset(result, 0, std::max(cif->rtype->size, sizeof(ffi_arg)));
  }
  stopCatching(h);
  id signature = send<id>(self, Sel("methodSignatureForSelector:"), sel);
  id invocation = platform::sendClass<id>(platform::classNamed("NSInvocation"),
                                          Sel("invocationWithMethodSignature:"), signature);
  send<void>(invocation, Sel("setTarget:"), self);
  send<void>(invocation, Sel("setSelector:"), sel);
  for (unsigned i = 2; i < cif->nargs; ++i) {
    send<void>(invocation, Sel("setArgument:atIndex:"), args[i], static_cast<platform::Integer>(i));
  }
  send<void>(invocation, Sel("retainArguments"));
  h.invocation.reset(invocation);
  logEvent("held", nameOf(h));
}

// Makes `h.method` catch its next call; false with *error when its
// signature has a type a closure cannot take.
bool startCatching(Held& h, std::string* error) {
  id signature =
      platform::sendClass<id>(platform::classNamed("NSMethodSignature"),
                              Sel("signatureWithObjCTypes:"), method_getTypeEncoding(h.method));
  auto count = send<platform::UInteger>(signature, Sel("numberOfArguments"));
  h.types.clear();
  for (platform::UInteger i = 0; i <= count; ++i) {
    const char* type = i < count ? send<const char*>(signature, Sel("getArgumentTypeAtIndex:"), i)
                                 : send<const char*>(signature, Sel("methodReturnType"));
    ffi_type* ffi = ffiTypeOf(type);
    if (ffi == nullptr) {
      *error = std::string("cannot hold a method of type ") + type;
      return false;
    }
    h.types.push_back(ffi);
  }
  ffi_type* returnType = h.types.back();
  h.types.pop_back();
  void* code = nullptr;
  if (h.closure != nullptr) ffi_closure_free(h.closure);
  h.closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
  if (h.closure == nullptr ||
      ffi_prep_cif(&h.cif, FFI_DEFAULT_ABI, static_cast<unsigned>(h.types.size()), returnType,
                   h.types.data()) != FFI_OK ||
      ffi_prep_closure_loc(h.closure, &h.cif, catchCall, &h, code) != FFI_OK) {
    *error = "libffi could not make a closure";
    return false;
  }
  h.original = method_setImplementation(h.method, reinterpret_cast<IMP>(code));
  refreshDispatchTables(h.cls);
  return true;
}

// hold CLASS SELECTOR
Value holdAction(const ActionRequest& request, std::string* error) {
  Class cls = platform::classNamed(request.args[0].c_str());
  SEL sel = platform::selector(request.args[1].c_str());
  Method method = cls == nullptr ? nullptr : class_getInstanceMethod(cls, sel);
  if (method == nullptr) {
    *error =
        "no instance method " + request.args[1] + " of " + request.args[0] + " in " + processName();
    return {};
  }
  Held& h = held();
  stopCatching(h);
  h.invocation.reset();
  h.cls = cls;
  h.sel = sel;
  // A method the class only inherits is held in this class alone.
  if (class_addMethod(cls, sel, method_getImplementation(method), method_getTypeEncoding(method))) {
    method = class_getInstanceMethod(cls, sel);
  }
  h.method = method;
  if (!startCatching(h, error)) {
    h.method = nullptr;
    return {};
  }
  logEvent("hold", nameOf(h));
  return {};
}

// Sets every argument after the first `kept` to zero (nil, NO, 0).
void clearArgumentsAfter(id invocation, unsigned long kept) {
  id signature = send<id>(invocation, Sel("methodSignature"));
  auto count = send<platform::UInteger>(signature, Sel("numberOfArguments"));
  for (platform::UInteger i = 2 + kept; i < count; ++i) {
    alignas(16) unsigned char zero[64] = {};
    send<void>(invocation, Sel("setArgument:atIndex:"), static_cast<void*>(zero),
               static_cast<platform::Integer>(i));
  }
}

// replay [N]
Value replayAction(const ActionRequest& request, std::string* error) {
  Held& h = held();
  if (!h.invocation) {
    *error =
        h.method != nullptr ? nameOf(h) + " was not called: nothing is held" : "nothing is held";
    return {};
  }
  if (!request.args.empty() &&
      request.args[0].find_first_not_of("0123456789") != std::string::npos) {
    *error = "expected replay [ARGUMENTS]";
    return {};
  }
  Retained invocation = std::move(h.invocation);
  std::string kept;
  if (!request.args.empty()) {
    clearArgumentsAfter(invocation.get(), std::stoul(request.args[0]));
    kept = " with its first " + request.args[0] + " argument(s)";
  }
  logEvent("replay", nameOf(h) + kept);
  send<void>(invocation.get(), Sel("invoke"));
  return {};
}

}  // namespace

void registerHoldActions() {
  registerAction("hold", holdAction);
  registerAction("replay", replayAction);
}

}  // namespace kv::sim::host
