// Serial devices on termios. The descriptor stays non-blocking: reads and
// writes wait with poll, so a read time-out is exact and a device that
// disappears gives an error instead of a hang.
#include "platform/SerialDevice.h"

#include "platform/SerialBaud.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace ob::platform {

namespace {

struct BaudConstant {
    uint32_t rate;
    speed_t constant;
};

// Rates termios names; any other goes through termios2.
const BaudConstant kBaudConstants[] = {
    {50, B50}, {75, B75}, {110, B110}, {134, B134}, {150, B150}, {200, B200}, {300, B300},
    {600, B600}, {1200, B1200}, {1800, B1800}, {2400, B2400}, {4800, B4800}, {9600, B9600},
    {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}, {230400, B230400},
    {460800, B460800}, {500000, B500000}, {576000, B576000}, {921600, B921600},
    {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000}, {2000000, B2000000},
    {2500000, B2500000}, {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000},
};

const tcflag_t kParityFlags[] = {
    0,                          // none
    PARENB | PARODD,            // odd
    PARENB,                     // even
    PARENB | PARODD | CMSPAR,   // mark: the parity bit always 1
    PARENB | CMSPAR,            // space: the parity bit always 0
};

const tcflag_t kSizeFlags[] = {CS5, CS6, CS7, CS8};

const speed_t* StandardBaud(uint32_t rate) {
    for (const BaudConstant& entry : kBaudConstants)
        if (entry.rate == rate) return &entry.constant;
    return nullptr;
}

// Data bits actually used: the setting, or 7 with parity and 8 without.
unsigned DataBits(const SerialSettings& s) { return s.dataBits ? s.dataBits : (s.parity ? 7 : 8); }

// Why the line cannot take `s`; empty when it can.
std::string Refusal(const SerialSettings& s) {
    unsigned bits = DataBits(s);
    if (s.baud == 0) return "baud rate 0";
    if (!StandardBaud(s.baud) && !ArbitraryBaudAvailable())
        return "baud rate " + std::to_string(s.baud) + " is not supported by this system";
    if (s.parity >= std::size(kParityFlags)) return "parity " + std::to_string(s.parity) + " is not 0 to 4";
    if (bits < 5 || bits > 8) return std::to_string(bits) + " data bits";
    if (s.stopBits == 1 && bits != 5) return "one and a half stop bits need 5 data bits";
    if (s.stopBits > 2) return "stop bits " + std::to_string(s.stopBits) + " is not 0 to 2";
    if (s.flow & kFlowDsrDtr) return "DSR/DTR handshake is not available on this system";
    return {};
}

// Waits up to `ms` for input on `fd`; false on time-out and on a hang-up or
// error without data. Interrupted waits resume.
bool WaitForInput(int fd, int ms) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        pollfd p {fd, POLLIN, 0};
        auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        int n = poll(&p, 1, left.count() > 0 ? static_cast<int>(left.count()) : 0);
        if (n > 0) return (p.revents & POLLIN) != 0;
        if (n == 0 || errno != EINTR) return false;
    }
}

}  // namespace

bool ComposeTermios(::termios& t, const SerialSettings& s) {
    if (!Refusal(s).empty()) return false;
    t.c_iflag &= ~static_cast<tcflag_t>(BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF |
                                        IXANY | INPCK | IGNPAR);
    t.c_iflag |= IGNBRK;   // a break is a line condition, not a NUL byte in the data
    if (s.flow & kFlowXonXoff) t.c_iflag |= IXON | IXOFF;
    t.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    t.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
    t.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
    t.c_cflag |= CREAD | CLOCAL | kSizeFlags[DataBits(s) - 5] | kParityFlags[s.parity];
    if (s.stopBits != 0) t.c_cflag |= CSTOPB;   // with 5 data bits the line makes it 1.5
    if (s.flow & kFlowCtsRts) t.c_cflag |= CRTSCTS;
    t.c_cc[VSTART] = 17;
    t.c_cc[VSTOP] = 19;
    t.c_cc[VMIN] = 1;
    t.c_cc[VTIME] = 0;
    if (const speed_t* constant = StandardBaud(s.baud)) {
        cfsetispeed(&t, *constant);
        cfsetospeed(&t, *constant);
    }
    return true;
}

