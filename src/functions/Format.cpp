#include "functions/Format.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <locale.h>
#include <string>

namespace ob {

namespace {

// How a conversion letter takes its value.
enum class Kind { None, Signed, Unsigned, Floating, String, Char };

// The conversion letters, by kind.
struct LetterClass {
    std::u16string_view letters;
    Kind kind;
};
constexpr LetterClass kLetters[] = {
    {u"di", Kind::Signed},        {u"ouxX", Kind::Unsigned}, {u"eEfFgGaA", Kind::Floating},
    {u"sS", Kind::String},        {u"cC", Kind::Char},
};

// Length modifiers and the integer width each selects; longer spellings
// first so that "hh" is not read as "h".
struct LengthModifier {
    std::u16string_view text;
    int bits;
};
constexpr LengthModifier kLengths[] = {
    {u"hh", 8}, {u"h", 16}, {u"ll", 64}, {u"l", 32}, {u"L", 64},
    {u"q", 64}, {u"j", 64}, {u"z", 64},  {u"t", 64},
};

// One parsed conversion: the parts we rebuild the C format from.
struct Conversion {
    bool minus = false, plus = false, space = false, hash = false, zero = false;
    int width = -1;       // -1: none given
    int precision = -1;   // -1: none given
    int bits = 32;        // integer width chosen by the length modifier
    char16_t letter = 0;
    Kind kind = Kind::None;
    size_t end = 0;       // index just past the letter
};

Kind KindOf(char16_t letter) {
    for (const auto& c : kLetters)
        if (c.letters.find(letter) != std::u16string_view::npos) return c.kind;
    return Kind::None;
}

// Reads a run of decimal digits; the number saturates at kMaxFormatWidth.
int ReadCount(std::u16string_view f, size_t& i) {
    int n = 0;
    while (i < f.size() && f[i] >= u'0' && f[i] <= u'9') {
        n = std::min(kMaxFormatWidth, n * 10 + (f[i] - u'0'));
        ++i;
    }
    return n;
}

// Reads the flag characters "-+ #0" (repeats allowed).
void ReadFlags(std::u16string_view f, size_t& i, Conversion& c) {
    for (; i < f.size(); ++i) {
        switch (f[i]) {
        case u'-': c.minus = true; break;
        case u'+': c.plus = true; break;
        case u' ': c.space = true; break;
        case u'#': c.hash = true; break;
        case u'0': c.zero = true; break;
        default: return;
        }
    }
}

// Reads an optional length modifier and records its integer width.
void ReadLength(std::u16string_view f, size_t& i, Conversion& c) {
    for (const auto& m : kLengths) {
        if (f.substr(i, m.text.size()) == m.text) {
            c.bits = m.bits;
            i += m.text.size();
            return;
        }
    }
}

// Parses the conversion whose "%" stands at f[pos]. False when it is not
// well formed: no letter, an unknown letter ("%n", "%p"), or a "*" width.
bool ParseConversion(std::u16string_view f, size_t pos, Conversion& c) {
    size_t i = pos + 1;
    ReadFlags(f, i, c);
    if (i < f.size() && f[i] >= u'0' && f[i] <= u'9') c.width = ReadCount(f, i);
    if (i < f.size() && f[i] == u'.') {
        ++i;
        c.precision = ReadCount(f, i);
    }
    ReadLength(f, i, c);
    if (i >= f.size()) return false;
    c.letter = f[i];
    c.kind = KindOf(c.letter);
    c.end = i + 1;
    return c.kind != Kind::None;
}

// Truncates toward zero into 64 bits, saturating; NaN gives 0.
int64_t TruncateToInt64(double d) {
    if (std::isnan(d)) return 0;
    if (d >= 9223372036854775807.0) return INT64_MAX;
    if (d <= -9223372036854775808.0) return INT64_MIN;
    return static_cast<int64_t>(d);
}

// Clamps into the signed range of `bits` bits.
int64_t ClampSigned(int64_t n, int bits) {
    if (bits >= 64) return n;
    int64_t hi = (int64_t{1} << (bits - 1)) - 1;
    int64_t lo = -hi - 1;
    return n < lo ? lo : n > hi ? hi : n;
}

// The low `bits` bits, as unsigned.
uint64_t LowBits(int64_t n, int bits) {
    uint64_t u = static_cast<uint64_t>(n);
    return bits >= 64 ? u : u & ((uint64_t{1} << bits) - 1);
}

// The "C" locale, made once; numbers never take the host's decimal comma.
locale_t CLocale() {
    static locale_t loc = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return loc;
}

// Switches the calling thread to the "C" locale for its lifetime.
class CLocaleScope {
public:
    CLocaleScope() : m_old(CLocale() ? uselocale(CLocale()) : nullptr) {}
    ~CLocaleScope() {
        if (m_old) uselocale(m_old);
    }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    locale_t m_old;
};

// The C format text rebuilt from the parsed parts, with `length` before the letter.
std::string BuildSpec(const Conversion& c, const char* length) {
    std::string conversion = "%";
    if (c.minus) conversion += '-';
    if (c.plus) conversion += '+';
    if (c.space) conversion += ' ';
    if (c.hash) conversion += '#';
    if (c.zero) conversion += '0';
    if (c.width >= 0) conversion += std::to_string(c.width);
    if (c.precision >= 0) conversion += '.' + std::to_string(c.precision);
    conversion += length;
    conversion += static_cast<char>(c.letter);
    return conversion;
}

// snprintf of one argument into a buffer of the exact size, widened to UTF-16.
// `conversion` is always one we built, never script text.
template <typename T>
CString CFormat(const std::string& conversion, T arg) {
    CLocaleScope scope;
    int n = std::snprintf(nullptr, 0, conversion.c_str(), arg);
    if (n <= 0) return CString();
    std::string buf(static_cast<size_t>(n) + 1, '\0');
    std::snprintf(buf.data(), buf.size(), conversion.c_str(), arg);
    buf.resize(static_cast<size_t>(n));
    return CString(buf.begin(), buf.end());
}

// Pads text with blanks to the field width, on the right for "-".
CString Pad(CString text, const Conversion& c) {
    if (c.width > text.GetLength()) {
        size_t fill = static_cast<size_t>(c.width - text.GetLength());
        text.insert(c.minus ? text.size() : 0, fill, u' ');
    }
    return text;
}

// The character a "%c" shows: a string's first one, or a number's code.
CString CharOf(const CVarBase& value) {
    if (value.GetType() == BVT_STRING) return value.StringRef().Left(1);
    int64_t code = TruncateToInt64(value.GetDoubleValue());
    if (code < 1 || code > 0xFFFF) return CString();
    return CString(1, static_cast<char16_t>(code));
}

// Applies one parsed conversion to the value.
CString Render(const Conversion& c, const CVarBase& value) {
    switch (c.kind) {
    case Kind::Signed: {
        int64_t n = ClampSigned(TruncateToInt64(value.GetDoubleValue()), c.bits);
        return CFormat(BuildSpec(c, "ll"), static_cast<long long>(n));
    }
    case Kind::Unsigned: {
        uint64_t n = LowBits(TruncateToInt64(value.GetDoubleValue()), c.bits);
        return CFormat(BuildSpec(c, "ll"), static_cast<unsigned long long>(n));
    }
    case Kind::Floating:
        return CFormat(BuildSpec(c, ""), value.GetDoubleValue());
    case Kind::String: {
        CString text = value.GetStringValue();
        if (c.precision >= 0) text = text.Left(c.precision);
        return Pad(std::move(text), c);
    }
    case Kind::Char:
        return Pad(CharOf(value), c);
    default:
        return CString();
    }
}

}  // namespace

CString FormatValue(std::u16string_view format, const CVarBase& value) {
    CString out;
    bool applied = false;
    for (size_t i = 0; i < format.size();) {
        if (format[i] != u'%') {
            out += format[i++];
            continue;
        }
        if (i + 1 < format.size() && format[i + 1] == u'%') {
            out += u'%';
            i += 2;
            continue;
        }
        Conversion c;
        if (!applied && ParseConversion(format, i, c)) {
            out += Render(c, value);
            applied = true;
            i = c.end;
            continue;
        }
        out += format[i++];   // a stray or second conversion stays text
    }
    return out;
}

}  // namespace ob
