#ifndef OPTRELLA_STANDIN_MACH_CLOCK_TYPES_H
#define OPTRELLA_STANDIN_MACH_CLOCK_TYPES_H

#ifdef __cplusplus
extern "C" {
#endif

#define NSEC_PER_SEC 1000000000ull
#define NSEC_PER_MSEC 1000000ull
#define NSEC_PER_USEC 1000ull
#define USEC_PER_SEC 1000000ull

#ifdef __cplusplus
}
#endif

#endif
