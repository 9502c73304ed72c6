// Caller-name protection, SpringBoard's side.
#include "core/calls.h"

#include "core/device.h"
#include "core/policy.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kPerformSelectorWithObjectAfterDelay("performSelector:withObject:afterDelay:");
const platform::Sel kIncomingCall("incomingCall");
const platform::Sel kStopMatching("stopMatching");
const platform::Sel kSharedController("sharedController");
const platform::Sel kEnablePasscodeLockImmediately("enablePasscodeLockImmediately");
const platform::Sel kUpdateDeviceLockedState("_updateDeviceLockedState");
const platform::Sel kLockStateChangedFromTo("_lockStateChangedFrom:to:");
const platform::Sel kCurrentCalls("currentCalls");

using platform::sendIfResponds;
using settings::Note;

// States of "net.quorvan.kavelin.allowInCallNames".
constexpr uint64_t kNamesHidden = 0;
constexpr uint64_t kNamesAllowed = 4;

constexpr double kMonitorStart = 1.5;
constexpr double kInCallStartFirst = 0.5;
constexpr double kInCallStartAgain = 2.0;

id inCallController() {
  return sharedInstanceOf("KavelinInCallController");
}

void performOn(id target, const char* selector, double delay) {
  sendIfResponds(target, kPerformSelectorWithObjectAfterDelay, platform::selector(selector),
                 id{nullptr}, delay);
}

}  // namespace

void callStatusChanged() {
  const settings::Settings& s = settings::current();
  platform::AutoreleasePool pool;
  // Only while caller names are protected.
  if (!s.enabled || !s.callerNameProtected) return;
  // Nothing to authenticate with, a trusted network or a kept session: names show.
  if (!wayToAuthenticate() || isOnTrustedWiFi() || sessionExists()) {
    settings::publish(Note::kAllowInCallNames, kNamesAllowed);
    return;
  }
  id callCenter = sharedInstanceOf("TUCallCenter");
  if (sendIfResponds<id>(callCenter, kIncomingCall) != nullptr) {
    // A ringing call: names hidden until a finger or face is matched.
    settings::setState(Note::kAllowInCallNames, kNamesHidden);
    performOn(state().biometricDelegate.get(), "_startMatching", kMonitorStart);
    performOn(inCallController(), "startMatching", kInCallStartFirst);
    performOn(inCallController(), "startMatching", kInCallStartAgain);
  } else {
    // No ringing call: the in-call matching stops, and a locked device's
    // passcode lock takes effect at once.
    sendIfResponds(inCallController(), kStopMatching);
    if (devicePasscodeSet() && uiLocked()) {
      id lock = platform::sendClass<id>(platform::classNamed("SBDeviceLockController"),
                                        kSharedController);
      sendIfResponds(lock, kEnablePasscodeLockImmediately);
      if (platform::respondsTo(lock, kUpdateDeviceLockedState)) {
        platform::send<void>(lock, kUpdateDeviceLockedState);
      } else {
        sendIfResponds(lock, kLockStateChangedFromTo, 2, 0);
      }
    }
  }
  // During a call the state stands; after the last one the names stay
  // shown only when a match showed them and lifting should not hide them.
  if (platform::arrayCount(sendIfResponds<id>(callCenter, kCurrentCalls)) > 0) {
    settings::post(Note::kAllowInCallNames);
    return;
  }
  bool keepShown = state().namesShownDuringCall && !s.hideCallerAfterLifting;
  state().namesShownDuringCall = false;
  settings::publish(Note::kAllowInCallNames, keepShown ? kNamesAllowed : kNamesHidden);
}

}  // namespace kv::core
