// The source cursor and get_token: cuts the next token from the program text
// at the cursor and classifies it. All parsing is done through this.
#include <orvobasic/COrvoBasic.h>

#include "compiled/CompiledStatements.h"
#include "platform/CharClass.h"

#include <algorithm>

using namespace ob;
namespace pf = ob::platform;

namespace {

inline bool IsLineEnd(char16_t c) { return c == u'\n' || c == u'\r' || c == 0; }
inline bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }
inline bool IsSkippedControl(char16_t c) { return c <= 9 || c == 11 || (c >= 14 && c <= 31); }

// The delimiter characters; tab and the line-end characters count too.
constexpr std::u16string_view kDelimiters = u" ;,+-<>/*%^=()[]~:!'@&{}|?$";

struct DelimiterTable {
    bool ascii[128] = {};
    constexpr DelimiterTable() {
        for (char16_t c : kDelimiters) ascii[c] = true;
        ascii[u'\t'] = ascii[u'\n'] = ascii[u'\r'] = ascii[0] = true;
    }
};
constexpr DelimiterTable kDelimiterTable;

// A string literal holds letters, digits, punctuation and white space.
inline bool IsLiteralChar(char16_t c) {
    return pf::IsAlpha(c) || pf::IsDigit(c) || pf::IsPunct(c) || pf::IsSpace(c) || pf::IsUpper(c) ||
           pf::IsLower(c);
}

}  // namespace

bool COrvoBasic::IsDelimiterChar(char16_t c) const { return c < 128 && kDelimiterTable.ascii[c]; }

bool COrvoBasic::Rewind() {
    m_pos = 0;
    m_token.clear();
    m_tokenType = TOKEN_NONE;
    m_command = CMD_NONE;
    return true;
}

bool COrvoBasic::Rewind(uint32_t position) {
    if (position >= m_endIndex) return false;
    m_pos = position;
    return true;
}

bool COrvoBasic::PopPosition(uint32_t& position) {
    if (m_returnStack.empty()) return false;
    position = m_returnStack.back();
    m_returnStack.pop_back();
    return true;
}

bool COrvoBasic::FindEOL() {
    while (m_pos < m_endIndex && !IsLineEnd(m_text[m_pos])) ++m_pos;
    return true;
}

bool COrvoBasic::GoPastEOL() {
    FindEOL();
    do {
        get_token();
    } while (m_command == CMD_EOL);
    return true;
}

// Steps back over the token just read (a string literal's quotes included).
void COrvoBasic::putback() {
    uint32_t length = static_cast<uint32_t>(m_token.size()) + (m_tokenType == QUOTE ? 2 : 0);
    m_pos = length <= m_pos ? m_pos - length : 0;
}

// Collects the text of a string literal; the cursor stands after the opening quote.
void COrvoBasic::ReadStringLiteral() {
    uint32_t start = m_pos;
    while (!IsEndOfProgram() && m_text[m_pos] != u'"' && IsLiteralChar(m_text[m_pos])) ++m_pos;
    m_token.assign(m_text, start, m_pos - start);
    if (m_text[m_pos] == u'\n') ReportError(1);
    NextChar();
    m_tokenType = QUOTE;
}

// Collects characters up to the next delimiter into the token.
void COrvoBasic::ReadIdentifier() {
    uint32_t start = m_pos;
    while (m_pos < m_endIndex && !IsDelimiterChar(m_text[m_pos])) ++m_pos;
    m_token.assign(m_text, start, m_pos - start);
}

// The facts of a text position, made empty on first use. Positions index a
// flat table, so that a loop finds what it learned without hashing.
COrvoBasic::PositionFacts& COrvoBasic::NewFactsAt(uint32_t position) {
    if (position >= m_factIndex.size()) m_factIndex.resize(std::max<size_t>(m_length, position) + 1, 0);
    uint32_t& slot = m_factIndex[position];
    if (slot == 0) {
        m_facts.emplace_back();
        slot = static_cast<uint32_t>(m_facts.size());
    }
    return m_facts[slot - 1];
}

