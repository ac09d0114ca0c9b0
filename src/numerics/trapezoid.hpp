// The trapezoid rule on evenly spaced samples, shared by the integrals of
// the array toolkit and the CIE-weighted integrals of the colorimetry.
#pragma once

#include <cmath>
#include <cstddef>

#include "qomath/grid.h"

namespace qomath::numerics {

// Trapezoid rule over the samples value(0..m-1), m >= 2, spaced by step, in
// double. With `rectified` each trapezoid counts by its absolute value.
template <class Value>
double trapezoid(std::size_t m, double step, bool rectified, Value value)
{
    double sum = 0.0;
    double previous = value(0);
    for (std::size_t i = 1; i < m; ++i) {
        const double current = value(i);
        const double pair = previous + current;
        sum += (rectified ? std::fabs(pair) : pair) * 0.5;
        previous = current;
    }
    return step * sum;
}

// Wavelength of point i of a range record, in float as everywhere on grids.
inline float grid_wavelength(const typ_wlinfo& range, std::size_t i)
{
    return range.start + static_cast<float>(i) * range.step;
}

// Points of a usable record with a value array, else 0.
inline std::size_t grid_points(const float* y, const typ_wlinfo* range)
{
    if (!y || !range) return 0;
    const int m = WLNumPts(range);
    return m > 0 ? static_cast<std::size_t>(m) : 0;
}

}  // namespace qomath::numerics
