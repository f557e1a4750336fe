#ifndef OPTRELLA_STANDIN_TIME_H
#define OPTRELLA_STANDIN_TIME_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int clockid_t;
#define CLOCK_REALTIME 0
#define CLOCK_MONOTONIC 6
int clock_gettime(clockid_t, struct timespec*);
#define CLOCKS_PER_SEC 1000000
struct tm { int tm_sec, tm_min, tm_hour, tm_mday, tm_mon, tm_year, tm_wday, tm_yday, tm_isdst; long tm_gmtoff; char* tm_zone; };
char* asctime(const struct tm*);
clock_t clock(void);
char* ctime(const time_t*);
double difftime(time_t, time_t);
struct tm* gmtime(const time_t*);
struct tm* localtime(const time_t*);
struct tm* localtime_r(const time_t*, struct tm*);
time_t mktime(struct tm*);
size_t strftime(char*, size_t, const char*, const struct tm*);
time_t time(time_t*);
int timespec_get(struct timespec*, int);
int nanosleep(const struct timespec*, struct timespec*);

#ifdef __cplusplus
}
#endif

#endif
