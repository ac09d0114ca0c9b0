// The summary calculations against the individual library calls they stand
// for, against known colours, and against hostile input.
#include "colorimetry/colour_tests.hpp"

namespace {

using CC = std::array<float, QOMATH_CC_COUNT>;
using RC = std::array<float, QOMATH_RC_COUNT>;

int cc(const Spectrum& s, int unit, int white, int illuminant, CC& r)
{
    return ColorimetricCalc(s.wl.data(), s.v.data(), s.n(), unit, white, illuminant, r.data());
}

int rc(const Spectrum& s, float lo, float hi, RC& r)
{
    return RadiometryCalc(s.wl.data(), s.v.data(), s.n(), lo, hi, r.data());
}

std::array<float, 3> xyz_of(const Spectrum& s)
{
    std::array<float, 3> XYZ{}, xyz{};
    EXPECT_EQ(CalcTristimulusXYZ1931_2(s.wl.data(), s.v.data(), s.n(), XYZ.data()), 1);
    EXPECT_EQ(TristimulusXYZTOCIE1931xyz(XYZ.data(), xyz.data()), 1);
    return xyz;
}

TEST(SummaryColorimetric, IlluminantAAgainstTheLibraryCalls)
{
    const Spectrum a = cie(6);
    CC r{};
    ASSERT_EQ(cc(a, 1, 1, 0, r), 1);
    EXPECT_NEAR(r[QOMATH_CC_CCT], 2856.0f, 2.0f);
    EXPECT_NEAR(r[QOMATH_CC_x], 0.4476f, 2e-4f);
    EXPECT_NEAR(r[QOMATH_CC_y], 0.4074f, 2e-4f);

    std::array<float, 3> XYZ{}, XYZ10{};
    std::array<float, 2> uv{};
    ASSERT_EQ(CalcTristimulusXYZ1931_2(a.wl.data(), a.v.data(), a.n(), XYZ.data()), 1);
    ASSERT_EQ(CalcTristimulusXYZ1964_2(a.wl.data(), a.v.data(), a.n(), XYZ10.data()), 1);
    ASSERT_EQ(TristimulusXYZToCIE1960uv(XYZ.data(), uv.data()), 1);
    typ_cct cct{};
    ASSERT_EQ(CCTCalculate(uv.data(), reinterpret_cast<float*>(&cct)), 1);
    std::array<float, QOMATH_CRI_RESULT_CELLS> cri{};
    ASSERT_EQ(CRI_DefaultCalc2(nullptr, nullptr, 0, a.wl.data(), a.v.data(), a.n(), cct.cct,
                               cri.data()), 1);
    std::array<float, 4> lux{};
    ASSERT_EQ(IlluminanceCalc(a.wl.data(), a.v.data(), a.n(), lux.data()), 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(r[QOMATH_CC_X + i], XYZ[i]);
        EXPECT_EQ(r[QOMATH_CC_X10 + i], XYZ10[i]);
    }
    for (int i = 0; i < 15; ++i) EXPECT_EQ(r[QOMATH_CC_R1 + i], cri[i]) << i;
    // {cell, value}: the library calls' results, then the echoed options.
    for (auto [cell, want] : {std::pair{QOMATH_CC_U, uv[0]}, {QOMATH_CC_CCT, cct.cct}, {QOMATH_CC_DUV, cct.duv},
                              {QOMATH_CC_RA, cri[16]}, {QOMATH_CC_PHOTOMETRIC, lux[1]}, {QOMATH_CC_UNIT, 1.0f},
                              {QOMATH_CC_WHITE, 1.0f}, {QOMATH_CC_ILLUMINANT, -1.0f}})
        EXPECT_EQ(r[cell], want) << cell;
    auto sample = xyz_of(a), white = xyz_of(cie(9));
    std::array<float, 3> locus{};
    float dominant = 0;
    ASSERT_EQ(DominantWavelength2(sample.data(), white.data(), locus.data(), &dominant), 1);
    EXPECT_EQ(r[QOMATH_CC_DOMINANT_WL], dominant);
    CC own{};  // A from its own white: no dominant wavelength
    ASSERT_EQ(cc(a, 1, 2, 0, own), 1);
    EXPECT_TRUE(own[QOMATH_CC_DOMINANT_WL] == 0.0f && own[QOMATH_CC_DOMINANT_KIND] == 0.0f);

    // The range form over the same grid: the same numbers.
    typ_wlinfo range{300, 830, 1};
    CC r2{};
    ASSERT_EQ(ColorimetricCalc2(a.v.data(), &range, 1, QOMATH_WHITE_D65, 0, r2.data()), 1);
    EXPECT_EQ(r, r2);
}

TEST(SummaryColorimetric, TransmittanceAndLines)
{
    const Spectrum clear = flat(380, 780, 5);
    CC r{};
    ASSERT_EQ(cc(clear, 5, 0, 1, r), 1);
    const auto d65 = xyz_of(cie(9));
    EXPECT_NEAR(r[QOMATH_CC_x], d65[0], 1e-3f);
    EXPECT_NEAR(r[QOMATH_CC_y], d65[1], 1e-3f);
    EXPECT_EQ((Vec{r[QOMATH_CC_RA], r[QOMATH_CC_PHOTOMETRIC], r[QOMATH_CC_ILLUMINANT]}), (Vec{0, 0, 1}));
    std::array<float, 4> lux{};  // the same spectrum as an irradiance
    ASSERT_EQ(cc(clear, 1, 0, 0, r), 1);
    ASSERT_EQ(IlluminanceCalc(clear.wl.data(), clear.v.data(), clear.n(), lux.data()), 1);
    EXPECT_EQ(r[QOMATH_CC_PHOTOMETRIC], lux[1]);
    // A reflectance of 1 under A looks like A.
    ASSERT_EQ(cc(clear, 6, 0, 2, r), 1);
    EXPECT_NEAR(r[QOMATH_CC_x], 0.4476f, 1e-3f);

    // A narrow line: dominant at the line, nearly pure.
    auto gauss = [](float w, double at, double sd) {
        return std::exp(-0.5 * std::pow((w - at) / sd, 2));
    };
    const Spectrum line = grid(360, 830, 1, [&](float w) { return gauss(w, 550, 2); });
    ASSERT_EQ(cc(line, 1, 0, 0, r), 1);
    EXPECT_NEAR(r[QOMATH_CC_DOMINANT_WL], 550.0f, 1.0f);
    EXPECT_EQ(r[QOMATH_CC_DOMINANT_KIND], 1.0f);
    EXPECT_GT(r[QOMATH_CC_EXCITATION_PURITY], 0.95f);
    // Two lines, blue and red: a purple, reported by its complementary wavelength.
    const Spectrum purple =
        grid(360, 830, 1, [&](float w) { return gauss(w, 440, 3) + gauss(w, 650, 3); });
    ASSERT_EQ(cc(purple, 0, 0, 0, r), 1);
    EXPECT_EQ(r[QOMATH_CC_DOMINANT_KIND], -1.0f);
    EXPECT_TRUE(r[QOMATH_CC_DOMINANT_WL] > 490.0f && r[QOMATH_CC_DOMINANT_WL] < 570.0f) << r[QOMATH_CC_DOMINANT_WL];
    EXPECT_EQ(r[QOMATH_CC_EXCITATION_PURITY], 0.0f);
}

TEST(SummaryColorimetric, HostileInput)
{
    const Spectrum s = flat(380, 780, 5);
    Spectrum repeated = s, holed = s;
    repeated.wl[10] = repeated.wl[9];
    holed.v[3] = std::numeric_limits<float>::quiet_NaN();
    // Every failure leaves the whole record cleared.
    const CC zero{};
    CC r{};
    const struct { Spectrum x; int n, unit, status; } cases[] = {
        {Spectrum{}, 81, 1, -1}, {s, 81, 7, -1}, {s, 4, 1, -2}, {repeated, 81, 1, -2}, {holed, 81, 1, -2},
        {flat(850, 1000, 5), 31, 1, -3}, {flat(380, 780, 5, 0), 81, 1, -5},
        {flat(380, 780, 5, 3e38f), 81, 1, -5}};
    for (const auto& c : cases) {
        r.fill(7.0f);
        EXPECT_EQ(ColorimetricCalc(c.x.wl.data(), c.x.v.data(), c.n, c.unit, 0, 0, r.data()), c.status)
            << &c - cases;
        EXPECT_EQ(r, zero) << &c - cases;
    }
    EXPECT_EQ(ColorimetricCalc(s.wl.data(), s.v.data(), s.n(), 1, 0, 0, nullptr), -1);
    // Range records: no values, three points, 40001 points.
    const typ_wlinfo full{380, 780, 5}, three{380, 390, 5}, many{380, 780, 0.01f};
    r.fill(7.0f);
    EXPECT_EQ(ColorimetricCalc2(nullptr, &full, 1, 0, 0, r.data()), -1);
    EXPECT_EQ(ColorimetricCalc2(s.v.data(), &three, 1, 0, 0, r.data()), -2);
    EXPECT_EQ(ColorimetricCalc2(s.v.data(), &many, 1, 0, 0, r.data()), -2);
    EXPECT_EQ(r, zero);
}

TEST(SummaryRadiometry, BandsPeaksAndHostileInput)
{
    const Spectrum ones = flat(300, 1000, 5);
    RC r{};
    ASSERT_EQ(rc(ones, 402.5f, 501.0f, r), 1);
    // Areas of 1 over the band, the UV from 300 (where the spectrum starts),
    // the visible, the IR up to 1000 (where it ends), and in all; the centroid.
    for (auto [cell, want] : {std::pair{QOMATH_RC_BAND, 98.5f}, {QOMATH_RC_UV, 80.0f}, {QOMATH_RC_VISIBLE, 400.0f},
                              {QOMATH_RC_IR, 220.0f}, {QOMATH_RC_TOTAL, 700.0f}, {QOMATH_RC_CENTROID, 650.0f}})
        EXPECT_NEAR(r[cell], want, 1e-3f) << cell;
    EXPECT_EQ(r[QOMATH_RC_PEAK_WL], 300.0f);
    typ_wlinfo range{300, 1000, 5};
    RC r2{};
    ASSERT_EQ(RadiometryCalc2(ones.v.data(), &range, 402.5f, 501.0f, r2.data()), 1);
    EXPECT_EQ(r, r2);
    // A ramp: an edge between samples takes the value on the joining line.
    const Spectrum ramp = grid(300, 1000, 5, [](float w) { return w; });
    ASSERT_EQ(rc(ramp, 401, 503, r), 1);
    EXPECT_NEAR(r[QOMATH_RC_BAND], (503.0f * 503.0f - 401.0f * 401.0f) / 2.0f, 0.05f);

    Spectrum line =
        grid(400, 700, 1, [](float w) { return 2 * std::exp(-std::pow((w - 550) / 6, 2)); });
    ASSERT_EQ(rc(line, 380.0f, 780.0f, r), 1);
    EXPECT_EQ(r[QOMATH_RC_PEAK_WL], 550.0f);
    EXPECT_FLOAT_EQ(r[QOMATH_RC_PEAK_VALUE], 2.0f);
    EXPECT_EQ(r[QOMATH_RC_FWHM], ComputeFWHMoptions(line.wl.data(), line.v.data(), line.n()));
    EXPECT_EQ(r[QOMATH_RC_CENTROID], Centroid2(line.wl.data(), line.v.data(), line.n()));
    EXPECT_EQ(r[QOMATH_RC_BAND], r[QOMATH_RC_TOTAL]);

    const RC zero{};
    EXPECT_EQ(rc(Spectrum{}, 400, 500, r), -1);
    EXPECT_EQ(RadiometryCalc(ones.wl.data(), ones.v.data(), ones.n(), 400, 500, nullptr), -1);
    EXPECT_EQ(RadiometryCalc(ones.wl.data(), ones.v.data(), 1, 400, 500, r.data()), -2);
    EXPECT_EQ(rc(ones, 500, 500, r), -3);
    EXPECT_EQ(rc(ones, NAN, 500, r), -3);
    EXPECT_EQ(r, zero);
    const float inf = std::numeric_limits<float>::infinity();
    ASSERT_EQ(rc(ones, -inf, inf, r), 1);
    EXPECT_NEAR(r[QOMATH_RC_BAND], 700.0f, 1e-3f);
    const Spectrum huge = flat(300, 1000, 5, 3e38f);
    EXPECT_EQ(rc(huge, 400, 500, r), -2);
    EXPECT_EQ(r, zero);
    line.wl[5] = line.wl[4];
    EXPECT_EQ(rc(line, 400, 500, r), -2);
    range = {300, 1000, 0};
    EXPECT_EQ(RadiometryCalc2(ones.v.data(), &range, 400, 500, r.data()), -2);
    EXPECT_EQ(RadiometryCalc2(ones.v.data(), nullptr, 400, 500, r.data()), -1);
}

}  // namespace
