// qomath analyze, convert and plot, run as a user would run them.
#include <gtest/gtest.h>

#include "cli/run_qomath.hpp"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "qomath/cie_tables.h"
#include "qomath/colour_quality.h"
#include "qomath/spectral_file.h"
#include "qomath/summary.h"

namespace {

namespace fs = std::filesystem;

using qomath::test::Outcome;
using qomath::test::qomath;

const std::string kExamples = std::string(QOMATH_DATA_DIR) + "/../examples";

// A scratch folder removed at the end of the test.
struct Scratch {
    fs::path dir;
    explicit Scratch(const char* tag)
    {
        dir = fs::temp_directory_path() /
              ("qomath-cli-" + std::string(tag) + "-" + std::to_string(getpid()));
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    ~Scratch()
    {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
    std::string operator/(const std::string& name) const { return (dir / name).string(); }
};

// ---- CSV --------------------------------------------------------------------

std::vector<std::string> csv_split(const std::string& line)
{
    std::vector<std::string> f(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted) {
            if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                f.back().push_back('"');
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                f.back().push_back(c);
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            f.emplace_back();
        } else {
            f.back().push_back(c);
        }
    }
    return f;
}

struct Csv {
    std::vector<std::string> header;
    std::vector<std::map<std::string, std::string>> rows;
};

Csv parse_csv(const std::string& text)
{
    Csv c;
    std::istringstream in(text);
    std::string line;
    if (!std::getline(in, line)) return c;
    c.header = csv_split(line);
    while (std::getline(in, line)) {
        const std::vector<std::string> f = csv_split(line);
        EXPECT_EQ(f.size(), c.header.size()) << line;
        std::map<std::string, std::string> row;
        for (std::size_t i = 0; i < f.size() && i < c.header.size(); ++i) row[c.header[i]] = f[i];
        c.rows.push_back(row);
    }
    return c;
}

const std::map<std::string, std::string>* row_of(const Csv& c, const std::string& name)
{
    for (const auto& r : c.rows)
        if (r.at("file").size() >= name.size() &&
            r.at("file").compare(r.at("file").size() - name.size(), name.size(), name) == 0)
            return &r;
    return nullptr;
}

// ---- a small JSON reader: validates the text and keeps the top-level
// array's objects' scalar members as text (strings unescaped) -----------------

struct Json {
    const std::string& s;
    std::size_t i = 0;
    bool ok = true;
    std::vector<std::map<std::string, std::string>> objects;

