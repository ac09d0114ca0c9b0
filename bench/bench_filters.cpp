#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "numerics/savgol.hpp"
#include "qomath/fft.h"
#include "qomath/filters.h"

namespace {

// A noisy line spectrum of n points.
std::vector<float> spectrum(int n)
{
    std::mt19937 gen(7u);
    std::normal_distribution<float> noise(0.0f, 20.0f);
    std::vector<float> y(n);
    for (int i = 0; i < n; ++i)
        y[i] = 1000.0f + 800.0f * std::exp(-0.5f * std::pow((i - n / 3.0f) / 40.0f, 2.0f)) +
               noise(gen);
    return y;
}

// Each iteration filters a fresh copy (the 4096-float copy is in the timing).
template <class Filter>
void run_on_copies(benchmark::State& state, Filter filter)
{
    const auto y0 = spectrum(static_cast<int>(state.range(0)));
    std::vector<float> y(y0.size());
    for (auto _ : state) {
        std::copy(y0.begin(), y0.end(), y.begin());
        if (filter(y) != 1) state.SkipWithError("filter failed");
        benchmark::DoNotOptimize(y.data());
        benchmark::ClobberMemory();
    }
}

void BM_MedianMeanFilter1d_Median31(benchmark::State& state)
{
    run_on_copies(state, [](std::vector<float>& y) {
        return MedianMeanFilter1d(y.data(), static_cast<int>(y.size()), 31, 0);
    });
}
BENCHMARK(BM_MedianMeanFilter1d_Median31)->Arg(4096)->Unit(benchmark::kMicrosecond);

void BM_MedianFilter1d_31(benchmark::State& state)
{
    run_on_copies(state, [](std::vector<float>& y) {
        return MedianFilter1d(y.data(), static_cast<int>(y.size()), 31);
    });
}
BENCHMARK(BM_MedianFilter1d_31)->Arg(4096)->Unit(benchmark::kMicrosecond);

// 31-point cubic, shortened windows at the ends and coefficients included.
void BM_Savgol_Cubic31(benchmark::State& state)
{
    run_on_copies(state, [](std::vector<float>& y) {
        return qomath::numerics::savgol_smooth(y, 15, 3);
    });
}
BENCHMARK(BM_Savgol_Cubic31)->Arg(4096)->Unit(benchmark::kMicrosecond);

void BM_Convolution1d(benchmark::State& state)
{
    const auto a = spectrum(static_cast<int>(state.range(0)));
    std::vector<float> b(64), out(a.size() + b.size() - 1);
    for (std::size_t j = 0; j < b.size(); ++j) b[j] = std::exp(-0.01f * static_cast<float>(j * j));
    for (auto _ : state) {
        convolution_1d(const_cast<float*>(a.data()), static_cast<int>(a.size()), b.data(), 64,
                       out.data(), static_cast<int>(out.size()));
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Convolution1d)->Arg(4096)->Unit(benchmark::kMicrosecond);

}  // namespace
