// The platform catalog: the classes and methods of the simulated iOS versions
// that the library names, each with the versions and processes that have it.
#pragma once

#include <initializer_list>
#include <vector>

#include "platform/objc.h"

namespace kv::sim::host {
class ClassBuilder;
}

namespace kv::sim::frameworks {

// The processes a catalog class lives in (a bit set).
enum CatalogProcess : unsigned {
  kSpringBoardProcess = 1u << 0,
  kPreferencesProcess = 1u << 1,
  kCameraProcess = 1u << 2,    // the "Camera" process or bundle com.apple.camera
  kInCallProcess = 1u << 3,    // "InCallService"
  kOtherAppProcess = 1u << 4,  // any other app
  kEveryProcess = ~0u,
};

// Versions are written major * 100 + minor: 1001 is iOS 10.1.
inline constexpr int kEarliestVersion = 0;
inline constexpr int kLatestVersion = 9999;

// One method: "-selector" or "+selector", its encoding without offsets, and
// the versions that have it (within its class's).
struct CatalogMethod {
  const char* name;
  const char* types;
  int first = kEarliestVersion;
  int last = kLatestVersion;
};

// One class: its superclass, processes, versions and methods.
struct CatalogClass {
  const char* name;
  const char* superclass;
  unsigned processes;
  int first;
  int last;
  std::vector<CatalogMethod> methods;
};

// The whole catalog, superclasses before their subclasses.
const std::vector<CatalogClass>& catalog();

// True iff the class lives in this process on this version.
bool appliesHere(const CatalogClass& cls);
// True iff this version has the method (its class applying).
bool appliesHere(const CatalogMethod& method);

// The catalog's method of `className` ("-selector" or "+selector") when this
// process on this version has it, else nullptr.
const CatalogMethod* cataloguedHere(const char* className, const char* method);

// True iff the catalog gives this process on this version the class.
bool cataloguedHere(const char* className);

// Gives the class `builder` builds the method ("-selector" or "+selector")
// with `imp` and the catalog's encoding, when this version has it; answers
// whether it did. Behaviour modules define version-dependent methods this
// way, so that which version has what is said once, in the catalog.
bool addCatalogued(host::ClassBuilder& builder, const char* method, IMP imp);

// Makes the catalog class `className` (and its superclasses) exist now, as
// the catalog defines it, for a behaviour module that builds on it; nullptr
// where it does not apply here.
Class defineCatalogued(const char* className);

// Makes every catalog class that applies here exist with every method this
// version has. A method the class already has (its own, or inherited from a
// class below the root) is left as it is; the others are added as calls that
// are recorded in the event log and answer zero, nil or a zeroed struct;
// singleton accessors answer one shared instance per class.
void defineCatalog();

// True iff the class comes with a framework this process loads only later
// (PassKit in SpringBoard on a passkit-late device): defineCatalog leaves it
// out, and the framework's loading defines it.
bool loadsLate(const char* className);

// Makes the catalog classes named in `classNames` exist, as defineCatalog
// does for all, when a framework that comes later has loaded.
void defineCatalogClasses(std::initializer_list<const char*> classNames);

}  // namespace kv::sim::frameworks
