// Serial ports on pseudo-terminal pairs: the script opens the slave side
// through a port mapping, a peer thread plays the device on the master side.
#include "HostTestUtil.h"

#include "io/SerialPorts.h"
#include "platform/SerialBaud.h"
#include "platform/SerialDevice.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>
#include <orvobasic/orvobasic.h>

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/wait.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <utility>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// A pseudo-terminal pair. The test keeps its own slave descriptor, so the
// line never hangs up by itself and its settings can be read back.
class PtyPair {
public:
    PtyPair() {
        char name[256] = {};
        if (openpty(&m_master, &m_slave, name, nullptr, nullptr) != 0) std::abort();
        m_name = name;
    }
    ~PtyPair() {
        CloseMaster();
        ::close(m_slave);
    }
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    const std::string& SlavePath() const { return m_name; }
    int Slave() const { return m_slave; }
    termios SlaveSettings() const {
        termios t {};
        tcgetattr(m_slave, &t);
        return t;
    }
    void CloseMaster() {
        if (m_master >= 0) ::close(m_master);
        m_master = -1;
    }

    // The device's side: everything the script sent within `ms`, waiting
    // until `count` bytes came or the line stayed quiet for `ms`.
    std::string Receive(size_t count, int ms) const {
        std::string got;
        char buffer[8192];
        while (got.size() < count) {
            pollfd p {m_master, POLLIN, 0};
            if (poll(&p, 1, ms) <= 0 || !(p.revents & POLLIN)) break;
            ssize_t n = ::read(m_master, buffer, sizeof buffer);
            if (n <= 0) break;
            got.append(buffer, static_cast<size_t>(n));
        }
        return got;
    }
    void Send(const std::string& bytes) const {
        size_t sent = 0;
        while (sent < bytes.size()) {
            ssize_t n = ::write(m_master, bytes.data() + sent, bytes.size() - sent);
            if (n <= 0) return;
            sent += static_cast<size_t>(n);
        }
    }

private:
    int m_master = -1;
    int m_slave = -1;
    std::string m_name;
};

// A peer thread playing the device; joined when the test ends.
class Peer {
public:
    explicit Peer(std::function<void()> body) : m_thread(std::move(body)) {}
    ~Peer() { m_thread.join(); }

private:
    std::thread m_thread;
};

// Records printed text and error numbers, answering every error with OK.
class RecordingDesktop : public ob::ui::Desktop {
public:
    int MessageBox(const CString&, unsigned) override { return ob::ui::IDOK; }
    void PrintBox(const CString& text) override { prints.push_back(text.ToUtf8()); }
    int ErrorBox(const ob::ui::ErrorReport& report) override {
        errors.push_back(report.id);
        return ob::ui::IDOK;
    }
    std::vector<std::string> prints;
    std::vector<int> errors;
};

int OpenDescriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
    return count;
}

std::string Pattern(size_t length) {
    std::string bytes;
    for (size_t i = 0; i < length; ++i) bytes += static_cast<char>('A' + i % 26);
    return bytes;
}

extern "C" void RecordStatus(OB_HANDLE, int32_t port, const char* status, void* user) {
    static_cast<std::vector<std::string>*>(user)->push_back("COM" + std::to_string(port) + " " + status);
}

class SerialPortTest : public ::testing::Test {
protected:
    void SetUp() override {
        ob::ui::SetDesktop(&m_desktop);
        ASSERT_EQ(OB_SetComPortPath(1, m_pty.SlavePath().c_str()), 1);
    }
    void TearDown() override {
        m_basic.reset();
        OB_SetComPortPath(1, nullptr);
        OB_SetComPortPath(7, nullptr);
        ob::ui::SetDesktop(nullptr);
    }

    // Runs `source` in a fresh interpreter that stays alive afterwards.
    void Run(const std::string& source) {
        m_dir.Write("script.bas", source);
        m_basic = std::make_unique<COrvoBasic>();
        OB_SetComPortStatusHandler(m_basic.get(), RecordStatus, &m_statuses);
        m_basic->ExecuteProgram(m_dir.WPath("script.bas"));
    }

