#ifndef OPTRELLA_STANDIN_SYS_TIME_H
#define OPTRELLA_STANDIN_SYS_TIME_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

int gettimeofday(struct timeval*, void*);

#ifdef __cplusplus
}
#endif

#endif
