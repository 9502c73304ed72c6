// The biometric hardware of the device.
#include "base/hardware.h"

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"

namespace kv::base {

namespace {

// The selectors this file sends, each written once.
const platform::Sel kManager("manager");
const platform::Sel kIdentities("identities:");

bool servicePresent(const char* name) {
  io_service_t service = IOServiceGetMatchingService(kIOMasterPortDefault, IOServiceMatching(name));
  if (service == 0) return false;
  IOObjectRelease(service);
  return true;
}

}  // namespace

bool faceCameraPresent() {
  static const bool present = servicePresent("AppleH10PearlCam");
  return present;
}

unsigned long enrolledIdentities() {
  platform::AutoreleasePool pool;
  id kit = platform::sendClass<id>(platform::classNamed("BiometricKit"), kManager);
  return platform::arrayCount(platform::sendIfResponds<id>(kit, kIdentities, id{nullptr}));
}

bool biometricHardwareInUse(bool onlyPasscode) {
  if (onlyPasscode) return false;
  return servicePresent("AppleMesa") || servicePresent("AppleH10PearlCam");
}

}  // namespace kv::base
