// Chromaticity coordinates, L*a*b* / L*u*v* and the colour differences.
#include "colorimetry/colour_tests.hpp"

namespace {

void expect3(const float* v, double a, double b, double c, double tol)
{
    EXPECT_NEAR(v[0], a, tol);
    EXPECT_NEAR(v[1], b, tol);
    EXPECT_NEAR(v[2], c, tol);
}

}  // namespace

TEST(Chromaticity, PublishedWhitePoints)
{
    // The published white points of D65 and A (Y = 100) and their x, y, u', v'.
    const float d65[3] = {95.047f, 100.0f, 108.883f}, a[3] = {109.850f, 100.0f, 35.585f};
    float xyz[3], uv[2], xy[3] = {7, 7, 7};
    ASSERT_EQ(TristimulusXYZTOCIE1931xyz(d65, xyz), 1);
    expect3(xyz, 0.31271, 0.32902, 1.0 - 0.31271 - 0.32902, 3e-5);
    ASSERT_EQ(TristimulusXYZTOCIE1931xyz(a, xyz), 1);
    expect3(xyz, 0.44757, 0.40745, 1.0 - 0.44757 - 0.40745, 3e-5);
    ASSERT_EQ(TristimulusXYZToUCS1976uv(d65, uv), 1);
    EXPECT_NEAR(uv[0], 0.1978, 1e-4);
    EXPECT_NEAR(uv[1], 0.4683, 1e-4);
    const float d65_uv[2] = {0.1978f, 0.4683f};
    ASSERT_EQ(UCS1976uvToCIE1931xy(d65_uv, xy), 1);
    expect3(xy, 0.3127, 0.3290, 0.0, 1e-4);
    EXPECT_EQ(xy[2], 0.0f);
    EXPECT_NEAR(UCS1976UV_TO_CIE1931X(0.1978f, 0.4683f), xy[0], 1e-6);
    EXPECT_NEAR(TRISTIMULUSXYZ_TO_CIE1931Y(a[0], a[1], a[2]), 0.40745, 3e-5);
}

TEST(Chromaticity, RoundTripsAndTheTwoUcsSystems)
{
    for (float x = 0.05f; x < 0.75f; x += 0.05f) {
        for (float y = 0.05f; x + y < 0.95f; y += 0.05f) {
            SCOPED_TRACE(testing::Message() << "x " << x << " y " << y);
            const float in[2] = {x, y};
            float u76[2], u60[2], back[3];
            ASSERT_EQ(CIE1931xyToUCS1976uv(in, u76), 1);
            ASSERT_EQ(CIE1931xyToUCS1960uv(in, u60), 1);
            EXPECT_EQ(u76[0], u60[0]);
            EXPECT_FLOAT_EQ(u76[1], 1.5f * u60[1]);
            ASSERT_EQ(UCS1976uvToCIE1931xy(u76, back), 1);
            expect3(back, x, y, 0.0, 1e-6);
            EXPECT_NEAR(UCS1976UV_TO_CIE1931Y(u76[0], u76[1]), y, 1e-6);
            EXPECT_EQ(CIE1931XY_TO_UCS1960U(x, y), CIE1931XY_TO_UCS1976U(x, y));
            EXPECT_NEAR(CIE1931XY_TO_UCS1976V(x, y), 1.5 * CIE1931XY_TO_UCS1960V(x, y), 1e-12);

            // The XYZ routes to u, v agree with the x, y ones.
            const float Y = 42.0f, XYZ[3] = {x * Y / y, Y, (1 - x - y) * Y / y};
            float uv60[2], uv76[2];
            ASSERT_EQ(TristimulusXYZToCIE1960uv(XYZ, uv60), 1);
            ASSERT_EQ(TristimulusXYZToUCS1976uv(XYZ, uv76), 1);
            EXPECT_NEAR(uv76[0], u76[0], 1e-6);
            EXPECT_NEAR(uv76[1], 1.5f * uv60[1], 1e-6);
            EXPECT_EQ(TRISTIMULUSXYZ_TO_CIE1960U(XYZ[0], Y, XYZ[2]),
                      TRISTIMULUSXYZ_TO_UCS1976U(XYZ[0], Y, XYZ[2]));
            EXPECT_NEAR(TRISTIMULUSXYZ_TO_UCS1976V(XYZ[0], Y, XYZ[2]), uv76[1], 1e-6);
        }
    }
}

