// The platform catalog: every class and method of the simulated iOS versions
// that the library names, filled in after the behaviour modules as calls that
// are recorded and answer zero.
#include "sim/frameworks/catalog.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/geometry.h"
#include "platform/runtime.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/system.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

namespace {

constexpr unsigned kEverywhere = kEveryProcess;
constexpr unsigned kSpringBoard = kSpringBoardProcess;
constexpr unsigned kPreferences = kPreferencesProcess;
constexpr unsigned kCamera = kCameraProcess;
constexpr unsigned kInCall = kInCallProcess;

constexpr int kEver = kEarliestVersion;
constexpr int kStill = kLatestVersion;
constexpr int since(int major, int minor = 0) {
  return major * 100 + minor;
}
constexpr int through(int major, int minor = 99) {
  return major * 100 + minor;
}

// BOOL is written 'C', as GCC's runtime has it; NSInteger 'q', NSUInteger 'Q'.
constexpr const char* kRectGetter = "{CGRect={CGPoint=dd}{CGSize=dd}}@:";

// The iOS 8 to 11 platform as the library sees it. Methods a device class
// overrides only to extend its superclass's (init, dealloc, layoutSubviews,
// setTransform:, viewWillAppear:, viewDidDisappear:, touchesEnded:withEvent:,
// +initialize) are left to the superclass here, so that the simulated UIKit's
// or Foundation's behaviour runs and an interception of them is added to the
// subclass as on a device where the subclass does not override.
// clang-format off
const std::vector<CatalogClass>& table() {
  static const auto* rows = new std::vector<CatalogClass>{
      // ---- Foundation and UIKit, in every process ----
      {"NSException", "NSObject", kEverywhere, kEver, kStill, {
          {"+raise:format:", "v@:@@"},
          {"-initWithName:reason:userInfo:", "@@:@@@"},
      }},
      {"__NSStackBlock__", "NSObject", kEverywhere, kEver, kStill, {}},
      {"UIResponder", "NSObject", kEverywhere, kEver, kStill, {
          {"-touchesBegan:withEvent:", "v@:@@"},
          {"-touchesMoved:withEvent:", "v@:@@"},
          {"-touchesEnded:withEvent:", "v@:@@"},
          {"-touchesCancelled:withEvent:", "v@:@@"},
      }},
      {"UIApplication", "UIResponder", kEverywhere, kEver, kStill, {
          {"+sharedApplication", "@@:"},
          {"-applicationDidResume", "v@:"},
          {"-applicationDidResumeFromUnderLock", "v@:"},
          {"-isSuspended", "C@:"},
          {"-launchApplicationWithIdentifier:suspended:", "C@:@C"},
      }},
      {"UIViewController", "UIResponder", kEverywhere, kEver, kStill, {
          {"-viewWillAppear:", "v@:C"},
          {"-viewDidDisappear:", "v@:C"},
          {"-childViewControllers", "@@:"},
          {"-presentViewController:animated:completion:", "v@:@C@?"},
          {"-dismissViewControllerAnimated:completion:", "v@:C@?"},
      }},
      {"UINavigationController", "UIViewController", kEverywhere, kEver, kStill, {
          {"-pushViewController:animated:", "v@:@C"},
          {"-popViewControllerAnimated:", "@@:C"},
          {"-setViewControllers:animated:", "v@:@C"},
      }},
      {"UICollectionViewController", "UIViewController", kEverywhere, kEver, kStill, {
          {"-collectionView", "@@:"},
      }},
      {"UIAlertController", "UIViewController", kEverywhere, since(8), kStill, {
          {"+alertControllerWithTitle:message:preferredStyle:", "@@:@@q"},
          {"-addAction:", "v@:@"},
      }},
      {"UIAlertAction", "NSObject", kEverywhere, since(8), kStill, {
          {"+actionWithTitle:style:handler:", "@@:@q@?"},
      }},
      {"UIControl", "UIView", kEverywhere, kEver, kStill, {
          {"-allTargets", "@@:"},
          {"-addTarget:action:forControlEvents:", "v@:@:Q"},
          {"-sendActionsForControlEvents:", "v@:Q"},
          {"-isSelected", "C@:"},
          {"-setSelected:", "v@:C"},
          {"-isHighlighted", "C@:"},
          {"-setHighlighted:", "v@:C"},
      }},
      {"UIButton", "UIControl", kEverywhere, kEver, kStill, {}},
      {"UIGestureRecognizer", "NSObject", kEverywhere, kEver, kStill, {
          {"-locationInView:", "{CGPoint=dd}@:@"},
      }},
      {"UIPreviewInteractionController", "NSObject", kEverywhere, since(9), kStill, {
          {"-startInteractivePreviewWithGestureRecognizer:", "C@:@"},
      }},

      // ---- Preferences, PassKit, BiometricKit, ManagedConfiguration ----
      {"PSViewController", "UIViewController", kEverywhere, kEver, kStill, {
          {"-specifier", "@@:"},
          {"-setSpecifier:", "v@:@"},
      }},
      {"PSListController", "PSViewController", kEverywhere, kEver, kStill, {
          {"-specifiers", "@@:"},
          {"-specifierForID:", "@@:@"},
          {"-reloadSpecifiers", "v@:"},
          {"-_showControllerFromSpecifier:", "v@:@"},
      }},
      {"PSRootController", "UINavigationController", kEverywhere, kEver, kStill, {}},
      {"PSSpecifier", "NSObject", kEverywhere, kEver, kStill, {
          {"-identifier", "@@:"},
          {"-name", "@@:"},
          {"-properties", "@@:"},
          {"-propertyForKey:", "@@:@"},
          {"-setProperty:forKey:", "v@:@@"},
      }},
      {"PSPasscodeField", "UIView", kEverywhere, kEver, kStill, {
          {"-insertText:", "v@:@"},
      }},
      {"PKGlyphView", "UIView", kEverywhere, since(8), kStill, {
          {"-_minimumAnimationDurationForStateTransition", "d@:"},
      }},
      {"PKFingerprintGlyphView", "UIView", kEverywhere, since(8), kStill, {
          {"-_minimumAnimationDurationForStateTransition", "d@:"},
      }},
      {"BiometricKit", "NSObject", kEverywhere, kEver, kStill, {
          {"+manager", "@@:"},
          {"-identities:", "@@:@"},
          {"-delegate", "@@:"},
          {"-setDelegate:", "v@:@"},
          {"-matchWithMode:andCredentialSet:", "@@:Q@"},
          {"-match:withOptions:", "i@:@@"},
          {"-detectFingerWithOptions:", "i@:@"},
          {"-enableBackgroundFdet:", "i@:C"},
          {"-enableBackgroundFingerDetection:error:", "C@:C^@"},
      }},
      {"BiometricKitIdentity", "NSObject", kEverywhere, kEver, kStill, {}},
      {"BiometricKitMatchOperation", "NSObject", kEverywhere, kEver, kStill, {
          {"-cancel", "v@:"},
      }},
      {"MCProfileConnection", "NSObject", kEverywhere, kEver, kStill, {
          {"+sharedConnection", "@@:"},
          {"-isPasscodeSet", "C@:"},
          {"-isFingerprintUnlockAllowed", "C@:"},
      }},
      {"TUCallCenter", "NSObject", kSpringBoard | kInCall, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-incomingCall", "@@:"},
          {"-currentCalls", "@@:"},
      }},
      {"TUCall", "NSObject", kSpringBoard | kInCall, kEver, kStill, {
          {"-status", "i@:"},
      }},

      // ---- The in-call screen ----
      {"PHCallViewController", "UIViewController", kInCall, since(9), kStill, {}},
      {"PHAudioCallViewController", "PHCallViewController", kInCall, since(9), kStill, {
          {"-setBackgroundImage:", "v@:@"},
      }},
      {"PHCallParticipantsViewController", "UIViewController", kInCall, since(9), kStill, {
          {"-overrideStringForParticipantsView:", "@@:@"},
          {"-participantsView", "@@:"},
      }},

      // ---- The Settings app ----
      // Classes and methods on the versions whose headers declare them.
      {"PreferencesAppController", "UIApplication", kPreferences, kEver, kStill, {
          {"-processURL:", "v@:@", kEver, through(8)},
          {"-rootController", "@@:"},
          {"-rootListController", "@@:"},
      }},
      {"PrefsRootController", "PSRootController", kPreferences, kEver, through(8), {
          {"-pushViewController:animated:", "v@:@C"},
          {"-setViewControllers:animated:", "v@:@C"},
      }},
      {"PrefsListController", "PSListController", kPreferences, kEver, through(8), {
          {"-setAirplaneMode:specifier:", "v@:@@"},
          {"-_showControllerFromSpecifier:", "v@:@"},
      }},
      {"PSUIPrefsRootController", "PSRootController", kPreferences, since(9), kStill, {
          {"-pushViewController:animated:", "v@:@C"},
          {"-setViewControllers:animated:", "v@:@C"},
      }},
      {"PSUIPrefsListController", "PSListController", kPreferences, since(9), kStill, {
          {"-setAirplaneMode:specifier:", "v@:@@"},
          {"-_showControllerFromSpecifier:", "v@:@"},
      }},
      {"ResetPrefController", "PSListController", kPreferences, kEver, through(8), {
          {"-resetIconPositions:", "v@:@"},
      }},
      {"PSMesaSettingsController", "PSListController", kPreferences, kEver, through(9), {}},
      {"PSTouchIDPasscodeController", "PSListController", kPreferences, kEver, through(8), {}},
      {"PSUIBiometricController", "PSListController", kPreferences, since(11), kStill, {
          {"-setTouchIDUnlockEnabled:specifier:", "v@:@@"},
      }},
      {"APNetworksController", "PSListController", kPreferences, kEver, kStill, {}},
      {"UsageDetailController", "PSListController", kPreferences, kEver, kStill, {
          {"-deleteApp", "v@:"},
      }},

      // ---- The Camera app (and the iOS 8 lock-screen camera in SpringBoard) ----
      {"CAMViewfinderViewController", "UIViewController", kCamera, since(9), kStill, {
          {"-_handleImageWellTapped:", "v@:@", since(9), through(10)},
          {"-_handleImageWellReleased:", "v@:@", since(11)},
      }},
      {"CAMImageWell", "UIButton", kCamera, kEver, kStill, {}},
      {"CAMCameraView", "UIView", kCamera, kEver, through(8), {
          {"-_imageWellTapped:", "v@:@"},
      }},
      {"CMKCameraView", "UIView", kCamera, since(9), kStill, {
          {"-_imageWellTapped:", "v@:@"},
      }},
      {"PLCameraView", "UIView", kCamera | kSpringBoard, kEver, through(8), {
          {"-_imageWellTapped:", "v@:@"},
      }},

      // ---- SpringBoard: apps, icons and folders ----
      {"SBApplication", "NSObject", kSpringBoard, kEver, kStill, {
          {"-bundleIdentifier", "@@:"},
          {"-displayIdentifier", "@@:"},
          {"-displayName", "@@:"},
          {"-icon:launchFromLocation:", "C@:@i", kEver, through(9)},
          {"-icon:launchFromLocation:context:activationSettings:actions:", "C@:@q@@@", since(10)},
          {"-snapshotImageInfosWithImageName:sceneID:launchingSize:launchingScale:"
           "launchingOrientation:", "@@:@@{CGSize=dd}dq", kEver, through(10)},
      }},
      {"SBApplicationController", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-applicationWithBundleIdentifier:", "@@:@", since(8)},
          {"-applicationWithDisplayIdentifier:", "@@:@", kEver, through(7)},
      }},
      {"SBIcon", "NSObject", kSpringBoard, kEver, kStill, {
          {"-displayName", "@@:"},
          {"-displayNameForLocation:", "@@:i", kEver, through(10)},
          {"-displayNameForLocation:", "@@:q", since(11)},
      }},
      {"SBApplicationIcon", "SBIcon", kSpringBoard, kEver, kStill, {
          {"-application", "@@:"},
          {"-applicationBundleID", "@@:"},
      }},
      {"SBFolderIcon", "SBIcon", kSpringBoard, kEver, kStill, {
          {"-folder", "@@:"},
          {"-launchFromLocation:", "v@:i", kEver, through(8)},
          {"-launchFromLocation:context:", "v@:i@", since(9), through(10)},
          {"-launchFromLocation:context:activationSettings:actions:", "v@:q@@@", since(11)},
      }},
      {"SBBookmarkIcon", "SBIcon", kSpringBoard, kEver, kStill, {
          {"-launchFromLocation:context:activationSettings:actions:", "v@:q@@@", since(11)},
      }},
      {"SBIconView", "UIView", kSpringBoard, kEver, kStill, {
          {"-icon", "@@:"},
      }},
      {"SBFolder", "NSObject", kSpringBoard, kEver, kStill, {
          {"-displayName", "@@:"},
          {"-setDisplayName:", "v@:@", kEver, through(9)},
          {"-defaultDisplayName", "@@:"},
          {"-isOpen", "C@:"},
          {"-icon", "@@:"},
      }},
      {"SBNewsstandFolder", "SBFolder", kSpringBoard, kEver, through(8), {}},
      {"SBIconController", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-openFolder", "@@:"},
          {"-clearHighlightedIcon", "v@:"},
          {"-closeFolderAnimated:", "v@:C"},
          {"-closeFolderAnimated:withCompletion:", "v@:C@?"},
          {"-currentRootIconList", "@@:"},
          {"-isEditing", "C@:"},
          {"-setIsEditing:", "v@:C"},
          {"-setIsEditing:withFeedbackBehavior:", "v@:C@", since(10)},
          {"-iconCloseBoxTapped:", "v@:@"},
          {"-_appIconForceTouchIconView", "@@:", since(10)},
      }},
      {"SBUIIconForceTouchViewController", "UIViewController", kSpringBoard, since(10), kStill, {
          {"-presentAnimated:withCompletionHandler:", "C@:C@?"},
          {"-delegate", "@@:"},
      }},
      {"SBApplicationShortcutMenu", "UIView", kSpringBoard, since(9), through(9), {
          {"-menuContentView:activateShortcutItem:index:", "v@:@@q"},
          {"-application", "@@:"},
      }},

      // ---- SpringBoard: launching ----
      {"SBUIController", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-activateApplicationAnimated:", "v@:@", kEver, through(8)},
          {"-activateApplication:", "v@:@", since(9)},
          {"-activateApplication:fromIcon:location:", "v@:@@i", since(9)},
          {"-_activateApplicationFromAccessibility:", "v@:@", since(11)},
          {"-updateBatteryState:", "v@:@"},
          {"-finishLaunching", "v@:"},
          {"-isAppSwitcherShowing", "C@:"},
          {"-_toggleSwitcher", "v@:", kEver, through(9)},
          {"-appSwitcher:wantsToActivateApplication:", "v@:@@", kEver, through(8)},
          {"-appSwitcher:wantsToActivateDisplayLayout:displayIDsToURLs:displayIDsToActions:",
           "v@:@@@@", since(9), through(9)},
      }},
      {"SBWorkspace", "NSObject", kSpringBoard, kEver, through(9), {
          {"-workspace:handleOpenApplicationRequest:withOptions:origin:withResult:", "v@:@@@@@?"},
      }},
      {"SBMainWorkspace", "NSObject", kSpringBoard, since(10), kStill, {
          {"+sharedInstance", "@@:"},
          {"-systemService:handleOpenApplicationRequest:withCompletion:", "v@:@@@?"},
          {"-_setCurrentTransactionForRequest:fallbackProvider:", "C@:@@"},
          {"-alertManager", "@@:"},
      }},
      {"SBMainWorkspaceTransitionRequest", "NSObject", kSpringBoard, since(10), kStill, {
          {"-eventLabel", "@@:"},
          {"-activatingApps", "@@:", since(10), through(10)},
          {"-toApplicationSceneEntities", "@@:"},
          {"-applicationContext", "@@:", since(11)},
      }},
      {"SBDeviceApplicationSceneEntity", "NSObject", kSpringBoard, since(10), kStill, {
          {"-application", "@@:"},
      }},
      {"FBSystemServiceOpenApplicationRequest", "NSObject", kSpringBoard, since(10), kStill, {
          {"-bundleIdentifier", "@@:"},
          {"-options", "@@:"},
      }},
      {"FBSOpenApplicationOptions", "NSObject", kSpringBoard, since(10), kStill, {
          {"-dictionary", "@@:"},
      }},
      {"SBAppToAppWorkspaceTransaction", "NSObject", kSpringBoard, kEver, kStill, {
          {"-initWithAlertManager:from:to:withResult:", "@@:@@@@?"},
          {"-begin", "v@:"},
      }},
      {"SBWorkspaceEventQueue", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-executeOrAppendEvent:", "v@:@"},
      }},
      {"SBUserAgent", "NSObject", kSpringBoard, kEver, through(10), {
          {"+sharedUserAgent", "@@:"},
          {"-_openApplication:withURL:fromSource:animated:options:", "C@:@@iC@"},
          {"-launchFromPushOrLocalBulletin:origin:", "C@:@q", kEver, through(8)},
          {"-launchFromPushOrLocalBulletin:actionIdentifier:origin:", "C@:@@i", since(9),
           through(9)},
          {"-launchFromPushOrLocalBulletin:actionIdentifier:userResponse:origin:", "C@:@@@i",
           since(10)},
      }},
      {"SpringBoard", "UIApplication", kSpringBoard, kEver, kStill, {
          {"-_accessibilityFrontMostApplication", "@@:"},
          {"-launchApplicationWithIdentifier:suspended:", "C@:@C"},
          {"-displayIDForURLScheme:isPublic:", "@@:@C"},
          {"-_menuButtonDown:", "v@:^{__IOHIDEvent=}"},
          {"-_menuButtonUp:", "v@:^{__IOHIDEvent=}"},
          {"-_openURLCore:display:animating:sender:additionalActivationFlags:activationHandler:",
           "v@:@@C@I@?", kEver, through(8)},
          {"-_openURLCore:display:animating:sender:activationSettings:withResult:", "v@:@@C@@@?",
           since(9)},
          {"-_openURLCore:display:animating:sender:activationContext:activationHandler:",
           "v@:@@C@@@?", since(10)},
          {"-applicationOpenURL:withApplication:sender:publicURLsOnly:animating:needsPermission:"
           "activationContext:activationHandler:", "v@:@@@CCC@@?", since(11)},
          {"-frontDisplayDidChange:", "v@:@"},
          {"-powerDown", "v@:", kEver, through(9)},
          {"-_powerDownNow", "v@:", kEver, through(9)},
          {"-powerDownRequested:", "v@:@", since(10)},
          {"-reboot", "v@:", kEver, through(9)},
          {"-_rebootNow", "v@:", kEver, through(8)},
          {"-_rebootNow:", "v@:@", since(9), through(9)},
          {"-relaunchSpringBoard", "v@:", kEver, through(9)},
          {"-_relaunchSpringBoardNow", "v@:"},
          {"-_lockButtonDownFromSource:", "v@:q", kEver, through(9)},
          {"-_lockButtonUpFromSource:", "v@:q", kEver, through(9)},
          {"-_lockButtonDown:fromSource:", "v@:@q", since(10), through(10)},
          {"-_lockButtonUp:fromSource:", "v@:@q", since(10), through(10)},
          {"-lockHardwareButton", "@@:", since(10, 2)},
          {"-quitTopApplication:", "v@:@", kEver, through(9)},
          {"-_handleGotoHomeScreenShortcut:", "v@:@", since(10)},
          {"-_returnToHomeScreenWithCompletion:", "v@:@?", since(11)},
      }},

      // ---- SpringBoard: lock screen, backlight and biometrics ----
      {"SBLockScreenManager", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-isUILocked", "C@:"},
          {"-lockUIFromSource:withOptions:", "v@:i@"},
          {"-unlockUIFromSource:withOptions:", "v@:i@", kEver, through(9)},
          {"-unlockUIFromSource:withOptions:", "C@:i@", since(10)},
          {"-_bioAuthenticated:", "v@:@"},
          {"-lockScreenViewController", "@@:"},
          {"-_relockUIForButtonlikeSource:afterCall:", "v@:iC"},
      }},
      {"SBLockScreenSlideUpToAppController", "NSObject", kSpringBoard, kEver, through(9), {
          {"-finalizeGesture", "v@:"},
          {"-targetApp", "@@:"},
      }},
      {"SBLockScreenCameraController", "NSObject", kSpringBoard, kEver, through(9), {
          {"-_didActivate", "v@:"},
          {"-cameraView", "@@:"},
      }},
      {"SBDashBoardViewController", "UIViewController", kSpringBoard, since(10), kStill, {
          {"-activateCameraAnimated:", "v@:C", since(10), through(10)},
          {"-_activateCameraAnimated:", "v@:C", since(11)},
      }},
      {"SBLockHardwareButton", "NSObject", kSpringBoard, since(10, 2), kStill, {
          {"-singlePress:", "v@:@"},
          {"-buttonActions", "@@:"},
      }},
      {"SBLockHardwareButtonActions", "NSObject", kSpringBoard, since(10, 2), kStill, {
          {"-performSinglePressAction", "v@:"},
      }},
      {"SBBacklightController", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-setBacklightFactor:source:", "v@:fi", kEver, through(9)},
          {"-setBacklightFactor:source:", "v@:fq", since(10)},
          {"-backlightFactor", "f@:"},
          {"-defaultLockScreenDimInterval", "d@:"},
          {"-screenIsOff", "C@:", kEver, through(9)},
          {"-screenIsOn", "C@:", since(10)},
          {"-shouldTurnOnScreenForBacklightSource:", "C@:q", since(10)},
          {"-_animateBacklightToFactor:duration:source:silently:completion:", "v@:fdqC@?",
           since(10)},
      }},
      {"SBDeviceLockController", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedController", "@@:"},
          {"-deviceHasPasscodeSet", "C@:"},
          {"-enablePasscodeLockImmediately", "v@:"},
          {"-_lockStateChangedFrom:to:", "v@:ii", kEver, through(9)},
          {"-_updateDeviceLockedState", "v@:", since(10)},
      }},
      {"SBUIBiometricEventMonitor", "NSObject", kSpringBoard, kEver, through(10), {
          {"+sharedInstance", "@@:"},
          {"-addObserver:", "v@:@"},
          {"-removeObserver:", "v@:@"},
          {"-_setMatchingEnabled:", "v@:C"},
          {"-isMatchingEnabled", "C@:"},
          {"-_startMatching", "v@:"},
          {"-_stopMatching", "v@:"},
          {"-biometricKit", "@@:"},
      }},
      {"_SBUIBiometricKitInterface", "NSObject", kSpringBoard, since(10), kStill, {
          {"+sharedInstance", "@@:"},
          {"-delegate", "@@:"},
          {"-setDelegate:", "v@:@"},
      }},
      {"SBUIBiometricResource", "NSObject", kSpringBoard, since(11), kStill, {
          {"+sharedInstance", "@@:"},
          {"-addObserver:", "v@:@"},
          {"-removeObserver:", "v@:@"},
          {"-acquireMatchingAssertionWithMode:reason:", "@@:Q@"},
          {"-isMatchingEnabled", "C@:"},
          {"-isMatchingAllowed", "C@:"},
          {"-hasBiometricAuthenticationCapabilityEnabled", "C@:"},
      }},
      {"SBUIBiometricMatchingAssertion", "NSObject", kSpringBoard, since(11), kStill, {
          {"-invalidate", "v@:"},
      }},
      {"SBLockScreenMesaCoordinator", "NSObject", kSpringBoard, since(11), kStill, {
          {"+sharedInstance", "@@:"},
          {"-biometricResource:observeEvent:", "v@:@Q"},
      }},
      {"SBWiFiManager", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-knownNetworks", "@@:"},
      }},
      {"SBSIMLockManager", "NSObject", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-lockEntryAlert", "@@:"},
      }},
      {"SBUIPasscodeEntryField", "UIView", kSpringBoard, kEver, kStill, {}},
      {"SBUILongNumericPasscodeEntryField", "SBUIPasscodeEntryField", kSpringBoard, kEver, kStill, {
          {"-_okButtonHit", "v@:"},
      }},

      // ---- SpringBoard: power, respring, Siri ----
      {"FBSystemApp", "UIApplication", kSpringBoard, kEver, kStill, {
          {"-sendActionsToBackboard:", "v@:@"},
      }},
      {"FBSystemService", "NSObject", kSpringBoard, since(8), kStill, {
          {"+sharedInstance", "@@:"},
          {"-delegate", "@@:"},
          {"-shutdownWithOptions:", "v@:Q", since(9)},
          {"-shutdownAndReboot:", "v@:C"},
          {"-exitAndRelaunch:", "v@:C"},
      }},
      {"BKSRestartAction", "NSObject", kSpringBoard, kEver, kStill, {}},
      {"SBPowerDownController", "UIViewController", kSpringBoard, kEver, kStill, {
          {"-powerDown", "v@:"},
          {"-powerDownViewRequestPowerDown:", "v@:@"},
      }},
      {"SBRestartManager", "NSObject", kSpringBoard, since(10), kStill, {
          {"-restartWithTransitionRequest:", "v@:@"},
          {"-shutdownForReason:", "v@:@"},
          {"-rebootForReason:", "v@:@"},
      }},
      // No header declares -activatePluginForEvent:; through iOS 9 the
      // activation is SBUIPluginHost's.
      {"SBUIPluginHost", "NSObject", kSpringBoard, kEver, kStill, {
          {"-activatePluginForEvent:eventSource:context:", "C@:ii^v", kEver, through(9)},
      }},
      {"SBAssistantController", "SBUIPluginHost", kSpringBoard, kEver, kStill, {
          {"+sharedInstance", "@@:"},
          {"-isPluginVisible", "C@:"},
          {"-activatePluginForEvent:eventSource:context:", "C@:ii^v", since(10)},
      }},

      // ---- SpringBoard: Control Center ----
      {"SBUIControlCenterButton", "UIButton", kSpringBoard, kEver, through(9), {
          {"-_pressAction", "v@:"},
          {"-identifier", "@@:"},
      }},
      {"SBControlCenterButton", "SBUIControlCenterButton", kSpringBoard, kEver, through(9), {}},
      {"SBCCQuickLaunchSectionController", "UIViewController", kSpringBoard, kEver, through(9), {
          {"-_activateAppWithBundleId:url:", "v@:@@"},
      }},
      {"CCUIControlCenterButton", "UIButton", kSpringBoard, since(10), through(10), {
          {"-_pressAction", "v@:"},
      }},
      {"CCUIControlCenterPushButton", "CCUIControlCenterButton", kSpringBoard, since(10),
       through(10), {
          {"-identifier", "@@:"},
      }},
      {"CCUIRoundButton", "UIControl", kSpringBoard, since(11), kStill, {}},
      {"CCUIButtonModuleView", "UIControl", kSpringBoard, since(11), kStill, {}},
      {"CCUIContentModuleContainerViewController", "UIViewController", kSpringBoard, since(11),
       kStill, {
          {"-_previewInteraction:viewControllerPresentationForPresentingViewController:",
           "@@:@@"},
          {"-moduleIdentifier", "@@:"},
          {"-contentModule", "@@:"},
          {"-_contentFrameForRestState", kRectGetter},
          {"-_contentFrameForExpandedState", kRectGetter},
      }},
      {"CCUIButtonModuleViewController", "UIViewController", kSpringBoard, since(11), kStill, {}},
      {"CCUIConnectivityButtonViewController", "CCUIButtonModuleViewController", kSpringBoard,
       since(11), kStill, {}},
      {"CCUIConnectivityAirplaneViewController", "CCUIConnectivityButtonViewController",
       kSpringBoard, since(11), kStill, {}},
      {"CCUIConnectivityCellularDataViewController", "CCUIConnectivityButtonViewController",
       kSpringBoard, since(11), kStill, {}},
      {"CCUIConnectivityWifiViewController", "CCUIConnectivityButtonViewController",
       kSpringBoard, since(11), kStill, {}},
      {"CCUIConnectivityBluetoothViewController", "CCUIConnectivityButtonViewController",
       kSpringBoard, since(11), kStill, {}},
      {"CCUIConnectivityAirDropViewController", "CCUIConnectivityButtonViewController",
       kSpringBoard, since(11), kStill, {}},
      {"CCUIConnectivityHotspotViewController", "CCUIConnectivityButtonViewController",
       kSpringBoard, since(11), kStill, {}},

      // ---- SpringBoard: the app switcher ----
      {"SBDisplayLayout", "NSObject", kSpringBoard, kEver, through(9), {
          {"-plistRepresentation", "@@:"},
      }},
      {"SBDisplayItem", "NSObject", kSpringBoard, since(9), kStill, {
          {"-displayIdentifier", "@@:"},
      }},
      {"SBSwitchAppList", "NSObject", kSpringBoard, kEver, through(8), {
          {"-_bundleIDShouldBeRepresentedInList:", "C@:@"},
      }},
      {"SBAppSliderSnapshotView", "UIView", kSpringBoard, kEver, through(8), {
          {"-application", "@@:"},
          {"-_snapshotInfoForDefaultPNG", "@@:"},
          {"-_cachedImageForImageInfos:foundInfo:", "@@:@^@"},
          {"-_cachedImageForImageInfos:downscaled:foundInfo:", "@@:@C^@"},
          {"-_defaultImageforImageInfo:", "@@:@"},
          {"-_cgImageForSnapshotInfo:", "^{CGImage=}@:@"},
          {"-_cgImageForSnapshotInfo:downscaled:", "^{CGImage=}@:@C"},
          {"-_loadImageAsyncFromSnapshotInfo:", "v@:@"},
      }},
      {"SBAppSwitcherController", "UIViewController", kSpringBoard, kEver, through(9), {
          {"-switcherIconScroller:activate:", "v@:@@"},
          {"-switcherScroller:itemTapped:", "v@:@@"},
      }},
      // Its own layout, as the 8 to 10 headers declare; the zoom-up takes a
      // transition request from 9.3 (the 9.3 headers), none before.
      {"SBAppSwitcherSnapshotView", "UIView", kSpringBoard, since(9), through(10), {
          {"-displayItem", "@@:"},
          {"-snapshotImageView", "@@:"},
          {"-layoutSubviews", "v@:"},
          {"-_crossfadeToZoomUpViewIfNecessary", "v@:", since(9), through(9, 2)},
          {"-_crossfadeToZoomUpViewIfNecessaryForTransitionRequest:", "v@:@", since(9, 3)},
          {"-_viewPresenting:", "v@:@", since(9), through(9)},
      }},
      {"SBSwitcherSnapshotImageView", "UIImageView", kSpringBoard, since(9), kStill, {
          {"-layoutSubviews", "v@:"},
      }},
      {"SBSystemGestureManager", "NSObject", kSpringBoard, since(9), kStill, {
          {"-_systemGestureChanged:", "v@:@"},
      }},
      {"SBMainSwitcherViewController", "UIViewController", kSpringBoard, since(10), kStill, {
          {"+sharedInstance", "@@:"},
          {"-isVisible", "C@:"},
          {"-toggleSwitcherNoninteractively", "C@:", since(10), through(10)},
          {"-toggleSwitcherNoninteractivelyWithSource:", "C@:q", since(11)},
          {"-activateSwitcherNoninteractivelyWithSource:", "C@:q", since(11)},
          {"-dismissSwitcherNoninteractively", "C@:", since(11)},
          {"-_setReturnToDisplayItem:", "v@:@"},
          {"-switcherContentController:selectedItem:", "v@:@@", since(10), through(10)},
      }},
      {"SBSwitcherForcePressSystemGestureTransaction", "NSObject", kSpringBoard, since(10),
       kStill, {
          {"-_transitionRequestForPresentationWithCommitment:toNextDisplayItem:", "@@:CC"},
          {"-nextDisplayItem", "@@:"},
      }},
      {"SBSwitcherContainerView", "UIView", kSpringBoard, since(10), kStill, {}},
      {"SBAppSwitcherReusableSnapshotView", "UIView", kSpringBoard, since(11), kStill, {
          {"-_applicationForRole:", "@@:q"},
          {"-layoutSubviews", "v@:"},
      }},
      {"SBFluidSwitcherGestureWorkspaceTransaction", "NSObject", kSpringBoard, since(11), kStill, {
          {"-_runSceneLayoutTransactionForTransitionRequest:updateScenes:", "v@:@C"},
          {"-_didComplete", "v@:"},
      }},
      {"SBWorkspaceApplicationSceneTransitionContext", "NSObject", kSpringBoard, since(11), kStill, {
          {"-layoutState", "@@:"},
          {"-previousLayoutState", "@@:"},
      }},
      {"SBMainDisplayLayoutState", "NSObject", kSpringBoard, since(11), kStill, {
          {"-unlockedEnvironmentMode", "q@:"},
          {"-elements", "@@:"},
      }},
      {"SBLayoutElement", "NSObject", kSpringBoard, since(11), kStill, {
          {"-identifier", "@@:"},
      }},

      // ---- SpringBoard: notifications ----
      {"BBBulletin", "NSObject", kSpringBoard, kEver, kStill, {
          {"-section", "@@:"},
          {"-sectionID", "@@:"},
          {"-title", "@@:"},
          {"-message", "@@:"},
          {"-setSound:", "v@:@"},
      }},
      {"BBSound", "NSObject", kSpringBoard, kEver, kStill, {
          {"-initWithSystemSoundID:behavior:vibrationPattern:", "@@:IQ@", kEver, through(10)},
          {"-initWithToneAlertConfiguration:", "@@:@", since(10)},
      }},
      {"TLAlertConfiguration", "NSObject", kSpringBoard, since(10), kStill, {
          {"-initWithType:", "@@:q"},
          {"-setExternalToneFileURL:", "v@:@"},
      }},
      {"NCNotificationRequest", "NSObject", kSpringBoard, since(10), kStill, {
          {"-sectionIdentifier", "@@:"},
          {"-bulletin", "@@:"},
      }},
      {"NCCoalescedNotification", "NSObject", kSpringBoard, since(10), kStill, {}},
      {"NCNotificationListViewController", "UICollectionViewController", kSpringBoard, since(10),
       kStill, {
          {"-numberOfSectionsInCollectionView:", "q@:@"},
          {"-collectionView:numberOfItemsInSection:", "q@:@q"},
          {"-collectionView:cellForItemAtIndexPath:", "@@:@@"},
          {"-notificationRequestAtIndexPath:", "@@:@"},
          {"-notificationListCell:requestsClearingNotificationRequest:", "v@:@@"},
          {"-notificationListCell:requestsPerformAction:forNotificationRequest:completion:",
           "v@:@@@@?"},
      }},
      {"NCNotificationPriorityListViewController", "NCNotificationListViewController",
       kSpringBoard, since(10), kStill, {
          {"-insertNotificationRequest:forCoalescedNotification:", "C@:@@"},
          {"-removeNotificationRequest:forCoalescedNotification:", "v@:@@"},
      }},
      {"NCNotificationSectionListViewController", "NCNotificationListViewController",
       kSpringBoard, since(10), kStill, {
          {"-insertNotificationRequest:forCoalescedNotification:", "C@:@@"},
          {"-removeNotificationRequest:forCoalescedNotification:", "v@:@@"},
      }},
      {"NCNotificationLongLookViewController", "UIViewController", kSpringBoard, since(10),
       kStill, {
          {"-_handleCloseButton:", "v@:@"},
          {"-notificationRequest", "@@:"},
      }},
      {"NCBulletinNotificationSource", "NSObject", kSpringBoard, since(10), kStill, {
          {"-observer:addBulletin:forFeed:", "v@:@@Q", since(10), through(10)},
          {"-observer:addBulletin:forFeed:playLightsAndSirens:withReply:", "v@:@@QC@?",
           since(11)},
      }},
  };
  return *rows;
}
// clang-format on

