// The Settings app's controllers: PSViewController and PSListController with
// the path a tapped row takes (the row is selected, the list controller
// shows the row's pane, the root controller pushes it, or on an iPad shows
// it beside the list), the root list and root controller of each version,
// and the panes the scenarios reach.
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/prefs.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), Sel("sharedApplication"));
}

// ---- PSViewController ----

struct PaneState {
  Retained specifier;
  std::vector<Retained> rows;  // the list controller's specifiers, once loaded
  bool loaded = false;
};

id paneSpecifier(id self, SEL) {
  return stateOf<PaneState>(self).specifier.get();
}
void paneSetSpecifier(id self, SEL, id specifier) {
  stateOf<PaneState>(self).specifier.reset(specifier);
}
id paneRootController(id, SEL) {
  return send<id>(application(), Sel("rootController"));
}
void paneDidAppear(id self, SEL cmd, BOOL animated) {
  sendSuper<void>(platform::classNamed("UIViewController"), self, cmd, animated);
  std::string id = rowIdOf(stateOf<PaneState>(self).specifier.get());
  host::logEvent("settings", "showing " + (id.empty() ? paneIdOf(self) : id) + " (" +
                                 platform::classNameOf(self) + ")");
}

// ---- PSListController ----

std::vector<Retained>& rowsOf(id self) {
  auto& p = stateOf<PaneState>(self);
  if (!p.loaded) {
    p.loaded = true;
    for (const auto& rowId : rowIdsOf(paneIdOf(self))) {
      p.rows.push_back(Retained::adopt(newSpecifier(paneIdOf(self), rowId)));
    }
  }
  return p.rows;
}

id listSpecifiers(id self, SEL) {
  std::vector<id> items;
  for (auto& r : rowsOf(self)) items.push_back(r.get());
  return arrayOf(items);
}
id listSpecifierForID(id self, SEL, id rowId) {
  std::string wanted = platform::toString(rowId);
  for (auto& r : rowsOf(self)) {
    if (rowIdOf(r.get()) == wanted) return r.get();
  }
  return nullptr;
}
// Coming back to a list, the row that was tapped is no longer highlighted.
void listWillAppear(id self, SEL cmd, BOOL animated) {
  platform::sendSuper<void>(platform::classNamed("PSViewController"), self, cmd, animated);
  for (auto& r : rowsOf(self)) {
    id cell = send<id>(send<id>(r.get(), Sel("properties")), Sel("objectForKey:"),
                       platform::makeString("cellObject"));
    send<void>(cell, Sel("setSelected:"), BOOL{0});
  }
}

void listReloadSpecifiers(id self, SEL) {
  host::logEvent("settings", "reload " + paneIdOf(self) + " (" + platform::classNameOf(self) + ")");
}

// Shows a controller from this list: pushed on the root controller, or on
// an iPad, for a row of the root list, in place of the pane beside it.
void listShowController(id self, SEL, id controller, BOOL animated) {
  id root = send<id>(application(), Sel("rootController"));
  bool besideList = system().ipad && self == send<id>(application(), Sel("rootListController"));
  if (besideList) {
    send<void>(root, Sel("setViewControllers:animated:"), platform::makeArray({controller}),
               BOOL{0});
  } else {
    send<void>(root, Sel("pushViewController:animated:"), controller, animated);
  }
}

// The row's pane: a new controller of the row's class with the row's
// specifier, shown from this list.
void listShowControllerFromSpecifier(id self, SEL, id specifier) {
  std::string className = detailClassOf(specifier);
  Class cls = platform::classNamed(className.c_str());
  if (cls == nullptr) return;
  Retained controller = Retained::adopt(host::newObject(cls));
  send<void>(controller.get(), Sel("setSpecifier:"), specifier);
  send<void>(self, Sel("showController:animate:"), controller.get(), BOOL{1});
}

