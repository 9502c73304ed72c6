// The Settings app's interceptions: each replaces one platform method of
// the Settings app ("Preferences"), holds a protected action back while it
// asks SpringBoard to authenticate the owner, and lets it through otherwise.
#pragma once

#include "platform/objc.h"

namespace kv::processes {

// The two families of Settings classes: iOS 8's own, and PreferencesUI's.
enum class Family { kPrefs, kPSUI };

// Opening a pane from a tapped row (the list controller's own path).
template <Family F>
void showControllerFromSpecifier(id self, SEL cmd, id specifier);

// A pane pushed by the Settings root controller (not on iPad).
template <Family F>
void rootPush(id self, SEL cmd, id controller, BOOL animated);

// Any push on the application's root controller.
void navigationPush(id self, SEL cmd, id controller, BOOL animated);

// The panes an iPad's split view shows (iPad, or a navigation in a split view).
template <Family F>
void setViewControllers(id self, SEL cmd, id controllers, BOOL animated);

// Going back: the product's own pane reloads when it comes to the top again.
template <Family F>
id rootPop(id self, SEL cmd, BOOL animated);

// Switching airplane mode from the root list.
template <Family F>
void setAirplaneMode(id self, SEL cmd, id value, id specifier);

// "Reset Home Screen Layout", confirmed.
void resetIconPositions(id self, SEL cmd, id specifier);

// Fingerprint unlock switched on again: the owner is told to lock the device.
void setTouchIDUnlockEnabled(id self, SEL cmd, id value, id specifier);

// A URL the Settings app is asked to open.
void processURL(id self, SEL cmd, id url);

// The Touch ID or face settings screen goes away (two screens, one per row).
void mesaSettingsDidDisappear(id self, SEL cmd, BOOL animated);
void touchIdPasscodeDidDisappear(id self, SEL cmd, BOOL animated);

// The Settings app comes back: after an unlock, or from the background.
void applicationDidResumeFromUnderLock(id self, SEL cmd);
void applicationDidResume(id self, SEL cmd);

// The first use of a class: the storage pane's and the language setup's
// interceptions are installed when their classes are first used.
void listControllerInitialize(id self, SEL cmd);
void objectInitialize(id self, SEL cmd);

// Registers the library's own Settings-app class, the empty pane an iPad
// shows in place of a protected one.
void defineSettingsClasses();

// Observes SpringBoard's answers, in the order they are registered.
void observeSettingsAnswers();

}  // namespace kv::processes
