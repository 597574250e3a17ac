// orvobasic: runs a script file from the command line. A host of the library
// like any other: it runs the script through the C API, sends it the events
// given on the command line, and keeps a resident script alive, running the
// message loop, until a signal, the resident timeout, or its timer stops.
#include "ConsoleDesktop.h"
#include "Utf8.h"

#include <orvobasic/desktop.h>
#include <orvobasic/orvobasic.h>

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

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
    "  --event NAME[,ARG...]\n"
    "                 after the main program, raise the event NAME in every live\n"
    "                 script with the arguments ARG (split at commas; an argument\n"
    "                 that reads as a number is passed as a number, any other as a\n"
    "                 string). Repeatable: events are sent in the order given.\n"
    "                 Also --event=NAME[,ARG...].\n"
    "  --resident-timeout=SECONDS\n"
    "                 how long a script that executed \"stayresident\" keeps\n"
    "                 running its timer and event handlers after the main program\n"
    "                 and the events (decimals allowed; default: until SIGINT or\n"
    "                 SIGTERM). It also ends as soon as the script has no timer\n"
    "                 running, since nothing could raise its events any more.\n"
    "  --help         show this help and exit\n"
    "  --version      show the version and exit\n"
    "\n"
    "A script that did not execute \"stayresident\" still receives the --event\n"
    "events, then ends. The script is freed last of all.\n"
    "\n"
    "exit status: 0 no error reported, 1 at least one error reported,\n"
    "2 the script could not be loaded, 64 bad command line.\n";

struct Options {
    ob::runner::OnError onError = ob::runner::OnError::Abort;
    std::string script;
    std::vector<std::string> events;   // NAME[,ARG...] as given
    int residentTimeoutMs = -1;        // -1: until a signal
};

int UsageError(const std::string& what) {
    std::fprintf(stderr, "orvobasic: %s\n%s", what.c_str(), kUsage);
    return kExitUsage;
}

// Seconds as milliseconds; false for text that is not a number >= 0.
bool ParseSeconds(const char* text, int& ms) {
    char* end = nullptr;
    errno = 0;
    double seconds = std::strtod(text, &end);
    if (end == text || *end != '\0' || errno != 0 || !(seconds >= 0)) return false;
    ms = seconds * 1000.0 >= INT_MAX ? INT_MAX : static_cast<int>(seconds * 1000.0);
    return true;
}

// Handles one option; returns -1 to go on, or an exit status. `i` advances
// past an option's separate value.
int ParseOption(int argc, char** argv, int& i, Options& options) {
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
        return -1;
    }
    if (std::strcmp(arg, "--event") == 0 || std::strncmp(arg, "--event=", 8) == 0) {
        std::string eventText = arg[7] == '=' ? arg + 8 : (i + 1 < argc ? argv[++i] : "");
        if (eventText.empty() || eventText[0] == ',') return UsageError("--event needs NAME[,ARG...]");
        options.events.push_back(eventText);
        return -1;
    }
    if (std::strncmp(arg, "--resident-timeout=", 19) == 0) {
        if (!ParseSeconds(arg + 19, options.residentTimeoutMs))
            return UsageError("--resident-timeout takes a number of seconds");
        return -1;
    }
    return UsageError(std::string("unknown option ") + arg);
}

// Parses the command line; returns -1 to go on, or an exit status.
int ParseOptions(int argc, char** argv, Options& options) {
    options.onError = isatty(STDIN_FILENO) ? ob::runner::OnError::Ask : ob::runner::OnError::Abort;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        if (std::strcmp(arg, "--") == 0 && i + 1 < argc && options.script.empty()) {
            options.script = argv[++i];
            continue;
        }
        if (arg[0] == '-' && arg[1] != '\0') {
            int status = ParseOption(argc, argv, i, options);
            if (status >= 0) return status;
            continue;
        }
        if (!options.script.empty()) return UsageError("only one script may be given");
        options.script = arg;
    }
    if (options.script.empty()) return UsageError("no script given");
    return -1;
}

