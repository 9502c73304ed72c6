// The Objective-C runtime's C interface, whichever runtime the host has:
// Apple's on a device, GCC's in the simulated device.
#pragma once

#if defined(__APPLE__)
#define KV_APPLE_RUNTIME 1
#include <objc/message.h>
#include <objc/runtime.h>
#else
#define KV_APPLE_RUNTIME 0
#include <objc/message.h>
#include <objc/runtime.h>
#endif