TEST(Chromaticity, HostileInput)
{
    float out[3] = {7, 7, 7};
    const float cancel[3] = {6, 1, -7}, nan3[3] = {1, kNaN, 1};  // zero sum and denominator
    for (const float* in : {cancel, nan3, static_cast<const float*>(nullptr)}) {
        EXPECT_EQ(TristimulusXYZTOCIE1931xyz(in, out), -1);
        EXPECT_EQ(TristimulusXYZToUCS1976uv(in, out), -1);  // the 1960 u, v share its guard
    }
    // The x, y, z sum is a float: 1 + 1e-8 - 1 vanishes there.
    const float tiny_sum[3] = {1.0f, 1e-8f, -1.0f}, small[3] = {5e-16f, 0, 0}, ok[3] = {1e-14f, 0, 0};
    EXPECT_EQ(TristimulusXYZTOCIE1931xyz(tiny_sum, out), -1);
    EXPECT_EQ(TristimulusXYZTOCIE1931xyz(small, out), -1);
    for (float v : out) EXPECT_EQ(v, 7.0f);
    EXPECT_EQ(TristimulusXYZTOCIE1931xyz(ok, out), 1);
    EXPECT_EQ(out[0], 1.0f);

    const float uv_pole[2] = {0.0f, 0.75f}, xy_pole[2] = {1.5f, 0.0f};
    out[0] = out[1] = out[2] = 7;
    EXPECT_EQ(UCS1976uvToCIE1931xy(uv_pole, out), -1);
    EXPECT_EQ(CIE1931xyToUCS1960uv(xy_pole, out), -1);
    EXPECT_EQ(UCS1976uvToCIE1931xy(nullptr, out), -1);
    for (float v : out) EXPECT_EQ(v, 7.0f);

    EXPECT_EQ(TRISTIMULUSXYZ_TO_CIE1931X(0, 0, 0), 0.0);
    EXPECT_EQ(TRISTIMULUSXYZ_TO_CIE1931Y(kNaN, 1, 1), 0.0);
    EXPECT_EQ(UCS1976UV_TO_CIE1931Y(0.0f, 0.75f), 0.0);
    EXPECT_EQ(CIE1931XY_TO_UCS1976U(1.5f, 0.0f), 0.0);
    // 3 * -0.33333334f rounds to -1 in float: the scalar denominator is zero,
    // the array one (double) is not.
    const float float_pole[3] = {1.0f, 0.0f, -0.33333334f};
    EXPECT_EQ(TRISTIMULUSXYZ_TO_CIE1960U(1.0f, 0.0f, -0.33333334f), 0.0);
    ASSERT_EQ(TristimulusXYZToCIE1960uv(float_pole, out), 1);
    EXPECT_LT(out[0], -1e8f);
}

