// The CIE tables against the published CSV files, and the spectrum loci.
#include "colorimetry/colour_tests.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "colorimetry/cie_tables.hpp"

namespace {

// Rows of a CSV table with one header line, parsed as doubles from the text.
std::vector<std::vector<double>> read_csv(const std::filesystem::path& path)
{
    std::ifstream in(path);
    std::vector<std::vector<double>> rows;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        std::vector<double> row;
        std::stringstream ss(line);
        std::string cell;
        while (std::getline(ss, cell, ',')) row.push_back(std::strtod(cell.c_str(), nullptr));
        rows.push_back(row);
    }
    return rows;
}

constexpr struct Source { int selector; const char* file; int column; } kSources[] = {
    {0, "cie1931_2deg_cmf_1nm.csv", 1},  {1, "cie1931_2deg_cmf_1nm.csv", 2},
    {2, "cie1931_2deg_cmf_1nm.csv", 3},  {3, "cie1964_10deg_cmf_1nm.csv", 1},
    {4, "cie1964_10deg_cmf_1nm.csv", 2}, {5, "cie1964_10deg_cmf_1nm.csv", 3},
    {6, "illuminant_A_1nm.csv", 1},      {7, "illuminant_B_5nm.csv", 1},
    {8, "illuminant_C_5nm.csv", 1},      {9, "illuminant_D65_1nm.csv", 1},
};

TEST(CieTables, EveryPointEqualsThePublishedTable)
{
    // The project's own copies, and the shared reference tables when they sit
    // beside the project (they do in development and CI, not in a release tarball).
    std::vector<std::filesystem::path> dirs{QOMATH_DATA_DIR};
    if (std::filesystem::exists(QOMATH_SHARED_DATA_DIR)) dirs.emplace_back(QOMATH_SHARED_DATA_DIR);
    for (const auto& dir : dirs) {
        for (const Source& s : kSources) {
            SCOPED_TRACE(testing::Message() << dir << "/" << s.file << " selector " << s.selector);
            const auto rows = read_csv(dir / s.file);
            ASSERT_FALSE(rows.empty());
            std::vector<float> v(QOMATH_CIE_MAX_POINTS, -7.0f);
            typ_wlinfo r{};
            ASSERT_EQ(GetCIEData(s.selector, v.data(), &r), 1);
            ASSERT_EQ(WLNumPts(&r), static_cast<int>(rows.size()));
            EXPECT_EQ(r.start, static_cast<float>(rows.front()[0]));
            EXPECT_EQ(r.end, static_cast<float>(rows.back()[0]));
            for (size_t i = 0; i < rows.size(); ++i) {
                EXPECT_EQ(r.start + static_cast<float>(i) * r.step, static_cast<float>(rows[i][0]));
                EXPECT_EQ(v[i], static_cast<float>(rows[i][static_cast<size_t>(s.column)]))
                    << "at " << rows[i][0] << " nm";
            }
            for (size_t i = rows.size(); i < v.size(); ++i) EXPECT_EQ(v[i], -7.0f);
        }
    }
}

TEST(CieTables, PublishedSpotValuesAndGrids)
{
    const struct Spot { int selector; float wl, value; } spots[] = {
        {0, 360, 0.0001299f}, {0, 450, 0.3362f}, {0, 555, 0.51205f}, {0, 600, 1.0622f},
        {1, 360, 0.000003917f}, {1, 450, 0.038f}, {1, 555, 1.0f}, {1, 600, 0.631f}, {2, 450, 1.77211f},
        {2, 555, 0.00575f}, {2, 600, 0.0008f}, {3, 450, 0.370702f}, {3, 600, 1.12399f},
        {4, 360, 1.3398e-8f}, {4, 555, 0.99911f}, {5, 450, 1.99480f}, {5, 600, 0.0f}, {6, 300, 0.930483f},
        {6, 400, 14.708f}, {6, 560, 100.0f}, {6, 700, 198.261f}, {7, 320, 0.02f}, {7, 380, 22.4f},
        {7, 560, 102.8f}, {7, 760, 84.7f}, {8, 320, 0.01f}, {8, 460, 123.1f}, {8, 760, 58.1f},
        {9, 300, 0.0341f}, {9, 400, 82.7549f}, {9, 560, 100.0f}, {9, 600, 90.0062f}};
    std::vector<float> v(QOMATH_CIE_MAX_POINTS);
    typ_wlinfo r{};
    for (const Spot& s : spots) {
        ASSERT_EQ(GetCIEData(s.selector, v.data(), &r), 1);
        const int i = WLArrayPosition(&r, s.wl);
        ASSERT_GE(i, 0);
        EXPECT_NEAR(v[static_cast<size_t>(i)], s.value, 1e-6f * std::max(1.0f, s.value))
            << "selector " << s.selector << " at " << s.wl;
    }
    // The grids of 0..9 follow the CSV files above; equal energy is 531 ones on 300..830.
    std::fill(v.begin(), v.end(), 0.0f);
    ASSERT_EQ(GetCIEData(10, v.data(), &r), 1);
    EXPECT_EQ(std::tuple(r.start, r.end, WLNumPts(&r)), std::tuple(300.0f, 830.0f, 531));
    for (float x : v) EXPECT_EQ(x, 1.0f);

    // The internal view the colorimetry uses is the same data.
    EXPECT_EQ(qomath::cie::table(1).values[195], 1.0f);
}

