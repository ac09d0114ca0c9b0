// qomath analyze, convert and plot, run as a user would run them.
#include <gtest/gtest.h>

#include "cli/run_qomath.hpp"

#include <unistd.h>

#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "qomath/spectral_file.h"

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

// ---- a small JSON reader: validates and keeps the top-level array's objects'
// scalar members as text (strings unescaped) ----------------------------------

struct Json {
    const std::string& s;
    std::size_t i = 0;
    bool ok = true;
    std::vector<std::map<std::string, std::string>> objects;

    explicit Json(const std::string& text) : s(text) {}
    void ws()
    {
        while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    }
    bool eat(char c)
    {
        ws();
        if (i < s.size() && s[i] == c) {
            ++i;
            return true;
        }
        return false;
    }
    std::string string()
    {
        std::string out;
        if (!eat('"')) return ok = false, out;
        while (i < s.size() && s[i] != '"') {
            const auto b = static_cast<unsigned char>(s[i]);
            if (b < 0x20) return ok = false, out;
            if (s[i] == '\\') {
                ++i;
                if (i >= s.size()) return ok = false, out;
                const char e = s[i];
                if (e == 'u') {
                    if (i + 4 >= s.size()) return ok = false, out;
                    out += "?";
                    i += 4;
                } else if (std::string("\"\\/bfnrt").find(e) == std::string::npos) {
                    return ok = false, out;
                } else {
                    out.push_back(e == 'n' ? '\n' : e == 't' ? '\t' : e);
                }
                ++i;
            } else {
                out.push_back(s[i++]);
            }
        }
        if (i >= s.size()) return ok = false, out;
        ++i;
        return out;
    }
    // Returns the scalar's text ("" for containers).
    std::string value(int depth)
    {
        ws();
        if (i >= s.size()) return ok = false, "";
        if (s[i] == '"') return string();
        if (s[i] == '[') {
            ++i;
            if (eat(']')) return "";
            do {
                value(depth + 1);
            } while (ok && eat(','));
            if (!eat(']')) ok = false;
            return "";
        }
        if (s[i] == '{') {
            ++i;
            std::map<std::string, std::string> obj;
            if (!eat('}')) {
                do {
                    const std::string key = string();
                    if (!eat(':')) ok = false;
                    obj[key] = value(depth + 1);
                } while (ok && eat(','));
                if (!eat('}')) ok = false;
            }
            if (depth == 1) objects.push_back(obj);
            return "";
        }
        const std::size_t start = i;
        if (s.compare(i, 4, "null") == 0 || s.compare(i, 4, "true") == 0) {
            i += 4;
            return s.substr(start, 4);
        }
        if (s.compare(i, 5, "false") == 0) {
            i += 5;
            return "false";
        }
        char* end = nullptr;
        std::strtod(s.c_str() + i, &end);
        if (end == s.c_str() + i) return ok = false, "";
        i = static_cast<std::size_t>(end - s.c_str());
        return s.substr(start, i - start);
    }
    bool parse()
    {
        value(0);
        ws();
        return ok && i == s.size();
    }
};

// ---- analyze ----------------------------------------------------------------

