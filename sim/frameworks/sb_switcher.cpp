// The app switcher: its items (the recently used apps: display layouts
// through iOS 9, display items from iOS 9), showing it (SBUIController's
// toggle through iOS 9, SBMainSwitcherViewController from iOS 10, through
// workspace requests on iOS 11), choosing an item, closing it, iOS 10's
// force-press gesture to the previous app, and the "switcher",
// "switcher-select" and "force-press-switcher" actions.
#include <algorithm>
#include <map>

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

constexpr long kHomeButtonSource = 1;  // the switcher asked for by a double press of home
constexpr const char* kLayoutItemsKey = "SBDisplayLayoutDisplayItemsPlistKey";
constexpr const char* kItemIdentifierKey = "SBDisplayItemDisplayIdentifierPlistKey";

struct ItemState {
  std::string bundle;
};
struct GestureState {
  Retained nextItem;
};

// One switcher item per app, kept for the life of SpringBoard (a stored call
// may name one long after the switcher closed).
id itemFor(const char* className, const std::string& bundle) {
  static auto* items = new std::map<std::string, Retained>();
  std::string key = std::string(className) + " " + bundle;
  auto it = items->find(key);
  if (it != items->end()) return it->second.get();
  id item = host::newObject(platform::classNamed(className));
  stateOf<ItemState>(item).bundle = bundle;
  (*items)[key] = Retained::adopt(item);
  return item;
}

id itemIdentifier(id self, SEL) {
  return platform::makeString(stateOf<ItemState>(self).bundle);
}
id layoutPlist(id self, SEL) {
  Value item =
      Value::dictionary({{kItemIdentifierKey, Value::string(stateOf<ItemState>(self).bundle)}});
  return platform::makeObject(Value::dictionary({{kLayoutItemsKey, Value::array({item})}}));
}

std::string listOf(const std::vector<std::string>& apps) {
  std::string out;
  for (const auto& a : apps) out += (out.empty() ? "" : ", ") + a;
  return "[" + out + "]";
}

void showSwitcher() {
  springBoard().switcherVisible = true;
  host::logEvent("switcher", "shown " + listOf(springBoard().recents));
  showSwitcherCards();
}
void hideSwitcher() {
  if (!springBoard().switcherVisible) return;
  springBoard().switcherVisible = false;
  hideSwitcherCards();
  host::logEvent("switcher", "dismissed");
}

// ---- Through iOS 9: SBUIController and SBAppSwitcherController ----

BOOL toggleSwitcher(id, SEL) {
  springBoard().switcherVisible ? hideSwitcher() : showSwitcher();
  return 1;
}
// Before iOS 10 SpringBoard's UI controller toggles it, answering nothing.
void toggleSwitcherOld(id, SEL) {
  toggleSwitcher(nullptr, nullptr);
}
BOOL isAppSwitcherShowing(id, SEL) {
  return springBoard().switcherVisible ? 1 : 0;
}
void wantsToActivateApplication(id, SEL, id, id application) {
  if (application != nullptr) activateThroughTransaction(application);
}
// The layout's last display item is the app that comes to the front.
void wantsToActivateLayout(id, SEL, id, id layout, id, id) {
  Value plist = platform::valueOf(send<id>(layout, Sel("plistRepresentation")));
  const auto& items = plist[kLayoutItemsKey].asArray();
  id app = items.empty() ? nullptr : applicationNamed(items.back()[kItemIdentifierKey].asString());
  if (app != nullptr) activateThroughTransaction(app);
}
void switcherItemTapped(id self, SEL, id, id layout) {
  id ui = sharedOf("SBUIController");
  const char* byLayout =
      "-appSwitcher:wantsToActivateDisplayLayout:displayIDsToURLs:displayIDsToActions:";
  if (cataloguedHere("SBUIController", byLayout) != nullptr) {
    id none = platform::makeObject(Value::dictionary({}));
    send<void>(ui, Sel(byLayout + 1), self, layout, none, none);
  } else {
    id app = applicationNamed(stateOf<ItemState>(layout).bundle);
    send<void>(ui, Sel("appSwitcher:wantsToActivateApplication:"), self, app);
  }
}

// ---- From iOS 10: SBMainSwitcherViewController ----

