// Generating, running and shrinking random walks.
#include "sim/walk/walker.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <random>
#include <variant>

#include "sim/device/device.h"

namespace kv::sim::walk {

namespace {

constexpr const char* kSpringBoard = "SpringBoard";
constexpr const char* kTrustedBssid = "aa:bb:cc:00:00:01";
constexpr const char* kOtherBssid = "aa:bb:cc:00:00:02";
constexpr const char* kRightPasscode = "1234";
constexpr const char* kWrongPasscode = "9999";

const char* const kVersions[] = {"8.4", "9.1", "9.3", "10.1", "10.3", "11.1"};

// A timeline nobody reads.
std::FILE* nowhere() {
  static std::FILE* file = std::fopen("/dev/null", "w");
  return file;
}

// Parses one scenario line into its statement.
bool parseLine(const std::string& line, int number, Statement* out, std::string* error) {
  auto parsed = parseScenario(line + "\n", "walk");
  if (auto* e = std::get_if<ParseError>(&parsed)) {
    *error = e->message;
    return false;
  }
  auto& statements = std::get<Scenario>(parsed).statements;
  if (statements.size() != 1) {
    *error = "not one statement: " + line;
    return false;
  }
  *out = std::move(statements[0]);
  out->line = number;
  return true;
}

// A walk being run: the device, the checker, and what each line did.
class Session {
 public:
  enum class Outcome { kDone, kRefused, kBroken };

  explicit Session(const WalkOptions& options) : options_(options.run) {
    options_.out = nowhere();
    options_.json = false;
    options_.album = nullptr;
    runner_ = std::make_unique<StepRunner>(options_, "walk");
  }

  Outcome run(const std::string& line, int number) {
    Statement s;
    std::string error;
    if (!parseLine(line, number, &s, &error)) return Outcome::kRefused;
    bool promptWasUp = checker_.promptUp();
    checker_.before(s);
    bool ok = runner_->step(s, &error);
    Device* device = runner_->device();
    if (!ok && device != nullptr && !device->fault().empty()) {
      verdict_ = {Broken::kHostFailed, "", error};
      return Outcome::kBroken;
    }
    if (device != nullptr && device->running(kSpringBoard)) {
      verdict_ = checker_.after(s, *device);
      if (verdict_.broken != Broken::kNone) return Outcome::kBroken;
    }
    if (!ok) {
      if (s.kind == Statement::Kind::kAction && s.action == "prompt" && s.args.size() == 2 &&
          s.args[0] == "button" && s.args[1] == "0" && promptWasUp) {
        verdict_ = {Broken::kPromptStays, "",
                    "Cancel was refused while the prompt was up: " + error};
        return Outcome::kBroken;
      }
      if (s.kind == Statement::Kind::kStart || s.kind == Statement::Kind::kRespring) {
        verdict_ = {Broken::kHostFailed, "", error};
        return Outcome::kBroken;
      }
      return Outcome::kRefused;
    }
    return Outcome::kDone;
  }

  // Asks every host to quit; a failure there breaks the walk too.
  bool finish() {
    std::string ending = runner_->finish();
    if (ending.empty()) return true;
    verdict_ = {Broken::kHostFailed, "", "at the end: " + ending};
    return false;
  }

  // SpringBoard's answer to a query, none when it cannot answer.
  platform::Value ask(const char* query) {
    Device* device = runner_->device();
    std::string error;
    if (device == nullptr) return {};
    auto answer = device->query(kSpringBoard, query, {}, &error);
    return answer ? *answer : platform::Value();
  }

  const Verdict& verdict() const { return verdict_; }

 private:
  RunOptions options_;
  std::unique_ptr<StepRunner> runner_;
  Checker checker_;
  Verdict verdict_;
};

// The random choices of one walk.
class Dice {
 public:
  explicit Dice(uint64_t seed) : rng_(seed) {}
  double uniform() { return std::uniform_real_distribution<double>(0, 1)(rng_); }
  bool chance(double p) { return uniform() < p; }
  size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(rng_); }
  template <typename T>
  const T& pick(const std::vector<T>& v) {
    return v[below(v.size())];
  }

