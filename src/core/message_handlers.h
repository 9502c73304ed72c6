// The handlers of the messaging centre's messages, one function a message.
// Each takes the request (a dictionary or nil) and the road it came by, and
// answers the reply dictionary (autoreleased) or nil.
#pragma once

#include "core/messages.h"
#include "platform/objc.h"

namespace kv::core {

using MessageHandlerFn = id (*)(id userInfo, Channel channel);

// ---- Queries: answers only, except that "spsi" stores its bool ----
id replyCallerNameProtection(id userInfo, Channel channel);
id replyTrustedWiFi(id userInfo, Channel channel);
id replyEnabled(id userInfo, Channel channel);
id replyProtectedApps(id userInfo, Channel channel);
id replyPhoneSectionShowsInLockScreen(id userInfo, Channel channel);
id storePhoneSectionShowsInLockScreen(id userInfo, Channel channel);
id replyAppEnabledAndProtected(id userInfo, Channel channel);
id replyKnownNetworks(id userInfo, Channel channel);
id replyVisibleApps(id userInfo, Channel channel);
id replyIdentities(id userInfo, Channel channel);
id replyDevicePasscode(id userInfo, Channel channel);
id replyRequiresRelock(id userInfo, Channel channel);
id replyTouchID(id userInfo, Channel channel);
id replySessionExists(id userInfo, Channel channel);
id replyFolders(id userInfo, Channel channel);

// ---- Actions: a prompt on behalf of the sender; always nil ----
id askResetIcons(id userInfo, Channel channel);
id askAirplaneMode(id userInfo, Channel channel);
id askResetPasscode(id userInfo, Channel channel);
id askDeleteApp(id userInfo, Channel channel);
id askLanguageRestart(id userInfo, Channel channel);
id askSettingsPane(id userInfo, Channel channel);
id askSettingsPane11(id userInfo, Channel channel);
id askWiFiPane(id userInfo, Channel channel);
id askSettingsPaneiPad(id userInfo, Channel channel);
id askCameraPhotos(id userInfo, Channel channel);
id askCameraPhotos9(id userInfo, Channel channel);

}  // namespace kv::core
