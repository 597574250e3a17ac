// The arithmetic built-ins: trigonometry, logarithms, "sqr", "abs", "int",
// "isnan", the word and byte helpers, "max", "min", "ubound", "rand" and the
// angle conversions. Math domain errors are not reported: the C library's
// NaN or infinity is the result, which "isnan" can test.
#include <orvobasic/COrvoBasic.h>

#include "functions/Dms.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

using namespace ob;

namespace {

// Truncation toward zero into a signed 32-bit integer, saturating; NaN gives 0.
int ToInt32(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return 2147483647;
    if (x <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int>(x);
}

// Conversion to unsigned 32-bit for "loword", "hiword" and "swap". It
// saturates: negative numbers and NaN give 0, anything above 4294967295
// gives 4294967295; the rest is truncated toward zero.
uint32_t ToUint32(double x) {
    if (!(x > 0.0)) return 0;
    if (x >= 4294967295.0) return 0xFFFFFFFFu;
    return static_cast<uint32_t>(x);
}

// The four bytes reversed (byte 0 with 3, 1 with 2).
uint32_t ByteSwap(uint32_t v) {
    return (v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24);
}

// A draw of the C library's generator scaled to 0..32767, whatever its RAND_MAX.
int Rand15() {
    return static_cast<int>(static_cast<long long>(std::rand()) * 32768 / (static_cast<long long>(RAND_MAX) + 1));
}

// Built-ins of one number giving a double.
struct DoubleOp {
    FUNCTION_TYPE type;
    double (*f)(double);
};
const DoubleOp kDoubleOps[] = {
    {FT_SIN, [](double x) { return std::sin(x); }},
    {FT_COS, [](double x) { return std::cos(x); }},
    {FT_TAN, [](double x) { return std::tan(x); }},
    {FT_ASIN, [](double x) { return std::asin(x); }},
    {FT_ACOS, [](double x) { return std::acos(x); }},
    {FT_ATAN, [](double x) { return std::atan(x); }},
    {FT_LOG, [](double x) { return std::log(x); }},
    {FT_LOG2, [](double x) { return std::log(x) / std::log(2.0); }},
    {FT_LOG10, [](double x) { return std::log10(x); }},
    {FT_SQR, [](double x) { return std::sqrt(x); }},
    {FT_ABS, [](double x) { return std::fabs(x); }},
    {FT_RAD2DMS, SignedRadToDms},
    {FT_DMS2RAD, SignedDmsToRad},
};

// Built-ins of one number giving an integer.
struct IntOp {
    FUNCTION_TYPE type;
    int (*f)(double);
};
const IntOp kIntOps[] = {
    // truncation toward zero: int(-2.5) is -2
    {FT_INT, ToInt32},
    {FT_ISNAN, [](double x) { return std::isnan(x) ? 1 : 0; }},
    {FT_LOWORD, [](double x) { return static_cast<int>(ToUint32(x) & 0xFFFFu); }},
    {FT_HIWORD, [](double x) { return static_cast<int>(ToUint32(x) >> 16); }},
    // the swapped bytes read back as a signed 32-bit integer
    {FT_SWAP, [](double x) { return static_cast<int>(static_cast<int32_t>(ByteSwap(ToUint32(x)))); }},
    // 0..x: the integer part of x * r / 32767 for a draw r of 0..32767
    {FT_RAND, [](double x) { return ToInt32(x * Rand15() / 32767.0); }},
};

// "max" (or "min"): scans left to right, keeping the running value only while
// it is strictly greater (smaller) than the next argument. Needs two arguments.
bool Extreme(CBasicVariable& result, const CArgArray& args, bool wantMax) {
    double best = args[0].GetNumberValue();
    for (size_t i = 1; i < args.size(); ++i) {
        double next = args[i].GetNumberValue();
        bool keep = wantMax ? best > next : best < next;
        if (!keep) best = next;
    }
    result.SetValue(best);
    return true;
}

}  // namespace

// Runs one arithmetic built-in on the first argument; further arguments are
// ignored except by "max" and "min". With no argument at all the result is
// the integer 0 and false is returned, without an error.
bool COrvoBasic::ExecArithmetics(CBasicVariable& result, CArgArray& args, FUNCTION_TYPE type) {
    if (args.empty()) {
        result.SetValue(0);
        return false;
    }
    double x = args[0].GetNumberValue();
    for (const auto& op : kDoubleOps) {
        if (op.type == type) {
            result.SetValue(op.f(x));
            return true;
        }
    }
    for (const auto& op : kIntOps) {
        if (op.type == type) {
            result.SetValue(op.f(x));
            return true;
        }
    }
    switch (type) {
    case FT_MAX:
    case FT_MIN:
        if (args.size() < 2) {
            ReportError(24);
            return false;
        }
        return Extreme(result, args, type == FT_MAX);
    case FT_UBOUND:
        // the argument is a variable's name: ubound("list")
        result.SetValue(GetVariableSize(args[0].GetStringValue()));
        return true;
    default:
        return false;
    }
}
