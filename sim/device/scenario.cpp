// Scenario files: reading each line into a statement and checking its syntax.
#include "sim/device/scenario.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <set>

#include "sim/common/device_paths.h"
#include "sim/common/json.h"
#include "sim/device/profiles.h"

namespace kv::sim {

namespace {

using Kind = Statement::Kind;

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view trim(std::string_view s) {
  while (!s.empty() && isSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && isSpace(s.back())) s.remove_suffix(1);
  return s;
}

// One word of a line and where its source text ends.
struct Token {
  std::string text;
  size_t end = 0;
};

// A line split into words; code ends where its comment (if any) begins.
struct Lexed {
  std::vector<Token> tokens;
  size_t codeEnd = 0;
};

std::optional<Lexed> lex(std::string_view line, std::string* error) {
  Lexed out;
  size_t i = 0;
  for (;;) {
    while (i < line.size() && isSpace(line[i])) ++i;
    if (i == line.size() || line[i] == '#') {
      out.codeEnd = i;
      return out;
    }
    Token token;
    while (i < line.size() && !isSpace(line[i])) {
      if (line[i] != '"') {
        token.text += line[i++];
        continue;
      }
      size_t open = i++;
      for (;;) {
        if (i == line.size()) {
          if (error) *error = "unterminated quote at column " + std::to_string(open + 1);
          return std::nullopt;
        }
        if (line[i] == '"') {
          ++i;
          break;
        }
        bool escape =
            line[i] == '\\' && i + 1 < line.size() && (line[i + 1] == '"' || line[i + 1] == '\\');
        if (escape) ++i;
        token.text += line[i++];
      }
    }
    token.end = i;
    out.tokens.push_back(std::move(token));
  }
}

// A source line being parsed.
struct Line {
  std::string_view raw;
  Lexed lexed;

  size_t size() const { return lexed.tokens.size(); }
  const std::string& word(size_t i) const { return lexed.tokens[i].text; }
  // Returns the raw text after word i up to the comment, trimmed.
  std::string rest(size_t i) const {
    size_t from = lexed.tokens[i].end;
    return std::string(trim(raw.substr(from, lexed.codeEnd - from)));
  }
};

// What the lines so far have established.
struct Context {
  int deviceLine = 0;
  bool started = false;
  std::set<std::string> apps;
};

struct Verb;
using ParseFn = std::string (*)(const Verb&, const Line&, Statement&, Context&);

// A statement word: its kind, its usage for messages, and the parser of its arguments.
struct Verb {
  std::string_view word;
  Kind kind;
  std::string_view usage;
  ParseFn parse;
};

std::string usageError(const Verb& verb, const std::string& problem) {
  return problem + "; expected '" + std::string(verb.usage) + "'";
}

// Checks the number of words after the verb; returns a message when it is off.
std::string arity(const Verb& verb, const Line& line, size_t least, size_t most) {
  size_t args = line.size() - 1;
  if (args < least) return usageError(verb, "too few words after " + line.word(0));
  if (args > most) return usageError(verb, "unexpected '" + line.word(most + 1) + "'");
  return {};
}

template <typename Number>
std::optional<Number> readNumber(std::string_view text, int base = 10) {
  Number n{};
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n, base);
  if (ec != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return n;
}

std::optional<uint64_t> readState(std::string_view text) {
  if (text.starts_with("0x") || text.starts_with("0X"))
    return readNumber<uint64_t>(text.substr(2), 16);
  return readNumber<uint64_t>(text);
}

std::optional<double> readSeconds(std::string_view text) {
  double d = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), d);
  if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(d) || d < 0) {
    return std::nullopt;
  }
  return d + 0.0;  // no negative zero
}

// Returns whether text reads MAJOR.MINOR or MAJOR.MINOR.PATCH, all decimal.
bool isVersion(std::string_view text) {
  int parts = 0;
  for (;;) {
    size_t dot = text.find('.');
    std::string_view part = text.substr(0, dot);
    if (part.empty() || part.find_first_not_of("0123456789") != std::string_view::npos) {
      return false;
    }
    ++parts;
    if (dot == std::string_view::npos) return parts == 2 || parts == 3;
    text.remove_prefix(dot + 1);
  }
}

