// Export.hpp - marks what tools may use of the shared library.
//
// The library is built with hidden visibility: what does not carry the mark cannot be reached from
// outside. A type carries it too, so that it is the same type on both sides.

#ifndef OPTRELLA_EXPORT_HPP
#define OPTRELLA_EXPORT_HPP

#if __cplusplus < 202002L
#error "Optrella is a library for C++20: compile with -std=c++20 or later"
#endif

#define OPTRELLA_API __attribute__((visibility("default")))

#endif
