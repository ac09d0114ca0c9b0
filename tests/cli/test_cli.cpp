// The qomath program, run as a user would run it.
#include <gtest/gtest.h>

#include "cli/run_qomath.hpp"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "qomath/cie_tables.h"
#include "qomath/grid.h"

namespace {

using qomath::test::Outcome;
using qomath::test::qomath;

TEST(Cli, VersionHelpAndUsageErrors)
{
    const Outcome r = qomath("version");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out,
              "QOMath 1.7.6\nMath and File I/O operations\nBuild date: May  3 2020\n"
              "Build time: 15:27:32\n");
    EXPECT_EQ(qomath("--version").out, r.out);
    EXPECT_EQ(qomath("version extra").status, 2);

    for (const char* cmd : {"version", "tables", "analyze", "convert", "plot", "smooth", "f1prime",
                            "lines", "straylight", "cmd"}) {
        for (const std::string& h : {std::string(cmd) + " --help", "help " + std::string(cmd)}) {
            const Outcome o = qomath(h);
            EXPECT_EQ(o.status, 0) << h;
            EXPECT_EQ(o.out.rfind("usage: qomath ", 0), 0u) << h;
        }
    }
    for (const char* bad : {"analyze", "analyze --observer 3 x", "analyze --white X x",
                            "analyze --illuminant E x", "analyze --frobnicate x", "analyze --observer"})
        EXPECT_EQ(qomath(bad).status, 2) << bad;
    const Outcome help = qomath("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("tables"), std::string::npos);
    EXPECT_EQ(qomath("").status, 2);
    const Outcome bad = qomath("frobnicate");
    EXPECT_EQ(bad.status, 2);
    EXPECT_NE(bad.out.find("unknown command 'frobnicate'"), std::string::npos);
}

TEST(Cli, TablesAgreeWithTheLibrary)
{
    const Outcome r = qomath("tables");
    ASSERT_EQ(r.status, 0) << r.out;
    std::istringstream lines(r.out);
    std::string line;
    std::getline(lines, line);  // header
    int rows = 0;
    std::vector<float> v(QOMATH_CIE_MAX_POINTS);
    while (std::getline(lines, line)) {
        if (line.empty() || !std::isdigit(static_cast<unsigned char>(line[0]))) continue;
        typ_wlinfo range{};
        ASSERT_EQ(GetCIEData(std::stoi(line), v.data(), &range), 1) << line;
        double sum = 0;
        for (int i = 0; i < WLNumPts(&range); ++i) sum += v[static_cast<size_t>(i)];
        const double printed = std::strtod(line.substr(line.rfind(' ')).c_str(), nullptr);
        EXPECT_NEAR(printed, sum, 1e-6 * sum) << line;
        const std::string count = ' ' + std::to_string(WLNumPts(&range)) + ' ';
        EXPECT_NE(line.find(count), std::string::npos) << line;
        ++rows;
    }
    EXPECT_EQ(rows, 11);
    EXPECT_NE(r.out.find("CIE 1931 spectrum locus, 0.1 nm"), std::string::npos);
    EXPECT_NE(r.out.find(" 3401 "), std::string::npos);
}

}  // namespace
