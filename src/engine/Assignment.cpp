// Assignment (a statement that begins with a variable) and "print".
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/desktop.h>

#include "platform/CharClass.h"

using namespace ob;

namespace {

// Texts longer than this (characters) are stored by a copy made in slices.
constexpr size_t kStoreSlice = size_t{1} << 20;

// Copies a long text slice by slice, looking at the deadline and at stop
// requests in between: storing a text of a gigabyte takes a good part of a
// second, too long to go unnoticed. False when the run has ended meanwhile.
bool CopyInSlices(COrvoBasic& basic, const CString& text, CString& out) {
    out.reserve(text.size());
    for (size_t at = 0; at < text.size(); at += kStoreSlice) {
        if (at && !basic.MayContinue(kStoreSlice * sizeof(char16_t))) return false;
        out.append(text, at, kStoreSlice);
    }
    return true;
}

}  // namespace

bool COrvoBasic::assignment() {
    size_t operandMark = m_operands.size();
    get_token();
    if (m_token.empty() || !platform::IsAlpha(m_token[0])) {
        ReportError(4);
        return false;
    }
    CString target = m_token;
    BASIC_TOKEN_TYPE kind = m_tokenType;
    uint32_t targetPos = m_pos - static_cast<uint32_t>(m_token.size());
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
    StoreAssignment(target, targetPos, kind, indexed, index, value);
    m_operands.resize(operandMark);
    return true;
}

// Stores an evaluated value into its target. A record field takes nothing
// (record contents come from library calls and the host); an array value
// replaces a whole variable; anything else writes one element.
bool COrvoBasic::StoreAssignment(const CString& target, uint32_t targetPos, BASIC_TOKEN_TYPE kind, bool indexed,
                                 int index, const CBasicVariable& value) {
    if (kind == STRUCT_MEMBER) return true;
    if (kind == UNKNOWN_MEMBER) {
        if (IsAllowed(OB_CAP_AUTOMATION)) return SetObjectProperty(target, value);
        ReportError(21);
        return false;
    }
    // The store copies the value: counted like the copies that made it.
    if (m_controlActive && !MayAllocate(static_cast<uint64_t>(value.ContentBytes()))) return false;
    CBasicVariable* var = FindVariableAt(targetPos, target);
    int size = !var ? 0 : (var->GetNumItems() == 1 && !var->GetItem(0).IsSet()) ? 0 : var->GetNumItems();
    if ((size > 1 && !indexed) || value.GetNumItems() > 1) {
        if (var) var->Set(value);
        else CopyVariable(target, value);
        return true;
    }
    if (!indexed) index = 0;
    if (!var) {
        CreateVariableAt(target, value, index);
        return true;
    }
    if (index < 0 || index >= var->GetNumItems()) {
        ReportError(36);
        return true;
    }
    var->SetCurIndex(index);
    const CVarBase& item = value.GetCurrent();
    if (item.GetVarType() == VT_BSTR && item.StringRef().size() > kStoreSlice) {
        CString copy;
        if (!CopyInSlices(*this, item.StringRef(), copy)) return false;
        var->SetValue(std::move(copy));
        return true;
    }
    var->SetValue(value);
    return true;
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
    if (m_halted) return false;
    ShowPrint(output);
    return true;
}
