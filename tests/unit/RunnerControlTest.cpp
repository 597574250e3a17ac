// The runner's host-control options as a process: the call chain under an
// error, --trace, --sandbox touching no file and starting no process, the
// option checks, and SIGINT/SIGTERM stopping a script.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A temporary directory holding a "work" directory (the runner's working
// directory, nothing else in it) and the captured streams beside it.
class Sandbox {
public:
    Sandbox() {
        std::string pattern = (fs::temp_directory_path() / "ob-runctl-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        m_root = pattern;
        fs::create_directory(Work());
    }
    ~Sandbox() {
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    fs::path Work() const { return m_root / "work"; }
    std::string Stream(const char* name) const { return (m_root / name).string(); }

    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(Work() / name, std::ios::binary) << text;
    }
    // A captured stream, without a sanitizer build's own "==N==WARNING:" notices.
    std::string Read(const char* stream) const {
        std::ifstream in(Stream(stream), std::ios::binary);
        std::string text, line;
        while (std::getline(in, line))
            if (line.rfind("==", 0) != 0 || line.find("==WARNING: ") == std::string::npos) text += line + "\n";
        EXPECT_EQ(text.find("==ERROR: "), std::string::npos) << text;   // a sanitizer report
        EXPECT_EQ(text.find(": runtime error: "), std::string::npos) << text;
        return text;
    }
    std::set<std::string> WorkEntries() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(Work())) names.insert(entry.path().filename().string());
        return names;
    }

    // Starts the runner in Work() with `args`; stdin is /dev/null.
    pid_t Start(const std::vector<std::string>& args) const {
        std::vector<std::string> store{std::string(OB_BUILD_DIR) + "/orvobasic"};
        store.insert(store.end(), args.begin(), args.end());
        std::vector<char*> argv;
        for (std::string& a : store) argv.push_back(a.data());
        argv.push_back(nullptr);
        std::string out = Stream("out"), err = Stream("err");
        pid_t pid = ::fork();
        if (pid == 0) {
            int in = ::open("/dev/null", O_RDONLY);
            int o = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            int e = ::open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            if (::chdir(Work().c_str()) != 0 || in < 0 || o < 0 || e < 0) ::_exit(127);
            ::dup2(in, 0);
            ::dup2(o, 1);
            ::dup2(e, 2);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        return pid;
    }

private:
    fs::path m_root;
};

