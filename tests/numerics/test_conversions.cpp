// Beer's law, optical density and lengths: hand-worked values, the array
// form against its inverse, and bad input.
#include <gtest/gtest.h>

#include <cfloat>
#include <limits>

#include "qomath/conversions.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(Conversions, HandWorkedValues)
{
    // T = 10 %: A = 1; ND 0.3 passes 10^-0.3; 12 in = 30.48 cm;
    // NADH at 340 nm: 6220 L/(mol cm) * 1 cm * 1e-4 mol/L = 0.622.
    EXPECT_NEAR(BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(0.1f), 1.0, 1e-7);
    EXPECT_NEAR(ND_TO_TRANSMISSION(0.3f), 0.5011872, 1e-7);
    EXPECT_NEAR(INCH_TO_CM(12.0f), 30.48, 1e-9);
    EXPECT_NEAR(BEERSLAW_ABSORBANCE(6220.0f, 1.0f, 1e-4f), 0.622, 1e-6);
    EXPECT_NEAR(BEERSLAW_CONCENTRATION(0.622f, 6220.0f, 1.0f), 1e-4, 1e-10);
    for (double bad : {BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(0.0f), TRANSMISSION_TO_ND(-0.5f), ND_TO_TRANSMISSION(-50.0f),
                       INCH_TO_CM(kNaN), BEERSLAW_ABSORBANCE(-1.0f, 1.0f, 1.0f), BEERSLAW_CONCENTRATION(0.5f, 0.0f, 1.0f)})
        EXPECT_EQ(bad, 0.0);
}

TEST(Conversions, ArrayFormRoundTripsAndFlagsBadEntries)
{
    const float in[4] = {0.1f, 1.0f, 2.5f, 10.0f};
    for (int which = QOMATH_CONVERT_T_TO_ABSORBANCE; which <= QOMATH_CONVERT_METRE_TO_FOOT; ++which) {
        float out[6] = {-7, 0, 0, 0, 0, -7}, back[4];
        ASSERT_EQ(QOConvertArray(which, in, out + 1, 4), 1) << which;
        ASSERT_EQ(QOConvertArray(which ^ 1, out + 1, back, 4), 1);  // the pairs are inverses
        EXPECT_TRUE(out[0] == -7.0f && out[5] == -7.0f);
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(back[i], in[i], in[i] * 2e-6f) << which;
    }
    float bad[4] = {0.5f, -1.0f, kNaN, FLT_MAX};
    EXPECT_EQ(QOConvertArray(QOMATH_CONVERT_T_TO_ND, bad, bad, 3), 0);  // in place
    EXPECT_NEAR(bad[0], 0.30103f, 1e-5f);
    EXPECT_TRUE(bad[1] == 0.0f && bad[2] == 0.0f);
    EXPECT_EQ(QOConvertArray(QOMATH_CONVERT_INCH_TO_CM, bad + 3, bad, 1), 0);
    EXPECT_EQ(QOConvertArray(8, in, bad, 4), -2);
    EXPECT_EQ(QOConvertArray(0, nullptr, bad, 4) + QOConvertArray(0, in, bad, 0), -2);
}

}  // namespace
