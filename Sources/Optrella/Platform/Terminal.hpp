// Terminal.hpp - one line from the terminal, without echo.

#ifndef OPTRELLA_PLATFORM_TERMINAL_HPP
#define OPTRELLA_PLATFORM_TERMINAL_HPP

#include <optional>

#include "Optrella/Platform/Password.hpp"

namespace Optrella::Platform {

// Shows the prompt on the terminal that controls the process and reads one line without echo. The
// line's end is not part of the result. Nothing at the end of input, and nothing, silently, when
// there is no terminal or its echo cannot be turned off: standard input is never read instead. What
// has been printed before is on its way when the prompt is shown. A line is read to its end, but
// kept only to its first NUL, and to 4096 bytes.
//
// A signal that comes meanwhile does what it would have done, with the terminal as it was before;
// after a stop the prompt is shown again. When the process goes on after a signal of its user's
// (interrupt, quit, terminate, hang-up, alarm, broken pipe), the result is nothing. Works on any
// thread; one at a time in a process.
[[nodiscard]] std::optional<Password> readPassword(const char* prompt);

}  // namespace Optrella::Platform

#endif
