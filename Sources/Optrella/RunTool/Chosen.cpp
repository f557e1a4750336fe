#include "Optrella/RunTool/Chosen.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Optrella/CommandLine/Declaration.hpp"
#include "Optrella/CommandLine/TagMarks.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/Explain/Tries.hpp"
#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

namespace {

// What a line must hold to name a command. The marks tell most other arguments from the words
// without comparing texts.
class Words {
public:
    explicit Words(std::span<const Text> arguments) noexcept {
        marks_.reserve(arguments.size());
        for (const Text& each : arguments) marks_.push_back(TagMarks::markOf(each));
    }

    [[nodiscard]] bool mayName(const CommandLinePossibility& declaration) const noexcept {
        const KeptList required = Declaration::required(declaration);
        return std::all_of(required.begin(), required.end(), [this](const KeptParameter& each) {
            return !canOnlyStandAlone(each) || mayHold(each);
        });
    }

private:
    // An option may be joined with others, and a value may follow its tag in the same argument.
    static bool canOnlyStandAlone(const KeptParameter& parameter) noexcept {
        const commonDetails& common = parameter.common();
        return !common.hasParameter &&
               std::none_of(common.tags.begin(), common.tags.end(), looksLikeOption);
    }
    [[nodiscard]] bool mayHold(const KeptParameter& word) const noexcept {
        return std::any_of(marks_.begin(), marks_.end(),
                           [&word](std::uint32_t mark) { return word.mayHaveTag(mark); });
    }

    std::vector<std::uint32_t> marks_;
};

}  // namespace

std::optional<Chosen> chosen(const Tool& tool, std::span<const Text> arguments) noexcept {
    const Words words(arguments);
    std::vector<const CommandLinePossibility*> candidates;
    for (const CommandLinePossibility& each : tool.commandLines) {
        if (words.mayName(each)) candidates.push_back(&each);
    }
    const Grammar grammar(tool, Spelling::conventional, candidates);
    const std::vector<Argument> line = argumentsOf(arguments, grammar.vocabulary);
    std::optional<std::size_t> only;
    std::vector<Gift> gifts;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        Walk walk(grammar.forms[i], grammar.spelling);
        std::vector<Gift> read;
        walk.record(read);
        const bool canRead = std::all_of(line.begin(), line.end(), [&walk](const Argument& each) {
            return walk.read(each) == Reading::accepted;
        });
        if (!canRead || !walk.fits()) continue;
        if (only) return std::nullopt;
        only = i;
        gifts = std::move(read);
    }
    if (!only) return std::nullopt;
    const CommandLinePossibility& declaration = *candidates[*only];
    return Chosen{static_cast<std::size_t>(&declaration - tool.commandLines.begin()),
                  {Declaration::requiresRoot(declaration), Declaration::run(declaration),
                   parametersOf(grammar.forms[*only], gifts)}};
}

}  // namespace Optrella::Internal
