// The packed degrees-minutes-seconds conversions: exact digits for whole
// minutes and seconds, round trips both ways, and the host's replacement.
#include "functions/Dms.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;

double Rad(double degrees) { return degrees * kPi / 180.0; }

TEST(DmsTest, PacksDegreesMinutesAndSeconds) {
    EXPECT_DOUBLE_EQ(ob::BuiltinRadToDms(Rad(30.0)), 30.0);
    EXPECT_DOUBLE_EQ(ob::BuiltinRadToDms(Rad(30.5)), 30.30);
    EXPECT_DOUBLE_EQ(ob::BuiltinRadToDms(Rad(30.0 + 15.0 / 60 + 20.5 / 3600)), 30.15205);
    EXPECT_DOUBLE_EQ(ob::BuiltinRadToDms(-Rad(359.0 + 59.0 / 60 + 59.0 / 3600)), -359.5959);
    // degrees are not reduced to one turn
    EXPECT_DOUBLE_EQ(ob::BuiltinRadToDms(Rad(725.0)), 725.0);
    EXPECT_EQ(ob::BuiltinRadToDms(0.0), 0.0);
}

TEST(DmsTest, ReadsThePackedForm) {
    EXPECT_DOUBLE_EQ(ob::BuiltinDmsToRad(30.3), Rad(30.5));
    EXPECT_DOUBLE_EQ(ob::BuiltinDmsToRad(-45.0), Rad(-45.0));
    EXPECT_NEAR(ob::BuiltinDmsToRad(0.0001), Rad(1.0 / 3600), 1e-15);
    // minutes of 60 or more are taken as they stand
    EXPECT_DOUBLE_EQ(ob::BuiltinDmsToRad(10.75), Rad(11.25));
}

TEST(DmsTest, RoundTripsStayWithinAMicroSecondOfArc) {
    const double microArcsec = Rad(1.0 / 3600e6);
    for (double r = -7.0; r <= 7.0; r += 0.0137) {
        EXPECT_NEAR(ob::BuiltinDmsToRad(ob::BuiltinRadToDms(r)), r, microArcsec) << r;
    }
    for (int d = 0; d < 360; d += 7) {
        for (int m = 0; m < 60; m += 13) {
            for (int s = 0; s < 60; s += 11) {
                double packed = d + m / 100.0 + s / 10000.0 + 0.123456 / 10000.0;
                EXPECT_NEAR(ob::BuiltinRadToDms(ob::BuiltinDmsToRad(packed)), packed, 1e-10) << packed;
            }
        }
    }
}

TEST(DmsTest, NonFiniteAndHugeAnglesAreDefined) {
    EXPECT_TRUE(std::isnan(ob::BuiltinRadToDms(std::nan(""))));
    EXPECT_TRUE(std::isnan(ob::BuiltinDmsToRad(std::nan(""))));
    EXPECT_EQ(ob::BuiltinRadToDms(-INFINITY), -INFINITY);
    EXPECT_EQ(ob::BuiltinDmsToRad(INFINITY), INFINITY);
    EXPECT_TRUE(std::isfinite(ob::BuiltinRadToDms(1e300)));
    EXPECT_TRUE(std::isfinite(ob::BuiltinDmsToRad(1e300)));
    EXPECT_NEAR(ob::BuiltinDmsToRad(ob::BuiltinRadToDms(1e7)), 1e7, 1e-3);
}

double Twice(double x) { return 2 * x; }
double Negate(double x) { return -x; }

TEST(DmsTest, HostConvertersReplaceTheBuiltInOnes) {
    ob::SetDmsConverters(Twice, Negate);
    EXPECT_EQ(ob::SignedRadToDms(1.5), 3.0);
    EXPECT_EQ(ob::SignedDmsToRad(1.5), -1.5);
    ob::SetDmsConverters(nullptr, Negate);
    EXPECT_DOUBLE_EQ(ob::SignedRadToDms(Rad(30.0)), 30.0);
    EXPECT_EQ(ob::SignedDmsToRad(2.0), -2.0);
    ob::SetDmsConverters(nullptr, nullptr);
    EXPECT_DOUBLE_EQ(ob::SignedDmsToRad(30.3), Rad(30.5));
}

}  // namespace
