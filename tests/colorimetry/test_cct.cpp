// Correlated colour temperature against the CIE illuminants and points built
// from the Planckian locus; the isotemperature table against its generator;
// the Planckian radiator against Wien, Stefan-Boltzmann and its own band sums.
#include "colorimetry/colour_tests.hpp"

#include "colorimetry/planck.hpp"

namespace {

using Result = std::array<float, 6>;  // cct, mired, steps, duv, u, v
constexpr Result kCleared{0, 0, -1, 0, 0, 0};
using qomath::cct::planckian_locus;

int cct(double u, double v, Result& r)
{
    const float uv[2] = {static_cast<float>(u), static_cast<float>(v)};
    r.fill(123.0f);
    return CCTCalculate(uv, r.data());
}

// CIE 1960 u, v of a GetCIEData illuminant (from 300 nm), trapezoid sum at 1 nm.
std::array<double, 2> illuminant_uv(int selector)
{
    const Vec s = cie(selector).v;
    double XYZ[3] = {};
    for (int k = 0; k < 3; ++k) {
        const Vec cmf = cie(k).v;
        for (int i = 0; i <= 470; ++i) XYZ[k] += (i % 470 ? 1.0 : 0.5) * cmf[i] * s[i + 60];
    }
    const double d = XYZ[0] + 15 * XYZ[1] + 3 * XYZ[2];
    return {4 * XYZ[0] / d, 6 * XYZ[1] / d};
}

}  // namespace

TEST(Cct, IlluminantsAAndD65)
{
    Result r;
    const auto a = illuminant_uv(6);
    ASSERT_EQ(cct(a[0], a[1], r), 1);
    EXPECT_NEAR(r[0], 2856, 1);
    EXPECT_NEAR(r[3], 0, 2e-5);  // A is a Planckian radiator
    // D65's nearest locus point, by ternary search: 6502.7 K from its 1 nm
    // table; its published x, y (0.3127, 0.3290) give the familiar 6504 K.
    const auto d65 = illuminant_uv(9);
    auto gap = [&](double m) {
        const auto p = planckian_locus(m);
        return std::hypot(p.u - d65[0], p.v - d65[1]);
    };
    double lo = 140, hi = 170;
    for (int k = 0; k < 60; ++k) {
        const double m1 = lo + (hi - lo) / 3, m2 = hi - (hi - lo) / 3;
        (gap(m1) < gap(m2) ? hi : lo) = gap(m1) < gap(m2) ? m2 : m1;
    }
    ASSERT_EQ(cct(d65[0], d65[1], r), 1);
    EXPECT_NEAR(r[0], 1e6 / lo, 0.1);
    EXPECT_NEAR(r[0], 6504, 1.5);
    EXPECT_NEAR(r[3], gap(lo), 1e-6);  // about 0.0032, above the locus
    const double den = -2 * 0.3127 + 12 * 0.3290 + 3;
    ASSERT_EQ(cct(4 * 0.3127 / den, 6 * 0.3290 / den, r), 1);
    EXPECT_NEAR(r[0], 6504, 1);
}

TEST(Cct, RecoversPointsOnAndOffTheLocus)
{
    Result r;
    for (double k : {1300., 1500., 1620., 1650., 2222.2, 2856., 4000., 5000., 6504., 8000.,
                     12345., 15000., 18000., 20000.}) {
        // 1300 K to 1650 K lie past the top of the locus (616 mired), where the
        // lines' slope changes sign. Far above the locus of hot sources u
        // drops below the table's start.
        for (double duv : {-0.02, -0.005, 0.0, 0.003, k <= 5000 ? 0.02 : 0.0}) {
            // Offset along the isotemperature line, upwards in v.
            const auto p = planckian_locus(1e6 / k);
            const double up = (p.t > 0 ? 1 : -1) / std::sqrt(1 + p.t * p.t);
            ASSERT_EQ(cct(p.u + duv * up, p.v + duv * up * p.t, r), 1) << k << " " << duv;
            EXPECT_NEAR(r[0], k, 1e-4 * k) << k << " " << duv;
            EXPECT_NEAR(r[3], duv, 2e-6 + 1e-3 * std::fabs(duv)) << k;
            EXPECT_TRUE(std::fabs(r[2] - std::fabs(r[3]) / 0.000353) < 1e-3 &&
                        std::fabs(r[1] - 1e6 / r[0]) < 1e-3);
            const auto near = planckian_locus(r[1]);
            EXPECT_TRUE(std::fabs(r[4] - near.u) < 2e-6 && std::fabs(r[5] - near.v) < 2e-6);
        }
    }
    // Between two lines the result moves linearly in temperature, not in
    // mired: halfway between 50 and 51 mired lies the mean of 20000 K and
    // 19607.8 K (1e-4 hotter than 50.5 mired, the largest such gap above 1300 K).
    const auto mid = planckian_locus(50.5);
    ASSERT_EQ(cct(mid.u, mid.v, r), 1);
    EXPECT_NEAR(r[0], (20000 + 1e6 / 51) / 2, 0.5);
}

