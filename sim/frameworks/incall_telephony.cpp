// TelephonyUtilities in SpringBoard and the in-call screen: TUCallCenter with
// its incoming, outgoing and ongoing calls, and the "call" action through
// which the device's phone statements reach both processes. Each change
// posts "TUCallCenterCallStatusChangedNotification" on the default centre,
// as the platform does.
#include <algorithm>
#include <vector>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/springboard.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/telephony.h"
#include "sim/frameworks/uikit.h"
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

constexpr const char* kStatusChanged = "TUCallCenterCallStatusChangedNotification";

struct CallState {
  std::string number;
  std::string name;  // the contact's name; "" for a number without a contact
  int status = 0;
  bool outgoing = false;
  Retained photo;  // the contact's photo
};

// The calls in progress, oldest first.
std::vector<Retained>& calls() {
  static auto* list = new std::vector<Retained>();
  return *list;
}

int callStatus(id self, SEL) {
  return stateOf<CallState>(self).status;
}
id callDestination(id self, SEL) {
  return platform::makeString(stateOf<CallState>(self).number);
}
id callDisplayName(id self, SEL) {
  return platform::makeString(displayNameOf(self));
}
BOOL callIsOutgoing(id self, SEL) {
  return stateOf<CallState>(self).outgoing ? 1 : 0;
}

id centerIncomingCall(id, SEL) {
  for (auto& call : calls()) {
    if (stateOf<CallState>(call.get()).status == kCallRinging) return call.get();
  }
  return nullptr;
}
id centerCurrentCalls(id, SEL) {
  std::vector<id> items;
  for (auto& call : calls()) items.push_back(call.get());
  return arrayOf(items);
}

void postStatusChanged(id call) {
  id center =
      platform::sendClass<id>(platform::classNamed("NSNotificationCenter"), Sel("defaultCenter"));
  send<void>(center, Sel("postNotificationName:object:"), platform::makeString(kStatusChanged),
             call);
  if (inProcess("InCallService")) callScreenFollowsCalls();
}

id newCall(const std::string& number, const std::string& name, bool outgoing) {
  id call = host::newObject(platform::classNamed("TUCall"));
  CallState& c = stateOf<CallState>(call);
  c.number = number;
  c.name = name;
  c.outgoing = outgoing;
  c.status = outgoing ? kCallSending : kCallRinging;
  if (!name.empty()) {
    c.photo.reset(autoreleasedNew(platform::asId(platform::classNamed("UIImage"))));
  }
  calls().push_back(Retained::adopt(call));
  return call;
}

// call incoming NUMBER [NAME] | call outgoing NUMBER | call answer | call hang-up
Value callAction(const host::ActionRequest& request, std::string* error) {
  const std::string& what = request.args.empty() ? std::string() : request.args[0];
  platform::AutoreleasePool pool;
  if ((what == "incoming" || what == "outgoing") && request.args.size() >= 2) {
    std::string name = what == "incoming" && request.args.size() > 2 ? request.args[2] : "";
    postStatusChanged(newCall(request.args[1], name, what == "outgoing"));
    return {};
  }
  if (what == "answer") {
    for (auto& call : calls()) {
      CallState& c = stateOf<CallState>(call.get());
      if (c.status != kCallRinging && c.status != kCallSending) continue;
      c.status = kCallActive;
      postStatusChanged(call.get());
      return {};
    }
    *error = "no call rings or waits for an answer";
    return {};
  }
  if (what == "hang-up") {
    if (calls().empty()) {
      *error = "no call to end";
      return {};
    }
    Retained call = std::move(calls().back());
    calls().pop_back();
    stateOf<CallState>(call.get()).status = kCallDisconnected;
    postStatusChanged(call.get());
    return {};
  }
  *error = "expected call incoming NUMBER [NAME] | outgoing NUMBER | answer | hang-up";
  return {};
}

}  // namespace

std::string displayNameOf(id call) {
  if (call == nullptr) return "";
  const CallState& c = stateOf<CallState>(call);
  return c.name.empty() ? c.number : c.name;
}

id contactPhotoOf(id call) {
  return call == nullptr ? nullptr : stateOf<CallState>(call).photo.get();
}

id callOnScreen() {
  if (id ringing = centerIncomingCall(nullptr, nullptr)) return ringing;
  return calls().empty() ? nullptr : calls().back().get();
}

void defineTelephony() {
  if (!cataloguedHere("TUCallCenter")) return;
  ClassBuilder call("TUCall", "NSObject");
  addCatalogued(call, "-status", imp(callStatus));
  call.instance("destinationID", imp(callDestination), "@@:")
      .instance("displayName", imp(callDisplayName), "@@:")
      .instance("isOutgoing", imp(callIsOutgoing), "C@:")
      .build();
  ClassBuilder center("TUCallCenter", "NSObject");
  addCatalogued(center, "+sharedInstance", imp(sharedInstanceOf));
  addCatalogued(center, "-incomingCall", imp(centerIncomingCall));
  addCatalogued(center, "-currentCalls", imp(centerCurrentCalls));
  center.build();
  host::registerAction("call", callAction);
}

}  // namespace kv::sim::frameworks
