// Device feedback: haptic and vibration.
#include "settings/feedback.h"

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::settings {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kDictionary("dictionary");
const platform::Sel kSetObjectForKey("setObject:forKey:");

using FigVibratorInitializeFn = void (*)();
using FigVibratorPlayFn = void (*)(CFDictionaryRef pattern, int, int);

// The sample pattern: half a second, on for 0.4, off for 0.1.
id vibrationPattern() {
  id pattern = platform::sendClass<id>(platform::classNamed("NSMutableDictionary"), kDictionary);
  auto put = [pattern](const char* key, id value) {
    platform::send<void>(pattern, kSetObjectForKey, value, platform::makeString(key));
  };
  put("TotalDuration", platform::makeReal(0.5));
  put("OnDuration", platform::makeReal(0.4));
  put("OffDuration", platform::makeReal(0.1));
  put("Intensity", platform::makeInteger(1));
  return pattern;
}

// The notification of a haptic level: only 1 and 2 are soft and medium.
Note hapticNote(int level) {
  if (level == 1) return Note::kHapticSoft;
  if (level == 2) return Note::kHapticMedium;
  return Note::kHapticStrong;
}

}  // namespace

void playHaptic(int level) {
  if (level != 0) post(hapticNote(level));
}

void playVibration() {
  post(Note::kVibrate);
}

void hapticChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                   CFDictionaryRef) {
  // The level as stored now, felt at once, then every setting read again.
  int level = storedInteger("haptic").value_or(2);
  // The sample plays the stored level as it stands: 0 is no level, strong.
  post(hapticNote(level));
  load();
}

void vibrationChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                      CFDictionaryRef) {
  load();
  if (!current().vibrateOnError) return;
  auto initialize = platform::symbolNamed<FigVibratorInitializeFn>("FigVibratorInitialize");
  if (initialize == nullptr) return;
  initialize();
  auto play = platform::symbolNamed<FigVibratorPlayFn>("FigVibratorPlayVibrationWithDictionary");
  if (play == nullptr) return;
  platform::AutoreleasePool pool;
  play(reinterpret_cast<CFDictionaryRef>(vibrationPattern()), 0, 0);
}

}  // namespace kv::settings
