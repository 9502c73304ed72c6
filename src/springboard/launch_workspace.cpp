// Launches the workspace carries out.
#include "springboard/launch_workspace.h"

#include <string>

#include "base/flags.h"
#include "core/device.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kBoolValue("boolValue");
const platform::Sel kEventLabel("eventLabel");
const platform::Sel kActivatingApps("activatingApps");
const platform::Sel kBundleIdentifier("bundleIdentifier");
const platform::Sel kToApplicationSceneEntities("toApplicationSceneEntities");
const platform::Sel kAllObjects("allObjects");
const platform::Sel kApplication("application");
const platform::Sel kIsEqual("isEqual:");
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kApplicationWithBundleIdentifier("applicationWithBundleIdentifier:");
const platform::Sel kOptions("options");
const platform::Sel kDictionary("dictionary");
const platform::Sel kRelease("release");
const platform::Sel kIntValue("intValue");

using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;

// An authenticated URL open's target may come to the front once in this time.
constexpr double kApprovedUrlPass = 2.0;

// Requests that are judged elsewhere, or bring nothing to the front.
bool unguardedOrigin(id options) {
  if (sendIfResponds<BOOL>(platform::objectForKey(options, "__ActivateSuspended"), kBoolValue) !=
      0) {
    return true;
  }
  std::string origin = platform::toString(platform::objectForKey(options, "__LaunchOrigin"));
  // Launches from the lock screen are judged by the lock screen.
  return origin == "__SBLaunchOriginShortcutItem" || origin == "BulletinDestinationLockScreen";
}

bool labelActivates(id request) {
  if (!platform::respondsTo(request, kEventLabel)) return false;
  std::string label = platform::toString(send<id>(request, kEventLabel));
  return label.find("OpenApplication") != std::string::npos ||
         label.find("ActivateApplication") != std::string::npos ||
         (base::flags().isIOS11 &&
          label.find("DismissSwitcherNoninteractive") != std::string::npos);
}

// The first protected app the request brings up: among its activating apps,
// else among the applications of its scene entities.
id protectedCandidate(id request) {
  id apps = sendIfResponds<id>(request, kActivatingApps);
  for (platform::UInteger i = 0; i < platform::arrayCount(apps); ++i) {
    id identifier = sendIfResponds<id>(platform::arrayObjectAt(apps, i), kBundleIdentifier);
    if (isProtectedApp(identifier)) return identifier;
  }
  id entities = sendIfResponds<id>(request, kToApplicationSceneEntities);
  if (platform::respondsTo(entities, kAllObjects)) entities = send<id>(entities, kAllObjects);
  for (platform::UInteger i = 0; i < platform::arrayCount(entities); ++i) {
    id app = sendIfResponds<id>(platform::arrayObjectAt(entities, i), kApplication);
    id identifier = sendIfResponds<id>(app, kBundleIdentifier);
    if (isProtectedApp(identifier)) return identifier;
  }
  return nullptr;
}

// The URL open authenticated last lets its target through once, within two
// seconds of the success; using the pass spends it. The pass is there for
// the open's own launch, and its transaction spends it even when the replay
// would pass anyway, so that no later launch of the app finds it unspent.
bool spendApprovedUrlPass(id identifier) {
  core::CoordinatorState& c = core::state();
  LaunchState& launch = launchState();
  bool within = core::now() - c.lastAuthenticationTime < kApprovedUrlPass;
  if (!within || !launch.approvedUrlTarget ||
      send<BOOL>(launch.approvedUrlTarget.get(), kIsEqual, identifier) == 0) {
    return false;
  }
  c.lastAuthenticationTime = 0;
  launch.approvedUrlTarget.reset();
  return true;
}

