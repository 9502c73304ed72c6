// Apple's crt_externs.h: a dylib reaches the environment through a function.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
char*** _NSGetEnviron(void);
#ifdef __cplusplus
}
#endif
