#include "Optrella/Tool/Argument.hpp"

#include <string>

#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

Argument::Argument(const Text& typed, const Vocabulary& vocabulary) noexcept
    : text(typed), symbol(vocabulary.find(typed)), isOptionLike(looksLikeOption(typed)) {
    if (!isOptionLike) return;
    if (static_cast<std::string_view>(text).starts_with("--")) {
        lookUpAssignment(vocabulary);
    } else {
        lookUpLetters(vocabulary);
    }
}

void Argument::lookUpAssignment(const Vocabulary& vocabulary) noexcept {
    const std::string_view bytes = text;
    const std::size_t equals = bytes.find('=');
    if (equals == std::string_view::npos) return;
    assignment = {vocabulary.find(bytes.substr(0, equals)), equals + 1};
}

void Argument::lookUpLetters(const Vocabulary& vocabulary) noexcept {
    const std::string_view bytes = text;
    if (bytes.size() < 3) return;  // one at most
    // The dash may be the beginning of another character.
    if (firstCharacterSize(bytes) != 1) return;
    for (std::size_t place = 1; place < bytes.size();) {
        const std::size_t size = firstCharacterSize(bytes.substr(place));
        std::string option = "-";
        option += bytes.substr(place, size);
        place += size;
        letters.push_back({vocabulary.find(option), place});
    }
    if (letters.size() < 2) letters.clear();
    std::string longOption = "-";
    longOption += bytes.substr(0, bytes.find('='));
    withSecondDash = vocabulary.find(longOption);
}

std::vector<Argument> argumentsOf(std::span<const Text> texts,
                                  const Vocabulary& vocabulary) noexcept {
    std::vector<Argument> line;
    line.reserve(texts.size());
    for (const Text& text : texts) line.emplace_back(text, vocabulary);
    return line;
}

}  // namespace Optrella::Internal
