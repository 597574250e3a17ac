// The clock built-ins: "year", "month", "day", "hour", "minute", "second",
// "weekday". Each call reads the local time afresh.
#include <orvobasic/COrvoBasic.h>

#include <ctime>

using namespace ob;

namespace {

// Which part of the broken-down local time each built-in returns.
struct ClockField {
    FUNCTION_TYPE type;
    int (*get)(const std::tm&);
};
const ClockField kClockFields[] = {
    {FT_YEAR, [](const std::tm& t) { return t.tm_year + 1900; }},
    {FT_MONTH, [](const std::tm& t) { return t.tm_mon + 1; }},
    {FT_DAY, [](const std::tm& t) { return t.tm_mday; }},
    {FT_HOUR, [](const std::tm& t) { return t.tm_hour; }},
    {FT_MINUTE, [](const std::tm& t) { return t.tm_min; }},
    // a leap second (60) is reported as 59
    {FT_SECOND, [](const std::tm& t) { return t.tm_sec > 59 ? 59 : t.tm_sec; }},
    // 1 is Sunday
    {FT_WEEKDAY, [](const std::tm& t) { return t.tm_wday + 1; }},
};

}  // namespace

// Runs one clock built-in; its arguments (already evaluated) are ignored.
bool COrvoBasic::ExecTimeFunc(CBasicVariable& result, CArgArray&, FUNCTION_TYPE type) {
    for (const auto& field : kClockFields) {
        if (field.type != type) continue;
        std::time_t now = std::time(nullptr);
        std::tm local{};
        if (!localtime_r(&now, &local)) return false;
        result.SetValue(field.get(local));
        return true;
    }
    return false;
}
