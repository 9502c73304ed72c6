// The settings loader against real preference files: defaults, the derived
// rules, the states it publishes, and values of the wrong type.
#include "settings/settings.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/flags.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "sim/common/plist.h"
#include "sim/host/classes.h"
#include "sim/host/fs_redirect.h"
#include "sim/host/profile.h"
#include "tests/support/settings_keys.h"

namespace kv::settings {
namespace {

using platform::Value;

int gIdentities = 1;

id identities(id, SEL, id) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), platform::Sel("array"));
  for (int i = 0; i < gIdentities; ++i) {
    platform::send<void>(list, platform::Sel("addObject:"), platform::makeString("identity"));
  }
  return list;
}
id manager(id cls, SEL) {
  return cls;
}

// A device of one kind, its preference file written as the settings pane would.
class SettingsLoad : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/kavelin-settings-XXXXXX";
    root_ = mkdtemp(pattern);
    sim::setDeviceRoot(root_);
    std::filesystem::create_directories(root_ + "/private/var/mobile/Library/Preferences");
    sim::host::ClassBuilder("BiometricKit", "NSObject")
        .classMethod("manager", sim::host::imp(manager), "@@:")
        .classMethod("identities:", sim::host::imp(identities), "@@:@")
        .build();
    device("touchid");
  }
  void TearDown() override {
    sim::setDeviceRoot("");
    std::filesystem::remove_all(root_);
  }
  // The hardware in the I/O registry and the system version.
  void device(const char* hardware, bool ios11 = false, bool ios10 = true) {
    sim::host::Profile p;
    if (std::string(hardware) == "touchid") p.ioServices = {"AppleMesa"};
    if (std::string(hardware) == "faceid") p.ioServices = {"AppleH10PearlCam"};
    sim::host::setProfile(p);
    base::flags().isIOS8OrLater = true;
    base::flags().isIOS10OrLater = ios10;
    base::flags().isIOS11 = ios11;
    base::setRole(base::Role::kSpringBoard);
  }
  void prefs(Value::Dictionary values) {
    ASSERT_TRUE(sim::writePlistFile(kFile, Value::dictionary(std::move(values)),
                                    sim::PlistFormat::kBinary));
  }
  static constexpr const char* kFile = "/var/mobile/Library/Preferences/net.quorvan.kavelin.plist";
  platform::AutoreleasePool pool_;
  std::string root_;
};

TEST_F(SettingsLoad, MissingOrUnreadableFilesLoadEveryDefault) {
  const Settings defaults;
  const char* const kContents[] = {"", "garbage that is no property list", "bplist00\x01\x02",
                                   nullptr};
  for (const char* contents : kContents) {
    std::filesystem::remove(root_ +
                            "/private/var/mobile/Library/Preferences/net.quorvan.kavelin.plist");
    if (contents != nullptr) std::ofstream(sim::realPathForDevicePath(kFile)) << contents;
    load();
    const Settings& s = current();
    EXPECT_EQ(s.enabled, defaults.enabled) << (contents ? contents : "(no file)");
    EXPECT_EQ(s.passcode, std::nullopt);
    EXPECT_EQ(s.haptic, 2);
    EXPECT_TRUE(s.protectedApps.empty());
    EXPECT_TRUE(s.showProtectedItemName);
    EXPECT_TRUE(s.biometricsInUse) << "Touch ID hardware and no passcode-only setting";
  }
}

using kv::testing::FlagKey;
using kv::testing::kFlagKeys;
using kv::testing::kListKeys;
using kv::testing::ListKey;

