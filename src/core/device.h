// The device facts and buttons the protection core asks about and presses:
// the device passcode, the lock, the lock button of each system version.
#pragma once

#include "platform/objc.h"

namespace kv::core {

// The application object of this process (SpringBoard's, in SpringBoard).
id application();

// The shared instance of a platform class ("sharedInstance"), or nil when
// the class does not exist here.
id sharedInstanceOf(const char* className);

// True iff the device has a passcode: MCProfileConnection's answer from
// iOS 10 on, SBDeviceLockController's before.
bool devicePasscodeSet();

// True iff the lock screen is up (SBLockScreenManager isUILocked).
bool uiLocked();

// Presses the lock button as the system's own code does: on iOS 11 the
// hardware button's single-press action, on iOS 10 the button-up handler
// with no event, before it the button-up handler; sources as the
// platform's power-button source.
void pressLockButton();

// True iff the device has Touch ID or Face ID hardware in use (not
// passcode-only), and iff that hardware is the face camera.
bool biometricsInUse();
bool faceID();

// Sets the screen's brightness through the backlight controller, source 0,
// with the source's type of this system (int before iOS 10, NSInteger
// after); false where the controller cannot.
bool setBacklightFactor(float factor);

// Now, as the platform's absolute time (seconds since 2001).
double now();

}  // namespace kv::core