    // A variable of the main program after the run; null when unknown.
    CBasicVariable* Var(const char16_t* name) {
        CString key = name;
        return m_basic->FindVariable(key);
    }
    BASICVARTYPE TypeOf(const char16_t* name) {
        CBasicVariable* v = Var(name);
        return v ? v->GetType() : BVT_UNSET;
    }
    std::string Text(const char16_t* name) { return Var(name) ? Var(name)->GetStringValue().ToUtf8() : "?"; }
    double Number(const char16_t* name) { return Var(name) ? Var(name)->GetNumberValue() : -999; }

    PtyPair m_pty;
    ob::test::TempDir m_dir;
    RecordingDesktop m_desktop;
    std::unique_ptr<COrvoBasic> m_basic;
    std::vector<std::string> m_statuses;
};

}  // namespace

TEST_F(SerialPortTest, EchoedTextTravelsInTheScriptCodePage) {
    std::string seen;
    {
        Peer echo([&] {
            seen = m_pty.Receive(8, 3000);
            m_pty.Send(seen);
        });
        Run("x = comportopen(1, 9600, 0, 0, 3000)\n"
            "w = comportwrite(1, \"h\xE9llo \x80!\")\n"
            "r = comportread(1)\n");
    }
    EXPECT_EQ(seen, "h\xE9llo \x80!");   // one byte per character, Windows-1252
    EXPECT_EQ(Number(u"w"), 1);
    EXPECT_EQ(Text(u"r"), "h\xC3\xA9llo \xE2\x82\xAC!");
    EXPECT_TRUE(m_desktop.errors.empty());
}

TEST_F(SerialPortTest, BurstsArriveWholeAndInOrderAtMost4097BytesPerRead) {
    const std::string sent = Pattern(5000);
    Peer device([&] {
        if (m_pty.Receive(1, 3000) != "!") return;
        for (size_t at = 0; at < sent.size(); at += 700) {
            m_pty.Send(sent.substr(at, 700));
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        }
    });
    Run("x = comportopen(1, 115200, 0, 0, 2000)\n"
        "x = comportwrite(1, \"!\")\n"
        "all = \"\"\n"
        "most = 0\n"
        "reads = 0\n"
        "for i = 1 to 100\n"
        "  if len(all) < 5000 then\n"
        "    part = comportread(1)\n"
        "    most = max(most, len(part))\n"
        "    all = all + part\n"
        "    reads = reads + 1\n"
        "  endif\n"
        "next\n");
    EXPECT_TRUE(Text(u"all") == sent) << Text(u"all").size() << " bytes";
    EXPECT_LE(Number(u"most"), 4097);
    EXPECT_GT(Number(u"reads"), 1);   // the pauses split the stream
}

TEST_F(SerialPortTest, OneReadTakes4097BytesOfFiveThousandWaiting) {
    const std::string sent = Pattern(5000);
    Peer device([&] {
        if (m_pty.Receive(1, 3000) == "!") m_pty.Send(sent);
    });
    Run("x = comportopen(1, 9600, 0, 0, 2000)\n"
        "x = comportwrite(1, \"!\")\n"
        "a = comportread(1)\n"
        "b = comportread(1)\n");
    EXPECT_EQ(Text(u"a").size(), 4097u);
    EXPECT_TRUE(Text(u"a") + Text(u"b") == sent);
}

