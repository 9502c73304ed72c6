// Entering settings panes: the tapped row, the pushes of the root
// controller, and an iPad's split view. A protected pane is not shown; the
// owner is asked through SpringBoard, and the answer repeats the navigation.
#include <string>

#include "base/flags.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/runtime.h"
#include "processes/settings_guards.h"
#include "processes/settings_language.h"
#include "processes/settings_selectors.h"
#include "processes/settings_state.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

using platform::Hook;
using platform::Retained;

constexpr const char* kWiFi = "WIFI";

bool isWiFi(id item) {
  return platform::stringOf(item) == std::string(kWiFi);
}

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), sel::kSharedApplication);
}

bool suspended() {
  return platform::sendIfResponds<BOOL>(application(), sel::kIsSuspended) != 0;
}

// The Wi-Fi row, as the older systems guard it: held when the owner must
// authenticate for it. `list` is the list controller the row was tapped in.
bool holdWiFi(id list, id specifier) {
  if (enrolledIdentities() < 1 || sessionOpen()) return false;
  id identifier = platform::sendIfResponds<id>(specifier, sel::kIdentifier);
  if (!isWiFi(identifier)) return false;
  if (guardState().wifiAllowedOnce || !settings::current().enabled) return false;
  if (!listed(identifier) && !listed(specifierName(specifier))) return false;
  deselectRow(specifier);
  dropPending();
  guardState().pending = Pending::kWiFi;
  guardState().listController.reset(list);
  askSpringBoard("wifi", specifierName(specifier));
  return true;
}

// True iff a controller about to be shown is a protected pane: the
// product's own pane always, any other when protection is on and the pane
// is listed. The Wi-Fi pane is left to the guard of its row.
bool paneProtected(id controller) {
  if (base::flags().isIOS8OrLater && isKind(controller, "APNetworksController")) return false;
  if (!platform::respondsTo(controller, sel::kSpecifier)) return false;
  id specifier = specifierOf(controller);
  if (specifier == nullptr) return false;
  if (isKind(controller, "KavelinPrefsListController") || isOwnPane(specifier)) return true;
  return settings::current().enabled && listedAsProtected(specifier);
}

// Holds a push back: the navigation and the pushed controller wait.
void holdPush(id navigation, id controller) {
  id specifier = specifierOf(controller);
  deselectRow(specifier);
  dropPending();
  guardState().pending = Pending::kPush;
  guardState().listController.reset(navigation);
  guardState().viewController.reset(controller);
  askSpringBoard("bcol", specifierName(specifier));
}

}  // namespace

template <Family F>
void showControllerFromSpecifier(id self, SEL cmd, id specifier) {
  auto platformPath = [&] {
    Hook<&showControllerFromSpecifier<F>>::original(self, cmd, specifier);
  };
  const base::VersionFlags& f = base::flags();
  if (f.isIOS11) {
    if (enrolledIdentities() < 1) return platformPath();
    if (sessionOpen()) return platformPath();
    if (guardState().replaying) return platformPath();
    // The product's own pane is guarded whatever the settings say.
    if (!isOwnPane(specifier)) {
      if (!settings::current().enabled) return platformPath();
      if (!listedAsProtected(specifier)) return platformPath();
    }
    deselectRow(specifier);
    dropPending();
    guardState().pending = Pending::kPane;
    guardState().listController.reset(self);
    guardState().specifier.reset(specifier);
    askSpringBoard("bc11", specifierName(specifier));
    return;
  }
  // Older systems guard only the Wi-Fi row here: iOS 8 every row, 9 none,
  // 10 only the row whose id is "WIFI"; the other panes are guarded as
  // they are pushed.
  bool applies =
      f.isIOS9OrLater ? f.isIOS10OrLater && isWiFi(specifierId(specifier)) : f.isIOS8OrLater;
  if (applies && holdWiFi(self, specifier)) return;
  platformPath();
}

template <Family F>
void rootPush(id self, SEL cmd, id controller, BOOL animated) {
  if (!base::flags().isPad && !guardState().replaying && paneProtected(controller) &&
      protectionInForce()) {
    holdPush(self, controller);
    return;
  }
  Hook<&rootPush<F>>::original(self, cmd, controller, animated);
}

void navigationPush(id self, SEL cmd, id controller, BOOL animated) {
  auto platformPath = [&] { Hook<&navigationPush>::original(self, cmd, controller, animated); };
  id root = platform::sendIfResponds<id>(application(), sel::kRootController);
  if (self != root || root == nullptr || suspended() || guardState().replaying) {
    return platformPath();
  }
  if (isKind(controller, "ISInternationalLanguageController")) installLanguageGuard();
  const base::VersionFlags& f = base::flags();
  if (f.isIOS8OrLater && isKind(self, "PrefsRootController") &&
      isKind(controller, "APNetworksController")) {
    return platformPath();
  }
  id specifier = specifierOf(controller);
  if (f.isIOS10OrLater && isWiFi(specifierId(specifier))) {
    id list = platform::send<id>(self, sel::kTopViewController);
    if (holdWiFi(list, specifier)) return;
    return platformPath();
  }
  if (paneProtected(controller) && protectionInForce()) {
    holdPush(self, controller);
    return;
  }
  platformPath();
}

template <Family F>
void setViewControllers(id self, SEL cmd, id controllers, BOOL animated) {
  auto platformPath = [&] {
    Hook<&setViewControllers<F>>::original(self, cmd, controllers, animated);
  };
  bool inSplitView = platform::sendIfResponds<id>(self, sel::kSplitViewController) != nullptr;
  if (!(base::flags().isPad || inSplitView) || guardState().replaying) return platformPath();
  if (suspended()) return platformPath();
  if (platform::arrayCount(controllers) == 0) return platformPath();
  if (enrolledIdentities() < 1 || sessionOpen()) return platformPath();
  id last = platform::send<id>(controllers, sel::kLastObject);
  if (!paneProtected(last)) return platformPath();
  deselectRow(specifierOf(last));
  dropPending();
  guardState().pending = Pending::kPad;
  guardState().viewControllers = Retained::adopt(platform::send<id>(controllers, sel::kCopy));
  guardState().animated = animated;
  askSpringBoard("pcip");
}

template <Family F>
id rootPop(id self, SEL cmd, BOOL animated) {
  id popped = Hook<&rootPop<F>>::original(self, cmd, animated);
  if (!base::flags().isPad) {
    id top = platform::send<id>(self, sel::kTopViewController);
    // What the owner changed deeper down shows when the pane comes back.
    if (isKind(top, "KavelinPrefsListController")) {
      platform::sendIfResponds(top, sel::kReloadSpecifiers);
    }
  }
  return popped;
}

template void showControllerFromSpecifier<Family::kPrefs>(id, SEL, id);
template void showControllerFromSpecifier<Family::kPSUI>(id, SEL, id);
template void rootPush<Family::kPrefs>(id, SEL, id, BOOL);
template void rootPush<Family::kPSUI>(id, SEL, id, BOOL);
template void setViewControllers<Family::kPrefs>(id, SEL, id, BOOL);
template void setViewControllers<Family::kPSUI>(id, SEL, id, BOOL);
template id rootPop<Family::kPrefs>(id, SEL, BOOL);
template id rootPop<Family::kPSUI>(id, SEL, BOOL);

}  // namespace kv::processes
