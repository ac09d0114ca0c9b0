#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "qomath/arrays.h"
#include "qomath/cie_tables.h"
#include "qomath/grid.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

std::vector<float> random_values(std::size_t n, unsigned seed, float lo = -5.0f, float hi = 5.0f)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> dist(lo, hi);
    std::vector<float> v(n);
    for (float& x : v) x = dist(gen);
    return v;
}

TEST(ArrayArith, ElementwiseInPlace)
{
    float a[] = {1, 2, 3}, b[] = {4, 0, -1};
    EXPECT_TRUE(ADDARRAYS(a, b, 3) == 1 && SUBARRAYS(a, b, 3) == 1 && MULTARRAYS(a, b, 3) == 1);
    EXPECT_EQ(MULTARRAYC(a, 3, 0.5f), 1);
    EXPECT_TRUE(a[0] == 2.0f && a[1] == 0.0f && a[2] == -1.5f);
    EXPECT_EQ(ADDARRAYS(a, nullptr, 3), 0);
    EXPECT_EQ(MULTARRAYC(a, 0, 2.0f), 0);
    double d[] = {1.5, -2.0};
    EXPECT_EQ(MultiplyArrayConst(d, 2, 4.0), 1);
    EXPECT_EQ(d[1], -8.0);

    // The two constant divisions differ only in the code for a vanishing divisor.
    float c[] = {3, 6};
    EXPECT_EQ(DIVARRAYC(c, 2, 1e-21f), 0);
    EXPECT_EQ(DivideArrayConst(c, 2, 1e-21f), -1);
    EXPECT_EQ(DivideArrayConst(c, 2, kNaN), -1);
    EXPECT_TRUE(DIVARRAYC(c, 2, 3.0f) == 1 && DivideArrayConst(c, 2, 2.0f) == 1);
    EXPECT_EQ(c[1], 1.0f);
    EXPECT_EQ(DivideArrayConst(nullptr, 2, 2.0f), 0);

    // A non-zero flag switches the division off; flag 0 divides unguarded.
    float num[] = {1, 2, -1}, den[] = {2, 0, 0};
    EXPECT_EQ(DIVARRAYS(num, den, 3, 1), 1);
    EXPECT_EQ(num[0], 1.0f);
    EXPECT_EQ(DIVARRAYS(num, den, 3, 0), 1);
    EXPECT_EQ(num[0], 0.5f);
    EXPECT_TRUE(std::isinf(num[1]) && num[1] > 0 && std::isinf(num[2]) && num[2] < 0);
    EXPECT_EQ(DIVARRAYS(num, nullptr, 3, 1), 0);

    // Row sums: the output is cleared first; any null row refuses the call.
    float r0[] = {1, 2, 3}, r1[] = {-1, 0.5f, 0};
    float* rows[] = {r0, r1};
    float* holes[] = {r0, nullptr};
    float out[] = {100, 100};
    EXPECT_EQ(ADDARRAYS(rows, out, 2, 3), 1);
    EXPECT_TRUE(out[0] == 6.0f && out[1] == -0.5f);
    EXPECT_EQ(ADDARRAYS(holes, out, 2, 3), 0);
    EXPECT_EQ(ADDARRAYS(rows, out, 2, 0), 0);
    EXPECT_EQ(out[0], 6.0f);
}

