#include "io/StringTokenizer.h"

#include "platform/NumberFormat.h"

#include <cmath>

namespace ob {

StringTokenizer::StringTokenizer(const CString& text, const CString& delimiters, unsigned flags)
    : m_text(text), m_delimiters(delimiters), m_flags(flags) {}

bool StringTokenizer::IsDelimiter(char16_t c) const {
    return m_delimiters.find(c) != CString::npos;
}

// Without KeepEmpty, only non-delimiter characters left mean a token is left.
bool StringTokenizer::HasMoreTokens() const {
    if (m_done) return false;
    if (m_flags & KeepEmpty) return m_pos < m_text.size();
    for (size_t i = m_pos; i < m_text.size(); ++i)
        if (!IsDelimiter(m_text[i])) return true;
    return false;
}

// Skips leading delimiters unless KeepEmpty, then takes characters up to the
// next delimiter and steps over that one delimiter.
bool StringTokenizer::NextToken(CString& token) {
    token.clear();
    if (!HasMoreTokens()) {
        m_done = true;
        return false;
    }
    if (!(m_flags & KeepEmpty))
        while (m_pos < m_text.size() && IsDelimiter(m_text[m_pos])) ++m_pos;
    size_t end = m_pos;
    while (end < m_text.size() && !IsDelimiter(m_text[end])) ++end;
    token = m_text.substr(m_pos, end - m_pos);
    m_pos = end < m_text.size() ? end + 1 : end;
    return true;
}

bool StringTokenizer::NextNumber(double& value) {
    CString token;
    if (!NextToken(token)) return false;
    size_t consumed = 0;
    double number = platform::ParseDouble(token, &consumed);
    if (consumed == 0 || std::isinf(number)) return false;
    value = number;
    return true;
}

}  // namespace ob
