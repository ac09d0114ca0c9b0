// Resampling between evenly spaced grids with an adaptive-order Newton
// series, and band-averaging resampling onto arbitrary wavelength grids.
#include "numerics/resample.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <span>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/grid.h"
#include "qomath/interpolation.h"

namespace qomath::numerics {

bool copy_equal_step(const float* ySrc, const typ_wlinfo& src, float* yDst, const typ_wlinfo& dst)
{
    const int n_dst = WLNumPts(&dst);
    const float step = src.step;
    if (n_dst <= 3 || step != dst.step) return false;
    const float q = (dst.start - src.start) / step;
    const float tail = (src.end - dst.end) / step;
    if (!(q >= 0.0f && tail >= 0.0f && q < 2e9f && tail < 2e9f)) return false;
    const int i0 = static_cast<int>(q);
    const float tail_rest = static_cast<float>(static_cast<int>(tail)) * step + dst.end - src.end;
    if (!(static_cast<float>(i0) * step < 1e-6f && tail_rest < 1e-6f)) return false;
    if (i0 > WLNumPts(&src) - n_dst) return false;  // never read past the source
    std::memmove(yDst, ySrc + i0, sizeof(float) * static_cast<std::size_t>(n_dst));
    return true;
}

namespace {

// ---- Adaptive-order Newton series on an evenly spaced grid -------------------

constexpr int kNewtonPoints = 6;
constexpr double kNewtonFirstBound = 9e20;

// Point i of a range record, in float as every grid of the library.
float grid_point(const typ_wlinfo& range, int i)
{
    return static_cast<float>(i) * range.step + range.start;
}

// Value at x of the Newton series through the samples of ys (over src)
// nearest to x. The nodes are taken in order of distance, the lower
// wavelength first when two are equally near; near the ends of the grid they
// all lie on one side. Terms are added while their magnitude keeps falling:
// the first term that is not smaller than the one before is left out, so
// the order adapts to the data and extrapolation far beyond the grid settles
// on a low-order value instead of growing without bound.
double newton_adaptive(std::span<const float> ys, const typ_wlinfo& src, double x)
{
    const int n = static_cast<int>(ys.size());
    const int m = std::min(n, kNewtonPoints);

    const double t = (x - static_cast<double>(src.start)) / static_cast<double>(src.step);
    int k = 0;  // nearest sample; NaN lands on 0
    if (t >= static_cast<double>(n - 1)) {
        k = n - 1;
    } else if (t > 0.0) {
        const double whole = std::floor(t);
        k = static_cast<int>(whole) + (t - whole > 0.5 ? 1 : 0);
    }

    std::array<double, kNewtonPoints> z{};  // nodes, nearest first
    std::array<double, kNewtonPoints> c{};  // values, then divided differences
    z[0] = grid_point(src, k);
    c[0] = ys[static_cast<std::size_t>(k)];
    int lo = k;
    int hi = k;
    for (int j = 1; j < m; ++j) {
        int next = 0;
        if (lo == 0) {
            next = ++hi;
        } else if (hi == n - 1) {
            next = --lo;
        } else {
            const double below = std::fabs(x - grid_point(src, lo - 1));
            const double above = std::fabs(x - grid_point(src, hi + 1));
            next = below <= above ? --lo : ++hi;
        }
        z[static_cast<std::size_t>(j)] = grid_point(src, next);
        c[static_cast<std::size_t>(j)] = ys[static_cast<std::size_t>(next)];
    }

    // c[j] becomes the divided difference over nodes 0..j.
    for (int j = 1; j < m; ++j)
        for (int i = m - 1; i >= j; --i) {
            const auto u = static_cast<std::size_t>(i);
            c[u] = (c[u] - c[u - 1]) / (z[u] - z[u - static_cast<std::size_t>(j)]);
        }

    double sum = 0.0;
    double product = 1.0;
    double bound = kNewtonFirstBound;
    for (std::size_t j = 0; j < static_cast<std::size_t>(m); ++j) {
        const double term = c[j] * product;
        if (std::fabs(term) >= bound) break;  // the non-decreasing term stays out
        sum += term;
        bound = std::fabs(term);
        product *= x - z[j];
    }
    return sum;
}

// ---- Band averaging ------------------------------------------------------------

constexpr int kBandMinPoints = 5;
constexpr int kBandMaxPoints = 2048;

// Index of the first wavelength above e, xs.size() when there is none.
std::size_t first_above(std::span<const float> xs, bool increasing, double e)
{
    if (increasing)
        return static_cast<std::size_t>(
            std::upper_bound(xs.begin(), xs.end(), e,
                             [](double v, float x) { return v < static_cast<double>(x); }) -
            xs.begin());
    std::size_t j = 0;
    while (j < xs.size() && !(static_cast<double>(xs[j]) > e)) ++j;
    return j;
}

// Fractional source index of wavelength e: nSrc above the last wavelength,
// -1 below the first, else interpolated within the interval holding e.
double fractional_index(std::span<const float> xs, bool increasing, double e)
{
    const std::size_t j = first_above(xs, increasing, e);
    if (j == xs.size()) return static_cast<double>(xs.size());
    if (j == 0) return -1.0;
    const double left = xs[j - 1];
    return static_cast<double>(j - 1) + (e - left) / (static_cast<double>(xs[j]) - left);
}

// Average of the source over the band [lo, hi] (wavelengths). Sample k
// stands for the index interval [k, k + 1).
float band_average(std::span<const float> xs, std::span<const float> ys, bool increasing, double lo,
                   double hi)
{
    const double n = static_cast<double>(xs.size());
    const double f_lo = fractional_index(xs, increasing, lo);
    const double f_hi = fractional_index(xs, increasing, hi);
    const double d = f_hi - f_lo;
    // A band that reaches outside the source gives 0, not an extrapolation.
    // Written as a positive condition so that NaN gives 0 as well.
    if (!(f_lo >= 0.0 && f_hi < n && d > 0.0)) return 0.0f;

    if (d <= 1.0) {
        // Narrower than one source interval: linear interpolation at the
        // band centre.
        const double mid = 0.5 * (f_lo + f_hi);
        const std::size_t k = std::min(static_cast<std::size_t>(mid), ys.size() - 2);
        const double t = mid - static_cast<double>(k);
        return static_cast<float>(static_cast<double>(ys[k]) * (1.0 - t) +
                                  static_cast<double>(ys[k + 1]) * t);
    }

    const auto a = static_cast<std::size_t>(f_lo);
    const auto b = static_cast<std::size_t>(f_hi);
    // A band starting exactly on the first source wavelength (f_lo == 0)
    // leaves sample 0 out of the sum while d still counts its interval;
    // hosts' stored results were made this way.
    double sum = f_lo > 0.0 ? (1.0 - (f_lo - static_cast<double>(a))) * ys[a] : 0.0;
    sum += (f_hi - static_cast<double>(b)) * ys[b];
    for (std::size_t k = a + 1; k < b; ++k) sum += ys[k];
    return static_cast<float>(sum / d);
}

void band_resample(std::span<const float> xs, std::span<const float> ys, std::span<const float> xd,
                   std::span<float> yd)
{
    const bool increasing = strictly_increasing(xs);
    const std::size_t last = xd.size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
        // Half-widths to the neighbours; a missing one copies the other.
        double left = i > 0 ? static_cast<double>(xd[i] - xd[i - 1]) * 0.5 : 0.0;
        double right = i < last ? static_cast<double>(xd[i + 1] - xd[i]) * 0.5 : 0.0;
        if (left == 0.0) left = right;
        if (right == 0.0) right = left;
        const double centre = xd[i];
        yd[i] = band_average(xs, ys, increasing, centre - left, centre + right);
    }
}

}  // namespace
}  // namespace qomath::numerics

