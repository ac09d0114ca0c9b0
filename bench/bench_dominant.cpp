// Dominant wavelength of one chromaticity against D65: a typical colour, one
// at the blue end (the far side holds most of the locus), and a purple (two
// searches, sample and white exchanged).
#include <benchmark/benchmark.h>

#include <array>

#include "qomath/dominant.h"

namespace {

constexpr std::array<std::array<float, 2>, 3> kSamples{{
    {0.40f, 0.50f},  // yellowish green, about 566 nm
    {0.20f, 0.10f},  // blue, about 466 nm
    {0.35f, 0.20f},  // purple: complementary about 533 nm
}};

void BM_DominantWavelength2(benchmark::State& state)
{
    const auto& s = kSamples[static_cast<std::size_t>(state.range(0))];
    std::array<float, 3> locus{};
    float nm = 0.0f;
    for (auto _ : state) {
        // Fresh copies: the call may move the x values in place.
        std::array<float, 2> sample = s, white{0.3127f, 0.329f};
        if (DominantWavelength2(sample.data(), white.data(), locus.data(), &nm) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(nm);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DominantWavelength2)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);

}  // namespace
