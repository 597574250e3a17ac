#include "platform/NumberFormat.h"

#include "platform/CharClass.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <locale.h>
#include <string>

namespace ob::platform {
namespace {

locale_t CLocale() {
    static locale_t loc = newlocale(LC_NUMERIC_MASK, "C", static_cast<locale_t>(nullptr));
    return loc;
}

void AppendAscii(CString& out, const char* begin, const char* end) {
    out.append(begin, end);   // ASCII bytes widen one to one
}

}  // namespace

CString FormatInt(int64_t value) {
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, value);
    CString out;
    AppendAscii(out, buf, r.ptr);
    return out;
}

void AppendDouble(CString& out, double value) {
    if (std::isnan(value)) {
        out += std::signbit(value) ? u"-nan" : u"nan";
        return;
    }
    if (std::isinf(value)) {
        out += value < 0 ? u"-inf" : u"inf";
        return;
    }
    char small[64];
    auto r = std::to_chars(small, small + sizeof small, value, std::chars_format::fixed, 6);
    if (r.ec == std::errc()) {
        AppendAscii(out, small, r.ptr);
        return;
    }
    std::string big(400, '\0');   // |value| up to 1.8e308 has 309 integer digits
    r = std::to_chars(big.data(), big.data() + big.size(), value, std::chars_format::fixed, 6);
    AppendAscii(out, big.data(), r.ptr);
}

CString FormatDouble(double value) {
    CString out;
    AppendDouble(out, value);
    return out;
}

double ParseDouble(std::u16string_view text, size_t* consumed) {
    size_t i = 0;
    while (i < text.size() && IsSpace(text[i])) ++i;
    // strtod reads ASCII only; take the ASCII run that can hold a number.
    char small[128];
    std::string big;
    size_t n = 0;
    while (i + n < text.size() && text[i + n] < 128 && text[i + n] > ' ') ++n;
    char* buf = small;
    if (n >= sizeof small) {
        big.resize(n + 1);
        buf = big.data();
    }
    for (size_t k = 0; k < n; ++k) buf[k] = static_cast<char>(text[i + k]);
    buf[n] = '\0';
    char* end = buf;
    double v = strtod_l(buf, &end, CLocale());
    size_t used = static_cast<size_t>(end - buf);
    if (consumed) *consumed = used ? i + used : 0;
    return used ? v : 0.0;
}

int32_t ParseLong(std::u16string_view text) {
    size_t i = 0;
    while (i < text.size() && IsSpace(text[i])) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    int64_t v = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        v = v * 10 + (text[i] - '0');
        if (v > 2147483648LL) break;
    }
    if (negative) v = -v;
    if (v > INT32_MAX) return INT32_MAX;
    if (v < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(v);
}

}  // namespace ob::platform
