// Orrel: a switcher of its own, opened by its gesture, with a bar of the
// recent apps' icons; tapping an icon launches the app and closes it.
#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

bool gShowing = false;

id sharedController(id, SEL) {
  static id controller = newInstance("OrrelSwitcherController");
  return controller;
}

BOOL isShowing(id, SEL) {
  return gShowing ? 1 : 0;
}

void showSwitcher(id, SEL) {
  if (!gShowing) host::logEvent("orrel", "switcher shows");
  gShowing = true;
}

void hideSwitcher(id, SEL) {
  if (gShowing) host::logEvent("orrel", "switcher closes");
  gShowing = false;
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
  defineClass("OrrelSwitcherController", "NSObject",
              {{"isShowing", imp(isShowing), "C@:"},
               {"showSwitcher", imp(showSwitcher), "v@:"},
               {"hideSwitcher", imp(hideSwitcher), "v@:"}},
              {{"sharedInstance", imp(sharedController), "@@:"}});
  defineClass("OrrelBarView", "NSObject", {{"iconTapped:", imp(iconTapped), "v@:@"}},
              {{"sharedInstance", imp(sharedBar), "@@:"}});
  host::registerAction("orrel-open", openAction);
  host::registerAction("orrel-tap", tapAction);
}

}  // namespace

}  // namespace kv::sim::extensions
