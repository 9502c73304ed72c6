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

using platform::Integer;
using platform::Retained;
using platform::Sel;
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
  return platform::sendClass<id>(platform::classNamed("BiometricKit"), Sel("manager"));
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
  return platform::sendClass<id>(platform::classNamed("NSDictionary"), Sel("dictionary"));
}

void setBackgroundDetection(bool on) {
  id k = kit();
  BOOL value = on ? 1 : 0;
  if (platform::respondsTo(k, Sel("enableBackgroundFdet:"))) {
    send<int>(k, Sel("enableBackgroundFdet:"), value);
  } else {
    sendIfResponds<BOOL>(k, Sel("enableBackgroundFingerDetection:error:"), value,
                         static_cast<id*>(nullptr));
  }
}

bool fingerprintUnlockAllowed() {
  id connection =
      platform::sendClass<id>(platform::classNamed("MCProfileConnection"), Sel("sharedConnection"));
  return sendIfResponds<BOOL>(connection, Sel("isFingerprintUnlockAllowed")) != 0;
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
    s.removedObservers = Retained::adopt(send<id>(observers, Sel("copy")));
    for (platform::UInteger i = 0; i < platform::arrayCount(s.removedObservers.get()); ++i) {
      sendIfResponds(source, Sel("removeObserver:"),
                     platform::arrayObjectAt(s.removedObservers.get(), i));
    }
    sendIfResponds(source, Sel("addObserver:"), controller());
    s.tookOverEventSource = true;
  }
  sendIfResponds(source, Sel("_setMatchingEnabled:"), BOOL{0});
  sendIfResponds(source, Sel("_stopMatching"));
  sendIfResponds(source, Sel("_setMatchingEnabled:"), BOOL{1});
  sendIfResponds(source, Sel("_startMatching"));
  performLater("checkMatchingIsReallyEnabled", kCheckMatchingDelay);
  if (ios10OrLater() && !devicePasscodeSet()) {
    sendIfResponds<int>(sendIfResponds<id>(source, Sel("biometricKit")), Sel("match:withOptions:"),
                         id{nullptr}, emptyDictionary());
  }
}

// Puts the event source's observers back in their old order.
void giveBackEventSource() {
  CoordinatorState& s = state();
  if (!s.tookOverEventSource) return;
  id source = eventSource();
  sendIfResponds(source, Sel("_setMatchingEnabled:"),
                 static_cast<BOOL>(s.eventSourceMatchingWasEnabled ? 1 : 0));
  sendIfResponds(source, Sel("removeObserver:"), controller());
  for (platform::UInteger i = 0; i < platform::arrayCount(s.removedObservers.get()); ++i) {
    sendIfResponds(source, Sel("addObserver:"),
                   platform::arrayObjectAt(s.removedObservers.get(), i));
  }
  s.removedObservers.reset();
  s.tookOverEventSource = false;
}

// ---- Feedback on the prompt ----

// The scanner shows for a finger or face once the prompt is on screen and still.
void showScanner() {
  id alert = prompt();
  if (alert == nullptr || send<BOOL>(alert, Sel("isAnimating")) ||
      !send<BOOL>(alert, Sel("viewAppeared")))
    return;
  id field = send<id>(alert, Sel("passcodeField"));
  state().passcodeWasVisible = send<double>(field, Sel("alpha")) > 0;
  send<void>(alert, Sel("showScanner"));
}

// A moving prompt is stopped and set back to its idle face.
void resetPromptAnimations() {
  id alert = prompt();
  if (alert == nullptr || !send<BOOL>(alert, Sel("isAnimating")) ||
      !send<BOOL>(alert, Sel("viewAppeared")))
    return;
  send<void>(alert, Sel("killAnimations"));
  send<void>(alert, Sel("resetAnimations"));
}

