// "run" and "runexe": programs start with their parameters as one argument,
// other files go to xdg-open, children are reaped, and "run" shares nothing.
#include <gtest/gtest.h>

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/orvobasic.h>

#include "HostTestUtil.h"
#include "platform/Process.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

using ob::test::ScopedDesktop;
using ob::test::TempDir;

// Waits up to two seconds for a file that a child process writes.
std::string WaitForFile(const std::string& path) {
    for (int i = 0; i < 200; ++i) {
        std::ifstream in(path);
        std::stringstream text;
        text << in.rdbuf();
        if (text.str().find("end") != std::string::npos) return text.str();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return "(timeout)";
}

// A shell script that writes its argument count and arguments to OUT, then "end".
std::string ArgRecorder(const TempDir& dir, const std::string& name) {
    std::string path = dir.Write(name, "#!/bin/sh\n{ echo $#; for a in \"$@\"; do echo \"[$a]\"; done; echo end; } > \"" +
                                           dir.Path(name + ".out") + "\"\n");
    chmod(path.c_str(), 0755);
    return path;
}

// Zombie children of this process, from /proc.
int ZombieChildren() {
    int zombies = 0;
    DIR* proc = opendir("/proc");
    while (dirent* entry = proc ? readdir(proc) : nullptr) {
        std::ifstream stat(std::string("/proc/") + entry->d_name + "/stat");
        std::string line;
        if (!std::getline(stat, line)) continue;
        size_t close = line.rfind(')');
        if (close == std::string::npos) continue;
        char state = 0;
        int ppid = 0;
        std::istringstream(line.substr(close + 2)) >> state >> ppid;
        if (state == 'Z' && ppid == getpid()) ++zombies;
    }
    if (proc) closedir(proc);
    return zombies;
}

class RunStatements : public ::testing::Test {
protected:
    void RunScript(const std::string& text) {
        OB_FreeScript(OB_ExecuteScriptFileUtf8(dir.Write("main.bas", text).c_str(), nullptr));
    }
    TempDir dir;
    ScopedDesktop desktop;
};

TEST_F(RunStatements, RunexeParametersAreOneArgument) {
    std::string prog = ArgRecorder(dir, "prog.sh");
    RunScript("runexe \"" + prog + "\", \"a b\"\nprint \"went on\"\n");
    EXPECT_EQ(WaitForFile(prog + ".out"), "1\n[a b]\nend\n");
    EXPECT_EQ(desktop.Printed(), std::vector<std::string>({"went on"}));

    std::string bare = ArgRecorder(dir, "bare.sh");
    RunScript("runexe \"" + bare + "\"\n");
    EXPECT_EQ(WaitForFile(bare + ".out"), "0\nend\n");
    EXPECT_TRUE(desktop.Errors().empty());
}

TEST_F(RunStatements, OtherFilesGoToXdgOpen) {
    TempDir bin;
    ArgRecorder(bin, "xdg-open");
    std::string document = dir.Write("notes.txt", "text");
    std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    setenv("PATH", (bin.Path("") + ":" + oldPath).c_str(), 1);
    RunScript("runexe \"" + document + "\", \"ignored\"\n");
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_EQ(WaitForFile(bin.Path("xdg-open.out")), "1\n[" + document + "]\nend\n");
    EXPECT_TRUE(desktop.Errors().empty());   // "runexe" reports nothing, whatever happens
}

TEST_F(RunStatements, ChildrenAreReaped) {
    RunScript("runexe \"/bin/true\"\nrunexe \"true\"\n");
    int zombies = 1;
    for (int i = 0; i < 100 && zombies > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        zombies = ZombieChildren();
    }
    EXPECT_EQ(zombies, 0);
}

TEST_F(RunStatements, WithoutOperandNothingHappens) {
    RunScript("runexe\nrun # nothing\nprint \"next\"\n");
    EXPECT_EQ(desktop.Printed(), std::vector<std::string>({"next"}));
    EXPECT_TRUE(desktop.Errors().empty());
}

TEST_F(RunStatements, RunSharesNothingAndReportsAMissingScript) {
    std::string inner = dir.Write("inner.bas", "global g\ng = 5\nprint \"inner\"\nend\n");
    RunScript("g = 1\nrun \"" + inner + "\"\nprint g\nrun \"" + dir.Path("none.bas") + "\"\nprint \"after\"\n");
    EXPECT_EQ(desktop.Printed(), std::vector<std::string>({"inner", "1.000000", "after"}));
    ASSERT_EQ(desktop.Errors().size(), 1u);
    EXPECT_EQ(desktop.Errors()[0].rfind("Not enough memory to load source file", 0), 0u);
}

TEST(Process, FindExecutableSearchesPath) {
    EXPECT_EQ(ob::platform::FindExecutable("sh").empty(), false);
    EXPECT_EQ(ob::platform::FindExecutable("/bin/sh"), "/bin/sh");
    EXPECT_EQ(ob::platform::FindExecutable("/etc/hostname-none"), "");
    EXPECT_EQ(ob::platform::FindExecutable(""), "");
    EXPECT_FALSE(ob::platform::IsExecutableFile("/etc"));
    EXPECT_FALSE(ob::platform::ShellOpen("", {}));
}

}  // namespace
