// The implementations of KavelinAlertView's interface methods, as the
// runtime calls them; registered by defineAlertView.
#pragma once

#include "platform/foundation.h"
#include "platform/objc.h"
#include "prompt/alert_state.h"

namespace kv::prompt {

// Presenting (presenting.cpp).
void show(id self, SEL cmd);

// The biometric face's states (states.cpp).
void reAddAnimations(id self, SEL cmd);
void resetAnimations(id self, SEL cmd);
void showScanner(id self, SEL cmd);
void showError(id self, SEL cmd);
void showPasscodeError(id self, SEL cmd);
void hideCircleAndShowPasscodeField(id self, SEL cmd);
void killAnimations(id self, SEL cmd);

// Starts the idle animations, or the glyph's idle state, unless the prompt
// is at passcode entry.
void startIdleAnimations(const AlertViewState& s);

// The platform's dismissal hooks (dismissal.cpp).
BOOL prepareToDismissForTappedIndex(id self, SEL cmd, platform::Integer index);
BOOL shouldDismissForButtonAtIndex(id self, SEL cmd, id modalItem, platform::Integer index);

}  // namespace kv::prompt