// The class methods that answer the class's one shared instance.
constexpr std::string_view kSingletonSelectors[] = {
    "sharedInstance",  "sharedController",  "sharedConnection",
    "sharedUserAgent", "sharedApplication", "manager",
};

// ---- Record and return ----

// Logs the call: "CLASS -selector", or "CLASS +selector" for a class receiver.
void record(id self, SEL cmd) {
  Class cls = object_getClass(self);
  bool classSide = class_isMetaClass(cls);
  const char* name = classSide ? class_getName(reinterpret_cast<Class>(self)) : class_getName(cls);
  host::logEvent("call", std::string(name) + (classSide ? " +" : " -") + sel_getName(cmd));
}

// Every argument is ignored: on x86-64 the caller owns them. The recorders
// stand in for methods of every signature, so callers reach them through
// function types of their own: the function-type check has no say here.
__attribute__((no_sanitize("function"))) void recordVoid(id self, SEL cmd) {
  record(self, cmd);
}

template <typename T>
__attribute__((no_sanitize("function"))) T recordZero(id self, SEL cmd) {
  record(self, cmd);
  return T{};
}

__attribute__((no_sanitize("function"))) id recordShared(id self, SEL cmd) {
  record(self, cmd);
  return sharedOf(class_getName(reinterpret_cast<Class>(self)));
}

