// All of a tool's main: what Tool.hpp declares last.

#include <cstdlib>
#include <string>
#include <string_view>

#include "Optrella/CommandLine/Dispatch.hpp"
#include "Optrella/CommandLineExitStatus.hpp"
#include "Optrella/CompletionScript.hpp"
#include "Optrella/CompletionScript/Answer.hpp"
#include "Optrella/Description.hpp"
#include "Optrella/Elevation/HandToSudo.hpp"
#include "Optrella/Explain/Explained.hpp"
#include "Optrella/Explain/Rejection.hpp"
#include "Optrella/HelpPage.hpp"
#include "Optrella/ManualPage.hpp"
#include "Optrella/Parameters/Decimal.hpp"
#include "Optrella/Platform/Process.hpp"
#include "Optrella/Platform/Screen.hpp"
#include "Optrella/Platform/StandardStreams.hpp"
#include "Optrella/RunTool/Chosen.hpp"
#include "Optrella/RunTool/Question.hpp"
#include "Optrella/Text/Print.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

namespace {

using namespace Internal;
using About = Question::About;
using Platform::Stream;

// As sysexits.h has them.
constexpr int success = 0;
constexpr int wrongLine = 64;
constexpr int notPermitted = 77;
// What fits no status.
constexpr int unspeakable = 255;

// ---- What the user sees ----

std::string_view variable(const char* name) noexcept {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? std::string_view() : value;
}

std::size_t widthOf(Stream stream) noexcept {
    constexpr std::size_t usual = 80;
    const std::optional<std::int64_t> wanted = decimal(Text(variable("COLUMNS")));
    if (wanted && *wanted > 0) return static_cast<std::size_t>(*wanted);
    return Platform::screenColumns(stream).value_or(usual);
}

Emphasis emphasisOn(Stream stream) noexcept {
    const std::string_view terminal = variable("TERM");
    const bool isWanted = variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
    return isWanted && Platform::isTerminal(stream) ? Emphasis::terminal : Emphasis::none;
}

// In one piece, so that no other output comes between the lines.
void complain(const std::vector<Text>& lines) noexcept {
    std::string all;
    for (const Text& each : lines) all.append(each).append("\n");
    Platform::writeStandardError(all);
}

void complain(const Tool& tool, std::string_view sentence) noexcept {
    complain({tool.name.str().append(": ").append(sentence)});
}

// ---- Lines that run no command ----

int refuse(const Tool& tool, const Grammar& grammar, std::span<const Text> arguments,
           const Explanation& explanation) noexcept {
    complain(inWords(tool.name, grammar, arguments, explanation, widthOf(Stream::error)));
    return wrongLine;
}

int answer(std::string_view text) noexcept {
    print(text);
    return success;
}

std::optional<Shell> shellOf(const std::optional<Text>& typed) noexcept {
    if (typed == "bash") return Shell::bash;
    if (typed == "zsh") return Shell::zsh;
    if (typed == "fish") return Shell::fish;
    return std::nullopt;
}

int answerCompletion(const Tool& tool, const std::optional<Text>& typed) noexcept {
    const std::optional<Shell> shell = shellOf(typed);
    if (!shell) {
        complain(tool, "'--completion' needs a shell: bash, zsh or fish");
        return wrongLine;
    }
    const Text script = completionScript(tool, *shell);
    if (!script.empty()) return answer(script);
    complain(tool, "no shell can complete a tool of this name");
    return wrongLine;
}

// A hidden command may fit what is no command to anybody else.
int explainNoCommand(const Tool& tool, const Grammar& grammar,
                     std::span<const Text> words) noexcept {
    const Explanation explanation = explained(grammar, words);
    if (explanation.outcome != Outcome::runs) return refuse(tool, grammar, words, explanation);
    complain(tool, "there is no help on that");
    return wrongLine;
}

int answer(const Tool& tool, const Grammar& grammar, const Question& question) noexcept {
    const std::size_t width = widthOf(Stream::output);
    const Emphasis emphasis = emphasisOn(Stream::output);
    switch (question.about) {
        case About::tool:
            return answer(helpPage(tool, width, emphasis));
        case About::commands:
            return answer(helpPage(tool, question.commands, width, emphasis));
        case About::noCommand:
            return explainNoCommand(tool, grammar, question.words);
        case About::version:
            return answer(tool.name.str().append(" ").append(tool.version).append("\n"));
        case About::completion:
            return answerCompletion(tool, question.shell);
        case About::manual:
            return answer(manualPage(tool));
        case About::description:
            return answer(description(tool));
    }
    return wrongLine;
}

int runNothing(const Tool& tool, std::span<const Text> arguments) noexcept {
    if (arguments.empty()) {
        Platform::writeStandardError(
            helpPage(tool, widthOf(Stream::error), emphasisOn(Stream::error)));
        return wrongLine;
    }
    const Grammar grammar(tool, Spelling::conventional);
    if (const std::optional<Question> question = questionOf(tool, grammar, arguments)) {
        return answer(tool, grammar, *question);
    }
    return refuse(tool, grammar, arguments, explained(grammar, arguments));
}

// ---- The command ----

Explanation explanationOf(const Chosen& chosen, std::size_t arguments,
                          std::vector<RejectedValue> rejected) noexcept {
    Attempt fit{.declaration = chosen.declaration, .fits = true, .accepted = arguments};
    fit.rejected = std::move(rejected);
    return {Outcome::valueRejected, chosen.fit.requiresRoot, {std::move(fit)}};
}

int statusOf(Fit& fit) noexcept {
    constexpr std::int32_t nobodySaid = -100;
    std::int32_t& status = CommandLineExitStatus::shared().exitStatus;
    // So that what an earlier action left is not taken for this one's.
    status = nobodySaid;
    static_cast<void>(run(fit));
    if (status == nobodySaid) return success;
    return status < 0 || status > unspeakable ? unspeakable : status;
}

int runCommand(const Tool& tool, std::span<const Text> arguments, Chosen chosen) noexcept {
    // First: root judges the values, who may see what the user may not.
    if (chosen.fit.requiresRoot) {
        if (const std::optional<std::string> refusal = HandToSudo::refusal(arguments)) {
            complain(tool, *refusal);
            return notPermitted;
        }
    }
    std::vector<RejectedValue> rejected = rejections(chosen.fit.given);
    if (!rejected.empty()) {
        return refuse(tool, Grammar(tool, Spelling::conventional), arguments,
                      explanationOf(chosen, arguments.size(), std::move(rejected)));
    }
    return statusOf(chosen.fit);
}

int runLine(const Tool& tool, std::span<const Text> arguments) noexcept {
    // Programs that a completer or an action starts must not think that they are asked.
    if (const auto protocol = Platform::takeVariable("OPTRELLA_COMPLETE")) {
        if (protocol != "1") return wrongLine;
        return answer(completionAnswer(tool, arguments));
    }
    if (std::optional<Chosen> choice = chosen(tool, arguments)) {
        return runCommand(tool, arguments, *std::move(choice));
    }
    return runNothing(tool, arguments);
}

}  // namespace

int runTool(const Tool& tool, ArgumentList passedIn) noexcept {
    const auto all = passedIn.texts();
    return runLine(tool, all.empty() ? all : all.subspan(1));
}

int runTool(const Tool& tool, int argc, const char* const* argv) noexcept {
    if (argc < 1) return runTool(tool, ArgumentList());
    return runTool(tool, std::span(argv, static_cast<std::size_t>(argc)));
}

}  // namespace Optrella
