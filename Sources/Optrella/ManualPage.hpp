// ManualPage.hpp - a tool's manual page.

#ifndef OPTRELLA_MANUALPAGE_HPP
#define OPTRELLA_MANUALPAGE_HPP

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Tool.hpp"

namespace Optrella {

// Returns the manual page of a tool that runTool runs, in the language mdoc, which groff and mandoc
// read: `man -l` shows it, and NAME.1 (or .8, of tool.manualSection) in man1 (or man8) is where man
// looks for it. It is ASCII, the same for the same tool, and has no date; hidden declarations are
// not in it. Whatever the tool's texts hold, each is shown as it is: line ends and indentation as
// the author's, an empty line between paragraphs, any other white space as one space, control
// characters and bytes that are not UTF-8 as replacement characters.
[[nodiscard]] OPTRELLA_API Text manualPage(const Tool& tool) noexcept;

}  // namespace Optrella

#endif
