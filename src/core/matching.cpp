// The biometric matching session of a prompt.
#include "core/matching.h"

#include "base/flags.h"
#include "core/biometric_events.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "core/state.h"
#include "core/texts.h"
#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "settings/feedback.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kManager("manager");
const platform::Sel kDictionary("dictionary");
const platform::Sel kEnableBackgroundFdet("enableBackgroundFdet:");
const platform::Sel kEnableBackgroundFingerDetectionError("enableBackgroundFingerDetection:error:");
const platform::Sel kSharedConnection("sharedConnection");
const platform::Sel kIsFingerprintUnlockAllowed("isFingerprintUnlockAllowed");
const platform::Sel kCopy("copy");
const platform::Sel kRemoveObserver("removeObserver:");
const platform::Sel kAddObserver("addObserver:");
const platform::Sel kSetMatchingEnabled("_setMatchingEnabled:");
const platform::Sel kStopMatching("_stopMatching");
const platform::Sel kStartMatching("_startMatching");
const platform::Sel kBiometricKit("biometricKit");
const platform::Sel kMatchWithOptions("match:withOptions:");
const platform::Sel kIsAnimating("isAnimating");
const platform::Sel kViewAppeared("viewAppeared");
const platform::Sel kPasscodeField("passcodeField");
const platform::Sel kAlpha("alpha");
const platform::Sel kShowScanner("showScanner");
const platform::Sel kKillAnimations("killAnimations");
const platform::Sel kResetAnimations("resetAnimations");
const platform::Sel kGlyphStyle("glyphStyle");
const platform::Sel kGlyphMode("glyphMode");
const platform::Sel kPrimaryColorForStyleMode("_primaryColorForStyle:mode:");
const platform::Sel kSecondaryColorForStyleMode("_secondaryColorForStyle:mode:");
const platform::Sel kSetPrimaryColorAnimated("_setPrimaryColor:animated:");
const platform::Sel kSetSecondaryColorAnimated("_setSecondaryColor:animated:");
const platform::Sel kSetPrimaryColor("setPrimaryColor:");
const platform::Sel kSetSecondaryColor("setSecondaryColor:");
const platform::Sel kGlyphView("glyphView");
const platform::Sel kSetStateAnimatedCompletionHandler("setState:animated:completionHandler:");
const platform::Sel kShowPasscodeError("showPasscodeError");
const platform::Sel kShowError("showError");
const platform::Sel kSetMessage("setMessage:");
const platform::Sel kSharedInstanceIfExists("sharedInstanceIfExists");
const platform::Sel kIsMatching("isMatching");
const platform::Sel kIsMatchingEnabled("isMatchingEnabled");
const platform::Sel kIsPasscodeSet("isPasscodeSet");
const platform::Sel kInvalidate("invalidate");
const platform::Sel kAcquireMatchingAssertionWithModeReason(
    "acquireMatchingAssertionWithMode:reason:");
const platform::Sel kSetDelegate("setDelegate:");
const platform::Sel kMatchWithModeAndCredentialSet("matchWithMode:andCredentialSet:");
const platform::Sel kCancel("cancel");
const platform::Sel kDetectFingerWithOptions("detectFingerWithOptions:");
const platform::Sel kSharedController("sharedController");
const platform::Sel kDeviceHasPasscodeSet("deviceHasPasscodeSet");

using platform::Integer;
using platform::Retained;
using platform::send;
using platform::sendIfResponds;

constexpr int kFailureCap = 10;
constexpr double kCheckMatchingDelay = 2.0;
constexpr double kGiveBackDelay = 1.0;
constexpr double kFaceRestartWithPasscode = 0.2;
constexpr double kFaceRestartWithoutPasscode = 1.2;
constexpr double kFaceRetryStop = 1.5;
constexpr double kFaceRetryStart = 1.6;
constexpr unsigned long kPromptMatchMode = 0;
constexpr unsigned long kLockScreenMatchMode = 3;
constexpr unsigned long kAssertionModeUnlockAllowed = 3;
constexpr unsigned long kAssertionModeOwn = 5;
constexpr Integer kGlyphFaceSuccess = 12;
constexpr Integer kGlyphTouchSuccessIOS11 = 11;
constexpr Integer kGlyphSuccessIOS10 = 6;
constexpr Integer kGlyphAlternativeSuccessIOS10 = 7;

