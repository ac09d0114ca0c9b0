// Photometric quantities of a measured spectrum: illuminance and luminance on
// the y-bar grid (471 points at 1 nm from 360 nm) and on a finer one
// (2048 points at 0.23 nm), and the unit conversions.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <vector>

#include "bench_spectra.hpp"
#include "qomath/photometry.h"

namespace {

using qomath::bench::Spectrum;
using qomath::bench::spectrum;

template <int (*Calc)(const float*, const float*, int, float*)>
void BM_Photometric(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const Spectrum s = spectrum(n);
    std::array<float, 8> out{};
    for (auto _ : state) {
        if (Calc(s.wl.data(), s.v.data(), n, out.data()) != 1) state.SkipWithError("status");
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_Photometric<IlluminanceCalc>)
    ->Name("BM_IlluminanceCalc")
    ->Arg(471)
    ->Arg(2048)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Photometric<LuminanceCalc>)
    ->Name("BM_LuminanceCalc")
    ->Arg(471)
    ->Unit(benchmark::kMicrosecond);

void BM_LuminanceUnitsConvertAll(benchmark::State& state)
{
    std::array<float, 8> out{};
    float value = 1.0f;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        LuminanceUnitsConvertAll(value, 6, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_LuminanceUnitsConvertAll);

}  // namespace