bool isBundleId(std::string_view text) {
  return text.find('.') != std::string_view::npos && text.front() != '.' && text.back() != '.' &&
         text.find_first_not_of(
             "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
             "0123456789.-_") == std::string_view::npos;
}

constexpr std::string_view kProcessNames[] = {"SpringBoard", "Preferences", "Camera",
                                              "InCallService"};

bool isProcessName(std::string_view word) {
  for (std::string_view name : kProcessNames) {
    if (word == name) return true;
  }
  return false;
}

// The settings of the device statement; each may be given once.
enum class DeviceSlot { kModel, kVersion, kBiometrics, kIdentities, kPasscode, kPassKit };

// A device word. Words with no apply function take the next word as their value.
struct DeviceWord {
  std::string_view word;
  DeviceSlot slot;
  void (*apply)(DeviceSpec&);
};

constexpr DeviceWord kDeviceWords[] = {
    {"iphone", DeviceSlot::kModel, [](DeviceSpec& d) { d.ipad = false; }},
    {"ipad", DeviceSlot::kModel, [](DeviceSpec& d) { d.ipad = true; }},
    {"ios", DeviceSlot::kVersion, nullptr},
    {"touchid", DeviceSlot::kBiometrics,
     [](DeviceSpec& d) { d.biometrics = DeviceSpec::Biometrics::kTouchId; }},
    {"faceid", DeviceSlot::kBiometrics,
     [](DeviceSpec& d) { d.biometrics = DeviceSpec::Biometrics::kFaceId; }},
    {"none", DeviceSlot::kBiometrics,
     [](DeviceSpec& d) { d.biometrics = DeviceSpec::Biometrics::kNone; }},
    {"identities", DeviceSlot::kIdentities, nullptr},
    {"passcode", DeviceSlot::kPasscode, [](DeviceSpec& d) { d.passcode = true; }},
    {"no-passcode", DeviceSlot::kPasscode, [](DeviceSpec& d) { d.passcode = false; }},
    {"passkit-late", DeviceSlot::kPassKit, [](DeviceSpec& d) { d.passKitLate = true; }},
};

std::string parseDevice(const Verb& verb, const Line& line, Statement& st, Context& ctx) {
  if (ctx.deviceLine)
    return "device given twice (first on line " + std::to_string(ctx.deviceLine) + ")";
  if (ctx.started) return "device must come before the first start";
  ctx.deviceLine = st.line;
  std::set<DeviceSlot> given;
  for (size_t i = 1; i < line.size(); ++i) {
    const std::string& word = line.word(i);
    const DeviceWord* entry = nullptr;
    for (const DeviceWord& candidate : kDeviceWords) {
      if (candidate.word == word) entry = &candidate;
    }
    if (!entry) return usageError(verb, "unknown device word '" + word + "'");
    if (!given.insert(entry->slot).second) {
      return usageError(verb, "'" + word + "' repeats a setting given before");
    }
    if (entry->apply) {
      entry->apply(st.device);
      continue;
    }
    if (++i == line.size()) return usageError(verb, "missing value after " + word);
    const std::string& value = line.word(i);
    if (entry->slot == DeviceSlot::kVersion) {
      if (!isVersion(value)) return usageError(verb, "bad version '" + value + "'");
      if (osProfile(value) == nullptr) {
        std::string known;
        for (const OsProfile& p : osProfiles()) known += " " + std::string(p.version);
        return "no iOS " + value + " profile; expected one of" + known;
      }
      st.device.version = value;
    } else {
      std::optional<int> n = readNumber<int>(value);
      if (!n || *n < 0) return usageError(verb, "bad count '" + value + "' after identities");
      st.device.identities = *n;
    }
  }
  int major = readNumber<int>(st.device.version.substr(0, st.device.version.find('.'))).value_or(0);
  if (st.device.biometrics == DeviceSpec::Biometrics::kFaceId && major < 11) {
    return "faceid needs ios 11 or later, not ios " + st.device.version;
  }
  return {};
}

