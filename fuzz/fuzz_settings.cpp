// Fuzzes the settings loader with preference domains the settings pane never
// writes: every key with a value of any kind, on iOS 10 or 11, with or
// without enrolled fingers. Whatever is stored, the loader must not crash,
// and its rules must hold: a bad value never switches protection off.
//  - passcode-only needs a passcode; a passcode with nothing enrolled is the
//    only way;
//  - a list keeps exactly its string entries, in order (each read as a C
//    string, up to a NUL inside it); anything but a list is an empty one;
//  - a flag stored as a number is that number's truth, a passcode stored as
//    a whole number is its decimal text;
//  - iOS 11 shows no notifications protected and never unlocks by finger;
//  - the caller-name state says "off" whenever protection is off.
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/flags.h"
#include "fuzz/fuzzed_values.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"
#include "sim/common/plist.h"
#include "sim/host/classes.h"
#include "sim/host/fs_redirect.h"
#include "sim/host/profile.h"
#include "tests/support/settings_keys.h"

namespace {

using kv::fuzz::Words;
using kv::platform::Value;
using kv::settings::Settings;

constexpr const char* kFile = "/var/mobile/Library/Preferences/net.quorvan.kavelin.plist";

int gIdentities = 1;

id identities(id, SEL, id) {
  id list = kv::platform::sendClass<id>(kv::platform::classNamed("NSMutableArray"),
                                        kv::platform::Sel("array"));
  for (int i = 0; i < gIdentities; ++i) {
    kv::platform::send<void>(list, kv::platform::Sel("addObject:"),
                             kv::platform::makeString("identity"));
  }
  return list;
}
id manager(id cls, SEL) {
  return cls;
}

const Words kKeys = {"onlyPasscode",
                     "passcode",
                     "shouldShowExperimentalAlert",
                     "Enabled",
                     "callerNameProtected",
                     "HideCallerAfterLifting",
                     "IconColor",
                     "VibrateOnError",
                     "hapticSetting",
                     "haptic",
                     "keepSession",
                     "protectSwitcher",
                     "protectPowerDown",
                     "protectPowerDownOnCriticalBattery",
                     "protectRespring",
                     "blurAppSwitcher",
                     "showKavelinedText",
                     "protectSIMUnlock",
                     "protectMovingApps",
                     "unlockUsingTouchID",
                     "CloseProtectedFoldersAfterLaunchingApp",
                     "QuitProtectedAppsOnDeviceLock",
                     "showProtectedItemName",
                     "appsInFoldersAreStillProtected",
                     "protectSiri",
                     "protected",
                     "protectedNotifications",
                     "protectedSettings",
                     "protectedSwitches",
                     "protectedFolders",
                     "protectedCCItems",
                     "protectedCCSettingsItems",
                     "allowedWiFis"};
const Words kStrings = {"YES",
                        "NO",
                        "true",
                        "false",
                        "1",
                        "0",
                        "7",
                        "-2",
                        "1234",
                        " 12",
                        "com.apple.mobileslideshow",
                        "com.apple.MobileSMS",
                        "Kavelin",
                        ""};

// A rule that does not hold names its line before the crash is recorded.
void check(bool holds, int line = __builtin_LINE()) {
  if (holds) return;
  std::fprintf(stderr, "fuzz_settings: the rule at line %d does not hold\n", line);
  std::abort();
}

// A flag stored as a bool or a whole number reads as its truth.
void checkFlag(const Value& stored, bool loaded) {
  if (stored.kind() == Value::Kind::kBool) check(loaded == stored.asBool());
  if (stored.kind() == Value::Kind::kInteger) check(loaded == (stored.asInteger() != 0));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char pattern[] = "/tmp/kavelin-fuzz-settings-XXXXXX";
  const char* root = mkdtemp(pattern);
  if (root == nullptr) std::abort();
  kv::sim::setDeviceRoot(root);
  std::filesystem::create_directories(std::string(root) +
                                      "/private/var/mobile/Library/Preferences");
  kv::platform::AutoreleasePool pool;
  kv::sim::host::ClassBuilder("BiometricKit", "NSObject")
      .classMethod("manager", kv::sim::host::imp(manager), "@@:")
      .classMethod("identities:", kv::sim::host::imp(identities), "@@:@")
      .build();
  kv::sim::host::Profile p;
  p.ioServices = {"AppleMesa"};
  kv::sim::host::setProfile(p);
  kv::base::flags().isIOS8OrLater = true;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  kv::platform::AutoreleasePool pool;
  gIdentities = in.ConsumeIntegralInRange<int>(0, 2);
  bool ios11 = in.ConsumeBool();
  kv::base::flags().isIOS10OrLater = ios11 || in.ConsumeBool();
  kv::base::flags().isIOS11 = ios11;
  kv::base::setRole(in.ConsumeBool() ? kv::base::Role::kSpringBoard : kv::base::Role::kSettings);
  auto format = in.ConsumeBool() ? kv::sim::PlistFormat::kXml : kv::sim::PlistFormat::kBinary;
  Value::Dictionary domain = kv::fuzz::fuzzedDictionary(in, kKeys, kStrings, 12);
  if (!kv::sim::writePlistFile(kFile, Value::dictionary(std::move(domain)), format)) return 0;
  // What the preferences service will hand out, as it reads the file.
  Value stored = kv::sim::readPlistFile(kFile).value_or(Value());

  kv::settings::load();
  const Settings& s = kv::settings::current();

  check(!s.onlyPasscode || s.passcode.has_value());
  check(!(s.passcode && gIdentities == 0) || s.onlyPasscode);
  check(s.effectiveHaptic() == (s.hapticSetting ? s.haptic : 0));
  if (ios11) check(s.protectedNotifications.empty() && !s.unlockUsingTouchID);
  if (kv::base::flags().isIOS10OrLater && !s.enabled) {
    check(kv::settings::stateOf(kv::settings::Note::kCallerIdHandling) == 0);
  }
  for (const auto& list : kv::testing::kListKeys) {
    if (ios11 && list.member == &Settings::protectedNotifications) continue;
    std::vector<std::string> expected;
    for (const Value& item : stored[list.key].asArray()) {
      // Text is read as a C string, up to a NUL inside it.
      if (item.kind() == Value::Kind::kString) expected.push_back(item.asString().c_str());
    }
    check((s.*list.member) == expected);
  }
  // The two flags that also depend on the device are held to their rules above.
  for (const auto& flag : kv::testing::kFlagKeys) {
    if (flag.member == &Settings::callerNameProtected ||
        flag.member == &Settings::unlockUsingTouchID) {
      continue;
    }
    checkFlag(stored[flag.key], s.*flag.member);
  }
  const Value& passcode = stored["passcode"];
  if (passcode.kind() == Value::Kind::kString) {
    check(s.passcode == std::string(passcode.asString().c_str()));
  }
  if (passcode.kind() == Value::Kind::kInteger) {
    check(s.passcode == std::to_string(passcode.asInteger()));
  }
  if (passcode.kind() == Value::Kind::kDictionary || passcode.kind() == Value::Kind::kArray) {
    check(!s.passcode.has_value());
  }
  const Value& haptic = stored["haptic"];
  if (haptic.kind() == Value::Kind::kInteger && haptic.asInteger() >= INT32_MIN &&
      haptic.asInteger() <= INT32_MAX) {
    check(s.haptic == haptic.asInteger());
  }
  (void)kv::settings::readAllowedWiFis();
  return 0;
}
