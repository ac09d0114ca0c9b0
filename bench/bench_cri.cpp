// Colour rendering indices of a measured spectrum: 5 nm from 380 to 780 nm,
// against a Planckian reference (3000 K) and a daylight one (6500 K).
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "qomath/cri.h"

namespace {

// A smooth white-light spectrum with some structure, on {380, 780, 5}.
std::vector<float> spectrum()
{
    std::vector<float> v;
    for (int i = 0; i < 81; ++i) {
        const float w = 380.0f + 5.0f * static_cast<float>(i);
        v.push_back(0.2f + std::exp(-std::pow((w - 450.0f) / 12.0f, 2.0f)) +
                    1.2f * std::exp(-std::pow((w - 590.0f) / 70.0f, 2.0f)));
    }
    return v;
}

void BM_CRI_DefaultCalc(benchmark::State& state)
{
    const std::vector<float> v = spectrum();
    const typ_wlinfo range{380.0f, 780.0f, 5.0f};
    const float cct = static_cast<float>(state.range(0));
    typ_cri_result result{};
    for (auto _ : state) {
        if (CRI_DefaultCalc(nullptr, nullptr, v.data(), &range, &cct, &result.ri[0]) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(&result);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_CRI_DefaultCalc)->Arg(3000)->Arg(6500)->Unit(benchmark::kMicrosecond);

void BM_CRI_DefaultCalc2(benchmark::State& state)
{
    const std::vector<float> v = spectrum();
    std::vector<float> wl;
    for (int i = 0; i < 81; ++i) wl.push_back(380.0f + 5.0f * static_cast<float>(i));
    typ_cri_result result{};
    for (auto _ : state) {
        if (CRI_DefaultCalc2(nullptr, nullptr, 0, wl.data(), v.data(), 81, 3000.0f,
                             &result.ri[0]) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(&result);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_CRI_DefaultCalc2)->Unit(benchmark::kMicrosecond);

}  // namespace