TEST(Cct, EdgeCasesAndHostileInput)
{
    Result r;
    const auto hot = planckian_locus(0.5);  // 2e6 K
    const auto red = planckian_locus(1e6 / 1200.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct { double u, v; int status; } cases[] = {
        {0.17, 0.3, -1},     {0.2, 0.26, -1}, {nan, 0.3, -1},       {0.2, HUGE_VAL, -1},
        {red.u, red.v, -5}, {0.6, 0.3, -5},  {hot.u, hot.v, -8}};
    for (const auto& c : cases) {
        EXPECT_EQ(cct(c.u, c.v, r), c.status) << c.u << " " << c.v;
        EXPECT_EQ(r, kCleared);
    }
    EXPECT_EQ(CCTCalculate(nullptr, r.data()), -1);
    EXPECT_EQ(r, kCleared);
    EXPECT_EQ(CCTCalculate(r.data(), nullptr), -1);

    // A float point on line 300 itself, found by scanning along it.
    const auto line = qomath::cct::isotemperature_table()[300];
    bool found = false;
    for (float u = static_cast<float>(line[1]); !found && u < line[1] + 0.01;
         u = std::nextafter(u, 1.0f)) {
        const float v = static_cast<float>(line[2] + line[3] * (u - line[1]));
        found = std::fabs((v - line[2]) - line[3] * (u - line[1])) < 1e-13;
        EXPECT_TRUE(!found || cct(u, v, r) == -4);
    }
    EXPECT_TRUE(found);

    // Anywhere in the plane: a known status; success only with finite values
    // inside the table, failures with the cleared record.
    for (double u = 0; u < 0.7; u += 0.0137) {
        for (double v = 0; v < 0.7; v += 0.0113) {
            const int s = cct(u, v, r);
            EXPECT_TRUE(s == 1 || s == -1 || s == -4 || s == -5 || s == -6 || s == -8);
            const bool finite = std::isfinite(r[0] + r[2] + r[3] + r[4] + r[5]);
            EXPECT_TRUE(s == 1 ? finite && r[1] >= 1 && r[1] <= 800 : r == kCleared);
        }
    }
}

TEST(CctTable, MatchesGeneratorAndSpotRows)
{
    const auto rows = qomath::cct::isotemperature_table();
    ASSERT_EQ(rows.size(), 801u);
    for (int i = 0; i < 801; ++i) {
        const auto line = qomath::cct::isotemperature_line(i);
        const double* row = rows[static_cast<size_t>(i)];
        ASSERT_TRUE(row[0] == i && row[1] == line.u && row[2] == line.v && row[3] == line.t) << i;
    }
    const struct { int i, column; double value, tolerance; } spots[] = {
        {0, 1, 0.18006, 0},     {0, 2, 0.26352, 0},     {0, 3, -0.24341, 0},
        {1, 1, 0.18012, 5e-6},  {1, 2, 0.26375, 5e-6},  {1, 3, -0.2444, 5e-5},
        {2, 1, 0.180177, 5e-7}, {2, 2, 0.26398, 5e-6},  {2, 3, -0.24548, 1e-5},
        {798, 1, 0.396218, 5e-7}, {798, 2, 0.358586, 5e-7},
        {799, 1, 0.396496, 5e-7}, {799, 2, 0.358568, 5e-7},
        {799, 3, 15.92855, 1e-4}, {800, 3, 15.87896, 1e-4}};
    for (const auto& s : spots)
        EXPECT_NEAR(rows[static_cast<size_t>(s.i)][s.column], s.value, s.tolerance) << s.i;
}

TEST(Planck, CurvePeakAndBandExitance)
{
    std::vector<float> out(10001, -7.0f);
    ASSERT_EQ(BlackBodyCurve(3000, 0.36f, 0.83f, 0.001f, out.data()), 1);
    EXPECT_TRUE(out[470] > 0 && out[471] == -7.0f);  // 471 values
    const struct { float t, start, end, step; float* out; int status; } cases[] = {
        {3000, 1, 9999, 1, out.data(), 1},  {3000, 1, 10000, 1, out.data(), -4},  // 9999 steps
        {3000, .8f, .8f, .01f, out.data(), -1}, {3000, .4f, .8f, 0, out.data(), -2},
        {3000, .4f, .8f, .01f, nullptr, -3},    {0, .4f, .8f, .01f, out.data(), -5},
        {100001, .4f, .8f, .01f, out.data(), -5}, {NAN, .4f, .8f, .01f, out.data(), -5}};
    for (const auto& c : cases)
        EXPECT_EQ(BlackBodyCurve(c.t, c.start, c.end, c.step, c.out), c.status) << c.t;

    // Peak at Wien's 2897.77 um K / T; the curve integrates to sigma T^4
    // (5.6704e-12 W cm^-2 K^-4), and so does the band series.
    EXPECT_NEAR(WeinDisplacementLaw(5000), 2.89777e-3 / 5000, 1e-9);
    EXPECT_TRUE(WeinDisplacementLaw(0) == -1.0f && WeinDisplacementLaw(100001) == -1.0f);
    const float t = 5000;
    out.assign(out.size(), -7.0f);
    ASSERT_EQ(BlackBodyCurve(t, 0.1f, 19.9f, 0.002f, out.data()), 1);
    ASSERT_TRUE(out[9900] > 0 && out[9901] == -7.0f);
    size_t peak = 0;
    double area = 0;
    for (size_t i = 1; i <= 9900; ++i) {
        if (out[i] > out[peak]) peak = i;
        area += (out[i] + out[i - 1]) * 0.001;
    }
    EXPECT_NEAR(0.1 + 0.002 * peak, WeinDisplacementLaw(t) * 1e6, 0.002);
    const double sigma_t4 = 5.6704e-12 * std::pow(t, 4.0);
    EXPECT_NEAR(WattFlux(t, 0.1f, 19.9f), area, 1e-5 * area);
    EXPECT_NEAR(WattFlux(t, 0.01f, 1e5f), sigma_t4, 1e-4 * sigma_t4);
    // The derivative series against a difference of band exitances.
    for (float w : {0.38f, 1.5f}) {
        const double fd = (WattFlux(t + 10, w, w + 0.4f) - WattFlux(t - 10, w, w + 0.4f)) / 20.0;
        EXPECT_NEAR(WattDerivative(t, w, w + 0.4f), fd, 2e-4 * fd);
    }
    EXPECT_NEAR(WattDerivative(t, 0.01f, 1e5f), 4 * sigma_t4 / t, 1e-4 * 4 * sigma_t4 / t);
    EXPECT_EQ(WattFlux(t, 0.8f, 0.4f) + WattDerivative(t, 0.4f, 0.4f), 0.0f);
    EXPECT_EQ(WattFlux(0, 0.4f, 0.8f) + WattFlux(t, 0.0f, 0.8f), 0.0f);
}

TEST(Planck, ColourAndLocus)
{
    float XYZ[3], xyz[3], uv[2], uv76[2];
    ASSERT_EQ(BlackBodyToCIEUCS(2856, XYZ, xyz, uv, uv76), 1);
    EXPECT_NEAR(xyz[0], 0.44757, 2e-4);  // illuminant A
    EXPECT_NEAR(xyz[0] + xyz[1] + xyz[2], 1, 1e-6);
    EXPECT_TRUE(uv76[0] == uv[0] && std::fabs(uv76[1] - 1.5 * uv[1]) < 1e-7);
    // Same shape as the table's locus, whose c2 is 1.4388e-2 m K.
    for (float t : {1500.0f, 2856.0f, 6500.0f, 15000.0f}) {
        ASSERT_EQ(BlackBodyToCIEUCS(t, XYZ, xyz, uv, uv76), 1);
        const auto p = planckian_locus(1e6 / t * 14387.86 / 14388.0);
        EXPECT_TRUE(std::fabs(uv[0] - p.u) < 2e-6 && std::fabs(uv[1] - p.v) < 2e-6) << t;
        Result r;
        ASSERT_EQ(CCTCalculate(uv, r.data()), 1);
        EXPECT_NEAR(r[0], t * 14388.0 / 14387.86, 1e-4 * t);
    }
    EXPECT_EQ(BlackBodyToCIEUCS(0, XYZ, xyz, uv, uv76), -1);
    EXPECT_EQ(BlackBodyToCIEUCS(100, XYZ, xyz, uv, uv76), -3);  // no light at all
    EXPECT_EQ(BlackBodyToCIEUCS(2856, XYZ, nullptr, uv, uv76), -2);

    const float temps[] = {2000, 4000, -1, 6000};
    float a[4] = {}, b[4] = {};
    EXPECT_EQ(BlackBodyLocus(1, temps, 0, a, b), -99);
    EXPECT_EQ(BlackBodyLocus(7, temps, 2, a, b), 1);
    EXPECT_EQ(a[0], 0.0f);
    EXPECT_EQ(BlackBodyLocus(2, temps, 4, a, b), -1);  // stops at -1 K
    ASSERT_EQ(BlackBodyToCIEUCS(4000, XYZ, xyz, uv, uv76), 1);
    EXPECT_TRUE(a[1] == uv76[0] && b[1] == uv76[1] && a[3] == 0.0f);
    ASSERT_EQ(BlackBodyLocus(0, temps, 2, a, b), 1);
    EXPECT_TRUE(a[1] == xyz[0] && b[1] == xyz[1]);
}