TEST(Analyze, CsvOfTheExamples)
{
    const Outcome r = qomath("analyze --csv " + kExamples, false);
    ASSERT_EQ(r.status, 0) << r.out;
    const Csv c = parse_csv(r.out);
    ASSERT_EQ(c.rows.size(), 4u);
    std::string header;
    for (const std::string& h : c.header) header += (header.empty() ? "" : ",") + h;
    EXPECT_EQ(header.rfind("file,version,header,unit,unit_code,points,wl_first_nm,wl_last_nm,"
                           "observer,x,y,u_prime,v_prime,tristimulus_x,",
                           0),
              0u)
        << header;
    for (const char* key : {"cct_k", "duv", "dominant_wavelength_nm", "excitation_purity", "ra",
                            "r15", "photometric_value", "peak_wavelength_nm", "fwhm_nm",
                            "integral_visible", "centroid_nm"})
        EXPECT_NE(header.find(std::string(",") + key + ","), std::string::npos) << key;
    // Names sorted, rows in that order.
    EXPECT_NE(c.rows[0].at("file").find("illuminant_A_v1.txt"), std::string::npos);
    EXPECT_NE(c.rows[3].at("file").find("white_led_v2.txt"), std::string::npos);

    const auto* a = row_of(c, "illuminant_A_v1.txt");
    ASSERT_NE(a, nullptr);
    EXPECT_NEAR(std::stod(a->at("cct_k")), 2856.0, 3.0);
    EXPECT_NEAR(std::stod(a->at("x")), 0.4476, 2e-3);
    EXPECT_NEAR(std::stod(a->at("y")), 0.4074, 2e-3);
    EXPECT_EQ(a->at("unit"), "Irradiance");
    EXPECT_EQ(a->at("points"), "471");
    EXPECT_EQ(a->at("photometric_unit"), "lx");
    EXPECT_FALSE(a->at("ra").empty());

    const auto* red = row_of(c, "red_filter_v2.txt");
    ASSERT_NE(red, nullptr);
    EXPECT_EQ(red->at("unit"), "Transmittance");
    EXPECT_TRUE(red->at("ra").empty());                 // no CRI for a filter
    EXPECT_TRUE(red->at("photometric_value").empty());  // nor a photometric value
    EXPECT_EQ(red->at("illuminant"), "D65");

    const auto* d65 = row_of(c, "illuminant_D65_v2.txt");
    ASSERT_NE(d65, nullptr);
    EXPECT_NEAR(std::stod(d65->at("x")), 0.3127, 2e-3);

    // --observer 10 puts the 10 degree chromaticity first.
    const Csv ten = parse_csv(qomath("analyze --csv --observer 10 " + kExamples, false).out);
    ASSERT_EQ(ten.rows.size(), 4u);
    const auto* a10 = row_of(ten, "illuminant_A_v1.txt");
    ASSERT_NE(a10, nullptr);
    EXPECT_EQ(a10->at("x"), a10->at("cie1964_x"));
    EXPECT_EQ(a10->at("observer"), "10");
    EXPECT_NE(a10->at("x"), a->at("x"));
}

TEST(Analyze, JsonParsesAndAgreesWithCsv)
{
    const Outcome csv = qomath("analyze --csv " + kExamples, false);
    const Outcome js = qomath("analyze --json " + kExamples, false);
    ASSERT_EQ(js.status, 0) << js.out;
    Json j(js.out);
    ASSERT_TRUE(j.parse()) << "at " << j.i << ": " << js.out.substr(j.i > 40 ? j.i - 40 : 0, 80);
    ASSERT_EQ(j.objects.size(), 4u);
    const Csv c = parse_csv(csv.out);
    ASSERT_EQ(c.rows.size(), 4u);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_EQ(j.objects[k]["file"], c.rows[k].at("file"));
        EXPECT_EQ(j.objects[k]["header"], c.rows[k].at("header"));
        if (c.rows[k].at("cct_k").empty())
            EXPECT_EQ(j.objects[k]["cct_k"], "null");
        else
            EXPECT_DOUBLE_EQ(std::stod(j.objects[k]["cct_k"]), std::stod(c.rows[k].at("cct_k")));
    }
    EXPECT_NEAR(std::stod(j.objects[0]["cct_k"]), 2856.0, 3.0);
    EXPECT_EQ(j.objects[2]["ra"], "null");  // the red filter
    // The text report names every file and states the CCT.
    const Outcome t = qomath("analyze " + kExamples + "/illuminant_A_v1.txt", false);
    ASSERT_EQ(t.status, 0);
    EXPECT_NE(t.out.find("illuminant_A_v1.txt"), std::string::npos);
    EXPECT_NE(t.out.find("CCT"), std::string::npos);
    EXPECT_NE(t.out.find("Ra"), std::string::npos);
    EXPECT_NE(t.out.find("illuminance"), std::string::npos);
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
    EXPECT_NE(r.out.find("bad.txt: cannot read (status -4: not a spectral file"),
              std::string::npos)
        << r.out;
    EXPECT_NE(r.out.find("none.txt: cannot read (status -2:"), std::string::npos) << r.out;
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

