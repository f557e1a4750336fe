#ifndef OPTRELLA_STANDIN_STDLIB_H
#define OPTRELLA_STANDIN_STDLIB_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define EXIT_FAILURE 1
#define EXIT_SUCCESS 0
#define RAND_MAX 0x7fffffff
#define MB_CUR_MAX 4
typedef struct { int quot; int rem; } div_t;
typedef struct { long quot; long rem; } ldiv_t;
typedef struct { long long quot; long long rem; } lldiv_t;
__attribute__((noreturn)) void abort(void);
int abs(int);
void* aligned_alloc(size_t, size_t);
int at_quick_exit(void (*)(void));
int atexit(void (*)(void));
double atof(const char*);
int atoi(const char*);
long atol(const char*);
long long atoll(const char*);
void* bsearch(const void*, const void*, size_t, size_t, int (*)(const void*, const void*));
void* calloc(size_t, size_t);
div_t div(int, int);
__attribute__((noreturn)) void exit(int);
__attribute__((noreturn)) void _Exit(int);
void free(void*);
char* getenv(const char*);
long labs(long);
ldiv_t ldiv(long, long);
long long llabs(long long);
lldiv_t lldiv(long long, long long);
void* malloc(size_t);
int mblen(const char*, size_t);
size_t mbstowcs(wchar_t*, const char*, size_t);
int mbtowc(wchar_t*, const char*, size_t);
int posix_memalign(void**, size_t, size_t);
void qsort(void*, size_t, size_t, int (*)(const void*, const void*));
__attribute__((noreturn)) void quick_exit(int);
int rand(void);
void* realloc(void*, size_t);
void srand(unsigned);
double strtod(const char*, char**);
float strtof(const char*, char**);
long strtol(const char*, char**, int);
long double strtold(const char*, char**);
long long strtoll(const char*, char**, int);
unsigned long strtoul(const char*, char**, int);
unsigned long long strtoull(const char*, char**, int);
int system(const char*);
int unsetenv(const char*);
size_t wcstombs(char*, const wchar_t*, size_t);
int wctomb(char*, wchar_t);

#ifdef __cplusplus
}
#endif

#endif
