// Tests of the scenario parser: each statement's fields, the device defaults, comments and
// quoting, and that every malformed line is reported with its line and what was expected.
#include "sim/device/scenario.h"

#include <gtest/gtest.h>

#include <functional>

namespace kv::sim {
namespace {

using Kind = Statement::Kind;
using platform::Value;
using Strings = std::vector<std::string>;
using namespace std::string_view_literals;

// Parses text that must be valid; answers an empty scenario after recording a failure.
Scenario parseValid(const std::string& text) {
  auto result = parseScenario(text, "t.scn");
  if (auto* error = std::get_if<ParseError>(&result)) {
    ADD_FAILURE() << error->format();
    return {};
  }
  return std::get<Scenario>(result);
}

TEST(Scenario, ParsesEveryStatementWithItsFields) {
  struct Case {
    const char* text;  // the last line is the statement checked
    Kind kind;
    std::function<void(const Statement&)> check;
  } cases[] = {
      {"device ipad ios 10.3 none identities 0 no-passcode", Kind::kDevice,
       [](const Statement& s) {
         EXPECT_TRUE(s.device.ipad);
         EXPECT_EQ(s.device.version, "10.3");
         EXPECT_EQ(s.device.biometrics, DeviceSpec::Biometrics::kNone);
         EXPECT_EQ(s.device.identities, 0);
         EXPECT_FALSE(s.device.passcode);
       }},
      {"device faceid identities 2 ios 11.1", Kind::kDevice,
       [](const Statement& s) {
         EXPECT_EQ(s.device.biometrics, DeviceSpec::Biometrics::kFaceId);
         EXPECT_EQ(s.device.version, "11.1");
         EXPECT_EQ(s.device.identities, 2);
       }},
      {R"(prefs excluded [ "com.a.b", {"ssid": "x y"} ])", Kind::kPrefs,
       [](const Statement& s) {
         EXPECT_EQ(s.key, "excluded");
         EXPECT_EQ(s.value, Value::array({Value::string("com.a.b"),
                                          Value::dictionary({{"ssid", Value::string("x y")}})}));
       }},
      {"prefs-delete \"odd key\"", Kind::kPrefsDelete,
       [](const Statement& s) { EXPECT_EQ(s.key, "odd key"); }},
      {"wifi aa:bb:cc:dd:ee:ff ssid \"Home Net\"", Kind::kWifi,
       [](const Statement& s) {
         EXPECT_EQ(s.name, "aa:bb:cc:dd:ee:ff");
         EXPECT_EQ(s.ssid, "Home Net");
       }},
      {"wifi off", Kind::kWifiOff, [](const Statement&) {}},
      {"notify com.apple.springboard.lockstate", Kind::kNotify,
       [](const Statement& s) {
         EXPECT_EQ(s.name, "com.apple.springboard.lockstate");
         EXPECT_FALSE(s.state);
       }},
      {"notify n state 0xFFFFFFFFFFFFFFFF", Kind::kNotify,
       [](const Statement& s) { EXPECT_EQ(s.state, UINT64_MAX); }},
      {"file /private/var/tmp/r.plist {\"app\": \"com.a.b\", \"n\": 2}", Kind::kFile,
       [](const Statement& s) {
         EXPECT_EQ(s.key, "/private/var/tmp/r.plist");
         EXPECT_EQ(s.value["n"], Value::integer(2));
       }},
      {"start SpringBoard app com.example.notes Camera", Kind::kStart,
       [](const Statement& s) {
         EXPECT_EQ(s.processes, (Strings{"SpringBoard", "app:com.example.notes", "Camera"}));
       }},
      {"start Preferences\nPreferences: send shared:PSRoot load:  {\"a\": [1, 2]}", Kind::kAction,
       [](const Statement& s) {
         EXPECT_EQ(s.process, "Preferences");
         EXPECT_EQ(s.action, "send");
         EXPECT_EQ(s.args, (Strings{"shared:PSRoot", "load:", "{a:", "[1,", "2]}"}));
         EXPECT_EQ(s.rest, "shared:PSRoot load:  {\"a\": [1, 2]}");
       }},
      {"start app com.example.notes\ncom.example.notes: open", Kind::kAction,
       [](const Statement& s) {
         EXPECT_EQ(s.process, "com.example.notes");
         EXPECT_TRUE(s.args.empty());
       }},
      {"finger match", Kind::kFinger, [](const Statement& s) { EXPECT_TRUE(s.match); }},
      {"face nomatch", Kind::kFace, [](const Statement& s) { EXPECT_FALSE(s.match); }},
      {"biometric -3", Kind::kBiometric, [](const Statement& s) { EXPECT_EQ(s.code, -3); }},
      {"advance 2.75", Kind::kAdvance, [](const Statement& s) { EXPECT_EQ(s.seconds, 2.75); }},
      {"mark", Kind::kMark, [](const Statement&) {}},
      {"expect not prompt title \"Unlock Notes\"", Kind::kExpect,
       [](const Statement& s) {
         EXPECT_TRUE(s.negated);
         EXPECT_EQ(s.predicate, "prompt");
         EXPECT_EQ(s.predicateArgs, (Strings{"title", "Unlock Notes"}));
         EXPECT_EQ(s.predicateRest, "title \"Unlock Notes\"");
       }},
      {"expect pref count null", Kind::kExpect,
       [](const Statement& s) {
         EXPECT_FALSE(s.negated);
         EXPECT_EQ(s.predicateRest, "count null");
       }},
      {"start InCallService\nincoming-call \"+1 555 0100\" name \"Anna Berg\"", Kind::kPhone,
       [](const Statement& s) {
         EXPECT_EQ(s.action, "incoming");
         EXPECT_EQ(s.args, (Strings{"+1 555 0100", "Anna Berg"}));
       }},
      {"start SpringBoard\noutgoing-call 112", Kind::kPhone,
       [](const Statement& s) {
         EXPECT_EQ(s.action, "outgoing");
         EXPECT_EQ(s.args, (Strings{"112"}));
       }},
      {"start SpringBoard\nhang-up", Kind::kPhone,
       [](const Statement& s) {
         EXPECT_EQ(s.action, "hang-up");
         EXPECT_TRUE(s.args.empty());
       }},
  };
  for (const Case& c : cases) {
    Scenario scenario = parseValid(c.text);
    ASSERT_FALSE(scenario.statements.empty()) << c.text;
    const Statement& s = scenario.statements.back();
    EXPECT_EQ(s.kind, c.kind) << c.text;
    SCOPED_TRACE(c.text);
    c.check(s);
  }
}

TEST(Scenario, DeviceDefaultsMatchTheDocumentedOnes) {
  Scenario scenario = parseValid("device\n");
  ASSERT_EQ(scenario.statements.size(), 1u);
  const DeviceSpec& d = scenario.statements[0].device;
  EXPECT_FALSE(d.ipad);
  EXPECT_EQ(d.version, "11.1");
  EXPECT_EQ(d.biometrics, DeviceSpec::Biometrics::kTouchId);
  EXPECT_EQ(d.identities, 1);
  EXPECT_TRUE(d.passcode);
}

TEST(Scenario, KeepsLineNumbersAndStripsComments) {
  Scenario scenario = parseValid(
      "# a scenario\r\n"
      "\n"
      "   mark   # a new window\r\n"
      "prefs code \"12#34\" # not part of the value\n"
      "start SpringBoard\n"
      "SpringBoard: open-url quorvan://x/#top\n"
      "expect log \"a # b\"#c");
  ASSERT_EQ(scenario.statements.size(), 5u);
  EXPECT_EQ(scenario.file, "t.scn");
  const Statement& mark = scenario.statements[0];
  EXPECT_EQ(mark.line, 3);
  EXPECT_EQ(mark.text, "mark");
  EXPECT_EQ(scenario.statements[1].line, 4);
  EXPECT_EQ(scenario.statements[1].value, Value::string("12#34"));
  EXPECT_EQ(scenario.statements[1].text, "prefs code \"12#34\"");
  EXPECT_EQ(scenario.statements[3].args, Strings{"quorvan://x/#top"});
  EXPECT_EQ(scenario.statements[4].line, 7);
  EXPECT_EQ(scenario.statements[4].predicateArgs, Strings{"a # b#c"});
}

TEST(Scenario, TokenizesQuotedWords) {
  struct Case {
    const char* line;
    Strings words;
  } cases[] = {
      {"  a \t b  ", {"a", "b"}},
      {R"("a b" c)", {"a b", "c"}},
      {R"("" x)", {"", "x"}},
      {R"("say \"hi\"" "a\\b" "\n")", {"say \"hi\"", "a\\b", "\\n"}},
      {R"(title="x y"z)", {"title=x yz"}},
      {"x # comment \"", {"x"}},
  };
  for (const Case& c : cases) {
    std::string error;
    auto words = tokenize(c.line, &error);
    ASSERT_TRUE(words) << c.line << ": " << error;
    EXPECT_EQ(*words, c.words) << c.line;
  }
  std::string error;
  EXPECT_FALSE(tokenize(R"(a "b \")", &error));
  EXPECT_EQ(error, "unterminated quote at column 3");
}

