// The copy-data frames and the session registry: malformed frames are
// refused, answers travel back, and a silent, dying or stale peer costs a
// bounded wait and no descriptor.
#include "platform/CopyDataFrame.h"
#include "platform/SessionRegistry.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

using namespace ob::platform;
namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

long Elapsed(Clock::time_point start) {
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

size_t OpenDescriptors() {
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        (void)entry;
        ++count;
    }
    return count;
}

std::vector<uint8_t> Frame(const copydata::Request& request) {
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(copydata::EncodeRequest(request, bytes));
    return bytes;
}

// A raw client of a window's socket; -1 when it cannot connect.
int ConnectRaw(int64_t handle) {
    std::string path = SessionRegistry::Directory() + "/" + std::to_string(handle) + ".sock";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

// Reads until the peer closes; the number of bytes it sent.
size_t DrainUntilClosed(int fd) {
    timeval limit{3, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    uint8_t buffer[64];
    size_t total = 0;
    ssize_t n;
    while ((n = recv(fd, buffer, sizeof buffer, 0)) > 0) total += static_cast<size_t>(n);
    return n == 0 ? total : SIZE_MAX;
}

}  // namespace

TEST(CopyDataFrame, RequestsAndAnswersRoundTrip) {
    for (const std::u16string& text : {std::u16string(), std::u16string(u"h\u00e9llo \u4e16\U0001F600\0x", 11)}) {
        copydata::Request in{-5, 0xFFFFFFFFu, text}, out;
        std::vector<uint8_t> bytes = Frame(in);
        ASSERT_EQ(bytes.size(), copydata::kRequestHeaderSize + 2 * text.size());
        ASSERT_EQ(copydata::DecodeRequest(bytes.data(), bytes.size(), out), copydata::FrameError::None);
        EXPECT_EQ(out.sender, -5);
        EXPECT_EQ(out.code, 0xFFFFFFFFu);
        EXPECT_EQ(out.text, text);
    }
    int64_t answer = 0;
    auto frame = copydata::EncodeAnswer(INT64_MIN + 3);
    ASSERT_EQ(copydata::DecodeAnswer(frame.data(), frame.size(), answer), copydata::FrameError::None);
    EXPECT_EQ(answer, INT64_MIN + 3);
}

TEST(CopyDataFrame, MalformedFramesAreRefused) {
    using E = copydata::FrameError;
    const std::vector<uint8_t> good = Frame({1, 2, u"abc"});
    copydata::Request out;
    auto decode = [&](std::vector<uint8_t> bytes) { return copydata::DecodeRequest(bytes.data(), bytes.size(), out); };
    auto changed = [&](size_t at, uint8_t value) {
        std::vector<uint8_t> bytes = good;
        bytes[at] = value;
        return bytes;
    };
    EXPECT_EQ(decode(changed(0, 2)), E::Version);
    EXPECT_EQ(decode(changed(1, copydata::kAnswerType)), E::Type);
    EXPECT_EQ(decode(changed(3, 1)), E::Reserved);
    EXPECT_EQ(decode(changed(16, 4)), E::Truncated);    // announces more text than follows
    EXPECT_EQ(decode(changed(16, 2)), E::Trailing);     // less text than follows
    EXPECT_EQ(decode(std::vector<uint8_t>(good.begin(), good.begin() + 19)), E::Truncated);
    std::vector<uint8_t> huge = good;
    huge[18] = 0x10;   // 0x100003 units: past the limit, refused before any allocation
    EXPECT_EQ(decode(huge), E::Oversize);
    std::vector<uint8_t> bytes;
    EXPECT_FALSE(copydata::EncodeRequest({0, 0, std::u16string(copydata::kMaxTextUnits + 1, u'x')}, bytes));
    EXPECT_TRUE(copydata::EncodeRequest({0, 0, std::u16string(copydata::kMaxTextUnits, u'x')}, bytes));

    int64_t answer = 7;
    auto frame = copydata::EncodeAnswer(1);
    EXPECT_EQ(copydata::DecodeAnswer(frame.data(), frame.size() - 1, answer), E::Truncated);
    frame[1] = copydata::kRequestType;
    EXPECT_EQ(copydata::DecodeAnswer(frame.data(), frame.size(), answer), E::Type);
    EXPECT_EQ(answer, 7);
}

class SessionRegistryTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* old = std::getenv("XDG_RUNTIME_DIR");
        m_saved = old ? old : "";
        m_hadValue = old != nullptr;
        char pattern[] = "/tmp/ob-session-unit-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
        setenv("XDG_RUNTIME_DIR", m_dir.c_str(), 1);
    }
    void TearDown() override {
        if (m_hadValue) setenv("XDG_RUNTIME_DIR", m_saved.c_str(), 1);
        else unsetenv("XDG_RUNTIME_DIR");
        fs::remove_all(m_dir);
    }
    size_t SocketFiles() const {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator(m_dir + "/orvobasic"))
            if (entry.path().extension() == ".sock") ++count;
        return count;
    }

    std::string m_dir, m_saved;
    bool m_hadValue = false;
};

