// Retroreflection: every angle conversion and its inverse over a grid, the
// identities between the systems, EN 1436 and the coefficients by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "qomath/retro.h"

namespace {

constexpr double kDeg = 3.14159265358979323846 / 180.0;
double adiff(double a, double b) { return std::fabs(std::remainder(a - b, 360.0)); }  // modulo 360

using Conv = int (*)(float, float, float, float, float*, float*, float*, float*);

TEST(Retro, EveryConversionRoundTripsOverAGrid)
{
    // Grid values by input position, off the degenerate points (beta2 +-90,
    // alpha 0 or 180; beta 0 or 180 where omega_s is an input).
    const float cie[4][5] = {{-170, -30, 0, 40, 180}, {-70, 0, 15, 60, 70}, {0.2f, 1.05f, 33, 120, 170}, {-179, -90, 0, 45, 180}};
    const float in4[4][5] = {{0.5f, 30, 88.76f, 120, 175}, {-180, -1, 0, 60, 179}, {0.2f, 1.05f, 33, 120, 170}, {-180, -90, 0, 30, 150}};
    const float ap4[4][5] = {{0.5f, 30, 88.76f, 120, 175}, {0.2f, 1.05f, 33, 120, 170}, {-180, -90, 0, 30, 150}, {-180, -1, 0, 60, 179}};
    const struct { Conv there, back; const float (*g)[5]; } pairs[] = {{RETRO_CIE_TO_INTRINSIC, RETRO_INTRINSIC_TO_CIE, cie},
        {RETRO_INTRINSIC_TO_CIE, RETRO_CIE_TO_INTRINSIC, in4}, {RETRO_CIE_TO_APPLICATION, RETRO_APPLICATION_TO_CIE, cie},
        {RETRO_APPLICATION_TO_CIE, RETRO_CIE_TO_APPLICATION, ap4}, {RETRO_APPLICATION_TO_INTRINSIC, RETRO_INTRINSIC_TO_APPLICATION, ap4},
        {RETRO_INTRINSIC_TO_APPLICATION, RETRO_APPLICATION_TO_INTRINSIC, in4}};
    for (const auto& p : pairs)
        for (int n = 0; n < 625; ++n) {
            const float in[4] = {p.g[0][n % 5], p.g[1][n / 5 % 5], p.g[2][n / 25 % 5], p.g[3][n / 125]};
            float m[4], o[4];
            ASSERT_EQ(p.there(in[0], in[1], in[2], in[3], &m[0], &m[1], &m[2], &m[3]), 1);
            ASSERT_EQ(p.back(m[0], m[1], m[2], m[3], &o[0], &o[1], &o[2], &o[3]), 1);
            for (int k = 0; k < 4; ++k) ASSERT_LT(adiff(o[k], in[k]), 1e-4) << &p - pairs << " " << n << " " << k;
        }
    const float es[] = {0.5f, 1.24f, 10, 45, 89}, os[] = {0, 2.29f, 30, 80}, azs[] = {-170, 0, 15, 180};
    for (int n = 0; n < 80; ++n) {  // road marking -> CIE -> road marking
        const float e = es[n % 5], o = os[n / 5 % 4], az = azs[n / 20];
        float c[4], b[3];
        ASSERT_EQ(RETRO_ROADMARKING_TO_CIE(e, o, az, &c[0], &c[1], &c[2], &c[3]), 1);
        ASSERT_EQ(RETRO_CIE_TO_ROADMARKING(c[0], c[1], c[2], c[3], &b[0], &b[1], &b[2]), 1);
        EXPECT_LT(adiff(b[0], e) + adiff(b[1], o) + adiff(b[2], az), 1e-4) << n;
    }
}

TEST(Retro, IdentitiesAndEn1436)
{
    for (float b1 : {-150.0f, -40.0f, 0.0f, 25.0f, 170.0f})
        for (float b2 : {-60.0f, 0.0f, 35.0f}) {
            float i[4], a[4];
            ASSERT_EQ(RETRO_CIE_TO_INTRINSIC(b1, b2, 2.0f, 120, &i[0], &i[1], &i[2], &i[3]), 1);
            ASSERT_EQ(RETRO_CIE_TO_APPLICATION(b1, b2, 2.0f, 120, &a[0], &a[1], &a[2], &a[3]), 1);
            // cos beta = cos beta1 cos beta2; alpha is common; application = intrinsic with omega_s negated.
            EXPECT_NEAR(std::cos(i[0] * kDeg), std::cos(b1 * kDeg) * std::cos(b2 * kDeg), 1e-6);
            EXPECT_TRUE(i[2] == a[1] && std::fabs(i[2] - 2.0f) < 1e-5f && a[0] == i[0] && a[2] == i[3]);
            EXPECT_LT(adiff(a[3], -i[1]), 1e-5);
            // beta2 = 0: the entrance half-plane lies in the observation plane, away from O when beta1 > 0.
            if (b2 == 0.0f && b1 != 0.0f) {
                EXPECT_LT(adiff(i[3], b1 > 0 ? 180.0 : 0.0), 1e-4) << b1;
            }
        }
    float obs, ill, c[4];
    ASSERT_EQ(RETRO_ROADMARKING_ANGLES(30, 1.2f, 0.65f, &obs, &ill), 1);
    EXPECT_TRUE(std::fabs(obs - 2.29061f) < 1e-5f && std::fabs(ill - 1.24121f) < 1e-5f);  // atan(1.2 / 30), atan(0.65 / 30)
    ASSERT_EQ(RETRO_ROADMARKING_TO_CIE(ill, obs, 0, &c[0], &c[1], &c[2], &c[3]), 1);
    // Co-planar: alpha = 2.29061 - 1.24121; R (straight up) leans to the eye's side; D towards the car.
    EXPECT_LT(adiff(c[0], -(90.0 - 1.24121)) + adiff(c[1], 0) + adiff(c[2], 1.0494) + adiff(c[3], 180), 1e-4);
    EXPECT_EQ(RETRO_CIE_TO_ROADMARKING(100, 0, 1, 0, &c[0], &c[1], &c[2]), -3);  // lamp below the surface
}

TEST(Retro, CoefficientsAndHostileInput)
{
    // 0.5 cd back from 10 lx on 0.01 m^2: R_A = 5; 0.3 cd/m^2 under 10 lx: R_L = 30 mcd;
    // R_A 1 seen at 60 degrees: R_L = 1000 / cos 60 = 2000 mcd.
    EXPECT_TRUE(std::fabs(RETRO_COEFF_RA(0.5f, 10, 0.01f) - 5) + std::fabs(RETRO_RI_TO_RA(float(RETRO_RA_TO_RI(5, 0.01f)), 0.01f) - 5) < 1e-5);
    EXPECT_TRUE(std::fabs(RETRO_COEFF_RL(0.3f, 10) - 30) < 1e-5 && std::fabs(RETRO_RA_TO_RL(1, 60) - 2000) < 1e-9);
    // The same marking by both routes: L = I / (A cos v) at the EN 1436 view.
    const double v = 90.0 - 2.29061, l = 0.5 / (0.01 * std::cos(v * kDeg));
    EXPECT_NEAR(RETRO_COEFF_RL(float(l), 10) / RETRO_RA_TO_RL(5, float(v)), 1.0, 1e-6);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (double r : {RETRO_COEFF_RI(1, 0), RETRO_COEFF_RI(-1, 1), RETRO_COEFF_RA(1, 1, 0), RETRO_COEFF_RL(nan, 1),
                     RETRO_RA_TO_RL(1, 90), RETRO_RL_TO_RA(1, -1), RETRO_RA_TO_RI(1, -2)})
        EXPECT_EQ(r, 0.0);
    float o[4] = {-7, -7, -7, -7};
    EXPECT_TRUE(RETRO_CIE_TO_INTRINSIC(0, 91, 1, 0, &o[0], &o[1], &o[2], &o[3]) == -2 && o[0] + o[1] + o[2] + o[3] == 0.0f);  // cleared
    EXPECT_EQ(RETRO_INTRINSIC_TO_CIE(nan, 0, 1, 0, &o[0], &o[1], &o[2], &o[3]) + RETRO_ROADMARKING_TO_CIE(91, 1, 0, &o[0], &o[1], &o[2], &o[3]), -4);
    EXPECT_EQ(RETRO_CIE_TO_APPLICATION(0, 0, 1, 0, &o[0], nullptr, &o[2], &o[3]) + RETRO_ROADMARKING_ANGLES(0, 1, 1, &o[0], &o[1]), -3);
}

}  // namespace
