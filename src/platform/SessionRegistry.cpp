#include "platform/SessionRegistry.h"

#include "platform/Clock.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace ob::platform {

namespace {

constexpr int kHandleShift = 20;
constexpr uint32_t kLocalMask = (1u << kHandleShift) - 1;
// How long the registry thread gives a sender to deliver its whole request.
constexpr int kReceiveTimeoutMs = 2000;
constexpr int kDefaultTimeoutMs = 5000;
constexpr int kMaxTimeoutMs = 600000;
constexpr size_t kMaxInfoBytes = 4096;
constexpr int kPublishAttempts = 16;
constexpr char kInfoMagic[] = "OBWINDOW 1";

std::atomic<int> g_timeoutMs{kDefaultTimeoutMs};

// Closes a descriptor when it goes out of scope.
class Fd {
public:
    explicit Fd(int fd) : m_fd(fd) {}
    ~Fd() {
        if (m_fd >= 0) close(m_fd);
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

int RemainingMs(uint64_t deadline) {
    uint64_t now = MonotonicMs();
    return now >= deadline ? 0 : static_cast<int>(std::min<uint64_t>(deadline - now, INT32_MAX));
}

// Waits until the descriptor is ready for `events` or the deadline passes.
bool WaitFor(int fd, short events, uint64_t deadline) {
    for (;;) {
        int left = RemainingMs(deadline);
        if (left == 0) return false;
        pollfd p{fd, events, 0};
        int n = poll(&p, 1, left);
        if (n > 0) return true;
        if (n < 0 && errno != EINTR) return false;
    }
}

// Reads exactly `count` bytes from a non-blocking socket; false at the end
// of the stream, on an error or at the deadline.
bool ReadExact(int fd, uint8_t* buffer, size_t count, uint64_t deadline) {
    size_t got = 0;
    while (got < count) {
        ssize_t n = recv(fd, buffer + got, count - got, 0);
        if (n > 0) got += static_cast<size_t>(n);
        else if (n == 0) return false;
        else if (errno == EINTR) continue;
        else if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
        else if (!WaitFor(fd, POLLIN, deadline)) return false;
    }
    return true;
}

bool WriteAll(int fd, const uint8_t* bytes, size_t count, uint64_t deadline) {
    size_t sent = 0;
    while (sent < count) {
        ssize_t n = send(fd, bytes + sent, count - sent, MSG_NOSIGNAL);
        if (n > 0) sent += static_cast<size_t>(n);
        else if (n < 0 && errno == EINTR) continue;
        else if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            if (!WaitFor(fd, POLLOUT, deadline)) return false;
        } else return false;
    }
    return true;
}

bool MakeAddress(const std::string& path, sockaddr_un& address) {
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

int NewSocket() { return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }

// Connects a new socket to `path`; -1 with errno set on failure. A full
// backlog (EAGAIN) is retried until the deadline.
int ConnectTo(const std::string& path, uint64_t deadline) {
    sockaddr_un address;
    if (!MakeAddress(path, address)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    Fd s(NewSocket());
    if (s.get() < 0) return -1;
    for (;;) {
        if (connect(s.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return s.release();
        if (errno == EINTR) continue;
        if (errno != EAGAIN || RemainingMs(deadline) == 0) return -1;
        usleep(5000);
    }
}

std::string SocketPath(const std::string& dir, int64_t handle) {
    return dir + "/" + std::to_string(handle) + ".sock";
}

std::string InfoPath(const std::string& dir, int64_t handle) {
    return dir + "/" + std::to_string(handle) + ".info";
}

int PidOf(int64_t handle) { return static_cast<int>(handle >> kHandleShift); }

void RemoveFiles(const std::string& dir, int64_t handle) {
    unlink(SocketPath(dir, handle).c_str());
    unlink(InfoPath(dir, handle).c_str());
}

bool ProcessGone(int pid) { return pid <= 0 || (kill(pid, 0) != 0 && errno == ESRCH); }

// False when nobody listens on the socket (errno ECONNREFUSED) or it is
// missing; a successful probe's connection is closed unused, which the
// owner's registry thread reads as an empty request.
bool Listening(const std::string& path) {
    int fd = ConnectTo(path, MonotonicMs());
    if (fd < 0) return false;
    close(fd);
    return true;
}

uint64_t RealTimeNs() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
}

bool WriteInfo(const std::string& dir, int64_t handle, uint64_t published, const CString& title) {
    std::string path = InfoPath(dir, handle), temporary = path + ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << kInfoMagic << '\n' << published << '\n' << title.ToUtf8();
        if (!out) return false;
    }
    chmod(temporary.c_str(), 0600);
    return rename(temporary.c_str(), path.c_str()) == 0;
}

bool ReadInfo(const std::string& path, PublishedWindow& window) {
    std::ifstream in(path, std::ios::binary);
    std::string magic, time, title(kMaxInfoBytes, '\0');
    if (!std::getline(in, magic) || magic != kInfoMagic || !std::getline(in, time)) return false;
    in.read(title.data(), static_cast<std::streamsize>(title.size()));
    title.resize(static_cast<size_t>(in.gcount()));
    char* end = nullptr;
    window.published = std::strtoull(time.c_str(), &end, 10);
    if (time.empty() || *end) return false;
    window.title = CString::FromUtf8(title);
    return true;
}

// "123.sock" -> 123; 0 for any other name.
int64_t HandleOfName(const char* name) {
    const char* dot = std::strchr(name, '.');
    if (!dot || dot == name || std::strcmp(dot, ".sock") != 0 || dot - name > 18) return 0;
    int64_t handle = 0;
    for (const char* p = name; p < dot; ++p) {
        if (*p < '0' || *p > '9') return 0;
        handle = handle * 10 + (*p - '0');
    }
    return handle;
}

// A message read off a new connection; false for anything malformed, cut
// short or too slow.
bool ReceiveRequest(int fd, copydata::Request& request) {
    uint64_t deadline = MonotonicMs() + kReceiveTimeoutMs;
    uint8_t header[copydata::kRequestHeaderSize];
    size_t textBytes = 0;
    if (!ReadExact(fd, header, sizeof header, deadline) ||
        copydata::DecodeRequestHeader(header, request, textBytes) != copydata::FrameError::None)
        return false;
    std::vector<uint8_t> text(textBytes);
    if (!ReadExact(fd, text.data(), text.size(), deadline)) return false;
    copydata::DecodeText(text.data(), text.size(), request.text);
    return true;
}

}  // namespace

// ---- replies ----------------------------------------------------------------

CopyDataReply& CopyDataReply::operator=(CopyDataReply&& other) noexcept {
    if (this != &other) {
        Close();
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

void CopyDataReply::Close() {
    if (m_fd >= 0) close(std::exchange(m_fd, -1));
}

// The answer fits in any socket buffer: it is written without waiting.
void CopyDataReply::Answer(int64_t answer) {
    if (m_fd < 0) return;
    auto frame = copydata::EncodeAnswer(answer);
    WriteAll(m_fd, frame.data(), frame.size(), MonotonicMs() + 100);
    Close();
}

// ---- the registry -------------------------------------------------------------

struct SessionRegistry::Entry {
    int64_t handle = 0;
    int listenFd = -1;
    std::string dir;
    CopyDataReceiver receiver;
    std::mutex dispatch;   // held while the receiver runs
    bool live = true;      // under the registry's m_lock
};

SessionRegistry& SessionRegistry::Instance() {
    static SessionRegistry registry;
    return registry;
}

SessionRegistry::SessionRegistry() { m_wakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); }

// At exit: the thread ends, the windows still published disappear.
SessionRegistry::~SessionRegistry() {
    {
        std::lock_guard lock(m_lock);
        m_stop = true;
    }
    Wake();
    if (m_thread.joinable()) {
        if (std::this_thread::get_id() == m_threadId) m_thread.detach();
        else m_thread.join();
    }
    for (const auto& entry : m_entries) {
        RemoveFiles(entry->dir, entry->handle);
        close(entry->listenFd);
    }
    for (int fd : m_closing) close(fd);
    if (m_wakeFd >= 0) close(m_wakeFd);
}

void SessionRegistry::Wake() {
    uint64_t one = 1;
    if (m_wakeFd >= 0) {
        ssize_t ignored = write(m_wakeFd, &one, sizeof one);
        (void)ignored;
    }
}

// Under m_lock.
void SessionRegistry::StartThread() {
    if (m_thread.joinable() || m_wakeFd < 0) return;
    m_thread = std::thread([this] { Run(); });
    m_threadId = m_thread.get_id();
}

std::string SessionRegistry::Directory() {
    std::string dir;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && runtime[0] == '/') dir = std::string(runtime) + "/orvobasic";
    else dir = "/tmp/orvobasic-" + std::to_string(getuid());
    mkdir(dir.c_str(), 0700);
    struct stat info {};
    if (lstat(dir.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != getuid() ||
        (info.st_mode & 077) != 0)
        return std::string();
    // Room for the longest socket name: a 19-digit handle, ".sock" and the bind name.
    if (dir.size() + 40 >= sizeof(sockaddr_un{}.sun_path)) return std::string();
    return dir;
}

// Binds under a private name, then links the socket to its public name,
// which fails instead of replacing a live window of the same handle.
int64_t SessionRegistry::Publish(const CString& title, CopyDataReceiver receiver) {
    std::string dir = Directory();
    if (dir.empty() || !receiver) return 0;
    int pid = static_cast<int>(getpid());
    for (int attempt = 0; attempt < kPublishAttempts; ++attempt) {
        uint32_t local;
        {
            std::lock_guard lock(m_lock);
            local = ++m_next & kLocalMask;
            if (local == 0) local = ++m_next & kLocalMask;
        }
        int64_t handle = (static_cast<int64_t>(pid) << kHandleShift) | local;
        std::string bindPath = dir + "/.bind-" + std::to_string(handle), path = SocketPath(dir, handle);
        sockaddr_un address;
        Fd s(NewSocket());
        if (s.get() < 0 || !MakeAddress(bindPath, address)) return 0;
        unlink(bindPath.c_str());
        if (bind(s.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return 0;
        bool linked = listen(s.get(), 16) == 0 && link(bindPath.c_str(), path.c_str()) == 0;
        if (!linked && errno == EEXIST && !Listening(path)) {
            RemoveFiles(dir, handle);   // a dead process's window under the same handle
            linked = link(bindPath.c_str(), path.c_str()) == 0;
        }
        unlink(bindPath.c_str());
        if (!linked) continue;
        if (!WriteInfo(dir, handle, RealTimeNs(), title.Left(200))) {
            RemoveFiles(dir, handle);
            return 0;
        }
        auto entry = std::make_shared<Entry>();
        entry->handle = handle;
        entry->listenFd = s.release();
        entry->dir = dir;
        entry->receiver = std::move(receiver);
        {
            std::lock_guard lock(m_lock);
            m_entries.push_back(entry);
            StartThread();
        }
        Wake();
        return handle;
    }
    return 0;
}

bool SessionRegistry::Unpublish(int64_t handle) {
    std::shared_ptr<Entry> entry;
    bool onRegistryThread;
    {
        std::lock_guard lock(m_lock);
        onRegistryThread = std::this_thread::get_id() == m_threadId;
        auto it = std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& e) { return e->handle == handle; });
        if (it == m_entries.end()) return false;
        entry = *it;
        m_entries.erase(it);
        entry->live = false;
        m_closing.push_back(entry->listenFd);
    }
    RemoveFiles(entry->dir, handle);
    Wake();
    if (!onRegistryThread) {
        std::lock_guard wait(entry->dispatch);   // a call under way finishes first
    }
    return true;
}

bool SessionRegistry::Owns(int64_t handle) {
    std::lock_guard lock(m_lock);
    return std::any_of(m_entries.begin(), m_entries.end(), [&](const auto& e) { return e->handle == handle; });
}

// The registry thread: waits on every listening socket and serves one
// connection at a time.
void SessionRegistry::Run() {
    for (;;) {
        std::vector<std::shared_ptr<Entry>> entries;
        {
            std::lock_guard lock(m_lock);
            for (int fd : m_closing) close(fd);
            m_closing.clear();
            if (m_stop) return;
            entries = m_entries;
        }
        std::vector<pollfd> fds{{m_wakeFd, POLLIN, 0}};
        for (const auto& entry : entries) fds.push_back({entry->listenFd, POLLIN, 0});
        if (poll(fds.data(), fds.size(), -1) < 0) {
            if (errno != EINTR) usleep(10000);
            continue;
        }
        uint64_t drained;
        while (fds[0].revents && read(m_wakeFd, &drained, sizeof drained) > 0) {
        }
        for (size_t i = 1; i < fds.size(); ++i) {
            if (!(fds[i].revents & POLLIN)) continue;
            int connection = accept4(fds[i].fd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
            if (connection >= 0) Serve(entries[i - 1], connection);
        }
    }
}

void SessionRegistry::Serve(const std::shared_ptr<Entry>& entry, int connection) {
    CopyDataReply reply(connection);
    copydata::Request request;
    if (!ReceiveRequest(connection, request)) return;
    std::lock_guard dispatch(entry->dispatch);
    {
        std::lock_guard lock(m_lock);
        if (!entry->live) return;
    }
    try {
        entry->receiver(std::move(request), std::move(reply));
    } catch (...) {
        // A receiver's failure loses this message only; the sender gets 0.
    }
}

// ---- looking up and sending -----------------------------------------------------

std::vector<PublishedWindow> SessionRegistry::List() {
    std::vector<PublishedWindow> windows;
    std::string dir = Directory();
    if (dir.empty()) return windows;
    DIR* listing = opendir(dir.c_str());
    if (!listing) return windows;
    std::vector<int64_t> handles;
    while (dirent* item = readdir(listing))
        if (int64_t handle = HandleOfName(item->d_name)) handles.push_back(handle);
    closedir(listing);
    for (int64_t handle : handles) {
        PublishedWindow window;
        window.handle = handle;
        window.pid = PidOf(handle);
        if (ProcessGone(window.pid)) {
            RemoveFiles(dir, handle);
            continue;
        }
        if (!Listening(SocketPath(dir, handle))) {
            if (errno == ECONNREFUSED) RemoveFiles(dir, handle);
            continue;
        }
        if (ReadInfo(InfoPath(dir, handle), window)) windows.push_back(std::move(window));
    }
    std::sort(windows.begin(), windows.end(), [](const PublishedWindow& a, const PublishedWindow& b) {
        return a.published != b.published ? a.published < b.published : a.handle < b.handle;
    });
    return windows;
}

int64_t SessionRegistry::Send(int64_t target, const copydata::Request& request, int timeoutMs) {
    std::vector<uint8_t> frame;
    if (target <= 0 || !copydata::EncodeRequest(request, frame)) return 0;
    std::string dir = Directory();
    if (dir.empty()) return 0;
    uint64_t deadline = MonotonicMs() + static_cast<uint64_t>(std::max(timeoutMs, 1));
    Fd s(ConnectTo(SocketPath(dir, target), deadline));
    if (s.get() < 0) {
        if (errno == ECONNREFUSED) RemoveFiles(dir, target);
        return 0;
    }
    uint8_t answer[copydata::kAnswerSize];
    int64_t value = 0;
    if (!WriteAll(s.get(), frame.data(), frame.size(), deadline) ||
        !ReadExact(s.get(), answer, sizeof answer, deadline) ||
        copydata::DecodeAnswer(answer, sizeof answer, value) != copydata::FrameError::None)
        return 0;
    return value;
}

void SetCopyDataTimeout(int milliseconds) { g_timeoutMs = std::clamp(milliseconds, 1, kMaxTimeoutMs); }

int CopyDataTimeout() { return g_timeoutMs; }

}  // namespace ob::platform
