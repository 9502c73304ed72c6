// How an app comes to the front in SpringBoard: the UI controller, the
// workspace and its transactions (by version), the SpringBoard application
// object with its URL opens, and the "open-url" action.
#include <map>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

void addHomeButton(host::ClassBuilder& springBoardClass);
void addLockButtons(host::ClassBuilder& springBoardClass);

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

struct RequestState {
  std::string eventLabel;
  Retained application;
};
struct TransactionState {
  Retained to;
};

id makeArray(std::initializer_list<id> items) {
  id list = platform::sendClass<id>(platform::classNamed("NSMutableArray"), Sel("array"));
  for (id item : items) {
    if (item != nullptr) send<void>(list, Sel("addObject:"), item);
  }
  return list;
}

// ---- Workspace requests and transactions (iOS 10 and later) ----

id requestEventLabel(id self, SEL) { return platform::makeString(stateOf<RequestState>(self).eventLabel); }
id requestActivatingApps(id self, SEL) { return makeArray({stateOf<RequestState>(self).application.get()}); }
id requestSceneEntities(id self, SEL) {
  id entity = host::newObject(platform::classNamed("SBDeviceApplicationSceneEntity"));
  stateOf<RequestState>(entity).application = stateOf<RequestState>(self).application;
  id list = makeArray({entity});
  send<void>(entity, Sel("release"));
  return list;
}
id entityApplication(id self, SEL) { return stateOf<RequestState>(self).application.get(); }

// Setting the current transaction runs it: the app comes to the front.
BOOL setCurrentTransaction(id, SEL, id request, id) {
  id app = stateOf<RequestState>(request).application.get();
  bringToFront(platform::toString(send<id>(app, Sel("bundleIdentifier"))));
  return 1;
}

// ---- App-to-app transactions (before iOS 10) ----

id appToAppInit(id self, SEL, id, id, id to, id) {
  stateOf<TransactionState>(self).to = Retained(to);
  return self;
}
void transactionBegin(id self, SEL) {
  id app = stateOf<TransactionState>(self).to.get();
  bringToFront(platform::toString(send<id>(app, Sel("bundleIdentifier"))));
}

// ---- SBUIController ----

void uiActivate(id, SEL, id application) {
  if (application == nullptr) return;
  if (atLeast(10)) {
    launchThroughWorkspace(application, "ActivateApplication");
  } else {
    activateThroughTransaction(application);
  }
}
void uiActivateFromIcon(id self, SEL cmd, id application, id, long) { uiActivate(self, cmd, application); }

// ---- SpringBoard (the application object) ----

id frontMostApplication(id, SEL) {
  return springBoard().front == "home" ? nullptr : applicationNamed(springBoard().front);
}

id displayIDForURLScheme(id, SEL, id scheme, BOOL) {
  std::string s = platform::toString(scheme);
  for (const auto& app : installedApps()) {
    for (const char* owned : app.urlSchemes) {
      if (s == owned) return platform::makeString(app.bundleIdentifier);
    }
  }
  return nullptr;
}

// An URL open: the app that owns the scheme (or the given display) comes to
// the front through this version's launch path; the handler hears of it.
void openURL(id self, id url, id display, id handlerOrResult) {
  id target = display;
  if (target == nullptr) {
    id scheme = send<id>(url, Sel("scheme"));
    id bundle = displayIDForURLScheme(self, nullptr, scheme, 0);
    target = bundle == nullptr ? nullptr : applicationNamed(platform::toString(bundle));
  }
  host::logEvent("url", "open " + platform::toString(send<id>(url, Sel("absoluteString"))));
  if (target != nullptr) uiActivate(sharedOf("SBUIController"), nullptr, target);
  if (handlerOrResult != nullptr) platform::callBlock<void(id)>(handlerOrResult, id{nullptr});
}
void openURLCoreSettings(id self, SEL, id url, id display, BOOL, id, id, id result) {
  openURL(self, url, display, result);
}
void openURLCoreFlags(id self, SEL, id url, id display, BOOL, id, unsigned, id handler) {
  openURL(self, url, display, handler);
}
void openURLCoreContext(id self, SEL, id url, id display, BOOL, id, id, id handler) {
  openURL(self, url, display, handler);
}
void applicationOpenURL(id self, SEL, id url, id application, id sender, BOOL, BOOL animating, BOOL,
                        id, id handler) {
  send<void>(self, Sel("_openURLCore:display:animating:sender:activationSettings:withResult:"), url,
             application, animating, sender, id{nullptr}, handler);
}

// open-url URL: enters where this version's SpringBoard takes an URL open.
Value openURLAction(const host::ActionRequest& request, std::string* error) {
  id url = platform::sendClass<id>(platform::classNamed("NSURL"), Sel("URLWithString:"),
                                   platform::makeString(request.args[0]));
  if (url == nullptr || send<id>(url, Sel("scheme")) == nullptr) {
    *error = "not an URL: " + request.args[0];
    return {};
  }
  id app = sharedOf("SpringBoard");
  if (atLeast(11)) {
    send<void>(app,
               Sel("applicationOpenURL:withApplication:sender:publicURLsOnly:animating:"
                   "needsPermission:activationContext:activationHandler:"),
               url, id{nullptr}, id{nullptr}, BOOL{0}, BOOL{1}, BOOL{0}, id{nullptr}, id{nullptr});
  } else if (atLeast(10)) {
    send<void>(app, Sel("_openURLCore:display:animating:sender:activationContext:activationHandler:"),
               url, id{nullptr}, BOOL{1}, id{nullptr}, id{nullptr}, id{nullptr});
  } else if (atLeast(9)) {
    send<void>(app, Sel("_openURLCore:display:animating:sender:activationSettings:withResult:"), url,
               id{nullptr}, BOOL{1}, id{nullptr}, id{nullptr}, id{nullptr});
  } else {
    send<void>(app,
               Sel("_openURLCore:display:animating:sender:additionalActivationFlags:"
                   "activationHandler:"),
               url, id{nullptr}, BOOL{1}, id{nullptr}, 0u, id{nullptr});
  }
  return {};
}

