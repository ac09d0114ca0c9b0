// Spectral text files: writer bytes, read-back, reader status codes, bad
// input, converters and the Kavri Wendo record.
#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "files/scratch.hpp"
#include "files/spectral_file.hpp"
#include "qomath/spectral_file.h"

namespace {

namespace fs = std::filesystem;
using scratch::folder, scratch::get, scratch::path, scratch::put;
using Vec = std::vector<float>;
using Lines = std::vector<std::string>;

// The first n lines, each ended by eol.
std::string join(const Lines& lines, const std::string& eol = "\n",
                 std::size_t n = std::string::npos)
{
    std::string s;
    for (std::size_t i = 0; i < lines.size() && i < n; ++i) s += lines[i] + eol;
    return s;
}

// A record with a fence behind it, everything filled with a pattern first.
constexpr unsigned char kPattern = 0xA5;
template <class R>
struct Fenced {
    R rec;
    unsigned char fence[64];
};
template <class R>
std::unique_ptr<Fenced<R>> fenced()
{
    auto f = std::make_unique<Fenced<R>>();
    std::memset(f.get(), kPattern, sizeof *f);
    return f;
}
bool untouched(const void* p, std::size_t n)
{
    const auto* b = static_cast<const unsigned char*>(p);
    for (std::size_t i = 0; i < n; ++i)
        if (b[i] != kPattern) return false;
    return true;
}

const Lines kLines1 = {"1.0 [Quarvel Optronic Spectral File]", "Header", "Counts", "1",
                       "250 [Integration Time ms]", "400", "1", "402", "1", "2", "3"};
const Lines kLines2 = {"2.0 [Quarvel Optronic Spectral File]", "Header", "Counts", "1",
                       "250 [Integration Time ms]", "400", "3", "402",
                       "400, 1", "401, 2", "402, 3"};
// The good files with line i replaced.
std::string with(Lines l, std::size_t i, std::string v)
{
    l[i] = v;
    return join(l);
}
std::string v1_with(std::size_t i, std::string v) { return with(kLines1, i, v); }
std::string v2_with(std::size_t i, std::string v) { return with(kLines2, i, v); }

TEST(SpectralFileWrite, Version1BytesAndRecordCleanedInPlace)
{
    auto rec = std::make_unique<SpectralRecord1>();
    rec->range = {400.0f, 402.0f, 1.0f};
    std::strcpy(rec->header, "Head\r\nline");
    std::strcpy(rec->unitName, "Irradiance (\xB5W/cm\xB2)\n");
    rec->infoCount = 2;
    std::strcpy(rec->info[0], "250 [Integration Time ms]");
    std::memset(rec->info[1], 'x', sizeof rec->info[1]);  // no NUL at all
    const float values[] = {1.0f, 2.5f, -3e-5f, 99.0f};  // the last lies beyond the grid
    std::memcpy(rec->values, values, sizeof values);
    const std::string p = path("v1.sf");
    ASSERT_EQ(WriteSpectralFile(p.c_str(), rec.get()), 1);
    EXPECT_EQ(get(p), "1.0 [Quarvel Optronic Spectral File]\r\nHead  line\r\n"
                      "Irradiance (\xB5W/cm\xB2) \r\n2\r\n250 [Integration Time ms]\r\n" +
                          std::string(49, 'x') +
                          "\r\n400.00000000\r\n1.00000000\r\n402.00000000\r\n"
                          "1.00000000e+00\r\n2.50000000e+00\r\n-2.99999992e-05\r\n");
    EXPECT_STREQ(rec->header, "Head  line");
    EXPECT_EQ(rec->info[1][49], '\0');

    // A negative count is written as it stands, with no lines.
    rec->infoCount = -3;
    ASSERT_EQ(WriteSpectralFile(p.c_str(), rec.get()), 1);
    EXPECT_NE(get(p).find("\r\n-3\r\n400.00000000\r\n"), std::string::npos);
}

std::unique_ptr<SpectralRecord2> two_points()
{
    auto rec = std::make_unique<SpectralRecord2>();
    rec->firstWavelength = rec->wavelengths[0] = 400.0f;
    rec->lastWavelength = rec->wavelengths[1] = 400.5f;
    rec->pointCount = 2.0f;
    rec->values[0] = 12345.678f;
    std::strcpy(rec->header, "H\r");
    std::strcpy(rec->unitName, "Counts");
    rec->infoCount = 1;
    std::strcpy(rec->info[0], "3 [Averages]");
    return rec;
}

TEST(SpectralFileWrite, Version2BytesAndTheNegativeCount)
{
    auto rec = two_points();
    const std::string p = path("v2.sf");
    ASSERT_EQ(WriteSpectralFile2(p.c_str(), rec.get()), 1);
    EXPECT_EQ(get(p), "2.0 [Quarvel Optronic Spectral File]\nH \nCounts\n1\n3 [Averages]\n"
                      "400.00000000\n2\n400.50000000\n"
                      "400.000000, 1.23456777e+04\n400.500000, 0.00000000e+00\n");
    rec->infoCount = -1;
    rec->pointCount = 0.0f;
    ASSERT_EQ(WriteSpectralFile2(p.c_str(), rec.get()), 1);
    EXPECT_EQ(get(p), "2.0 [Quarvel Optronic Spectral File]\nH \nCounts\n"
                      "400.00000000\n0\n400.50000000\n");
    // The first wavelength stands where the count belongs: 400 lines.
    EXPECT_EQ(ReadSpectralFile2(p.c_str(), std::make_unique<SpectralRecord2>().get(), nullptr), -8);

    // The bare list, and reading it back.
    rec->pointCount = 2.0f;
    ASSERT_EQ(WriteSpectralFile3(p.c_str(), rec.get()), 1);
    EXPECT_EQ(get(p), "400.000000, 1.23456777e+04\n400.500000, 0.00000000e+00\n");
    put(p, get(p) + "401\n12\n500, 1\n");  // no comma: value 0; a short line ends the list
    auto back = fenced<SpectralRecord2>();
    ASSERT_EQ(ReadSimpleSpectralFileIn(p.c_str(), &back->rec), 1);
    const SpectralRecord2& b = back->rec;
    EXPECT_EQ((Vec{b.pointCount, b.lastWavelength, b.values[0], b.values[2]}), (Vec{3, 401, 12345.678f, 0}));
    EXPECT_TRUE(untouched(&back->rec.firstWavelength, sizeof(float)));
    std::string many;
    for (int i = 0; i < 4100; ++i) many += std::to_string(i) + ", 1\n";
    put(p, many);
    ASSERT_EQ(ReadSimpleSpectralFileIn(p.c_str(), &back->rec), 1);
    EXPECT_EQ(back->rec.pointCount, 4096.0f);
    EXPECT_TRUE(untouched(back->rec.reserved, sizeof back->rec.reserved));
    put(p, "");
    back->rec.lastWavelength = 7.0f;
    ASSERT_EQ(ReadSimpleSpectralFileIn(p.c_str(), &back->rec), 1);
    EXPECT_EQ((Vec{back->rec.pointCount, back->rec.lastWavelength}), (Vec{0, 7}));
    EXPECT_TRUE(untouched(back->fence, sizeof back->fence));
    EXPECT_EQ(ReadSimpleSpectralFileIn(path("missing").c_str(), &back->rec), -2);
    EXPECT_EQ(ReadSimpleSpectralFileIn("x", &back->rec), -1);
}

TEST(SpectralFileWrite, MeasurementLogRows)
{
    auto rec = two_points();
    float colour[42] = {};
    for (auto [i, v] : {std::pair{37, 0.3127f}, {38, 0.329f}, {40, 0.31382f}, {41, 0.331f}})
        colour[i] = v;
    const std::string p = path("log.csv");
    const std::string title = "Date,Header,Units,CIE1931_2deg_x,CIE1931y_2deg_y,CIE1931_10deg_x,"
                              "CIE1931_10deg_y,400.000000,400.500000,\n";
    const std::string row =
        "DATE,HEADER,UNIT,0.3127,0.3290,0.3138,0.33101.23456777e+04,0.00000000e+00,\n";
    ASSERT_EQ(WriteSpectralFile2X(p.c_str(), rec.get(), colour, 1), 1);
    EXPECT_EQ(get(p), title + row);
    ASSERT_EQ(WriteSpectralFile2X(p.c_str(), rec.get(), colour, 1), 1);
    EXPECT_EQ(get(p), title + row + row);
    ASSERT_EQ(WriteSpectralFile2X(p.c_str(), rec.get(), colour, 0), 1);  // overwritten: no title
    EXPECT_EQ(get(p), row);
    EXPECT_EQ(WriteSpectralFile2X(p.c_str(), rec.get(), nullptr, 1), -1);
    EXPECT_EQ(WriteSpectralFile2X(folder().c_str(), rec.get(), colour, 1), -1);
}

TEST(SpectralFileRead, RoundTripsOfBothVersions)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> any(-1e6f, 1e6f);
    auto v1 = std::make_unique<SpectralRecord1>();
    v1->range = {1.0f, 4096.0f, 1.0f};
    for (float& v : v1->values) v = any(rng);
    std::strcpy(v1->header, "round trip");
    std::strcpy(v1->unitName, "Radiance");
    v1->infoCount = 50;
    for (int i = 0; i < 50; ++i) std::snprintf(v1->info[i], 50, "%d [line]", i);
    const std::string p = path("rt.sf");
    ASSERT_EQ(WriteSpectralFile(p.c_str(), v1.get()), 1);
    auto r1 = std::make_unique<SpectralRecord1>();
    int first = 0;
    ASSERT_EQ(ReadSpectralFile(p.c_str(), r1.get(), &first), 1);
    EXPECT_EQ(first, 58);
    EXPECT_EQ(std::memcmp(&v1->range, &r1->range, sizeof v1->range), 0);
    EXPECT_EQ(std::memcmp(v1->values, r1->values, sizeof v1->values), 0);
    // Version 1.0 lines end in CR LF, and text lines keep their CR.
    EXPECT_EQ(std::tuple(std::string(r1->header), std::string(r1->unitName), r1->infoCount),
              std::tuple("round trip\r", "Radiance\r", 50));
    EXPECT_STREQ(r1->info[49], "49 [line]\r");

