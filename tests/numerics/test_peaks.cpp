#include "numerics/numerics_tests.hpp"

namespace {

// baseline + amplitude exp(-(w - centre)^2 / (2 sigma^2)) on start + i * step.
Vec gaussian_line(int n, double start, double step, double centre, double sigma,
                                 double amplitude, double baseline)
{
    Vec y(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        const double d = (start + i * step - centre) / sigma;
        y[static_cast<size_t>(i)] = static_cast<float>(baseline + amplitude * std::exp(-0.5 * d * d));
    }
    return y;
}

}  // namespace

TEST(PeakPosition, FirstMaximumAndInterpolatedVertex)
{
    float y[11] = {0, 1, 2, 5, 1, 0, 3, 5, 1, 0, 0};
    typ_wlinfo range = {400.0f, 410.0f, 1.0f};
    EXPECT_FLOAT_EQ(GetPeakWavelength(y, &range), 403.0f);  // not 407
    Vec x = grid(500, 2, 11);
    int k = 99;
    EXPECT_FLOAT_EQ(GetPeakWavelength2(x.data(), y, 11, &k), 506.0f);
    EXPECT_EQ(k, 3);
    y[0] = kNaN;  // skipped, not taken as the maximum
    EXPECT_FLOAT_EQ(GetPeakWavelength2(x.data(), y, 11, &k), 506.0f);
    EXPECT_EQ(GetPeakWavelength2(x.data(), nullptr, 11, &k), 0.0f);
    EXPECT_EQ(k, -1);
    typ_wlinfo bad = {410.0f, 400.0f, 1.0f};
    EXPECT_EQ(GetPeakWavelength(y, &bad), 0.0f);
    EXPECT_EQ(GetPeakWavelength(nullptr, &range), 0.0f);

    // 16 - (i - 51.25)^2 on 500..600 nm: every sample and the vertex 551.25
    // are exact in float.
    Vec p(101);
    for (int i = 0; i < 101; ++i) p[static_cast<size_t>(i)] = 16.0f - (i - 51.25f) * (i - 51.25f);
    typ_wlinfo r = {500.0f, 600.0f, 1.0f};
    EXPECT_FLOAT_EQ(GetInterpolatedPeakWavelength(p.data(), &r), 551.25f);

    // A rising line peaks at its last sample; the fit there is straight.
    Vec ramp = grid(0.0, 1.0, 101);
    EXPECT_EQ(GetInterpolatedPeakWavelength(ramp.data(), &r), -2.0f);
    typ_wlinfo two = {500.0f, 501.0f, 1.0f};
    EXPECT_EQ(GetInterpolatedPeakWavelength(p.data(), &two), 0.0f);
    p[50] = kNaN;  // beside the maximum at 51
    EXPECT_EQ(GetInterpolatedPeakWavelength(p.data(), &r), 0.0f);
}

