// Mevrick: an app switcher of its own. Its gesture opens it by a percentage
// (fully at 1), its button activates it, and choosing an app leaves it for
// that app.
#include <map>

#include "sim/extensions/extension.h"

namespace kv::sim::extensions {

namespace {

using platform::Sel;
using platform::Value;

bool gOpen = false;

id controller() {
  return platform::sendClass<id>(platform::classNamed("MevrickAppSwitcherController"),
                                 Sel("sharedInstance"));
}

id sharedController(id, SEL) {
  static id instance = newInstance("MevrickAppSwitcherController");
  return instance;
}

void activateSwitcher(id, SEL, id) {
  if (!gOpen) host::logEvent("mevrick", "switcher shows");
  gOpen = true;
}

void openWithPercentage(id self, SEL, double percentage) {
  host::logEvent("mevrick", "opening " + std::to_string(static_cast<int>(percentage * 100)) + "%");
  if (percentage >= 1.0) platform::send<void>(self, Sel("activateSwitcher:"), id{nullptr});
}

void deactivateTo(id, SEL, id application, BOOL) {
  gOpen = false;
  host::logEvent("mevrick", "switcher closes");
  launchApplication(platform::send<id>(application, Sel("bundleIdentifier")));
}

std::map<id, std::string>& cardApps() {
  static auto* table = new std::map<id, std::string>();
  return *table;
}

id cardApplication(id self, SEL) {
  return platform::makeString(cardApps()[self]);
}

void cardSetImage(id self, SEL, id image) {
  host::logEvent("mevrick", "card " + cardApps()[self] +
                                (image == nullptr ? " empty" : " shows its snapshot"));
}

// mevrick-card BUNDLE-ID: Mevrick's switcher draws the app's card with the
// app's last snapshot.
Value cardAction(const host::ActionRequest& request, std::string*) {
  static auto* cards = new std::map<std::string, id>();
  id& card = (*cards)[request.args[0]];
  if (card == nullptr) {
    card = newInstance("MevrickApplicationView");
    cardApps()[card] = request.args[0];
  }
  id snapshot = platform::sendClass<id>(platform::classNamed("NSObject"), Sel("new"));
  platform::send<void>(card, Sel("setImage:"), snapshot);
  platform::send<void>(snapshot, Sel("release"));
  return {};
}

// mevrick-open: the gesture pulls the switcher fully open.
Value openAction(const host::ActionRequest&, std::string*) {
  platform::send<void>(controller(), Sel("openWithPercentage:"), 1.0);
  return {};
}

// mevrick-button: its button opens the switcher at once.
Value buttonAction(const host::ActionRequest&, std::string*) {
  platform::send<void>(controller(), Sel("activateSwitcher:"), id{nullptr});
  return {};
}

// mevrick-select BUNDLE-ID: choose the app in Mevrick's switcher.
Value selectAction(const host::ActionRequest& request, std::string* error) {
  id app = applicationFor(request.args[0]);
  if (app == nullptr || !gOpen) {
    *error = gOpen ? "no app " + request.args[0] : "Mevrick's switcher is not open";
    return {};
  }
  platform::send<void>(controller(), Sel("deactivateSwitcherToApplication:animated:"), app,
                       BOOL{1});
  return {};
}

__attribute__((constructor)) void loadMevrick() {
  defineClass("MevrickAppSwitcherController", "NSObject",
              {{"openWithPercentage:", imp(openWithPercentage), "v@:d"},
               {"activateSwitcher:", imp(activateSwitcher), "v@:@"},
               {"deactivateSwitcherToApplication:animated:", imp(deactivateTo), "v@:@C"}},
              {{"sharedInstance", imp(sharedController), "@@:"}});
  defineClass(
      "MevrickApplicationView", "NSObject",
      {{"application", imp(cardApplication), "@@:"}, {"setImage:", imp(cardSetImage), "v@:@"}});
  host::registerAction("mevrick-card", cardAction);
  host::registerAction("mevrick-open", openAction);
  host::registerAction("mevrick-button", buttonAction);
  host::registerAction("mevrick-select", selectAction);
}

}  // namespace

}  // namespace kv::sim::extensions
