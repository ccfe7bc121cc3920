// What Tidwen uses of the unified log, declared by hand from Apple's documentation; the package of the
// compiler that checks the code for macOS lacks it.
#pragma once

#include "system/startup_item.h"

#include <stdint.h>

typedef struct os_log_s* os_log_t;
typedef uint8_t os_log_type_t;
#define OS_LOG_TYPE_DEFAULT ((os_log_type_t)0x00)
#define OS_LOG_TYPE_INFO ((os_log_type_t)0x01)
#define OS_LOG_TYPE_DEBUG ((os_log_type_t)0x02)
#define OS_LOG_TYPE_ERROR ((os_log_type_t)0x10)

#ifdef __cplusplus
extern "C" {
#endif
extern struct mach_header __dso_handle;
os_log_t os_log_create(const char* subsystem, const char* category);
void _os_log_impl(void* dso, os_log_t log, os_log_type_t type, const char* format, uint8_t* buffer,
                  uint32_t size);
#ifdef __cplusplus
}
#endif

#define os_log_with_type(log, type, format, ...)                                                             \
    __extension__({                                                                                          \
        static const char os_log_text[] __attribute__((section("__TEXT,__oslogstring,cstring_literals"))) =  \
            format;                                                                                          \
        uint8_t os_log_buffer[__builtin_os_log_format_buffer_size(format, __VA_ARGS__)];                     \
        _os_log_impl(&__dso_handle, log, type, os_log_text,                                                  \
                     (uint8_t*)__builtin_os_log_format(os_log_buffer, format, __VA_ARGS__),                  \
                     sizeof os_log_buffer);                                                                  \
    })
