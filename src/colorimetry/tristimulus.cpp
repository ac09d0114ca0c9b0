// CIE tristimulus values: the trapezoid integral of a spectrum times a
// colour-matching function, and the normalising constant k.
//
// The array-style functions resample each colour-matching table onto the
// caller's wavelengths as Interpolate2 does, one call per component in the
// order x-bar, y-bar, z-bar. Those calls go through Interpolate2's
// process-wide cache, so their values, statuses and the cache state they
// leave are kept exactly; a triple makes them in one pass over the grid and
// shares the checks, the scratch buffer and the test for increasing
// wavelengths between its components.
#include "qomath/tristimulus.h"

#include "colorimetry/tristimulus.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include "colorimetry/cie_tables.hpp"
#include "common/barrier.hpp"
#include "numerics/interpolation.hpp"
#include "numerics/trapezoid.hpp"
#include "qomath/cie_tables.h"
#include "qomath/grid.h"
#include "qomath/interpolation.h"
#include "qomath/spectral_arith.h"

namespace qomath::tristimulus {

using qomath::detail::guarded;

namespace {

// The colour-matching tables share the grid 360 + i nm, i < 471.
constexpr int kCmfPoints = 471;
constexpr float kCmfFirst = 360.0f;
constexpr float kCmfLast = 830.0f;
constexpr std::array<float, kCmfPoints> kCmfWavelengths = [] {
    std::array<float, kCmfPoints> wl{};
    for (std::size_t i = 0; i < wl.size(); ++i) wl[i] = kCmfFirst + static_cast<float>(i);
    return wl;
}();

// The data must reach into this span, kept narrower than the tables'
// 360..830 nm on purpose: a spectrum that only grazes the table is refused.
constexpr float kReachLow = 370.0f;
constexpr float kReachHigh = 820.0f;

constexpr std::array<int, 3> kObserver1931{0, 1, 2};
constexpr std::array<int, 3> kObserver1964{3, 4, 5};
constexpr int kYbar1931 = 1;
constexpr int kYbar1964 = 4;

bool is_cmf(int selector)
{
    return selector >= 0 && selector <= 5;
}

// Trapezoid integrals over the caller's grid of each resampled table times
// the spectrum, the product being 0 outside 360..830 nm (bounds included).
// Products are formed in float, the sums in double; the K sums run side by
// side, each in its own order. The grid is known to increase.
template <std::size_t K>
std::array<float, K> weighted_areas(std::span<const float> wl, std::span<const float> values,
                                    const std::array<std::span<float>, K>& cmf)
{
    std::array<double, K> sum{};
    std::array<float, K> previous{};
    for (std::size_t i = 0; i < wl.size(); ++i) {
        const bool inside = wl[i] >= kCmfFirst && wl[i] <= kCmfLast;
        const double half_step = i > 0 ? 0.5 * static_cast<double>(wl[i] - wl[i - 1]) : 0.0;
        for (std::size_t c = 0; c < K; ++c) {
            const float current = inside ? cmf[c][i] * values[i] : 0.0f;
            if (i > 0) sum[c] += static_cast<double>(previous[c] + current) * half_step;
            previous[c] = current;
        }
    }
    std::array<float, K> area{};
    for (std::size_t c = 0; c < K; ++c) area[c] = static_cast<float>(std::fabs(sum[c]));
    return area;
}

// Components of the spectrum (wl, values), one per selector, into out[].
// Outputs are cleared first; the first status other than 1 stops the work.
template <std::size_t K>
int spectrum_components(const colorimetry::Context& ctx, const float* wl, const float* values,
                        int n, const std::array<int, K>& selectors, float* out)
{
    if (!out) return -1;
    std::fill_n(out, K, 0.0f);
    if (!wl || !values || !std::all_of(selectors.begin(), selectors.end(), is_cmf)) return -1;
    if (n < 5) return -2;
    if (wl[n - 1] <= kReachLow || wl[0] >= kReachHigh) return -3;

    const auto count = static_cast<std::size_t>(n);
    const std::span<const float> wls(wl, count);
    const std::span<const float> vs(values, count);
    // A grid that stops increasing anywhere (NaN included) has no colour:
    // each component is 0, with status 1. The tables are still resampled,
    // as Interpolate2's cache is part of what callers observe.
    const bool increasing =
        std::adjacent_find(wls.begin(), wls.end(), [](float a, float b) { return !(a < b); }) ==
        wls.end();

    std::vector<float> scratch(K * count);
    std::array<std::span<const float>, K> tables;
    std::array<std::span<float>, K> resampled;
    for (std::size_t c = 0; c < K; ++c) {
        tables[c] = cie::table(selectors[c]).values;
        resampled[c] = std::span<float>(scratch).subspan(c * count, count);
    }
    // One pass with the values, statuses and cache state of K consecutive
    // Interpolate2 calls. A cache that cannot grow fails the first of them,
    // as it would fail Interpolate2, and leaves the cache as it was.
    std::array<int, K> status{};
    const bool resampled_all = qomath::detail::guarded(false, [&] {
        numerics::interpolate2_many<K>(ctx.cache(), kCmfWavelengths, tables, wls, resampled,
                                       status, true);
        return true;
    });
    std::size_t good = 0;  // components before the first failure
    while (resampled_all && good < K && status[good] == 1) ++good;
    if (increasing) std::copy_n(weighted_areas<K>(wls, vs, resampled).begin(), good, out);
    if (good == K) return 1;
    // Consecutive calls stop at the failing table and leave its key in the
    // cache; the pass went on to the last table, so put it back.
    if (resampled_all && good + 1 < K)
        numerics::interpolate2(ctx.cache(), kCmfWavelengths.data(), tables[good].data(),
                               kCmfPoints, wl, resampled[good].data(), n, true);
    return -5;
}

// X, Y, Z of values over an evenly spaced range, each component integrated
// over the range of its product with the table.
int range_components(const float* values, const typ_wlinfo* range,
                     std::span<const int, 3> selectors, float* xyz)
{
    if (!xyz) return -1;
    std::fill_n(xyz, selectors.size(), 0.0f);
    if (!values || !range) return -1;
    const int n = WLNumPts(range);
    if (n < 5) return -2;

    // The product lies on the overlap of the spectrum and the table at the
    // coarser step, so it never has more points than the spectrum.
    std::vector<float> product(static_cast<std::size_t>(n));
    for (std::size_t c = 0; c < selectors.size(); ++c) {
        const cie::Table table = cie::table(selectors[c]);
        typ_wlinfo product_range{};
        if (MultiplySpectralFiles(values, range, table.values.data(), &table.range, product.data(),
                                  &product_range) < 1)
            return -4;
        const auto m = std::min(static_cast<std::size_t>(WLNumPts(&product_range)), product.size());
        if (m < 2) continue;
        double sum = 0.0;
        for (std::size_t i = 0; i + 1 < m; ++i)
            sum += static_cast<double>(product[i] + product[i + 1]) * 0.5;
        xyz[c] = static_cast<float>(std::fabs(static_cast<double>(product_range.step) * sum));
    }
    return 1;
}

// 100 over the y-bar weighted area, summed over the shifted window that
// hosts' reference whites are built on (see CalcTristimulusK).
float normalising_constant(const float* values, const typ_wlinfo* range, int observer)
{
    const cie::Table ybar = cie::table(observer == 0 ? kYbar1964 : kYbar1931);
    // The product of a spectrum with the table never has more points than
    // the table; samples past the product's end count as 0.
    std::array<float, kCmfPoints> product{};
    typ_wlinfo pr{};
    MultiplySpectralFiles(ybar.values.data(), &ybar.range, values, range, product.data(), &pr);
    const auto sample = [&](long long i) {
        return i >= 0 && i < static_cast<long long>(product.size())
                   ? product[static_cast<std::size_t>(i)]
                   : 0.0f;
    };

    // i0 and i1 count the product's grid points up to 360 and 830 nm (0 when
    // that span is no valid record). The window starts at index i0, one
    // sample above `low`: a product starting at 360 nm is summed from its
    // second sample. Reference whites made with this constant depend on the
    // shift, so it stays.
    const int i0 = WLNumberPts(pr.start, kCmfFirst, pr.step);
    const int i1 = WLNumberPts(pr.start, kCmfLast, pr.step);
    const float low = static_cast<float>(i0 - 1) * pr.step + pr.start;
    const float high = static_cast<float>(i1 - 1) * pr.step + pr.start;
    const int m = WLNumberPts(low, high, pr.step);
    double sum = 0.0;
    if (m >= 2) {
        for (long long j = 0; j + 1 < m; ++j)
            sum += static_cast<double>(sample(i0 + j) + sample(i0 + j + 1)) * 0.5;
        sum *= static_cast<double>(pr.step);
    }
    // Deliberately unchecked: a zero sum (no light) gives an infinite k and
    // still status 1; callers look at k itself.
    return static_cast<float>(100.0 / sum);
}

// ---- CIE-weighted integrals on a range record ------------------------------

// A colour-matching table at a wavelength: linear between its samples, 0
// outside its range (bounds inclusive).
double table_weight(const cie::Table& table, float wavelength)
{
    const std::span<const float> t = table.values;
    const double pos = (static_cast<double>(wavelength) - table.range.start) / table.range.step;
    const auto last = static_cast<double>(t.size() - 1);
    if (!(pos >= 0.0 && pos <= last)) return 0.0;
    const auto k = static_cast<std::size_t>(pos);
    if (k + 1 >= t.size()) return t.back();
    const double f = pos - static_cast<double>(k);
    return t[k] + f * (static_cast<double>(t[k + 1]) - t[k]);
}

float integrate_cie(const float* y, const typ_wlinfo* range, int selector, bool rectified)
{
    if (selector < 0 || selector > 5) return 0.0f;  // the six observer tables
    const std::size_t m = numerics::grid_points(y, range);
    if (m < 2) return 0.0f;
    const cie::Table table = cie::table(selector);
    const typ_wlinfo grid = *range;
    return static_cast<float>(numerics::trapezoid(m, grid.step, rectified, [&](std::size_t i) {
        return static_cast<double>(y[i]) * table_weight(table, numerics::grid_wavelength(grid, i));
    }));
}

}  // namespace

int components(const colorimetry::Context& ctx, const float* wl, const float* values, int n,
               Components which, float* out)
{
    return guarded(-4, [&] {
        switch (which) {
        case Components::xyz1931: return spectrum_components(ctx, wl, values, n, kObserver1931, out);
        case Components::xyz1964: return spectrum_components(ctx, wl, values, n, kObserver1964, out);
        case Components::ybar1931:
            return spectrum_components(ctx, wl, values, n, std::array<int, 1>{kYbar1931}, out);
        }
        return -1;
    });
}

}  // namespace qomath::tristimulus

