// UIKit's view controllers: loading a controller's view, the appearance
// calls, and the navigation stack the Settings app is built on (its guards
// replace the push, pop and set methods), which records its changes.
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
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

CGRect screenBounds() {
  return send<CGRect>(platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")),
                      Sel("bounds"));
}

// ---- UIViewController ----

struct ControllerState {
  Retained view;
  Retained title;
  id parent = nullptr;  // the navigation controller holding it; not retained
};

id controllerInit(id self, SEL cmd) {
  return sendSuper<id>(platform::classNamed("UIResponder"), self, cmd);
}
id controllerInitWithNib(id self, SEL, id, id) {
  return send<id>(self, Sel("init"));
}
id controllerView(id self, SEL) {
  if (!stateOf<ControllerState>(self).view) {
    send<void>(self, Sel("loadView"));
    if (!stateOf<ControllerState>(self).view) {
      Retained view = Retained::adopt(newView("UIView", screenBounds()));
      stateOf<ControllerState>(self).view = view;
    }
    send<void>(self, Sel("viewDidLoad"));
  }
  return stateOf<ControllerState>(self).view.get();
}
void controllerLoadView(id self, SEL) {
  id view = newView("UIView", screenBounds());
  send<void>(self, Sel("setView:"), view);
  send<void>(view, Sel("release"));
}
void controllerSetView(id self, SEL, id view) {
  stateOf<ControllerState>(self).view.reset(view);
}
BOOL controllerIsViewLoaded(id self, SEL) {
  return stateOf<ControllerState>(self).view ? 1 : 0;
}
void controllerNoop(id, SEL) {}
void controllerAppearance(id, SEL, BOOL) {}
id controllerTitle(id self, SEL) {
  return stateOf<ControllerState>(self).title.get();
}
void controllerSetTitle(id self, SEL, id title) {
  stateOf<ControllerState>(self).title = Retained::adopt(send<id>(title, Sel("copy")));
}
id controllerParent(id self, SEL) {
  return stateOf<ControllerState>(self).parent;
}
id controllerNavigation(id self, SEL) {
  for (id c = stateOf<ControllerState>(self).parent; c != nullptr;
       c = stateOf<ControllerState>(c).parent) {
    if (platform::isKindOf(c, "UINavigationController")) return c;
  }
  return nullptr;
}

// ---- UINavigationController ----

struct NavigationState {
  std::vector<Retained> stack;  // root first
};

id topOf(id nav) {
  auto& stack = stateOf<NavigationState>(nav).stack;
  return stack.empty() ? nullptr : stack.back().get();
}

// The appearance calls of a change of the top controller, in UIKit's order.
void transition(id from, id to, BOOL animated) {
  if (from == to) return;
  if (to != nullptr) send<id>(to, Sel("view"));
  send<void>(from, Sel("viewWillDisappear:"), animated);
  send<void>(to, Sel("viewWillAppear:"), animated);
  send<void>(from, Sel("viewDidDisappear:"), animated);
  send<void>(to, Sel("viewDidAppear:"), animated);
}

void adopt(id nav, id controller) {
  stateOf<ControllerState>(controller).parent = nav;
}
// A child view controller answers its container as its parent.
void controllerAddChild(id self, SEL, id child) {
  adopt(self, child);
}
void disown(id nav, id controller) {
  if (stateOf<ControllerState>(controller).parent == nav) {
    stateOf<ControllerState>(controller).parent = nullptr;
  }
}

id navigationInitWithRoot(id self, SEL, id root) {
  self = send<id>(self, Sel("init"));
  if (self != nullptr && root != nullptr) {
    adopt(self, root);
    stateOf<NavigationState>(self).stack.emplace_back(root);
  }
  return self;
}
id navigationViewControllers(id self, SEL) {
  std::vector<id> items;
  for (auto& c : stateOf<NavigationState>(self).stack) items.push_back(c.get());
  return arrayOf(items);
}
id navigationTop(id self, SEL) {
  return topOf(self);
}

