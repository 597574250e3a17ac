// Text lines to file lines; see SourceMap.h.
#include "engine/SourceMap.h"

#include <algorithm>

namespace ob {

void CSourceMap::Reset(const CString& mainPath) {
    m_files.assign(1, mainPath);
    m_runs.clear();
}

uint32_t CSourceMap::AddFile(const CString& path) {
    m_files.push_back(path);
    return static_cast<uint32_t>(m_files.size() - 1);
}

// A run that starts where the previous one starts replaces it (the previous
// one turned out to hold no line).
void CSourceMap::Begin(int textLine, uint32_t file, int fileLine) {
    if (!m_runs.empty() && m_runs.back().textLine == textLine) m_runs.pop_back();
    m_runs.push_back(Run{textLine, file, fileLine});
}

SourceLocation CSourceMap::Locate(int textLine) const {
    if (m_files.empty()) return SourceLocation{nullptr, textLine};
    auto after = std::upper_bound(m_runs.begin(), m_runs.end(), textLine,
                                  [](int line, const Run& run) { return line < run.textLine; });
    if (after == m_runs.begin()) return SourceLocation{&m_files[0], textLine};
    const Run& run = *(after - 1);
    return SourceLocation{&m_files[run.file], run.fileLine + (textLine - run.textLine)};
}

}  // namespace ob
