#ifndef OPTRELLA_STANDIN_XLOCALE_H
#define OPTRELLA_STANDIN_XLOCALE_H

#include <ctype.h>
#include <locale.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned int __uint32_t;
#define LC_COLLATE_MASK 1
#define LC_CTYPE_MASK 2
#define LC_MESSAGES_MASK 4
#define LC_MONETARY_MASK 8
#define LC_NUMERIC_MASK 16
#define LC_TIME_MASK 32
#define _CTYPE_A 0x100
#define _CTYPE_C 0x200
#define _CTYPE_D 0x400
#define _CTYPE_G 0x800
#define _CTYPE_L 0x1000
#define _CTYPE_P 0x2000
#define _CTYPE_S 0x4000
#define _CTYPE_U 0x8000
#define _CTYPE_X 0x10000
#define _CTYPE_B 0x20000
#define _CTYPE_R 0x40000
int isascii(int);

#ifdef __cplusplus
}
#endif

#endif
