// The device facts and buttons the protection core uses.
#include "core/device.h"

#include "base/flags.h"
#include "base/hardware.h"
#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"
#include "settings/settings.h"

namespace kv::core {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kSharedApplication("sharedApplication");
const platform::Sel kSharedInstance("sharedInstance");
const platform::Sel kSharedConnection("sharedConnection");
const platform::Sel kIsPasscodeSet("isPasscodeSet");
const platform::Sel kSharedController("sharedController");
const platform::Sel kDeviceHasPasscodeSet("deviceHasPasscodeSet");
const platform::Sel kIsUILocked("isUILocked");
const platform::Sel kLockHardwareButton("lockHardwareButton");
const platform::Sel kButtonActions("buttonActions");
const platform::Sel kPerformSinglePressAction("performSinglePressAction");
const platform::Sel kLockButtonUpWithEvent("_lockButtonUp:fromSource:");
const platform::Sel kLockButtonUpFromSource("_lockButtonUpFromSource:");
using platform::Sel;
using platform::send;
constexpr long kLockButtonSource = 2;
}  // namespace

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), kSharedApplication);
}

id sharedInstanceOf(const char* className) {
  Class cls = platform::classNamed(className);
  if (cls == nullptr || !platform::respondsTo(platform::asId(cls), kSharedInstance)) return nullptr;
  return platform::sendClass<id>(cls, kSharedInstance);
}

bool devicePasscodeSet() {
  if (base::flags().isIOS10OrLater) {
    id connection =
        platform::sendClass<id>(platform::classNamed("MCProfileConnection"), kSharedConnection);
    return platform::sendIfResponds<BOOL>(connection, kIsPasscodeSet) != 0;
  }
  id controller =
      platform::sendClass<id>(platform::classNamed("SBDeviceLockController"), kSharedController);
  return platform::sendIfResponds<BOOL>(controller, kDeviceHasPasscodeSet) != 0;
}

bool uiLocked() {
  return platform::sendIfResponds<BOOL>(sharedInstanceOf("SBLockScreenManager"), kIsUILocked) != 0;
}

void pressLockButton() {
  id app = application();
  if (base::flags().isIOS11) {
    id button = platform::sendIfResponds<id>(app, kLockHardwareButton);
    id actions = platform::sendIfResponds<id>(button, kButtonActions);
    platform::sendIfResponds(actions, kPerformSinglePressAction);
  } else if (base::flags().isIOS10OrLater) {
    platform::sendIfResponds(app, kLockButtonUpWithEvent, id{nullptr}, kLockButtonSource);
  } else {
    platform::sendIfResponds(app, kLockButtonUpFromSource, kLockButtonSource);
  }
}

bool biometricsInUse() {
  return settings::current().biometricsInUse;
}

bool faceID() {
  return biometricsInUse() && base::faceCameraPresent();
}

bool setBacklightFactor(float factor) {
  static const Sel kSetBacklightFactor("setBacklightFactor:source:");
  Class backlight = platform::classNamed("SBBacklightController");
  if (!platform::instancesRespondTo(backlight, kSetBacklightFactor)) return false;
  id controller = platform::sendClass<id>(backlight, kSharedInstance);
  if (base::flags().isIOS10OrLater) {
    send<void>(controller, kSetBacklightFactor, factor, platform::Integer{0});
  } else {
    send<void>(controller, kSetBacklightFactor, factor, 0);
  }
  return true;
}

double now() {
  return CFAbsoluteTimeGetCurrent();
}

}  // namespace kv::core
