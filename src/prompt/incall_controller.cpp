// KavelinInCallController: matching during a ringing call, its events turned
// into the states the in-call screen shows.
#include "prompt/incall_controller.h"

#include <cstdint>
#include <optional>

#include "base/flags.h"
#include "core/biometric_events.h"
#include "core/device.h"
#include "core/state.h"
#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::prompt {

namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;
using settings::Note;

const Sel kAlloc("alloc");
const Sel kInit("init");
const Sel kAddObserver("addObserver:");
const Sel kRemoveObserver("removeObserver:");
const Sel kAcquireAssertion("acquireMatchingAssertionWithMode:reason:");
const Sel kInvalidate("invalidate");
const Sel kIsMatchingEnabled("isMatchingEnabled");
const Sel kSetMatchingEnabled("_setMatchingEnabled:");
const Sel kStartMonitorMatching("_startMatching");
const Sel kRelock("_relockUIForButtonlikeSource:afterCall:");
const Sel kIncomingCall("incomingCall");

// States of "net.quorvan.kavelin.allowInCallNames".
constexpr uint64_t kMatchingUnderway = 1;
constexpr uint64_t kMatchFailed = 2;
constexpr uint64_t kMatchingIdle = 3;
constexpr uint64_t kNamesAllowed = 4;

constexpr int kRelockSource = 5;
constexpr double kFailureGrace = 1.0;  // a failure this soon after a success is the same touch
constexpr double kFaceRestartDelay = 1.7;
constexpr unsigned long kAssertionMode = 5;
constexpr const char* kAssertionReason = "Kavelin In-Call Authentication";

struct InCallMatching {
  id shared = nullptr;  // the one instance, kept for the life of SpringBoard
  bool isMatching = false;
  bool monitorWasEnabled = false;  // before iOS 11: the monitor's matching when we took it
  Retained assertion;              // iOS 11
  double lastSuccess = 0;          // absolute time of the last match, 0 when none
  std::optional<uint64_t> lastPublished;
};

InCallMatching& matching() {
  static InCallMatching m;
  return m;
}

bool ios11() {
  return base::flags().isIOS11;
}

id monitor() {
  return core::sharedInstanceOf("SBUIBiometricEventMonitor");
}
id resource() {
  return core::sharedInstanceOf("SBUIBiometricResource");
}

bool callRinging() {
  return sendIfResponds<id>(core::sharedInstanceOf("TUCallCenter"), kIncomingCall) != nullptr;
}

// Takes the sensor's events: the biometric resource with an assertion on
// iOS 11, the event monitor (matching switched on) before it. Only while a
// call rings: a start scheduled for a call that has ended since would keep
// the sensor from the prompt.
void startMatching(id self, SEL) {
  InCallMatching& m = matching();
  if (m.isMatching || !core::biometricsInUse() || !callRinging()) return;
  m.isMatching = true;
  platform::AutoreleasePool pool;
  if (ios11()) {
    id r = resource();
    sendIfResponds(r, kAddObserver, self);
    m.assertion.reset(sendIfResponds<id>(r, kAcquireAssertion, kAssertionMode,
                                         platform::makeString(kAssertionReason)));
    return;
  }
  id source = monitor();
  m.monitorWasEnabled = sendIfResponds<BOOL>(source, kIsMatchingEnabled) != 0;
  sendIfResponds(source, kAddObserver, self);
  sendIfResponds(source, kSetMatchingEnabled, BOOL{1});
  sendIfResponds(source, kStartMonitorMatching);
}

// Gives the sensor back as it was found.
void stopMatching(id self, SEL) {
  InCallMatching& m = matching();
  if (!m.isMatching) return;
  m.isMatching = false;
  if (ios11()) {
    sendIfResponds(resource(), kRemoveObserver, self);
    sendIfResponds(m.assertion.get(), kInvalidate);
    m.assertion.reset();
    return;
  }
  id source = monitor();
  sendIfResponds(source, kRemoveObserver, self);
  sendIfResponds(source, kSetMatchingEnabled, static_cast<BOOL>(m.monitorWasEnabled ? 1 : 0));
}

