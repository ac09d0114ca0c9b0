// qomath straylight end to end on the synthetic instrument of tools/.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/run_qomath.hpp"
#include "files/scratch.hpp"
#include "files/spectrum_reader.hpp"
#include "straylight/straylight.hpp"

namespace {

using qomath::test::qomath;
namespace fs = std::filesystem;

std::vector<float> values_of(const fs::path& p)
{
    std::string data;
    qomath::straylight::read_whole(p.string().c_str(), data);
    qomath::files::ParsedSpectrum s;
    std::vector<qomath::files::Problem> problems;
    EXPECT_TRUE(qomath::files::parse_spectrum(data, -1, s, problems)) << p;
    return s.values;
}

TEST(StrayLightCli, SyntheticInstrumentEndToEnd)
{
    const fs::path dir = scratch::path("instrument");
#ifdef __OPTIMIZE__
    const bool full = true;
#else
    const bool full = false;  // unoptimised (sanitizer) builds: every 16th scan, no accuracy checks
#endif
    const std::string gen = std::string(QOMATH_GEN_STRAYLIGHT) + " " + dir.string() + (full ? "" : " --every 16");
    ASSERT_EQ(std::system(gen.c_str()), 0);
    const std::string m = (dir / "out" / "sl.bin").string();
    fs::create_directories(dir / "out");

    auto r = qomath("straylight generate " + (dir / "scans").string() + " -o " + m);
    EXPECT_EQ(r.status, 1);  // the broken scans are named, the matrix built
    EXPECT_NE(r.out.find("broken_1023.csv: 1023 points, not 1024"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("broken_nan.csv"), std::string::npos);
    EXPECT_EQ(fs::file_size(m), 4194304u);
    for (const char* f : {"StrayLight_LocatePeakPixels.csv", "StrayLight_Input.txt", "StrayLightProcess.txt",
                          "StrayLight_SDFMatrix.txt", "StrayLight_CMatrix.txt"})
        EXPECT_TRUE(fs::exists(dir / "out" / f)) << f;
    const std::string peaks = scratch::get((dir / "out" / "StrayLight_LocatePeakPixels.csv").string());
    EXPECT_EQ(peaks.find("notes.txt"), std::string::npos);
    EXPECT_EQ(peaks.find("summary.CSV"), std::string::npos);
    EXPECT_NE(peaks.find("line_0016.csv,16,16.000000,16.000000\n"), std::string::npos);

    r = qomath("straylight correct " + m + " " + (dir / "spectra" / "*.txt").string() + " -o " +
               (dir / "corrected").string());
    EXPECT_EQ(r.status, 0) << r.out;
    if (!full) return;
    for (const int p : {150, 512, 880}) {
        const std::string name = "line_0" + std::to_string(p) + ".txt";
        const auto meas = values_of(dir / "spectra" / name), truth = values_of(dir / "truth" / name),
                   corr = values_of(dir / "corrected" / name);
        ASSERT_EQ(corr.size(), 1024u);
        double stray = 0, left = 0, in_c = 0, in_t = 0;
        for (int i = 2; i < 1022; ++i) {
            if (i >= p - 8 && i < p + 8) {
                in_c += corr[i];
                in_t += truth[i];
            } else {
                stray += meas[i] - truth[i];
                left += std::abs(corr[i] - truth[i]);
            }
        }
        EXPECT_LE(left, 0.01 * stray) << name;
        EXPECT_NEAR(in_c / in_t, 1.0, 0.001) << name;
    }
    const auto truth = values_of(dir / "truth" / "white_led.txt"), corr = values_of(dir / "corrected" / "white_led.txt");
    for (int i = 2; i < 1022; ++i) EXPECT_NEAR(corr[i] / truth[i], 1.0, 0.005) << i;
}

TEST(StrayLightCli, RefusalsAndUsage)
{
    EXPECT_EQ(qomath("straylight").status, 2);
    EXPECT_EQ(qomath("straylight generate").status, 2);
    EXPECT_EQ(qomath("straylight correct m.bin --blue-blend 500:400 x.txt").status, 2);
    const std::string empty = scratch::path("no_scans");
    fs::create_directories(empty);
    EXPECT_EQ(qomath("straylight generate " + empty + " -o " + empty + "/m.bin").status, 2);
    auto r = qomath("straylight generate " + empty + " -o " + scratch::path("e.bin"));
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("no usable scan"), std::string::npos);
    EXPECT_TRUE(fs::exists(scratch::path("StrayLight_Input.txt")));
    EXPECT_FALSE(fs::exists(scratch::path("e.bin")));
    r = qomath("straylight generate " + scratch::path("missing") + " -o " + scratch::path("e.bin"));
    EXPECT_EQ(r.status, 1);
    // A matrix of the wrong size is refused, nothing is written.
    scratch::put("small.bin", std::string(4194300, '\0'));
    const std::string spectrum = std::string(QOMATH_DATA_DIR) + "/../examples/white_led_v2.txt";
    r = qomath("straylight correct " + scratch::path("small.bin") + " " + spectrum + " -o " + scratch::path("c"));
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("not a 1024 x 1024 matrix"), std::string::npos);
    EXPECT_FALSE(fs::exists(scratch::path("c")));
}

}  // namespace