// A switch's new value goes to the row's setter.
void listSetPreferenceValue(id self, SEL, id value, id specifier) {
  SEL setter = actionOf(specifier);
  if (setter == nullptr || !platform::respondsTo(self, setter)) return;
  send<void>(self, setter, value, specifier);
}

// A tap on a row: the row is selected, then what the row does happens.
void listDidSelectRow(id self, SEL, id, id indexPath) {
  auto row = static_cast<size_t>(
      send<platform::UInteger>(indexPath, Sel("indexAtPosition:"), platform::UInteger{0}));
  auto& rows = rowsOf(self);
  if (row >= rows.size()) return;
  id specifier = rows[row].get();
  id cell = send<id>(send<id>(specifier, Sel("properties")), Sel("objectForKey:"),
                     platform::makeString("cellObject"));
  send<void>(cell, Sel("setSelected:"), BOOL{1});
  if (!detailClassOf(specifier).empty()) {
    send<void>(self, Sel("_showControllerFromSpecifier:"), specifier);
    return;
  }
  SEL action = actionOf(specifier);
  if (action == nullptr || !platform::respondsTo(self, action)) return;
  if (std::string(platform::selectorName(action)).find(':') == std::string::npos) {
    send<void>(self, action);
  } else {
    send<void>(self, action, specifier);
  }
}

// ---- The root list and the panes' own behaviour ----

void listSetAirplaneMode(id, SEL, id value, id specifier) {
  bool on = platform::integerOf(value).value_or(0) != 0;
  setAirplaneMode(on);
  send<void>(switchOf(specifier), Sel("setOn:"), BOOL{on ? BOOL{1} : BOOL{0}});
}

void resetIconPositions(id, SEL, id) {
  host::logEvent("settings", "home screen layout reset");
}

void deleteApp(id self, SEL) {
  host::logEvent("settings", "deleted " + rowIdOf(stateOf<PaneState>(self).specifier.get()));
}

void setTouchIDUnlockEnabled(id, SEL, id value, id specifier) {
  bool on = platform::integerOf(value).value_or(0) != 0;
  send<void>(switchOf(specifier), Sel("setOn:"), BOOL{on ? BOOL{1} : BOOL{0}});
  host::logEvent("settings", std::string("fingerprint unlock ") + (on ? "on" : "off"));
}

// The language setup changes the system language: SpringBoard restarts.
void setLanguage(id, SEL, id language) {
  host::logEvent("settings", "language " + platform::toString(language) + ", restarting");
}

// ---- Root controllers: the Settings app's navigation ----

void rootPush(id self, SEL cmd, id controller, BOOL animated) {
  sendSuper<void>(platform::classNamed("PSRootController"), self, cmd, controller, animated);
}
void rootSetControllers(id self, SEL cmd, id controllers, BOOL animated) {
  sendSuper<void>(platform::classNamed("PSRootController"), self, cmd, controllers, animated);
}

// An iPad's split view: the list's navigation and the pane's, side by side.
struct SplitState {
  std::vector<Retained> children;
};
id gSplitView = nullptr;  // the app's one split view, made at start; kept

id splitViewControllers(id self, SEL) {
  std::vector<id> items;
  for (auto& c : stateOf<SplitState>(self).children) items.push_back(c.get());
  return arrayOf(items);
}
void splitSetViewControllers(id self, SEL, id controllers) {
  auto& children = stateOf<SplitState>(self).children;
  children.clear();
  for (platform::UInteger i = 0; i < platform::arrayCount(controllers); ++i) {
    children.emplace_back(platform::arrayObjectAt(controllers, i));
  }
  if (gSplitView == nullptr) gSplitView = send<id>(self, Sel("retain"));
}

// The split view a controller is shown in: it, or one of its parents, is
// one of the split view's children.
id controllerSplitView(id self, SEL) {
  if (gSplitView == nullptr) return nullptr;
  for (id c = self; c != nullptr; c = send<id>(c, Sel("parentViewController"))) {
    for (auto& child : stateOf<SplitState>(gSplitView).children) {
      if (child.get() == c) return gSplitView;
    }
  }
  return nullptr;
}

}  // namespace

