// The relay of a child's output, block by block, and the first line that it leaves out, against a
// plain model that counts characters as ICU does.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Law.hpp"
#include "Optrella/Elevation/PromptForPassword.hpp"
#include "Oracle.hpp"
#include "Output.hpp"
#include "Support/Input.hpp"

namespace {

using namespace Optrella;
using Tests::Input;
using Tests::law;
using Tests::sameBytes;
namespace Oracle = Tests::Oracle;

std::optional<std::string> modelOfRemoveFirstLine(std::string_view string) {
    const std::vector<std::string_view> characters = Oracle::characters(string);
    std::size_t before = 0;
    while (before < characters.size() && characters[before] != "\n") ++before;
    if (before == characters.size() || before + 1 == characters.size()) return std::nullopt;
    std::string rest;
    for (std::size_t i = before + 1; i < characters.size(); ++i) rest += characters[i];
    return rest;
}

// What a block brings to standard output.
class Model {
public:
    std::string printed(const std::string& block) {
        if (block.empty() || !Oracle::isUTF8(block)) return "";
        if (!isFirstLine_) return block + "\n";
        const std::optional<std::string> rest = modelOfRemoveFirstLine(block);
        if (!rest) return "";
        isFirstLine_ = false;
        return *rest + "\n";
    }

private:
    bool isFirstLine_ = true;
};

void checkRemoveFirstLine(const std::string& block) {
    const std::optional<std::string> expected = modelOfRemoveFirstLine(block);
    const std::optional<std::string_view> actual = PromptForPassword::removeFirstLine(block);
    law(actual.has_value() == expected.has_value(), "there is something after the first line");
    if (actual) sameBytes(*actual, *expected, "what follows the first line is unchanged");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Model model;
    PromptForPassword::OutputRelay relay;
    Tests::takePrinted();
    while (!input.empty()) {
        const std::string block = input.bytes(input.byte());
        checkRemoveFirstLine(block);
        relay.handle(block);
        sameBytes(Tests::takeHandedOn(), model.printed(block), "a block is handed on at once");
    }
    law(Tests::takePrinted().empty(), "nothing is held back");
    return 0;
}