    auto v2 = std::make_unique<SpectralRecord2>();
    ASSERT_EQ(FileConvertSpectralVersion1toVersion2(v1.get(), v2.get()), 1);
    v2->wavelengths[17] = 17.123457f;  // not on the grid: kept as written
    ASSERT_EQ(WriteSpectralFile2(p.c_str(), v2.get()), 1);
    auto r2 = std::make_unique<SpectralRecord2>();
    SpectralFileExtraInfo extra;
    ASSERT_EQ(ReadSpectralFile2(p.c_str(), r2.get(), &extra), 1);
    EXPECT_EQ(extra.unitCode, 4);
    EXPECT_EQ(std::memcmp(v2->wavelengths, r2->wavelengths, sizeof v2->wavelengths), 0);
    EXPECT_EQ(std::memcmp(v2->values, r2->values, sizeof v2->values), 0);
    EXPECT_EQ((Vec{r2->pointCount, r2->lastWavelength}), (Vec{4096, 4096}));
    // Information slots come back blank-padded to 49 characters.
    EXPECT_EQ(std::string(r2->info[3], 50), "3 [line]" + std::string(41, ' ') + '\0');
}

// Reads bytes with each reader into fenced records; checks that nothing lands
// outside the fields a reader may write.
int read1(const std::string& bytes, SpectralRecord1* out = nullptr)
{
    const std::string p = path("in1.sf");
    put(p, bytes);
    auto f = fenced<SpectralRecord1>();
    const int s = ReadSpectralFile(p.c_str(), &f->rec, nullptr);
    EXPECT_TRUE(untouched(f->fence, sizeof f->fence));
    EXPECT_TRUE(untouched(&f->rec.header[255], 1));  // the header read stops at 255 bytes
    const int n = f->rec.infoCount;
    EXPECT_TRUE(n < 0 || n > 50 || untouched(f->rec.info[n], static_cast<std::size_t>(50 - n) * 50));
    if (out) std::memcpy(out, &f->rec, sizeof *out);
    return s;
}

