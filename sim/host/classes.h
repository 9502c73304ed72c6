// Defines Objective-C classes at run time for the simulated frameworks: a
// class, its superclass, and methods given as C functions with encodings.
#pragma once

#include <string>
#include <vector>

#include "platform/objc.h"

namespace kv::sim::host {

// Builds one class. Methods whose encoding is given as nullptr get the
// encoding their function's signature stands for (see method<F>).
class ClassBuilder {
 public:
  ClassBuilder(const char* name, const char* superclassName);

  // Adds an instance method / a class method.
  ClassBuilder& instance(const char* selector, IMP imp, const char* types);
  ClassBuilder& classMethod(const char* selector, IMP imp, const char* types);
  // Adds an instance variable of pointer size holding an object or pointer.
  ClassBuilder& ivar(const char* name, const char* type = "@");

  // The name of the class being built.
  const std::string& name() const { return name_; }

  // Registers the class (once); returns it, or the existing class of that
  // name, or nullptr when the superclass does not exist.
  Class build();

 private:
  struct MethodDef {
    std::string selector;
    IMP imp;
    std::string types;
    bool classSide;
  };
  std::string name_;
  std::string superclass_;
  std::vector<MethodDef> methods_;
  std::vector<std::string> ivars_;
  std::vector<std::string> ivarTypes_;
};

template <typename F>
IMP imp(F* f) {
  return reinterpret_cast<IMP>(f);
}

// Returns a new instance (alloc/init; the caller owns it).
id newObject(Class cls);

// Makes a method implementation changed in `cls` (method_setImplementation)
// seen by its subclasses: GCC's runtime keeps copies in the dispatch tables
// of subclasses that have their own methods, and does not update those.
void refreshDispatchTables(Class cls);

}  // namespace kv::sim::host
