#include "Optrella/Fetch.hpp"

#include "Optrella/Fetch/Search.hpp"

namespace Optrella {

namespace Internal {

namespace {

// Apart, because it is rare.
[[gnu::noinline]] bool isEqualByTheKind(ParameterView element, ParameterView type) {
    return element.operations().isEqualTo(element.common(), ParameterProtocol(type));
}

// As the element's isEqualTo says; the default one is answered here, where nothing need be copied.
bool isEqual(ParameterView element, ParameterView type) {
    if (!element.operations().comparesByDefault) return isEqualByTheKind(element, type);
    return &element.operations() == &type.operations() &&
           isSameDeclaration(element.common(), type.common());
}

}  // namespace

const ParameterProtocol* fetchOptionalValidParameter(ParameterView type,
                                                     std::span<const ParameterProtocol> list) {
    for (const ParameterProtocol& parameter : list) {
        if (isEqual(parameter.view(), type)) return &parameter;
    }
    return nullptr;
}

}  // namespace Internal

namespace {

template <class Kind>
const Kind* found(const Kind& type, const Parameters& list) {
    const Internal::ParameterView view(Internal::operationsOf<Kind>(), type.common);
    const ParameterProtocol* parameter = Internal::fetchOptionalValidParameter(view, list);
    return parameter != nullptr ? parameter->as<Kind>() : nullptr;
}

template <class Kind>
auto foundValue(const Kind& type, const Parameters& list) {
    const Kind* parameter = found(type, list);
    return parameter != nullptr ? std::optional(Internal::valueOf(*parameter)) : std::nullopt;
}

template <class Value>
Value valueOrStop(std::optional<Value> value) {
    if (!value) Internal::fatalStop();
    return *std::move(value);
}

}  // namespace

bool hasOptional(const ParameterProtocol& type, const Parameters& list) noexcept {
    return Internal::fetchOptionalValidParameter(type.view(), list) != nullptr;
}

bool fetchOptionalNone(const ParameterNone& type, const Parameters& list) noexcept {
    return found(type, list) != nullptr;
}

std::optional<Text> fetchOptionalString(const ParameterString& type,
                                        const Parameters& list) noexcept {
    return foundValue(type, list);
}

std::optional<UUID> fetchOptionalUUID(const ParameterUUID& type, const Parameters& list) noexcept {
    return foundValue(type, list);
}

std::optional<std::int64_t> fetchOptionalNumber(const ParameterNumber& type,
                                                const Parameters& list) noexcept {
    return foundValue(type, list);
}

std::optional<ParameterNone> fetchOptionalListOption(const ParameterList& type,
                                                     const Parameters& list) noexcept {
    return foundValue(type, list);
}

std::optional<FileURL> fetchOptionalURL(const ParameterFileURL& type,
                                        const Parameters& list) noexcept {
    return foundValue(type, list);
}

Text fetchString(const ParameterString& type, const Parameters& list) noexcept {
    return valueOrStop(fetchOptionalString(type, list));
}

UUID fetchUUID(const ParameterUUID& type, const Parameters& list) noexcept {
    return valueOrStop(fetchOptionalUUID(type, list));
}

std::int64_t fetchNumber(const ParameterNumber& type, const Parameters& list) noexcept {
    return valueOrStop(fetchOptionalNumber(type, list));
}

ParameterNone fetchListOption(const ParameterList& type, const Parameters& list) noexcept {
    return valueOrStop(fetchOptionalListOption(type, list));
}

FileURL fetchURL(const ParameterFileURL& type, const Parameters& list) noexcept {
    return valueOrStop(fetchOptionalURL(type, list));
}

}  // namespace Optrella
