#include "Optrella/Fetch.hpp"

#include "Optrella/Internal/Fetch.hpp"

namespace Optrella {

namespace Internal {

const ParameterProtocol* fetchOptionalValidParameter(const ParameterProtocol& type,
                                                     const Parameters& list) {
    for (const ParameterProtocol& parameter : list) {
        if (parameter.isEqualTo(type)) return &parameter;
    }
    return nullptr;
}

}  // namespace Internal

namespace {

template <class Kind>
const Kind* given(const Kind& type, const Parameters& list) {
    const ParameterProtocol* found = Internal::fetchOptionalValidParameter(type, list);
    return found != nullptr ? found->as<Kind>() : nullptr;
}

template <class Kind>
auto givenValue(const Kind& type, const Parameters& list) {
    const Kind* found = given(type, list);
    return found != nullptr ? std::optional(found->getValue()) : std::nullopt;
}

template <class Value>
Value required(std::optional<Value> value) {
    if (!value) Internal::fatalStop();
    return *std::move(value);
}

}  // namespace

bool hasOptional(const ParameterProtocol& type, const Parameters& list) noexcept {
    return Internal::fetchOptionalValidParameter(type, list) != nullptr;
}

bool fetchOptionalNone(const ParameterNone& type, const Parameters& list) noexcept {
    return given(type, list) != nullptr;
}

std::optional<Text> fetchOptionalString(const ParameterString& type,
                                        const Parameters& list) noexcept {
    const ParameterString* found = given(type, list);
    return found != nullptr ? std::optional(found->common.userValue) : std::nullopt;
}

std::optional<UUID> fetchOptionalUUID(const ParameterUUID& type, const Parameters& list) noexcept {
    const ParameterUUID* found = given(type, list);
    if (found == nullptr) return std::nullopt;
    // What is no UUID becomes the all-zero one, on purpose: it was given, so it is not absent.
    return UUID::fromText(found->common.userValue).value_or(UUID{});
}

std::optional<std::int64_t> fetchOptionalNumber(const ParameterNumber& type,
                                                const Parameters& list) noexcept {
    return givenValue(type, list);
}

std::optional<ParameterNone> fetchOptionalListOption(const ParameterList& type,
                                                     const Parameters& list) noexcept {
    return givenValue(type, list);
}

std::optional<FileURL> fetchOptionalURL(const ParameterFileURL& type,
                                        const Parameters& list) noexcept {
    return givenValue(type, list);
}

Text fetchString(const ParameterString& type, const Parameters& list) noexcept {
    return required(fetchOptionalString(type, list));
}

UUID fetchUUID(const ParameterUUID& type, const Parameters& list) noexcept {
    return required(fetchOptionalUUID(type, list));
}

std::int64_t fetchNumber(const ParameterNumber& type, const Parameters& list) noexcept {
    return required(fetchOptionalNumber(type, list));
}

ParameterNone fetchListOption(const ParameterList& type, const Parameters& list) noexcept {
    return required(fetchOptionalListOption(type, list));
}

FileURL fetchURL(const ParameterFileURL& type, const Parameters& list) noexcept {
    return required(fetchOptionalURL(type, list));
}

}  // namespace Optrella