TEST(ArrayArith, UnaryTransforms)
{
    float inv[] = {4.0f, 0.0f, -1e-16f, kNaN, 2e-15f};
    EXPECT_EQ(InvertArray(inv, 5), 1);
    EXPECT_EQ(inv[0], 0.25f);
    EXPECT_EQ(inv[1], 9999999198822400.0f);  // 1e16 rounded down, not the nearest float
    EXPECT_NE(inv[1], 1e16f);
    EXPECT_TRUE(inv[2] == inv[1] && inv[3] == inv[1]);
    EXPECT_FLOAT_EQ(inv[4], 5e14f);
    EXPECT_EQ(InvertArray(inv, 0), 0);

    std::vector<float> v = {0.0f, 1.0f, -2.5f, 3.0f};
    const std::vector<float> orig = v;
    EXPECT_EQ(ExponentialArray(v.data(), 4), 1);
    EXPECT_FLOAT_EQ(v[1], static_cast<float>(std::exp(1.0)));
    EXPECT_EQ(LogarithmArray(v.data(), 4), 1);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(v[i], orig[i], 1e-6f);
    EXPECT_TRUE(ExponentialArray(nullptr, 0) == 1 && LogarithmArray(nullptr, -3) == 1);

    float logs[] = {0.0f, -1e-10f, -2.0f};
    EXPECT_EQ(LogarithmArray(logs, 3), 1);
    EXPECT_FLOAT_EQ(logs[0], static_cast<float>(std::log(1e-9)));
    EXPECT_EQ(logs[1], logs[0]);
    EXPECT_TRUE(std::isnan(logs[2]));

    float norm[] = {2, -8, 4}, tiny[] = {1e-14f, -1e-14f};
    EXPECT_EQ(NormalizeArray(norm, 3), 1);
    EXPECT_TRUE(norm[0] == 0.25f && norm[1] == -1.0f);
    EXPECT_EQ(NormalizeArray(tiny, 2), -1);
    EXPECT_EQ(tiny[0], 1e-14f);
    EXPECT_TRUE(NormalizeArray(nullptr, 0) == 1 && NormalizeArray(nullptr, 2) == -1);

    float diff[] = {1, 4, 9, 16, 25};
    EXPECT_EQ(Differentiate(diff, 5), 1);
    const float want[] = {3, 5, 7, 9, 9};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(diff[i], want[i]);
    EXPECT_EQ(Differentiate(diff, 4), -1);

    // Cumulative sum, also in place; its last value is SumArray's.
    std::vector<float> data = random_values(50, 3);
    std::vector<float> cum(50);
    EXPECT_EQ(CumulativeSum(data.data(), 50, cum.data()), 1);
    EXPECT_NEAR(cum.back(), SumArray(data.data(), 50), 1e-4f);
    EXPECT_EQ(CumulativeSum(data.data(), 50, data.data()), 1);
    EXPECT_EQ(data, cum);
    EXPECT_EQ(CumulativeSum(data.data(), 1, cum.data()), -1);
}

TEST(ArrayReductions, ExtremesMeansAndStats)
{
    float m = -99.0f;
    const float first_wins[] = {5, 1, 2};
    EXPECT_EQ(MaxArray(first_wins, 3, &m), 0);
    EXPECT_EQ(m, -99.0f);  // not written: nothing after a[0] reached it
    const float tie[] = {1, 3, 3};
    EXPECT_EQ(MaxArray(tie, 3, &m), 2);
    EXPECT_EQ(m, 3.0f);
    EXPECT_EQ(MaxArray(tie, 1, &m), 0);
    EXPECT_TRUE(MaxArray(tie, 0, &m) == -1 && MaxArray(nullptr, 3, &m) == -1);
    const float lows[] = {2, -1, 4, -1};
    EXPECT_EQ(MinArray(lows, 4, &m), 3);
    EXPECT_EQ(m, -1.0f);

    // Basic statistics against the extremes, float and double alike.
    const std::vector<float> data = random_values(101, 7);
    float rec[3];
    ASSERT_EQ(ArrayStatsBasic(data.data(), 101, rec), 1);
    EXPECT_EQ(rec[0], *std::min_element(data.begin(), data.end()));
    EXPECT_EQ(rec[1], *std::max_element(data.begin(), data.end()));
    EXPECT_NEAR(rec[2], SumArray(data.data(), 101) / 101.0f, 1e-6f);
    EXPECT_NEAR(rec[2], MEANARRAY(data.data(), 101), 1e-5f);
    const std::vector<double> dd(data.begin(), data.end());
    double drec[3];
    ASSERT_EQ(dArrayStatsBasic(dd.data(), 101, drec), 1);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(drec[i], rec[i], 1e-6);
    EXPECT_TRUE(ArrayStatsBasic(data.data(), 0, rec) == 0 &&
                dArrayStatsBasic(nullptr, 3, drec) == 0);

    const float one[] = {4.0f};
    EXPECT_EQ(MEANARRAY(one, 1), 0.0f);  // a single value has no mean here
    EXPECT_EQ(SumArray(one, 1), 4.0f);
    EXPECT_EQ(SumArray(nullptr, 5), 0.0f);
    // SumArray accumulates in double: a million 0.1s stay near 100000.
    const std::vector<float> tenths(1000000, 0.1f);
    EXPECT_NEAR(SumArray(tenths.data(), 1000000), 100000.0f, 1.0f);

    float slope = 0, second = 5;
    EXPECT_EQ(LineEquationCalc(1, 3, 2, 8, &slope, &second), 1);
    EXPECT_TRUE(slope == 3.0f && second == 0.0f);  // the leftover rise, not the intercept (-1)
    EXPECT_EQ(LineEquation(slope, -1.0f, 2.0f), 5.0);
    slope = 9;
    EXPECT_EQ(LineEquationCalc(2, 2, 0, 1, &slope, &second), 0);
    EXPECT_EQ(LineEquationCalc(kNaN, 2, 0, 1, &slope, &second), 0);
    EXPECT_EQ(slope, 9.0f);

    EXPECT_TRUE(factorial(0) == 1 && factorial(12) == 479001600 && factorial(-1) == -1);
    EXPECT_EQ(factorial(13), 1932053504);  // 6227020800 mod 2^32
    EXPECT_TRUE(factorial(34) == 0 && factorial(INT_MAX) == 0);  // 2^32 divides 34!
}

