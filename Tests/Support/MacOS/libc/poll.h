#ifndef OPTRELLA_STANDIN_POLL_H
#define OPTRELLA_STANDIN_POLL_H

#ifdef __cplusplus
extern "C" {
#endif

struct pollfd { int fd; short events; short revents; };
typedef unsigned int nfds_t;
#define POLLIN 0x0001
#define POLLOUT 0x0004
#define POLLERR 0x0008
#define POLLHUP 0x0010
int poll(struct pollfd*, nfds_t, int);

#ifdef __cplusplus
}
#endif

#endif
