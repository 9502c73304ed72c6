// What the simulated frameworks know of the system they are part of: the
// iOS version and hardware of the device, and which process this is.
#pragma once

#include <string>

namespace kv::sim::frameworks {

struct System {
  int major = 11;
  int minor = 1;
  bool ipad = false;
  std::string biometrics = "touchid";  // "none", "touchid", "faceid"
  bool passcode = true;                // a device passcode is set
  int identities = 1;                  // enrolled fingers or faces
  bool passKitLate = false;            // SpringBoard loads PassKit only on first use
  std::string process;                 // "SpringBoard", "Preferences", ...
  std::string bundleIdentifier;
};

// The system of this process (from the host's profile).
const System& system();

// True iff the device runs iOS major.minor or later.
bool atLeast(int major, int minor = 0);

// True iff this process is `process`.
bool inProcess(const char* process);

}  // namespace kv::sim::frameworks