// The generic implementation of each return type, by the encoding's first
// characters (qualifiers skipped). Integers of one size share one.
struct ReturnKind {
  std::string_view encoding;
  IMP imp;
};
const ReturnKind kReturnKinds[] = {
    {"v", host::imp(recordVoid)},
    {"@", host::imp(recordZero<id>)},
    {"#", host::imp(recordZero<id>)},
    {"^", host::imp(recordZero<void*>)},
    {"*", host::imp(recordZero<void*>)},
    {":", host::imp(recordZero<void*>)},
    {"c", host::imp(recordZero<uint8_t>)},
    {"C", host::imp(recordZero<uint8_t>)},
    {"B", host::imp(recordZero<uint8_t>)},
    {"i", host::imp(recordZero<uint32_t>)},
    {"I", host::imp(recordZero<uint32_t>)},
    {"l", host::imp(recordZero<uint64_t>)},
    {"L", host::imp(recordZero<uint64_t>)},
    {"q", host::imp(recordZero<uint64_t>)},
    {"Q", host::imp(recordZero<uint64_t>)},
    {"f", host::imp(recordZero<float>)},
    {"d", host::imp(recordZero<double>)},
    {"{CGRect=", host::imp(recordZero<CGRect>)},
    {"{CGPoint=", host::imp(recordZero<CGPoint>)},
    {"{CGSize=", host::imp(recordZero<CGSize>)},
    {"{CGAffineTransform=", host::imp(recordZero<CGAffineTransform>)},
};

