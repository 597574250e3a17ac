// Script variables read and written by the host: names are found as a
// statement at the current scope level finds them, and nothing is reported
// to the script's error path when a name or element does not exist.
#include <orvobasic/COrvoBasic.h>

#include "platform/CharClass.h"

using namespace ob;

namespace {

// A name a script could write: a letter, then letters, digits and "_".
bool IsVariableName(const CString& name) {
    if (name.empty() || !platform::IsAlpha(name[0])) return false;
    for (char16_t c : name)
        if (!platform::IsAlpha(c) && !platform::IsDigit(c) && c != u'_') return false;
    return true;
}

// One element as a variable of its own, keeping its type.
void CopyElement(const CVarBase& item, CBasicVariable& out) {
    out = CBasicVariable();
    switch (item.GetVarType()) {
    case VT_BSTR: out.SetValue(item.StringRef()); break;
    case VT_R8: out.SetValue(item.GetDoubleValue()); break;
    case VT_I4: out.SetValue(static_cast<int>(item.GetLongValue())); break;
    case VT_BOOL: out.SetValue(item.GetLongValue() != 0); break;
    case VT_DISPATCH: out.SetValue(item.GetObjectValue()); break;
    default: break;
    }
}

}  // namespace

bool COrvoBasic::GetVariableValue(const CString& name, int index, CBasicVariable& value) {
    CString key = name;
    const CBasicVariable* var = IsVariableName(name) ? FindVariable(key) : nullptr;
    if (!var || index < -1 || index >= var->GetNumItems()) return false;
    CopyElement(var->GetItem(index < 0 ? var->GetCurIndex() : index), value);
    return true;
}

// As the assignment statement stores: without an index (-1) an array value
// or an array variable is replaced whole and anything else goes to element
// 0; with one, the element must exist, except that element 0 of an unknown
// name creates it. A watch handler that aborts ends only itself.
bool COrvoBasic::SetVariableValue(const CString& name, int index, const CBasicVariable& value) {
    if (!IsVariableName(name) || index < -1) return false;
    CString key = name;
    CBasicVariable* var = FindVariable(key);
    try {
        bool wholeArray = index < 0 && (value.GetNumItems() > 1 || (var && var->GetNumItems() > 1));
        if (wholeArray) return CopyVariable(name, value);
        if (!var) return index <= 0 && SetVariableDirect(name, value, 0, false);
        if (index < 0) index = 0;
        if (index >= var->GetNumItems()) return false;
        var->SetCurIndex(index);
        var->SetValue(value);
    } catch (const ScriptAbort&) {
    }
    return true;
}
