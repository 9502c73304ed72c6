// Orrel: a switcher of its own, opened by its gesture, with a bar of the
// recent apps' icons; tapping an icon launches the app and closes it. Its
// controller is a view controller whose view it puts in a window of its own
// while the switcher shows.
#include "platform/geometry.h"
#include "platform/retained.h"
#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

// Orrel's window, made on first show; the switcher shows while the
// controller's view is in it.
platform::Retained& window() {
  static auto* w = new platform::Retained();
  return *w;
}

id sharedController(id, SEL) {
  static id controller = newInstance("OrrelSwitcherController");
  return controller;
}

void showSwitcher(id self, SEL) {
  id view = platform::send<id>(self, Sel("view"));
  if (platform::send<id>(view, Sel("window")) != nullptr) return;
  if (!window()) {
    id screen = platform::sendClass<id>(platform::classNamed("UIScreen"), Sel("mainScreen"));
    window() = platform::Retained::adopt(
        platform::send<id>(platform::sendClass<id>(platform::classNamed("UIWindow"), Sel("alloc")),
                           Sel("initWithFrame:"), platform::send<CGRect>(screen, Sel("bounds"))));
  }
  platform::send<void>(window().get(), Sel("addSubview:"), view);
  platform::send<void>(window().get(), Sel("makeKeyAndVisible"));
  host::logEvent("orrel", "switcher shows");
}

void hideSwitcher(id self, SEL) {
  id view = platform::send<id>(self, Sel("view"));
  if (platform::send<id>(view, Sel("window")) == nullptr) return;
  platform::send<void>(view, Sel("removeFromSuperview"));
  platform::send<void>(window().get(), Sel("setHidden:"), BOOL{1});
  host::logEvent("orrel", "switcher closes");
}

id sharedBar(id, SEL) {
  static id bar = newInstance("OrrelBarView");
  return bar;
}

void iconTapped(id, SEL, id application) {
  platform::send<void>(platform::sendClass<id>(platform::classNamed("OrrelSwitcherController"),
                                               Sel("sharedInstance")),
                       Sel("hideSwitcher"));
  launchApplication(platform::send<id>(application, Sel("bundleIdentifier")));
}

// orrel-open: Orrel's gesture opens its switcher.
Value openAction(const host::ActionRequest&, std::string*) {
  platform::send<void>(platform::sendClass<id>(platform::classNamed("OrrelSwitcherController"),
                                               Sel("sharedInstance")),
                       Sel("showSwitcher"));
  return {};
}

// orrel-close: a tap outside Orrel's switcher closes it.
Value closeAction(const host::ActionRequest&, std::string*) {
  platform::send<void>(platform::sendClass<id>(platform::classNamed("OrrelSwitcherController"),
                                               Sel("sharedInstance")),
                       Sel("hideSwitcher"));
  return {};
}

// orrel-tap BUNDLE-ID: tap the app's icon in Orrel's bar.
Value tapAction(const host::ActionRequest& request, std::string* error) {
  id app = applicationFor(request.args[0]);
  if (app == nullptr) {
    *error = "no app " + request.args[0];
    return {};
  }
  platform::send<void>(
      platform::sendClass<id>(platform::classNamed("OrrelBarView"), Sel("sharedInstance")),
      Sel("iconTapped:"), app);
  return {};
}

__attribute__((constructor)) void loadOrrel() {
  defineClass(
      "OrrelSwitcherController", "UIViewController",
      {{"showSwitcher", imp(showSwitcher), "v@:"}, {"hideSwitcher", imp(hideSwitcher), "v@:"}},
      {{"sharedInstance", imp(sharedController), "@@:"}});
  defineClass("OrrelBarView", "NSObject", {{"iconTapped:", imp(iconTapped), "v@:@"}},
              {{"sharedInstance", imp(sharedBar), "@@:"}});
  host::registerAction("orrel-open", openAction);
  host::registerAction("orrel-tap", tapAction);
  host::registerAction("orrel-close", closeAction);
}

}  // namespace

}  // namespace kv::sim::extensions
