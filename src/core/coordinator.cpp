// The authentication coordinator: deferral, the prompt, success and cancel.
#include "core/coordinator.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/flags.h"
#include "base/session.h"
#include "core/device.h"
#include "core/matching.h"
#include "core/state.h"
#include "core/texts.h"
#include "platform/foundation.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/bundle.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kAlloc("alloc");
const platform::Sel kInitAlertView(
    "initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:");
const platform::Sel kAddButtonWithTitle("addButtonWithTitle:");
const platform::Sel kDismissWithClickedButtonIndexAnimated(
    "dismissWithClickedButtonIndex:animated:");
const platform::Sel kRebootNow("_rebootNow");
const platform::Sel kRebootNowWithSender("_rebootNow:");
const platform::Sel kPowerDownRequested("powerDownRequested:");
const platform::Sel kPowerDown("powerDown");
const platform::Sel kCancel("cancel");
const platform::Sel kTearDownCameraUIImmediately("tearDownCameraUIImmediately");
const platform::Sel kCopy("copy");
const platform::Sel kIsVisible("isVisible");
const platform::Sel kPerformSelectorWithObjectAfterDelay("performSelector:withObject:afterDelay:");
const platform::Sel kCancelPreviousPerformRequestsWithTargetSelectorObject(
    "cancelPreviousPerformRequestsWithTarget:selector:object:");
const platform::Sel kClearHighlightedIcon("clearHighlightedIcon");
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kSetInRestrictTitle("setInRestrictTitle:");
const platform::Sel kShow("show");
const platform::Sel kPointerValue("pointerValue");
const platform::Sel kRelaunchSpringBoardNow("_relaunchSpringBoardNow");
const platform::Sel kIconForceTouchViewControllerDidDismiss(
    "iconForceTouchViewControllerDidDismiss:");
const platform::Sel kKillAnimations("killAnimations");

using platform::Retained;
using platform::send;
using platform::sendIfResponds;
using settings::Note;

constexpr double kRetryInterval = 0.1;
constexpr platform::Integer kCancelButton = 0;
constexpr platform::Integer kSuccessButton = 2;

Replaying gReplaying = Replaying::kNothing;

// Marks the replay of a held-back call for as long as it runs.
class ReplayScope {
 public:
  explicit ReplayScope(Replaying kind) : outer_(std::exchange(gReplaying, kind)) {}
  ~ReplayScope() { gReplaying = outer_; }
  ReplayScope(const ReplayScope&) = delete;
  ReplayScope& operator=(const ReplayScope&) = delete;

 private:
  Replaying outer_;
};

// Invokes a call taken out of the coordinator, marked as the replay it is.
void replay(Retained call, Replaying kind) {
  ReplayScope scope(kind);
  platform::invoke(call.get());
}

// The prompt's message: room for the glyph and the item line, then the text.
id promptMessage() {
  return platform::makeString(blankLines() +
                              (biometricsInUse() ? authenticateText() : passcodeText()));
}

// A new prompt, not yet shown: title, message, Cancel, and "Enter passcode"
// on a device with biometrics when a passcode is stored.
Retained newPrompt() {
  id cancel = settings::localized("CANCEL", "Cancel");
  id alert = send<id>(platform::sendClass<id>(platform::classNamed("KavelinAlertView"), kAlloc),
                      kInitAlertView, platform::makeString("Kavelin"), promptMessage(),
                      controller(), cancel, id{nullptr});
  Retained prompt = Retained::adopt(alert);
  if (biometricsInUse() && settings::current().passcode) {
    send<platform::Integer>(prompt.get(), kAddButtonWithTitle,
                            platform::makeString("Enter passcode"));
  }
  return prompt;
}

// Dismisses the prompt with a button index, as the platform would after a tap.
void dismissPrompt(platform::Integer index, bool animated) {
  send<void>(state().kavelinAlert.get(), kDismissWithClickedButtonIndexAnimated, index,
             static_cast<BOOL>(animated ? 1 : 0));
}

// The application object answers the reboot, power-down and respring.
void reboot() {
  id app = application();
  if (platform::respondsTo(app, kRebootNow)) {
    send<void>(app, kRebootNow);
  } else {
    sendIfResponds(app, kRebootNowWithSender, id{nullptr});
  }
}
void powerDown() {
  if (base::flags().isIOS11) {
    sendIfResponds(application(), kPowerDownRequested, id{nullptr});
  } else {
    sendIfResponds(application(), kPowerDown);
  }
}

