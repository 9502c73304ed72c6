// Every Darwin notification the system posts or observes, as one table, with
// the token slots for names that carry a state (registered on first use).
#pragma once

#include <cstdint>

#include "platform/functions.h"

namespace kv::settings {

enum class Note {
  kPrefsChanged,
  kCallerIdHandling,
  kAllowInCallNames,
  kGracePeriod,
  kIdentities,
  kAllowedToEnter,
  kAllowedToEnter11,
  kAllowedToEnterWiFi,
  kAllowedToEnteriPad,
  kAllowedAirplane,
  kAllowedResetIcons,
  kAllowedLanguageRestart,
  kAllowedToDelete,
  kAllowedInCamPhotos,
  kAllowedInCamPhotos9,
  kAllowedInCamPhotos11,
  kInCameraPhotosProtection,
  kCameraAsksForPhotos,
  kPhotoLibraryAuthorized,
  kRequestPhotoLibraryAuthorization,
  kIpcOverride,
  kAlertCancelled,
  kPasscodeReset,
  kLockAfterFiveSeconds,
  kLockDeviceNow,
  kShowExperimentalAlertIfNeeded,
  kHapticChanged,
  kVibrationChanged,
  kDisableExperimentalAlert,
  kHapticSoft,
  kHapticMedium,
  kHapticStrong,
  kVibrate,
  kTestGlyph,
  kLockState,
  kScreenChanged,
  kFinishedStartup,
  kEnrollmentChanged,
  kCount,
};

// The notification's name as posted and observed.
const char* nameOf(Note note);

// Posts the notification.
void post(Note note);

// Sets the notification's state (its token is registered on first use).
void setState(Note note, uint64_t state);

// Reads the notification's state (its token is registered on first use).
uint64_t stateOf(Note note);

// Sets the state, then posts.
void publish(Note note, uint64_t state);

// Observes the notification on the Darwin centre with no observer object,
// no object filter and the default suspension behaviour.
void observe(Note note, CFNotificationCallback handler);

// Registers the notification's token now, without reading or writing it.
void registerToken(Note note);

}  // namespace kv::settings
