// Interpolate2 with the cache missing on every call, against a plain 3 x n
// multiply-add loop over the same number of points (a machine yardstick).
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "numerics/interpolation.hpp"
#include "numerics/neville.hpp"
#include "qomath/interpolation.h"

namespace {

struct Grids {
    std::vector<float> xs, ys, xd, yd;
    explicit Grids(int n)
    {
        for (int i = 0; i < n; ++i) {
            xs.push_back(300.0f + 0.13f * static_cast<float>(i));
            ys.push_back(1.0f + std::sin(0.01f * static_cast<float>(i)));
            xd.push_back(300.05f + 0.129f * static_cast<float>(i));
        }
        yd.resize(static_cast<size_t>(n));
    }
};

void BM_Interpolate2_CacheMiss(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Grids g(n);
    InterpolationMethod(0);
    float bump = 0.0f;
    for (auto _ : state) {
        g.ys[0] = (bump += 1.0f);  // a new key every call
        benchmark::DoNotOptimize(
            Interpolate2(g.xs.data(), g.ys.data(), n, g.xd.data(), g.yd.data(), n));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_Interpolate2_CacheMiss)->Arg(4096)->Unit(benchmark::kMicrosecond);

void BM_Interpolate2_CacheHit(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    Grids g(n);
    InterpolationMethod(0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            Interpolate2(g.xs.data(), g.ys.data(), n, g.xd.data(), g.yd.data(), n));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Interpolate2_CacheHit)->Arg(4096)->Unit(benchmark::kMicrosecond);

// Three colour-matching tables (471 points, 1 nm) onto a 2048-point 0.23 nm
// grid, as the tristimulus calculation does, side by side.
void BM_Interpolate2Many3_2048(benchmark::State& state)
{
    std::vector<float> xs(471), a(471), b(471), c(471), xd(2048), ya(2048), yb(2048), yc(2048);
    for (size_t i = 0; i < 471; ++i) {
        xs[i] = 360.0f + static_cast<float>(i);
        a[i] = std::sin(static_cast<float>(i) / 30.0f) + 1.0f;
        b[i] = std::cos(static_cast<float>(i) / 40.0f) + 1.0f;
        c[i] = 0.5f;
    }
    for (size_t i = 0; i < 2048; ++i) xd[i] = 360.1f + 0.23f * static_cast<float>(i);
    std::array<int, 3> st{};
    for (auto _ : state) {
        a[0] += 1.0f;  // a new key every call
        qomath::numerics::interpolate2_many<3>(qomath::numerics::process_interpolation_state(), xs, {std::span<const float>(a), std::span<const float>(b), std::span<const float>(c)}, xd,
                                               {std::span<float>(ya), std::span<float>(yb), std::span<float>(yc)}, st);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Interpolate2Many3_2048)->Unit(benchmark::kMicrosecond);

// Yardstick: three multiply-adds per point, as a tristimulus sum does.
void BM_Baseline3xN(benchmark::State& state)
{
    const auto n = static_cast<size_t>(state.range(0));
    Grids g(static_cast<int>(n));
    for (auto _ : state) {
        double x = 0, y = 0, z = 0;
        for (size_t i = 0; i < n; ++i) {
            x += static_cast<double>(g.ys[i]) * g.xs[i];
            y += static_cast<double>(g.ys[i]) * g.xd[i];
            z += static_cast<double>(g.xs[i]) * g.xd[i];
        }
        benchmark::DoNotOptimize(x + y + z);
    }
}
BENCHMARK(BM_Baseline3xN)->Arg(471)->Arg(2048)->Arg(4096)->Unit(benchmark::kMicrosecond);

void BM_NevilleSixPoints(benchmark::State& state)
{
    const float xa[] = {400, 401, 402, 403, 404, 405};
    const float ya[] = {1, 2.5f, 2, 4, 3, 5};
    float x = 402.3f;
    for (auto _ : state) {
        float y = 0, dy = 0;
        qomath::numerics::neville(xa, ya, x, y, dy);
        benchmark::DoNotOptimize(y);
        x += 1e-6f;
    }
}
BENCHMARK(BM_NevilleSixPoints);

}  // namespace