TEST_F(SerialPortTest, ASilentDeviceMakesReadsTimeOut) {
    auto start = Clock::now();
    Run("x = comportopen(1, 9600, 0, 0, 300)\n"
        "r = comportread(1)\n");
    auto waited = Clock::now() - start;
    EXPECT_EQ(TypeOf(u"r"), BVT_STRING);
    EXPECT_EQ(Text(u"r"), "");
    EXPECT_GE(waited, std::chrono::milliseconds(300));
    EXPECT_LT(waited, std::chrono::milliseconds(2000));

    // A time-out below 10 ms is raised to 10.
    start = Clock::now();
    Run("x = comportopen(1, 9600, 0, 0, 0)\n"
        "for i = 1 to 20\n"
        "  r = comportread(1)\n"
        "next\n");
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(SerialPortTest, ALostDeviceReadsNothingAtOnceAndFailsWrites) {
    Peer device([&] {
        if (m_pty.Receive(1, 3000) == "!") m_pty.CloseMaster();
    });
    auto start = Clock::now();
    Run("x = comportopen(1, 9600, 0, 0, 5000)\n"
        "x = comportwrite(1, \"!\")\n"
        "r = comportread(1)\n"
        "w = comportwrite(1, \"more\")\n"
        "c = comportclose(1)\n");
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(4000));
    EXPECT_EQ(TypeOf(u"r"), BVT_STRING);
    EXPECT_EQ(Text(u"r"), "");
    EXPECT_EQ(TypeOf(u"w"), BVT_NUMBER);
    EXPECT_EQ(Number(u"w"), 0);
    EXPECT_EQ(Number(u"c"), 1);
    ASSERT_EQ(m_statuses.size(), 1u);
    EXPECT_EQ(m_statuses[0], "COM1 " + m_pty.SlavePath() + ": Input/output error");
    EXPECT_TRUE(m_desktop.errors.empty());
}

TEST_F(SerialPortTest, SettingsReadBackFromTheLine) {
    struct Case {
        const char* args;
        speed_t speed;
        tcflag_t size, parity;
        bool twoStops;
    };
    const Case cases[] = {
        {"1", B4800, CS8, 0, false},
        {"1, 9600, 2", B9600, CS7, PARENB, false},
        {"1, 19200, 1, 2", B19200, CS7, PARENB | PARODD, true},
        {"1, 0, 3", B4800, CS7, PARENB | PARODD | CMSPAR, false},
        {"1, -300, 4, 0", B4800, CS7, PARENB | CMSPAR, false},
        {"1, 115200.9, 0, 2", B115200, CS8, 0, true},
    };
    // A pseudo-terminal always keeps 8 data bits without parity, so the
    // size and the parity enable are checked on what was sent to it.
    const tcflag_t kPtyKeeps = PARODD | CMSPAR | CSTOPB;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        Run(std::string("o = comportopen(") + c.args + ")\n");
        EXPECT_EQ(Number(u"o"), 1);
        termios t = m_pty.SlaveSettings();
        termios sent = m_pty.SlaveSettings();
        ASSERT_NE(m_basic->COMPortFind(1), nullptr);
        ob::platform::ComposeTermios(sent, m_basic->COMPortFind(1)->Settings());
        EXPECT_EQ(sent.c_cflag & CSIZE, c.size);
        EXPECT_EQ(sent.c_cflag & (PARENB | PARODD | CMSPAR), c.parity);
        EXPECT_EQ(t.c_cflag & kPtyKeeps, sent.c_cflag & kPtyKeeps);
        EXPECT_EQ(cfgetospeed(&t), c.speed);
        EXPECT_EQ((t.c_cflag & CSTOPB) != 0, c.twoStops);
        EXPECT_EQ(t.c_cflag & (CREAD | CLOCAL), tcflag_t(CREAD | CLOCAL));
        EXPECT_EQ(t.c_lflag & (ICANON | ECHO | ISIG), 0u);
        EXPECT_EQ(t.c_iflag & (ICRNL | IXON | IXOFF | INPCK), 0u);
        EXPECT_EQ(t.c_oflag & OPOST, 0u);
    }
    EXPECT_TRUE(m_statuses.empty());
}

TEST_F(SerialPortTest, RatesWithoutATermiosConstantGoThroughTermios2) {
    if (!ob::platform::ArbitraryBaudAvailable()) GTEST_SKIP() << "no termios2 in this build";
    Run("x = comportopen(1, 31250)\n");
    EXPECT_EQ(ob::platform::CurrentBaud(m_pty.Slave()), 31250u);
    Run("x = comportopen(1, 9600)\n");   // and back to a named rate
    EXPECT_EQ(ob::platform::CurrentBaud(m_pty.Slave()), 9600u);
}

