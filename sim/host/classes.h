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

// A method encoding as this process's Foundation can read it: a block
// argument's "@?" (how a device encodes it) becomes "@". GNUstep's method
// signatures stop at "@?", which would make every stored call of such a
// method abort; blocks are objects in a host (blocks.h), so "@" is what they are.
std::string runtimeTypes(const std::string& types);

template <typename F>
IMP imp(F* f) {
  return reinterpret_cast<IMP>(f);
}

// Returns a new instance (alloc/init; the caller owns it).
id newObject(Class cls);

}  // namespace kv::sim::host
