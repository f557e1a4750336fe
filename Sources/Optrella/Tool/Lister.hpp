// Lister.hpp - what lists the values of a parameter.

#ifndef OPTRELLA_TOOL_LISTER_HPP
#define OPTRELLA_TOOL_LISTER_HPP

#include <concepts>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Text/Shared.hpp"

namespace Optrella::Internal {

class Lister;

template <class Callable>
concept OtherThanLister = !std::same_as<Callable, Lister>;

// clang-format off
template <class Callable>
concept ListsTexts = requires(Callable& callable) {
    { *std::begin(callable()) } -> std::convertible_to<Text>;
    std::end(callable());
};
// clang-format on

// A callable that copies share, its state included.
class OPTRELLA_API Lister {
public:
    // Made of anything, so that what lists nothing is said by name.
    template <class Callable, OtherThanLister Stored = std::decay_t<Callable>>
    explicit Lister(Callable&& callable) noexcept {
        static_assert(ListsTexts<Stored>,
                      "a completer must be callable without arguments and return a range of texts");
        if constexpr (ListsTexts<Stored>) {
            state_ = SharedObject(new State<Stored>{
                {[](Shared* state) noexcept { delete static_cast<State<Stored>*>(state); }},
                std::forward<Callable>(callable)});
            call_ = [](Shared* state) {
                return textsOf(static_cast<State<Stored>*>(state)->callable());
            };
        }
    }

    [[nodiscard]] std::vector<Text> operator()() const { return call_(state_.get()); }

private:
    template <class Stored>
    struct State : Shared {
        Stored callable;
    };
    template <class Range>
    static std::vector<Text> textsOf(Range&& range) {
        if constexpr (std::is_same_v<std::remove_cvref_t<Range>, std::vector<Text>>) {
            return std::forward<Range>(range);
        } else {
            std::vector<Text> texts;
            if constexpr (requires { range.size(); }) texts.reserve(range.size());
            for (auto&& each : range) texts.emplace_back(each);
            return texts;
        }
    }

    std::vector<Text> (*call_)(Shared* state) = nullptr;
    SharedObject state_;
};

}  // namespace Optrella::Internal

#endif