TEST(LineWidth, EveryStatusCode)
{
    float level = -1, left = -1, right = -1;
    float tri[11] = {0, 1, 2, 3, 4, 3, 2, 1, 0, 0, 0};
    ASSERT_EQ(FWHM(tri, 11, &level, &left, &right), 1);
    EXPECT_EQ((Vec{level, left, right}), (Vec{2, 2, 8}));  // first sample below 2 is 7; 7 + (2 - 1) / (2 - 1)
    float tri2[11] = {0, 1, 2, 3, 4, 3, 2, 1, 0, -1, -2};
    ASSERT_EQ(LineWidthCalc(tri2, 11, 25.0f, &level, &left, &right), 1);
    EXPECT_EQ((Vec{level, left, right}), (Vec{1, 1, 9}));
    Vec x = grid(500, 2, 11);
    EXPECT_FLOAT_EQ(ComputeFWHMoptions(x.data(), tri, 11), 12.0f);

    EXPECT_EQ(FWHM(tri, 9, &level, &left, &right), -1);
    EXPECT_EQ(FWHM(nullptr, 11, &level, &left, &right), -1);
    EXPECT_EQ(FWHM(tri, 11, &level, nullptr, &right), -1);
    for (float pct : {9.9f, 90.5f, kNaN}) EXPECT_EQ(LineWidthCalc(tri, 11, pct, &level, &left, &right), -6);

    // {samples, status, left, right (-1: not looked at)}.
    float tiny[11];
    for (int i = 0; i < 11; ++i) tiny[i] = tri[i] * 1e-21f;
    const struct { Vec y; int status; float left, right; } cases[] = {
        {{0, 1, 4, 3, 2, 1, 0, 0, 0, 0, 0}, -2, -1, -1},
        {{0, 0, 0, 0, 0, 1, 2, 3, 3, 4, 0}, -3, -1, -1},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, -3, -1, -1},  // last of equal maxima: index 10
        {{tiny, tiny + 11}, -4, -1, -1},
        {{0, 1, kNaN, 3, 4, 3, 2, 1, 0, 0, 0}, -4, -1, -1},  // crossing at 1, step to NaN
        {{0, 1, 2, 3, 4, 3, 2, 1, 1, 1, 1}, -5, 2, 0},      // no step after the right crossing
        {{0, 1, 2, 3, 4, 5, 6, 5, 4, 4, 4}, -6, 0, 0},      // no right crossing
        {{3, 3, 3, 4, 3, 0, 0, 0, 0, 0, 0}, -6, -1, -1},    // no left crossing
        // Sample 8 sits on the level, so the right edge lands on the last sample.
        {{0, 1, 2, 3, 4, 4, 4, 4, 2, 1, 0}, -6, -1, -1}};
    for (const auto& c : cases) {
        Vec y = c.y;
        EXPECT_EQ(FWHM(y.data(), 11, &level, &left, &right), c.status) << &c - cases;
        EXPECT_TRUE(c.left < 0 || (left == c.left && right == c.right)) << &c - cases;
    }
    Vec late = cases[8].y;
    EXPECT_EQ(ComputeFWHMoptions(x.data(), late.data(), 11), 0.0f);
    EXPECT_EQ(ComputeFWHMoptions(nullptr, tri, 11), 0.0f);
}

TEST(LineWidth, SampledGaussian)
{
    // sigma 4 nm on a 0.5 nm grid, centred on a sample. The geometric
    // half-maximum crossings lie 2.3548 sigma / 2 = 4.7096 nm from the centre;
    // the right edge adds its fraction to the first sample below the level
    // (5.0 nm out), so it sits 2 * (5.0 - 4.7096) nm beyond the geometric one.
    const double sigma = 4.0;
    Vec x = grid(400.0, 0.5, 401);
    Vec y = gaussian_line(401, 400.0, 0.5, 500.0, sigma, 100.0, 0.0);
    const double geometric = 2.3548 * sigma;
    const double excess = 2.0 * (5.0 - geometric / 2.0);
    // Linear interpolation between 0.5 nm samples misplaces a crossing by
    // well under 0.005 nm here.
    EXPECT_NEAR(ComputeFWHMoptions(x.data(), y.data(), 401), geometric + excess, 0.01);
    EXPECT_NEAR(OLDFWHM(x.data(), y.data(), 401), geometric, 0.01);
    EXPECT_EQ(OLDFWHM(x.data(), y.data(), 2), 0.0f);
    Vec negative(401, -1.0f);
    EXPECT_EQ(OLDFWHM(x.data(), negative.data(), 401), 0.0f);
}

