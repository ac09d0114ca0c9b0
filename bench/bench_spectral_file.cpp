// Reading and writing a 4096-point version 2.0 spectral file, in a
// temporary folder.
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

#include "bench_spectra.hpp"
#include "qomath/spectral_file.h"

namespace {

namespace fs = std::filesystem;

struct Folder {
    fs::path dir = fs::temp_directory_path() / ("qomath-bench-sf-" + std::to_string(::getpid()));
    Folder() { fs::create_directories(dir); }
    ~Folder() { fs::remove_all(dir); }
    std::string file(const char* name) const { return (dir / name).string(); }
};

const Folder& folder()
{
    static const Folder f;
    return f;
}

// A 4096-point record with a typical text block.
std::unique_ptr<SpectralRecord2> record()
{
    auto rec = std::make_unique<SpectralRecord2>();
    std::memset(rec.get(), 0, sizeof *rec);
    const auto s = qomath::bench::spectrum(4096);
    std::memcpy(rec->wavelengths, s.wl.data(), sizeof rec->wavelengths);
    for (int i = 0; i < 4096; ++i) rec->values[i] = s.v[static_cast<std::size_t>(i)] * 12345.678f;
    rec->firstWavelength = s.wl.front();
    rec->lastWavelength = s.wl.back();
    rec->pointCount = 4096.0f;
    std::strcpy(rec->header, "Benchmark spectrum");
    std::strcpy(rec->unitName, "Irradiance");
    rec->infoCount = 4;
    std::strcpy(rec->info[0], "2020-05-03 15:27:32 [Timestamp]");
    std::strcpy(rec->info[1], "250.000000 [Integration Time ms]");
    std::strcpy(rec->info[2], "10 [Averages]");
    std::strcpy(rec->info[3], "25.0 [Temperature (\xB0" "C)]");
    return rec;
}

void BM_ReadSpectralFile2_4096(benchmark::State& state)
{
    const std::string name = folder().file("read.sf");
    auto rec = record();
    if (WriteSpectralFile2(name.c_str(), rec.get()) != 1) state.SkipWithError("write");
    SpectralFileExtraInfo extra;
    for (auto _ : state) {
        if (ReadSpectralFile2(name.c_str(), rec.get(), &extra) != 1) state.SkipWithError("status");
        benchmark::DoNotOptimize(rec.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_ReadSpectralFile2_4096)->Unit(benchmark::kMicrosecond);

void BM_WriteSpectralFile2_4096(benchmark::State& state)
{
    const std::string name = folder().file("write.sf");
    auto rec = record();
    for (auto _ : state) {
        if (WriteSpectralFile2(name.c_str(), rec.get()) != 1) state.SkipWithError("status");
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_WriteSpectralFile2_4096)->Unit(benchmark::kMicrosecond);

}  // namespace