// A success that waits for the glyph's animation to finish.
bool gSuccessUnderway = false;

id kit() {
  return platform::sendClass<id>(platform::classNamed("BiometricKit"), kManager);
}
id resource() {
  return sharedInstanceOf("SBUIBiometricResource");
}
id eventSource() {
  return state().biometricDelegate.get();
}
id prompt() {
  return state().kavelinAlert.get();
}
bool touchID() {
  return biometricsInUse() && !faceID();
}
bool ios11() {
  return base::flags().isIOS11;
}
bool ios10OrLater() {
  return base::flags().isIOS10OrLater;
}
id emptyDictionary() {
  return platform::sendClass<id>(platform::classNamed("NSDictionary"), kDictionary);
}

void setBackgroundDetection(bool on) {
  id k = kit();
  BOOL value = on ? 1 : 0;
  if (platform::respondsTo(k, kEnableBackgroundFdet)) {
    send<int>(k, kEnableBackgroundFdet, value);
  } else {
    sendIfResponds<BOOL>(k, kEnableBackgroundFingerDetectionError, value,
                         static_cast<id*>(nullptr));
  }
}

bool fingerprintUnlockAllowed() {
  id connection =
      platform::sendClass<id>(platform::classNamed("MCProfileConnection"), kSharedConnection);
  return sendIfResponds<BOOL>(connection, kIsFingerprintUnlockAllowed) != 0;
}

// Before iOS 11 the prompt borrows the event source: its observers are put
// aside and the controller becomes the only one. A prompt that follows a
// success before the observers went back keeps the borrowed source, so
// that the observers put aside are never overwritten by the controller.
void takeOverEventSource() {
  CoordinatorState& s = state();
  id source = eventSource();
  if (source == nullptr) return;
  if (s.tookOverEventSource) {
    cancelPerform("cleanupObservers");
  } else {
    s.eventSourceMatchingWasEnabled =
        platform::ivar<BOOL>(source, "_matchingEnabled").value_or(0) != 0;
    id observers = platform::ivar<id>(source, "_observers").value_or(nullptr);
    s.removedObservers = Retained::adopt(send<id>(observers, kCopy));
    for (platform::UInteger i = 0; i < platform::arrayCount(s.removedObservers.get()); ++i) {
      sendIfResponds(source, kRemoveObserver, platform::arrayObjectAt(s.removedObservers.get(), i));
    }
    sendIfResponds(source, kAddObserver, controller());
    s.tookOverEventSource = true;
  }
  sendIfResponds(source, kSetMatchingEnabled, BOOL{0});
  sendIfResponds(source, kStopMatching);
  sendIfResponds(source, kSetMatchingEnabled, BOOL{1});
  sendIfResponds(source, kStartMatching);
  performLater("checkMatchingIsReallyEnabled", kCheckMatchingDelay);
  if (ios10OrLater() && !devicePasscodeSet()) {
    sendIfResponds<int>(sendIfResponds<id>(source, kBiometricKit), kMatchWithOptions, id{nullptr},
                        emptyDictionary());
  }
}

// Puts the event source's observers back in their old order.
void giveBackEventSource() {
  CoordinatorState& s = state();
  if (!s.tookOverEventSource) return;
  id source = eventSource();
  sendIfResponds(source, kSetMatchingEnabled,
                 static_cast<BOOL>(s.eventSourceMatchingWasEnabled ? 1 : 0));
  sendIfResponds(source, kRemoveObserver, controller());
  for (platform::UInteger i = 0; i < platform::arrayCount(s.removedObservers.get()); ++i) {
    sendIfResponds(source, kAddObserver, platform::arrayObjectAt(s.removedObservers.get(), i));
  }
  s.removedObservers.reset();
  s.tookOverEventSource = false;
}

// ---- Feedback on the prompt ----

