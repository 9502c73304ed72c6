// Powering off, rebooting and respringing as each system does it, and the
// battery's critical level. The person's slide to power off goes through
// the power-down screen (SBPowerDownController); the system's reboot and
// respring requests go through SpringBoard (through iOS 9) or its restart
// manager (iOS 10 and later); every path ends in FrontBoard's system service
// (or, on iOS 8, SpringBoard's own power-down), which the device obeys:
// "power off", "power reboot" or "power respring" in the event log. The
// "power-off", "reboot", "respring-request", "backboard" and "battery"
// actions.
#include <string>

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

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

// The user's brightness, as SpringBoard keeps it in its defaults.
constexpr float kUserBrightness = 0.5f;
// The power-down screen dims the display to this factor.
constexpr float kPowerDownDim = 0.2f;

struct RequestState {
  std::string reason;
};

bool gPowerDownScreen = false;

void devicePower(const char* what) {
  host::logEvent("power", what);
}

id service() {
  return sharedOf("FBSystemService");
}

// ---- FrontBoard's system service: the device obeys ----

void serviceShutdown(id, SEL, unsigned long long) {
  devicePower("off");
}
void serviceReboot(id, SEL, BOOL) {
  devicePower("reboot");
}
void serviceRelaunch(id, SEL, BOOL) {
  devicePower("respring");
}

// -[FBSystemApp sendActionsToBackboard:]: a restart action restarts
// SpringBoard; other actions are only recorded.
void sendActionsToBackboard(id, SEL, id actions) {
  id all = send<id>(actions, Sel("allObjects"));
  bool restart = false;
  std::string names;
  for (platform::UInteger i = 0; i < platform::arrayCount(all); ++i) {
    std::string name = platform::classNameOf(platform::arrayObjectAt(all, i));
    restart |= name == "BKSRestartAction";
    names += (names.empty() ? "" : " ") + name;
  }
  host::logEvent("backboard", "actions " + names);
  if (restart) devicePower("respring");
}

// ---- SpringBoard's own power methods ----

void springBoardPowerDownNow(id, SEL) {
  if (cataloguedHere("FBSystemService", "-shutdownWithOptions:")) {
    send<void>(service(), Sel("shutdownWithOptions:"), 0ULL);
  } else {
    devicePower("off");
  }
}
void springBoardPowerDown(id self, SEL) {
  send<void>(self, Sel("_powerDownNow"));
}
// iOS 10 and later: the restart manager powers off.
void springBoardPowerDownRequested(id, SEL, id) {
  send<void>(sharedOf("SBRestartManager"), Sel("shutdownForReason:"),
             platform::makeString("power down requested"));
}
void springBoardRebootNow(id, SEL) {
  send<void>(service(), Sel("shutdownAndReboot:"), BOOL{1});
}
void springBoardRebootNowWith(id, SEL, id) {
  send<void>(service(), Sel("shutdownAndReboot:"), BOOL{1});
}
void springBoardReboot(id self, SEL) {
  if (platform::respondsTo(self, Sel("_rebootNow"))) {
    send<void>(self, Sel("_rebootNow"));
  } else {
    send<void>(self, Sel("_rebootNow:"), id{nullptr});
  }
}
void springBoardRelaunchNow(id, SEL) {
  send<void>(service(), Sel("exitAndRelaunch:"), BOOL{1});
}
void springBoardRelaunch(id self, SEL) {
  send<void>(self, Sel("_relaunchSpringBoardNow"));
}

// ---- The restart manager (iOS 10 and later) ----

void restartWithRequest(id, SEL, id request) {
  host::logEvent("restart", "respring: " + stateOf<RequestState>(request).reason);
  send<void>(service(), Sel("exitAndRelaunch:"), BOOL{1});
}
void shutdownForReason(id, SEL, id reason) {
  host::logEvent("restart", "power off: " + platform::toString(reason));
  send<void>(service(), Sel("shutdownWithOptions:"), 0ULL);
}
void rebootForReason(id, SEL, id reason) {
  host::logEvent("restart", "reboot: " + platform::toString(reason));
  send<void>(service(), Sel("shutdownAndReboot:"), BOOL{1});
}
id requestReason(id self, SEL) {
  return platform::makeString(stateOf<RequestState>(self).reason);
}