TEST(ArrayIntegrate, TrapezoidVariants)
{
    const float ones[] = {1, 1, 1};
    float r = -7.0f;
    EXPECT_EQ(Integrate(ones, 3, 2.0f, &r), 1);
    EXPECT_EQ(r, 4.0f);
    r = -7.0f;
    EXPECT_EQ(Integrate(ones, 1, 2.0f, &r), 0);
    EXPECT_EQ(IntegrateQO(nullptr, 3, 2.0f, &r), 0);
    EXPECT_EQ(r, -7.0f);

    // Pairs (1 - 3) and (-3 + 1): -4 plain, +4 rectified, with step 2.
    const float sign[] = {1, -3, 1};
    EXPECT_EQ(IntegrateQO_(sign, 3, 2.0f, 0), -4.0f);
    EXPECT_EQ(IntegrateQO_(sign, 3, 2.0f, 1), 4.0f);
    EXPECT_EQ(IntegrateQO_(sign, 1, 2.0f, 0), 0.0f);

    // Every trapezoid rule agrees with IntegrationDiscrete on the same grid.
    const typ_wlinfo range = {400.0f, 500.0f, 2.5f};
    const int n = WLNumPts(&range);
    ASSERT_EQ(n, 41);
    std::vector<float> wl(n), y(n);
    for (int i = 0; i < n; ++i) {
        wl[i] = range.start + static_cast<float>(i) * range.step;
        y[i] = std::sin(wl[i] / 20.0f) + 1.5f;
    }
    const float ref = IntegrationDiscrete(wl.data(), y.data(), n);
    EXPECT_NEAR(IntegrateKW(y.data(), &range), ref, 1e-4f);
    EXPECT_NEAR(IntegrateQO_(y.data(), n, range.step, 0), ref, 1e-4f);
    ASSERT_EQ(IntegrateQO(y.data(), n, range.step, &r), 1);
    EXPECT_NEAR(r, ref, 1e-3f);

    const typ_wlinfo bad = {500.0f, 400.0f, 1.0f}, single = {400.0f, 400.0f, 1.0f};
    EXPECT_EQ(IntegrateKW(y.data(), &bad), 0.0f);
    EXPECT_EQ(IntegrateKW(y.data(), &single), 0.0f);
    EXPECT_EQ(IntegrateKW(nullptr, &range), 0.0f);
    EXPECT_EQ(IntegrateKW(y.data(), nullptr), 0.0f);
}

