#ifndef OPTRELLA_STANDIN_SCHED_H
#define OPTRELLA_STANDIN_SCHED_H

#ifdef __cplusplus
extern "C" {
#endif

struct sched_param { int sched_priority; char opaque[4]; };
int sched_yield(void);

#ifdef __cplusplus
}
#endif

#endif
