// Apart from the error messages: a tool that writes none does not link the log.

#include "Optrella/CommandLineExitStatus.hpp"

namespace Optrella {

CommandLineExitStatus& CommandLineExitStatus::shared() noexcept {
    static CommandLineExitStatus status;
    return status;
}

}  // namespace Optrella
