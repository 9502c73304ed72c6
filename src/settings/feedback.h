// What the device does when authentication succeeds or fails: a haptic tap
// at the user's level, or a vibration, played by a separate audio component
// that listens for the notifications posted here.
#pragma once

#include "platform/functions.h"

namespace kv::settings {

// Posts the haptic notification for `level`: 1 soft, 2 medium, any other
// value strong; 0 plays nothing.
void playHaptic(int level);

// Posts the vibration notification.
void playVibration();

// "net.quorvan.kavelin.hapticChanged": plays the chosen level, then reloads.
void hapticChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef);

// "net.quorvan.kavelin.vibrationChanged": reloads, then vibrates once when
// vibration on error is on and the private vibrator functions are there.
void vibrationChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                      CFDictionaryRef);

}  // namespace kv::settings
