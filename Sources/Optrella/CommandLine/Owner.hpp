// Owner.hpp - the parameter that an argument is a tag of.

#ifndef OPTRELLA_COMMANDLINE_OWNER_HPP
#define OPTRELLA_COMMANDLINE_OWNER_HPP

#include <cstdint>

#include "Optrella/CommandLine/KeptParameters.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Text/TextDigest.hpp"
#include "Optrella/Text/Unicode.hpp"

namespace Optrella::Internal {

// Of several owners the last one is taken, on purpose; hence backwards. Null when there is none.
// Inline, because most searches are shorter than a call.
inline const KeptParameter* lastOwner(KeptList parameters, const Text& argument, std::uint32_t mark,
                                      CanonicalComparer& comparer) {
    auto owner = parameters.rbegin();
    for (; owner != parameters.rend(); ++owner) {
        if (!owner->mayHaveTag(mark)) continue;
        for (const Text& tag : owner->common().tags) {
            if (TextDigest::of(argument).provesDifferent(TextDigest::of(tag))) continue;
            if (comparer.areEqual(argument, tag)) return &*owner;
        }
    }
    return nullptr;
}

}  // namespace Optrella::Internal

#endif
