// Merging a program's files into one text; see SourceLoader.h.
#include "engine/SourceLoader.h"

#include <orvobasic/COrvoBasic.h>
#include <orvobasic/sources.h>

#include "engine/ScriptCipher.h"
#include "platform/CodePage.h"

#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace ob {

namespace {

// The merged text must stay addressable by the interpreter's 32-bit positions.
constexpr size_t kMaxTextSize = size_t{1} << 26;

// Characters that end a word, as the tokenizer cuts them.
constexpr std::u16string_view kWordEnds = u" \t;,+-<>/*%^=()[]~:!'@&{}|?$";

struct DirectiveWord {
    std::u16string_view word;
    SourceDirective kind;
};

constexpr DirectiveWord kDirectiveWords[] = {
    {u"include", SourceDirective::Include},
    {u"library", SourceDirective::Library},
    {u"encrypt", SourceDirective::Encrypt},
};

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }
bool IsLineEnd(char16_t c) { return c == u'\n' || c == u'\r'; }

bool SameWordIgnoringCase(std::u16string_view text, std::u16string_view lowerWord) {
    if (text.size() != lowerWord.size()) return false;
    for (size_t i = 0; i < text.size(); ++i) {
        char16_t c = text[i];
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
        if (c != lowerWord[i]) return false;
    }
    return true;
}

SourceDirective DirectiveOfWord(std::u16string_view word) {
    for (const DirectiveWord& entry : kDirectiveWords)
        if (SameWordIgnoringCase(word, entry.word)) return entry.kind;
    return SourceDirective::None;
}

// Position after the line end that starts at `end` ("\r\n" counts as one).
size_t AfterLineEnd(const CString& src, size_t end) {
    if (end >= src.size()) return end;
    return (src[end] == u'\r' && end + 1 < src.size() && src[end + 1] == u'\n') ? end + 2 : end + 1;
}

size_t LineEndFrom(const CString& src, size_t pos) {
    while (pos < src.size() && !IsLineEnd(src[pos])) ++pos;
    return pos;
}

// Lines ended in [from, to), counted as the interpreter counts them: a line
// feed, a carriage return with a line feed, or a carriage return alone.
int LineEndsIn(const CString& src, size_t from, size_t to) {
    int count = 0;
    for (size_t i = from; i < to; ++i)
        if (src[i] == u'\n' || (src[i] == u'\r' && (i + 1 >= src.size() || src[i + 1] != u'\n'))) ++count;
    return count;
}

// `name` as seen from the file `from`: relative names are taken from that file's folder.
CString JoinPath(const CString& from, const CString& name) {
    if (!name.empty() && name[0] == u'/') return name;
    size_t slash = from.rfind(u'/');
    if (slash == CString::npos) return name;
    CString joined(from.substr(0, slash + 1));
    joined += name;
    return joined;
}

std::string Canonical(const std::string& path) {
    std::unique_ptr<char, decltype(&free)> real(::realpath(path.c_str(), nullptr), &free);
    return real ? std::string(real.get()) : std::string();
}

bool IsInside(const std::string& path, const std::string& folder) {
    if (folder == "/") return true;
    return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
           path[folder.size()] == '/';
}

bool ReadBytes(const std::string& path, std::string& bytes) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    char chunk[65536];
    size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) bytes.append(chunk, n);
    bool failed = std::ferror(f) != 0;
    std::fclose(f);
    return !failed;
}

// A file's bytes as script text: decrypted when encrypted, cut at a first
// NUL byte (the text is one zero-terminated 8-bit string), widened: UTF-8
// when marked or valid UTF-8 with a multi-byte sequence, else in the code page.
bool DecodeSource(std::string bytes, CodePage codePage, CString& text) {
    if (IsEncryptedScript(bytes)) {
        std::string plain;
        if (!DecryptScript(bytes, plain)) return false;
        bytes.swap(plain);
    }
    size_t nul = bytes.find('\0');
    if (nul != std::string::npos) bytes.resize(nul);
    text.clear();
    platform::DecodeScriptText(bytes, codePage, text);
    return true;
}

}  // namespace

