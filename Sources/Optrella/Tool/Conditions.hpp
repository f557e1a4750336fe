// Conditions.hpp - whether elements of a range meet a condition.
//
// Where there are a few of them and time does not count: the standard library's unroll their loops,
// into several times as much code.

#ifndef OPTRELLA_TOOL_CONDITIONS_HPP
#define OPTRELLA_TOOL_CONDITIONS_HPP

namespace Optrella::Internal {

template <class Range, class Condition>
[[nodiscard]] bool anyOf(const Range& range, Condition condition) noexcept {
    for (const auto& each : range) {  // NOLINT(readability-use-anyofallof)
        if (condition(each)) return true;
    }
    return false;
}

template <class Range, class Condition>
[[nodiscard]] bool noneOf(const Range& range, Condition condition) noexcept {
    return !anyOf(range, condition);
}

template <class Range, class Condition>
[[nodiscard]] bool allOf(const Range& range, Condition condition) noexcept {
    return !anyOf(range, [&condition](const auto& each) { return !condition(each); });
}

}  // namespace Optrella::Internal

#endif
