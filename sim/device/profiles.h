// The devices the simulator can be: iOS versions and hardware, as data.
#pragma once

#include <string>
#include <vector>

namespace kv::sim {

// One iOS version the simulated device can run.
struct OsProfile {
  const char* version;        // as a scenario names it: "11.1"
  const char* versionString;  // as NSProcessInfo writes it
  int major;
};

// Returns the profile of `version`, or nullptr when the simulator has none.
const OsProfile* osProfile(const std::string& version);

// Every version, oldest first.
const std::vector<OsProfile>& osProfiles();

// The host processes a scenario can start: name, bundle identifier.
struct ProcessProfile {
  std::string name;
  std::string bundleIdentifier;
};

// Returns the profile for a `start` word ("SpringBoard", "Camera", or
// "app:BUNDLE-ID"), or nullopt for an unknown one.
bool processProfile(const std::string& word, ProcessProfile* out);

}  // namespace kv::sim
