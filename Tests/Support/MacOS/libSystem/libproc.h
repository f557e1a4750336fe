/* What the system knows of a process, declared from its public reference. */

#ifndef OPTRELLA_STANDIN_LIBPROC_H
#define OPTRELLA_STANDIN_LIBPROC_H

#include <stdint.h>

#define PROC_PIDPATHINFO_MAXSIZE (4 * 1024)

#ifdef __cplusplus
extern "C" {
#endif

int proc_pidpath(int pid, void* buffer, uint32_t buffersize);

#ifdef __cplusplus
}
#endif

#endif
