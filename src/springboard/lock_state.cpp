// Locking and unlocking.
#include "springboard/lock_state.h"

#include <algorithm>

#include "base/flags.h"
#include "base/hardware.h"
#include "base/session.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "core/policy.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/geometry.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;

const Sel kAlloc("alloc");
const Sel kInitWithStyle("initWithStyle:");
const Sel kFrame("frame");
const Sel kSetFrame("setFrame:");
const Sel kAddSubview("addSubview:");
const Sel kRelease("release");
const Sel kBundleIdentifier("bundleIdentifier");
const Sel kDisplayIdentifier("displayIdentifier");
const Sel kFrontMostApplication("_accessibilityFrontMostApplication");
const Sel kDelegate("delegate");
const Sel kSelectTransaction("_selectTransactionForAppActivationToApp:withResult:");
const Sel kDidComplete("_didComplete");
const Sel kGotoHome("handleGotoHomeScreenShortcut:");
const Sel kGotoHomePrivate("_handleGotoHomeScreenShortcut:");
const Sel kQuitTopApplication("quitTopApplication:");
const Sel kSharedInstance("sharedInstance");
const Sel kSharedInstanceIfExists("sharedInstanceIfExists");
const Sel kSharedController("sharedController");
const Sel kIsMatching("isMatching");
const Sel kStartMatching("startMatching");
const Sel kStopMatching("stopMatching");
const Sel kIncomingCall("incomingCall");
const Sel kScreenIsOn("screenIsOn");
const Sel kScreenIsOff("screenIsOff");
const Sel kIsUILocked("isUILocked");
const Sel kLockScreenViewController("lockScreenViewController");
const Sel kCameraIsVisible("cameraIsVisible");
const Sel kCameraIsActive("cameraIsActive");
const Sel kHintManager("lockScreenHintManager");
const Sel kEndHintPresentation("_endControllerPresentationForPanInState:");
const Sel kEnablePasscodeLock("enablePasscodeLockImmediately");
const Sel kUpdateDeviceLockedState("_updateDeviceLockedState");
const Sel kLockStateChanged("_lockStateChangedFrom:to:");
const Sel kCameraView("cameraView");
const Sel kSetValueForKey("setValue:forKey:");
const Sel kSharedConnection("sharedConnection");
const Sel kIsPasscodeSet("isPasscodeSet");
const Sel kIsFingerprintUnlockAllowed("isFingerprintUnlockAllowed");
const Sel kAlertViewCancel("alertViewCancel:");

constexpr int kLockFromCallSource = 7;  // a lock that keeps the prompt (iOS 10 and later)
constexpr int kBiometricUnlockSource = 14;
constexpr long kLockScreenMatch = 4;
constexpr platform::Integer kBackdropStyle = 2;
constexpr const char* kCamera = "com.apple.camera";
constexpr const char* kCameraTitle = "Camera";
constexpr const char* kLockScreenFormat = " (LockScreen)";

// What the lock screen's guards keep between calls.
struct LockState {
  Retained cameraCall;  // the lock-screen camera's activation, while it waits
  bool cameraCoverShown = false;
  std::vector<std::string> recentFront;
};
LockState& lockState() {
  static auto* state = new LockState();
  return *state;
}

bool ios10() {
  return base::flags().isIOS10OrLater;
}

id springBoardApp() {
  return core::application();
}

// The front app, when it is protected.
bool protectedAppInFront() {
  id app = sendIfResponds<id>(springBoardApp(), kFrontMostApplication);
  if (app == nullptr) return false;
  if (!ios10() && isProtectedApp(sendIfResponds<id>(app, kDisplayIdentifier))) return true;
  return isProtectedApp(sendIfResponds<id>(app, kBundleIdentifier));
}

bool quitOnLock() {
  return settings::current().quitProtectedAppsOnDeviceLock && core::wayToAuthenticate() &&
         protectedAppInFront();
}

