// orvobasic: runs a script file from the command line. A host of the library
// like any other: it creates the interpreter through the C API, sets the
// budgets, capabilities and trace hook the command line asks for, runs the
// script, sends it the events given on the command line, and keeps a
// resident script alive, running the message loop, until a signal, the
// resident timeout, or its timer stops. The first SIGINT/SIGTERM stops the
// script cleanly; a second one ends the process at once.
#include "ConsoleDesktop.h"
#include "Interactive.h"
#include "UsageText.h"

#include <orvobasic/desktop.h>
#include <orvobasic/orvobasic.h>

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
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
#include <utility>
#include <vector>

namespace {

constexpr int kExitOk = 0;
constexpr int kExitScriptErrors = 1;
constexpr int kExitNotLoaded = 2;
constexpr int kExitUsage = 64;
constexpr int kExitSignalled = 130;


struct Options {
    ob::runner::OnError onError = ob::runner::OnError::Abort;
    std::string script;                // a file, or "-" for standard input
    std::string statements;            // the -e lines, each ended by a line feed
    bool haveStatements = false;
    std::vector<std::string> scriptArgs;
    std::vector<std::string> events;   // NAME[,ARG...] as given
    int residentTimeoutMs = -1;        // -1: until a signal
    // host control: 0 means unlimited
    uint64_t maxSteps = 0;
    uint64_t timeoutMs = 0;
    uint64_t maxDepth = 0;
    uint64_t maxCells = 0;
    uint64_t maxMemory = 0;
    uint32_t allowed = OB_CAP_ALL;
    bool trace = false;
    std::string uiActions;             // action file, empty for none
    std::vector<std::pair<int32_t, std::string>> comPorts;   // --com N=PATH
    std::string keyFile;               // empty: the built-in key
    int32_t codePage = OB_CODEPAGE_1252;
};

// The capability each --deny name stands for.
struct CapabilityName {
    const char* name;
    uint32_t capability;
};

const CapabilityName kCapabilityNames[] = {
    {"files", OB_CAP_FILES},       {"process", OB_CAP_PROCESS}, {"native", OB_CAP_NATIVE},
    {"serial", OB_CAP_SERIAL},     {"automation", OB_CAP_AUTOMATION},
    {"dialogs", OB_CAP_DIALOGS},   {"sound", OB_CAP_SOUND},
};

// The budget options: "--NAME=" and where the value goes; seconds are
// stored as milliseconds.
struct BudgetOption {
    const char* prefix;
    uint64_t Options::*field;
    bool seconds;
};

const BudgetOption kBudgetOptions[] = {
    {"--max-steps=", &Options::maxSteps, false},
    {"--timeout=", &Options::timeoutMs, true},
    {"--max-depth=", &Options::maxDepth, false},
    {"--max-cells=", &Options::maxCells, false},
    {"--max-memory=", &Options::maxMemory, false},
};

// A bad command line: what is wrong, the usage line and where to read more.
int UsageError(const std::string& what) {
    std::fprintf(stderr,
                 "orvobasic: %s\nusage: orvobasic [options] SCRIPT [ARG...]\n"
                 "Try 'orvobasic --help' for more information.\n",
                 what.c_str());
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

// A count: decimal digits only; false for a sign, blanks or overflow.
bool ParseCount(const char* text, uint64_t& count) {
    if (!std::isdigit(static_cast<unsigned char>(*text))) return false;
    char* end = nullptr;
    errno = 0;
    unsigned long long value = std::strtoull(text, &end, 10);
    if (*end != '\0' || errno != 0) return false;
    count = value;
    return true;
}

// Seconds as milliseconds, rounded up so that a tiny timeout is not 0
// (unlimited); false for text that is not a number >= 0.
bool ParseSecondsMs(const char* text, uint64_t& ms) {
    char* end = nullptr;
    errno = 0;
    double seconds = std::strtod(text, &end);
    if (end == text || *end != '\0' || errno != 0 || !(seconds >= 0)) return false;
    double millis = std::ceil(seconds * 1000.0);
    ms = millis >= 1e18 ? static_cast<uint64_t>(1e18) : static_cast<uint64_t>(millis);
    return true;
}

// "--max-steps=N" and its kind; returns -1 to go on, an exit status, or -2
// when `arg` is not a budget option.
int ParseBudgetOption(const char* arg, Options& options) {
    for (const BudgetOption& option : kBudgetOptions) {
        size_t length = std::strlen(option.prefix);
        if (std::strncmp(arg, option.prefix, length) != 0) continue;
        uint64_t& target = options.*option.field;
        bool ok = option.seconds ? ParseSecondsMs(arg + length, target) : ParseCount(arg + length, target);
        if (!ok) return UsageError(std::string(option.prefix, length - 1) + " takes a number" +
                                   (option.seconds ? " of seconds" : ""));
        return -1;
    }
    return -2;
}

// "files,process,...": clears those capabilities; an unknown name is a usage error.
int ParseDenyList(const std::string& list, Options& options) {
    size_t start = 0;
    while (start <= list.size()) {
        size_t comma = std::min(list.find(',', start), list.size());
        std::string name = list.substr(start, comma - start);
        const CapabilityName* found = nullptr;
        for (const CapabilityName& entry : kCapabilityNames)
            if (name == entry.name) found = &entry;
        if (!found) return UsageError("--deny: unknown capability \"" + name + "\"");
        options.allowed &= ~found->capability;
        start = comma + 1;
    }
    return -1;
}

// "--codepage=1252|utf-8" (also "cp1252", "windows-1252", "utf8").
int ParseCodePage(const std::string& name, Options& options) {
    if (name == "1252" || name == "cp1252" || name == "windows-1252") options.codePage = OB_CODEPAGE_1252;
    else if (name == "utf-8" || name == "utf8") options.codePage = OB_CODEPAGE_UTF8;
    else return UsageError("--codepage takes 1252 or utf-8");
    return -1;
}

// The host-control options; returns -1 to go on, an exit status, or -2 when
// `arg` is none of them.
int ParseControlOption(const char* arg, Options& options) {
    int status = ParseBudgetOption(arg, options);
    if (status != -2) return status;
    if (std::strncmp(arg, "--deny=", 7) == 0) return ParseDenyList(arg + 7, options);
    if (std::strcmp(arg, "--sandbox") == 0) {
        options.allowed = OB_CAP_NONE;
        return -1;
    }
    if (std::strcmp(arg, "--trace") == 0) {
        options.trace = true;
        return -1;
    }
    if (std::strncmp(arg, "--codepage=", 11) == 0) return ParseCodePage(arg + 11, options);
    return -2;
}

// "N=PATH" of --com: N from 1, PATH not empty.
int ParseComOption(const std::string& text, Options& options) {
    size_t equals = text.find('=');
    uint64_t port = 0;
    if (equals == std::string::npos || equals + 1 == text.size() ||
        !ParseCount(text.substr(0, equals).c_str(), port) || port < 1 || port > INT32_MAX)
        return UsageError("--com needs N=PATH with a port number N from 1");
    options.comPorts.emplace_back(static_cast<int32_t>(port), text.substr(equals + 1));
    return -1;
}

// Handles one option; returns -1 to go on, or an exit status. `i` advances
// past an option's separate value.
int ParseOption(int argc, char** argv, int& i, Options& options) {
    const char* arg = argv[i];
    int control = ParseControlOption(arg, options);
    if (control != -2) return control;
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
    if (std::strcmp(arg, "--ui-actions") == 0 || std::strncmp(arg, "--ui-actions=", 13) == 0) {
        options.uiActions = arg[12] == '=' ? arg + 13 : (i + 1 < argc ? argv[++i] : "");
        if (options.uiActions.empty()) return UsageError("--ui-actions needs a file");
        return -1;
    }
    if (std::strncmp(arg, "--ui=", 5) == 0) {
        if (std::strcmp(arg + 5, "headless") != 0) return UsageError("--ui takes headless");
        return -1;
    }
    if (std::strcmp(arg, "--com") == 0 || std::strncmp(arg, "--com=", 6) == 0)
        return ParseComOption(arg[5] == '=' ? arg + 6 : (i + 1 < argc ? argv[++i] : ""), options);
    if (std::strcmp(arg, "--key-file") == 0 || std::strncmp(arg, "--key-file=", 11) == 0) {
        options.keyFile = arg[10] == '=' ? arg + 11 : (i + 1 < argc ? argv[++i] : "");
        if (options.keyFile.empty()) return UsageError("--key-file needs a path");
        return -1;
    }
    if (std::strncmp(arg, "--resident-timeout=", 19) == 0) {
        if (!ParseSeconds(arg + 19, options.residentTimeoutMs))
            return UsageError("--resident-timeout takes a number of seconds");
        return -1;
    }
    if (std::strncmp(arg, "--copydata-timeout=", 19) == 0) {
        int ms = 0;
        if (!ParseSeconds(arg + 19, ms) || ms < 1) return UsageError("--copydata-timeout takes a number of seconds");
        OB_SetCopyDataTimeout(ms);
        return -1;
    }
    return UsageError(std::string("unknown option ") + arg);
}

// Parses the command line; returns -1 to go on, or an exit status. Options
// come first; the script (a file, "-", or none after -e) ends them, and what
// follows it belongs to the script.
int ParseOptions(int argc, char** argv, Options& options, bool& interactive) {
    options.onError = isatty(STDIN_FILENO) ? ob::runner::OnError::Ask : ob::runner::OnError::Abort;
    int i = 1;
    for (; i < argc; ++i) {
        const char* arg = argv[i];
        if (std::strcmp(arg, "--") == 0) {
            ++i;
            break;
        }
        if (std::strcmp(arg, "-e") == 0) {
            if (i + 1 >= argc) return UsageError("-e needs the statements to run");
            options.statements += std::string(argv[++i]) + "\n";
            options.haveStatements = true;
            continue;
        }
        if (arg[0] != '-' || arg[1] == '\0') break;   // the script, or "-"
        int status = ParseOption(argc, argv, i, options);
        if (status >= 0) return status;
    }
    if (!options.haveStatements && i < argc) options.script = argv[i++];
    for (; i < argc; ++i) options.scriptArgs.emplace_back(argv[i]);
    interactive = !options.haveStatements && options.script.empty();
    if (interactive && !isatty(STDIN_FILENO)) return UsageError("no script given");
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
    CString wide = CString::FromUtf8(text);
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

// The script being run, for the signal handler, and the signals seen.
std::atomic<OB_HANDLE> g_running{nullptr};
std::atomic<int> g_signals{0};

// First signal: stop the script and leave the message loop. Second: exit.
extern "C" void OnSignal(int) {
    if (g_signals.fetch_add(1) > 0) _exit(kExitSignalled);
    OB_RequestStop(g_running.load());
    OB_QuitMessageLoop();
}

// SIGINT and SIGTERM go to OnSignal while it lives; the old handlers come back after.
class SignalGuard {
public:
    SignalGuard() {
        struct sigaction action {};
        action.sa_handler = OnSignal;
        sigemptyset(&action.sa_mask);
        sigaction(SIGINT, &action, &m_oldInt);
        sigaction(SIGTERM, &action, &m_oldTerm);
    }
    ~SignalGuard() {
        sigaction(SIGINT, &m_oldInt, nullptr);
        sigaction(SIGTERM, &m_oldTerm, nullptr);
    }
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

private:
    struct sigaction m_oldInt {}, m_oldTerm {};
};

// True once the run should not go on: a signal came, or a stop or budget ended it.
bool RunEnded(OB_HANDLE script) { return g_signals.load() > 0 || OB_GetRunResult(script) != OB_OK; }

// Keeps a resident script running: delivers its timer ticks until a signal,
// the timeout, a budget, or until it has no timer any more (then nothing
// could make it run again). The loop runs in slices so that a timer stopped
// by its own handler is noticed soon.
void StayResident(OB_HANDLE script, int timeoutMs) {
    constexpr int kSliceMs = 100;
    using Clock = std::chrono::steady_clock;
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(std::max(timeoutMs, 0));
    while (OB_HasTimer(script) && !RunEnded(script)) {
        int slice = kSliceMs;
        if (timeoutMs >= 0) {
            auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) break;
            slice = static_cast<int>(std::min<long long>(left, kSliceMs));
        }
        if (OB_RunMessageLoop(slice)) break;   // quit by a signal
    }
}

// --trace: one stderr line per statement.
extern "C" int32_t TraceLine(OB_HANDLE, const char* path, int32_t line, int32_t, void*) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s:%d: trace\n", path, static_cast<int>(line));
    return OB_CONTINUE;
}

// The whole of standard input, for "-".
std::string ReadStandardInput() {
    std::string bytes;
    char chunk[65536];
    size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, stdin)) > 0) bytes.append(chunk, n);
    return bytes;
}

