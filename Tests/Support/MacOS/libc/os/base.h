/* The base of the queues' headers, as the toolchain has it for systems without one. */

#include <os/generic_unix_base.h>
