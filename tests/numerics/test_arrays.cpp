// Array arithmetic, integration, centroids and statistics.
#include "numerics/numerics_tests.hpp"

namespace {

TEST(ArrayArith, ElementwiseInPlace)
{
    // ((a + b) * b - b) * 0.5
    float a[] = {1, 2, 3}, b[] = {4, 0, -1};
    EXPECT_TRUE(ADDARRAYS(a, b, 3) == 1 && MULTARRAYS(a, b, 3) == 1 && SUBARRAYS(a, b, 3) == 1);
    EXPECT_EQ(MULTARRAYC(a, 3, 0.5f), 1);
    EXPECT_EQ(Vec(a, a + 3), (Vec{8, 0, -0.5f}));
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
    float *rows[] = {r0, r1}, *holes[] = {r0, nullptr};
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
    EXPECT_TRUE(inv[2] == inv[1] && inv[3] == inv[1]);
    EXPECT_FLOAT_EQ(inv[4], 5e14f);
    EXPECT_EQ(InvertArray(inv, 0), 0);

    Vec v = {0.0f, 1.0f, -2.5f, 3.0f};
    const Vec orig = v;
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
    EXPECT_EQ(Vec(diff, diff + 5), (Vec{3, 5, 7, 9, 9}));
    EXPECT_EQ(Differentiate(diff, 4), -1);

    Vec data{1, 2, 3, 4}, cum(4);
    EXPECT_EQ(CumulativeSum(data.data(), 4, cum.data()), 1);
    EXPECT_EQ(cum, (Vec{1, 3, 6, 10}));
    EXPECT_TRUE(CumulativeSum(data.data(), 4, data.data()) == 1 && data == cum);
    EXPECT_EQ(CumulativeSum(data.data(), 1, cum.data()), -1);
}

TEST(ArrayReductions, ExtremesMeansAndStats)
{
    float m = -99.0f;
    const float first_wins[] = {5, 1, 2}, tie[] = {1, 3, 3}, lows[] = {2, -1, 4, -1};
    EXPECT_EQ(MaxArray(first_wins, 3, &m), 0);
    EXPECT_EQ(m, -99.0f);  // not written: nothing after a[0] reached it
    EXPECT_EQ(MaxArray(tie, 3, &m), 2);
    EXPECT_EQ(m, 3.0f);
    EXPECT_EQ(MaxArray(tie, 1, &m), 0);
    EXPECT_TRUE(MaxArray(tie, 0, &m) == -1 && MaxArray(nullptr, 3, &m) == -1);
    EXPECT_EQ(MinArray(lows, 4, &m), 3);
    EXPECT_EQ(m, -1.0f);

    const float data[] = {3, -1, 4, 1, 5};
    const double ddata[] = {3, -1, 4, 1, 5};
    float rec[3];
    double drec[3];
    ASSERT_EQ(ArrayStatsBasic(data, 5, rec), 1);
    ASSERT_EQ(dArrayStatsBasic(ddata, 5, drec), 1);
    EXPECT_EQ(Vec(rec, rec + 3), (Vec{-1, 5, 2.4f}));
    EXPECT_EQ(std::vector<double>(drec, drec + 3), (std::vector<double>{-1, 5, 2.4}));
    EXPECT_FLOAT_EQ(MEANARRAY(data, 5), 2.4f);
    EXPECT_TRUE(ArrayStatsBasic(data, 0, rec) == 0 && dArrayStatsBasic(nullptr, 3, drec) == 0);

    const float one[] = {4.0f};
    EXPECT_EQ(MEANARRAY(one, 1), 0.0f);  // a single value has no mean here
    EXPECT_EQ(SumArray(one, 1), 4.0f);
    EXPECT_EQ(SumArray(nullptr, 5), 0.0f);
    // SumArray accumulates in double: a million 0.1s stay near 100000.
    const Vec tenths(1000000, 0.1f);
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
    const Vec wl = points(range);
    const int n = static_cast<int>(wl.size());
    Vec y = sample(wl, [](double w) { return std::sin(w / 20) + 1.5; });
    const float ref = IntegrationDiscrete(wl.data(), y.data(), n);
    EXPECT_NEAR(IntegrateKW(y.data(), &range), ref, 1e-4f);
    EXPECT_NEAR(IntegrateQO_(y.data(), n, range.step, 0), ref, 1e-4f);
    ASSERT_EQ(IntegrateQO(y.data(), n, range.step, &r), 1);
    EXPECT_NEAR(r, ref, 1e-3f);

    const typ_wlinfo bad = {500.0f, 400.0f, 1.0f}, single = {400.0f, 400.0f, 1.0f};
    EXPECT_TRUE(IntegrateKW(y.data(), &bad) == 0.0f && IntegrateKW(y.data(), &single) == 0.0f);
    EXPECT_TRUE(IntegrateKW(nullptr, &range) == 0.0f && IntegrateKW(y.data(), nullptr) == 0.0f);
}

TEST(ArrayIntegrate, Centroids)
{
    const float flat[] = {1, 1, 1, 1}, zero[] = {1, -1};
    EXPECT_EQ(Centroid(flat, 4), 1.5f);
    EXPECT_TRUE(Centroid(zero, 2) == -1.0f && Centroid(nullptr, 2) == -1.0f);

    // A negative weight sum is usable for Centroid, not for the others.
    const float negative[] = {-1, -1, -2}, x[] = {400, 500, 600}, w[] = {1, 2, 1};
    const double dnegative[] = {-1, -1, -2}, dflat[] = {1, 1, 1, 1};
    EXPECT_FLOAT_EQ(Centroid(negative, 3), 1.25f);
    EXPECT_EQ(dCentroid(dnegative, 3), -1.0);
    EXPECT_EQ(dCentroid(dflat, 4), 1.5);
    EXPECT_EQ(Centroid2(x, negative, 3), -1.0f);
    EXPECT_EQ(Centroid2(x, w, 3), 500.0f);

    // A Gaussian on a grid centres on its peak wavelength and matches
    // Centroid2 on the generated wavelengths.
    const typ_wlinfo range = {500.0f, 600.0f, 0.5f}, bad = {0.0f, 5.0f, 0.0f};
    const Vec wl = points(range);
    const int n = static_cast<int>(wl.size());
    Vec g = sample(wl, [](double nm) { return std::exp(-0.5 * std::pow((nm - 547.25) / 6, 2)); });
    EXPECT_NEAR(CentroidKW(g.data(), &range), 547.25f, 1e-3f);
    EXPECT_EQ(CentroidKW(g.data(), &range), Centroid2(wl.data(), g.data(), n));
    EXPECT_NEAR(Centroid(g.data(), n), (547.25f - 500.0f) / 0.5f, 1e-2f);
    const Vec none(n, 0.0f);
    EXPECT_EQ(CentroidKW(none.data(), &range), -1.0f);
    EXPECT_EQ(CentroidKW(g.data(), &bad), 0.0f);
}

TEST(ArrayStats, MomentsOfKnownDataInEveryVariant)
{
    // Deviations from the mean 5: -3 -1 -1 -1 0 0 2 4. Unsorted, so the order
    // statistics must come from a sorted copy: median 4.5 and quartiles 4 and 6
    // (pair means of an even count), rms sqrt(29).
    float a[] = {5, 2, 9, 4, 7, 4, 5, 4};
    const Vec orig(a, a + 8);
    const std::vector<double> dd(a, a + 8);
    const double var = 32.0 / 7.0, sd = std::sqrt(var);
    const double want[] = {5, 12.0 / 8, sd, var, 42.0 / (8 * var * sd), 356.0 / (8 * var * var) - 3,
                           2, 9, 4.5, 4, 6, std::sqrt(29.0), sd / std::sqrt(8.0)};
    float rec[6], plus[9], plus2[13];
    double drec[13];
    ASSERT_EQ(Moments(a, 8, rec), 1);
    ASSERT_EQ(MomentsPlus(a, 8, plus), 1);
    ASSERT_EQ(MomentsPlus2(a, 8, plus2), 1);
    ASSERT_EQ(dMoments(dd.data(), 8, drec), 1);
    EXPECT_EQ(Vec(a, a + 8), orig);  // the caller's data stay in place
    for (int i = 0; i < 13; ++i) {
        EXPECT_FLOAT_EQ(plus2[i], static_cast<float>(want[i])) << i;
        EXPECT_NEAR(drec[i], want[i], 1e-12) << i;
        EXPECT_EQ(i < 6 ? rec[i] : i < 9 ? plus[i] : plus2[i], plus2[i]) << i;  // the same values
    }

    // One value gives its mean and zeros; two give their mean as order statistics.
    const float single[] = {3.5f}, two[] = {1.0f, 4.0f};
    std::fill_n(rec, 6, 9.0f);
    ASSERT_EQ(Moments(single, 1, rec), 1);
    EXPECT_EQ(Vec(rec, rec + 6), (Vec{3.5f, 0, 0, 0, 0, 0}));
    ASSERT_EQ(MomentsPlus2(two, 2, plus2), 1);
    EXPECT_TRUE(plus2[8] == 2.5f && plus2[9] == 2.5f);
    // The corrected two-pass variance of a constant that float cannot hold exactly.
    const Vec constant(7, 0.1f);
    ASSERT_EQ(Moments(constant.data(), 7, rec), 1);
    EXPECT_NEAR(rec[3], 0.0f, 1e-12f);
    EXPECT_FALSE(std::isnan(rec[2]));
    // No data: success, nothing written.
    std::fill_n(rec, 6, 9.0f);
    std::fill_n(plus, 9, 9.0f);
    EXPECT_TRUE(Moments(nullptr, 5, rec) == 1 && Moments(a, 0, rec) == 1);
    EXPECT_TRUE(MomentsPlus(nullptr, 3, plus) == 1 && MomentsPlus2(two, 0, plus) == 1);
    EXPECT_TRUE(rec[0] == 9.0f && plus[0] == 9.0f);
}

TEST(ArrayStats, NormalFractionIsTheTwelveTermSeries)
{
    EXPECT_NEAR(StdDevToPercent(1.0f), 0.682689f, 1e-6f);
    EXPECT_NEAR(StdDevToPercent(2.0f), 0.954500f, 1e-4f);
    EXPECT_EQ(StdDevToPercent(-1.0f), -StdDevToPercent(1.0f));
    // Further out the cut shows: 0.9869 for 0.9973 at z = 3.
    EXPECT_NEAR(StdDevToPercent(3.0f), 0.9869f, 1e-4f);
}

TEST(ArrayStats, SortingAndPercentile)
{
    Vec v = random_values(1000, 9, -5, 5), want = v;
    std::sort(want.begin(), want.end());
    QSort(v.data(), 0, 999);
    EXPECT_EQ(v, want);

    // Only the given slice moves; reversed input deep enough to expose the
    // recursion depth; bad bounds do nothing.
    Vec part = {9, 8, 7, 6, 5, 4};
    QSort(part.data(), 1, 4);
    EXPECT_EQ(part, (Vec{9, 5, 6, 7, 8, 4}));
    Vec big(200000);
    std::iota(big.rbegin(), big.rend(), 0.0f);
    QSort(big.data(), 0, 199999);
    EXPECT_TRUE(std::is_sorted(big.begin(), big.end()));
    QSort(nullptr, 0, 5);
    QSort(part.data(), -1, 3);
    EXPECT_EQ(part[0], 9.0f);
    // NaN breaks the order, never the bounds.
    Vec nans = {3, kNaN, 1, kNaN, 2, 0, kNaN};
    QSort(nans.data(), 0, 6);
    EXPECT_EQ(std::count_if(nans.begin(), nans.end(), [](float f) { return std::isnan(f); }), 3);

    // {data, n, pct, result, pct written back}: the index is trunc(pct / 100 *
    // (n - 1)), pct clamped to 0..100; an even count always takes a pair mean;
    // fewer than 3 values give 0.
    const float four[] = {1, 2, 3, 4}, five[] = {1, 2, 3, 4, 5};
    const struct { const float* a; int n; float pct, want, after; } cases[] = {
        {four, 4, 50, 2.5f, 50}, {five, 5, 50, 3, 50},   {five, 5, 90, 4, 90}, {five, 5, 150, 5, 100},
        {four, 4, 100, 4, 100},  {four, 4, -3, 1.5f, 0}, {five, 2, 200, 0, 200}};
    for (const auto& c : cases) {
        float pct = c.pct;
        EXPECT_EQ(Percentile(c.a, c.n, &pct), c.want) << c.n << " " << c.pct;
        EXPECT_EQ(pct, c.after);
    }
    float pct = kNaN;
    EXPECT_EQ(Percentile(five, 5, &pct), 0.0f);
}

TEST(ArrayStats, HistogramAndDistribution)
{
    Vec nine(9, 1.0f), same(10, 2.0f);
    int counts[12];
    float centres[12];
    EXPECT_EQ(Histogram_(nine.data(), 9, counts, 10, centres), -1);
    std::fill_n(counts, 12, -5);
    std::fill_n(centres, 12, -5.0f);
    EXPECT_EQ(Histogram_(same.data(), 10, counts, 10, centres), 1);
    EXPECT_TRUE(counts[0] == -5 && centres[0] == -5.0f);

    // 0..10 in 10 bins of width 1: 1 sits on the edge of bins 0 and 1 and
    // counts in the lower; 10 closes the last bin. Asking for 3 bins gives 10.
    Vec steps = {10, 3, 0, 7, 1, 9, 2, 5, 8, 4, 6};
    EXPECT_EQ(Histogram_(steps.data(), 11, counts, 3, centres), 1);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(std::vector<int>(counts, counts + 11), (std::vector<int>{2, 1, 1, 1, 1, 1, 1, 1, 1, 1, -5}));
    EXPECT_TRUE(centres[0] == 0.5f && centres[9] == 9.5f);

    Vec noisy = random_values(5000, 21, -5, 5), mid(40);
    std::vector<int> many(40);
    EXPECT_EQ(Histogram_(noisy.data(), 5000, many.data(), 40, mid.data()), 1);
    EXPECT_EQ(std::accumulate(many.begin(), many.end(), 0), 5000);
    EXPECT_LT(mid[0], mid[39]);
    noisy[17] = kNaN;  // must not walk the bin cursor out of the bins
    EXPECT_EQ(Histogram_(noisy.data(), 5000, many.data(), 40, mid.data()), 1);

    // Cumulative distribution of absolute values, ending at 1.
    Vec d = {4, -1, 3, 0, 2, 0, 0, 0, 0, 0};
    EXPECT_EQ(DistributionFunction(d.data(), 10), 1);
    EXPECT_EQ(d, (Vec{0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.3f, 0.6f, 1.0f}));  // -1 first
    EXPECT_EQ(DistributionFunction(d.data(), 9), -1);
    EXPECT_EQ(DistributionFunction(nullptr, 20), -1);
}

}  // namespace
