#ifndef OPTRELLA_STANDIN_LOCALE_H
#define OPTRELLA_STANDIN_LOCALE_H

#ifdef __cplusplus
extern "C" {
#endif

#define LC_ALL 0
#define LC_COLLATE 1
#define LC_CTYPE 2
#define LC_MONETARY 3
#define LC_NUMERIC 4
#define LC_TIME 5
#define LC_MESSAGES 6
struct lconv { char* decimal_point; };
typedef struct _xlocale* locale_t;
typedef locale_t __locale_t; /* its name in the C++ headers of Linux */
struct lconv* localeconv(void);
char* setlocale(int, const char*);
locale_t newlocale(int, const char*, locale_t);
int freelocale(locale_t);
locale_t duplocale(locale_t);
locale_t uselocale(locale_t);

#ifdef __cplusplus
}
#endif

#endif
