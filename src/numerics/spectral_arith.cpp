// Arithmetic between two spectra on a common grid, and trimming a spectrum.
//
// Two families: the grid family works on value arrays over range records and
// resamples with Interpolate; the array family works on explicit wavelength
// arrays and resamples with Interpolate2. Within a family the four members
// differ only in the operation applied point by point.
#include "qomath/spectral_arith.h"

#include "numerics/spectral_arith.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/grid.h"
#include "qomath/interpolation.h"

namespace qomath::spectral {
namespace {

using qomath::detail::guarded;

struct Multiply {
    float operator()(float a, float b) const { return a * b; }
};
struct Subtract {
    float operator()(float a, float b) const { return a - b; }
};
struct Add {
    float operator()(float a, float b) const { return a + b; }
};

// Quotient of the grid family. 1e14 stands in for an infinite quotient
// (hosts test for that value); 0 / 0 gives 0.
struct DivideOnGrid {
    float operator()(float a, float b) const
    {
        if (std::fabs(static_cast<double>(b)) > 1e-19) return a / b;
        return std::fabs(static_cast<double>(a)) < 1e-19 ? 0.0f : 1e14f;
    }
};

// Quotient of the array family: its own, coarser threshold, and 0 in place
// of any quotient by a vanishing value.
struct DivideOnWavelengths {
    float operator()(float a, float b) const
    {
        if (std::fabs(static_cast<double>(b)) < 1e-9) return 0.0f;
        return a / b;
    }
};

bool same_range(const typ_wlinfo& a, const typ_wlinfo& b)
{
    return a.start == b.start && a.end == b.end && a.step == b.step;
}

bool step_usable(float step)
{
    return static_cast<double>(step) > 1e-15;  // false for NaN as well
}

// The interpolators take their read-only inputs through non-const pointers;
// they never write them.
float* source(const float* p)
{
    return const_cast<float*>(p);
}

// B onto the common grid as Interpolate gives it: 1, or a failure.
struct InterpolateB {
    int operator()(const float* values_b, const typ_wlinfo& b, float* out, const typ_wlinfo& common) const
    {
        typ_wlinfo from = b, to = common;
        return Interpolate(source(values_b), &from, out, &to);
    }
};

template <class Op, class ResampleB = InterpolateB>
int combine_on_grid(const float* values_a, const typ_wlinfo* range_a, const float* values_b,
                    const typ_wlinfo* range_b, float* out, typ_wlinfo* out_range, Op op,
                    ResampleB resample_b = {})
{
    if (!values_a || !range_a || !values_b || !range_b || !out || !out_range) return -1;
    typ_wlinfo a = *range_a;
    typ_wlinfo b = *range_b;

    // The common range is reported before anything is checked: callers read
    // it back also after a failure.
    typ_wlinfo common{std::max(a.start, b.start), std::min(a.end, b.end), std::max(a.step, b.step)};
    const int count = WLNumPts(&common);
    common.end = static_cast<float>(count - 1) * common.step + common.start;
    *out_range = common;

    if (a.start >= b.end || b.start >= a.end) return -1;
    if (!step_usable(a.step) || !step_usable(b.step) || !step_usable(common.step)) return -2;

    return guarded(-4, [&] {
        const auto n = static_cast<std::size_t>(count);
        if (same_range(a, b)) {
            // Nothing to resample: the result is the plain point-by-point
            // operation. Reading index i before writing it keeps out == A or
            // out == B safe.
            for (std::size_t i = 0; i < n; ++i) out[i] = op(values_a[i], values_b[i]);
            return 1;
        }
        // Interpolate fills as many points as it counts on the snapped range.
        const auto filled = static_cast<std::size_t>(std::max(count, WLNumPts(&common)));
        std::vector<float> resampled_a(filled), resampled_b(filled);
        if (Interpolate(source(values_a), &a, resampled_a.data(), &common) < 1 ||
            resample_b(values_b, b, resampled_b.data(), common) < 1)
            return -3;
        for (std::size_t i = 0; i < n; ++i) out[i] = op(resampled_a[i], resampled_b[i]);
        return 1;
    });
}

template <class Op>
int combine_on_wavelengths(const float* wl_a, const float* values_a, int n_a, const float* wl_b,
                           const float* values_b, int n_b, float* out_wl, float* out, int* out_n,
                           Op op)
{
    if (!wl_a || !values_a || !wl_b || !values_b || !out_wl || !out || !out_n) return -1;
    if (WavelengthRangePrep(wl_a, n_a, wl_b, n_b, out_wl, out_n) != 1) return -1;

    return guarded(-4, [&] {
        const int n = std::max(*out_n, 0);
        // Zero-filled: Interpolate2 leaves them so when it refuses a grid.
        std::vector<float> resampled_a(static_cast<std::size_t>(n));
        std::vector<float> resampled_b(static_cast<std::size_t>(n));
        if (Interpolate2(source(wl_a), source(values_a), n_a, out_wl, resampled_a.data(), n) != 1)
            return -2;
        if (Interpolate2(source(wl_b), source(values_b), n_b, out_wl, resampled_b.data(), n) != 1)
            return -3;
        for (std::size_t i = 0; i < resampled_a.size(); ++i)
            out[i] = op(resampled_a[i], resampled_b[i]);
        return 1;
    });
}

int trim(float* values, const typ_wlinfo& range, float& new_start, float& new_end)
{
    const int total = WLNumPts(&range);
    if (!(range.start < range.end) || total == 0) return -1;
    if (!(new_start < new_end)) return -2;

    // Both bounds snap down onto the grid.
    int k = 1;
    float start = range.start;
    if (new_start > range.start) {
        k = WLNumberPts(range.start, new_start, range.step);
        start = static_cast<float>(k - 1) * range.step + range.start;
    }
    int m = 0;
    float end = range.end;
    if (range.end > new_end) {
        m = WLNumberPts(start, new_end, range.step);
        end = static_cast<float>(m - 1) * range.step + start;
    } else {
        m = WLNumberPts(start, range.end, range.step);
    }
    new_start = start;
    new_end = end;

    // Move the kept values to the front, never reading past the range's
    // own points (rounding in the snapped bounds could otherwise ask for one
    // more).
    const std::ptrdiff_t first = k - 1;
    if (first < 0 || first >= total) return 1;
    const std::ptrdiff_t kept = std::min<std::ptrdiff_t>(m, total - first);
    if (first > 0 && kept > 0) std::copy(values + first, values + first + kept, values);
    return 1;
}

}  // namespace
int multiply_by_table(const float* values, const typ_wlinfo* range, const float* table,
                      const typ_wlinfo* table_range, float* out, typ_wlinfo* out_range,
                      TableOnGrid& cache)
{
    const auto resample = [&](const float* values_b, const typ_wlinfo& b, float* dst,
                              const typ_wlinfo& common) {
        const auto n = static_cast<std::size_t>(std::max(WLNumPts(&common), 0));
        if (cache.table != table || !same_range(cache.grid, common) || cache.values.size() != n) {
            cache.values.assign(n, 0.0f);
            cache.status = InterpolateB{}(values_b, b, cache.values.data(), common);
            cache.table = table;
            cache.grid = common;
        }
        std::copy(cache.values.begin(), cache.values.end(), dst);
        return cache.status;
    };
    return combine_on_grid(values, range, table, table_range, out, out_range, Multiply{}, resample);
}

}  // namespace qomath::spectral