int read2(const std::string& bytes, SpectralRecord2* out = nullptr,
          SpectralFileExtraInfo* extra = nullptr)
{
    const std::string p = path("in2.sf");
    put(p, bytes);
    auto f = fenced<SpectralRecord2>();
    auto x = fenced<SpectralFileExtraInfo>();
    const int s = ReadSpectralFile2(p.c_str(), &f->rec, &x->rec);
    EXPECT_TRUE(untouched(f->fence, sizeof f->fence));
    EXPECT_TRUE(untouched(x->fence, sizeof x->fence));
    EXPECT_TRUE(untouched(&f->rec.header[255], 1));
    EXPECT_TRUE(untouched(f->rec.reserved, sizeof f->rec.reserved));
    const int n = f->rec.infoCount;
    if (n >= 0 && n <= 50) {
        for (int i = 0; i < n; ++i) EXPECT_TRUE(untouched(&f->rec.info[i][49], 1));
        EXPECT_TRUE(untouched(f->rec.info[n], static_cast<std::size_t>(50 - n) * 50));
    }
    float version = 0.0f;
    const int sv = ReadSpectralFileVersion(p.c_str(), &version);
    EXPECT_TRUE(sv == 1 || sv == s) << sv;  // the first-line checks agree
    if (out) std::memcpy(out, &f->rec, sizeof *out);
    if (extra) std::memcpy(extra, &x->rec, sizeof *extra);
    return s;
}

