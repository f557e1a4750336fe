#ifndef OPTRELLA_STANDIN_SYSCALL_H
#define OPTRELLA_STANDIN_SYSCALL_H

#ifdef __cplusplus
extern "C" {
#endif

/* Not there: without it the C++ headers of Linux do not compile. */
#define SYS_futex 0
long syscall(long, ...);

#ifdef __cplusplus
}
#endif

#endif
