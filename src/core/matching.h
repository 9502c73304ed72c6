// The biometric matching session of a prompt: the sensor taken from the lock
// screen while the prompt is up, the platform's events turned into feedback
// on the prompt, failures counted, and the sensor given back afterwards.
#pragma once

namespace kv::core {

// Takes the sensor for a prompt that is about to show (device with
// biometric hardware only).
void beginMatchingForPrompt();

// Gives the sensor back after a success: at once on iOS 11, after 1 s
// before it.
void endMatchingAfterSuccess();

// Gives the sensor back after a cancel.
void endMatchingAfterCancel();

// iOS 11: acquires a matching assertion from the biometric resource and
// starts BiometricKit matching with the controller as its delegate.
void startMatchingForTen();

// iOS 11: gives the resource and the kit back to the lock screen.
void stopMatchingForTen();

// Two seconds into a prompt: turns matching on again in case the platform
// switched it off behind the prompt's back.
void checkMatchingIsReallyEnabled();

// Before iOS 11: puts the event source's own observers back, in their order.
void cleanupObservers();

// Cancels the scheduled stop and start of a Face ID retry.
void cancelScheduledRestarts();

// A platform biometric event (see core/biometric_events.h), or from the
// passcode field kEventMatch for the right passcode and kEventNoMatch for a
// wrong one.
void handleBiometricEvent(long code, bool fromPasscode = false);

// Forgets a success that waits for the glyph's animation.
void forgetSuccessUnderway();

}  // namespace kv::core
