// Retroreflection: every angle conversion and its inverse over a grid, the
// identities between the systems, the EN 1436 geometry worked by hand, the
// coefficients and hostile input.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "qomath/retro.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kDeg = 3.14159265358979323846 / 180.0;

// Difference of two angles, modulo 360.
double adiff(double a, double b) { return std::fabs(std::remainder(a - b, 360.0)); }

using Conv = int (*)(float, float, float, float, float*, float*, float*, float*);
struct Pair {
    const char* name;
    Conv there, back;
};
const Pair kPairs[] = {
    {"cie-intrinsic", RETRO_CIE_TO_INTRINSIC, RETRO_INTRINSIC_TO_CIE},
    {"intrinsic-cie", RETRO_INTRINSIC_TO_CIE, RETRO_CIE_TO_INTRINSIC},
    {"cie-application", RETRO_CIE_TO_APPLICATION, RETRO_APPLICATION_TO_CIE},
    {"application-cie", RETRO_APPLICATION_TO_CIE, RETRO_CIE_TO_APPLICATION},
    {"application-intrinsic", RETRO_APPLICATION_TO_INTRINSIC, RETRO_INTRINSIC_TO_APPLICATION},
    {"intrinsic-application", RETRO_INTRINSIC_TO_APPLICATION, RETRO_APPLICATION_TO_INTRINSIC},
};

TEST(Retro, EveryConversionRoundTripsOverAGrid)
{
    // Grid values per input position, kept off the degenerate points (beta2
    // +-90, alpha 0 or 180; beta 0 or 180 where omega_s is an input).
    const float cie[4][6] = {{-170, -95, -30, 0, 40, 180}, {-70, -20, 0, 15, 60, 70},
                             {0.2f, 1.05f, 33, 90, 120, 170}, {-179, -90, 0, 45, 135, 180}};
    const float intr[4][6] = {{0.5f, 5, 30, 88.76f, 120, 175}, {-180, -120, -1, 0, 60, 179},
                              {0.2f, 1.05f, 33, 90, 120, 170}, {-180, -90, 0, 30, 90, 150}};
    const float app[4][6] = {{0.5f, 5, 30, 88.76f, 120, 175}, {0.2f, 1.05f, 33, 90, 120, 170},
                             {-180, -90, 0, 30, 90, 150}, {-180, -120, -1, 0, 60, 179}};
    const float (*grids[])[6] = {cie, intr, cie, app, app, intr};
    for (int p = 0; p < 6; ++p) {
        const float(*g)[6] = grids[p];
        double worst = 0.0;
        for (int n = 0; n < 6 * 6 * 6 * 6; ++n) {
            const float in[4] = {g[0][n % 6], g[1][n / 6 % 6], g[2][n / 36 % 6], g[3][n / 216]};
            float mid[4], out[4];
            ASSERT_EQ(kPairs[p].there(in[0], in[1], in[2], in[3], &mid[0], &mid[1], &mid[2], &mid[3]), 1);
            ASSERT_EQ(kPairs[p].back(mid[0], mid[1], mid[2], mid[3], &out[0], &out[1], &out[2], &out[3]), 1);
            for (int k = 0; k < 4; ++k) worst = std::fmax(worst, adiff(out[k], in[k]));
        }
        EXPECT_LT(worst, 1e-4) << kPairs[p].name;
    }
    // Road marking -> CIE -> road marking.
    for (float e : {0.5f, 1.24f, 10.0f, 45.0f, 89.0f})
        for (float o : {0.0f, 2.29f, 30.0f, 80.0f})
            for (float az : {-170.0f, 0.0f, 15.0f, 180.0f}) {
                float c[4], back[3];
                ASSERT_EQ(RETRO_ROADMARKING_TO_CIE(e, o, az, &c[0], &c[1], &c[2], &c[3]), 1);
                ASSERT_EQ(RETRO_CIE_TO_ROADMARKING(c[0], c[1], c[2], c[3], &back[0], &back[1], &back[2]), 1);
                EXPECT_LT(adiff(back[0], e) + adiff(back[1], o) + adiff(back[2], az), 1e-4) << e << " " << o << " " << az;
            }
}

