// Every Darwin notification the system posts or observes.
#include "settings/notifications.h"

#include "platform/foundation.h"

namespace kv::settings {

namespace {

struct NoteInfo {
  Note note;
  const char* name;
};

// Who posts each name and who observes it is told where each is used; the
// states carried are small integers.
constexpr NoteInfo kNotes[] = {
    {Note::kPrefsChanged, "net.quorvan.kavelin.prefsChanged"},
    {Note::kCallerIdHandling, "net.quorvan.kavelin.CallerIDHandling"},
    {Note::kAllowInCallNames, "net.quorvan.kavelin.allowInCallNames"},
    {Note::kGracePeriod, "net.quorvan.kavelin.graceperiod"},
    {Note::kIdentities, "net.quorvan.kavelin.identities"},
    {Note::kAllowedToEnter, "net.quorvan.kavelin.allowedToEnter"},
    {Note::kAllowedToEnter11, "net.quorvan.kavelin.allowedToEnter11"},
    {Note::kAllowedToEnterWiFi, "net.quorvan.kavelin.allowedToEnterWiFi"},
    {Note::kAllowedToEnteriPad, "net.quorvan.kavelin.allowedToEnteriPad"},
    {Note::kAllowedAirplane, "net.quorvan.kavelin.allowedAirplane"},
    {Note::kAllowedResetIcons, "net.quorvan.kavelin.allowedResetIcons"},
    {Note::kAllowedLanguageRestart, "net.quorvan.kavelin.allowedLanguageRestart"},
    {Note::kAllowedToDelete, "net.quorvan.kavelin.allowedToDelete"},
    {Note::kAllowedInCamPhotos, "net.quorvan.kavelin.allowedInCamPhotos"},
    {Note::kAllowedInCamPhotos9, "net.quorvan.kavelin.allowedInCamPhotos9"},
    {Note::kAllowedInCamPhotos11, "net.quorvan.kavelin.allowedInCamPhotos11"},
    {Note::kInCameraPhotosProtection, "net.quorvan.kavelin.incameraphotosprotection"},
    {Note::kCameraAsksForPhotos, "net.quorvan.kavelin.cameraAsksForPhotos"},
    {Note::kPhotoLibraryAuthorized, "net.quorvan.kavelin.photoLibraryAuthorized"},
    {Note::kRequestPhotoLibraryAuthorization,
     "net.quorvan.kavelin.requestPhotoLibraryAuthorization"},
    {Note::kIpcOverride, "net.quorvan.kavelin.ipcoverride"},
    {Note::kAlertCancelled, "net.quorvan.kavelin.alertCancelled"},
    {Note::kPasscodeReset, "net.quorvan.kavelin.passcodeReset"},
    {Note::kLockAfterFiveSeconds, "net.quorvan.kavelin.lockafterfiveseconds"},
    {Note::kLockDeviceNow, "net.quorvan.kavelin.lockdevicenow"},
    {Note::kShowExperimentalAlertIfNeeded, "net.quorvan.kavelin.showexperimentalalertifneeded"},
    {Note::kHapticChanged, "net.quorvan.kavelin.hapticChanged"},
    {Note::kVibrationChanged, "net.quorvan.kavelin.vibrationChanged"},
    {Note::kDisableExperimentalAlert, "net.quorvan.disableexperimentalalert"},
    {Note::kHapticSoft, "net.quorvan.kavelinaudio.hapticFeedback.soft"},
    {Note::kHapticMedium, "net.quorvan.kavelinaudio.hapticFeedback.medium"},
    {Note::kHapticStrong, "net.quorvan.kavelinaudio.hapticFeedback.strong"},
    {Note::kVibrate, "net.quorvan.kavelinaudio.vibrate"},
    {Note::kTestGlyph, "testglyph"},
    {Note::kLockState, "com.apple.springboard.lockstate"},
    {Note::kScreenChanged, "com.apple.springboard.screenchanged"},
    {Note::kFinishedStartup, "com.apple.springboard.finishedstartup"},
    {Note::kEnrollmentChanged, "com.apple.BiometricKit.enrollmentChanged"},
};
constexpr bool rowsInOrder() {
  for (size_t i = 0; i < sizeof(kNotes) / sizeof(kNotes[0]); ++i) {
    if (static_cast<size_t>(kNotes[i].note) != i) return false;
  }
  return sizeof(kNotes) / sizeof(kNotes[0]) == static_cast<size_t>(Note::kCount);
}
static_assert(rowsInOrder(), "one row per notification, in the order of Note");

constexpr int kInvalidToken = -1;  // all bits set

// The process-wide token slots, one per name, invalid until first use.
int gTokens[static_cast<size_t>(Note::kCount)] = {};
bool gTokensReady = false;

int& tokenSlot(Note note) {
  if (!gTokensReady) {
    for (int& t : gTokens) t = kInvalidToken;
    gTokensReady = true;
  }
  return gTokens[static_cast<size_t>(note)];
}

int tokenFor(Note note) {
  int& slot = tokenSlot(note);
  if (slot == kInvalidToken) notify_register_check(nameOf(note), &slot);
  return slot;
}

}  // namespace

const char* nameOf(Note note) {
  auto index = static_cast<size_t>(note);
  return index < static_cast<size_t>(Note::kCount) ? kNotes[index].name : "";
}

void post(Note note) {
  notify_post(nameOf(note));
}

void setState(Note note, uint64_t state) {
  notify_set_state(tokenFor(note), state);
}

uint64_t stateOf(Note note) {
  uint64_t state = 0;
  notify_get_state(tokenFor(note), &state);
  return state;
}

void publish(Note note, uint64_t state) {
  setState(note, state);
  post(note);
}

void registerToken(Note note) {
  tokenFor(note);
}

void observe(Note note, CFNotificationCallback handler) {
  platform::AutoreleasePool pool;
  CFNotificationCenterAddObserver(CFNotificationCenterGetDarwinNotifyCenter(), nullptr, handler,
                                  platform::cf(platform::makeString(nameOf(note))), nullptr,
                                  CFNotificationSuspensionBehaviorCoalesce);
}

}  // namespace kv::settings
