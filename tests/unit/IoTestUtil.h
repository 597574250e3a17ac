// Helpers of the file and table tests: a scratch directory per test and
// whole-file byte access.
#pragma once

#include <orvobasic/CString.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace iotest {

// A fresh directory under /tmp, removed with everything in it at the end.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ob-io-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string Path(const std::string& name) const { return (m_path / name).string(); }
    CString WPath(const std::string& name) const { return CString::FromUtf8(Path(name)); }
    const std::filesystem::path& Dir() const { return m_path; }

private:
    std::filesystem::path m_path;
};

inline std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A committed fixture (tests/fixtures).
inline std::string Fixture(const std::string& name) { return std::string(OB_TEST_DATA_DIR) + "/" + name; }

// Bytes written as a C++ literal with embedded zeros.
template <size_t N>
std::string Bytes(const char (&text)[N]) {
    return std::string(text, N - 1);
}

}  // namespace iotest