// The identifier starting at `start`: where it ends and what the fixed
// vocabulary makes of it, computed on first sight.
const COrvoBasic::IdentInfo& COrvoBasic::IdentAt(uint32_t start) {
    PositionFacts& facts = FactsAt(start);
    if (facts.hasIdent) return facts.ident;
    uint32_t end = start;
    while (end < m_endIndex && !IsDelimiterChar(m_text[end])) ++end;
    CString word(m_text.substr(start, end - start));
    facts.ident = IdentInfo{end, LookupCommand(word), LookupKeyword(word), word.Find(u'.')};
    facts.hasIdent = true;
    return facts.ident;
}

// Classifies an identifier: label, statement word, function call, member
// reference, secondary keyword, variable, in this order.
BASIC_TOKEN_TYPE COrvoBasic::ClassifyIdentifier() {
    const IdentInfo info = IdentAt(m_pos);
    m_token.assign(m_text, m_pos, info.end - m_pos);
    m_pos = info.end;
    if (CurChar() == u':') {
        NextChar();
        return LABEL;
    }
    m_command = info.command;
    if (m_command != CMD_NONE) return COMMAND;
    if (CurChar() == u'(') {
        m_function = LookupFunction(m_token);
        return FUNCTION;
    }
    int dot = info.dot;
    if (dot >= 0) {
        m_memberName = m_token.Mid(dot + 1);
        CBasicVariable probe;
        m_pendingIndex = 0;   // a subscript read earlier must not select this field's element
        return FindStructVariable(m_token.Left(dot), m_memberName, probe, false) ? STRUCT_MEMBER
                                                                                  : UNKNOWN_MEMBER;
    }
    m_keyword = info.keyword;
    if (m_keyword != KW_NONE) return KEYWORD;
    m_pendingIndex = 0;
    return VARIABLE;
}

// A token whose reading depends on the text alone is read once per
// position; later reads take what the first one found.
BASIC_TOKEN_TYPE COrvoBasic::get_token() {
    if (m_compiled && m_compiled->TakeKnownToken(*this)) return m_tokenType;
    uint32_t start = m_pos;
    BASIC_TOKEN_TYPE type = ReadToken();
    if (m_compiled) m_compiled->NoteToken(*this, start);
    return type;
}

// Cuts the next token from the text at the cursor and classifies it.
BASIC_TOKEN_TYPE COrvoBasic::ReadToken() {
    m_prevTokenType = m_tokenType;
    m_tokenType = TOKEN_NONE;
    m_keyword = KW_NONE;
    m_command = CMD_NONE;
    if (IsEndOfProgram()) {
        m_token.clear();
        m_command = CMD_FINISHED;
        return m_tokenType = DELIMITER;
    }
    while (IsBlank(CurChar()) && !IsEndOfProgram()) NextChar();
    while (IsSkippedControl(CurChar()) && !IsEndOfProgram()) NextChar();
    char16_t c = CurChar();
    if (IsLineEnd(c)) {
        NextChar();
        if (IsLineEnd(CurChar())) NextChar();
        m_command = CMD_EOL;
        m_token.assign(u"\n");
        return m_tokenType = DELIMITER;
    }
    if (c == u'#') {
        FindEOL();
        m_token.clear();
        return m_tokenType = COMMENT;
    }
    if (IsDelimiterChar(c)) {
        m_token.assign(1, c);
        NextChar();
        return m_tokenType = DELIMITER;
    }
    if (c == u'"') {
        NextChar();
        ReadStringLiteral();
        return m_tokenType;
    }
    if (pf::IsDigit(c)) {
        ReadIdentifier();
        return m_tokenType = NUMBER;
    }
    if (pf::IsAlpha(c)) return m_tokenType = ClassifyIdentifier();
    m_token.clear();   // nothing begins here; the cursor stays
    return m_tokenType;
}
