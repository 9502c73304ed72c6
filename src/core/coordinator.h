// The authentication coordinator: it keeps the action a guard held back,
// shows the prompt, and on success replays the action exactly as the guard
// would have performed it; on cancel it drops it.
#pragma once

#include <string>

#include "core/controller.h"
#include "platform/objc.h"

namespace kv::core {

// Keeps `invocation` (an NSInvocation, retained) as the deferred action; a
// newer one replaces an older one. nil clears it.
void setInvocation(id invocation);

// Keeps a deferred URL open and the URL it opens (both retained until the
// open runs or is dropped).
void setUrlInvocation(id invocation, id url);

// The item the next prompt names (retained until the prompt is built).
void setRestrictedTitle(id title);
void setRestrictedTitle(const std::string& title);

// True iff an action is held back: an invocation, a URL invocation or a
// camera request.
bool somethingPending();

// True iff the prompt exists and is on screen.
bool promptVisible();

// Builds and shows the prompt; while one is visible, tries again every 0.1 s
// (the newest request's action and title are the ones that stand).
void showAlert();

// Holds `target`'s `sel` with the arguments the NSValue pointers point to,
// names `identifier` on the prompt and shows it.
void authenticateForIdentifier(id identifier, id target, SEL sel, id argumentPointers);

// The success path, after the matching session's feedback: the pending
// flags in order, the replay, the session, the dismissal.
void succeed();

// Which held-back call the success path is replaying.
enum class Replaying {
  kNothing,  // no replay is running
  kAction,   // the deferred action (`invocation`)
  kUrlOpen,  // the deferred URL open (`urlInvocation`)
};

// The replay running at this moment. A replayed call is no longer held: the
// guards on its path let it through because it is what the user has just
// authenticated, and they know it by this.
Replaying replaying();

// Every exit that is not success: drops what was held back, gives the
// sensor back and tells other processes the prompt was cancelled.
void cleanupAlertAndRemoveObserver();

// Adds `forget` to what the cleanup runs, for state a guard keeps outside
// the coordinator that only a success may spend.
void alsoForgetOnCleanup(void (*forget)());

// The same, run at most once for one prompt however many of the platform's
// cancel callbacks reach it.
void cleanupOnce(id alert);

// Gives up on the prompt after a hard stop or too many failures: cancels,
// dismisses and, from iOS 10 on, locks the device.
void giveUp();

// Puts back the brightness saved when a prompt forced the screen on.
void restoreBacklight();

// Schedules / cancels a selector of the controller on the main run loop.
void performLater(const char* selector, double delay);
void cancelPerform(const char* selector);

}  // namespace kv::core
