// Tests of JSON reading and writing: the grammar's edges, number kinds, escapes and round trips.
#include "sim/common/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace kv::sim {
namespace {

using platform::Value;

Value str(const char* s) {
  return Value::string(s);
}

TEST(Json, ParsesValues) {
  struct Case {
    const char* text;
    Value expected;
  } cases[] = {
      {"null", Value()},
      {" true ", Value::boolean(true)},
      {"\n\tfalse\r\n", Value::boolean(false)},
      {"0", Value::integer(0)},
      {"-0", Value::integer(0)},
      {"42", Value::integer(42)},
      {"9223372036854775807", Value::integer(std::numeric_limits<int64_t>::max())},
      {"-9223372036854775808", Value::integer(std::numeric_limits<int64_t>::min())},
      {"9223372036854775808", Value::real(9223372036854775808.0)},
      {"-9223372036854775809", Value::real(-9223372036854775809.0)},
      {"1.0", Value::real(1.0)},
      {"-2.5e3", Value::real(-2500)},
      {"1E2", Value::real(100)},
      {"1e-400", Value::real(0)},
      {"\"\"", str("")},
      {"[]", Value::array({})},
      {"{}", Value::dictionary({})},
      {"[1, \"a\", [null]]", Value::array({Value::integer(1), str("a"), Value::array({Value()})})},
      {R"([{"ssid":"x","bssid":"aa:bb"}])",
       Value::array({Value::dictionary({{"ssid", str("x")}, {"bssid", str("aa:bb")}})})},
  };
  for (const Case& c : cases) {
    std::string error;
    std::optional<Value> value = parseJson(c.text, &error);
    ASSERT_TRUE(value) << c.text << ": " << error;
    EXPECT_EQ(*value, c.expected) << c.text << " gave " << value->describe();
  }
}

TEST(Json, DecodesStringEscapes) {
  struct Case {
    const char* text;
    std::string expected;
  } cases[] = {
      {R"("a\"b\\c\/d")", "a\"b\\c/d"},          {R"("\b\f\n\r\t")", "\b\f\n\r\t"},
      {R"("\u0041\u00e9")", "A\xc3\xa9"},        {R"("\u20AC")", "\xe2\x82\xac"},
      {R"("\ud83d\ude00")", "\xf0\x9f\x98\x80"}, {R"("a\u0000b")", std::string("a\0b", 3)},
      {"\"caf\xc3\xa9 #1\"", "caf\xc3\xa9 #1"},
  };
  for (const Case& c : cases) {
    std::optional<Value> value = parseJson(c.text);
    ASSERT_TRUE(value) << c.text;
    EXPECT_EQ(value->asString(), c.expected) << c.text;
  }
}

TEST(Json, RejectsMalformedTextNamingTheOffset) {
  struct Case {
    const char* text;
    const char* error;
  } cases[] = {
      {"", "unexpected end, expected a value at offset 0"},
      {"[1,]", "expected a value at offset 3"},
      {R"({"a":1,})", "expected a string key at offset 7"},
      {"[1 2]", "expected ',' or ']' at offset 3"},
      {R"({"a" 1})", "expected ':' at offset 5"},
      {"{1:2}", "expected a string key at offset 1"},
      {"01", "leading zero in number at offset 0"},
      {"-", "expected a digit at offset 1"},
      {"+1", "expected a value at offset 0"},
      {"1.", "expected a digit after '.' at offset 2"},
      {"1e+", "expected a digit in the exponent at offset 3"},
      {"1e400", "number out of range at offset 0"},
      {"tru", "expected a value at offset 0"},
      {"NaN", "expected a value at offset 0"},
      {"[1] x", "unexpected text after the value at offset 4"},
      {"\"abc", "unterminated string at offset 4"},
      {"\"a\nb\"", "control character in string at offset 2"},
      {R"("\x")", "invalid escape at offset 2"},
      {R"("\u12G4")", "expected four hex digits after \\u at offset 3"},
      {R"("\udc00")", "unpaired low surrogate at offset 7"},
      {R"("\ud800")", "expected a low surrogate after a high one at offset 7"},
      {R"("\ud800\u0041")", "expected a low surrogate after a high one at offset 13"},
      {R"({"a":1,"a":2})", "duplicate key at offset 7"},
  };
  for (const Case& c : cases) {
    std::string error;
    EXPECT_FALSE(parseJson(c.text, &error)) << c.text;
    EXPECT_EQ(error, c.error) << c.text;
  }
}

