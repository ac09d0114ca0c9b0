// The command entry point: a help text into a 4 KiB buffer, the keyword
// lookup of a 10-keyword line, and a whole SLMcorrect on files the system
// has cached (matrix read, correction, spectral file read and write).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "qomath/spectral_file.h"
#include "straylight/command.hpp"

namespace {

namespace cm = qomath::command;
namespace sl = qomath::straylight;

void BM_CmdHelp(benchmark::State& state)
{
    sl::State st;
    cm::Context ctx{&st, nullptr, {}, nullptr, 0, 0};
    std::vector<char> buf(4096);
    for (auto _ : state) {
        cm::run(ctx, "cmd?", buf.data(), static_cast<int>(buf.size()));
        benchmark::DoNotOptimize(buf.data());
    }
}
BENCHMARK(BM_CmdHelp);

void BM_KeywordLookup10(benchmark::State& state)
{
    const char* line =
        "NVISab nvis=nv.csv escale=525:550 dscale=0.2 nmshift=-100.0 nmsum=518:675 ina=a.csv "
        "inb=b.csv lum=0 extra=1 more=\"two words\"";
    char dst[1024];
    for (auto _ : state) {
        benchmark::DoNotOptimize(cm::keyword(2, dst, sizeof dst, line, "more=", ""));
        benchmark::DoNotOptimize(dst);
    }
}
BENCHMARK(BM_KeywordLookup10);

void BM_SLMcorrectCachedFiles(benchmark::State& state)
{
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / "qomath-bench-command";
    fs::create_directories(dir);
    const std::string mat = (dir / "c.bin").string(), in = (dir / "in.csv").string(),
                      out = (dir / "out.csv").string();
    {
        std::vector<float> c(sl::kMatrixValues, 1e-5f);
        for (std::size_t i = 0; i < sl::kPixels; ++i) c[i * sl::kPixels + i] = 1.0f;
        std::ofstream(mat, std::ios::binary).write(reinterpret_cast<const char*>(c.data()),
                                                    static_cast<std::streamsize>(sl::kMatrixBytes));
        SpectralRecord2 rec{};
        rec.pointCount = 1024;
        for (int i = 0; i < 1024; ++i) {
            rec.wavelengths[i] = 380.0f + 0.5f * i;
            rec.values[i] = 1000.0f + i;
        }
        rec.firstWavelength = rec.wavelengths[0];
        rec.lastWavelength = rec.wavelengths[1023];
        WriteSpectralFile2(in.c_str(), &rec);
    }
    const std::string line = "SLMcorrect infile=" + in + " outfile=" + out + " matrixfile=" + mat;
    sl::State st;
    cm::Context ctx{&st, nullptr, {}, nullptr, 0, 0};
    std::vector<char> buf(4096);
    for (auto _ : state) cm::run(ctx, line.c_str(), buf.data(), static_cast<int>(buf.size()));
    if (std::string(buf.data()).find("failed") != std::string::npos) state.SkipWithError(buf.data());
    fs::remove_all(dir);
}
BENCHMARK(BM_SLMcorrectCachedFiles)->Unit(benchmark::kMillisecond);

}  // namespace
