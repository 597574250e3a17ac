// The runner as a host: a resident script with a running timer lives until
// SIGINT or SIGTERM, then is freed and the runner exits normally.
#include <gtest/gtest.h>

#include "HostTestUtil.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace {

// Starts the runner on `script` with stdout going to `out`; returns its pid.
// `delayMs` holds the child back before it becomes the runner, as a loaded
// machine does.
pid_t StartRunner(const std::string& script, const std::string& out, int delayMs = 0) {
    pid_t pid = fork();
    if (pid == 0) {
        FILE* f = freopen(out.c_str(), "w", stdout);
        (void)f;
        if (delayMs > 0) usleep(static_cast<useconds_t>(delayMs) * 1000);
        std::string runner = std::string(OB_BUILD_DIR) + "/orvobasic";
        execl(runner.c_str(), runner.c_str(), "--on-error=continue", script.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    return pid;
}

// Waits up to five seconds; the exit status, or -1 when it did not end.
int WaitExit(pid_t pid) {
    for (int i = 0; i < 500; ++i) {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : -2;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return -1;
}

// The first line of `path`, once one has been written completely.
std::string FirstLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    return std::getline(in, line) && !in.eof() ? line : std::string();
}

// The readiness sign: the resident script's first tick is printed (the
// runner flushes every print), which it only does once its signal handlers
// are in place. Waits up to twenty seconds; false when the runner ended or
// never got there.
bool WaitUntilTicking(pid_t pid, const std::string& out) {
    for (int i = 0; i < 2000; ++i) {
        if (FirstLine(out) == "tick") return true;
        if (waitpid(pid, nullptr, WNOHANG) != 0) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

const char kTicking[] = "event create OnTimer, tick\ntimerstart 20\nstayresident\nend\n"
                        "function tick(u)\n  print \"tick\"\n  timerstop\n  timerstart 20\nendfunction\n";

// However late the runner starts, a signal sent once it is ticking ends it
// normally (exit 0), after the script printed.
TEST(ResidentRunner, SignalsEndAResidentScript) {
    ob::test::TempDir dir;
    std::string script = dir.Write("r.bas", kTicking);
    for (int delayMs : {0, 500})
        for (int sig : {SIGINT, SIGTERM}) {
            SCOPED_TRACE("signal " + std::to_string(sig) + " after a start delayed by " + std::to_string(delayMs));
            std::string out = dir.Path("out" + std::to_string(sig) + "-" + std::to_string(delayMs));
            pid_t pid = StartRunner(script, out, delayMs);
            ASSERT_TRUE(WaitUntilTicking(pid, out)) << "the runner never ticked";
            kill(pid, sig);
            EXPECT_EQ(WaitExit(pid), 0);
            EXPECT_EQ(FirstLine(out), "tick");
        }
}

}  // namespace
