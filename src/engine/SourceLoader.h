// Loading a program from its files: the script, the files it includes and
// the libraries it names, merged into the one text the interpreter runs.
//
//   include "file"   the line is replaced by the file's text (nested
//                    includes allowed; a path is relative to the file that
//                    names it). A cycle, a missing file or nesting deeper
//                    than kMaxIncludeDepth is a load error at that line.
//   library "file"   the file (with its own includes and libraries) is
//                    placed after the main program, behind an "end" line
//                    that keeps both the main program and the library's
//                    own main-program lines from running into it. Each
//                    file is loaded once, however often it is named.
//   encrypt "out"    remembered; the caller writes the encrypted copy.
//
// Each statement must stand alone on its line: the word, a string literal,
// and nothing after it but blanks or a "#" comment. Any file may itself be
// encrypted. While the script may not reach files (OB_CAP_FILES denied),
// included and library files are read only from the script's folder and
// the folders below it.
#pragma once

#include <orvobasic/CString.h>

#include "engine/SourceMap.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class COrvoBasic;

namespace ob {

enum class SourceDirective { None, Include, Library, Encrypt, Malformed };

struct DirectiveLine {
    SourceDirective kind = SourceDirective::None;
    CString operand;   // the file name between the quotes
};

// Recognises a load-time statement in one line (without its line end).
DirectiveLine ParseDirective(std::u16string_view line);

// A statement met while loading, with where it was written.
struct SourceRequest {
    CString path;       // the operand; for includes and libraries, joined to the naming file's folder
    CString file;       // the file the statement stands in
    int line = 0;       // its line there
    CString lineText;   // that line's text
};

class CSourceLoader {
public:
    static constexpr size_t kMaxIncludeDepth = 64;

    CSourceLoader(COrvoBasic& basic, CSourceMap& map) : m_basic(basic), m_map(map) {}

    // Reads the script `path` and everything it names into `text`, which
    // then ends in a line end, and fills the map. A failure is reported
    // (through COrvoBasic::ReportLoadError, which may throw ScriptAbort);
    // false when the program cannot run.
    bool Load(const CString& path, CString& text);

    // The "encrypt" statements of the program, in the order met.
    const std::vector<SourceRequest>& EncryptRequests() const { return m_encrypts; }

private:
    bool Expand(uint32_t file, const CString& src);
    bool Include(const SourceRequest& request);
    bool AppendLibraries();
    void AppendRun(const CString& src, size_t from, size_t to, uint32_t file, int fileLine);
    int Open(const CString& path, std::string& canonical, CString& src);
    bool Fail(int id, const SourceRequest& where);
    SourceRequest RequestAt(uint32_t file, int line, std::u16string_view lineText, const CString& operand) const;

    COrvoBasic& m_basic;
    CSourceMap& m_map;
    std::vector<CString> m_names;           // the map's files, as shown
    std::vector<std::string> m_includeStack;   // canonical paths being expanded
    std::set<std::string> m_loaded;         // canonical paths of the script and its libraries
    std::vector<SourceRequest> m_libraries;
    std::vector<SourceRequest> m_encrypts;
    std::string m_sandboxRoot;              // canonical folder of the script; empty when files are allowed
    CString m_out;
    int m_outLine = 1;                      // text line the next appended character starts
    int m_mainLines = 0;
    bool m_endWritten = false;
};

// The script an "encrypt" statement writes: the merged `text` without its
// final line end, with the library and encrypt statements blanked (their
// files are merged in already), as 8-bit bytes.
std::string EncryptedCopySource(const CString& text);

}  // namespace ob
