// SpringBoard's apps, icons and folders: SBApplication, its controller, the
// icon classes and SBIconController, and the home-screen actions that enter
// through them ("tap", "tap-folder", "home").
#include <map>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

// The home screen: system apps and two of the user's own, with URL schemes.
const std::vector<AppInfo> kApps = {
    {"com.apple.mobileslideshow", "Photos", {"photos-redirect"}},
    {"com.apple.camera", "Camera", {}},
    {"com.apple.mobilesafari", "Safari", {"http", "https"}},
    {"com.apple.MobileSMS", "Messages", {"sms"}},
    {"com.apple.mobilephone", "Phone", {"tel"}},
    {"com.apple.Preferences", "Settings", {"prefs"}},
    {"com.apple.MobileAddressBook", "Contacts", {}},
    {"com.apple.mobiletimer", "Clock", {"clock-alarm"}},
    {"com.apple.calculator", "Calculator", {}},
    {"com.quorvan.notesplus", "Notes Plus", {"notesplus"}},
    {"com.quorvan.chatter", "Chatter", {"chatter"}},
};

const std::vector<FolderInfo> kFolders = {
    {"Utilities", {"com.apple.MobileAddressBook"}, false},
    {"Social", {"com.quorvan.chatter"}, false},
    {"Newsstand", {}, true},
};

struct AppState {
  std::string bundle;
  // The identifier as the app object keeps it: its readers are handed the
  // same string every time, as SpringBoard's own do.
  Retained bundleString;
};
struct IconState {
  Retained application;  // SBApplicationIcon
  Retained folder;       // SBFolderIcon
};
struct FolderState {
  std::string displayName;
  std::string defaultDisplayName;
  Retained icon;
  std::vector<std::string> apps;  // bundle identifiers, in order
};
struct IconListState {
  std::vector<Retained> icons;
};

// ---- SBApplication ----

id appBundleIdentifier(id self, SEL) {
  return stateOf<AppState>(self).bundleString.get();
}
id appDisplayName(id self, SEL) {
  for (const auto& a : kApps) {
    if (stateOf<AppState>(self).bundle == a.bundleIdentifier)
      return platform::makeString(a.displayName);
  }
  return nullptr;
}

// The icon launch of iOS 10 and later: a request to the main workspace,
// labelled as a launch from an icon (the icon's own launch method is where
// an icon tap is judged; activations and opens carry other labels).
BOOL iconLaunchWithContext(id self, SEL, id, long, id, id, id) {
  runWorkspaceRequest("LaunchFromIcon", self);
  return 1;
}
// The icon launch of older systems: SpringBoard's UI controller activates,
// with the icon where it takes one (iOS 9).
BOOL iconLaunch(id self, SEL, id icon, int location) {
  id ui = sharedOf("SBUIController");
  if (platform::respondsTo(ui, Sel("activateApplication:fromIcon:location:"))) {
    send<void>(ui, Sel("activateApplication:fromIcon:location:"), self, icon, location);
  } else {
    send<void>(ui, Sel("activateApplicationAnimated:"), self);
  }
  return 1;
}

// ---- SBApplicationController ----

id applicationWithBundleIdentifier(id, SEL, id identifier) {
  return applicationNamed(platform::toString(identifier));
}
id allApplications(id, SEL) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (const auto& a : kApps)
    send<void>(list, Sel("addObject:"), applicationNamed(a.bundleIdentifier));
  return list;
}

// ---- Icons ----

id iconApplication(id self, SEL) {
  return stateOf<IconState>(self).application.get();
}
id iconBundleID(id self, SEL) {
  static const Sel kBundleIdentifier("bundleIdentifier");
  return send<id>(stateOf<IconState>(self).application.get(), kBundleIdentifier);
}
id iconDisplayName(id self, SEL) {
  id app = stateOf<IconState>(self).application.get();
  if (app != nullptr) return send<id>(app, Sel("displayName"));
  id folder = stateOf<IconState>(self).folder.get();
  return platform::makeString(stateOf<FolderState>(folder).displayName);
}
id iconDisplayNameForLocation(id self, SEL cmd, long) {
  return iconDisplayName(self, cmd);
}
// Until iOS 11 the location is an int.
id iconDisplayNameForIntLocation(id self, SEL cmd, int location) {
  return iconDisplayNameForLocation(self, cmd, location);
}
id iconFolder(id self, SEL) {
  return stateOf<IconState>(self).folder.get();
}

