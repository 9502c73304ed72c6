// The biometric hardware of the device.
#include "core/hardware.h"

#include "platform/functions.h"

namespace kv::core {

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

bool biometricHardwareInUse(bool onlyPasscode) {
  if (onlyPasscode) return false;
  return servicePresent("AppleMesa") || servicePresent("AppleH10PearlCam");
}

}  // namespace kv::core