// Reads a file statement's path: absolute, with "." and ".." resolved
// within it, and inside one of the device's folders, so that nothing a
// scenario writes lands outside the device's root. Answers a message when
// the path is not such a path, else "" with *out the resolved path.
std::string devicePath(const Verb& verb, const std::string& path, std::string* out) {
  if (path.empty() || path.front() != '/') {
    return usageError(verb, "path '" + path + "' is not absolute");
  }
  std::vector<std::string_view> parts;
  std::string_view rest = path;
  while (!rest.empty()) {
    size_t slash = rest.find('/');
    std::string_view part = rest.substr(0, slash);
    rest.remove_prefix(slash == std::string_view::npos ? rest.size() : slash + 1);
    if (part.empty() || part == ".") continue;
    if (part != "..") {
      parts.push_back(part);
    } else if (parts.empty()) {
      return "path '" + path + "' leaves the device's root";
    } else {
      parts.pop_back();
    }
  }
  out->clear();
  for (std::string_view part : parts) (*out += '/') += part;
  for (const DeviceFolder& folder : kDeviceFolders) {
    if (isUnderFolder(*out, folder.device) && *out != folder.device) return {};
  }
  std::string folders;
  for (const DeviceFolder& folder : kDeviceFolders) {
    folders += (folders.empty() ? "" : ", ") + std::string(folder.device);
  }
  return "path '" + path + "' is not inside the device's folders (" + folders + ")";
}

// Reads KEY JSON, for prefs (a preference key) and file (an absolute path).
std::string parseKeyAndJson(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (line.size() < 2)
    return usageError(verb, verb.kind == Kind::kFile ? "missing path" : "missing key");
  st.key = line.word(1);
  if (st.key.empty()) return usageError(verb, "empty key");
  if (verb.kind == Kind::kFile) {
    if (std::string error = devicePath(verb, line.word(1), &st.key); !error.empty()) return error;
  }
  std::string json = line.rest(1);
  if (json.empty()) return usageError(verb, "missing JSON value after " + st.key);
  std::string error;
  std::optional<platform::Value> value = parseJson(json, &error);
  if (!value) return "bad JSON value for " + st.key + ": " + error;
  st.value = std::move(*value);
  return {};
}

// file-raw PATH HEX: the exact bytes of a file, two hex digits a byte
// (spaces between bytes allowed).
std::string parseFileRaw(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (line.size() < 3) return usageError(verb, line.size() < 2 ? "missing path" : "missing bytes");
  if (std::string error = devicePath(verb, line.word(1), &st.key); !error.empty()) return error;
  std::string hex;
  for (char c : line.rest(1)) {
    if (c != ' ' && c != '\t') hex.push_back(c);
  }
  if (hex.size() % 2 != 0) return usageError(verb, "an odd number of hex digits");
  for (size_t i = 0; i < hex.size(); i += 2) {
    int byte = 0;
    for (char c : hex.substr(i, 2)) {
      int digit = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                  : (c >= 'a' && c <= 'f')                    ? c - 'a' + 10
                  : (c >= 'A' && c <= 'F')                    ? c - 'A' + 10
                                                              : -1;
      if (digit < 0) return usageError(verb, "'" + hex.substr(i, 2) + "' is not a hex byte");
      byte = byte * 16 + digit;
    }
    st.bytes.push_back(static_cast<uint8_t>(byte));
  }
  return {};
}

std::string parsePrefsDelete(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 1); !error.empty()) return error;
  st.key = line.word(1);
  return st.key.empty() ? usageError(verb, "empty key") : std::string();
}

// BSSID [ssid NAME] [password PW], the words after the BSSID in any order.
std::string parseNetwork(const Verb& verb, const Line& line, Statement& st) {
  st.name = line.word(1);
  for (size_t i = 2; i < line.size(); i += 2) {
    const std::string& word = line.word(i);
    if (word != "ssid" && word != "password") return usageError(verb, "unexpected '" + word + "'");
    if (i + 1 == line.size()) return usageError(verb, "missing value after " + word);
    (word == "ssid" ? st.ssid : st.password) = line.word(i + 1);
  }
  return {};
}

