// Conversions between Foundation objects and C++ values, on GNUstep Base.
#include "platform/foundation.h"

#include <gtest/gtest.h>

#include "platform/retained.h"
#include "platform/runtime.h"

namespace kv::platform {
// Failure messages show values as text.
void PrintTo(const Value& v, std::ostream* os) {
  *os << v.describe();
}
}  // namespace kv::platform

namespace kv {
namespace {

using platform::Sel;
using platform::Value;

class Foundation : public ::testing::Test {
  platform::AutoreleasePool pool_;
};

TEST_F(Foundation, StringsRoundTripAsUtf8) {
  for (std::string s : {std::string(), std::string("com.apple.mobileslideshow"),
                        std::string("Caf\xc3\xa9 \xe2\x9c\x93"), std::string("with\0nul", 8)}) {
    id str = platform::makeString(s);
    EXPECT_TRUE(platform::isKindOf(str, "NSString"));
    auto back = platform::stringOf(str);
    ASSERT_TRUE(back.has_value());
    // UTF8String stops at the first NUL, as it does on a device.
    EXPECT_EQ(*back, s.substr(0, s.find('\0')));
  }
  EXPECT_EQ(platform::stringOf(nullptr), std::nullopt);
  EXPECT_EQ(platform::stringOf(platform::makeInteger(3)), std::nullopt);
  EXPECT_EQ(platform::toString(platform::makeBool(true)), "");
}

TEST_F(Foundation, NumbersKnowBooleansFromIntegers) {
  EXPECT_EQ(platform::boolOf(platform::makeBool(true)), true);
  EXPECT_EQ(platform::boolOf(platform::makeBool(false)), false);
  EXPECT_EQ(platform::boolOf(platform::makeInteger(1)), std::nullopt);
  EXPECT_EQ(platform::boolOf(platform::makeString("YES")), std::nullopt);
  EXPECT_EQ(platform::integerOf(platform::makeInteger(-5000000000)), -5000000000);
  EXPECT_EQ(platform::integerOf(platform::makeBool(true)), 1);
  EXPECT_EQ(platform::realOf(platform::makeReal(0.25)), 0.25);
  EXPECT_EQ(platform::integerOf(platform::makeString("5")), std::nullopt);
}

TEST_F(Foundation, StringListsRejectAnyOtherElement) {
  auto list = platform::stringListOf(platform::makeStringList({"a", "b"}));
  ASSERT_TRUE(list.has_value());
  EXPECT_EQ(*list, (std::vector<std::string>{"a", "b"}));
  Value mixed = Value::array({Value::string("a"), Value::integer(2)});
  EXPECT_EQ(platform::stringListOf(platform::makeObject(mixed)), std::nullopt);
  EXPECT_EQ(platform::stringListOf(platform::makeString("a")), std::nullopt);
  EXPECT_EQ(platform::stringListOf(platform::makeStringList({})), std::vector<std::string>{});
}

TEST_F(Foundation, ValuesRoundTripThroughFoundationObjects) {
  Value v = Value::dictionary({
      {"Enabled", Value::boolean(true)},
      {"IconColor", Value::integer(5)},
      {"delay", Value::real(0.5)},
      {"passcode", Value::string("1234")},
      {"apps", Value::array({Value::string("com.apple.camera"), Value::string("x")})},
      {"wifi", Value::array({Value::dictionary({{"bssid", Value::string("aa:bb")}})})},
      {"blob", Value::data({0, 1, 255})},
      {"when", Value::date(100.5)},
  });
  id obj = platform::makeObject(v);
  EXPECT_TRUE(platform::isKindOf(obj, "NSDictionary"));
  EXPECT_EQ(platform::valueOf(obj), v);
  EXPECT_EQ(platform::toString(platform::objectForKey(obj, "passcode")), "1234");
  EXPECT_EQ(platform::objectForKey(obj, "absent"), nullptr);
  EXPECT_EQ(platform::objectForKey(platform::makeString("x"), "passcode"), nullptr);
  EXPECT_EQ(platform::arrayCount(platform::objectForKey(obj, "apps")), 2u);
  EXPECT_EQ(platform::arrayObjectAt(platform::objectForKey(obj, "apps"), 2), nullptr);
  EXPECT_EQ(platform::valueOf(nullptr).kind(), Value::Kind::kNone);
}

TEST_F(Foundation, EntriesWithoutAStringFormAreDropped) {
  // Bytes that are not UTF-8 make no string: as a key or an element the entry
  // is left out, the rest of the container stays.
  const std::string bad("\xe7\xb9\xaf\xff", 4);
  ASSERT_EQ(platform::makeString(bad), nullptr);
  id dict = platform::makeObject(Value::dictionary(
      {{bad, Value::integer(1)}, {"kept", Value::string(bad)}, {"also", Value::integer(2)}}));
  EXPECT_EQ(platform::valueOf(dict), Value::dictionary({{"also", Value::integer(2)}}));
  id array = platform::makeObject(Value::array({Value::string(bad), Value::string("a")}));
  EXPECT_EQ(platform::valueOf(array), Value::array({Value::string("a")}));
}

TEST_F(Foundation, ValueForKeyReadsThroughKeyValueCoding) {
  id dict = platform::makeObject(Value::dictionary({{"name", Value::string("Photos")}}));
  EXPECT_EQ(platform::toString(platform::valueForKey(dict, "name")), "Photos");
  EXPECT_EQ(platform::valueForKey(nullptr, "name"), nullptr);
}

TEST_F(Foundation, RetainedHoldsExactlyOneReference) {
  const Sel kRetainCount("retainCount");
  id obj = platform::send<id>(
      platform::send<id>(platform::asId(platform::classNamed("NSObject")), Sel("alloc")),
      Sel("init"));
  auto count = [&] { return platform::send<platform::UInteger>(obj, kRetainCount); };
  {
    auto owner = platform::Retained::adopt(obj);
    EXPECT_EQ(count(), 1u);
    platform::Retained copy(owner);
    EXPECT_EQ(count(), 2u);
    platform::Retained moved(std::move(copy));
    EXPECT_EQ(count(), 2u);
    EXPECT_FALSE(copy);
    moved.reset(obj);  // the same object again: still two
    EXPECT_EQ(count(), 2u);
    moved = owner;
    EXPECT_EQ(count(), 2u);
    platform::Retained spare(obj);
    EXPECT_EQ(count(), 3u);
    spare = platform::Retained();  // moving over a held reference lets it go
    EXPECT_EQ(count(), 2u);
    moved.reset();
    EXPECT_EQ(count(), 1u);
    platform::Retained keep(obj);
    id taken = keep.take();
    EXPECT_EQ(count(), 2u);
    platform::send<void>(taken, Sel("release"));
  }
  // `owner` released the last reference: the object is gone (ASan would
  // report a use after free if it were released twice).
}

}  // namespace
}  // namespace kv