TEST_F(SerialPortTest, RefusedSettingsChangeNothingAndSayWhyButThePortIsOpen) {
    Run("x = comportopen(1, 9600)\n");
    Run("o = comportopen(1, 19200, 9)\n"
        "r = comportread(1)\n"
        "p = comportopen(1, 19200, 0, 1)\n");
    EXPECT_EQ(Number(u"o"), 1);
    EXPECT_EQ(TypeOf(u"r"), BVT_STRING);   // open: the read ran and timed out
    termios t = m_pty.SlaveSettings();
    EXPECT_EQ(cfgetospeed(&t), B9600);
    ASSERT_EQ(m_statuses.size(), 2u);
    EXPECT_EQ(m_statuses[0], "COM1 " + m_pty.SlavePath() + ": parity 9 is not 0 to 4");
    EXPECT_EQ(m_statuses[1], "COM1 " + m_pty.SlavePath() + ": one and a half stop bits need 5 data bits");
}

TEST(SerialDeviceTest, FlowControlMapsToTermios) {
    PtyPair pty;
    ob::platform::SerialDevice device;
    ASSERT_TRUE(device.Open(pty.SlavePath()));
    ob::platform::SerialSettings s;
    s.baud = 57600;
    s.dataBits = 5;
    s.stopBits = 1;
    s.flow = ob::platform::kFlowCtsRts | ob::platform::kFlowXonXoff;
    ASSERT_TRUE(device.Apply(s)) << device.LastError();
    termios t = pty.SlaveSettings();
    EXPECT_EQ(cfgetospeed(&t), B57600);
    EXPECT_NE(t.c_cflag & CSTOPB, 0u);
    EXPECT_NE(t.c_cflag & CRTSCTS, 0u);
    EXPECT_EQ(t.c_iflag & (IXON | IXOFF), tcflag_t(IXON | IXOFF));
    EXPECT_EQ(t.c_cc[VSTART], 17);
    EXPECT_EQ(t.c_cc[VSTOP], 19);

    s.flow = ob::platform::kFlowDsrDtr;   // termios has no DSR handshake
    EXPECT_FALSE(device.Apply(s));
    EXPECT_NE(pty.SlaveSettings().c_cflag & CRTSCTS, 0u);   // nothing changed
    EXPECT_TRUE(device.Close());
    EXPECT_FALSE(device.IsOpen());
}

TEST_F(SerialPortTest, AMissingOrForeignDeviceLeavesThePortUnopenedAndNamesThePath) {
    const char* devices[][2] = {
        {"/dev/ob-no-such-serial-port", "/dev/ob-no-such-serial-port: No such file or directory"},
        {"/dev/null", "/dev/null: not a serial device"},
    };
    for (const auto& device : devices) {
        SCOPED_TRACE(device[0]);
        m_statuses.clear();
        OB_SetComPortPath(7, device[0]);
        int before = OpenDescriptors();
        Run("o = comportopen(7, 9600)\n"
            "r = comportread(7)\n"
            "w = comportwrite(7, \"x\")\n"
            "c = comportclose(7)\n"
            "d = comportclose(7)\n");
        EXPECT_EQ(Number(u"o"), 1);   // reported as opened all the same
        EXPECT_EQ(TypeOf(u"r"), BVT_UNSET);
        EXPECT_EQ(TypeOf(u"w"), BVT_UNSET);
        EXPECT_EQ(Number(u"c"), 1);
        EXPECT_EQ(Number(u"d"), 0);
        EXPECT_EQ(m_statuses, std::vector<std::string> {std::string("COM7 ") + device[1]});
        EXPECT_TRUE(m_desktop.errors.empty());
        EXPECT_EQ(OpenDescriptors(), before);
    }
}

