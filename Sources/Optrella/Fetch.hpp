// Fetch.hpp - the values of the parameters, asked for inside an action.
//
// Each operation takes `type`, the parameter as it was declared, and `list`, what the action was
// given. It finds the first element of the list that isEqualTo the declaration (of a parameter that
// was given twice: the first one) and returns a copy of its value. The operations read only their
// arguments; they are safe on any thread.

#ifndef OPTRELLA_FETCH_HPP
#define OPTRELLA_FETCH_HPP

#include <cstdint>
#include <optional>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Parameters.hpp"
#include "Optrella/Values.hpp"

namespace Optrella {

// Returns whether the parameter was given; of any kind, a tool's own ones too.
[[nodiscard]] OPTRELLA_API bool hasOptional(const ParameterProtocol& type,
                                            const Parameters& list) noexcept;

// Returns whether the flag was given.
[[nodiscard]] OPTRELLA_API bool fetchOptionalNone(const ParameterNone& type,
                                                  const Parameters& list) noexcept;

// Return the value, or nothing when the parameter was not given.
[[nodiscard]] OPTRELLA_API std::optional<Text> fetchOptionalString(const ParameterString& type,
                                                                   const Parameters& list) noexcept;
// Returns the all-zero UUID when what was given is none.
[[nodiscard]] OPTRELLA_API std::optional<UUID> fetchOptionalUUID(const ParameterUUID& type,
                                                                 const Parameters& list) noexcept;
// Returns -1 when what was given is no number.
[[nodiscard]] OPTRELLA_API std::optional<std::int64_t> fetchOptionalNumber(
    const ParameterNumber& type, const Parameters& list) noexcept;
// Returns the chosen option. STOPS the process when the list holds a word that is no choice, which
// parse does not let through.
[[nodiscard]] OPTRELLA_API std::optional<ParameterNone> fetchOptionalListOption(
    const ParameterList& type, const Parameters& list) noexcept;
// Returns the file that the path names now; tests nothing.
[[nodiscard]] OPTRELLA_API std::optional<FileURL> fetchOptionalURL(const ParameterFileURL& type,
                                                                   const Parameters& list) noexcept;

// Do the same for required parameters. STOPS the process when the parameter was not given.
[[nodiscard]] OPTRELLA_API Text fetchString(const ParameterString& type,
                                            const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API UUID fetchUUID(const ParameterUUID& type,
                                          const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API std::int64_t fetchNumber(const ParameterNumber& type,
                                                    const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API ParameterNone fetchListOption(const ParameterList& type,
                                                         const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API FileURL fetchURL(const ParameterFileURL& type,
                                            const Parameters& list) noexcept;

// Return the values of a parameter that may be given more than once, in the order of the arguments;
// none when it was not given. What a value is that is not acceptable: as above.
[[nodiscard]] OPTRELLA_API std::vector<Text> fetchAllStrings(const ParameterString& type,
                                                             const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API std::vector<UUID> fetchAllUUIDs(const ParameterUUID& type,
                                                           const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API std::vector<std::int64_t> fetchAllNumbers(
    const ParameterNumber& type, const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API std::vector<ParameterNone> fetchAllListOptions(
    const ParameterList& type, const Parameters& list) noexcept;
[[nodiscard]] OPTRELLA_API std::vector<FileURL> fetchAllURLs(const ParameterFileURL& type,
                                                             const Parameters& list) noexcept;

}  // namespace Optrella

#endif