void navigationSetControllers(id self, SEL, id controllers, BOOL animated) {
  Retained from(topOf(self));
  std::vector<Retained> old = std::move(stateOf<NavigationState>(self).stack);
  std::vector<Retained> stack;
  std::string names;
  for (platform::UInteger i = 0; i < platform::arrayCount(controllers); ++i) {
    id c = platform::arrayObjectAt(controllers, i);
    stack.emplace_back(c);
    names += std::string(names.empty() ? "" : ", ") + platform::classNameOf(c);
  }
  for (auto& c : old) disown(self, c.get());
  for (auto& c : stack) adopt(self, c.get());
  stateOf<NavigationState>(self).stack = std::move(stack);
  host::logEvent("navigation", "set [" + names + "]");
  transition(from.get(), topOf(self), animated);
}

void navigationPush(id self, SEL, id controller, BOOL animated) {
  if (controller == nullptr) return;
  id from = topOf(self);
  adopt(self, controller);
  stateOf<NavigationState>(self).stack.emplace_back(controller);
  host::logEvent("navigation", std::string("push ") + platform::classNameOf(controller));
  transition(from, controller, animated);
}

id navigationPop(id self, SEL, BOOL animated) {
  auto& stack = stateOf<NavigationState>(self).stack;
  if (stack.size() <= 1) return nullptr;
  Retained popped = std::move(stack.back());
  stack.pop_back();
  disown(self, popped.get());
  host::logEvent("navigation", std::string("pop ") + platform::classNameOf(popped.get()));
  transition(popped.get(), topOf(self), animated);
  return send<id>(send<id>(popped.get(), Sel("retain")), Sel("autorelease"));
}

id navigationPopToRoot(id self, SEL, BOOL animated) {
  std::vector<id> popped;
  while (stateOf<NavigationState>(self).stack.size() > 1) {
    popped.push_back(send<id>(self, Sel("popViewControllerAnimated:"), animated));
  }
  return arrayOf(popped);
}

}  // namespace

void defineUIKitControllers() {
  ClassBuilder("UIViewController", "UIResponder")
      .instance("init", imp(controllerInit), "@@:")
      .instance("initWithNibName:bundle:", imp(controllerInitWithNib), "@@:@@")
      .instance("view", imp(controllerView), "@@:")
      .instance("loadView", imp(controllerLoadView), "v@:")
      .instance("setView:", imp(controllerSetView), "v@:@")
      .instance("isViewLoaded", imp(controllerIsViewLoaded), "C@:")
      .instance("viewDidLoad", imp(controllerNoop), "v@:")
      .instance("viewWillAppear:", imp(controllerAppearance), "v@:C")
      .instance("viewDidAppear:", imp(controllerAppearance), "v@:C")
      .instance("viewWillDisappear:", imp(controllerAppearance), "v@:C")
      .instance("viewDidDisappear:", imp(controllerAppearance), "v@:C")
      .instance("title", imp(controllerTitle), "@@:")
      .instance("setTitle:", imp(controllerSetTitle), "v@:@")
      .instance("parentViewController", imp(controllerParent), "@@:")
      .instance("addChildViewController:", imp(controllerAddChild), "v@:@")
      .instance("navigationController", imp(controllerNavigation), "@@:")
      .build();
  ClassBuilder("UINavigationController", "UIViewController")
      .instance("initWithRootViewController:", imp(navigationInitWithRoot), "@@:@")
      .instance("viewControllers", imp(navigationViewControllers), "@@:")
      .instance("childViewControllers", imp(navigationViewControllers), "@@:")
      .instance("setViewControllers:animated:", imp(navigationSetControllers), "v@:@C")
      .instance("pushViewController:animated:", imp(navigationPush), "v@:@C")
      .instance("popViewControllerAnimated:", imp(navigationPop), "@@:C")
      .instance("popToRootViewControllerAnimated:", imp(navigationPopToRoot), "@@:C")
      .instance("topViewController", imp(navigationTop), "@@:")
      .instance("visibleViewController", imp(navigationTop), "@@:")
      .build();
}

}  // namespace kv::sim::frameworks
