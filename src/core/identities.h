// Following the enrolled fingers and faces: whether identities exist is
// published for the settings pane, the user is warned when the last one is
// removed, and adding the first fingerprint while a Kavelin passcode is
// active locks the device after a visible countdown.
#pragma once

#include "platform/functions.h"
#include "platform/objc.h"

namespace kv::core {

// Replacements of the biometric manager's removeIdentity: and
// updateIdentity:, installed when its class is found.
void removeIdentity(id self, SEL cmd, id identity);
void updateIdentity(id self, SEL cmd, id identity);

// "com.apple.BiometricKit.enrollmentChanged" (iOS 11): identities exist
// now; the settings are read again.
void enrollmentChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                       CFDictionaryRef);

// "net.quorvan.kavelin.lockafterfiveseconds": counts down 5 to 1 in an
// alert, then locks the device, whether or not the alert is still up.
void lockAfterFiveSeconds(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                          CFDictionaryRef);

}  // namespace kv::core
