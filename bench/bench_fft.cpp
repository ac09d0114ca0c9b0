#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "qomath/fft.h"

#ifdef QOMATH_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

std::vector<float> noise(std::size_t n)
{
    std::mt19937 gen(42u);
    std::uniform_real_distribution<float> d(-1.0f, 1.0f);
    std::vector<float> v(n);
    for (float& x : v) x = d(gen);
    return v;
}

// In-place forward transform of nn complex points, repeated on one buffer
// (as the FFTW yardstick below).
void BM_FFTDiscrete(benchmark::State& state)
{
    const unsigned nn = static_cast<unsigned>(state.range(0));
    auto data = noise(2 * nn + 1);
    FFTDiscrete(data.data(), nn, 1);  // twiddle tables built outside the timing
    for (auto _ : state) {
        if (FFTDiscrete(data.data(), nn, 1) != 0) state.SkipWithError("FFTDiscrete failed");
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_FFTDiscrete)->Arg(1024)->Arg(65536)->Unit(benchmark::kMicrosecond);

#ifdef QOMATH_BENCH_FFTW
// The yardstick: FFTW single precision, in place, FFTW_MEASURE plan made
// before the timing.
void BM_FFTW_InPlace(benchmark::State& state)
{
    const int nn = static_cast<int>(state.range(0));
    auto* data = static_cast<fftwf_complex*>(fftwf_malloc(sizeof(fftwf_complex) * nn));
    fftwf_plan plan = fftwf_plan_dft_1d(nn, data, data, FFTW_FORWARD, FFTW_MEASURE);
    const auto init = noise(2 * static_cast<std::size_t>(nn));
    for (int i = 0; i < nn; ++i) data[i][0] = init[2 * i], data[i][1] = init[2 * i + 1];
    for (auto _ : state) {
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
    fftwf_free(data);
}
BENCHMARK(BM_FFTW_InPlace)->Arg(1024)->Arg(65536)->Unit(benchmark::kMicrosecond);
#endif

// The chirp-z path: an even size that is not a power of two.
void BM_FFTDiscreteChirp(benchmark::State& state)
{
    const unsigned nn = static_cast<unsigned>(state.range(0));
    auto data = noise(2 * nn + 1);
    for (auto _ : state) {
        FFTDiscrete(data.data(), nn, 1);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_FFTDiscreteChirp)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
