// The summary calculations on a measured-looking white-light spectrum, 5 nm
// from 380 to 780 nm: all colorimetric results as irradiance (CRI and
// illuminance included), as a transmittance under D65, and the radiometric
// results.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "qomath/summary.h"

namespace {

struct White {
    std::vector<float> wl, v;
};

White white_led()
{
    White s;
    for (int i = 0; i < 81; ++i) {
        const float w = 380.0f + 5.0f * static_cast<float>(i);
        s.wl.push_back(w);
        s.v.push_back(0.2f + std::exp(-std::pow((w - 450.0f) / 12.0f, 2.0f)) +
                      1.2f * std::exp(-std::pow((w - 590.0f) / 70.0f, 2.0f)));
    }
    return s;
}

void BM_ColorimetricCalc(benchmark::State& state)
{
    const White s = white_led();
    const int unit = static_cast<int>(state.range(0));
    float result[QOMATH_CC_COUNT];
    for (auto _ : state) {
        if (ColorimetricCalc(s.wl.data(), s.v.data(), 81, unit, QOMATH_WHITE_D65, 1, result) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
}
// 1: irradiance (everything, CRI included); 5: transmittance under D65.
BENCHMARK(BM_ColorimetricCalc)->Arg(1)->Arg(5)->Unit(benchmark::kMicrosecond);

void BM_ColorimetricCalc2(benchmark::State& state)
{
    const White s = white_led();
    const typ_wlinfo range{380.0f, 780.0f, 5.0f};
    float result[QOMATH_CC_COUNT];
    for (auto _ : state) {
        if (ColorimetricCalc2(s.v.data(), &range, 1, QOMATH_WHITE_E, 1, result) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_ColorimetricCalc2)->Unit(benchmark::kMicrosecond);

void BM_RadiometryCalc(benchmark::State& state)
{
    const White s = white_led();
    float result[QOMATH_RC_COUNT];
    for (auto _ : state) {
        if (RadiometryCalc(s.wl.data(), s.v.data(), 81, 400.0f, 700.0f, result) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_RadiometryCalc)->Unit(benchmark::kMicrosecond);

}  // namespace