TEST(Json, CapsNestingDepth) {
  auto nested = [](int depth, char open, const char* inner, char close) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += open;
    text += inner;
    for (int i = 0; i < depth; ++i) text += close;
    return text;
  };
  EXPECT_TRUE(parseJson(nested(kMaxJsonDepth, '[', "1", ']')));
  std::string error;
  EXPECT_FALSE(parseJson(nested(kMaxJsonDepth + 1, '[', "1", ']'), &error));
  EXPECT_NE(error.find("nesting too deep"), std::string::npos) << error;

  std::string objects;
  for (int i = 0; i <= kMaxJsonDepth; ++i) objects += "{\"k\":";
  EXPECT_FALSE(parseJson(objects + "1" + std::string(kMaxJsonDepth + 1, '}')));
  // Far past the cap, unclosed: refused without recursing that deep.
  EXPECT_FALSE(parseJson(std::string(1'000'000, '[')));
}

TEST(Json, WritesCompactDeterministicText) {
  struct Case {
    Value value;
    const char* expected;
  } cases[] = {
      {Value(), "null"},
      {Value::boolean(false), "false"},
      {Value::integer(-7), "-7"},
      {Value::real(1), "1.0"},
      {Value::real(0.1), "0.1"},
      {Value::real(-2.5e300), "-2.5e+300"},
      {Value::real(NAN), "null"},
      {Value::real(INFINITY), "null"},
      {Value::date(3600), "3600.0"},
      {str("q\"\\/\n\x01"), R"("q\"\\/\n\u0001")"},
      {Value::data({}), R"("")"},
      {Value::data({'a'}), R"("YQ==")"},
      {Value::data({'a', 'b'}), R"("YWI=")"},
      {Value::data({'a', 'b', 'c', 0xff}), R"("YWJj/w==")"},
      {Value::dictionary({{"b", Value::integer(1)}, {"a", Value::array({Value(), str("x")})}}),
       R"({"a":[null,"x"],"b":1})"},
  };
  for (const Case& c : cases) EXPECT_EQ(toJson(c.value), c.expected) << c.value.describe();
}

TEST(Json, RoundTripsThroughText) {
  const char* texts[] = {
      R"({"z":{"y":[1,2.5,-0.001,"\u00e9\ud83d\ude00"]},"a":true,"m":null})",
      "[0.1, 0.30000000000000004, 5e-324, 1.7976931348623157e308, 123456789.123]",
      "[9223372036854775807, -9223372036854775808, 18446744073709551616]",
      R"(["\u0000\u001f\t", "#", "a/b"])",
  };
  for (const char* text : texts) {
    std::optional<Value> first = parseJson(text);
    ASSERT_TRUE(first) << text;
    std::string written = toJson(*first);
    std::optional<Value> second = parseJson(written);
    ASSERT_TRUE(second) << written;
    EXPECT_EQ(*second, *first) << text << " -> " << written;
    EXPECT_EQ(toJson(*second), written) << text;
  }
  // Reals keep their exact bits and stay reals even when integral.
  for (double d : {1.0, -0.0, 1e21, 0.1 + 0.2, std::nextafter(1.0, 2.0)}) {
    std::optional<Value> back = parseJson(toJson(Value::real(d)));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->kind(), Value::Kind::kReal) << d;
    double got = back->asReal();
    EXPECT_EQ(std::memcmp(&got, &d, sizeof d), 0) << d << " came back as " << got;
  }
}

}  // namespace
}  // namespace kv::sim