Lines with_points(Lines l, int count)
{
    l.resize(8);
    l[6] = std::to_string(count);
    for (int i = 0; i < count; ++i) l.push_back(std::to_string(400 + i) + ", 1");
    return l;
}

TEST(SpectralFileRead, StatusCodesOfEveryStep)
{
    const std::string marker254 =
        "1.0 " + std::string(218, 'm') + "[Quarvel Optronic Spectral File]";
    ASSERT_EQ(marker254.size(), 254u);
    const auto one = v1_with, two = v2_with;
    const auto grid1 = [](const char* start, const char* step, const char* end) {
        auto l = kLines1;
        l[5] = start, l[6] = step, l[7] = end;
        return join(l);
    };
    const auto points = [](int n) { return join(with_points(kLines2, n)); };
    const std::string garbage("\x00\xff\x13\x80\n\x01[Quarvel\r\x00\xfe", 16);
    const std::string s255(255, 's'), s254(254, 's'), s5000(5000, 's');
    const struct { std::string bytes; int want; } v1[] = {
        {join(kLines1), 1}, {garbage, -4}, {one(0, marker254), 1}, {one(0, marker254 + "x"), -3},
        {one(0, "1.0 [Quarvel Optronic Spectral]"), -4}, {one(0, "0.9 [Quarvel Optronic Spectral File]"), -5},
        {one(0, "2.5 [Quarvel Optronic Spectral File]"), 1}, {one(1, s254), 1}, {one(1, s255), -6},
        {one(2, std::string(49, 'u')), 1}, {one(2, std::string(50, 'u')), -7}, {one(3, "51"), -8},
        {one(3, "2147483647"), -8}, {one(4, ""), -9}, {one(4, s255), -9}, {one(4, s254), 1},
        {one(7, "400"), -13}, {grid1("380", "0.005", "780"), -13}, {one(5, "-1"), -14},
        {grid1("0", "2", "1"), -14}, {one(7, "400.5"), -14} /* 1 point */,
        {grid1("0", "1", "4096"), -14} /* 4097 points */, {one(7, "1e30"), -14}, {one(5, "nan"), -14},
        {one(7, "401"), 1} /* 2 points */, {one(9, std::string(5000, '7')), -15}, {one(9, "text"), 1}};
    for (const auto& c : v1) EXPECT_EQ(read1(c.bytes), c.want) << &c - v1;
    // A file cut after k lines fails at the step of the first missing line.
    const int cut1[] = {-3, -6, -7, -8, -9, -10, -11, -12, -15, -15, -15};
    for (std::size_t k = 0; k < 11; ++k) EXPECT_EQ(read1(join(kLines1, "\n", k)), cut1[k]) << k;

    const struct { std::string bytes; int want; } v2[] = {
        {join(kLines2), 1}, {garbage, -4}, {join(kLines1), -5}, {two(1, s5000), -6},
        {two(2, std::string(50, 'u')), -7}, {two(3, "51"), -8}, {two(4, ""), -9}, {two(4, s5000), -9},
        {two(7, "399"), -13}, {points(0), -14}, {points(1), -14}, {points(2), 1}, {points(4096), 1},
        {points(4097), -14}, {two(6, "-3"), -14}, {two(6, "1e9"), -14} /* read as an integer: 1 */,
        {two(6, "99999999999999999999"), -14}, {two(9, std::string(255, '4')), -15},
        {two(9, "nan, text"), 1}};
    for (const auto& c : v2) EXPECT_EQ(read2(c.bytes), c.want) << &c - v2;
    for (std::size_t k = 0; k < 11; ++k) EXPECT_EQ(read2(join(kLines2, "\n", k)), cut1[k]) << k;

    // Names, folders and missing files.
    auto r1 = std::make_unique<SpectralRecord1>();
    auto r2 = std::make_unique<SpectralRecord2>();
    float version = 0.0f;
    for (const auto& [name, want] : {std::pair{std::string("a"), -1}, {std::string(513, 'n'), -1},
                                     {folder().string(), -2}, {path("missing.sf"), -2}}) {
        EXPECT_EQ(ReadSpectralFileVersion(name.c_str(), &version), want);
        EXPECT_EQ(ReadSpectralFile(name.c_str(), r1.get(), nullptr), want);
        EXPECT_EQ(ReadSpectralFile2(name.c_str(), r2.get(), nullptr), want);
    }
    EXPECT_EQ(ReadSpectralFile(path("ok").c_str(), nullptr, nullptr), -1);
}

