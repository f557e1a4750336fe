// Secret.hpp - a password that is looked for in the memory of the process, on Linux.

#ifndef OPTRELLA_TESTS_CHILDPROCESS_SECRET_HPP
#define OPTRELLA_TESTS_CHILDPROCESS_SECRET_HPP

#include <string>

#include "Optrella/Platform/Password.hpp"

namespace Tests {

// A password that stands nowhere in this program: its bytes are made one by one.
Optrella::Platform::Password secret();
// What the probe writes for it.
std::string secretInHex();

// How often the secret, or a half of it, stands in the memory that the process may write to.
int secretsInMemory();

}  // namespace Tests

#endif
