#ifndef OPTRELLA_STANDIN_FEATURES_H
#define OPTRELLA_STANDIN_FEATURES_H

/* The C++ library for Linux asks for the C library's version. */
#define __GLIBC_PREREQ(major, minor) 0

#endif
