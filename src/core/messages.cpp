// The messaging centre's message names.
#include "core/messages.h"

namespace kv::core {

namespace {
constexpr const char* kNames[] = {
    "appL", "idsn", "hasP", "bcol", "bc11", "bcam", "bcc9", "bfc1", "rlc2", "rqrl",
    "tcID", "sesx", "fldr", "delc", "bapc", "ricn", "prrc", "pcip", "wifi", "wfls",
    "aeap", "spsi", "gpsi", "trwf", "enab", "prta", "hcnp", "blrc",
};
static_assert(sizeof(kNames) / sizeof(kNames[0]) == 28, "SpringBoard serves 28 messages");
}  // namespace

std::span<const char* const> messageNames() {
  return kNames;
}

}  // namespace kv::core
