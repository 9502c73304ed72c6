// Locking and unlocking: the prompt ends with the lock, a protected app in
// front leaves on lock when asked, lock-screen matches stay with the prompt,
// matching stays available on a device without passcode, the lock-screen
// camera waits for authentication, every device unlock ends the session, and
// a slide-up to a protected app meets the device passcode.
#pragma once

#include <string>
#include <vector>

#include "platform/objc.h"

namespace kv::springboard {

// -[SBLockScreenManager lockUIFromSource:withOptions:]
void lockUI(id self, SEL cmd, int source, id options);
// -[SBLockHardwareButton singlePress:]
void lockButtonSinglePress(id self, SEL cmd, id event);
// -[SBLockScreenMesaCoordinator biometricResource:observeEvent:]
void mesaObserveEvent(id self, SEL cmd, id resource, long event);
// -[SBLockScreenManager _bioAuthenticated:]
void bioAuthenticated(id self, SEL cmd, id event);
// -[SBUIBiometricResource isMatchingEnabled], isMatchingAllowed,
// hasBiometricAuthenticationCapabilityEnabled
BOOL resourceMatchingEnabled(id self, SEL cmd);
BOOL resourceMatchingAllowed(id self, SEL cmd);
BOOL resourceCapabilityEnabled(id self, SEL cmd);
// -[SBDashBoardViewController _activateCameraAnimated:] (iOS 11) and
// activateCameraAnimated: (iOS 10)
void dashBoardActivateCamera(id self, SEL cmd, BOOL animated);
void dashBoardActivateCameraPublic(id self, SEL cmd, BOOL animated);
// -[SBLockScreenCameraController _didActivate]
void lockScreenCameraDidActivate(id self, SEL cmd);
// -[SpringBoard frontDisplayDidChange:]
void frontDisplayDidChange(id self, SEL cmd, id display);
// -[SBLockScreenManager unlockUIFromSource:withOptions:]: iOS 10 and later
// answer whether it unlocked; earlier systems answer nothing.
BOOL unlockUI(id self, SEL cmd, int source, id options);
void unlockUIOld(id self, SEL cmd, int source, id options);
// -[SBLockScreenSlideUpToAppController finalizeGesture]
void slideUpFinalizeGesture(id self, SEL cmd);

// The bundle identifiers that came to the front, least recent first.
const std::vector<std::string>& recentFrontApps();

}  // namespace kv::springboard
