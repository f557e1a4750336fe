#ifndef OPTRELLA_STANDIN_CTYPE_H
#define OPTRELLA_STANDIN_CTYPE_H

#ifdef __cplusplus
extern "C" {
#endif

int isalnum(int);
int isalpha(int);
int isblank(int);
int iscntrl(int);
int isdigit(int);
int isgraph(int);
int islower(int);
int isprint(int);
int ispunct(int);
int isspace(int);
int isupper(int);
int isxdigit(int);
int tolower(int);
int toupper(int);

/* Not there: without them the C++ headers of Linux do not compile. */
enum { _ISupper = 1, _ISlower = 2, _ISalpha = 4, _ISdigit = 8, _ISxdigit = 16, _ISspace = 32, _ISprint = 64, _ISgraph = 128, _ISblank = 256, _IScntrl = 512, _ISpunct = 1024, _ISalnum = 2048 };

#ifdef __cplusplus
}
#endif

#endif
