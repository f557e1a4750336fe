#include "HeapCalls.hpp"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local long calls = 0;
thread_local bool isOutOfMemory = false;

void* counted(std::size_t size) noexcept {
    ++calls;
    return isOutOfMemory ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* countedOrThrow(std::size_t size) {
    if (void* memory = counted(size)) return memory;
    throw std::bad_alloc();
}

}  // namespace

long heapCalls() noexcept { return calls; }
void failHeapCalls() noexcept { isOutOfMemory = true; }

// All but the aligned forms: the sanitizers' own would not call the first of these.
void* operator new(std::size_t size) { return countedOrThrow(size); }
void* operator new[](std::size_t size) { return countedOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return counted(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return counted(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