TEST(ArrayIntegrate, CieWeightedIntegrals)
{
    // A flat spectrum on the tables' own grid integrates y-bar itself.
    float ybar[QOMATH_CIE_MAX_POINTS], wl[QOMATH_CIE_MAX_POINTS];
    typ_wlinfo cie;
    ASSERT_EQ(GetCIEData(1, ybar, &cie), 1);
    const int n = WLNumPts(&cie);
    for (int i = 0; i < n; ++i) wl[i] = cie.start + static_cast<float>(i) * cie.step;
    const std::vector<float> flat(n, 1.0f);
    const float y_area = Integrate_CIE(flat.data(), &cie, 1);
    EXPECT_NEAR(y_area, IntegrationDiscrete(wl, ybar, n), 1e-3f);
    EXPECT_NEAR(y_area, 106.86f, 0.01f);
    EXPECT_NEAR(IntegrateAbsolute_CIE(flat.data(), &cie, 1), y_area, 1e-4f);

    // The same flat spectrum at 5 nm samples the table at those wavelengths;
    // a 0.5 nm grid interpolates between them. Both land close to 1 nm.
    const typ_wlinfo coarse = {300.0f, 900.0f, 5.0f}, fine = {360.0f, 830.0f, 0.5f};
    const std::vector<float> ones(2000, 1.0f);
    EXPECT_NEAR(Integrate_CIE(ones.data(), &coarse, 1), y_area, 0.05f);
    EXPECT_NEAR(Integrate_CIE(ones.data(), &fine, 1), y_area, 0.05f);

    // Nothing counts outside 360..830 nm.
    const typ_wlinfo uv = {300.0f, 359.0f, 1.0f};
    EXPECT_EQ(Integrate_CIE(ones.data(), &uv, 0), 0.0f);

    // Sign: a negated spectrum negates the integral, the rectified one does not.
    std::vector<float> neg(n, -2.0f);
    EXPECT_NEAR(Integrate_CIE(neg.data(), &cie, 2), -2.0f * Integrate_CIE(flat.data(), &cie, 2),
                1e-3f);
    EXPECT_NEAR(IntegrateAbsolute_CIE(neg.data(), &cie, 2),
                2.0f * Integrate_CIE(flat.data(), &cie, 2), 1e-3f);
    EXPECT_EQ(Integrate_CIE(flat.data(), &cie, 6), 0.0f);
    EXPECT_EQ(Integrate_CIE(flat.data(), &cie, -1), 0.0f);
    EXPECT_EQ(IntegrateAbsolute_CIE(nullptr, &cie, 1), 0.0f);
}

TEST(ArrayIntegrate, Centroids)
{
    const float peak[] = {0, 1, 0}, flat[] = {1, 1, 1, 1};
    EXPECT_EQ(Centroid(peak, 3), 1.0f);
    EXPECT_EQ(Centroid(flat, 4), 1.5f);
    const float zero[] = {1, -1};
    EXPECT_EQ(Centroid(zero, 2), -1.0f);
    EXPECT_EQ(Centroid(nullptr, 2), -1.0f);

    // A negative weight sum is usable for Centroid, not for the others.
    const float negative[] = {-1, -1, -2};
    const double dnegative[] = {-1, -1, -2};
    EXPECT_FLOAT_EQ(Centroid(negative, 3), 1.25f);
    EXPECT_EQ(dCentroid(dnegative, 3), -1.0);
    const double dflat[] = {1, 1, 1, 1};
    EXPECT_EQ(dCentroid(dflat, 4), 1.5);
    const float x[] = {400, 500, 600};
    EXPECT_EQ(Centroid2(x, negative, 3), -1.0f);
    const float w[] = {1, 2, 1};
    EXPECT_EQ(Centroid2(x, w, 3), 500.0f);

    // A Gaussian on a grid centres on its peak wavelength and matches
    // Centroid2 on the generated wavelengths.
    const typ_wlinfo range = {500.0f, 600.0f, 0.5f};
    const int n = WLNumPts(&range);
    std::vector<float> wl(n), g(n);
    for (int i = 0; i < n; ++i) {
        wl[i] = range.start + static_cast<float>(i) * range.step;
        g[i] = std::exp(-0.5f * std::pow((wl[i] - 547.25f) / 6.0f, 2.0f));
    }
    EXPECT_NEAR(CentroidKW(g.data(), &range), 547.25f, 1e-3f);
    EXPECT_EQ(CentroidKW(g.data(), &range), Centroid2(wl.data(), g.data(), n));
    EXPECT_NEAR(Centroid(g.data(), n), (547.25f - 500.0f) / 0.5f, 1e-2f);
    const std::vector<float> none(n, 0.0f);
    EXPECT_EQ(CentroidKW(none.data(), &range), -1.0f);
    const typ_wlinfo bad = {0.0f, 5.0f, 0.0f};
    EXPECT_EQ(CentroidKW(g.data(), &bad), 0.0f);
}