TEST(SpectralFileRead, TextsTagsAndVersions)
{
    // Tags: case-insensitive, first hit wins, the value is the leading number.
    auto lines = kLines2;
    const Lines info = {
        "2024-05-03 15:27:32 [Timestamp]",
        "3 [AVERAGES]",
        "120.5 [Integration Time]",
        "2.5 [vexaLumicator reference]",
        "2.5 [VexaLumicator Reference]",
        "25.5 [Temperature (\xB0" "C)]",
        "10 [Power Supply Pulse Width ms]",
        "1.5 [Current (A)]",
        "230 [Voltage (V)]",
        "345 [Power (W)]",
        "4 [THD-V (%)]",
        "0.95 [Power Factor]",
        "7 [averages] [integration time ms]",
        std::string(60, 'L') + " [timestamp]",
        "free text \xE9\xB0",
    };
    lines[2] = "Irradiance (\xB5W/cm\xB2)";
    lines[3] = std::to_string(info.size());
    lines.insert(lines.begin() + 4, info.begin(), info.end());
    lines.erase(lines.begin() + 4 + static_cast<long>(info.size()));  // the old line
    auto rec = std::make_unique<SpectralRecord2>();
    SpectralFileExtraInfo x;
    ASSERT_EQ(read2(join(lines, "\r\n"), rec.get(), &x), 1);
    EXPECT_STREQ(rec->unitName, "Irradiance (\xB5W/cm\xB2)\r");
    EXPECT_EQ(x.unitCode, 1);
    EXPECT_EQ(std::string(x.timestamp), std::string(49, 'L'));  // the second timestamp, cut at 49
    EXPECT_EQ(x.averages, 7);
    EXPECT_EQ(x.vexaLumicatorReference, 1.0);  // that tag never matches
    EXPECT_EQ(x.hasVexaLumicatorReference, 0);
    const float numbers[][2] = {{x.integrationTimeMs, 120.5f}, {x.temperatureC, 25.5f},
                                {x.pulseWidthMs, 10.0f},       {x.currentA, 1.5f},
                                {x.voltageV, 230.0f},          {x.powerW, 345.0f},
                                {x.thdCurrentPercent, 0.0f},   {x.thdVoltagePercent, 4.0f},
                                {x.powerFactor, 0.95f}};
    for (const auto& n : numbers) EXPECT_EQ(n[0], n[1]) << &n - numbers;
    for (int flag : {x.hasTemperature, x.hasPulseWidth, x.hasSupplyReadings, x.hasThd,
                     x.hasPowerFactor, 1 - x.reserved})
        EXPECT_EQ(flag, 1);
    EXPECT_EQ(std::string(rec->info[14], 49), "free text \xE9\xB0\r" + std::string(36, ' '));
    EXPECT_EQ(std::string(rec->info[13], 49), std::string(49, 'L'));

    ASSERT_EQ(read2(v2_with(4, "2024-05-03 15:27:32 [Timestamp]"), rec.get(), &x), 1);
    EXPECT_STREQ(x.timestamp, "2024-05-03 15:27:32 ");

    // Version 1.0 cuts long information lines at 49 characters.
    auto r1 = std::make_unique<SpectralRecord1>();
    ASSERT_EQ(read1(v1_with(4, std::string(200, 'z')), r1.get()), 1);
    EXPECT_EQ(std::string(r1->info[0]), std::string(49, 'z'));

    // A 2.5 file: the 2.0 reader stops after the texts, the 1.0 reader takes
    // it with its own layout.
    auto later = kLines1;
    later[0] = "2.5 [Quarvel Optronic Spectral File]";
    SpectralRecord2* r2 = rec.get();
    std::memset(r2, 0, sizeof *r2);
    r2->pointCount = 42.0f;
    const std::string p = path("later.sf");
    put(p, join(later));
    ASSERT_EQ(ReadSpectralFile2(p.c_str(), r2, &x), 1);
    EXPECT_EQ(std::tuple(std::string(r2->header), r2->infoCount, x.integrationTimeMs, r2->pointCount),
              std::tuple("Header", 1, 250.0f, 42.0f));
    ASSERT_EQ(read1(join(later), r1.get()), 1);
    EXPECT_TRUE(r1->range.end == 402.0f && r1->values[2] == 3.0f);
    float version = 0.0f;
    EXPECT_EQ(ReadSpectralFileVersion(p.c_str(), &version), 1);
    EXPECT_EQ(version, 2.5f);

    // The same data from LF, CR LF and CR CR LF files; text lines keep their CR.
    for (const std::string eol : {"\n", "\r\n", "\r\r\n"}) {
        ASSERT_EQ(read1(join(kLines1, eol), r1.get()), 1);
        EXPECT_EQ(std::string(r1->header), "Header" + eol.substr(0, eol.size() - 1));
        EXPECT_EQ(r1->values[1], 2.0f);
        ASSERT_EQ(read2(join(kLines2, eol), rec.get(), &x), 1);
        EXPECT_EQ((Vec{rec->values[2], rec->wavelengths[2], x.integrationTimeMs}), (Vec{3, 402, 250}));
    }
    // A data line without a comma, and text: values 0.
    auto no_comma = kLines2;
    no_comma[8] = "400 5", no_comma[9] = "x, y";
    ASSERT_EQ(read2(join(no_comma), rec.get()), 1);
    EXPECT_TRUE(rec->values[0] == 0.0f && rec->wavelengths[1] == 0.0f);
}

