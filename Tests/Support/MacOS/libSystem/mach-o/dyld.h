/* The loader's word on the program, declared from its public reference. */

#ifndef OPTRELLA_STANDIN_MACHO_DYLD_H
#define OPTRELLA_STANDIN_MACHO_DYLD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

int _NSGetExecutablePath(char* buf, uint32_t* bufsize);

#ifdef __cplusplus
}
#endif

#endif
