// Helpers of the file and table tests: a scratch directory per test and
// whole-file byte access.
#pragma once

#include <orvobasic/CString.h>

#include "HostTestUtil.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace iotest {

using TempDir = ob::test::TempDir;

inline std::string ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// UTF-16LE bytes of ASCII text.
inline std::string Utf16(const std::string& ascii) {
    std::string out;
    for (char c : ascii) {
        out += c;
        out += '\0';
    }
    return out;
}

// A committed fixture (tests/fixtures).
inline std::string Fixture(const std::string& name) { return std::string(OB_TEST_DATA_DIR) + "/" + name; }

// Bytes written as a C++ literal with embedded zeros.
template <size_t N>
std::string Bytes(const char (&text)[N]) {
    return std::string(text, N - 1);
}

}  // namespace iotest
