// Apple's objc/message.h with strict dispatch prototypes: cast before use.
#pragma once
#include <objc/objc.h>

struct objc_super {
  id receiver;
  Class super_class;
};

#ifdef __cplusplus
extern "C" {
#endif
void objc_msgSend(void);
void objc_msgSendSuper(void);
#if !defined(__arm64__)
// Structs returned in memory: not on arm64, where objc_msgSend returns them.
void objc_msgSend_stret(void);
void objc_msgSendSuper_stret(void);
#endif
#if defined(__i386__) || defined(__x86_64__)
// The x87 return (long double) exists on Intel only.
void objc_msgSend_fpret(void);
#endif
#ifdef __cplusplus
}
#endif
