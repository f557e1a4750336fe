#include "Optrella/Parameters.hpp"
#include "Optrella/Text/StringBuilder.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella {

std::optional<Text> ParameterList::validate() const noexcept {
    for (const ParameterNone& option : validOptions_) {
        if (option.firstTag() == common.userValue) return std::nullopt;
    }
    Internal::StringBuilder message;
    message.append("Item ", common.userValue, " is not a valid option. It must be one of: ");
    for (const ParameterNone& option : validOptions_) message.append(option.firstTag(), ", ");
    // Without options this takes the ": " of the fixed text: the message then ends in "one of".
    message.removeLast(Internal::sizeOfLastCharacters(message, 2));
    return Text(message);
}

ParameterNone ParameterList::getValue() const noexcept {
    for (const ParameterNone& option : validOptions_) {
        if (option.firstTag() == common.userValue) return option;
    }
    Internal::fatalStop();
}

}  // namespace Optrella
