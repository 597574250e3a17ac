// Baud rates without a termios B constant, through the kernel's termios2
// interface (BOTHER). Kept apart from SerialDevice.cpp because the kernel's
// termios2 header and the C library's <termios.h> cannot share a file.
#pragma once

#include <cstdint>

namespace ob::platform {

// True when this build can ask the kernel for arbitrary rates.
bool ArbitraryBaudAvailable();

// Sets input and output rate of terminal `fd` to `baud`, keeping every other
// setting. Returns 0, or the errno value of the failure (ENOTSUP when the
// build has no termios2).
int SetArbitraryBaud(int fd, uint32_t baud);

// The output rate of terminal `fd` in bits per second, whether set through a
// B constant or termios2; 0 when it cannot be read.
uint32_t CurrentBaud(int fd);

}  // namespace ob::platform
