// Scenario files: their statements, parsed and checked for syntax before anything runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/value.h"

namespace kv::sim {

// The simulated device's hardware and software, as a `device` statement describes it.
struct DeviceSpec {
  enum class Biometrics { kNone, kTouchId, kFaceId };
  bool ipad = false;
  std::string version = "11.1";
  Biometrics biometrics = Biometrics::kTouchId;
  int identities = 1;
  bool passcode = true;
  bool passKitLate = false;  // SpringBoard loads PassKit only when something asks for it
};

// One statement of a scenario; only the fields of its kind are set.
struct Statement {
  enum class Kind {
    kDevice,
    kPrefs,
    kPrefsDelete,
    kWifi,
    kWifiOff,
    kWifiKnown,
    kNotify,
    kFile,
    kFileRaw,
    kStart,
    kAction,
    kFinger,
    kFace,
    kBiometric,
    kAdvance,
    kMark,
    kExpect,
    kMissing,
    kBundle,
    kExtension,
    kSnapshot,
    kRespring,
    kKill,
    kPhone,
  };
  Kind kind = Kind::kMark;
  int line = 0;      // 1-based
  std::string text;  // the source line without its comment, trimmed

  DeviceSpec device;  // kDevice

  std::string key;             // kPrefs, kPrefsDelete: the preference key; kFile: the path
  platform::Value value;       // kPrefs, kFile
  std::vector<uint8_t> bytes;  // kFileRaw

  std::string name;  // kNotify: the notification; kWifi: the BSSID; kSnapshot: its name
  std::optional<uint64_t> state;  // kNotify
  std::string ssid;               // kWifi, kWifiKnown: empty when not given
  std::string password;           // kWifi, kWifiKnown: the stored password, empty when none

  // kMissing: private functions left off the device; kExtension: other extensions whose
  // libraries are installed; kBundle: where the settings bundle is (name: none, library,
  // bootstrap or both). All three describe the device, before the first start.
  std::vector<std::string> names;

  // kStart: "SpringBoard", "Preferences", "Camera", "InCallService" or "app:BUNDLE-ID".
  std::vector<std::string> processes;

  // kPhone: the phone's statements: action is "incoming", "outgoing", "answer" or "hang-up";
  // args the number and, for an incoming call from a contact, the name.

  // kAction: "PROCESS: ACTION ARGS". process is the name before the colon (a bundle identifier
  // for an app); rest is the raw text after the action word, so JSON arguments keep their spaces.
  std::string process;
  std::string action;
  std::vector<std::string> args;
  std::string rest;

  bool match = false;  // kFinger, kFace
  int64_t code = 0;    // kBiometric
  double seconds = 0;  // kAdvance

  // kExpect: `expect [not] PREDICATE ARGS`; predicateRest is the raw text after the predicate.
  bool negated = false;
  std::string predicate;
  std::vector<std::string> predicateArgs;
  std::string predicateRest;
};

// A parsed scenario file.
struct Scenario {
  std::string file;
  std::vector<Statement> statements;
};

// Where and why a scenario could not be parsed.
struct ParseError {
  std::string file;
  int line = 0;
  std::string message;

  // Returns "FILE:LINE: MESSAGE".
  std::string format() const;
};

// Splits a line into words on whitespace. Double quotes group text with spaces into one word
// (inside them \" and \\ stand for " and \; any other backslash is kept); quoted and unquoted
// text with no space between form one word, and "" is an empty word. A '#' that starts a word
// outside quotes starts a comment, which ends the line. Returns nullopt and sets *error (if
// non-null) on an unterminated quote.
std::optional<std::vector<std::string>> tokenize(std::string_view line,
                                                 std::string* error = nullptr);

// Parses a whole scenario. Returns the first error (file, line, what was expected) if any line
// is malformed.
std::variant<Scenario, ParseError> parseScenario(std::string_view text, const std::string& file);

}  // namespace kv::sim
