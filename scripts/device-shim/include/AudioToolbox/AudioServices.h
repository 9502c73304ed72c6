// AudioToolbox's system sounds: the types and functions the library uses.
#pragma once
#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef signed int SInt32;
typedef unsigned int UInt32;
typedef SInt32 OSStatus;
typedef UInt32 SystemSoundID;

OSStatus AudioServicesCreateSystemSoundID(CFURLRef inFileURL, SystemSoundID* outSystemSoundID);
OSStatus AudioServicesDisposeSystemSoundID(SystemSoundID inSystemSoundID);
#ifdef __cplusplus
}
#endif
