// The lock and the screen: SBLockScreenManager, the lock button of each
// version (SBLockHardwareButton on iOS 11, SpringBoard's own handlers before),
// the backlight, the device-lock and managed-configuration queries, Wi-Fi,
// and the "lock", "unlock" and "screen" actions.
#include <cstdio>
#include <string>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"
#include "sim/host/run_loop.h"

namespace kv::sim::frameworks {

void lockScreenWantsMatching(bool wanted);

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

constexpr int kHardwareButtonSource = 1;  // a press of the physical button
constexpr int kPasscodeUnlockSource = 1;  // the passcode or a swipe on the lock screen
constexpr int kIdleSource = 2;            // the idle timer, or a touch that wakes the screen
constexpr int kWakeSource = 2;  // the lock screen coming up on wake: it asks, nothing unlocks

// The platform's lock-state notification, state 1 locked, 0 unlocked.
void postLockState(bool locked) {
  int token = -1;
  notify_register_check("com.apple.springboard.lockstate", &token);
  notify_set_state(token, locked ? 1 : 0);
  notify_post("com.apple.springboard.lockstate");
  notify_cancel(token);
}

}  // namespace

// What the screen shows, as the platform's screen-changed notification
// carries it: 0 dark, 1 an app, 2 SpringBoard's home screen, 3 the lock
// screen. Posted when it changes.
void noteScreenChanged() {
  static int last = -1;
  const SpringBoardState& sb = springBoard();
  int now = !sb.screenOn ? 0 : sb.locked ? 3 : sb.front == "home" ? 2 : 1;
  if (now == last) return;
  last = now;
  int token = -1;
  notify_register_check("com.apple.springboard.screenchanged", &token);
  notify_set_state(token, static_cast<uint64_t>(now));
  notify_post("com.apple.springboard.screenchanged");
  notify_cancel(token);
}