std::string parseWifi(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 5); !error.empty()) return error;
  if (line.word(1) == "off" && line.size() == 2) {
    st.kind = Kind::kWifiOff;
    return {};
  }
  return parseNetwork(verb, line, st);
}

std::string parseWifiKnown(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 5); !error.empty()) return error;
  return parseNetwork(verb, line, st);
}

std::string parseNotify(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 3); !error.empty()) return error;
  st.name = line.word(1);
  if (line.size() == 2) return {};
  if (line.word(2) != "state") return usageError(verb, "unexpected '" + line.word(2) + "'");
  if (line.size() != 4) return usageError(verb, "missing number after state");
  st.state = readState(line.word(3));
  if (!st.state) return usageError(verb, "bad state '" + line.word(3) + "' (decimal or 0x hex)");
  return {};
}

std::string parseStart(const Verb& verb, const Line& line, Statement& st, Context& ctx) {
  if (std::string error = arity(verb, line, 1, SIZE_MAX); !error.empty()) return error;
  for (size_t i = 1; i < line.size(); ++i) {
    const std::string& word = line.word(i);
    if (isProcessName(word)) {
      st.processes.push_back(word);
    } else if (word == "app") {
      if (++i == line.size()) return usageError(verb, "missing bundle identifier after app");
      if (!isBundleId(line.word(i)))
        return usageError(verb, "bad bundle identifier '" + line.word(i) + "'");
      st.processes.push_back("app:" + line.word(i));
      ctx.apps.insert(line.word(i));
    } else {
      return usageError(verb, "unknown process '" + word + "'");
    }
  }
  ctx.started = true;
  return {};
}

std::string parsePresence(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 1); !error.empty()) return error;
  if (line.word(1) != "match" && line.word(1) != "nomatch") {
    return usageError(verb, "unknown word '" + line.word(1) + "'");
  }
  st.match = line.word(1) == "match";
  return {};
}

std::string parseBiometric(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 1); !error.empty()) return error;
  std::optional<int64_t> code = readNumber<int64_t>(line.word(1));
  if (!code) return usageError(verb, "bad code '" + line.word(1) + "' (an integer)");
  st.code = *code;
  return {};
}

std::string parseAdvance(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 1); !error.empty()) return error;
  std::optional<double> seconds = readSeconds(line.word(1));
  if (!seconds) return usageError(verb, "bad seconds '" + line.word(1) + "' (a number, 0 or more)");
  st.seconds = *seconds;
  return {};
}

// Reads the words of a statement that describes the device before it starts.
std::string parseDeviceWords(const Verb& verb, const Line& line, Statement& st, Context& ctx) {
  if (ctx.started) return std::string(verb.word) + " must come before the first start";
  size_t most = verb.kind == Kind::kBundle ? 1 : SIZE_MAX;
  if (std::string error = arity(verb, line, 1, most); !error.empty()) return error;
  for (size_t i = 1; i < line.size(); ++i) st.names.push_back(line.word(i));
  if (verb.kind == Kind::kBundle) {
    static const std::string kPlaces[] = {"none", "library", "bootstrap", "both"};
    if (std::find(std::begin(kPlaces), std::end(kPlaces), st.names[0]) == std::end(kPlaces)) {
      return usageError(verb, "unknown place '" + st.names[0] + "'");
    }
  }
  return {};
}

// battery critical|normal: SpringBoard hears of the battery's level, as
// its "battery" action.
std::string parseBattery(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 1); !error.empty()) return error;
  if (line.word(1) != "critical" && line.word(1) != "normal") {
    return usageError(verb, "unknown level '" + line.word(1) + "'");
  }
  st.kind = Kind::kAction;
  st.process = "SpringBoard";
  st.action = "battery";
  st.args = {line.word(1)};
  st.rest = line.word(1);
  return {};
}

std::string parseMark(const Verb& verb, const Line& line, Statement&, Context&) {
  return arity(verb, line, 0, 0);
}

std::string parseSnapshot(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 1); !error.empty()) return error;
  st.name = line.word(1);
  if (st.name.empty()) return usageError(verb, "the picture needs a name");
  return {};
}