// ---- The power-down screen ----

void setBrightness(float factor) {
  setBacklightLevel(factor, 0);
}

// The slider reached its end: the controller powers down.
void powerDownViewRequest(id self, SEL, id) {
  send<void>(self, Sel("powerDown"));
}
void powerDownControllerPowerDown(id, SEL) {
  id app = sharedOf("SpringBoard");
  if (platform::respondsTo(app, Sel("powerDownRequested:"))) {
    send<void>(app, Sel("powerDownRequested:"), id{nullptr});
  } else {
    send<void>(app, Sel("powerDown"));
  }
}
// The screen's Cancel: it goes and the brightness comes back.
void powerDownCancel(id, SEL) {
  if (!gPowerDownScreen) return;
  gPowerDownScreen = false;
  host::logEvent("power-down", "screen closed");
}

// ---- The battery ----

void updateBatteryState(id, SEL, id state) {
  bool critical =
      send<BOOL>(platform::objectForKey(state, "AtCriticalLevel"), Sel("boolValue")) != 0;
  host::logEvent("battery", critical ? "critical" : "normal");
}

// ---- Actions ----

// power-off: hold the lock button, the power-down screen dims the display,
// slide to power off.
Value powerOffAction(const host::ActionRequest&, std::string* error) {
  if (!springBoard().screenOn) {
    *error = "the screen is off: no power-down screen";
    return {};
  }
  gPowerDownScreen = true;
  host::logEvent("power-down", "screen shows");
  setBrightness(kPowerDownDim);
  id controller = sharedOf("SBPowerDownController");
  Retained view = Retained::adopt(host::newObject(platform::classNamed("UIView")));
  send<void>(controller, Sel("powerDownViewRequestPowerDown:"), view.get());
  return {};
}

Value rebootAction(const host::ActionRequest&, std::string*) {
  id manager = sharedOf("SBRestartManager");
  if (manager != nullptr) {
    send<void>(manager, Sel("rebootForReason:"), platform::makeString("settings changed"));
  } else {
    send<void>(sharedOf("SpringBoard"), Sel("reboot"));
  }
  return {};
}

Value respringRequestAction(const host::ActionRequest&, std::string*) {
  id manager = sharedOf("SBRestartManager");
  if (manager == nullptr) {
    send<void>(sharedOf("SpringBoard"), Sel("relaunchSpringBoard"));
    return {};
  }
  Retained request =
      Retained::adopt(host::newObject(platform::classNamed("SBRestartTransitionRequest")));
  stateOf<RequestState>(request.get()).reason = "settings changed";
  send<void>(manager, Sel("restartWithTransitionRequest:"), request.get());
  return {};
}

// backboard restart|other: SpringBoard sends backboard a set of actions,
// with a restart action or with another one.
Value backboardAction(const host::ActionRequest& request, std::string* error) {
  const std::string& kind = request.args[0];
  if (kind != "restart" && kind != "other") {
    *error = "expected backboard restart|other";
    return {};
  }
  Retained action = Retained::adopt(
      host::newObject(platform::classNamed(kind == "restart" ? "BKSRestartAction" : "BKSAction")));
  id set =
      platform::sendClass<id>(platform::classNamed("NSSet"), Sel("setWithObject:"), action.get());
  send<void>(sharedOf("SpringBoard"), Sel("sendActionsToBackboard:"), set);
  return {};
}

// battery critical|normal: the battery's state reaches SpringBoard; at the
// critical level the system powers off.
Value batteryAction(const host::ActionRequest& request, std::string* error) {
  const std::string& level = request.args[0];
  if (level != "critical" && level != "normal") {
    *error = "expected battery critical|normal";
    return {};
  }
  bool critical = level == "critical";
  id state = platform::sendClass<id>(
      platform::classNamed("NSDictionary"), Sel("dictionaryWithObject:forKey:"),
      platform::makeBool(critical), platform::makeString("AtCriticalLevel"));
  send<void>(sharedOf("SBUIController"), Sel("updateBatteryState:"), state);
  if (!critical) return {};
  if (atLeast(10)) {
    send<void>(service(), Sel("shutdownWithOptions:"), 0ULL);
  } else {
    send<void>(sharedOf("SpringBoard"), Sel("powerDown"));
  }
  return {};
}

}  // namespace