namespace {

// ---- The backlight ----

void setScreen(bool on, int source) {
  id backlight = sharedOf("SBBacklightController");
  if (atLeast(10)) {
    send<void>(backlight, Sel("_animateBacklightToFactor:duration:source:silently:completion:"),
               on ? 1.0f : 0.0f, 0.25, static_cast<long>(source), BOOL{0}, id{nullptr});
  } else {
    send<void>(backlight, Sel("setBacklightFactor:source:"), on ? 1.0f : 0.0f, source);
  }
}
void applyBacklight(float factor) {
  bool on = factor > 0;
  // The level of a lit screen: the user's, dimmed, or full for a prompt.
  static float level = 1.0f;
  if (on && factor != level) {
    level = factor;
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", factor);
    host::logEvent("backlight", text);
  }
  if (springBoard().screenOn == on) return;
  springBoard().screenOn = on;
  noteScreenChanged();
  host::logEvent("screen", on ? "on" : "off");
}
void animateBacklight(id, SEL, float factor, double, long, BOOL, id completion) {
  applyBacklight(factor);
  platform::callBlock<void()>(completion);
}
void setBacklightFactor(id, SEL, float factor, long) {
  applyBacklight(factor);
}
void setBacklightFactorOld(id, SEL, float factor, int) {
  applyBacklight(factor);
}
BOOL screenIsOn(id, SEL) {
  return springBoard().screenOn ? 1 : 0;
}
BOOL screenIsOff(id, SEL) {
  return springBoard().screenOn ? 0 : 1;
}
BOOL shouldTurnOnScreen(id, SEL, long) {
  return 1;
}

// ---- The device passcode lock ----

// The device passcode is asked for from the moment the passcode lock
// engages: the device's "Require Passcode" setting lets a minute pass after
// the lock (the grace period), unless something engages it at once.
constexpr double kPasscodeGrace = 60;

struct DeviceLock {
  bool passcodeLocked = false;
  int lockGeneration = 0;      // a grace period ends only for its own lock
  std::string waitingSlideUp;  // an app slid up to, behind the device passcode
};
DeviceLock& deviceLock() {
  static DeviceLock lock;
  return lock;
}
void engagePasscodeLock(const char* why) {
  if (!system().passcode || deviceLock().passcodeLocked || !springBoard().locked) return;
  deviceLock().passcodeLocked = true;
  host::logEvent("lock", std::string("device passcode lock engaged (") + why + ")");
}
void startPasscodeGrace() {
  int generation = ++deviceLock().lockGeneration;
  host::scheduleAfter(kPasscodeGrace, [generation] {
    if (deviceLock().lockGeneration == generation) engagePasscodeLock("grace period over");
  });
}
void enablePasscodeLockImmediately(id, SEL) {
  engagePasscodeLock("at once");
}
// Both only recompute what the lock controller reports; the event log shows
// that they were asked to, with the states a caller named.
void updateDeviceLockedState(id, SEL) {
  host::logEvent("lock", "device locked state updated");
}
void lockStateChanged(id, SEL, int from, int to) {
  host::logEvent("lock", "device lock state changed from " + std::to_string(from) + " to " +
                             std::to_string(to));
}

// ---- SBLockScreenSlideUpToAppController ----

struct SlideUpState {
  std::string target;
};
id slideUpTargetApp(id self, SEL) {
  return applicationNamed(stateOf<SlideUpState>(self).target);
}
// The app opens over the lock screen: at once within the grace period, or
// once the device passcode has been entered.
void slideUpFinalize(id self, SEL) {
  const std::string& target = stateOf<SlideUpState>(self).target;
  if (!springBoard().locked) return;
  if (deviceLock().passcodeLocked) {
    deviceLock().waitingSlideUp = target;
    host::logEvent("lock", "device passcode asked for " + target);
    return;
  }
  host::logEvent("lock", "slid up to " + target);
  askUnlock(sharedOf("SBLockScreenManager"), kPasscodeUnlockSource);
  bringToFront(target);
}

// ---- SBLockScreenManager ----

BOOL isUILocked(id, SEL) {
  return springBoard().locked ? 1 : 0;
}
void lockUI(id, SEL, int source, id) {
  if (springBoard().locked) return;
  springBoard().locked = true;
  startPasscodeGrace();
  springBoard().openFolder.clear();
  closeSwitcher();
  closeShortcutMenu();
  host::logEvent("lock", "locked (source " + std::to_string(source) + ")");
  lockScreenWantsMatching(true);
  postLockState(true);
  noteScreenChanged();
  setScreen(false, source);
}
BOOL unlockUI(id, SEL, int source, id) {
  if (!springBoard().locked || source == kWakeSource) return 0;
  springBoard().locked = false;
  deviceLock().passcodeLocked = false;
  host::logEvent("lock", "unlocked (source " + std::to_string(source) + ")");
  lockScreenWantsMatching(false);
  postLockState(false);
  noteScreenChanged();
  if (!springBoard().screenOn) setScreen(true, source);
  return 1;
}
// Before iOS 10 the manager's unlock answers nothing.
void unlockUIOld(id self, SEL cmd, int source, id options) {
  unlockUI(self, cmd, source, options);
}
// A match the lock screen receives unlocks it.
void bioAuthenticated(id self, SEL, id) {
  askUnlock(self, 14);
}

// ---- The lock button ----

// Lights the screen for `source` where the backlight agrees (iOS 10 asks
// it); a locked device's lock screen then asks to be unlocked.
void wakeScreen(long source) {
  if (!atLeast(10) || send<BOOL>(sharedOf("SBBacklightController"),
                                 Sel("shouldTurnOnScreenForBacklightSource:"), source)) {
    setScreen(true, source);
    if (springBoard().locked) {
      askUnlock(sharedOf("SBLockScreenManager"), kWakeSource);
    }
  }
}

// ---- Leaving the front app ----

// quitTopApplication: (through iOS 9) and _handleGotoHomeScreenShortcut:
// (from iOS 10): the front app goes, the home screen shows.
void quitTopApplication(id, SEL, id) {
  if (springBoard().front != "home") bringToFront("home");
}

// What one press of the lock button does: wake a dark screen; otherwise
// lock an unlocked device, or darken a locked one.
void lockButtonPressed() {
  if (!springBoard().screenOn) {
    wakeScreen(kHardwareButtonSource);
  } else if (!springBoard().locked) {
    send<void>(sharedOf("SBLockScreenManager"), Sel("lockUIFromSource:withOptions:"),
               kHardwareButtonSource, id{nullptr});
  } else {
    setScreen(false, kHardwareButtonSource);
  }
}

void performSinglePressAction(id, SEL) {
  lockButtonPressed();
}
id buttonActions(id, SEL) {
  return sharedOf("SBLockHardwareButtonActions");
}
void singlePress(id self, SEL, id) {
  send<void>(buttonActions(self, nullptr), Sel("performSinglePressAction"));
}
id lockHardwareButton(id, SEL) {
  return sharedOf("SBLockHardwareButton");
}

void lockButtonDownWithSource(id, SEL, id, long) {}
void lockButtonUpWithSource(id, SEL, id, long) {
  lockButtonPressed();
}
void lockButtonDownFromSource(id, SEL, long) {}
void lockButtonUpFromSource(id, SEL, long) {
  lockButtonPressed();
}

// ---- Device lock and managed configuration ----

BOOL deviceHasPasscodeSet(id, SEL) {
  return system().passcode ? 1 : 0;
}
BOOL fingerprintUnlockAllowed(id, SEL) {
  return 1;
}

// ---- Wi-Fi ----

std::vector<Retained>& knownNetworkList() {
  static auto* list = new std::vector<Retained>();
  return *list;
}
// The device's network as the Wi-Fi framework describes it, with the
// password the device stores for it.
Value networkFromDevice(const Value& wifi) {
  if (wifi.isNone()) return {};
  Value::Dictionary network{{"BSSID", wifi["bssid"]}, {"SSID_STR", wifi["ssid"]}};
  if (!wifi["password"].asString().empty()) network["password"] = wifi["password"];
  return Value::dictionary(std::move(network));
}
// The networks the device knows, in the order it learnt them, and the one
// it is on (an equal record of it, as the framework hands out).
void joinNetwork(const Value& network, const Value& known) {
  platform::AutoreleasePool pool;
  knownNetworkList().clear();
  for (const auto& k : known.asArray()) {
    knownNetworkList().emplace_back(platform::makeObject(networkFromDevice(k)));
  }
  id manager = sharedOf("SBWiFiManager");
  id current = platform::makeObject(networkFromDevice(network));
  id* slot = static_cast<id*>(platform::ivarAddress(manager, "_currentNetwork"));
  if (slot == nullptr) return;
  Retained(current).take();  // the instance variable owns one reference
  if (*slot != nullptr) send<void>(*slot, Sel("release"));
  *slot = current;
}
id knownNetworks(id, SEL) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (auto& n : knownNetworkList()) send<void>(list, Sel("addObject:"), n.get());
  return list;
}

