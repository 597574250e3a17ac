#include "Interactive.h"

#include <editline/readline.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace ob::runner {

namespace {

const char kName[] = "<interactive>";
const char kPrompt[] = "ob> ";
const char kContinuation[] = "... ";

// Words that open a block at the start of a line, and words that close one.
const char* const kOpeners[] = {"if", "for", "do", "function", "sub", "type", "dialog", "propertysheet", "alter"};
const char* const kClosers[] = {"endif", "next", "loop", "endfunction", "endsub", "endtype", "enddialog", "endalter"};

bool IsOneOf(const std::string& word, const char* const* words, size_t count) {
    for (size_t i = 0; i < count; ++i)
        if (word == words[i]) return true;
    return false;
}

// The line's words in lower case, without strings and the comment.
std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool inString = false;
    for (char c : line) {
        if (c == '"') inString = !inString;
        if (!inString && c == '#') break;
        if (!inString && (std::isalnum(static_cast<unsigned char>(c)) || c == '_')) {
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            continue;
        }
        if (!word.empty()) words.push_back(word);
        word.clear();
    }
    if (!word.empty()) words.push_back(word);
    return words;
}

void PrintVariable(const char* name, const char* value, int32_t count, void*) {
    if (count > 1)
        std::printf("%s[%d] = %s ...\n", name, static_cast<int>(count), value);
    else
        std::printf("%s = %s\n", name, value);
}

// Runs the text of a file in the session.
void LoadFile(OB_HANDLE script, const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return;
    }
    std::stringstream text;
    text << in.rdbuf();
    std::string bytes = text.str();
    OB_ExecuteInteractive(script, kName, bytes.data(), static_cast<int32_t>(bytes.size()));
}

// A ":" command; false for :quit.
bool RunCommand(OB_HANDLE script, const std::string& line) {
    std::string command = line.substr(0, line.find(' '));
    std::string argument = line.size() > command.size() ? line.substr(command.size() + 1) : std::string();
    if (command == ":quit" || command == ":q") return false;
    if (command == ":vars") OB_ListVariablesUtf8(script, PrintVariable, nullptr);
    else if (command == ":load" && !argument.empty()) LoadFile(script, argument);
    else std::printf(":load FILE   run a file in this session\n:vars        list the variables\n"
                     ":quit        leave (so does end of input)\n");
    std::fflush(stdout);
    return true;
}

}  // namespace

int BlockBalance(const std::string& line) {
    std::vector<std::string> words = Words(line);
    int balance = 0;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& w = words[i];
        if (w == "if") ++balance;   // "if" may follow "then" on the same line
        else if (i == 0 && IsOneOf(w, kOpeners, std::size(kOpeners))) ++balance;
        else if (IsOneOf(w, kClosers, std::size(kClosers))) --balance;
    }
    return balance;
}

void RunInteractive(OB_HANDLE script) {
    std::printf("OrvoBasic interactive session; :help for commands, :quit to leave.\n");
    std::fflush(stdout);
    std::string pending;
    int depth = 0;
    for (;;) {
        char* raw = readline(pending.empty() ? kPrompt : kContinuation);
        if (!raw) break;
        std::string line = raw;
        std::free(raw);
        if (!line.empty()) add_history(line.c_str());
        if (pending.empty() && !line.empty() && line[0] == ':') {
            if (!RunCommand(script, line)) break;
            continue;
        }
        pending += line + "\n";
        depth += BlockBalance(line);
        if (depth > 0) continue;
        OB_ExecuteInteractive(script, kName, pending.data(), static_cast<int32_t>(pending.size()));
        std::fflush(stdout);
        pending.clear();
        depth = 0;
    }
    std::printf("\n");
}

}  // namespace ob::runner