TEST(PeakWavelengthClass, GaussianLine)
{
    Vec yf = gaussian_line(201, 400.0, 1.0, 503.3, 6.0, 1000.0, 20.0);
    std::vector<double> wl;
    std::vector<double> v;
    for (int i = 0; i < 201; ++i) {
        wl.push_back(400.0 + i);
        const double d = (wl.back() - 503.3) / 6.0;
        v.push_back(20.0 + 1000.0 * std::exp(-0.5 * d * d));
    }
    CPeakWavelength pw;
    double peak = 0, value = 0;
    ASSERT_EQ(pw.Maximum(wl, v, peak, value), 1);
    EXPECT_EQ(peak, 503.0);
    EXPECT_DOUBLE_EQ(value, v[103]);
    ASSERT_EQ(pw.Centroid(wl, v, peak), 1);
    EXPECT_NEAR(peak, 503.3, 0.01);
    ASSERT_EQ(pw.PolyFit(wl, v, peak), 1);
    EXPECT_NEAR(peak, 503.3, 0.03);
    double amp = 0, sigma = 0, fwhm = 0, base = 0, rms = 1, r2 = 0;
    ASSERT_EQ(pw.Gaussian(wl, v, peak, amp, sigma, fwhm, base, rms, r2), 1);
    // {fitted, true value, tolerance}
    for (auto [got, want, tol] : {std::tuple{peak, 503.3, 1e-6}, {sigma, 6.0, 1e-6}, {amp, 1000.0, 1e-4},
                                  {base, 20.0, 1e-4}, {fwhm, 2.35482 * 6.0, 1e-4}})
        EXPECT_NEAR(got, want, tol) << want;
    EXPECT_TRUE(rms < 1e-6 && r2 > 0.999999) << rms << " " << r2;

    typ_peakresults all;
    Vec xf = grid(400.0, 1.0, 201);
    ASSERT_EQ(PeakWlAllCalculations(xf.data(), yf.data(), 201, &all), 1);
    EXPECT_EQ(std::tuple(all.peak_index, all.parabola_status, all.gaussian_status), std::tuple(103, 1, 1));
    EXPECT_NEAR(all.parabola_wavelength, 503.3, 0.05);
    EXPECT_NEAR(all.gaussian_wavelength, 503.3, 1e-3);
    EXPECT_NEAR(all.gaussian_sigma, 6.0, 1e-3);
    EXPECT_EQ(PeakWlAllCalculations(nullptr, yf.data(), 201, &all), -1);

    EXPECT_EQ(EdgeOrSlit(yf.data(), 201), QOMATH_SHAPE_SLIT);
    Vec step(20, 0.0f);
    for (size_t i = 8; i < 20; ++i) step[i] = 1.0f;
    EXPECT_EQ(EdgeOrSlit(step.data(), 20), QOMATH_SHAPE_RISING_EDGE);
    for (float& s : step) s = 1.0f - s;
    EXPECT_EQ(EdgeOrSlit(step.data(), 20), QOMATH_SHAPE_FALLING_EDGE);
    step[15] = 1.0f;
    EXPECT_EQ(EdgeOrSlit(step.data(), 20), QOMATH_SHAPE_NEITHER);
    EXPECT_EQ(EdgeOrSlit(step.data(), 9), QOMATH_SHAPE_TOO_FEW);
    step[3] = kNaN;
    EXPECT_EQ(EdgeOrSlit(step.data(), 20), QOMATH_SHAPE_FLAT);
}

TEST(PeakWavelengthClass, HostileInput)
{
    CPeakWavelength pw;
    double a = 0, b = 0, c = 0, d = 0, e = 0, f = 0, g = 0;
    const std::vector<double> four(4, 1.0);
    const std::vector<double> wl{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(pw.Maximum(four, four, a, b), QOMATH_PEAK_TOO_FEW);
    EXPECT_EQ(pw.Maximum(wl, std::vector<double>(7, 1.0), a, b), QOMATH_PEAK_SIZE_MISMATCH);
    const std::vector<double> flat(6, 2.0);
    ASSERT_EQ(pw.Maximum(wl, flat, a, b), 1);
    EXPECT_EQ(a, 1.0);
    EXPECT_EQ(pw.Centroid(wl, flat, a), QOMATH_PEAK_NO_PEAK);
    EXPECT_EQ(pw.PolyFit(wl, flat, a), QOMATH_PEAK_NO_PEAK);
    EXPECT_EQ(pw.Gaussian(wl, flat, a, b, c, d, e, f, g), QOMATH_PEAK_NO_PEAK);
    const std::vector<double> nan_values{0, 1, std::nan(""), 1, 0, 0};
    EXPECT_EQ(pw.Centroid(wl, nan_values, a), QOMATH_PEAK_NOT_FINITE);
    EXPECT_EQ(pw.PolyFit(wl, nan_values, a), QOMATH_PEAK_NOT_FINITE);
    EXPECT_EQ(pw.Gaussian(wl, nan_values, a, b, c, d, e, f, g), QOMATH_PEAK_NOT_FINITE);
    EXPECT_EQ(pw.Gaussian(four, four, a, b, c, d, e, f, g), QOMATH_PEAK_TOO_FEW);
    EXPECT_EQ(pw.PolyFit(wl, std::vector<double>(5, 1.0), a), QOMATH_PEAK_SIZE_MISMATCH);
    // A straight ramp peaks at its end and has no vertex.
    EXPECT_EQ(pw.PolyFit(wl, wl, a), QOMATH_PEAK_FIT_FAILED);
}
