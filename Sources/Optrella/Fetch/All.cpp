// The values of parameters that were given more than once: in a file of its own, so that a tool
// that does not ask for them does not link it.

#include "Optrella/Fetch.hpp"
#include "Optrella/Fetch/Search.hpp"

namespace Optrella {

namespace {

template <class Kind>
auto allValues(const Kind& type, std::span<const ParameterProtocol> list) {
    const Internal::ParameterView view(Internal::operationsOf<Kind>(), type.common);
    std::vector<decltype(Internal::valueOf(type))> values;
    while (const ParameterProtocol* found = Internal::fetchOptionalValidParameter(view, list)) {
        // A kind of a tool's own may say that it is equal, and has no such value.
        if (const Kind* given = found->template as<Kind>()) {
            values.push_back(Internal::valueOf(*given));
        }
        list = {found + 1, list.data() + list.size()};
    }
    return values;
}

}  // namespace

std::vector<Text> fetchAllStrings(const ParameterString& type, const Parameters& list) noexcept {
    return allValues(type, list);
}

std::vector<UUID> fetchAllUUIDs(const ParameterUUID& type, const Parameters& list) noexcept {
    return allValues(type, list);
}

std::vector<std::int64_t> fetchAllNumbers(const ParameterNumber& type,
                                          const Parameters& list) noexcept {
    return allValues(type, list);
}

std::vector<ParameterNone> fetchAllListOptions(const ParameterList& type,
                                               const Parameters& list) noexcept {
    return allValues(type, list);
}

std::vector<FileURL> fetchAllURLs(const ParameterFileURL& type, const Parameters& list) noexcept {
    return allValues(type, list);
}

}  // namespace Optrella