// Sends the front app home as this system's workspace does.
void leaveFrontApp() {
  id app = springBoardApp();
  if (!ios10()) {
    sendIfResponds(app, kQuitTopApplication, id{nullptr});
    return;
  }
  id delegate = sendIfResponds<id>(core::sharedInstanceOf("FBSystemService"), kDelegate);
  if ((platform::isKindOf(delegate, "SBWorkspace") ||
       platform::isKindOf(delegate, "SBMainWorkspace")) &&
      platform::respondsTo(delegate, kSelectTransaction)) {
    id transaction = send<id>(delegate, kSelectTransaction, id{nullptr}, id{nullptr});
    sendIfResponds(transaction, kDidComplete);
    return;
  }
  if (platform::respondsTo(app, kGotoHome)) {
    send<void>(app, kGotoHome, id{nullptr});
  } else {
    sendIfResponds(app, kGotoHomePrivate, id{nullptr});
  }
}

id unlockController(const Sel& accessor) {
  Class cls = platform::classNamed("KavelinUnlockController");
  return cls == nullptr ? nullptr : platform::sendClass<id>(cls, accessor);
}

bool inCallMatching() {
  Class cls = platform::classNamed("KavelinInCallController");
  id controller = cls == nullptr ? nullptr : platform::sendClass<id>(cls, kSharedInstance);
  return sendIfResponds<BOOL>(controller, kIsMatching) != 0;
}

bool callRinging() {
  return sendIfResponds<id>(core::sharedInstanceOf("TUCallCenter"), kIncomingCall) != nullptr;
}

bool screenOff() {
  id backlight = core::sharedInstanceOf("SBBacklightController");
  if (platform::respondsTo(backlight, kScreenIsOn)) return send<BOOL>(backlight, kScreenIsOn) == 0;
  return sendIfResponds<BOOL>(backlight, kScreenIsOff) != 0;
}

// The system would not match a finger by itself: no device passcode, or
// fingerprint unlock switched off.
bool systemWouldNotMatch() {
  id connection =
      platform::sendClass<id>(platform::classNamed("MCProfileConnection"), kSharedConnection);
  return sendIfResponds<BOOL>(connection, kIsPasscodeSet) == 0 ||
         sendIfResponds<BOOL>(connection, kIsFingerprintUnlockAllowed) == 0;
}

bool keepMatchingForProduct() {
  return settings::current().enabled && core::wayToAuthenticate() && systemWouldNotMatch();
}

void setPrivateFlag(id self, const char* key) {
  platform::AutoreleasePool pool;
  send<void>(self, kSetValueForKey, platform::makeBool(true), platform::makeString(key));
}

bool cameraProtected() {
  return core::requiresAuthenticationForIdentifier(kCamera) && gatePasses();
}

// Parks a lock-screen camera activation behind the prompt titled `title`.
bool holdCamera(const Retained& call, const char* title) {
  if (!call) return false;
  platform::retainArguments(call.get());
  lockState().cameraCall = call;
  platform::AutoreleasePool pool;
  return holdBack(call.get(), platform::makeString(title));
}

// A lock-screen camera activation or a lock-screen photos request waits.
bool lockScreenCameraWaiting() {
  const core::CoordinatorState& c = core::state();
  if (lockState().cameraCall && c.invocation.get() == lockState().cameraCall.get()) return true;
  return c.cameraPhotosPending || c.cameraPhotos9Pending;
}

// The product needs the biometric match: an unlock by it must not happen.
bool productNeedsMatch() {
  if (lockScreenCameraWaiting()) return true;
  if (base::flags().isIOS8OrLater) return core::promptVisible();
  id lockScreen =
      sendIfResponds<id>(core::sharedInstanceOf("SBLockScreenManager"), kLockScreenViewController);
  if (platform::respondsTo(lockScreen, kCameraIsVisible) &&
      send<BOOL>(lockScreen, kCameraIsVisible) != 0) {
    return true;
  }
  return sendIfResponds<BOOL>(lockScreen, kCameraIsActive) != 0;
}

// Every device unlock starts a new session.
void endSession() {
  base::sessionUnlocked() = false;
  settings::publish(settings::Note::kGracePeriod, 0);
}

