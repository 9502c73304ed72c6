// Open-application requests: FrontBoard's request and options objects, the
// main workspace's system-service entry (iOS 10 and later) and SBWorkspace's
// (before), SpringBoard's own launchApplicationWithIdentifier:suspended:,
// the user agent's system opens (an alarm, Siri; through iOS 10), and the
// "open-app" and "system-open" actions.
#include "platform/blocks.h"
#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/host/actions.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

constexpr const char* kActivateSuspended = "__ActivateSuspended";
constexpr const char* kLaunchOrigin = "__LaunchOrigin";
constexpr const char* kSystemServiceOpen =
    "-systemService:handleOpenApplicationRequest:withCompletion:";
constexpr const char* kWorkspaceOpen =
    "-workspace:handleOpenApplicationRequest:withOptions:origin:withResult:";
constexpr int kSystemOpenSource = 0;  // the system's own open: a clock alarm, Siri

struct OpenRequestState {
  std::string bundleIdentifier;
  Retained options;  // FBSOpenApplicationOptions; its state holds the dictionary
};

// ---- FBSystemServiceOpenApplicationRequest and FBSOpenApplicationOptions ----

id requestBundleIdentifier(id self, SEL) {
  return platform::makeString(stateOf<OpenRequestState>(self).bundleIdentifier);
}
id requestOptions(id self, SEL) {
  return stateOf<OpenRequestState>(self).options.get();
}
id optionsDictionary(id self, SEL) {
  return stateOf<OpenRequestState>(self).options.get();
}

// The options dictionary a request carries: "__ActivateSuspended" always,
// "__LaunchOrigin" when there is an origin.
id optionsOf(const OpenRequest& request) {
  Value::Dictionary options{{kActivateSuspended, Value::boolean(request.suspended)}};
  if (!request.origin.empty()) options[kLaunchOrigin] = Value::string(request.origin);
  return platform::makeObject(Value::dictionary(std::move(options)));
}

// What SpringBoard does with a request it takes: a suspended launch stays in
// the background; anything else comes to the front. The completion hears of
// it once.
void carryOut(id bundleIdentifier, id options, id completion) {
  std::string bundle = platform::toString(bundleIdentifier);
  bool suspended =
      send<BOOL>(platform::objectForKey(options, kActivateSuspended), Sel("boolValue")) != 0;
  std::string origin = platform::toString(platform::objectForKey(options, kLaunchOrigin));
  host::logEvent("open-app", bundle + (suspended ? " suspended" : "") +
                                 (origin.empty() ? "" : " origin " + origin));
  id app = applicationNamed(bundle);
  if (app == nullptr) {
    host::logEvent("open-app", "no application " + bundle);
    platform::callBlock<void(id)>(completion, platform::makeString("no such application"));
    return;
  }
  // FrontBoard brings nothing to the front over the lock screen unless the
  // lock screen itself sent the request (a notification tapped there).
  if (!suspended && springBoard().locked && origin != "BulletinDestinationLockScreen") {
    host::logEvent("open-app", "refused " + bundle + ": the device is locked");
    platform::callBlock<void(id)>(
        completion, platform::makeString("Unable to launch " + bundle +
                                         " because the device was not, or could not be, unlocked"));
    return;
  }
  if (suspended) {
    host::logEvent("launch", bundle + " in the background");
  } else {
    activate(app, "OpenApplication");
  }
  platform::callBlock<void(id)>(completion, id{nullptr});
}

void systemServiceOpen(id, SEL, id, id request, id completion) {
  carryOut(send<id>(request, Sel("bundleIdentifier")),
           send<id>(send<id>(request, Sel("options")), Sel("dictionary")), completion);
}
void workspaceOpen(id, SEL, id, id bundleIdentifier, id options, id, id result) {
  carryOut(bundleIdentifier, options, result);
}

// SpringBoard launching an app itself goes the way of every request.
BOOL launchApplication(id, SEL, id bundleIdentifier, BOOL suspended) {
  std::string bundle = platform::toString(bundleIdentifier);
  if (applicationNamed(bundle) == nullptr) return 0;
  requestOpenApplication({bundle, suspended != 0, ""});
  return 1;
}

