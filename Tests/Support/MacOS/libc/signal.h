#ifndef OPTRELLA_STANDIN_SIGNAL_H
#define OPTRELLA_STANDIN_SIGNAL_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int sig_atomic_t;
typedef struct __siginfo siginfo_t;
#define SIG_DFL (void (*)(int))0
#define SIG_IGN (void (*)(int))1
#define SIG_ERR ((void (*)(int)) - 1)
struct sigaction {
    union {
        void (*__sa_handler)(int);
        void (*__sa_sigaction)(int, siginfo_t*, void*);
    } __sigaction_u;
    sigset_t sa_mask;
    int sa_flags;
};
#define sa_handler __sigaction_u.__sa_handler
#define sa_sigaction __sigaction_u.__sa_sigaction
#define SA_RESTART 0x0002
#define SA_SIGINFO 0x0040
#define SIG_BLOCK 1
#define SIG_UNBLOCK 2
#define SIG_SETMASK 3
#define NSIG 32
#define SIGHUP 1
#define SIGINT 2
#define SIGQUIT 3
#define SIGILL 4
#define SIGTRAP 5
#define SIGABRT 6
#define SIGFPE 8
#define SIGKILL 9
#define SIGBUS 10
#define SIGSEGV 11
#define SIGSYS 12
#define SIGPIPE 13
#define SIGALRM 14
#define SIGTERM 15
#define SIGSTOP 17
#define SIGTSTP 18
#define SIGCONT 19
#define SIGCHLD 20
#define SIGTTIN 21
#define SIGTTOU 22
#define SIGUSR1 30
#define SIGUSR2 31
void (*signal(int, void (*)(int)))(int);
int raise(int);
int kill(pid_t, int);
int sigaction(int, const struct sigaction*, struct sigaction*);
int sigaddset(sigset_t*, int);
int sigdelset(sigset_t*, int);
int sigemptyset(sigset_t*);
int sigfillset(sigset_t*);
int sigismember(const sigset_t*, int);
int pthread_kill(pthread_t, int);
int pthread_sigmask(int, const sigset_t*, sigset_t*);

/* As macros too, which is why a "::" in front of them does not compile there. */
#define sigaddset(set, number) (*(set) |= (1U << ((number)-1)), 0)
#define sigdelset(set, number) (*(set) &= ~(1U << ((number)-1)), 0)
#define sigismember(set, number) ((*(set) & (1U << ((number)-1))) != 0)
#define sigemptyset(set) (*(set) = 0, 0)
#define sigfillset(set) (*(set) = ~(sigset_t)0, 0)

#ifdef __cplusplus
}
#endif

#endif
