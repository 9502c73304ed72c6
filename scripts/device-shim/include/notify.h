// Apple's notify.h.
#pragma once
#include <stdint.h>

#define NOTIFY_STATUS_OK 0
#define NOTIFY_STATUS_INVALID_NAME 1
#define NOTIFY_STATUS_INVALID_TOKEN 2
#define NOTIFY_STATUS_FAILED 1000000
#define NOTIFY_TOKEN_INVALID -1

#ifdef __cplusplus
extern "C" {
#endif
uint32_t notify_post(const char* name);
uint32_t notify_register_check(const char* name, int* out_token);
uint32_t notify_set_state(int token, uint64_t state64);
uint32_t notify_get_state(int token, uint64_t* state64);
uint32_t notify_cancel(int token);
#ifdef __cplusplus
}
#endif