bool isSingleton(std::string_view selector) {
  for (std::string_view s : kSingletonSelectors) {
    if (s == selector) return true;
  }
  return false;
}

// The implementation of a catalog method, or nullptr for a return type the
// catalog has none for.
IMP recorderFor(const CatalogMethod& method) {
  constexpr std::string_view kQualifiers = "rnNoORV";
  std::string_view types(method.types);
  while (!types.empty() && kQualifiers.find(types.front()) != std::string_view::npos) {
    types.remove_prefix(1);
  }
  if (method.name[0] == '+' && isSingleton(method.name + 1) && types.starts_with("@")) {
    return host::imp(recordShared);
  }
  for (const auto& kind : kReturnKinds) {
    if (types.starts_with(kind.encoding)) return kind.imp;
  }
  return nullptr;
}

// ---- Defining ----

unsigned thisProcess() {
  if (inProcess("SpringBoard")) return kSpringBoardProcess;
  if (inProcess("Preferences")) return kPreferencesProcess;
  if (inProcess("InCallService")) return kInCallProcess;
  if (inProcess("Camera") || system().bundleIdentifier == "com.apple.camera") return kCameraProcess;
  return kOtherAppProcess;
}

bool onThisVersion(int first, int last) {
  int version = since(system().major, system().minor);
  return first <= version && version <= last;
}

