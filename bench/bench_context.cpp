// Per-spectrum cost of the main job on a 5 nm 380..780 nm white-light
// spectrum whose values change a little from call to call (so that no
// result cache can answer): the C exports on the process-wide context, and
// the program's path on a context of its own. The yardstick is the
// arithmetic X, Y, Z need: three multiply-adds per point.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <vector>

#include "colorimetry/context.hpp"
#include "colorimetry/cri.hpp"
#include "colorimetry/summary.hpp"
#include "colorimetry/tristimulus.hpp"
#include "qomath/cct.h"
#include "qomath/colour_quality.h"
#include "qomath/cri.h"
#include "qomath/summary.h"
#include "qomath/tristimulus.h"

namespace {

struct Led {
    std::vector<float> wl, v;
    Led()
    {
        for (int i = 0; i < 81; ++i) {
            const float w = 380.0f + 5.0f * static_cast<float>(i);
            wl.push_back(w);
            v.push_back(0.2f + std::exp(-std::pow((w - 450.0f) / 12.0f, 2.0f)) +
                        1.2f * std::exp(-std::pow((w - 590.0f) / 70.0f, 2.0f)));
        }
    }
    // A new spectrum every call: one value nudged.
    void nudge(std::size_t k) { v[k % v.size()] *= 1.0000001f; }
    int n() const { return static_cast<int>(v.size()); }
};

void BM_Xyz5nm_Export(benchmark::State& state)
{
    Led s;
    std::array<float, 3> xyz{};
    std::size_t k = 0;
    for (auto _ : state) {
        s.nudge(k++);
        CalcTristimulusXYZ1931_2(s.wl.data(), s.v.data(), s.n(), xyz.data());
        benchmark::DoNotOptimize(xyz.data());
    }
}
BENCHMARK(BM_Xyz5nm_Export);

void BM_Xyz5nm_Program(benchmark::State& state)
{
    Led s;
    qomath::numerics::Interpolate2State cache;
    const qomath::colorimetry::Context ctx{qomath::colorimetry::Sampling::data, &cache};
    std::array<float, 3> xyz{};
    std::size_t k = 0;
    for (auto _ : state) {
        s.nudge(k++);
        qomath::tristimulus::components(ctx, s.wl.data(), s.v.data(), s.n(),
                                        qomath::tristimulus::Components::xyz1931, xyz.data());
        benchmark::DoNotOptimize(xyz.data());
    }
}
BENCHMARK(BM_Xyz5nm_Program);

void BM_Xyz5nm_Yardstick(benchmark::State& state)
{
    Led s;
    std::vector<float> cmf(3 * 81, 0.5f);
    for (auto _ : state) {
        double x = 0, y = 0, z = 0;
        for (int i = 0; i < 81; ++i) {
            x += cmf[static_cast<std::size_t>(i)] * s.v[static_cast<std::size_t>(i)];
            y += cmf[static_cast<std::size_t>(81 + i)] * s.v[static_cast<std::size_t>(i)];
            z += cmf[static_cast<std::size_t>(162 + i)] * s.v[static_cast<std::size_t>(i)];
        }
        benchmark::DoNotOptimize(x + y + z);
    }
}
BENCHMARK(BM_Xyz5nm_Yardstick);

void BM_CriDefault5nm(benchmark::State& state)
{
    Led s;
    const typ_wlinfo range{380.0f, 780.0f, 5.0f};
    const float cct = 4000.0f;
    typ_cri_result result{};
    std::size_t k = 0;
    for (auto _ : state) {
        s.nudge(k++);
        CRI_DefaultCalc(nullptr, nullptr, s.v.data(), &range, &cct, &result.ri[0]);
        benchmark::DoNotOptimize(&result);
    }
}
BENCHMARK(BM_CriDefault5nm)->Unit(benchmark::kMicrosecond);

void BM_ColorimetricCalc5nm(benchmark::State& state)
{
    Led s;
    std::array<float, QOMATH_CC_COUNT> cc{};
    std::size_t k = 0;
    for (auto _ : state) {
        s.nudge(k++);
        ColorimetricCalc(s.wl.data(), s.v.data(), s.n(), 1, 0, 1, cc.data());
        benchmark::DoNotOptimize(cc.data());
    }
}
BENCHMARK(BM_ColorimetricCalc5nm)->Unit(benchmark::kMicrosecond);

void BM_ColorimetricProgram5nm(benchmark::State& state)
{
    Led s;
    qomath::numerics::Interpolate2State cache;
    const qomath::colorimetry::Context ctx{qomath::colorimetry::Sampling::data, &cache};
    std::array<float, QOMATH_CC_COUNT> cc{};
    std::size_t k = 0;
    for (auto _ : state) {
        s.nudge(k++);
        qomath::summary::colorimetric(ctx, s.wl.data(), s.v.data(), s.n(), 1, 0, 1, cc.data(), nullptr);
        benchmark::DoNotOptimize(cc.data());
    }
}
BENCHMARK(BM_ColorimetricProgram5nm)->Unit(benchmark::kMicrosecond);

}  // namespace