TEST(Retro, IdentitiesBetweenSystems)
{
    for (float b1 : {-150.0f, -40.0f, 0.0f, 25.0f, 170.0f})
        for (float b2 : {-60.0f, 0.0f, 35.0f})
            for (float eps : {-90.0f, 0.0f, 120.0f}) {
                float beta, omega, alpha, gamma, app[4];
                ASSERT_EQ(RETRO_CIE_TO_INTRINSIC(b1, b2, 2.0f, eps, &beta, &omega, &alpha, &gamma), 1);
                // cos beta = cos beta1 cos beta2; the observation angle is common to all systems.
                EXPECT_NEAR(std::cos(beta * kDeg), std::cos(b1 * kDeg) * std::cos(b2 * kDeg), 1e-6);
                EXPECT_NEAR(alpha, 2.0f, 1e-5f);
                // With beta2 = 0 the entrance half-plane is the observation plane:
                // gamma 180 when R turns away from the observation side, 0 towards it.
                if (b2 == 0.0f && b1 != 0.0f) {
                    EXPECT_LT(adiff(gamma, b1 > 0 ? 180.0 : 0.0), 1e-4) << b1;
                }
                ASSERT_EQ(RETRO_CIE_TO_APPLICATION(b1, b2, 2.0f, eps, &app[0], &app[1], &app[2], &app[3]), 1);
                EXPECT_EQ(app[0], beta);
                EXPECT_EQ(app[2], gamma);
                EXPECT_LT(adiff(app[3], -omega), 1e-5);
            }
    // No entrance angle: the rotation is the only thing the systems carry apart.
    float beta, omega, alpha, gamma;
    ASSERT_EQ(RETRO_CIE_TO_INTRINSIC(0, 0, 1, 0, &beta, &omega, &alpha, &gamma), 1);
    EXPECT_EQ(beta, 0.0f);
    EXPECT_EQ(omega, 0.0f);  // undefined at beta 0
    EXPECT_LT(adiff(gamma, 180.0), 1e-5);  // O lies on the datum side, away from u = -D
    // Rotating the retroreflector about R changes only epsilon in the CIE system.
    float c1[4], c2[4];
    ASSERT_EQ(RETRO_INTRINSIC_TO_CIE(30, 10, 0.5f, 60, &c1[0], &c1[1], &c1[2], &c1[3]), 1);
    ASSERT_EQ(RETRO_INTRINSIC_TO_CIE(30, 10 + 90, 0.5f, 60, &c2[0], &c2[1], &c2[2], &c2[3]), 1);
    EXPECT_LT(adiff(c1[0], c2[0]) + adiff(c1[1], c2[1]) + adiff(c1[2], c2[2]), 1e-4);
    EXPECT_LT(adiff(c2[3] - c1[3], -90.0), 1e-4);
}

TEST(Retro, RoadMarkingGeometryOfEn1436)
{
    float obs, ill;
    ASSERT_EQ(RETRO_ROADMARKING_ANGLES(30, 1.2f, 0.65f, &obs, &ill), 1);
    EXPECT_NEAR(obs, 2.29061f, 1e-5f);  // atan(1.2 / 30)
    EXPECT_NEAR(ill, 1.24121f, 1e-5f);  // atan(0.65 / 30)
    float c[4];
    ASSERT_EQ(RETRO_ROADMARKING_TO_CIE(ill, obs, 0, &c[0], &c[1], &c[2], &c[3]), 1);
    // Co-planar: alpha = 2.29061 - 1.24121; R (straight up) leans to the eye's side of I.
    EXPECT_NEAR(c[0], -(90.0f - 1.24121f), 1e-4f);
    EXPECT_NEAR(c[1], 0.0f, 1e-5f);
    EXPECT_NEAR(c[2], 1.04940f, 1e-4f);
    EXPECT_LT(adiff(c[3], 180.0), 1e-4);  // D runs towards the vehicle: "datum down"
    float r[3];
    EXPECT_EQ(RETRO_CIE_TO_ROADMARKING(0, 0, 10, 0, &r[0], &r[1], &r[2]), 1);  // facing the lamp: 90, 80
    EXPECT_NEAR(r[0], 90.0f, 1e-5f);
    EXPECT_NEAR(r[1], 80.0f, 1e-4f);
    EXPECT_EQ(RETRO_CIE_TO_ROADMARKING(100, 0, 1, 0, &r[0], &r[1], &r[2]), -3);  // lamp below the surface
}