// ---- Actions ----

Value lockAction(const host::ActionRequest&, std::string*) {
  pressLockButton();
  return {};
}

Value unlockAction(const host::ActionRequest&, std::string* error) {
  if (!springBoard().locked) {
    *error = "the device is not locked";
    return {};
  }
  if (!springBoard().screenOn) setScreen(true, kHardwareButtonSource);
  askUnlock(sharedOf("SBLockScreenManager"), kPasscodeUnlockSource);
  std::string waiting = std::move(deviceLock().waitingSlideUp);
  deviceLock().waitingSlideUp.clear();
  if (!waiting.empty() && !springBoard().locked) bringToFront(waiting);
  return {};
}

// slide-up BUNDLE-ID: on the lock screen, the gesture up to an app
// (Handoff, a suggested app) finishes.
Value slideUpAction(const host::ActionRequest& request, std::string* error) {
  if (!cataloguedHere("SBLockScreenSlideUpToAppController") || !springBoard().locked ||
      applicationNamed(request.args[0]) == nullptr) {
    *error = "no slide-up to " + request.args[0] + " here (iOS 8 and 9, locked, installed app)";
    return {};
  }
  Retained controller =
      Retained::adopt(host::newObject(platform::classNamed("SBLockScreenSlideUpToAppController")));
  stateOf<SlideUpState>(controller.get()).target = request.args[0];
  host::logEvent("lock", "slide up toward " + request.args[0]);
  send<void>(controller.get(), Sel("finalizeGesture"));
  return {};
}

