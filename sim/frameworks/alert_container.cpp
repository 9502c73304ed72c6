// The system's views behind an alert: its modal item, from iOS 9 its alert
// controller, and the container view an alert's extra content is added to,
// reached the way each version exposes it.
#include <algorithm>
#include <iterator>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"

namespace kv::sim::frameworks {

double alertHeight(const std::string& title, const std::string& message, size_t buttons);
void layOutAlertChrome(id alert, double height);

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendSuper;

namespace {

// How an alert exposes the view its content sits in, by iOS version. With an
// alert controller: "alertController" → view → "contentView" → superview.
// Every version also has the modal item: "_representedModalItem" →
// "_representedView" (the only way on iOS 8).
struct ContainerPath {
  int fromMajor;
  const char* controllerViewClass;  // nullptr: the alert has no alert controller
};
constexpr ContainerPath kContainerPaths[] = {
    {10, "_UIAlertControllerInterfaceActionGroupView"},
    {9, "_UIAlertControllerView"},
    {0, nullptr},
};

const ContainerPath& containerPath() {
  for (const auto& path : kContainerPaths) {
    if (atLeast(path.fromMajor)) return path;
  }
  return kContainerPaths[std::size(kContainerPaths) - 1];
}

constexpr double kAlertWidth = 270;

struct AlertViews {
  Retained item;        // the modal item the system presents
  Retained controller;  // the alert controller (iOS 9 and later)
  id top = nullptr;     // the view put in the alert's window: the controller's or the alert
  Retained container;   // the view extra content is added to
};
struct ModalItemState {
  id delegate = nullptr;  // the alert; not retained
  id view = nullptr;      // the alert's container; not retained
};
struct ControllerViewState {
  Retained contentView;
};

AlertViews& viewsOf(id alert) {
  return stateOf<AlertViews>(alert);
}

id alertModalItem(id self, SEL) {
  return viewsOf(self).item.get();
}
id alertController(id self, SEL) {
  return viewsOf(self).controller.get();
}
id itemDelegate(id self, SEL) {
  return stateOf<ModalItemState>(self).delegate;
}
void itemSetDelegate(id self, SEL, id delegate) {
  stateOf<ModalItemState>(self).delegate = delegate;
}
id itemView(id self, SEL) {
  return stateOf<ModalItemState>(self).view;
}
id controllerViewContent(id self, SEL) {
  return stateOf<ControllerViewState>(self).contentView.get();
}

}  // namespace

// The classes behind alerts, and UIAlertView's accessors of this version's
// paths (UIAlertView is defined first).
void defineAlertContainers() {
  ClassBuilder("_UIModalItem", "NSObject")
      .instance("delegate", imp(itemDelegate), "@@:")
      .instance("setDelegate:", imp(itemSetDelegate), "v@:@")
      .instance("_representedView", imp(itemView), "@@:")
      .instance("representedView", imp(itemView), "@@:")
      .build();
  Class alert = platform::classNamed("UIAlertView");
  class_addMethod(alert, Sel("_representedModalItem"), imp(alertModalItem), "@@:");
  class_addMethod(alert, Sel("representedModalItem"), imp(alertModalItem), "@@:");
  const ContainerPath& path = containerPath();
  if (path.controllerViewClass == nullptr) return;
  ClassBuilder("UIAlertController", "UIViewController").build();
  ClassBuilder(path.controllerViewClass, "UIView")
      .instance("contentView", imp(controllerViewContent), "@@:")
      .build();
  class_addMethod(alert, Sel("alertController"), imp(alertController), "@@:");
  class_addMethod(alert, Sel("_alertController"), imp(alertController), "@@:");
}

// The system's views of a new alert: its modal item, and from iOS 9 its
// alert controller, whose view holds the container, which holds the
// controller's content view.
void buildAlertViews(id alert) {
  AlertViews& a = viewsOf(alert);
  a.container = Retained::adopt(newView("UIView", platform::makeRect(0, 0, kAlertWidth, 120)));
  a.item = Retained::adopt(host::newObject(platform::classNamed("_UIModalItem")));
  stateOf<ModalItemState>(a.item.get()) = ModalItemState{alert, a.container.get()};
  const ContainerPath& path = containerPath();
  if (path.controllerViewClass == nullptr) {
    send<void>(alert, Sel("addSubview:"), a.container.get());
    a.top = alert;
    return;
  }
  a.controller = Retained::adopt(host::newObject(platform::classNamed("UIAlertController")));
  Retained top = Retained::adopt(newView(path.controllerViewClass, CGRect{}));
  Retained content = Retained::adopt(newView("UIView", CGRect{}));
  send<void>(a.controller.get(), Sel("setView:"), top.get());
  send<void>(top.get(), Sel("addSubview:"), a.container.get());
  send<void>(a.container.get(), Sel("addSubview:"), content.get());
  stateOf<ControllerViewState>(top.get()).contentView = std::move(content);
  a.top = top.get();  // the controller keeps its view
}

// Sizes an alert for its message and buttons and centres it on the screen.
void layOutAlert(id alert, size_t buttons, const std::string& message) {
  AlertViews& a = viewsOf(alert);
  double height = alertHeight(platform::toString(send<id>(alert, Sel("title"))), message, buttons);
  CGRect screen = send<CGRect>(
      platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen")), Sel("bounds"));
  CGRect frame = platform::makeRect((screen.size.width - kAlertWidth) / 2,
                                    (screen.size.height - height) / 2, kAlertWidth, height);
  send<void>(a.top, Sel("setFrame:"), frame);
  send<void>(a.container.get(), Sel("setFrame:"), platform::makeRect(0, 0, kAlertWidth, height));
  layOutAlertChrome(alert, height);
  if (!a.controller) return;
  if (id content = stateOf<ControllerViewState>(a.top).contentView.get()) {
    send<void>(content, Sel("setFrame:"), platform::makeRect(0, 0, kAlertWidth, height));
  }
}

id alertTopView(id alert) {
  return viewsOf(alert).top;
}

id alertOwnContainer(id alert) {
  return viewsOf(alert).container.get();
}

// A deallocated alert's modal item may live on: it forgets the alert.
void forgetAlertViews(id alert) {
  if (id item = viewsOf(alert).item.get()) stateOf<ModalItemState>(item) = ModalItemState{};
}

id alertContainer(id alert) {
  if (alert == nullptr) return nullptr;
  if (containerPath().controllerViewClass != nullptr) {
    id controller = platform::valueForKey(alert, "alertController");
    id content = platform::valueForKey(send<id>(controller, Sel("view")), "contentView");
    return send<id>(content, Sel("superview"));
  }
  return platform::valueForKey(platform::valueForKey(alert, "_representedModalItem"),
                               "_representedView");
}

}  // namespace kv::sim::frameworks