TEST(CieTables, BadSelectorsWriteNothing)
{
    std::vector<float> v(QOMATH_CIE_MAX_POINTS, -7.0f);
    typ_wlinfo r{-1, -1, -1};
    for (int sel : {-1, 11, 1000}) {
        EXPECT_EQ(GetCIEData(sel, v.data(), &r), -1);
        EXPECT_EQ(r.start, -1.0f);
        for (float x : v) ASSERT_EQ(x, -7.0f);
    }
    EXPECT_TRUE(GetCIEData(1, nullptr, &r) == -1 && GetCIEData(1, v.data(), nullptr) == -1);
    EXPECT_EQ(v[0], -7.0f);
}

TEST(SpectrumLocus, OneNanometreLociAreTheRoundedObserverChromaticities)
{
    // Spot values as the CIE publishes them: {which, index, x, y}.
    const struct { int which, i; float x, y; } spots[] = {
        {0, 0, 0.17556f, 0.00529f}, {0, 195, 0.33736f, 0.65885f}, {0, 340, 0.73469f, 0.26531f},
        {1, 0, 0.18222f, 0.01998f}, {1, 195, 0.38116f, 0.61816f}};
    std::vector<float> x(QOMATH_LOCUS1964_POINTS), y(QOMATH_LOCUS1964_POINTS);
    typ_wlinfo r{};
    for (const auto& s : spots) {
        ASSERT_EQ(GetCIEUCSChartData(s.which, x.data(), y.data(), &r), 1);
        EXPECT_EQ(std::tuple(x[size_t(s.i)], y[size_t(s.i)]), std::tuple(s.x, s.y)) << s.i;
    }
    // Every point, worked from the CSV text in double and rounded to five decimals.
    const char* files[] = {"cie1931_2deg_cmf_1nm.csv", "cie1964_10deg_cmf_1nm.csv"};
    const auto round5 = [](double v) { return static_cast<float>(std::round(v * 1e5) / 1e5); };
    for (int which = 0; which < 2; ++which) {
        const auto rows = read_csv(std::filesystem::path(QOMATH_DATA_DIR) / files[which]);
        ASSERT_EQ(GetCIEUCSChartData(which, x.data(), y.data(), &r), 1);
        EXPECT_EQ(std::tuple(r.start, r.end, r.step), std::tuple(360.0f, which ? 830.0f : 700.0f, 1.0f));
        for (int i = 0; i < WLNumPts(&r); ++i) {
            const auto& row = rows[static_cast<size_t>(i)];
            const double s = row[1] + row[2] + row[3];
            EXPECT_EQ(x[static_cast<size_t>(i)], round5(row[1] / s));
            EXPECT_EQ(y[static_cast<size_t>(i)], round5(row[2] / s));
        }
    }

    // The chart accessors serve the same 1931 locus.
    const typ_wlinfo chart = GetCIE1931ChartWL();
    EXPECT_EQ(std::tuple(chart.start, chart.end, chart.step), std::tuple(360.0f, 700.0f, 1.0f));
    ASSERT_EQ(GetCIEUCSChartData(0, x.data(), y.data(), &r), 1);
    for (int i = -1; i <= 341; ++i) {
        const typ_chartvalue p = GetCIE1931ChartValue(i);
        const bool in = i >= 0 && i < 341;
        EXPECT_EQ(std::tuple(p.x, p.y, p.z),
                  std::tuple(in ? x[size_t(i)] : 0.0f, in ? y[size_t(i)] : 0.0f, 0.0f)) << i;
    }

    EXPECT_EQ(GetCIEUCSChartData(2, x.data(), y.data(), &r), -1);
    EXPECT_EQ(GetCIEUCSChartData(-1, x.data(), y.data(), &r), -1);
    EXPECT_EQ(GetCIEUCSChartData(0, nullptr, y.data(), &r), -1);
}

