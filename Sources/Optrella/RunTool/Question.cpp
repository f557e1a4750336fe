#include "Optrella/RunTool/Question.hpp"

#include <algorithm>
#include <string_view>

#include "Optrella/Tool/Argument.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Tool/OwnOption.hpp"
#include "Optrella/Tool/Walk.hpp"

namespace Optrella::Internal {

namespace {

using About = Question::About;

// A declaration, as far as the line has been read for it.
struct Reader {
    explicit Reader(const Form& form) noexcept : walk(form, Spelling::conventional) {}

    Walk walk;
    bool takesAllPlain = true;  // has a use for every argument that is no option

    void read(const Argument& argument) noexcept {
        const bool isPlain = !argument.isOptionLike;
        Reading reading = walk.read(argument);
        if (reading == Reading::valueMissing) reading = walk.read(argument);
        if (isPlain && reading != Reading::accepted) takesAllPlain = false;
    }
    [[nodiscard]] bool hasUseFor(const Argument& argument) const noexcept {
        Walk next = walk;
        return next.read(argument) == Reading::accepted;
    }
    [[nodiscard]] bool isInRest() const noexcept { return walk.state().rest != noSlot; }

    // How many of the tags that name the command are given.
    [[nodiscard]] std::size_t named() const noexcept {
        std::size_t count = 0;
        for (Slot slot = 0; slot < walk.form().requiredCount(); ++slot) {
            const bool isTag = !walk.form().slot(slot).takes;
            if (isTag && walk.state().given.contains(slot)) ++count;
        }
        return count;
    }
    // Whether no word of the command is missing before one that is given.
    [[nodiscard]] bool isBegun() const noexcept {
        bool isMissing = false;
        for (Slot slot = 0; slot < walk.form().requiredCount(); ++slot) {
            if (!walk.form().slot(slot).isRequiredWord) continue;
            const bool isGiven = walk.state().given.contains(slot);
            if (isGiven && isMissing) return false;
            isMissing = isMissing || !isGiven;
        }
        return true;
    }
    [[nodiscard]] bool isNamedWholly() const noexcept {
        return named() > 0 && walk.state().requiredWordsGiven == walk.form().requiredWordCount();
    }
};

// All declarations, read together.
class Readers {
public:
    explicit Readers(const Grammar& grammar) noexcept {
        all_.reserve(grammar.forms.size());
        for (const Form& form : grammar.forms) all_.emplace_back(form);
    }

    void read(const Argument& argument) noexcept {
        for (Reader& each : all_) each.read(argument);
    }

    // Returns those that the line names best, in order, as views: by most of their tags, and in the
    // order of their words. Hidden ones are meant only where no others are, and by a tag.
    [[nodiscard]] std::vector<const Reader*> meant() const noexcept {
        std::vector<const Reader*> best;
        std::size_t most = 1;
        for (const Reader& each : all_) {
            const std::size_t rank = rankOf(each);
            if (rank < most) continue;
            if (rank > most) best.clear();
            most = rank;
            best.push_back(&each);
        }
        return best;
    }
    [[nodiscard]] std::size_t indexOf(const Reader* reader) const noexcept {
        return static_cast<std::size_t>(reader - all_.data());
    }

private:
    // How well the line names it; 0 when it does not name a hidden one.
    static std::size_t rankOf(const Reader& reader) noexcept {
        const bool isVisible = !reader.walk.form().isHidden();
        const std::size_t named = reader.named();
        if (!isVisible && named == 0) return 0;
        return 1 + 4 * named + (isVisible ? 2 : 0) + (reader.isBegun() ? 1 : 0);
    }

    std::vector<Reader> all_;
};

// ---- The options of every tool ----

constexpr std::string_view completionWithShell = "--completion=";
constexpr std::string_view helpCommand = "help";

About aboutOf(OwnOption option) noexcept {
    switch (option) {
        case OwnOption::version:
            return About::version;
        case OwnOption::completion:
            return About::completion;
        case OwnOption::manual:
            return About::manual;
        case OwnOption::description:
            return About::description;
        case OwnOption::help:
            break;
    }
    return About::tool;
}

std::optional<About> aboutOf(const Tool& tool, std::span<const Text> arguments,
                             std::size_t place) noexcept {
    const std::string_view argument = arguments[place];
    if (place == 0 && argument == helpCommand) return About::tool;
    if (argument.starts_with(completionWithShell)) return About::completion;
    const std::optional<OwnOption> option = ownOptionOf(tool, argument);
    return option ? std::optional(aboutOf(*option)) : std::nullopt;
}

std::optional<Text> shellOf(std::span<const Text> arguments, std::size_t place) noexcept {
    const std::string_view argument = arguments[place];
    if (argument.starts_with(completionWithShell)) {
        return Text(argument.substr(completionWithShell.size()));
    }
    if (place + 1 < arguments.size()) return arguments[place + 1];
    return std::nullopt;
}

// ---- Help ----

template <class Condition>
std::vector<std::size_t> indicesOf(const Readers& readers, Condition condition) noexcept {
    std::vector<std::size_t> indices;
    for (const Reader* each : readers.meant()) {
        if (condition(*each)) indices.push_back(readers.indexOf(each));
    }
    return indices;
}

Question helpAfter(const Readers& readers, std::span<const Text> words) noexcept {
    const auto isNamed = [](const Reader* each) { return each->named() > 0; };
    const auto meant = readers.meant();
    const bool isOption = allOf(words, looksLikeOption);
    if (isOption && noneOf(meant, isNamed)) return {About::tool};
    std::vector<std::size_t> commands =
        indicesOf(readers, [](const Reader& each) { return each.takesAllPlain; });
    // With one argument too many it is still clear which command is meant.
    if (commands.empty()) {
        commands = indicesOf(readers, [](const Reader& each) { return each.isNamedWholly(); });
    }
    if (commands.empty()) return {About::noCommand, {}, words};
    return {About::commands, std::move(commands)};
}

Question helpOnWords(const Grammar& grammar, std::span<const Text> words) noexcept {
    Readers readers(grammar);
    for (const Argument& each : argumentsOf(words, grammar.vocabulary)) readers.read(each);
    return helpAfter(readers, words);
}

Question question(About about, const Grammar& grammar, const Readers& before,
                  std::span<const Text> arguments, std::size_t place) noexcept {
    if (about == About::completion) return {about, {}, {}, shellOf(arguments, place)};
    if (about != About::tool) return {about};
    const bool isCommand = arguments[place] == helpCommand;
    return isCommand ? helpOnWords(grammar, arguments.subspan(1))
                     : helpAfter(before, arguments.first(place));
}

}  // namespace

std::optional<Question> questionOf(const Tool& tool, const Grammar& grammar,
                                   std::span<const Text> arguments) noexcept {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    arguments = arguments.first(static_cast<std::size_t>(end - arguments.begin()));
    Readers readers(grammar);
    for (std::size_t place = 0; place < arguments.size(); ++place) {
        const Argument argument(arguments[place], grammar.vocabulary);
        if (const std::optional<About> about = aboutOf(tool, arguments, place)) {
            const auto meant = readers.meant();
            const auto isInRest = [](const Reader* each) { return each->isInRest(); };
            if (anyOf(meant, isInRest)) break;
            const auto hasUse = [&](const Reader* each) { return each->hasUseFor(argument); };
            const bool isTheirs = !meant.empty() && allOf(meant, hasUse);
            if (!isTheirs) return question(*about, grammar, readers, arguments, place);
        }
        readers.read(argument);
    }
    return std::nullopt;
}

}  // namespace Optrella::Internal
