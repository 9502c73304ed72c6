// Tests of the walk's checker: fed statements and the events the device
// would log for them, it must flag each broken invariant and let each
// exemption through.
#include "sim/walk/checker.h"

#include <gtest/gtest.h>

#include <variant>

#include "sim/device/device.h"

namespace kv::sim::walk {
namespace {

// One step: a scenario line and the events SpringBoard logs for it
// ("KIND DETAILS", or "device KIND DETAILS" for the device's own).
struct Step {
  const char* line;
  std::vector<std::string> events;
};

const std::string kShown = "alert shown KavelinAlertView \"Kavelin\"";
std::string label(const char* name) {
  return std::string("prompt KavelinAlertView: glyph style 2 state 0, label \"") + name +
         "\" alpha 1, passcode field alpha 0";
}
const std::string kSuccess = "alert dismissed KavelinAlertView button=2";
const std::string kCancel = "alert dismissed KavelinAlertView button=0";
const std::string kUnlock = "lock unlocked (source 1)";
std::string front(const char* bundle) {
  return std::string("front ") + bundle;
}

// Runs the steps through a checker; answers the verdict of the last step
// (earlier steps must hold).
Verdict check(const std::vector<Step>& steps) {
  Device device(DeviceOptions{});
  Checker checker;
  Verdict verdict;
  std::string text;
  for (const Step& step : steps) text += std::string(step.line) + "\n";
  auto parsed = parseScenario(text, "t.scn");
  if (auto* error = std::get_if<ParseError>(&parsed)) {
    ADD_FAILURE() << error->format();
    return {};
  }
  const auto& statements = std::get<Scenario>(parsed).statements;
  for (size_t i = 0; i < steps.size(); ++i) {
    const Statement& s = statements.at(i);
    checker.before(s);
    for (const std::string& e : steps[i].events) {
      bool own = e.rfind("device ", 0) == 0;
      std::string rest = own ? e.substr(7) : e;
      size_t space = rest.find(' ');
      device.note(own ? "device" : "SpringBoard", rest.substr(0, space),
                  space == std::string::npos ? "" : rest.substr(space + 1));
    }
    verdict = checker.after(s, device);
    if (i + 1 < steps.size() && verdict.broken != Broken::kNone) {
      ADD_FAILURE() << "step " << i << " (" << steps[i].line << ") broke: " << verdict.details;
      return verdict;
    }
  }
  return verdict;
}

const std::vector<Step> kSetUp = {
    {"device iphone ios 10.3 touchid identities 1 passcode", {}},
    {"prefs protected [\"com.apple.MobileSMS\",\"com.quorvan.chatter\"]", {}},
    {"start SpringBoard", {}},
};

std::vector<Step> with(std::vector<Step> steps) {
  steps.insert(steps.begin(), kSetUp.begin(), kSetUp.end());
  return steps;
}

TEST(WalkChecker, FlagsAProtectedAppInFrontWithoutAuthentication) {
  struct Case {
    const char* name;
    std::vector<Step> steps;
  } cases[] = {
      {"a tap that the guard let through",
       with({{"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"an app the prompt did not name, on its success",
       with({{"SpringBoard: tap com.quorvan.chatter", {kShown, label("Chatter")}},
             {"finger match", {front("com.apple.MobileSMS"), kSuccess}}})},
      {"the prompt's own app without success",
       with({{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
             {"finger nomatch", {front("com.apple.MobileSMS")}}})},
      {"an app authenticated before the last unlock",
       with({{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
             {"finger match", {front("com.apple.MobileSMS"), kSuccess}},
             {"SpringBoard: lock", {front("home")}},
             {"SpringBoard: unlock", {kUnlock}},
             {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"a kept session after the unlock that ends it",
       with({{"prefs keepSession true", {}},
             {"SpringBoard: tap com.quorvan.chatter", {kShown, label("Chatter")}},
             {"finger match", {front("com.quorvan.chatter"), kSuccess}},
             {"SpringBoard: lock", {}},
             {"SpringBoard: unlock", {kUnlock}},
             {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"a success in the SpringBoard that a respring ended",
       with({{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
             {"finger match", {front("com.apple.MobileSMS"), kSuccess}},
             {"respring", {"device respring SpringBoard ends and starts again"}},
             {"SpringBoard: open-app com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"the trusted network left",
       with({{"prefs allowedWiFis [{\"ssid\":\"Home\",\"bssid\":\"aa:01\"}]", {}},
             {"wifi aa:01", {}},
             {"wifi aa:02", {}},
             {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"an unasked launch while a prompt waits",
       with({{"SpringBoard: tap com.quorvan.chatter", {kShown, label("Chatter")}},
             {"advance 1", {front("com.apple.MobileSMS")}}})},
  };
  for (const auto& c : cases) {
    Verdict v = check(c.steps);
    EXPECT_EQ(v.broken, Broken::kFrontWithoutAuthentication) << c.name << ": " << v.details;
  }
}

TEST(WalkChecker, LetsEachExemptionThrough) {
  struct Case {
    const char* name;
    std::vector<Step> steps;
  } cases[] = {
      {"unprotected app",
       with({{"SpringBoard: tap com.apple.calculator", {front("com.apple.calculator")}}})},
      {"the replay on success",
       with(
           {{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
            {"finger match", {front("com.apple.MobileSMS"), kSuccess}},
            {"SpringBoard: home", {front("home")}},
            {"SpringBoard: switcher-select com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"protection off",
       with({{"prefs Enabled false", {}},
             {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"nobody can authenticate",
       {{"device iphone ios 9.3 touchid identities 0 passcode", {}},
        {"prefs protected [\"com.apple.MobileSMS\"]", {}},
        {"start SpringBoard", {}},
        {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}}},
      {"trusted Wi-Fi",
       with({{"prefs allowedWiFis [{\"ssid\":\"Home\",\"bssid\":\"aa:01\"}]", {}},
             {"wifi aa:01", {}},
             {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"a kept session",
       with({{"prefs keepSession true", {}},
             {"SpringBoard: tap com.quorvan.chatter", {kShown, label("Chatter")}},
             {"finger match", {front("com.quorvan.chatter"), kSuccess}},
             {"SpringBoard: tap com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"the second launch while a prompt waits",
       with({{"SpringBoard: tap com.quorvan.chatter", {kShown, label("Chatter")}},
             {"SpringBoard: open-app com.apple.MobileSMS", {front("com.apple.MobileSMS")}}})},
      {"a launch held behind another prompt, run on its success",
       with({{"SpringBoard: open-url chatter://room", {kShown, label("Chatter")}},
             {"SpringBoard: tap com.apple.MobileSMS", {}},
             {"finger match", {front("com.apple.MobileSMS"), kSuccess}}})},
      {"a slide-up let through before the unlock that shows it",
       with({{"SpringBoard: lock", {}},
             {"SpringBoard: slide-up com.apple.MobileSMS",
              {kShown, label("Messages\\n(LockScreen)")}},
             {"finger match", {"lock device passcode asked for com.apple.MobileSMS", kSuccess}},
             {"SpringBoard: unlock", {kUnlock, front("com.apple.MobileSMS")}}})},
      {"a slide-up to an app whose held launch had already run",
       with({{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
             {"finger match", {front("com.apple.MobileSMS"), kSuccess}},
             {"SpringBoard: lock", {front("home")}},
             {"SpringBoard: slide-up com.apple.MobileSMS", {"lock slid up to com.apple.MobileSMS"}},
             {"SpringBoard: unlock", {kUnlock, front("com.apple.MobileSMS")}}})},
  };
  for (const auto& c : cases) {
    Verdict v = check(c.steps);
    EXPECT_EQ(v.broken, Broken::kNone) << c.name << ": " << v.details;
  }
}

TEST(WalkChecker, FlagsAHeldLaunchRunTwice) {
  Verdict v = check(with({{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
                          {"finger match", {front("com.apple.MobileSMS"), kSuccess}},
                          {"SpringBoard: home", {front("home")}},
                          {"advance 1", {front("com.apple.MobileSMS")}}}));
  EXPECT_EQ(v.broken, Broken::kReplayedTwice) << v.details;
  EXPECT_EQ(v.app, "com.apple.MobileSMS");

  // A cancelled prompt runs nothing at all.
  v = check(with({{"SpringBoard: tap com.apple.MobileSMS", {kShown, label("Messages")}},
                  {"SpringBoard: prompt button 0", {kCancel, front("com.apple.MobileSMS")}}}));
  EXPECT_EQ(v.broken, Broken::kFrontWithoutAuthentication) << v.details;
}

}  // namespace
}  // namespace kv::sim::walk