// The UI controller's activation of `identifier`, as a call to hold back.
Retained activation(id identifier) {
  id ui = platform::sendClass<id>(platform::classNamed("SBUIController"), kSharedInstance);
  id apps =
      platform::sendClass<id>(platform::classNamed("SBApplicationController"), kSharedInstance);
  id app = sendIfResponds<id>(apps, kApplicationWithBundleIdentifier, identifier);
  const base::VersionFlags& f = base::flags();
  Sel selector(f.isIOS11         ? "_activateApplicationFromAccessibility:"
               : f.isIOS9OrLater ? "activateApplication:"
                                 : "activateApplicationAnimated:");
  return platform::invocationOf(ui, selector, app);
}

}  // namespace

void systemServiceOpenRequest(id self, SEL cmd, id service, id request, id completion) {
  using Original = platform::Hook<&systemServiceOpenRequest>;
  id identifier = sendIfResponds<id>(request, kBundleIdentifier);
  id options = sendIfResponds<id>(sendIfResponds<id>(request, kOptions), kDictionary);
  if (!unguardedOrigin(options) && isProtectedApp(identifier) && gatePasses()) {
    Retained call = platform::invocationOf(self, cmd, service, request, completion);
    platform::retainArguments(call.get());
    if (holdBack(call.get(), identifier)) return;
  }
  Original::original(self, cmd, service, request, completion);
}

BOOL setCurrentTransaction(id self, SEL cmd, id request, id fallbackProvider) {
  using Original = platform::Hook<&setCurrentTransaction>;
  LaunchState& launch = launchState();
  // The transaction a replayed peek causes passes once.
  if (launch.skipOwner || launch.skipController) {
    launch.skipOwner.reset();
    launch.skipController.reset();
    return Original::original(self, cmd, request, fallbackProvider);
  }
  // Only a transaction that brings a protected app up is looked at. The
  // authenticated URL's target passes once (its pass spent before the gate
  // looks), as does anything past the gate or after a lock-screen match.
  id candidate = labelActivates(request) ? protectedCandidate(request) : nullptr;
  if (candidate == nullptr || spendApprovedUrlPass(candidate) || !gatePasses() ||
      launch.lockScreenMatch) {
    return Original::original(self, cmd, request, fallbackProvider);
  }
  // Held back as the UI controller's activation; no transaction now.
  Retained call = activation(candidate);
  if (holdBack(call.get(), candidate)) return 0;
  return Original::original(self, cmd, request, fallbackProvider);
}

id appToAppInit(id self, SEL cmd, id alertManager, id from, id to, id result) {
  using Original = platform::Hook<&appToAppInit>;
  id identifier = sendIfResponds<id>(to, kBundleIdentifier);
  // The authenticated URL's pass is spent here, and the gate still decides.
  spendApprovedUrlPass(identifier);
  if (isProtectedApp(identifier) && gatePasses()) {
    Retained call = activation(identifier);
    if (holdBack(call.get(), identifier)) {
      send<void>(self, kRelease);  // no transaction after all
      return nullptr;
    }
  }
  return Original::original(self, cmd, alertManager, from, to, result);
}

void workspaceOpenRequest(id self, SEL cmd, id workspace, id bundleIdentifier, id options,
                          id origin, id result) {
  using Original = platform::Hook<&workspaceOpenRequest>;
  id suspended = platform::objectForKey(options, "__ActivateSuspended");
  bool guardedRequest = suspended != nullptr && sendIfResponds<int>(suspended, kIntValue) != 1;
  if (guardedRequest && isProtectedApp(bundleIdentifier) && gatePasses()) {
    Retained copies[] = {keptCopy(workspace), keptCopy(bundleIdentifier), keptCopy(options),
                         keptCopy(origin), keptCopy(result)};
    Retained call = platform::invocationOf(self, cmd, copies[0].get(), copies[1].get(),
                                           copies[2].get(), copies[3].get(), copies[4].get());
    platform::retainArguments(call.get());
    if (holdBack(call.get(), bundleIdentifier)) return;
  }
  Original::original(self, cmd, workspace, bundleIdentifier, options, origin, result);
}

}  // namespace kv::springboard
