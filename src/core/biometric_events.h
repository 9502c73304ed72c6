// The platform's biometric event codes, as its event monitor, biometric kit
// and biometric resource report them, named by what the library does with
// each. The platform's own meaning of a code beyond that is its business;
// codes not named here are passed over.
#pragma once

namespace kv::core {

enum BiometricEvent : long {
  kEventReset = 0,           // the sensor starts over: an earlier match no longer counts
  kEventFingerOn = 1,        // a finger on the sensor (from iOS 10 the one the unlock takes)
  kEventPresenceEnded = 2,   // the finger or face went without a match (before iOS 10 the
                             // one the unlock takes)
  kEventMatch = 3,           // a match; also what a right passcode stands for
  kEventHardStopFirst = 5,   // first of the hard stops, which end the prompt
  kEventLockout = 6,         // a hard stop: with a face, the sensor locked out
  kEventFingerDetected = 7,  // inside the hard stops' range but not one of them: a finger
                             // detected (a face's attempt starting over)
  kEventHardStopLast = 8,    // last of the hard stops
  kEventNoMatch = 9,         // no match; also what a wrong passcode stands for
  kEventNoMatchOther = 10,   // no match, as the system reports it on another path
  kEventFaceDetected = 12,   // a face in front of the camera
  kEventFaceRetry = 14,      // a face's attempt failed; the camera tries again
};

}  // namespace kv::core
