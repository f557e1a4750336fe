#include "Optrella/CommandLine.hpp"

namespace Optrella {

Text rawValue(parsingError error) noexcept {
    switch (error) {
        case parsingError::NoError:
            return "Parse successful";
        case parsingError::MissingParameter:
            return "Missing Parameter";
        case parsingError::NoMatchingLine:
            return "Unknown command line";
        case parsingError::NoCommandLine:
            return "No command line specified";
    }
    Internal::fatalStop();
}

template <>
std::optional<parsingError> fromRawValue<parsingError>(const Text& text) noexcept {
    using enum parsingError;
    for (const parsingError error : {NoError, MissingParameter, NoMatchingLine, NoCommandLine}) {
        if (rawValue(error) == text) return error;
    }
    return std::nullopt;
}

}  // namespace Optrella
