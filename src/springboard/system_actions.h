// System actions besides powering off: Siri, the SIM unlock, rearranging and
// deleting icons, Safari bookmarks on the home screen, and the one screen-on
// the backlight may be told to skip.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBAssistantController activatePluginForEvent:] (no header declares it;
// typed as its longer form)
BOOL assistantActivate(id self, SEL cmd, int event);
// -[SBAssistantController activatePluginForEvent:eventSource:context:]
BOOL assistantActivateFromSource(id self, SEL cmd, int event, int source, void* context);
// -[SBUILongNumericPasscodeEntryField _okButtonHit]
void longPasscodeOkButtonHit(id self, SEL cmd);
// -[SBIconController setIsEditing:withFeedbackBehavior:]
void iconsSetEditingWithFeedback(id self, SEL cmd, BOOL editing, id feedback);
// -[SBIconController setIsEditing:]
void iconsSetEditing(id self, SEL cmd, BOOL editing);
// -[SBIconController iconCloseBoxTapped:]
void iconCloseBoxTapped(id self, SEL cmd, id iconView);
// -[SBBookmarkIcon launchFromLocation:context:activationSettings:actions:]
void bookmarkLaunch(id self, SEL cmd, platform::Integer location, id context, id settings,
                    id actions);
// -[SBBacklightController shouldTurnOnScreenForBacklightSource:] (iOS 10 and later)
BOOL shouldTurnOnScreen(id self, SEL cmd, platform::Integer source);

// Makes the backlight's next answer to whether the screen should turn on a
// no, once. Notification protection raises it before posting a banner of
// its own, which must not light the screen.
void suppressNextScreenOn();

}  // namespace kv::springboard
