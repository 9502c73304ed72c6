// SpringBoard in a fuzzer's process.
#include "fuzz/springboard.h"

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "base/flags.h"
#include "core/controller.h"
#include "core/coordinator.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "prompt/alert_view.h"
#include "settings/settings.h"
#include "sim/common/plist.h"
#include "sim/device/settings_bundle.h"
#include "sim/frameworks/frameworks.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/fs_redirect.h"
#include "sim/host/profile.h"
#include "sim/host/run_loop.h"

namespace kv::fuzz {

namespace {

constexpr int64_t kStart = 1000LL * 1000000000LL;
constexpr const char* kPrefsFile = "/var/mobile/Library/Preferences/net.quorvan.kavelin.plist";

}  // namespace

void startSpringBoard(const char* version) {
  char pattern[] = "/tmp/kavelin-fuzz-sb-XXXXXX";
  const char* made = mkdtemp(pattern);
  if (made == nullptr) std::abort();
  std::string root = made;
  sim::setDeviceRoot(root);
  std::filesystem::create_directories(root + "/private/var/mobile/Library/Preferences");
  std::filesystem::create_directories(root + "/private/var/tmp");
  if (!sim::installSettingsBundle(root, sim::BundlePlace::kLibrary)) std::abort();
  platform::AutoreleasePool pool;
  sim::host::Profile p;
  p.processName = "SpringBoard";
  p.bundleIdentifier = "com.apple.springboard";
  p.osVersion = version;
  p.osVersionString = std::string("Version ") + version + " (Build 15B93)";
  p.model = "iPhone";
  p.biometrics = "touchid";
  p.ioServices = {"AppleMesa"};
  sim::host::setProfile(p);
  sim::host::applyProfile();
  if (!sim::host::installVirtualTime().empty()) std::abort();
  sim::host::setNowNanos(kStart);
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
  storePrefs({});
}

void storePrefs(platform::Value::Dictionary prefs) {
  if (!sim::writePlistFile(kPrefsFile, platform::Value::dictionary(std::move(prefs)),
                           sim::PlistFormat::kBinary)) {
    std::abort();
  }
  settings::load();
}

void advance(double seconds) {
  int64_t end = sim::host::nowNanos() + std::llround(seconds * 1e9);
  sim::host::runDue();
  while (sim::host::nextDue() && *sim::host::nextDue() <= end) {
    sim::host::setNowNanos(*sim::host::nextDue());
    sim::host::runDue();
  }
  sim::host::setNowNanos(end);
}

void settle() {
  platform::AutoreleasePool pool;
  advance(0);
  sim::frameworks::cancelAllAlerts();
  core::cleanupAlertAndRemoveObserver();
  advance(1);
}

void tapCancel() {
  platform::AutoreleasePool pool;
  id alert = sim::frameworks::topmostAlert();
  std::string error;
  if (alert != nullptr) sim::frameworks::tapAlertButton(alert, 0, &error);
  advance(0);
}

void typePasscode(const std::string& digits) {
  platform::AutoreleasePool pool;
  id alert = sim::frameworks::topmostAlert(prompt::kAlertViewClass);
  std::string error;
  // The field shows after the prompt's second button.
  if (alert != nullptr) sim::frameworks::tapAlertButton(alert, 1, &error);
  advance(0);
  sim::frameworks::typePromptPasscode(digits, &error);
  advance(0.5);
}

}  // namespace kv::fuzz