SerialDevice::~SerialDevice() { Close(); }

bool SerialDevice::Fail(const std::string& reason) {
    m_error = m_path + ": " + reason;
    return false;
}

bool SerialDevice::FailErrno(int error) { return Fail(std::strerror(error)); }

bool SerialDevice::Open(const std::string& path) {
    Close();
    m_path = path;
    m_error.clear();
    int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return FailErrno(errno);
    if (!isatty(fd)) {
        ::close(fd);
        return Fail("not a serial device");
    }
    // No sharing: a second open of the device by anyone but root fails.
    if (ioctl(fd, TIOCEXCL) != 0) {
        int error = errno;
        ::close(fd);
        return FailErrno(error);
    }
    m_fd = fd;
    return true;
}

bool SerialDevice::Close() {
    if (m_fd < 0) return true;
    int fd = m_fd;
    m_fd = -1;
    if (::close(fd) != 0 && errno != EINTR) return FailErrno(errno);
    return true;
}

bool SerialDevice::Apply(const SerialSettings& settings) {
    if (m_fd < 0) return Fail("not open");
    std::string refusal = Refusal(settings);
    if (!refusal.empty()) return Fail(refusal);
    termios t {};
    if (tcgetattr(m_fd, &t) != 0) return FailErrno(errno);
    termios before = t;
    ComposeTermios(t, settings);
    if (tcsetattr(m_fd, TCSANOW, &t) != 0) return FailErrno(errno);
    if (!StandardBaud(settings.baud)) {
        if (int error = SetArbitraryBaud(m_fd, settings.baud)) {
            tcsetattr(m_fd, TCSANOW, &before);   // all or nothing
            return Fail("baud rate " + std::to_string(settings.baud) + ": " + std::strerror(error));
        }
    }
    int lines = TIOCM_DTR | TIOCM_RTS;
    ioctl(m_fd, TIOCMBIS, &lines);   // a pseudo-terminal has no modem lines; that is fine
    return true;
}

void SerialDevice::PurgeInput() {
    if (m_fd >= 0) tcflush(m_fd, TCIFLUSH);
}

std::string SerialDevice::Read(int firstMs, int followMs, size_t maxBytes) {
    std::string bytes;
    if (m_fd < 0 || maxBytes == 0 || !WaitForInput(m_fd, firstMs)) return bytes;
    bytes.resize(maxBytes);
    size_t got = 0;
    while (got < maxBytes) {
        ssize_t n = ::read(m_fd, bytes.data() + got, maxBytes - got);
        if (n > 0) got += static_cast<size_t>(n);
        else if (n == 0 || (errno != EAGAIN && errno != EINTR)) break;   // hang-up or lost device
        if (got < maxBytes && !WaitForInput(m_fd, followMs)) break;
    }
    bytes.resize(got);
    return bytes;
}

bool SerialDevice::Write(std::string_view bytes, size_t& written) {
    written = 0;
    if (m_fd < 0) return Fail("not open");
    while (written < bytes.size()) {
        ssize_t n = ::write(m_fd, bytes.data() + written, bytes.size() - written);
        if (n > 0) {
            written += static_cast<size_t>(n);
            continue;
        }
        if (n < 0 && errno != EAGAIN && errno != EINTR) return FailErrno(errno);
        pollfd p {m_fd, POLLOUT, 0};
        if (poll(&p, 1, -1) < 0 && errno != EINTR) return FailErrno(errno);
        if (p.revents & (POLLHUP | POLLERR | POLLNVAL)) return FailErrno(EIO);
    }
    return true;
}

}  // namespace ob::platform
