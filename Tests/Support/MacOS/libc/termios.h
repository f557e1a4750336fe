#ifndef OPTRELLA_STANDIN_TERMIOS_H
#define OPTRELLA_STANDIN_TERMIOS_H

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned long tcflag_t;
typedef unsigned char cc_t;
typedef unsigned long speed_t;
#define NCCS 20
struct termios {
    tcflag_t c_iflag;
    tcflag_t c_oflag;
    tcflag_t c_cflag;
    tcflag_t c_lflag;
    cc_t c_cc[NCCS];
    speed_t c_ispeed;
    speed_t c_ospeed;
};
#define ECHO 0x00000008
#define ECHONL 0x00000010
#define TCSANOW 0
#define TCSADRAIN 1
#define TCSAFLUSH 2
int tcgetattr(int, struct termios*);
int tcsetattr(int, int, const struct termios*);

#ifdef __cplusplus
}
#endif

#endif