std::string parseRespring(const Verb& verb, const Line& line, Statement&, Context& ctx) {
  if (!ctx.started) return "respring needs SpringBoard started first";
  return arity(verb, line, 0, 0);
}

// kill PROCESS: a process named as start names it (app BUNDLE-ID for an app).
std::string parseKill(const Verb& verb, const Line& line, Statement& st, Context&) {
  if (std::string error = arity(verb, line, 1, 2); !error.empty()) return error;
  if (line.word(1) == "app") {
    if (line.size() != 3 || !isBundleId(line.word(2))) return usageError(verb, "bad app");
    st.name = "app:" + line.word(2);
  } else if (line.size() == 2 && isProcessName(line.word(1))) {
    st.name = line.word(1);
  } else {
    return usageError(verb, "unknown process '" + line.word(1) + "'");
  }
  return {};
}

std::string parseExpect(const Verb& verb, const Line& line, Statement& st, Context&) {
  size_t at = 1;
  st.negated = line.size() > 1 && line.word(1) == "not";
  if (st.negated) ++at;
  if (at >= line.size()) return usageError(verb, "missing predicate");
  st.predicate = line.word(at);
  for (size_t i = at + 1; i < line.size(); ++i) st.predicateArgs.push_back(line.word(i));
  st.predicateRest = line.rest(at);
  return {};
}

// incoming-call NUMBER [name "NAME"] / outgoing-call NUMBER / answer / hang-up
std::string parsePhone(const Verb& verb, const Line& line, Statement& st, Context& ctx) {
  if (!ctx.started) return std::string(verb.word) + " needs a started process to ring";
  const std::string_view word = verb.word;
  st.action = word == "incoming-call"   ? "incoming"
              : word == "outgoing-call" ? "outgoing"
                                        : std::string(word);
  if (st.action == "answer" || st.action == "hang-up") return arity(verb, line, 0, 0);
  size_t most = st.action == "incoming" ? 3 : 1;
  if (std::string error = arity(verb, line, 1, most); !error.empty()) return error;
  st.args.push_back(line.word(1));
  if (line.size() == 2) return {};
  if (line.word(2) != "name") return usageError(verb, "unexpected '" + line.word(2) + "'");
  if (line.size() != 4 || line.word(3).empty()) return usageError(verb, "missing name after name");
  st.args.push_back(line.word(3));
  return {};
}

constexpr Verb kVerbs[] = {
    {"device", Kind::kDevice,
     "device iphone|ipad ios VERSION [touchid|faceid|none] [identities N] [passcode|no-passcode] "
     "[passkit-late]",
     parseDevice},
    {"prefs", Kind::kPrefs, "prefs KEY JSON", parseKeyAndJson},
    {"prefs-delete", Kind::kPrefsDelete, "prefs-delete KEY", parsePrefsDelete},
    {"wifi", Kind::kWifi, "wifi BSSID [ssid NAME] [password PW]|off", parseWifi},
    {"wifi-known", Kind::kWifiKnown, "wifi-known BSSID [ssid NAME] [password PW]", parseWifiKnown},
    {"notify", Kind::kNotify, "notify NAME [state N]", parseNotify},
    {"file", Kind::kFile, "file PATH JSON", parseKeyAndJson},
    {"file-raw", Kind::kFileRaw, "file-raw PATH HEX", parseFileRaw},
    {"start", Kind::kStart,
     "start PROCESS... with SpringBoard, Preferences, Camera, InCallService or app BUNDLE-ID",
     parseStart},
    {"finger", Kind::kFinger, "finger match|nomatch", parsePresence},
    {"face", Kind::kFace, "face match|nomatch", parsePresence},
    {"biometric", Kind::kBiometric, "biometric CODE", parseBiometric},
    {"advance", Kind::kAdvance, "advance SECONDS", parseAdvance},
    {"mark", Kind::kMark, "mark", parseMark},
    {"expect", Kind::kExpect, "expect [not] PREDICATE [ARGS]", parseExpect},
    {"missing", Kind::kMissing, "missing FUNCTION...", parseDeviceWords},
    {"bundle", Kind::kBundle, "bundle none|library|bootstrap|both", parseDeviceWords},
    {"extension", Kind::kExtension, "extension NAME...", parseDeviceWords},
    {"snapshot", Kind::kSnapshot, "snapshot NAME", parseSnapshot},
    {"respring", Kind::kRespring, "respring", parseRespring},
    {"kill", Kind::kKill, "kill PROCESS", parseKill},
    {"battery", Kind::kAction, "battery critical|normal", parseBattery},
    {"incoming-call", Kind::kPhone, "incoming-call NUMBER [name \"NAME\"]", parsePhone},
    {"outgoing-call", Kind::kPhone, "outgoing-call NUMBER", parsePhone},
    {"answer", Kind::kPhone, "answer", parsePhone},
    {"hang-up", Kind::kPhone, "hang-up", parsePhone},
};

