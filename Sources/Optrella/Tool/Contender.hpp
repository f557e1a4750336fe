// Contender.hpp - a declaration that a line may still fit, while the line is being made.

#ifndef OPTRELLA_TOOL_CONTENDER_HPP
#define OPTRELLA_TOOL_CONTENDER_HPP

#include <cstddef>
#include <string>

#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

// What a line must be to count.
enum class Line : std::uint8_t {
    fitting,  // fits
    good,     // and leaves nothing out, gives nothing twice that need not be, and its choices hold
};

class Contender {
public:
    Contender(const Grammar& grammar, std::size_t declaration, Line line) noexcept
        : declaration_(declaration),
          isGood_(line == Line::good),
          walk_(grammar.forms[declaration], grammar.spelling) {}

    // Reads the next argument. Returns false when no line that goes on from there can count.
    [[nodiscard]] bool read(const Argument& argument) noexcept;
    // Returns whether the line may end here.
    [[nodiscard]] bool fits() const noexcept;

    // Appends what decides about everything that may follow: where two are equal, they remain so.
    void appendKey(std::string& key) const noexcept;
    // The same without the optional parameters that only must not be given again.
    void appendEssence(std::string& key) const noexcept;

    [[nodiscard]] std::size_t declaration() const noexcept { return declaration_; }
    [[nodiscard]] bool isGood() const noexcept { return isGood_; }
    [[nodiscard]] const Form& form() const noexcept { return walk_.form(); }
    [[nodiscard]] const Walk& walk() const noexcept { return walk_; }
    // Returns whether the next argument is a value, whatever it looks like.
    [[nodiscard]] bool isDue() const noexcept { return walk_.state().due != noSlot; }
    // Returns whether an argument may be read that is none of the tags.
    [[nodiscard]] bool takesWords() const noexcept;
    // Returns whether the parameter may be given now, at least once more.
    [[nodiscard]] bool mayGive(Slot slot) const noexcept;

private:
    [[nodiscard]] bool isTooOften() const noexcept;
    [[nodiscard]] bool holdsChoice() const noexcept;
    void appendState(std::string& key) const noexcept;

    std::size_t declaration_;
    bool isGood_;
    Walk walk_;
};

}  // namespace Optrella::Internal

#endif
