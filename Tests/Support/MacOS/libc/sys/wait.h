#ifndef OPTRELLA_STANDIN_SYS_WAIT_H
#define OPTRELLA_STANDIN_SYS_WAIT_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define WNOHANG 1
pid_t waitpid(pid_t, int*, int);

#ifdef __cplusplus
}
#endif

#endif
