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
pid_t StartRunner(const std::string& script, const std::string& out) {
    pid_t pid = fork();
    if (pid == 0) {
        FILE* f = freopen(out.c_str(), "w", stdout);
        (void)f;
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

TEST(ResidentRunner, SignalsEndAResidentScript) {
    ob::test::TempDir dir;
    std::string script = dir.Write("r.bas", "event create OnTimer, tick\ntimerstart 20\nstayresident\nend\n"
                                            "function tick(u)\n  print \"tick\"\n  timerstop\n"
                                            "  timerstart 20\nendfunction\n");
    for (int sig : {SIGINT, SIGTERM}) {
        std::string out = dir.Path("out" + std::to_string(sig));
        pid_t pid = StartRunner(script, out);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        ASSERT_EQ(waitpid(pid, nullptr, WNOHANG), 0) << "the runner ended before the signal";
        kill(pid, sig);
        EXPECT_EQ(WaitExit(pid), 0);
        std::ifstream in(out);
        std::string first;
        std::getline(in, first);
        EXPECT_EQ(first, "tick");
    }
}

}  // namespace
