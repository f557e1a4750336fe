#ifndef OPTRELLA_STANDIN_UNISTD_H
#define OPTRELLA_STANDIN_UNISTD_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define STDIN_FILENO 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#define _POSIX_TIMERS (-1)
int close(int);
int chdir(const char*);
int dup2(int, int);
__attribute__((noreturn)) void _exit(int);
int execve(const char*, char* const*, char* const*);
char* getcwd(char*, size_t);
uid_t geteuid(void);
gid_t getegid(void);
pid_t getpgrp(void);
pid_t getpid(void);
uid_t getuid(void);
int isatty(int);
int pipe(int[2]);
ssize_t read(int, void*, size_t);
pid_t tcgetpgrp(int);
int ttyname_r(int, char*, size_t);
int unlink(const char*);
ssize_t write(int, const void*, size_t);

#ifdef __cplusplus
}
#endif

#endif
