// Where each line of a program text came from. Included and library files
// are merged into one text before it runs; errors, traces and the line hook
// name the file a statement was written in and its line there. The map is
// consulted only when a line is wanted (an error, a hook), never per
// statement: two binary searches, one over line starts and one here.
#pragma once

#include <orvobasic/CString.h>

#include <cstdint>
#include <vector>

namespace ob {

// A file and a 1-based line in it.
struct SourceLocation {
    const CString* file = nullptr;
    int line = 0;
};

class CSourceMap {
public:
    // Forgets everything; `mainPath` becomes file 0.
    void Reset(const CString& mainPath);
    // Adds a file (as it is to be shown) and returns its number.
    uint32_t AddFile(const CString& path);
    // From text line `textLine` on, the lines are those of `file` from `fileLine` on.
    void Begin(int textLine, uint32_t file, int fileLine);
    // The file and line of text line `textLine` (1-based). Lines before the
    // first run, and every line of a map that was never filled, belong to
    // file 0 under their own number.
    SourceLocation Locate(int textLine) const;
    bool IsEmpty() const { return m_files.empty(); }

private:
    struct Run {
        int textLine;
        uint32_t file;
        int fileLine;
    };
    std::vector<CString> m_files;
    std::vector<Run> m_runs;   // ascending textLine
};

}  // namespace ob
