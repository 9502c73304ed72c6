// Powering off, rebooting and respringing.
#include "springboard/system_power.h"

#include <cstring>
#include <optional>
#include <string>

#include "base/flags.h"
#include "core/device.h"
#include "core/state.h"
#include "platform/functions.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

using platform::Retained;
using platform::Sel;
using platform::sendIfResponds;

const Sel kSharedInstance("sharedInstance");
const Sel kSharedApplication("sharedApplication");
const Sel kAlertManager("alertManager");
const Sel kDeactivateAll("deactivateAll");
const Sel kPowerDownRequested("powerDownRequested:");
const Sel kPowerDownNow("_powerDownNow");
const Sel kExitAndRelaunch("exitAndRelaunch:");
const Sel kReason("reason");
const Sel kAllObjects("allObjects");
const Sel kFloatValue("floatValue");
const Sel kBoolValue("boolValue");

// The titles: three spellings of the power-off one, each where its member
// puts it.
constexpr const char* kPowerOffService = "PowerOff Protection";
constexpr const char* kPowerOffScreen = "Power-Off Protection";
constexpr const char* kPowerOffSpringBoard = "Power-off Protection";
constexpr const char* kCriticalService = "Critical Battery";
constexpr const char* kCriticalSpringBoard = "Power-off (Battery Critical)";
constexpr const char* kRespring = "Power-Off Protection (Respring)";
constexpr const char* kReboot = "Power-Off Protection (Reboot)";
constexpr const char* kPowerOffReason = "Power-Off Protection (Power off)";

// What the battery said last.
bool gBatteryCritical = false;

enum class Setting { kPowerDown, kRespring };

// The gate of a power action: the guard gate and the action's setting.
bool powerGatePasses(Setting setting) {
  const settings::Settings& s = settings::current();
  if (!(setting == Setting::kPowerDown ? s.protectPowerDown : s.protectRespring)) return false;
  return gatePasses();
}

// A power-off at the battery's critical level asks only when that is
// wanted: the device must be able to save itself.
bool criticalPowerOffAsks() {
  return !gBatteryCritical || settings::current().protectPowerDownOnCriticalBattery;
}

// Parks a power action's call behind the prompt. Cancelling the prompt
// then locks the device on iOS 11, as the power-down screen would have.
bool holdPowerAction(const Retained& call, const std::string& title) {
  if (!call) return false;
  platform::retainArguments(call.get());
  core::CoordinatorState& c = core::state();
  c.powerActionPending = true;
  c.lockAfterCancel = true;
  platform::AutoreleasePool pool;
  return holdBack(call.get(), platform::makeString(title));
}

// A title naming the reason the system gave, when it gave a string.
std::string reasonTitle(id reason, const char* format, const char* fallback) {
  auto text = platform::stringOf(reason);
  return text ? std::string(format) + *text : std::string(fallback);
}

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), kSharedApplication);
}

// SpringBoard's own power-down of this system, the call the power-down
// screen's request leads to.
Retained springBoardPowerDownCall() {
  if (base::flags().isIOS10OrLater) {
    return platform::invocationOf(application(), kPowerDownRequested, id{nullptr});
  }
  return platform::invocationOf(application(), kPowerDownNow);
}

// The prompt shows over the dimmed power-down screen: full brightness
// while it is up, the user's level kept to be given back on cancel.
void brightenForPrompt() {
  if (!base::flags().isIOS10OrLater) return;
  platform::AutoreleasePool pool;
  Retained level = Retained::adopt(platform::ns(
      CFPreferencesCopyAppValue(platform::cf(platform::makeString("SBBacklightLevel2")),
                                platform::cf(platform::makeString("com.apple.springboard")))));
  if (platform::isKindOf(level.get(), "NSNumber")) {
    core::state().savedBacklightFactor = platform::send<float>(level.get(), kFloatValue);
  }
  core::setBacklightFactor(1.0f);
}

// The power-down screen's request: SpringBoard's power-down waits, and the
// screen stays until the prompt ends.
bool holdPowerDownScreen(id controller, Retained call) {
  if (!powerGatePasses(Setting::kPowerDown) || !holdPowerAction(call, kPowerOffScreen)) {
    return false;
  }
  core::state().powerDownController = Retained(controller);
  brightenForPrompt();
  return true;
}

// True iff `actions` (an NSSet) holds an action of exactly BKSRestartAction
// (not a subclass: other actions ride on it).
bool holdsRestartAction(id actions) {
  id all = sendIfResponds<id>(actions, kAllObjects);
  for (platform::UInteger i = 0; i < platform::arrayCount(all); ++i) {
    if (std::strcmp(platform::classNameOf(platform::arrayObjectAt(all, i)), "BKSRestartAction") ==
        0) {
      return true;
    }
  }
  return false;
}

}  // namespace