// Launching an app icon: the app's own icon-launch method, by version.
void launchAppIcon(id icon, long location) {
  id app = stateOf<IconState>(icon).application.get();
  if (platform::respondsTo(app,
                           Sel("icon:launchFromLocation:context:activationSettings:actions:"))) {
    send<BOOL>(app, Sel("icon:launchFromLocation:context:activationSettings:actions:"), icon,
               location, id{nullptr}, id{nullptr}, id{nullptr});
  } else {
    send<BOOL>(app, Sel("icon:launchFromLocation:"), icon, static_cast<int>(location));
  }
}

// Launching a folder icon opens the folder.
void openFolderOf(id icon) {
  id folder = stateOf<IconState>(icon).folder.get();
  springBoard().openFolder = stateOf<FolderState>(folder).displayName;
  host::logEvent("folder", "opened " + springBoard().openFolder);
}
void folderLaunch(id self, SEL, int) {
  openFolderOf(self);
}
void folderLaunchContext(id self, SEL, int, id) {
  openFolderOf(self);
}
void folderLaunchSettings(id self, SEL, long, id, id, id) {
  openFolderOf(self);
}

// ---- Folders ----

id folderDisplayName(id self, SEL) {
  return platform::makeString(stateOf<FolderState>(self).displayName);
}
void folderSetDisplayName(id self, SEL, id name) {
  stateOf<FolderState>(self).displayName = platform::toString(name);
  host::logEvent("folder", "renamed " + stateOf<FolderState>(self).displayName);
}
id folderDefaultDisplayName(id self, SEL) {
  const std::string& name = stateOf<FolderState>(self).defaultDisplayName;
  return name.empty() ? nullptr : platform::makeString(name);
}
BOOL folderIsOpen(id self, SEL) {
  return springBoard().openFolder == stateOf<FolderState>(self).displayName ? 1 : 0;
}
// A folder's pages: one list of the icons of its apps.
id listIcons(id self, SEL) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (auto& icon : stateOf<IconListState>(self).icons)
    send<void>(list, Sel("addObject:"), icon.get());
  return list;
}
id folderIconLists(id self, SEL) {
  id page = host::newObject(platform::classNamed("SBIconListModel"));
  for (const auto& bundle : stateOf<FolderState>(self).apps) {
    if (id icon = appIconNamed(bundle)) stateOf<IconListState>(page).icons.emplace_back(icon);
  }
  id lists = platform::makeArray({page});
  send<void>(page, Sel("release"));
  return lists;
}
id folderIcon(id self, SEL) {
  return stateOf<FolderState>(self).icon.get();
}

// ---- SBIconController ----

std::vector<Retained>& appIcons() {
  static auto* icons = new std::vector<Retained>();
  return *icons;
}
std::vector<Retained>& folderIcons() {
  static auto* icons = new std::vector<Retained>();
  return *icons;
}

id openFolder(id, SEL) {
  for (auto& icon : folderIcons()) {
    id folder = stateOf<IconState>(icon.get()).folder.get();
    if (stateOf<FolderState>(folder).displayName == springBoard().openFolder) return folder;
  }
  return nullptr;
}
void clearHighlightedIcon(id, SEL) {}
void closeFolder() {
  if (springBoard().openFolder.empty()) return;
  host::logEvent("folder", "closed " + springBoard().openFolder);
  springBoard().openFolder.clear();
}
void closeFolderAnimatedCompletion(id, SEL, BOOL, id completion) {
  closeFolder();
  platform::callBlock<void(BOOL)>(completion, BOOL{1});
}
void closeFolderAnimated(id, SEL, BOOL) {
  closeFolder();
}