TEST(Retro, CoefficientsByHand)
{
    // 0.5 cd back from 10 lx on 0.01 m^2: R_I = 0.05 cd/lx, R_A = 5 cd/(lx m^2).
    EXPECT_DOUBLE_EQ(RETRO_COEFF_RI(0.5f, 10), 0.5f / 10.0);
    EXPECT_NEAR(RETRO_COEFF_RA(0.5f, 10, 0.01f), 5.0, 1e-6);
    EXPECT_NEAR(RETRO_RI_TO_RA(float(RETRO_RA_TO_RI(5, 0.01f)), 0.01f), 5.0, 1e-6);
    // 0.3 cd/m^2 under 10 lx: R_L = 30 mcd; R_A 1 seen at 60 degrees: R_L = 2000 mcd.
    EXPECT_NEAR(RETRO_COEFF_RL(0.3f, 10), 30.0, 1e-5);
    EXPECT_NEAR(RETRO_RA_TO_RL(1, 60), 2000.0, 1e-9);
    EXPECT_NEAR(RETRO_RL_TO_RA(2000, 60), 1.0, 1e-9);
    // Cross-check through the geometry: L = I / (A cos v) for the EN 1436 view (v = 90 - 2.29061).
    const double v = 90.0 - 2.29061, l = 0.5 / (0.01 * std::cos(v * kDeg));
    EXPECT_NEAR(RETRO_COEFF_RL(float(l), 10) / RETRO_RA_TO_RL(5, float(v)), 1.0, 1e-6);
    for (double r : {RETRO_COEFF_RI(1, 0), RETRO_COEFF_RI(-1, 1), RETRO_COEFF_RA(1, 1, 0), RETRO_COEFF_RL(kNaN, 1),
                     RETRO_RA_TO_RL(1, 90), RETRO_RA_TO_RL(1, -1), RETRO_RL_TO_RA(1, kNaN), RETRO_RA_TO_RI(1, -2)})
        EXPECT_EQ(r, 0.0);
}

TEST(Retro, HostileInput)
{
    float o[4] = {-7, -7, -7, -7};
    EXPECT_EQ(RETRO_CIE_TO_INTRINSIC(0, 91, 1, 0, &o[0], &o[1], &o[2], &o[3]), -2);
    EXPECT_EQ(o[0] + o[1] + o[2] + o[3], 0.0f);  // cleared
    EXPECT_EQ(RETRO_CIE_TO_INTRINSIC(kNaN, 0, 1, 0, &o[0], &o[1], &o[2], &o[3]), -2);
    EXPECT_EQ(RETRO_INTRINSIC_TO_CIE(-1, 0, 1, 0, &o[0], &o[1], &o[2], &o[3]), -2);
    EXPECT_EQ(RETRO_APPLICATION_TO_CIE(10, 181, 0, 0, &o[0], &o[1], &o[2], &o[3]), -2);
    EXPECT_EQ(RETRO_ROADMARKING_TO_CIE(91, 1, 0, &o[0], &o[1], &o[2], &o[3]), -2);
    EXPECT_EQ(RETRO_CIE_TO_APPLICATION(0, 0, 1, 0, &o[0], nullptr, &o[2], &o[3]), -1);
    EXPECT_EQ(RETRO_ROADMARKING_ANGLES(0, 1, 1, &o[0], &o[1]), -2);
    EXPECT_EQ(RETRO_ROADMARKING_ANGLES(30, 1, 1, nullptr, &o[1]), -1);
}

}  // namespace
