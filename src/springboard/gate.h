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
  kAny,  // an action: the gate lets it through while any call is held
  kUrl,  // an URL open: only a held URL open lets it through
};

// The guard gate, in its order: protection on; a way to authenticate;
// neither trusted Wi-Fi nor a kept session; no call already held. True when
// the guard may hold its call back; false runs the platform method. The
// gate reads the trusted networks from the preferences on every call and
// changes nothing, so guards look their item up first: an unprotected
// launch costs no file read, and every answer is the same.
//
// A call held back for the prompt is still held while it is replayed after
// success, so every guard on the replay's path lets it through. An URL
// open's replay reaches the app-launch guards behind it, so those let calls
// through while an URL open is held too; the URL guards look at the URL
// open alone, as a second URL while an app's prompt waits is its own request.
bool gatePasses(HeldCall held = HeldCall::kAny);

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
  platform::Retained approvedUrlTarget;  // the target of the last URL open held back
  platform::Retained skipOwner;          // with skipController: let one transaction through
  platform::Retained skipController;
  bool staleOpenFolder = false;  // the home screen came back with a folder open
  bool lockScreenMatch = false;  // the lock screen saw a match since the last screen change
};
LaunchState& launchState();

// The open folder of the home screen, or nil.
id openFolder();

}  // namespace kv::springboard
