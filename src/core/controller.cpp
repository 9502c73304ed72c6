// KavelinController as the runtime knows it: one table of the methods the
// platform, the guards and the messaging centre call, each a thin door into
// the policy, the coordinator or the matching session.
#include "core/controller.h"

#include <string>
#include <vector>

#include "base/flags.h"
#include "core/biometric_events.h"
#include "core/calls.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "core/matching.h"
#include "core/messages.h"
#include "core/policy.h"
#include "core/requests.h"
#include "core/state.h"
#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kInit("init");
const platform::Sel kDefaultCenter("defaultCenter");
const platform::Sel kAddObserverSelectorNameObject("addObserver:selector:name:object:");
const platform::Sel kAlloc("alloc");
const platform::Sel kSetText("setText:");
const platform::Sel kDismissWithClickedButtonIndexAnimated(
    "dismissWithClickedButtonIndex:animated:");
const platform::Sel kPasscodeField("passcodeField");
const platform::Sel kBecomeFirstResponder("becomeFirstResponder");
const platform::Sel kWindow("window");
const platform::Sel kMakeKeyAndVisible("makeKeyAndVisible");
const platform::Sel kSharedInstance("sharedInstance");

using platform::Integer;
using platform::MethodSpec;
using platform::send;
using platform::sendIfResponds;

id gShared = nullptr;

// ---- Life ----

id controllerInit(id self, SEL) {
  self = platform::sendSuper<id>(platform::classNamed("NSObject"), self, kInit);
  if (self == nullptr) return nullptr;
  if (gShared == nullptr) gShared = self;
  platform::AutoreleasePool pool;
  id center = platform::sendClass<id>(platform::classNamed("NSNotificationCenter"), kDefaultCenter);
  auto observe = [&](const char* selector, const char* name) {
    send<void>(center, kAddObserverSelectorNameObject, self, platform::selector(selector),
               platform::makeString(name), id{nullptr});
  };
  observe("languageChanged:", "SBLanguageDidChangeNotification");
  observe("callStatusChanged:", "TUCallCenterCallStatusChangedNotification");
  state().invocation.reset();
  state().urlInvocation.reset();
  state().biometricDelegate.reset(sharedInstanceOf("SBUIBiometricEventMonitor"));
  observe("_kv_keyboardDidShow:", base::flags().isIOS8OrLater ? "UIKeyboardDidShowNotification"
                                                              : "UIKeyboardWillShowNotification");
  return self;
}

id sharedInstance(id cls, SEL) {
  if (gShared == nullptr) send<id>(send<id>(cls, kAlloc), kInit);
  return gShared;
}

// ---- Properties ----

id getInvocation(id, SEL) {
  return state().invocation.get();
}
void putInvocation(id, SEL, id invocation) {
  setInvocation(invocation);
}
id getUrlInvocation(id, SEL) {
  return state().urlInvocation.get();
}
void putUrlInvocation(id, SEL, id invocation) {
  state().urlInvocation.reset(invocation);
}
id getRestrictedTitle(id, SEL) {
  return state().restrictedTitle.get();
}
void putRestrictedTitle(id, SEL, id title) {
  setRestrictedTitle(title);
}
id getKavelinAlert(id, SEL) {
  return state().kavelinAlert.get();
}
void putKavelinAlert(id, SEL, id alert) {
  state().kavelinAlert.reset(alert);
}
BOOL getHasVisibleAlert(id, SEL) {
  return state().hasVisibleAlert ? 1 : 0;
}
void putHasVisibleAlert(id, SEL, BOOL visible) {
  state().hasVisibleAlert = visible != 0;
}
id getBiometricDelegate(id, SEL) {
  return state().biometricDelegate.get();
}
void putBiometricDelegate(id, SEL, id source) {
  state().biometricDelegate.reset(source);
}
id getRemovedObservers(id, SEL) {
  return state().removedObservers.get();
}
id getMatchingAssertion(id, SEL) {
  return state().matchingAssertion.get();
}

// The glyph's look for the success animation. The getters do not answer what
// the setters stored: the style follows IconColor, the mode is always 0.
Integer glyphStyle(id, SEL) {
  switch (settings::current().iconColor) {
    case 3: return 3;
    case 4: return 2;
    default: return 1;
  }
}
Integer glyphMode(id, SEL) {
  return 0;
}
void ignoreInteger(id, SEL, Integer) {}
void setExperimentalMatchMode(id, SEL, Integer mode) {
  state().experimentalMatchMode = static_cast<int>(mode);
}

