// CQOFile and QOReadSpectralFile: loading, the tag rules, saving byte for
// byte and safely, copies, every status code and hostile files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "files/scratch.hpp"
#include "qomath/qofile.h"
#include "qomath/spectral_file.h"

namespace {

using Lines = std::vector<std::string>;
using scratch::folder, scratch::get, scratch::put;
namespace fs = std::filesystem;

std::string join(const Lines& lines, std::size_t n = std::string::npos)
{
    std::string s;
    for (std::size_t i = 0; i < lines.size() && i < n; ++i) s += lines[i] + "\n";
    return s;
}

// A 2.0 file with points "w,v" from 380; count and infoCount override the announced numbers.
std::string file2(const Lines& info, int points, const std::string& count = "",
                  const std::string& infoCount = "")
{
    Lines l{"2.0 [Quarvel Optronic Spectral File]", "Head", "Irradiance",
            infoCount.empty() ? std::to_string(info.size()) : infoCount};
    l.insert(l.end(), info.begin(), info.end());
    l.insert(l.end(), {"380", count.empty() ? std::to_string(points) : count, "999"});
    for (int i = 0; i < points; ++i) l.push_back(std::to_string(380 + i) + "," + std::to_string(i));
    return join(l);
}

int load(const std::string& bytes)
{
    CQOFile f;
    return f.Load(put("t.txt", bytes).c_str());
}

const Lines kFull{"2.0 [Quarvel Optronic Spectral File]\r",
                  "Lamp A\r",
                  "Irradiance",
                  "4",
                  "2021-03-04 10:11:12 [Timestamp]",
                  "250.5 [Integration Time ms]",
                  "12 [AVERAGES]",
                  "note",
                  "380.0",
                  "3",
                  "382.0",
                  "380.000000, 1.50000000e-01",
                  "381,2.5e-3\r",
                  "382,-7"};

// What a load of kFull gives (and its copies keep).
void expect_full(CQOFile& f)
{
    EXPECT_STREQ(f.GetHeader(), "Lamp A\r");  // text lines keep their CR
    EXPECT_STREQ(f.GetUnitName(), "Irradiance");
    EXPECT_STREQ(f.GetTimeStamp(), "2021-03-04 10:11:12");
    EXPECT_EQ(f.GetIntegrationTime_ms(), 250.5);
    EXPECT_EQ(f.GetAverages(), 12u);
    EXPECT_EQ(f.GetAdditionalInfoCount(), 4u);
    EXPECT_STREQ(f.GetAdditionLineInfo(3), "note");
    EXPECT_EQ(f.GetAdditionLineInfo(4), nullptr);
    EXPECT_EQ(f.GetDataLength(), 3u);
    EXPECT_EQ(f.GetWavelength(), (std::vector<double>{380, 381, 382}));
    EXPECT_EQ(f.GetSpectral(), (std::vector<double>{0.15, 2.5e-3, -7}));
}

TEST(QOFile, LoadsAVersion2FileWithAllTagsAndCopiesIt)
{
    CQOFile f;
    ASSERT_EQ(f.Load(put("full.txt", join(kFull)).c_str()), 1);
    expect_full(f);
    EXPECT_EQ(f.GetWavelengthLength(), 3u);

    // Copies are memberwise; a later load starts from scratch and leaves them alone.
    CQOFile b(f), c;
    c = f;
    CQOFile& same = c;
    c = same;  // self-assignment keeps the contents
    ASSERT_EQ(f.Load(put("plain.txt", file2({}, 2)).c_str()), 1);
    EXPECT_STREQ(f.GetTimeStamp(), "");
    EXPECT_EQ(f.GetAverages(), 0u);
    expect_full(b);
    expect_full(c);
    EXPECT_NE(b.GetHeader(), c.GetHeader());
    f.Init();  // empties everything, and so does assigning the empty object
    EXPECT_STREQ(f.GetHeader(), "");
    EXPECT_EQ(f.GetDataLength() + f.GetWavelengthLength() + f.GetAdditionalInfoCount(), 0u);
    c = f;
    EXPECT_EQ(c.GetWavelengthLength() + c.GetAdditionalInfoCount(), 0u);
}

TEST(QOFile, TagsAreCaseSensitiveAndCutBeforeTheBlank)
{
    const struct { std::string info; unsigned averages; std::string stamp; double ms; } cases[] = {
        {"3 [AVERAGES]", 3, "", 0},
        {"3 [Averages]", 0, "", 0},   // the Kavri Wendo spelling is not taken
        {"3[AVERAGES]", 0, "", 0},    // p - 1 characters: nothing left
        {"[Timestamp] 12:00", 0, "[Timestamp] 12:00", 0},  // tag at 0: whole line
        {"x  [Timestamp]", 0, "x ", 0},
        {"[timestamp] x", 0, "", 0},
        {"7 [Integration Time MS]", 0, "", 0},
        {"7 [Integration Time ms] [AVERAGES]", 7, "", 7},
    };
    for (const auto& c : cases) {
        CQOFile f;
        ASSERT_EQ(f.Load(put("tag.txt", file2({c.info}, 2)).c_str()), 1) << c.info;
        EXPECT_EQ(std::tuple(f.GetAverages(), std::string(f.GetTimeStamp()), f.GetIntegrationTime_ms()),
                  std::tuple(c.averages, c.stamp, c.ms)) << c.info;
    }
}

TEST(QOFile, EveryLoadStatusCode)
{
    // The full file cut after k lines fails at the step of the missing line.
    const int cut[] = {-3, -6, -7, -8, -9, -9, -9, -9, -10, -11, -12, -14, -14, -14};
    for (std::size_t k = 0; k < kFull.size(); ++k)
        EXPECT_EQ(load(join(kFull, k)), cut[k]) << k << " lines";
    EXPECT_EQ(load(join(kFull)), 1);

    CQOFile f;
    EXPECT_EQ(f.Load(nullptr), -1);
    EXPECT_EQ(f.Load("ab"), -1);
    EXPECT_EQ(f.Load((folder() / "missing.txt").c_str()), -2);
    EXPECT_EQ(f.Load(folder().c_str()), -2);
    EXPECT_EQ(load("2.0 Quarvel Optronic Spectral File\n"), -4);
    EXPECT_EQ(load("1.0 [Quarvel Optronic Spectral File]\nH\nU\n0\n380\n2\n381\n1,1\n2,2\n"), -5);
    EXPECT_EQ(load("1.99 [Quarvel Optronic Spectral File]\n"), -5);
    // A 2.5 file is read in full with the 2.0 layout.
    std::string v25 = file2({"a"}, 3);
    v25.replace(0, 3, "2.5");
    ASSERT_EQ(f.Load(put("v25.txt", v25).c_str()), 1);
    EXPECT_EQ(f.GetWavelength(), (std::vector<double>{380, 381, 382}));
    EXPECT_STREQ(f.GetAdditionLineInfo(0), "a");

    // Point counts: below 2, negative or beyond the file's size give -13
    // (nothing allocated for them); the announced count stays readable.
    for (const char* n : {"0", "1", "-5", "abc", "4294967295", "2147483647"})
        EXPECT_EQ(f.Load(put("n.txt", file2({}, 2, n)).c_str()), -13) << n;
    EXPECT_TRUE(f.GetDataLength() == 2147483647u && f.GetWavelengthLength() == 0u);
    EXPECT_EQ(load(file2({}, 3, "60")), -14);  // plausible count, truncated data

    // Information counts beyond the file's size (and negative ones) give -8.
    for (const char* n : {"2147483647", "-1"})
        EXPECT_EQ(f.Load(put("n.txt", file2({}, 2, "", n)).c_str()), -8) << n;
    EXPECT_TRUE(f.GetAdditionalInfoCount() == 4294967295u && f.GetAdditionLineInfo(0) == nullptr);
}

TEST(QOFile, HostileLinesAndNumbers)
{
    const std::string h254(254, 'h');
    const std::string first = "2.0 [Quarvel Optronic Spectral File]\n";
    CQOFile f;
    ASSERT_EQ(f.Load(put("h.txt", first + h254 + "\nU\n0\n1\n2\n2\n1,1\n2,2\n").c_str()), 1);
    EXPECT_EQ(f.GetHeader(), h254);
    EXPECT_EQ(load(first + h254 + "h\nU\n0\n1\n2\n2\n1,1\n2,2\n"), -6);
    EXPECT_EQ(load(first + "H\n" + std::string(5000, 'u') + "\n0\n"), -7);
    EXPECT_EQ(load(file2({std::string(255, 'i')}, 2)), -9);
    EXPECT_EQ(load(file2({}, 2) + std::string(5000, '9')), 1);  // after the last point
    EXPECT_EQ(load(file2({}, 2, "3") + std::string(5000, '9') + "\n"), -14);
    std::string garbage(4096, '\0');
    for (std::size_t i = 0; i < garbage.size(); ++i) garbage[i] = static_cast<char>(i * 131 + 7);
    EXPECT_LT(load(garbage), 0);
    EXPECT_LT(load(file2({}, 2, "20") + garbage), 2);  // whatever it holds, no crash

    // Numbers: scanned with "%lf,%lf"; what cannot be read stays 0.
    const std::string numbers = "nan,inf\nabc,def\n380 0.5\n381 ,0.5\n382, 7\n,9\n";
    ASSERT_EQ(f.Load(put("num.txt", first + "H\nU\n0\nx\n6\ny\n" + numbers).c_str()), 1);
    const std::vector<double> w = f.GetWavelength(), s = f.GetSpectral();
    EXPECT_TRUE(std::isnan(w[0]) && std::isinf(s[0]));
    const std::vector<double> wr(w.begin() + 1, w.end()), sr(s.begin() + 1, s.end());
    EXPECT_EQ(wr, (std::vector<double>{0, 380, 381, 382, 0}));
    EXPECT_EQ(sr, (std::vector<double>{0, 0, 0, 7, 0}));

    // 51 information lines and 4097 points load; 4096 points are no limit either.
    Lines info51(51, "i");
    ASSERT_EQ(f.Load(put("big.txt", file2(info51, 4097)).c_str()), 1);
    EXPECT_TRUE(f.GetAdditionalInfoCount() == 51u && f.GetWavelengthLength() == 4097u);
}

TEST(QOFile, SaveWritesStreamFormattedLinesAndRoundTrips)
{
    CQOFile f;
    const std::string p = (folder() / "saved.txt").string();
    const std::vector<double> wl{380, 380.5, 0.1234567}, values{1e-7, 123456789, 0.5};
    ASSERT_EQ(f.Save(p.c_str(), "Hdr", "Counts", wl, values, {"a [Timestamp]"}), 1);
    EXPECT_EQ(get(p),
              "2.0 [Quarvel Optronic Spectral File]\nHdr\nCounts\n1\na [Timestamp]\n380\n3\n"
              "0.123457\n380,1e-07\n380.5,1.23457e+08\n0.123457,0.5\n");

    // The numbers are what a default-formatted stream prints.
    const std::vector<double> v{0, -0.0, 1, -2.5, 1e-5, 123456.7, 1e6, 1234567, 999999.5, 3.14159265,
                                1e300, -1e-300, INFINITY, -INFINITY};
    ASSERT_EQ(f.Save(p.c_str(), nullptr, nullptr, v, v, {}), 1);
    std::ostringstream want;
    want << "2.0 [Quarvel Optronic Spectral File]\n\n\n0\n" << v.front() << "\n" << v.size() << "\n"
         << v.back() << "\n";
    for (double x : v) want << x << "," << x << "\n";
    EXPECT_EQ(get(p), want.str());

    // Save then Load gives the same texts and the numbers to 6 digits.
    const Lines tags{"2020-01-01 [Timestamp]", "9 [AVERAGES]", "40 [Integration Time ms]"};
    ASSERT_EQ(f.Save(p.c_str(), "H", "Radiance", {400, 500.25, 600}, {1.5, 2.123456, 3}, tags), 1);
    CQOFile g;
    ASSERT_EQ(g.Load(p.c_str()), 1);
    EXPECT_EQ(std::tuple(std::string(g.GetHeader()), std::string(g.GetUnitName()), std::string(g.GetTimeStamp()),
                         g.GetAverages(), g.GetIntegrationTime_ms()),
              std::tuple("H", "Radiance", "2020-01-01", 9u, 40.0));
    EXPECT_EQ(g.GetWavelength(), (std::vector<double>{400, 500.25, 600}));
    EXPECT_EQ(g.GetSpectral(), (std::vector<double>{1.5, 2.12346, 3}));
}

TEST(QOFile, FailingSaveLeavesTheOldFileIntact)
{
    CQOFile f;
    const std::string old = "old contents\n";
    const std::string p = put("keep.txt", old);
    EXPECT_EQ(f.Save(p.c_str(), "H", "U", {}, {}, {}), -2);
    EXPECT_EQ(f.Save(p.c_str(), "H", "U", {1, 2}, {1}, {}), -3);
    EXPECT_EQ(f.Save(nullptr, "H", "U", {1}, {1}, {}), -1);
    EXPECT_EQ(f.Save((folder() / "no" / "x.txt").c_str(), "H", "U", {1}, {1}, {}), -1);

    // A write that fails after the file was created: the file size limit.
    const std::vector<double> many(5000, 1.0 / 3);
    int status = 0;
    scratch::with_small_disk([&] { status = f.Save(p.c_str(), "H", "U", many, many, {}); });
    EXPECT_EQ(status, -1);
    EXPECT_EQ(get(p), old);
    EXPECT_EQ(f.Save(folder().c_str(), "H", "U", {1}, {1}, {}), -1);  // a folder stays a folder
    EXPECT_TRUE(fs::is_directory(folder()));
    for (const auto& e : fs::directory_iterator(folder()))  // no temporary file left behind
        EXPECT_EQ(e.path().string().find(".tmp"), std::string::npos) << e.path();
}

TEST(QOFile, QOReadSpectralFileFillsTheRecordWithinItsFields)
{
    auto rec = std::make_unique<SpectralRecord2>();
    SpectralFileExtraInfo extra{};
    extra.hasThd = 77;
    const std::string full = put("full.txt", join(kFull));
    ASSERT_EQ(QOReadSpectralFile(full.c_str(), rec.get(), &extra), 1);
    EXPECT_EQ((std::vector<float>{rec->pointCount, rec->lastWavelength, rec->values[2]}),
              (std::vector<float>{3, 382, -7}));
    EXPECT_STREQ(rec->info[3], "note");
    EXPECT_STREQ(extra.timestamp, "2021-03-04 10:11:12");
    // Fields Load does not know (hasThd) stay as they were.
    EXPECT_EQ(std::tuple(extra.unitCode, extra.averages, extra.hasThd), std::tuple(1, 12, 77));

    // Long texts are cut to their fields; 50 lines and 4096 points fit.
    Lines info50(49, "x");
    info50.push_back(std::string(200, 'i') + " [Timestamp]");
    std::string text = file2(info50, 4096);
    text.replace(text.find("Irradiance"), 10, std::string(100, 'u'));
    ASSERT_EQ(QOReadSpectralFile(put("cut.txt", text).c_str(), rec.get(), &extra), 1);
    EXPECT_EQ((std::vector<std::size_t>{std::strlen(rec->info[49]), std::strlen(rec->unitName), std::strlen(extra.timestamp)}),
              (std::vector<std::size_t>{49, 49, 63}));
    EXPECT_TRUE(rec->values[4095] == 4095.0f && rec->lastWavelength == 4475.0f);

    // More than the record holds is refused before anything is written.
    std::memset(rec.get(), 0x5a, sizeof *rec);
    EXPECT_EQ(QOReadSpectralFile(put("p.txt", file2({}, 4097)).c_str(), rec.get(), nullptr), -14);
    EXPECT_EQ(QOReadSpectralFile(put("i.txt", file2(Lines(51, "i"), 2)).c_str(), rec.get(), nullptr), -8);
    EXPECT_EQ(QOReadSpectralFile(put("t.txt", join(kFull, 12)).c_str(), rec.get(), nullptr), -14);
    EXPECT_EQ(QOReadSpectralFile("ab", rec.get(), nullptr), -1);
    EXPECT_EQ(rec->infoCount, 0x5a5a5a5a);
    EXPECT_EQ(QOReadSpectralFile(full.c_str(), nullptr, &extra), -1);
}

TEST(QOFile, QOReadSpectralFileAgreesWithReadSpectralFile2)
{
    CQOFile saver;
    std::vector<double> wl, v;
    for (int i = 0; i < 301; ++i) wl.push_back(380 + 1.5 * i), v.push_back(std::sin(i) * 1e-3);
    const std::string saved = (folder() / "cmp.txt").string();
    ASSERT_EQ(saver.Save(saved.c_str(), "H", "Radiant Flux", wl, v, {"12 [AVERAGES]"}), 1);
    // Same record from both readers, except that only ReadSpectralFile2 takes "[Averages]".
    Lines kwLines = kFull;
    kwLines[6] = "12 [Averages]";
    const std::string kw = put("kw.txt", join(kwLines));
    for (const std::string& path : {put("full.txt", join(kFull)), saved, kw}) {
        auto a = std::make_unique<SpectralRecord2>(), b = std::make_unique<SpectralRecord2>();
        SpectralFileExtraInfo ea{}, eb{};
        ASSERT_EQ(QOReadSpectralFile(path.c_str(), a.get(), &ea), 1) << path;
        ASSERT_EQ(ReadSpectralFile2(path.c_str(), b.get(), &eb), 1) << path;
        std::memset(a->info, 0, sizeof a->info);  // ReadSpectralFile2 pads them with blanks
        std::memset(b->info, 0, sizeof b->info);
        EXPECT_EQ(0, std::memcmp(a.get(), b.get(), sizeof *a)) << path;
        EXPECT_EQ(ea.averages, path == kw ? 0 : 12);
        EXPECT_EQ(eb.averages, 12);
        EXPECT_EQ(ea.unitCode, eb.unitCode);
        EXPECT_EQ(ea.integrationTimeMs, eb.integrationTimeMs);
    }
}

}  // namespace
