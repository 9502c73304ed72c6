// What every SpringBoard guard shares.
#include "springboard/gate.h"

#include "base/session.h"
#include "core/coordinator.h"
#include "core/policy.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::springboard {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kClearHighlightedIcon("clearHighlightedIcon");
const platform::Sel kCopyWithZone("copyWithZone:");
const platform::Sel kCopy("copy");
const platform::Sel kOpenFolder("openFolder");

}  // namespace

using platform::sendIfResponds;

bool gatePasses(HeldCall held) {
  const settings::Settings& s = settings::current();
  if (!s.enabled || !core::wayToAuthenticate()) return false;
  if (core::replaying() != core::Replaying::kNothing || launchState().folderLaunch) return false;
  if (core::isOnTrustedWiFi() || (s.keepSession && base::sessionUnlocked())) return false;
  // A second call of the same kind while one waits runs unguarded.
  const core::CoordinatorState& c = core::state();
  return held == HeldCall::kUrl ? !c.urlInvocation : !c.invocation;
}

bool isProtectedApp(id bundleIdentifier) {
  auto identifier = platform::utf8Of(bundleIdentifier);
  return identifier && core::requiresAuthenticationForIdentifier(*identifier);
}

bool holdBack(id invocation, id title, bool clearHighlight) {
  if (invocation == nullptr) return false;
  core::setInvocation(invocation);
  if (clearHighlight) {
    id icons = platform::sendClass<id>(platform::classNamed("SBIconController"), kSharedInstance);
    sendIfResponds(icons, kClearHighlightedIcon);
  }
  core::setRestrictedTitle(title);
  core::showAlert();
  return true;
}

platform::Retained keptCopy(id obj) {
  if (obj == nullptr) return platform::Retained();
  if (platform::respondsTo(obj, kCopyWithZone)) {
    return platform::Retained::adopt(platform::send<id>(obj, kCopy));
  }
  return platform::Retained(obj);
}

LaunchState& launchState() {
  static auto* state = new LaunchState();
  return *state;
}

void forgetSkippedTransaction() {
  LaunchState& launch = launchState();
  launch.skipOwner.reset();
  launch.skipController.reset();
}

id openFolder() {
  id icons = platform::sendClass<id>(platform::classNamed("SBIconController"), kSharedInstance);
  return sendIfResponds<id>(icons, kOpenFolder);
}

}  // namespace kv::springboard
