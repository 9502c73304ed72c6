// The shortcut menu of a force press on an app icon: iOS 9's
// SBApplicationShortcutMenu, whose chosen item activates the app; from
// iOS 10 the force-touch controller (SBIconController holds the pressed
// icon's view), whose chosen item launches the app through an
// open-application request from the shortcut origin. The apps' shortcut
// items, and the "force-touch" and "shortcut" actions.
#include <string>
#include <vector>

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

constexpr const char* kShortcutOrigin = "__SBLaunchOriginShortcutItem";
constexpr const char* kForceTouchIconView = "_appIconForceTouchIconView";

// The shortcut items every app lists: its title and the suffix of its type.
struct ShortcutInfo {
  const char* title;
  const char* typeSuffix;
};
const ShortcutInfo kShortcuts[] = {{"New", ".new"}, {"Search", ".search"}};

struct ItemState {
  std::string type;
  std::string title;
};
// A menu (iOS 9), a force-touch controller (iOS 10 on) or an icon view.
struct MenuState {
  std::string bundle;
  Retained icon;
  std::vector<Retained> items;
};

// Every menu and controller made, kept for the life of SpringBoard: a stored
// call may name one after it closed.
std::vector<Retained>& madeMenus() {
  static auto* list = new std::vector<Retained>();
  return *list;
}
id gShowing = nullptr;  // the menu or controller showing (one of madeMenus)

id itemType(id self, SEL) {
  return platform::makeString(stateOf<ItemState>(self).type);
}
id itemTitle(id self, SEL) {
  return platform::makeString(stateOf<ItemState>(self).title);
}
id menuApplication(id self, SEL) {
  return applicationNamed(stateOf<MenuState>(self).bundle);
}
id viewIcon(id self, SEL) {
  return stateOf<MenuState>(self).icon.get();
}
id controllerDelegate(id, SEL) {
  return sharedOf("SBIconController");
}
id forceTouchIconView(id self, SEL) {
  auto* slot = static_cast<id*>(platform::ivarAddress(self, kForceTouchIconView));
  return slot == nullptr ? nullptr : *slot;
}

// A new menu-like object of `cls` for `bundle`'s icon, with its items (a
// folder's peek, named by the folder, has none).
id newMenu(Class cls, const std::string& bundle, bool isView) {
  id menu = isView ? newView(class_getName(cls), CGRect{}) : host::newObject(cls);
  auto& state = stateOf<MenuState>(menu);
  state.bundle = bundle;
  state.icon = Retained(appIconNamed(bundle));
  if (!state.icon) {
    state.icon = Retained(folderIconNamed(bundle));
    madeMenus().push_back(Retained::adopt(menu));
    return menu;
  }
  for (const auto& s : kShortcuts) {
    Retained item =
        Retained::adopt(host::newObject(platform::classNamed("SBSApplicationShortcutItem")));
    stateOf<ItemState>(item.get()) = {bundle + s.typeSuffix, s.title};
    state.items.push_back(item);
  }
  madeMenus().push_back(Retained::adopt(menu));
  return menu;
}

void showMenu(id menu) {
  gShowing = menu;
  springBoard().shortcutMenu = stateOf<MenuState>(menu).bundle;
  host::logEvent("shortcut", "menu of " + springBoard().shortcutMenu);
}

std::string describeItem(id item) {
  return quoteForLog(stateOf<ItemState>(item).title) + " (" + stateOf<ItemState>(item).type + ")";
}

// -[SBApplicationShortcutMenu menuContentView:activateShortcutItem:index:]
// (iOS 9): the menu closes and the app comes to the front.
void menuActivateItem(id self, SEL, id, id item, long) {
  const std::string& bundle = stateOf<MenuState>(self).bundle;
  host::logEvent("shortcut", describeItem(item) + " of " + bundle);
  closeShortcutMenu();
  activateThroughTransaction(applicationNamed(bundle));
}

// -[SBUIIconForceTouchViewController presentAnimated:withCompletionHandler:]
// (iOS 10 on): the pressed icon's menu shows.
BOOL forceTouchPresent(id self, SEL, BOOL, id completion) {
  showMenu(self);
  platform::callBlock<void(id)>(completion, id{nullptr});
  return 1;
}

// From iOS 10 a chosen item asks for the app from the shortcut origin.
void pickFromForceTouch(id controller, id item) {
  const std::string bundle = stateOf<MenuState>(controller).bundle;
  host::logEvent("shortcut", describeItem(item) + " of " + bundle);
  closeShortcutMenu();
  requestOpenApplication({bundle, false, kShortcutOrigin});
}

void presentForceTouch(const std::string& name);

}  // namespace

bool forceTouchIcon(const std::string& bundle, std::string* error) {
  if (!atLeast(9) || system().ipad) {
    *error = "no 3D Touch on this device";
    return false;
  }
  if (springBoard().locked || !springBoard().screenOn || appIconNamed(bundle) == nullptr) {
    *error = "no icon of " + bundle + " to press";
    return false;
  }
  if (alertTakesTouch("force press on " + bundle)) return false;
  closeShortcutMenu();
  if (!cataloguedHere("SBUIIconForceTouchViewController")) {
    showMenu(newMenu(platform::classNamed("SBApplicationShortcutMenu"), bundle, true));
    return true;
  }
  presentForceTouch(bundle);
  return true;
}