// An untouched setting means the same before the first load (what a guard
// reads if it runs early) and after loading an empty domain; a stored value
// reaches its own slot and no other.
TEST_F(SettingsLoad, EveryKeyHasItsDefaultAndReachesItsSlot) {
  const Settings beforeAnyLoad;
  prefs({});
  load();
  for (const FlagKey& k : kFlagKeys) {
    EXPECT_EQ(beforeAnyLoad.*k.member, k.fallback) << k.key << " before the first load";
    EXPECT_EQ(current().*k.member, k.fallback) << k.key << " absent";
  }
  for (const ListKey& k : kListKeys) EXPECT_TRUE((current().*k.member).empty()) << k.key;
  EXPECT_EQ(beforeAnyLoad.haptic, current().haptic);
  EXPECT_EQ(beforeAnyLoad.iconColor, current().iconColor);
  EXPECT_EQ(beforeAnyLoad.onlyPasscode, current().onlyPasscode);

  // Each switch turned the other way, alone, so that a key read into the
  // wrong slot shows as a change where none was made.
  for (const FlagKey& k : kFlagKeys) {
    prefs({{k.key, Value::boolean(!k.fallback)}});
    load();
    for (const FlagKey& other : kFlagKeys) {
      EXPECT_EQ(current().*other.member, &other == &k ? !k.fallback : other.fallback)
          << other.key << " when only " << k.key << " is stored";
    }
  }

  Value::Dictionary lists;
  for (const ListKey& k : kListKeys) lists[k.key] = Value::array({Value::string(k.key)});
  prefs(std::move(lists));
  load();
  for (const ListKey& k : kListKeys) {
    EXPECT_EQ(current().*k.member, std::vector<std::string>{k.key}) << k.key;
  }
}

// A wrong-typed value is read as the platform would read it where it can
// answer; only what cannot answer counts as absent.
TEST_F(SettingsLoad, ValuesOfTheWrongTypeAreReadAsThePlatformReadsThem) {
  prefs({{"Enabled", Value::string("NO")},
         {"keepSession", Value::dictionary({{"x", Value::boolean(true)}})},
         {"haptic", Value::string("3")},
         {"IconColor", Value::array({})},
         {"passcode", Value::integer(1234)},
         {"protected", Value::string("com.apple.camera")},
         {"protectedFolders", Value::array({Value::string("Games"), Value::integer(3)})},
         {"protectedSettings", Value::dictionary({})}});
  load();
  const Settings& s = current();
  EXPECT_FALSE(s.enabled) << "\"NO\" reads as false";
  EXPECT_FALSE(s.keepSession) << "a dictionary cannot answer: the default";
  EXPECT_EQ(s.haptic, 3) << "\"3\" reads as 3";
  EXPECT_EQ(s.iconColor, 4) << "an array cannot answer: the default";
  EXPECT_EQ(s.passcode, "1234") << "a number is its decimal text";
  EXPECT_TRUE(s.protectedApps.empty()) << "text is not a list";
  EXPECT_EQ(s.protectedFolders, std::vector<std::string>{"Games"})
      << "a list keeps its strings and drops the rest";
  EXPECT_TRUE(s.protectedSettings.empty());

  prefs({{"Enabled", Value::string("YES")}, {"passcode", Value::real(12.5)}});
  load();
  EXPECT_TRUE(current().enabled);
  EXPECT_EQ(current().passcode, "12.5");
}

TEST_F(SettingsLoad, PasscodeOnlyRules) {
  prefs({{"onlyPasscode", Value::boolean(true)}});
  load();
  EXPECT_FALSE(current().onlyPasscode) << "passcode-only needs a passcode";
  EXPECT_TRUE(current().biometricsInUse);

  prefs({{"onlyPasscode", Value::boolean(true)}, {"passcode", Value::string("1234")}});
  load();
  EXPECT_TRUE(current().onlyPasscode);
  EXPECT_FALSE(current().biometricsInUse);
  EXPECT_EQ(stateOf(Note::kIdentities), 1u) << "without biometrics a passcode counts";

  gIdentities = 0;
  prefs({{"onlyPasscode", Value::boolean(false)}, {"passcode", Value::string("1234")}});
  load();
  EXPECT_TRUE(current().onlyPasscode) << "no enrolled identity: the passcode is the only way";
}

