// BuiltInKinds.hpp - the one list of the library's own kinds.
//
// A kind that derives from BuiltInKind does not compile while it is missing here. What must know
// every kind walks the list: the library's operations of the kinds, and the tests.

#ifndef OPTRELLA_PARAMETERS_BUILTINKINDS_HPP
#define OPTRELLA_PARAMETERS_BUILTINKINDS_HPP

#include <cstddef>
#include <type_traits>

namespace Optrella {

struct ParameterNone;
struct ParameterString;
struct ParameterNumber;
struct ParameterUUID;
struct ParameterList;
struct ParameterFileURL;

namespace Internal {

template <class... Kinds>
struct KindList {
    static constexpr std::size_t size = sizeof...(Kinds);

    template <class Kind>
    static constexpr bool contains = (std::is_same_v<Kind, Kinds> || ...);

    // The place of a kind in the list. REQUIRES: contains<Kind>.
    template <class Kind>
    static constexpr std::size_t indexOf = [] {
        std::size_t index = 0;
        static_cast<void>(((std::is_same_v<Kind, Kinds> || (++index, false)) || ...));
        return index;
    }();

    // Calls visit.operator()<Kind>() for each kind, in order.
    template <class Visit>
    static constexpr void forEach(Visit&& visit) {
        (visit.template operator()<Kinds>(), ...);
    }
};

using BuiltInKinds = KindList<ParameterNone, ParameterString, ParameterNumber, ParameterUUID,
                              ParameterList, ParameterFileURL>;

}  // namespace Internal

}  // namespace Optrella

#endif