TEST(Analyze, UsageErrors)
{
    EXPECT_EQ(qomath("analyze").status, 2);
    EXPECT_EQ(qomath("analyze --observer 3 " + kExamples).status, 2);
    EXPECT_EQ(qomath("analyze --white X " + kExamples).status, 2);
    EXPECT_EQ(qomath("analyze --illuminant E " + kExamples).status, 2);
    EXPECT_EQ(qomath("analyze --frobnicate " + kExamples).status, 2);
    EXPECT_EQ(qomath("analyze --observer").status, 2);
    for (const char* cmd : {"analyze --help", "convert --help", "plot --help", "help analyze"}) {
        const Outcome h = qomath(cmd);
        EXPECT_EQ(h.status, 0) << cmd;
        EXPECT_EQ(h.out.rfind("usage: qomath ", 0), 0u) << cmd;
    }
}

TEST(Analyze, ManyFilesInInputOrder)
{
    Scratch tmp("many");
    const std::string src = kExamples + "/white_led_v2.txt";
    std::string args;
    for (int i = 0; i < 40; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "f%03d.txt", 39 - i);
        fs::copy_file(i % 2 ? src : kExamples + "/illuminant_A_v1.txt", tmp / name);
        args += ' ';
        args += tmp / name;
    }
    const Outcome r = qomath("analyze --csv" + args, false);
    ASSERT_EQ(r.status, 0);
    const Csv c = parse_csv(r.out);
    ASSERT_EQ(c.rows.size(), 40u);
    for (int i = 0; i < 40; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "f%03d.txt", 39 - i);
        EXPECT_EQ(c.rows[static_cast<std::size_t>(i)].at("file"), tmp / name);
        EXPECT_EQ(c.rows[static_cast<std::size_t>(i)].at("points"), i % 2 ? "801" : "471");
    }
    // A folder is its files in name order.
    const Csv d = parse_csv(qomath("analyze --csv " + tmp.dir.string(), false).out);
    ASSERT_EQ(d.rows.size(), 40u);
    EXPECT_NE(d.rows[0].at("file").find("f000.txt"), std::string::npos);
    EXPECT_EQ(d.rows[0].at("points"), "801");  // f000 was written at i = 39
}

// ---- convert ----------------------------------------------------------------

TEST(Convert, RoundTripTwoOneTwoKeepsTheValues)
{
    Scratch tmp("conv");
    const std::string in = kExamples + "/white_led_v2.txt";
    const std::string v1 = tmp / "led_v1.txt", v2 = tmp / "led_v2.txt";
    ASSERT_EQ(qomath("convert " + in + " " + v1 + " --to 1").status, 0);
    ASSERT_EQ(qomath("convert " + v1 + " " + v2 + " --to=2").status, 0);
    float ver = 0;
    ASSERT_EQ(ReadSpectralFileVersion(v1.c_str(), &ver), 1);
    EXPECT_EQ(ver, 1.0f);

    auto a = std::make_unique<SpectralRecord2>();
    auto b = std::make_unique<SpectralRecord2>();
    *a = {};
    *b = {};
    ASSERT_EQ(ReadSpectralFile2(in.c_str(), a.get(), nullptr), 1);
    ASSERT_EQ(ReadSpectralFile2(v2.c_str(), b.get(), nullptr), 1);
    ASSERT_EQ(a->pointCount, b->pointCount);
    EXPECT_STREQ(a->header, b->header);
    EXPECT_STREQ(a->unitName, b->unitName);
    ASSERT_EQ(a->infoCount, b->infoCount);
    for (int i = 0; i < a->infoCount; ++i) EXPECT_STREQ(a->info[i], b->info[i]) << i;
    for (int i = 0; i < static_cast<int>(a->pointCount); ++i) {
        EXPECT_NEAR(a->wavelengths[i], b->wavelengths[i], 1e-3) << i;
        EXPECT_NEAR(a->values[i], b->values[i], 1e-6f * std::fabs(a->values[i]) + 1e-30f) << i;
    }
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
    EXPECT_NE(r.out.find("status -2"), std::string::npos) << r.out;
    EXPECT_FALSE(fs::exists(tmp / "out.txt"));
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

TEST(Plot, Errors)
{
    Scratch tmp("plot-err");
    EXPECT_EQ(qomath("plot").status, 2);
    EXPECT_EQ(qomath("plot " + kExamples + "/white_led_v2.txt").status, 2);
    EXPECT_EQ(qomath("plot a b -o c.svg").status, 2);
    const Outcome r = qomath("plot " + tmp / "none.txt -o " + tmp / "x.svg");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("status -2"), std::string::npos);
}

}  // namespace
