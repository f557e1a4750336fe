/* What the library uses of the unified log, declared from its public reference. An entry reaches
   the system, or its stand-in, as the compiler lays it out: the format, and a buffer with what it
   says of every argument. */

#ifndef OPTRELLA_STANDIN_OS_LOG_H
#define OPTRELLA_STANDIN_OS_LOG_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct os_log_s* os_log_t;
typedef uint8_t os_log_type_t;

enum { OS_LOG_TYPE_DEFAULT = 0x00, OS_LOG_TYPE_INFO = 0x01, OS_LOG_TYPE_DEBUG = 0x02 };

os_log_t os_log_create(const char* subsystem, const char* category);
bool os_log_type_enabled(os_log_t log, os_log_type_t type);

/* The program or library that the entry is from. */
extern char __dso_handle;
void _os_log_impl(void* from, os_log_t log, os_log_type_t type, const char* format, uint8_t* buffer,
                  uint32_t size);

#define os_log_with_type(log, type, format, ...)                                                 \
    __extension__({                                                                              \
        uint8_t standInBuffer[__builtin_os_log_format_buffer_size(format, ##__VA_ARGS__)];       \
        __builtin_os_log_format(standInBuffer, format, ##__VA_ARGS__);                           \
        _os_log_impl(&__dso_handle, log, type, format, standInBuffer,                            \
                     (uint32_t)sizeof standInBuffer);                                            \
    })

#ifdef __cplusplus
}
#endif

#endif
