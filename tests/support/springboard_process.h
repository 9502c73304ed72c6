// A test's own process made into SpringBoard on a simulated device, for the
// tests and fuzzers that drive the library's prompt and coordinator without
// a device around them: the device's file system under a folder of the
// caller's, the simulated frameworks, virtual time, the version flags and
// role, and the library's controller and prompt classes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "base/flags.h"
#include "core/controller.h"
#include "platform/foundation.h"
#include "prompt/alert_view.h"
#include "sim/device/settings_bundle.h"
#include "sim/frameworks/frameworks.h"
#include "sim/host/fs_redirect.h"
#include "sim/host/profile.h"
#include "sim/host/run_loop.h"
#include "tests/support/virtual_time.h"

namespace kv::testing {

struct SpringBoardDevice {
  const char* version = "10.3";
  const char* biometrics = "touchid";  // "none", "touchid" or "faceid"
  sim::BundlePlace bundle = sim::BundlePlace::kLibrary;
};

// Makes this process SpringBoard on `d`, its device's files under `root`,
// with the clock at `startNanos`. Once per process: the system facts are
// read once. Answers what failed, or "".
inline std::string becomeSpringBoard(const std::string& root, const SpringBoardDevice& d,
                                     int64_t startNanos) {
  sim::setDeviceRoot(root);
  std::error_code ec;
  std::filesystem::create_directories(root + "/private/var/mobile/Library/Preferences", ec);
  std::filesystem::create_directories(root + "/private/var/tmp", ec);
  if (ec) return "cannot make the device's folders: " + ec.message();
  if (!sim::installSettingsBundle(root, d.bundle)) return "cannot install the settings bundle";
  platform::AutoreleasePool pool;
  sim::host::Profile p;
  p.processName = "SpringBoard";
  p.bundleIdentifier = "com.apple.springboard";
  p.osVersion = d.version;
  p.osVersionString = std::string("Version ") + d.version + " (Build 15B93)";
  p.model = "iPhone";
  p.biometrics = d.biometrics;
  if (p.biometrics == "touchid") p.ioServices = {"AppleMesa"};
  if (p.biometrics == "faceid") p.ioServices = {"AppleH10PearlCam"};
  sim::host::setProfile(p);
  sim::host::applyProfile();
  for (const auto& problem : sim::host::installVirtualTime()) return "clock: " + problem;
  sim::host::setNowNanos(startNanos);
  sim::frameworks::defineFrameworks();
  using base::VersionFlag;
  for (VersionFlag f :
       {VersionFlag::kIOS11, VersionFlag::kIOS10OrLater, VersionFlag::kIOS102OrLater,
        VersionFlag::kIOS92OrLater, VersionFlag::kIOS9OrLater, VersionFlag::kIOS8OrLater}) {
    base::computeFlag(f);
  }
  base::setRole(base::Role::kSpringBoard);
  core::defineKavelinController();
  prompt::defineAlertView();
  return "";
}

}  // namespace kv::testing
