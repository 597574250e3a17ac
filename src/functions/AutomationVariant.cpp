// VariantChangeType: the text and number forms of the VARIANT types that
// script values have no counterpart for (dates, currency, 8- and 64-bit
// integers), independent of the user's locale.
#include <orvobasic/automation.h>

#include "functions/AutomationConvert.h"
#include "platform/CharClass.h"
#include "platform/NumberFormat.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace {

constexpr HRESULT kOverflow = static_cast<HRESULT>(0x8002000AL);   // DISP_E_OVERFLOW
// The range of dates: 1 January 100 to 31 December 9999.
constexpr double kMinDate = -657434.0;
constexpr double kMaxDate = 2958465.99999;
constexpr int64_t kCurrencyScale = 10000;

CString FromAscii(std::string_view text) { return CString(text.begin(), text.end()); }

CString TwoDigits(int value) {
    return CString{static_cast<char16_t>(u'0' + value / 10), static_cast<char16_t>(u'0' + value % 10)};
}

// Proleptic Gregorian date of a day count relative to 1970-01-01.
void CivilFromDays(int64_t days, int& year, int& month, int& day) {
    days += 719468;
    int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    int64_t doe = days - era * 146097;
    int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    int64_t mp = (5 * doy + 2) / 153;
    day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    year = static_cast<int>(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

// A date is days since 1899-12-30; the fraction is the time of day, counted
// forward also for dates before that day. Midnight shows the date alone,
// a time on day 0 the time alone.
bool FormatDate(double date, CString& out) {
    if (!(date >= kMinDate && date <= kMaxDate)) return false;
    double whole = std::trunc(date);
    int64_t days = static_cast<int64_t>(whole);
    int64_t seconds = std::llround(std::fabs(date - whole) * 86400.0);
    if (seconds >= 86400) {
        seconds -= 86400;
        ++days;
    }
    out.clear();
    if (days != 0 || seconds == 0) {
        int year = 0, month = 0, day = 0;
        CivilFromDays(days - 25569, year, month, day);
        out += ob::platform::FormatInt(year);
        out += u'-';
        out += TwoDigits(month);
        out += u'-';
        out += TwoDigits(day);
    }
    if (seconds != 0) {
        if (!out.empty()) out += u' ';
        out += TwoDigits(static_cast<int>(seconds / 3600));
        out += u':';
        out += TwoDigits(static_cast<int>(seconds / 60 % 60));
        out += u':';
        out += TwoDigits(static_cast<int>(seconds % 60));
    }
    return true;
}

CString FormatReal(double value, int digits) {
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits);
    if (ec != std::errc()) return CString();
    return FromAscii(std::string_view(buffer, static_cast<size_t>(end - buffer)));
}

// Currency: a 64-bit count of ten-thousandths, shown without trailing zeros.
CString FormatCurrency(int64_t units) {
    bool negative = units < 0;
    uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(units) : static_cast<uint64_t>(units);
    CString text = ob::platform::FormatInt(static_cast<int64_t>(magnitude / kCurrencyScale));
    uint64_t fraction = magnitude % kCurrencyScale;
    if (fraction) {
        CString digits = ob::platform::FormatInt(static_cast<int64_t>(fraction + kCurrencyScale)).Mid(1);
        while (!digits.empty() && digits.back() == u'0') digits.pop_back();
        text += u'.';
        text += digits;
    }
    return negative ? u"-" + text : text;
}

bool ToText(const VARIANT& v, CString& out) {
    switch (v.vt) {
    case VT_I1: out = ob::platform::FormatInt(v.cVal); return true;
    case VT_UI1: out = ob::platform::FormatInt(v.bVal); return true;
    case VT_I2: out = ob::platform::FormatInt(v.iVal); return true;
    case VT_UI2: out = ob::platform::FormatInt(v.uiVal); return true;
    case VT_I4: case VT_INT: out = ob::platform::FormatInt(v.lVal); return true;
    case VT_UI4: case VT_UINT: out = ob::platform::FormatInt(v.ulVal); return true;
    case VT_I8: out = ob::platform::FormatInt(v.llVal); return true;
    case VT_UI8:
        out = v.ullVal > static_cast<uint64_t>(INT64_MAX) ? FormatReal(static_cast<double>(v.ullVal), 20)
                                                           : ob::platform::FormatInt(static_cast<int64_t>(v.ullVal));
        return true;
    case VT_R4: out = FormatReal(v.fltVal, 7); return true;
    case VT_R8: out = FormatReal(v.dblVal, 15); return true;
    case VT_CY: out = FormatCurrency(v.llVal); return true;
    case VT_DATE: return FormatDate(v.date, out);
    case VT_BOOL: out = v.boolVal ? u"-1" : u"0"; return true;
    case VT_BSTR: out = CString(v.bstrVal ? v.bstrVal : u"", SysStringLen(v.bstrVal)); return true;
    default: return false;
    }
}

// The whole text must be a number (blanks around it allowed).
bool ParseWholeNumber(const CString& text, double& out) {
    size_t used = 0;
    out = ob::platform::ParseDouble(text, &used);
    if (used == 0) return false;
    while (used < text.size() && ob::platform::IsSpace(text[used])) ++used;
    return used == text.size();
}

bool ToNumber(const VARIANT& v, double& out) {
    switch (v.vt) {
    case VT_I1: out = v.cVal; return true;
    case VT_UI1: out = v.bVal; return true;
    case VT_I2: out = v.iVal; return true;
    case VT_UI2: out = v.uiVal; return true;
    case VT_I4: case VT_INT: out = v.lVal; return true;
    case VT_UI4: case VT_UINT: out = v.ulVal; return true;
    case VT_I8: out = static_cast<double>(v.llVal); return true;
    case VT_UI8: out = static_cast<double>(v.ullVal); return true;
    case VT_R4: out = v.fltVal; return true;
    case VT_R8: out = v.dblVal; return true;
    case VT_CY: out = static_cast<double>(v.llVal) / kCurrencyScale; return true;
    case VT_DATE: out = v.date; return true;
    case VT_BOOL: out = v.boolVal ? -1.0 : 0.0; return true;
    case VT_BSTR: {
        CString text;
        ToText(v, text);
        CString lower = text;
        lower.MakeLower();
        if (lower == u"true") out = -1.0;
        else if (lower == u"false") out = 0.0;
        else return ParseWholeNumber(text, out);
        return true;
    }
    default: return false;
    }
}

// Builds the converted value in `result`; the caller moves it into place.
HRESULT Convert(const VARIANT& source, VARTYPE vt, VARIANT& result) {
    VariantInit(&result);
    if (source.vt & (VT_ARRAY | VT_BYREF)) return DISP_E_TYPEMISMATCH;
    if (vt == VT_BSTR) {
        CString text;
        if (!ToText(source, text)) return DISP_E_TYPEMISMATCH;
        result.bstrVal = SysAllocStringLen(text.data(), static_cast<uint32_t>(text.size()));
        if (!result.bstrVal) return E_OUTOFMEMORY;
        result.vt = VT_BSTR;
        return S_OK;
    }
    double number = 0;
    if (!ToNumber(source, number)) return DISP_E_TYPEMISMATCH;
    switch (vt) {
    case VT_R8: result.dblVal = number; break;
    case VT_BOOL: result.boolVal = number != 0 ? VARIANT_TRUE : VARIANT_FALSE; break;
    case VT_I4: {
        double rounded = std::nearbyint(number);   // halves go to the even neighbour
        if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0)) return kOverflow;
        result.lVal = static_cast<int32_t>(rounded);
        break;
    }
    default: return DISP_E_TYPEMISMATCH;
    }
    result.vt = vt;
    return S_OK;
}

}  // namespace

