// NSArray -_kv_objectOfClass:, the method start-up adds for other code to
// pick an element by class: the first element that is a kind of the class,
// or nil.
#include "startup/additions.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv::startup {
namespace {

using platform::Sel;

TEST(ObjectOfClass, AnswersTheFirstElementOfThatKindOrNil) {
  platform::AutoreleasePool pool;
  Class stringClass = platform::classNamed("NSString");
  Class numberClass = platform::classNamed("NSNumber");
  id one = platform::makeInteger(1);
  id two = platform::makeInteger(2);
  id first = platform::makeString("first");
  id second = platform::makeString("second");
  id mutableText = platform::sendClass<id>(platform::classNamed("NSMutableString"),
                                           Sel("stringWithString:"), platform::makeString("m"));
  struct Case {
    const char* name;
    std::vector<id> elements;
    Class cls;
    id expected;
  };
  const Case kCases[] = {
      {"empty array", {}, stringClass, nullptr},
      {"match first", {first, one}, stringClass, first},
      {"match after others", {one, two, first}, stringClass, first},
      {"two matches: the first", {first, second}, stringClass, first},
      {"match last", {first, one}, numberClass, one},
      {"no match", {one, two}, stringClass, nullptr},
      {"a subclass counts", {one, mutableText}, stringClass, mutableText},
  };
  for (const Case& c : kCases) {
    id array = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
    for (id element : c.elements) platform::send<void>(array, Sel("addObject:"), element);
    EXPECT_EQ(objectOfClass(array, Sel("_kv_objectOfClass:"), reinterpret_cast<id>(c.cls)),
              c.expected)
        << c.name;
  }
}

}  // namespace
}  // namespace kv::startup
