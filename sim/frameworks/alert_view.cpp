// UIAlertView as the system presents it: a modal item on a per-process stack
// of visible alerts, the delegate calls in the platform's order, and the
// button tap path of each version.
#include <cstdarg>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"
#include "sim/host/run_loop.h"

namespace kv::sim::frameworks {

void logAlertContent(id alert);
void registerAlertActions();
void defineAlertContainers();
void buildAlertViews(id alert);
void layOutAlert(id alert, size_t buttons, const std::string& message);
void dimBehindAlert(id window);
id alertTopView(id alert);
id alertOwnContainer(id alert);
void forgetAlertViews(id alert);

using host::ClassBuilder;
using host::imp;
using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

constexpr double kAlertWindowLevel = 1996;

struct AlertState {
  Retained title, message;
  id delegate = nullptr;  // not retained, as UIKit's delegates
  std::vector<std::string> buttons;
  Integer cancelIndex = -1;
  bool visible = false;
  Retained window;
};
AlertState& alertOf(id alert) {
  return stateOf<AlertState>(alert);
}

std::vector<Retained>& alertStack() {
  static auto* stack = new std::vector<Retained>();
  return *stack;
}

bool delegateAnswers(id alert, const char* selector) {
  id delegate = alertOf(alert).delegate;
  return delegate != nullptr && platform::respondsTo(delegate, platform::selector(selector));
}

std::string buttonList(const AlertState& a) {
  std::string out;
  for (const auto& b : a.buttons) out += (out.empty() ? "" : ", ") + b;
  return "[" + out + "]";
}

// ---- UIAlertView ----

id alertInitWithFrame(id self, SEL cmd, CGRect frame) {
  self = sendSuper<id>(platform::classNamed("UIView"), self, cmd, frame);
  if (self != nullptr) buildAlertViews(self);
  return self;
}

// The other button titles follow as a nil-terminated list of arguments.
// Callers send it with as many arguments as they have titles, through a
// function type of their own: the function-type check has no say here.
__attribute__((no_sanitize("function"))) id alertInit(id self, SEL, id title, id message,
                                                      id delegate, id cancel, id other, ...) {
  self = send<id>(self, Sel("initWithFrame:"), CGRect{});
  if (self == nullptr) return nullptr;
  AlertState& a = alertOf(self);
  a.title = Retained::adopt(send<id>(title, Sel("copy")));
  a.message = Retained::adopt(send<id>(message, Sel("copy")));
  a.delegate = delegate;
  if (cancel != nullptr) {
    a.buttons.push_back(platform::toString(cancel));
    a.cancelIndex = 0;
  }
  va_list more;
  va_start(more, other);
  for (id t = other; t != nullptr; t = va_arg(more, id)) a.buttons.push_back(platform::toString(t));
  va_end(more);
  return self;
}

id alertTitle(id self, SEL) {
  return alertOf(self).title.get();
}
void alertSetTitle(id self, SEL, id title) {
  alertOf(self).title = Retained::adopt(send<id>(title, Sel("copy")));
}
id alertMessage(id self, SEL) {
  return alertOf(self).message.get();
}
void alertSetMessage(id self, SEL, id message) {
  AlertState& a = alertOf(self);
  a.message = Retained::adopt(send<id>(message, Sel("copy")));
  if (!a.visible) return;
  layOutAlert(self, a.buttons.size(), platform::toString(message));
  host::logEvent("alert", std::string("message ") + platform::classNameOf(self) + " " +
                              quoteForLog(platform::toString(message)));
}
id alertDelegate(id self, SEL) {
  return alertOf(self).delegate;
}
void alertSetDelegate(id self, SEL, id delegate) {
  alertOf(self).delegate = delegate;
}
Integer alertAddButton(id self, SEL, id title) {
  alertOf(self).buttons.push_back(platform::toString(title));
  return static_cast<Integer>(alertOf(self).buttons.size()) - 1;
}
Integer alertNumberOfButtons(id self, SEL) {
  return static_cast<Integer>(alertOf(self).buttons.size());
}
id alertButtonTitle(id self, SEL, Integer index) {
  const auto& buttons = alertOf(self).buttons;
  if (index < 0 || static_cast<size_t>(index) >= buttons.size()) return nullptr;
  return platform::makeString(buttons[static_cast<size_t>(index)]);
}
Integer alertCancelIndex(id self, SEL) {
  return alertOf(self).cancelIndex;
}
void alertSetCancelIndex(id self, SEL, Integer index) {
  alertOf(self).cancelIndex = index;
}
Integer alertFirstOtherIndex(id self, SEL) {
  const AlertState& a = alertOf(self);
  return static_cast<Integer>(a.buttons.size()) > a.cancelIndex + 1 ? a.cancelIndex + 1 : -1;
}
BOOL alertIsVisible(id self, SEL) {
  return alertOf(self).visible ? 1 : 0;
}
Integer alertStyle(id, SEL) {
  return 0;
}

// The platform's own answer to a tap: every button dismisses.
BOOL alertPrepareToDismiss(id, SEL, Integer) {
  return 1;
}
BOOL alertShouldDismiss(id, SEL, id, Integer) {
  return 1;
}

// Presenting: the alert joins the stack in a window of its own; the delegate
// hears of it on the next turn of the run loop.
void alertShow(id self, SEL) {
  AlertState& a = alertOf(self);
  if (a.visible) return;
  if (delegateAnswers(self, "willPresentAlertView:")) {
    send<void>(a.delegate, Sel("willPresentAlertView:"), self);
  }
  layOutAlert(self, a.buttons.size(), platform::toString(a.message.get()));
  a.visible = true;
  alertStack().emplace_back(self);
  CGRect screen = send<CGRect>(
      platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")), Sel("bounds"));
  a.window = Retained::adopt(newView("UIWindow", screen));
  send<void>(a.window.get(), Sel("setWindowLevel:"), kAlertWindowLevel);
  dimBehindAlert(a.window.get());
  send<void>(a.window.get(), Sel("addSubview:"), alertTopView(self));
  send<void>(a.window.get(), Sel("makeKeyAndVisible"));
  host::logEvent("alert", std::string("shown ") + platform::classNameOf(self) + " " +
                              quoteForLog(platform::toString(a.title.get())) +
                              " message=" + quoteForLog(platform::toString(a.message.get())) +
                              " buttons=" + buttonList(a));
  Retained keep(self);
  host::scheduleAfter(0, [keep] {
    id alert = keep.get();
    if (!alertOf(alert).visible) return;
    if (delegateAnswers(alert, "didPresentAlertView:")) {
      send<void>(alertOf(alert).delegate, Sel("didPresentAlertView:"), alert);
    }
    logAlertContent(alert);
  });
}

// Takes a visible alert off the screen; the keyboard of a field in it goes.
void takeDown(id self) {
  AlertState& a = alertOf(self);
  a.visible = false;
  id responder = firstResponder();
  if (responder != nullptr && platform::isKindOf(responder, "UIView") &&
      send<BOOL>(responder, Sel("isDescendantOfView:"), alertOwnContainer(self))) {
    send<BOOL>(responder, Sel("resignFirstResponder"));
  }
  send<void>(alertTopView(self), Sel("removeFromSuperview"));
  send<void>(a.window.get(), Sel("setHidden:"), BOOL{1});
  a.window.reset();
  auto& stack = alertStack();
  std::erase_if(stack, [self](const Retained& r) { return r.get() == self; });
}

void alertDismiss(id self, SEL, Integer index, BOOL) {
  if (!alertOf(self).visible) return;
  Retained keep(self);
  if (delegateAnswers(self, "alertView:willDismissWithButtonIndex:")) {
    send<void>(alertOf(self).delegate, Sel("alertView:willDismissWithButtonIndex:"), self, index);
  }
  if (!alertOf(self).visible) return;  // the delegate dismissed it itself
  takeDown(self);
  host::logEvent("alert", std::string("dismissed ") + platform::classNameOf(self) +
                              " button=" + std::to_string(index));
  if (delegateAnswers(self, "alertView:didDismissWithButtonIndex:")) {
    send<void>(alertOf(self).delegate, Sel("alertView:didDismissWithButtonIndex:"), self, index);
  }
}

void alertDealloc(id self, SEL cmd) {
  forgetAlertViews(self);
  sendSuper<void>(platform::classNamed("UIView"), self, cmd);
}

}  // namespace

void defineAlertViews() {
  ClassBuilder alert("UIAlertView", "UIView");
  alert.instance("initWithFrame:", imp(alertInitWithFrame), typesOf(alertInitWithFrame).c_str())
      .instance("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:",
                imp(alertInit), "@@:@@@@@")
      .instance("title", imp(alertTitle), "@@:")
      .instance("setTitle:", imp(alertSetTitle), "v@:@")
      .instance("message", imp(alertMessage), "@@:")
      .instance("setMessage:", imp(alertSetMessage), "v@:@")
      .instance("bodyText", imp(alertMessage), "@@:")
      .instance("setBodyText:", imp(alertSetMessage), "v@:@")
      .instance("delegate", imp(alertDelegate), "@@:")
      .instance("setDelegate:", imp(alertSetDelegate), "v@:@")
      .instance("addButtonWithTitle:", imp(alertAddButton), typesOf(alertAddButton).c_str())
      .instance("numberOfButtons", imp(alertNumberOfButtons), typesOf(alertNumberOfButtons).c_str())
      .instance("buttonTitleAtIndex:", imp(alertButtonTitle), typesOf(alertButtonTitle).c_str())
      .instance("cancelButtonIndex", imp(alertCancelIndex), typesOf(alertCancelIndex).c_str())
      .instance("setCancelButtonIndex:", imp(alertSetCancelIndex),
                typesOf(alertSetCancelIndex).c_str())
      .instance("firstOtherButtonIndex", imp(alertFirstOtherIndex),
                typesOf(alertFirstOtherIndex).c_str())
      .instance("alertViewStyle", imp(alertStyle), typesOf(alertStyle).c_str())
      .instance("show", imp(alertShow), "v@:")
      .instance("isVisible", imp(alertIsVisible), "C@:")
      .instance("dismissWithClickedButtonIndex:animated:", imp(alertDismiss),
                typesOf(alertDismiss).c_str())
      .instance("_prepareToDismissForTappedIndex:", imp(alertPrepareToDismiss),
                typesOf(alertPrepareToDismiss).c_str())
      .instance("modalItem:shouldDismissForButtonAtIndex:", imp(alertShouldDismiss),
                typesOf(alertShouldDismiss).c_str())
      .instance("dealloc", imp(alertDealloc), "v@:");
  alert.build();
  defineAlertContainers();
  registerAlertActions();
}

std::vector<id> visibleAlerts() {
  std::vector<id> out;
  for (auto& a : alertStack()) out.push_back(a.get());
  return out;
}

id topmostAlert(const char* className) {
  auto& stack = alertStack();
  for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
    if (className == nullptr || platform::isKindOf(it->get(), className)) return it->get();
  }
  return nullptr;
}

