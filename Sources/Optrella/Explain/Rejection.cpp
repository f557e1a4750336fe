#include "Optrella/Explain/Rejection.hpp"

#include <string>
#include <string_view>

#include "Optrella/Parameters/Decimal.hpp"
#include "Optrella/Platform/Files.hpp"
#include "Optrella/Tool/Bounds.hpp"
#include "Optrella/Tool/Conditions.hpp"
#include "Optrella/Values.hpp"

namespace Optrella::Internal {

namespace {

std::optional<Text> said(const Text& value, std::string_view fault) noexcept {
    return (value.empty() ? "''" : value.str()).append(fault);
}

std::string fault(const Bounds& missed) noexcept {
    if (!missed.least && !missed.greatest) return " is not a whole number";
    if (!missed.greatest) return " is not a number of " + *missed.least + " or more";
    if (!missed.least) return " is not a number of " + *missed.greatest + " or less";
    return " is not a number from " + *missed.least + " to " + *missed.greatest;
}

std::optional<Text> rejectionOf(const ParameterNumber& number) noexcept {
    const std::optional<std::int64_t> value = decimal(number.common.userValue);
    if (value && *value >= number.rangeMin() && *value <= number.rangeMax()) return std::nullopt;
    return said(number.common.userValue, fault(Bounds(number)));
}

std::optional<Text> rejectionOf(const ParameterUUID& uuid) noexcept {
    if (UUID::fromText(uuid.common.userValue)) return std::nullopt;
    return said(uuid.common.userValue, " is not a UUID");
}

// What the path leads to is meant: the dot makes the system follow a link.
std::optional<Text> rejectionOf(const ParameterFileURL& path) noexcept {
    const Text& value = path.common.userValue;
    if (static_cast<std::string_view>(value).find('\0') != std::string_view::npos)
        return std::nullopt;
    if (path.type == ParameterFileURL::urlType::fileOrFolder) return std::nullopt;
    if (!Platform::fileExists(value.c_str())) return std::nullopt;
    const bool isDirectory = Platform::isDirectory(value.str().append("/.").c_str());
    const bool isMeant = path.type == ParameterFileURL::urlType::folder;
    if (isDirectory == isMeant) return std::nullopt;
    return said(value, isMeant ? " is not a directory" : " is a directory, not a file");
}

bool hasChoiceWithoutTags(const ParameterProtocol& given) noexcept {
    const auto* list = given.as<ParameterList>();
    return list != nullptr && anyOf(list->validOptions(), [](const ParameterNone& option) {
               return option.common.tags.empty();
           });
}

// A list without the choices that nobody can name, at which the kind itself would stop.
ParameterList nameable(const ParameterList& list) noexcept {
    std::vector<ParameterNone> options;
    for (const ParameterNone& option : list.validOptions()) {
        if (!option.common.tags.empty()) options.push_back(option);
    }
    ParameterList named(list.common.tags, options, list.common.parameterName, list.common.tagHelp);
    named.common.userValue = list.common.userValue;
    return named;
}

}  // namespace

Parameters parametersOf(const Form& form, std::span<const Gift> gifts) noexcept {
    Parameters given;
    for (const bool areRequired : {true, false}) {
        for (const Gift& gift : gifts) {
            const SlotRules& rules = form.slot(gift.slot);
            if (rules.isRequired != areRequired) continue;
            given.emplace_back(rules.parameter);
            if (rules.takesValue) given.back().storeUserValue(gift.value);
        }
    }
    return given;
}

std::optional<Text> rejection(const ParameterProtocol& given) noexcept {
    if (hasChoiceWithoutTags(given)) return nameable(*given.as<ParameterList>()).validate();
    if (std::optional<Text> message = given.validate()) return message;
    if (!given.common().hasParameter) return std::nullopt;
    if (const auto* number = given.as<ParameterNumber>()) return rejectionOf(*number);
    if (const auto* uuid = given.as<ParameterUUID>()) return rejectionOf(*uuid);
    if (const auto* path = given.as<ParameterFileURL>()) return rejectionOf(*path);
    return std::nullopt;
}

std::vector<RejectedValue> rejections(const Parameters& given) noexcept {
    std::vector<RejectedValue> all;
    for (const ParameterProtocol& each : given) {
        std::optional<Text> message = rejection(each);
        if (!message) continue;
        const Tags& tags = each.common().tags;
        all.push_back(
            {tags.empty() ? Text() : tags.front(), each.common().userValue, *std::move(message)});
    }
    return all;
}

}  // namespace Optrella::Internal
