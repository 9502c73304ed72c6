// Settings-app actions other than entering panes: airplane mode, the reset
// of the home-screen layout, fingerprint unlock switched back on, URLs of
// the product's own pane, and the relock after the Touch ID screen.
#include <string>

#include "base/hardware.h"
#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/hook.h"
#include "platform/runtime.h"
#include "processes/settings_guards.h"
#include "processes/settings_selectors.h"
#include "processes/settings_state.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

using platform::Hook;

constexpr platform::Integer kAlertStyle = 1;          // UIAlertControllerStyleAlert
constexpr platform::Integer kDefaultActionStyle = 0;  // UIAlertActionStyleDefault
constexpr platform::Integer kCancelActionStyle = 1;   // UIAlertActionStyleCancel

id alertAction(const char* title, platform::Integer style, id handler) {
  return platform::sendClass<id>(platform::classNamed("UIAlertAction"), sel::kActionWithTitle,
                                 platform::makeString(title), style, handler);
}

// The relock a fresh enrollment needs happens in SpringBoard, which locks
// the device when it is asked to.
void askForRelockIfNeeded() {
  if (!settings::current().enabled) return;
  if (!relockRequired()) return;
  if (base::enrolledIdentities() >= 1) settings::post(settings::Note::kLockAfterFiveSeconds);
}

}  // namespace

template <Family F>
void setAirplaneMode(id self, SEL cmd, id value, id specifier) {
  SettingsGuardState& s = guardState();
  if (protectionInForce() && !s.airplaneAllowedOnce && settings::current().enabled &&
      listed(platform::makeString("AIRPLANE_MODE"))) {
    dropPending();
    s.pending = Pending::kAirplane;
    s.airplaneValue.reset(value);
    // The switch springs back at once: airplane mode has not changed.
    bool requested = platform::boolOf(value).value_or(platform::integerOf(value).value_or(0) != 0);
    id control = platform::sendIfResponds<id>(specifier, sel::kPropertyForKey,
                                              platform::makeString("control"));
    platform::sendIfResponds(control, sel::kSetOn, BOOL{requested ? BOOL{0} : BOOL{1}});
    askSpringBoard("bapc");
    return;
  }
  Hook<&setAirplaneMode<F>>::original(self, cmd, value, specifier);
}

void resetIconPositions(id self, SEL cmd, id specifier) {
  SettingsGuardState& s = guardState();
  if (protectionInForce() && !s.resetAllowedOnce && settings::current().enabled &&
      settings::current().protectMovingApps) {
    dropPending();
    s.pending = Pending::kResetIcons;
    askSpringBoard("ricn");
    return;
  }
  Hook<&resetIconPositions>::original(self, cmd, specifier);
}

void setTouchIDUnlockEnabled(id self, SEL cmd, id value, id specifier) {
  Hook<&setTouchIDUnlockEnabled>::original(self, cmd, value, specifier);
  if (platform::integerOf(value).value_or(0) == 0) return;
  id alert = platform::sendClass<id>(
      platform::classNamed("UIAlertController"), sel::kAlertWithTitle,
      platform::makeString("Kavelin"),
      platform::makeString("Please lock your device in order to re-enable Kavelin"), kAlertStyle);
  if (alert == nullptr) return;
  platform::send<void>(alert, sel::kAddAction, alertAction("Ok", kCancelActionStyle, nullptr));
  // "Lock Now" asks SpringBoard to lock the device.
  platform::BlockOf<void(id)> lockNow = ^(id) {
    settings::post(settings::Note::kLockDeviceNow);
  };
  platform::send<void>(alert, sel::kAddAction,
                       alertAction("Lock Now", kDefaultActionStyle, platform::asObject(lockNow)));
  platform::send<void>(self, sel::kPresent, alert, BOOL{1}, id{nullptr});
}

void processURL(id self, SEL cmd, id url) {
  // The product's own pane opens from the list only, where it is guarded.
  std::string text = platform::toString(platform::sendIfResponds<id>(url, sel::kDescription));
  if (text.find("Kavelin") != std::string::npos) return;
  Hook<&processURL>::original(self, cmd, url);
}

void mesaSettingsDidDisappear(id self, SEL cmd, BOOL animated) {
  Hook<&mesaSettingsDidDisappear>::original(self, cmd, animated);
  askForRelockIfNeeded();
}

void touchIdPasscodeDidDisappear(id self, SEL cmd, BOOL animated) {
  Hook<&touchIdPasscodeDidDisappear>::original(self, cmd, animated);
  askForRelockIfNeeded();
}

template void setAirplaneMode<Family::kPrefs>(id, SEL, id, id);
template void setAirplaneMode<Family::kPSUI>(id, SEL, id, id);

}  // namespace kv::processes