// Loads and runs what the command line names: a file, standard input or -e.
bool LoadAndRun(OB_HANDLE script, const Options& options) {
    if (options.haveStatements)
        return OB_RunScriptText(script, "-e", options.statements.data(),
                                static_cast<int32_t>(options.statements.size())) != 0;
    if (options.script == "-") {
        std::string bytes = ReadStandardInput();
        return OB_RunScriptText(script, "-", bytes.data(), static_cast<int32_t>(bytes.size())) != 0;
    }
    return OB_RunScriptUtf8(script, options.script.c_str()) != 0;
}

// A serial port that failed: which one, its device and why.
extern "C" void ReportComPort(OB_HANDLE, int32_t port, const char* status, void*) {
    std::fflush(stdout);
    std::fprintf(stderr, "orvobasic: COM%d: %s\n", static_cast<int>(port), status);
}

// Makes the key in `path` the key of encrypted scripts; returns -1 to go
// on, or the usage status when the file cannot be read or holds no key.
int ApplyKeyFile(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return UsageError("--key-file: cannot read " + path);
    std::string key;
    char chunk[256];
    size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0 && key.size() <= 4096) key.append(chunk, n);
    std::fclose(f);
    if (!key.empty() && key.back() == '\n') {
        key.pop_back();
        if (!key.empty() && key.back() == '\r') key.pop_back();
    }
    if (key.empty() || key.size() > 56 ||
        !OB_SetScriptKey(reinterpret_cast<const uint8_t*>(key.data()), static_cast<int32_t>(key.size())))
        return UsageError("--key-file: the key must be 1 to 56 bytes");
    return -1;
}