// ---- Policy ----

BOOL requiresForIdentifier(id, SEL, id identifier) {
  auto text = platform::stringOf(identifier);
  return text && requiresAuthenticationForIdentifier(*text) ? 1 : 0;
}
BOOL requiresForFolder(id, SEL, id folder) {
  return requiresAuthenticationForOpeningFolder(folder) ? 1 : 0;
}
id folders(id, SEL) {
  return foldersRepresentation();
}
void permission(id, SEL cmd) {
  grantPermission(platform::selectorName(cmd));
}
void photoLibraryAccess(id, SEL, int value) {
  allowPhotoLibraryAccess(value);
}

// ---- The coordinator ----

void authenticate(id, SEL, id identifier, id target, SEL sel, id pointers) {
  authenticateForIdentifier(identifier, target, sel, pointers);
}
void showAlertMethod(id, SEL) {
  showAlert();
}
void launchApplication(id, SEL, id identifier) {
  launchApplicationWithIdentifier(identifier);
}
void openFolder(id, SEL, id folder) {
  authenticateForOpeningFolder(folder);
}
void cleanupMethod(id, SEL) {
  cleanupAlertAndRemoveObserver();
}
void cleanupObserversMethod(id, SEL) {
  cleanupObservers();
}
void restoreBacklightMethod(id, SEL) {
  restoreBacklight();
}
void lockDeviceMethod(id, SEL) {
  lockDeviceFromNotification();
}
void languageChanged(id, SEL, id) {
  state().pendingRespring = true;
}
void callStatusChangedMethod(id, SEL, id) {
  callStatusChanged();
}

// The passcode takes the finger's paths: right is a match, wrong a failure.
void enteredPasscode(id, SEL, id field, id text) {
  const auto& stored = settings::current().passcode;
  if (stored && platform::stringOf(text) == stored) {
    handleBiometricEvent(kEventMatch, true);
    return;
  }
  sendIfResponds(field, kSetText, platform::makeString(""));
  handleBiometricEvent(kEventNoMatch, true);
}

// ---- The prompt's delegate ----

// Cancel (button 0) drops what was held back; "Enter passcode" is the
// prompt's own business. On iOS 11 a prompt raised by a power action locks
// the device when cancelled.
void clickedButton(id, SEL, id alert, Integer index) {
  if (index != 0) return;
  if (base::flags().isIOS11 && state().lockAfterCancel) {
    pressLockButton();
    state().lockAfterCancel = false;
  }
  cancelScheduledRestarts();
  cleanupOnce(alert);
}
void didDismiss(id, SEL, id alert, Integer index) {
  if (index != 0) return;
  cleanupOnce(alert);
  cancelScheduledRestarts();
}
void alertCancelled(id, SEL, id alert) {
  cancelScheduledRestarts();
  send<void>(alert, kDismissWithClickedButtonIndexAnimated, Integer{0}, BOOL{0});
  cleanupOnce(alert);
}
// Without a sensor the keyboard comes up with the prompt.
void didPresent(id, SEL, id alert) {
  if (biometricsInUse()) return;
  send<BOOL>(sendIfResponds<id>(alert, kPasscodeField), kBecomeFirstResponder);
}

// The prompt's window above any other modal item, and again when the
// keyboard comes up under it.
void bringAlertToFront(id, SEL) {
  id item = platform::valueForKeyIfPresent(state().kavelinAlert.get(), "representedModalItem");
  id view = platform::valueForKeyIfPresent(item, "representedView");
  id window = sendIfResponds<id>(view, kWindow);
  sendIfResponds(window, kMakeKeyAndVisible);
}
void keyboardDidShow(id self, SEL, id) {
  if (!promptVisible()) return;
  bringAlertToFront(self, nullptr);
}

// ---- Matching ----

void startMatchingMethod(id, SEL) {
  startMatchingForTen();
}
void stopMatchingMethod(id, SEL) {
  stopMatchingForTen();
}
void checkMatchingMethod(id, SEL) {
  checkMatchingIsReallyEnabled();
}
void monitorEvent(id, SEL, id, long code) {
  handleBiometricEvent(code);
}
// The kit's and the resource's other callbacks take an object or a number
// after the sender; the platform calls them through its own types.
__attribute__((no_sanitize("function"))) void ignoreObject(id, SEL, id, id) {}
__attribute__((no_sanitize("function"))) void ignoreNumber(id, SEL, id, long) {}

