// What every SpringBoard guard shares: the guard gate, the protected-app
// lookup, the hand-off of a held-back call to the coordinator, and the
// launch state the guards keep between calls.
#pragma once

#include <string>

#include "platform/objc.h"
#include "platform/retained.h"

namespace kv::springboard {

// Which held-back call a guard's gate looks at.
enum class HeldCall {
  kAction,  // an app launch or other action: `invocation`
  kUrl,     // an URL open: `urlInvocation`
};

// The guard gate: protection on; a way to authenticate; neither trusted
// Wi-Fi nor a kept session; the call not one already decided; no call of its
// own kind held. True when the guard may hold its call back; false runs the
// platform method. The gate reads the trusted networks from the preferences
// on every call and changes nothing, so guards look their item up first: an
// unprotected launch costs no file read, and every answer is the same.
//
// A call already decided is one on the way of the replay of what the user
// has just authenticated (the replayed call has left the coordinator, so it
// is not "held"), or of a launch the open folder let through: every guard
// behind it lets it through. A call held of the other kind guards nothing:
// while an URL open waits, an app launch still asks, and the other way round.
bool gatePasses(HeldCall held = HeldCall::kAction);

// True iff `bundleIdentifier` (an NSString) is in the "protected" list.
bool isProtectedApp(id bundleIdentifier);

// Hands `invocation` to the coordinator as the held-back action, names
// `title` on the prompt and shows it; `clearHighlight` first stops the
// tapped icon's highlight. False, and nothing held, when there is no
// invocation (the call could not be built): the guard then lets the
// platform method run.
bool holdBack(id invocation, id title, bool clearHighlight = false);

// A copy of `obj` for a held-back call, owned by the handle: objects that
// copy themselves (strings, URLs, dictionaries, blocks) are copied, others
// retained; nil stays nil.
platform::Retained keptCopy(id obj);

// What the launch guards keep between calls.
struct LaunchState {
  platform::Retained approvedUrlTarget;  // the target of the URL open replayed last, till spent
  platform::Retained skipOwner;          // with skipController: let one transaction through
  platform::Retained skipController;
  bool staleOpenFolder = false;    // the home screen came back with a folder open
  bool folderLaunch = false;       // a launch the open folder let through is on its way
  bool lockScreenMatch = false;    // the lock screen saw a match since the last screen change
  bool homeScreenShowing = false;  // the last screen change showed the home screen
};
LaunchState& launchState();

// Forgets the transaction a held peek would have let through: a peek that
// was cancelled is never replayed, and its pass must not serve another launch.
void forgetSkippedTransaction();

// The open folder of the home screen, or nil.
id openFolder();

}  // namespace kv::springboard
