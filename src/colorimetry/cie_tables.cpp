// The CIE observer and illuminant tables and the spectrum loci.
//
// The numbers live in data/*.csv, one file per table, and are compiled in
// from there. Everything else — the per-function columns, the grid records,
// the loci — is derived here at compile time, so that each table has exactly
// one source.
#include "colorimetry/cie_tables.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "qomath/cie_tables.h"
#include "qomath/grid.h"

namespace qomath::cie {

namespace {

constexpr double kCmf1931Rows[][4] = {
#include "qomath_data/cie1931_2deg_cmf_1nm.inc"
};
constexpr double kCmf1964Rows[][4] = {
#include "qomath_data/cie1964_10deg_cmf_1nm.inc"
};
constexpr double kIllumARows[][2] = {
#include "qomath_data/illuminant_A_1nm.inc"
};
constexpr double kIllumBRows[][2] = {
#include "qomath_data/illuminant_B_5nm.inc"
};
constexpr double kIllumCRows[][2] = {
#include "qomath_data/illuminant_C_5nm.inc"
};
constexpr double kIllumD65Rows[][2] = {
#include "qomath_data/illuminant_D65_1nm.inc"
};
constexpr double kFineLocusRows[][3] = {
#include "qomath_data/cie1931_locus_0p1nm.inc"
};

template <std::size_t N, std::size_t C>
constexpr bool on_grid(const double (&rows)[N][C], double start, double end, double step)
{
    for (std::size_t i = 0; i < N; ++i) {
        const double d = rows[i][0] - (start + static_cast<double>(i) * step);
        if (d > 1e-6 || d < -1e-6) return false;
    }
    return rows[N - 1][0] == end;
}
static_assert(std::size(kCmf1931Rows) == 471 && on_grid(kCmf1931Rows, 360, 830, 1));
static_assert(std::size(kCmf1964Rows) == 471 && on_grid(kCmf1964Rows, 360, 830, 1));
static_assert(std::size(kIllumARows) == 531 && on_grid(kIllumARows, 300, 830, 1));
static_assert(std::size(kIllumBRows) == 91 && on_grid(kIllumBRows, 320, 770, 5));
static_assert(std::size(kIllumCRows) == 91 && on_grid(kIllumCRows, 320, 770, 5));
static_assert(std::size(kIllumD65Rows) == 531 && on_grid(kIllumD65Rows, 300, 830, 1));
static_assert(std::size(kFineLocusRows) == kLocus1931FinePoints &&
              on_grid(kFineLocusRows, 360, 700, 0.1));

template <std::size_t N, std::size_t C>
constexpr std::array<float, N> column(const double (&rows)[N][C], std::size_t c)
{
    std::array<float, N> out{};
    for (std::size_t i = 0; i < N; ++i) out[i] = static_cast<float>(rows[i][c]);
    return out;
}

template <std::size_t N, std::size_t C>
constexpr typ_wlinfo grid_of(const double (&rows)[N][C])
{
    return {static_cast<float>(rows[0][0]), static_cast<float>(rows[N - 1][0]),
            static_cast<float>(rows[1][0] - rows[0][0])};
}

// Chromaticity coordinates are published to five decimals; the loci carry
// exactly those figures. (Values are non-negative, so rounding is a shift.)
constexpr double round5(double v)
{
    return static_cast<double>(static_cast<long long>(v * 1e5 + 0.5)) / 1e5;
}

// x = X / (X + Y + Z), y = Y / (X + Y + Z) of the first `Points` rows, interleaved.
template <std::size_t Points, std::size_t N>
constexpr std::array<float, 2 * Points> locus_of(const double (&rows)[N][4])
{
    static_assert(Points <= N);
    std::array<float, 2 * Points> out{};
    for (std::size_t i = 0; i < Points; ++i) {
        const double sum = rows[i][1] + rows[i][2] + rows[i][3];
        out[2 * i] = static_cast<float>(round5(rows[i][1] / sum));
        out[2 * i + 1] = static_cast<float>(round5(rows[i][2] / sum));
    }
    return out;
}

constexpr auto kXbar = column(kCmf1931Rows, 1);
constexpr auto kYbar = column(kCmf1931Rows, 2);
constexpr auto kZbar = column(kCmf1931Rows, 3);
constexpr auto kXbar10 = column(kCmf1964Rows, 1);
constexpr auto kYbar10 = column(kCmf1964Rows, 2);
constexpr auto kZbar10 = column(kCmf1964Rows, 3);
constexpr auto kIllumA = column(kIllumARows, 1);
constexpr auto kIllumB = column(kIllumBRows, 1);
constexpr auto kIllumC = column(kIllumCRows, 1);
constexpr auto kIllumD65 = column(kIllumD65Rows, 1);
constexpr auto kLocus1931 = locus_of<kLocus1931Points>(kCmf1931Rows);  // stops at 700 nm
constexpr auto kLocus1964 = locus_of<kLocus1964Points>(kCmf1964Rows);
constexpr auto kFineX = column(kFineLocusRows, 1);
constexpr auto kFineY = column(kFineLocusRows, 2);

constexpr Table kTables[] = {
    {grid_of(kCmf1931Rows), kXbar},   {grid_of(kCmf1931Rows), kYbar},
    {grid_of(kCmf1931Rows), kZbar},   {grid_of(kCmf1964Rows), kXbar10},
    {grid_of(kCmf1964Rows), kYbar10}, {grid_of(kCmf1964Rows), kZbar10},
    {grid_of(kIllumARows), kIllumA},  {grid_of(kIllumBRows), kIllumB},
    {grid_of(kIllumCRows), kIllumC},  {grid_of(kIllumD65Rows), kIllumD65},
};
static_assert(std::size(kTables) == kSelectorCount - 1);

constexpr typ_wlinfo kEqualEnergyRange{300.0f, 830.0f, 1.0f};
constexpr typ_wlinfo kLocus1931Range{360.0f, 700.0f, 1.0f};
constexpr typ_wlinfo kFineLocusRange{360.0f, 700.0f, 0.1f};

}  // namespace

Table table(int selector)
{
    return kTables[selector];
}
typ_wlinfo equal_energy_range()
{
    return kEqualEnergyRange;
}
std::span<const float> locus1931()
{
    return kLocus1931;
}
std::span<const float> locus1964()
{
    return kLocus1964;
}
std::span<const float> locus1931_fine_x()
{
    return kFineX;
}
std::span<const float> locus1931_fine_y()
{
    return kFineY;
}

namespace {

void split_pairs(std::span<const float> pairs, float* x, float* y)
{
    for (std::size_t i = 0; i < pairs.size() / 2; ++i) {
        x[i] = pairs[2 * i];
        y[i] = pairs[2 * i + 1];
    }
}

}  // namespace

}  // namespace qomath::cie