// -[SBUserAgent _openApplication:withURL:fromSource:animated:options:]: the
// app comes to the front, lit or not (the screen stays as it is).
BOOL userAgentOpen(id, SEL, id bundleIdentifier, id url, int source, BOOL, id) {
  std::string bundle = platform::toString(bundleIdentifier);
  id app = applicationNamed(bundle);
  host::logEvent(
      "system-open",
      bundle +
          (url == nullptr ? ""
                          : " with " + platform::toString(send<id>(url, Sel("absoluteString")))) +
          " from source " + std::to_string(source));
  if (app == nullptr) return 0;
  activate(app, "OpenApplication");
  return 1;
}

// ---- Actions ----

// open-app BUNDLE-ID [suspended] [origin NAME]
Value openAppAction(const host::ActionRequest& request, std::string* error) {
  OpenRequest open{request.args[0], false, ""};
  for (size_t i = 1; i < request.args.size(); ++i) {
    if (request.args[i] == "suspended") {
      open.suspended = true;
    } else if (request.args[i] == "origin" && i + 1 < request.args.size()) {
      open.origin = request.args[++i];
    } else {
      *error = "expected open-app BUNDLE-ID [suspended] [origin NAME]";
      return {};
    }
  }
  requestOpenApplication(open);
  return {};
}

// system-open BUNDLE-ID [URL]: the user agent through iOS 10; on iOS 11 the
// system asks as any other process does.
Value systemOpenAction(const host::ActionRequest& request, std::string* error) {
  id userAgent = sharedOf("SBUserAgent");
  if (userAgent == nullptr) {
    requestOpenApplication({request.args[0], false, ""});
    return {};
  }
  id url = nullptr;
  if (request.args.size() > 1) {
    url = platform::sendClass<id>(platform::classNamed("NSURL"), Sel("URLWithString:"),
                                  platform::makeString(request.args[1]));
    if (url == nullptr) {
      *error = "not an URL: " + request.args[1];
      return {};
    }
  }
  send<BOOL>(userAgent, Sel("_openApplication:withURL:fromSource:animated:options:"),
             platform::makeString(request.args[0]), url, kSystemOpenSource, BOOL{1}, id{nullptr});
  return {};
}

}  // namespace

void requestOpenApplication(const OpenRequest& request) {
  ReplyBlock reply("open-app " + request.bundleIdentifier);
  id options = optionsOf(request);
  if (cataloguedHere("SBMainWorkspace", kSystemServiceOpen) != nullptr) {
    Retained wrapper =
        Retained::adopt(host::newObject(platform::classNamed("FBSOpenApplicationOptions")));
    stateOf<OpenRequestState>(wrapper.get()).options = Retained(options);
    Retained open = Retained::adopt(
        host::newObject(platform::classNamed("FBSystemServiceOpenApplicationRequest")));
    stateOf<OpenRequestState>(open.get()) = {request.bundleIdentifier, wrapper};
    send<void>(sharedOf("SBMainWorkspace"), Sel(kSystemServiceOpen + 1),
               sharedOf("FBSystemService"), open.get(), reply.get());
  } else {
    send<void>(sharedOf("SBWorkspace"), Sel(kWorkspaceOpen + 1), id{nullptr},
               platform::makeString(request.bundleIdentifier), options, id{nullptr}, reply.get());
  }
}

void addOpenRequests(ClassBuilder& mainWorkspace) {
  addCatalogued(mainWorkspace, kSystemServiceOpen, imp(systemServiceOpen));
}

void addSystemOpens(ClassBuilder& userAgent) {
  addCatalogued(userAgent,
                "-_openApplication:withURL:fromSource:animated:options:", imp(userAgentOpen));
}

void addApplicationLaunch(ClassBuilder& springBoardClass) {
  addCatalogued(springBoardClass,
                "-launchApplicationWithIdentifier:suspended:", imp(launchApplication));
}

void defineSpringBoardOpenRequests() {
  for (const char* name : {"FBSystemServiceOpenApplicationRequest", "FBSOpenApplicationOptions"}) {
    if (!cataloguedHere(name)) continue;
    ClassBuilder cls(name, "NSObject");
    addCatalogued(cls, "-bundleIdentifier", imp(requestBundleIdentifier));
    addCatalogued(cls, "-options", imp(requestOptions));
    addCatalogued(cls, "-dictionary", imp(optionsDictionary));
    cls.build();
  }
  ClassBuilder workspace("SBWorkspace", "NSObject");
  addCatalogued(workspace, kWorkspaceOpen, imp(workspaceOpen));
  if (cataloguedHere("SBWorkspace")) workspace.build();
  host::registerAction("open-app", openAppAction);
  host::registerAction("system-open", systemOpenAction);
}

}  // namespace kv::sim::frameworks
