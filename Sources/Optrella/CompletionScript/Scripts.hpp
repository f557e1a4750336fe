// Scripts.hpp - the scripts, with @NAME@ and @FUNCTION@ where the tool's own belong.

#ifndef OPTRELLA_COMPLETIONSCRIPT_SCRIPTS_HPP
#define OPTRELLA_COMPLETIONSCRIPT_SCRIPTS_HPP

#include <string_view>

#include "Optrella/CompletionScript.hpp"

namespace Optrella::Internal {

// Returns the script of a shell. All of them read what completionAnswer says.
[[nodiscard]] std::string_view scriptOf(Shell shell) noexcept;

}  // namespace Optrella::Internal

#endif
