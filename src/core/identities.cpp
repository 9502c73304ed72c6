// Biometric identity tracking.
#include "core/identities.h"

#include <string>

#include "base/flags.h"
#include "core/controller.h"
#include "core/policy.h"
#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "settings/bundle.h"
#include "settings/notifications.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

using platform::Retained;
using platform::Sel;
using platform::send;
using settings::Note;

constexpr double kPrefsChangedDelay = 1.0;
constexpr int kCountdownSeconds = 5;

const Sel kIdentities("identities:");
const Sel kCount("count");
const Sel kAlloc("alloc");
const Sel kAlertInit("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:");
const Sel kShow("show");
const Sel kSetMessage("setMessage:");
const Sel kDismiss("dismissWithClickedButtonIndex:animated:");
const Sel kLockDeviceFromNotification("lockDeviceFromNotification");

constexpr const char* kAllRemovedUnprotected =
    "All Biometric IDs have been removed. If you had any protected applications, they are no "
    "longer protected. Add at least one Biometric ID to activate protection.";
constexpr const char* kAllRemovedPasscodeRemains =
    "All Biometric IDs have been removed. You are still protected with Kavelin Passcode.";

void afterSeconds(double seconds, void (^block)(void)) {
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(seconds * NSEC_PER_SEC)),
                 dispatch_get_main_queue(), block);
}

// The settings pane reads the identities afresh a moment after the change.
void postPrefsChangedSoon() {
  afterSeconds(kPrefsChangedDelay, ^{
    settings::post(Note::kPrefsChanged);
  });
}

// A new alert titled "Kavelin"; with a button title it has that one button.
Retained newAlert(id message, id button) {
  return Retained::adopt(
      send<id>(platform::sendClass<id>(platform::classNamed("UIAlertView"), kAlloc), kAlertInit,
               platform::makeString("Kavelin"), message, id{nullptr}, button, id{nullptr}));
}

void showRemovalAlert(const char* message) {
  Retained alert = newAlert(platform::makeString(message), settings::localized("OKAY", "Okay"));
  platform::sendIfResponds(alert.get(), kShow);
}

// The countdown text for `seconds`, from the settings bundle.
id countdownText(int seconds) {
  std::string text = settings::localizedText(
      "ADDED_FIRST_FINGERPRINT_AFTER_REBOOT",
      "You added a fingerprint while you had a passcode activated. Device will lock in %d "
      "seconds to rebuild protection information");
  auto at = text.find("%d");
  if (at != std::string::npos) text.replace(at, 2, std::to_string(seconds));
  return platform::makeString(text);
}

}  // namespace

void removeIdentity(id self, SEL cmd, id identity) {
  platform::Hook<&removeIdentity>::original(self, cmd, identity);
  platform::AutoreleasePool pool;
  auto count = static_cast<uint64_t>(
      send<platform::UInteger>(send<id>(self, kIdentities, id{nullptr}), kCount));
  settings::load();
  postPrefsChangedSoon();
  const settings::Settings& s = settings::current();
  if (count < 1 && s.enabled) {
    showRemovalAlert(s.passcode ? kAllRemovedPasscodeRemains : kAllRemovedUnprotected);
  }
  // Judged on the settings just loaded: a stored passcode still counts.
  base::springBoardFlags().identitiesPresent = wayToAuthenticate();
  settings::publish(Note::kIdentities, count);
}

void updateIdentity(id self, SEL cmd, id identity) {
  platform::Hook<&updateIdentity>::original(self, cmd, identity);
  postPrefsChangedSoon();
  base::springBoardFlags().identitiesPresent = true;
  settings::publish(Note::kIdentities, 1);
}

void enrollmentChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                       CFDictionaryRef) {
  base::springBoardFlags().identitiesPresent = true;
  settings::publish(Note::kIdentities, 1);
  settings::load();
}

void lockAfterFiveSeconds(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                          CFDictionaryRef) {
  platform::AutoreleasePool pool;
  Retained alert = newAlert(countdownText(kCountdownSeconds), nullptr);
  id shown = alert.get();
  platform::sendIfResponds(shown, kShow);
  // Each step keeps the alert alive until it has run; none is cancelled.
  for (int left = kCountdownSeconds - 1; left >= 1; --left) {
    Retained kept = alert;
    afterSeconds(kCountdownSeconds - left, ^{
      platform::AutoreleasePool stepPool;
      platform::sendIfResponds(kept.get(), kSetMessage, countdownText(left));
    });
  }
  Retained kept = alert;
  afterSeconds(kCountdownSeconds, ^{
    platform::sendIfResponds(kept.get(), kDismiss, platform::Integer{0}, BOOL{1});
  });
  base::springBoardFlags().identitiesPresent = true;
  afterSeconds(kCountdownSeconds, ^{
    send<void>(controller(), kLockDeviceFromNotification);
  });
}

}  // namespace kv::core
