// The walk's invariants, judged from the event log and SpringBoard's answers.
#include "sim/walk/checker.h"

#include <regex>

#include "sim/device/device.h"

namespace kv::sim::walk {

namespace {

constexpr const char* kHome = "home";

// The part of the prompt's item line before its first break: the app's
// display name (a lock-screen item adds "(LockScreen)" on a line of its own).
std::string firstLine(const std::string& text) {
  size_t end = text.find("\\n");
  end = std::min(end, text.find('\n'));
  return end == std::string::npos ? text : text.substr(0, end);
}

// The bundle identifier an item line names: the app of that display name,
// else the line itself (an item that is not an app).
std::string bundleOfItem(const std::string& line) {
  std::string name = firstLine(line);
  for (const App& a : apps()) {
    if (name == a.name) return a.bundle;
  }
  return name;
}

bool startsWith(const std::string& s, const char* prefix) {
  return s.rfind(prefix, 0) == 0;
}

}  // namespace

const std::vector<App>& apps() {
  static const std::vector<App> kApps = {
      {"com.apple.MobileSMS", "Messages", "sms:5550100"},
      {"com.quorvan.chatter", "Chatter", "chatter://room"},
      {"com.quorvan.notesplus", "Notes Plus", "notesplus://note"},
      {"com.apple.mobileslideshow", "Photos", "photos-redirect://"},
      {"com.apple.mobilesafari", "Safari", "https://example.org"},
      {"com.apple.mobiletimer", "Clock", "clock-alarm://"},
      {"com.apple.calculator", "Calculator", nullptr},
      {"com.apple.Preferences", "Settings", nullptr},
  };
  return kApps;
}

const char* brokenName(Broken broken) {
  switch (broken) {
    case Broken::kNone: return "none";
    case Broken::kFrontWithoutAuthentication: return "front-without-authentication";
    case Broken::kReplayedTwice: return "held-action-ran-twice";
    case Broken::kPromptStays: return "prompt-not-dismissed";
    case Broken::kHostFailed: return "host-failed";
  }
  return "?";
}

void Checker::before(const Statement& s) {
  using K = Statement::Kind;
  asked_.clear();
  stepText_ = s.text;
  switch (s.kind) {
    case K::kDevice:
      biometrics_ = s.device.biometrics == DeviceSpec::Biometrics::kNone     ? "none"
                    : s.device.biometrics == DeviceSpec::Biometrics::kFaceId ? "faceid"
                                                                             : "touchid";
      identities_ = s.device.identities;
      break;
    case K::kPrefs:
    case K::kPrefsDelete: {
      const platform::Value& v = s.value;
      bool absent = s.kind == K::kPrefsDelete;
      if (s.key == "Enabled") enabled_ = absent || v.asBool();
      if (s.key == "keepSession") keepSession_ = !absent && v.asBool();
      if (s.key == "passcode") {
        passcode_ = !absent && v.kind() == platform::Value::Kind::kString && !v.asString().empty();
      }
      if (s.key == "protected") {
        protected_.clear();
        if (!absent) {
          for (const auto& e : v.asArray()) protected_.insert(e.asString());
        }
      }
      if (s.key == "allowedWiFis") {
        trusted_.clear();
        if (!absent) {
          for (const auto& e : v.asArray()) trusted_.insert(e["bssid"].asString());
        }
      }
      break;
    }
    case K::kWifi: wifi_ = s.name; break;
    case K::kWifiOff: wifi_.clear(); break;
    case K::kAction: {
      // What a person (or another process) asks to bring to the front.
      const std::string& a = s.action;
      if ((a == "tap" || a == "open-app" || a == "system-open" || a == "switcher-select" ||
           a == "shortcut" || a == "cc-launch" || a == "slide-up" || a == "ui-activate") &&
          !s.args.empty()) {
        asked_.insert(s.args[0]);
      }
      if (a == "open-url" && !s.args.empty()) {
        if (s.args.size() == 3) asked_.insert(s.args[2]);
        for (const App& app : apps()) {
          if (app.url != nullptr && s.args[0] == app.url) asked_.insert(app.bundle);
        }
      }
      if (a == "remove-identity" && identities_ > 0) --identities_;
      break;
    }
    default: break;
  }
}

bool Checker::canAuthenticate() const {
  return (biometrics_ != "none" && identities_ > 0) || passcode_;
}

// The exemptions that let every protected app through.
bool Checker::exempt() const {
  if (!enabled_ || !canAuthenticate()) return true;
  if (!wifi_.empty() && trusted_.count(wifi_) != 0) return true;
  return keepSession_ && session_;
}

bool Checker::protectedApp(const std::string& bundle) const {
  return bundle != kHome && protected_.count(bundle) != 0;
}

bool Checker::requested(const std::string& bundle) const {
  return asked_.count(bundle) != 0;
}

void Checker::endSession() {
  session_ = false;
  authenticated_.clear();
}

Verdict Checker::front(const std::string& bundle, bool successStep) {
  if (!protectedApp(bundle)) return {};
  bool asked = requested(bundle);
  if (exempt()) return {};
  // A lock-screen slide-up that was let through brings its app up on the
  // unlock: that is the person's own launch, not a held one running again.
  auto slid = slidUp_.find(bundle);
  if (slid != slidUp_.end() && slid->second) {
    slidUp_.erase(slid);
    return {};
  }
  // A success replays the call the coordinator holds: the prompt's own, or
  // one asked for while that prompt was up (it holds one call of each kind,
  // and runs the app launch first). A held call runs once.
  bool held = bundle == promptItem_ || queued_.count(bundle) != 0;
  if (!asked && held && (successStep || (promptSucceeded_ && !promptUp_))) {
    if (++replays_[bundle] > 1) {
      return {Broken::kReplayedTwice, bundle,
              bundle + " came to the front again, unasked, after its held launch had run"};
    }
    queued_.erase(bundle);
    return {};
  }
  // The deliberate pass: a second launch while a prompt waits runs unguarded.
  if (promptUp_ && asked) return {};
  if (authenticated_.count(bundle) != 0) return {};
  return {Broken::kFrontWithoutAuthentication, bundle,
          bundle +
              " (protected) came to the front without authentication since the last unlock "
              "and without an exemption"};
}

Verdict Checker::after(const Statement& s, Device& device) {
  static const std::regex kLabel("label \"([^\"]*)\"");
  static const std::regex kButton("dismissed KavelinAlertView button=(-?[0-9]+)");
  const auto& events = device.log().events();
  Verdict verdict;
  bool successStep = false;
  for (size_t i = seen_; i < events.size(); ++i) {
    successStep = successStep || (events[i].process == "SpringBoard" && events[i].kind == "alert" &&
                                  events[i].details == "dismissed KavelinAlertView button=2");
  }
  std::set<std::string> fronted;
  for (; seen_ < events.size(); ++seen_) {
    const Event& e = events[seen_];
    if (e.process == "device" &&
        (e.kind == "respring" || (e.kind == "kill" && e.details == "SpringBoard"))) {
      // A fresh library: nothing held, no session, no prompt.
      promptUp_ = false;
      promptSucceeded_ = false;
      promptItem_.clear();
      slidUp_.clear();
      queued_.clear();
      endSession();
      continue;
    }
    if (e.process != "SpringBoard") continue;
    std::smatch m;
    if (e.kind == "alert" && startsWith(e.details, "shown KavelinAlertView")) {
      promptUp_ = true;
      promptSucceeded_ = false;
      promptItem_.clear();
      replays_.clear();
    } else if (e.kind == "prompt" && startsWith(e.details, "KavelinAlertView:") &&
               std::regex_search(e.details, m, kLabel)) {
      promptItem_ = bundleOfItem(m[1].str());
    } else if (e.kind == "alert" && std::regex_search(e.details, m, kButton)) {
      promptUp_ = false;
      // A cancel drops every held call; a success leaves the other kind's,
      // which gets a prompt of its own (that may name no item).
      if (m[1].str() != "2") queued_.clear();
      if (m[1].str() == "2") {
        promptSucceeded_ = true;
        session_ = true;
        if (!promptItem_.empty()) authenticated_.insert(promptItem_);
      }
    } else if (e.kind == "lock" && startsWith(e.details, "unlocked")) {
      // Every unlock starts afresh; a slide-up that was let through keeps
      // its app, which the unlock brings to the front.
      std::map<std::string, bool> slid;
      for (const auto& [app, allowed] : slidUp_) {
        if (allowed) slid[app] = true;
      }
      endSession();
      slidUp_ = std::move(slid);
    } else if (e.kind == "lock" && (startsWith(e.details, "slid up to ") ||
                                    startsWith(e.details, "device passcode asked for "))) {
      std::string app = e.details.substr(e.details.rfind(' ') + 1);
      bool allowed = !protectedApp(app) || exempt() || authenticated_.count(app) != 0 ||
                     (promptUp_ && (promptItem_ == app || requested(app)));
      slidUp_[app] = allowed;
    } else if (e.kind == "front") {
      fronted.insert(e.details);
      if (verdict.broken == Broken::kNone) verdict = front(e.details, successStep);
    }
  }
  if (verdict.broken != Broken::kNone) return verdict;
  // What was asked for while a prompt stays up, and did not come, waits behind it.
  if (promptUp_) {
    for (const auto& app : asked_) {
      if (fronted.count(app) == 0) queued_.insert(app);
    }
  }

  // Cancel makes the prompt go.
  if (s.kind == Statement::Kind::kAction && s.action == "prompt" && s.args.size() == 2 &&
      s.args[0] == "button" && s.args[1] == "0") {
    std::string error;
    auto prompt = device.query("SpringBoard", "prompt", {}, &error);
    if (prompt && (*prompt)["visible"].asBool()) {
      return {Broken::kPromptStays, promptItem_, "the prompt is still up after Cancel"};
    }
  }
  return {};
}

}  // namespace kv::sim::walk