std::vector<void (*)()>& cleanupForgets() {
  static auto* forgets = new std::vector<void (*)()>();
  return *forgets;
}

// Drops everything one prompt held or borrowed.
void dropPromptState() {
  CoordinatorState& s = state();
  s.cameraPhotosPending = false;
  s.cameraPhotos9Pending = false;
  s.switcherPromptPending = false;
  s.failedAttempts = 0;
  if (s.matchOperation) sendIfResponds(s.matchOperation.get(), kCancel);
  s.matchOperation.reset();
  s.invocation.reset();
  s.urlInvocation.reset();
  s.pendingReboot = false;
  s.pendingPowerDown = false;
  s.pendingRespring = false;
  s.presenceSeen = false;
  s.matchSucceeded = false;
  s.passcodeWasVisible = false;
  forgetSuccessUnderway();
  if (s.cameraViewController)
    sendIfResponds(s.cameraViewController.get(), kTearDownCameraUIImmediately);
  s.cameraViewController.reset();
  s.pendingURL.reset();
  s.lastAuthenticationTime = 0;
  s.lockAfterCancel = false;
  s.powerActionPending = false;
  s.powerDownController.reset();
  for (void (*forget)() : cleanupForgets()) forget();
}

}  // namespace

void setInvocation(id invocation) {
  state().invocation.reset(invocation);
}

void setUrlInvocation(id invocation, id url) {
  state().urlInvocation.reset(invocation);
  state().pendingURL.reset(url);
}

void setRestrictedTitle(id title) {
  state().restrictedTitle = Retained::adopt(send<id>(title, kCopy));
}

void setRestrictedTitle(const std::string& title) {
  platform::AutoreleasePool pool;
  setRestrictedTitle(platform::makeString(title));
}

bool somethingPending() {
  const CoordinatorState& s = state();
  return s.invocation || s.urlInvocation || s.cameraPhotosPending || s.cameraPhotos9Pending;
}

bool promptVisible() {
  return state().kavelinAlert && send<BOOL>(state().kavelinAlert.get(), kIsVisible) != 0;
}

void performLater(const char* selector, double delay) {
  send<void>(controller(), kPerformSelectorWithObjectAfterDelay, platform::selector(selector),
             id{nullptr}, delay);
}

void cancelPerform(const char* selector) {
  platform::sendClass<void>(platform::classNamed("NSObject"),
                            kCancelPreviousPerformRequestsWithTargetSelectorObject, controller(),
                            platform::selector(selector), id{nullptr});
}

void showAlert() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  // A fresh prompt has seen no finger yet; the tapped icon stops glowing.
  s.presenceSeen = false;
  Class iconController = platform::classNamed("SBIconController");
  if (platform::instancesRespondTo(iconController, kClearHighlightedIcon)) {
    send<void>(platform::sendClass<id>(iconController, kSharedInstance), kClearHighlightedIcon);
  }
  // One prompt at a time: try again once the visible one has gone.
  if (promptVisible()) {
    performLater("showAlert", kRetryInterval);
    return;
  }
  // The sensor, taken from the lock screen for this prompt.
  if (biometricsInUse()) beginMatchingForPrompt();
  // The prompt with its texts.
  Retained prompt = newPrompt();
  if (!prompt) return;  // no prompt class in this process: nothing can be shown
  // The item it names.
  if (s.restrictedTitle) {
    send<void>(prompt.get(), kSetInRestrictTitle, s.restrictedTitle.get());
    s.restrictedTitle.reset();
  }
  // On screen.
  s.kavelinAlert = std::move(prompt);
  s.cleanedAlert = nullptr;
  send<void>(s.kavelinAlert.get(), kShow);
  s.hasVisibleAlert = true;
}

void authenticateForIdentifier(id identifier, id target, SEL sel, id argumentPointers) {
  // The invocation from the target's own signature.
  Retained invocation = platform::newInvocation(target, sel);
  if (!invocation) {
    systemLog(std::string("Kavelin: nothing to hold back for ") + platform::toString(identifier) +
              ": " + platform::classNameOf(target) + " does not answer -" +
              platform::selectorName(sel));
    return;
  }
  // Its arguments from index 2 on, each read through its pointer.
  for (platform::UInteger i = 0; i < platform::arrayCount(argumentPointers); ++i) {
    void* pointer = send<void*>(platform::arrayObjectAt(argumentPointers, i), kPointerValue);
    if (pointer != nullptr) platform::setInvocationArgument(invocation.get(), pointer, i + 2);
  }
  // Kept, named, shown.
  platform::retainArguments(invocation.get());
  setInvocation(invocation.get());
  setRestrictedTitle(identifier);
  showAlert();
}