// The scanner shows for a finger or face once the prompt is on screen and still.
void showScanner() {
  id alert = prompt();
  if (alert == nullptr || send<BOOL>(alert, kIsAnimating) || !send<BOOL>(alert, kViewAppeared))
    return;
  id field = send<id>(alert, kPasscodeField);
  state().passcodeWasVisible = send<double>(field, kAlpha) > 0;
  send<void>(alert, kShowScanner);
}

// A moving prompt is stopped and set back to its idle face.
void resetPromptAnimations() {
  id alert = prompt();
  if (alert == nullptr || !send<BOOL>(alert, kIsAnimating) || !send<BOOL>(alert, kViewAppeared))
    return;
  send<void>(alert, kKillAnimations);
  send<void>(alert, kResetAnimations);
}

void setGlyphColorsForSuccess(id glyph) {
  id c = controller();
  Integer style = send<Integer>(c, kGlyphStyle);
  Integer mode = send<Integer>(c, kGlyphMode);
  // Instance methods from iOS 11; a glyph without them keeps its colours.
  id primary = sendIfResponds<id>(glyph, kPrimaryColorForStyleMode, style, mode);
  id secondary = sendIfResponds<id>(glyph, kSecondaryColorForStyleMode, style, mode);
  if (primary == nullptr || secondary == nullptr) return;
  if (platform::respondsTo(glyph, kSetPrimaryColorAnimated)) {
    send<void>(glyph, kSetPrimaryColorAnimated, primary, BOOL{1});
    send<void>(glyph, kSetSecondaryColorAnimated, secondary, BOOL{1});
  } else {
    sendIfResponds(glyph, kSetPrimaryColor, primary);
    sendIfResponds(glyph, kSetSecondaryColor, secondary);
  }
}

// A match: the success feedback, then the coordinator's success steps. The
// glyph's success animation of iOS 10 runs first and the steps follow in its
// completion; elsewhere they run at once (iOS 11's glyph changes show while
// the prompt goes).
void matched() {
  CoordinatorState& s = state();
  s.matchSucceeded = true;
  settings::playHaptic(settings::current().effectiveHaptic());
  id glyph = sendIfResponds<id>(prompt(), kGlyphView);
  if (!ios10OrLater() || glyph == nullptr) {
    succeed();
  } else if (faceID()) {
    send<void>(glyph, kSetStateAnimatedCompletionHandler, kGlyphFaceSuccess, BOOL{0}, id{nullptr});
    succeed();
  } else if (ios11()) {
    setGlyphColorsForSuccess(glyph);
    send<void>(glyph, kSetStateAnimatedCompletionHandler, kGlyphTouchSuccessIOS11, BOOL{1},
               id{nullptr});
    succeed();
  } else {
    // A cancel while the glyph animates forgets the success: the completion
    // then finds nothing to do.
    gSuccessUnderway = true;
    Integer glyphState = s.alternativeGlyph ? kGlyphAlternativeSuccessIOS10 : kGlyphSuccessIOS10;
    send<void>(glyph, kSetStateAnimatedCompletionHandler, glyphState, BOOL{1}, platform::asObject(^{
                 if (gSuccessUnderway) succeed();
               }));
  }
}

// A failed attempt: counted, shown on the prompt, and at the cap the end.
void failed() {
  CoordinatorState& s = state();
  // Ten failures were shown; the eleventh ends the prompt.
  if (s.failedAttempts >= kFailureCap) {
    giveUp();
    return;
  }
  // Stop the prompt's motion; vibrate when asked to.
  id alert = prompt();
  sendIfResponds(alert, kKillAnimations);
  if (settings::current().vibrateOnError) settings::playVibration();
  // The message for this attempt, then count it.
  std::string text = failureText(s.failedAttempts);
  ++s.failedAttempts;
  // The passcode's error face when the field shows or showed.
  id field = sendIfResponds<id>(alert, kPasscodeField);
  if (send<double>(field, kAlpha) > 0 || s.passcodeWasVisible) {
    sendIfResponds(alert, kShowPasscodeError);
    s.passcodeWasVisible = false;
  } else {
    sendIfResponds(alert, kShowError);
  }
  // The message under the glyph.
  if (biometricsInUse()) {
    platform::AutoreleasePool pool;
    sendIfResponds(alert, kSetMessage, platform::makeString(blankLines() + text));
  }
  // A face gets a fresh attempt: stop, then start, once however many failures.
  if (faceID()) {
    cancelScheduledRestarts();
    performLater("stopMatchingForTen", kFaceRetryStop);
    performLater("startMatchingForTen", kFaceRetryStart);
  }
}

