// Stray-light correction: one spectrum through C, the correction matrix of a
// 1024-pixel detector, and the generator over 1024 scans; OpenBLAS (sgemv,
// dgetrf + dgetri, one thread) and the reading of the scans are the yardsticks.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "files/spectrum_reader.hpp"
#include "numerics/dense_kernels.hpp"
#include "qomath/straylight.h"
#include "straylight/straylight.hpp"

#ifdef QOMATH_BENCH_OPENBLAS
#include <cblas.h>
extern "C" {
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgetri_(const int* n, double* a, const int* lda, const int* ipiv, double* work, const int* lwork,
             int* info);
}
#endif

namespace {

namespace sl = qomath::straylight;
using qomath::numerics::SimdPath;
constexpr int kN = 1024;

// I + D of a stray-light-like D (small positive values, columns summing to ~0.02).
std::vector<double> i_plus_d()
{
    std::mt19937 gen(7u);
    std::uniform_real_distribution<double> u(0.0, 0.04 / kN);
    std::vector<double> a(kN * kN);
    for (double& v : a) v = u(gen);
    for (int i = 0; i < kN; ++i) a[i * kN + i] += 1.0;
    return a;
}

std::vector<float> c_matrix()
{
    const auto d = i_plus_d();
    return std::vector<float>(d.begin(), d.end());
}

void BM_StrayLightCorrectSpectrum(benchmark::State& state)
{
    sl::State st;
    st.correction = c_matrix();
    st.loaded = true;
    std::vector<float> wl(kN), y0(kN), y(kN);
    for (int i = 0; i < kN; ++i) {
        wl[i] = 300.0f + 0.7f * static_cast<float>(i);
        y0[i] = 1000.0f + static_cast<float>(i % 37);
    }
    for (auto _ : state) {
        y = y0;
        sl::correct(st, wl.data(), y.data(), kN, 485.0f, 500.0f);
        benchmark::DoNotOptimize(y.data());
    }
}
BENCHMARK(BM_StrayLightCorrectSpectrum)->Unit(benchmark::kMicrosecond);

void BM_StrayLightMatvec(benchmark::State& state)
{
    const auto path = static_cast<SimdPath>(state.range(0));
    if (!qomath::numerics::path_available(path)) return state.SkipWithError("path not available");
    const auto c = c_matrix();
    std::vector<float> y(kN, 1.0f), out(kN);
    for (auto _ : state) {
        qomath::numerics::matvec(c.data(), y.data(), out.data(), kN, kN, path);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(BM_StrayLightMatvec)->Arg(0)->Arg(1)->ArgName("avx2")->Unit(benchmark::kMicrosecond);

void BM_StrayLightInvert(benchmark::State& state)
{
    const auto path = static_cast<SimdPath>(state.range(0));
    if (!qomath::numerics::path_available(path)) return state.SkipWithError("path not available");
    const auto a0 = i_plus_d();
    std::vector<double> a(a0.size());
    for (auto _ : state) {
        state.PauseTiming();
        a = a0;
        state.ResumeTiming();
        qomath::numerics::lu_invert(a.data(), kN, path);
        benchmark::DoNotOptimize(a.data());
    }
}
BENCHMARK(BM_StrayLightInvert)->Arg(0)->Arg(1)->ArgName("avx2")->Unit(benchmark::kMillisecond);

// The export as hosts call it (copies, I + D, inversion).
void BM_StrayLightGenerateCMatrix(benchmark::State& state)
{
    const auto d0 = i_plus_d();
    std::vector<double> d(d0.size()), c(d0.size());
    for (auto _ : state) {
        state.PauseTiming();
        d = d0;
        state.ResumeTiming();
        StrayLightGenerateCMatrix(d.data(), kN, c.data());
        benchmark::DoNotOptimize(c.data());
    }
}
BENCHMARK(BM_StrayLightGenerateCMatrix)->Unit(benchmark::kMillisecond);

#ifdef QOMATH_BENCH_OPENBLAS
void BM_OpenBLAS_sgemv(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const auto c = c_matrix();
    std::vector<float> y(kN, 1.0f), out(kN);
    for (auto _ : state) {
        cblas_sgemv(CblasRowMajor, CblasNoTrans, kN, kN, 1.0f, c.data(), kN, y.data(), 1, 0.0f, out.data(), 1);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(BM_OpenBLAS_sgemv)->Unit(benchmark::kMicrosecond);

void BM_OpenBLAS_dgetrf_dgetri(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const auto a0 = i_plus_d();
    std::vector<double> a(a0.size()), work(static_cast<std::size_t>(kN) * 64);
    std::vector<int> ipiv(kN);
    const int n = kN, lwork = static_cast<int>(work.size());
    int info = 0;
    for (auto _ : state) {
        state.PauseTiming();
        a = a0;
        state.ResumeTiming();
        dgetrf_(&n, &n, a.data(), &n, ipiv.data(), &info);
        dgetri_(&n, a.data(), &n, ipiv.data(), work.data(), &lwork, &info);
        benchmark::DoNotOptimize(a.data());
    }
}
BENCHMARK(BM_OpenBLAS_dgetrf_dgetri)->Unit(benchmark::kMillisecond);
#endif

// 1024 synthetic scans (one per pixel, version 2.0) in a temporary folder.
const std::filesystem::path& scan_folder()
{
    static const std::filesystem::path dir = [] {
        const auto d = std::filesystem::temp_directory_path() / "qomath-bench-scans";
        std::filesystem::create_directories(d / "scans");
        std::vector<double> lsf(kN);
        for (int p = 0; p < kN; ++p) {
            StrayLightGenerateSyntheticLSF(lsf.data(), kN, static_cast<unsigned>(p), 1.2, 40.0);
            qomath::files::ParsedSpectrum s;
            s.header = "Line scan";
            s.unit = "Counts";
            s.info = {"100.0 [Integration Time ms]"};
            for (int i = 0; i < kN; ++i) {
                s.wavelengths.push_back(300.0f + 0.7f * static_cast<float>(i));
                s.values.push_back(static_cast<float>(30000.0 * lsf[i]));
            }
            std::string text, why;
            qomath::files::format_spectral_text(s, 2, text, why);
            char name[32];
            std::snprintf(name, sizeof name, "line_%04d.csv", p);
            sl::write_file((d / "scans" / name).string().c_str(), text);
        }
        return d;
    }();
    return dir;
}

void BM_StrayLightReadScansOnly(benchmark::State& state)
{
    const auto dir = scan_folder() / "scans";
    std::string data;
    for (auto _ : state) {
        std::size_t points = 0;
        for (const auto& e : std::filesystem::directory_iterator(dir)) {
            sl::read_whole(e.path().string().c_str(), data);
            qomath::files::ParsedSpectrum s;
            std::vector<qomath::files::Problem> problems;
            qomath::files::parse_spectrum(data, -1, s, problems);
            points += s.values.size();
        }
        benchmark::DoNotOptimize(points);
    }
}
BENCHMARK(BM_StrayLightReadScansOnly)->Unit(benchmark::kMillisecond);

void BM_StrayLightGenerate(benchmark::State& state)
{
    sl::Config cfg;
    cfg.inband_fixed = 8;
    cfg.max_left = cfg.max_right = 1023;
    cfg.scan_folder = (scan_folder() / "scans").string();
    sl::GenerateOptions opt;
    opt.out_dir = (scan_folder() / "out").string();
    opt.log = nullptr;
    std::filesystem::create_directories(opt.out_dir);
    sl::State st;
    double read = 0, columns = 0, invert = 0, write = 0;
    for (auto _ : state) {
        const sl::GenerateResult r = sl::generate(st, cfg, opt);
        if (r.status != 1) state.SkipWithError("generate failed");
        read += r.seconds_read;
        columns += r.seconds_columns;
        invert += r.seconds_invert;
        write += r.seconds_write;
    }
    const double k = static_cast<double>(state.iterations());
    state.counters["read_s"] = read / k;
    state.counters["columns_s"] = columns / k;
    state.counters["invert_s"] = invert / k;
    state.counters["write_s"] = write / k;
}
BENCHMARK(BM_StrayLightGenerate)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
