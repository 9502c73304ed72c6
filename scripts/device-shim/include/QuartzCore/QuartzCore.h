// Apple's Core Animation: the media clock.
#pragma once
#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
CFTimeInterval CACurrentMediaTime(void);
#ifdef __cplusplus
}
#endif
