// How an app comes to the front in SpringBoard: the UI controller's
// activations, the main workspace with its transition requests (iOS 10 and
// later), the app-to-app transactions of older systems, what is in front
// and what was recently, and the helpers the SpringBoard modules share.
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

namespace {

struct RequestState {
  std::string eventLabel;
  Retained application;  // nil for a request without an app (the switcher's)
  std::function<void()> then;
};
struct TransactionState {
  Retained from;
  Retained to;
};

std::string bundleOf(id application) {
  return platform::toString(send<id>(application, Sel("bundleIdentifier")));
}

// ---- Workspace transition requests (iOS 10 and later) ----

id requestEventLabel(id self, SEL) {
  return platform::makeString(stateOf<RequestState>(self).eventLabel);
}
id requestActivatingApps(id self, SEL) {
  return arrayOf({stateOf<RequestState>(self).application.get()});
}
id requestSceneEntities(id self, SEL) {
  id app = stateOf<RequestState>(self).application.get();
  if (app == nullptr) return arrayOf({});
  Retained entity =
      Retained::adopt(host::newObject(platform::classNamed("SBDeviceApplicationSceneEntity")));
  stateOf<RequestState>(entity.get()).application = Retained(app);
  return arrayOf({entity.get()});
}
id entityApplication(id self, SEL) {
  return stateOf<RequestState>(self).application.get();
}

// Setting the current transaction runs it: the app comes to the front.
BOOL setCurrentTransaction(id, SEL, id request, id) {
  RequestState state = stateOf<RequestState>(request);
  std::string app = state.application ? bundleOf(state.application.get()) : "";
  host::logEvent("workspace", state.eventLabel + (app.empty() ? "" : " " + app));
  if (!app.empty()) bringToFront(app);
  if (state.then) state.then();
  return 1;
}

// ---- App-to-app transactions (before iOS 10) ----

id appToAppInit(id self, SEL, id, id from, id to, id) {
  stateOf<TransactionState>(self).from = Retained(from);
  stateOf<TransactionState>(self).to = Retained(to);
  return self;
}
void transactionBegin(id self, SEL) {
  const auto& state = stateOf<TransactionState>(self);
  std::string to = bundleOf(state.to.get());
  host::logEvent("transaction",
                 "from " + (state.from ? bundleOf(state.from.get()) : "home") + " to " + to);
  bringToFront(to);
}

// ---- SBUIController's activations ----

// activateApplication: (iOS 9 and later), activateApplicationAnimated:
// (before), _activateApplicationFromAccessibility: (iOS 11). On iOS 9 they
// go through the icon variant, without an icon.
void uiActivate(id self, SEL, id application) {
  if (application == nullptr) return;
  if (atLeast(10)) {
    runWorkspaceRequest("ActivateApplication", application);
  } else if (atLeast(9)) {
    send<void>(self, Sel("activateApplication:fromIcon:location:"), application, id{nullptr}, 0);
  } else {
    activateThroughTransaction(application);
  }
}
void uiActivateFromIcon(id, SEL, id application, id, int) {
  if (application != nullptr) activate(application, "ActivateApplication");
}

// ui-activate BUNDLE-ID: the UI controller activates the app with this
// version's one-argument method, as an accessibility request (iOS 11) or a
// call kept for later does.
platform::Value uiActivateAction(const host::ActionRequest& request, std::string* error) {
  id app = applicationNamed(request.args[0]);
  if (app == nullptr) {
    *error = "no app " + request.args[0];
    return {};
  }
  id ui = sharedOf("SBUIController");
  for (const char* selector : {"_activateApplicationFromAccessibility:", "activateApplication:",
                               "activateApplicationAnimated:"}) {
    if (!platform::respondsTo(ui, Sel(selector))) continue;
    host::logEvent("ui", std::string("SBUIController -") + selector + " " + request.args[0]);
    send<void>(ui, Sel(selector), app);
    break;
  }
  return {};
}

// ---- Shared instances ----

std::map<std::string, Retained>& shared() {
  static auto* table = new std::map<std::string, Retained>();
  return *table;
}

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

id sharedInstanceOf(id cls, SEL) {
  return sharedOf(class_getName(reinterpret_cast<Class>(cls)));
}

ReplyBlock::ReplyBlock(const std::string& what) {
  __block int calls = 0;
  std::string name = what;
  void (^block)(id) = ^(id error) {
    if (++calls == 1) {
      host::logEvent("reply", name + (error == nullptr ? "" : " failed"));
    } else {
      host::logEvent("fault", name + " answered again");
    }
  };
  block_ = platform::copyBlock(platform::asObject(block));
}

ReplyBlock::~ReplyBlock() {
  platform::releaseBlock(block_);
}

void bringToFront(const std::string& bundleIdentifier) {
  closeSwitcher();
  closeShortcutMenu();
  auto& state = springBoard();
  if (bundleIdentifier != "home") {
    std::erase(state.recents, bundleIdentifier);
    state.recents.insert(state.recents.begin(), bundleIdentifier);
  }
  if (state.front == bundleIdentifier) return;
  state.front = bundleIdentifier;
  host::logEvent("front", bundleIdentifier);
  announceFrontDisplay(bundleIdentifier);
  noteScreenChanged();
}

id newWorkspaceRequest(const char* eventLabel, id application, std::function<void()> then) {
  id request = host::newObject(platform::classNamed("SBMainWorkspaceTransitionRequest"));
  auto& state = stateOf<RequestState>(request);
  state.eventLabel = eventLabel;
  state.application = Retained(application);
  state.then = std::move(then);
  return request;
}

void runWorkspaceRequest(id request) {
  send<BOOL>(sharedOf("SBMainWorkspace"), Sel("_setCurrentTransactionForRequest:fallbackProvider:"),
             request, id{nullptr});
}

void runWorkspaceRequest(const char* eventLabel, id application, std::function<void()> then) {
  Retained request = Retained::adopt(newWorkspaceRequest(eventLabel, application, std::move(then)));
  runWorkspaceRequest(request.get());
}

void activateThroughTransaction(id application) {
  id from = springBoard().front == "home" ? nullptr : applicationNamed(springBoard().front);
  id allocated =
      platform::sendClass<id>(platform::classNamed("SBAppToAppWorkspaceTransaction"), Sel("alloc"));
  Retained transaction =
      Retained::adopt(send<id>(allocated, Sel("initWithAlertManager:from:to:withResult:"),
                               id{nullptr}, from, application, id{nullptr}));
  if (transaction) send<void>(transaction.get(), Sel("begin"));
}

void activate(id application, const char* eventLabel) {
  if (atLeast(10)) {
    runWorkspaceRequest(eventLabel, application);
  } else {
    activateThroughTransaction(application);
  }
}

void addActivations(ClassBuilder& ui) {
  for (const char* method : {"-activateApplication:", "-activateApplicationAnimated:",
                             "-_activateApplicationFromAccessibility:"}) {
    addCatalogued(ui, method, imp(uiActivate));
  }
  addCatalogued(ui, "-activateApplication:fromIcon:location:", imp(uiActivateFromIcon));
}

void addTransactions(ClassBuilder& workspace) {
  addCatalogued(workspace,
                "-_setCurrentTransactionForRequest:fallbackProvider:", imp(setCurrentTransaction));
}

void defineSpringBoardWorkspace() {
  ClassBuilder request("SBMainWorkspaceTransitionRequest", "NSObject");
  addCatalogued(request, "-eventLabel", imp(requestEventLabel));
  addCatalogued(request, "-activatingApps", imp(requestActivatingApps));
  addCatalogued(request, "-toApplicationSceneEntities", imp(requestSceneEntities));
  if (cataloguedHere("SBMainWorkspaceTransitionRequest")) request.build();
  ClassBuilder entity("SBDeviceApplicationSceneEntity", "NSObject");
  addCatalogued(entity, "-application", imp(entityApplication));
  if (cataloguedHere("SBDeviceApplicationSceneEntity")) entity.build();
  ClassBuilder transaction("SBAppToAppWorkspaceTransaction", "NSObject");
  addCatalogued(transaction, "-initWithAlertManager:from:to:withResult:", imp(appToAppInit));
  addCatalogued(transaction, "-begin", imp(transactionBegin));
  transaction.build();
  host::registerAction("ui-activate", uiActivateAction);
}

}  // namespace kv::sim::frameworks
