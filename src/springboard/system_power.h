// Powering off, rebooting and respringing: every way SpringBoard asks for
// one waits for authentication while its setting is on, and the battery's
// critical level, which lets the system power off unasked.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBUIController updateBatteryState:]
void updateBatteryState(id self, SEL cmd, id state);
// -[FBSystemService shutdownWithOptions:]
void serviceShutdown(id self, SEL cmd, unsigned long long options);
// -[FBSystemService shutdownAndReboot:]
void serviceReboot(id self, SEL cmd, BOOL reboot);
// -[FBSystemService exitAndRelaunch:]
void serviceRelaunch(id self, SEL cmd, BOOL relaunch);
// -[SBPowerDownController powerDownViewRequestPowerDown:]
void powerDownViewRequest(id self, SEL cmd, id view);
// -[SBPowerDownController powerDown]
void powerDownControllerPowerDown(id self, SEL cmd);
// -[FBSystemApp sendActionsToBackboard:]
void sendActionsToBackboard(id self, SEL cmd, id actions);
// -[SBRestartManager restartWithTransitionRequest:]
void restartWithRequest(id self, SEL cmd, id request);
// -[SBRestartManager shutdownForReason:]
void shutdownForReason(id self, SEL cmd, id reason);
// -[SBRestartManager rebootForReason:]
void rebootForReason(id self, SEL cmd, id reason);
// -[SpringBoard powerDown]
void springBoardPowerDown(id self, SEL cmd);
// -[SpringBoard reboot]
void springBoardReboot(id self, SEL cmd);
// -[SpringBoard _rebootNow]
void springBoardRebootNow(id self, SEL cmd);
// -[SpringBoard _rebootNow:]
void springBoardRebootNowWith(id self, SEL cmd, id argument);
// -[SpringBoard relaunchSpringBoard]
void springBoardRelaunch(id self, SEL cmd);

}  // namespace kv::springboard