// ---- The messaging centre ----

id handleMessage(id, SEL, id name, id userInfo) {
  return handleMessageNamed(name, userInfo, Channel::kMessagingCentre);
}

std::vector<MethodSpec> methodTable() {
  using platform::method;
  std::vector<MethodSpec> table = {
      platform::classMethod("sharedInstance", sharedInstance),
      method("init", controllerInit),
      // Properties.
      method("invocation", getInvocation),
      method("setInvocation:", putInvocation),
      method("urlInvocation", getUrlInvocation),
      method("setUrlInvocation:", putUrlInvocation),
      method("restrictedTitle", getRestrictedTitle),
      method("setRestrictedTitle:", putRestrictedTitle),
      method("kavelinAlert", getKavelinAlert),
      method("setKavelinAlert:", putKavelinAlert),
      method("hasVisibleAlert", getHasVisibleAlert),
      method("setHasVisibleAlert:", putHasVisibleAlert),
      method("biometricDelegate", getBiometricDelegate),
      method("setBiometricDelegate:", putBiometricDelegate),
      method("removedObservers", getRemovedObservers),
      method("matchingAssertion", getMatchingAssertion),
      method("glyphStyle", glyphStyle),
      method("glyphMode", glyphMode),
      method("setGlyphStyle:", ignoreInteger),
      method("setGlyphMode:", ignoreInteger),
      method("setExperimentalMatchMode:", setExperimentalMatchMode),
      // Policy.
      method("requiresAuthenticationForIdentifier:", requiresForIdentifier),
      method("requiresAuthenticationForOpeningFolder:", requiresForFolder),
      method("foldersRepresentation", folders),
      method("allowPhotoLibraryAccess:", photoLibraryAccess),
      // The coordinator.
      method("authenticateForIdentifier:object:selector:arrayOfArgumentsAsNSValuePointers:",
             authenticate),
      method("showAlert", showAlertMethod),
      method("launchApplicationWithIdentifier:", launchApplication),
      method("launchProtectedApplicationWithIdentifier:", launchApplication),
      method("authenticateForOpeningFolder:", openFolder),
      method("cleanupAlertAndRemoveObserver", cleanupMethod),
      method("cleanupObservers", cleanupObserversMethod),
      method("restoreBacklight", restoreBacklightMethod),
      method("lockDeviceFromNotification", lockDeviceMethod),
      method("languageChanged:", languageChanged),
      method("callStatusChanged:", callStatusChangedMethod),
      method("passcodeField:enteredPasscode:", enteredPasscode),
      method("alertView:clickedButtonAtIndex:", clickedButton),
      method("alertView:didDismissWithButtonIndex:", didDismiss),
      method("alertViewCancel:", alertCancelled),
      method("didPresentAlertView:", didPresent),
      method("bringAlertToFront", bringAlertToFront),
      method("_kv_keyboardDidShow:", keyboardDidShow),
      // Matching.
      method("startMatchingForTen", startMatchingMethod),
      method("stopMatchingForTen", stopMatchingMethod),
      method("checkMatchingIsReallyEnabled", checkMatchingMethod),
      method("biometricEventMonitor:handleBiometricEvent:", monitorEvent),
      method("biometricKitInterface:handleEvent:", monitorEvent),
      method("biometricResource:observeEvent:", monitorEvent),
      // The messaging centre.
      method("handleMessageNamed:userInfo:", handleMessage),
  };
  for (const Permission& p : permissions()) table.push_back(method(p.selector, permission));
  // The kit's and the resource's other callbacks are accepted and ignored.
  for (const char* ignored : {"matchOperation:matchedWithResult:"})
    table.push_back(method(ignored, ignoreObject));
  for (const char* ignored :
       {"matchOperation:presenceDetectedInLockout:", "device:pearlEventOccurred:",
        "device:pearlStateChanged:", "operation:finishedWithReason:", "operation:stateChanged:",
        "operation:presenceStateChanged:", "biometricKitInterface:enrolledIdentitiesDidChange:"}) {
    table.push_back(method(ignored, ignoreNumber));
  }
  return table;
}

}  // namespace

void defineKavelinController() {
  if (platform::classNamed("KavelinController") != nullptr) return;
  std::vector<MethodSpec> table = methodTable();
  platform::defineClass("KavelinController", "NSObject", table);
}

id controller() {
  defineKavelinController();
  return platform::sendClass<id>(platform::classNamed("KavelinController"), kSharedInstance);
}

}  // namespace kv::core