TEST(SpectralFileRead, GarbageNeverWritesOutsideTheRecord)
{
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> byte(0, 255), len(0, 400);
    const Lines seeds = {join(kLines1), join(kLines2),
                                            join(with_points(kLines2, 4096))};
    for (int round = 0; round < 300; ++round) {
        std::string bytes = seeds[static_cast<std::size_t>(round) % seeds.size()];
        // Cut, then overwrite a few bytes: keeps the marker often enough to
        // reach the later steps.
        bytes.resize(std::min(bytes.size(), static_cast<std::size_t>(len(rng)) * 40));
        for (int k = round % 7; k > 0 && !bytes.empty(); --k)
            bytes[static_cast<std::size_t>(byte(rng) * 97) % bytes.size()] =
                static_cast<char>(byte(rng));
        const int s1 = read1(bytes), s2 = read2(bytes);
        EXPECT_TRUE(s1 == 1 || (s1 <= -3 && s1 >= -15)) << s1;
        EXPECT_TRUE(s2 == 1 || (s2 <= -3 && s2 >= -15)) << s2;
    }
}

TEST(SpectralFileWrite, FailedWritesLeaveTheOldFile)
{
    auto rec = std::make_unique<SpectralRecord2>();
    rec->pointCount = 4096.0f;
    rec->lastWavelength = 1.0f;
    const std::string p = path("keep.sf");
    put(p, "old contents");
    const std::string sub = path("a-folder");
    fs::create_directories(sub);
    put(sub + "/inside", "x");
    auto r1 = std::make_unique<SpectralRecord1>();
    r1->range = {1.0f, 4096.0f, 1.0f};
    auto kw_src = std::make_unique<SpectralRecord1>();
    for (const std::string& target : {sub, path("no/such/folder/f.sf")}) {
        EXPECT_EQ(WriteSpectralFile(target.c_str(), r1.get()), -1);
        EXPECT_EQ(WriteSpectralFile2(target.c_str(), rec.get()), -1);
        EXPECT_EQ(WriteSpectralFile3(target.c_str(), rec.get()), -1);
        EXPECT_EQ(WriteSpectralFileInLegacyKW2x(target.c_str(), kw_src.get()), -1);
    }
    EXPECT_EQ(get(sub + "/inside"), "x");
    EXPECT_EQ(WriteSpectralFile2("a", rec.get()), -1);
    EXPECT_EQ(WriteSpectralFile(p.c_str(), nullptr), -1);

    // A write that fails half-way (the file size limit stands in for a full
    // disk): the old file stays, and no temporary file is left behind.
    const std::string log = put("log.csv", "old row\n");
    float colour[42] = {};
    int got[4] = {};
    scratch::with_small_disk([&] {
        got[0] = WriteSpectralFile(p.c_str(), r1.get());
        got[1] = WriteSpectralFile2(p.c_str(), rec.get());
        got[2] = WriteSpectralFile3(p.c_str(), rec.get());
        got[3] = WriteSpectralFile2X(log.c_str(), rec.get(), colour, 1);
    });
    for (int s : got) EXPECT_EQ(s, -1);
    EXPECT_EQ(get(p), "old contents");
    for (const auto& e : fs::directory_iterator(folder()))
        EXPECT_NE(e.path().filename().string().rfind("keep.sf.", 0), 0u) << e.path();
    // And a write that succeeds replaces it.
    ASSERT_EQ(WriteSpectralFile3(p.c_str(), rec.get()), 1);
    EXPECT_EQ(get(p).size(), 4096u * 25u);  // "0.000000, 0.00000000e+00\n"
    fs::remove(log);
}