std::string paneIdOf(id listController) {
  if (listController == send<id>(application(), Sel("rootListController"))) return "root";
  return rowIdOf(stateOf<PaneState>(listController).specifier.get());
}

void definePrefsPanes() {
  const char* rootList = atLeast(9) ? "PSUIPrefsListController" : "PrefsListController";
  const char* rootNavigation = atLeast(9) ? "PSUIPrefsRootController" : "PrefsRootController";
  class_addMethod(platform::classNamed("UIViewController"), Sel("splitViewController"),
                  imp(controllerSplitView), "@@:");
  ClassBuilder("PSViewController", "UIViewController")
      .instance("specifier", imp(paneSpecifier), "@@:")
      .instance("setSpecifier:", imp(paneSetSpecifier), "v@:@")
      .instance("rootController", imp(paneRootController), "@@:")
      .instance("viewDidAppear:", imp(paneDidAppear), "v@:C")
      .build();
  ClassBuilder("PSListController", "PSViewController")
      .instance("specifiers", imp(listSpecifiers), "@@:")
      .instance("specifierForID:", imp(listSpecifierForID), "@@:@")
      .instance("reloadSpecifiers", imp(listReloadSpecifiers), "v@:")
      .instance("viewWillAppear:", imp(listWillAppear), "v@:C")
      .instance("_showControllerFromSpecifier:", imp(listShowControllerFromSpecifier), "v@:@")
      .instance("showController:animate:", imp(listShowController), "v@:@C")
      .instance("setPreferenceValue:specifier:", imp(listSetPreferenceValue), "v@:@@")
      .instance("tableView:didSelectRowAtIndexPath:", imp(listDidSelectRow), "v@:@@")
      .build();
  ClassBuilder list(rootList, "PSListController");
  addCatalogued(list, "-setAirplaneMode:specifier:", imp(listSetAirplaneMode));
  // The row path runs through the version's own class, as its header says.
  addCatalogued(list, "-_showControllerFromSpecifier:", imp(listShowControllerFromSpecifier));
  list.build();
  ClassBuilder("PSRootController", "UINavigationController").build();
  ClassBuilder navigation(rootNavigation, "PSRootController");
  addCatalogued(navigation, "-pushViewController:animated:", imp(rootPush));
  addCatalogued(navigation, "-setViewControllers:animated:", imp(rootSetControllers));
  navigation.build();
  ClassBuilder("UISplitViewController", "UIViewController")
      .instance("viewControllers", imp(splitViewControllers), "@@:")
      .instance("setViewControllers:", imp(splitSetViewControllers), "v@:@")
      .build();

  ClassBuilder("APNetworksController", "PSListController").build();
  ClassBuilder("KavelinPrefsListController", "PSListController").build();
  ClassBuilder("ISInternationalLanguageController", "PSListController").build();
  ClassBuilder("ISInternationalLanguageSetupController", "NSObject")
      .instance("setLanguage:", imp(setLanguage), "v@:@")
      .build();
  if (cataloguedHere("ResetPrefController")) {
    ClassBuilder reset("ResetPrefController", "PSListController");
    addCatalogued(reset, "-resetIconPositions:", imp(resetIconPositions));
    reset.build();
  }
  if (cataloguedHere("UsageDetailController")) {
    ClassBuilder usage("UsageDetailController", "PSListController");
    addCatalogued(usage, "-deleteApp", imp(deleteApp));
    usage.build();
  }
  if (cataloguedHere("PSUIBiometricController")) {
    ClassBuilder biometric("PSUIBiometricController", "PSListController");
    addCatalogued(biometric, "-setTouchIDUnlockEnabled:specifier:", imp(setTouchIDUnlockEnabled));
    biometric.build();
  }
}

}  // namespace kv::sim::frameworks