  // Index of a choice by weight.
  size_t weighted(const std::vector<double>& weights) {
    std::discrete_distribution<size_t> d(weights.begin(), weights.end());
    return d(rng_);
  }

 private:
  std::mt19937_64 rng_;
};

// The device and settings a walk starts with.
struct Setup {
  std::string version;
  bool ipad = false;
  std::string biometrics;
  bool passcodeStored = false;
  std::vector<std::string> lines;
};

std::string appList(Dice& dice) {
  std::string list;
  for (const App& a : apps()) {
    if (dice.chance(0.45)) list += std::string(list.empty() ? "" : ",") + "\"" + a.bundle + "\"";
  }
  if (list.empty()) list = "\"com.apple.MobileSMS\"";
  return "[" + list + "]";
}

std::string trustedList() {
  return std::string("[{\"ssid\":\"Home\",\"bssid\":\"") + kTrustedBssid + "\"}]";
}

Setup makeSetup(Dice& dice) {
  Setup s;
  s.version = kVersions[dice.below(std::size(kVersions))];
  s.ipad = dice.chance(0.15);
  double b = dice.uniform();
  s.biometrics = b < 0.25                                      ? "none"
                 : (s.version == "11.1" && !s.ipad && b > 0.7) ? "faceid"
                                                               : "touchid";
  int identities = dice.chance(0.15) ? 0 : 1 + static_cast<int>(dice.below(2));
  std::string device = std::string("device ") + (s.ipad ? "ipad" : "iphone") + " ios " + s.version +
                       " " + s.biometrics;
  if (s.biometrics != "none") device += " identities " + std::to_string(identities);
  device += dice.chance(0.5) ? " passcode" : " no-passcode";
  s.lines.push_back(device);
  s.lines.push_back("prefs protected " + appList(dice));
  s.passcodeStored = dice.chance(0.6);
  if (s.passcodeStored) s.lines.push_back(std::string("prefs passcode \"") + kRightPasscode + "\"");
  if (dice.chance(0.15)) s.lines.push_back("prefs onlyPasscode true");
  if (dice.chance(0.3)) s.lines.push_back("prefs keepSession true");
  if (dice.chance(0.08)) s.lines.push_back("prefs Enabled false");
  if (dice.chance(0.3)) s.lines.push_back("prefs QuitProtectedAppsOnDeviceLock false");
  if (dice.chance(0.25)) s.lines.push_back("prefs allowedWiFis " + trustedList());
  if (dice.chance(0.4)) {
    s.lines.push_back(std::string("wifi ") + (dice.chance(0.5) ? kTrustedBssid : kOtherBssid));
  }
  s.lines.push_back("start SpringBoard");
  return s;
}

// What the device shows before a step, as SpringBoard answers.
struct Screen {
  bool prompt = false;
  bool passcodeField = false;
  bool locked = false;
  bool switcher = false;
  std::vector<std::string> recents;
};

Screen look(Session& session) {
  Screen s;
  platform::Value prompt = session.ask("prompt");
  s.prompt = prompt["visible"].asBool();
  s.passcodeField = prompt["passcodeField"].asBool();
  s.locked = session.ask("locked").asBool();
  platform::Value switcher = session.ask("switcher");
  s.switcher = switcher["visible"].asBool();
  for (const auto& item : switcher["items"].asArray()) s.recents.push_back(item.asString());
  return s;
}

// Chooses the next step from what the device shows.
class Chooser {
 public:
  Chooser(Dice& dice, const Setup& setup) : dice_(dice), setup_(setup) {}