// The visible alert whose content holds `view`, or nil.
id alertShowing(id view) {
  for (id v = view; v != nullptr; v = superviewOf(v)) {
    for (auto& a : alertStack()) {
      if (alertOwnContainer(a.get()) == v) return a.get();
    }
  }
  return nullptr;
}

bool tapAlertButton(id alert, long index, std::string* error) {
  if (alert == nullptr || !alertOf(alert).visible) {
    *error = "no alert is visible";
    return false;
  }
  if (index < 0 || static_cast<size_t>(index) >= alertOf(alert).buttons.size()) {
    *error = std::string(platform::classNameOf(alert)) + " has " +
             std::to_string(alertOf(alert).buttons.size()) + " button(s), no button " +
             std::to_string(index);
    return false;
  }
  Retained keep(alert);
  host::logEvent("alert", std::string("tapped ") + platform::classNameOf(alert) +
                              " button=" + std::to_string(index));
  BOOL dismiss = 1;
  if (atLeast(10)) {
    id item = platform::valueForKey(alert, "_representedModalItem");
    id owner = send<id>(item, Sel("delegate"));
    if (platform::respondsTo(owner, Sel("modalItem:shouldDismissForButtonAtIndex:"))) {
      dismiss = send<BOOL>(owner, Sel("modalItem:shouldDismissForButtonAtIndex:"), item, index);
    }
  } else {
    dismiss = send<BOOL>(alert, Sel("_prepareToDismissForTappedIndex:"), index);
  }
  if (!dismiss || !alertOf(alert).visible) return true;
  if (delegateAnswers(alert, "alertView:clickedButtonAtIndex:")) {
    send<void>(alertOf(alert).delegate, Sel("alertView:clickedButtonAtIndex:"), alert, index);
  }
  send<void>(alert, Sel("dismissWithClickedButtonIndex:animated:"), index, BOOL{1});
  return true;
}

void cancelAllAlerts() {
  std::vector<Retained> stack = alertStack();
  for (auto it = stack.rbegin(); it != stack.rend(); ++it) {
    id alert = it->get();
    if (!alertOf(alert).visible) continue;
    host::logEvent("alert", std::string("cancelled ") + platform::classNameOf(alert));
    if (delegateAnswers(alert, "alertViewCancel:")) {
      send<void>(alertOf(alert).delegate, Sel("alertViewCancel:"), alert);
    }
    if (alertOf(alert).visible) {
      send<void>(alert, Sel("dismissWithClickedButtonIndex:animated:"), alertOf(alert).cancelIndex,
                 BOOL{0});
    }
  }
}

}  // namespace kv::sim::frameworks
