// The app switcher as a whole ("protectSwitcher"): opening it by the home
// button's toggle or by the swipe-up gesture asks first; on iOS 11 a protected
// app chosen in the fluid switcher opens only after the prompt, on the home
// screen; returning to a protected app from the switcher asks too.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"

namespace kv::springboard {

// -[SBMainSwitcherViewController toggleSwitcherNoninteractivelyWithSource:] (iOS 11)
BOOL toggleSwitcherWithSource(id self, SEL cmd, platform::Integer source);
// -[SBMainSwitcherViewController toggleSwitcherNoninteractively] (iOS 9-10)
BOOL toggleSwitcherNoninteractively(id self, SEL cmd);
// -[SBUIController _toggleSwitcher] (older systems)
void uiToggleSwitcher(id self, SEL cmd);

// -[SBSystemGestureManager _systemGestureChanged:]
void systemGestureChanged(id self, SEL cmd, id gesture);

// -[SBFluidSwitcherGestureWorkspaceTransaction
//   _runSceneLayoutTransactionForTransitionRequest:updateScenes:] (iOS 11)
void fluidRunSceneLayout(id self, SEL cmd, id request, BOOL updateScenes);
// -[SBFluidSwitcherGestureWorkspaceTransaction _didComplete] (iOS 11)
void fluidDidComplete(id self, SEL cmd);

// -[SBMainSwitcherViewController _setReturnToDisplayItem:]
void setReturnToDisplayItem(id self, SEL cmd, id item);

}  // namespace kv::springboard