// screen on|off: the display wakes (a touch, the device raised) or sleeps
// (the idle timer) through the backlight; the lock stays as it is.
Value screenAction(const host::ActionRequest& request, std::string* error) {
  if (request.args[0] == "on") {
    wakeScreen(kIdleSource);
  } else if (request.args[0] == "off") {
    setScreen(false, kIdleSource);
  } else {
    *error = "expected screen on|off";
  }
  return {};
}

}  // namespace

// The hardware button object from iOS 10.2 on; SpringBoard's own handlers
// with a button argument before (iOS 10.0 and 10.1), without one earlier.
void pressLockButton() {
  id app = sharedOf("SpringBoard");
  if (platform::respondsTo(app, Sel("lockHardwareButton"))) {
    send<void>(lockHardwareButton(nullptr, nullptr), Sel("singlePress:"), id{nullptr});
  } else if (platform::respondsTo(app, Sel("_lockButtonDown:fromSource:"))) {
    send<void>(app, Sel("_lockButtonDown:fromSource:"), id{nullptr},
               static_cast<long>(kHardwareButtonSource));
    send<void>(app, Sel("_lockButtonUp:fromSource:"), id{nullptr},
               static_cast<long>(kHardwareButtonSource));
  } else {
    send<void>(app, Sel("_lockButtonDownFromSource:"), static_cast<long>(kHardwareButtonSource));
    send<void>(app, Sel("_lockButtonUpFromSource:"), static_cast<long>(kHardwareButtonSource));
  }
}

// SpringBoard's lock-button handlers, added to the SpringBoard class.
void addLockButtons(ClassBuilder& springBoardClass) {
  addCatalogued(springBoardClass, "-lockHardwareButton", imp(lockHardwareButton));
  addCatalogued(springBoardClass, "-_lockButtonDown:fromSource:", imp(lockButtonDownWithSource));
  addCatalogued(springBoardClass, "-_lockButtonUp:fromSource:", imp(lockButtonUpWithSource));
  addCatalogued(springBoardClass, "-_lockButtonDownFromSource:", imp(lockButtonDownFromSource));
  addCatalogued(springBoardClass, "-_lockButtonUpFromSource:", imp(lockButtonUpFromSource));
  addCatalogued(springBoardClass, "-quitTopApplication:", imp(quitTopApplication));
  addCatalogued(springBoardClass, "-_handleGotoHomeScreenShortcut:", imp(quitTopApplication));
}

