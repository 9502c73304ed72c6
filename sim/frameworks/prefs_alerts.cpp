// UIAlertController as the Settings app presents it: a controller made of
// a title, a message and actions, presented from a view controller, shows
// as the platform's alert; a tap on a button runs that action's handler.
#include <string>
#include <vector>

#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

void definePrefsAlerts();

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;

namespace {

constexpr Integer kCancelStyle = 1;

struct ActionState {
  Retained title;
  Integer style = 0;
  id handler = nullptr;  // a heap copy, released with the action
};

struct AlertControllerState {
  Retained title;
  Retained message;
  std::vector<Retained> actions;  // in the order the alert lists them
};

// The alert view showing a controller: its buttons run the actions.
struct ShownState {
  Retained controller;
};

id actionWithTitle(id cls, SEL, id title, Integer style, id handler) {
  id action = autoreleasedNew(cls);
  auto& a = stateOf<ActionState>(action);
  a.title.reset(title);
  a.style = style;
  a.handler = platform::copyBlock(handler);
  return action;
}

id alertControllerWith(id cls, SEL, id title, id message, Integer) {
  id controller = autoreleasedNew(cls);
  auto& c = stateOf<AlertControllerState>(controller);
  c.title.reset(title);
  c.message.reset(message);
  return controller;
}

// UIKit lists the cancel action first.
void alertControllerAddAction(id self, SEL, id action) {
  auto& actions = stateOf<AlertControllerState>(self).actions;
  if (stateOf<ActionState>(action).style == kCancelStyle) {
    actions.insert(actions.begin(), Retained(action));
  } else {
    actions.emplace_back(action);
  }
}

void shownClicked(id self, SEL, id, Integer index) {
  id controller = stateOf<ShownState>(self).controller.get();
  auto& actions = stateOf<AlertControllerState>(controller).actions;
  if (index < 0 || static_cast<size_t>(index) >= actions.size()) return;
  id action = actions[static_cast<size_t>(index)].get();
  platform::callBlock<void(id)>(stateOf<ActionState>(action).handler, action);
}

void present(id, SEL, id controller, BOOL, id completion) {
  if (!platform::isKindOf(controller, "UIAlertController")) return;
  auto& c = stateOf<AlertControllerState>(controller);
  id delegate = host::newObject(platform::classNamed("SimAlertControllerPresentation"));
  stateOf<ShownState>(delegate).controller.reset(controller);
  id alert = send<id>(platform::sendClass<id>(platform::classNamed("UIAlertView"), Sel("alloc")),
                      Sel("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:"),
                      c.title.get(), c.message.get(), delegate, id{nullptr}, id{nullptr});
  for (auto& action : c.actions) {
    send<Integer>(alert, Sel("addButtonWithTitle:"),
                  stateOf<ActionState>(action.get()).title.get());
  }
  send<void>(alert, Sel("show"));
  platform::callBlock<void()>(completion);
  // The alert keeps its delegate for as long as it shows; the delegate
  // keeps the controller.
  static auto* shown = new std::vector<Retained>();
  shown->push_back(Retained::adopt(delegate));
  send<void>(alert, Sel("release"));
}

void actionDealloc(id self, SEL cmd) {
  if (hasState<ActionState>(self)) platform::releaseBlock(stateOf<ActionState>(self).handler);
  platform::sendSuper<void>(platform::classNamed("NSObject"), self, cmd);
}

}  // namespace

void definePrefsAlerts() {
  ClassBuilder("UIAlertController", "UIViewController").build();
  Class controller = platform::classNamed("UIAlertController");
  class_addMethod(platform::metaclassOf(controller),
                  Sel("alertControllerWithTitle:message:preferredStyle:"), imp(alertControllerWith),
                  "@@:@@q");
  class_addMethod(controller, Sel("addAction:"), imp(alertControllerAddAction), "v@:@");
  ClassBuilder("UIAlertAction", "NSObject")
      .classMethod("actionWithTitle:style:handler:", imp(actionWithTitle), "@@:@q@?")
      .instance("dealloc", imp(actionDealloc), "v@:")
      .build();
  ClassBuilder("SimAlertControllerPresentation", "NSObject")
      .instance("alertView:clickedButtonAtIndex:", imp(shownClicked), "v@:@q")
      .build();
  class_addMethod(platform::classNamed("UIViewController"),
                  Sel("presentViewController:animated:completion:"), imp(present), "v@:@C@?");
}

}  // namespace kv::sim::frameworks
