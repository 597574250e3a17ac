#include "platform/FindFiles.h"

#include <glob.h>

#include <algorithm>
#include <string>

namespace ob::platform {
namespace {

// Escapes what glob(3) would read as more than `*` and `?`: brackets and
// backslashes become literal characters.
std::string EscapeForGlob(const std::string& text, bool keepWildcards) {
    std::string out;
    out.reserve(text.size() * 2);
    for (char c : text) {
        bool wildcard = c == '*' || c == '?';
        if (c == '\\' || c == '[' || c == ']' || (wildcard && !keepWildcards)) out += '\\';
        out += c;
    }
    return out;
}

// Splits "dir/name" at the last slash; the directory keeps its slash.
void SplitPattern(const std::string& pattern, std::string& dir, std::string& name) {
    size_t slash = pattern.rfind('/');
    if (slash == std::string::npos) {
        dir.clear();
        name = pattern;
    } else {
        dir = pattern.substr(0, slash + 1);
        name = pattern.substr(slash + 1);
    }
}

}  // namespace

// Runs glob(3) on the escaped pattern and keeps the last path component of
// each hit, sorted by code point so the order does not depend on the locale.
std::vector<CString> FindFiles(const CString& pattern) {
    std::vector<CString> names;
    std::string dir, name;
    SplitPattern(pattern.ToUtf8(), dir, name);
    if (name.empty()) return names;
    if (name == "*.*") name = "*";
    std::string globPattern = EscapeForGlob(dir, false) + EscapeForGlob(name, true);
    glob_t found {};
    if (::glob(globPattern.c_str(), GLOB_NOSORT, nullptr, &found) == 0) {
        for (size_t i = 0; i < found.gl_pathc; ++i) {
            std::string path = found.gl_pathv[i];
            names.push_back(CString::FromUtf8(path.substr(dir.size())));
        }
    }
    ::globfree(&found);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace ob::platform