using qomath::detail::guarded;
using namespace qomath::numerics;

extern "C" {

int InterpolateVB(float* ySrc, typ_wlinfo* src, float* yDst, typ_wlinfo* dst)
{
    return guarded(-2, [&] {
        if (!ySrc || !src || !yDst || !dst) return -1;
        if (copy_equal_step(ySrc, *src, yDst, *dst)) return 1;
        const int n_src = WLNumPts(src);
        const int n_dst = WLNumPts(dst);
        if (n_src < 1 || n_dst < 6) return -1;
        // Results go to a buffer first, so ySrc and yDst may be one array.
        std::vector<double> result(static_cast<std::size_t>(n_dst));
        // Hosts read the end of the grid actually produced back from dst.
        dst->end = static_cast<float>(n_dst - 1) * dst->step + dst->start;
        const std::span<const float> ys(ySrc, static_cast<std::size_t>(n_src));
        for (int i = 0; i < n_dst; ++i)
            result[static_cast<std::size_t>(i)] = newton_adaptive(ys, *src, grid_point(*dst, i));
        std::transform(result.begin(), result.end(), yDst,
                       [](double v) { return static_cast<float>(v); });
        return 1;
    });
}

int QoMathSpectralResample(int mode, float* xSrc, float* ySrc, int nSrc, float* xDst, float* yDst,
                           int nDst)
{
    if (mode != 0 || !xSrc || !ySrc || !xDst || !yDst) return -1;
    if (nSrc < kBandMinPoints || nSrc > kBandMaxPoints || nDst < kBandMinPoints ||
        nDst > kBandMaxPoints)
        return -1;
    const auto ns = static_cast<std::size_t>(nSrc);
    const auto nd = static_cast<std::size_t>(nDst);
    band_resample({xSrc, ns}, {ySrc, ns}, {xDst, nd}, {yDst, nd});
    return 1;
}

int QoMathSpectralResampleRangedInterval(int mode, float* xSrc, float* ySrc, int nSrc, float* xDst,
                                         float* yDst, int nDstMax, int* nDst, float start,
                                         float end, float step)
{
    if (!(start > 0.0f && start < end && step > 0.0f)) return -1;
    if (!nDst) return -1;
    // Rounded to the nearest count: the last point may lie up to half a step
    // beyond end.
    const double count = static_cast<double>((end - start) / step) + 1.5;
    const int n = count < static_cast<double>(INT_MAX) ? static_cast<int>(count) : INT_MAX;
    *nDst = n;  // reported also when it does not fit
    if (n > nDstMax) return -2;
    if (!xDst) return -1;
    for (int i = 0; i < n; ++i) xDst[i] = static_cast<float>(i) * step + start;
    return QoMathSpectralResample(mode, xSrc, ySrc, nSrc, xDst, yDst, n);
}

int InterpolateLinearArrayToPolyArray(int /*unused*/, typ_wlinfo* range)
{
    return WLNumPts(range) >= 3 ? 1 : -1;
}

}  // extern "C"
