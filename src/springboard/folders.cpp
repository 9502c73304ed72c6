// Home-screen folders.
#include "springboard/folders.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/flags.h"
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

const Sel kFolder("folder");
const Sel kDisplayName("displayName");
const Sel kDisplayNameForLocation("displayNameForLocation:");
const Sel kDefaultDisplayName("defaultDisplayName");
const Sel kApplicationBundleID("applicationBundleID");
const Sel kIcon("icon");
const Sel kDelegate("delegate");
const Sel kSharedInstance("sharedInstance");

constexpr const char* kNewsstand = "newsstand";
constexpr const char* kForceTouchIconView = "_appIconForceTouchIconView";

bool listed(const settings::ItemList& list, const std::optional<std::string>& name) {
  return name && list.contains(*name);
}
bool inProtectedFolders(id name) {
  return listed(settings::current().protectedFolders, platform::stringOf(name));
}

// The icon's name on the home screen (location 0); the argument is an int
// before iOS 11.
id nameOnHomeScreen(id icon) {
  if (base::flags().isIOS11) return platform::send<id>(icon, kDisplayNameForLocation, Integer{0});
  return platform::send<id>(icon, kDisplayNameForLocation, int{0});
}

// True iff the folder behind `icon` is protected. The Newsstand folder goes
// by its fixed entry only, whatever it is called; other folders by the
// icon's name, its name on the home screen, then the folder's default name.
bool folderIconProtected(id icon) {
  id folder = sendIfResponds<id>(icon, kFolder);
  if (platform::isKindOf(folder, "SBNewsstandFolder")) {
    return listed(settings::current().protectedFolders, std::string(kNewsstand));
  }
  if (platform::respondsTo(icon, kDisplayName) &&
      inProtectedFolders(platform::send<id>(icon, kDisplayName))) {
    return true;
  }
  if (platform::respondsTo(icon, kDisplayNameForLocation) &&
      inProtectedFolders(nameOnHomeScreen(icon))) {
    return true;
  }
  return inProtectedFolders(platform::valueForKeyIfPresent(folder, "defaultDisplayName"));
}

// True iff the folder icon's launch waits for authentication. A launch
// that passes spends the stale-folder flag: the folder it opens is the one
// on screen from now on.
bool folderLaunchGuarded(id icon) {
  if (folderIconProtected(icon) && gatePasses()) return true;
  launchState().staleOpenFolder = false;
  return false;
}

// Hands a folder icon's launch to the coordinator, named by the icon.
bool holdFolderLaunch(id icon, const Retained& call) {
  return holdBack(call.get(), sendIfResponds<id>(icon, kDisplayName), true);
}

// The icon the force press is on: the one of the icon view the icon
// controller keeps for it (iOS 10 and later).
id pressedIcon() {
  if (!base::flags().isIOS10OrLater) return nullptr;
  id icons = platform::sendClass<id>(platform::classNamed("SBIconController"), kSharedInstance);
  return sendIfResponds<id>(platform::valueForKeyIfPresent(icons, kForceTouchIconView), kIcon);
}

}  // namespace

// The stored launch carries the location (and the context, settings) but
// does not retain them: the icon's arguments are plain values or nil on the
// home screen.
void folderLaunch(id self, SEL cmd, int location) {
  if (folderLaunchGuarded(self) &&
      holdFolderLaunch(self, platform::invocationOf(self, cmd, location))) {
    return;
  }
  platform::Hook<&folderLaunch>::original(self, cmd, location);
}

void folderLaunchWithContext(id self, SEL cmd, int location, id context) {
  if (folderLaunchGuarded(self) &&
      holdFolderLaunch(self, platform::invocationOf(self, cmd, location, context))) {
    return;
  }
  platform::Hook<&folderLaunchWithContext>::original(self, cmd, location, context);
}

void folderLaunchWithSettings(id self, SEL cmd, Integer location, id context, id settings,
                              id actions) {
  if (folderLaunchGuarded(self) &&
      holdFolderLaunch(self,
                       platform::invocationOf(self, cmd, location, context, settings, actions))) {
    return;
  }
  platform::Hook<&folderLaunchWithSettings>::original(self, cmd, location, context, settings,
                                                      actions);
}

// A force press peeks: at a folder icon, judged by the folder's names; at an
// app icon, judged by the app alone (an open protected folder around it
// lets nothing through here).
BOOL peekPresent(id self, SEL cmd, BOOL animated, id completion) {
  id icon = pressedIcon();
  id folderName = nullptr;
  id folderDefaultName = nullptr;
  bool protectedFolder = false;
  if (platform::isKindOf(icon, "SBFolderIcon")) {
    id folder = sendIfResponds<id>(icon, kFolder);
    folderName = sendIfResponds<id>(folder, kDisplayName);
    folderDefaultName = sendIfResponds<id>(folder, kDefaultDisplayName);
    protectedFolder = inProtectedFolders(folderName) || inProtectedFolders(folderDefaultName);
  }
  id bundleIdentifier = sendIfResponds<id>(icon, kApplicationBundleID);
  if (!(protectedFolder || isProtectedApp(bundleIdentifier)) || !gatePasses()) {
    return platform::Hook<&peekPresent>::original(self, cmd, animated, completion);
  }
  Retained call = platform::invocationOf(self, cmd, animated, completion);
  if (!call) return platform::Hook<&peekPresent>::original(self, cmd, animated, completion);
  platform::retainArguments(call.get());
  id title = !protectedFolder        ? bundleIdentifier
             : folderName != nullptr ? folderName
                                     : folderDefaultName;
  holdBack(call.get(), title);
  // The replayed peek brings about one workspace transaction of its own:
  // it passes once.
  LaunchState& launch = launchState();
  launch.skipOwner = Retained(sendIfResponds<id>(self, kDelegate));
  launch.skipController = Retained(self);
  return 0;
}

// Renaming keeps the folder protected: the new name joins the list, and the
// old one leaves it unless another folder still bears it. The whole list is
// written back so that the settings pane and the next reload see it.
void folderRename(id self, SEL cmd, id name) {
  auto current = platform::stringOf(sendIfResponds<id>(self, kDisplayName));
  std::vector<std::string> folders = settings::current().protectedFolders;
  auto newName = platform::stringOf(name);
  if (!listed(folders, current) || !newName) {
    platform::Hook<&folderRename>::original(self, cmd, name);
    return;
  }
  platform::AutoreleasePool pool;
  id representation = core::foldersRepresentation();
  platform::UInteger sameName = 0;
  for (platform::UInteger i = 0; i < platform::arrayCount(representation); ++i) {
    id entry = platform::arrayObjectAt(representation, i);
    if (platform::stringOf(platform::objectForKey(entry, "displayName")) == current) ++sameName;
  }
  if (sameName <= 1) std::erase(folders, *current);
  folders.push_back(*newName);  // a name listed already is listed again
  settings::storeProtectedFolders(std::move(folders));
  platform::Hook<&folderRename>::original(self, cmd, name);
}

}  // namespace kv::springboard