using namespace qomath;

extern "C" {

int GetCIEData(int selector, float* values, typ_wlinfo* range)
{
    if (selector < 0 || selector >= cie::kSelectorCount || !values || !range) return -1;
    if (selector == cie::kSelectorCount - 1) {
        *range = cie::equal_energy_range();
        std::fill_n(values, WLNumPts(range), 1.0f);
        return 1;
    }
    const cie::Table t = cie::table(selector);
    *range = t.range;
    std::copy_n(t.values.begin(), WLNumPts(range), values);
    return 1;
}

typ_wlinfo GetCIE1931ChartWL(void)
{
    return cie::kLocus1931Range;
}

typ_chartvalue GetCIE1931ChartValue(int index)
{
    // Outside the locus there is no point to give: {0, 0, 0}, never a read
    // beyond the table.
    if (index < 0 || index >= cie::kLocus1931Points) return {0.0f, 0.0f, 0.0f};
    const auto locus = cie::locus1931();
    return {locus[2 * static_cast<std::size_t>(index)],
            locus[2 * static_cast<std::size_t>(index) + 1], 0.0f};
}

int GetCIEUCSChartData(int which, float* x, float* y, typ_wlinfo* range)
{
    if ((which != 0 && which != 1) || !x || !y || !range) return -1;
    if (which == 0) {
        *range = cie::kLocus1931Range;
        cie::split_pairs(cie::locus1931(), x, y);
    } else {
        *range = cie::table(3).range;  // the 1964 observer's grid
        cie::split_pairs(cie::locus1964(), x, y);
    }
    return 1;
}

int GetCIE1931InterpolatedData(float* x, float* y, typ_wlinfo* range)
{
    if (!x || !y || !range) return -1;
    std::copy(cie::kFineX.begin(), cie::kFineX.end(), x);
    std::copy(cie::kFineY.begin(), cie::kFineY.end(), y);
    *range = cie::kFineLocusRange;
    return 1;
}

int GetCIE1931InterpolatedData2(float* x, float* y, float* wavelengths, int* n)
{
    if (!x || !y || !wavelengths || !n) return -1;
    std::copy(cie::kFineX.begin(), cie::kFineX.end(), x);
    std::copy(cie::kFineY.begin(), cie::kFineY.end(), y);
    for (int i = 0; i < cie::kLocus1931FinePoints; ++i)
        wavelengths[i] = static_cast<float>(i) * 0.1f + 360.0f;
    *n = cie::kLocus1931FinePoints;
    return 1;
}

}  // extern "C"
