// SpringBoard's classes, defined in dependency order, and its start-up.
#include "sim/frameworks/springboard.h"

#include "platform/functions.h"
#include "platform/runtime.h"
#include "sim/frameworks/system.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

void startSpringBoardBiometrics();

void defineSpringBoard() {
  defineSpringBoardApps();
  defineSpringBoardLock();
  defineSpringBoardWorkspace();
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
  startSpringBoardBiometrics();
  sharedOf("SBUIController");
  notify_post("com.apple.springboard.finishedstartup");
  host::logEvent("springboard", std::string("home screen with ") +
                                    std::to_string(installedApps().size()) + " apps");
}

}  // namespace kv::sim::frameworks