// Hands the command line's budgets, capabilities and trace to the interpreter.
void ApplyControls(OB_HANDLE script, const Options& options) {
    int32_t depth = static_cast<int32_t>(std::min<uint64_t>(options.maxDepth, INT32_MAX));
    OB_SetBudgets(script, options.maxSteps, options.timeoutMs, depth, options.maxCells);
    OB_SetMaxMemory(script, options.maxMemory);
    OB_SetCapabilities(script, options.allowed);
    OB_SetCodePage(script, options.codePage);
    if (options.trace) OB_SetLineHook(script, TraceLine, nullptr);
    std::vector<const char*> args;
    for (const std::string& arg : options.scriptArgs) args.push_back(arg.c_str());
    OB_SetScriptArgumentsUtf8(script, static_cast<int32_t>(args.size()), args.data());
    for (const auto& [port, path] : options.comPorts) OB_SetComPortPath(port, path.c_str());
    OB_SetComPortStatusHandler(script, ReportComPort, nullptr);
}

// Runs the script, its command-line events and its resident life; false when
// it could not be loaded.
bool RunScript(OB_HANDLE script, const Options& options) {
    g_running.store(script);
    if (g_signals.load() > 0) OB_RequestStop(script);   // signalled before the script existed
    bool loaded = LoadAndRun(script, options);
    if (loaded) {
        for (const std::string& event : options.events)
            if (!RunEnded(script)) SendCommandLineEvent(event);
        if (OB_IsResident(script) && !RunEnded(script)) StayResident(script, options.residentTimeoutMs);
    }
    g_running.store(nullptr);
    return loaded;
}

}  // namespace

