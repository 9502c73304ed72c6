// The biometric hardware of the device.
#include "base/hardware.h"

#include "platform/foundation.h"
#include "platform/functions.h"
#include "platform/runtime.h"

namespace kv::base {

namespace {

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
  id kit = platform::sendClass<id>(platform::classNamed("BiometricKit"), platform::Sel("manager"));
  return platform::arrayCount(
      platform::sendIfResponds<id>(kit, platform::Sel("identities:"), id{nullptr}));
}

bool biometricHardwareInUse(bool onlyPasscode) {
  if (onlyPasscode) return false;
  return servicePresent("AppleMesa") || servicePresent("AppleH10PearlCam");
}

}  // namespace kv::base