// The icons on the current page: every app icon and folder icon.
id iconList(id, SEL) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (auto& icon : appIcons()) send<void>(list, Sel("addObject:"), icon.get());
  for (auto& icon : folderIcons()) send<void>(list, Sel("addObject:"), icon.get());
  return list;
}
id currentRootIconList(id self, SEL) {
  return self;
}  // answers `icons` itself
// The root folder of the home screen: its folders are the folder icons.
id rootFolder(id, SEL) {
  return sharedOf("SBRootFolder");
}
id rootFolderIcons(id, SEL) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (auto& icon : folderIcons()) send<void>(list, Sel("addObject:"), icon.get());
  return list;
}

// A tap on an icon, as the icon controller receives it.
void iconTapped(id, SEL, id icon) {
  if (launchBookmarkIcon(icon)) return;
  if (stateOf<IconState>(icon).folder) {
    if (atLeast(11)) {
      send<void>(icon, Sel("launchFromLocation:context:activationSettings:actions:"), 0L,
                 id{nullptr}, id{nullptr}, id{nullptr});
    } else if (atLeast(9)) {
      send<void>(icon, Sel("launchFromLocation:context:"), 0, id{nullptr});
    } else {
      send<void>(icon, Sel("launchFromLocation:"), 0);
    }
    return;
  }
  launchAppIcon(icon, 0);
}

// ---- Actions ----

// True iff the home screen shows to be tapped; else says why in *error.
bool homeScreenShows(std::string* error) {
  if (springBoard().locked || !springBoard().screenOn) {
    *error = springBoard().locked ? "the device is locked: the home screen cannot be tapped"
                                  : "the screen is off: the home screen cannot be tapped";
    return false;
  }
  return true;
}

}  // namespace

bool alertTakesTouch(const std::string& what) {
  id alert = topmostAlert();
  if (alert == nullptr) return false;
  std::string title = platform::respondsTo(alert, Sel("title"))
                          ? platform::toString(send<id>(alert, Sel("title")))
                          : std::string();
  host::logEvent("touch", what + " lands on the alert \"" + title + "\", not the home screen");
  return true;
}

