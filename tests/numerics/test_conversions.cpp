// Beer's law, optical density and lengths: hand-worked values, round trips
// through the inverse, hostile input and the array form.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

#include "qomath/conversions.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

TEST(Conversions, HandWorkedValuesAndRoundTrips)
{
    // T = 10 %: A = 1; ND 0.3 passes 10^-0.3 = 0.501187; 12 in = 30.48 cm; 1 ft = 0.3048 m.
    EXPECT_NEAR(BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(0.1f), 1.0, 1e-7);
    EXPECT_NEAR(ND_TO_TRANSMISSION(0.3f), 0.5011872, 1e-7);
    EXPECT_NEAR(INCH_TO_CM(12.0f), 30.48, 1e-9);
    EXPECT_NEAR(FOOT_TO_METRE(1.0f), 0.3048, 1e-9);
    EXPECT_NEAR(METRE_TO_FOOT(0.3048f), 1.0, 1e-7);
    // A = epsilon l c = 6220 L/(mol cm) (NADH at 340 nm) * 1 cm * 1e-4 mol/L = 0.622.
    EXPECT_NEAR(BEERSLAW_ABSORBANCE(6220.0f, 1.0f, 1e-4f), 0.622, 1e-6);
    EXPECT_NEAR(BEERSLAW_CONCENTRATION(0.622f, 6220.0f, 1.0f), 1e-4, 1e-10);
    for (float v : {1e-6f, 0.02f, 0.5f, 1.0f, 3.7f}) {
        EXPECT_NEAR(BEERSLAW_ABSORBANCE_TO_TRANSMITTANCE(float(BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(v))), v, v * 1e-6);
        EXPECT_NEAR(ND_TO_TRANSMISSION(float(TRANSMISSION_TO_ND(v))), v, v * 1e-6);
        EXPECT_NEAR(CM_TO_INCH(float(INCH_TO_CM(v))), v, v * 1e-6);
        EXPECT_NEAR(METRE_TO_FOOT(float(FOOT_TO_METRE(-v))), -v, v * 1e-6);
    }
    // Optical density and absorbance are one law: ND d equals absorbance d.
    EXPECT_EQ(ND_TO_TRANSMISSION(1.3f), BEERSLAW_ABSORBANCE_TO_TRANSMITTANCE(1.3f));
}

TEST(Conversions, BadInputGivesZero)
{
    for (float t : {0.0f, -0.5f, kNaN, kInf}) {
        EXPECT_EQ(BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(t), 0.0) << t;
        EXPECT_EQ(TRANSMISSION_TO_ND(t), 0.0) << t;
    }
    EXPECT_EQ(ND_TO_TRANSMISSION(-50.0f), 0.0);  // 10^50 is no float
    EXPECT_EQ(INCH_TO_CM(kNaN), 0.0);
    EXPECT_EQ(BEERSLAW_ABSORBANCE(-1.0f, 1.0f, 1.0f), 0.0);
    EXPECT_EQ(BEERSLAW_CONCENTRATION(0.5f, 0.0f, 1.0f), 0.0);
    EXPECT_EQ(BEERSLAW_CONCENTRATION(0.5f, 100.0f, kInf), 0.0);
}

TEST(Conversions, ArrayFormMatchesValuesAndFlagsBadEntries)
{
    const float in[4] = {0.1f, 1.0f, 2.5f, 10.0f};
    float out[6];
    for (int which = QOMATH_CONVERT_T_TO_ABSORBANCE; which <= QOMATH_CONVERT_METRE_TO_FOOT; ++which) {
        std::fill_n(out, 6, -7.0f);
        ASSERT_EQ(QOConvertArray(which, in, out + 1, 4), 1) << which;
        EXPECT_EQ(out[0], -7.0f);
        EXPECT_EQ(out[5], -7.0f);
        float back[4];
        ASSERT_EQ(QOConvertArray(which ^ 1, out + 1, back, 4), 1);  // pairs are inverses
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(back[i], in[i], in[i] * 2e-6f) << which;
    }
    float bad[3] = {0.5f, -1.0f, kNaN};
    EXPECT_EQ(QOConvertArray(QOMATH_CONVERT_T_TO_ND, bad, bad, 3), 0);  // in place
    EXPECT_NEAR(bad[0], 0.30103f, 1e-5f);
    EXPECT_EQ(bad[1], 0.0f);
    EXPECT_EQ(bad[2], 0.0f);
    float big = FLT_MAX;
    EXPECT_EQ(QOConvertArray(QOMATH_CONVERT_INCH_TO_CM, &big, out, 1), 0);
    EXPECT_EQ(QOConvertArray(8, in, out, 4), -2);
    EXPECT_EQ(QOConvertArray(-1, in, out, 4), -2);
    EXPECT_EQ(QOConvertArray(0, nullptr, out, 4), -1);
    EXPECT_EQ(QOConvertArray(0, in, out, 0), -1);
}

}  // namespace
