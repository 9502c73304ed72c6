// SpringBoard's classes, defined in dependency order; the classes that
// several modules give methods to (the application object, the UI
// controller, the main workspace, the user agent); and SpringBoard's start.
#include "sim/frameworks/springboard.h"

#include "platform/functions.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/notification_center.h"
#include "sim/frameworks/system.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

void startSpringBoardBiometrics();

using host::ClassBuilder;
using host::imp;

namespace {

void defineSharedClasses() {
  ClassBuilder ui("SBUIController", "NSObject");
  ui.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:");
  addActivations(ui);
  addSwitcherControls(ui);
  addBatteryState(ui);
  ui.build();

  if (cataloguedHere("SBMainWorkspace")) {
    ClassBuilder workspace("SBMainWorkspace", "NSObject");
    workspace.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:");
    addTransactions(workspace);
    addOpenRequests(workspace);
    workspace.build();
  }
  if (cataloguedHere("SBUserAgent")) {
    ClassBuilder userAgent("SBUserAgent", "NSObject");
    userAgent.classMethod("sharedUserAgent", imp(sharedInstanceOf), "@@:");
    addSystemOpens(userAgent);
    addBulletinLaunches(userAgent);
    userAgent.build();
  }

  // SpringBoard is FrontBoard's system app.
  ClassBuilder application("SpringBoard", "FBSystemApp");
  addHomeButton(application);
  addLockButtons(application);
  addURLOpens(application);
  addApplicationLaunch(application);
  addPowerActions(application);
  addFrontDisplayChange(application);
  addReturnToHomeScreen(application);
  application.build();
}

}  // namespace

void defineSpringBoard() {
  defineSpringBoardApps();
  defineSpringBoardServices();
  defineSpringBoardLock();
  defineSpringBoardWorkspace();
  defineSpringBoardOpenRequests();
  defineSpringBoardBulletins();
  defineSystemSounds();
  defineNotificationLists();
  defineNotificationSource();
  defineSpringBoardSwitcher();
  defineSpringBoardShortcuts();
  defineSpringBoardLaunchers();
  defineSpringBoardPower();
  defineSpringBoardSystem();
  defineSpringBoardControlCenter();
  defineSpringBoardEventQueue();
  defineSharedClasses();
  defineSpringBoardBiometrics();
}

// SpringBoard's own start, after injected libraries have loaded: the
// application object, the controllers, the biometric observers, and last the
// UI controller; then the platform announces that start-up finished.
void startSpringBoard() {
  for (const char* name : {"SpringBoard", "SBApplicationController", "SBIconController",
                           "SBLockScreenManager", "SBBacklightController", "SBWiFiManager"}) {
    sharedOf(name);
  }
  giveIconControllerItsModel(sharedOf("SBIconController"));
  startSpringBoardBiometrics();
  sharedOf("SBUIController");
  notify_post("com.apple.springboard.finishedstartup");
  noteScreenChanged();
  host::logEvent("springboard", std::string("home screen with ") +
                                    std::to_string(installedApps().size()) + " apps");
}

}  // namespace kv::sim::frameworks
