// The settings' runtime classes and the handlers of the notifications that
// concern the settings themselves.
#pragma once

#include "platform/functions.h"

namespace kv::settings {

// Registers KavelinPreferenceUpdateController and KavelinExperimentalController.
void defineSettingsControllers();

// "net.quorvan.kavelin.prefsChanged": reload now, and again after 0.5 s
// through KavelinPreferenceUpdateController's updateSettings.
void settingsChanged(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                     CFDictionaryRef);

// "net.quorvan.disableexperimentalalert": the experimental alert is off for good.
void experimentalAlertDisabled(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                               CFDictionaryRef);

// "net.quorvan.kavelin.showexperimentalalertifneeded": shows the experimental
// alert after 0.3 s unless the user turned it off.
void showExperimentalAlertIfNeeded(CFNotificationCenterRef, void*, CFNotificationName, const void*,
                                   CFDictionaryRef);

}  // namespace kv::settings