const CatalogClass* rowNamed(std::string_view name) {
  for (const auto& row : table()) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

// True iff `cls` already answers the method from itself or from a class
// below the root: a behaviour module's method, never replaced. What only the
// root (NSObject) answers is the platform class's to override.
bool alreadyHas(Class cls, SEL sel, bool classSide) {
  Class target = classSide ? platform::metaclassOf(cls) : cls;
  Method found = class_getInstanceMethod(target, sel);
  if (found == nullptr) return false;
  Class root = platform::classNamed("NSObject");
  Method rootMethod = class_getInstanceMethod(classSide ? platform::metaclassOf(root) : root, sel);
  return rootMethod == nullptr ||
         method_getImplementation(rootMethod) != method_getImplementation(found);
}

void addMethods(Class cls, const CatalogClass& row) {
  for (const auto& method : row.methods) {
    if (!onThisVersion(method.first, method.last)) continue;
    bool classSide = method.name[0] == '+';
    SEL sel = platform::selector(method.name + 1);
    if (alreadyHas(cls, sel, classSide)) continue;
    IMP imp = recorderFor(method);
    if (imp == nullptr) continue;
    class_addMethod(classSide ? platform::metaclassOf(cls) : cls, sel, imp, method.types);
  }
}

// Defines the row's class (its catalog superclass first, when that is not
// there yet) or takes the existing one; nullptr when the superclass is
// missing from this process.
Class defineRow(const CatalogClass& row) {
  Class cls = platform::classNamed(row.name);
  if (cls == nullptr) {
    if (platform::classNamed(row.superclass) == nullptr) {
      const CatalogClass* parent = rowNamed(row.superclass);
      if (parent == nullptr || !appliesHere(*parent) || defineRow(*parent) == nullptr) {
        return nullptr;
      }
    }
    cls = host::ClassBuilder(row.name, row.superclass).build();
    if (cls == nullptr) return nullptr;
  }
  addMethods(cls, row);
  return cls;
}

}  // namespace