TEST_F(SessionRegistryTest, PublishedWindowsAreListedInOrderAndAnswer) {
    SessionRegistry& registry = SessionRegistry::Instance();
    std::u16string seen;
    int64_t first = registry.Publish(u"Alpha window", [&](copydata::Request&& m, CopyDataReply&& reply) {
        seen = m.text;
        reply.Answer(m.sender + m.code);
    });
    int64_t second = registry.Publish(u"Beta window", [](copydata::Request&&, CopyDataReply&&) {});
    ASSERT_NE(first, 0);
    ASSERT_NE(second, 0);
    EXPECT_EQ((fs::status(m_dir + "/orvobasic").permissions() & fs::perms::all), fs::perms::owner_all);
    EXPECT_NE(first, second);

    std::vector<PublishedWindow> windows = SessionRegistry::List();
    ASSERT_EQ(windows.size(), 2u);
    EXPECT_EQ(windows[0].handle, first);
    EXPECT_EQ(windows[0].title, u"Alpha window");
    EXPECT_EQ(windows[0].pid, getpid());
    EXPECT_EQ(windows[1].title, u"Beta window");

    EXPECT_EQ(SessionRegistry::Send(first, {40, 2, u"\u00fcber"}, 2000), 42);
    EXPECT_EQ(seen, u"\u00fcber");
    // A receiver that drops the reply unanswered: 0 without waiting.
    auto start = Clock::now();
    EXPECT_EQ(SessionRegistry::Send(second, {0, 1, u"x"}, 5000), 0);
    EXPECT_LT(Elapsed(start), 1000);

    EXPECT_TRUE(registry.Unpublish(first));
    EXPECT_FALSE(registry.Unpublish(first));
    EXPECT_TRUE(registry.Unpublish(second));
    EXPECT_EQ(SocketFiles(), 0u);
    EXPECT_EQ(SessionRegistry::Send(first, {0, 1, u"x"}, 1000), 0);
    EXPECT_TRUE(SessionRegistry::List().empty());
}

TEST_F(SessionRegistryTest, SilentReceiverTimesOutAndDyingPeersLeakNothing) {
    SessionRegistry& registry = SessionRegistry::Instance();
    std::promise<CopyDataReply> kept;
    auto keptReply = kept.get_future();
    int calls = 0;
    int64_t silent = registry.Publish(u"Silent", [&](copydata::Request&&, CopyDataReply&& reply) {
        if (++calls == 1) kept.set_value(std::move(reply));
    });
    ASSERT_NE(silent, 0);
    size_t before = OpenDescriptors();

    // Never answered: the sender gives up after its time-out.
    auto start = Clock::now();
    EXPECT_EQ(SessionRegistry::Send(silent, {0, 1, u"hello"}, 300), 0);
    EXPECT_GE(Elapsed(start), 290);
    EXPECT_LT(Elapsed(start), 3000);
    keptReply.get().Answer(5);   // too late: written to a closed connection, no signal

    // A sender that dies mid-frame, and one that announces an oversize
    // frame: the registry drops both without calling the receiver.
    int half = ConnectRaw(silent);
    ASSERT_GE(half, 0);
    std::vector<uint8_t> frame = Frame({0, 9, u"cut short"});
    ASSERT_EQ(send(half, frame.data(), 10, MSG_NOSIGNAL), 10);
    close(half);
    int oversize = ConnectRaw(silent);
    ASSERT_GE(oversize, 0);
    frame[18] = 0x20;
    ASSERT_EQ(send(oversize, frame.data(), copydata::kRequestHeaderSize, MSG_NOSIGNAL),
              static_cast<ssize_t>(copydata::kRequestHeaderSize));
    EXPECT_EQ(DrainUntilClosed(oversize), 0u);
    close(oversize);

    // The registry still serves, and nothing stayed open on either side.
    EXPECT_EQ(SessionRegistry::Send(silent, {0, 1, u"again"}, 1000), 0);
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(registry.Unpublish(silent));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));   // the registry thread closes the listener
    EXPECT_LE(OpenDescriptors(), before - 1);
}

// A receiver that reads the message and dies before answering.
TEST_F(SessionRegistryTest, ReceiverDyingMidMessageEndsTheWaitAtOnce) {
    std::string dir = SessionRegistry::Directory();
    ASSERT_FALSE(dir.empty());
    int64_t handle = (static_cast<int64_t>(getpid()) << 20) | 0xFFFFF;
    std::string path = dir + "/" + std::to_string(handle) + ".sock";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
    int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 4), 0);
    std::thread peer([listener] {
        int c = accept(listener, nullptr, nullptr);
        uint8_t some[8];
        ssize_t ignored = recv(c, some, sizeof some, 0);
        (void)ignored;
        close(c);
    });
    size_t before = OpenDescriptors();
    auto start = Clock::now();
    EXPECT_EQ(SessionRegistry::Send(handle, {0, 1, std::u16string(5000, u'y')}, 5000), 0);
    EXPECT_LT(Elapsed(start), 2000);
    peer.join();
    EXPECT_EQ(OpenDescriptors(), before);

    // Once nobody listens, the socket is stale: refused, skipped, removed.
    close(listener);
    EXPECT_EQ(SessionRegistry::Send(handle, {0, 1, u"x"}, 1000), 0);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(SessionRegistryTest, WindowsOfDeadProcessesAreRemoved) {
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    std::string dir = SessionRegistry::Directory();
    int64_t handle = (static_cast<int64_t>(child) << 20) | 1;
    std::string base = dir + "/" + std::to_string(handle);
    std::ofstream(base + ".sock") << "";
    std::ofstream(base + ".info") << "OBWINDOW 1\n1\nGhost";
    EXPECT_TRUE(SessionRegistry::List().empty());
    EXPECT_FALSE(fs::exists(base + ".sock"));
    EXPECT_FALSE(fs::exists(base + ".info"));
}
