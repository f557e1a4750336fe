#include "Optrella/HelpPage.hpp"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Optrella/HelpPage/Command.hpp"
#include "Optrella/HelpPage/CommandTable.hpp"
#include "Optrella/HelpPage/Entries.hpp"
#include "Optrella/HelpPage/OwnOptions.hpp"
#include "Optrella/HelpPage/Sheet.hpp"
#include "Optrella/Text/Characters.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Tool/Grammar.hpp"

namespace Optrella {

namespace {

using namespace Internal;

// So many are read at a glance with their parameters; of more a user must first choose one.
constexpr std::size_t fewCommands = 3;
constexpr std::size_t inBlock = 6;  // how far what is said of one of them is indented

class Page {
public:
    Page(const Tool& tool, std::size_t width, Emphasis emphasis) noexcept
        : tool_(tool),
          grammar_(tool_, Spelling::conventional),
          ownOptions_(tool_, grammar_),
          sheet_(width, emphasis) {}

    Text overview() noexcept {
        isOverview_ = true;
        for (std::size_t i = 0; i < grammar_.forms.size(); ++i) {
            if (!grammar_.forms[i].isHidden()) commands_.emplace_back(tool_, grammar_, i);
        }
        writeTitle();
        writeCommands();
        writeSection(ownOptions_.ofPackagers());
        writeSection(hint_);
        return sheet_.text();
    }

    Text pageOf(std::span<const std::size_t> declarations) noexcept {
        for (const std::size_t each : declarations) commands_.emplace_back(tool_, grammar_, each);
        writeCommands();
        writeSection(hint_);
        return sheet_.text();
    }

private:
    void writeCommands() noexcept {
        if (commands_.empty()) return writeNone();
        if (commands_.size() == 1) return writeOne(commands_.front());
        areMany() ? writeMany() : writeFew();
    }
    [[nodiscard]] bool areMany() const noexcept { return commands_.size() > fewCommands; }

    void writeNone() noexcept {
        Rows options;
        addOwn(options);
        Prose usage;
        usage.add(tool_.name, Style::typed);
        if (!options.empty()) usage.add("[OPTIONS]");
        sheet_.beginSection();
        writeUsage(usage);
        writeTable("Options:", options, columnAfter(options));
    }

    void writeOne(const Command& command) noexcept {
        writeSection(command.help(isOverview_ ? tool_.summary : Text()));
        sheet_.beginSection();
        writeUsage(command.usage(roomOfUsage()));
        Rows rows;
        addArguments(rows, command.form());
        const std::size_t arguments = rows.size();
        addOptions(rows, command.form());
        addOwn(rows);
        const std::span<Row> options = std::span(rows).subspan(arguments);
        alignLongTags(options);
        const std::size_t column = columnAfter(rows);
        writeTable("Arguments:", std::span(rows).first(arguments), column);
        writeTable("Options:", options, column);
    }

    // Each with its parameters below it.
    void writeFew() noexcept {
        Rows rows;
        std::vector<std::size_t> counts;
        for (const Command& command : commands_) {
            const std::size_t begin = rows.size();
            addArguments(rows, command.form());
            addOptions(rows, command.form());
            alignLongTags(std::span(rows).subspan(begin));
            counts.push_back(rows.size() - begin);
        }
        const std::size_t column = sheet_.columnAfter(rows, sheet_.indentation(inBlock));
        writeHeading("Usage:");
        std::span<const Row> left = rows;
        for (std::size_t i = 0; i < commands_.size(); ++i) {
            if (i > 0) sheet_.beginSection();
            writeBlock(commands_[i], left.first(counts[i]), column);
            left = left.subspan(counts[i]);
        }
        Rows options;
        addOwn(options);
        writeTable("Options:", options, columnAfter(options));
    }
    void writeBlock(const Command& command, std::span<const Row> parameters,
                    std::size_t column) noexcept {
        const std::size_t begin = sheet_.indentation(inBlock);
        const std::size_t hanging = begin + sheet_.indentation(2);
        const std::size_t room = sheet_.width() - std::min(hanging, sheet_.width());
        sheet_.write(command.usage(room), sheet_.indentation(2), hanging);
        sheet_.endLine();
        writeLine(command.help(), begin);
        if (!parameters.empty()) sheet_.beginSection();
        sheet_.write(parameters, begin, column);
    }

    // Each in a line.
    void writeMany() noexcept {
        const CommandTable table(commands_, sheet_.width());
        Rows rows;
        table.addRows(rows);
        addOwn(rows);
        const std::span<const Row> commands = std::span(rows).first(commands_.size());
        const std::span<const Row> options = std::span(rows).subspan(commands_.size());
        if (table.hasNames()) {
            const std::size_t column = columnAfter(rows);
            const std::vector<Text> words = wordsOfAll();
            sheet_.beginSection();
            writeUsage(usageOfMany(words));
            writeHeading("Commands:");
            table.writeTo(sheet_, commands, sheet_.indentation(2), column);
            writeTable("Options:", options, column);
            hint_ = hint(words);
        } else {
            writeHeading("Usage:");
            table.writeTo(sheet_, commands, sheet_.indentation(2), columnAfter(commands));
            writeTable("Options:", options, columnAfter(options));
        }
    }

