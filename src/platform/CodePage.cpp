#include "platform/CodePage.h"

namespace ob::platform {
namespace {

// Bytes 0x80..0x9F; the rest of the code page equals Latin-1.
constexpr char16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

constexpr char32_t kInvalid = 0xFFFFFFFF;
constexpr char32_t kReplacement = 0xFFFD;

inline bool IsContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Bytes in the sequence a lead byte begins: 1 for ASCII, 2..4, 0 for a byte
// that cannot begin one (a continuation byte, C0, C1, F5..FF).
int SequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    if (lead >= 0xF0 && lead < 0xF5) return 4;
    return 0;
}

// Decodes the sequence at bytes[i] and advances i past it. A malformed
// sequence gives kInvalid and advances past its lead byte and the
// continuation bytes that were read before the fault.
char32_t DecodeOne(std::string_view bytes, size_t& i) {
    unsigned char lead = static_cast<unsigned char>(bytes[i++]);
    int length = SequenceLength(lead);
    if (length == 1) return lead;
    if (length == 0) return kInvalid;
    char32_t cp = lead & (0x7F >> length);
    for (int k = 1; k < length; ++k) {
        if (i >= bytes.size() || !IsContinuation(static_cast<unsigned char>(bytes[i]))) return kInvalid;
        cp = (cp << 6) | (static_cast<unsigned char>(bytes[i++]) & 0x3F);
    }
    static constexpr char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < kMinimum[length] || cp > 0x10FFFF || (cp >= 0xD800 && cp < 0xE000)) return kInvalid;
    return cp;
}

void AppendUtf16(CString& out, char32_t cp) {
    if (cp < 0x10000) {
        out.push_back(static_cast<char16_t>(cp));
        return;
    }
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
}

void AppendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

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

void Utf8ToWide(std::string_view bytes, CString& out) {
    out.reserve(out.size() + bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        char32_t cp = DecodeOne(bytes, i);
        AppendUtf16(out, cp == kInvalid ? kReplacement : cp);
    }
}

// A surrogate pair becomes one 4-byte sequence; a lone surrogate has no
// UTF-8 form and is written as U+FFFD.
std::string WideToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        bool high = c >= 0xD800 && c < 0xDC00;
        if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = kReplacement;
        }
        AppendUtf8(out, c);
    }
    return out;
}

void AnsiToWide(std::string_view bytes, CString& out, CodePage codePage) {
    if (codePage == CodePage::Utf8) Utf8ToWide(bytes, out);
    else AnsiToWide(bytes, out);
}

CString AnsiToWide(std::string_view bytes, CodePage codePage) {
    CString out;
    AnsiToWide(bytes, out, codePage);
    return out;
}

std::string WideToAnsi(std::u16string_view text, CodePage codePage) {
    return codePage == CodePage::Utf8 ? WideToUtf8(text) : WideToAnsi(text);
}

bool IsMultibyteUtf8(std::string_view bytes) {
    bool multibyte = false;
    for (size_t i = 0; i < bytes.size();) {
        size_t start = i;
        if (DecodeOne(bytes, i) == kInvalid) return false;
        multibyte = multibyte || i - start > 1;
    }
    return multibyte;
}

void DecodeScriptText(std::string_view bytes, CodePage codePage, CString& out) {
    if (bytes.substr(0, kUtf8Mark.size()) == kUtf8Mark) return Utf8ToWide(bytes.substr(kUtf8Mark.size()), out);
    if (IsMultibyteUtf8(bytes)) return Utf8ToWide(bytes, out);
    AnsiToWide(bytes, out, codePage);
}

// Looks back at most three bytes for the lead byte of the last sequence.
size_t Utf8UnfinishedTail(std::string_view bytes) {
    size_t back = 0;
    while (back < 3 && back < bytes.size()) {
        unsigned char b = static_cast<unsigned char>(bytes[bytes.size() - 1 - back]);
        if (!IsContinuation(b)) {
            int length = SequenceLength(b);
            return length > 1 && static_cast<size_t>(length) > back + 1 ? back + 1 : 0;
        }
        ++back;
    }
    return 0;
}

size_t WholeCharacterPrefix(std::string_view bytes, size_t limit, CodePage codePage) {
    if (limit >= bytes.size()) return bytes.size();
    if (codePage != CodePage::Utf8) return limit;
    size_t cut = limit;
    while (cut > 0 && IsContinuation(static_cast<unsigned char>(bytes[cut]))) --cut;
    return cut;
}

}  // namespace ob::platform
