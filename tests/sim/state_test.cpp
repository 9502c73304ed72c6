// The state kept beside simulated objects goes with the object, whatever its
// class does in -dealloc, so that an object allocated at a freed one's
// address starts with nothing of it.
#include "sim/frameworks/state.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/host/classes.h"

namespace kv::sim::frameworks {
namespace {

using host::ClassBuilder;
using host::imp;
using platform::Sel;
using platform::send;

struct Validity {
  bool valid = true;
};
struct Label {
  std::string text;
};

// What each -dealloc of the classes below saw of its object's state.
std::vector<std::string>& seenInDealloc() {
  static std::vector<std::string> seen;
  return seen;
}

// A -dealloc of its own that still reads the state, then the superclass's.
void ownDealloc(id self, SEL cmd) {
  seenInDealloc().push_back(hasState<Label>(self) ? stateOf<Label>(self).text : "(none)");
  platform::sendSuper<void>(platform::classNamed("NSObject"), self, cmd);
}

Class plainClass() {
  return ClassBuilder("StateTestPlain", "NSObject").build();
}
Class deallocClass() {
  return ClassBuilder("StateTestOwnDealloc", "NSObject")
      .instance("dealloc", imp(ownDealloc), "v@:")
      .build();
}
Class subclassOfDeallocClass() {
  deallocClass();
  return ClassBuilder("StateTestDerived", "StateTestOwnDealloc").build();
}

void release(id obj) {
  send<void>(obj, Sel("release"));
}

TEST(SimulatedState, GoesWithTheObjectOfEveryKindOfClass) {
  platform::AutoreleasePool pool;
  for (Class cls : {plainClass(), deallocClass(), subclassOfDeallocClass()}) {
    id obj = host::newObject(cls);
    stateOf<Validity>(obj).valid = false;
    stateOf<Label>(obj).text = "kept";
    ASSERT_TRUE(hasState<Validity>(obj)) << class_getName(cls);
    release(obj);
    EXPECT_FALSE(hasState<Validity>(obj)) << class_getName(cls);
    EXPECT_FALSE(hasState<Label>(obj)) << class_getName(cls);
  }
}

TEST(SimulatedState, IsStillThereWhileTheClassDeallocReadsIt) {
  platform::AutoreleasePool pool;
  seenInDealloc().clear();
  for (Class cls : {deallocClass(), subclassOfDeallocClass()}) {
    id obj = host::newObject(cls);
    stateOf<Label>(obj).text = class_getName(cls);
    release(obj);
  }
  EXPECT_EQ(seenInDealloc(), (std::vector<std::string>{"StateTestOwnDealloc", "StateTestDerived"}));
}

TEST(SimulatedState, OfOneObjectLeavesTheOthersAlone) {
  platform::AutoreleasePool pool;
  id kept = host::newObject(plainClass());
  id freed = host::newObject(plainClass());
  stateOf<Label>(kept).text = "kept";
  stateOf<Label>(freed).text = "freed";
  release(freed);
  ASSERT_TRUE(hasState<Label>(kept));
  EXPECT_EQ(stateOf<Label>(kept).text, "kept");
  release(kept);
}

TEST(SimulatedState, StartsFreshForEachNewObject) {
  platform::AutoreleasePool pool;
  // Many objects come and go, as a prompt's assertions do; each new one
  // starts valid even where it takes a freed one's place.
  for (int i = 0; i < 200; ++i) {
    id obj = host::newObject(plainClass());
    ASSERT_TRUE(stateOf<Validity>(obj).valid) << "object " << i;
    stateOf<Validity>(obj).valid = false;
    release(obj);
  }
}

}  // namespace
}  // namespace kv::sim::frameworks
