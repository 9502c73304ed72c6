// Launches SpringBoard's user agent performs for the system.
#include "springboard/launch_agent.h"

#include "base/flags.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kScreenIsOn("screenIsOn");
const platform::Sel kScreenIsOff("screenIsOff");
const platform::Sel kLockHardwareButton("lockHardwareButton");
const platform::Sel kButtonActions("buttonActions");
const platform::Sel kPerformSinglePressAction("performSinglePressAction");
const platform::Sel kLockButtonDownWithEvent("_lockButtonDown:fromSource:");
const platform::Sel kLockButtonUpWithEvent("_lockButtonUp:fromSource:");
const platform::Sel kLockButtonDownFromSource("_lockButtonDownFromSource:");
const platform::Sel kLockButtonUpFromSource("_lockButtonUpFromSource:");
const platform::Sel kSection("section");

using platform::Integer;
using platform::Retained;
using platform::send;
using platform::sendIfResponds;

constexpr Integer kWakeSource = 3;

bool screenOff() {
  Class backlight = platform::classNamed("SBBacklightController");
  id controller = platform::sendClass<id>(backlight, kSharedInstance);
  if (platform::instancesRespondTo(backlight, kScreenIsOn))
    return send<BOOL>(controller, kScreenIsOn) == 0;
  return sendIfResponds<BOOL>(controller, kScreenIsOff) != 0;
}

// One press of the lock button wakes the screen, so that the prompt is seen.
void wakeScreen() {
  id app = core::application();
  if (base::flags().isIOS10OrLater && platform::respondsTo(app, kLockHardwareButton)) {
    id actions = sendIfResponds<id>(send<id>(app, kLockHardwareButton), kButtonActions);
    sendIfResponds(actions, kPerformSinglePressAction);
  } else if (platform::respondsTo(app, kLockButtonDownWithEvent)) {
    send<void>(app, kLockButtonDownWithEvent, id{nullptr}, kWakeSource);
    sendIfResponds(app, kLockButtonUpWithEvent, id{nullptr}, kWakeSource);
  } else {
    sendIfResponds(app, kLockButtonDownFromSource, kWakeSource);
    sendIfResponds(app, kLockButtonUpFromSource, kWakeSource);
  }
}

id bulletinSection(id bulletin) {
  return sendIfResponds<id>(bulletin, kSection);
}

// A bulletin's launch: its arguments kept, its app named.
template <typename... A>
bool holdBackBulletin(id self, SEL cmd, id bulletin, A... args) {
  id section = bulletinSection(bulletin);
  if (!isProtectedApp(section) || !gatePasses()) return false;
  Retained call = platform::invocationOf(self, cmd, bulletin, args...);
  platform::retainArguments(call.get());
  return holdBack(call.get(), section);
}

}  // namespace

BOOL agentOpenApplication(id self, SEL cmd, id bundleIdentifier, id url, int source, BOOL animated,
                          id options) {
  if (isProtectedApp(bundleIdentifier) && gatePasses()) {
    Retained call =
        platform::invocationOf(self, cmd, bundleIdentifier, url, source, animated, options);
    if (call) {
      platform::retainArguments(call.get());
      core::setInvocation(call.get());
      if (screenOff()) wakeScreen();
      core::setRestrictedTitle(bundleIdentifier);
      core::showAlert();
      return 1;
    }
  }
  return platform::Hook<&agentOpenApplication>::original(self, cmd, bundleIdentifier, url, source,
                                                         animated, options);
}

BOOL bulletinLaunchWithResponse(id self, SEL cmd, id bulletin, id action, id response, int origin) {
  if (holdBackBulletin(self, cmd, bulletin, action, response, origin)) return 1;
  return platform::Hook<&bulletinLaunchWithResponse>::original(self, cmd, bulletin, action,
                                                               response, origin);
}

BOOL bulletinLaunchWithAction(id self, SEL cmd, id bulletin, id action, int origin) {
  if (holdBackBulletin(self, cmd, bulletin, action, origin)) return 1;
  return platform::Hook<&bulletinLaunchWithAction>::original(self, cmd, bulletin, action, origin);
}

BOOL bulletinLaunch(id self, SEL cmd, id bulletin, Integer origin) {
  if (holdBackBulletin(self, cmd, bulletin, origin)) return 0;
  return platform::Hook<&bulletinLaunch>::original(self, cmd, bulletin, origin);
}

}  // namespace kv::springboard