TEST(SpectrumLocus, FineLocusIsTheInterpolationRule)
{
    using qomath::cie::kLocus1931FinePoints;
    std::vector<float> x(kLocus1931FinePoints), y(kLocus1931FinePoints), w(kLocus1931FinePoints);
    std::vector<float> rx(kLocus1931FinePoints), ry(kLocus1931FinePoints);
    typ_wlinfo r{};
    ASSERT_EQ(GetCIE1931InterpolatedData(x.data(), y.data(), &r), 1);
    EXPECT_EQ(std::tuple(r.start, r.end, r.step, WLNumPts(&r)), std::tuple(360.0f, 700.0f, 0.1f, 3401));
    ASSERT_EQ(qomath::cie::interpolate_fine_locus(rx, ry), 1);
    EXPECT_EQ(x, rx);
    EXPECT_EQ(y, ry);

    // Each whole nanometre is the 1 nm locus point itself; between them the
    // interpolation stays close to the chord, least so around 504 nm, where x
    // turns and y is a steep function of x.
    for (int k = 0; k <= 3400; ++k) {
        const typ_chartvalue a = GetCIE1931ChartValue(k / 10);
        const typ_chartvalue b = GetCIE1931ChartValue(k / 10 + 1);
        const float t = static_cast<float>(k % 10) / 10.0f;
        const int nm = 360 + k / 10;
        const float tol = k % 10 == 0 ? 0.0f
                          : (nm >= 500 && nm <= 508) ? 2e-3f
                          : (nm >= 495 && nm <= 515) ? 1e-3f : 3e-4f;
        EXPECT_NEAR(y[static_cast<size_t>(k)], a.y + t * (b.y - a.y), tol) << k;
        EXPECT_NEAR(x[static_cast<size_t>(k)], a.x + t * (b.x - a.x), k % 10 ? 1e-6f : 0.0f) << k;
    }
    EXPECT_NEAR(x[1605], 0.07817f, 1e-5f);  // 520.5 nm
    EXPECT_NEAR(y[1605], 0.83409f, 1e-5f);

    int n = 0;
    ASSERT_EQ(GetCIE1931InterpolatedData2(x.data(), y.data(), w.data(), &n), 1);
    EXPECT_EQ(n, 3401);
    EXPECT_EQ(x, rx);
    EXPECT_TRUE(w[0] == 360.0f && w[1950] == 555.0f);
    EXPECT_NEAR(w[1605], 520.5f, 1e-4f);
    EXPECT_NEAR(w[3400], 700.0f, 1e-4f);
    EXPECT_EQ(GetCIE1931InterpolatedData(nullptr, y.data(), &r), -1);
    EXPECT_EQ(GetCIE1931InterpolatedData2(x.data(), y.data(), w.data(), nullptr), -1);
}

TEST(SpectrumLocus, DiagramInterpolatedHandsOutRelabelledCopies)
{
    float *w = nullptr, *x = nullptr, *y = nullptr;
    typ_wlinfo r{};
    ASSERT_EQ(CIE1931DiagramInterpolated(&w, &x, &y, &r), 1);
    ASSERT_TRUE(w && x && y);
    EXPECT_EQ(std::tuple(r.start, r.end, r.step), std::tuple(360.0f, 700.0f, 0.1f));
    const auto fx = qomath::cie::locus1931_fine_x();
    const auto fy = qomath::cie::locus1931_fine_y();
    for (int k = 0; k < 3401; ++k) {
        ASSERT_EQ(x[k], fx[static_cast<size_t>(k)]) << k;
        ASSERT_EQ(y[k], fy[static_cast<size_t>(k)]) << k;
    }
    // Labels advance 10 nm per block of ten points.
    const struct { int k; float label, tol; } labels[] = {
        {0, 360, 0}, {9, 360.9f, 1e-4f}, {10, 370, 0}, {25, 380.5f, 1e-4f}, {1950, 2310, 0}, {3400, 3760, 0}};
    for (const auto& l : labels) EXPECT_NEAR(w[l.k], l.label, l.tol) << l.k;
    for (float* p : {w, x, y}) std::free(p);

    EXPECT_EQ(CIE1931DiagramInterpolated(nullptr, &x, &y, &r), -4);
}

}  // namespace