bool isFailingCode(long code) {
  if (!ios11()) return code == kEventNoMatch || code == kEventNoMatchOther;
  if (state().matchSucceeded) return false;
  return code == kEventPresenceEnded || code == kEventFaceRetry ||
         (code == kEventNoMatchOther && touchID());
}

// Matching again after a detected finger (a face's retry) from iOS 10 on.
void restartMatching() {
  if (ios11()) {
    stopMatchingForTen();
    if (!faceID()) {
      startMatchingForTen();
      return;
    }
    double delay = devicePasscodeSet() ? kFaceRestartWithPasscode : kFaceRestartWithoutPasscode;
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(delay * NSEC_PER_SEC)),
                   dispatch_get_main_queue(), ^{
                     if (state().hasVisibleAlert) startMatchingForTen();
                   });
    return;
  }
  sendIfResponds(eventSource(), kSetMatchingEnabled, BOOL{1});
  sendIfResponds(eventSource(), kStartMatching);
}

bool inCallMatching() {
  id inCall = sendIfResponds<id>(platform::asId(platform::classNamed("KavelinInCallController")),
                                 kSharedInstanceIfExists);
  return sendIfResponds<BOOL>(inCall, kIsMatching) != 0;
}

}  // namespace

void beginMatchingForPrompt() {
  if (ios11()) {
    state().resourceMatchingWasEnabled = sendIfResponds<BOOL>(resource(), kIsMatchingEnabled) != 0;
    startMatchingForTen();
  } else {
    takeOverEventSource();
  }
}

void endMatchingAfterSuccess() {
  if (ios11()) {
    stopMatchingForTen();
  } else {
    performLater("cleanupObservers", kGiveBackDelay);
  }
}

void endMatchingAfterCancel() {
  cancelPerform("checkMatchingIsReallyEnabled");
  if (ios11()) {
    stopMatchingForTen();
  } else {
    giveBackEventSource();
  }
}

void startMatchingForTen() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  // The assertion's mode: the lock screen's own when the system unlocks by finger.
  id connection =
      platform::sendClass<id>(platform::classNamed("MCProfileConnection"), kSharedConnection);
  bool systemMatches =
      sendIfResponds<BOOL>(connection, kIsPasscodeSet) != 0 && fingerprintUnlockAllowed();
  unsigned long mode = systemMatches ? kAssertionModeUnlockAllowed : kAssertionModeOwn;
  // The resource's events come to the controller while the assertion lasts.
  id r = resource();
  sendIfResponds(r, kAddObserver, controller());
  if (s.matchingAssertion) sendIfResponds(s.matchingAssertion.get(), kInvalidate);
  s.matchingAssertion.reset(sendIfResponds<id>(r, kAcquireMatchingAssertionWithModeReason, mode,
                                               platform::makeString("Kavelin Authentication")));
  // The kit reports to the controller and matches.
  id k = kit();
  sendIfResponds(k, kSetDelegate, controller());
  setBackgroundDetection(true);
  s.matchOperation.reset(
      sendIfResponds<id>(k, kMatchWithModeAndCredentialSet, kPromptMatchMode, id{nullptr}));
}

void stopMatchingForTen() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  if (ios11()) {
    sendIfResponds(resource(), kRemoveObserver, controller());
    sendIfResponds(s.matchingAssertion.get(), kInvalidate);
    s.matchingAssertion.reset();
  }
  id k = kit();
  setBackgroundDetection(false);
  sendIfResponds(s.matchOperation.get(), kCancel);
  s.matchOperation.reset();
  sendIfResponds(k, kSetDelegate, resource());
  setBackgroundDetection(true);
  // The locked lock screen matches on its own again.
  if (uiLocked() && devicePasscodeSet()) {
    sendIfResponds<id>(k, kMatchWithModeAndCredentialSet, kLockScreenMatchMode, id{nullptr});
    sendIfResponds<int>(k, kDetectFingerWithOptions, id{nullptr});
  }
}