void succeed() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  forgetSuccessUnderway();
  // The prompt a switcher toggle waited for is passed: its replay, and any
  // toggle after it, opens the switcher again.
  s.switcherPromptPending = false;
  // When, for the two-second pass of an URL open's target.
  s.lastAuthenticationTime = now();
  // A power action waiting for authentication goes first, alone.
  if (s.pendingReboot || s.pendingPowerDown || s.pendingRespring) {
    if (s.pendingReboot) {
      reboot();
    } else if (s.pendingPowerDown) {
      powerDown();
    } else {
      sendIfResponds(application(), kRelaunchSpringBoardNow);
    }
    dismissPrompt(kSuccessButton, false);
    return;
  }
  // A camera request, else the held-back action. The action leaves the
  // coordinator before it runs: the guards let its replay through as the
  // replay it is, not because something is still held.
  if (s.cameraPhotosPending) {
    s.cameraPhotosPending = false;
    settings::post(Note::kAllowedInCamPhotos);
  } else if (s.cameraPhotos9Pending) {
    s.cameraPhotos9Pending = false;
    settings::post(Note::kAllowedInCamPhotos9);
  } else if (s.invocation) {
    replay(std::move(s.invocation), Replaying::kAction);
  } else if (s.urlInvocation) {
    // The URL is let go first, so that its open is no longer a repeat.
    s.pendingURL.reset();
    replay(std::move(s.urlInvocation), Replaying::kUrlOpen);
  }
  s.powerActionPending = false;
  s.powerDownController.reset();
  // The sensor goes back to the lock screen.
  if (biometricsInUse()) endMatchingAfterSuccess();
  // The session, and whether it lasts.
  s.hasVisibleAlert = false;
  base::sessionUnlocked() = true;
  settings::publish(Note::kGracePeriod, settings::current().keepSession ? 1 : 0);
  // The prompt goes.
  dismissPrompt(kSuccessButton, true);
  s.failedAttempts = 0;
  s.kavelinAlert.reset();
}

Replaying replaying() {
  return gReplaying;
}

void cleanupAlertAndRemoveObserver() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  s.cleanedAlert = s.kavelinAlert.get();
  // A force-touch menu put away for the prompt hears that it is gone.
  if (s.forceTouchOwner) {
    sendIfResponds(s.forceTouchOwner.get(), kIconForceTouchViewControllerDidDismiss,
                   s.forceTouchArgument.get());
    s.forceTouchOwner.reset();
    s.forceTouchArgument.reset();
  }
  // No prompt any more.
  s.hasVisibleAlert = false;
  // The sensor goes back.
  if (biometricsInUse()) endMatchingAfterCancel();
  // Nothing held back outlives the prompt; the power-down screen it
  // covered goes with it, after the brightness comes back.
  Retained powerDownScreen = std::move(s.powerDownController);
  dropPromptState();
  // The screen as it was; other processes drop their requests.
  restoreBacklight();
  if (powerDownScreen) sendIfResponds(powerDownScreen.get(), kCancel);
  settings::post(Note::kAlertCancelled);
}

void alsoForgetOnCleanup(void (*forget)()) {
  auto& forgets = cleanupForgets();
  if (std::find(forgets.begin(), forgets.end(), forget) == forgets.end()) forgets.push_back(forget);
}

void cleanupOnce(id alert) {
  if (alert != nullptr && alert == state().cleanedAlert) return;
  cleanupAlertAndRemoveObserver();
}

void giveUp() {
  CoordinatorState& s = state();
  platform::AutoreleasePool pool;
  Retained prompt = s.kavelinAlert;
  // The cleanup drops what was held back, the borrowed sensor, the pending
  // flags and the match operation, and gives the brightness back.
  cleanupAlertAndRemoveObserver();
  sendIfResponds(prompt.get(), kKillAnimations);
  send<void>(prompt.get(), kDismissWithClickedButtonIndexAnimated, kCancelButton, BOOL{0});
  if (base::flags().isIOS10OrLater) pressLockButton();
}

void restoreBacklight() {
  CoordinatorState& s = state();
  if (s.savedBacklightFactor == 0 || !setBacklightFactor(s.savedBacklightFactor)) return;
  s.savedBacklightFactor = 0;
}

}  // namespace kv::core
