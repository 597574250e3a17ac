#include <orvobasic/CString.h>

#include "platform/CharClass.h"

#include <algorithm>

namespace {

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

void AppendUtf16(CString& out, char32_t cp) {
    if (cp < 0x10000) {
        out += static_cast<char16_t>(cp);
    } else {
        cp -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (cp >> 10));
        out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    }
}

// Decodes one UTF-8 sequence at s[i]; advances i. Malformed input gives U+FFFD.
char32_t DecodeUtf8(std::string_view s, size_t& i) {
    unsigned char b = static_cast<unsigned char>(s[i++]);
    if (b < 0x80) return b;
    int extra = b >= 0xF0 && b < 0xF8 ? 3 : b >= 0xE0 ? 2 : b >= 0xC2 && b < 0xE0 ? 1 : -1;
    if (extra < 0) return 0xFFFD;
    char32_t cp = b & (0x3F >> extra);
    for (int k = 0; k < extra; ++k) {
        if (i >= s.size() || (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80) return 0xFFFD;
        cp = (cp << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
    }
    static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
    if (cp < kMin[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp < 0xE000)) return 0xFFFD;
    return cp;
}

}  // namespace

CString CString::FromUtf8(std::string_view utf8) {
    CString out;
    out.reserve(utf8.size());
    for (size_t i = 0; i < utf8.size();) AppendUtf16(out, DecodeUtf8(utf8, i));
    return out;
}

std::string CString::ToUtf8() const {
    std::string out;
    out.reserve(size());
    for (size_t i = 0; i < size(); ++i) {
        char32_t c = (*this)[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < size() && (*this)[i + 1] >= 0xDC00 &&
            (*this)[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + ((*this)[i + 1] - 0xDC00);
            ++i;
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;   // a lone surrogate has no UTF-8 form
        }
        AppendUtf8(out, c);
    }
    return out;
}

int CString::Find(char16_t c, int start) const {
    if (start < 0) start = 0;
    if (static_cast<size_t>(start) >= size()) return -1;
    size_t p = find(c, static_cast<size_t>(start));
    return p == npos ? -1 : static_cast<int>(p);
}

int CString::Find(std::u16string_view s, int start) const {
    if (start < 0) start = 0;
    if (static_cast<size_t>(start) > size()) return -1;
    size_t p = find(s, static_cast<size_t>(start));
    return p == npos ? -1 : static_cast<int>(p);
}

int CString::ReverseFind(char16_t c) const {
    size_t p = rfind(c);
    return p == npos ? -1 : static_cast<int>(p);
}

CString CString::Mid(int start) const { return Mid(start, GetLength()); }

CString CString::Mid(int start, int count) const {
    if (start < 0) start = 0;
    if (count <= 0 || start >= GetLength()) return CString();
    count = std::min(count, GetLength() - start);
    return CString(substr(static_cast<size_t>(start), static_cast<size_t>(count)));
}

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Right(int count) const {
    if (count <= 0) return CString();
    if (count >= GetLength()) return *this;
    return CString(substr(size() - static_cast<size_t>(count)));
}

CString& CString::MakeLower() {
    for (auto& c : *this) c = ob::platform::ToLower(c);
    return *this;
}

CString& CString::MakeUpper() {
    for (auto& c : *this) c = ob::platform::ToUpper(c);
    return *this;
}

int CString::Replace(std::u16string_view from, std::u16string_view to) {
    if (from.empty()) return 0;
    int count = 0;
    std::u16string out;
    size_t pos = 0;
    for (size_t hit; (hit = find(from, pos)) != npos; pos = hit + from.size()) {
        out.append(*this, pos, hit - pos);
        out.append(to);
        ++count;
    }
    if (count == 0) return 0;
    out.append(*this, pos, npos);
    assign(std::move(out));
    return count;
}