TEST(SpectralFileConvert, BetweenVersionsKeepingTheTextDirection)
{
    auto v1 = std::make_unique<SpectralRecord1>();
    v1->range = {380.0f, 390.0f, 5.0f};
    for (int i = 0; i < 3; ++i) v1->values[i] = static_cast<float>(i + 1);
    std::strcpy(v1->header, "one");
    std::strcpy(v1->unitName, "Counts");
    v1->infoCount = 1;
    std::strcpy(v1->info[0], "info");
    auto v2 = std::make_unique<SpectralRecord2>();
    ASSERT_EQ(FileConvertSpectralVersion1toVersion2(v1.get(), v2.get()), 1);
    EXPECT_EQ((Vec{v2->pointCount, v2->lastWavelength, v2->wavelengths[1]}), (Vec{3, 390, 385}));
    EXPECT_STREQ(v2->info[0], "info");
    // Two points are too few here (the 1.0 reader takes them); bad grids fail.
    const auto before = *v2;
    for (typ_wlinfo r : {typ_wlinfo{380, 385, 5}, typ_wlinfo{-1, 10, 1}, typ_wlinfo{0, 10, 0},
                         typ_wlinfo{0, 5000, 1}, typ_wlinfo{10, 5, 1}}) {
        v1->range = r;
        EXPECT_EQ(FileConvertSpectralVersion1toVersion2(v1.get(), v2.get()), -1);
    }
    EXPECT_EQ(std::memcmp(&before, v2.get(), sizeof before), 0);

    // 2.0 to 1.0: the texts travel from the 1.0 record into the 2.0 record,
    // also when the count is refused.
    std::strcpy(v1->header, "from one");
    v1->infoCount = 0;
    v2->firstWavelength = 400.0f;
    v2->lastWavelength = 410.0f;
    v2->values[1] = 7.0f;
    ASSERT_EQ(FileConvertSpectralVersion2toVersion1(v2.get(), v1.get()), 1);
    EXPECT_STREQ(v2->header, "from one");
    EXPECT_EQ(v2->infoCount, 0);
    EXPECT_EQ((Vec{v1->range.start, v1->range.end, v1->range.step, v1->values[1]}), (Vec{400, 410, 5, 7}));
    std::strcpy(v1->header, "again");
    for (float count : {2.0f, 4097.0f, std::nanf("")}) {
        v2->pointCount = count;
        EXPECT_EQ(FileConvertSpectralVersion2toVersion1(v2.get(), v1.get()), -1);
        EXPECT_STREQ(v2->header, "again");
    }
    v2->pointCount = 3.0f;
    v2->lastWavelength = 400.0f;
    ASSERT_EQ(FileConvertSpectralVersion2toVersion1(v2.get(), v1.get()), 1);
    EXPECT_EQ(v1->range.step, 0.0f);
    EXPECT_EQ(FileConvertSpectralVersion1toVersion2(nullptr, v2.get()), -1);

    // The placeholders do nothing, whatever they are given.
    EXPECT_EQ(ReadSpectralFile3("x.sf", v2.get()), 0);
    EXPECT_EQ(ReadBinarySpectralFile(nullptr), 0);
    EXPECT_EQ(WriteDataArrayToFile("x", 1, 2.0), 0);
}

