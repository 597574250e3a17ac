// The session registry of windows: what "getwindowhandle" lists and
// "copydata" reaches. Every published window is a Unix socket in a
// directory of the user's own ($XDG_RUNTIME_DIR/orvobasic, or
// /tmp/orvobasic-UID, mode 0700, when that variable is unset):
//
//   HANDLE.sock   the window's listening socket
//   HANDLE.info   "OBWINDOW 1", the publication time (ns), the title (UTF-8)
//
// A handle is the publishing process's id times 2^20 plus a number of its
// own, so handles are unique in the session without a shared counter and
// the file name tells whose window it is. A socket whose process is gone,
// or that refuses connections, is stale: lookups skip it and remove it.
//
// One registry thread per process accepts the connections of all its
// windows, reads each request (copy-data frames, see CopyDataFrame.h) and
// hands it with its reply to the window's receiver, on that thread.
#pragma once

#include "platform/CopyDataFrame.h"

#include <orvobasic/CString.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace ob::platform {

struct PublishedWindow {
    int64_t handle = 0;
    int pid = 0;              // the publishing process
    uint64_t published = 0;   // when, in ns of the real-time clock
    CString title;
};

// The connection a message came on. Answer() sends the numeric answer and
// closes it; a reply dropped unanswered just closes it, and the sender's
// "copydata" yields 0 at once.
class CopyDataReply {
public:
    CopyDataReply() = default;
    explicit CopyDataReply(int fd) : m_fd(fd) {}
    CopyDataReply(CopyDataReply&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    CopyDataReply& operator=(CopyDataReply&& other) noexcept;
    CopyDataReply(const CopyDataReply&) = delete;
    CopyDataReply& operator=(const CopyDataReply&) = delete;
    ~CopyDataReply() { Close(); }

    void Answer(int64_t answer);

private:
    void Close();
    int m_fd = -1;
};

// Receives a window's messages on the registry thread. It may answer at
// once or keep the reply and answer later from any thread.
using CopyDataReceiver = std::function<void(copydata::Request&& message, CopyDataReply&& reply)>;

class SessionRegistry {
public:
    static SessionRegistry& Instance();
    ~SessionRegistry();
    SessionRegistry(const SessionRegistry&) = delete;
    SessionRegistry& operator=(const SessionRegistry&) = delete;

    // Publishes a window; its handle, or 0 when the session directory
    // cannot be used. Starts the registry thread on first use.
    int64_t Publish(const CString& title, CopyDataReceiver receiver);
    // Withdraws a window of this process. When it returns, the window's
    // receiver is not running and is never called again (called from the
    // receiver itself, it returns at once). False for an unknown handle.
    bool Unpublish(int64_t handle);
    // True when this process published the handle and still has it.
    bool Owns(int64_t handle);

    // The live windows of the session, oldest publication first.
    static std::vector<PublishedWindow> List();
    // Sends a message and waits at most timeoutMs for the answer; 0 when
    // there is no such window, it refuses the message, closes without an
    // answer, or does not answer in time.
    static int64_t Send(int64_t target, const copydata::Request& request, int timeoutMs);
    // The session directory, made on first use; empty when it cannot be
    // used safely (not ours, not private, path too long for a socket).
    static std::string Directory();

private:
    struct Entry;
    SessionRegistry();
    void Run();
    void Serve(const std::shared_ptr<Entry>& entry, int connection);
    void Wake();
    void StartThread();

    std::mutex m_lock;   // guards everything below but the receivers' calls
    std::vector<std::shared_ptr<Entry>> m_entries;
    std::vector<int> m_closing;   // listening sockets the registry thread closes
    std::thread m_thread;
    std::thread::id m_threadId;
    bool m_stop = false;
    int m_wakeFd = -1;
    uint32_t m_next = 0;
};

// How long "copydata" waits for an answer: 5000 ms unless a host or the
// runner sets another value (1 ms .. 10 minutes).
void SetCopyDataTimeout(int milliseconds);
int CopyDataTimeout();

}  // namespace ob::platform
