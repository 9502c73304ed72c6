// The devices the simulator can be, as data.
#include "sim/device/profiles.h"

namespace kv::sim {

namespace {

// So that every version test of the library can come out both ways: 9.1
// against 9.3 for "9.2 or later", 10.1 against 10.3 for "10.2 or later".
const std::vector<OsProfile> kOsProfiles = {
    {"8.4", "Version 8.4 (Build 12H143)", 8},     {"9.1", "Version 9.1 (Build 13B143)", 9},
    {"9.3", "Version 9.3.5 (Build 13G36)", 9},    {"10.1", "Version 10.1.1 (Build 14B100)", 10},
    {"10.3", "Version 10.3.3 (Build 14G60)", 10}, {"11.1", "Version 11.1 (Build 15B93)", 11},
};

struct SystemProcess {
  const char* word;
  const char* name;
  const char* bundle;
};

const SystemProcess kSystemProcesses[] = {
    {"SpringBoard", "SpringBoard", "com.apple.springboard"},
    {"Preferences", "Preferences", "com.apple.Preferences"},
    {"Camera", "Camera", "com.apple.camera"},
    {"InCallService", "InCallService", "com.apple.InCallService"},
};

}  // namespace

const OsProfile* osProfile(const std::string& version) {
  for (const auto& p : kOsProfiles) {
    if (version == p.version) return &p;
  }
  return nullptr;
}

const std::vector<OsProfile>& osProfiles() {
  return kOsProfiles;
}

bool processProfile(const std::string& word, ProcessProfile* out) {
  for (const auto& p : kSystemProcesses) {
    if (word == p.word) {
      *out = {p.name, p.bundle};
      return true;
    }
  }
  if (word.rfind("app:", 0) == 0 && word.size() > 4) {
    std::string bundle = word.substr(4);
    auto dot = bundle.rfind('.');
    *out = {dot == std::string::npos ? bundle : bundle.substr(dot + 1), bundle};
    return true;
  }
  return false;
}

}  // namespace kv::sim
