// KindName.hpp - what a kind is called, known without RTTI.

#ifndef OPTRELLA_PARAMETERS_KINDNAME_HPP
#define OPTRELLA_PARAMETERS_KINDNAME_HPP

#include <array>
#include <cstddef>
#include <string_view>

namespace Optrella::Internal {

// Returns a text that both compilers end in "Kind = ", the kind with its namespaces, and "]". No
// type is named in here whose own name they would explain there too.
template <class Kind>
constexpr auto signatureOf() noexcept {
    return std::string_view(__PRETTY_FUNCTION__);
}

// Returns the last part of a qualified name. Only what stands within no brackets divides it: the
// arguments of a template are part of a name.
constexpr std::string_view unqualified(std::string_view name) noexcept {
    int depth = 0;
    for (std::size_t i = name.size(); i-- > 0;) {
        if (std::string_view(">)]}").find(name[i]) != std::string_view::npos) ++depth;
        if (std::string_view("<([{").find(name[i]) != std::string_view::npos) --depth;
        if (depth == 0 && name[i] == ':') return name.substr(i + 1);
    }
    return name;
}

template <class Kind>
constexpr std::string_view viewedNameOf() noexcept {
    constexpr std::string_view mark = "Kind = ";
    std::string_view name = signatureOf<Kind>();
    name.remove_prefix(name.find(mark) + mark.size());
    name.remove_suffix(1);
    return unqualified(name);
}

// The name as a string of its own: the rest of what the compiler says stays out of the tool.
template <class Kind>
inline constexpr auto kindName = [] {
    std::array<char, viewedNameOf<Kind>().size() + 1> name{};
    viewedNameOf<Kind>().copy(name.data(), name.size() - 1);
    return name;
}();

}  // namespace Optrella::Internal

#endif