TEST(ArrayStats, MomentsOfKnownData)
{
    // Deviations from the mean 5: -3 -1 -1 -1 0 0 2 4.
    const float a[] = {2, 4, 4, 4, 5, 5, 7, 9};
    const double var = 32.0 / 7.0, sd = std::sqrt(var);
    float rec[6];
    ASSERT_EQ(Moments(a, 8, rec), 1);
    EXPECT_FLOAT_EQ(rec[0], 5.0f);
    EXPECT_FLOAT_EQ(rec[1], 12.0f / 8.0f);
    EXPECT_FLOAT_EQ(rec[2], static_cast<float>(sd));
    EXPECT_FLOAT_EQ(rec[3], static_cast<float>(var));
    EXPECT_FLOAT_EQ(rec[4], static_cast<float>(42.0 / (8.0 * var * sd)));
    EXPECT_FLOAT_EQ(rec[5], static_cast<float>(356.0 / (8.0 * var * var) - 3.0));

    const float single[] = {3.5f};
    std::fill_n(rec, 6, 9.0f);
    ASSERT_EQ(Moments(single, 1, rec), 1);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(rec[i], i == 0 ? 3.5f : 0.0f);
    const std::vector<float> constant(7, 0.1f);
    ASSERT_EQ(Moments(constant.data(), 7, rec), 1);
    EXPECT_NEAR(rec[3], 0.0f, 1e-12f);
    EXPECT_FALSE(std::isnan(rec[2]));
    std::fill_n(rec, 6, 9.0f);
    EXPECT_EQ(Moments(nullptr, 5, rec), 1);
    EXPECT_EQ(Moments(a, 0, rec), 1);
    EXPECT_EQ(rec[0], 9.0f);

    // A large uniform sample: skewness near 0, excess kurtosis near -1.2.
    const std::vector<float> u = random_values(200000, 11, 0.0f, 1.0f);
    ASSERT_EQ(Moments(u.data(), 200000, rec), 1);
    EXPECT_NEAR(rec[0], 0.5f, 0.01f);
    EXPECT_NEAR(rec[3], 1.0f / 12.0f, 0.002f);
    EXPECT_NEAR(rec[4], 0.0f, 0.02f);
    EXPECT_NEAR(rec[5], -1.2f, 0.02f);
}

