// Launches from the home screen: an app icon's own launch, and the UI
// controller's activation of an app (which icon launches of older systems,
// and replays, go through).
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBApplication icon:launchFromLocation:context:activationSettings:actions:]
BOOL iconLaunchWithContext(id self, SEL cmd, id icon, platform::Integer location, id context,
                           id settings, id actions);
// -[SBApplication icon:launchFromLocation:]
BOOL iconLaunch(id self, SEL cmd, id icon, int location);
// -[SBUIController activateApplication:fromIcon:location:]
void activateFromIcon(id self, SEL cmd, id application, id icon, int location);
// -[SBUIController activateApplicationAnimated:]
void activateAnimated(id self, SEL cmd, id application);
// -[SBUIController activateApplication:]
void activate(id self, SEL cmd, id application);

}  // namespace kv::springboard
