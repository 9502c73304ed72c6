// Launches from the home screen.
#include "springboard/launch_icons.h"

#include <optional>
#include <utility>

#include "base/flags.h"
#include "core/policy.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/settings.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kCloseFolderAnimatedWithCompletion("closeFolderAnimated:withCompletion:");
const platform::Sel kCloseFolderAnimated("closeFolderAnimated:");
const platform::Sel kDisplayIdentifier("displayIdentifier");
const platform::Sel kBundleIdentifier("bundleIdentifier");
const platform::Sel kApplicationBundleID("applicationBundleID");

using platform::Integer;
using platform::Retained;
using platform::sendIfResponds;

// An app launched from inside an open folder that was itself authenticated
// needs no second prompt, unless apps in folders still ask or the folder
// was left open when the home screen last went away.
bool folderPass() {
  const settings::Settings& s = settings::current();
  if (s.appsInFoldersAreStillProtected || launchState().staleOpenFolder) return false;
  return !s.protectedFolders.empty() && core::folderNameProtected(openFolder());
}

// Marks a launch the open folder let through for as long as it runs, so
// that the guards behind the icon's launch (the UI controller's activation,
// the app-to-app transaction) let it through too.
class FolderLaunch {
 public:
  FolderLaunch() : outer_(std::exchange(launchState().folderLaunch, true)) {}
  ~FolderLaunch() { launchState().folderLaunch = outer_; }
  FolderLaunch(const FolderLaunch&) = delete;
  FolderLaunch& operator=(const FolderLaunch&) = delete;

 private:
  bool outer_;
};

// Once an app from a protected folder is in front, the folder closes.
void closeProtectedFolderAfterLaunch() {
  const settings::Settings& s = settings::current();
  if (!s.closeProtectedFoldersAfterLaunchingApp || s.protectedFolders.empty()) return;
  id folder = openFolder();
  if (!core::folderNameProtected(folder)) return;
  id icons = platform::sendClass<id>(platform::classNamed("SBIconController"), kSharedInstance);
  if (platform::respondsTo(icons, kCloseFolderAnimatedWithCompletion)) {
    platform::send<void>(icons, kCloseFolderAnimatedWithCompletion, BOOL{0}, id{nullptr});
  } else {
    sendIfResponds(icons, kCloseFolderAnimated, BOOL{0});
  }
}

// The identifier an activation names: the display identifier where the app
// has one that is protected, else its bundle identifier.
id activatedIdentifier(id application) {
  id display = sendIfResponds<id>(application, kDisplayIdentifier);
  if (display != nullptr && isProtectedApp(display)) return display;
  return sendIfResponds<id>(application, kBundleIdentifier);
}

bool guards(id identifier) {
  return isProtectedApp(identifier) && gatePasses();
}

}  // namespace

BOOL iconLaunchWithContext(id self, SEL cmd, id icon, Integer location, id context, id settings,
                           id actions) {
  id identifier = sendIfResponds<id>(icon, kApplicationBundleID);
  std::optional<FolderLaunch> throughFolder;
  if (guards(identifier)) {
    if (folderPass()) {
      throughFolder.emplace();
    } else {
      // Four of the five arguments, not retained: the actions stay unset.
      Retained call = platform::invocationOf(self, cmd, icon, location, context, settings);
      if (holdBack(call.get(), identifier, true)) return 0;
    }
  }
  BOOL launched = platform::Hook<&iconLaunchWithContext>::original(self, cmd, icon, location,
                                                                   context, settings, actions);
  closeProtectedFolderAfterLaunch();
  return launched;
}

BOOL iconLaunch(id self, SEL cmd, id icon, int location) {
  id identifier = sendIfResponds<id>(icon, kApplicationBundleID);
  std::optional<FolderLaunch> throughFolder;
  if (guards(identifier)) {
    if (folderPass()) {
      throughFolder.emplace();
    } else {
      Retained call = platform::invocationOf(self, cmd, icon, location);
      if (holdBack(call.get(), identifier, true)) return 0;
    }
  }
  return platform::Hook<&iconLaunch>::original(self, cmd, icon, location);
}

void activateFromIcon(id self, SEL cmd, id application, id icon, int location) {
  id identifier = activatedIdentifier(application);
  if (guards(identifier)) {
    Retained call = platform::invocationOf(self, cmd, application, icon, location);
    if (holdBack(call.get(), identifier)) return;
  }
  platform::Hook<&activateFromIcon>::original(self, cmd, application, icon, location);
  closeProtectedFolderAfterLaunch();
}

void activateAnimated(id self, SEL cmd, id application) {
  id identifier = activatedIdentifier(application);
  if (guards(identifier)) {
    Retained call = platform::invocationOf(self, cmd, application);
    if (holdBack(call.get(), identifier)) return;
  }
  platform::Hook<&activateAnimated>::original(self, cmd, application);
  closeProtectedFolderAfterLaunch();
}

void activate(id self, SEL cmd, id application) {
  id identifier = sendIfResponds<id>(
      application, base::flags().isIOS10OrLater ? kBundleIdentifier : kDisplayIdentifier);
  if (guards(identifier)) {
    Retained call = platform::invocationOf(self, cmd, application);
    if (holdBack(call.get(), identifier)) return;
  }
  platform::Hook<&activate>::original(self, cmd, application);
}

}  // namespace kv::springboard
