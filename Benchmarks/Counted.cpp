// In place of a tool's main: runs it and prints how often, and for how many bytes, it asked for
// heap memory on all of its threads, and how many threads were started.
//
//     TOOL help | TOOL WORD [OPTION]... | TOOL items COUNT
//     declare CALLS BYTES / run CALLS BYTES THREADS
//
// A declaration at namespace scope is made before main; so is what the C++ library asks for, once
// and whatever the tool.

#include <dlfcn.h>
#include <pthread.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Tools/Tool.hpp"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument);
}

namespace {

struct Counts {
    long calls;
    long bytes;
};

// A worker runs while the thread that started it waits.
Counts counts{};
int threads = 0;
thread_local bool startsThread = false;

void count(std::size_t bytes) {
    if (startsThread) return;
    ++counts.calls;
    counts.bytes += static_cast<long>(bytes);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    count(size);
    return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
    count(number * size);
    return __libc_calloc(number, size);
}
void* realloc(void* memory, std::size_t size) {
    count(size);
    return __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    count(size);
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    count(size);
    *memory = __libc_memalign(alignment, size);
    return *memory == nullptr ? 12 : 0;
}

// What the C library asks for to start a thread is its own.
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument) {
    ++threads;
    startsThread = true;
    const int result = __real_pthread_create(thread, attributes, start, argument);
    startsThread = false;
    return result;
}

void takeCommand(const char*, const char*, long, const char*, const char*, bool) {}
void takeItems(long, const char*) {}
}

int main(int argc, char* argv[]) {
    const Counts declared = counts;
    std::vector<std::string> texts(argv, argv + argc);
    if (argc == 3 && texts[1] == "items") {
        const int items = std::atoi(argv[2]);
        texts = {argv[0], "add"};
        for (int i = 0; i < items; ++i) {
            texts.emplace_back("--item");
            texts.push_back("v" + std::to_string(1000000 + i).substr(1));
        }
    }
    std::vector<char*> arguments;
    for (std::string& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);

    static char buffer[1 << 16];  // stdout asks for its own otherwise
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    const Counts before = counts;
    if (texts.size() == 2 && texts[1] == "help") {
        printHelp();
    } else {
        runCommandLine(static_cast<int>(texts.size()), arguments.data());
    }
    const Counts after = counts;
    std::fprintf(stderr, "declare %ld %ld\nrun %ld %ld %d\n", declared.calls, declared.bytes,
                 after.calls - before.calls, after.bytes - before.bytes, threads);
}
