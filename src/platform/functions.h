// The platform C functions the library calls. On a device they come from the
// system's frameworks; in the simulated device the host implements them with
// the same signatures. Either way the library only sees these declarations.
#pragma once

#include <dlfcn.h>
#include <spawn.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/objc.h"

#if defined(__APPLE__)
#include <AudioToolbox/AudioServices.h>
#include <CoreFoundation/CoreFoundation.h>
#include <crt_externs.h>
#include <dispatch/dispatch.h>
#include <mach-o/dyld.h>
#include <mach/mach.h>
#include <notify.h>
#else

extern "C" {

// ---- Core Foundation types (bridged to Foundation objects) ----
using CFTypeRef = const void*;
using CFStringRef = const struct __CFString*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;
using CFPropertyListRef = CFTypeRef;
using CFNotificationCenterRef = struct __CFNotificationCenter*;
using CFNotificationName = CFStringRef;
using CFIndex = long;
using Boolean = unsigned char;
using CFAbsoluteTime = double;
using CFURLRef = const struct __CFURL*;
using CFNotificationCallback = void (*)(CFNotificationCenterRef center, void* observer,
                                        CFNotificationName name, const void* object,
                                        CFDictionaryRef userInfo);
enum CFNotificationSuspensionBehavior : CFIndex {
  CFNotificationSuspensionBehaviorDrop = 1,
  CFNotificationSuspensionBehaviorCoalesce = 2,
  CFNotificationSuspensionBehaviorHold = 3,
  CFNotificationSuspensionBehaviorDeliverImmediately = 4,
};

// Darwin notification centre.
CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void);
void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name,
                                     const void* object,
                                     CFNotificationSuspensionBehavior suspensionBehavior);
void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer);
void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFNotificationName name,
                                          const void* object, CFDictionaryRef userInfo,
                                          Boolean deliverImmediately);

// Preferences.
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID);

// Memory and time.
void CFRelease(CFTypeRef cf);
CFTypeRef CFRetain(CFTypeRef cf);
CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

// ---- Darwin notify ----
enum : uint32_t {
  NOTIFY_STATUS_OK = 0,
  NOTIFY_STATUS_INVALID_NAME = 1,
  NOTIFY_STATUS_INVALID_TOKEN = 2,
  NOTIFY_STATUS_FAILED = 1000000
};
#define NOTIFY_TOKEN_INVALID (-1)
uint32_t notify_post(const char* name);
uint32_t notify_register_check(const char* name, int* out_token);
uint32_t notify_set_state(int token, uint64_t state);
uint32_t notify_get_state(int token, uint64_t* state);
uint32_t notify_cancel(int token);

// ---- Grand Central Dispatch: the main queue only ----
using dispatch_queue_t = struct dispatch_queue_s*;
using dispatch_time_t = uint64_t;
using dispatch_block_t = void (^)(void);
#define DISPATCH_TIME_NOW (0ull)
#define NSEC_PER_SEC 1000000000ull
dispatch_queue_t dispatch_get_main_queue(void);
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
void dispatch_after(dispatch_time_t when, dispatch_queue_t queue, dispatch_block_t block);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta);

// ---- The dynamic loader ----
struct mach_header;
void _dyld_register_func_for_add_image(void (*func)(const struct mach_header* mh,
                                                    intptr_t vmaddr_slide));

// ---- AudioToolbox system sounds ----
using OSStatus = int32_t;
using SystemSoundID = uint32_t;
OSStatus AudioServicesCreateSystemSoundID(CFURLRef inFileURL, SystemSoundID* outSystemSoundID);
OSStatus AudioServicesDisposeSystemSoundID(SystemSoundID inSystemSoundID);

}  // extern "C"
#endif

// The I/O registry and the system log: the SDK offers no C++ declaration of
// either (IOKit's headers are not public on iOS; NSLog is Foundation's), so
// they are declared here on every host.
extern "C" {
#if !defined(__APPLE__)
using mach_port_t = unsigned int;
using kern_return_t = int;
extern char** environ;
#endif
using io_object_t = mach_port_t;
using io_service_t = io_object_t;
extern const mach_port_t kIOMasterPortDefault;
CFMutableDictionaryRef IOServiceMatching(const char* name);
io_service_t IOServiceGetMatchingService(mach_port_t masterPort, CFDictionaryRef matching);
kern_return_t IOObjectRelease(io_object_t object);
void NSLog(id format, ...);
}  // extern "C"

namespace kv::platform {

// The environment of this process, for the processes it starts. A dylib on
// Apple's platforms reaches it through a function, not the `environ` symbol.
inline char** environment() {
#if defined(__APPLE__)
  return *_NSGetEnviron();
#else
  return ::environ;
#endif
}

#if defined(__APPLE__)
extern "C" const char* getprogname(void);  // <stdlib.h>
#endif

// The name this process was started as, without its directory.
inline const char* programName() {
#if defined(__APPLE__)
  return getprogname();
#else
  return program_invocation_short_name;
#endif
}

// The C function exported under `name` by any image loaded in this process,
// found through the default symbol search and typed as F, or nullptr when no
// image has it: the platform's private functions may be absent.
template <typename F>
F symbolNamed(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_DEFAULT, name));
}

// The path of the loaded image that holds `address`, or "" when none does.
inline std::string imagePathOf(const void* address) {
  Dl_info info{};
  if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return std::string();
  return std::string(info.dli_fname);
}

// Bridges between Foundation objects and the Core Foundation types that
// name them (toll-free: the same pointer).
inline CFStringRef cf(id str) {
  return reinterpret_cast<CFStringRef>(str);
}
inline id ns(CFTypeRef ref) {
  return reinterpret_cast<id>(const_cast<void*>(ref));
}

}  // namespace kv::platform
