#include <orvobasic/CString.h>

#include "platform/CharClass.h"
#include "platform/CodePage.h"

#include <algorithm>

CString CString::FromUtf8(std::string_view utf8) {
    CString out;
    ob::platform::Utf8ToWide(utf8, out);
    return out;
}

std::string CString::ToUtf8() const { return ob::platform::WideToUtf8(*this); }

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

CString CString::Mid(int start, int count) const { return CString(MidView(start, count)); }

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Right(int count) const { return CString(RightView(count)); }

std::u16string_view CString::MidView(int start, int count) const {
    if (start < 0) start = 0;
    if (count <= 0 || start >= GetLength()) return {};
    count = std::min(count, GetLength() - start);
    return std::u16string_view(*this).substr(static_cast<size_t>(start), static_cast<size_t>(count));
}

std::u16string_view CString::RightView(int count) const {
    if (count <= 0) return {};
    if (count >= GetLength()) return *this;
    return std::u16string_view(*this).substr(size() - static_cast<size_t>(count));
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