TEST(LabLuv, WhiteWorkedValuesAndThresholds)
{
    const float white[3] = {95.047f, 100.0f, 108.883f};
    const float sample_white[3] = {0.95047f, 1.0f, 1.08883f};
    const float uv_white[2] = {0.1978f, 0.4683f};
    float lab[3], luv[3];
    ASSERT_EQ(CalculateCIE1976Lab(sample_white, nullptr, white, nullptr, lab), 1);
    expect3(lab, 100, 0, 0, 1e-5);

    // White (80, 100, 125); t = (0.216, 0.125, 0.064) has cube roots 0.6, 0.5, 0.4.
    const float sample[3] = {0.1728f, 0.125f, 0.08f};
    for (const float scale : {1.0f, 0.1f}) {  // only the white's ratios count
        const float w[3] = {80 * scale, 100 * scale, 125 * scale};
        ASSERT_EQ(CalculateCIE1976Lab(sample, uv_white, w, uv_white, lab), 1);
        expect3(lab, 42, 50, 20, 2e-5);
        // L*u*v*: the white's Y is only a guard.
        const float uv[2] = {0.25f, 0.5f}, uvn[2] = {0.2f, 0.45f};
        ASSERT_EQ(CalculateCIE1976Luv(sample, uv, w, uvn, luv), 1);
        expect3(luv, 42, 27.3, 27.3, 2e-5);
    }

    // Dark samples: the linear branches differ (7.787 t + 16/116 vs 903.3 Y);
    // at Y = 0.008856 L*a*b* already takes the cube root, L*u*v* not yet.
    const float dark[3] = {0.0008f, 0.001f, 0.00125f}, edge[3] = {0.8f, 0.008856f, 1.25f};
    const float w[3] = {80, 100, 125};
    ASSERT_EQ(CalculateCIE1976Lab(dark, nullptr, w, nullptr, lab), 1);
    expect3(lab, 116 * 7.787 * 0.001, 0, 0, 1e-6);
    ASSERT_EQ(CalculateCIE1976Luv(dark, uv_white, w, uv_white, luv), 1);
    EXPECT_FLOAT_EQ(luv[0], 0.9033f);
    ASSERT_EQ(CalculateCIE1976Lab(edge, nullptr, w, nullptr, lab), 1);
    EXPECT_FLOAT_EQ(lab[0], static_cast<float>(116 * std::cbrt(0.008856f) - 16));
    ASSERT_EQ(CalculateCIE1976Luv(edge, uv_white, w, uv_white, luv), 1);
    EXPECT_FLOAT_EQ(luv[0], static_cast<float>(903.3 * 0.008856f));
    const float above[3] = {0, std::nextafter(0.008856f, 1.0f), 0};
    ASSERT_EQ(CalculateCIE1976Luv(above, uv_white, w, uv_white, luv), 1);
    EXPECT_FLOAT_EQ(luv[0], static_cast<float>(116 * std::cbrt(above[1]) - 16));
}

TEST(LabLuv, HostileInput)
{
    const float sample[3] = {0.5f, 0.5f, 0.5f}, uv[2] = {0.2f, 0.45f};
    const float no_y[3] = {95, 1e-16f, 108}, no_z[3] = {95, 100, 0}, neg_x[3] = {-1, 100, 108};
    const float nan_y[3] = {95, kNaN, 108}, w[3] = {95, 100, 108}, bad[3] = {0.5f, kNaN, 0.5f};
    float out[3];
    for (const float* white : {no_y, no_z, neg_x, nan_y, w}) {  // w: with a NaN sample
        const float* s = white == w ? bad : sample;
        out[0] = out[1] = out[2] = 7;
        EXPECT_EQ(CalculateCIE1976Lab(s, uv, white, uv, out), -1);
        expect3(out, 0, 0, 0, 0);
        if (white == no_z || white == neg_x) continue;  // L*u*v* looks only at Yn
        out[0] = out[1] = out[2] = 7;
        EXPECT_EQ(CalculateCIE1976Luv(s, uv, white, uv, out), -1);
        expect3(out, 0, 0, 0, 0);
    }
    out[0] = 7;
    EXPECT_EQ(CalculateCIE1976Luv(sample, nullptr, w, uv, out), -1);
    EXPECT_EQ(CalculateCIE1976Lab(sample, uv, nullptr, uv, out), -1);
    EXPECT_EQ(out[0], 7.0f);
}

