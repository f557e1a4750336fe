#ifndef OPTRELLA_STANDIN_MACH_MESSAGE_H
#define OPTRELLA_STANDIN_MACH_MESSAGE_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct { unsigned int bits; } mach_msg_header_t;

#ifdef __cplusplus
}
#endif

#endif