TEST(SpectralFileKavriWendo, ConversionsAndTheLegacyFile)
{
    auto kw = std::make_unique<KavriWendoRecord>();
    std::memset(kw->header, 'h', sizeof kw->header);  // no NUL
    std::strcpy(kw->date, "2020-05-03");
    std::strcpy(kw->time, "15:27:32");
    kw->unitCode = 5;
    kw->range = {400.0f, 401.0f, 0.5f};
    kw->values[0] = 1.0f, kw->values[2] = 3.0f;
    kw->exposureTime = 250.0f, kw->averages = 4, kw->compensation = 1;
    auto rec = fenced<SpectralRecord1>();
    ASSERT_EQ(ConvertKavriWendoToSpectralFormat(kw.get(), &rec->rec), 1);
    EXPECT_TRUE(untouched(rec->fence, sizeof rec->fence));
    EXPECT_EQ(std::string(rec->rec.header), std::string(255, 'h'));
    EXPECT_STREQ(rec->rec.unitName, "Irradiance");
    EXPECT_TRUE(rec->rec.values[2] == 3.0f && rec->rec.values[3] == 0.0f);
    ASSERT_EQ(rec->rec.infoCount, 4);
    const char* info[] = {"2020-05-03 15:27:32 [Timestamp]", "250.000000 [Exposure Time]", "4 [Averages]",
                          "True [Integration Time Compensation]"};
    for (int i = 0; i < 4; ++i) EXPECT_STREQ(rec->rec.info[i], info[i]);
    for (const auto& [code, name] : {std::pair{3, "Radiant Flux"}, {1, "counts"}, {-7, "counts"}}) {
        kw->unitCode = code;
        ConvertKavriWendoToSpectralFormat(kw.get(), &rec->rec);
        EXPECT_STREQ(rec->rec.unitName, name);
    }

    // And back: every field returns.
    kw->unitCode = 5;
    std::memset(kw->header, 0, sizeof kw->header);
    std::strcpy(kw->header, "back\nagain");
    ASSERT_EQ(ConvertKavriWendoToSpectralFormat(kw.get(), &rec->rec), 1);
    auto kw2 = fenced<KavriWendoRecord>();
    ASSERT_EQ(ConvertSpectralFormatToKavriWendo(&rec->rec, &kw2->rec), 1);
    EXPECT_EQ(std::memcmp(kw.get(), &kw2->rec, sizeof *kw), 0);
    EXPECT_TRUE(untouched(kw2->fence, sizeof kw2->fence));
    std::strcpy(rec->rec.unitName, "Reflectance");
    rec->rec.infoCount = 77;  // only the 50 slots are looked at
    ASSERT_EQ(ConvertSpectralFormatToKavriWendo(&rec->rec, &kw2->rec), 1);
    EXPECT_EQ(kw2->rec.unitCode, 10);

    // The legacy file; the caller's record is not changed.
    rec->rec.infoCount = 4;
    std::strcpy(rec->rec.unitName, "Irradiance");
    const std::string p = path("legacy.kw");
    ASSERT_EQ(WriteSpectralFileInLegacyKW2x(p.c_str(), &rec->rec), 1);
    EXPECT_EQ(get(p), "Conversion from KW3.x to KW2.x File Format\nback again\n2020-05-03\n"
                      "15:27:32\n5\n250.000000\n4\nTrue\n"
                      "400.00000000\n401.00000000\n0.50000000\n3\n"
                      "400.000000, 1.00000000e+00\n400.500000, 0.00000000e+00\n"
                      "401.000000, 3.00000000e+00\n");
    EXPECT_STREQ(rec->rec.header, "back\nagain");
    EXPECT_EQ(ConvertKavriWendoToSpectralFormat(nullptr, &rec->rec), -1);
    EXPECT_EQ(ConvertSpectralFormatToKavriWendo(&rec->rec, nullptr), -1);
}

TEST(SpectralFileFormat, NumberTextMatchesPrintf)
{
    std::mt19937_64 rng(3);
    std::vector<double> values = {-0.0, 5e-324, 1.7976931348623157e308, 2.5, 9.9999999995e-5,
                                  std::nan(""), -std::nan(""), -HUGE_VAL};
    for (int i = 0; i < 20000; ++i) {  // any bit pattern, and floats
        const std::uint64_t bits = rng();
        values.push_back(std::bit_cast<double>(bits));
        const auto low = static_cast<std::uint32_t>(bits);
        values.push_back(static_cast<double>(std::bit_cast<float>(low)));
    }
    for (const double v : values) {
        qomath::files::TextOut out;
        out.fixed(v, 6);
        out.put("|");
        out.scientific(v, 8);
        char want[400];
        std::snprintf(want, sizeof want, "%f|%.8e", v, v);
        ASSERT_EQ(out.str(), want) << v;
    }
}

}  // namespace
