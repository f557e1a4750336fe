#ifndef OPTRELLA_STANDIN_ASSERT_H
#define OPTRELLA_STANDIN_ASSERT_H

#ifdef __cplusplus
extern "C" {
#endif

void __assert_rtn(const char*, const char*, int, const char*);
#define assert(condition) ((void)0)

#ifdef __cplusplus
}
#endif

#endif
