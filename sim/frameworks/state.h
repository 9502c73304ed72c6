// C++ state of simulated platform objects, kept beside the object: one table
// per state type, keyed by the object, created on first use and dropped when
// the object is deallocated. The tables themselves see to the dropping (they
// take over NSObject's -dealloc once), so no simulated class has to, and a
// new object at a freed one's address never finds the old one's state.
#pragma once

#include <functional>
#include <unordered_map>

#include "platform/objc.h"

namespace kv::sim::frameworks {

// Registers a table's forgetter; the first registration makes every
// deallocation in the process drop the object's state from every table.
void addStateTable(std::function<void(id)> forget);

// Notes that `obj` holds state in some table (so that its -dealloc looks).
void noteStateHolder(id obj);

// A new autoreleased instance of the class `cls` (a class method's self).
id autoreleasedNew(id cls);

namespace detail {
template <typename T>
std::unordered_map<id, T>& stateTable() {
  static auto* table = [] {
    auto* t = new std::unordered_map<id, T>();
    addStateTable([t](id o) { t->erase(o); });
    return t;
  }();
  return *table;
}
}  // namespace detail

// Returns the state of type T of `obj`, creating it on first use.
template <typename T>
T& stateOf(id obj) {
  auto [entry, created] = detail::stateTable<T>().try_emplace(obj);
  if (created) noteStateHolder(obj);
  return entry->second;
}

// True iff `obj` holds state of type T (never creates it).
template <typename T>
bool hasState(id obj) {
  return detail::stateTable<T>().count(obj) != 0;
}

}  // namespace kv::sim::frameworks
