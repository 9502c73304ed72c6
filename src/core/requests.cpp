// What other code asks of the coordinator directly.
#include "core/requests.h"

#include <string>

#include "base/flags.h"
#include "core/coordinator.h"
#include "core/device.h"
#include "core/texts.h"
#include "platform/foundation.h"
#include "platform/invocation.h"
#include "platform/runtime.h"
#include "settings/notifications.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kDescription("description");
const platform::Sel kLaunchApplicationWithIdentifierSuspended(
    "launchApplicationWithIdentifier:suspended:");
const platform::Sel kIcon("icon");
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kCurrentRootIconList("currentRootIconList");
const platform::Sel kIcons("icons");
const platform::Sel kContainsObject("containsObject:");
const platform::Sel kIsOpen("isOpen");
const platform::Sel kDisplayNameForLocation("displayNameForLocation:");
const platform::Sel kDisplayName("displayName");

using platform::Integer;
using platform::Retained;
using platform::Sel;
using platform::send;
using platform::sendIfResponds;

// The screen-changed state that means SpringBoard's own screen shows.
constexpr uint64_t kSpringBoardShowing = 2;
constexpr Integer kHomeScreenLocation = 0;

void folderLog(id folder, const char* reason) {
  systemLog("Kavelin API: -authenticateForOpeningFolder:" +
            platform::toString(sendIfResponds<id>(folder, kDescription)) +
            " - Not authenticating because " + reason);
}

// The folder icon's launch, with the arguments of a tap on the home screen,
// in the richest form this system's folder icons have.
Retained folderLaunch(id icon) {
  const Sel kWithSettings("launchFromLocation:context:activationSettings:actions:");
  const Sel kWithContext("launchFromLocation:context:");
  const Sel kPlain("launchFromLocation:");
  Retained invocation;
  if (platform::respondsTo(icon, kWithSettings)) {
    invocation = platform::invocationOf(icon, kWithSettings, kHomeScreenLocation, id{nullptr},
                                        id{nullptr}, id{nullptr});
  } else if (platform::respondsTo(icon, kWithContext)) {
    // The older launches take the location as an int.
    invocation = platform::invocationOf(icon, kWithContext, int{kHomeScreenLocation}, id{nullptr});
  } else {
    invocation = platform::invocationOf(icon, kPlain, int{kHomeScreenLocation});
  }
  return invocation;
}

}  // namespace

void launchApplicationWithIdentifier(id bundleIdentifier) {
  platform::AutoreleasePool pool;
  BOOL suspended = 0;
  id arguments = platform::makeArray(
      {platform::pointerValue(&bundleIdentifier), platform::pointerValue(&suspended)});
  authenticateForIdentifier(bundleIdentifier, application(),
                            kLaunchApplicationWithIdentifierSuspended, arguments);
}

void authenticateForOpeningFolder(id folder) {
  platform::AutoreleasePool pool;
  // Only while SpringBoard's own screen shows.
  if (settings::stateOf(settings::Note::kScreenChanged) != kSpringBoardShowing) {
    folderLog(folder, "SpringBoard is not visible");
    return;
  }
  // Only a folder on the page the user sees.
  id icon = sendIfResponds<id>(folder, kIcon);
  id iconController =
      platform::sendClass<id>(platform::classNamed("SBIconController"), kSharedInstance);
  id page = sendIfResponds<id>(iconController, kCurrentRootIconList);
  id icons = sendIfResponds<id>(page, kIcons);
  if (icon == nullptr || sendIfResponds<BOOL>(icons, kContainsObject, icon) == 0) {
    folderLog(folder, "folder is not in visible icon list.");
    return;
  }
  // Not one that is open already.
  if (sendIfResponds<BOOL>(folder, kIsOpen) != 0) {
    folderLog(folder, "folder is already open.");
    return;
  }
  // Its launch, held back behind a prompt naming it.
  Retained invocation = folderLaunch(icon);
  if (!invocation) return;
  platform::retainArguments(invocation.get());
  setInvocation(invocation.get());
  // The location is an int until iOS 11, an NSInteger from then on.
  id name =
      !platform::respondsTo(icon, kDisplayNameForLocation) ? sendIfResponds<id>(icon, kDisplayName)
      : base::flags().isIOS11 ? send<id>(icon, kDisplayNameForLocation, kHomeScreenLocation)
                              : send<id>(icon, kDisplayNameForLocation, int{kHomeScreenLocation});
  setRestrictedTitle(name);
  showAlert();
}

void lockDeviceFromNotification() {
  if (base::role() == base::Role::kSpringBoard) pressLockButton();
}

}  // namespace kv::core
