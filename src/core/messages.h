// The messaging centre SpringBoard serves: the names of its messages, in the
// order they are registered, and the one handler every request reaches,
// whether it came over the centre or as a request file.
#pragma once

#include <span>

#include "platform/objc.h"

namespace kv::core {

inline constexpr const char* kCenterName = "net.quorvan.kavelin.center";

// The 28 message names, in registration order.
std::span<const char* const> messageNames();

// The road a request came by. The file channel serves sandboxed apps, which
// must neither learn secrets nor change settings through it.
enum class Channel {
  kMessagingCentre,  // another process of the system, or the settings pane
  kFileChannel,      // an app, through a request file in /private/var/tmp
};

// Answers message `name` (an NSString) with request `userInfo`: the reply
// dictionary (autoreleased), or nil for an action message, an unknown name
// or a request that lacks what decides it. Handlers read the request only
// through platform::objectForKey, so anything but a dictionary reads as an
// empty request.
id handleMessageNamed(id name, id userInfo, Channel channel);

}  // namespace kv::core
