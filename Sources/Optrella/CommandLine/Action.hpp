// Action.hpp - what a command does.

#ifndef OPTRELLA_COMMANDLINE_ACTION_HPP
#define OPTRELLA_COMMANDLINE_ACTION_HPP

#include <concepts>
#include <type_traits>
#include <utility>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text/Shared.hpp"

namespace Optrella::Internal {

class Action;

template <class Callable>
concept OtherThanAction = !std::same_as<Callable, Action>;

// Named where a constant declaration meets the compiler: its name is the error message.
OPTRELLA_API void constantDeclarationTakesAnActionWithoutCaptures() noexcept;

// A callable that copies share, its state included. One without state, and a function
// `void(const Parameters&)`, cost no heap.
class OPTRELLA_API Action {
public:
    // Made of anything, so that what is no action is said by name: g++ says nothing of a constraint
    // that is not met within the braces of an array.
    template <class Callable, OtherThanAction Stored = std::decay_t<Callable>>
    constexpr Action(Callable&& callable) noexcept {
        static_assert(std::is_invocable_v<Stored&, const Parameters&>,
                      "an action must be callable with a `const Parameters&`");
        if constexpr (std::is_pointer_v<Stored> && std::is_convertible_v<Stored, Function>) {
            function_ = callable;
        } else if constexpr (std::is_empty_v<Stored> && std::is_default_constructible_v<Stored>) {
            function_ = [](const Parameters& given) { static_cast<void>(Stored{}(given)); };
        } else {
            if (std::is_constant_evaluated()) {
                refuse(std::is_object_v<Stored>);
            } else {
                keep<Stored>(std::forward<Callable>(callable));
            }
        }
    }

    // Moving copies: which of the two is called stays known.
    constexpr Action(const Action&) = default;
    Action& operator=(const Action&) = default;
    constexpr ~Action() = default;

    void operator()(const Parameters& given) const {
        if (state_.get() == nullptr) return function_(given);
        call_(state_.get(), given);
    }

private:
    using Function = void (*)(const Parameters& given);
    using Call = void (*)(Shared* state, const Parameters& given);
    template <class Stored>
    struct State : Shared {
        Stored callable;
    };
    static constexpr void refuse(bool isNoConstant) noexcept {
        if (isNoConstant) constantDeclarationTakesAnActionWithoutCaptures();
    }
    template <class Stored, class Callable>
    void keep(Callable&& callable) noexcept {
        state_ = SharedObject(new State<Stored>{
            {[](Shared* state) noexcept { delete static_cast<State<Stored>*>(state); }},
            std::forward<Callable>(callable)});
        call_ = [](Shared* state, const Parameters& given) {
            static_cast<void>(static_cast<State<Stored>*>(state)->callable(given));
        };
    }

    union {
        Function function_ = nullptr;
        Call call_;  // where there is state
    };
    SharedObject state_;
};

}  // namespace Optrella::Internal

#endif