// Waits for the process at most `seconds` (then kills it); its exit status,
// or -1 when it did not exit normally.
int Wait(pid_t pid, int seconds = 60) {
    int status = 0;
    auto deadline = Clock::now() + std::chrono::seconds(seconds);
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (Clock::now() > deadline) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            ADD_FAILURE() << "runner killed after " << seconds << " s";
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Waits until the runner has printed `text` (the script is running).
bool WaitForOutput(const Sandbox& box, const std::string& text) {
    auto deadline = Clock::now() + std::chrono::seconds(30);
    while (Clock::now() < deadline) {
        if (box.Read("out").find(text) != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

// Runs "s.bas" with `args` and waits for the runner.
int RunScript(const Sandbox& box, const std::string& text, std::vector<std::string> args) {
    box.Write("s.bas", text);
    args.push_back("s.bas");
    return Wait(box.Start(args));
}

TEST(RunnerControl, CallChainFollowsAnErrorInsideFunctions) {
    Sandbox box;
    int status = RunScript(box,
                           "call outer()\nend\nsub outer()\n  x = deep(3)\nendsub\n"
                           "function deep(n)\n  if n > 0 then\n    deep = deep(n - 1)\n    return\n  endif\n"
                           "  goto nowhere\nendfunction\n",
                           {"--on-error=abort"});
    EXPECT_EQ(status, 1);
    EXPECT_EQ(box.Read("err"),
              "s.bas:11: error 7: Duplicate label\n"
              "      goto nowhere\n"
              "           ^~~~~~~\n"
              "    no label \"nowhere\"\n"
              "    in deep, called at s.bas:8\n"
              "    (the call above 2 more times)\n"
              "    in deep, called at s.bas:4\n"
              "    in outer, called at s.bas:1\n");
}

TEST(RunnerControl, TraceWritesEachExecutedStatementsLine) {
    Sandbox box;
    int status = RunScript(box, "x = f(1)\nprint x\nend\nfunction f(n)\n  f = n\nendfunction\n", {"--trace"});
    EXPECT_EQ(status, 0);
    EXPECT_EQ(box.Read("out"), "1.000000\n");
    EXPECT_EQ(box.Read("err"), "s.bas:1: trace\ns.bas:5: trace\ns.bas:2: trace\ns.bas:3: trace\n");
}

// The same script creates files and starts a process without --sandbox (so
// the check below can see them) and leaves the directory as it was with it.
TEST(RunnerControl, SandboxTouchesNoFileAndStartsNoProcess) {
    const std::string script =
        "open \"opened.txt\" for output as 1 text\n"
        "n = writeline(1, \"x\")\nclose 1\n"
        "h = dbfcreate(\"table\", \"a\")\n"
        "runexe \"/usr/bin/touch\", \"marker\"\n"
        "run \"other.bas\"\n"
        "print \"after\"\n";
    const std::string other = "open \"from_other.txt\" for output as 1 text\nclose 1\n";
    const std::set<std::string> before{"s.bas", "other.bas"};
    for (bool sandboxed : {false, true}) {
        Sandbox box;
        box.Write("other.bas", other);
        std::vector<std::string> args{"--on-error=continue"};
        if (sandboxed) args.push_back("--sandbox");
        int status = RunScript(box, script, args);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));   // time for touch to have run
        EXPECT_EQ(box.Read("out"), "after\n");
        if (!sandboxed) {
            EXPECT_TRUE(box.WorkEntries().count("marker"));
            EXPECT_TRUE(box.WorkEntries().count("opened.txt"));
            EXPECT_TRUE(box.WorkEntries().count("from_other.txt"));
            continue;
        }
        EXPECT_EQ(status, 1);
        EXPECT_EQ(box.WorkEntries(), before);
        std::string err = box.Read("err");
        for (const char* report : {"s.bas:1: error 40", "s.bas:2: error 21", "s.bas:3: error 40",
                                   "s.bas:4: error 21", "s.bas:5: error 40", "s.bas:6: error 40"})
            EXPECT_NE(err.find(report), std::string::npos) << report << "\n" << err;
    }
}

TEST(RunnerControl, BadControlOptionsAreUsageErrors) {
    Sandbox box;
    box.Write("s.bas", "print 1\n");
    const char* bad[] = {"--max-steps=", "--max-steps=-1", "--max-steps=1.5", "--max-depth=x",
                         "--max-cells=99999999999999999999999", "--timeout=soon", "--timeout=-2",
                         "--deny=bogus", "--deny=files,", "--deny="};
    for (const char* option : bad) EXPECT_EQ(Wait(box.Start({option, "s.bas"})), 64) << option;
    EXPECT_EQ(Wait(box.Start({"--deny=files,sound", "--max-steps=0", "--timeout=0.5", "s.bas"})), 0);
    EXPECT_EQ(Wait(box.Start({"--help"})), 0);
    for (const char* option : {"--max-steps", "--timeout", "--max-depth", "--max-cells", "--deny", "--sandbox",
                               "--trace"})
        EXPECT_NE(box.Read("out").find(option), std::string::npos) << option;
}

TEST(RunnerControl, FirstSignalStopsTheScriptCleanly) {
    for (int signal : {SIGINT, SIGTERM}) {
        Sandbox box;
        box.Write("s.bas", "print \"started\"\ndo while 1 = 1\nloop\n");
        pid_t pid = box.Start({"s.bas"});
        ASSERT_TRUE(WaitForOutput(box, "started"));
        ::kill(pid, signal);
        EXPECT_EQ(Wait(pid), 1);
        std::string err = box.Read("err");
        EXPECT_NE(err.find("error 101: Script stopped by the host\n"), std::string::npos) << err;
    }
}

// Both signals are made pending while the runner is held, so the second
// arrives before the first stop could end the run.
TEST(RunnerControl, SecondSignalExitsAt130) {
    Sandbox box;
    box.Write("s.bas", "print \"started\"\ndo while 1 = 1\nloop\n");
    pid_t pid = box.Start({"s.bas"});
    ASSERT_TRUE(WaitForOutput(box, "started"));
    ::kill(pid, SIGSTOP);
    ::kill(pid, SIGINT);
    ::kill(pid, SIGTERM);
    ::kill(pid, SIGCONT);
    EXPECT_EQ(Wait(pid), 130);
}

TEST(RunnerControl, SignalEndsAResidentScript) {
    Sandbox box;
    box.Write("s.bas",
              "event create OnTimer, tick\ntimerstart 20\nprint \"started\"\nstayresident\nend\n"
              "function tick(unset)\nendfunction\n");
    pid_t pid = box.Start({"s.bas"});
    ASSERT_TRUE(WaitForOutput(box, "started"));
    auto sent = Clock::now();
    ::kill(pid, SIGINT);
    int status = Wait(pid, 10);
    EXPECT_TRUE(status == 0 || status == 1) << status;   // 1 when the signal landed inside a tick
    EXPECT_LT(std::chrono::duration<double>(Clock::now() - sent).count(), 2.0);
}

}  // namespace