// Parses `PROCESS: ACTION [ARGS]`, whose first word ends with a colon.
std::string parseAction(const Line& line, Statement& st, const Context& ctx) {
  st.kind = Kind::kAction;
  std::string_view head = line.word(0);
  st.process = std::string(head.substr(0, head.size() - 1));
  if (!isProcessName(st.process) && !ctx.apps.count(st.process)) {
    if (isBundleId(st.process)) {
      return "app " + st.process + " is not started; expected an earlier 'start app " + st.process +
             "'";
    }
    return "unknown process '" + st.process +
           "'; expected SpringBoard, Preferences, Camera, InCallService or a started app";
  }
  if (line.size() < 2)
    return "missing action after '" + line.word(0) + "'; expected 'PROCESS: ACTION [ARGS]'";
  st.action = line.word(1);
  for (size_t i = 2; i < line.size(); ++i) st.args.push_back(line.word(i));
  st.rest = line.rest(1);
  return {};
}

std::string unknownStatement(const std::string& word) {
  std::string message = "unknown statement '" + word + "'; expected one of";
  for (const Verb& verb : kVerbs) message += " " + std::string(verb.word) + ",";
  return message + " or PROCESS: ACTION";
}

}  // namespace

std::string ParseError::format() const {
  return file + ":" + std::to_string(line) + ": " + message;
}

std::optional<std::vector<std::string>> tokenize(std::string_view line, std::string* error) {
  std::optional<Lexed> lexed = lex(line, error);
  if (!lexed) return std::nullopt;
  std::vector<std::string> words;
  for (Token& token : lexed->tokens) words.push_back(std::move(token.text));
  return words;
}

std::variant<Scenario, ParseError> parseScenario(std::string_view text, const std::string& file) {
  Scenario scenario{file, {}};
  Context ctx;
  int number = 0;
  // Editors that write UTF-8 with a byte-order mark put it before the first line.
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  while (!text.empty()) {
    size_t newline = text.find('\n');
    Line line{text.substr(0, newline), {}};
    text.remove_prefix(newline == std::string_view::npos ? text.size() : newline + 1);
    ++number;
    // A NUL byte means the file is not text: a line would silently end at it
    // wherever a C string is made of it.
    if (size_t nul = line.raw.find('\0'); nul != std::string_view::npos) {
      return ParseError{file, number,
                        "a NUL byte at column " + std::to_string(nul + 1) + " (not a text file?)"};
    }

    std::string error;
    std::optional<Lexed> lexed = lex(line.raw, &error);
    if (!lexed) return ParseError{file, number, error};
    if (lexed->tokens.empty()) continue;
    line.lexed = std::move(*lexed);

    Statement st;
    st.line = number;
    st.text = std::string(trim(line.raw.substr(0, line.lexed.codeEnd)));
    const std::string& head = line.word(0);
    if (head.size() > 1 && head.back() == ':') {
      error = parseAction(line, st, ctx);
    } else {
      const Verb* verb = nullptr;
      for (const Verb& candidate : kVerbs) {
        if (candidate.word == head) verb = &candidate;
      }
      if (!verb) return ParseError{file, number, unknownStatement(head)};
      st.kind = verb->kind;
      error = verb->parse(*verb, line, st, ctx);
    }
    if (!error.empty()) return ParseError{file, number, std::move(error)};
    scenario.statements.push_back(std::move(st));
  }
  return scenario;
}

}  // namespace kv::sim