  std::string next(const Screen& screen) {
    std::vector<std::pair<double, std::string>> options;
    auto add = [&](double weight, std::string line) {
      options.emplace_back(weight, std::move(line));
    };
    std::string sb = "SpringBoard: ";
    std::string bio = setup_.biometrics == "faceid" ? "face" : "finger";
    bool hardware = setup_.biometrics != "none";
    if (screen.prompt) {
      if (hardware) {
        add(14, bio + " match");
        add(6, bio + " nomatch");
      }
      add(10, sb + "prompt button 0");
      if (!screen.passcodeField && hardware) add(6, sb + "prompt button 1");
      if (screen.passcodeField) {
        add(10, sb + "prompt passcode " + kRightPasscode);
        add(5, sb + "prompt passcode " + kWrongPasscode);
      }
    }
    const App& app = dice_.pick(apps());
    std::string bundle = app.bundle;
    if (screen.locked) {
      add(25, sb + "unlock");
      if (setup_.version[0] == '8' || setup_.version[0] == '9') add(8, sb + "slide-up " + bundle);
      if (hardware) add(4, bio + " match");
    } else {
      add(20, sb + "tap " + bundle);
      if (app.url != nullptr) add(8, sb + "open-url " + app.url);
      add(3, sb + "open-url https://example.org in " + bundle);
      add(6, sb + "open-app " + bundle);
      add(1, sb + "open-app " + bundle + " suspended");
      add(1, sb + "open-app " + bundle + " origin __SBLaunchOriginShortcutItem");
      add(3, sb + "system-open " + bundle);
      add(8, sb + "home");
      add(4, sb + "switcher");
      if (screen.switcher && !screen.recents.empty()) {
        add(12, sb + "switcher-select " + dice_.pick(screen.recents));
      }
      if (!setup_.ipad && setup_.version[0] != '8') add(2, sb + "shortcut " + bundle);
    }
    add(6, sb + "lock");
    static const std::vector<std::string> kSeconds = {"0.05", "0.1", "0.25", "1",
                                                      "2.5",  "30",  "65"};
    add(8, "advance " + dice_.pick(kSeconds));
    add(6, settingsChange());
    add(2, std::string("wifi ") + (dice_.chance(0.5)   ? kTrustedBssid
                                   : dice_.chance(0.5) ? kOtherBssid
                                                       : "off"));
    add(1.2, "respring");
    if (hardware) add(0.4, sb + "remove-identity");
    std::vector<double> weights;
    for (const auto& o : options) weights.push_back(o.first);
    return options[dice_.weighted(weights)].second;
  }

 private:
  std::string settingsChange() {
    auto flag = [&] { return dice_.chance(0.5) ? std::string("true") : std::string("false"); };
    switch (dice_.below(8)) {
      case 0:
        return "prefs Enabled " + (dice_.chance(0.7) ? std::string("true") : std::string("false"));
      case 1: return "prefs keepSession " + flag();
      case 2: return "prefs protected " + appList(dice_);
      case 3:
        return dice_.chance(0.7) ? std::string("prefs passcode \"") + kRightPasscode + "\""
                                 : std::string("prefs-delete passcode");
      case 4: return "prefs onlyPasscode " + flag();
      case 5: return "prefs QuitProtectedAppsOnDeviceLock " + flag();
      case 6:
        return dice_.chance(0.6) ? "prefs allowedWiFis " + trustedList()
                                 : std::string("prefs-delete allowedWiFis");
      default: return "prefs appsInFoldersAreStillProtected " + flag();
    }
  }

  Dice& dice_;
  const Setup& setup_;
};

}  // namespace

WalkResult randomWalk(uint64_t seed, const WalkOptions& options) {
  WalkResult walk;
  walk.seed = seed;
  Dice dice(seed * 0x9E3779B97F4A7C15ULL + 1);
  Setup setup = makeSetup(dice);
  Session session(options);
  for (const auto& line : setup.lines) {
    auto outcome = session.run(line, static_cast<int>(walk.lines.size()) + 1);
    if (outcome == Session::Outcome::kRefused) continue;
    walk.lines.push_back(line);
    if (outcome == Session::Outcome::kBroken) {
      walk.verdict = session.verdict();
      return walk;
    }
  }
  Chooser chooser(dice, setup);
  int attempts = 0;
  while (walk.steps < options.minSteps && attempts++ < options.minSteps * 4) {
    std::string line = chooser.next(look(session));
    auto outcome = session.run(line, static_cast<int>(walk.lines.size()) + 1);
    if (outcome == Session::Outcome::kRefused) {
      ++walk.refused;
      continue;
    }
    walk.lines.push_back(line);
    ++walk.steps;
    if (outcome == Session::Outcome::kBroken) {
      walk.verdict = session.verdict();
      return walk;
    }
  }
  // Every walk ends by cancelling a prompt still up: it must go.
  if (look(session).prompt) {
    std::string line = "SpringBoard: prompt button 0";
    auto outcome = session.run(line, static_cast<int>(walk.lines.size()) + 1);
    walk.lines.push_back(line);
    ++walk.steps;
    if (outcome == Session::Outcome::kBroken) {
      walk.verdict = session.verdict();
      return walk;
    }
  }
  if (!session.finish()) walk.verdict = session.verdict();
  return walk;
}