void setGlyphColorsForSuccess(id glyph) {
  id c = controller();
  Integer style = send<Integer>(c, Sel("glyphStyle"));
  Integer mode = send<Integer>(c, Sel("glyphMode"));
  // Instance methods from iOS 11; a glyph without them keeps its colours.
  id primary = sendIfResponds<id>(glyph, Sel("_primaryColorForStyle:mode:"), style, mode);
  id secondary = sendIfResponds<id>(glyph, Sel("_secondaryColorForStyle:mode:"), style, mode);
  if (primary == nullptr || secondary == nullptr) return;
  if (platform::respondsTo(glyph, Sel("_setPrimaryColor:animated:"))) {
    send<void>(glyph, Sel("_setPrimaryColor:animated:"), primary, BOOL{1});
    send<void>(glyph, Sel("_setSecondaryColor:animated:"), secondary, BOOL{1});
  } else {
    sendIfResponds(glyph, Sel("setPrimaryColor:"), primary);
    sendIfResponds(glyph, Sel("setSecondaryColor:"), secondary);
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
  id glyph = sendIfResponds<id>(prompt(), Sel("glyphView"));
  if (!ios10OrLater() || glyph == nullptr) {
    succeed();
  } else if (faceID()) {
    send<void>(glyph, Sel("setState:animated:completionHandler:"), kGlyphFaceSuccess, BOOL{0},
               id{nullptr});
    succeed();
  } else if (ios11()) {
    setGlyphColorsForSuccess(glyph);
    send<void>(glyph, Sel("setState:animated:completionHandler:"), kGlyphTouchSuccessIOS11, BOOL{1},
               id{nullptr});
    succeed();
  } else {
    // A cancel while the glyph animates forgets the success: the completion
    // then finds nothing to do.
    gSuccessUnderway = true;
    Integer glyphState = s.alternativeGlyph ? kGlyphAlternativeSuccessIOS10 : kGlyphSuccessIOS10;
    send<void>(glyph, Sel("setState:animated:completionHandler:"), glyphState, BOOL{1},
               platform::asObject(^{
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
  sendIfResponds(alert, Sel("killAnimations"));
  if (settings::current().vibrateOnError) settings::playVibration();
  // The message for this attempt, then count it.
  std::string text = failureText(s.failedAttempts);
  ++s.failedAttempts;
  // The passcode's error face when the field shows or showed.
  id field = sendIfResponds<id>(alert, Sel("passcodeField"));
  if (send<double>(field, Sel("alpha")) > 0 || s.passcodeWasVisible) {
    sendIfResponds(alert, Sel("showPasscodeError"));
    s.passcodeWasVisible = false;
  } else {
    sendIfResponds(alert, Sel("showError"));
  }
  // The message under the glyph.
  if (biometricsInUse()) {
    platform::AutoreleasePool pool;
    sendIfResponds(alert, Sel("setMessage:"), platform::makeString(blankLines() + text));
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
  sendIfResponds(eventSource(), Sel("_setMatchingEnabled:"), BOOL{1});
  sendIfResponds(eventSource(), Sel("_startMatching"));
}

bool inCallMatching() {
  id inCall = sendIfResponds<id>(platform::asId(platform::classNamed("KavelinInCallController")),
                                 Sel("sharedInstanceIfExists"));
  return sendIfResponds<BOOL>(inCall, Sel("isMatching")) != 0;
}

}  // namespace

void beginMatchingForPrompt() {
  if (ios11()) {
    state().resourceMatchingWasEnabled =
        sendIfResponds<BOOL>(resource(), Sel("isMatchingEnabled")) != 0;
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
      platform::sendClass<id>(platform::classNamed("MCProfileConnection"), Sel("sharedConnection"));
  bool systemMatches =
      sendIfResponds<BOOL>(connection, Sel("isPasscodeSet")) != 0 && fingerprintUnlockAllowed();
  unsigned long mode = systemMatches ? kAssertionModeUnlockAllowed : kAssertionModeOwn;
  // The resource's events come to the controller while the assertion lasts.
  id r = resource();
  sendIfResponds(r, Sel("addObserver:"), controller());
  if (s.matchingAssertion) sendIfResponds(s.matchingAssertion.get(), Sel("invalidate"));
  s.matchingAssertion.reset(sendIfResponds<id>(r, Sel("acquireMatchingAssertionWithMode:reason:"),
                                               mode,
                                               platform::makeString("Kavelin Authentication")));
  // The kit reports to the controller and matches.
  id k = kit();
  sendIfResponds(k, Sel("setDelegate:"), controller());
  setBackgroundDetection(true);
  s.matchOperation.reset(
      sendIfResponds<id>(k, Sel("matchWithMode:andCredentialSet:"), kPromptMatchMode, id{nullptr}));
}

void stopMatchingForTen() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  if (ios11()) {
    sendIfResponds(resource(), Sel("removeObserver:"), controller());
    sendIfResponds(s.matchingAssertion.get(), Sel("invalidate"));
    s.matchingAssertion.reset();
  }
  id k = kit();
  setBackgroundDetection(false);
  sendIfResponds(s.matchOperation.get(), Sel("cancel"));
  s.matchOperation.reset();
  sendIfResponds(k, Sel("setDelegate:"), resource());
  setBackgroundDetection(true);
  // The locked lock screen matches on its own again.
  if (uiLocked() && devicePasscodeSet()) {
    sendIfResponds<id>(k, Sel("matchWithMode:andCredentialSet:"), kLockScreenMatchMode,
                       id{nullptr});
    sendIfResponds<int>(k, Sel("detectFingerWithOptions:"), id{nullptr});
  }
}

void checkMatchingIsReallyEnabled() {
  if (!state().hasVisibleAlert) return;  // the prompt went in the meantime
  if (ios11()) {
    startMatchingForTen();
    return;
  }
  id source = eventSource();
  sendIfResponds(source, Sel("_setMatchingEnabled:"), BOOL{1});
  if (ios10OrLater()) sendIfResponds(source, Sel("_startMatching"));
  id lock = platform::sendClass<id>(platform::classNamed("SBDeviceLockController"),
                                    Sel("sharedController"));
  if (sendIfResponds<BOOL>(lock, Sel("deviceHasPasscodeSet")) == 0) {
    platform::AutoreleasePool pool;
    sendIfResponds<int>(sendIfResponds<id>(source, Sel("biometricKit")), Sel("match:withOptions:"),
                         id{nullptr}, emptyDictionary());
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
