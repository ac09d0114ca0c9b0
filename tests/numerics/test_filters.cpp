// Savitzky-Golay, median, boxcar and noise filters, negative values spread
// over their neighbours, and the S/N filter.
#include "numerics/numerics_tests.hpp"

#include <cstring>
#include <initializer_list>
#include <span>
#include <tuple>

#include "numerics/savgol.hpp"
#include "qomath/filters.h"

namespace {

using qomath::numerics::savgol_smooth;

// y after filter(y, n, arg), which must succeed.
Vec run(Vec y, int (*filter)(float*, int, int), int arg)
{
    EXPECT_EQ(filter(y.data(), static_cast<int>(y.size()), arg), 1);
    return y;
}

Vec cubic(int n)
{
    Vec y(n);
    for (int i = 0; i < n; ++i) y[i] = 0.002f * i * i * i - 0.1f * i * i + 0.5f * i + 3;
    return y;
}

TEST(FilterSavgol, ExampleMomentSumsAndWrapAroundOrder)
{
    Fenced c(Vec(6, 9.0f));  // c[0..5]; the filter writes c[1..5]
    ASSERT_EQ(FilterSavgol(c.p(), 5, 2, 2, 0, 2), 1);
    const float ex[] = {9, 17, 12, -3, -3, 12};
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(c.values()[i], i ? ex[i] / 35 : 9.0f, 1e-6);

    // sum over offsets k of c(k) k^q = [q == ld] for q = 0..m: centred,
    // one-sided, derivative and m = 0 windows, with np > nl + nr + 1.
    struct Case { int nl, nr, ld, m; } cases[] = {{3, 3, 0, 2}, {0, 4, 0, 2}, {4, 0, 1, 2},
        {2, 2, 1, 3}, {3, 5, 2, 3}, {6, 6, 0, 4}, {2, 2, 0, 0}, {1, 6, 3, 3}};
    for (const Case& t : cases) {
        const int np = t.nl + t.nr + 4;
        Vec w(np + 1, 5.0f);
        ASSERT_EQ(FilterSavgol(w.data(), np, t.nl, t.nr, t.ld, t.m), 1);
        EXPECT_EQ(w[0], 5.0f);
        auto at = [&](int k) { return w[((np - k) % np) + 1]; };
        for (int q = 0; q <= t.m; ++q) {
            double sum = 0.0, scale = 0.0;
            for (int k = -t.nl; k <= t.nr; ++k)
                sum += at(k) * std::pow(k, q), scale += std::fabs(at(k) * std::pow(k, q));
            EXPECT_NEAR(sum, q == t.ld, 1e-5 * scale + 1e-6) << &t - cases << " q" << q;
        }
        for (int k = t.nr + 1; k < np - t.nl; ++k) EXPECT_EQ(at(k), 0.0f);  // unused slots zeroed
    }

    // {np, nl, nr, ld, m}: np small, nl < 0, nr < 0, ld > m, nl + nr < m, ld < 0,
    // np < nl + nr + 1 beyond int.
    const int bad[][5] = {{4, 2, 2, 0, 2}, {5, -1, 2, 0, 2}, {5, 2, -1, 0, 2}, {5, 2, 2, 3, 2},
                          {5, 1, 0, 0, 2}, {5, 2, 2, -1, 2}, {5, INT_MAX, 2, 0, 2}};
    for (const auto& b : bad) EXPECT_EQ(FilterSavgol(c.p(), b[0], b[1], b[2], b[3], b[4]), -1);
    EXPECT_EQ(FilterSavgol(nullptr, 5, 2, 2, 0, 2), -1);
    EXPECT_TRUE(c.intact() && c.values()[1] == 17.0f / 35);
}

TEST(Savgol, SmoothersKeepACubicEndsIncluded)
{
    // QOSmoothArray (n = 7, 8, 40), then savgol_smooth (half, order) = (15, 3),
    // (2, 3) and (3, 3) on 120 points.
    for (auto [n, half, order] : std::initializer_list<std::tuple<int, int, int>>{
             {7, 0, 0}, {8, 0, 0}, {40, 0, 0}, {120, 15, 3}, {120, 2, 3}, {120, 3, 3}}) {
        Fenced y(cubic(n));
        const std::span<float> s(y.p(), std::size_t(n));
        ASSERT_EQ(half ? savgol_smooth(s, half, order) : QOSmoothArray(s.data(), n), 1);
        const auto ref = cubic(n);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(s[i], ref[i], 5e-4 * (1 + std::fabs(ref[i]))) << n;
        EXPECT_TRUE(y.intact());
    }
    Vec few(5, 1.0f);  // too short; window longer than the data; order above 2 half
    EXPECT_EQ(QOSmoothArray(few.data(), 5) + savgol_smooth(few, 3, 2) +
              savgol_smooth(few, 1, 3), -2);
    EXPECT_EQ(few, Vec(5, 1.0f));
}

// Element k of each sorted window of w values of src (reference by QSort).
Vec sort_each_window(const Vec& src, int w, int n)
{
    Vec out(n), win(w);
    for (int i = 0; i < n; ++i) {
        std::copy(src.begin() + i, src.begin() + i + w, win.begin());
        QSort(win.data(), 0, w - 1);
        out[i] = win[w / 2];
    }
    return out;
}

TEST(Median, LagEvenWindowsAndSlidingEqualsSortingEachWindow)
{
    EXPECT_EQ(run({1, 9, 1, 1}, MedianFilter1d, 3), (Vec{1, 1, 1, 1}));
    // w = 5 on a ramp: output i is the median centred on input i - 1.
    const Vec ramp{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    EXPECT_EQ(run(ramp, MedianFilter1d, 5), (Vec{0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    // Even w = 4 reads y[i-1 .. i+2]: median element 2 is i + 1, mean i + 0.5.
    auto med4 = ramp, mean4 = ramp;
    ASSERT_EQ(MedianMeanFilter1d(med4.data(), 12, 4, 0), 1);
    ASSERT_EQ(MedianMeanFilter1d(mean4.data(), 12, 4, 7), 1);
    for (int i = 1; i < 10; ++i) EXPECT_TRUE(med4[i] == i + 1.0f && mean4[i] == i + 0.5f) << i;

    // Random integers (many ties) against sorting every window of the
    // documented padding.
    std::mt19937 gen(5);
    std::uniform_int_distribution<int> d(0, 9);
    Vec x(300);
    std::generate(x.begin(), x.end(), [&] { return static_cast<float>(d(gen)); });
    auto pad = [&](int before, int from, int to, int after) {
        Vec v(before, x[0]);
        v.insert(v.end(), x.begin() + from, x.begin() + to);
        v.insert(v.end(), after, x.back());
        return v;
    };
    for (int w : {1, 2, 3, 4, 7, 31, 100}) {
        auto got = x;
        ASSERT_EQ(MedianMeanFilter1d(got.data(), 300, w, 0), 1);
        EXPECT_EQ(got, sort_each_window(pad(w - 1 - w / 2, 0, 300, w), w, 300)) << w;
        got = x;
        if (w < 3) continue;
        ASSERT_EQ(MedianFilter1d(got.data(), 300, w), 1);
        EXPECT_EQ(got, sort_each_window(pad(w - 1, 1, 299, w - 1), w, 300)) << w;
    }
    // NaN: median windows holding it give NaN; all other windows (median
    // and mean) are unchanged.
    for (int flag : {0, 1}) {
        auto clean = x, dirty = x;
        dirty[50] = kNaN;
        MedianMeanFilter1d(clean.data(), 300, 5, flag);
        MedianMeanFilter1d(dirty.data(), 300, 5, flag);
        for (int i = 0; i < 300; ++i)
            EXPECT_TRUE(std::abs(i - 50) < 3 ? std::isnan(dirty[i]) || flag : dirty[i] == clean[i]);
    }
}

TEST(Median, RefusalsWriteNothing)
{
    Fenced y(Vec(8, 2.0f));  // MedianFilter1d: n < 3, w < 3, w > n; MedianMeanFilter1d:
    const int rc[] = {MedianFilter1d(y.p(), 2, 3), MedianFilter1d(y.p(), 8, 2),
        MedianFilter1d(y.p(), 8, 9),
        MedianMeanFilter1d(y.p(), 4, 1, 0), MedianMeanFilter1d(y.p(), 8, 0, 0),  // n < 5, w < 1,
        MedianMeanFilter1d(y.p(), 8, 3, 1), MedianMeanFilter1d(y.p(), 8, 1 << 30, 0),  // 3w > n
        MedianFilter1d(nullptr, 8, 3), MedianMeanFilter1d(nullptr, 8, 1, 0)};
    EXPECT_EQ(Vec(std::begin(rc), std::end(rc)), (Vec{-1, -2, -2, -1, -2, -2, -2, -1, -1}));
    EXPECT_TRUE(y.intact() && y.values() == Vec(8, 2.0f));
}

TEST(Boxcar, MeansByHandShortArraysAndRefusals)
{
    // w = 4, h = 2: 5-point means inside, 3-point at 1 and 7, ends kept.
    const Vec y = run({1, 2, 4, 8, 16, 32, 64, 128, 256}, BoxcarAveraging, 4);
    EXPECT_EQ(y, (Vec{1, 7 / 3.0f, 6.2f, 12.4f, 24.8f, 49.6f, 99.2f, 448 / 3.0f, 256}));
    Fenced s(Vec{3, 6, 9, 30});  // n <= 2h: 3-point means on 1..n-2; then w 11, w 1, null
    const int rc[] = {BoxcarAveraging(s.p(), 4, 10), BoxcarAveraging(s.p(), 4, 11),
                      BoxcarAveraging(s.p(), 4, 1), BoxcarAveraging(nullptr, 4, 4)};
    EXPECT_TRUE(rc[0] == 1 && rc[1] == -2 && rc[2] == -2 && rc[3] == -1);
    EXPECT_TRUE(s.intact() && s.values() == (Vec{3, 6, 15, 30}));
}

TEST(NoiseFilters, RulingsByHand)
{
    EXPECT_EQ(run({5, 1, 3, 2}, MedianFilterReplacement1d, 1), (Vec{3, 3, 3, 2}));
    // Flag 0: the last n/2 only.
    EXPECT_EQ(run({5, 1, 3, 2, 4}, MedianFilterReplacement1d, 0), (Vec{5, 1, 3, 3, 3}));
    // pct 25 on 12 values: sorted element trunc(0.25 * 12) = 3, that is 4.
    EXPECT_EQ(run({12, 1, 11, 2, 10, 3, 9, 4, 8, 5, 7, 6}, BandlimitedNoiseFilter1d, 25),
              (Vec{12, 0, 11, 0, 10, 0, 9, 0, 8, 5, 7, 6}));
    // Forward window of w = 3, frozen at n - 2w = 2 from i = 2 on: 1 is a
    // window minimum (becomes 2), 9 a maximum (becomes 3); 0 at 6 lies in
    // no window and stays.
    EXPECT_EQ(run({1, 5, 2, 9, 3, 8, 0, 7}, BroadbandNoiseFilter1d, 3),
              (Vec{2, 5, 3, 3, 3, 8, 0, 7}));
    Vec o{3, 1, 3, 0, 3}, fed{4, 0, 1, 5, 6};  // in fed the filled 2.5 makes 1 a dip in its turn
    ASSERT_EQ(OscillationFilter(o.data(), 5) + OscillationFilter(fed.data(), 5), 2);
    EXPECT_EQ(o, Vec(5, 3.0f));
    EXPECT_EQ(fed, (Vec{4, 2.5f, 3.75f, 5, 6}));

    Fenced f(Vec(9, 1.0f));
    const int refusals[] = {BroadbandNoiseFilter1d(f.p(), 9, 5), OscillationFilter(f.p(), 4),
        BroadbandNoiseFilter1d(f.p(), 9, 1), BandlimitedNoiseFilter1d(f.p(), 4, 50),
        MedianFilterReplacement1d(f.p(), 2, 1), MedianFilterReplacement1d(nullptr, 5, 1),
        QoMathFilterScaleWlRegion(1, f.p(), f.p(), 9, 0, 2, 3)};
    for (int rc : refusals) EXPECT_EQ(rc, -1);
    EXPECT_TRUE(f.intact() && f.values() == Vec(9, 1.0f));

    Vec wl{400, 500, 600, 700}, v{1, 1, 1, 1};
    ASSERT_EQ(QoMathFilterScaleWlRegion(0, v.data(), wl.data(), 4, 500, 600, 2), 1);
    EXPECT_EQ(v, (Vec{1, 2, 2, 1}));
}

TEST(DistributeNegativeValues, SumKeptFloorRespectedNearestFirst)
{
    const Vec wl{1, 2, 3, 4, 5, 6, 8, 9};
    Vec y{3, -1, 1, 1, 5, -4, 2, 0.5f};
    ASSERT_EQ(QoMathFilterDistributeNegativeValues(wl.data(), y.data(), 8, 0), 1);
    // -1 at 2 nm: tie between 1 and 3 nm, the lower index gives. -4 at 6 nm:
    // 5 nm gives 4 (8 nm is farther).
    EXPECT_EQ(y, (Vec{2, 0, 1, 1, 1, 0, 2, 0.5f}));

    std::mt19937 gen(9);
    std::uniform_real_distribution<float> d(-2.0f, 6.0f);
    const Vec wl500 = grid(300, 0.7f, 500);
    Vec z(500);
    std::generate(z.begin(), z.end(), [&] { return d(gen); });
    auto orig = z;
    ASSERT_EQ(QoMathFilterDistributeNegativeValues(wl500.data(), z.data(), 500, 0.5f), 1);
    double change = 0;  // the sum is kept; all at or above the floor; donors only give
    for (int i = 0; i < 500; ++i) {
        change += double(z[i]) - orig[i];
        EXPECT_TRUE(z[i] >= 0.5f && (orig[i] < 0.5f || z[i] <= orig[i])) << i;
    }
    EXPECT_NEAR(change, 0.0, 1e-3);

    for (float& v : orig) v = std::fabs(v) + 0.5f;  // nothing below: bit-identical
    z = orig;
    ASSERT_EQ(QoMathFilterDistributeNegativeValues(wl500.data(), z.data(), 500, 0.5f), 1);
    EXPECT_EQ(std::memcmp(z.data(), orig.data(), 500 * sizeof(float)), 0);

    Fenced low(Vec{1, -3, 1});  // sum below n floor; null; n < 1
    EXPECT_EQ(QoMathFilterDistributeNegativeValues(wl.data(), low.p(), 3, 0), -2);
    EXPECT_EQ(QoMathFilterDistributeNegativeValues(nullptr, low.p(), 3, 0) +
              QoMathFilterDistributeNegativeValues(wl.data(), low.p(), 0, 0), -2);
    EXPECT_TRUE(low.intact() && low.values() == (Vec{1, -3, 1}));
}

TEST(SNFilter, SmoothsNoiseKeepsQuadraticsPeaksAndSaturation)
{
    std::mt19937 gen(3);
    std::normal_distribution<double> noise(0.0, 3.0);
    std::vector<double> y(1024), quad(1024);
    for (int i = 0; i < 1024; ++i) y[i] = 10.0 + noise(gen), quad[i] = 0.001 * i * i + 20;
    y[500] = 65535.0;  // saturated, and a line far above the noise: both kept
    y[800] = 30000.0;
    const auto orig = y;
    ASSERT_EQ(SNFilter(y.data(), 1024, 0, 0.0, 0.5, 65535.0), 1);
    double rough = 0, rough0 = 0;  // squared steps over the noisy floor
    for (int i = 10; i < 490; ++i)
        rough += std::pow(y[i + 1] - y[i], 2), rough0 += std::pow(orig[i + 1] - orig[i], 2);
    EXPECT_LT(rough, 0.75 * rough0);
    EXPECT_TRUE(y[500] == 65535.0 && y[800] == 30000.0);
    ASSERT_EQ(SNFilter(quad.data(), 1024, 1, 0.0, 1.0, 0.0), 1);
    for (int i = 0; i < 1024; ++i) EXPECT_NEAR(quad[i], 0.001 * i * i + 20, 1e-9 * quad[i]);
    y = orig;  // strength 0 and the refusals leave the values
    const int rc[] = {SNFilter(y.data(), 1024, 0, 0.0, 0.0, 65535.0),
        SNFilter(y.data(), 6, 0, 0, 0.5, 65535),
        SNFilter(y.data(), 1024, 2, 0, 0.5, 65535), SNFilter(y.data(), 1024, 0, 0, 1.5, 65535),
        SNFilter(y.data(), 1024, 0, 100, 0.5, 50)};
    EXPECT_EQ(std::vector<int>(rc, rc + 5), (std::vector<int>{1, -1, -1, -1, -1}));
    EXPECT_EQ(y, orig);
}

}  // namespace
