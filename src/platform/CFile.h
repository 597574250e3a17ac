// CFile: a file on a POSIX descriptor with the open flags and operations of
// the classic MFC file class, so that the file and table code reads as it
// does on the devices the language comes from.
//
// Differences from the MFC class: nothing throws. Open reports failure by
// returning false, Write by returning false, Seek by returning -1. Read
// returns the number of bytes read, which is short only at the end of the
// file or on an error. Share flags are accepted and ignored: POSIX has no
// mandatory sharing modes, so every file behaves as if opened shareDenyNone.
#pragma once

#include <orvobasic/CString.h>

#include <cstddef>
#include <cstdint>

namespace ob::platform {

class CFile {
public:
    // Open flags, bit for bit as the MFC class defines them.
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
    };
    enum SeekPosition { begin = 0, current = 1, end = 2 };
    static constexpr int hFileNull = -1;

    CFile() = default;
    virtual ~CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // Opens `fileName` (UTF-8 on disk) with MFC flags. modeCreate truncates
    // unless modeNoTruncate is given; without modeCreate the file must exist.
    // Directories are refused. Closes a file already open first.
    virtual bool Open(const CString& fileName, unsigned openFlags);
    // Closes the descriptor; harmless when nothing is open.
    virtual void Close();
    bool IsOpen() const { return m_hFile != hFileNull; }

    // Reads up to `count` bytes, retrying short reads, so fewer bytes mean
    // the end of the file (or an error, which also stops the read).
    virtual size_t Read(void* buffer, size_t count);
    // Writes all `count` bytes; false when the system refused some.
    virtual bool Write(const void* buffer, size_t count);
    // Moves the position; the new position, or -1 on failure (no file, or a
    // position before the start).
    virtual int64_t Seek(int64_t offset, SeekPosition from);
    int64_t SeekToBegin() { return Seek(0, begin); }
    int64_t SeekToEnd() { return Seek(0, end); }
    // Length and position in bytes; 0 when no file is open.
    uint64_t GetLength() const;
    uint64_t GetPosition() const;
    // Truncates or extends the file; false on failure.
    bool SetLength(uint64_t length);
    void Flush();

    const CString& GetFilePath() const { return m_path; }
    unsigned GetOpenFlags() const { return m_flags; }

protected:
    int m_hFile = hFileNull;

private:
    CString m_path;
    unsigned m_flags = 0;
};

}  // namespace ob::platform
