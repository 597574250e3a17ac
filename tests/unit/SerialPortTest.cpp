// Serial ports on pseudo-terminal pairs: the script opens the slave side
// through a port mapping, a peer thread plays the device on the master side.
#include "HostTestUtil.h"

#include "io/SerialPorts.h"
#include "platform/SerialBaud.h"
#include "platform/SerialDevice.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A pseudo-terminal pair. The test keeps its own slave descriptor, so the
// line does not hang up between runs and its settings can be read back.
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
    const std::string& SlavePath() const { return m_name; }
    termios SlaveSettings() const {
        termios t {};
        tcgetattr(m_slave, &t);
        return t;
    }
    uint32_t SlaveBaud() const { return ob::platform::CurrentBaud(m_slave); }
    void CloseMaster() {
        if (m_master >= 0) ::close(m_master);
        m_master = -1;
    }
    // The device's side: what the script sent, until `count` bytes came or
    // the line stayed quiet for `ms`.
    std::string Receive(size_t count, int ms) const {
        std::string got;
        char buffer[8192];
        pollfd p {m_master, POLLIN, 0};
        while (got.size() < count && poll(&p, 1, ms) > 0 && (p.revents & POLLIN)) {
            ssize_t n = ::read(m_master, buffer, sizeof buffer);
            if (n <= 0) break;
            got.append(buffer, static_cast<size_t>(n));
        }
        return got;
    }
    void Send(const std::string& bytes) const {
        for (size_t sent = 0; sent < bytes.size();) {
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

// Port 1 is the pty's slave. Each Run uses a fresh interpreter that stays
// alive afterwards, so its variables and ports can be inspected.
class SerialPortTest : public ob::test::InterpreterTest {
protected:
    void SetUp() override {
        InterpreterTest::SetUp();
        OB_SetComPortPath(1, m_pty.SlavePath().c_str());
    }
    void TearDown() override {
        OB_SetComPortPath(1, nullptr);
        OB_SetComPortPath(7, nullptr);
        InterpreterTest::TearDown();
    }
    void Run(const std::string& source) {
        m_dir.Write("script.bas", source);
        m_basic = std::make_unique<COrvoBasic>();
        OB_SetComPortStatusHandler(m_basic.get(), RecordStatus, &m_statuses);
        m_basic->ExecuteProgram(m_dir.WPath("script.bas"));
    }
    CBasicVariable Var(const char16_t* name) {
        CString key = name;
        CBasicVariable* v = m_basic->FindVariable(key);
        return v ? *v : CBasicVariable();
    }
    std::string Text(const char16_t* name) { return Var(name).GetStringValue().ToUtf8(); }
    double Number(const char16_t* name) { return Var(name).GetNumberValue(); }

    PtyPair m_pty;
    ob::test::TempDir m_dir;
    std::vector<std::string> m_statuses;
};

}  // namespace

TEST_F(SerialPortTest, TextTravelsInTheCodePageAndOverlongWritesSendNothing) {
    std::string echoed, rest;
    std::thread peer([&] {
        echoed = m_pty.Receive(8, 3000);
        m_pty.Send(echoed + std::string("\0tail", 5));   // a zero byte ends the text
        rest = m_pty.Receive(10000, 500);
    });
    Run("x = comportopen(1, 9600, 0, 0, 3000)\n"
        "w = comportwrite(1, \"h\xE9llo \x80!\")\n"
        "r = comportread(1)\n"
        "long = comportwrite(1, repeat(\"x\", 513))\n"
        "x = comportwrite(1, \"end\")\n");
    peer.join();
    EXPECT_EQ(echoed, "h\xE9llo \x80!");   // one byte per character, Windows-1252
    EXPECT_EQ(Number(u"w"), 1);
    EXPECT_EQ(Text(u"r"), "h\xC3\xA9llo \xE2\x82\xAC!");
    EXPECT_EQ(Number(u"long"), 0);
    EXPECT_EQ(rest, "end");
    EXPECT_TRUE(m_statuses.empty());
}

TEST_F(SerialPortTest, AUtf8InterpreterSendsAndReadsUtf8) {
    std::string echoed;
    std::thread peer([&] {
        echoed = m_pty.Receive(5, 3000);
        m_pty.Send(echoed);
    });
    m_dir.Write("script.bas", "x = comportopen(1, 9600, 0, 0, 3000)\n"
                              "w = comportwrite(1, \"\xC3\xA9\xE2\x82\xAC\")\n"   // UTF-8 script text
                              "r = comportread(1)\n");
    m_basic = std::make_unique<COrvoBasic>();
    m_basic->SetCodePage(ob::CodePage::Utf8);
    m_basic->ExecuteProgram(m_dir.WPath("script.bas"));
    peer.join();
    EXPECT_EQ(echoed, "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(Number(u"w"), 1);
    EXPECT_EQ(Text(u"r"), "\xC3\xA9\xE2\x82\xAC");
}

TEST_F(SerialPortTest, BurstsArriveWholeAndInOrderAtMost4097BytesPerRead) {
    const std::string sent = Pattern(5000);
    std::thread peer([&] {
        if (m_pty.Receive(1, 3000) != "!") return;
        for (size_t at = 0; at < sent.size(); at += 700) {
            m_pty.Send(sent.substr(at, 700));
            std::this_thread::sleep_for(milliseconds(30));
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
    peer.join();
    EXPECT_TRUE(Text(u"all") == sent) << Text(u"all").size() << " bytes";
    EXPECT_LE(Number(u"most"), 4097);
    EXPECT_GT(Number(u"reads"), 1);   // the pauses split the stream
}

TEST_F(SerialPortTest, OneReadTakes4097BytesOfFiveThousandWaiting) {
    const std::string sent = Pattern(5000);
    std::thread peer([&] {
        if (m_pty.Receive(1, 3000) == "!") m_pty.Send(sent);
    });
    Run("x = comportopen(1, 9600, 0, 0, 2000)\n"
        "x = comportwrite(1, \"!\")\n"
        "a = comportread(1)\n"
        "b = comportread(1)\n");
    peer.join();
    EXPECT_EQ(Text(u"a").size(), 4097u);
    EXPECT_TRUE(Text(u"a") + Text(u"b") == sent);
}

TEST_F(SerialPortTest, ASilentDeviceMakesReadsTimeOut) {
    auto start = Clock::now();
    Run("x = comportopen(1, 9600, 0, 0, 300)\n"
        "r = comportread(1)\n");
    EXPECT_GE(Clock::now() - start, milliseconds(300));
    EXPECT_LT(Clock::now() - start, milliseconds(8000));
    EXPECT_EQ(Var(u"r").GetType(), BVT_STRING);
    EXPECT_EQ(Text(u"r"), "");

    start = Clock::now();   // a time-out below 10 ms is 10 ms
    Run("x = comportopen(1, 9600, 0, 0, 0)\n"
        "for i = 1 to 20\n"
        "  r = comportread(1)\n"
        "next\n");
    EXPECT_GE(Clock::now() - start, milliseconds(200));
}

TEST_F(SerialPortTest, ALostDeviceReadsNothingAtOnceAndFailsWrites) {
    std::thread peer([&] {
        if (m_pty.Receive(1, 3000) == "!") m_pty.CloseMaster();
    });
    auto start = Clock::now();
    Run("x = comportopen(1, 9600, 0, 0, 5000)\n"
        "x = comportwrite(1, \"!\")\n"
        "r = comportread(1)\n"
        "w = comportwrite(1, \"more\")\n"
        "c = comportclose(1)\n");
    peer.join();
    EXPECT_LT(Clock::now() - start, milliseconds(4000));   // not the whole time-out
    EXPECT_EQ(Var(u"r").GetType(), BVT_STRING);
    EXPECT_EQ(Text(u"r"), "");
    EXPECT_EQ(Var(u"w").GetType(), BVT_NUMBER);
    EXPECT_EQ(Number(u"w"), 0);
    EXPECT_EQ(Number(u"c"), 1);
    EXPECT_EQ(m_statuses, std::vector<std::string> {"COM1 " + m_pty.SlavePath() + ": Input/output error"});
}

TEST_F(SerialPortTest, SettingsReadBackFromTheLine) {
    struct Case {
        const char* args;
        uint32_t baud;
        tcflag_t size, parity;
        bool twoStops;
    };
    const Case cases[] = {
        {"1", 4800, CS8, 0, false},
        {"1, 9600, 2", 9600, CS7, PARENB, false},
        {"1, 19200, 1, 2", 19200, CS7, PARENB | PARODD, true},
        {"1, 0, 3", 4800, CS7, PARENB | PARODD | CMSPAR, false},
        {"1, -300, 4, 0", 4800, CS7, PARENB | CMSPAR, false},
        {"1, 115200.9, 0, 2", 115200, CS8, 0, true},
        {"1, 31250", 31250, CS8, 0, false},   // no termios constant: termios2
    };
    // A pseudo-terminal always keeps 8 data bits without parity, so size
    // and parity enable are checked on what was composed for it.
    const tcflag_t kPtyKeeps = PARODD | CMSPAR | CSTOPB;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        Run(std::string("o = comportopen(") + c.args + ")\n");
        EXPECT_EQ(Number(u"o"), 1);
        termios t = m_pty.SlaveSettings(), composed = t;
        ASSERT_NE(m_basic->COMPortFind(1), nullptr);
        EXPECT_TRUE(ob::platform::ComposeTermios(composed, m_basic->COMPortFind(1)->Settings()));
        EXPECT_EQ(composed.c_cflag & CSIZE, c.size);
        EXPECT_EQ(composed.c_cflag & (PARENB | PARODD | CMSPAR), c.parity);
        EXPECT_EQ(t.c_cflag & kPtyKeeps, composed.c_cflag & kPtyKeeps);
        EXPECT_EQ((t.c_cflag & CSTOPB) != 0, c.twoStops);
        EXPECT_EQ(m_pty.SlaveBaud(), c.baud);
        EXPECT_EQ(t.c_cflag & (CREAD | CLOCAL), tcflag_t(CREAD | CLOCAL));
        EXPECT_EQ(t.c_lflag & (ICANON | ECHO | ISIG), 0u);
        EXPECT_EQ(t.c_iflag & (ICRNL | IXON | IXOFF | INPCK), 0u);
        EXPECT_EQ(t.c_oflag & OPOST, 0u);
    }
    EXPECT_TRUE(m_statuses.empty());

    // What the line cannot take changes nothing; the port stays open and the
    // status says why.
    Run("o = comportopen(1, 19200, 9)\n"
        "r = comportread(1)\n"
        "p = comportopen(1, 19200, 0, 1)\n");
    EXPECT_EQ(Var(u"r").GetType(), BVT_STRING);   // open: the read ran
    EXPECT_EQ(m_pty.SlaveBaud(), 31250u);
    EXPECT_EQ(m_statuses, (std::vector<std::string> {
                              "COM1 " + m_pty.SlavePath() + ": parity 9 is not 0 to 4",
                              "COM1 " + m_pty.SlavePath() + ": one and a half stop bits need 5 data bits"}));
}

TEST(SerialDeviceTest, FlowControlMapsToTermios) {
    PtyPair pty;
    ob::platform::SerialDevice device;
    ASSERT_TRUE(device.Open(pty.SlavePath()));
    ob::platform::SerialSettings s;
    s.flow = ob::platform::kFlowCtsRts | ob::platform::kFlowXonXoff;
    ASSERT_TRUE(device.Apply(s)) << device.LastError();
    termios t = pty.SlaveSettings();
    EXPECT_NE(t.c_cflag & CRTSCTS, 0u);
    EXPECT_EQ(t.c_iflag & (IXON | IXOFF), tcflag_t(IXON | IXOFF));
    EXPECT_EQ(t.c_cc[VSTART], 17);
    EXPECT_EQ(t.c_cc[VSTOP], 19);
    s.flow = ob::platform::kFlowDsrDtr;   // termios has no DSR handshake
    EXPECT_FALSE(device.Apply(s));
    EXPECT_NE(pty.SlaveSettings().c_cflag & CRTSCTS, 0u);   // nothing changed
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
            "w = comportwrite(7, \"x\")\n");
        EXPECT_EQ(Number(u"o"), 1);   // reported as opened all the same
        EXPECT_EQ(Var(u"r").GetType(), BVT_UNSET);
        EXPECT_EQ(Var(u"w").GetType(), BVT_UNSET);
        EXPECT_EQ(m_statuses, std::vector<std::string> {std::string("COM7 ") + device[1]});
        char status[256];
        EXPECT_EQ(OB_GetComPortStatusUtf8(m_basic.get(), 7, status, sizeof status),
                  static_cast<int32_t>(std::strlen(device[1])));
        EXPECT_STREQ(status, device[1]);
        EXPECT_EQ(OpenDescriptors(), before);
    }
}

TEST_F(SerialPortTest, ReopeningClosesTheOldDeviceFirstAndTheInterpreterClosesTheRest) {
    int before = OpenDescriptors();
    Run("a = comportopen(1, 9600)\n"
        "b = comportopen(1, 4800)\n");
    EXPECT_EQ(OpenDescriptors(), before + 1);
    Run("a = comportopen(1, 9600)\n"
        "b = comportopen(65537, 4800)\n");   // another number, the same key
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_EQ(m_statuses, std::vector<std::string> {"COM65537 /dev/ttyS65536: No such file or directory"});
    Run("a = comportopen(1)\n"
        "c = comportclose(1)\n"
        "d = comportclose(1)\n");
    EXPECT_EQ(Number(u"c"), 1);
    EXPECT_EQ(Number(u"d"), 0);
    EXPECT_EQ(OpenDescriptors(), before);
    Run("a = comportopen(1)\n");
    m_basic.reset();
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST(SerialRunnerTest, ComOptionMapsPortsAndFailuresNameTheDevice) {
    ob::test::TempDir dir;
    auto run = [&](const std::string& options, std::string& output) {
        std::string command = std::string(OB_BUILD_DIR) + "/orvobasic --on-error=continue " + options + " " +
                              dir.Write("s.bas", "a = comportopen(4)\nb = comportopen(5)\nprint a\n") + " 2>&1";
        FILE* pipe = popen(command.c_str(), "r");
        char buffer[512];
        while (size_t n = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
        int status = pclose(pipe);
        // A sanitizer build announces itself on stderr ("==PID==WARNING ..."); that is not the runner's text.
        for (size_t at; (at = output.find("==")) != std::string::npos && (at == 0 || output[at - 1] == '\n');)
            output.erase(at, output.find('\n', at) + 1 - at);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    std::string output;
    EXPECT_EQ(run("--com 4=ob-none --com=5=/dev/ob-nothing", output), 0);
    EXPECT_EQ(output,
              "orvobasic: COM4: /dev/ob-none: No such file or directory\n"
              "orvobasic: COM5: /dev/ob-nothing: No such file or directory\n"
              "True\n");
    for (const char* bad : {"--com 0=/dev/ttyS0", "--com 4", "--com 4=", "--com x=/dev/ttyS0"})
        EXPECT_EQ(run(bad, output), 64) << bad;
}