namespace {

Value tapAction(const host::ActionRequest& request, std::string* error) {
  if (!homeScreenShows(error) || alertTakesTouch("tap " + request.args[0])) return {};
  id icon = appIconNamed(request.args[0]);
  if (icon == nullptr) {
    *error = "no icon for " + request.args[0] + " on the home screen";
    return {};
  }
  send<void>(sharedOf("SBIconController"), Sel("iconTapped:"), icon);
  return {};
}

Value tapFolderAction(const host::ActionRequest& request, std::string* error) {
  if (!homeScreenShows(error) || alertTakesTouch("tap-folder " + request.args[0])) return {};
  if (id icon = folderIconNamed(request.args[0])) {
    send<void>(sharedOf("SBIconController"), Sel("iconTapped:"), icon);
    return {};
  }
  *error = "no folder named " + request.args[0];
  return {};
}

// rename-folder NAME NEW-NAME: the folder's name edited on the home screen
// ends in the folder's own setter.
Value renameFolderAction(const host::ActionRequest& request, std::string* error) {
  if (!homeScreenShows(error) || alertTakesTouch("rename-folder " + request.args[0])) return {};
  id icon = folderIconNamed(request.args[0]);
  if (icon == nullptr) {
    *error = "no folder named " + request.args[0];
    return {};
  }
  id folder = stateOf<IconState>(icon).folder.get();
  if (!platform::respondsTo(folder, Sel("setDisplayName:"))) {
    *error = "folders here have no -setDisplayName: (iOS 8 and 9)";
    return {};
  }
  host::logEvent("folder", "editing the name of " + request.args[0]);
  send<void>(folder, Sel("setDisplayName:"), platform::makeString(request.args[1]));
  return {};
}

// The home button: down, then up, through SpringBoard's own handlers.
Value homeAction(const host::ActionRequest&, std::string*) {
  id app = sharedOf("SpringBoard");
  send<void>(app, Sel("_menuButtonDown:"), static_cast<void*>(nullptr));
  send<void>(app, Sel("_menuButtonUp:"), static_cast<void*>(nullptr));
  return {};
}

id frontMostApplication(id, SEL) {
  return springBoard().front == "home" ? nullptr : applicationNamed(springBoard().front);
}

void menuButtonDown(id, SEL, void*) {}
// Home closes what is on top, one thing a press: Siri, a shortcut menu,
// icon editing, the switcher, the front app. The home screen comes back as
// it was left, with a folder still open when one was; on the home screen
// itself home closes the open folder.
void menuButtonUp(id, SEL, void*) {
  if (closeSiri()) return;
  if (springBoard().locked) {
    host::logEvent("button", "home on the lock screen");
    return;
  }
  if (closeShortcutMenu() || endIconEditing()) return;
  if (springBoard().switcherVisible) {
    pressHomeInSwitcher();
    return;
  }
  if (springBoard().front != "home") {
    bringToFront("home");
    return;
  }
  closeFolder();
}

void defineIcons() {
  ClassBuilder icon("SBIcon", "NSObject");
  icon.instance("displayName", imp(iconDisplayName), "@@:");
  addCatalogued(icon, "-displayNameForLocation:",
                atLeast(11) ? imp(iconDisplayNameForLocation) : imp(iconDisplayNameForIntLocation));
  icon.build();
  ClassBuilder("SBApplicationIcon", "SBIcon")
      .instance("application", imp(iconApplication), "@@:")
      .instance("applicationBundleID", imp(iconBundleID), "@@:")
      .build();
  ClassBuilder folderIconClass("SBFolderIcon", "SBIcon");
  folderIconClass.instance("folder", imp(iconFolder), "@@:");
  if (atLeast(11)) {
    folderIconClass.instance("launchFromLocation:context:activationSettings:actions:",
                             imp(folderLaunchSettings), "v@:q@@@");
  } else if (atLeast(9)) {
    folderIconClass.instance("launchFromLocation:context:", imp(folderLaunchContext), "v@:i@");
  } else {
    folderIconClass.instance("launchFromLocation:", imp(folderLaunch), "v@:i");
  }
  folderIconClass.build();
  ClassBuilder folderClass("SBFolder", "NSObject");
  addCatalogued(folderClass, "-setDisplayName:", imp(folderSetDisplayName));
  folderClass.instance("displayName", imp(folderDisplayName), "@@:")
      .instance("defaultDisplayName", imp(folderDefaultDisplayName), "@@:")
      .instance("isOpen", imp(folderIsOpen), "C@:")
      .instance("icon", imp(folderIcon), "@@:")
      .instance("iconLists", imp(folderIconLists), "@@:")
      .build();
  if (!atLeast(9)) ClassBuilder("SBNewsstandFolder", "SBFolder").build();
  ClassBuilder("SBRootFolder", "SBFolder")
      .instance("folderIcons", imp(rootFolderIcons), "@@:")
      .build();
  ClassBuilder("SBIconListModel", "NSObject").instance("icons", imp(listIcons), "@@:").build();
}

void makeHomeScreen() {
  for (const auto& a : kApps) {
    id icon = host::newObject(platform::classNamed("SBApplicationIcon"));
    stateOf<IconState>(icon).application = Retained(applicationNamed(a.bundleIdentifier));
    appIcons().push_back(Retained::adopt(icon));
  }
  for (const auto& f : kFolders) {
    if (f.newsstand && atLeast(9)) continue;  // the Newsstand folder went away with iOS 9
    Class cls = platform::classNamed(f.newsstand ? "SBNewsstandFolder" : "SBFolder");
    id folder = host::newObject(cls);
    stateOf<FolderState>(folder).displayName = f.displayName;
    stateOf<FolderState>(folder).defaultDisplayName = f.displayName;
    stateOf<FolderState>(folder).apps.assign(f.apps.begin(), f.apps.end());
    id icon = host::newObject(platform::classNamed("SBFolderIcon"));
    stateOf<IconState>(icon).folder = Retained::adopt(folder);
    stateOf<FolderState>(folder).icon = Retained(icon);
    folderIcons().push_back(Retained::adopt(icon));
  }
}

}  // namespace

const std::vector<AppInfo>& installedApps() {
  return kApps;
}
const std::vector<FolderInfo>& homeFolders() {
  return kFolders;
}