TEST(Scenario, ReportsTheLineAndWhatWasExpected) {
  struct Case {
    std::string_view text;
    int line;
    const char* message;  // a part of the message
  } cases[] = {
      {"mark\nfrobnicate 3", 2, "unknown statement 'frobnicate'; expected one of device, prefs,"},
      {"device iphone ipad", 1, "'ipad' repeats a setting"},
      {"device ios eleven", 1, "bad version 'eleven'; expected 'device iphone|ipad ios VERSION"},
      {"device identities -1", 1, "bad count '-1' after identities"},
      {"device identities", 1, "missing value after identities"},
      {"device hovercraft", 1, "unknown device word 'hovercraft'"},
      {"device ios 10.3 faceid", 1, "faceid needs ios 11 or later, not ios 10.3"},
      {"start SpringBoard\ndevice", 2, "device must come before the first start"},
      {"device\n\ndevice", 3, "device given twice (first on line 1)"},
      {"mark\nexpect prompt title \"Unlock", 2, "unterminated quote at column 21"},
      {"prefs enabled [1,]", 1, "bad JSON value for enabled: expected a value at offset 3"},
      {"prefs enabled", 1, "missing JSON value after enabled; expected 'prefs KEY JSON'"},
      {"file relative.plist {}", 1, "path 'relative.plist' is not absolute"},
      {"device ios 12.0", 1, "no iOS 12.0 profile; expected one of 8.4 9.1 9.3 10.1 10.3 11.1"},
      {"device ios 11.0.1", 1, "no iOS 11.0.1 profile"},
      {"file /var/../../etc/passwd {}", 1, "path '/var/../../etc/passwd' leaves the device's root"},
      {"file-raw /tmp/../../../x 00", 1, "leaves the device's root"},
      {"file /var/mobile/../../.. {}", 1, "leaves the device's root"},
      {"file /etc/passwd {}", 1, "path '/etc/passwd' is not inside the device's folders"},
      {"file-raw /var/.. 00", 1, "is not inside the device's folders"},
      {"file /var {}", 1, "is not inside the device's folders"},
      {"mark\nmark\0\nmark"sv, 2, "a NUL byte at column 5"},
      {"\xEF\xBB\xBFmark\n\xEF\xBB\xBFmark", 2, "unknown statement '\xEF\xBB\xBFmark'"},
      {"prefs-delete a b", 1, "unexpected 'b'; expected 'prefs-delete KEY'"},
      {"notify n state ten", 1, "bad state 'ten'"},
      {"notify n state 18446744073709551616", 1, "bad state"},
      {"notify n level 3", 1, "unexpected 'level'"},
      {"wifi aa:bb ssid", 1, "missing value after ssid"},
      {"wifi aa:bb ssid x password", 1, "missing value after password"},
      {"wifi-known aa:bb color red", 1, "unexpected 'color'"},
      {"file-raw /tmp/x 0g", 1, "not a hex byte"},
      {"file-raw /tmp/x abc", 1, "odd number"},
      {"kill Safari", 1, "unknown process 'Safari'"},
      {"kill", 1, "too few words after kill"},
      {"respring", 1, "respring needs SpringBoard started first"},
      {"start", 1, "too few words after start"},
      {"start Safari", 1, "unknown process 'Safari'"},
      {"start app", 1, "missing bundle identifier after app"},
      {"SpringBoard:", 1, "missing action after 'SpringBoard:'"},
      {"com.example.notes: open", 1, "app com.example.notes is not started"},
      {"Safari: open", 1, "unknown process 'Safari'"},
      {"finger maybe", 1, "unknown word 'maybe'; expected 'finger match|nomatch'"},
      {"face", 1, "too few words after face"},
      {"biometric 1.5", 1, "bad code '1.5'"},
      {"advance -1", 1, "bad seconds '-1'"},
      {"advance inf", 1, "bad seconds 'inf'"},
      {"advance 1 2", 1, "unexpected '2'"},
      {"mark now", 1, "unexpected 'now'; expected 'mark'"},
      {"expect", 1, "missing predicate; expected 'expect [not] PREDICATE [ARGS]'"},
      {"expect not # nothing", 1, "missing predicate"},
      {"incoming-call 1", 1, "incoming-call needs a started process to ring"},
      {"start SpringBoard\nincoming-call 1 from Anna", 2, "unexpected 'from'"},
      {"start SpringBoard\nincoming-call 1 name", 2, "missing name after name"},
      {"start SpringBoard\noutgoing-call 1 name Anna", 2, "unexpected 'name'"},
      {"start SpringBoard\nanswer now", 2, "unexpected 'now'; expected 'answer'"},
  };
  for (const Case& c : cases) {
    auto result = parseScenario(c.text, "bad.scn");
    const ParseError* error = std::get_if<ParseError>(&result);
    ASSERT_NE(error, nullptr) << c.text;
    EXPECT_EQ(error->line, c.line) << c.text;
    EXPECT_NE(error->message.find(c.message), std::string::npos)
        << c.text << " gave: " << error->message;
    EXPECT_EQ(error->format().rfind("bad.scn:" + std::to_string(c.line) + ": ", 0), 0u)
        << error->format();
  }
}