// A decimal number: optional sign, digits with at most one point, optional
// exponent. "inf", "nan", hex and blanks are text.
bool LooksNumeric(const std::string& text, bool& integral) {
    size_t i = (!text.empty() && (text[0] == '+' || text[0] == '-')) ? 1 : 0;
    size_t digits = 0, points = 0;
    for (; i < text.size() && (std::isdigit(static_cast<unsigned char>(text[i])) || text[i] == '.'); ++i)
        text[i] == '.' ? ++points : ++digits;
    if (digits == 0 || points > 1) return false;
    integral = points == 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        integral = false;
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        size_t start = i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i;
        if (i == start) return false;
    }
    return i == text.size();
}

// One command-line event argument as a VARIANT: a 32-bit integer, a double,
// or a string. The caller clears it.
VARIANT ToVariant(const std::string& text) {
    VARIANT value;
    VariantInit(&value);
    bool integral = false;
    if (LooksNumeric(text, integral)) {
        double number = std::strtod(text.c_str(), nullptr);
        if (integral && number >= INT32_MIN && number <= INT32_MAX) {
            value.vt = VT_I4;
            value.lVal = static_cast<int32_t>(number);
        } else {
            value.vt = VT_R8;
            value.dblVal = number;
        }
        return value;
    }
    std::u16string wide = ob::runner::FromUtf8(text);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocStringLen(wide.c_str(), static_cast<uint32_t>(wide.size()));
    return value;
}

// Sends "NAME[,ARG...]" to every live script.
void SendCommandLineEvent(const std::string& eventText) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t comma; (comma = eventText.find(',', start)) != std::string::npos; start = comma + 1)
        parts.push_back(eventText.substr(start, comma - start));
    parts.push_back(eventText.substr(start));
    std::vector<VARIANT> args;
    for (size_t i = 1; i < parts.size(); ++i) args.push_back(ToVariant(parts[i]));
    OB_SendEventUtf8(nullptr, parts[0].c_str(), args.data(), static_cast<int32_t>(args.size()));
    for (VARIANT& v : args) VariantClear(&v);
}

extern "C" void QuitOnSignal(int) { OB_QuitMessageLoop(); }

// Keeps a resident script running: delivers its timer ticks until SIGINT,
// SIGTERM, the timeout, or until it has no timer any more (then nothing
// could make it run again). The loop runs in slices so that a timer stopped
// by its own handler is noticed soon.
void StayResident(OB_HANDLE script, int timeoutMs) {
    constexpr int kSliceMs = 100;
    struct sigaction action {};
    struct sigaction oldInt {}, oldTerm {};
    action.sa_handler = QuitOnSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, &oldInt);
    sigaction(SIGTERM, &action, &oldTerm);
    using Clock = std::chrono::steady_clock;
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(std::max(timeoutMs, 0));
    while (OB_HasTimer(script)) {
        int slice = kSliceMs;
        if (timeoutMs >= 0) {
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) break;
            slice = static_cast<int>(std::min<long long>(left, kSliceMs));
        }
        if (OB_RunMessageLoop(slice)) break;   // quit by a signal
    }
    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    int status = ParseOptions(argc, argv, options);
    if (status >= 0) return status;

    ob::runner::ConsoleDesktop desktop(options.onError);
    ob::ui::SetDesktop(&desktop);
    int32_t resident = 0;
    OB_HANDLE script = OB_ExecuteScriptFileUtf8(options.script.c_str(), &resident);
    if (script) {
        for (const std::string& event : options.events) SendCommandLineEvent(event);
        if (resident) StayResident(script, options.residentTimeoutMs);
        OB_FreeScript(script);
    }
    ob::ui::SetDesktop(nullptr);
    if (!script) return kExitNotLoaded;
    return desktop.ErrorCount() > 0 ? kExitScriptErrors : kExitOk;
}