TEST_F(SerialPortTest, OpenTwiceCloseTwiceUseAfterClose) {
    int before = OpenDescriptors();
    Run("a = comportopen(1, 9600)\n"
        "b = comportopen(1, 4800)\n");   // the first device goes before the second comes
    EXPECT_EQ(OpenDescriptors(), before + 1);
    EXPECT_EQ(Number(u"b"), 1);
    Run("a = comportopen(1, 9600)\n"
        "b = comportopen(65537, 4800)\n");   // another number with the same key
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_EQ(m_statuses, std::vector<std::string> {"COM65537 /dev/ttyS65536: No such file or directory"});
    m_statuses.clear();
    Run("x = comportopen(1)\n"
        "c = comportclose(1)\n"
        "d = comportclose(1)\n"
        "r = comportread(1)\n"
        "w = comportwrite(1, \"x\")\n");
    EXPECT_EQ(Number(u"c"), 1);
    EXPECT_EQ(Number(u"d"), 0);
    EXPECT_EQ(TypeOf(u"r"), BVT_STRING);   // an unknown port reads ""
    EXPECT_EQ(TypeOf(u"w"), BVT_STRING);   // and writes "", not false
    EXPECT_EQ(Text(u"w"), "");
    EXPECT_EQ(OpenDescriptors(), before);
    Run("x = comportopen(1)\n");
    m_basic.reset();   // the interpreter closes what is still open
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(m_desktop.errors.empty());
}

TEST_F(SerialPortTest, WritesOver512CharactersSendNothing) {
    Run("x = comportopen(1)\n"
        "long = comportwrite(1, repeat(\"x\", 513))\n"
        "full = comportwrite(1, repeat(\"y\", 512))\n");
    EXPECT_EQ(Number(u"long"), 0);
    EXPECT_EQ(Number(u"full"), 1);
    EXPECT_EQ(m_pty.Receive(1000, 200), std::string(512, 'y'));
    EXPECT_TRUE(m_statuses.empty());   // a refused length is no device failure
}

TEST_F(SerialPortTest, AReceivedZeroByteEndsTheText) {
    Peer device([&] {
        if (m_pty.Receive(1, 3000) == "!") m_pty.Send(std::string("ab\0cd", 5));
    });
    Run("x = comportopen(1, 9600, 0, 0, 2000)\n"
        "x = comportwrite(1, \"!\")\n"
        "r = comportread(1)\n");
    EXPECT_EQ(Text(u"r"), "ab");
}

TEST_F(SerialPortTest, MissingArgumentsAreError24AndDeniedPortsError21) {
    Run("a = comportopen()\n"
        "b = comportwrite(1)\n"
        "c = comportread()\n");
    EXPECT_EQ(m_desktop.errors, (std::vector<int> {24, 24, 24}));
    m_desktop.errors.clear();
    m_basic = std::make_unique<COrvoBasic>();
    m_basic->SetCapabilities(OB_CAP_ALL & ~OB_CAP_SERIAL);
    m_dir.Write("denied.bas", "o = comportopen(1)\n");
    int before = OpenDescriptors();
    m_basic->ExecuteProgram(m_dir.WPath("denied.bas"));
    EXPECT_EQ(m_desktop.errors, std::vector<int> {21});
    EXPECT_EQ(OpenDescriptors(), before);
}

namespace {

// Runs the command-line runner with `options` on a one-line script; stdout
// and stderr together, and the exit status.
std::pair<std::string, int> RunRunner(const std::string& options, const std::string& script) {
    ob::test::TempDir dir;
    std::string path = dir.Write("s.bas", script);
    std::string command = std::string(OB_BUILD_DIR) + "/orvobasic --on-error=continue " + options + " " + path + " 2>&1";
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return {"", -1};
    char buffer[512];
    while (size_t n = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
    int status = pclose(pipe);
    return {output, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

}  // namespace

TEST(SerialRunnerTest, ComOptionMapsPortsAndFailuresNameTheDevice) {
    auto [output, status] = RunRunner("--com 4=ob-none --com=5=/dev/ob-nothing",
                                      "a = comportopen(4)\nb = comportopen(5)\nprint a\n");
    EXPECT_EQ(status, 0);   // the language reports no error for an unopened port
    EXPECT_EQ(output,
              "orvobasic: COM4: /dev/ob-none: No such file or directory\n"
              "orvobasic: COM5: /dev/ob-nothing: No such file or directory\n"
              "True\n");
    for (const char* bad : {"--com 0=/dev/ttyS0", "--com 4", "--com 4=", "--com x=/dev/ttyS0"})
        EXPECT_EQ(RunRunner(bad, "print 1\n").second, 64) << bad;
}