void updateBatteryState(id self, SEL cmd, id state) {
  gBatteryCritical = platform::sendIfResponds<BOOL>(
                         platform::objectForKey(state, "AtCriticalLevel"), kBoolValue) != 0;
  platform::Hook<&updateBatteryState>::original(self, cmd, state);
}

void serviceShutdown(id self, SEL cmd, unsigned long long options) {
  if (criticalPowerOffAsks() && powerGatePasses(Setting::kPowerDown)) {
    // Alerts on screen would cover the prompt.
    id workspace =
        platform::sendClass<id>(platform::classNamed("SBMainWorkspace"), kSharedInstance);
    sendIfResponds(sendIfResponds<id>(workspace, kAlertManager), kDeactivateAll);
    if (holdPowerAction(platform::invocationOf(self, cmd, options),
                        gBatteryCritical ? kCriticalService : kPowerOffService)) {
      return;
    }
  }
  platform::Hook<&serviceShutdown>::original(self, cmd, options);
}

void serviceReboot(id self, SEL cmd, BOOL reboot) {
  if (powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd, reboot), kPowerOffService)) {
    return;
  }
  platform::Hook<&serviceReboot>::original(self, cmd, reboot);
}

void serviceRelaunch(id self, SEL cmd, BOOL relaunch) {
  if (powerGatePasses(Setting::kRespring) &&
      holdPowerAction(platform::invocationOf(self, cmd, relaunch), kPowerOffService)) {
    return;
  }
  platform::Hook<&serviceRelaunch>::original(self, cmd, relaunch);
}

void powerDownViewRequest(id self, SEL cmd, id view) {
  if (holdPowerDownScreen(
          self, platform::invocationOf(application(), kPowerDownRequested, id{nullptr}))) {
    return;
  }
  platform::Hook<&powerDownViewRequest>::original(self, cmd, view);
}

void powerDownControllerPowerDown(id self, SEL cmd) {
  if (holdPowerDownScreen(self, springBoardPowerDownCall())) return;
  platform::Hook<&powerDownControllerPowerDown>::original(self, cmd);
}

void sendActionsToBackboard(id self, SEL cmd, id actions) {
  if (holdsRestartAction(actions) && powerGatePasses(Setting::kRespring) &&
      holdPowerAction(platform::invocationOf(self, cmd, actions), kRespring)) {
    return;
  }
  platform::Hook<&sendActionsToBackboard>::original(self, cmd, actions);
}

void restartWithRequest(id self, SEL cmd, id request) {
  if (powerGatePasses(Setting::kRespring)) {
    // iOS 11 restarts through FrontBoard's service; earlier the request
    // itself is kept.
    Retained call =
        base::flags().isIOS11
            ? platform::invocationOf(
                  platform::sendClass<id>(platform::classNamed("FBSystemService"), kSharedInstance),
                  kExitAndRelaunch, BOOL{1})
            : platform::invocationOf(self, cmd, request);
    id reason =
        platform::respondsTo(request, kReason) ? platform::send<id>(request, kReason) : nullptr;
    if (holdPowerAction(call, reasonTitle(reason, "Respring: ", kRespring))) return;
  }
  platform::Hook<&restartWithRequest>::original(self, cmd, request);
}

void shutdownForReason(id self, SEL cmd, id reason) {
  if (powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd, reason),
                      reasonTitle(reason, "Power off: ", kPowerOffReason))) {
    return;
  }
  platform::Hook<&shutdownForReason>::original(self, cmd, reason);
}

void rebootForReason(id self, SEL cmd, id reason) {
  if (powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd, reason),
                      reasonTitle(reason, "Reboot: ", kReboot))) {
    return;
  }
  platform::Hook<&rebootForReason>::original(self, cmd, reason);
}

void springBoardPowerDown(id self, SEL cmd) {
  if (criticalPowerOffAsks() && powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd),
                      gBatteryCritical ? kCriticalSpringBoard : kPowerOffSpringBoard)) {
    return;
  }
  platform::Hook<&springBoardPowerDown>::original(self, cmd);
}

void springBoardReboot(id self, SEL cmd) {
  if (powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd), kReboot)) {
    return;
  }
  platform::Hook<&springBoardReboot>::original(self, cmd);
}

void springBoardRebootNow(id self, SEL cmd) {
  if (powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd), kReboot)) {
    return;
  }
  platform::Hook<&springBoardRebootNow>::original(self, cmd);
}

void springBoardRebootNowWith(id self, SEL cmd, id argument) {
  if (powerGatePasses(Setting::kPowerDown) &&
      holdPowerAction(platform::invocationOf(self, cmd, argument), kReboot)) {
    return;
  }
  platform::Hook<&springBoardRebootNowWith>::original(self, cmd, argument);
}

void springBoardRelaunch(id self, SEL cmd) {
  if (powerGatePasses(Setting::kRespring) &&
      holdPowerAction(platform::invocationOf(self, cmd), kRespring)) {
    return;
  }
  platform::Hook<&springBoardRelaunch>::original(self, cmd);
}

}  // namespace kv::springboard