TEST_F(SettingsLoad, DerivedValuesAndPublishedStates) {
  prefs({{"hapticSetting", Value::boolean(false)},
         {"haptic", Value::integer(3)},
         {"callerNameProtected", Value::boolean(true)},
         {"protected", Value::array({Value::string("com.apple.mobileslideshow")})},
         {"keepSession", Value::boolean(true)}});
  load();
  EXPECT_EQ(current().effectiveHaptic(), 0);
  EXPECT_TRUE(current().callerNameProtected);
  EXPECT_EQ(stateOf(Note::kCallerIdHandling), 2u);
  EXPECT_EQ(stateOf(Note::kInCameraPhotosProtection), 1u);
  EXPECT_EQ(stateOf(Note::kGracePeriod), 0u) << "no session yet";

  prefs({{"Enabled", Value::boolean(false)},
         {"callerNameProtected", Value::boolean(true)},
         {"protected", Value::array({Value::string("com.apple.mobileslideshow")})}});
  load();
  EXPECT_EQ(stateOf(Note::kCallerIdHandling), 0u) << "protection off hides nothing";
  EXPECT_EQ(stateOf(Note::kInCameraPhotosProtection), 0u);
}

TEST_F(SettingsLoad, IconColourIsKeptWhenRemovedWithoutTheFaceCamera) {
  prefs({{"IconColor", Value::integer(1)}});
  load();
  EXPECT_EQ(current().iconColor, 1);
  EXPECT_FALSE(current().iconColorFlag);
  prefs({});
  load();
  EXPECT_EQ(current().iconColor, 1) << "absent keeps the value held before";
}

TEST_F(SettingsLoad, FaceCameraAndIOS11Rules) {
  device("faceid", /*ios11=*/true);
  prefs({{"protectedNotifications", Value::array({Value::string("com.apple.MobileSMS")})},
         {"unlockUsingTouchID", Value::boolean(true)}});
  load();
  EXPECT_EQ(current().iconColor, 5);
  EXPECT_TRUE(current().iconColorFlag);
  EXPECT_TRUE(current().protectedNotifications.empty()) << "inactive on iOS 11";
  EXPECT_FALSE(current().unlockUsingTouchID);
}

TEST_F(SettingsLoad, WritesBackAndTrustedNetworks) {
  prefs({{"allowedWiFis", Value::array({Value::dictionary({{"ssid", Value::string("Home")},
                                                           {"bssid", Value::string("aa:bb")}}),
                                        Value::string("not a network"),
                                        Value::dictionary({{"ssid", Value::string("x")}})})}});
  load();
  auto networks = readAllowedWiFis();
  ASSERT_EQ(networks.size(), 1u);
  EXPECT_EQ(networks[0].bssid, "aa:bb");
  // Asked again with nothing changed, the same list; changed or removed by
  // another process, the next question sees it.
  EXPECT_EQ(readAllowedWiFis().size(), 1u);
  prefs({{"allowedWiFis", Value::array({Value::dictionary({{"ssid", Value::string("Work")},
                                                           {"bssid", Value::string("cc:dd")}}),
                                        Value::dictionary({{"ssid", Value::string("Cafe")},
                                                           {"bssid", Value::string("ee:ff")}})})}});
  const std::vector<TrustedNetwork>& changed = readAllowedWiFis();
  ASSERT_EQ(changed.size(), 2u);
  EXPECT_EQ(changed[0].bssid, "cc:dd");
  EXPECT_EQ(changed[1].bssid, "ee:ff");
  prefs({});
  EXPECT_TRUE(readAllowedWiFis().empty()) << "a removed list trusts nothing";
  prefs({{"allowedWiFis", Value::array({Value::dictionary({{"ssid", Value::string("Home")},
                                                           {"bssid", Value::string("aa:bb")}}),
                                        Value::string("not a network"),
                                        Value::dictionary({{"ssid", Value::string("x")}})})}});
  storeProtectedFolders({"Games"});
  disableExperimentalAlert();
  auto stored = sim::readPlistFile(kFile);
  ASSERT_TRUE(stored.has_value());
  EXPECT_EQ((*stored)["protectedFolders"], Value::array({Value::string("Games")}));
  EXPECT_EQ((*stored)["shouldShowExperimentalAlert"], Value::boolean(false));
  EXPECT_EQ((*stored)["allowedWiFis"].asArray().size(), 3u) << "other keys untouched";
}

}  // namespace
}  // namespace kv::settings
