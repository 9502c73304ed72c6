// Type encodings: what a C++ signature stands for, and which runtime
// encodings a replacement may be installed over.
#include "platform/encoding.h"

#include <gtest/gtest.h>

#include "test_classes.h"

namespace kv {
namespace {

using platform::encodingsCompatible;
using platform::methodEncoding;

TEST(Encoding, SignaturesSpellTheirEncoding) {
  EXPECT_EQ((methodEncoding<void>()), "v@:");
  EXPECT_EQ((methodEncoding<id, id, SEL, id>()), "@@:@:@");
  EXPECT_EQ((methodEncoding<BOOL, unsigned long, double>()), "C@:Ld");
  EXPECT_EQ((methodEncoding<test::Box, test::Box, void (^)(id)>()), "{Box=dddd}@:{Box=dddd}@?");
  EXPECT_EQ((methodEncoding<void, const char*, int*>()), "v@:r*^v");
}

TEST(Encoding, CompatibilityFollowsTheCallingConvention) {
  struct Case {
    const char* actual;
    const char* expected;
    bool compatible;
  } cases[] = {
      {"v16@0:8", "v@:", true},  // offsets are ignored
      {"@24@0:8@16", "@@:@", true},
      {"@24@0:8@\"NSString\"16", "@@:@", true},  // class-named objects
      {"v24@0:8@?16", "v@:@", true},             // a block is an object
      {"v@:#", "v@:@", true},                    // a class is an object
      {"c@:", "C@:", true},                      // BOOL: signed char
      {"B@:", "C@:", true},                      // BOOL: bool
      {"Vv@:r^v", "v@:^v", true},                // qualifiers
      {"q@:", "i@:", false},                     // integer sizes differ
      {"d@:", "i@:", false},                     // float vs integer
      {"f@:", "d@:", false},
      {"v@:@", "v@:", false},                // argument count
      {"v@::", "v@:@", false},               // selector vs object
      {"v@:^{CGRect=dddd}", "v@:^v", true},  // pointers to anything
      {"{CGRect={CGPoint=dd}{CGSize=dd}}@:", "{CGRect={CGPoint=dd}{CGSize=dd}}@:", true},
      {"{CGRect={CGPoint=dd}{CGSize=dd}}@:", "{CGRect=}@:", true},
      {"{CGRect={CGPoint=dd}{CGSize=dd}}@:", "{CGSize=dd}@:", false},
      {"{CGRect={CGPoint=ff}{CGSize=ff}}@:", "{CGRect={CGPoint=dd}{CGSize=dd}}@:", false},
      {"{?=dd}@:", "{CGPoint=dd}@:", true},
      {"v@:[4i]", "v@:^v", true},  // arrays decay
      {"", "v@:", false},          // malformed
      {"v@:{Unclosed=dd", "v@:{Unclosed=dd}", false},
      {"v@:^", "v@:^v", false},
      {"v@:@\"Unterminated", "v@:@", false},
      {"x@:", "x@:", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(encodingsCompatible(c.actual, c.expected), c.compatible)
        << c.actual << " vs " << c.expected;
  }
}

TEST(Encoding, ArgumentCountIncludesSelfAndCommand) {
  EXPECT_EQ(platform::encodingArgumentCount("v16@0:8"), 2);
  EXPECT_EQ(platform::encodingArgumentCount("{Box=dddd}@:{Box=dddd}dfl@C"), 8);
  EXPECT_EQ(platform::encodingArgumentCount("{broken"), -1);
}

}  // namespace
}  // namespace kv
