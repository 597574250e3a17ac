// orvobasic: runs a script file from the command line.
#include "ConsoleDesktop.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr int kExitOk = 0;
constexpr int kExitScriptErrors = 1;
constexpr int kExitNotLoaded = 2;
constexpr int kExitUsage = 64;

const char kUsage[] =
    "usage: orvobasic [options] SCRIPT\n"
    "\n"
    "Runs an OrvoBasic script. Printed text goes to stdout; each reported error\n"
    "goes to stderr as SCRIPT:LINE: error N: MESSAGE, followed by the source line.\n"
    "\n"
    "options:\n"
    "  --on-error=continue|abort|ask\n"
    "                 answer to error messages: go on with the next statement,\n"
    "                 end the run, or ask on the terminal (default: ask when\n"
    "                 stdin is a terminal, else abort)\n"
    "  --help         show this help and exit\n"
    "  --version      show the version and exit\n"
    "\n"
    "exit status: 0 no error reported, 1 at least one error reported,\n"
    "2 the script could not be loaded, 64 bad command line.\n";

struct Options {
    ob::runner::OnError onError = ob::runner::OnError::Abort;
    std::string script;
};

int UsageError(const char* what) {
    std::fprintf(stderr, "orvobasic: %s\n%s", what, kUsage);
    return kExitUsage;
}

// Parses the command line; returns -1 to go on, or an exit status.
int ParseOptions(int argc, char** argv, Options& options) {
    options.onError = isatty(STDIN_FILENO) ? ob::runner::OnError::Ask : ob::runner::OnError::Abort;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        if (std::strcmp(arg, "--help") == 0) {
            std::fputs(kUsage, stdout);
            return kExitOk;
        }
        if (std::strcmp(arg, "--version") == 0) {
            std::puts("orvobasic 1.0.0");
            return kExitOk;
        }
        if (std::strncmp(arg, "--on-error=", 11) == 0) {
            std::string mode = arg + 11;
            if (mode == "continue") options.onError = ob::runner::OnError::Continue;
            else if (mode == "abort") options.onError = ob::runner::OnError::Abort;
            else if (mode == "ask") options.onError = ob::runner::OnError::Ask;
            else return UsageError("--on-error takes continue, abort or ask");
            continue;
        }
        if (std::strcmp(arg, "--") == 0 && i + 1 < argc && options.script.empty()) {
            options.script = argv[++i];
            continue;
        }
        if (arg[0] == '-' && arg[1] != '\0') return UsageError((std::string("unknown option ") + arg).c_str());
        if (!options.script.empty()) return UsageError("only one script may be given");
        options.script = arg;
    }
    if (options.script.empty()) return UsageError("no script given");
    return -1;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    int status = ParseOptions(argc, argv, options);
    if (status >= 0) return status;

    ob::runner::ConsoleDesktop desktop(options.onError);
    ob::ui::SetDesktop(&desktop);
    bool loaded;
    {
        auto interpreter = std::make_unique<COrvoBasic>();
        loaded = interpreter->ExecuteProgram(CString::FromUtf8(options.script));
    }
    ob::ui::SetDesktop(nullptr);
    if (!loaded) return kExitNotLoaded;
    return desktop.ErrorCount() > 0 ? kExitScriptErrors : kExitOk;
}