    // ---- Pieces ----

    void writeTitle() noexcept {
        Prose title;
        title.add(tool_.name, Style::heading);
        title.add(tool_.version, Style::heading);
        if (!title.empty() && !tool_.summary.empty()) title.add("-");
        title.addText(tool_.summary);
        writeSection(title);
    }

    [[nodiscard]] std::size_t columnAfter(std::span<const Row> rows) const noexcept {
        return sheet_.columnAfter(rows, sheet_.indentation(2));
    }

    void writeSection(const Prose& text) noexcept {
        if (text.empty()) return;
        sheet_.beginSection();
        writeLine(text);
    }

    void writeLine(const Prose& text, std::size_t begin = 0) noexcept {
        if (text.empty()) return;
        sheet_.write(text, begin);
        sheet_.endLine();
    }

    void writeHeading(std::string_view heading) noexcept {
        Prose line;
        line.add(heading, Style::heading);
        writeSection(line);
    }

    void writeTable(std::string_view heading, std::span<const Row> rows,
                    std::size_t column) noexcept {
        if (rows.empty()) return;
        writeHeading(heading);
        sheet_.write(rows, sheet_.indentation(2), column);
    }

    // ---- Usage ----

    [[nodiscard]] std::size_t hangingOfUsage() const noexcept {
        return sheet_.indentation(columns("Usage: ") + columns(tool_.name) + 1);
    }
    [[nodiscard]] std::size_t roomOfUsage() const noexcept {
        return sheet_.width() - hangingOfUsage();
    }

    void writeUsage(const Prose& usage) noexcept {
        Prose line;
        line.add("Usage:", Style::heading);
        line.add(usage, Join::space);
        sheet_.write(line, 0, hangingOfUsage());
        sheet_.endLine();
    }

    [[nodiscard]] Prose usageOfMany(const std::vector<Text>& words) const noexcept {
        const bool areEnough = anyOf(commands_, [&words](const Command& command) {
            return static_cast<std::size_t>(command.form().requiredCount()) == words.size();
        });
        Prose usage = typed(words);
        usage.add(areEnough ? "[COMMAND ...]" : "COMMAND ...");
        return usage;
    }

    // The words that all commands begin with.
    [[nodiscard]] std::vector<Text> wordsOfAll() const noexcept {
        std::vector<Text> words = commands_.front().words();
        for (const Command& command : commands_) {
            const auto& others = command.words();
            const auto end =
                std::mismatch(words.begin(), words.end(), others.begin(), others.end()).first;
            words.erase(end, words.end());
        }
        return words;
    }

    // After the tool's name.
    [[nodiscard]] Prose typed(const std::vector<Text>& words) const noexcept {
        Prose line;
        line.add(tool_.name, Style::typed);
        for (const Text& word : words) line.add(word, Style::typed, Join::inner);
        return line;
    }

    // ---- The tool's own ----

    void addOwn(Rows& rows) const noexcept {
        const std::size_t begin = rows.size();
        const bool isOfOthers = isOverview_ && areMany();
        ownOptions_.addHelp(rows,
                            isOfOthers ? "Show this help, or that of a command" : "Show this help");
        if (isOverview_) ownOptions_.addVersion(rows);
        alignLongTags(std::span(rows).subspan(begin));
    }

    [[nodiscard]] Prose hint(const std::vector<Text>& words) const noexcept {
        const std::optional<Text> help = ownOptions_.help();
        if (!help) return {};
        Prose hint;
        hint.add("'");
        hint.add(typed(words), Join::none);
        hint.add("COMMAND", Style::plain, Join::inner);
        hint.add(*help, Style::typed, Join::inner);
        hint.add("'", Style::plain, Join::none);
        hint.addText("shows the page of a command.");
        return hint;
    }

    const Tool& tool_;
    const Grammar grammar_;
    const OwnOptions ownOptions_;
    Sheet sheet_;
    std::vector<Command> commands_;
    Prose hint_;  // comes last
    bool isOverview_ = false;
};

}  // namespace

// Called once in a process: small rather than fast.
[[gnu::cold]] Text helpPage(const Tool& tool, std::size_t width, Emphasis emphasis) noexcept {
    return Page(tool, width, emphasis).overview();
}

[[gnu::cold]] Text helpPage(const Tool& tool, std::span<const std::size_t> declarations,
                            std::size_t width, Emphasis emphasis) noexcept {
    return Page(tool, width, emphasis).pageOf(declarations);
}

}  // namespace Optrella
