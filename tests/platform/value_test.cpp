// Typed reads of a property-list value: each kind answers as itself, and
// anything else answers the caller's fallback, so a wrong-typed preference
// can never read as a surprising number.
#include "platform/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kv {
namespace {

using platform::Value;

TEST(Value, ReadsOfAnotherKindAnswerTheFallback) {
  const Value none;
  const Value text = Value::string("7");
  const Value list = Value::array({Value::integer(1)});
  for (const Value* v : {&none, &text, &list}) {
    EXPECT_EQ(v->asInteger(), 0) << v->describe();
    EXPECT_EQ(v->asInteger(-3), -3) << v->describe();
    EXPECT_FALSE(v->asBool()) << v->describe();
    EXPECT_TRUE(v->asBool(true)) << v->describe();
    EXPECT_EQ(v->asReal(), 0.0) << v->describe();
    EXPECT_EQ(v->asReal(2.5), 2.5) << v->describe();
  }
  EXPECT_EQ(text.asString(), "7");
  EXPECT_EQ(none.asString(), "");
  EXPECT_TRUE(text.asArray().empty());
  EXPECT_TRUE(list.asDictionary().empty());
  EXPECT_TRUE(none["key"].isNone());
  // A boolean is no number, nor a number a boolean.
  EXPECT_EQ(Value::boolean(true).asInteger(), 0);
  EXPECT_FALSE(Value::integer(1).asBool());
}

TEST(Value, RealsReadAsIntegersOnlyWhenTheyFit) {
  EXPECT_EQ(Value::integer(-42).asInteger(9), -42);
  EXPECT_EQ(Value::real(7.9).asInteger(9), 7);
  EXPECT_EQ(Value::real(-7.9).asInteger(9), -7);
  EXPECT_EQ(Value::real(std::nan("")).asInteger(9), 9);
  EXPECT_EQ(Value::real(std::numeric_limits<double>::infinity()).asInteger(9), 9);
  EXPECT_EQ(Value::real(1e19).asInteger(9), 9);
  EXPECT_EQ(Value::real(-1e19).asInteger(9), 9);
  EXPECT_EQ(Value::integer(3).asReal(), 3.0);
  EXPECT_EQ(Value::date(12.5).asReal(), 12.5);
  // A date is a point in time, not a count.
  EXPECT_EQ(Value::date(12.5).asInteger(9), 9);
}

}  // namespace
}  // namespace kv