void checkMatchingIsReallyEnabled() {
  if (!state().hasVisibleAlert) return;  // the prompt went in the meantime
  if (ios11()) {
    startMatchingForTen();
    return;
  }
  id source = eventSource();
  sendIfResponds(source, kSetMatchingEnabled, BOOL{1});
  if (ios10OrLater()) sendIfResponds(source, kStartMatching);
  id lock =
      platform::sendClass<id>(platform::classNamed("SBDeviceLockController"), kSharedController);
  if (sendIfResponds<BOOL>(lock, kDeviceHasPasscodeSet) == 0) {
    platform::AutoreleasePool pool;
    sendIfResponds<int>(sendIfResponds<id>(source, kBiometricKit), kMatchWithOptions, id{nullptr},
                        emptyDictionary());
  }
}

void cleanupObservers() {
  giveBackEventSource();
}

void cancelScheduledRestarts() {
  cancelPerform("stopMatchingForTen");
  cancelPerform("startMatchingForTen");
}

void forgetSuccessUnderway() {
  gSuccessUnderway = false;
}

void handleBiometricEvent(long code, bool fromPasscode) {
  CoordinatorState& s = state();
  const bool face = faceID();
  const bool hardware = biometricsInUse();
  // Caller-name matching owns the sensor.
  if (inCallMatching()) return;
  // A new attempt forgets an earlier match.
  if (code == kEventReset || code == kEventFingerOn ||
      (face && (code == kEventNoMatchOther || code == kEventFaceDetected))) {
    s.matchSucceeded = false;
  }
  // Presence, and the scanner for a finger or face. The passcode is no
  // presence: its events go straight to success or failure.
  if (!fromPasscode) {
    bool presence = code == kEventFingerOn || code == kEventFingerDetected ||
                    code == kEventPresenceEnded || (face && code == kEventFaceDetected);
    if (presence) {
      s.presenceSeen = true;
    } else if (!ios11() && !(code == kEventNoMatchOther && fingerprintUnlockAllowed())) {
      s.presenceSeen = false;
    }
    bool scanner = code == kEventFingerOn || (code == kEventFingerDetected && !face) ||
                   (code == kEventFaceDetected && face);
    if (hardware && scanner) showScanner();
  }
  // The prompt's animations start over on a reset, and for a face also when
  // its attempt starts over or fails.
  if (hardware &&
      (code == kEventReset || (face && (code == kEventFingerDetected ||
                                        code == kEventNoMatchOther || code == kEventFaceRetry)))) {
    resetPromptAnimations();
  }
  // A match while the prompt is up always succeeds, whatever is held back;
  // without a prompt only a held-back action makes it one.
  if (code == kEventMatch && !gSuccessUnderway && (somethingPending() || promptVisible())) {
    matched();
    return;
  }
  // A hard stop from iOS 10 on ends the prompt; with none up and nothing
  // held back there is nothing to end.
  if (code >= kEventHardStopFirst && code <= kEventHardStopLast && code != kEventFingerDetected &&
      ios10OrLater() && !fromPasscode && (s.hasVisibleAlert || somethingPending())) {
    giveUp();
    return;
  }
  // Matching again after a detection, while a prompt wants it.
  if (!fromPasscode && ios10OrLater() && s.hasVisibleAlert &&
      (code == kEventFingerDetected || (face && code == kEventFaceRetry))) {
    restartMatching();
  }
  // A failure. A wrong passcode always fails; a sensor's failure only
  // after a presence and with something held back.
  if (fromPasscode ? code == kEventNoMatch
                   : (isFailingCode(code) && s.presenceSeen && somethingPending())) {
    failed();
  }
  // The attempt is over.
  if (code == kEventPresenceEnded || (face && code == kEventFaceRetry)) s.matchSucceeded = false;
}

}  // namespace kv::core
