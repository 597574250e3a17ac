// Values crossing the C host API: VARIANTs in, VARIANTs out.
#pragma once

#include <orvobasic/CBasicVariable.h>
#include <orvobasic/automation.h>

namespace ob {

// A host value as a script value: empty and null stay unset, numbers, truth
// values, strings and objects map directly, the other integer types become
// their text, anything else stays unset.
CBasicVariable ToScriptValue(const VARIANT& value);

// The current element of a script value as a VARIANT (a new BSTR, a counted
// object reference); the caller clears it.
void ToHostValue(const CBasicVariable& value, VARIANT& out);

}  // namespace ob