int main(int argc, char** argv) {
    // First of all, so that no signal finds the default action in place.
    SignalGuard signals;
    Options options;
    bool interactive = false;
    int status = ParseOptions(argc, argv, options, interactive);
    if (status >= 0) return status;
    if (interactive) options.onError = ob::runner::OnError::Continue;
    if (!options.keyFile.empty() && (status = ApplyKeyFile(options.keyFile)) >= 0) return status;

    ob::runner::ConsoleDesktop desktop(options.onError);
    ob::ui::SetDesktop(&desktop);
    if (!options.uiActions.empty()) {
        char reason[1024];
        if (!OB_LoadUiActionsFile(options.uiActions.c_str(), reason, sizeof reason)) {
            ob::ui::SetDesktop(nullptr);
            return UsageError(reason);
        }
    }
    OB_HANDLE script = OB_CreateScript();
    bool loaded = false;
    if (script) {
        ApplyControls(script, options);
        loaded = interactive ? (ob::runner::RunInteractive(script), true) : RunScript(script, options);
        OB_FreeScript(script);
    }
    ob::ui::SetDesktop(nullptr);
    if (!loaded) return kExitNotLoaded;
    if (interactive) return kExitOk;   // errors were shown and the session went on
    return desktop.ErrorCount() > 0 || desktop.UiActionsFailed() ? kExitScriptErrors : kExitOk;
}