// The state an event stands for, or nothing for an event that says nothing
// about the caller's name.
std::optional<uint64_t> stateForEvent(long code, bool face) {
  InCallMatching& m = matching();
  if (code == core::kEventFingerOn || (face && code == core::kEventFaceDetected))
    return kMatchingUnderway;
  if (code == core::kEventMatch) {
    m.lastSuccess = core::now();
    core::state().namesShownDuringCall = true;
    return kNamesAllowed;
  }
  if (code == core::kEventReset) {
    // Before iOS 10 the platform switches its matching off after an attempt.
    if (!base::flags().isIOS10OrLater) sendIfResponds(monitor(), kSetMatchingEnabled, BOOL{1});
    return kMatchingIdle;
  }
  if ((code >= core::kEventHardStopFirst && code <= core::kEventHardStopLast) ||
      code == core::kEventNoMatch || code == core::kEventNoMatchOther ||
      (face && code == core::kEventFaceRetry)) {
    return kMatchFailed;
  }
  // From iOS 10 a lifted finger also ends an attempt; right after a success
  // it is the same touch going away, not a failure.
  if (code == core::kEventPresenceEnded && base::flags().isIOS10OrLater && m.lastSuccess != 0 &&
      core::now() - m.lastSuccess > kFailureGrace) {
    return kMatchFailed;
  }
  return std::nullopt;
}

void handleEvent(id self, long code) {
  InCallMatching& m = matching();
  if (!m.isMatching) return;
  const bool face = core::faceID();
  // A face that locked the sensor out relocks the lock screen for after the call.
  if (code == core::kEventLockout && face) {
    sendIfResponds(core::sharedInstanceOf("SBLockScreenManager"), kRelock, kRelockSource, BOOL{1});
  }
  std::optional<uint64_t> published = stateForEvent(code, face);
  if (!published) return;
  // Once matched, names stay shown unless lifting the phone should hide them again.
  if (core::state().namesShownDuringCall && !settings::current().hideCallerAfterLifting) {
    published = kNamesAllowed;
    stopMatching(self, nullptr);
  }
  // A face gets a fresh attempt while the call still rings.
  if (face && *published == kMatchFailed) {
    stopMatching(self, nullptr);
    Retained keep(self);
    dispatch_after(
        dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(kFaceRestartDelay * NSEC_PER_SEC)),
        dispatch_get_main_queue(), ^{
          if (callRinging()) startMatching(keep.get(), nullptr);
        });
  }
  m.lastPublished = *published;
  settings::publish(Note::kAllowInCallNames, *published);
}

// ---- The runtime's view ----

id sharedInstance(id cls, SEL) {
  InCallMatching& m = matching();
  if (m.shared == nullptr) m.shared = send<id>(send<id>(cls, kAlloc), kInit);
  return m.shared;
}
id sharedInstanceIfExists(id, SEL) {
  return matching().shared;
}
BOOL isMatching(id, SEL) {
  return matching().isMatching ? 1 : 0;
}
void monitorEvent(id self, SEL, id, long code) {
  handleEvent(self, code);
}

}  // namespace

void defineInCallController() {
  if (platform::classNamed("KavelinInCallController") != nullptr) return;
  using platform::method;
  platform::defineClass("KavelinInCallController", "NSObject",
                        {
                            platform::classMethod("sharedInstance", sharedInstance),
                            platform::classMethod("sharedInstanceIfExists", sharedInstanceIfExists),
                            method("isMatching", isMatching),
                            method("startMatching", startMatching),
                            method("stopMatching", stopMatching),
                            method("biometricEventMonitor:handleBiometricEvent:", monitorEvent),
                            method("biometricKitInterface:handleEvent:", monitorEvent),
                            method("biometricResource:observeEvent:", monitorEvent),
                        });
}

}  // namespace kv::prompt
