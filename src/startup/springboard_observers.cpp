// Handlers of the platform notifications SpringBoard observes from start-up.
#include "startup/springboard_observers.h"

#include "core/controller.h"
#include "core/state.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "startup/flags.h"

namespace kv::startup {

namespace {
constexpr uint64_t kScreenDark = 2;
bool gScreenWentDark = false;
}  // namespace

void lockStateChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                      CFDictionaryRef) {
  (void)settings::stateOf(settings::Note::kLockState);
}

void screenChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef) {
  uint64_t state = settings::stateOf(settings::Note::kScreenChanged);
  gScreenWentDark = state == kScreenDark;
}

void startupFinished(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef) {
  springBoardFlags().startupFinished = true;
}

void lockDeviceNow(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef) {
  platform::send<void>(core::kavelinController(), platform::Sel("lockDeviceFromNotification"));
}

void testGlyph(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef) {
  id glyph =
      platform::sendIfResponds<id>(core::state().kavelinAlert.get(), platform::Sel("glyphView"));
  auto glyphState = static_cast<platform::Integer>(settings::stateOf(settings::Note::kTestGlyph));
  platform::sendIfResponds(glyph, platform::Sel("setState:animated:completionHandler:"), glyphState,
                           BOOL{1}, id{nullptr});
}

bool screenWentDark() {
  return gScreenWentDark;
}

}  // namespace kv::startup