    explicit Json(const std::string& text) : s(text) {}
    bool eat(char c)
    {
        while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
        return i < s.size() && s[i] == c ? (++i, true) : false;
    }
    std::string string()
    {
        std::string out;
        ok = ok && eat('"');
        while (ok && i < s.size() && s[i] != '"') {
            const char c = s[i++];
            if (static_cast<unsigned char>(c) < 0x20) ok = false;
            if (c != '\\' || i >= s.size()) {
                out.push_back(c);
                continue;
            }
            const char e = s[i++];
            ok = ok && std::string("\"\\/bfnrtu").find(e) != std::string::npos;
            if (e == 'u') i += 4;
            out.push_back(e == 'u' ? '?' : e == 'n' ? '\n' : e == 't' ? '\t' : e);
        }
        ok = ok && i++ < s.size();
        return out;
    }
    // A value; the scalar's text ("" for containers).
    std::string value(int depth)
    {
        if (eat('[') || eat('{')) {
            const bool object = s[i - 1] == '{';
            std::map<std::string, std::string> members;
            if (!eat(object ? '}' : ']')) {
                do {
                    if (!object) {
                        value(depth + 1);
                        continue;
                    }
                    const std::string key = string();
                    ok = ok && eat(':');
                    members[key] = value(depth + 1);
                } while (ok && eat(','));
                ok = ok && eat(object ? '}' : ']');
            }
            if (object && depth == 1) objects.push_back(members);
            return "";
        }
        if (i < s.size() && s[i] == '"') return string();
        for (const char* word : {"null", "true", "false"})
            if (s.compare(i, std::strlen(word), word) == 0) return i += std::strlen(word), word;
        char* end = nullptr;
        std::strtod(s.c_str() + i, &end);
        const std::size_t start = i;
        i = static_cast<std::size_t>(end - s.c_str());
        ok = ok && i > start;
        return s.substr(start, i - start);
    }
    bool parse()
    {
        value(0);
        eat(' ');
        return ok && i == s.size();
    }
};

// ---- analyze ----------------------------------------------------------------

TEST(Analyze, ExamplesInCsvJsonAndText)
{
    const Outcome r = qomath("analyze --csv " + kExamples, false);
    ASSERT_EQ(r.status, 0) << r.out;
    const Csv c = parse_csv(r.out);
    ASSERT_EQ(c.rows.size(), 4u);  // names sorted, rows in that order
    EXPECT_NE(c.rows[0].at("file").find("illuminant_A_v1.txt"), std::string::npos);
    EXPECT_NE(c.rows[3].at("file").find("white_led_v2.txt"), std::string::npos);
    const std::map<std::string, std::string>& a = c.rows[0];
    const std::map<std::string, std::string>& red = c.rows[2];
    EXPECT_NEAR(std::stod(a.at("cct_k")), 2856.0, 3.0);  // CIE illuminant A
    EXPECT_NEAR(std::stod(a.at("x")), 0.4476, 2e-3);
    EXPECT_NEAR(std::stod(a.at("y")), 0.4074, 2e-3);
    EXPECT_NEAR(std::stod(c.rows[1].at("x")), 0.3127, 2e-3);  // D65
    const std::pair<std::string, std::string> expect[] = {
        {a.at("unit"), "Irradiance"}, {a.at("points"), "471"}, {a.at("photometric_unit"), "lx"},
        {red.at("unit"), "Transmittance"}, {red.at("illuminant"), "D65"},
        {red.at("ra"), ""}, {red.at("photometric_value"), ""}};  // no CRI or lux for a filter
    for (const auto& [got, want] : expect) EXPECT_EQ(got, want);
    EXPECT_FALSE(a.at("ra").empty());
    // D65: every alpha-opic EDI equals the illuminance within 0.5 %; Rf = 100.
    const std::map<std::string, std::string>& d65 = c.rows[1];
    const double lux = std::stod(d65.at("photometric_value"));
    for (const char* key : {"s_cone_edi_lx", "m_cone_edi_lx", "l_cone_edi_lx", "rhodopic_edi_lx",
                            "melanopic_edi_lx"})
        EXPECT_NEAR(std::stod(d65.at(key)), lux, 5e-3 * lux) << key;
    EXPECT_NEAR(std::stod(d65.at("rf")), 100.0, 0.01);
    EXPECT_TRUE(red.at("rf").empty() && red.at("melanopic_der").empty());

    // JSON carries the same keys and values (null where CSV is empty).
    const Outcome js = qomath("analyze --json " + kExamples, false);
    Json j(js.out);
    ASSERT_TRUE(j.parse()) << "at " << j.i << ": " << js.out.substr(j.i > 40 ? j.i - 40 : 0, 80);
    ASSERT_EQ(j.objects.size(), 4u);
    for (std::size_t k = 0; k < 4; ++k)
        for (const std::string& key : c.header) {
            const std::string& v = c.rows[k].at(key);
            EXPECT_EQ(j.objects[k][key], v.empty() ? "null" : v) << k << " " << key;
        }

    // --observer 10 puts the 10 degree chromaticity first.
    const Csv ten = parse_csv(qomath("analyze --csv --observer 10 " + kExamples, false).out);
    ASSERT_EQ(ten.rows.size(), 4u);
    EXPECT_EQ(ten.rows[0].at("x"), ten.rows[0].at("cie1964_x"));
    EXPECT_EQ(ten.rows[0].at("observer"), "10");
    EXPECT_NE(ten.rows[0].at("x"), a.at("x"));
    // The text report names the file and states CCT, Ra and illuminance.
    const Outcome t = qomath("analyze " + kExamples + "/illuminant_A_v1.txt", false);
    ASSERT_EQ(t.status, 0);
    for (const char* word : {"illuminant_A_v1.txt", "CCT", "Ra", "illuminance"})
        EXPECT_NE(t.out.find(word), std::string::npos) << word;
}

TEST(Analyze, TextsBecomeUtf8AndEscaped)
{
    Scratch tmp("utf8");
    const std::string path = tmp / "odd.txt";
    {
        std::ofstream f(path, std::ios::binary);
        f << "2.0 [Quarvel Optronic Spectral File]\n"
          << "Lamp \"7\" at 25 \xB0" "C, \\ path\n"
          << "Irradiance\n0\n400\n5\n800\n";
        for (int i = 0; i < 5; ++i) f << 400 + 100 * i << ".000000, 1.0e+00\n";
    }
    const Outcome js = qomath("analyze --json " + path, false);
    ASSERT_EQ(js.status, 0) << js.out;
    Json j(js.out);
    ASSERT_TRUE(j.parse()) << js.out;
    ASSERT_EQ(j.objects.size(), 1u);
    EXPECT_EQ(j.objects[0]["header"], "Lamp \"7\" at 25 \xC2\xB0" "C, \\ path");
    const Csv c = parse_csv(qomath("analyze --csv " + path, false).out);
    ASSERT_EQ(c.rows.size(), 1u);
    EXPECT_EQ(c.rows[0].at("header"), "Lamp \"7\" at 25 \xC2\xB0" "C, \\ path");
}

TEST(Analyze, BadFilesAreNamedOthersStillReported)
{
    Scratch tmp("bad");
    const std::string bad = tmp / "bad.txt";
    std::ofstream(bad) << "hello\nworld\n";
    const Outcome r =
        qomath("analyze --csv " + bad + " " + kExamples + "/illuminant_A_v1.txt " + tmp / "none.txt");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("bad.txt: not a spectral file; as two-column text it needs --unit"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("none.txt: cannot read (No such file"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("illuminant_A_v1.txt,1,"), std::string::npos) << r.out;
    // Standard output holds only the header and the good row.
    const Outcome o =
        qomath("analyze --csv " + bad + " " + kExamples + "/illuminant_A_v1.txt", false);
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(parse_csv(o.out).rows.size(), 1u);
    const Outcome js = qomath("analyze --json " + bad, false);
    EXPECT_EQ(js.status, 1);
    Json j(js.out);
    EXPECT_TRUE(j.parse()) << js.out;
    EXPECT_TRUE(j.objects.empty());
}

// ---- numbers a metrologist signs ---------------------------------------------

// A version 2.0 file of `unit` with the points (wl[i], v[i]).
std::string v2_file(const std::string& path, const char* unit, const std::vector<double>& wl,
                    const std::vector<double>& v)
{
    std::ofstream f(path, std::ios::binary);
    f << "2.0 [Quarvel Optronic Spectral File]\ntest\n" << unit << "\n0\n"
      << wl.front() << "\n" << wl.size() << "\n" << wl.back() << "\n";
    f.precision(9);
    for (std::size_t i = 0; i < wl.size(); ++i) f << wl[i] << "," << v[i] << "\n";
    return path;
}

double field(const Csv& c, const char* key)
{
    const std::string& s = c.rows.at(0).at(key);
    return s.empty() ? std::nan("") : std::stod(s);
}

TEST(Analyze, NumbersOnTheDataSampling)
{
    Scratch tmp("numbers");
    // A 532 nm laser line (sigma 0.25 nm) at 0.1 nm: illuminance = 683 Y / 100
    // exactly as printed, and Y against y-bar integrated here, linearly
    // between the whole-nanometre table values.
    std::vector<double> wl, v, ybar_wl, ybar_v;
    float table[QOMATH_CIE_MAX_POINTS];
    typ_wlinfo range{};
    ASSERT_EQ(GetCIEData(1, table, &range), 1);
    double independent = 0.0;
    for (int i = 0; i <= 400; ++i) {
        wl.push_back(512.0 + 0.1 * i);
        v.push_back(1000.0 * std::exp(-0.5 * std::pow((wl.back() - 532.0) / 0.25, 2)));
        const double pos = wl.back() - 360.0;
        const int k = static_cast<int>(pos);
        const double yb = table[k] + (pos - k) * (table[k + 1] - table[k]);
        if (i > 0) independent += 0.05 * (v[i] * yb + v[i - 1] * ybar_v.back());
        ybar_v.push_back(yb);
    }
    const std::string laser = v2_file(tmp / "laser.txt", "Irradiance", wl, v);
    const Csv c = parse_csv(qomath("analyze --csv " + laser, false).out);
    ASSERT_EQ(c.rows.size(), 1u);
    const double Y = field(c, "tristimulus_y");
    EXPECT_NEAR(Y, independent, 2e-3 * independent);
    EXPECT_NEAR(field(c, "photometric_value"), static_cast<float>(static_cast<float>(Y) * 683.0f) / 100.0,
                1e-6 * Y * 6.83);
    EXPECT_EQ(c.rows[0].at("calculation"), "data");
    // The compatible path keeps its 1 nm common grid, and says so.
    const Csv compat = parse_csv(qomath("analyze --csv --compat " + laser, false).out);
    EXPECT_EQ(compat.rows.at(0).at("calculation"), "compat");
    EXPECT_GT(std::fabs(field(compat, "photometric_value") / field(c, "photometric_value") - 1), 0.05);

    // A Gaussian of sigma 10 nm at 0.5 nm: FWHM = 2 sqrt(2 ln 2) 10 = 23.548 nm;
    // centroid at the centre.
    wl.clear(), v.clear();
    for (int i = 0; i <= 400; ++i) {
        wl.push_back(450.0 + 0.5 * i);
        v.push_back(std::exp(-0.5 * std::pow((wl.back() - 550.0) / 10.0, 2)));
    }
    const Csv g = parse_csv(qomath("analyze --csv " + v2_file(tmp / "g.txt", "Counts", wl, v), false).out);
    EXPECT_NEAR(field(g, "fwhm_nm"), 23.548, 0.05);
    EXPECT_NEAR(field(g, "centroid_nm"), 550.0, 0.01);
    EXPECT_TRUE(g.rows.at(0).at("photometric_value").empty());  // counts have none

    // The same line on an uneven 1024-pixel grid, densest at the blue end:
    // the integral centroid stays at the centre, a plain sum would not.
    wl.clear(), v.clear();
    for (int p = 0; p < 1024; ++p) {
        wl.push_back(350.0 + 0.25 * p + 0.00025 * p * p);
        v.push_back(std::exp(-0.5 * std::pow((wl.back() - 550.0) / 30.0, 2)));
    }
    const std::string uneven = v2_file(tmp / "uneven.txt", "Counts", wl, v);
    EXPECT_NEAR(field(parse_csv(qomath("analyze --csv " + uneven, false).out), "centroid_nm"), 550.0, 0.05);
    EXPECT_LT(field(parse_csv(qomath("analyze --csv --compat " + uneven, false).out), "centroid_nm"), 549.0);

    // A neutral 25 % filter: Y = 25, L* = 116 * 0.25^(1/3) - 16 = 57.08, a* = b* = 0,
    // and the chromaticity of D65.
    wl.clear(), v.clear();
    for (int i = 0; i <= 80; ++i) wl.push_back(380.0 + 5 * i), v.push_back(0.25);
    for (const char* unit : {"Transmittance", "Reflectance"}) {
        const Csv f = parse_csv(qomath("analyze --csv " + v2_file(tmp / "nd.txt", unit, wl, v), false).out);
        EXPECT_NEAR(field(f, "tristimulus_y"), 25.0, 0.005) << unit;
        EXPECT_NEAR(field(f, "l_star"), 57.08, 0.005) << unit;
        EXPECT_NEAR(field(f, "a_star"), 0.0, 0.01) << unit;
        EXPECT_NEAR(field(f, "x"), 0.3127, 5e-4) << unit;
        EXPECT_TRUE(f.rows.at(0).at("ra").empty()) << unit;
    }
}

TEST(Analyze, CompatReproducesTheSummaryFunctions)
{
    // The program's --compat row against ColorimetricCalc and RadiometryCalc
    // called here on the same file.
    const std::string path = kExamples + "/white_led_v2.txt";
    auto rec = std::make_unique<SpectralRecord2>();
    ASSERT_EQ(ReadSpectralFile2(path.c_str(), rec.get(), nullptr), 1);
    const int n = static_cast<int>(rec->pointCount);
    float cc[QOMATH_CC_COUNT], rc[QOMATH_RC_COUNT];
    ASSERT_EQ(ColorimetricCalc(rec->wavelengths, rec->values, n, 1, 0, 1, cc), 1);
    ASSERT_EQ(RadiometryCalc(rec->wavelengths, rec->values, n, rec->wavelengths[0],
                             rec->wavelengths[n - 1], rc), 1);
    const Csv c = parse_csv(qomath("analyze --csv --compat " + path, false).out);
    ASSERT_EQ(c.rows.size(), 1u);
    const std::pair<const char*, float> same[] = {
        {"tristimulus_y", cc[QOMATH_CC_Y]}, {"cct_k", cc[QOMATH_CC_CCT]},
        {"ra", cc[QOMATH_CC_RA]}, {"photometric_value", cc[QOMATH_CC_PHOTOMETRIC]},
        {"centroid_nm", rc[QOMATH_RC_CENTROID]}, {"fwhm_nm", rc[QOMATH_RC_FWHM]}};
    for (const auto& [key, value] : same) EXPECT_EQ(static_cast<float>(field(c, key)), value) << key;
}

// ---- strict input ----------------------------------------------------------------

TEST(Analyze, StrictInputNamesFileLineAndWhat)
{
    Scratch tmp("strict");
    const std::string head = "2.0 [Quarvel Optronic Spectral File]\nh\nIrradiance\n0\n400\n5\n480\n";
    const std::string good = "400,1\n420,2\n440,3\n460,2\n480,1\n";
    const std::pair<std::string, std::string> cases[] = {
        {head + "400\t1\n420\t2\n440\t3\n460\t2\n480\t1\n", ":8: not 'wavelength,value': '400\\t1'"},
        {head + "400,1\n420,2\n440,3\n460,2\n", ":6: the file declares 5 points, the data has 4"},
        {head + "400,1\n420,nan\n440,3\n460,2\n480,1\n", ":9: a value is not finite"},
        {head + "400,1\n420,2\n420,3\n460,2\n480,1\n", ":10: wavelength 420 nm does not increase"},
        {head + "400,0\n420,0\n440,0\n460,-1\n480,0\n", ": no positive signal in an emission spectrum"},
        {"2.0 [Quarvel Optronic Spectral File]\nh\nFurlongs\n0\n400\n5\n480\n" + good, ":3: unknown unit 'Furlongs'"},
        {head + "400,1\n420,2\nabc\n460,2\n480,1\n", ":10: not 'wavelength,value': 'abc'"},
    };
    for (const auto& [text, message] : cases) {
        std::ofstream(tmp / "f.txt", std::ios::binary) << text;
        const Outcome r = qomath("analyze --csv " + tmp / "f.txt " + kExamples + "/illuminant_A_v1.txt");
        EXPECT_EQ(r.status, 1) << message;
        EXPECT_NE(r.out.find("f.txt" + message), std::string::npos) << r.out;
        EXPECT_NE(r.out.find("illuminant_A_v1.txt,1,"), std::string::npos) << "others go on";
    }
    // Isolated negative values: a warning, and the file is analysed.
    std::ofstream(tmp / "neg.txt", std::ios::binary) << head << "400,1\n420,-0.5\n440,3\n460,-1\n480,1\n";
    const Outcome neg = qomath("analyze --csv " + tmp / "neg.txt");
    EXPECT_EQ(neg.status, 0);
    EXPECT_NE(neg.out.find("neg.txt: warning: 2 negative values"), std::string::npos) << neg.out;

    // Any length: 8001 points of 0.05 nm.
    std::vector<double> wl, v;
    for (int i = 0; i <= 8000; ++i) wl.push_back(380 + 0.05 * i), v.push_back(1.0);
    const Csv big = parse_csv(qomath("analyze --csv " + v2_file(tmp / "big.txt", "Irradiance", wl, v), false).out);
    EXPECT_EQ(big.rows.at(0).at("points"), "8001");
    ASSERT_EQ(qomath("convert " + tmp / "big.txt " + tmp / "big1.txt --to 1").status, 0);
    const Csv big1 = parse_csv(qomath("analyze --csv " + tmp / "big1.txt", false).out);
    EXPECT_EQ(big1.rows.at(0).at("version"), "1");
    EXPECT_EQ(big1.rows.at(0).at("tristimulus_y"), big.rows.at(0).at("tristimulus_y"));

    // Two-column text (header row, comma or blanks), from a file or standard
    // input; --unit says what the values are.
    std::ofstream(tmp / "t.csv") << "nm,W\n" << "400,1\n450,2\n500,3\n550,2\n600,1\n";
    std::ofstream(tmp / "t.txt") << "400 1\n450 2\n500 3\n550 2\n600 1\n";
    const Csv a = parse_csv(qomath("analyze --csv --unit irradiance " + tmp / "t.csv", false).out);
    const Csv b = parse_csv(qomath("analyze --csv --unit irradiance - < " + tmp / "t.txt", false).out);
    ASSERT_EQ(a.rows.size(), 1u);
    ASSERT_EQ(b.rows.size(), 1u);
    EXPECT_EQ(a.rows[0].at("tristimulus_y"), b.rows[0].at("tristimulus_y"));
    EXPECT_EQ(b.rows[0].at("file"), "-");
    const Outcome no_unit = qomath("analyze " + tmp / "t.csv");
    EXPECT_EQ(no_unit.status, 1);
    EXPECT_NE(no_unit.out.find("needs --unit"), std::string::npos);
    EXPECT_EQ(qomath("analyze --unit furlongs " + tmp / "t.csv").status, 2);
}

// ---- output that never destroys a file ------------------------------------------

TEST(Output, SafeWritesEverywhere)
{
    Scratch tmp("out");
    const std::string led = kExamples + "/white_led_v2.txt";
    // -o writes the report; through a link the link stays and its target changes.
    std::ofstream(tmp / "target.csv") << "old\n";
    fs::create_symlink(tmp / "target.csv", tmp / "link.csv");
    ASSERT_EQ(qomath("analyze --csv -o " + tmp / "link.csv " + led).status, 0);
    EXPECT_TRUE(fs::is_symlink(tmp / "link.csv"));
    std::ifstream in(tmp / "target.csv");
    std::string first;
    std::getline(in, first);
    EXPECT_EQ(first.rfind("file,version,", 0), 0u);
    // Devices are written in place: /dev/null takes it, /dev/full fails.
    EXPECT_EQ(qomath("analyze -o /dev/null " + led).status, 0);
    EXPECT_EQ(qomath("analyze -o /dev/full " + led).status, 1);
    EXPECT_EQ(qomath("analyze " + led + " > /dev/full").status, 1);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    // Never over an input, also through a link.
    fs::copy_file(led, tmp / "in.txt");
    fs::create_symlink(tmp / "in.txt", tmp / "in-link.txt");
    const auto before = fs::file_size(tmp / "in.txt");
    EXPECT_EQ(qomath("analyze -o " + tmp / "in-link.txt " + tmp / "in.txt").status, 2);
    EXPECT_EQ(qomath("convert " + tmp / "in.txt " + tmp / "in-link.txt --to 1").status, 2);
    EXPECT_EQ(fs::file_size(tmp / "in.txt"), before);
    // A folder that cannot take the file (missing, or read-only): the write
    // fails, nothing is left behind.
    EXPECT_EQ(qomath("analyze -o " + tmp / "missing/r.txt " + led).status, 1);
    fs::create_directory(tmp / "ro");  // root writes anywhere: then it proves nothing
    fs::permissions(tmp / "ro", fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(qomath("analyze -o " + tmp / "ro/r.txt " + led).status, geteuid() ? 1 : 0);
    fs::permissions(tmp / "ro", fs::perms::owner_all);
    fs::remove_all(tmp / "ro");
    // A plot that fails keeps the picture that was there, byte for byte.
    std::ofstream(tmp / "old.svg") << "<svg>old</svg>\n";
    EXPECT_EQ(qomath("plot " + tmp / "none.txt -o " + tmp / "old.svg").status, 1);
    std::ifstream svg(tmp / "old.svg");
    std::getline(svg, first);
    EXPECT_EQ(first, "<svg>old</svg>");
    for (const auto& e : fs::directory_iterator(tmp.dir))
        EXPECT_EQ(e.path().filename().string().find(".tmp"), std::string::npos) << e.path();
}

TEST(Analyze, SameOutputForEveryNumberOfJobs)
{
    // A mixed batch: emitters, a filter, failing files, and spectra whose
    // values equal an earlier file's on other wavelengths.
    Scratch tmp("jobs");
    std::vector<double> wl, v, shifted;
    for (int i = 0; i <= 80; ++i) {
        wl.push_back(380 + 5 * i);
        shifted.push_back(382 + 5 * i);
        v.push_back(1.0 + std::exp(-0.5 * std::pow((380 + 5 * i - 450) / 12.0, 2)));
    }
    for (int k = 0; k < 60; ++k) {
        char name[32];
        std::snprintf(name, sizeof name, "f%02d.txt", k);
        if (k % 7 == 3)
            std::ofstream(tmp / name) << "broken\n";
        else if (k % 5 == 1)
            fs::copy_file(kExamples + "/red_filter_v2.txt", tmp / name);
        else
            v2_file(tmp / name, "Irradiance", k % 2 ? shifted : wl, v);
    }
    const Outcome one = qomath("analyze --csv --jobs 1 " + tmp.dir.string(), false);
    EXPECT_EQ(one.status, 1);
    for (const char* jobs : {"2", "8"})
        EXPECT_EQ(qomath(std::string("analyze --csv --jobs ") + jobs + " " + tmp.dir.string(), false).out, one.out)
            << jobs;
    const Csv c = parse_csv(one.out);
    ASSERT_EQ(c.rows.size(), 60u - 9u);
    const auto* a = row_of(c, "f00.txt");
    const auto* b = row_of(c, "f05.txt");  // the same values 2 nm further on
    ASSERT_TRUE(a && b);
    EXPECT_NE(a->at("peak_wavelength_nm"), b->at("peak_wavelength_nm"));
    EXPECT_NEAR(std::stod(b->at("peak_wavelength_nm")) - std::stod(a->at("peak_wavelength_nm")), 2.0, 1e-4);
    EXPECT_EQ(qomath("analyze --jobs 0 " + tmp.dir.string()).status, 2);
    // Files given one by one come out in the order given, not by name.
    const Csv listed = parse_csv(qomath("analyze --csv --jobs 2 " + tmp / "f02.txt " + tmp / "f00.txt", false).out);
    ASSERT_EQ(listed.rows.size(), 2u);
    EXPECT_EQ(listed.rows[0].at("file"), tmp / "f02.txt");
    EXPECT_EQ(listed.rows[1].at("file"), tmp / "f00.txt");
}

// A long batch runs in bounded memory: the program's peak resident size for
// 20,000 files stays far below what holding every result would need.
TEST(Batch, TwentyThousandFilesInBoundedMemory)
{
#ifdef QOMATH_TESTS_SANITIZED
    GTEST_SKIP() << "the sanitizers' shadow memory would be measured";
#endif
    Scratch tmp("batch");
    const fs::path dir = tmp.dir;
    constexpr int kFiles = 20000;
    for (int f = 0; f < kFiles; ++f) {
        char name[32];
        std::snprintf(name, sizeof name, "s%05d.txt", f);
        std::ofstream o(dir / name, std::ios::binary);
        o << "2.0 [Quarvel Optronic Spectral File]\nline " << f << "\nIrradiance\n0\n380\n9\n780\n";
        for (int i = 0; i < 9; ++i) o << 380 + 50 * i << "," << 1 + (f + i) % 7 << "\n";
    }
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        dup2(null, 2);
        execl(QOMATH_CLI_PATH, "qomath", "analyze", "--json", dir.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    ASSERT_EQ(wait4(pid, &status, 0, &usage), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // About 2 KB of JSON a file: 40 MB if results were kept; the list of
    // names and the window of results stay well under that.
    EXPECT_LT(usage.ru_maxrss, 30 * 1024) << "peak resident KB";
}

// ---- convert ----------------------------------------------------------------

TEST(Convert, RoundTripTwoOneTwoKeepsTheValues)
{
    Scratch tmp("conv");
    const std::string in = kExamples + "/white_led_v2.txt";
    const std::string v1 = tmp / "led_v1.txt", v2 = tmp / "led_v2.txt";
    ASSERT_EQ(qomath("convert " + in + " " + v1 + " --to 1").status, 0);
    ASSERT_EQ(qomath("convert " + v1 + " " + v2 + " --to=2").status, 0);
    const Csv rt = parse_csv(qomath("analyze --csv " + in + " " + v1 + " " + v2, false).out);
    ASSERT_EQ(rt.rows.size(), 3u);
    EXPECT_EQ(rt.rows[1].at("version"), "1");
    for (const char* key : {"header", "unit", "points", "wl_first_nm", "wl_last_nm", "cct_k", "ra",
                            "tristimulus_y", "peak_value"})
        for (std::size_t k : {1u, 2u}) EXPECT_EQ(rt.rows[k].at(key), rt.rows[0].at(key)) << key << k;
    EXPECT_NE(qomath("analyze --json " + v2, false).out.find("[Averages]"), std::string::npos);
    // Version 1.0 to 2.0 of the bundled 1.0 file.
    const std::string a2 = tmp / "a_v2.txt";
    ASSERT_EQ(qomath("convert " + kExamples + "/illuminant_A_v1.txt " + a2 + " --to 2").status, 0);
    const Csv c = parse_csv(qomath("analyze --csv " + kExamples + "/illuminant_A_v1.txt " + a2, false).out);
    ASSERT_EQ(c.rows.size(), 2u);
    EXPECT_EQ(c.rows[1].at("version"), "2");
    EXPECT_EQ(c.rows[0].at("cct_k"), c.rows[1].at("cct_k"));
    EXPECT_EQ(c.rows[0].at("header"), c.rows[1].at("header"));
}

TEST(Convert, Errors)
{
    Scratch tmp("conv-err");
    EXPECT_EQ(qomath("convert").status, 2);
    EXPECT_EQ(qomath("convert a b").status, 2);
    EXPECT_EQ(qomath("convert a b --to 3").status, 2);
    EXPECT_EQ(qomath("convert a --to 1").status, 2);
    const Outcome r = qomath("convert " + tmp / "missing.txt " + tmp / "out.txt --to 2");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("missing.txt: cannot read"), std::string::npos) << r.out;
    EXPECT_FALSE(fs::exists(tmp / "out.txt"));
}

// ---- smooth ----------------------------------------------------------------------

// The data lines of a version 2.0 file written by the program, as numbers.
std::vector<std::pair<double, double>> points_of(const std::string& path)
{
    std::ifstream f(path);
    std::string line;
    std::vector<std::pair<double, double>> p;
    while (std::getline(f, line))
        if (const auto comma = line.find(", "); comma != std::string::npos && std::isdigit(line[0]))
            p.emplace_back(std::stod(line.substr(0, comma)), std::stod(line.substr(comma + 2)));
    return p;
}

TEST(Smooth, FiltersKeepWhatTheyShouldAndNeverHarmAFile)
{
    Scratch tmp("smooth");
    // A quadratic passes Savitzky-Golay of order 2 unchanged, ends included;
    // a single spike leaves the running median.
    std::vector<double> wl, quad, spiky;
    for (int i = 0; i < 101; ++i) {
        wl.push_back(400 + 2 * i);
        quad.push_back(5 + 0.3 * i - 0.004 * i * i);
        spiky.push_back(i == 50 ? 40.0 : 2.0);
    }
    v2_file(tmp / "quad.txt", "Irradiance", wl, quad);
    v2_file(tmp / "spiky.txt", "Counts", wl, spiky);
    ASSERT_EQ(qomath("smooth --filter savgol --window 11 " + tmp / "quad.txt -o " + tmp / "q.txt").status, 0);
    const auto q = points_of(tmp / "q.txt");
    ASSERT_EQ(q.size(), 101u);
    for (std::size_t i = 0; i < q.size(); ++i) {
        EXPECT_EQ(q[i].first, wl[i]);
        EXPECT_NEAR(q[i].second, quad[i], 1e-4) << i;
    }
    ASSERT_EQ(qomath("smooth --filter median --window 5 --suffix _m " + tmp / "spiky.txt").status, 0);
    for (const auto& [x, y] : points_of(tmp / "spiky_m.txt")) EXPECT_EQ(y, 2.0) << x;
    // The header, unit and information lines stay, the filter is named.
    const Csv c = parse_csv(qomath("analyze --csv " + tmp / "q.txt", false).out);
    EXPECT_EQ(c.rows.at(0).at("unit"), "Irradiance");
    EXPECT_NE(qomath("analyze --json " + tmp / "q.txt", false).out.find("Smoothed: Savitzky-Golay, 11 points, order 2"),
              std::string::npos);

    // Never over an input, also through a link; an even window is a usage error.
    fs::create_symlink(tmp / "quad.txt", tmp / "link.txt");
    const auto before = fs::file_size(tmp / "quad.txt");
    EXPECT_EQ(qomath("smooth --filter boxcar --window 5 " + tmp / "quad.txt -o " + tmp / "link.txt").status, 2);
    EXPECT_EQ(qomath("smooth --filter boxcar --window 5 --suffix '' " + tmp / "quad.txt").status, 2);
    EXPECT_EQ(qomath("smooth --filter boxcar --window 4 " + tmp / "quad.txt -o " + tmp / "x.txt").status, 2);
    EXPECT_EQ(fs::file_size(tmp / "quad.txt"), before);
    // A window longer than a file's data fails that file and keeps an old output.
    std::ofstream(tmp / "short_m.txt") << "old\n";
    v2_file(tmp / "short.txt", "Counts", {400, 401, 402, 403, 404, 405, 406}, {1, 2, 3, 4, 5, 6, 7});
    const Outcome r = qomath("smooth --filter median --window 5 --suffix _m " + tmp / "short.txt " + tmp / "spiky.txt");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("short.txt: cannot smooth (the window is too long for its 7 points)"), std::string::npos) << r.out;
    std::ifstream old(tmp / "short_m.txt");
    std::string first;
    std::getline(old, first);
    EXPECT_EQ(first, "old");
}

// ---- plot -------------------------------------------------------------------

// Checks that every tag is closed in order; returns "" or the problem.
std::string xml_balance(const std::string& x)
{
    std::vector<std::string> stack;
    std::size_t i = 0;
    while ((i = x.find('<', i)) != std::string::npos) {
        if (x.compare(i, 4, "<!--") == 0) {
            const std::size_t e = x.find("-->", i);
            if (e == std::string::npos) return "open comment";
            i = e + 3;
            continue;
        }
        const std::size_t e = x.find('>', i);
        if (e == std::string::npos) return "open tag at " + std::to_string(i);
        const std::string tag = x.substr(i + 1, e - i - 1);
        if (tag.find('<') != std::string::npos) return "'<' inside a tag at " + std::to_string(i);
        // Quotes in the tag must pair.
        std::size_t quotes = 0;
        for (char c : tag) quotes += c == '"';
        if (quotes % 2) return "odd quotes in <" + tag + ">";
        i = e + 1;
        if (tag.empty()) return "empty tag";
        if (tag[0] == '?') continue;
        if (tag[0] == '/') {
            const std::string name = tag.substr(1);
            if (stack.empty() || stack.back() != name) return "unexpected </" + name + ">";
            stack.pop_back();
            continue;
        }
        if (tag.back() == '/') continue;
        stack.push_back(tag.substr(0, tag.find_first_of(" \t\n")));
    }
    // Text between tags must not hold a bare '&'.
    for (std::size_t a = x.find('&'); a != std::string::npos; a = x.find('&', a + 1)) {
        const std::size_t semi = x.find(';', a);
        if (semi == std::string::npos || semi - a > 6) return "bare &";
    }
    return stack.empty() ? "" : "unclosed <" + stack.back() + ">";
}

double attr(const std::string& x, std::size_t from, const std::string& name)
{
    const std::string key = " " + name + "=\"";
    const std::size_t end = x.find('>', from);
    const std::size_t a = x.find(key, from);
    if (a == std::string::npos || a > end) return std::nan("");
    return std::strtod(x.c_str() + a + key.size(), nullptr);
}

TEST(Plot, SampleMapsBackToTheAnalysis)
{
    Scratch tmp("plot");
    for (const char* name : {"illuminant_A_v1.txt", "white_led_v2.txt", "red_filter_v2.txt"}) {
        const std::string in = kExamples + "/" + name;
        const std::string svg = tmp / (std::string(name) + ".svg");
        const Outcome r = qomath("plot " + in + " -o " + svg);
        ASSERT_EQ(r.status, 0) << r.out;
        std::ifstream f(svg, std::ios::binary);
        std::stringstream ss;
        ss << f.rdbuf();
        const std::string x = ss.str();
        ASSERT_EQ(x.rfind("<?xml", 0), 0u);
        EXPECT_EQ(xml_balance(x), "") << name;
        EXPECT_NE(x.find("id=\"spectrum-locus\""), std::string::npos);
        EXPECT_NE(x.find("id=\"planckian-locus\""), std::string::npos);
        EXPECT_NE(x.find("id=\"purple-line\""), std::string::npos);
        EXPECT_NE(x.find("Wavelength (nm)"), std::string::npos);
        for (const char* k : {"2000 K", "3000 K", "4000 K", "6500 K", "10000 K"})
            EXPECT_NE(x.find(k), std::string::npos) << k;

        const std::size_t g = x.find("<g id=\"chromaticity\"");
        ASSERT_NE(g, std::string::npos);
        const double x0 = attr(x, g, "data-x-min"), x1 = attr(x, g, "data-x-max");
        const double y0 = attr(x, g, "data-y-min"), y1 = attr(x, g, "data-y-max");
        const double left = attr(x, g, "data-left"), right = attr(x, g, "data-right");
        const double top = attr(x, g, "data-top"), bottom = attr(x, g, "data-bottom");
        const std::size_t s = x.find("id=\"sample\"");
        ASSERT_NE(s, std::string::npos);
        const std::size_t open = x.rfind('<', s);
        const double cx = attr(x, open, "cx"), cy = attr(x, open, "cy");
        const double px = x0 + (cx - left) / (right - left) * (x1 - x0);
        const double py = y0 + (bottom - cy) / (bottom - top) * (y1 - y0);

        const Csv c = parse_csv(qomath("analyze --csv " + in, false).out);
        ASSERT_EQ(c.rows.size(), 1u);
        EXPECT_NEAR(px, std::stod(c.rows[0].at("cie1931_x")), 1e-3) << name;
        EXPECT_NEAR(py, std::stod(c.rows[0].at("cie1931_y")), 1e-3) << name;
    }
}

TEST(Plot, ColourVectorGraphicMapsBackToTheLibrary)
{
    Scratch tmp("cvg");
    const std::string led = kExamples + "/white_led_v2.txt";
    ASSERT_EQ(qomath("plot --tm30 " + led + " -o " + tmp / "cvg.svg").status, 0);
    std::ifstream in(tmp / "cvg.svg");
    const std::string svg((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(xml_balance(svg), "");
    auto rec = std::make_unique<SpectralRecord2>();
    ASSERT_EQ(ReadSpectralFile2(led.c_str(), rec.get(), nullptr), 1);
    std::vector<float> r(QOMATH_CRA_COUNT);
    ASSERT_EQ(ColorRenditionAnalysis(rec->wavelengths, rec->values, static_cast<int>(rec->pointCount), r.data()), 1);
    const std::size_t g = svg.find("id=\"cvg\"");
    ASSERT_NE(g, std::string::npos);
    const double cx = attr(svg, g, "data-cx"), cy = attr(svg, g, "data-cy"), k = attr(svg, g, "data-scale");
    std::size_t at = g;
    for (int j = 0; j < 16; ++j) {
        at = svg.find("data-bin=\"" + std::to_string(j + 1) + "\"", at);
        ASSERT_NE(at, std::string::npos) << j;
        const float* t = &r[QOMATH_CRA_TEST_BINS + 2 * j];
        const float* ref = &r[QOMATH_CRA_REF_BINS + 2 * j];
        const double c = std::hypot(ref[0], ref[1]);
        EXPECT_NEAR((attr(svg, at, "x2") - cx) / k, t[0] / c, 1e-3) << j;
        EXPECT_NEAR((cy - attr(svg, at, "y2")) / k, t[1] / c, 1e-3) << j;
        EXPECT_NEAR(std::hypot(attr(svg, at, "x1") - cx, attr(svg, at, "y1") - cy), k, 1e-2) << j;
    }
    char rf[32];
    std::snprintf(rf, sizeof rf, ">Rf %.0f<", static_cast<double>(r[QOMATH_CRA_RF]));
    EXPECT_NE(svg.find(rf), std::string::npos);
}

TEST(Plot, Errors)
{
    Scratch tmp("plot-err");
    EXPECT_EQ(qomath("plot").status, 2);
    EXPECT_EQ(qomath("plot " + kExamples + "/white_led_v2.txt").status, 2);
    EXPECT_EQ(qomath("plot a b -o c.svg").status, 2);
    const Outcome r = qomath("plot " + tmp / "none.txt -o " + tmp / "x.svg");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("none.txt: cannot read"), std::string::npos);
}

}  // namespace