const std::vector<CatalogClass>& catalog() {
  return table();
}

bool appliesHere(const CatalogClass& cls) {
  return (cls.processes & thisProcess()) != 0 && onThisVersion(cls.first, cls.last);
}

bool appliesHere(const CatalogMethod& method) {
  return onThisVersion(method.first, method.last);
}

const CatalogMethod* cataloguedHere(const char* className, const char* method) {
  const CatalogClass* row = rowNamed(className);
  if (row == nullptr || !appliesHere(*row)) return nullptr;
  for (const auto& m : row->methods) {
    if (std::string_view(m.name) == method && appliesHere(m)) return &m;
  }
  return nullptr;
}

bool cataloguedHere(const char* className) {
  const CatalogClass* row = rowNamed(className);
  return row != nullptr && appliesHere(*row);
}

Class defineCatalogued(const char* className) {
  const CatalogClass* row = rowNamed(className);
  if (row == nullptr || !appliesHere(*row)) return nullptr;
  return defineRow(*row);
}

bool addCatalogued(host::ClassBuilder& builder, const char* method, IMP imp) {
  const CatalogMethod* m = cataloguedHere(builder.name().c_str(), method);
  if (m == nullptr) return false;
  if (method[0] == '+') {
    builder.classMethod(method + 1, imp, m->types);
  } else {
    builder.instance(method + 1, imp, m->types);
  }
  return true;
}

bool loadsLate(const char* className) {
  return system().passKitLate && inProcess("SpringBoard") &&
         std::string_view(className).substr(0, 2) == "PK";
}

void defineCatalog() {
  for (const auto& row : table()) {
    if (appliesHere(row) && !loadsLate(row.name)) defineRow(row);
  }
}

void defineCatalogClasses(std::initializer_list<const char*> classNames) {
  for (const char* name : classNames) {
    const CatalogClass* row = rowNamed(name);
    if (row != nullptr && appliesHere(*row)) defineRow(*row);
  }
}

}  // namespace kv::sim::frameworks