std::map<std::string, Retained>& shared() {
  static auto* table = new std::map<std::string, Retained>();
  return *table;
}

id sharedInstance(id cls, SEL) { return sharedOf(class_getName(reinterpret_cast<Class>(cls))); }

}  // namespace

SpringBoardState& springBoard() {
  static auto* state = new SpringBoardState();
  return *state;
}

id sharedOf(const char* className) {
  auto it = shared().find(className);
  if (it != shared().end()) return it->second.get();
  Class cls = platform::classNamed(className);
  if (cls == nullptr) return nullptr;
  id obj = host::newObject(cls);
  shared()[className] = Retained::adopt(obj);
  return obj;
}

void bringToFront(const std::string& bundleIdentifier) {
  if (springBoard().front == bundleIdentifier) return;
  springBoard().front = bundleIdentifier;
  host::logEvent("front", bundleIdentifier);
}

void launchThroughWorkspace(id application, const char* eventLabel) {
  id request = host::newObject(platform::classNamed("SBMainWorkspaceTransitionRequest"));
  stateOf<RequestState>(request).eventLabel = eventLabel;
  stateOf<RequestState>(request).application = Retained(application);
  send<BOOL>(sharedOf("SBMainWorkspace"), Sel("_setCurrentTransactionForRequest:fallbackProvider:"),
             request, id{nullptr});
  send<void>(request, Sel("release"));
}

void activateThroughTransaction(id application) {
  id from = frontMostApplication(nullptr, nullptr);
  id transaction = send<id>(
      platform::sendClass<id>(platform::classNamed("SBAppToAppWorkspaceTransaction"), Sel("alloc")),
      Sel("initWithAlertManager:from:to:withResult:"), id{nullptr}, from, application, id{nullptr});
  if (transaction != nullptr) send<void>(transaction, Sel("begin"));
}

void defineSpringBoardWorkspace() {
  ClassBuilder ui("SBUIController", "NSObject");
  ui.classMethod("sharedInstance", imp(sharedInstance), "@@:");
  if (atLeast(11)) ui.instance("_activateApplicationFromAccessibility:", imp(uiActivate), "v@:@");
  if (atLeast(9)) {
    ui.instance("activateApplication:", imp(uiActivate), "v@:@");
    ui.instance("activateApplication:fromIcon:location:", imp(uiActivateFromIcon), "v@:@@q");
  } else {
    ui.instance("activateApplicationAnimated:", imp(uiActivate), "v@:@");
  }
  ui.build();
  for (const char* name : {"SBApplicationController", "SBIconController"}) {
    class_addMethod(platform::metaclassOf(platform::classNamed(name)), Sel("sharedInstance"),
                    imp(sharedInstance), "@@:");
  }

  if (atLeast(10)) {
    ClassBuilder("SBMainWorkspace", "NSObject")
        .classMethod("sharedInstance", imp(sharedInstance), "@@:")
        .instance("_setCurrentTransactionForRequest:fallbackProvider:", imp(setCurrentTransaction),
                  "C@:@@")
        .build();
    ClassBuilder request("SBMainWorkspaceTransitionRequest", "NSObject");
    request.instance("eventLabel", imp(requestEventLabel), "@@:")
        .instance("toApplicationSceneEntities", imp(requestSceneEntities), "@@:");
    if (!atLeast(11)) request.instance("activatingApps", imp(requestActivatingApps), "@@:");
    request.build();
    ClassBuilder("SBDeviceApplicationSceneEntity", "NSObject")
        .instance("application", imp(entityApplication), "@@:")
        .build();
  }
  ClassBuilder("SBAppToAppWorkspaceTransaction", "NSObject")
      .instance("initWithAlertManager:from:to:withResult:", imp(appToAppInit), "@@:@@@@?")
      .instance("begin", imp(transactionBegin), "v@:")
      .build();

  ClassBuilder springBoardClass("SpringBoard", "UIApplication");
  springBoardClass.instance("_accessibilityFrontMostApplication", imp(frontMostApplication), "@@:")
      .instance("displayIDForURLScheme:isPublic:", imp(displayIDForURLScheme), "@@:@C");
  if (atLeast(11)) {
    springBoardClass.instance(
        "applicationOpenURL:withApplication:sender:publicURLsOnly:animating:needsPermission:"
        "activationContext:activationHandler:",
        imp(applicationOpenURL), "v@:@@@CCC@@?");
  }
  if (atLeast(10)) {
    springBoardClass.instance(
        "_openURLCore:display:animating:sender:activationContext:activationHandler:",
        imp(openURLCoreContext), "v@:@@C@@@?");
  }
  if (atLeast(9)) {
    springBoardClass.instance("_openURLCore:display:animating:sender:activationSettings:withResult:",
                              imp(openURLCoreSettings), "v@:@@C@@@?");
  } else {
    springBoardClass.instance(
        "_openURLCore:display:animating:sender:additionalActivationFlags:activationHandler:",
        imp(openURLCoreFlags), "v@:@@C@I@?");
  }
  addHomeButton(springBoardClass);
  addLockButtons(springBoardClass);
  springBoardClass.build();
  host::registerAction("open-url", openURLAction);
}

}  // namespace kv::sim::frameworks
