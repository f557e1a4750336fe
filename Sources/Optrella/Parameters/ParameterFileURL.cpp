#include <initializer_list>
#include <string>
#include <string_view>

#include "Optrella/Parameters.hpp"
#include "Optrella/Platform/Files.hpp"

namespace Optrella {

namespace {

// A path that holds a NUL names nothing.
bool fileExists(const Text& path) noexcept {
    return static_cast<std::string_view>(path).find('\0') == std::string_view::npos &&
           Platform::fileExists(path.c_str());
}

Text joined(const Text& path, std::string_view fault) {
    std::string message = path.str();
    message.append(fault);
    return message;
}

template <class Case>
std::optional<Case> caseOf(const Text& text, std::initializer_list<Case> cases) noexcept {
    for (const Case each : cases) {
        if (rawValue(each) == text) return each;
    }
    return std::nullopt;
}

}  // namespace

std::optional<Text> ParameterFileURL::validate() const noexcept {
    switch (state) {
        case existState::exist:
            if (fileExists(common.userValue)) return std::nullopt;
            return joined(common.userValue, " does not exist");
        case existState::absent:
            if (!fileExists(common.userValue)) return std::nullopt;
            return joined(common.userValue, " must not exist");
        case existState::vague:
            return std::nullopt;
    }
    Internal::fatalStop();
}

FileURL ParameterFileURL::getValue() const noexcept { return FileURL::fromPath(common.userValue); }

Text rawValue(ParameterFileURL::urlType type) noexcept {
    switch (type) {
        case ParameterFileURL::urlType::file:
            return "file";
        case ParameterFileURL::urlType::folder:
            return "folder";
        case ParameterFileURL::urlType::fileOrFolder:
            return "fileOrFolder";
    }
    Internal::fatalStop();
}

Text rawValue(ParameterFileURL::existState state) noexcept {
    switch (state) {
        case ParameterFileURL::existState::exist:
            return "exist";
        case ParameterFileURL::existState::absent:
            return "absent";
        case ParameterFileURL::existState::vague:
            return "vague";
    }
    Internal::fatalStop();
}

template <>
std::optional<ParameterFileURL::urlType> fromRawValue<ParameterFileURL::urlType>(
    const Text& text) noexcept {
    using enum ParameterFileURL::urlType;
    return caseOf(text, {file, folder, fileOrFolder});
}

template <>
std::optional<ParameterFileURL::existState> fromRawValue<ParameterFileURL::existState>(
    const Text& text) noexcept {
    using enum ParameterFileURL::existState;
    return caseOf(text, {exist, absent, vague});
}

}  // namespace Optrella
