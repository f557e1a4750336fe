// Description.hpp - a tool as a program reads it.

#ifndef OPTRELLA_DESCRIPTION_HPP
#define OPTRELLA_DESCRIPTION_HPP

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// Returns the tool as JSON, in UTF-8: all of its declarations, hidden ones too, and which
// parameters are operands or may be given again. That is enough to tell which lines fit; values are
// judged as their kinds say. A declaration stands in one line, so that two descriptions can be
// compared line by line; the last line ends, too.
//
// Readers leave aside what they do not know: fields are only added. docs/describing.md explains
// them, docs/description.schema.json is their schema.
//
// Characters that control a terminal are escaped. A text that is not UTF-8 is an object with its
// bytes, {"hex": "2dff"}. STOPS the process where the type or state of a path is no case.
[[nodiscard]] OPTRELLA_API Text description(const Tool& tool) noexcept;

}  // namespace Optrella

#endif
