// CString: the wide (UTF-16) string used for all text in OrvoBasic.
//
// A thin layer over std::u16string with the handful of MFC-style helpers the
// interpreter's code reads best with. Positions are zero-based; -1 means
// "not found". Conversions to UTF-8 happen only at the edges (console output,
// file names, dynamic library names).
#pragma once

#include <orvobasic/export.h>

#include <string>
#include <string_view>

class OB_API CString : public std::u16string {
public:
    using std::u16string::u16string;
    CString() = default;
    CString(const std::u16string& s) : std::u16string(s) {}
    CString(std::u16string&& s) noexcept : std::u16string(std::move(s)) {}
    CString(std::u16string_view s) : std::u16string(s) {}

    // UTF-8 at the edges. Invalid sequences become U+FFFD.
    static CString FromUtf8(std::string_view utf8);
    std::string ToUtf8() const;

    int GetLength() const { return static_cast<int>(size()); }
    bool IsEmpty() const { return empty(); }
    void Empty() { clear(); }

    int Find(char16_t c, int start = 0) const;
    int Find(std::u16string_view s, int start = 0) const;
    int ReverseFind(char16_t c) const;

    // Substrings; counts and positions outside the text are clamped, so these
    // never read outside the string.
    CString Mid(int start) const;
    CString Mid(int start, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    // What Mid, Left and Right copy, seen in place.
    std::u16string_view MidView(int start, int count) const;
    std::u16string_view RightView(int count) const;

    // Case mapping through the locale-independent character classes.
    CString& MakeLower();
    CString& MakeUpper();

    // Replaces every occurrence of `from` by `to`; returns the count.
    int Replace(std::u16string_view from, std::u16string_view to);
};
