// Handlers of the platform notifications SpringBoard observes from start-up.
#include "startup/springboard_observers.h"

#include "base/flags.h"
#include "core/controller.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "springboard/gate.h"

namespace kv::startup {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kLockDeviceFromNotification("lockDeviceFromNotification");
const platform::Sel kGlyphView("glyphView");
const platform::Sel kSetStateAnimatedCompletionHandler("setState:animated:completionHandler:");
// The screen-changed state of SpringBoard's own home screen.
constexpr uint64_t kHomeScreen = 2;
}  // namespace

void lockStateChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                      CFDictionaryRef) {
  (void)settings::stateOf(settings::Note::kLockState);
}

// The notifications held back on the lock screen come back with notification
// protection. A lock-screen match counts until the screen changes; a folder
// still open when the home screen comes back was opened before, so it no
// longer lets its apps through.
void screenChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef) {
  uint64_t state = settings::stateOf(settings::Note::kScreenChanged);
  springboard::launchState().lockScreenMatch = false;
  if (state == kHomeScreen && springboard::openFolder() != nullptr) {
    springboard::launchState().staleOpenFolder = true;
  }
  springboard::launchState().homeScreenShowing = state == kHomeScreen;
}

void startupFinished(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef) {
  base::springBoardFlags().startupFinished = true;
}

void lockDeviceNow(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef) {
  platform::send<void>(core::controller(), kLockDeviceFromNotification);
}

void testGlyph(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef) {
  id glyph = platform::sendIfResponds<id>(core::state().kavelinAlert.get(), kGlyphView);
  auto glyphState = static_cast<platform::Integer>(settings::stateOf(settings::Note::kTestGlyph));
  platform::sendIfResponds(glyph, kSetStateAnimatedCompletionHandler, glyphState, BOOL{1},
                           id{nullptr});
}

}  // namespace kv::startup
