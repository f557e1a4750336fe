// Commands.hpp - what sessions accepts: the tool, apart from its main function, so that its test
// can look at it.

#ifndef SESSIONS_COMMANDS_HPP
#define SESSIONS_COMMANDS_HPP

#include <Optrella/Tool.hpp>

[[nodiscard]] Optrella::Tool sessionsTool();

#endif
