#ifndef OPTRELLA_STANDIN_SYS_IOCTL_H
#define OPTRELLA_STANDIN_SYS_IOCTL_H

#ifdef __cplusplus
extern "C" {
#endif

#define FIONREAD 0x4004667fUL
#define TIOCGWINSZ 0x40087468UL
struct winsize {
    unsigned short ws_row;
    unsigned short ws_col;
    unsigned short ws_xpixel;
    unsigned short ws_ypixel;
};
int ioctl(int, unsigned long, ...);

#ifdef __cplusplus
}
#endif

#endif
