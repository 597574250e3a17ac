// The string built-ins: "len", "left", "right", "mid", "instr", "lcase",
// "ucase", "replace", "val", "str", "repeat", "format", "getpath", "getname".
// Positions are zero-based and counted in UTF-16 characters; positions and
// counts outside the text are clamped, so no built-in reads past a string.
#include <orvobasic/COrvoBasic.h>

#include "functions/Format.h"

#include <cmath>

using namespace ob;

namespace {

// Longest text "repeat" builds, in characters (128 MiB); a longer request is
// error 45 "Incorrect parameter" rather than an allocation that could take
// the host down.
constexpr size_t kMaxRepeatLength = size_t{1} << 26;

// An "int" argument: the number truncated toward zero, saturating at the
// 32-bit range; NaN gives 0.
int ArgInt(const CBasicVariable& v) {
    double d = v.GetNumberValue();
    if (std::isnan(d)) return 0;
    if (d >= 2147483647.0) return 2147483647;
    if (d <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int>(d);
}

CString Text(const CBasicVariable& v) { return v.GetStringValue(); }

// Characters of the text "replace" makes: the text with every occurrence
// of `from` counted at the size of `to`.
size_t ReplacedLength(const CString& text, const CString& from, const CString& to) {
    if (from.empty() || to.size() <= from.size()) return text.size();
    size_t count = 0;
    for (size_t at = text.find(from); at != CString::npos; at = text.find(from, at + from.size())) ++count;
    return text.size() + count * (to.size() - from.size());
}

// Characters built between two looks at the deadline and at stop requests
// while "repeat" or "replace" makes a long text.
constexpr size_t kCheckSlice = size_t{1} << 20;

// What a checked builder returns when the run ended while it worked (the
// end has been reported): no error of its own to report.
constexpr int kRunEnded = -1;

// Looks at the deadline and at stop requests once `built` has grown by a
// slice since the last look.
bool KeepBuilding(COrvoBasic& basic, size_t built, size_t& lastLook) {
    if (built - lastLook < kCheckSlice) return true;
    lastLook = built;
    return basic.MayContinue(kCheckSlice * sizeof(char16_t));
}

// The text n times; empty for n <= 0 or an empty text, error 45 past the limit.
int Repeat(COrvoBasic& basic, CBasicVariable& result, const CArgArray& args) {
    CString text = Text(args[0]);
    int n = ArgInt(args[1]);
    CString out;
    if (n > 0 && !text.empty()) {
        if (text.size() > kMaxRepeatLength / static_cast<size_t>(n)) return 45;
        out.reserve(text.size() * static_cast<size_t>(n));
        size_t lastLook = 0;
        for (int i = 0; i < n; ++i) {
            out += text;
            if (!KeepBuilding(basic, out.size(), lastLook)) return kRunEnded;
        }
    }
    result.SetValue(std::move(out));
    return 0;
}

// Every occurrence of old replaced by new; an empty old changes nothing.
int Replace(COrvoBasic& basic, CBasicVariable& result, const CArgArray& args) {
    CString text = Text(args[0]);
    CString from = Text(args[1]);
    CString to = Text(args[2]);
    if (!from.empty() && text.find(from) != CString::npos) {
        CString out;
        out.reserve(ReplacedLength(text, from, to));   // no regrowth, which would copy it all at once
        size_t pos = 0;
        size_t lastLook = 0;
        for (size_t hit; (hit = text.find(from, pos)) != CString::npos; pos = hit + from.size()) {
            out.append(text, pos, hit - pos);
            out.append(to);
            if (!KeepBuilding(basic, out.size(), lastLook)) return kRunEnded;
        }
        out.append(text, pos, CString::npos);
        text = std::move(out);
    }
    result.SetValue(std::move(text));
    return 0;
}

// Everything up to and including the last backslash, when that stands at
// position 1 or later; otherwise the result stays unset.
int GetPath(CBasicVariable& result, const CArgArray& args) {
    CString text = Text(args[0]);
    int slash = text.ReverseFind(u'\\');
    if (slash >= 1) result.SetValue(text.Left(slash + 1));
    return 0;
}

// What follows the last backslash, when something does; otherwise (no
// backslash, or one at the very end) the result stays unset.
int GetName(CBasicVariable& result, const CArgArray& args) {
    CString text = Text(args[0]);
    int slash = text.ReverseFind(u'\\');
    if (slash >= 0 && slash + 1 < text.GetLength()) result.SetValue(text.Mid(slash + 1));
    return 0;
}

// A handler: fills the result, returns 0 or the number of the error to report.
using StringHandler = int (*)(CBasicVariable& result, const CArgArray& args);

struct StringOp {
    FUNCTION_TYPE type;
    size_t minArgs;   // at least this many arguments
    bool exact;       // and no more
    StringHandler run;
};

// The family. "len", "lcase", "ucase", "val" and "str" read one argument and
// ignore any further ones; called with none they report error 24.
const StringOp kStringOps[] = {
    // length of a string as an integer; any other value gives the double 0.0
    {FT_LEN, 1, false,
     [](CBasicVariable& r, const CArgArray& a) {
         if (a[0].GetType() == BVT_STRING) r.SetValue(a[0].GetCurrent().StringRef().GetLength());
         else r.SetValue(0.0);
         return 0;
     }},
    // the first n characters (all of them when n exceeds the length, none for n <= 0)
    {FT_LEFT, 2, true,
     [](CBasicVariable& r, const CArgArray& a) {
         r.SetValue(Text(a[0]).Left(ArgInt(a[1])));
         return 0;
     }},
    // the last n characters, clamped the same way
    {FT_RIGHT, 2, true,
     [](CBasicVariable& r, const CArgArray& a) {
         r.SetValue(Text(a[0]).Right(ArgInt(a[1])));
         return 0;
     }},
    // count characters from start; a negative start counts from 0, a start past the end gives ""
    {FT_MID, 3, true,
     [](CBasicVariable& r, const CArgArray& a) {
         r.SetValue(Text(a[0]).Mid(ArgInt(a[1]), ArgInt(a[2])));
         return 0;
     }},
    // position of the first occurrence, -1 when absent (an empty text sought is found at 0)
    {FT_INSTR, 2, true,
     [](CBasicVariable& r, const CArgArray& a) {
         r.SetValue(Text(a[0]).Find(Text(a[1])));
         return 0;
     }},
    {FT_LCASE, 1, false, [](CBasicVariable& r, const CArgArray& a) { r.SetValue(Text(a[0]).MakeLower()); return 0; }},
    {FT_UCASE, 1, false, [](CBasicVariable& r, const CArgArray& a) { r.SetValue(Text(a[0]).MakeUpper()); return 0; }},
    {FT_REPLACE, 3, true, nullptr},   // Replace, checked while it works
    // the number value as a double (a numeric prefix of a text counts)
    {FT_VAL, 1, false, [](CBasicVariable& r, const CArgArray& a) { r.SetValue(a[0].GetNumberValue()); return 0; }},
    // the string form (integers "%i", doubles "%f", truth values True/False)
    {FT_STR, 1, false, [](CBasicVariable& r, const CArgArray& a) { r.SetValue(Text(a[0])); return 0; }},
    {FT_REPEAT, 2, false, nullptr},   // Repeat, checked while it works
    // the value formatted by the format text (see Format.h)
    {FT_FORMAT, 2, true,
     [](CBasicVariable& r, const CArgArray& a) {
         r.SetValue(FormatValue(Text(a[1]), a[0].GetCurrent()));
         return 0;
     }},
    {FT_GETPATH, 1, false, GetPath},
    {FT_GETNAME, 1, false, GetName},
};

// Bytes a string built-in may build beyond its arguments (each copied once
// more as text), so that a result too large for the memory budget is
// refused before it is made.
uint64_t ResultBytes(FUNCTION_TYPE type, const CArgArray& args) {
    if (type == FT_LEN || type == FT_VAL) return 0;
    uint64_t copies = 0;
    for (const CBasicVariable& arg : args) copies += arg.GetCurrent().HeapBytes();
    if (type == FT_REPEAT && args.size() >= 2) {
        int n = ArgInt(args[1]);
        size_t length = args[0].GetCurrent().StringRef().size();
        if (n > 0 && length && length <= kMaxRepeatLength / static_cast<size_t>(n))
            return copies + length * static_cast<size_t>(n) * sizeof(char16_t);
    }
    if (type == FT_REPLACE && args.size() == 3)
        return copies + ReplacedLength(Text(args[0]), Text(args[1]), Text(args[2])) * sizeof(char16_t);
    return copies * 2;
}

}  // namespace

// Runs one string built-in: checks the argument count (error 24), then the
// handler. False for a wrong count, a reported error or a type not served here.
bool COrvoBasic::ExecStringOperation(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    for (const auto& op : kStringOps) {
        if (op.type != type) continue;
        if (args.size() < op.minArgs || (op.exact && args.size() != op.minArgs)) {
            ReportError(24);
            return false;
        }
        if (m_controlActive && !MayAllocate(ResultBytes(type, args))) return false;
        int error = op.run                   ? op.run(result, args)
                    : type == FT_REPEAT ? Repeat(*this, result, args)
                                        : Replace(*this, result, args);
        if (error == kRunEnded) return false;
        if (error) ReportError(error);
        return error == 0;
    }
    return false;
}
