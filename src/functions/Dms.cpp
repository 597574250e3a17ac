#include "functions/Dms.h"

#include <atomic>
#include <cmath>
#include <cstdint>

namespace ob {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int64_t kMicroPerDegree = 3'600'000'000;   // micro-seconds of arc
constexpr int64_t kMicroPerMinute = 60'000'000;
// Beyond this many degrees the fixed-point path would overflow 64 bits; plain
// floating point (already coarser than a micro-second there) takes over.
constexpr double kExactLimit = 1e8;

std::atomic<DmsConverter> g_radToDms{nullptr};
std::atomic<DmsConverter> g_dmsToRad{nullptr};

// Non-negative degrees to the packed form. Works in whole micro-seconds of arc
// so that 30 degrees packs as 30.0 and not as 29.5959999.
double DegreesToPacked(double degrees) {
    if (!(degrees < kExactLimit)) {
        double d = std::floor(degrees);
        double minutes = (degrees - d) * 60.0;
        double m = std::floor(minutes);
        return d + m / 100.0 + (minutes - m) * 60.0 / 10000.0;
    }
    int64_t total = std::llround(degrees * static_cast<double>(kMicroPerDegree));
    int64_t d = total / kMicroPerDegree;
    int64_t m = total % kMicroPerDegree / kMicroPerMinute;
    int64_t micro = total % kMicroPerMinute;
    return static_cast<double>(d) + static_cast<double>(m) / 100.0 + static_cast<double>(micro) / 1e10;
}

// A non-negative packed value to degrees; the digits are split in fixed point
// (DDDMMSS and six decimals) so that 30.3 reads as 30 degrees 30 minutes.
// Minutes or seconds of 60 and more are taken as they stand.
double PackedToDegrees(double packed) {
    if (!(packed < kExactLimit)) {
        double d = std::floor(packed);
        double minutes = (packed - d) * 100.0;
        double m = std::floor(minutes);
        return d + m / 60.0 + (minutes - m) * 100.0 / 3600.0;
    }
    int64_t digits = std::llround(packed * 1e10);
    int64_t d = digits / 10'000'000'000;
    int64_t m = digits / 100'000'000 % 100;
    int64_t micro = digits % 100'000'000;
    return static_cast<double>(d) + static_cast<double>(m) / 60.0 + static_cast<double>(micro) / 3600e6;
}

}  // namespace

double BuiltinRadToDms(double radians) {
    if (!std::isfinite(radians)) return radians;
    double packed = DegreesToPacked(std::fabs(radians) * 180.0 / kPi);
    return std::signbit(radians) ? -packed : packed;
}

double BuiltinDmsToRad(double packed) {
    if (!std::isfinite(packed)) return packed;
    double radians = PackedToDegrees(std::fabs(packed)) * kPi / 180.0;
    return std::signbit(packed) ? -radians : radians;
}

double SignedRadToDms(double radians) {
    DmsConverter f = g_radToDms.load();
    return f ? f(radians) : BuiltinRadToDms(radians);
}

double SignedDmsToRad(double packed) {
    DmsConverter f = g_dmsToRad.load();
    return f ? f(packed) : BuiltinDmsToRad(packed);
}

void SetDmsConverters(DmsConverter radToDms, DmsConverter dmsToRad) {
    g_radToDms.store(radToDms);
    g_dmsToRad.store(dmsToRad);
}

}  // namespace ob
