#ifndef OPTRELLA_STANDIN_SETJMP_H
#define OPTRELLA_STANDIN_SETJMP_H

#ifdef __cplusplus
extern "C" {
#endif

typedef int jmp_buf[48];
int setjmp(jmp_buf);
__attribute__((noreturn)) void longjmp(jmp_buf, int);

#ifdef __cplusplus
}
#endif

#endif