BOOL toggleNoninteractively(id, SEL) {
  return toggleSwitcher(nullptr, nullptr);
}
BOOL toggleWithSource(id self, SEL, long source) {
  if (springBoard().switcherVisible)
    return send<BOOL>(self, Sel("dismissSwitcherNoninteractively"));
  return send<BOOL>(self, Sel("activateSwitcherNoninteractivelyWithSource:"), source);
}
BOOL activateWithSource(id, SEL, long) {
  runWorkspaceRequest("ActivateSwitcherNoninteractive", nullptr, showSwitcher);
  return 1;
}
BOOL dismissNoninteractively(id, SEL) {
  runWorkspaceRequest("DismissSwitcherNoninteractive", nullptr, [] { bringToFront("home"); });
  return 1;
}
BOOL switcherIsVisible(id, SEL) {
  return springBoard().switcherVisible ? 1 : 0;
}
// The chosen app comes to the front (which closes the switcher).
void selectedItem(id, SEL, id, id item) {
  id app = applicationNamed(platform::toString(send<id>(item, Sel("displayIdentifier"))));
  if (app == nullptr) return;
  runWorkspaceRequest(atLeast(11) ? "DismissSwitcherNoninteractive" : "ActivateApplication", app);
}

// -[SBSwitcherForcePressSystemGestureTransaction
// _transitionRequestForPresentationWithCommitment:toNextDisplayItem:]: the
// request to the next item (the gesture's own when none is given), run at
// once when committed.
id forcePressRequest(id self, SEL, BOOL commit, BOOL toNextItem) {
  if (toNextItem == 0) return nullptr;
  id item = stateOf<GestureState>(self).nextItem.get();
  id app = applicationNamed(platform::toString(send<id>(item, Sel("displayIdentifier"))));
  if (app == nullptr) return nullptr;
  host::logEvent("switcher", "force press toward " + stateOf<ItemState>(item).bundle +
                                 (commit ? ", committed" : ""));
  Retained request = Retained::adopt(newWorkspaceRequest("SwitcherForcePress", app));
  if (commit) runWorkspaceRequest(request.get());
  return send<id>(request.take(), Sel("autorelease"));
}

// The display item the gesture goes to.
id gestureNextItem(id self, SEL) {
  return stateOf<GestureState>(self).nextItem.get();
}

// ---- Actions ----

Value switcherAction(const host::ActionRequest&, std::string* error) {
  if (springBoard().locked) {
    *error = "the device is locked: no switcher";
    return {};
  }
  id main = sharedOf("SBMainSwitcherViewController");
  if (main == nullptr) {
    send<void>(sharedOf("SBUIController"), Sel("_toggleSwitcher"));
  } else if (platform::respondsTo(main, Sel("toggleSwitcherNoninteractivelyWithSource:"))) {
    send<BOOL>(main, Sel("toggleSwitcherNoninteractivelyWithSource:"), kHomeButtonSource);
  } else {
    send<BOOL>(main, Sel("toggleSwitcherNoninteractively"));
  }
  return {};
}

Value switcherSelectAction(const host::ActionRequest& request, std::string* error) {
  const auto& recents = springBoard().recents;
  if (!springBoard().switcherVisible ||
      std::find(recents.begin(), recents.end(), request.args[0]) == recents.end()) {
    *error = "the switcher does not show " + request.args[0];
    return {};
  }
  if (zoomUpToCard(request.args[0])) return {};
  id main = sharedOf("SBMainSwitcherViewController");
  if (main == nullptr) {
    send<void>(sharedOf("SBAppSwitcherController"), Sel("switcherScroller:itemTapped:"),
               id{nullptr}, itemFor("SBDisplayLayout", request.args[0]));
  } else {
    send<void>(main, Sel("switcherContentController:selectedItem:"),
               sharedOf("SBDeckSwitcherViewController"), itemFor("SBDisplayItem", request.args[0]));
  }
  return {};
}

// The gesture switches to the app used before the one in front.
Value forcePressAction(const host::ActionRequest&, std::string* error) {
  const auto& recents = springBoard().recents;
  size_t previous = springBoard().front == "home" ? 0 : 1;
  if (!cataloguedHere("SBSwitcherForcePressSystemGestureTransaction") || springBoard().locked ||
      recents.size() <= previous) {
    *error = "no force-press gesture here (iOS 10 and later, unlocked, a previous app)";
    return {};
  }
  // The workspace keeps the gesture's transaction until the next gesture.
  static auto* gesture = new Retained();
  *gesture = Retained::adopt(
      host::newObject(platform::classNamed("SBSwitcherForcePressSystemGestureTransaction")));
  id item = itemFor("SBDisplayItem", recents[previous]);
  stateOf<GestureState>(gesture->get()).nextItem = Retained(item);
  send<id>(gesture->get(),
           Sel("_transitionRequestForPresentationWithCommitment:toNextDisplayItem:"), BOOL{1},
           BOOL{1});
  return {};
}

}  // namespace

