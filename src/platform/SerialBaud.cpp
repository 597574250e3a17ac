// Arbitrary baud rates through termios2 and BOTHER, where the kernel headers
// have them.
#include "platform/SerialBaud.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <cerrno>

namespace ob::platform {

#if defined(BOTHER) && defined(TCGETS2) && defined(TCSETS2)

bool ArbitraryBaudAvailable() { return true; }

int SetArbitraryBaud(int fd, uint32_t baud) {
    struct termios2 settings {};
    if (ioctl(fd, TCGETS2, &settings) != 0) return errno;
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | (CBAUD << IBSHIFT));
    settings.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    settings.c_ispeed = baud;
    settings.c_ospeed = baud;
    if (ioctl(fd, TCSETS2, &settings) != 0) return errno;
    return 0;
}

uint32_t CurrentBaud(int fd) {
    struct termios2 settings {};
    if (ioctl(fd, TCGETS2, &settings) != 0) return 0;
    return settings.c_ospeed;
}

#else

bool ArbitraryBaudAvailable() { return false; }

int SetArbitraryBaud(int, uint32_t) { return ENOTSUP; }

uint32_t CurrentBaud(int) { return 0; }

#endif

}  // namespace ob::platform
