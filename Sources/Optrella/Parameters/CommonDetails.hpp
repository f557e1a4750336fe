// CommonDetails.hpp - what every parameter carries.

#ifndef OPTRELLA_PARAMETERS_COMMONDETAILS_HPP
#define OPTRELLA_PARAMETERS_COMMONDETAILS_HPP

#include <cstddef>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters/Tags.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

// What every parameter carries as `common`.
struct OPTRELLA_API commonDetails {
    Text tagHelp = "";         // the help text
    Tags tags = {};            // what selects the parameter on the command line, primary first
    Text userValue = "";       // what the user gave
    bool hasParameter = true;  // whether a value follows the tag
    Text parameterName = "";   // the value's name in the help listing

    // Compares all five fields.
    friend bool operator==(const commonDetails&, const commonDetails&) = default;
};

// Returns a hash of all five fields. Equal records have equal hashes for the same seed.
[[nodiscard]] OPTRELLA_API std::size_t hashValue(const commonDetails& common,
                                                 std::size_t seed = 0) noexcept;

namespace Internal {

// Returns whether both declare the same parameter, kind apart: the rule of the default isEqualTo.
[[nodiscard]] OPTRELLA_API bool isSameDeclaration(const commonDetails& left,
                                                  const commonDetails& right) noexcept;

}  // namespace Internal

}  // namespace Optrella

template <>
struct OPTRELLA_API std::hash<Optrella::commonDetails> {
    std::size_t operator()(const Optrella::commonDetails& common) const noexcept {
        return Optrella::hashValue(common);
    }
};

#endif
