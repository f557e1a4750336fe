// Prints the identifier of the bundle that it runs from, for BundleTests.py.

#include <cstdio>

#include "Optrella/Platform/Process.hpp"

int main() {
    const std::optional<std::string> identifier = Optrella::Platform::bundleIdentifier();
    std::printf("%s\n", identifier ? identifier->c_str() : "(none)");
}