void defineSpringBoardLock() {
  ClassBuilder("SBLockScreenManager", "NSObject")
      .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("isUILocked", imp(isUILocked), "C@:")
      .instance("lockUIFromSource:withOptions:", imp(lockUI), "v@:i@")
      .instance("unlockUIFromSource:withOptions:", atLeast(10) ? imp(unlockUI) : imp(unlockUIOld),
                atLeast(10) ? "C@:i@" : "v@:i@")
      .instance("_bioAuthenticated:", imp(bioAuthenticated), "v@:@")
      .build();
  if (cataloguedHere("SBLockHardwareButton")) {
    ClassBuilder("SBLockHardwareButton", "NSObject")
        .instance("singlePress:", imp(singlePress), "v@:@")
        .instance("buttonActions", imp(buttonActions), "@@:")
        .build();
    ClassBuilder("SBLockHardwareButtonActions", "NSObject")
        .instance("performSinglePressAction", imp(performSinglePressAction), "v@:")
        .build();
  }
  ClassBuilder backlight("SBBacklightController", "NSObject");
  backlight.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("setBacklightFactor:source:",
                atLeast(10) ? imp(setBacklightFactor) : imp(setBacklightFactorOld),
                atLeast(10) ? "v@:fq" : "v@:fi");
  if (atLeast(10)) {
    backlight.instance("screenIsOn", imp(screenIsOn), "C@:")
        .instance("_animateBacklightToFactor:duration:source:silently:completion:",
                  imp(animateBacklight), "v@:fdqC@?")
        .instance("shouldTurnOnScreenForBacklightSource:", imp(shouldTurnOnScreen), "C@:q");
  } else {
    backlight.instance("screenIsOff", imp(screenIsOff), "C@:");
  }
  backlight.build();
  ClassBuilder("SBDeviceLockController", "NSObject")
      .classMethod("sharedController", imp(sharedInstanceOf), "@@:")
      .instance("deviceHasPasscodeSet", imp(deviceHasPasscodeSet), "C@:")
      .instance("enablePasscodeLockImmediately", imp(enablePasscodeLockImmediately), "v@:")
      .instance(atLeast(10) ? "_updateDeviceLockedState" : "_lockStateChangedFrom:to:",
                atLeast(10) ? imp(updateDeviceLockedState) : imp(lockStateChanged),
                atLeast(10) ? "v@:" : "v@:ii")
      .build();
  if (cataloguedHere("SBLockScreenSlideUpToAppController")) {
    ClassBuilder("SBLockScreenSlideUpToAppController", "NSObject")
        .instance("targetApp", imp(slideUpTargetApp), "@@:")
        .instance("finalizeGesture", imp(slideUpFinalize), "v@:")
        .build();
  }
  ClassBuilder("MCProfileConnection", "NSObject")
      .classMethod("sharedConnection", imp(sharedInstanceOf), "@@:")
      .instance("isPasscodeSet", imp(deviceHasPasscodeSet), "C@:")
      .instance("isFingerprintUnlockAllowed", imp(fingerprintUnlockAllowed), "C@:")
      .build();
  ClassBuilder("SBWiFiManager", "NSObject")
      .ivar("_currentNetwork")
      .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("knownNetworks", imp(knownNetworks), "@@:")
      .build();
  joinNetwork(host::request("device-get", {{"key", Value::string("wifi")}})["value"],
              host::request("device-get", {{"key", Value::string("known-wifi")}})["value"]);
  host::onCommand("wifi", [](const Value& command) {
    joinNetwork(command["network"], command["known"]);
    return Value::Dictionary{};
  });
  host::registerAction("lock", lockAction);
  host::registerAction("unlock", unlockAction);
  host::registerAction("screen", screenAction);
  host::registerAction("slide-up", slideUpAction);
  host::registerQuery("locked", [](const std::vector<std::string>&) {
    return Value::boolean(springBoard().locked);
  });
}

// The brightness set through the controller with this version's source type.
void setBacklightLevel(float factor, int source) {
  id backlight = sharedOf("SBBacklightController");
  if (atLeast(10)) {
    send<void>(backlight, Sel("setBacklightFactor:source:"), factor, static_cast<long>(source));
  } else {
    send<void>(backlight, Sel("setBacklightFactor:source:"), factor, source);
  }
}

// The manager asked to unlock, with its own return type of this version
// (nothing before iOS 10); true iff it says it unlocked (always before).
bool askUnlock(id manager, int source) {
  if (atLeast(10)) {
    return send<BOOL>(manager, Sel("unlockUIFromSource:withOptions:"), source, id{nullptr}) != 0;
  }
  send<void>(manager, Sel("unlockUIFromSource:withOptions:"), source, id{nullptr});
  return true;
}

}  // namespace kv::sim::frameworks
