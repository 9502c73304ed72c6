// What the simulated extensions share. Each is its own library that a
// scenario loads into SpringBoard after start; like a jailbreak extension it
// defines its classes with the runtime from its own constructor, and talks
// to SpringBoard only by messages. It also registers the actions by which a
// scenario does what a user does with it.
#pragma once

#include <initializer_list>
#include <string>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/host/actions.h"
#include "sim/host/link.h"

namespace kv::sim::extensions {

struct MethodDef {
  const char* selector;
  IMP imp;
  const char* types;
};

// Defines and registers class `name` under `superclass` with `methods`
// (instance methods) and `classMethods`; nil when it cannot.
inline Class defineClass(const char* name, const char* superclass,
                         std::initializer_list<MethodDef> methods,
                         std::initializer_list<MethodDef> classMethods = {}) {
  Class super = objc_getClass(superclass);
  if (super == nullptr || objc_getClass(name) != nullptr) return nullptr;
  Class cls = objc_allocateClassPair(super, name, 0);
  if (cls == nullptr) return nullptr;
  for (const auto& m : methods) class_addMethod(cls, sel_registerName(m.selector), m.imp, m.types);
  Class meta = object_getClass(reinterpret_cast<id>(cls));
  for (const auto& m : classMethods) {
    class_addMethod(meta, sel_registerName(m.selector), m.imp, m.types);
  }
  objc_registerClassPair(cls);
  return cls;
}

template <typename F>
IMP imp(F* f) {
  return reinterpret_cast<IMP>(f);
}

// A new instance of `className` (owned by the caller).
inline id newInstance(const char* className) {
  Class cls = objc_getClass(className);
  if (cls == nullptr) return nullptr;
  return platform::send<id>(platform::sendClass<id>(cls, platform::Sel("alloc")),
                            platform::Sel("init"));
}

// SpringBoard's application object for `bundleIdentifier`, or nil.
inline id applicationFor(const std::string& bundleIdentifier) {
  id controller = platform::sendClass<id>(platform::classNamed("SBApplicationController"),
                                          platform::Sel("sharedInstance"));
  return platform::sendIfResponds<id>(controller, platform::Sel("applicationWithBundleIdentifier:"),
                                      platform::makeString(bundleIdentifier));
}

// Asks SpringBoard to bring the app to the front, as extensions do.
inline void launchApplication(id bundleIdentifier) {
  id springBoard = platform::sendClass<id>(platform::classNamed("SpringBoard"),
                                           platform::Sel("sharedApplication"));
  platform::sendIfResponds<BOOL>(springBoard,
                                 platform::Sel("launchApplicationWithIdentifier:suspended:"),
                                 bundleIdentifier, BOOL{0});
}

}  // namespace kv::sim::extensions
