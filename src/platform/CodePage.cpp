#include "platform/CodePage.h"

#include <array>

namespace ob::platform {
namespace {

// Bytes 0x80..0x9F; the rest of the code page equals Latin-1.
constexpr char16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

}  // namespace

char16_t ByteToWide(unsigned char byte) {
    if (byte >= 0x80 && byte < 0xA0) return kHigh[byte - 0x80];
    return byte;
}

char WideToByte(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(c);
    for (int i = 0; i < 32; ++i)
        if (kHigh[i] == c) return static_cast<char>(0x80 + i);
    return '?';
}

void AnsiToWide(std::string_view bytes, CString& out) {
    size_t base = out.size();
    out.resize(base + bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i)
        out[base + i] = ByteToWide(static_cast<unsigned char>(bytes[i]));
}

CString AnsiToWide(std::string_view bytes) {
    CString out;
    AnsiToWide(bytes, out);
    return out;
}

std::string WideToAnsi(std::u16string_view text) {
    std::string out(text.size(), '\0');
    for (size_t i = 0; i < text.size(); ++i) out[i] = WideToByte(text[i]);
    return out;
}

}  // namespace ob::platform
