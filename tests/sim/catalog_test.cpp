// Tests of the platform catalog: which classes a process has on each iOS
// version, how their methods are laid out, and what a catalog call does.
#include "sim/frameworks/catalog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/encoding.h"
#include "platform/geometry.h"
#include "platform/runtime.h"
#include "sim/frameworks/frameworks.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/system.h"
#include "sim/host/classes.h"
#include "sim/host/profile.h"

namespace kv::sim::frameworks {
namespace {

using platform::classNamed;
using platform::Sel;
using platform::send;
using platform::sendClass;

// Makes this test process `process` on iOS `version`. The system facts are
// read once per process, so each test runs alone (as ctest runs them).
void becomeProcess(const char* process, const char* version, const char* bundle) {
  host::Profile p;
  p.processName = process;
  p.bundleIdentifier = bundle;
  p.osVersion = version;
  p.osVersionString = std::string("Version ") + version;
  p.model = "iPhone";
  p.biometrics = "touchid";
  host::setProfile(p);
  ASSERT_EQ(system().process, process) << "one profile per test process";
}

Method methodOf(Class cls, const std::string& name) {
  SEL sel = platform::selector(name.c_str() + 1);
  return name[0] == '+' ? class_getClassMethod(cls, sel) : class_getInstanceMethod(cls, sel);
}

// "Class" names a class; "Class -selector" or "Class +selector" a method.
bool exists(const std::string& entry) {
  auto space = entry.find(' ');
  Class cls = classNamed(entry.substr(0, space).c_str());
  if (cls == nullptr || space == std::string::npos) return cls != nullptr;
  return methodOf(cls, entry.substr(space + 1)) != nullptr;
}

bool hasOwn(Class cls, const char* selector) {
  unsigned count = 0;
  Method* list = class_copyMethodList(cls, &count);
  bool found = false;
  for (unsigned i = 0; i < count; ++i) {
    found = found || std::string(sel_getName(method_getName(list[i]))) == selector;
  }
  std::free(list);
  return found;
}

// A process on one iOS version, and what it must and must not have.
struct ProfileCase {
  const char* process;
  const char* version;
  const char* bundle;
  std::vector<std::string> present;
  std::vector<std::string> absent;
};

// Defines the process's frameworks and checks the expectations, then that
// every catalog row that applies here is there with every method of this
// version, each call-compatible with the catalog's encoding (also where a
// behaviour module defined it).
void expectProfile(const ProfileCase& expected) {
  becomeProcess(expected.process, expected.version, expected.bundle);
  defineFrameworks();
  for (const auto& entry : expected.present) EXPECT_TRUE(exists(entry)) << entry << " is missing";
  for (const auto& entry : expected.absent) EXPECT_FALSE(exists(entry)) << entry << " is there";
  for (const auto& row : catalog()) {
    if (!appliesHere(row)) continue;
    Class cls = classNamed(row.name);
    ASSERT_NE(cls, nullptr) << row.name << " was not defined";
    for (const auto& m : row.methods) {
      if (!appliesHere(m)) continue;
      Method method = methodOf(cls, m.name);
      ASSERT_NE(method, nullptr) << row.name << " " << m.name << " was not added";
      EXPECT_TRUE(platform::encodingsCompatible(method_getTypeEncoding(method), m.types))
          << row.name << " " << m.name << " is " << method_getTypeEncoding(method)
          << ", the catalog says " << m.types;
    }
  }
}

TEST(CatalogTest, SpringBoardOnIOS8) {
  expectProfile({
      .process = "SpringBoard",
      .version = "8.4",
      .bundle = "com.apple.springboard",
      .present = {"SBWorkspace", "SBUserAgent -launchFromPushOrLocalBulletin:origin:",
                  "SBAppSliderSnapshotView", "PLCameraView", "SBLockScreenSlideUpToAppController",
                  "SBUIBiometricEventMonitor", "FBSystemService", "SBControlCenterButton",
                  "SpringBoard -_rebootNow", "PKGlyphView", "__NSStackBlock__", "TUCallCenter",
                  "SBUIController -appSwitcher:wantsToActivateApplication:",
                  "SBCCQuickLaunchSectionController -_activateAppWithBundleId:url:"},
      .absent = {"SBMainWorkspace", "SBDashBoardViewController", "_SBUIBiometricKitInterface",
                 "NCNotificationPriorityListViewController", "SBAppSwitcherSnapshotView",
                 "SBFluidSwitcherGestureWorkspaceTransaction", "CCUIRoundButton",
                 "SpringBoard -_rebootNow:", "UIPreviewInteractionController",
                 "PrefsListController", "CAMViewfinderViewController", "PHAudioCallViewController",
                 "SBApplicationShortcutMenu", "SBDisplayItem",
                 "FBSystemServiceOpenApplicationRequest",
                 "SBUIController "
                 "-appSwitcher:wantsToActivateDisplayLayout:displayIDsToURLs:displayIDsToActions:"},
  });
}

TEST(CatalogTest, SpringBoardOnIOS10) {
  expectProfile({
      .process = "SpringBoard",
      .version = "10.1",
      .bundle = "com.apple.springboard",
      .present = {"SBMainWorkspace", "SBDashBoardViewController -activateCameraAnimated:",
                  "NCNotificationPriorityListViewController", "_SBUIBiometricKitInterface",
                  "SBUIBiometricEventMonitor", "SBAppSwitcherSnapshotView", "SBRestartManager",
                  "SBMainSwitcherViewController -toggleSwitcherNoninteractively",
                  "CCUIControlCenterPushButton", "SBUserAgent", "UIPreviewInteractionController",
                  "SBMainWorkspaceTransitionRequest -activatingApps",
                  "FBSOpenApplicationOptions -dictionary",
                  "SBSwitcherForcePressSystemGestureTransaction",
                  "SBMainSwitcherViewController -switcherContentController:selectedItem:",
                  "SBIconController -_appIconForceTouchIconView"},
      .absent = {"SBWorkspace", "SBAppSliderSnapshotView", "PLCameraView", "CCUIRoundButton",
                 "SBDashBoardViewController -_activateCameraAnimated:", "SBUIBiometricResource",
                 "SBMainSwitcherViewController -toggleSwitcherNoninteractivelyWithSource:",
                 "SBFluidSwitcherGestureWorkspaceTransaction", "SBApplicationShortcutMenu",
                 "SBCCQuickLaunchSectionController", "SBUIController -_toggleSwitcher",
                 "SBLockHardwareButton", "SpringBoard -lockHardwareButton"},
  });
}

TEST(CatalogTest, SpringBoardOnIOS11) {
  expectProfile({
      .process = "SpringBoard",
      .version = "11.1",
      .bundle = "com.apple.springboard",
      .present = {"SBFluidSwitcherGestureWorkspaceTransaction", "SBAppSwitcherReusableSnapshotView",
                  "CCUIRoundButton", "CCUIConnectivityAirDropViewController",
                  "CCUIContentModuleContainerViewController", "SBUIBiometricResource",
                  "FBSystemService -exitAndRelaunch:", "SBLockHardwareButton", "__NSStackBlock__",
                  "NCBulletinNotificationSource "
                  "-observer:addBulletin:forFeed:playLightsAndSirens:withReply:"},
      .absent = {"SBUserAgent", "SBAppSwitcherSnapshotView", "SBUIBiometricEventMonitor",
                 "CCUIControlCenterPushButton", "SBWorkspace", "SBLockScreenCameraController",
                 "NCBulletinNotificationSource -observer:addBulletin:forFeed:",
                 "SBMainWorkspaceTransitionRequest -activatingApps"},
  });
}

// The Settings classes exist on the versions whose headers declare them:
// PreferencesUI's from iOS 9, iOS 8's own Settings classes only there.
TEST(CatalogTest, SettingsAppOnIOS9) {
  expectProfile({
      .process = "Preferences",
      .version = "9.3",
      .bundle = "com.apple.Preferences",
      .present = {"PSUIPrefsListController -setAirplaneMode:specifier:",
                  "PSUIPrefsListController -_showControllerFromSpecifier:",
                  "PSUIPrefsRootController -pushViewController:animated:",
                  "PSMesaSettingsController", "PSPasscodeField", "BiometricKit +manager",
                  "MCProfileConnection", "UIPreviewInteractionController", "__NSStackBlock__"},
      .absent = {"PreferencesAppController -processURL:", "PrefsListController",
                 "PrefsRootController", "PSTouchIDPasscodeController", "ResetPrefController",
                 "PSUIBiometricController", "SpringBoard", "SBIconController", "TUCallCenter",
                 "CAMViewfinderViewController", "PHCallParticipantsViewController"},
  });
}

TEST(CatalogTest, SettingsAppOnIOS8) {
  expectProfile({
      .process = "Preferences",
      .version = "8.4",
      .bundle = "com.apple.Preferences",
      .present = {"PreferencesAppController -processURL:",
                  "PrefsListController -_showControllerFromSpecifier:",
                  "PrefsRootController -setViewControllers:animated:",
                  "PSTouchIDPasscodeController", "ResetPrefController -resetIconPositions:"},
      .absent = {"PSUIPrefsListController", "PSUIPrefsRootController", "PSUIBiometricController"},
  });
}

TEST(CatalogTest, CameraAppOnIOS11) {
  expectProfile({
      .process = "Camera",
      .version = "11.1",
      .bundle = "com.apple.camera",
      .present = {"CAMViewfinderViewController -_handleImageWellReleased:", "CAMImageWell",
                  "UIPreviewInteractionController", "PSListController", "CMKCameraView"},
      .absent = {"CAMViewfinderViewController -_handleImageWellTapped:", "PLCameraView",
                 "CAMCameraView", "SBIconController", "PrefsListController",
                 "PSUIPrefsListController"},
  });
}

// The in-call screen's classes are known from iOS 9 on; the call centre
// everywhere. The camera's image well belongs to CameraKit's view on iOS 8,
// to the viewfinder from iOS 9, which takes the release instead of the tap
// on iOS 11 (above).
TEST(CatalogTest, InCallServiceOnIOS8And11) {
  expectProfile({
      .process = "InCallService",
      .version = "8.4",
      .bundle = "com.apple.InCallService",
      .present = {"TUCallCenter -incomingCall", "TUCall -status"},
      .absent = {"PHAudioCallViewController", "PHCallParticipantsViewController"},
  });
}
TEST(CatalogTest, InCallServiceOnIOS11) {
  expectProfile({
      .process = "InCallService",
      .version = "11.1",
      .bundle = "com.apple.InCallService",
      .present = {"PHAudioCallViewController -setBackgroundImage:",
                  "PHCallParticipantsViewController -overrideStringForParticipantsView:",
                  "PHCallParticipantsViewController -dealloc", "TUCallCenter -currentCalls"},
      .absent = {"CAMImageWell", "SBIconController"},
  });
}
TEST(CatalogTest, CameraAppOnIOS8) {
  expectProfile({
      .process = "Camera",
      .version = "8.4",
      .bundle = "com.apple.camera",
      .present = {"CAMCameraView -_imageWellTapped:", "CAMImageWell", "PLCameraView"},
      .absent = {"CAMViewfinderViewController", "CMKCameraView", "UIPreviewInteractionController"},
  });
}
TEST(CatalogTest, CameraAppOnIOS9) {
  expectProfile({
      .process = "Camera",
      .version = "9.3",
      .bundle = "com.apple.camera",
      .present = {"CAMViewfinderViewController -_handleImageWellTapped:", "CMKCameraView",
                  "UIPreviewInteractionController -startInteractivePreviewWithGestureRecognizer:"},
      .absent = {"CAMViewfinderViewController -_handleImageWellReleased:", "CAMCameraView",
                 "PLCameraView"},
  });
}

// How a class's methods are laid out: its superclass, what it implements
// itself and what it only inherits.
struct Layout {
  const char* name;
  const char* superclass;
  std::vector<const char*> own;
  std::vector<const char*> inherited;
};

TEST(CatalogTest, ClassesOwnOrInheritWhatTheyDoOnTheDevice) {
  becomeProcess("SpringBoard", "10.1", "com.apple.springboard");
  defineFrameworks();
  const Layout kLayouts[] = {
      {"NCNotificationPriorityListViewController",
       "NCNotificationListViewController",
       {"insertNotificationRequest:forCoalescedNotification:",
        "removeNotificationRequest:forCoalescedNotification:"},
       {"collectionView:cellForItemAtIndexPath:",
        "notificationListCell:requestsClearingNotificationRequest:", "viewWillAppear:"}},
      {"SBUILongNumericPasscodeEntryField",
       "SBUIPasscodeEntryField",
       {"_okButtonHit"},
       {"layoutSubviews", "touchesEnded:withEvent:"}},
      {"SpringBoard",
       "FBSystemApp",
       {"powerDownRequested:", "_lockButtonUp:fromSource:", "_handleGotoHomeScreenShortcut:",
        "launchApplicationWithIdentifier:suspended:"},
       {"applicationDidResume", "isSuspended"}},
  };
  for (const auto& layout : kLayouts) {
    Class cls = classNamed(layout.name);
    ASSERT_NE(cls, nullptr) << layout.name;
    EXPECT_EQ(class_getSuperclass(cls), classNamed(layout.superclass)) << layout.name;
    for (const char* sel : layout.own) EXPECT_TRUE(hasOwn(cls, sel)) << layout.name << " " << sel;
    for (const char* sel : layout.inherited) {
      EXPECT_FALSE(hasOwn(cls, sel)) << layout.name << " has its own " << sel;
      EXPECT_NE(class_getInstanceMethod(cls, Sel(sel)), nullptr) << layout.name << " " << sel;
    }
  }
}

TEST(CatalogTest, CatalogCallsAreRecordedAndAnswerZero) {
  becomeProcess("SpringBoard", "11.1", "com.apple.springboard");
  defineFrameworks();
  id container = host::newObject(classNamed("CCUIContentModuleContainerViewController"));
  id wifi = host::newObject(classNamed("CCUIConnectivityWifiViewController"));

  testing::internal::CaptureStderr();
  EXPECT_EQ(send<id>(container, Sel("contentModule")), nullptr);
  CGRect rect = send<CGRect>(container, Sel("_contentFrameForRestState"));
  EXPECT_TRUE(rect.origin.x == 0 && rect.origin.y == 0 && rect.size.width == 0 &&
              rect.size.height == 0);
  EXPECT_EQ(send<double>(sharedOf("SBBacklightController"), Sel("defaultLockScreenDimInterval")),
            0.0);
  send<void>(wifi, Sel("presentViewController:animated:completion:"), id{nullptr}, BOOL{1},
             id{nullptr});
  EXPECT_EQ(sendClass<id>(classNamed("UIAlertController"),
                          Sel("alertControllerWithTitle:message:preferredStyle:"), id{nullptr},
                          id{nullptr}, 1L),
            nullptr);
  std::string log = testing::internal::GetCapturedStderr();

  for (const char* call : {
           "CCUIContentModuleContainerViewController -contentModule",
           "CCUIContentModuleContainerViewController -_contentFrameForRestState",
           "SBBacklightController -defaultLockScreenDimInterval",
           // An inherited catalog method names the receiver's own class.
           "CCUIConnectivityWifiViewController -presentViewController:animated:completion:",
           "UIAlertController +alertControllerWithTitle:message:preferredStyle:",
       }) {
    EXPECT_NE(log.find(std::string("call ") + call + "\n"), std::string::npos)
        << call << " not in:\n"
        << log;
  }
  send<void>(container, Sel("release"));
  send<void>(wifi, Sel("release"));
}

TEST(CatalogTest, SingletonAccessorsAnswerOneSharedInstance) {
  becomeProcess("SpringBoard", "10.1", "com.apple.springboard");
  defineFrameworks();
  const std::pair<const char*, const char*> kAccessors[] = {
      {"TUCallCenter", "sharedInstance"},
      {"SBMainSwitcherViewController", "sharedInstance"},
      {"SBUserAgent", "sharedUserAgent"},
  };
  for (const auto& [name, accessor] : kAccessors) {
    Class cls = classNamed(name);
    id first = sendClass<id>(cls, Sel(accessor));
    ASSERT_NE(first, nullptr) << name;
    EXPECT_EQ(sendClass<id>(cls, Sel(accessor)), first) << name;
    EXPECT_EQ(object_getClass(first), cls) << name;
    EXPECT_EQ(sharedOf(name), first) << name << ": the behaviour modules see another one";
  }

  // A chain through the shared instance reaches a recorded call.
  testing::internal::CaptureStderr();
  id backlight = sendClass<id>(classNamed("SBBacklightController"), Sel("sharedInstance"));
  EXPECT_EQ(send<double>(backlight, Sel("defaultLockScreenDimInterval")), 0.0);
  std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("call SBBacklightController -defaultLockScreenDimInterval\n"),
            std::string::npos)
      << log;
}

void activatePlugin(id, SEL, long) {}
BOOL okButtonHit(id, SEL) {
  return 1;
}

TEST(CatalogTest, MethodsDefinedBeforeTheCatalogAreKept) {
  becomeProcess("SpringBoard", "9.3", "com.apple.springboard");
  // Classes a behaviour module defined before the catalog runs.
  Class assistant = host::ClassBuilder("SBAssistantController", "NSObject")
                        .instance("activatePluginForEvent:", host::imp(activatePlugin), "v@:q")
                        .build();
  Class entryField = host::ClassBuilder("SBUIPasscodeEntryField", "NSObject")
                         .instance("_okButtonHit", host::imp(okButtonHit), "C@:")
                         .build();
  Class longField =
      host::ClassBuilder("SBUILongNumericPasscodeEntryField", "SBUIPasscodeEntryField").build();
  ASSERT_NE(assistant, nullptr);
  ASSERT_NE(entryField, nullptr);
  ASSERT_NE(longField, nullptr);
  Class exception = classNamed("NSException");
  IMP raise = method_getImplementation(class_getClassMethod(exception, Sel("raise:format:")));
  defineFrameworks();

  Method activate = class_getInstanceMethod(assistant, Sel("activatePluginForEvent:"));
  EXPECT_EQ(method_getImplementation(activate), host::imp(activatePlugin));
  EXPECT_NE(class_getInstanceMethod(assistant, Sel("isPluginVisible")), nullptr);
  EXPECT_EQ(class_getInstanceMethod(assistant, Sel("activatePluginForEvent:eventSource:context:")),
            nullptr)
      << "iOS 10's variant on iOS 9";
  // The subclass inherits the behaviour module's method instead of getting its own.
  EXPECT_FALSE(hasOwn(longField, "_okButtonHit"));
  EXPECT_EQ(method_getImplementation(class_getInstanceMethod(longField, Sel("_okButtonHit"))),
            host::imp(okButtonHit));
  // Foundation's own methods stay Foundation's.
  EXPECT_EQ(method_getImplementation(class_getClassMethod(exception, Sel("raise:format:"))), raise);
}

}  // namespace
}  // namespace kv::sim::frameworks
