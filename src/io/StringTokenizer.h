// StringTokenizer: splits a text at any character of a delimiter set.
//
// By default runs of delimiters count as one and leading or trailing
// delimiters give no token ("1;;2" gives "1", "2"); with KeepEmpty every
// delimiter ends a token, so "a\n\nb" gives "a", "", "b", while one delimiter
// at the very end gives no empty token after it ("a\n" gives "a").
#pragma once

#include <orvobasic/CString.h>

namespace ob {

class StringTokenizer {
public:
    enum Flags : unsigned { SkipEmpty = 0, KeepEmpty = 1 };

    explicit StringTokenizer(const CString& text, const CString& delimiters = u",",
                             unsigned flags = SkipEmpty);

    // True while another token can be read.
    bool HasMoreTokens() const;
    // The next token; false (and `token` emptied) when none is left.
    bool NextToken(CString& token);
    // The next token as a decimal number. False when no token is left or the
    // token is not a number: the conversion used no character, or the value
    // is infinite. A number followed by other characters ("12abc") counts.
    bool NextNumber(double& value);

private:
    bool IsDelimiter(char16_t c) const;

    CString m_text;
    CString m_delimiters;
    unsigned m_flags;
    size_t m_pos = 0;
    bool m_done = false;
};

}  // namespace ob
