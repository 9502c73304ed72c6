// The preference domain's keys as the tests know them: written out here,
// not taken from the loader's own table, so that a key the loader reads
// into the wrong place, or not at all, shows as a failure.
#pragma once

#include "settings/settings.h"

namespace kv::testing {

// Every plain switch of the domain: the key the settings pane writes, where
// the loader keeps it, and what an untouched setting means.
struct FlagKey {
  const char* key;
  bool settings::Settings::*member;
  bool fallback;
};
inline constexpr FlagKey kFlagKeys[] = {
    {"shouldShowExperimentalAlert", &settings::Settings::shouldShowExperimentalAlert, true},
    {"Enabled", &settings::Settings::enabled, true},
    {"callerNameProtected", &settings::Settings::callerNameProtected, false},
    {"HideCallerAfterLifting", &settings::Settings::hideCallerAfterLifting, true},
    {"VibrateOnError", &settings::Settings::vibrateOnError, false},
    {"hapticSetting", &settings::Settings::hapticSetting, true},
    {"keepSession", &settings::Settings::keepSession, false},
    {"protectSwitcher", &settings::Settings::protectSwitcher, false},
    {"protectPowerDown", &settings::Settings::protectPowerDown, true},
    {"protectPowerDownOnCriticalBattery", &settings::Settings::protectPowerDownOnCriticalBattery,
     false},
    {"protectRespring", &settings::Settings::protectRespring, true},
    {"blurAppSwitcher", &settings::Settings::blurAppSwitcher, true},
    {"showKavelinedText", &settings::Settings::showKavelinedText, true},
    {"protectSIMUnlock", &settings::Settings::protectSIMUnlock, false},
    {"protectMovingApps", &settings::Settings::protectMovingApps, false},
    {"unlockUsingTouchID", &settings::Settings::unlockUsingTouchID, false},
    {"CloseProtectedFoldersAfterLaunchingApp",
     &settings::Settings::closeProtectedFoldersAfterLaunchingApp, true},
    {"QuitProtectedAppsOnDeviceLock", &settings::Settings::quitProtectedAppsOnDeviceLock, true},
    {"showProtectedItemName", &settings::Settings::showProtectedItemName, true},
    {"appsInFoldersAreStillProtected", &settings::Settings::appsInFoldersAreStillProtected, false},
    {"protectSiri", &settings::Settings::protectSiri, false},
};

// The protected lists: strings, empty when absent.
struct ListKey {
  const char* key;
  settings::ItemList settings::Settings::*member;
};
inline constexpr ListKey kListKeys[] = {
    {"protected", &settings::Settings::protectedApps},
    {"protectedNotifications", &settings::Settings::protectedNotifications},
    {"protectedSettings", &settings::Settings::protectedSettings},
    {"protectedSwitches", &settings::Settings::protectedSwitches},
    {"protectedFolders", &settings::Settings::protectedFolders},
    {"protectedCCItems", &settings::Settings::protectedCCItems},
    {"protectedCCSettingsItems", &settings::Settings::protectedCCSettingsItems},
};

}  // namespace kv::testing
