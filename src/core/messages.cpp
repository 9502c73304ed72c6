// The messaging centre's names and the one handler both roads reach.
#include "core/messages.h"

#include <cstring>
#include <string>

#include "core/message_handlers.h"
#include "core/texts.h"
#include "platform/foundation.h"
#include "platform/runtime.h"

namespace kv::core {

namespace {

constexpr const char* kNames[] = {
    "appL", "idsn", "hasP", "bcol", "bc11", "bcam", "bcc9", "bfc1", "rlc2", "rqrl",
    "tcID", "sesx", "fldr", "delc", "bapc", "ricn", "prrc", "pcip", "wifi", "wfls",
    "aeap", "spsi", "gpsi", "trwf", "enab", "prta", "hcnp", "blrc",
};
static_assert(sizeof(kNames) / sizeof(kNames[0]) == 28, "SpringBoard serves 28 messages");

struct MessageHandler {
  const char* name;
  MessageHandlerFn handle;
};

// Tested in this order; the first name that matches answers. "bfc1" and
// "rlc2" stay registered for clients that still send them, and answer nil.
constexpr MessageHandler kHandlers[] = {
    {"hcnp", replyCallerNameProtection},
    {"trwf", replyTrustedWiFi},
    {"enab", replyEnabled},
    {"prta", replyProtectedApps},
    {"gpsi", replyPhoneSectionShowsInLockScreen},
    {"spsi", storePhoneSectionShowsInLockScreen},
    {"aeap", replyAppEnabledAndProtected},
    {"wfls", replyKnownNetworks},
    {"appL", replyVisibleApps},
    {"idsn", replyIdentities},
    {"hasP", replyDevicePasscode},
    {"rqrl", replyRequiresRelock},
    {"tcID", replyTouchID},
    {"sesx", replySessionExists},
    {"fldr", replyFolders},
    {"ricn", askResetIcons},
    {"bapc", askAirplaneMode},
    {"prrc", askResetPasscode},
    {"delc", askDeleteApp},
    {"blrc", askLanguageRestart},
    {"bcol", askSettingsPane},
    {"bc11", askSettingsPane11},
    {"wifi", askWiFiPane},
    {"pcip", askSettingsPaneiPad},
    {"bcam", askCameraPhotos},
    {"bcc9", askCameraPhotos9},
};

}  // namespace

std::span<const char* const> messageNames() {
  return kNames;
}

id handleMessageNamed(id name, id userInfo, Channel channel) {
  auto text = platform::stringOf(name);
  if (!text) return nullptr;
  for (const auto& handler : kHandlers) {
    if (*text != handler.name) continue;
    return handler.handle(userInfo, channel);
  }
  return nullptr;
}

}  // namespace kv::core
