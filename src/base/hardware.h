// The biometric hardware of the device, as the I/O registry tells it, and
// the identities enrolled in it.
#pragma once

namespace kv::base {

// True iff the face camera ("AppleH10PearlCam") is present; looked up once
// per process and remembered.
bool faceCameraPresent();

// True iff biometric hardware is to be used: the settings do not ask for the
// passcode only, and the fingerprint sensor ("AppleMesa") or the face camera
// is in the I/O registry. Asks the registry on every call.
bool biometricHardwareInUse(bool onlyPasscode);

// The number of enrolled fingers or faces (BiometricKit's identities).
unsigned long enrolledIdentities();

}  // namespace kv::base
