#ifndef OPTRELLA_STANDIN_SYS_IOCTL_H
#define OPTRELLA_STANDIN_SYS_IOCTL_H

#ifdef __cplusplus
extern "C" {
#endif

#define FIONREAD 0x4004667fUL
int ioctl(int, unsigned long, ...);

#ifdef __cplusplus
}
#endif

#endif
