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
using platform::Sel;
using platform::send;
constexpr long kLockButtonSource = 2;
}  // namespace

id application() {
  return platform::sendClass<id>(platform::classNamed("UIApplication"), Sel("sharedApplication"));
}

id sharedInstanceOf(const char* className) {
  Class cls = platform::classNamed(className);
  if (cls == nullptr || !platform::respondsTo(platform::asId(cls), Sel("sharedInstance")))
    return nullptr;
  return platform::sendClass<id>(cls, Sel("sharedInstance"));
}

bool devicePasscodeSet() {
  if (base::flags().isIOS10OrLater) {
    id connection = platform::sendClass<id>(platform::classNamed("MCProfileConnection"),
                                            Sel("sharedConnection"));
    return platform::sendIfResponds<BOOL>(connection, Sel("isPasscodeSet")) != 0;
  }
  id controller = platform::sendClass<id>(platform::classNamed("SBDeviceLockController"),
                                          Sel("sharedController"));
  return platform::sendIfResponds<BOOL>(controller, Sel("deviceHasPasscodeSet")) != 0;
}

bool uiLocked() {
  return platform::sendIfResponds<BOOL>(sharedInstanceOf("SBLockScreenManager"),
                                        Sel("isUILocked")) != 0;
}

void pressLockButton() {
  id app = application();
  if (base::flags().isIOS11) {
    id button = platform::sendIfResponds<id>(app, Sel("lockHardwareButton"));
    id actions = platform::sendIfResponds<id>(button, Sel("buttonActions"));
    platform::sendIfResponds(actions, Sel("performSinglePressAction"));
  } else if (base::flags().isIOS10OrLater) {
    platform::sendIfResponds(app, Sel("_lockButtonUp:fromSource:"), id{nullptr}, kLockButtonSource);
  } else {
    platform::sendIfResponds(app, Sel("_lockButtonUpFromSource:"), kLockButtonSource);
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
  id controller = platform::sendClass<id>(backlight, Sel("sharedInstance"));
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
