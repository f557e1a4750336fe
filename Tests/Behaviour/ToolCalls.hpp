// ToolCalls.hpp - the calls that take a tool: its declarations, and what it says beside them.

#ifndef OPTRELLA_TESTS_BEHAVIOUR_TOOLCALLS_HPP
#define OPTRELLA_TESTS_BEHAVIOUR_TOOLCALLS_HPP

#include <Optrella/Tool.hpp>

#include "Cases.hpp"

namespace Behaviour {

// Returns the tool of a case. Its actions do nothing.
Optrella::Tool toolOf(const json& aCase);

json callExplain(const json& aCase);
json callComplete(const json& aCase);
json callLint(const json& aCase);
json callDescription(const json& aCase);
json callHelpPage(const json& aCase);
json callManualPage(const json& aCase);

}  // namespace Behaviour

#endif
