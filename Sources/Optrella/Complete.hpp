// Complete.hpp - what can follow a command line that is being typed.

#ifndef OPTRELLA_COMPLETE_HPP
#define OPTRELLA_COMPLETE_HPP

#include <cstdint>
#include <optional>
#include <vector>

#include "Optrella/CommandLine.hpp"
#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// What may come next.
struct OPTRELLA_API Offer {
    // What is offered.
    enum class OPTRELLA_API Kind : std::uint8_t {
        tag,     // of a parameter
        choice,  // one of a list's options
        value,   // one that a completer lists; without a word: any value
        path,    // a path, always without a word
    };

    Kind kind = Kind::tag;       // what is offered
    std::optional<Text> word{};  // nothing: the user must think of one
    Text help = "";              // of the parameter or the choice
    Text name = "";              // of the value, as the parameter calls it; empty for a tag
    // What a path should name, and whether it should exist.
    std::optional<ParameterFileURL::urlType> pathType{};
    std::optional<ParameterFileURL::existState> pathState{};

    // Compares all of it.
    friend bool operator==(const Offer&, const Offer&) = default;
};

// Which offers are made.
enum class Offers : std::uint8_t {
    // For people: while nothing of the word is typed, the command's words come first and alone, an
    // operand is named and not its tag, and of several tags of a parameter the longest stands for
    // all.
    reduced,
    all,
};

// Returns the words that can come next: those after which the line can be ended so that exactly one
// declaration fits it, a visible one, with nothing missing, nothing twice and every choice one of
// the choices. `before` are the arguments before the word, without the program name; `current` is
// what is typed of the word.
//
// Words that begin with `current` are offered, each once: the command's words, the tags of other
// required parameters, choices and values, then optional parameters; each as declared. Completers
// are asked for what may come next only. The question is NP-hard: a word about which 100,000 steps
// do not decide is offered; no tool was seen that comes near.
[[nodiscard]] OPTRELLA_API std::vector<Offer> complete(const Tool& tool, ArgumentList before,
                                                       const Text& current,
                                                       Offers offers = Offers::reduced) noexcept;

}  // namespace Optrella

#endif
