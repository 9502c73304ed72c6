// Siri, the SIM unlock, icon arrangement, Safari bookmarks and the screen-on
// the backlight skips once.
#include "springboard/system_actions.h"

#include "core/policy.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::sendIfResponds;

const Sel kSharedInstance("sharedInstance");
const Sel kIsEditing("isEditing");
const Sel kIcon("icon");
const Sel kApplicationBundleID("applicationBundleID");

constexpr const char* kSiriTitle = "Siri Protection";
constexpr const char* kSIMTitle = "SIM Unlock";
constexpr const char* kIconsTitle = "Icon Arrangement Protection";
constexpr const char* kSafariTitle = "Safari Protection";
constexpr const char* kSafari = "com.apple.mobilesafari";

bool gSuppressNextScreenOn = false;

// Parks the call (its object arguments retained) behind the prompt titled
// `title`. False when no call could be built: the platform method runs.
bool holdCall(const Retained& call, const char* title, bool clearHighlight = false) {
  if (!call) return false;
  platform::retainArguments(call.get());
  platform::AutoreleasePool pool;
  return holdBack(call.get(), platform::makeString(title), clearHighlight);
}

bool siriGuarded() {
  return settings::current().protectSiri && gatePasses();
}

// The SIM's lock-entry alert is up: the field's OK unlocks the SIM. The same
// field serves other long numeric entries, which pass.
bool simLockEntryShowing() {
  id manager = platform::sendClass<id>(platform::classNamed("SBSIMLockManager"), kSharedInstance);
  return platform::valueForKeyIfPresent(manager, "lockEntryAlert") != nullptr;
}

// Editing starts from the home screen only: a controller already editing,
// or editing ending, changes nothing worth guarding.
bool editingGuarded(id controller, BOOL editing) {
  return editing && !sendIfResponds<BOOL>(controller, kIsEditing) &&
         launchState().homeScreenShowing && settings::current().protectMovingApps && gatePasses();
}

// The icon behind a close box: the argument is the icon view, or the icon.
id closeBoxIcon(id iconView) {
  return platform::respondsTo(iconView, kIcon) ? platform::send<id>(iconView, kIcon) : iconView;
}

}  // namespace

BOOL assistantActivate(id self, SEL cmd, int event) {
  if (siriGuarded() && holdCall(platform::invocationOf(self, cmd, event), kSiriTitle)) return 0;
  return platform::Hook<&assistantActivate>::original(self, cmd, event);
}

BOOL assistantActivateFromSource(id self, SEL cmd, int event, int source, void* context) {
  if (siriGuarded() &&
      holdCall(platform::invocationOf(self, cmd, event, source, context), kSiriTitle)) {
    return 0;
  }
  return platform::Hook<&assistantActivateFromSource>::original(self, cmd, event, source, context);
}

void longPasscodeOkButtonHit(id self, SEL cmd) {
  if (settings::current().protectSIMUnlock && simLockEntryShowing() && gatePasses() &&
      holdCall(platform::invocationOf(self, cmd), kSIMTitle)) {
    return;
  }
  platform::Hook<&longPasscodeOkButtonHit>::original(self, cmd);
}

void iconsSetEditingWithFeedback(id self, SEL cmd, BOOL editing, id feedback) {
  if (editingGuarded(self, editing) &&
      holdCall(platform::invocationOf(self, cmd, editing, feedback), kIconsTitle)) {
    return;
  }
  platform::Hook<&iconsSetEditingWithFeedback>::original(self, cmd, editing, feedback);
}

void iconsSetEditing(id self, SEL cmd, BOOL editing) {
  if (editingGuarded(self, editing) &&
      holdCall(platform::invocationOf(self, cmd, editing), kIconsTitle)) {
    return;
  }
  platform::Hook<&iconsSetEditing>::original(self, cmd, editing);
}

// Deleting a protected app's icon deletes the app: it waits, whatever
// protectMovingApps says.
void iconCloseBoxTapped(id self, SEL cmd, id iconView) {
  id bundleIdentifier = sendIfResponds<id>(closeBoxIcon(iconView), kApplicationBundleID);
  if (isProtectedApp(bundleIdentifier) && gatePasses() &&
      holdCall(platform::invocationOf(self, cmd, iconView), kIconsTitle)) {
    return;
  }
  platform::Hook<&iconCloseBoxTapped>::original(self, cmd, iconView);
}

// A web bookmark on the home screen opens in Safari: it counts as Safari.
void bookmarkLaunch(id self, SEL cmd, Integer location, id context, id settings, id actions) {
  if (core::requiresAuthenticationForIdentifier(kSafari) && gatePasses() &&
      holdCall(platform::invocationOf(self, cmd, location, context, settings, actions),
               kSafariTitle, true)) {
    return;
  }
  platform::Hook<&bookmarkLaunch>::original(self, cmd, location, context, settings, actions);
}

BOOL shouldTurnOnScreen(id self, SEL cmd, Integer source) {
  if (gSuppressNextScreenOn) {
    gSuppressNextScreenOn = false;
    return 0;
  }
  return platform::Hook<&shouldTurnOnScreen>::original(self, cmd, source);
}

void suppressNextScreenOn() {
  gSuppressNextScreenOn = true;
}

}  // namespace kv::springboard
