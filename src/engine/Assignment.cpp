// Assignment (a statement that begins with a variable) and "print".
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "platform/CharClass.h"

using namespace ob;

bool COrvoBasic::assignment() {
    size_t operandMark = m_operands.size();
    get_token();
    if (m_token.empty() || !platform::IsAlpha(m_token[0])) {
        ReportError(4);
        return false;
    }
    CString target = m_token;
    BASIC_TOKEN_TYPE kind = m_tokenType;
    int index = 0;
    bool indexed = CurChar() == u'[';
    if (indexed) {
        get_token();
        GetIndex(index);
    }
    get_token();
    if (m_token.empty() || m_token[0] != u'=') {
        ReportError(3);
        return false;
    }
    CBasicVariable value;
    get_exp(value);
    StoreAssignment(target, kind, indexed, index, value);
    m_operands.resize(operandMark);
    return true;
}

// Stores an evaluated value into its target. A record field takes nothing
// (record contents come from library calls and the host); an array value
// replaces a whole variable; anything else writes one element.
bool COrvoBasic::StoreAssignment(const CString& target, BASIC_TOKEN_TYPE kind, bool indexed, int index,
                                 const CBasicVariable& value) {
    if (kind == STRUCT_MEMBER) return true;
    if (kind == UNKNOWN_MEMBER) {
        CString name = target.Left(target.Find(u'.'));
        ReportError(FindVariable(name) ? 31 : 37);   // object properties need the automation layer
        return false;
    }
    int size = GetVariableSize(target);
    if (size <= 1 || indexed) {
        if (value.GetNumItems() <= 1) return SetVariable(target, value, indexed ? index : 0);
        return CopyVariable(target, value);
    }
    return CopyVariable(target, value);
}

// "print": items separated by ";" (nothing between) or "," (pad to the next
// multiple of 8, counting the whole output so far at every comma).
bool COrvoBasic::ExecPrint() {
    CString output;
    int column = 0;
    do {
        if (get_token() == QUOTE) {
            output += m_token;
            get_token();
        } else {
            putback();
            CBasicVariable value;
            get_exp(value);
            get_token();
            output += value.GetStringValue();
        }
        if (!m_token.empty() && m_token[0] == u',') {
            column += output.GetLength();
            int padding = 8 - column % 8;
            column += padding;
            output.append(static_cast<size_t>(padding), u' ');
        }
    } while (!m_token.empty() && (m_token[0] == u';' || m_token[0] == u','));
    output += u'\n';
    m_desktop->PrintBox(output);
    return true;
}