extern "C" HRESULT VariantChangeType(VARIANT* destination, const VARIANT* source, uint16_t flags, VARTYPE vt) {
    (void)flags;
    if (!destination || !source) return E_INVALIDARG;
    VARIANT converted;
    HRESULT hr = Convert(*source, vt, converted);
    if (hr != S_OK) return hr;
    VariantClear(destination);   // also when it is the source: the result is complete already
    *destination = converted;
    return S_OK;
}

namespace ob {

void BasicVarToVariant(const CVarBase& value, VARIANT& out) {
    VariantInit(&out);
    switch (value.GetType()) {
    case BVT_OBJECT:
        out.vt = VT_DISPATCH;
        out.pdispVal = value.GetObjectValue();
        if (out.pdispVal) out.pdispVal->AddRef();
        break;
    case BVT_NUMBER:
        out.vt = VT_I4;
        out.lVal = static_cast<int32_t>(value.GetLongValue());   // fractions are dropped on purpose
        break;
    default: {
        CString text = value.GetStringValue();
        out.bstrVal = SysAllocStringLen(text.data(), static_cast<uint32_t>(text.size()));
        if (out.bstrVal) out.vt = VT_BSTR;
        break;
    }
    }
}

void VariantToBasicVar(VARIANT& value, CBasicVariable& out) {
    switch (value.vt) {
    case VT_EMPTY: case VT_NULL: out = CBasicVariable(); return;
    case VT_I2: out.SetValue(static_cast<int>(value.iVal)); return;
    case VT_I4: out.SetValue(static_cast<int>(value.lVal)); return;
    case VT_R4: out.SetValue(static_cast<double>(value.fltVal)); return;
    case VT_R8: out.SetValue(value.dblVal); return;
    case VT_DISPATCH: out.SetValue(value.pdispVal); return;
    case VT_BSTR: break;
    default:
        if (VariantChangeType(&value, &value, 0, VT_BSTR) != S_OK) {
            out = CBasicVariable();
            return;
        }
    }
    out.SetValue(CString(value.bstrVal ? value.bstrVal : u"", SysStringLen(value.bstrVal)));
}

void ValueToVariant(const CVarBase& value, VARIANT& out) {
    VariantInit(&out);
    switch (value.GetVarType()) {
    case VT_I4: out.vt = VT_I4; out.lVal = static_cast<int32_t>(value.GetLongValue()); break;
    case VT_R8: out.vt = VT_R8; out.dblVal = value.GetDoubleValue(); break;
    case VT_BOOL: out.vt = VT_BOOL; out.boolVal = value.GetLongValue() ? VARIANT_TRUE : VARIANT_FALSE; break;
    case VT_DISPATCH:
    case VT_BSTR: BasicVarToVariant(value, out); break;
    default: break;
    }
}

CVarBase VariantToValue(const VARIANT& value) {
    CVarBase result;
    if (value.vt == VT_EMPTY || value.vt == VT_NULL || result.SetValue(value)) return result;
    VARIANT text;
    VariantInit(&text);
    if (VariantChangeType(&text, &value, 0, VT_BSTR) == S_OK) result.SetValue(VariantToValue(text));
    VariantClear(&text);
    return result;
}

namespace {
struct CodeText {
    HRESULT code;
    const char16_t* text;
};
const CodeText kCodeTexts[] = {
    {E_FAIL, u"Unspecified error"},
    {E_INVALIDARG, u"The parameter is incorrect"},
    {E_OUTOFMEMORY, u"Not enough memory"},
    {DISP_E_MEMBERNOTFOUND, u"Member not found"},
    {DISP_E_UNKNOWNNAME, u"Unknown name"},
    {DISP_E_TYPEMISMATCH, u"Type mismatch"},
    {DISP_E_BADPARAMCOUNT, u"Invalid number of parameters"},
    {DISP_E_NONAMEDARGS, u"Does not support named arguments"},
    {DISP_E_EXCEPTION, u"Exception occurred"},
    {kOverflow, u"Out of present range"},
    {CO_E_CLASSSTRING, u"Invalid class string"},
};
}  // namespace

CString AutomationCodeText(HRESULT code) {
    for (const auto& entry : kCodeTexts)
        if (entry.code == code) return entry.text;
    return CString();
}

CString HexCode(HRESULT code) {
    static const char16_t kDigits[] = u"0123456789ABCDEF";
    CString text = u"0x";
    uint32_t bits = static_cast<uint32_t>(code);
    for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[(bits >> shift) & 0xF];
    return text;
}

}  // namespace ob
