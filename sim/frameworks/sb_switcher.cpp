// The app switcher: its items (the recently used apps: display layouts
// through iOS 9, display items from iOS 9), showing it (SBUIController's
// toggle through iOS 9, SBMainSwitcherViewController from iOS 10, through
// workspace requests on iOS 11), the swipe-up gesture that pulls it up
// (SBSystemGestureManager, iOS 10 and later), closing it back to the app it
// was opened over (the return item), choosing an item (on iOS 11 a fluid
// switcher gesture transaction from the switcher's layout to the app's),
// iOS 10's force-press gesture to the previous app, and the "switcher",
// "switcher-select", "swipe-up-switcher" and "force-press-switcher" actions.
#include <algorithm>
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
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

constexpr long kHomeButtonSource = 1;  // the switcher asked for by a double press of home
constexpr const char* kLayoutItemsKey = "SBDisplayLayoutDisplayItemsPlistKey";
constexpr const char* kItemIdentifierKey = "SBDisplayItemDisplayIdentifierPlistKey";

constexpr Integer kGestureBegan = 1;     // UIGestureRecognizerStateBegan
constexpr Integer kGestureChanged = 2;   // UIGestureRecognizerStateChanged
constexpr Integer kGestureEnded = 3;     // UIGestureRecognizerStateEnded
constexpr Integer kHomeScreenMode = 1;   // a layout's environment: the home screen
constexpr Integer kSwitcherMode = 2;     // the switcher
constexpr Integer kApplicationMode = 3;  // an app

