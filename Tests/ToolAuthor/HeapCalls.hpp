// HeapCalls.hpp - how often the calling thread has asked for heap memory since it began.
//
// Linking HeapCalls.cpp replaces the operators new and delete of the whole test program.

#ifndef OPTRELLA_TESTS_HEAPCALLS_HPP
#define OPTRELLA_TESTS_HEAPCALLS_HPP

long heapCalls() noexcept;

#endif
