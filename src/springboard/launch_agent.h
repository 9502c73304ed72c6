// Launches SpringBoard's user agent performs for the system: an app opened
// on the system's behalf (which wakes the screen for the prompt), and an app
// opened from a notification.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBUserAgent _openApplication:withURL:fromSource:animated:options:]
BOOL agentOpenApplication(id self, SEL cmd, id bundleIdentifier, id url, int source, BOOL animated,
                          id options);
// -[SBUserAgent launchFromPushOrLocalBulletin:actionIdentifier:userResponse:origin:]
BOOL bulletinLaunchWithResponse(id self, SEL cmd, id bulletin, id action, id response, int origin);
// -[SBUserAgent launchFromPushOrLocalBulletin:actionIdentifier:origin:]
BOOL bulletinLaunchWithAction(id self, SEL cmd, id bulletin, id action, int origin);
// -[SBUserAgent launchFromPushOrLocalBulletin:origin:]
BOOL bulletinLaunch(id self, SEL cmd, id bulletin, platform::Integer origin);

}  // namespace kv::springboard
