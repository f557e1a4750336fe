#ifndef OPTRELLA_STANDIN_MACH_MACHINE_H
#define OPTRELLA_STANDIN_MACH_MACHINE_H

typedef int cpu_type_t;
typedef int cpu_subtype_t;

#endif
