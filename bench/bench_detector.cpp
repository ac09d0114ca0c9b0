// f1', bad-pixel replacement, binning and point in polygon, each beside a
// yardstick run on the same data: CalcTristimulusXYZ1931_2 on the same grid,
// a memcpy of the array, PointInPolygon on bin 0, Boost.Geometry's `within`.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "qomath/detector.h"
#include "qomath/tristimulus.h"

#ifdef QOMATH_HAVE_BOOST_GEOMETRY
#include <boost/geometry.hpp>
#endif

namespace {

constexpr int kPoints = 1000000;

// 380..780 nm at 1 nm: a responsivity near V(lambda).
std::vector<float> responsivity()
{
    std::vector<float> v;
    for (int i = 0; i <= 400; ++i) {
        const double d = (380.0 + i - 556.0) / 42.0;
        v.push_back(static_cast<float>(std::exp(-0.5 * d * d)));
    }
    return v;
}

void BM_f1primeCalculate(benchmark::State& state)
{
    const std::vector<float> r = responsivity();
    const typ_wlinfo range{380.0f, 780.0f, 1.0f}, none{0.0f, 0.0f, 0.0f};
    float f1 = 0;
    typ_wlinfo common{};
    int warning = 0;
    for (auto _ : state) {
        if (f1primeCalculate(r.data(), &range, QOMATH_F1_YBAR, nullptr, &none, &f1, &common,
                             &warning) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(f1);
    }
}
BENCHMARK(BM_f1primeCalculate)->Unit(benchmark::kMicrosecond);

void BM_f1Yardstick_CalcTristimulusXYZ1931_2(benchmark::State& state)
{
    const std::vector<float> r = responsivity();
    std::vector<float> wl;
    for (int i = 0; i <= 400; ++i) wl.push_back(380.0f + static_cast<float>(i));
    float xyz[3];
    for (auto _ : state) {
        if (CalcTristimulusXYZ1931_2(wl.data(), r.data(), 401, xyz) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(xyz);
    }
}
BENCHMARK(BM_f1Yardstick_CalcTristimulusXYZ1931_2)->Unit(benchmark::kMicrosecond);

void BM_DetectorArrayBadPixelSub(benchmark::State& state)
{
    std::vector<float> data(2048);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<float>(1000 + i % 97);
    int bad[QOMATH_BADPIXEL_LIST_SIZE];
    for (int k = 0; k < QOMATH_BADPIXEL_LIST_SIZE; ++k) bad[k] = 37 + 101 * k + (k % 3 == 0 ? 1 : 0);
    bad[5] = bad[4] + 1;  // a pair
    for (auto _ : state) {
        DetectorArrayBadPixelSub(data.data(), 2048, bad);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DetectorArrayBadPixelSub)->Unit(benchmark::kNanosecond);

void BM_DetectorYardstick_Memcpy2048(benchmark::State& state)
{
    std::vector<float> a(2048, 1.0f), b(2048);
    for (auto _ : state) {
        std::memcpy(b.data(), a.data(), a.size() * sizeof(float));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DetectorYardstick_Memcpy2048)->Unit(benchmark::kNanosecond);

// Points spread over [-1.5, 1.5]^2, a fixed sequence.
std::vector<float> points()
{
    std::vector<float> p;
    unsigned s = 12345u;
    for (int i = 0; i < 2 * kPoints; ++i) {
        s = s * 1664525u + 1013904223u;
        p.push_back(static_cast<float>(s >> 8) / 16777216.0f * 3.0f - 1.5f);
    }
    return p;
}

// A star of 50 corners (concave), radii alternating 1 and 0.6.
std::vector<float> star()
{
    std::vector<float> c;
    for (int i = 0; i < 50; ++i) {
        const double a = 2.0 * M_PI * i / 50.0, r = i % 2 ? 0.6 : 1.0;
        c.push_back(static_cast<float>(r * std::cos(a)));
        c.push_back(static_cast<float>(r * std::sin(a)));
    }
    return c;
}

std::vector<typ_binquad> bins16()
{
    std::vector<typ_binquad> b;
    for (int i = 0; i < 16; ++i) {
        const float x = -1.5f + 0.75f * static_cast<float>(i % 4), y = -1.5f + 0.75f * static_cast<float>(i / 4);
        b.push_back({{{x, y}, {x + 0.75f, y}, {x + 0.75f, y + 0.75f}, {x, y + 0.75f}}});
    }
    return b;
}

void BM_Binning_Add(benchmark::State& state)
{
    const std::vector<float> p = points();
    const std::vector<typ_binquad> b = bins16();
    Binning_Init(16, b.data());
    for (auto _ : state)
        for (int i = 0; i < kPoints; ++i) benchmark::DoNotOptimize(Binning_Add(p[2 * i], p[2 * i + 1]));
    Binning_Close();
}
BENCHMARK(BM_Binning_Add)->Unit(benchmark::kMillisecond);

void BM_BinningYardstick_PointInPolygonBin0(benchmark::State& state)
{
    const std::vector<float> p = points();
    const std::vector<typ_binquad> b = bins16();
    const float* bin0 = &b[0].corner[0][0];
    for (auto _ : state) {
        int in = 0;
        for (int i = 0; i < kPoints; ++i) in += PointInPolygon(bin0, 4, p[2 * i], p[2 * i + 1]);
        benchmark::DoNotOptimize(in);
    }
}
BENCHMARK(BM_BinningYardstick_PointInPolygonBin0)->Unit(benchmark::kMillisecond);

void BM_PointInPolygon50(benchmark::State& state)
{
    const std::vector<float> p = points();
    const std::vector<float> c = star();
    for (auto _ : state) {
        int in = 0;
        for (int i = 0; i < kPoints; ++i) in += PointInPolygon(c.data(), 50, p[2 * i], p[2 * i + 1]);
        benchmark::DoNotOptimize(in);
    }
}
BENCHMARK(BM_PointInPolygon50)->Unit(benchmark::kMillisecond);

#ifdef QOMATH_HAVE_BOOST_GEOMETRY
void BM_PolygonYardstick_BoostWithin50(benchmark::State& state)
{
    namespace bg = boost::geometry;
    using Point = bg::model::d2::point_xy<double>;
    const std::vector<float> p = points();
    const std::vector<float> c = star();
    bg::model::polygon<Point, false> poly;  // corners counter-clockwise
    for (std::size_t i = 0; i < c.size(); i += 2) bg::append(poly.outer(), Point(c[i], c[i + 1]));
    bg::correct(poly);
    for (auto _ : state) {
        int in = 0;
        for (int i = 0; i < kPoints; ++i) in += bg::within(Point(p[2 * i], p[2 * i + 1]), poly);
        benchmark::DoNotOptimize(in);
    }
}
BENCHMARK(BM_PolygonYardstick_BoostWithin50)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
