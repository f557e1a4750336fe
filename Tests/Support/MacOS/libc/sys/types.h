#ifndef OPTRELLA_STANDIN_SYS_TYPES_H
#define OPTRELLA_STANDIN_SYS_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char u_char;
typedef unsigned int u_int;
typedef unsigned long u_long;
typedef long ssize_t;
typedef long long off_t;
typedef int pid_t;
typedef unsigned int uid_t;
typedef unsigned int gid_t;
typedef unsigned int id_t;
typedef unsigned short mode_t;
typedef unsigned short nlink_t;
typedef int dev_t;
typedef unsigned long long ino_t;
typedef long long blkcnt_t;
typedef int blksize_t;
typedef long time_t;
typedef unsigned long clock_t;
typedef int suseconds_t;
typedef unsigned int useconds_t;
typedef unsigned int sigset_t;
typedef struct _opaque_pthread_t* pthread_t;
typedef struct { long kept; char opaque[56]; } pthread_attr_t;
typedef struct { long kept; char opaque[56]; } pthread_mutex_t;
typedef struct { long kept; char opaque[40]; } pthread_cond_t;
typedef struct { long kept; char opaque[8]; } pthread_mutexattr_t;
typedef struct { long kept; char opaque[8]; } pthread_condattr_t;
typedef struct { long kept; char opaque[8]; } pthread_once_t;
typedef struct { long kept; char opaque[192]; } pthread_rwlock_t;
typedef unsigned long pthread_key_t;
struct timespec { time_t tv_sec; long tv_nsec; };
struct timeval { time_t tv_sec; suseconds_t tv_usec; };

#ifdef __cplusplus
}
#endif

#endif