// Without a device passcode a finger unlocks through the product's matcher.
void startUnlockMatcherIfDue(id lockScreenManager) {
  if (!core::biometricsInUse()) return;
  const settings::Settings& s = settings::current();
  bool mayStart =
      core::state().biometricDelegate || (ios10() && base::springBoardFlags().startupFinished);
  if (s.unlockUsingTouchID && !core::devicePasscodeSet() && !base::faceCameraPresent() &&
      s.enabled && sendIfResponds<BOOL>(lockScreenManager, kIsUILocked) != 0 && mayStart) {
    sendIfResponds(unlockController(kSharedInstance), kStartMatching);
  }
}

// What both forms of the unlock do before the platform's; false swallows it.
bool unlockMayProceed(int source, id options) {
  if (inCallMatching() && options == nullptr && source == kBiometricUnlockSource && !screenOff() &&
      callRinging()) {
    return false;
  }
  endSession();
  lockState().cameraCoverShown = false;
  return !(productNeedsMatch() && source == kBiometricUnlockSource);
}

}  // namespace

void lockUI(id self, SEL cmd, int source, id options) {
  const core::CoordinatorState& c = core::state();
  if (core::promptVisible() && !(ios10() && source == kLockFromCallSource)) {
    send<void>(core::controller(), kAlertViewCancel, c.kavelinAlert.get());
  }
  if (quitOnLock()) leaveFrontApp();
  lockState().cameraCoverShown = false;
  platform::Hook<&lockUI>::original(self, cmd, source, options);
  id unlocker = unlockController(kSharedInstanceIfExists);
  if (core::biometricsInUse() && sendIfResponds<BOOL>(unlocker, kIsMatching) != 0) {
    send<void>(unlocker, kStopMatching);
  }
}

void lockButtonSinglePress(id self, SEL cmd, id event) {
  if (quitOnLock()) sendIfResponds(springBoardApp(), kGotoHomePrivate, id{nullptr});
  platform::Hook<&lockButtonSinglePress>::original(self, cmd, event);
}

void mesaObserveEvent(id self, SEL cmd, id resource, long event) {
  platform::Hook<&mesaObserveEvent>::original(self, cmd, resource, event);
  if (event == kLockScreenMatch) launchState().lockScreenMatch = true;
}

void bioAuthenticated(id self, SEL cmd, id event) {
  if (inCallMatching() && callRinging()) return;
  if (core::promptVisible()) return;  // the prompt uses the match
  platform::Hook<&bioAuthenticated>::original(self, cmd, event);
}

BOOL resourceMatchingEnabled(id self, SEL cmd) {
  BOOL answer = platform::Hook<&resourceMatchingEnabled>::original(self, cmd);
  if (!keepMatchingForProduct()) return answer;
  setPrivateFlag(self, "_isMatchingEnabled");
  return 1;
}

BOOL resourceMatchingAllowed(id self, SEL cmd) {
  BOOL answer = platform::Hook<&resourceMatchingAllowed>::original(self, cmd);
  if (!keepMatchingForProduct()) return answer;
  setPrivateFlag(self, "_isMatchingAllowed");
  return 1;
}

BOOL resourceCapabilityEnabled(id self, SEL cmd) {
  BOOL answer = platform::Hook<&resourceCapabilityEnabled>::original(self, cmd);
  return keepMatchingForProduct() ? 1 : answer;
}

void dashBoardActivateCamera(id self, SEL cmd, BOOL animated) {
  if (cameraProtected() && holdCamera(platform::invocationOf(self, cmd, animated), kCameraTitle))
    return;
  platform::Hook<&dashBoardActivateCamera>::original(self, cmd, animated);
}

void dashBoardActivateCameraPublic(id self, SEL cmd, BOOL animated) {
  if (cameraProtected() && holdCamera(platform::invocationOf(self, cmd, animated), kCameraTitle))
    return;
  platform::Hook<&dashBoardActivateCameraPublic>::original(self, cmd, animated);
}