Verdict replayWalk(const std::vector<std::string>& lines, const WalkOptions& options,
                   size_t* brokenAt) {
  Session session(options);
  for (size_t i = 0; i < lines.size(); ++i) {
    auto outcome = session.run(lines[i], static_cast<int>(i) + 1);
    if (outcome == Session::Outcome::kRefused) return {};
    if (outcome == Session::Outcome::kBroken) {
      *brokenAt = i;
      return session.verdict();
    }
  }
  *brokenAt = lines.size();
  if (!session.finish()) return session.verdict();
  return {};
}

std::vector<std::string> shrinkWalk(const WalkResult& walk, const WalkOptions& options,
                                    int* tries) {
  *tries = 0;
  // The device line and the start stay; everything else may go.
  auto fixed = [](const std::string& line) {
    return line.rfind("device ", 0) == 0 || line == "start SpringBoard";
  };
  auto same = [&](const Verdict& v) {
    return v.broken == walk.verdict.broken && v.app == walk.verdict.app;
  };
  std::vector<std::string> best = walk.lines;
  auto attempt = [&](const std::vector<std::string>& candidate) {
    ++*tries;
    size_t at = 0;
    Verdict v = replayWalk(candidate, options, &at);
    if (!same(v)) return false;
    best.assign(candidate.begin(), candidate.begin() + std::min(at + 1, candidate.size()));
    return true;
  };
  size_t chunks = 2;
  while (*tries < options.shrinkTries) {
    std::vector<size_t> removable;
    for (size_t i = 0; i < best.size(); ++i) {
      if (!fixed(best[i])) removable.push_back(i);
    }
    if (removable.empty()) break;
    chunks = std::min(chunks, removable.size());
    size_t size = (removable.size() + chunks - 1) / chunks;
    bool dropped = false;
    for (size_t c = 0; c * size < removable.size() && *tries < options.shrinkTries; ++c) {
      std::vector<bool> drop(best.size(), false);
      for (size_t k = c * size; k < std::min((c + 1) * size, removable.size()); ++k) {
        drop[removable[k]] = true;
      }
      std::vector<std::string> candidate;
      for (size_t i = 0; i < best.size(); ++i) {
        if (!drop[i]) candidate.push_back(best[i]);
      }
      if (attempt(candidate)) {
        dropped = true;
        chunks = std::max<size_t>(chunks - 1, 2);
        break;
      }
    }
    if (dropped) continue;
    if (chunks >= removable.size()) break;
    chunks = std::min(chunks * 2, removable.size());
  }
  return best;
}

std::string scenarioText(const WalkResult& walk, const std::vector<std::string>& lines,
                         size_t originalSteps) {
  std::string text = "# A random walk (seed " + std::to_string(walk.seed) +
                     ") broke an invariant: " + brokenName(walk.verdict.broken) + ".\n# " +
                     walk.verdict.details + "\n";
  text += "# Shrunk from " + std::to_string(originalSteps) + " lines to " +
          std::to_string(lines.size()) + "; the last step is where it broke.\n";
  for (size_t i = 0; i < lines.size(); ++i) {
    bool last = i + 1 == lines.size();
    if (last && walk.verdict.broken != Broken::kHostFailed) text += "mark\n";
    text += lines[i] + "\n";
  }
  switch (walk.verdict.broken) {
    case Broken::kFrontWithoutAuthentication:
    case Broken::kReplayedTwice: text += "expect not launched " + walk.verdict.app + "\n"; break;
    case Broken::kPromptStays: text += "expect not prompt\n"; break;
    default: break;
  }
  return text;
}

}  // namespace kv::sim::walk
