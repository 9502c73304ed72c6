// SpringBoard's answers: each "allowed" notification repeats the action the
// Settings app held back for it, once, with the flag that lets the repeat
// through its guard; then the held action is forgotten. An answer with
// nothing of its kind held does nothing.
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "processes/settings_guards.h"
#include "processes/settings_language.h"
#include "processes/settings_selectors.h"
#include "processes/settings_state.h"
#include "settings/notifications.h"

namespace kv::processes {

namespace {

using settings::Note;

// True iff an action of kind `kind` waits; anything else is left alone.
bool waiting(Pending kind) {
  return guardState().pending == kind;
}

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), sel::kSharedApplication);
}

// The navigation a held push belongs to: the one remembered, or the one
// holding the remembered list controller.
id navigationOf(id held) {
  if (isKind(held, "UINavigationController")) return held;
  return platform::sendIfResponds<id>(held, sel::kNavigationController);
}

void allowedToEnter(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                    CFDictionaryRef) {
  if (!waiting(Pending::kPush)) return;
  SettingsGuardState& s = guardState();
  {
    OnceFlag replay(s.replaying);
    platform::send<void>(navigationOf(s.listController.get()), sel::kPush, s.viewController.get(),
                         BOOL{1});
  }
  dropPending();
}

void allowedToEnter11(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                      CFDictionaryRef) {
  if (!waiting(Pending::kPane)) return;
  SettingsGuardState& s = guardState();
  {
    OnceFlag replay(s.replaying);
    platform::send<void>(s.listController.get(), sel::kShowControllerFromSpecifier,
                         s.specifier.get());
  }
  dropPending();
}

void allowedToEnterWiFi(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                        CFDictionaryRef) {
  if (!waiting(Pending::kWiFi)) return;
  SettingsGuardState& s = guardState();
  {
    OnceFlag once(s.wifiAllowedOnce);
    id list = s.listController.get();
    id specifier =
        platform::sendIfResponds<id>(list, sel::kSpecifierForID, platform::makeString("WIFI"));
    if (specifier != nullptr) {
      platform::send<void>(list, sel::kShowControllerFromSpecifier, specifier);
    }
  }
  dropPending();
}

void allowedToEnteriPad(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                        CFDictionaryRef) {
  if (!waiting(Pending::kPad)) return;
  SettingsGuardState& s = guardState();
  {
    OnceFlag replay(s.replaying);
    id root = platform::sendIfResponds<id>(application(), sel::kRootController);
    platform::send<void>(root, sel::kSetViewControllers, s.viewControllers.get(), s.animated);
  }
  dropPending();
}

void allowedAirplane(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef) {
  if (!waiting(Pending::kAirplane)) return;
  SettingsGuardState& s = guardState();
  platform::Retained value = s.airplaneValue;
  dropPending();
  OnceFlag once(s.airplaneAllowedOnce);
  id list = platform::sendIfResponds<id>(application(), sel::kRootListController);
  id specifier = platform::sendIfResponds<id>(list, sel::kSpecifierForID,
                                              platform::makeString("AIRPLANE_MODE"));
  platform::sendIfResponds(list, sel::kSetAirplaneMode, value.get(), specifier);
}

void allowedResetIcons(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                       CFDictionaryRef) {
  if (!waiting(Pending::kResetIcons)) return;
  dropPending();
  OnceFlag once(guardState().resetAllowedOnce);
  id root = platform::sendIfResponds<id>(application(), sel::kRootController);
  id top = platform::sendIfResponds<id>(root, sel::kTopViewController);
  id specifier = platform::sendIfResponds<id>(top, sel::kSpecifierForID,
                                              platform::makeString("RESET_ICONS_LABEL"));
  platform::sendIfResponds(top, sel::kResetIconPositions, specifier);
}

void allowedLanguageRestart(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                            CFDictionaryRef) {
  if (waiting(Pending::kLanguage)) repeatLanguageChange();
}

void allowedToDelete(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef) {
  if (waiting(Pending::kDelete)) repeatDeletion();
}

// A prompt dismissed without success: what waited for it will not come.
void alertCancelled(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                    CFDictionaryRef) {
  dropPending();
}

}  // namespace

void observeSettingsAnswers() {
  settings::observe(Note::kAllowedToEnter, allowedToEnter);
  settings::observe(Note::kAllowedToEnter11, allowedToEnter11);
  settings::observe(Note::kAllowedToEnterWiFi, allowedToEnterWiFi);
  settings::observe(Note::kAllowedToEnteriPad, allowedToEnteriPad);
  settings::observe(Note::kAllowedAirplane, allowedAirplane);
  settings::observe(Note::kAllowedResetIcons, allowedResetIcons);
  settings::observe(Note::kAllowedLanguageRestart, allowedLanguageRestart);
  settings::observe(Note::kAllowedToDelete, allowedToDelete);
  settings::observe(Note::kAlertCancelled, alertCancelled);
}

}  // namespace kv::processes
