#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "files/scratch.hpp"
#include "qomath/command.h"
#include "qomath/nvis.h"
#include "qomath/spectral_file.h"
#include "straylight/command.hpp"

namespace cm = qomath::command;
namespace sl = qomath::straylight;

namespace {

// Runs a line on a fresh context into a guarded buffer; the bytes past the
// capacity must stay untouched.
std::string cmd(const std::string& line, int cap = 1 << 16)
{
    static sl::State st;
    cm::Context ctx{&st, nullptr, {}, nullptr, 0, 0};
    std::vector<char> buf(static_cast<std::size_t>(cap) + 64, '\x7f');
    cm::run(ctx, line.c_str(), buf.data(), cap);
    for (std::size_t i = static_cast<std::size_t>(cap); i < buf.size(); ++i)
        EXPECT_EQ(buf[i], '\x7f') << "written past the capacity " << cap;
    return buf.data();
}

const std::vector<std::string> kCmdHelp = {
    "Using:1[CMD?]\n",
    "Available commands:\n",
    "SLinterpolate - Read stray light files from SLinterpolateinput and create interpolated files in "
    "SLinterpolateoutput.\n",
    "NVISab - compare two NVIS weighted input files.\n",
    "SDFMat - generate stray light correction matrices.\n",
    "Enter command name followed by '?' for additional details.\n",
    "Output from these commands is saved to QoMathCommandLineLog.txt\n",
};

TEST(Command, HelpAndSetTexts)
{
    struct Case {
        const char* line;
        const char* text;
    } cases[] = {
        {"", "no function specified"},
        {" ,  , ", "no function specified"},
        {"cmd", "invalid command [cmd]"},
        {"SLMcorrect2 infile=a.csv", "invalid command [SLMcorrect2 infile=a.csv]"},
        {"sdfmat?", "Using:1[sdfmat?]\nSDFMat config=name of configuration file\n"},
        {"SLinterpolate?",
         "Using:1[SLinterpolate?]\nAvailable keyword=default:\n"
         "outnminterval=.2 - output nm interpolation interval\n"
         "vthreshold=.25 - centroid threshold as fraction of peak\n"
         "vmaxnmdelta=2.5 - validation max centroid to file delta\n"
         "vminwidth=2 - validation min width\nvmaxwidth=12 - validation max width\n"},
        {"NVISAB?",
         "Using:1[NVISAB?]\nAvailable keyword=default:\nnvis=nvisa.csv - nvis weighting file\n"
         "ina=ina.csv - input a: test file\ninb=inb.csv - input b: reference file\n"
         "escale=525:550 - energy scaling wavelength range\n"
         "escale=1000000:0 - energy scaling fixed factor\n"},
    };
    for (const Case& c : cases) EXPECT_EQ(cmd(c.line), c.text) << c.line;
    std::string all;
    for (const auto& m : kCmdHelp) all += m;
    EXPECT_EQ(cmd("CMD?"), all);
    EXPECT_EQ(cmd("a-very-long-bad-command", 8), "invalid");  // cut to capacity - 1
}

TEST(Command, CapacityOverEveryCapacityOfAHelpCommand)
{
    std::size_t total = 0;
    for (const auto& m : kCmdHelp) total += m.size();
    for (int cap = 1; cap <= static_cast<int>(total) + 2; ++cap) {
        std::string want;
        for (const auto& m : kCmdHelp)
            if (want.size() + m.size() < static_cast<std::size_t>(cap)) want += m;
        EXPECT_EQ(cmd("CMD?", cap), want) << cap;
    }
    // No buffer, or no room: the command runs and writes nothing.
    cm::Context ctx{nullptr, nullptr, {}, nullptr, 0, 0};
    cm::run(ctx, "cmd?", nullptr, 100);
    char one = 'x';
    EXPECT_EQ(QoMathCmd(const_cast<char*>("cmd?"), &one, 0), 0);
    EXPECT_EQ(one, 'x');
}

TEST(Command, KeywordLookup)
{
    struct Case {
        int mode;
        const char* line;
        const char* key;
        int size;
        int status;
        const char* value;
    } cases[] = {
        {2, "SLMcorrect infile=a.csv", "infile=", 1024, 1, "a.csv"},
        {2, "x INFILE=A.csv", "infile=", 1024, 1, "A.csv"},
        {2, "x infiles=a.csv", "infile=", 1024, 0, "dflt"},
        {2, "x infile=a infile=b", "infile=", 1024, 1, "a"},
        {2, "x infile==a", "infile=", 1024, 1, "a"},
        {2, "x,,  outfile=\"my out.csv\"", "outfile=", 1024, 1, "my out.csv"},
        {2, "x f=(a, b) g", "f=", 1024, 1, "(a, b)"},
        {2, "x f=(a (b, c) d) g", "f=", 1024, 1, "(a (b, c) d)"},
        {2, "x f=(a, b g", "f=", 1024, 1, "(a, b g"},
        {2, "x f=a) g", "f=", 1024, 1, "a)"},
        {2, "x f=abcdef", "f=", 4, 1, "abc"},
        {2, "x f=\"a \"", "f=", 1024, 1, "a"},
        {2, "a,b c", "3", 1024, 1, "c"},
        {1, "a b,c", "1", 1024, 1, "a b"},
        {0, "a,b c", "1", 1024, 1, "a,b"},
        {2, "a b", "3", 1024, 0, "dflt"},
        {2, "a b", "0", 1024, -1, "dflt"},
        {2, "a b", "1", 1, -1, ""},
    };
    for (const Case& c : cases) {
        std::vector<char> dst(static_cast<std::size_t>(c.size) + 1, '#');
        EXPECT_EQ(cm::keyword(c.mode, dst.data(), c.size, c.line, c.key, "dflt"), c.status) << c.line;
        EXPECT_STREQ(dst.data(), c.value) << c.line;
        EXPECT_EQ(dst.back(), '#') << c.line;
    }
}

// A 1024-point version 2.0 file over unevenly spaced wavelengths.
std::string write_spectrum(const std::string& name, const std::vector<float>& y, int points = 1024)
{
    SpectralRecord2 rec{};
    rec.pointCount = static_cast<float>(points);
    for (int i = 0; i < points; ++i) {
        rec.wavelengths[i] = 400.0f + 0.3f * i + 1e-4f * i * i;
        rec.values[i] = y[static_cast<std::size_t>(i) % y.size()];
    }
    rec.firstWavelength = rec.wavelengths[0];
    rec.lastWavelength = rec.wavelengths[points - 1];
    const std::string p = scratch::path(name);
    EXPECT_EQ(WriteSpectralFile2(p.c_str(), &rec), 1);
    return p;
}

TEST(Command, SLMcorrectEndToEnd)
{
    // C: 2 on the diagonal, 0.5 at (r, r+1) only: unsymmetric, C y stays positive.
    std::vector<float> c(sl::kMatrixValues, 0.0f);
    for (std::size_t r = 0; r < sl::kPixels; ++r) {
        c[r * sl::kPixels + r] = 2.0f;
        if (r + 1 < sl::kPixels) c[r * sl::kPixels + r + 1] = 0.5f;
    }
    const std::string mat = scratch::put("c.bin", std::string(reinterpret_cast<const char*>(c.data()),
                                                            sl::kMatrixBytes));
    std::vector<float> y(sl::kPixels);
    for (std::size_t i = 0; i < y.size(); ++i) y[i] = 100.0f + static_cast<float>(i % 7);
    const std::string in = write_spectrum("in.csv", y), out = scratch::path("out.csv");
    const std::string line = "slmcorrect infile=" + in + " outfile=" + out + " matrixfile=" + mat +
                             " blueblend=450:460";
    EXPECT_EQ(cmd(line), "Using:1[slmcorrect]\nUsing:infile=[" + in + "]\nUsing:outfile=[" + out +
                             "]\nUsing:matrixfile=[" + mat + "]\nUsing:blueblend=[450:460]\n");
    SpectralRecord2 rec{};
    SpectralFileExtraInfo extra;
    ASSERT_EQ(ReadSpectralFile2(out.c_str(), &rec, &extra), 1);
    for (std::size_t i = 0; i < sl::kPixels; ++i) {
        const float cy = 2.0f * y[i] + (i + 1 < sl::kPixels ? 0.5f * y[i + 1] : 0.0f);
        const float w = rec.wavelengths[i];
        const float t = w <= 450 ? 0.0f : w >= 460 ? 1.0f : (w - 450) / 10;
        EXPECT_NEAR(rec.values[i], (1 - t) * y[i] + t * cy, 1e-3f * cy) << i;
    }
}

TEST(Command, FailureTexts)
{
    const std::string in = write_spectrum("f.csv", {1.0f}), short_in = write_spectrum("s.csv", {1.0f}, 1023);
    const std::string big = scratch::put("big.bin", std::string(sl::kMatrixBytes + 1, '\0'));
    const std::string small = scratch::put("small.bin", std::string(sl::kMatrixBytes - 1, '\0'));
    const std::string none = scratch::path("none.csv"), empty = scratch::put("empty.csv", "");
    const std::string bare = scratch::put("bare.csv", "2.0\nh\nu\n");
    const std::string v1 = scratch::put("v1.csv", "1.0 [Quarvel Optronic Spectral File]\nh\nu\n0\n1\n1\n3\n1\n1\n1\n");
    struct Case {
        std::string line, tail;
    } cases[] = {
        {"SLMcorrect matrixfile=ab infile=" + in, "matrixfile [ab] load failed: -1\n"},
        {"SLMcorrect matrixfile=" + none + " infile=" + in, "matrixfile [" + none + "] load failed: -2\n"},
        {"SLMcorrect matrixfile=" + big + " infile=" + in, "matrixfile [" + big + "] load failed: -2\n"},
        {"SLMcorrect matrixfile=" + small + " infile=" + none,
         "matrixfile [" + small + "] load failed: -2\ninfile [" + none + "] load failed: -2\n"},
        {"SLRcorrect infile=" + short_in + " rcalfile=" + v1,
         "calfile [" + v1 + "] load failed: -5\ninfile [" + short_in + "] load failed: -14\n"},
        {"SLFilter infile=" + none, "infile [" + none + "] load failed: -2\n"},
        {"SLFilter infile=" + empty, "infile [" + empty + "] load failed: -3\n"},
        {"SLFilter infile=" + bare, "infile [" + bare + "] load failed: -4\n"},
        {"SLC2 in=" + none, "Input folder/files not found: [" + none + "]\n"},
        {"slinterpolate", "Using:usecentroid=[0]\nInput folder/files not found: [slscans]\n"},
        {"DRE path=" + none, "Using:path=[" + none + "]\ni,wlnm,scan,itms,wavg,wravg\n"},
        {"NVISab nvis=" + none + " ina=" + short_in + " inb=" + v1,
         "nvis [" + none + "] load failed: -2\nnvis [" + v1 + "] load failed: -5\n"},
        {"SLFilter infile=" + in + " outfile=" + scratch::path("nodir/x.csv"),
         "outfile [" + scratch::path("nodir/x.csv") + "] save failed: -1\n"},
    };
    for (const Case& c : cases) {
        const std::string text = cmd(c.line);
        ASSERT_GE(text.size(), c.tail.size()) << c.line;
        EXPECT_EQ(text.substr(text.size() - c.tail.size()), c.tail) << c.line;
    }
    EXPECT_EQ(cmd("SLFilter infile=" + in + " ctl=1 fp=1:0.25"),
              "Using:1[SLFilter]\nUsing:infile=[" + in +
                  "]\nUsing:outfile=[slout.csv]\nUsing:ctl=[1]\nUsing:fp=[1:0.25]\n");
    std::remove("slout.csv");
}

TEST(Command, NVISabFindsTheShiftAndScale)
{
    // a is b moved 2 nm up and doubled: the search over -10..10 nm brings it back.
    auto gauss = [](float centre, float k) {
        std::vector<float> y(1024);
        for (std::size_t i = 0; i < y.size(); ++i) {
            const float w = 400.0f + 0.3f * i + 1e-4f * i * i, x = (w - centre) / 15.0f;
            y[i] = k * std::exp(-x * x);
        }
        return y;
    };
    const std::string a = write_spectrum("a.csv", gauss(552, 2)), b = write_spectrum("b.csv", gauss(550, 1));
    const std::string table = scratch::put("n.csv", "450,1\n930,1\n");
    const std::string text = cmd("NVISab nvis=" + table + " ina=" + a + " inb=" + b + " escale=450:650");
    EXPECT_NE(text.find("Using:lum=[0]\nshift=-2.000000nm\nNVISa radiance="), std::string::npos) << text;
    EXPECT_NE(text.find("\nout=nvisab.csv\n"), std::string::npos);
    EXPECT_EQ(scratch::get("nvisab.csv").substr(0, 26), "nm,DeltaSUM,DeltaSUMScaled");
    std::remove("nvisab.csv");
}

TEST(Command, DreWarnsListsAndMerges)
{
    // Line 500 nm: a 10 ms scan saturated everywhere and a 30 s scan of 15000
    // counts; the folder's name in another case.
    const std::string log = scratch::path("dre/DreLog");
    std::filesystem::create_directories(log);
    auto scan = [&](int n, const char* it, const char* no, float counts) {
        SpectralRecord2 rec{};
        rec.pointCount = 1024;
        for (int i = 0; i < 1024; ++i) rec.wavelengths[i] = 400.0f + i, rec.values[i] = counts;
        rec.firstWavelength = 400.0f, rec.lastWavelength = 1423.0f, rec.infoCount = 3;
        std::strcpy(rec.info[0], "500 [Line Wavelength nm]");
        std::snprintf(rec.info[1], 50, "%s [Integration Time ms]", it);
        std::snprintf(rec.info[2], 50, "%s [Scan Number]", no);
        const std::string p = log + "/DRE" + std::to_string(n) + ".csv";
        EXPECT_EQ(WriteSpectralFile2(p.c_str(), &rec), 1);
        return p;
    };
    const std::string first = scan(0, "10", "0", 65535.0f);
    scan(1, "30000", "3.7", 15000.0f);
    EXPECT_EQ(cmd("DRE path=" + scratch::path("dre")),
              "Using:1[DRE]\nUsing:path=[" + scratch::path("dre") + "]\nWARNING: [" + first +
                  "] least max=65535.000000 ITms=10.000000\ni,wlnm,scan,itms,wavg,wravg\n"
                  "0001,500.0,03, 30000.0,+5.000000e+02,+5.000000e+02,500.000000,1.000000\n");
    EXPECT_EQ(scratch::get(log + "/redre.txt").substr(0, 38), "nm,500.0\n400.000000,5.000000e+02\n401.0");
    EXPECT_EQ(DREcontrol(log.c_str(), 65535.0f), 1);
}

TEST(Nvis, BoxResponseByHand)
{
    // Response 1 over 500..600 nm (peak 4 normalised to 1), radiance 2 on a
    // 10 nm grid 400..1000: the trapezoid over 450..930 sees the ramps
    // 490..500 and 600..610 as half a step each: 2 * (100 + 10) = 220.
    const std::string table = scratch::put("nvis.csv", "nm,resp\n490,0\n500,4\n600,4\n610,0\n");
    std::vector<float> nm, v;
    for (int w = 400; w <= 1000; w += 10) {
        nm.push_back(static_cast<float>(w));
        v.push_back(2.0f);
    }
    float rnm[8], g[8], result[3];
    ASSERT_EQ(NVIS_GetData(table.c_str(), rnm, g, 8), 4);
    EXPECT_FLOAT_EQ(g[1], 1.0f);
    EXPECT_EQ(NVIS_GetData(table.c_str(), rnm, g, 3), -4);
    EXPECT_EQ(NVIS_GetData(scratch::path("no.csv").c_str(), rnm, g, 8), -2);
    EXPECT_EQ(NVIS_GetData("", rnm, g, 8), -1);
    EXPECT_EQ(NVIS_GetData(scratch::put("e.csv", "x\n").c_str(), rnm, g, 8), -3);
    ASSERT_EQ(QoMathNVISFromSpectralData(nm.data(), v.data(), static_cast<int>(nm.size()), table.c_str(),
                                         0.0f, result), 1);
    EXPECT_FLOAT_EQ(result[0], 220.0f);
    EXPECT_FLOAT_EQ(result[2], 220.0f);
    ASSERT_EQ(NVIS_Compute(nm.data(), v.data(), static_cast<int>(nm.size()), rnm, g, 4,
                           2.0f * result[1], result), 1);
    EXPECT_FLOAT_EQ(result[2], 440.0f);  // twice the luminance, twice the radiance
    EXPECT_EQ(NVIS_Compute(nm.data(), v.data(), 2, rnm, g, 1, 0.0f, result), -1);
}

TEST(Dre, ProcessMergesBelowSaturation)
{
    // Three scans of 3 pixels at 10, 20, 40 ms of a source of 1000 counts/s
    // in pixel 0, 2000 in pixel 1 (saturating the 40 ms scan at 80), and
    // 5000 in pixel 2 (saturating all: the 10 ms rate is kept).
    const float times[] = {10, 20, 40};
    const float scans[] = {10, 20, 50, 20, 40, 50, 40, 50, 50};
    float merged[3];
    EXPECT_EQ(DREprocess(scans, times, 3, 3, 50.0f, merged), 0);
    EXPECT_FLOAT_EQ(merged[0], 1000.0f);
    EXPECT_FLOAT_EQ(merged[1], 2000.0f);
    EXPECT_FLOAT_EQ(merged[2], 5000.0f);
    EXPECT_EQ(DREprocess(scans, times, 3, 2, 50.0f, merged), 1);
    const float bad[] = {10, 0, 40};
    EXPECT_EQ(DREprocess(scans, bad, 3, 3, 50.0f, merged), -1);
}

}  // namespace
