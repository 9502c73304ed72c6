// Fuzzes short scenario runs on the simulated device: a device of any
// profile, a few settings of any kind (some as raw bytes in place of the
// preference file), then a handful of what a person and other processes do.
// The scenario may fail an action (there may be no prompt to tap); what must
// never happen is a host that crashes, hangs, or reports a sanitizer's error.
// Each run starts real host processes, so inputs are kept short.
#include <fuzzer/FuzzedDataProvider.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <variant>

#include "fuzz/fuzzed_values.h"
#include "sim/common/json.h"
#include "sim/device/runner.h"
#include "sim/device/scenario.h"

namespace {

using kv::fuzz::Words;
using kv::platform::Value;

const Words kPrefKeys = {"Enabled",   "passcode",         "onlyPasscode",       "keepSession",
                         "protected", "protectedFolders", "protectSwitcher",    "protectPowerDown",
                         "IconColor", "haptic",           "callerNameProtected"};
const Words kStrings = {
    "com.apple.MobileSMS", "com.apple.mobileslideshow", "1234", "YES", "NO", "Kavelin", "General"};
const Words kNames = {"appL", "idsn", "hasP", "bcol", "bc11", "bcam", "sesx", "fldr", "ricn",
                      "prrc", "wifi", "aeap", "spsi", "gpsi", "trwf", "prta", "bfc1"};
const Words kRequestKeys = {"settingsName", "appid", "showsInLockScreen"};

const char* const kVersions[] = {"8.4", "9.3", "10.3", "11.1"};
const char* const kPrefsFile = "/var/mobile/Library/Preferences/net.quorvan.kavelin.plist";

std::string word(FuzzedDataProvider& in, const kv::fuzz::Words& words);

// What a person or another process does, one scenario line.
std::string action(FuzzedDataProvider& in) {
  switch (in.ConsumeIntegralInRange<int>(0, 13)) {
    case 0: return "SpringBoard: tap com.apple.MobileSMS";
    case 1: return "SpringBoard: tap com.apple.mobileslideshow";
    case 2: return in.ConsumeBool() ? "finger match" : "finger nomatch";
    case 3: return "SpringBoard: prompt button " + std::to_string(in.ConsumeIntegralInRange(0, 1));
    case 4:
      return in.ConsumeBool() ? "SpringBoard: prompt passcode 1234"
                              : "SpringBoard: prompt passcode 0000";
    case 5: return "advance " + std::to_string(in.ConsumeIntegralInRange(0, 40) / 10.0);
    case 6: return in.ConsumeBool() ? "SpringBoard: lock" : "SpringBoard: unlock";
    case 7: return "SpringBoard: home";
    case 8:
      return "SpringBoard: message " + word(in, kNames) + " " +
             kv::sim::toJson(
                 Value::dictionary(kv::fuzz::fuzzedDictionary(in, kRequestKeys, kStrings, 2)));
    case 9:
      return "com.quorvan.notesplus: request " + word(in, kNames) + " " +
             kv::sim::toJson(
                 Value::dictionary(kv::fuzz::fuzzedDictionary(in, kRequestKeys, kStrings, 2)));
    case 10: return "com.quorvan.notesplus: read-reply " + word(in, kNames);
    case 11:
      return "prefs " + word(in, kPrefKeys) + " " +
             kv::sim::toJson(kv::fuzz::fuzzedValue(in, kStrings, 1));
    case 12: return "respring";
    default: {
      // The preference file replaced by bytes of any kind, then the change announced.
      std::string bytes = in.ConsumeRandomLengthString(48);
      std::string hex;
      for (unsigned char c : bytes) {
        static const char kDigits[] = "0123456789abcdef";
        hex += kDigits[c >> 4];
        hex += kDigits[c & 15];
      }
      if (hex.empty()) hex = "00";
      return std::string("file-raw ") + kPrefsFile + " " + hex +
             "\nnotify net.quorvan.kavelin.prefsChanged";
    }
  }
}

// A key or name as one word of a scenario line: arbitrary text keeps only
// the characters such a word may have there.
std::string word(FuzzedDataProvider& in, const kv::fuzz::Words& words) {
  std::string picked;
  for (char c : words.pick(in)) {
    if (std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '_' || c == '-')
      picked += c;
  }
  return picked.empty() ? "unknown" : picked;
}

std::string scenarioText(FuzzedDataProvider& in) {
  std::string version = kVersions[in.ConsumeIntegralInRange<size_t>(0, 3)];
  std::string text = "device iphone ios " + version;
  text += version == "11.1" && in.ConsumeBool() ? " faceid"
          : in.ConsumeBool()                    ? " touchid"
                                                : " none";
  text += " identities " + std::to_string(in.ConsumeIntegralInRange(0, 2));
  text += "\n";
  for (int n = in.ConsumeIntegralInRange(0, 3); n > 0; --n) {
    text += "prefs " + word(in, kPrefKeys) + " " +
            kv::sim::toJson(kv::fuzz::fuzzedValue(in, kStrings, 1)) + "\n";
  }
  text += "start SpringBoard app com.quorvan.notesplus\n";
  for (int n = 0; n < 6 && in.remaining_bytes() > 0; ++n) text += action(in) + "\n";
  return text;
}

// True iff the run's verdict (its "FAIL" line) names a fault of a host
// rather than a step that could not be taken.
bool hostFault(const std::string& report) {
  size_t at = report.rfind("\nFAIL ");
  if (at == std::string::npos) return false;
  std::string verdict = report.substr(at);
  for (const char* word : {"crashed", "ended with", "did not quit", "wall time", "did not settle",
                           "ERROR:", "runtime error", "exception"}) {
    if (verdict.find(word) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  std::string text = scenarioText(in);
  auto parsed = kv::sim::parseScenario(text, "fuzz.scn");
  auto* scenario = std::get_if<kv::sim::Scenario>(&parsed);
  if (scenario == nullptr) {
    // Every line made here is one the language has.
    std::fprintf(stderr, "%s\n%s\n", text.c_str(),
                 std::get<kv::sim::ParseError>(parsed).message.c_str());
    std::abort();
  }
  if (auto error = kv::sim::validateScenario(*scenario)) {
    std::fprintf(stderr, "%s\nline %d: %s\n", text.c_str(), error->line, error->message.c_str());
    std::abort();
  }

  char* report = nullptr;
  size_t length = 0;
  std::FILE* out = open_memstream(&report, &length);
  kv::sim::RunOptions options;
  options.hostPath = KAVELIN_HOST_PATH;
  options.libraryPath = KAVELIN_LIBRARY_PATH;
  options.privateLibraryDir = KAVELIN_PRIVATE_DIR;
  options.hostTimeoutMs = 20000;
  options.out = out;
  kv::sim::runScenario(*scenario, options);
  std::fclose(out);
  std::string said(report, length);
  std::free(report);
  if (hostFault(said)) {
    std::fprintf(stderr, "%s\n%s\n", text.c_str(), said.c_str());
    std::abort();
  }
  return 0;
}
