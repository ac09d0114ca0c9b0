// Tristimulus values of a measured spectrum, against a plain 3 x n
// multiply-add loop over the same points (a yardstick across machines).
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <vector>

#include "bench_spectra.hpp"
#include "qomath/tristimulus.h"

namespace {

using qomath::bench::Spectrum;
using qomath::bench::spectrum;

void BM_CalcTristimulusXYZ1931_2(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const Spectrum s = spectrum(n);
    std::array<float, 3> xyz{};
    for (auto _ : state) {
        if (CalcTristimulusXYZ1931_2(s.wl.data(), s.v.data(), n, xyz.data()) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(xyz.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_CalcTristimulusXYZ1931_2)->Arg(471)->Arg(2048)->Unit(benchmark::kMicrosecond);

// Baseline for comparing machines: the bare 3 x n multiply-add over the same
// points, weights standing in for colour-matching functions already resampled.
void BM_BaselineMultiplyAdd3xN(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const Spectrum s = spectrum(n);
    std::array<std::vector<float>, 3> cmf;
    for (size_t c = 0; c < 3; ++c)
        for (size_t i = 0; i < s.v.size(); ++i)
            cmf[c].push_back(static_cast<float>((i + c) % 17) / 16.0f);
    for (auto _ : state) {
        std::array<double, 3> sum{};
        for (size_t c = 0; c < 3; ++c)
            for (size_t i = 0; i < s.v.size(); ++i)
                sum[c] += static_cast<double>(cmf[c][i] * s.v[i]);
        benchmark::DoNotOptimize(sum.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_BaselineMultiplyAdd3xN)->Arg(471)->Arg(2048)->Unit(benchmark::kMicrosecond);

}  // namespace
