// HeapCalls.hpp - how often the calling thread asks for heap memory, and what if there is none.
//
// Linking HeapCalls.cpp replaces the operators new and delete of the whole test program.

#ifndef OPTRELLA_TESTS_HEAPCALLS_HPP
#define OPTRELLA_TESTS_HEAPCALLS_HPP

// Returns how often it has asked since it began.
long heapCalls() noexcept;

// Lets each further call of the thread fail.
void failHeapCalls() noexcept;

#endif
