#ifndef OPTRELLA_STANDIN_SYS_SELECT_H
#define OPTRELLA_STANDIN_SYS_SELECT_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define FD_SETSIZE 1024
typedef struct { int bits[FD_SETSIZE / 32]; } fd_set;
static inline int standInIsSet(int number, const fd_set* set) {
    return (set->bits[number / 32] & (int)(1U << (number % 32))) != 0;
}
static inline void standInSet(int number, fd_set* set) {
    set->bits[number / 32] |= (int)(1U << (number % 32));
}
#define FD_ISSET(number, set) standInIsSet(number, set)
#define FD_SET(number, set) standInSet(number, set)
#define FD_ZERO(set) __builtin_bzero(set, sizeof(*(set)))
int select(int, fd_set*, fd_set*, fd_set*, struct timeval*);

#ifdef __cplusplus
}
#endif

#endif
