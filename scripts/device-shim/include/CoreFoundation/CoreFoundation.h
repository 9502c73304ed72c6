// Apple's Core Foundation: the types and functions the library uses.
#pragma once
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef CFTypeRef CFPropertyListRef;
typedef struct __CFNotificationCenter* CFNotificationCenterRef;
typedef CFStringRef CFNotificationName;
typedef signed long CFIndex;
typedef unsigned char Boolean;
typedef double CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;
typedef void (*CFNotificationCallback)(CFNotificationCenterRef center, void* observer,
                                       CFNotificationName name, const void* object,
                                       CFDictionaryRef userInfo);
typedef enum : CFIndex {
  CFNotificationSuspensionBehaviorDrop = 1,
  CFNotificationSuspensionBehaviorCoalesce = 2,
  CFNotificationSuspensionBehaviorHold = 3,
  CFNotificationSuspensionBehaviorDeliverImmediately = 4
} CFNotificationSuspensionBehavior;

CFNotificationCenterRef CFNotificationCenterGetDarwinNotifyCenter(void);
void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name,
                                     const void* object,
                                     CFNotificationSuspensionBehavior suspensionBehavior);
void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer);
void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFNotificationName name,
                                          const void* object, CFDictionaryRef userInfo,
                                          Boolean deliverImmediately);
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID);
void CFRelease(CFTypeRef cf);
CFTypeRef CFRetain(CFTypeRef cf);
CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);
#ifdef __cplusplus
}
#endif
