// What must hold after every step of a random walk, judged from what a
// person could see (the event log, SpringBoard's answers) and from the
// walk's own statements (settings, Wi-Fi, the device), never from the
// library's internals.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "sim/device/scenario.h"

namespace kv::sim {

class Device;

namespace walk {

// The walk's apps: bundle identifier, display name, and the URL schemes
// that open it (as the simulated home screen has them).
struct App {
  const char* bundle;
  const char* name;
  const char* url;  // an URL that opens it, or nullptr
};
const std::vector<App>& apps();

// Which invariant a failure broke; a shrunk walk must still break the same.
enum class Broken {
  kNone,
  kFrontWithoutAuthentication,  // a protected app came to the front unauthenticated
  kReplayedTwice,               // a held launch ran more than once
  kPromptStays,                 // cancelling left the prompt up (or was refused)
  kHostFailed,                  // a host crashed, hung, or its sanitizer reported
};
const char* brokenName(Broken broken);

struct Verdict {
  Broken broken = Broken::kNone;
  std::string app;      // the app concerned, if any
  std::string details;  // one line for a person
};

// Follows a walk step by step. Feed it every statement before it runs
// (`before`), then ask it after (`after`).
class Checker {
 public:
  // Notes what a statement changes in the walk's own picture of the device
  // (settings, network, identities) and what it asks for.
  void before(const Statement& s);

  // Reads the events since the last call and SpringBoard's answers, and
  // answers the first invariant broken, if any.
  Verdict after(const Statement& s, Device& device);

  // True iff the prompt is up, as the log last said.
  bool promptUp() const { return promptUp_; }

 private:
  bool exempt() const;
  bool canAuthenticate() const;
  bool protectedApp(const std::string& bundle) const;
  bool requested(const std::string& bundle) const;
  Verdict front(const std::string& bundle, bool successStep);
  void endSession();

  // The device and settings, as the walk's statements made them.
  std::string biometrics_ = "touchid";
  int identities_ = 1;
  bool enabled_ = true;
  bool passcode_ = false;
  bool keepSession_ = false;
  std::set<std::string> protected_;
  std::set<std::string> trusted_;  // BSSIDs in allowedWiFis
  std::string wifi_;               // the BSSID the device is on, "" when none

  // What the current step asks to bring to the front.
  std::set<std::string> asked_;
  std::string stepText_;

  // From the log.
  size_t seen_ = 0;
  bool promptUp_ = false;
  std::string promptItem_;  // bundle identifier (or raw item) of the prompt up or last up
  std::map<std::string, int> replays_;  // unasked fronts of each app since the prompt showed
  std::set<std::string> queued_;        // apps asked for while the prompt was up, held behind it
  bool promptSucceeded_ = false;
  bool session_ = false;                 // a success since the last unlock (or respring)
  std::set<std::string> authenticated_;  // apps with a success since the last unlock
  std::map<std::string, bool> slidUp_;   // lock-screen slide-ups, allowed when they began
};

}  // namespace walk
}  // namespace kv::sim