id appIconNamed(const std::string& bundleIdentifier) {
  for (auto& icon : appIcons()) {
    if (platform::toString(iconBundleID(icon.get(), nullptr)) == bundleIdentifier)
      return icon.get();
  }
  return nullptr;
}

bool removeAppIcon(const std::string& bundleIdentifier) {
  id icon = appIconNamed(bundleIdentifier);
  if (icon == nullptr) return false;
  std::erase_if(appIcons(), [icon](const Retained& r) { return r.get() == icon; });
  return true;
}

id folderIconNamed(const std::string& displayName) {
  for (auto& icon : folderIcons()) {
    if (platform::toString(iconDisplayName(icon.get(), nullptr)) == displayName) return icon.get();
  }
  return nullptr;
}

id applicationNamed(const std::string& bundleIdentifier) {
  static auto* apps = new std::map<std::string, Retained>();
  auto it = apps->find(bundleIdentifier);
  if (it != apps->end()) return it->second.get();
  for (const auto& a : kApps) {
    if (bundleIdentifier != a.bundleIdentifier) continue;
    id app = host::newObject(platform::classNamed("SBApplication"));
    AppState& state = stateOf<AppState>(app);
    state.bundle = bundleIdentifier;
    state.bundleString = Retained(platform::makeString(bundleIdentifier));
    (*apps)[bundleIdentifier] = Retained::adopt(app);
    return app;
  }
  return nullptr;
}

void defineSpringBoardApps() {
  ClassBuilder app("SBApplication", "NSObject");
  app.instance("bundleIdentifier", imp(appBundleIdentifier), "@@:")
      .instance("displayIdentifier", imp(appBundleIdentifier), "@@:")
      .instance("displayName", imp(appDisplayName), "@@:");
  addCatalogued(app, "-icon:launchFromLocation:context:activationSettings:actions:",
                imp(iconLaunchWithContext));
  addCatalogued(app, "-icon:launchFromLocation:", imp(iconLaunch));
  app.build();
  ClassBuilder("SBApplicationController", "NSObject")
      .classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("applicationWithBundleIdentifier:", imp(applicationWithBundleIdentifier), "@@:@")
      .instance("applicationWithDisplayIdentifier:", imp(applicationWithBundleIdentifier), "@@:@")
      .instance("allApplications", imp(allApplications), "@@:")
      .build();
  defineIcons();
  ClassBuilder iconController("SBIconController", "NSObject");
  iconController.ivar("_iconModel");
  addForceTouchIconView(iconController);
  addIconEditing(iconController);
  iconController.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:")
      .instance("openFolder", imp(openFolder), "@@:")
      .instance("clearHighlightedIcon", imp(clearHighlightedIcon), "v@:")
      .instance("closeFolderAnimated:withCompletion:", imp(closeFolderAnimatedCompletion), "v@:C@?")
      .instance("closeFolderAnimated:", imp(closeFolderAnimated), "v@:C")
      .instance("currentRootIconList", imp(currentRootIconList), "@@:")
      .instance("icons", imp(iconList), "@@:")
      .instance("folderIcons", imp(rootFolderIcons), "@@:")
      .instance("rootFolder", imp(rootFolder), "@@:")
      .instance("iconTapped:", imp(iconTapped), "v@:@")
      .build();
  makeHomeScreen();
  host::registerAction("tap", tapAction);
  host::registerAction("tap-folder", tapFolderAction);
  host::registerAction("rename-folder", renameFolderAction);
  host::registerAction("home", homeAction);
  host::registerQuery(
      "front", [](const std::vector<std::string>&) { return Value::string(springBoard().front); });
  host::registerQuery("folder", [](const std::vector<std::string>&) {
    return Value::string(springBoard().openFolder);
  });
}

// SpringBoard's home-button handlers and its front app, added to the
// SpringBoard class.
void addHomeButton(ClassBuilder& springBoardClass) {
  springBoardClass.instance("_menuButtonDown:", imp(menuButtonDown), "v@:^{__IOHIDEvent=}")
      .instance("_menuButtonUp:", imp(menuButtonUp), "v@:^{__IOHIDEvent=}")
      .instance("_accessibilityFrontMostApplication", imp(frontMostApplication), "@@:");
}

}  // namespace kv::sim::frameworks
