// Other extensions' launch paths.
#include "springboard/integrations.h"

#include <algorithm>
#include <string>
#include <vector>

#include "core/state.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "processes/incall.h"
#include "settings/notifications.h"
#include "settings/settings.h"
#include "springboard/gate.h"
#include "springboard/lock_state.h"

namespace kv::springboard {

namespace {

using platform::Retained;
using platform::Sel;
using platform::sendIfResponds;

const Sel kBundleIdentifier("bundleIdentifier");
const Sel kApplicationBundleID("applicationBundleID");
const Sel kName("name");
const Sel kView("view");
const Sel kWindow("window");
const Sel kAlpha("alpha");
const Sel kSetAlpha("setAlpha:");
const Sel kLabel("label");
const Sel kApplication("application");
const Sel kSetText("setText:");
const Sel kSharedInstance("sharedInstance");
const Sel kSetInfoForCurrentCalls("setInfoForCurrentCalls");

constexpr const char* kOwnSwitch = "net.quorvan.kavelin.switch";
constexpr const char* kOwnListener = "net.quorvan.kavelin";
constexpr const char* kFingerprintEvent = "fingerprint-sensor";
constexpr const char* kPellumEvent = "ActivatePellum";
constexpr const char* kContacts = "com.apple.MobileAddressBook";

// Raised while Pennac's sheet handles a click, and only then: the launches
// the sheet starts are the ones it guards; SpringBoard's other launches
// through the same method are judged by their own guards.
bool gPennacSheetInUse = false;

// Holds back the call of `cmd` on `self` with `args` (kept) under `title`;
// false when no call could be built, and the platform method then runs.
template <typename... A>
bool holdBackCall(id title, id self, SEL cmd, A... args) {
  Retained call = platform::invocationOf(self, cmd, args...);
  if (call) platform::retainArguments(call.get());
  return holdBack(call.get(), title);
}

bool protectsSwitch(const std::string& identifier) {
  const auto& switches = settings::current().protectedSwitches;
  return identifier == kOwnSwitch ||
         std::find(switches.begin(), switches.end(), identifier) != switches.end();
}

// A switch button's press: the identifier read through `key`; a protected
// switch waits for authentication, titled with its identifier.
template <auto F>
void guardSwitch(id self, SEL cmd, const char* key) {
  id identifier = platform::valueForKeyIfPresent(self, key);
  auto text = platform::stringOf(identifier);
  if (text && protectsSwitch(*text) && gatePasses() && holdBackCall(identifier, self, cmd)) return;
  platform::Hook<F>::original(self, cmd);
}

// An application argument: an app (its bundle identifier) or the identifier.
id identifierOf(id application) {
  if (platform::isKindOf(application, "NSString")) return application;
  id identifier = sendIfResponds<id>(application, kBundleIdentifier);
  return identifier != nullptr ? identifier : sendIfResponds<id>(application, kApplicationBundleID);
}

bool containsText(id string, const char* part) {
  auto text = platform::stringOf(string);
  return text && text->find(part) != std::string::npos;
}

// The product's prompt owns the fingerprint sensor from its show until it
// is gone, and while a match it started runs.
bool sensorTaken() {
  const auto& state = core::state();
  return state.hasVisibleAlert || static_cast<bool>(state.matchOperation) ||
         state.tookOverEventSource;
}

}  // namespace

void flipswitchPressed(id self, SEL cmd) {
  guardSwitch<&flipswitchPressed>(self, cmd, "switchIdentifier");
}
void flipswitchHeld(id self, SEL cmd) {
  guardSwitch<&flipswitchHeld>(self, cmd, "switchIdentifier");
}
void privateFlipswitchPressed(id self, SEL cmd) {
  guardSwitch<&privateFlipswitchPressed>(self, cmd, "switchIdentifier");
}
void privateFlipswitchHeld(id self, SEL cmd) {
  guardSwitch<&privateFlipswitchHeld>(self, cmd, "switchIdentifier");
}
void zandorTapped(id self, SEL cmd) {
  guardSwitch<&zandorTapped>(self, cmd, "switchID");
}

void activatorActivateApplication(id self, SEL cmd, id application) {
  id identifier = identifierOf(application);
  if (isProtectedApp(identifier) && gatePasses() &&
      holdBackCall(identifier, self, cmd, application)) {
    return;
  }
  platform::Hook<&activatorActivateApplication>::original(self, cmd, application);
}

void activatorSwitchEvent(id self, SEL cmd, id activator, id event, id listenerName) {
  if (containsText(listenerName, kOwnListener) && gatePasses() &&
      holdBackCall(platform::makeString("Kavelin Flipswitch"), self, cmd, activator, event,
                   listenerName)) {
    return;
  }
  platform::Hook<&activatorSwitchEvent>::original(self, cmd, activator, event, listenerName);
}

void activatorSendEvent(id self, SEL cmd, id event) {
  // Swallowed, not held: a finger on the sensor is the prompt's answer.
  if (containsText(sendIfResponds<id>(event, kName), kFingerprintEvent) && sensorTaken()) return;
  platform::Hook<&activatorSendEvent>::original(self, cmd, event);
}

void activatorActivateSwitcher(id self, SEL cmd) {
  if (settings::current().protectSwitcher && gatePasses() &&
      holdBackCall(platform::makeString("Switcher Protection"), self, cmd)) {
    return;
  }
  platform::Hook<&activatorActivateSwitcher>::original(self, cmd);
}

void orrelShowSwitcher(id self, SEL cmd) {
  // Re-showing a switcher the user already opened asks nothing. Showing is
  // UIKit's own answer, the controller's view being in a window: nothing
  // kept here can go stale when Orrel closes its switcher by a path of its
  // own. Asking for the view loads it, as showing the switcher is about to.
  // A controller without a view cannot tell, and asks every time.
  bool showing = sendIfResponds<id>(sendIfResponds<id>(self, kView), kWindow) != nullptr;
  if (!showing && settings::current().protectSwitcher && gatePasses() &&
      holdBackCall(platform::makeString("Switcher Protection"), self, cmd)) {
    return;
  }
  platform::Hook<&orrelShowSwitcher>::original(self, cmd);
}

void orrelIconTapped(id self, SEL cmd, id icon) {
  id identifier = identifierOf(icon);
  if (isProtectedApp(identifier) && gatePasses() && holdBackCall(identifier, self, cmd, icon)) {
    return;
  }
  platform::Hook<&orrelIconTapped>::original(self, cmd, icon);
}

void mevrickOpen(id self, SEL cmd, double percentage) {
  if (settings::current().protectSwitcher && gatePasses() &&
      holdBackCall(platform::makeString("App Switcher Protection"), self, cmd, percentage)) {
    return;
  }
  platform::Hook<&mevrickOpen>::original(self, cmd, percentage);
}

void mevrickActivate(id self, SEL cmd, id sender) {
  if (settings::current().protectSwitcher && gatePasses() &&
      holdBackCall(platform::makeString("App Switcher Protection"), self, cmd, sender)) {
    return;
  }
  platform::Hook<&mevrickActivate>::original(self, cmd, sender);
}

void mevrickDeactivateTo(id self, SEL cmd, id application, BOOL animated) {
  id identifier = identifierOf(application);
  if (isProtectedApp(identifier) && gatePasses() &&
      holdBackCall(identifier, self, cmd, application, animated)) {
    return;
  }
  platform::Hook<&mevrickDeactivateTo>::original(self, cmd, application, animated);
}

void mevrickCardSetImage(id self, SEL cmd, id image) {
  // The card stays empty rather than show what the app last displayed.
  id identifier = identifierOf(platform::valueForKeyIfPresent(self, "application"));
  if (settings::current().blurAppSwitcher && isProtectedApp(identifier) && gatePasses()) {
    image = nullptr;
  }
  platform::Hook<&mevrickCardSetImage>::original(self, cmd, image);
}

id veskelIconListInit(id self, SEL cmd, CGRect frame) {
  // Veskel makes its icon list each time its quick switcher opens, so the
  // list as it is made is where the switcher itself is guarded. Its icons
  // launch through SpringBoard's launchApplicationWithIdentifier:suspended:,
  // whose open request the launch guards already hold for a protected app:
  // the icons are left as they are, and a protected one asks when tapped.
  id list = platform::Hook<&veskelIconListInit>::original(self, cmd, frame);
  if (list == nullptr || !settings::current().protectSwitcher ||
      !platform::respondsTo(list, kSetAlpha) || !gatePasses()) {
    return list;
  }
  // The list is made fully transparent, which UIKit's hit-testing also takes
  // as closed to touches, and the held-back call gives it back its own alpha
  // after authentication. Cancelled, it stays out of sight until Veskel
  // closes it.
  double alpha = sendIfResponds<double>(list, kAlpha);
  platform::send<void>(list, kSetAlpha, 0.0);
  if (!holdBackCall(platform::makeString("Switcher Protection"), list, kSetAlpha, alpha)) {
    platform::send<void>(list, kSetAlpha, alpha);
  }
  return list;
}

void pennacSheetClicked(id self, SEL cmd, id sheet, platform::Integer index) {
  id identifier = identifierOf(sendIfResponds<id>(self, kApplication));
  if (isProtectedApp(identifier) && gatePasses() &&
      holdBackCall(identifier, self, cmd, sheet, index)) {
    return;
  }
  // Scoped, so that a click handler that raises does not leave it up.
  struct InUse {
    bool before = gPennacSheetInUse;
    InUse() { gPennacSheetInUse = true; }
    ~InUse() { gPennacSheetInUse = before; }
  } inUse;
  platform::Hook<&pennacSheetClicked>::original(self, cmd, sheet, index);
}

BOOL launchApplicationWithIdentifier(id self, SEL cmd, id identifier, BOOL suspended) {
  if (gPennacSheetInUse && suspended == 0 && isProtectedApp(identifier) && gatePasses() &&
      holdBackCall(identifier, self, cmd, identifier, suspended)) {
    return 0;
  }
  return platform::Hook<&launchApplicationWithIdentifier>::original(self, cmd, identifier,
                                                                    suspended);
}

void tamsinLaunchAddressBook(id self, SEL cmd) {
  id contacts = platform::makeString(kContacts);
  if (isProtectedApp(contacts) && gatePasses() && holdBackCall(contacts, self, cmd)) return;
  platform::Hook<&tamsinLaunchAddressBook>::original(self, cmd);
}

void tamsinSetInfoForCurrentCalls(id self, SEL cmd) {
  platform::Hook<&tamsinSetInfoForCurrentCalls>::original(self, cmd);
  const auto& current = settings::current();
  uint64_t state = settings::stateOf(settings::Note::kAllowInCallNames);
  if (!current.enabled || !current.callerNameProtected || processes::namesAllowed(state)) return;
  sendIfResponds(platform::valueForKeyIfPresent(self, "nameLabel"), kSetText,
                 platform::makeString(processes::protectedText(state)));
}

void tamsinNamesChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                        CFDictionaryRef) {
  Class tamsin = platform::classNamed("TamsinControllerModern");
  if (tamsin == nullptr) return;
  sendIfResponds(platform::sendClass<id>(tamsin, kSharedInstance), kSetInfoForCurrentCalls);
}

void executeOrAppendEvent(id self, SEL cmd, id event) {
  if (platform::stringOf(sendIfResponds<id>(event, kLabel)) == kPellumEvent) {
    // Pellum goes back to the app before the one in front.
    const auto& list = recentFrontApps();
    id previous = list.size() < 2 ? nullptr : platform::makeString(list[list.size() - 2]);
    if (isProtectedApp(previous) && gatePasses() && holdBackCall(previous, self, cmd, event)) {
      return;
    }
  }
  platform::Hook<&executeOrAppendEvent>::original(self, cmd, event);
}

}  // namespace kv::springboard
