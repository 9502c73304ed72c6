// The messaging centre SpringBoard serves and the names of its messages, in
// the order they are registered.
#pragma once

#include <span>

namespace kv::core {

inline constexpr const char* kCenterName = "net.quorvan.kavelin.center";

// The 28 message names, in registration order.
std::span<const char* const> messageNames();

}  // namespace kv::core
