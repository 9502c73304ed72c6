// URL opens.
#include "springboard/launch_urls.h"

#include <string>
#include <type_traits>

#include "core/coordinator.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "springboard/gate.h"

namespace kv::springboard {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kScheme("scheme");
const platform::Sel kDisplayIDForURLSchemeIsPublic("displayIDForURLScheme:isPublic:");
const platform::Sel kBundleIdentifier("bundleIdentifier");
const platform::Sel kIsEqual("isEqual:");

using platform::Retained;
using platform::send;
using platform::sendIfResponds;

constexpr const char* kNone = "none";

// The apps an URL open concerns: A and B own its scheme (privately and
// publicly), C is the app it is opened in ("none" when it is not an app).
struct UrlTargets {
  id a = nullptr;
  id b = nullptr;
  id c = nullptr;
  bool anyProtected() const { return isProtectedApp(a) || isProtectedApp(b) || isProtectedApp(c); }
  bool cKnown() const { return platform::toString(c) != kNone; }
  // The item the prompt names: C, else the protected one of B and A.
  id title() const {
    if (cKnown()) return c;
    return isProtectedApp(b) ? b : a;
  }
};

UrlTargets targetsOf(id springBoard, id url, id display) {
  UrlTargets t;
  id scheme = sendIfResponds<id>(url, kScheme);
  if (platform::respondsTo(springBoard, kDisplayIDForURLSchemeIsPublic)) {
    t.a = send<id>(springBoard, kDisplayIDForURLSchemeIsPublic, scheme, BOOL{0});
    t.b = send<id>(springBoard, kDisplayIDForURLSchemeIsPublic, scheme, BOOL{1});
  }
  t.c = platform::isKindOf(display, "SBApplication")
            ? sendIfResponds<id>(display, kBundleIdentifier)
            : platform::makeString(kNone);
  return t;
}

// A repeated open of the URL that is waiting for authentication is dropped.
bool repeatsWaitingUrl(id url) {
  id waiting = core::state().pendingURL.get();
  return waiting != nullptr && url != nullptr && send<BOOL>(waiting, kIsEqual, url) != 0;
}

// While the URL open the user authenticated is replayed, the app it opens
// in may come to the front once: the workspace transaction that brings it
// up spends that pass (the gate lets the replay itself through). Nothing
// else approves a target, so no pass outlives a cancelled or unreplayed open.
void approveReplayedOpen(const UrlTargets& targets) {
  if (core::replaying() == core::Replaying::kUrlOpen) {
    launchState().approvedUrlTarget.reset(targets.c);
  }
}

// Holds the URL open back: the URL waits and the prompt names it.
void holdBackUrl(id call, id url, const UrlTargets& targets, bool setTitle) {
  platform::retainArguments(call);
  Retained waitingUrl = keptCopy(url);
  core::setUrlInvocation(call, waitingUrl.get());
  if (setTitle) core::setRestrictedTitle(targets.title());
  core::showAlert();
}

// The _openURLCore: family: six arguments copied (blocks too, nil kept) and
// the animating flag.
template <typename Last>
bool openURLCore(id self, SEL cmd, id url, id display, BOOL animating, id sender, Last fifth,
                 id block) {
  if (repeatsWaitingUrl(url)) return true;
  UrlTargets targets = targetsOf(self, url, display);
  approveReplayedOpen(targets);
  if (!targets.anyProtected() || !gatePasses(HeldCall::kUrl)) return false;
  Retained u = keptCopy(url), d = keptCopy(display), s = keptCopy(sender), b = keptCopy(block);
  Retained call;
  if constexpr (std::is_same_v<Last, id>) {
    Retained f = keptCopy(fifth);
    call =
        platform::invocationOf(self, cmd, u.get(), d.get(), animating, s.get(), f.get(), b.get());
  } else {
    call = platform::invocationOf(self, cmd, u.get(), d.get(), animating, s.get(), fifth, b.get());
  }
  if (!call) return false;
  holdBackUrl(call.get(), url, targets, true);
  return true;
}

}  // namespace

void openURLWithSettings(id self, SEL cmd, id url, id display, BOOL animating, id sender,
                         id settings, id result) {
  if (openURLCore(self, cmd, url, display, animating, sender, settings, result)) return;
  platform::Hook<&openURLWithSettings>::original(self, cmd, url, display, animating, sender,
                                                 settings, result);
}

void openURLWithFlags(id self, SEL cmd, id url, id display, BOOL animating, id sender,
                      unsigned flags, id handler) {
  if (openURLCore(self, cmd, url, display, animating, sender, flags, handler)) return;
  platform::Hook<&openURLWithFlags>::original(self, cmd, url, display, animating, sender, flags,
                                              handler);
}

void openURLWithContext(id self, SEL cmd, id url, id display, BOOL animating, id sender, id context,
                        id handler) {
  if (openURLCore(self, cmd, url, display, animating, sender, context, handler)) return;
  platform::Hook<&openURLWithContext>::original(self, cmd, url, display, animating, sender, context,
                                                handler);
}

// No repeated-URL drop here; every argument copied; the title only when the
// app the URL is opened in is known (else the title already held shows).
void applicationOpenURL(id self, SEL cmd, id url, id application, id sender, BOOL publicOnly,
                        BOOL animating, BOOL needsPermission, id context, id handler) {
  using Original = platform::Hook<&applicationOpenURL>;
  UrlTargets targets = targetsOf(self, url, application);
  approveReplayedOpen(targets);
  if (targets.anyProtected() && gatePasses(HeldCall::kUrl)) {
    Retained u = keptCopy(url), a = keptCopy(application), s = keptCopy(sender),
             c = keptCopy(context), h = keptCopy(handler);
    Retained call = platform::invocationOf(self, cmd, u.get(), a.get(), s.get(), publicOnly,
                                           animating, needsPermission, c.get(), h.get());
    if (call) {
      holdBackUrl(call.get(), url, targets, targets.cKnown());
      return;
    }
  }
  Original::original(self, cmd, url, application, sender, publicOnly, animating, needsPermission,
                     context, handler);
}

}  // namespace kv::springboard
