// Protected panes left open do not survive the device's lock: when the
// Settings app comes back, they are closed before anyone sees them.
#include <vector>

#include "base/flags.h"
#include "platform/classes.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "processes/settings_guards.h"
#include "processes/settings_selectors.h"
#include "processes/settings_state.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

using platform::Hook;
using platform::Retained;

constexpr const char* kEmptyController = "KavelinEmptyViewController";

id gEmptyController = nullptr;  // the one empty pane, kept for the process's life

id emptySharedInstance(id cls, SEL) {
  if (gEmptyController == nullptr) {
    gEmptyController = platform::send<id>(platform::send<id>(cls, sel::kAlloc), sel::kInit);
  }
  return gEmptyController;
}

id rootController() {
  id app = platform::sendClass<id>(platform::classNamed("UIApplication"), sel::kSharedApplication);
  return platform::sendIfResponds<id>(app, sel::kRootController);
}

// True iff `controller` shows a pane that must close: the product's own
// pane always, another when protection is on for it.
bool mustClose(id controller) {
  if (isKind(controller, "KavelinPrefsListController")) return true;
  if (!settings::current().enabled || enrolledIdentities() < 1) return false;
  if (!platform::respondsTo(controller, sel::kSpecifier)) return false;
  return listedAsProtected(specifierOf(controller));
}

// Pops without animation until the Settings list is on top again.
void popToList(id root) {
  while (!isKind(platform::send<id>(root, sel::kTopViewController), listControllerClass())) {
    if (platform::send<id>(root, sel::kPop, BOOL{0}) == nullptr) break;
  }
}

// On an iPad only the pane shown is looked at; it gives way to an empty one.
void closePadPane(id root) {
  id top = platform::send<id>(root, sel::kTopViewController);
  if (isKind(top, kEmptyController)) return;
  id specifier = specifierOf(top);
  bool close = isOwnPane(specifier) || (settings::current().enabled && enrolledIdentities() >= 1 &&
                                        listedAsProtected(specifier));
  if (!close) return;
  id empty = platform::sendClass<id>(platform::classNamed(kEmptyController), sel::kSharedInstance);
  platform::send<void>(root, sel::kSetViewControllers, platform::makeArray({empty}), BOOL{1});
}

// Closes protected panes; `signinFirst` lets a root controller that can go
// back to its sign-in controller do that instead of popping.
void closeProtectedPanes(bool signinFirst) {
  id root = rootController();
  if (root == nullptr) return;
  if (base::flags().isPad) return closePadPane(root);
  // The children are walked as they were: closing changes the list.
  Retained children(platform::send<id>(root, sel::kChildViewControllers));
  for (platform::UInteger i = 0; i < platform::arrayCount(children.get()); ++i) {
    if (!mustClose(platform::arrayObjectAt(children.get(), i))) continue;
    if (signinFirst && platform::respondsTo(root, sel::kPopToSignin)) {
      platform::send<void>(root, sel::kPopToSignin, BOOL{0});
    } else {
      popToList(root);
    }
    return;
  }
}

}  // namespace

void applicationDidResumeFromUnderLock(id self, SEL cmd) {
  Hook<&applicationDidResumeFromUnderLock>::original(self, cmd);
  // Every lock closes protected panes, session or not.
  closeProtectedPanes(false);
}

void applicationDidResume(id self, SEL cmd) {
  Hook<&applicationDidResume>::original(self, cmd);
  if (sessionOpen()) return;
  closeProtectedPanes(true);
}

void defineSettingsClasses() {
  platform::defineClass(kEmptyController, "UIViewController",
                        {platform::classMethod("sharedInstance", emptySharedInstance)});
}

}  // namespace kv::processes
