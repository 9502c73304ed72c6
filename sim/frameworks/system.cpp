// What the simulated frameworks know of the system they are part of.
#include "sim/frameworks/system.h"

#include <cstdlib>

#include "sim/host/profile.h"

namespace kv::sim::frameworks {

const System& system() {
  static const System kSystem = [] {
    const host::Profile& p = host::profile();
    System s;
    s.major = std::atoi(p.osVersion.c_str());
    auto dot = p.osVersion.find('.');
    s.minor = dot == std::string::npos ? 0 : std::atoi(p.osVersion.c_str() + dot + 1);
    s.ipad = p.idiom == 1;
    s.biometrics = p.biometrics;
    s.passcode = p.passcode;
    s.identities = p.identities;
    s.passKitLate = p.passKitLate;
    s.process = p.processName;
    s.bundleIdentifier = p.bundleIdentifier;
    return s;
  }();
  return kSystem;
}

bool atLeast(int major, int minor) {
  const System& s = system();
  return s.major > major || (s.major == major && s.minor >= minor);
}

bool inProcess(const char* process) {
  return system().process == process;
}

}  // namespace kv::sim::frameworks
