// Opening shared libraries by the names scripts give them (see DynamicLibrary.h).
#include "platform/DynamicLibrary.h"

#include <dlfcn.h>
#include <glob.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace ob::platform {

namespace {

constexpr std::string_view kDllSuffix = ".dll";

bool EndsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

// "libm.so.6" and "libm.so" -> "libm"; anything else unchanged.
std::string_view WithoutSoSuffix(std::string_view name) {
    size_t so = name.rfind(".so");
    if (so == std::string_view::npos || so == 0) return name;
    std::string_view rest = name.substr(so + 3);
    bool versionOnly = std::all_of(rest.begin(), rest.end(), [](char c) { return c == '.' || (c >= '0' && c <= '9'); });
    return versionOnly && (rest.empty() || rest[0] == '.') ? name.substr(0, so) : name;
}

// The library stem of a bare name: "m" -> "libm", "libm.so.6" -> "libm".
std::string LibraryStem(std::string_view bare) {
    std::string_view base = WithoutSoSuffix(bare);
    if (base.substr(0, 3) == "lib") return std::string(base);
    return "lib" + std::string(base);
}

// The name as the script wrote it: the file name without its ".dll".
std::string_view BareName(std::string_view fileName) {
    return EndsWith(fileName, kDllSuffix) ? fileName.substr(0, fileName.size() - kDllSuffix.size()) : fileName;
}

// Directories the loader searches, most specific first.
std::vector<std::string> SearchDirectories() {
    std::vector<std::string> dirs;
    if (const char* path = std::getenv("LD_LIBRARY_PATH")) {
        std::string_view rest = path;
        while (!rest.empty()) {
            size_t colon = rest.find(':');
            std::string_view dir = rest.substr(0, colon);
            if (!dir.empty()) dirs.emplace_back(dir);
            rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
        }
    }
    Dl_info info{};
    // The directory the C library was loaded from (getpid: not replaced by sanitizers).
    if (dladdr(reinterpret_cast<void*>(&::getpid), &info) && info.dli_fname) {
        std::string libc = info.dli_fname;
        size_t slash = libc.rfind('/');
        if (slash != std::string::npos && slash > 0) dirs.push_back(libc.substr(0, slash));
    }
    for (const char* dir : {"/usr/local/lib", "/lib64", "/usr/lib64", "/lib", "/usr/lib"}) dirs.emplace_back(dir);
    return dirs;
}

bool HasGlobCharacters(std::string_view text) { return text.find_first_of("*?[]\\") != std::string_view::npos; }

// Fewer characters first (the major-version name before the full one), then by name.
bool BetterVersion(const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

void* TryOpen(const std::string& name) { return name.empty() ? nullptr : dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL); }

}  // namespace

std::vector<std::string> LibraryCandidates(std::string_view fileName) {
    std::vector<std::string> names;
    std::string_view bare = BareName(fileName);
    if (bare.empty()) return names;
    names.emplace_back(fileName);
    if (bare.size() != fileName.size()) names.emplace_back(bare);
    if (bare.find('/') != std::string_view::npos) return names;
    std::string shared = LibraryStem(bare) + ".so";
    if (shared != bare) names.push_back(shared);
    return names;
}

std::string FindVersionedLibrary(std::string_view stem) {
    if (stem.empty() || stem.find('/') != std::string_view::npos || HasGlobCharacters(stem)) return {};
    for (const std::string& dir : SearchDirectories()) {
        std::string pattern = dir + "/" + std::string(stem) + ".so.*";
        glob_t found{};
        std::string best;
        if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
            for (size_t i = 0; i < found.gl_pathc; ++i) {
                std::string path = found.gl_pathv[i];
                std::string_view name = std::string_view(path).substr(dir.size() + 1);
                if (WithoutSoSuffix(name) != stem) continue;   // "libm.so.6.py" and the like
                if (best.empty() || BetterVersion(path, best)) best = path;
            }
        }
        globfree(&found);
        if (!best.empty()) return best;
    }
    return {};
}

CLibrarySet::~CLibrarySet() {
    for (auto it = m_handles.rbegin(); it != m_handles.rend(); ++it) dlclose(*it);
}

void* CLibrarySet::Open(const std::string& fileName) {
    auto known = m_byName.find(fileName);
    if (known != m_byName.end()) return known->second;
    void* handle = nullptr;
    for (const std::string& name : LibraryCandidates(fileName))
        if ((handle = TryOpen(name))) break;
    std::string_view bare = BareName(fileName);
    if (!handle && !bare.empty() && bare.find('/') == std::string_view::npos)
        handle = TryOpen(FindVersionedLibrary(LibraryStem(bare)));
    if (!handle) return nullptr;
    m_handles.push_back(handle);
    m_byName.emplace(fileName, handle);
    return handle;
}

void* CLibrarySet::Symbol(void* library, const std::string& entry) {
    if (!library || entry.empty()) return nullptr;
    return dlsym(library, entry.c_str());
}

}  // namespace ob::platform
