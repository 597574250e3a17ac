#include "io/CTextFileLoc.h"

#include "io/StringTokenizer.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <string>

namespace ob {

// A created file gets the mark in UTF-16 mode; any other file is examined for
// it. modeCreate | modeNoTruncate counts as creating only for an empty file.
bool CTextFileLoc::Open(const CString& fileName, unsigned openFlags) {
    ClearBuffer();
    if (!CFile::Open(fileName, openFlags)) return false;
    bool creates = (openFlags & modeCreate) && (!(openFlags & modeNoTruncate) || GetLength() == 0);
    if (creates) {
        static constexpr unsigned char kMark[2] = {0xFF, 0xFE};
        if (m_unicode && !Write(kMark, sizeof kMark)) {
            CFile::Close();
            return false;
        }
        return true;
    }
    unsigned char mark[2] = {0, 0};
    if (Read(mark, 2) == 2 && mark[0] == 0xFF && mark[1] == 0xFE) {
        m_unicode = true;
    } else {
        SeekToBegin();
        m_unicode = false;
    }
    return true;
}

void CTextFileLoc::Close() {
    ClearBuffer();
    CFile::Close();
}

void CTextFileLoc::ClearBuffer() {
    m_buffer.clear();
    m_scanned = 0;
    m_unfinished.clear();
}

// Appends one chunk to the buffer: whole 16-bit units of up to 512 bytes in
// UTF-16 mode (an odd last byte is dropped), up to 256 bytes of 8-bit text
// otherwise (zero bytes removed when asked). In UTF-8 a character the chunk
// cuts waits for the next chunk; at the end of the file it reads as U+FFFD.
// False when no byte came and none was waiting.
bool CTextFileLoc::ReadChunk() {
    if (m_unicode) {
        unsigned char bytes[kReadChunkUnicode];
        size_t n = Read(bytes, sizeof bytes);
        for (size_t i = 0; i + 1 < n; i += 2)
            m_buffer.push_back(static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8)));
        return n > 0;
    }
    char bytes[kReadChunkAnsi];
    size_t n = Read(bytes, sizeof bytes);
    std::string_view text(bytes, n);
    std::string kept;
    if (m_dropNulBytes) {
        kept.assign(text);
        kept.erase(std::remove(kept.begin(), kept.end(), '\0'), kept.end());
        text = kept;
    }
    if (m_codePage != CodePage::Utf8) {
        platform::AnsiToWide(text, m_buffer);
        return n > 0;
    }
    bool waited = !m_unfinished.empty();
    m_unfinished.append(text);
    size_t keep = n > 0 ? platform::Utf8UnfinishedTail(m_unfinished) : 0;
    platform::Utf8ToWide(std::string_view(m_unfinished).substr(0, m_unfinished.size() - keep), m_buffer);
    m_unfinished.erase(0, m_unfinished.size() - keep);
    return n > 0 || waited;
}

// Fills the buffer until it holds a "\n" or the file is exhausted. Only the
// newly read characters are searched, so a very long line costs linear time.
// `mayGrow`, when given, is asked before every further kGrowStep characters
// of one line; when it refuses, the read ends with false and the buffer is
// dropped.
bool CTextFileLoc::ReadString(CString& line, const GrowCheck& mayGrow) {
    constexpr size_t kGrowStep = size_t{1} << 16;
    size_t newline;
    size_t allowed = kGrowStep;
    while ((newline = m_buffer.find(u'\n', m_scanned)) == CString::npos) {
        m_scanned = m_buffer.size();
        if (mayGrow && m_buffer.size() >= allowed) {
            if (!mayGrow(kGrowStep * sizeof(char16_t))) {
                ClearBuffer();
                return false;
            }
            allowed += kGrowStep;
        }
        if (!ReadChunk()) break;
    }
    if (newline != CString::npos) {
        size_t cut = std::min(newline, std::u16string_view(m_buffer).substr(0, newline).find(u'\r'));
        line.assign(m_buffer, 0, cut);
        m_buffer.erase(0, newline + 1);
        m_scanned = 0;
        return true;
    }
    if (m_buffer.empty()) return false;
    line = std::move(m_buffer);
    ClearBuffer();
    return true;
}

// UTF-16LE bytes or 8-bit bytes of `text`, appended to `out`.
void CTextFileLoc::AppendEncoded(std::string& out, std::u16string_view text) const {
    if (!m_unicode) {
        out += platform::WideToAnsi(text, m_codePage);
        return;
    }
    for (char16_t c : text) {
        out += static_cast<char>(c & 0xFF);
        out += static_cast<char>(c >> 8);
    }
}

// Writes each "\n"-separated line of the chunk followed by a line end, except
// the final line of a chunk that ends mid-line. One write per chunk.
bool CTextFileLoc::WriteChunk(const CString& chunk, bool endsMidLine) {
    static constexpr char16_t kLineEnd[] = u"\r\n";
    std::string out;
    StringTokenizer lines(chunk, u"\n", StringTokenizer::KeepEmpty);
    CString line;
    while (lines.NextToken(line)) {
        AppendEncoded(out, line);
        if (lines.HasMoreTokens() || !endsMidLine) AppendEncoded(out, kLineEnd);
    }
    return Write(out.data(), out.size());
}

// 256 characters, or 255 in UTF-8 when the 256th would split a surrogate
// pair (its halves have no UTF-8 form of their own).
size_t CTextFileLoc::ChunkLength(const CString& text, size_t pos) const {
    size_t count = std::min(kWriteChunk, text.size() - pos);
    char16_t last = text[pos + count - 1];
    bool splitsPair = last >= 0xD800 && last < 0xDC00 && pos + count < text.size();
    return splitsPair && !m_unicode && m_codePage == CodePage::Utf8 ? count - 1 : count;
}

bool CTextFileLoc::WriteString(const CString& text) {
    for (size_t pos = 0; pos < text.size();) {
        size_t count = ChunkLength(text, pos);
        CString chunk = text.substr(pos, count);
        pos += count;
        bool endsMidLine = pos < text.size() && chunk.back() != u'\n';
        if (!WriteChunk(chunk, endsMidLine)) return false;
    }
    return true;
}

}  // namespace ob
