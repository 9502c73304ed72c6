// C++ state of simulated platform objects, kept beside the object: one table
// per state type, keyed by the object, created on first use and dropped when
// the object is deallocated (simulated classes forget their state in
// -dealloc through forgetState).
#pragma once

#include <functional>
#include <unordered_map>
#include <vector>

#include "platform/objc.h"

namespace kv::sim::frameworks {

// Every table's forgetter, so that -dealloc can clear an object from all.
std::vector<std::function<void(id)>>& stateForgetters();

// Drops every kind of state kept for `obj`.
void forgetState(id obj);

// -dealloc of a simulated class whose superclass is NSObject: forgets the
// object's state, then NSObject's dealloc.
void forgettingDealloc(id self, SEL cmd);

// A new autoreleased instance of the class `cls` (a class method's self).
id autoreleasedNew(id cls);

// Returns the state of type T of `obj`, creating it on first use.
template <typename T>
T& stateOf(id obj) {
  static auto* table = [] {
    auto* t = new std::unordered_map<id, T>();
    stateForgetters().push_back([t](id o) { t->erase(o); });
    return t;
  }();
  return (*table)[obj];
}

}  // namespace kv::sim::frameworks
