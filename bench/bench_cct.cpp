// Correlated colour temperature of typical sources, and the Planckian
// radiator on the grid colour rendering uses.
#include <benchmark/benchmark.h>

#include <array>
#include <vector>

#include "qomath/cct.h"

namespace {

// CIE 1960 u, v of sources from 1500 K to 20000 K, on and near the locus.
const std::vector<std::array<float, 2>>& sources()
{
    static const std::vector<std::array<float, 2>> uv = [] {
        std::vector<std::array<float, 2>> out;
        float xyz[3], c[3], p[2], p76[2];
        for (float t : {1500.0f, 2000.0f, 2700.0f, 3000.0f, 4000.0f, 5000.0f, 6500.0f, 10000.0f,
                        20000.0f}) {
            if (BlackBodyToCIEUCS(t, xyz, c, p, p76) != 1) continue;
            for (float dv : {-0.004f, 0.0f, 0.003f}) out.push_back({p[0], p[1] + dv});
        }
        return out;
    }();
    return uv;
}

void BM_CCTCalculate(benchmark::State& state)
{
    const auto& uv = sources();
    std::array<float, 6> r{};
    std::size_t k = 0;
    for (auto _ : state) {
        if (CCTCalculate(uv[k].data(), r.data()) != 1) state.SkipWithError("status");
        benchmark::DoNotOptimize(r.data());
        benchmark::ClobberMemory();
        k = k + 1 == uv.size() ? 0 : k + 1;
    }
}
BENCHMARK(BM_CCTCalculate)->Unit(benchmark::kNanosecond);

// One source at a given temperature: the walk's length grows with the mired.
void BM_CCTCalculateAt(benchmark::State& state)
{
    float xyz[3], c[3], p[2], p76[2];
    if (BlackBodyToCIEUCS(static_cast<float>(state.range(0)), xyz, c, p, p76) != 1)
        state.SkipWithError("locus");
    std::array<float, 6> r{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(CCTCalculate(p, r.data()));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_CCTCalculateAt)->Arg(1300)->Arg(2856)->Arg(6504)->Unit(benchmark::kNanosecond);

// 0.36 to 0.83 um in 0.002 um steps (236 values).
void BM_BlackBodyCurve(benchmark::State& state)
{
    std::vector<float> out(236);
    for (auto _ : state) {
        if (BlackBodyCurve(3000.0f, 0.36f, 0.83f, 0.002f, out.data()) != 1)
            state.SkipWithError("status");
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 236);
}
BENCHMARK(BM_BlackBodyCurve)->Unit(benchmark::kMicrosecond);

}  // namespace