DirectiveLine ParseDirective(std::u16string_view line) {
    DirectiveLine result;
    size_t i = 0;
    while (i < line.size() && IsBlank(line[i])) ++i;
    size_t start = i;
    while (i < line.size() && kWordEnds.find(line[i]) == std::u16string_view::npos) ++i;
    SourceDirective kind = DirectiveOfWord(line.substr(start, i - start));
    if (kind == SourceDirective::None) return result;
    result.kind = SourceDirective::Malformed;
    while (i < line.size() && IsBlank(line[i])) ++i;
    if (i >= line.size() || line[i] != u'"') return result;
    size_t close = line.find(u'"', i + 1);
    if (close == std::u16string_view::npos || close == i + 1) return result;
    CString operand(line.substr(i + 1, close - i - 1));
    for (i = close + 1; i < line.size() && IsBlank(line[i]);) ++i;
    if (i < line.size() && line[i] != u'#') return result;
    result.kind = kind;
    result.operand = std::move(operand);
    return result;
}

bool CSourceLoader::Load(const CString& path, CString& text) {
    m_map.Reset(path);
    m_names.assign(1, path);
    std::string bytes;
    CString src;
    if (const std::string* given = m_basic.ScriptBytesInMemory()) {
        bytes = *given;
    } else if (errno = 0; !ReadBytes(path.ToUtf8(), bytes)) {
        m_basic.ReportLoadErrorAbout(17, path, path, errno);
        return false;
    }
    if (!DecodeSource(std::move(bytes), m_basic.GetCodePage(), src)) return Fail(OB_ERR_ENCRYPTED_SCRIPT, SourceRequest{{}, path, 0, {}});
    src.push_back(u'\n');
    if (!m_basic.IsAllowed(OB_CAP_FILES)) {
        size_t slash = path.rfind(u'/');
        std::string folder = slash == CString::npos ? "." : slash == 0 ? "/" : CString(path.substr(0, slash)).ToUtf8();
        m_sandboxRoot = Canonical(folder);
        if (m_sandboxRoot.empty()) m_sandboxRoot = "/nonexistent/";   // nothing can be inside it
    }
    std::string canonical = Canonical(path.ToUtf8());
    m_loaded.insert(canonical);
    m_includeStack.assign(1, canonical);
    if (!Expand(0, src) || !AppendLibraries()) return false;
    text = std::move(m_out);
    return true;
}

// Copies `src` to the output line by line; an include line is replaced by
// the included file's text, library and encrypt lines are noted and kept.
bool CSourceLoader::Expand(uint32_t file, const CString& src) {
    size_t runStart = 0;
    int runLine = 1, line = 1;
    for (size_t pos = 0; pos < src.size(); ++line) {
        size_t end = LineEndFrom(src, pos), next = AfterLineEnd(src, end);
        std::u16string_view text(src.data() + pos, end - pos);
        DirectiveLine directive = ParseDirective(text);
        if (directive.kind == SourceDirective::None) {
            pos = next;
            continue;
        }
        SourceRequest request = RequestAt(file, line, text, directive.operand);
        switch (directive.kind) {
        case SourceDirective::None: break;
        case SourceDirective::Malformed: return Fail(1, request);
        case SourceDirective::Library: m_libraries.push_back(std::move(request)); break;
        case SourceDirective::Encrypt:
            request.path = directive.operand;   // written where the program runs, like its other files
            m_encrypts.push_back(std::move(request));
            break;
        case SourceDirective::Include:
            AppendRun(src, runStart, pos, file, runLine);
            if (!Include(request)) return false;
            runStart = next;
            runLine = line + 1;
            break;
        }
        pos = next;
    }
    AppendRun(src, runStart, src.size(), file, runLine);
    if (file == 0) m_mainLines = line - 1;
    return true;
}

SourceRequest CSourceLoader::RequestAt(uint32_t file, int line, std::u16string_view lineText,
                                       const CString& operand) const {
    CString path = operand.empty() ? CString() : JoinPath(m_names[file], operand);
    return SourceRequest{path, m_names[file], line, CString(lineText)};
}