TEST(ArrayStats, ExtendedMoments)
{
    std::vector<float> data = random_values(37, 5);
    const std::vector<float> orig = data;
    std::vector<float> sorted = data;
    std::sort(sorted.begin(), sorted.end());

    typ_moments m;
    typ_moments_plus plus;
    typ_moments_plus2 plus2;
    typ_dmoments dm;
    ASSERT_EQ(Moments(data.data(), 37, reinterpret_cast<float*>(&m)), 1);
    ASSERT_EQ(MomentsPlus(data.data(), 37, reinterpret_cast<float*>(&plus)), 1);
    ASSERT_EQ(MomentsPlus2(data.data(), 37, reinterpret_cast<float*>(&plus2)), 1);
    const std::vector<double> dd(data.begin(), data.end());
    ASSERT_EQ(dMoments(dd.data(), 37, reinterpret_cast<double*>(&dm)), 1);
    EXPECT_EQ(data, orig);  // the caller's data stay in place

    const auto head = [](const auto& r) {
        return std::array<double, 6>{r.mean, r.adev, r.sdev, r.var, r.skew, r.kurt};
    };
    EXPECT_EQ(head(plus), head(m));
    EXPECT_EQ(head(plus2), head(m));
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(head(dm)[i], head(m)[i], 1e-4 * (1.0 + std::fabs(head(m)[i])));
    float p50 = 50, p25 = 25, p75 = 75;
    EXPECT_EQ(plus.minimum, sorted.front());
    EXPECT_EQ(plus.maximum, sorted.back());
    EXPECT_EQ(plus.median, sorted[18]);
    EXPECT_EQ(plus.median, Percentile(sorted.data(), 37, &p50));
    EXPECT_EQ(plus2.lower_quartile, Percentile(sorted.data(), 37, &p25));
    EXPECT_EQ(plus2.upper_quartile, Percentile(sorted.data(), 37, &p75));
    double squares = 0;
    for (float v : data) squares += static_cast<double>(v) * v;
    EXPECT_NEAR(plus2.rms, std::sqrt(squares / 37), 1e-5);
    EXPECT_NEAR(plus2.sem, m.sdev / std::sqrt(37.0f), 1e-6f);
    EXPECT_NEAR(dm.median, plus.median, 1e-6);
    EXPECT_NEAR(dm.upper_quartile, plus2.upper_quartile, 1e-6);

    // Two values: the order statistics are their mean.
    const float two[] = {1.0f, 4.0f};
    ASSERT_EQ(MomentsPlus2(two, 2, reinterpret_cast<float*>(&plus2)), 1);
    EXPECT_EQ(plus2.median, 2.5f);
    EXPECT_EQ(plus2.lower_quartile, 2.5f);
    plus.mean = 8.0f;
    EXPECT_EQ(MomentsPlus(nullptr, 3, reinterpret_cast<float*>(&plus)), 1);
    EXPECT_EQ(MomentsPlus2(two, 0, reinterpret_cast<float*>(&plus)), 1);
    EXPECT_EQ(plus.mean, 8.0f);
}

TEST(ArrayStats, NormalFraction)
{
    EXPECT_NEAR(StdDevToPercent(1.0f), 0.682689f, 1e-6f);
    EXPECT_NEAR(StdDevToPercent(1.96f), 0.950004f, 1e-5f);
    EXPECT_NEAR(StdDevToPercent(2.0f), 0.954500f, 1e-4f);
    EXPECT_EQ(StdDevToPercent(0.0f), 0.0f);
    EXPECT_EQ(StdDevToPercent(-1.0f), -StdDevToPercent(1.0f));
    // The 12-term series leaves the true fraction further out.
    EXPECT_GT(std::fabs(StdDevToPercent(5.0f) - 1.0f), 0.1f);
}

TEST(ArrayStats, SortingAndPercentile)
{
    std::vector<float> v = random_values(1000, 9);
    std::vector<float> want = v;
    std::sort(want.begin(), want.end());
    QSort(v.data(), 0, 999);
    EXPECT_EQ(v, want);

    // Only the given slice moves; sorted and reversed input are handled.
    std::vector<float> part = {9, 8, 7, 6, 5, 4};
    QSort(part.data(), 1, 4);
    EXPECT_EQ(part, (std::vector<float>{9, 5, 6, 7, 8, 4}));
    std::vector<float> big(200000);
    std::iota(big.rbegin(), big.rend(), 0.0f);
    QSort(big.data(), 0, 199999);
    EXPECT_TRUE(std::is_sorted(big.begin(), big.end()));
    QSort(nullptr, 0, 5);
    QSort(part.data(), -1, 3);
    QSort(part.data(), 3, 3);
    EXPECT_EQ(part[0], 9.0f);

    // NaN breaks the order, never the bounds.
    std::vector<float> nans = {3, kNaN, 1, kNaN, 2, 0, kNaN};
    QSort(nans.data(), 0, 6);
    EXPECT_EQ(std::count_if(nans.begin(), nans.end(), [](float f) { return std::isnan(f); }), 3);

    const float four[] = {1, 2, 3, 4}, five[] = {1, 2, 3, 4, 5};
    float pct = 50;
    EXPECT_EQ(Percentile(four, 4, &pct), 2.5f);
    EXPECT_EQ(Percentile(five, 5, &pct), 3.0f);
    pct = 150;
    EXPECT_EQ(Percentile(five, 5, &pct), 5.0f);
    EXPECT_EQ(pct, 100.0f);
    pct = 100;
    EXPECT_EQ(Percentile(four, 4, &pct), 4.0f);
    pct = -3;
    EXPECT_EQ(Percentile(four, 4, &pct), 1.5f);  // even count: always a pair mean
    EXPECT_EQ(pct, 0.0f);
    pct = kNaN;
    EXPECT_EQ(Percentile(five, 5, &pct), 0.0f);
    pct = 200;
    EXPECT_EQ(Percentile(five, 2, &pct), 0.0f);
    EXPECT_EQ(pct, 200.0f);
    // Odd counts pick the element at trunc(pct/100 * (n-1)) of a sorted copy.
    for (float p : {0.0f, 10.0f, 33.0f, 90.0f}) {
        pct = p;
        EXPECT_EQ(Percentile(want.data(), 999, &pct),
                  want[static_cast<std::size_t>(p / 100 * 998)]);
    }
}