// Byte-order marks and NUL bytes are about whole files: a mark is accepted
// before the first line only, and what follows reads as without it.
TEST(Scenario, AcceptsAByteOrderMarkAtTheStart) {
  Scenario s = parseValid("\xEF\xBB\xBF# written by an editor that marks UTF-8\nmark\n");
  ASSERT_EQ(s.statements.size(), 1u);
  EXPECT_EQ(s.statements[0].line, 2);
  EXPECT_EQ(s.statements[0].kind, Kind::kMark);
  Scenario first = parseValid(
      "\xEF\xBB\xBF"
      "device ios 9.3");
  ASSERT_EQ(first.statements.size(), 1u);
  EXPECT_EQ(first.statements[0].device.version, "9.3");
}

// A file path is resolved within the device: "." and ".." that stay inside
// it are fine, and the statement carries the resolved path.
TEST(Scenario, ResolvesFilePathsInsideTheDevice) {
  Scenario s = parseValid(
      "file /var/mobile/./Library/../Library//Preferences/a.plist {}\n"
      "file-raw /tmp/x/../y 00\n");
  ASSERT_EQ(s.statements.size(), 2u);
  EXPECT_EQ(s.statements[0].key, "/var/mobile/Library/Preferences/a.plist");
  EXPECT_EQ(s.statements[1].key, "/tmp/y");
}

}  // namespace
}  // namespace kv::sim
