#ifndef OPTRELLA_STANDIN_MACH_PORT_H
#define OPTRELLA_STANDIN_MACH_PORT_H

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned int mach_port_t;

#ifdef __cplusplus
}
#endif

#endif
