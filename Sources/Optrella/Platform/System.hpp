// System.hpp - all that a system must supply: define these functions and nothing else.
//
// A system has a directory of its own, and in it a file for each header named here, of the header's
// name, with the definition; the contract stands in the header. Everything else under Platform/ is
// written once, in Posix/, for all systems.

#ifndef OPTRELLA_PLATFORM_SYSTEM_HPP
#define OPTRELLA_PLATFORM_SYSTEM_HPP

#include "Optrella/Platform/Concealment.hpp"
#include "Optrella/Platform/Descriptor.hpp"
#include "Optrella/Platform/Directory.hpp"
#include "Optrella/Platform/Log.hpp"
#include "Optrella/Platform/OwnProgram.hpp"
#include "Optrella/Platform/Password.hpp"
#include "Optrella/Platform/PasswordCheck.hpp"
#include "Optrella/Platform/Process.hpp"
#include "Optrella/Platform/StartArguments.hpp"
#include "Optrella/Platform/Worker.hpp"

namespace Optrella::Platform::System {

// Concealment
using Platform::isInspectable;
using Platform::setInspectable;
// Descriptor
using Platform::makePipe;
// Directory
using Platform::isMember;
using Platform::loggedInUser;
// Log
using Platform::logInfo;
// OwnProgram
using Platform::programFile;
// Password
using Platform::keepOutOfDumps;
// PasswordCheck
using Platform::verifyPassword;
// Process
using Platform::bundleIdentifier;
using Platform::environment;
// StartArguments
using Platform::argumentsOfTheSystem;
// Worker
using Platform::runOnWorker;

}  // namespace Optrella::Platform::System

#endif
