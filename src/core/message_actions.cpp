// The action messages: another process holds an action back and asks
// SpringBoard to authenticate the user for it. On success the permission
// that answers it posts the notification the sender waits for; nothing is
// replied.
#include <string>

#include "core/controller.h"
#include "core/coordinator.h"
#include "core/message_handlers.h"
#include "core/policy.h"
#include "core/state.h"
#include "core/texts.h"
#include "platform/foundation.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"

namespace kv::core {

namespace {

using platform::Sel;
using settings::Note;

// The product's own settings pane is guarded on a trusted network too: the
// exemption must not let anyone switch protection off from home.
constexpr const char* kOwnPane = "Kavelin";
constexpr const char* kPhotosTitle = "com.apple.mobileslideshow";

const Sel kAlertInit("initWithTitle:message:delegate:cancelButtonTitle:otherButtonTitles:");
const Sel kAlloc("alloc");
const Sel kShow("show");
const Sel kRelease("release");

// How one action message is asked and granted.
struct ActionMessage {
  const char* permission;   // the controller's one-shot permission granted on success
  const char* title;        // the prompt's item line; nullptr: the request's "settingsName"
  bool namedByRequest;      // the title is the request's "settingsName"
  bool ownPaneNeverExempt;  // no trusted-network exemption for the pane "Kavelin"
};

constexpr ActionMessage kResetIcons{"allowResetIcons", "Icon Arrangement Protection", false, false};
constexpr ActionMessage kAirplaneMode{"allowAirplaneModeInPreferences", "Airplane Mode Protection",
                                      false, false};
// Deleting an app rearranges the home screen: the same title as the reset.
constexpr ActionMessage kDeleteApp{"allowToDeleteAppInPreferences", "Icon Arrangement Protection",
                                   false, false};
constexpr ActionMessage kLanguageRestart{"allowLanguageRestart", "Respring: Language Change", false,
                                         false};
constexpr ActionMessage kSettingsPane{"allowPrefsEnter", nullptr, true, true};
constexpr ActionMessage kSettingsPane11{"allowPrefsEnter11", nullptr, true, true};
constexpr ActionMessage kWiFiPane{"allowWiFiEnter", nullptr, true, false};
constexpr ActionMessage kSettingsPaneiPad{"allowPrefsEnteriPad", nullptr, false, false};

// The permission, kept as the prompt's deferred action on the controller.
void holdPermission(const char* permission, id title) {
  platform::Retained invocation =
      platform::invocationOf(controller(), platform::selector(permission));
  if (!invocation) return;
  setInvocation(invocation.get());
  if (title != nullptr) setRestrictedTitle(title);
  showAlert();
}

// The pane a request names; a request without one still asks, unnamed.
id paneName(id userInfo, const char* message) {
  id name = platform::objectForKey(userInfo, "settingsName");
  if (platform::stringOf(name)) return name;
  systemLog(std::string("Kavelin: \"") + message + "\" without a \"settingsName\"; asking unnamed");
  return nullptr;
}

id ask(const ActionMessage& action, const char* message, id userInfo, bool grantWhileWaiting) {
  id name = action.namedByRequest ? paneName(userInfo, message) : nullptr;
  bool ownPane = platform::stringOf(name) == std::string(kOwnPane);
  if (isOnTrustedWiFi() && !(action.ownPaneNeverExempt && ownPane)) {
    grantPermission(action.permission);
    return nullptr;
  }
  // While another prompt's action waits, the newer Settings app's pane is
  // let through rather than taking that action's place.
  if (grantWhileWaiting && state().invocation) {
    grantPermission(action.permission);
    return nullptr;
  }
  holdPermission(action.permission,
                 action.title != nullptr ? platform::makeString(action.title) : name);
  return nullptr;
}

// A photos-from-camera request waits as a flag: the camera repeats its own
// tap when the notification comes.
id askPhotos(bool CoordinatorState::*pending, Note granted) {
  if (isOnTrustedWiFi()) {
    settings::post(granted);
    return nullptr;
  }
  state().*pending = true;
  setRestrictedTitle(kPhotosTitle);
  showAlert();
  return nullptr;
}

// The plain alert of a feature nobody can use without a way to authenticate.
void showCannotAuthenticateAlert() {
  id alert = platform::send<id>(
      platform::sendClass<id>(platform::classNamed("UIAlertView"), kAlloc), kAlertInit,
      platform::makeString("Kavelin"),
      platform::makeString("You do not have any fingerprints set so you cannot use this feature."),
      id{nullptr}, platform::makeString("Okay"), id{nullptr});
  platform::sendIfResponds(alert, kShow);
  platform::sendIfResponds(alert, kRelease);
}

}  // namespace

id askResetIcons(id userInfo, Channel) {
  return ask(kResetIcons, "ricn", userInfo, false);
}
id askAirplaneMode(id userInfo, Channel) {
  return ask(kAirplaneMode, "bapc", userInfo, false);
}
id askDeleteApp(id userInfo, Channel) {
  return ask(kDeleteApp, "delc", userInfo, false);
}
id askLanguageRestart(id userInfo, Channel) {
  return ask(kLanguageRestart, "blrc", userInfo, false);
}
id askSettingsPane(id userInfo, Channel) {
  return ask(kSettingsPane, "bcol", userInfo, false);
}
id askSettingsPane11(id userInfo, Channel) {
  return ask(kSettingsPane11, "bc11", userInfo, true);
}
id askWiFiPane(id userInfo, Channel) {
  return ask(kWiFiPane, "wifi", userInfo, false);
}
id askSettingsPaneiPad(id userInfo, Channel) {
  return ask(kSettingsPaneiPad, "pcip", userInfo, false);
}

// Resetting the Kavelin passcode is never exempt: on a trusted network it
// would hand the passcode to whoever holds the phone.
id askResetPasscode(id, Channel) {
  if (!wayToAuthenticate()) {
    showCannotAuthenticateAlert();
    return nullptr;
  }
  holdPermission("resetPasscode", platform::makeString("Reset Passcode Protection"));
  return nullptr;
}

id askCameraPhotos(id, Channel) {
  return askPhotos(&CoordinatorState::cameraPhotosPending, Note::kAllowedInCamPhotos);
}
id askCameraPhotos9(id, Channel) {
  return askPhotos(&CoordinatorState::cameraPhotos9Pending, Note::kAllowedInCamPhotos9);
}

}  // namespace kv::core
