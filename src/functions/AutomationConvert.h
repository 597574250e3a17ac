// Conversions between script values and VARIANTs, for the interpreter's
// automation calls and for the objects hosts write with the helper classes.
#pragma once

#include <orvobasic/CBasicVariable.h>
#include <orvobasic/CVarBase.h>
#include <orvobasic/automation.h>

namespace ob {

// A script value as an argument: an object with a reference of its own, a
// number as a truncated 32-bit integer, anything else as its text.
void BasicVarToVariant(const CVarBase& value, VARIANT& out);

// A call's result as a script value. Empty and null give no value; the
// types the language has no counterpart for are taken as their text (the
// VARIANT is converted in place), or as no value when they have none.
void VariantToBasicVar(VARIANT& value, CBasicVariable& out);

// Lossless forms for host objects: every type a CVarBase holds maps to its
// own VARIANT type and back; other VARIANT types arrive as text.
void ValueToVariant(const CVarBase& value, VARIANT& out);
CVarBase VariantToValue(const VARIANT& value);

// Fills an exception record (any previous content is overwritten, not
// freed) and returns DISP_E_EXCEPTION. A null record is left alone.
HRESULT FillException(EXCEPINFO* exception, const CString& source, const CString& description, HRESULT scode);

// Text of an automation result code ("Member not found"), empty when unknown.
CString AutomationCodeText(HRESULT code);
// "0x80020009".
CString HexCode(HRESULT code);

}  // namespace ob
