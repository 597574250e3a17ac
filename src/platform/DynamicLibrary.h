// Shared libraries that scripts call into with "declare".
//
// Scripts name libraries as they were named on the system the language comes
// from ("m", "libm", "kernel"): the file name a declaration holds is the name
// as quoted with ".dll" appended. LibraryCandidates turns it into the names
// the loader tries, in order; CLibrarySet opens the first that loads and
// keeps every library open until the set is destroyed.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ob::platform {

// The names tried for a declaration's library file name, in order:
//  1. the file name as given ("m.dll"),
//  2. without the ".dll" ("m"),
//  3. "lib" + that + ".so" ("libm.so"; no second "lib" when it starts with one),
// then (not listed here) the versioned library the system has for that
// stem ("libm.so.6"), see FindVersionedLibrary. A name holding a slash is a
// path: only 1 and 2 are tried. An empty name gives no candidate.
std::vector<std::string> LibraryCandidates(std::string_view fileName);

// The path of the versioned library "STEM.so.N..." ("libm" -> ".../libm.so.6")
// found in the loader's directories (LD_LIBRARY_PATH, the C library's own
// directory, the usual system directories); the shortest version suffix
// wins. Empty when there is none. `stem` never holds a slash.
std::string FindVersionedLibrary(std::string_view stem);

// Libraries opened by one interpreter; closed together by the destructor.
class CLibrarySet {
public:
    CLibrarySet() = default;
    ~CLibrarySet();
    CLibrarySet(const CLibrarySet&) = delete;
    CLibrarySet& operator=(const CLibrarySet&) = delete;

    // The library for a declaration's file name (UTF-8), opened on first use
    // by trying LibraryCandidates then the versioned library; null when none
    // loads. A failure is not remembered: a later call tries again.
    void* Open(const std::string& fileName);
    // The address of `entry` in a library Open returned, or null.
    static void* Symbol(void* library, const std::string& entry);

    size_t Count() const { return m_handles.size(); }

private:
    std::unordered_map<std::string, void*> m_byName;   // file name -> handle
    std::vector<void*> m_handles;                      // in opening order, one per dlopen
};

}  // namespace ob::platform
