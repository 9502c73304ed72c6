// The biometric hardware under its former names, for the files not yet moved
// to base/hardware.h, where it now lives.
#pragma once

#include "base/hardware.h"

namespace kv::core {

using base::biometricHardwareInUse;
using base::enrolledIdentities;
using base::faceCameraPresent;

}  // namespace kv::core
