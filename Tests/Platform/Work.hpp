// Work.hpp - what the tests of the worker share.

#ifndef OPTRELLA_TESTS_PLATFORM_WORK_HPP
#define OPTRELLA_TESTS_PLATFORM_WORK_HPP

#include <unistd.h>

#include <functional>
#include <utility>

#include "Optrella/CommandLine.hpp"
#include "Optrella/Platform/Worker.hpp"

namespace Tests {

// Kills the whole test program when the time is over: a wake-up that was lost never comes. On a
// busy machine everything else does, late.
class TimeLimit {
public:
    TimeLimit() { ::alarm(100); }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    ~TimeLimit() { ::alarm(0); }
};

inline bool runOnWorker(std::function<void()> work) {
    return Optrella::Platform::runOnWorker(
        [](void* context) { (*static_cast<std::function<void()>*>(context))(); }, &work);
}

inline Optrella::CommandLinePossibility go(Optrella::Internal::Action action) {
    return {false, {Optrella::ParameterNone{{"go"}, ""}}, {}, "", false, std::move(action)};
}

}  // namespace Tests

#endif
