#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "qomath/linalg.h"

namespace {

// Row-major n x n matrix, diagonally dominant and so well conditioned.
std::vector<float> well_conditioned(int n)
{
    std::mt19937 gen(12345u);
    std::uniform_real_distribution<float> dist(-1.0f, 1.0f);
    std::vector<float> a(n * n);
    for (float& v : a) v = dist(gen);
    for (int i = 0; i < n; ++i) a[i * (n + 1)] += static_cast<float>(n);
    return a;
}

// Inversion with one right-hand side; the copy of the input is not timed.
void BM_MatrixGaussJordan(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto a0 = well_conditioned(n);
    const std::vector<float> b0(n, 1.0f);
    std::vector<float> a(a0.size()), b(b0.size());
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(a0.begin(), a0.end(), a.begin());
        std::copy(b0.begin(), b0.end(), b.begin());
        state.ResumeTiming();
        if (MatrixGaussJordan(a.data(), n, b.data(), 1) != 1) state.SkipWithError("singular");
        benchmark::DoNotOptimize(a.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_MatrixGaussJordan)->Arg(64)->Arg(256)->Unit(benchmark::kMicrosecond);

// Decomposition of a square matrix through row pointers indexed from 1; the
// copy into the work matrix is not timed.
void BM_SVDCMP(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const auto a0 = well_conditioned(n);
    const size_t stride = static_cast<size_t>(n) + 1;
    std::vector<float> a(stride * stride), v(stride * stride), w(stride);
    std::vector<float*> ar(stride), vr(stride);
    for (size_t r = 0; r < stride; ++r) {
        ar[r] = &a[r * stride];
        vr[r] = &v[r * stride];
    }
    for (auto _ : state) {
        state.PauseTiming();
        for (int r = 0; r < n; ++r) std::copy_n(&a0[r * n], n, ar[r + 1] + 1);
        state.ResumeTiming();
        SVDCMP(ar.data(), n, n, w.data(), vr.data());
        benchmark::DoNotOptimize(w.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_SVDCMP)->Arg(64)->Unit(benchmark::kMicrosecond);

}  // namespace
