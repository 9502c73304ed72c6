// Caller-name protection, the in-call screen's side: SpringBoard matches and
// publishes the outcome; this process reads it and replaces the name and
// the photo while the call is protected.
#include "processes/incall.h"

#include <cstdint>

#include "base/flags.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::processes {

namespace {

using platform::Hook;
using platform::Retained;
using platform::Sel;
using platform::sendIfResponds;
using settings::Note;

const Sel kSharedInstance("sharedInstance");
const Sel kIncomingCall("incomingCall");
const Sel kCurrentCalls("currentCalls");
const Sel kStatus("status");
const Sel kSetNeedsLayout("setNeedsLayout");

// States of "net.quorvan.kavelin.CallerIDHandling" (iOS 10 and later).
constexpr uint64_t kProtectionOff = 0;
constexpr uint64_t kCallerNameProtected = 2;

// States of "net.quorvan.kavelin.allowInCallNames".
constexpr uint64_t kAuthenticating = 1;
constexpr uint64_t kFailed = 2;
constexpr uint64_t kNamesAllowed = 4;

// Statuses of a call that is ending; any other is a call in progress.
constexpr int kDisconnecting = 5;
constexpr int kDisconnected = 6;

struct CallerProtection {
  bool enabled = false;
  bool callerNameProtected = false;
  bool incomingSeen = false;  // an incoming call was seen; until the participants go
  Retained participantsView;  // the view whose name line was last replaced
};

CallerProtection& protection() {
  static CallerProtection p;
  return p;
}

// True iff the caller's name and photo must not show now.
bool callProtected() {
  CallerProtection& p = protection();
  if (!p.enabled || !p.callerNameProtected) return false;
  id center =
      sendIfResponds<id>(platform::asId(platform::classNamed("TUCallCenter")), kSharedInstance);
  bool incoming = sendIfResponds<id>(center, kIncomingCall) != nullptr;
  if (incoming) p.incomingSeen = true;
  // A call the owner placed or is in is never hidden.
  if (!incoming) {
    id calls = sendIfResponds<id>(center, kCurrentCalls);
    for (platform::UInteger i = 0; i < platform::arrayCount(calls); ++i) {
      int status = sendIfResponds<int>(platform::arrayObjectAt(calls, i), kStatus);
      if (status != kDisconnecting && status != kDisconnected) return false;
    }
  }
  uint64_t state = settings::stateOf(Note::kAllowInCallNames);
  return state != kNamesAllowed && p.incomingSeen;
}

}  // namespace

const char* protectedText(uint64_t state) {
  switch (state) {
    case kAuthenticating: return "--- Authenticating ---";
    case kFailed:
      return base::flags().isIOS10OrLater ? "--- Failed ---" : "--- Authentication Failed ---";
    default: return "--- Kavelined ---";
  }
}

bool namesAllowed(uint64_t state) {
  return state == kNamesAllowed;
}

void loadCallerSettings() {
  CallerProtection& p = protection();
  // From iOS 10 SpringBoard's loader publishes the whole answer as a state.
  if (base::flags().isIOS10OrLater) {
    uint64_t handling = settings::stateOf(Note::kCallerIdHandling);
    p.enabled = handling != kProtectionOff;
    p.callerNameProtected = handling == kCallerNameProtected;
    return;
  }
  p.enabled = settings::storedBool("Enabled").value_or(false);
  p.callerNameProtected = settings::storedBool("callerNameProtected").value_or(false);
}

void callerSettingsChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                           CFDictionaryRef) {
  loadCallerSettings();
}

void inCallNamesChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                        CFDictionaryRef) {
  sendIfResponds(protection().participantsView.get(), kSetNeedsLayout);
}

void setCallBackgroundImage(id self, SEL cmd, id image) {
  Hook<&setCallBackgroundImage>::original(self, cmd, callProtected() ? nullptr : image);
}

id overrideParticipantsString(id self, SEL cmd, id participantsView) {
  if (!callProtected())
    return Hook<&overrideParticipantsString>::original(self, cmd, participantsView);
  protection().participantsView.reset(participantsView);
  return platform::makeString(protectedText(settings::stateOf(Note::kAllowInCallNames)));
}

// The call screen goes: the next call starts unseen.
void participantsControllerDealloc(id self, SEL cmd) {
  protection().participantsView.reset();
  protection().incomingSeen = false;
  Hook<&participantsControllerDealloc>::original(self, cmd);
}

}  // namespace kv::processes