void addPowerActions(ClassBuilder& springBoardClass) {
  addCatalogued(springBoardClass, "-powerDown", imp(springBoardPowerDown));
  addCatalogued(springBoardClass, "-_powerDownNow", imp(springBoardPowerDownNow));
  addCatalogued(springBoardClass, "-powerDownRequested:", imp(springBoardPowerDownRequested));
  addCatalogued(springBoardClass, "-reboot", imp(springBoardReboot));
  addCatalogued(springBoardClass, "-_rebootNow", imp(springBoardRebootNow));
  addCatalogued(springBoardClass, "-_rebootNow:", imp(springBoardRebootNowWith));
  addCatalogued(springBoardClass, "-relaunchSpringBoard", imp(springBoardRelaunch));
  addCatalogued(springBoardClass, "-_relaunchSpringBoardNow", imp(springBoardRelaunchNow));
}

void addBatteryState(ClassBuilder& uiController) {
  addCatalogued(uiController, "-updateBatteryState:", imp(updateBatteryState));
}

void defineSpringBoardPower() {
  ClassBuilder serviceClass("FBSystemService", "NSObject");
  serviceClass.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:");
  addCatalogued(serviceClass, "-shutdownWithOptions:", imp(serviceShutdown));
  addCatalogued(serviceClass, "-shutdownAndReboot:", imp(serviceReboot));
  addCatalogued(serviceClass, "-exitAndRelaunch:", imp(serviceRelaunch));
  if (cataloguedHere("FBSystemService")) serviceClass.build();

  ClassBuilder systemApp("FBSystemApp", "UIApplication");
  addCatalogued(systemApp, "-sendActionsToBackboard:", imp(sendActionsToBackboard));
  systemApp.build();
  ClassBuilder("BKSAction", "NSObject").build();
  ClassBuilder("BKSRestartAction", "BKSAction").build();

  if (cataloguedHere("SBRestartManager")) {
    ClassBuilder manager("SBRestartManager", "NSObject");
    addCatalogued(manager, "-restartWithTransitionRequest:", imp(restartWithRequest));
    addCatalogued(manager, "-shutdownForReason:", imp(shutdownForReason));
    addCatalogued(manager, "-rebootForReason:", imp(rebootForReason));
    manager.build();
    ClassBuilder("SBRestartTransitionRequest", "NSObject")
        .instance("reason", imp(requestReason), "@@:")
        .build();
  }

  ClassBuilder controller("SBPowerDownController", "UIViewController");
  addCatalogued(controller, "-powerDownViewRequestPowerDown:", imp(powerDownViewRequest));
  addCatalogued(controller, "-powerDown", imp(powerDownControllerPowerDown));
  controller.instance("cancel", imp(powerDownCancel), "v@:");
  controller.build();

  // The user's brightness, in SpringBoard's defaults.
  platform::AutoreleasePool pool;
  id domain = platform::makeString("com.apple.springboard");
  id key = platform::makeString("SBBacklightLevel2");
  CFPreferencesSetAppValue(platform::cf(key),
                           platform::sendClass<id>(platform::classNamed("NSNumber"),
                                                   Sel("numberWithFloat:"), kUserBrightness),
                           platform::cf(domain));
  CFPreferencesAppSynchronize(platform::cf(domain));

  host::registerAction("power-off", powerOffAction);
  host::registerAction("reboot", rebootAction);
  host::registerAction("respring-request", respringRequestAction);
  host::registerAction("backboard", backboardAction);
  host::registerAction("battery", batteryAction);
  host::registerQuery("power-down-screen", [](const std::vector<std::string>&) {
    return Value::boolean(gPowerDownScreen);
  });
}

}  // namespace kv::sim::frameworks
