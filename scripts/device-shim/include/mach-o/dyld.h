// Apple's mach-o/dyld.h: the image-added callback.
#pragma once
#include <stdint.h>

struct mach_header;
#ifdef __cplusplus
extern "C" {
#endif
void _dyld_register_func_for_add_image(void (*func)(const struct mach_header* mh,
                                                    intptr_t vmaddr_slide));
#ifdef __cplusplus
}
#endif