bool CSourceLoader::Include(const SourceRequest& request) {
    if (m_includeStack.size() >= kMaxIncludeDepth) return Fail(OB_ERR_INCLUDE_CYCLE, request);
    if (m_out.size() > kMaxTextSize) return Fail(17, request);
    std::string canonical;
    CString src;
    if (int id = Open(request.path, canonical, src)) return Fail(id, request);
    if (std::find(m_includeStack.begin(), m_includeStack.end(), canonical) != m_includeStack.end())
        return Fail(OB_ERR_INCLUDE_CYCLE, request);
    m_names.push_back(request.path);
    uint32_t file = m_map.AddFile(request.path);
    m_includeStack.push_back(canonical);
    bool ok = Expand(file, src);
    m_includeStack.pop_back();
    return ok;
}

// Libraries go after everything else, each once; a library may name more
// of them, which join the queue.
bool CSourceLoader::AppendLibraries() {
    for (size_t i = 0; i < m_libraries.size(); ++i) {
        SourceRequest request = m_libraries[i];
        std::string canonical;
        CString src;
        if (int id = Open(request.path, canonical, src)) return Fail(id, request);
        if (!m_loaded.insert(canonical).second) continue;
        if (!m_endWritten) {
            m_map.Begin(m_outLine, 0, m_mainLines + 1);
            m_out += u"end\n";
            ++m_outLine;
            m_endWritten = true;
        }
        m_names.push_back(request.path);
        uint32_t file = m_map.AddFile(request.path);
        m_includeStack.assign(1, canonical);
        if (!Expand(file, src)) return false;
    }
    return true;
}

// Appends whole lines src[from, to) of `file`, the first being its line `fileLine`.
void CSourceLoader::AppendRun(const CString& src, size_t from, size_t to, uint32_t file, int fileLine) {
    if (from >= to) return;
    // A carriage return ending the text so far and a line feed starting
    // this run would read as one line end: make the first a line feed too.
    if (!m_out.empty() && m_out.back() == u'\r' && src[from] == u'\n') m_out.back() = u'\n';
    m_map.Begin(m_outLine, file, fileLine);
    m_out.append(src, from, to - from);
    m_outLine += LineEndsIn(src, from, to);
}

// Reads an included or library file: through the host's path resolver, then
// (in a sandbox) only inside the script's folder. Returns 0, or the error
// to report: 47 when it cannot be read, the encrypted-script error when it
// cannot be decrypted.
int CSourceLoader::Open(const CString& path, std::string& canonical, CString& src) {
    CString resolved = path;
    if (!m_basic.ResolvePath(resolved)) return 47;
    canonical = Canonical(resolved.ToUtf8());
    if (canonical.empty()) return 47;
    if (!m_sandboxRoot.empty() && !IsInside(canonical, m_sandboxRoot)) return 47;
    std::string bytes;
    if (!ReadBytes(canonical, bytes)) return 47;
    if (!DecodeSource(std::move(bytes), m_basic.GetCodePage(), src)) return OB_ERR_ENCRYPTED_SCRIPT;
    if (src.empty() || !IsLineEnd(src.back())) src.push_back(u'\n');
    return 0;
}

bool CSourceLoader::Fail(int id, const SourceRequest& where) {
    m_basic.ReportLoadError(id, where.file, where.line, where.lineText);
    return false;
}

std::string EncryptedCopySource(const CString& text) {
    CString copy;
    copy.reserve(text.size());
    for (size_t pos = 0; pos < text.size();) {
        size_t end = LineEndFrom(text, pos), next = AfterLineEnd(text, end);
        SourceDirective kind = ParseDirective(std::u16string_view(text.data() + pos, end - pos)).kind;
        if (kind != SourceDirective::Library && kind != SourceDirective::Encrypt) copy.append(text, pos, end - pos);
        copy.append(text, end, next - end);
        pos = next;
    }
    if (!copy.empty() && copy.back() == u'\n') copy.pop_back();   // the loader appends it again
    return platform::WideToAnsi(copy);
}

}  // namespace ob
