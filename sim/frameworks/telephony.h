// The phone as SpringBoard and the in-call screen see it: TelephonyUtilities'
// call centre and its calls. Each process keeps its own view of the calls,
// which the device's phone statements drive alike.
#pragma once

#include <string>

#include "platform/objc.h"

namespace kv::sim::frameworks {

// TUCall statuses, as the platform numbers them.
enum CallStatus : int {
  kCallActive = 1,
  kCallSending = 3,  // an outgoing call, not answered yet
  kCallRinging = 4,  // an incoming call
  kCallDisconnected = 6,
};

// The name the in-call screen shows for a call: the contact's name, else the number.
std::string displayNameOf(id call);

// The contact photo of a call's caller (nil for a number without a contact).
id contactPhotoOf(id call);

// The call the screen is about: the ringing call, else the most recent one;
// nil without calls.
id callOnScreen();

// The in-call screen's own handling of a change of calls (InCallService).
void callScreenFollowsCalls();

}  // namespace kv::sim::frameworks
