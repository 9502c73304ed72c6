// What the tests of the simulated UIKit share: a test process made into one
// device's process with the UI frameworks defined, virtual time, and a log
// of the calls that test classes receive.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/runtime.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/profile.h"
#include "sim/host/run_loop.h"
#include "tests/support/virtual_time.h"

namespace kv::sim::frameworks::testing {

constexpr int64_t kSecond = 1000000000;
constexpr int64_t kStart = 1000 * kSecond;

// Makes this process SpringBoard on iOS `version` with `biometrics`. The
// system facts are read once per process, so each test runs alone (as ctest
// runs them).
inline void startDevice(const char* version, const char* biometrics = "touchid") {
  host::Profile p;
  p.processName = "SpringBoard";
  p.bundleIdentifier = "com.apple.springboard";
  p.osVersion = version;
  p.osVersionString = std::string("Version ") + version + " (Build 15B93)";
  p.model = "iPhone";
  p.biometrics = biometrics;
  host::setProfile(p);
  ASSERT_EQ(system().major, std::atoi(version)) << "one device per test process";
  ASSERT_EQ(host::installVirtualTime(), std::vector<std::string>{});
  host::setNowNanos(kStart);
  defineUIKit();
  defineAlertViews();
  definePassKit();
  definePasscodeField();
}

// Seconds since the test's start on the virtual clock.
inline double elapsed() {
  return static_cast<double>(host::nowNanos() - kStart) / 1e9;
}

// Lets `seconds` of virtual time pass, running what falls due in order.
inline void advance(double seconds) {
  kv::testing::advanceVirtualTime(seconds);
}

// The calls test classes record, in order.
inline std::vector<std::string>& calls() {
  static std::vector<std::string> list;
  return list;
}

using Calls = std::vector<std::string>;

inline id make(const char* className) {
  return host::newObject(platform::classNamed(className));
}

}  // namespace kv::sim::frameworks::testing
