#include "platform/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <thread>

extern char** environ;

namespace ob::platform {

bool IsExecutableFile(const std::string& path) {
    struct stat st {};
    return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && access(path.c_str(), X_OK) == 0;
}

// Searches PATH like execvp does; an empty PATH entry means the current directory.
std::string FindExecutable(const std::string& name) {
    if (name.empty()) return {};
    if (name.find('/') != std::string::npos) return IsExecutableFile(name) ? name : std::string();
    const char* env = std::getenv("PATH");
    std::string dirs = env ? env : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    for (;;) {
        size_t end = dirs.find(':', start);
        std::string dir = dirs.substr(start, end == std::string::npos ? std::string::npos : end - start);
        std::string candidate = (dir.empty() ? std::string(".") : dir) + "/" + name;
        if (IsExecutableFile(candidate)) return candidate;
        if (end == std::string::npos) return {};
        start = end + 1;
    }
}

namespace {

// Spawn attributes of a detached child: default signal actions, an empty
// signal mask, a process group of its own.
struct DetachedAttributes {
    posix_spawnattr_t attr;
    posix_spawn_file_actions_t actions;
    DetachedAttributes() {
        posix_spawnattr_init(&attr);
        sigset_t all, none;
        sigfillset(&all);
        sigemptyset(&none);
        posix_spawnattr_setsigdefault(&attr, &all);
        posix_spawnattr_setsigmask(&attr, &none);
        posix_spawnattr_setpgroup(&attr, 0);
        posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    ~DetachedAttributes() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attr);
    }
};

// Starts `argv[0]` (an existing executable path) and reaps it from a
// detached thread, so that no zombie is left and nobody waits in the caller.
bool SpawnDetached(const std::vector<std::string>& argv) {
    std::vector<char*> raw;
    for (const std::string& a : argv) raw.push_back(const_cast<char*>(a.c_str()));
    raw.push_back(nullptr);
    DetachedAttributes detached;
    pid_t pid = 0;
    if (posix_spawn(&pid, raw[0], &detached.actions, &detached.attr, raw.data(), environ) != 0) return false;
    std::thread([pid] {
        int status = 0;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }).detach();
    return true;
}

}  // namespace

bool ShellOpen(const std::string& path, const std::vector<std::string>& args) {
    if (path.empty()) return false;
    std::string program = FindExecutable(path);
    if (!program.empty()) {
        std::vector<std::string> argv{program};
        argv.insert(argv.end(), args.begin(), args.end());
        return SpawnDetached(argv);
    }
    std::string opener = FindExecutable("xdg-open");
    if (opener.empty()) return false;
    return SpawnDetached({opener, path});
}

}  // namespace ob::platform
