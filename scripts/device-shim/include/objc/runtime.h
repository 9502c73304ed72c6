// Apple's objc/runtime.h: the functions the library uses.
#pragma once
#include <objc/objc.h>

typedef struct objc_method* Method;
typedef struct objc_ivar* Ivar;

#ifdef __cplusplus
extern "C" {
#endif
Class objc_getClass(const char* name);
Class objc_lookUpClass(const char* name);
Class objc_getMetaClass(const char* name);
Class object_getClass(id obj);
Class class_getSuperclass(Class cls);
const char* class_getName(Class cls);
BOOL class_isMetaClass(Class cls);
Method class_getInstanceMethod(Class cls, SEL name);
Method class_getClassMethod(Class cls, SEL name);
IMP class_getMethodImplementation(Class cls, SEL name);
BOOL class_respondsToSelector(Class cls, SEL sel);
BOOL class_addMethod(Class cls, SEL name, IMP imp, const char* types);
IMP class_replaceMethod(Class cls, SEL name, IMP imp, const char* types);
BOOL class_addIvar(Class cls, const char* name, size_t size, uint8_t alignment, const char* types);
Ivar class_getInstanceVariable(Class cls, const char* name);
ptrdiff_t ivar_getOffset(Ivar v);
const char* method_getTypeEncoding(Method m);
IMP method_getImplementation(Method m);
IMP method_setImplementation(Method m, IMP imp);
Class objc_allocateClassPair(Class superclass, const char* name, size_t extraBytes);
void objc_registerClassPair(Class cls);
#ifdef __cplusplus
}
#endif
