// CTextFileLoc: a file read and written as lines of text.
//
// The text is either UTF-16 little-endian (marked by the bytes FF FE at the
// start) or 8-bit text in the file's code page (Windows-1252 or UTF-8). Lines are written with "\r\n" ends in the
// file's encoding, and read through a read-ahead buffer of wide characters,
// so the operating-system position runs ahead of what the caller has read.
// The byte operations of the base class stay available and bypass the buffer.
#pragma once

#include "platform/CFile.h"
#include "platform/CodePage.h"

#include <orvobasic/CString.h>

#include <functional>

namespace ob {

class CTextFileLoc : public platform::CFile {
public:
    // `unicode` is the encoding used for a file this object creates; opening
    // an existing file decides it again from the file's byte-order mark.
    explicit CTextFileLoc(bool unicode = true, bool dropNulBytes = false)
        : m_unicode(unicode), m_dropNulBytes(dropNulBytes) {}

    // Opens the file. A file that is not created (no modeCreate, or
    // modeCreate | modeNoTruncate on a non-empty file) is checked for the
    // mark FF FE: with it the position stays after the mark and the text is
    // UTF-16; without it the position goes back to 0 and the text is 8-bit.
    // A created file in UTF-16 mode gets the mark written first.
    bool Open(const CString& fileName, unsigned openFlags) override;
    void Close() override;

    // Reads the next line, without its "\n" and cut at its first "\r". A last
    // line without "\n" is returned whole. False at the end of the file.
    using GrowCheck = std::function<bool(size_t bytes)>;
    bool ReadString(CString& line, const GrowCheck& mayGrow = nullptr);
    // Writes text as lines: each "\n" becomes the line end "\r\n" and the text
    // ends with one. Text is written in chunks of 256 characters; a chunk that
    // more text of the same line follows gets no line end. Empty text writes
    // nothing. False when the system refused a write.
    bool WriteString(const CString& text);

    // Characters read from the file but not yet handed out.
    size_t BufferedChars() const { return m_buffer.size(); }
    void ClearBuffer();

    bool IsUnicode() const { return m_unicode; }
    void SetUnicode(bool unicode) { m_unicode = unicode; }
    bool GetDropNulBytes() const { return m_dropNulBytes; }
    void SetDropNulBytes(bool drop) { m_dropNulBytes = drop; }
    // The code page of 8-bit text (not used for UTF-16 files).
    CodePage GetCodePage() const { return m_codePage; }
    void SetCodePage(CodePage codePage) { m_codePage = codePage; }

    // Chunk sizes of reading (bytes) and writing (characters).
    static constexpr size_t kReadChunkUnicode = 512;
    static constexpr size_t kReadChunkAnsi = 256;
    static constexpr size_t kWriteChunk = 256;

private:
    bool ReadChunk();
    bool WriteChunk(const CString& chunk, bool endsMidLine);
    void AppendEncoded(std::string& out, std::u16string_view text) const;

    size_t ChunkLength(const CString& text, size_t pos) const;

    CString m_buffer;
    size_t m_scanned = 0;   // leading buffer characters known to hold no "\n"
    std::string m_unfinished;   // UTF-8 bytes of a character the last chunk cut
    CodePage m_codePage = CodePage::Windows1252;
    bool m_unicode;
    bool m_dropNulBytes;
};

}  // namespace ob
