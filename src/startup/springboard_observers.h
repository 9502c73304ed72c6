// Handlers of the platform notifications SpringBoard observes from start-up.
#pragma once

#include "platform/functions.h"

namespace kv::startup {

// "com.apple.springboard.lockstate": the state is read, nothing more. The
// observer keeps SpringBoard's token for the notification registered and
// current; no decision rests on it, since every question about the lock is
// put to the lock screen itself.
void lockStateChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                      CFDictionaryRef);

// "com.apple.springboard.screenchanged": reads the state, 2 being
// SpringBoard's home screen; clears the lock-screen match and marks a folder
// left open as stale.
void screenChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef);

// "com.apple.springboard.finishedstartup": SpringBoard is up.
void startupFinished(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef);

// "net.quorvan.kavelin.lockdevicenow": the controller presses the lock button.
void lockDeviceNow(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef);

// "testglyph": the prompt's glyph takes the notification's state, animated.
void testGlyph(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef);

}  // namespace kv::startup
