// Handlers of the platform notifications SpringBoard observes from start-up.
#include "startup/springboard_observers.h"

#include "settings/notifications.h"
#include "startup/flags.h"

namespace kv::startup {

namespace {
constexpr uint64_t kScreenDark = 2;
bool gScreenWentDark = false;
}  // namespace

void lockStateChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef) {
  (void)settings::stateOf(settings::Note::kLockState);
}

void screenChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef) {
  uint64_t state = settings::stateOf(settings::Note::kScreenChanged);
  gScreenWentDark = state == kScreenDark;
}

void startupFinished(CFNotificationCenterRef, void*, CFNotificationName, const void*, CFDictionaryRef) {
  springBoardFlags().startupFinished = true;
}

bool screenWentDark() { return gScreenWentDark; }

}  // namespace kv::startup
