// StandardError.hpp - bytes straight to the standard error stream.

#ifndef OPTRELLA_PLATFORM_STANDARDERROR_HPP
#define OPTRELLA_PLATFORM_STANDARDERROR_HPP

#include <string_view>

namespace Optrella::Platform {

// Writes all of the bytes straight to descriptor 2; gives up silently when a write fails, and when
// a descriptor that may not wait takes nothing for two seconds. A closed pipe raises SIGPIPE, as it
// does in any program.
void writeStandardError(std::string_view bytes) noexcept;

}  // namespace Optrella::Platform

#endif