id switcherItemFor(const char* className, const std::string& bundleIdentifier) {
  return itemFor(className, bundleIdentifier);
}

bool closeSwitcher() {
  if (!springBoard().switcherVisible) return false;
  hideSwitcher();
  return true;
}

void pressHomeInSwitcher() {
  id main = sharedOf("SBMainSwitcherViewController");
  if (main != nullptr && platform::respondsTo(main, Sel("dismissSwitcherNoninteractively"))) {
    send<BOOL>(main, Sel("dismissSwitcherNoninteractively"));
    return;
  }
  bringToFront("home");
}

void addSwitcherControls(ClassBuilder& ui) {
  addCatalogued(ui, "-_toggleSwitcher", imp(toggleSwitcherOld));
  addCatalogued(ui, "-isAppSwitcherShowing", imp(isAppSwitcherShowing));
  addCatalogued(ui, "-appSwitcher:wantsToActivateApplication:", imp(wantsToActivateApplication));
  addCatalogued(ui,
                "-appSwitcher:wantsToActivateDisplayLayout:displayIDsToURLs:displayIDsToActions:",
                imp(wantsToActivateLayout));
}

void defineSpringBoardSwitcher() {
  ClassBuilder layout("SBDisplayLayout", "NSObject");
  addCatalogued(layout, "-plistRepresentation", imp(layoutPlist));
  if (cataloguedHere("SBDisplayLayout")) layout.build();
  ClassBuilder item("SBDisplayItem", "NSObject");
  addCatalogued(item, "-displayIdentifier", imp(itemIdentifier));
  if (cataloguedHere("SBDisplayItem")) item.build();
  ClassBuilder appSwitcher("SBAppSwitcherController", "UIViewController");
  addCatalogued(appSwitcher, "-switcherScroller:itemTapped:", imp(switcherItemTapped));
  addCatalogued(appSwitcher, "-switcherIconScroller:activate:", imp(switcherItemTapped));
  if (cataloguedHere("SBAppSwitcherController")) appSwitcher.build();

  if (cataloguedHere("SBMainSwitcherViewController")) {
    ClassBuilder main("SBMainSwitcherViewController", "UIViewController");
    main.classMethod("sharedInstance", imp(sharedInstanceOf), "@@:");
    addCatalogued(main, "-isVisible", imp(switcherIsVisible));
    addCatalogued(main, "-toggleSwitcherNoninteractively", imp(toggleNoninteractively));
    addCatalogued(main, "-toggleSwitcherNoninteractivelyWithSource:", imp(toggleWithSource));
    addCatalogued(main, "-activateSwitcherNoninteractivelyWithSource:", imp(activateWithSource));
    addCatalogued(main, "-dismissSwitcherNoninteractively", imp(dismissNoninteractively));
    addCatalogued(main, "-switcherContentController:selectedItem:", imp(selectedItem));
    main.build();
    ClassBuilder("SBDeckSwitcherViewController", "UIViewController").build();
  }
  ClassBuilder gesture("SBSwitcherForcePressSystemGestureTransaction", "NSObject");
  addCatalogued(gesture, "-_transitionRequestForPresentationWithCommitment:toNextDisplayItem:",
                imp(forcePressRequest));
  addCatalogued(gesture, "-nextDisplayItem", imp(gestureNextItem));
  if (cataloguedHere("SBSwitcherForcePressSystemGestureTransaction")) gesture.build();

  defineSwitcherCards();
  host::registerAction("switcher", switcherAction);
  host::registerAction("switcher-select", switcherSelectAction);
  host::registerAction("force-press-switcher", forcePressAction);
  host::registerQuery("switcher", [](const std::vector<std::string>&) {
    std::vector<Value> items;
    for (const auto& a : springBoard().recents) items.push_back(Value::string(a));
    return Value::dictionary({{"visible", Value::boolean(springBoard().switcherVisible)},
                              {"items", Value::array(std::move(items))}});
  });
}

}  // namespace kv::sim::frameworks
