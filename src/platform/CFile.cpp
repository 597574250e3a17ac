#include "platform/CFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ob::platform {
namespace {

// The POSIX open(2) flags for a set of MFC flags. Share and type flags have
// no POSIX counterpart and are dropped.
int PosixFlags(unsigned flags) {
    int posix = O_CLOEXEC;
    if (flags & CFile::modeReadWrite) posix |= O_RDWR;
    else if (flags & CFile::modeWrite) posix |= O_WRONLY;
    else posix |= O_RDONLY;
    if (flags & CFile::modeCreate) {
        posix |= O_CREAT;
        if (!(flags & CFile::modeNoTruncate)) posix |= O_TRUNC;
    }
    return posix;
}

}  // namespace

CFile::~CFile() { Close(); }

// Opens the file; a directory, or a path the system refuses, gives false.
bool CFile::Open(const CString& fileName, unsigned openFlags) {
    Close();
    std::string path = fileName.ToUtf8();
    if (path.empty()) return false;
    int fd;
    do {
        fd = ::open(path.c_str(), PosixFlags(openFlags), 0666);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return false;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        ::close(fd);
        return false;
    }
    m_hFile = fd;
    m_path = fileName;
    m_flags = openFlags;
    return true;
}

void CFile::Close() {
    if (m_hFile != hFileNull) ::close(m_hFile);
    m_hFile = hFileNull;
    m_path.clear();
    m_flags = 0;
}

// Loops over partial reads and interrupted calls until `count` bytes, the end
// of the file or an error.
size_t CFile::Read(void* buffer, size_t count) {
    if (!IsOpen()) return 0;
    auto* out = static_cast<unsigned char*>(buffer);
    size_t done = 0;
    while (done < count) {
        ssize_t n = ::read(m_hFile, out + done, count - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
    return done;
}

// Loops over partial writes and interrupted calls.
bool CFile::Write(const void* buffer, size_t count) {
    if (!IsOpen()) return false;
    const auto* in = static_cast<const unsigned char*>(buffer);
    size_t done = 0;
    while (done < count) {
        ssize_t n = ::write(m_hFile, in + done, count - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

int64_t CFile::Seek(int64_t offset, SeekPosition from) {
    if (!IsOpen()) return -1;
    static constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    off_t pos = ::lseek(m_hFile, static_cast<off_t>(offset), kWhence[from]);
    return pos < 0 ? -1 : static_cast<int64_t>(pos);
}

uint64_t CFile::GetLength() const {
    struct stat st {};
    if (!IsOpen() || ::fstat(m_hFile, &st) != 0 || st.st_size < 0) return 0;
    return static_cast<uint64_t>(st.st_size);
}

uint64_t CFile::GetPosition() const {
    if (!IsOpen()) return 0;
    off_t pos = ::lseek(m_hFile, 0, SEEK_CUR);
    return pos < 0 ? 0 : static_cast<uint64_t>(pos);
}

bool CFile::SetLength(uint64_t length) {
    if (!IsOpen() || length > static_cast<uint64_t>(INT64_MAX)) return false;
    return ::ftruncate(m_hFile, static_cast<off_t>(length)) == 0;
}

void CFile::Flush() {
    if (IsOpen()) ::fsync(m_hFile);
}

}  // namespace ob::platform
