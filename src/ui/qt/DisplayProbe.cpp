// Probing the display the way the platform plugins connect: the X server's
// socket named by DISPLAY, or the Wayland compositor's socket.
#include "ui/qt/DisplayProbe.h"

#include <QDir>
#include <QLibraryInfo>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace ob::ui {

namespace {

constexpr int kConnectTimeoutMs = 2000;

std::string Env(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Connects to a Unix socket (a leading '@' names an abstract one).
bool ReachUnix(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    socklen_t length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    if (path[0] == '@') address.sun_path[0] = 0;
    int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&address), length) == 0;
    ::close(fd);
    return ok;
}

// Connects to host:port over TCP, waiting at most kConnectTimeoutMs.
bool ReachTcp(const std::string& host, int port) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return false;
    bool ok = false;
    for (addrinfo* a = found; a && !ok; a = a->ai_next) {
        int fd = ::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, a->ai_protocol);
        if (fd < 0) continue;
        if (::connect(fd, a->ai_addr, a->ai_addrlen) == 0) {
            ok = true;
        } else if (errno == EINPROGRESS) {
            pollfd p{fd, POLLOUT, 0};
            int error = 0;
            socklen_t size = sizeof error;
            ok = ::poll(&p, 1, kConnectTimeoutMs) == 1 && ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 &&
                 error == 0;
        }
        ::close(fd);
    }
    ::freeaddrinfo(found);
    return ok;
}

// DISPLAY is [host]:number[.screen]; no host (or "unix") means the local socket.
bool ReachX(const std::string& display) {
    size_t colon = display.rfind(':');
    if (colon == std::string::npos) return false;
    std::string host = display.substr(0, colon);
    int number = std::atoi(display.c_str() + colon + 1);
    if (host.empty() || host == "unix") {
        std::string path = "/tmp/.X11-unix/X" + std::to_string(number);
        return ReachUnix(path) || ReachUnix("@" + path);
    }
    return ReachTcp(host, 6000 + number);
}

bool ReachWayland(const std::string& display) {
    if (display.empty()) return false;
    if (display[0] == '/') return ReachUnix(display);
    std::string runtime = Env("XDG_RUNTIME_DIR");
    return !runtime.empty() && ReachUnix(runtime + "/" + display);
}

bool HasPlatformPlugin(const char* prefix) {
    QDir dir(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !dir.entryList({QString::fromLatin1(prefix) + QStringLiteral("*.so")}, QDir::Files).isEmpty();
}

}  // namespace

bool DisplayAvailable(std::string& why) {
    std::string platform = Env("QT_QPA_PLATFORM");
    for (const char* headless : {"offscreen", "minimal", "vnc"})
        if (platform.rfind(headless, 0) == 0) return true;
    bool wantWayland = platform.rfind("wayland", 0) == 0;
    if (!wantWayland && ReachX(Env("DISPLAY"))) return true;
    if ((wantWayland || platform.empty()) && HasPlatformPlugin("libqwayland") && ReachWayland(Env("WAYLAND_DISPLAY"))) {
        if (platform.empty()) ::setenv("QT_QPA_PLATFORM", "wayland", 1);
        return true;
    }
    if (Env("DISPLAY").empty() && Env("WAYLAND_DISPLAY").empty()) why = "no display (DISPLAY and WAYLAND_DISPLAY are unset)";
    else why = "the display does not answer";
    return false;
}

}  // namespace ob::ui