using namespace qomath::spectral;

extern "C" {

int MultiplySpectralFiles(const float* valuesA, const typ_wlinfo* rangeA, const float* valuesB,
                          const typ_wlinfo* rangeB, float* out, typ_wlinfo* outRange)
{
    return combine_on_grid(valuesA, rangeA, valuesB, rangeB, out, outRange, Multiply{});
}

int DivideSpectralFiles(const float* valuesA, const typ_wlinfo* rangeA, const float* valuesB,
                        const typ_wlinfo* rangeB, float* out, typ_wlinfo* outRange)
{
    return combine_on_grid(valuesA, rangeA, valuesB, rangeB, out, outRange, DivideOnGrid{});
}

int SubtractSpectralFiles(const float* valuesA, const typ_wlinfo* rangeA, const float* valuesB,
                          const typ_wlinfo* rangeB, float* out, typ_wlinfo* outRange)
{
    return combine_on_grid(valuesA, rangeA, valuesB, rangeB, out, outRange, Subtract{});
}

int AddSpectralFiles(const float* valuesA, const typ_wlinfo* rangeA, const float* valuesB,
                     const typ_wlinfo* rangeB, float* out, typ_wlinfo* outRange)
{
    return combine_on_grid(valuesA, rangeA, valuesB, rangeB, out, outRange, Add{});
}

int MultiplySpectralFiles2(const float* wlA, const float* valuesA, int nA, const float* wlB,
                           const float* valuesB, int nB, float* outWl, float* out, int* outN)
{
    return combine_on_wavelengths(wlA, valuesA, nA, wlB, valuesB, nB, outWl, out, outN,
                                  Multiply{});
}

int DivideSpectralFiles2(const float* wlA, const float* valuesA, int nA, const float* wlB,
                         const float* valuesB, int nB, float* outWl, float* out, int* outN)
{
    return combine_on_wavelengths(wlA, valuesA, nA, wlB, valuesB, nB, outWl, out, outN,
                                  DivideOnWavelengths{});
}

int SubtractSpectralFiles2(const float* wlA, const float* valuesA, int nA, const float* wlB,
                           const float* valuesB, int nB, float* outWl, float* out, int* outN)
{
    return combine_on_wavelengths(wlA, valuesA, nA, wlB, valuesB, nB, outWl, out, outN,
                                  Subtract{});
}

int AddSpectralFiles2(const float* wlA, const float* valuesA, int nA, const float* wlB,
                      const float* valuesB, int nB, float* outWl, float* out, int* outN)
{
    return combine_on_wavelengths(wlA, valuesA, nA, wlB, valuesB, nB, outWl, out, outN, Add{});
}

int TrimSpectralFile(float* values, const typ_wlinfo* range, float* newStart, float* newEnd)
{
    if (!values || !range || !newStart || !newEnd) return -1;
    return trim(values, *range, *newStart, *newEnd);
}

}  // extern "C"