// The camera's live view stays behind a backdrop until the prompt is passed.
// A cover shown for an activation whose prompt has since gone (cancelled, or
// passed and replayed) belongs to that one: the next activation asks again.
void lockScreenCameraDidActivate(id self, SEL cmd) {
  LockState& ls = lockState();
  bool newActivation = !ls.cameraCoverShown || !lockScreenCameraWaiting();
  if (newActivation && cameraProtected()) {
    id cameraView = sendIfResponds<id>(self, kCameraView);
    Class backdrop = platform::classNamed("_UIBackdropView");
    if (cameraView != nullptr && backdrop != nullptr) {
      CGRect frame = send<CGRect>(cameraView, kFrame);
      id cover =
          send<id>(platform::sendClass<id>(backdrop, kAlloc), kInitWithStyle, kBackdropStyle);
      send<void>(cover, kSetFrame, frame);
      send<void>(cameraView, kAddSubview, cover);
      send<void>(cover, kRelease);
    }
    ls.cameraCoverShown = true;
    if (holdCamera(platform::invocationOf(self, cmd), kCamera)) return;
  }
  platform::Hook<&lockScreenCameraDidActivate>::original(self, cmd);
}

void frontDisplayDidChange(id self, SEL cmd, id display) {
  platform::Hook<&frontDisplayDidChange>::original(self, cmd, display);
  if (!platform::isKindOf(display, "SBApplication")) return;
  auto identifier = platform::stringOf(sendIfResponds<id>(display, kBundleIdentifier));
  if (!identifier) return;
  auto& recent = lockState().recentFront;
  std::erase(recent, *identifier);
  recent.push_back(*identifier);
}

BOOL unlockUI(id self, SEL cmd, int source, id options) {
  if (!unlockMayProceed(source, options)) return 0;
  BOOL unlocked = platform::Hook<&unlockUI>::original(self, cmd, source, options);
  startUnlockMatcherIfDue(self);
  return unlocked;
}

void unlockUIOld(id self, SEL cmd, int source, id options) {
  if (!unlockMayProceed(source, options)) return;
  platform::Hook<&unlockUIOld>::original(self, cmd, source, options);
  startUnlockMatcherIfDue(self);
}

void slideUpFinalizeGesture(id self, SEL cmd) {
  if (!base::flags().isIOS8OrLater) {
    platform::Hook<&slideUpFinalizeGesture>::original(self, cmd);
    return;
  }
  id target = platform::valueForKeyIfPresent(self, "targetApp");
  id identifier = sendIfResponds<id>(target, kBundleIdentifier);
  const bool isProtected = isProtectedApp(identifier);
  if (isProtected && gatePasses()) {
    Retained call = platform::invocationOf(self, cmd);
    if (call) {
      // The gesture's controller may go once the gesture ends; the held call
      // keeps it until the replay.
      platform::retainArguments(call.get());
      core::setInvocation(call.get());
      core::setRestrictedTitle(platform::toString(identifier) + kLockScreenFormat);
      id lockScreen = sendIfResponds<id>(core::sharedInstanceOf("SBLockScreenManager"),
                                         kLockScreenViewController);
      sendIfResponds(sendIfResponds<id>(lockScreen, kHintManager), kEndHintPresentation,
                     platform::Integer{0});
      core::showAlert();
      return;
    }
  }
  // Without the prompt (trusted Wi-Fi, a kept session) the device passcode
  // still stands between the lock screen and a protected app.
  id manager = core::sharedInstanceOf("SBLockScreenManager");
  if (isProtected && core::devicePasscodeSet() && sendIfResponds<BOOL>(manager, kIsUILocked) != 0) {
    id lock =
        platform::sendClass<id>(platform::classNamed("SBDeviceLockController"), kSharedController);
    sendIfResponds(lock, kEnablePasscodeLock);
    if (platform::respondsTo(lock, kUpdateDeviceLockedState)) {
      send<void>(lock, kUpdateDeviceLockedState);
    } else {
      sendIfResponds(lock, kLockStateChanged, 2, 0);
    }
  }
  platform::Hook<&slideUpFinalizeGesture>::original(self, cmd);
}

const std::vector<std::string>& recentFrontApps() {
  return lockState().recentFront;
}

}  // namespace kv::springboard
