// qomath f1prime and qomath lines, run as a user would run them.
#include <gtest/gtest.h>
#include <unistd.h>

#include "cli/run_qomath.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "qomath/cie_tables.h"

namespace {

namespace fs = std::filesystem;
using qomath::test::qomath;

struct Scratch {
    fs::path dir = fs::temp_directory_path() / ("qomath-f1lines-" + std::to_string(getpid()));
    Scratch() { fs::create_directories(dir); }
    ~Scratch() { std::error_code ec; fs::remove_all(dir, ec); }
    template <class F>  // two-column text of f(i) at 360 + i nm, i < n
    std::string two_columns(const std::string& name, int n, F f) const
    {
        std::ofstream o(dir / name);
        for (int i = 0; i < n; ++i) o << 360 + i << ' ' << f(i) << '\n';
        return (dir / name).string();
    }
};

double json_number(const std::string& out, const std::string& key)
{
    const auto at = out.find("\"" + key + "\": ");
    return at == std::string::npos ? NAN : std::strtod(out.c_str() + at + key.size() + 4, nullptr);
}

TEST(CliF1Prime, StandardAndCompatForms)
{
    const Scratch s;
    std::vector<float> y(QOMATH_CIE_MAX_POINTS);
    typ_wlinfo yr{};
    ASSERT_EQ(GetCIEData(1, y.data(), &yr), 1);
    const auto y75 = s.two_columns("y75.txt", 471, [&](int i) { return 7.5 * y[size_t(i)]; });
    const auto flat = s.two_columns("flat.txt", 471, [](int) { return 1.0; });
    for (const std::string& extra : std::vector<std::string>{"", " --compat", " --source " + flat, " --source " + flat + " --compat"}) {
        const auto r = qomath("f1prime --json " + y75 + extra);
        ASSERT_EQ(r.status, 0) << r.out;
        EXPECT_NEAR(json_number(r.out, "f1prime"), 0.0, 1e-6) << extra;
    }
    // Alternating +-0.01 per sample: sum |e| / sum y-bar = 4.71 / 106.857 in
    // the standard form, near 0 in the pair form of --compat.
    const auto alt = s.two_columns("alt.txt", 471, [&](int i) { return y[size_t(i)] + (i % 2 ? -0.01 : 0.01); });
    EXPECT_NEAR(json_number(qomath("f1prime --json " + alt).out, "f1prime"), 4.71 / 106.857, 2e-3);
    const auto compat = qomath("f1prime --json --compat " + alt);
    EXPECT_NE(compat.out.find("\"form\": \"f1primeCalculate\""), std::string::npos) << compat.out;
    EXPECT_LT(json_number(compat.out, "f1prime"), 1e-4);

    // A part of y-bar: the target is not covered, and the report says so.
    const auto part = s.two_columns("part.txt", 300, [&](int i) { return y[size_t(i)]; });
    const auto p = qomath("f1prime " + part + " --target y");
    EXPECT_EQ(p.status, 0);
    EXPECT_NE(p.out.find("warning: the responsivity does not cover the target"), std::string::npos);
    EXPECT_NE(p.out.find("CIE illuminant A"), std::string::npos);

    EXPECT_EQ(qomath("f1prime " + y75 + " --target w").status, 2);
    EXPECT_EQ(qomath("f1prime").status, 2);
    const auto missing = qomath("f1prime " + y75 + " --source " + s.dir.string() + "/none.txt");
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.out.find("none.txt"), std::string::npos);
    EXPECT_EQ(qomath("f1prime --compat " + y75 + " --source " + part).status, 1);  // -20
}

TEST(CliLines, TableSimulationAndUsage)
{
    const Scratch s;
    const struct { const char* lamp; int lines; double sum; } lamps[] = {{"argon", 19, 9960}, {"mercury", 10, 4350}};
    for (const auto& l : lamps) {
        const auto t = qomath(std::string("lines ") + l.lamp, false);
        ASSERT_EQ(t.status, 0);
        EXPECT_EQ(std::count(t.out.begin(), t.out.end(), '\n'), l.lines + 1);  // and a title

        // Area of a Gaussian of peak I and width w: I w sqrt(pi / (4 ln 2)).
        const std::string file = (s.dir / (std::string(l.lamp) + ".txt")).string();
        ASSERT_EQ(qomath(std::string("lines ") + l.lamp + " --simulate 1.5 --step 0.05 -o " + file).status, 0);
        std::ifstream f(file);
        std::vector<std::string> lines;
        for (std::string x; std::getline(f, x);) lines.push_back(x);
        ASSERT_GT(lines.size(), 7u);
        EXPECT_EQ(lines[0] + "|" + lines[2], "2.0 [Quarvel Optronic Spectral File]|Counts");
        std::vector<double> wl, v;
        for (size_t k = 7; k < lines.size(); ++k)
            wl.push_back(std::stod(lines[k])), v.push_back(std::stod(lines[k].substr(lines[k].find(',') + 1)));
        double area = 0;
        for (size_t i = 1; i < v.size(); ++i) area += (v[i] + v[i - 1]) / 2 * (wl[i] - wl[i - 1]);
        const double expected = l.sum * 1.5 * std::sqrt(M_PI / (4 * std::log(2.0)));
        EXPECT_NEAR(area, expected, 1e-3 * expected) << l.lamp;
    }
    // 253.7 - 3 FWHM: 1000 / 2^36 (and 1e-300 nm is a width like any other).
    EXPECT_EQ(qomath("lines mercury --simulate 2", false).out.substr(0, 18), "247.7\t1.455192e-08");
    EXPECT_EQ(qomath("lines mercury --simulate 1e-300", false).out.substr(0, 11), "253.7\t1000\n");
    for (const char* bad : {"lines neon", "lines", "lines argon --simulate 0", "lines argon --simulate -1",
                            "lines argon --simulate nan", "lines argon --simulate 1 --step 0",
                            "lines argon --step 1", "lines argon --simulate 1e-300 --step 1e-9"})
        EXPECT_EQ(qomath(bad).status, 2) << bad;
    EXPECT_EQ(qomath("lines argon --simulate 1 -o " + s.dir.string() + "/no/such/dir.txt").status, 1);
}

}  // namespace