TEST(DeltaE, EuclideanAndCiede2000WithTheFixedAFactor)
{
    const typ_Lab c2{10, 2, 3}, c3{13, 6, 15};  // differences 3, 4, 12
    EXPECT_FLOAT_EQ(CalculateDeltaE(&c2, &c3), 13.0f);
    EXPECT_TRUE(CalculateDeltaE(nullptr, &c2) == 0.0f && CalculateDeltaE(&c2, nullptr) == 0.0f);

    float de = -1;
    ASSERT_EQ(GetDeltaE(50, 10, 0, 50, 0, 0, &de), 1);
    // By hand: C'1 = 10 F, C'2 = 0, only the chroma term: 10 F / (1 + 0.045 * 5 F).
    const double F = 1.4999999999998;
    EXPECT_FLOAT_EQ(de, static_cast<float>(10 * F / (1 + 0.045 * 5 * F)));
    // Textbook CIEDE2000 takes G from the mean chroma 5 and gives about 11.2049.
    const double G = 0.5 * (1 - std::sqrt(std::pow(5.0, 7) / (std::pow(5.0, 7) + std::pow(25.0, 7))));
    EXPECT_GT(std::fabs(de - 10 * (1 + G) / (1 + 0.045 * 5 * (1 + G))), 5e-3);
    ASSERT_EQ(GetDeltaE(50, 0, 0, 60, 0, 0, &de), 1);  // lightness only, mean L 55
    EXPECT_FLOAT_EQ(de, static_cast<float>(10 / (1 + 0.015 * 25 / std::sqrt(45.0))));

    // Pairs worked in double precision from the CIEDE2000 formula with the
    // frozen a* factor F above and this library's hue mean (360 degrees added
    // whenever the hues lie more than 180 apart): hues across 0 degrees (where
    // the +360 shows most), neutrals, the blue region where R_T acts, and
    // exactly opposite hues in both orders, where dh' = -pi becomes +pi and
    // the result is far from symmetric. Equal colours give 0 exactly.
    const struct { float p[3], q[3]; double want; } pairs[] = {
        {{50, 40, -7}, {50, 60, 12}, 10.1065954},    {{50, 60, 12}, {50, 40, -7}, 10.1065954},
        {{20, -60, -10}, {80, 30, 2}, 107.928994},   {{50, 2, -1}, {50, -1, 2}, 5.25961199},
        {{80, -10, 30}, {20, -60, -60}, 74.2510258}, {{50, 30, 0}, {50, -30, 0}, 63.5183029},
        {{50, -1, -60}, {50, 2, 30}, 45.1989945},    {{20, 0, 0}, {80, 0, 0}, 60.0},
        {{50, 10, -40}, {50, -5, -45}, 17.5152082},  {{30, -10, -2}, {70, 10, 2}, 47.8009071},
        {{50, 30, -1}, {50, -60, 2}, 62.9020794},    {{50, -60, 2}, {50, 30, -1}, 81.3784094},
        {{50, 40, -7}, {50, 40, -7}, 0.0}};
    for (const auto& c : pairs) {
        ASSERT_EQ(GetDeltaE(c.p[0], c.p[1], c.p[2], c.q[0], c.q[1], c.q[2], &de), 1);
        EXPECT_NEAR(de, c.want, 2e-7 * c.want) << c.p[0] << " " << c.p[1] << " " << c.p[2] << " / "
                                               << c.q[0] << " " << c.q[1] << " " << c.q[2];
    }

    de = 7;
    EXPECT_EQ(GetDeltaE(50, 0, 0, 50, 0, 0, nullptr), -1);
    EXPECT_EQ(GetDeltaE(50, kNaN, 0, 50, 0, 0, &de), -1);
    EXPECT_EQ(GetDeltaE(50, 0, 0, std::numeric_limits<float>::infinity(), 0, 0, &de), -1);
    EXPECT_EQ(GetDeltaE(3.4e38f, 0, 0, -3.4e38f, 0, 0, &de), -1);  // beyond float
    EXPECT_EQ(de, 7.0f);
    ASSERT_EQ(GetDeltaE(50, 3e38f, 3e38f, 50, -3e38f, 1, &de), 1);  // huge chroma, no overflow
    EXPECT_TRUE(std::isfinite(de));
}