namespace {

// TM-30 / CIE 224 and CIE 13.3 of a 1 nm 380..780 nm white LED, and the
// alpha-opic quantities of the same spectrum.
struct Led1nm {
    std::vector<float> wl, v;
    Led1nm()
    {
        for (int i = 0; i <= 400; ++i) {
            const float w = 380.0f + static_cast<float>(i);
            wl.push_back(w);
            v.push_back(0.1f + std::exp(-std::pow((w - 450.0f) / 12.0f, 2.0f)) +
                        1.2f * std::exp(-std::pow((w - 590.0f) / 70.0f, 2.0f)));
        }
    }
};

void BM_ColorRenditionAnalysis1nm(benchmark::State& state)
{
    Led1nm s;
    std::vector<float> r(QOMATH_CRA_COUNT);
    std::size_t k = 0;
    for (auto _ : state) {
        s.v[k++ % s.v.size()] *= 1.0000001f;
        ColorRenditionAnalysis(s.wl.data(), s.v.data(), 401, r.data());
        benchmark::DoNotOptimize(r.data());
    }
}
BENCHMARK(BM_ColorRenditionAnalysis1nm)->Unit(benchmark::kMicrosecond);

void BM_AlphaOpic1nm(benchmark::State& state)
{
    Led1nm s;
    std::vector<float> r(QOMATH_AOPIC_COUNT);
    for (auto _ : state) {
        AlphaOpicCalc(s.wl.data(), s.v.data(), 401, 0, r.data());
        benchmark::DoNotOptimize(r.data());
    }
}
BENCHMARK(BM_AlphaOpic1nm)->Unit(benchmark::kMicrosecond);

}  // namespace

namespace {

// The CIE 13.3 part of ColorRenditionAnalysis on its own (CIE constants,
// the spectrum at 5 nm, a warm per-thread cache).
void BM_Cie133Part5nm(benchmark::State& state)
{
    Led1nm s;
    thread_local qomath::numerics::Interpolate2State cache;
    const qomath::colorimetry::Context ctx{qomath::colorimetry::Sampling::data, &cache,
                                           qomath::colorimetry::Constants::cie};
    std::vector<float> cells(QOMATH_CRI_RESULT_CELLS), wl5, v5;
    for (std::size_t i = 0; i < s.wl.size(); i += 5) wl5.push_back(s.wl[i]), v5.push_back(s.v[i]);
    for (auto _ : state) {
        qomath::cri::default_calc2(ctx, nullptr, nullptr, 0, wl5.data(), v5.data(), 81, 4000.0f, {}, {},
                                   cells.data());
        benchmark::DoNotOptimize(cells.data());
    }
}
BENCHMARK(BM_Cie133Part5nm)->Unit(benchmark::kMicrosecond);

}  // namespace