struct ItemState {
  std::string bundle;
};
struct GestureState {
  Retained nextItem;
};
// The main switcher: the item it returns to when it closes without a choice.
struct MainSwitcherState {
  Retained returnItem;
};
// iOS 11's layouts: a request's context, a layout state, an element.
struct FluidRequestState {
  Retained context;
};
struct LayoutContextState {
  Retained layout;
  Retained previous;
};
struct LayoutState {
  Integer mode = 0;
  Retained elements;
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

// The view the switcher's controller presents in, from iOS 10.
id containerView() {
  static auto* view = new Retained();
  if (!*view && cataloguedHere("SBSwitcherContainerView"))
    *view = Retained::adopt(newView("SBSwitcherContainerView", CGRect{}));
  return view->get();
}

// The switcher's view comes up inside its container (or goes).
void presentSwitcherView(bool present) {
  id main = sharedOf("SBMainSwitcherViewController");
  id container = containerView();
  if (main == nullptr || container == nullptr) return;
  id view = send<id>(main, Sel("view"));
  if (present) {
    send<void>(container, Sel("addSubview:"), view);
  } else if (superviewOf(view) == container) {
    send<void>(view, Sel("removeFromSuperview"));
  }
}

void showSwitcher() {
  springBoard().switcherVisible = true;
  presentSwitcherView(true);
  host::logEvent("switcher", "shown " + listOf(springBoard().recents));
  showSwitcherCards();
}
void hideSwitcher() {
  if (!springBoard().switcherVisible) return;
  springBoard().switcherVisible = false;
  hideSwitcherCards();
  presentSwitcherView(false);
  host::logEvent("switcher", "dismissed");
}

// Closing the switcher without a choice goes back to the app it was opened
// over: the main switcher is told that app's item as its return item first.
// Without one it closes to the home screen.
void tellReturnItem() {
  id main = sharedOf("SBMainSwitcherViewController");
  stateOf<MainSwitcherState>(main).returnItem.reset();
  const std::string& front = springBoard().front;
  if (front == "home" ||
      !cataloguedHere("SBMainSwitcherViewController", "-_setReturnToDisplayItem:")) {
    return;
  }
  send<void>(main, Sel("_setReturnToDisplayItem:"), itemFor("SBDisplayItem", front));
}
// Where a switcher closed without a choice leaves the person.
void closeToReturnItem() {
  id main = sharedOf("SBMainSwitcherViewController");
  Retained item = std::move(stateOf<MainSwitcherState>(main).returnItem);
  hideSwitcher();
  bringToFront(item ? stateOf<ItemState>(item.get()).bundle : "home");
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
  if (!springBoard().switcherVisible) {
    showSwitcher();
    return 1;
  }
  tellReturnItem();
  closeToReturnItem();
  return 1;
}
BOOL toggleWithSource(id self, SEL, Integer source) {
  if (springBoard().switcherVisible) {
    tellReturnItem();
    return send<BOOL>(self, Sel("dismissSwitcherNoninteractively"));
  }
  return send<BOOL>(self, Sel("activateSwitcherNoninteractivelyWithSource:"), source);
}
BOOL activateWithSource(id, SEL, Integer) {
  runWorkspaceRequest("ActivateSwitcherNoninteractive", nullptr, showSwitcher);
  return 1;
}
BOOL dismissNoninteractively(id, SEL) {
  runWorkspaceRequest("DismissSwitcherNoninteractive", nullptr, closeToReturnItem);
  return 1;
}
// -[SBMainSwitcherViewController _setReturnToDisplayItem:]: the app the
// switcher goes back to when it closes; told once it has closed, the
// switcher goes back to it at once.
void setReturnItem(id self, SEL, id item) {
  if (springBoard().switcherVisible) {
    stateOf<MainSwitcherState>(self).returnItem = Retained(item);
    return;
  }
  if (item != nullptr) bringToFront(stateOf<ItemState>(item).bundle);
}
BOOL switcherIsVisible(id, SEL) {
  return springBoard().switcherVisible ? 1 : 0;
}
// The chosen app comes to the front (which closes the switcher).
void selectedItem(id, SEL, id, id item) {
  id app = applicationNamed(platform::toString(send<id>(item, Sel("displayIdentifier"))));
  if (app == nullptr) return;
  runWorkspaceRequest("ActivateApplication", app);
}

// ---- iOS 11: the fluid switcher's layouts ----

id newLayoutState(Integer mode, const std::vector<std::string>& apps) {
  id layout = host::newObject(platform::classNamed("SBMainDisplayLayoutState"));
  std::vector<id> elements;
  for (const auto& app : apps) {
    id element = host::newObject(platform::classNamed("SBLayoutElement"));
    stateOf<ItemState>(element).bundle = app;
    elements.push_back(send<id>(element, Sel("autorelease")));
  }
  stateOf<LayoutState>(layout).mode = mode;
  stateOf<LayoutState>(layout).elements = Retained(arrayOf(elements));
  return send<id>(layout, Sel("autorelease"));
}

// The layout on screen now: the switcher, an app, or the home screen.
id currentLayout() {
  const std::string& front = springBoard().front;
  if (springBoard().switcherVisible)
    return newLayoutState(kSwitcherMode, front == "home" ? std::vector<std::string>{}
                                                         : std::vector<std::string>{front});
  if (front == "home") return newLayoutState(kHomeScreenMode, {});
  return newLayoutState(kApplicationMode, {front});
}

id requestApplicationContext(id self, SEL) {
  return stateOf<FluidRequestState>(self).context.get();
}
id contextLayoutState(id self, SEL) {
  return stateOf<LayoutContextState>(self).layout.get();
}
id contextPreviousLayoutState(id self, SEL) {
  return stateOf<LayoutContextState>(self).previous.get();
}
Integer layoutMode(id self, SEL) {
  return stateOf<LayoutState>(self).mode;
}
id layoutElements(id self, SEL) {
  return stateOf<LayoutState>(self).elements.get();
}
id elementIdentifier(id self, SEL) {
  return platform::makeString(stateOf<ItemState>(self).bundle);
}

// -[SBFluidSwitcherGestureWorkspaceTransaction
// _runSceneLayoutTransactionForTransitionRequest:updateScenes:]: the screen
// takes the new layout; an app's scene comes up only with updateScenes.
void fluidRunLayout(id, SEL, id request, BOOL updateScenes) {
  id context = send<id>(request, Sel("applicationContext"));
  id layout = send<id>(context, Sel("layoutState"));
  const LayoutState& state = stateOf<LayoutState>(layout);
  std::vector<std::string> apps;
  id elements = state.elements.get();
  for (platform::UInteger i = 0; i < platform::arrayCount(elements); ++i)
    apps.push_back(stateOf<ItemState>(platform::arrayObjectAt(elements, i)).bundle);
  if (state.mode == kSwitcherMode) {
    if (!springBoard().switcherVisible) showSwitcher();
  } else if (state.mode == kHomeScreenMode || apps.empty()) {
    bringToFront("home");
  } else if (updateScenes != 0) {
    host::logEvent("switcher", "fluid layout to " + apps.front());
    bringToFront(apps.front());
  } else {
    hideSwitcher();
    host::logEvent("switcher", "fluid layout to " + apps.front() + " without its scene");
  }
}
void fluidDidComplete(id, SEL) {}

// A fluid gesture from what shows now to `layout`: its transaction runs the
// layout and completes.
void runFluidGesture(id layout) {
  Retained transaction = Retained::adopt(
      host::newObject(platform::classNamed("SBFluidSwitcherGestureWorkspaceTransaction")));
  Retained request =
      Retained::adopt(host::newObject(platform::classNamed("SBMainWorkspaceTransitionRequest")));
  Retained context = Retained::adopt(
      host::newObject(platform::classNamed("SBWorkspaceApplicationSceneTransitionContext")));
  stateOf<LayoutContextState>(context.get()).previous = Retained(currentLayout());
  stateOf<LayoutContextState>(context.get()).layout = Retained(layout);
  stateOf<FluidRequestState>(request.get()).context = context;
  send<void>(transaction.get(), Sel("_runSceneLayoutTransactionForTransitionRequest:updateScenes:"),
             request.get(), BOOL{1});
  send<void>(transaction.get(), Sel("_didComplete"));
}

// -[SpringBoard _returnToHomeScreenWithCompletion:]
void returnToHomeScreen(id, SEL, id completion) {
  bringToFront("home");
  platform::callBlock<void()>(completion);
}

// ---- The swipe-up gesture (iOS 10 and later) ----

// -[SBSystemGestureManager _systemGestureChanged:]: through iOS 10 the
// switcher follows the finger from the gesture's start and stays when it
// ends; a gesture that fails or is cancelled takes it down again. On iOS 11
// the fluid switcher takes the switcher's layout when the gesture ends.
void systemGestureChanged(id, SEL, id gesture) {
  Integer state = send<Integer>(gesture, Sel("state"));
  if (atLeast(11)) {
    if (state == kGestureEnded) {
      std::vector<std::string> apps;
      if (springBoard().front != "home") apps.push_back(springBoard().front);
      runFluidGesture(newLayoutState(kSwitcherMode, apps));
    }
    return;
  }
  if (state == kGestureBegan) {
    springBoard().switcherVisible = true;
    presentSwitcherView(true);
    host::logEvent("switcher", "follows the finger");
  } else if (state == kGestureEnded) {
    showSwitcher();
  } else if (state != kGestureChanged) {
    springBoard().switcherVisible = false;
    presentSwitcherView(false);
    host::logEvent("switcher", "gesture ended without the switcher");
  }
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
  if (cataloguedHere("SBFluidSwitcherGestureWorkspaceTransaction")) {
    runFluidGesture(newLayoutState(kApplicationMode, {request.args[0]}));
  } else if (main == nullptr) {
    send<void>(sharedOf("SBAppSwitcherController"), Sel("switcherScroller:itemTapped:"),
               id{nullptr}, itemFor("SBDisplayLayout", request.args[0]));
  } else {
    send<void>(main, Sel("switcherContentController:selectedItem:"),
               sharedOf("SBDeckSwitcherViewController"), itemFor("SBDisplayItem", request.args[0]));
  }
  return {};
}

// swipe-up-switcher: the system gesture's recognizer begins, moves and ends,
// unless it stops being recognized on the way.
Value swipeUpAction(const host::ActionRequest&, std::string* error) {
  if (!atLeast(10) || springBoard().locked || springBoard().switcherVisible) {
    *error = "no swipe-up to the switcher here (iOS 10 and later, unlocked, no switcher showing)";
    return {};
  }
  static auto* recognizer = new Retained();
  if (!*recognizer) {
    id allocated =
        platform::sendClass<id>(platform::classNamed("UIPanGestureRecognizer"), Sel("alloc"));
    *recognizer = Retained::adopt(
        send<id>(allocated, Sel("initWithTarget:action:"), id{nullptr}, static_cast<SEL>(nullptr)));
  }
  id gesture = recognizer->get();
  id manager = sharedOf("SBSystemGestureManager");
  host::logEvent("gesture", "swipe up from the bottom edge");
  for (Integer state : {kGestureBegan, kGestureChanged, kGestureEnded}) {
    if (send<BOOL>(gesture, Sel("isEnabled")) == 0) break;
    send<void>(gesture, Sel("setState:"), state);
    send<void>(manager, Sel("_systemGestureChanged:"), gesture);
    if (send<Integer>(gesture, Sel("state")) != state) break;  // it failed on the way
  }
  send<void>(gesture, Sel("setState:"), Integer{0});
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

// iOS 11's fluid switcher: its gesture transaction, the layouts it goes
// between, and SpringBoard's way back to the home screen.
void defineFluidSwitcher() {
  if (!cataloguedHere("SBFluidSwitcherGestureWorkspaceTransaction")) return;
  ClassBuilder transaction("SBFluidSwitcherGestureWorkspaceTransaction", "NSObject");
  addCatalogued(transaction, "-_runSceneLayoutTransactionForTransitionRequest:updateScenes:",
                imp(fluidRunLayout));
  addCatalogued(transaction, "-_didComplete", imp(fluidDidComplete));
  transaction.build();
  ClassBuilder context("SBWorkspaceApplicationSceneTransitionContext", "NSObject");
  addCatalogued(context, "-layoutState", imp(contextLayoutState));
  addCatalogued(context, "-previousLayoutState", imp(contextPreviousLayoutState));
  context.build();
  ClassBuilder layout("SBMainDisplayLayoutState", "NSObject");
  addCatalogued(layout, "-unlockedEnvironmentMode", imp(layoutMode));
  addCatalogued(layout, "-elements", imp(layoutElements));
  layout.build();
  ClassBuilder element("SBLayoutElement", "NSObject");
  addCatalogued(element, "-identifier", imp(elementIdentifier));
  element.build();
  // The workspace's requests, built before, carry the fluid switcher's context.
  Class request = platform::classNamed("SBMainWorkspaceTransitionRequest");
  if (request != nullptr &&
      cataloguedHere("SBMainWorkspaceTransitionRequest", "-applicationContext"))
    class_addMethod(request, Sel("applicationContext"), imp(requestApplicationContext), "@@:");
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

void addReturnToHomeScreen(ClassBuilder& springBoardClass) {
  addCatalogued(springBoardClass, "-_returnToHomeScreenWithCompletion:", imp(returnToHomeScreen));
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
    addCatalogued(main, "-_setReturnToDisplayItem:", imp(setReturnItem));
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
  if (cataloguedHere("SBSwitcherContainerView"))
    ClassBuilder("SBSwitcherContainerView", "UIView").build();
  if (platform::classNamed("UIPanGestureRecognizer") == nullptr)
    ClassBuilder("UIPanGestureRecognizer", "UIGestureRecognizer").build();
  ClassBuilder gestures("SBSystemGestureManager", "NSObject");
  addCatalogued(gestures, "-_systemGestureChanged:", imp(systemGestureChanged));
  if (cataloguedHere("SBSystemGestureManager")) gestures.build();
  defineFluidSwitcher();

  host::registerAction("switcher", switcherAction);
  host::registerAction("swipe-up-switcher", swipeUpAction);
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