namespace {

// The force-touch controller of iOS 10 and later over the icon of `name`
// (an app's bundle identifier or a folder's name): the icon controller
// holds the pressed icon's view, then the controller presents.
void presentForceTouch(const std::string& name) {
  id view = newMenu(platform::classNamed("SBIconView"), name, true);
  id controllerOwner = sharedOf("SBIconController");
  if (auto* slot = static_cast<id*>(platform::ivarAddress(controllerOwner, kForceTouchIconView))) {
    *slot = view;  // kept alive by madeMenus
  }
  id controller = newMenu(platform::classNamed("SBUIIconForceTouchViewController"), name, false);
  ReplyBlock presented("shortcut menu of " + name);
  send<BOOL>(controller, Sel("presentAnimated:withCompletionHandler:"), BOOL{1}, presented.get());
}

Value forceTouchAction(const host::ActionRequest& request, std::string* error) {
  forceTouchIcon(request.args[0], error);
  return {};
}

// peek BUNDLE-ID|NAME: a force press on an app's or a folder's icon, which
// from iOS 10 presents the force-touch controller.
Value peekAction(const host::ActionRequest& request, std::string* error) {
  const std::string& name = request.args[0];
  if (!cataloguedHere("SBUIIconForceTouchViewController") || system().ipad) {
    *error = "no peek on this device (an iPhone with iOS 10 or later)";
    return {};
  }
  if (appIconNamed(name) != nullptr) {
    forceTouchIcon(name, error);
    return {};
  }
  if (springBoard().locked || !springBoard().screenOn || folderIconNamed(name) == nullptr) {
    *error = "no icon of " + name + " to press";
    return {};
  }
  if (alertTakesTouch("peek " + name)) return {};
  closeShortcutMenu();
  presentForceTouch(name);
  return {};
}

// shortcut BUNDLE-ID [INDEX]: presses the icon unless its menu shows, then
// chooses item INDEX (0 first).
Value shortcutAction(const host::ActionRequest& request, std::string* error) {
  const std::string& bundle = request.args[0];
  if (springBoard().shortcutMenu != bundle && !forceTouchIcon(bundle, error)) return {};
  if (springBoard().shortcutMenu != bundle) {
    host::logEvent("shortcut", "no menu of " + bundle + " shows");
    return {};
  }
  const std::string which = request.args.size() > 1 ? request.args[1] : "0";
  if (which.empty() || which.find_first_not_of("0123456789") != std::string::npos) {
    *error = "expected shortcut BUNDLE-ID [INDEX]";
    return {};
  }
  size_t index = std::stoul(which);
  const auto& items = stateOf<MenuState>(gShowing).items;
  if (index >= items.size()) {
    *error = "the menu of " + bundle + " has " + std::to_string(items.size()) + " items";
    return {};
  }
  id menu = gShowing;
  id item = items[index].get();
  if (cataloguedHere("SBApplicationShortcutMenu")) {
    send<void>(menu, Sel("menuContentView:activateShortcutItem:index:"), id{nullptr}, item,
               static_cast<long>(index));
  } else {
    pickFromForceTouch(menu, item);
  }
  return {};
}

}  // namespace

id iconViewNamed(const std::string& name) {
  return newMenu(platform::classNamed("SBIconView"), name, true);
}

bool closeShortcutMenu() {
  if (springBoard().shortcutMenu.empty()) return false;
  host::logEvent("shortcut", "menu of " + springBoard().shortcutMenu + " closed");
  springBoard().shortcutMenu.clear();
  gShowing = nullptr;
  return true;
}

void addForceTouchIconView(ClassBuilder& iconController) {
  if (addCatalogued(iconController, "-_appIconForceTouchIconView", imp(forceTouchIconView))) {
    iconController.ivar(kForceTouchIconView);
  }
}

void defineSpringBoardShortcuts() {
  ClassBuilder("SBSApplicationShortcutItem", "NSObject")
      .instance("type", imp(itemType), "@@:")
      .instance("localizedTitle", imp(itemTitle), "@@:")
      .build();
  ClassBuilder iconView("SBIconView", "UIView");
  addCatalogued(iconView, "-icon", imp(viewIcon));
  iconView.build();
  ClassBuilder menu("SBApplicationShortcutMenu", "UIView");
  addCatalogued(menu, "-application", imp(menuApplication));
  addCatalogued(menu, "-menuContentView:activateShortcutItem:index:", imp(menuActivateItem));
  if (cataloguedHere("SBApplicationShortcutMenu")) menu.build();
  ClassBuilder controller("SBUIIconForceTouchViewController", "UIViewController");
  addCatalogued(controller, "-presentAnimated:withCompletionHandler:", imp(forceTouchPresent));
  addCatalogued(controller, "-delegate", imp(controllerDelegate));
  if (cataloguedHere("SBUIIconForceTouchViewController")) controller.build();
  host::registerAction("force-touch", forceTouchAction);
  host::registerAction("peek", peekAction);
  host::registerAction("shortcut", shortcutAction);
}

}  // namespace kv::sim::frameworks
