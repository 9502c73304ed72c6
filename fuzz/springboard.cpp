// SpringBoard in a fuzzer's process.
#include "fuzz/springboard.h"

#include <unistd.h>

#include <cstdlib>

#include "core/coordinator.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "prompt/alert_view.h"
#include "settings/settings.h"
#include "sim/common/plist.h"
#include "sim/frameworks/frameworks.h"
#include "sim/frameworks/uikit.h"
#include "tests/support/springboard_process.h"

namespace kv::fuzz {

namespace {

constexpr int64_t kStart = 1000LL * 1000000000LL;
constexpr const char* kPrefsFile = "/var/mobile/Library/Preferences/net.quorvan.kavelin.plist";

}  // namespace

void startSpringBoard(const char* version) {
  char pattern[] = "/tmp/kavelin-fuzz-sb-XXXXXX";
  const char* made = mkdtemp(pattern);
  if (made == nullptr) std::abort();
  if (!kv::testing::becomeSpringBoard(made, {version, "touchid"}, kStart).empty()) std::abort();
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
  kv::testing::advanceVirtualTime(seconds);
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
