/* The variables of the C start-up code, declared from their public reference. */

#ifndef OPTRELLA_STANDIN_CRT_EXTERNS_H
#define OPTRELLA_STANDIN_CRT_EXTERNS_H

#ifdef __cplusplus
extern "C" {
#endif

char*** _NSGetArgv(void);
int* _NSGetArgc(void);
char*** _NSGetEnviron(void);

#ifdef __cplusplus
}
#endif

#endif