using namespace qomath::tristimulus;
using qomath::colorimetry::compatible_context;
using qomath::tristimulus::Components;

extern "C" {

int CalcTristimulusXYZ(const float* wavelengths, const float* values, int n, int selector,
                       float* result)
{
    return guarded(-4, [&] {
        return spectrum_components(compatible_context(), wavelengths, values, n,
                                   std::array<int, 1>{selector}, result);
    });
}

int CalcTristimulusXYZ1931_2(const float* wavelengths, const float* values, int n, float* xyz)
{
    return guarded(-4,
                   [&] { return components(compatible_context(), wavelengths, values, n, Components::xyz1931, xyz); });
}

int CalcTristimulusXYZ1964_2(const float* wavelengths, const float* values, int n, float* xyz)
{
    return guarded(-4,
                   [&] { return components(compatible_context(), wavelengths, values, n, Components::xyz1964, xyz); });
}

int CalcTristimulusXYZ1931(const float* values, const typ_wlinfo* range, float* xyz)
{
    return guarded(-3, [&] { return range_components(values, range, kObserver1931, xyz); });
}

int CalcTristimulusXYZ1964(const float* values, const typ_wlinfo* range, float* xyz)
{
    return guarded(-3, [&] { return range_components(values, range, kObserver1964, xyz); });
}

int CalcTristimulusK(const float* values, const typ_wlinfo* range, int observer, float* k)
{
    if (!k) return -1;
    *k = 0.0f;
    if (!values || !range) return -1;
    *k = normalising_constant(values, range, observer);
    return 1;
}

int GetCIEDataTristimulus(int selector, float* xyz)
{
    if (!xyz) return -1;
    return guarded(-4, [&] {
        // GetCIEData owns the selector rule and the equal-energy spectrum.
        std::array<float, QOMATH_CIE_MAX_POINTS> values{};
        typ_wlinfo range{};
        const int fetched = GetCIEData(selector, values.data(), &range);
        if (fetched != 1) return fetched;
        const int n = WLNumPts(&range);
        std::array<float, QOMATH_CIE_MAX_POINTS> wavelengths{};
        for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
            wavelengths[i] = range.start + static_cast<float>(i) * range.step;
        return spectrum_components(compatible_context(), wavelengths.data(), values.data(), n,
                                   kObserver1931, xyz);
    });
}

float Integrate_CIE(const float* y, const typ_wlinfo* range, int selector)
{
    return qomath::tristimulus::integrate_cie(y, range, selector, false);
}

float IntegrateAbsolute_CIE(const float* y, const typ_wlinfo* range, int selector)
{
    return qomath::tristimulus::integrate_cie(y, range, selector, true);
}

}  // extern "C"
