#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "files/scratch.hpp"
#include "files/spectrum_reader.hpp"
#include "qomath/straylight.h"
#include "straylight/straylight.hpp"

namespace sl = qomath::straylight;

namespace {

using D = std::vector<double>;
constexpr int N = 1024;

TEST(StrayLight, LsfSmoothingAveragesTheShiftedCopyBelowTheThreshold)
{
    // Width 3: a point at or below the threshold becomes (lsf[i] + lsf[i+1] +
    // lsf[i+2]) / 3 with lsf[0] and points past the end counting 0.
    D lsf{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(LSFsmoothConvolution(lsf.data(), 8, 1, 3, 7.5), 1);
    const D want{5.0 / 3, 3, 4, 5, 6, 7, 5, 8};
    for (int i = 0; i < 8; ++i) EXPECT_DOUBLE_EQ(lsf[i], want[i]) << i;
    const D before = lsf;
    EXPECT_EQ(LSFsmoothConvolution(lsf.data(), 8, 1, 1, 7.5), -1);
    EXPECT_EQ(LSFsmoothConvolution(lsf.data(), 8, 1, 5, 7.5), -1);  // > n/2
    EXPECT_EQ(LSFsmoothConvolution(lsf.data(), 8, 0, 1, 7.5), 1);   // disabled: width not looked at
    EXPECT_EQ(lsf, before);
}

TEST(StrayLight, SdfStepsInOrder)
{
    struct Case {
        D lsf;
        int p, h;
        unsigned left;
        int right;
        double floor;
        int status;
        D want;
    };
    const Case cases[] = {
        // window (i < 1, i > 8 zeroed), then the spike at 1, then the floor
        // (0.5 goes); in-band 4..5 sums 10 and is cleared.
        {{7, 3, 0, 1, 2, 8, 2, 1, 0.5, 0.25}, 5, 1, 4, 3, 0.6, 1, {0, 0, 0, 0.1, 0, 0, 0.2, 0.1, 0, 0}},
        // a left window past pixel 0 zeroes nothing there
        {{4, 6, 2, 2, 0, 0, 0, 0, 0, 0}, 1, 1, 5, 100, 0.0, 1, {0, 0, 0.2, 0.2, 0, 0, 0, 0, 0, 0}},
        // nothing in band: -2, output zeroed
        {{0, 0, 0, 0, 0, 5, 5, 5, 5, 5}, 1, 2, 9, 9, 0.0, -2, D(10, 0.0)},
    };
    for (const Case& c : cases) {
        D lsf = c.lsf, out(11, 9.0);
        EXPECT_EQ(StrayLightGenerateSDF(lsf.data(), 10, c.p, c.h, c.left, c.right, c.floor, 1, 0, 0, 0,
                                        0, 0, 0, 0.0, out.data()),
                  c.status);
        for (int i = 0; i < 10; ++i) EXPECT_NEAR(out[i], c.want[i], 1e-7) << c.p << " " << i;
        EXPECT_EQ(out[10], 9.0);
    }
}

TEST(StrayLight, WorkingMatrixColumnsAndBounds)
{
    StrayLightDeleteMatrix();
    D v{1, 2, 3}, dst(10, 9.0);
    EXPECT_EQ(StrayLightEditMatrix(0, v.data(), 3), -1);
    EXPECT_EQ(StrayLightCopyMatrix(dst.data()), dst.data());
    EXPECT_EQ(dst[0], 0.0);
    ASSERT_EQ(StrayLightInitializeMatrix(3), 1);
    EXPECT_EQ(StrayLightEditMatrix(1, v.data(), 3), 1);
    EXPECT_EQ(StrayLightEditMatrix(3, v.data(), 3), 1);  // column == size: passes, stores nothing
    EXPECT_EQ(StrayLightEditMatrix(4, v.data(), 3), -2);
    EXPECT_EQ(StrayLightEditMatrix(0, v.data(), 2), -3);
    StrayLightCopyMatrix(dst.data());
    EXPECT_EQ(dst, (D{0, 1, 0, 0, 2, 0, 0, 3, 0, 9}));
    StrayLightDeleteMatrix();
}

TEST(StrayLight, CMatrixAndCleanUps)
{
    D d{1, 1, 1, 2}, c(4);
    EXPECT_EQ(StrayLightGenerateCMatrix(d.data(), 2, c.data()), 1);
    EXPECT_EQ(d, (D{2, 1, 1, 3}));  // the caller's D now holds I + D
    const D inv{0.6, -0.2, -0.2, 0.4};
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(c[k], inv[k], 1e-15);

    D m(N * N, 0.0);
    auto at = [&](int r, int col) -> double& { return m[r * N + col]; };
    EXPECT_EQ(StrayLightSmoothColumns(m.data(), 1023), -1);
    EXPECT_EQ(StrayLightFillInBlankColumns(m.data(), 3), -1);
    EXPECT_EQ(StrayLightAverageAdjacentColumns(m.data(), 0), -1);
    // An impulse on the diagonal spreads along it; the border is cleared.
    at(500, 500) = 3;
    at(0, 7) = 5;
    EXPECT_EQ(StrayLightSmoothColumns(m.data(), N), 1);
    EXPECT_DOUBLE_EQ(at(499, 499) + at(500, 500) + at(501, 501), 3.0);
    EXPECT_DOUBLE_EQ(at(501, 501), 1.0);
    EXPECT_EQ(at(0, 7), 0.0);
    // In place the averaged (r-1, c-1) feeds the next: 1, 4/3, 4/9 from 0, 3, 0.
    std::fill(m.begin(), m.end(), 0.0);
    at(500, 500) = 3;
    at(0, 7) = 5;
    EXPECT_EQ(StrayLightAverageAdjacentColumns(m.data(), N), 1);
    EXPECT_DOUBLE_EQ(at(499, 499), 1.0);
    EXPECT_DOUBLE_EQ(at(500, 500), 4.0 / 3);
    EXPECT_DOUBLE_EQ(at(501, 501), 4.0 / 9);
    EXPECT_EQ(at(0, 7), 5.0);
    // A blank column between two filled ones takes their diagonal mean.
    std::fill(m.begin(), m.end(), 0.0);
    for (int i = 0; i < N; ++i) at(i, i) = i == 600 ? 0.0 : 2.0 + (i == 601);
    EXPECT_EQ(StrayLightFillInBlankColumns(m.data(), N), 1);
    EXPECT_DOUBLE_EQ(at(600, 600), 2.5);
    EXPECT_EQ(at(599, 600) + at(601, 600), 0.0);
}

TEST(StrayLight, FilterAndBlueBlend)
{
    // Rows boxcar-averaged (3 points), negatives cleared, diagonal 1.
    std::vector<float> m{1, -2, 4, 2, 5, 8, 3, 3, -3};
    EXPECT_EQ(StrayLightFilter(m.data(), 3, 2), 1);
    EXPECT_EQ(m, (std::vector<float>{1, 0, 4, 2, 1, 8, 3, 1, 1}));

    std::vector<float> wl{400, 450, 500, 550}, a(4, 1), b(4, 3);
    struct Case {
        float start, end;
        std::vector<float> want;
    } cases[] = {{450, 550, {1, 1, 2, 3}}, {500, 500, {1, 1, 1, 3}}, {500, 499, {9, 9, 9, 9}}};
    for (const Case& c : cases) {
        std::vector<float> out(4, 9);
        StrayLightBlueBlend(0, out.data(), 4, a.data(), b.data(), wl.data(), c.start, c.end);
        EXPECT_EQ(out, c.want) << c.start << ":" << c.end;
    }
}

TEST(StrayLight, SyntheticLsfWrites1024Values)
{
    D out(1025, 7.0);
    EXPECT_EQ(StrayLightGenerateSyntheticLSF(out.data(), 10, 300, 1.0, 4.0), 1);
    const double peak = 1 / std::sqrt(6.283185307179586) + 2 / std::sqrt(6.283185307179586 * 16);
    EXPECT_GE(out[300] - peak, 0.0);
    EXPECT_LE(out[300] - peak, 0.001);
    EXPECT_GT(out[1023], 0.0);  // noise only, far from the line
    EXPECT_LE(out[1023], 0.001);
    EXPECT_NE(out[1022], out[1023]);
    EXPECT_EQ(out[1024], 7.0);
}

TEST(StrayLight, FilesByteExactAndRead)
{
    const std::string p = scratch::path("sl.txt");
    D lsf{1.5, -0.25};
    ASSERT_EQ(StrayLightSaveLSFFile(lsf.data(), 2, 7, p.c_str()), 1);
    EXPECT_EQ(scratch::get(p), "7\n2\n1.500000\n-0.250000\n");
    D back(3, 9.0);
    unsigned n = 0, peak = 0;
    EXPECT_EQ(StrayLightReadLSFFile(back.data(), &n, &peak, p.c_str(), 1), 1);
    EXPECT_EQ(back, (D{1.5, 9, 9}));
    EXPECT_EQ(n * 100 + peak, 207u);
    // A line longer than the 25-character buffer is read in pieces, each a value.
    scratch::put("long.txt", "3\n99\n" + std::string(30, '1') + "\n");
    EXPECT_EQ(StrayLightReadLSFFile(back.data(), &n, &peak, scratch::path("long.txt").c_str(), 5), 1);
    EXPECT_EQ(back[0], 111111111111111111111111.0);
    EXPECT_EQ(back[1], 111111.0);
    EXPECT_EQ(back[2], 9.0);
    EXPECT_EQ(StrayLightReadLSFFile(back.data(), &n, &peak, scratch::put("e", "").c_str(), 5), -2);
    EXPECT_EQ(StrayLightReadLSFFile(back.data(), &n, &peak, scratch::put("f", "5\n").c_str(), 5), -3);
    EXPECT_EQ(StrayLightReadLSFFile(back.data(), &n, &peak, scratch::path("none").c_str(), 5), -1);
    EXPECT_EQ(StrayLightSaveLSFFile(lsf.data(), 2, 7, scratch::folder().c_str()), -1);

    D sdf{1, -0.5, 2.5e-7, 0};
    ASSERT_EQ(StrayLightSaveSDFMatrixFile(sdf.data(), 2, p.c_str()), 1);
    EXPECT_EQ(scratch::get(p), "1.000000e+00,-5.000000e-01\n2.500000e-07,0.000000e+00\n");
    D m(10, 9.0);
    EXPECT_EQ(StrayLightReadSDFMatrixFile(m.data(), &n, p.c_str(), 2), 1);
    EXPECT_EQ(D(m.begin(), m.begin() + 5), (D{1, -0.5, 2.5e-7, 0, 9}));
    // A short row ends in zeros; missing rows stay.
    scratch::put("short.txt", "1,2\n");
    EXPECT_EQ(StrayLightReadSDFMatrixFile(m.data(), &n, scratch::path("short.txt").c_str(), 3), 1);
    EXPECT_EQ(m, (D{1, 2, 0, 0, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(n, 3u);

    std::vector<float> c{1, 2, 3, 4, 5};
    EXPECT_EQ(StrayLightWriteCmatrixFile(c.data(), 5, p.c_str(), 0), 4);
    EXPECT_EQ(scratch::get(p), "1.000000,2.000000\n3.000000,4.000000\n");
    EXPECT_EQ(StrayLightWriteCmatrixFile(c.data(), 5, p.c_str(), 1), 5);
    EXPECT_EQ(scratch::get(p), std::string(reinterpret_cast<const char*>(c.data()), 20));
    EXPECT_EQ(StrayLightWriteCmatrixFile(c.data(), 0, p.c_str(), 0), 0);
    std::vector<float> f(8, 9);
    EXPECT_EQ(StrayLightReadCmatrixFile(f.data(), p.c_str(), 3, 1), 3);
    EXPECT_EQ(f, (std::vector<float>{1, 2, 3, 9, 9, 9, 9, 9}));
    // maxValues is looked at before each line: the second line is finished;
    // empty fields skipped, CR ends a value, characters past the 49th dropped.
    scratch::put("c.txt", "1,,2\r\n3,4,5\n6\n");
    EXPECT_EQ(StrayLightReadCmatrixFile(f.data(), scratch::path("c.txt").c_str(), 3, 0), 5);
    EXPECT_EQ(f, (std::vector<float>{1, 2, 3, 4, 5, 9, 9, 9}));
    scratch::put("c.txt", std::string(48, ' ') + "73\n");
    EXPECT_EQ(StrayLightReadCmatrixFile(f.data(), scratch::path("c.txt").c_str(), 3, 0), 1);
    EXPECT_EQ(f[0], 7.0f);
    EXPECT_EQ(StrayLightReadCmatrixFile(f.data(), scratch::path("none").c_str(), 3, 0), -1);

    // 100,000-character lines: the C-matrix read finishes its first
    // 24,999-character piece, 12,500 values, the documented room past
    // maxValues; an SDF row of 30,000+ characters is two rows.
    std::string line;
    for (int i = 0; i < 50000; ++i) line += "5,";
    std::vector<float> big(1 + 12500 + 1, -1.0f);
    EXPECT_EQ(StrayLightReadCmatrixFile(big.data(), scratch::put("w.txt", line + "\n").c_str(), 1, 0), 12500);
    EXPECT_EQ(big[12499], 5.0f);
    EXPECT_EQ(big[12500], -1.0f);
    std::fill(m.begin(), m.end(), 9.0);
    scratch::put("w.txt", "1," + std::string(30000, '0') + "7\n");
    EXPECT_EQ(StrayLightReadSDFMatrixFile(m.data(), &n, scratch::path("w.txt").c_str(), 3), 1);
    EXPECT_EQ(m, (D{1, 0, 0, 7, 0, 0, 9, 9, 9, 9}));
}

TEST(StrayLight, GeneratorPicksTheNearestEligibleScan)
{
    // Scans peaking at 100 (100 ms), 500 (200 ms) and 900 (too weak), and one
    // that is not a scan; pixel 300 lies as far from 100 as from 500.
    const auto dir = scratch::folder() / "gen";
    std::filesystem::create_directories(dir / "scans");
    D lsf(N);
    for (const int p : {100, 500, 900}) {
        StrayLightGenerateSyntheticLSF(lsf.data(), N, static_cast<unsigned>(p), 1.2, 30.0);
        qomath::files::ParsedSpectrum s;
        s.header = "scan";
        s.unit = "Counts";
        s.info = {p == 500 ? "200 [Integration Time ms]" : "100 [Exposure Time]"};
        for (int i = 0; i < N; ++i) {
            s.wavelengths.push_back(static_cast<float>(400 + i));
            s.values.push_back(static_cast<float>(lsf[i] * (p == 900 ? 1.0 : 1000.0)));
        }
        std::string text, why;
        ASSERT_TRUE(qomath::files::format_spectral_text(s, 2, text, why));
        scratch::put((dir / "scans" / ("s" + std::to_string(p) + ".csv")).string(), text);
    }
    scratch::put((dir / "scans" / "x.csv").string(), "1,2\n");
    std::string cfg = "a=8\nb=0\nc=0\nd=0\ne=0\nf=1023\ng=1023\n";
    for (int i = 8; i <= 14; ++i) cfg += "x=0\n";
    cfg += "threshold=10\ncdf=0\nend=2\n\n\n\nfolder=" + (dir / "scans").string() + "\n";
    sl::State st;
    sl::GenerateOptions opt;
    opt.out_dir = dir.string();
    opt.log = nullptr;
    const sl::GenerateResult r = sl::generate(st, sl::parse_config(cfg), opt);
    EXPECT_EQ(r.status, 1);
    ASSERT_EQ(r.refused.size(), 1u);
    const std::string scans = (dir / "scans").string();
    const std::string process = scratch::get((dir / "StrayLightProcess.txt").string());
    for (const std::string& l : {"0,0," + scans + "/s100.csv,0\n", "300,0," + scans + "/s100.csv,0\n",
                                 "301,1," + scans + "/s500.csv,1\n", "1023,1," + scans + "/s500.csv,1\n"})
        EXPECT_NE(process.find(l), std::string::npos) << l;
    EXPECT_NE(scratch::get((dir / "StrayLight_Input.txt").string())
                  .find("Peak Signal Threshold 10.000000\nCDF Noise Threshold 0.000000\n"
                        "DMatrix - End columns to remove 2\n"),
              std::string::npos);
    // D: column 300 is the 100 scan's SDF (its peak outside 292..307 counts);
    // the two end columns on each side are zeroed.
    D d(N * N, 9.0);
    unsigned n = 0;
    StrayLightReadSDFMatrixFile(d.data(), &n, (dir / "StrayLight_SDFMatrix.txt").c_str(), N);
    EXPECT_GT(d[100 * N + 300], 0.01);
    EXPECT_EQ(d[300 * N + 300], 0.0);
    EXPECT_EQ(d[500 * N + 1], 0.0);
    EXPECT_EQ(d[500 * N + 1022], 0.0);
    EXPECT_GT(d[500 * N + 1021], 0.0);
    EXPECT_EQ(std::filesystem::file_size(dir / "slmatrix.bin"), sl::kMatrixBytes);
}

TEST(StrayLight, ExportsRefuseWithTheirCodes)
{
    // Writers into a missing folder: the open-failure code; nothing read.
    const std::string nowhere = scratch::path("missing/x.txt");
    std::vector<float> f(4, 1.0f);
    D d(4, 1.0);
    EXPECT_EQ(StrayLightSaveSDFMatrixFile(d.data(), 2, nowhere.c_str()), -1);
    EXPECT_EQ(StrayLightWriteCmatrixFile(f.data(), 4, nowhere.c_str(), 0), -1);
    EXPECT_EQ(StrayLightWriteCmatrixFile(f.data(), 4, nowhere.c_str(), 1), -1);
    EXPECT_EQ(StrayLightBinaryfileToCSV(nowhere.c_str(), scratch::path("y.csv").c_str()), -1);
    EXPECT_EQ(StrayLightReadCmatrixFile(f.data(), scratch::put("b.bin", "abcdefgh").c_str(), 0, 1), 0);
    // The generator of the C interface, in the current folder: an unlistable
    // scan folder ends the run with "FindFirstFile" and writes nothing.
    const auto dir = scratch::folder() / "cwd";
    std::filesystem::create_directories(dir);
    const std::string cfg = scratch::put("cfg.txt", std::string(20, '\n') + "=" + nowhere + "\n");
    const auto old = std::filesystem::current_path();
    std::filesystem::current_path(dir);
    testing::internal::CaptureStdout();
    GenerateSDFMatrix(cfg.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "FindFirstFile\n");
    std::filesystem::current_path(old);
    EXPECT_TRUE(std::filesystem::is_empty(dir));
}

TEST(StrayLight, MatrixConversionsRoundTripAndCorrection)
{
    std::vector<float> m(N * N);
    for (int k = 0; k < N * N; ++k) m[k] = static_cast<float>(k % 1000) / 8.0f - 40.0f;
    const std::string bin = scratch::path("m.bin"), csv = scratch::path("m.csv"), bin2 = scratch::path("m2.bin");
    ASSERT_EQ(StrayLightWriteCmatrixFile(m.data(), N * N, bin.c_str(), 1), N * N);
    EXPECT_EQ(StrayLightBinaryfileToCSV(bin.c_str(), csv.c_str()), 1);
    EXPECT_EQ(StrayLightCSVfileToBinary(csv.c_str(), bin2.c_str()), 1);
    EXPECT_EQ(scratch::get(bin2), scratch::get(bin));
    EXPECT_EQ(StrayLightCSVfileToBinary(scratch::path("none").c_str(), bin2.c_str()), -1);

    // Loading refuses a wrong size and non-finite values.
    sl::State st;
    scratch::put("short.bin", scratch::get(bin).substr(4));
    EXPECT_EQ(sl::load_correction(st, scratch::path("short.bin").c_str()), -2);
    m[12345] = std::numeric_limits<float>::infinity();
    StrayLightWriteCmatrixFile(m.data(), N * N, bin.c_str(), 1);
    EXPECT_EQ(sl::load_correction(st, bin.c_str()), -2);
    EXPECT_FALSE(st.loaded);

    // C = I / 2: the correction halves, then blends as StrayLightBlueBlend does.
    std::fill(m.begin(), m.end(), 0.0f);
    for (int i = 0; i < N; ++i) m[i * N + i] = 0.5f;
    StrayLightWriteCmatrixFile(m.data(), N * N, bin.c_str(), 1);
    ASSERT_EQ(sl::load_correction(st, bin.c_str()), 1);
    std::vector<float> wl(N), y(N), half(N, 1.0f), blended(N);
    for (int i = 0; i < N; ++i) {
        wl[i] = 300.0f + 0.5f * static_cast<float>(i);
        y[i] = 2.0f;
    }
    std::vector<float> y0 = y;
    StrayLightBlueBlend(0, blended.data(), N, y0.data(), half.data(), wl.data(), 350.0f, 400.0f);
    EXPECT_EQ(sl::correct(st, wl.data(), y.data(), N, 350.0f, 400.0f), 1);
    EXPECT_EQ(y, blended);
    EXPECT_EQ(sl::correct(st, wl.data(), y.data(), 1023, 350.0f, 400.0f), -1);
}

TEST(StrayLight, ConfigLinesInEchoOrder)
{
    std::string text;
    for (int i = 1; i <= 20; ++i) text += "label " + std::to_string(i) + " = " + std::to_string(i) + "\n";
    text[text.find("= 5")] = ':';  // no "=": 0
    text += "folder=scans\n=D.txt\r\n";
    sl::Config c = sl::parse_config(text);
    EXPECT_EQ(c.inband_fixed, 1u);
    EXPECT_TRUE(c.linear_fit);
    EXPECT_EQ(c.fit_high, 4u);
    EXPECT_EQ(c.noise_floor, 0.0f);
    EXPECT_EQ(c.max_right, 7u);
    EXPECT_EQ(c.boxcar_width, 11);
    EXPECT_EQ(c.peak_threshold, 15.0f);
    EXPECT_EQ(c.end_columns, 17);
    EXPECT_EQ(c.scan_folder, "scans");
    EXPECT_EQ(c.d_file, "D.txt");
    EXPECT_EQ(c.c_file, "StrayLight_CMatrix.txt");
    // A 300-character line is two lines of the 256-character read (the
    // second without "="); a number past float's range is unparsable.
    c = sl::parse_config("x=" + std::string(298, '7') + "\n=3\n");
    EXPECT_EQ(c.inband_fixed, 0u);
    EXPECT_FALSE(c.linear_fit);
    EXPECT_EQ(c.fit_low, 3u);
}

}  // namespace
