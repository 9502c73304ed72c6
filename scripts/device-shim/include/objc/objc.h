// Apple's objc/objc.h: the runtime's basic types.
#pragma once
#include <stddef.h>
#include <stdint.h>

typedef struct objc_class* Class;
struct objc_object {
  Class isa;
};
typedef struct objc_object* id;
typedef struct objc_selector* SEL;
typedef void (*IMP)(void);  // strict dispatch prototypes, as the SDK's default

// iOS on 64-bit (devices and the simulator): bool; 32-bit: signed char.
#if defined(__LP64__) && __LP64__
#define OBJC_BOOL_IS_BOOL 1
typedef bool BOOL;
#else
#define OBJC_BOOL_IS_BOOL 0
typedef signed char BOOL;
#endif
#define YES ((BOOL)1)
#define NO ((BOOL)0)

#ifdef __cplusplus
extern "C" {
#endif
const char* sel_getName(SEL sel);
SEL sel_registerName(const char* str);
const char* object_getClassName(id obj);
#ifdef __cplusplus
}
#endif
