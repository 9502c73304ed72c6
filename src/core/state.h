// What SpringBoard's coordinator keeps for the life of SpringBoard: the
// deferred actions, the prompt, the pending flags and the matching session.
// One process-wide object, touched on the main thread only.
#pragma once

#include "platform/retained.h"

namespace kv::core {

struct CoordinatorState {
  // ---- The deferred actions and the prompt ----
  platform::Retained invocation;     // the deferred action (NSInvocation)
  platform::Retained urlInvocation;  // a deferred URL open
  platform::Retained pendingURL;  // the URL that open refers to, kept until it runs or is dropped
  platform::Retained restrictedTitle;  // the item to name on the next prompt (NSString)
  platform::Retained kavelinAlert;     // the prompt currently built
  bool hasVisibleAlert = false;        // from the prompt's show until success or cleanup
  id cleanedAlert = nullptr;           // the prompt whose cleanup already ran (not retained)

  // ---- Pending flags, served before the invocation on success ----
  bool pendingReboot = false;
  bool pendingPowerDown = false;
  bool pendingRespring = false;
  bool cameraPhotosPending = false;
  bool cameraPhotos9Pending = false;
  bool switcherPromptPending = false;  // a switcher toggle waits: other toggles are swallowed
  bool lockAfterCancel = false;        // iOS 11: cancelling presses the lock button
  int failedAttempts = 0;
  double lastAuthenticationTime = 0;       // absolute time of the last success; 0 after cleanup
  float savedBacklightFactor = 0;          // the brightness to give back when the prompt ends
  bool powerActionPending = false;         // the held-back call powers off, reboots or resprings
  platform::Retained powerDownController;  // its power-down screen, closed on cancel
  bool languageRestartAllowed = false;

  // ---- Objects borrowed for one prompt ----
  platform::Retained forceTouchOwner;     // a force-touch menu dismissed for the prompt
  platform::Retained forceTouchArgument;  // and what its owner is told on cancel
  platform::Retained cameraViewController;

  // ---- The biometric matching session ----
  platform::Retained biometricDelegate;  // the event source before iOS 11
  platform::Retained removedObservers;   // its observers while a prompt borrows it
  bool tookOverEventSource = false;      // they are borrowed now
  bool eventSourceMatchingWasEnabled = false;
  bool resourceMatchingWasEnabled = false;  // iOS 11: the resource's state before the prompt
  platform::Retained matchingAssertion;     // iOS 11
  platform::Retained matchOperation;        // the running BiometricKit match
  bool presenceSeen = false;                // a finger or face since the prompt appeared
  bool matchSucceeded = false;              // a match was reported for the current prompt
  bool passcodeWasVisible = false;          // the field showed when the scanner appeared
  bool alternativeGlyph = false;            // iOS 10: success in glyph state 7 instead of 6
  int experimentalMatchMode = 0;            // stored only

  // ---- Calls ----
  bool namesShownDuringCall = false;  // set when a match during a call showed the caller's name
};

// The one state of this process.
CoordinatorState& state();

}  // namespace kv::core
