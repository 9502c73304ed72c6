// The library's one entry point: a load-time constructor that runs when the
// injection framework (or a simulated host) loads the library into a process.
// It decides the process role, sets the version flags, installs that
// process's interceptions and registers its observers, in this order.
#include <dlfcn.h>

#include <string>

#include "base/flags.h"
#include "base/hardware.h"
#include "core/camera_request.h"
#include "core/controller.h"
#include "core/coordinator.h"
#include "core/file_channel.h"
#include "core/identities.h"
#include "core/wifi.h"
#include "platform/foundation.h"
#include "platform/runtime.h"
#include "processes/camera.h"
#include "processes/incall.h"
#include "processes/settings_guards.h"
#include "prompt/alert_view.h"
#include "prompt/incall_controller.h"
#include "prompt/unlock_controller.h"
#include "settings/controllers.h"
#include "settings/feedback.h"
#include "settings/notifications.h"
#include "settings/settings.h"
#include "springboard/blur_view.h"
#include "springboard/gate.h"
#include "springboard/integrations.h"
#include "startup/springboard_observers.h"
#include "startup/table.h"

namespace kv::startup {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kProcessInfo("processInfo");
const platform::Sel kProcessName("processName");
const platform::Sel kMainBundle("mainBundle");
const platform::Sel kBundleIdentifier("bundleIdentifier");
const platform::Sel kDefaultManager("defaultManager");
const platform::Sel kFileExistsAtPath("fileExistsAtPath:");
const platform::Sel kCurrentDevice("currentDevice");
const platform::Sel kUserInterfaceIdiom("userInterfaceIdiom");

using settings::Note;
using settings::observe;
using settings::registerToken;

std::string processName() {
  id info = platform::sendClass<id>(platform::classNamed("NSProcessInfo"), kProcessInfo);
  return platform::toString(platform::send<id>(info, kProcessName));
}

std::string bundleIdentifier() {
  id bundle = platform::sendClass<id>(platform::classNamed("NSBundle"), kMainBundle);
  return platform::toString(platform::send<id>(bundle, kBundleIdentifier));
}

bool fileExists(const char* path) {
  id manager = platform::sendClass<id>(platform::classNamed("NSFileManager"), kDefaultManager);
  return platform::send<BOOL>(manager, kFileExistsAtPath, platform::makeString(path)) != 0;
}

void inCallSection() {
  base::setRole(base::Role::kInCall);
  base::computeFlag(base::VersionFlag::kIOS10OrLater);
  installGroup(Group::kInCall);
  registerToken(Note::kCallerIdHandling);
  processes::loadCallerSettings();
  observe(Note::kPrefsChanged, processes::callerSettingsChanged);
  observe(Note::kCallerIdHandling, processes::callerSettingsChanged);
  observe(Note::kAllowInCallNames, processes::inCallNamesChanged);
  registerToken(Note::kAllowInCallNames);
}

void settingsSection() {
  base::setRole(base::Role::kSettings);
  for (base::VersionFlag f : {base::VersionFlag::kIOS10OrLater, base::VersionFlag::kIOS92OrLater,
                              base::VersionFlag::kIOS9OrLater, base::VersionFlag::kIOS8OrLater}) {
    base::computeFlag(f);
  }
  processes::defineSettingsClasses();
  installGroup(Group::kSettings);
  processes::observeSettingsAnswers();
  settings::defineSettingsControllers();
  observe(Note::kPrefsChanged, settings::settingsChanged);
  settings::load();
  id device = platform::sendClass<id>(platform::classNamed("UIDevice"), kCurrentDevice);
  base::flags().isPad = platform::send<platform::Integer>(device, kUserInterfaceIdiom) == 1;
}

void cameraSection() {
  base::setRole(base::Role::kCamera);
  installGroup(Group::kCamera);
  observe(Note::kAllowedInCamPhotos, processes::cameraPhotosAllowed);
  observe(Note::kAllowedInCamPhotos9, processes::cameraPhotosAllowed9);
  if (base::flags().isIOS11) {
    registerToken(Note::kInCameraPhotosProtection);
    observe(Note::kAllowedInCamPhotos11, processes::cameraPhotosAllowed11);
  }
}

void springBoardSection() {
  base::setRole(base::Role::kSpringBoard);
  core::resolveWiFiFunctions();
  // Classes that load after the library get their rows as they appear.
  _dyld_register_func_for_add_image(installLateGroups);
  base::computeFlag(base::VersionFlag::kIOS10OrLater);
  base::computeFlag(base::VersionFlag::kIOS102OrLater);
  if (base::flags().isIOS10OrLater) {
    registerToken(Note::kCallerIdHandling);
    installGroup(Group::kSpringBoardIOS10);
  }
  if (base::flags().isIOS11) installGroup(Group::kSpringBoardIOS11);
  base::computeFlag(base::VersionFlag::kIOS92OrLater);
  base::computeFlag(base::VersionFlag::kIOS8OrLater);
  base::computeFlag(base::VersionFlag::kIOS9OrLater);
  if (base::flags().isIOS8OrLater) installGroup(Group::kSpringBoardIOS8);
  core::defineKavelinController();
  prompt::defineAlertView();
  prompt::defineInCallController();
  prompt::defineUnlockController();
  springboard::defineBlurView();
  settings::defineSettingsControllers();
  installGroup(Group::kSpringBoard);
  settings::setBiometricsInUse(base::biometricHardwareInUse(settings::current().onlyPasscode));
  observe(Note::kLockAfterFiveSeconds, core::lockAfterFiveSeconds);
  observe(Note::kLockDeviceNow, lockDeviceNow);
  observe(Note::kDisableExperimentalAlert, settings::experimentalAlertDisabled);
  observe(Note::kShowExperimentalAlertIfNeeded, settings::showExperimentalAlertIfNeeded);
  observe(Note::kTestGlyph, testGlyph);
  registerToken(Note::kTestGlyph);
  if (base::flags().isIOS8OrLater) {
    observe(Note::kLockState, lockStateChanged);
    registerToken(Note::kLockState);
    registerToken(Note::kAllowInCallNames);
  }
  observe(Note::kScreenChanged, screenChanged);
  core::alsoForgetOnCleanup(springboard::forgetSkippedTransaction);
  observe(Note::kRequestPhotoLibraryAuthorization, core::photoLibraryRequest);
  observe(Note::kIpcOverride, core::fileRequest);
  registerToken(Note::kIpcOverride);
  observe(Note::kPrefsChanged, settings::settingsChanged);
  observe(Note::kHapticChanged, settings::hapticChanged);
  observe(Note::kVibrationChanged, settings::vibrationChanged);
  // Other extensions load after this library; their classes are met as they come.
  _dyld_register_func_for_add_image(installIntegrations);
  if (fileExists("/Library/MobileSubstrate/DynamicLibraries/Pellum.dylib")) {
    installGroup(Group::kPellum);
  }
  if (fileExists("/Library/MobileSubstrate/DynamicLibraries/Tamsin7.dylib") &&
      base::flags().isIOS8OrLater) {
    observe(Note::kAllowInCallNames, springboard::tamsinNamesChanged);
  }
  if (base::flags().isIOS92OrLater) observe(Note::kFinishedStartup, startupFinished);
  if (base::flags().isIOS11) {
    observe(Note::kEnrollmentChanged, core::enrollmentChanged);
    registerToken(Note::kInCameraPhotosProtection);
    observe(Note::kCameraAsksForPhotos, core::cameraAsksForPhotos);
  }
}

__attribute__((constructor)) void kavelinLoad() {
  platform::AutoreleasePool pool;
  installGroup(Group::kAllProcesses);
  base::computeFlag(base::VersionFlag::kIOS11);
  std::string name = processName();
  if (name == "InCallService") inCallSection();
  if (name == "Preferences") settingsSection();
  if (bundleIdentifier() == "com.apple.camera") cameraSection();
  if (name == "SpringBoard") springBoardSection();
  // Images the loader adds from now on bring classes that came late.
  startupComplete();
}

}  // namespace

}  // namespace kv::startup

// Every interception row the library can install, in any process, with the
// method encoding its replacement stands for and the earliest major version
// its group is installed on: "CLASS -selector ENCODING VERSION" a line.
// Tools hold these against the types the platform declares.
extern "C" __attribute__((visibility("default"))) const char* kavelinRowEncodings() {
  static std::string text;
  text.clear();
  for (const auto& [row, firstVersion] : kv::startup::allRows()) {
    if (row.pending || row.hook == nullptr || row.kind != kv::platform::RowKind::kReplaced)
      continue;
    text += std::string(row.className) + " " + row.method + " " + row.hook().encoding + " " +
            std::to_string(firstVersion) + "\n";
  }
  return text.c_str();
}

// The install report of this process, one line per row considered, in
// installation order ("installed SBApplication -icon:launchFromLocation:").
extern "C" __attribute__((visibility("default"))) const char* kavelinInstallReport() {
  static std::string text;
  text.clear();
  for (const auto& record : kv::startup::installReport()) {
    text += kv::platform::describe(record);
    text += '\n';
  }
  return text.c_str();
}