TEST(ArrayStats, HistogramAndDistribution)
{
    std::vector<float> nine(9, 1.0f);
    int counts[12];
    float centres[12];
    EXPECT_EQ(Histogram_(nine.data(), 9, counts, 10, centres), -1);
    std::vector<float> same(10, 2.0f);
    std::fill_n(counts, 12, -5);
    std::fill_n(centres, 12, -5.0f);
    EXPECT_EQ(Histogram_(same.data(), 10, counts, 10, centres), 1);
    EXPECT_EQ(counts[0], -5);
    EXPECT_EQ(centres[0], -5.0f);

    // 0..10 in 10 bins of width 1: 1 sits on the edge of bins 0 and 1 and
    // counts in the lower; 10 closes the last bin. Asking for 3 bins gives 10.
    std::vector<float> steps = {10, 3, 0, 7, 1, 9, 2, 5, 8, 4, 6};
    EXPECT_EQ(Histogram_(steps.data(), 11, counts, 3, centres), 1);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(counts[0], 2);
    for (int b = 1; b < 10; ++b) EXPECT_EQ(counts[b], 1) << b;
    EXPECT_EQ(centres[0], 0.5f);
    EXPECT_EQ(centres[9], 9.5f);
    EXPECT_EQ(counts[10], -5);

    std::vector<float> noisy = random_values(5000, 21);
    std::vector<int> many(40);
    std::vector<float> mid(40);
    EXPECT_EQ(Histogram_(noisy.data(), 5000, many.data(), 40, mid.data()), 1);
    EXPECT_EQ(std::accumulate(many.begin(), many.end(), 0), 5000);
    EXPECT_LT(mid[0], mid[39]);
    noisy[17] = kNaN;  // must not walk the bin cursor out of the bins
    EXPECT_EQ(Histogram_(noisy.data(), 5000, many.data(), 40, mid.data()), 1);

    // Cumulative distribution of absolute values, ending at 1.
    std::vector<float> d = {4, -1, 3, 0, 2, 0, 0, 0, 0, 0};
    EXPECT_EQ(DistributionFunction(d.data(), 10), 1);
    EXPECT_EQ(d[0], 0.1f);  // |-1| / 10 after sorting
    EXPECT_EQ(d[9], 1.0f);
    EXPECT_TRUE(std::is_sorted(d.begin(), d.end()));
    std::vector<float> r = random_values(300, 4);
    EXPECT_EQ(DistributionFunction(r.data(), 300), 1);
    EXPECT_EQ(r.back(), 1.0f);
    EXPECT_TRUE(std::is_sorted(r.begin(), r.end()));
    EXPECT_EQ(DistributionFunction(r.data(), 9), -1);
    EXPECT_EQ(DistributionFunction(nullptr, 20), -1);
}

}  // namespace
