// Trapezoidal integration on evenly spaced samples and centroids.
#include <cmath>
#include <cstddef>
#include <optional>

#include "numerics/trapezoid.hpp"
#include "qomath/arrays.h"
#include "qomath/grid.h"

namespace {

using qomath::numerics::grid_points;
using qomath::numerics::grid_wavelength;
using qomath::numerics::trapezoid;

// Sums of the weights and of position times weight, in double.
struct WeightSums {
    double weight = 0.0;
    double moment = 0.0;
};

template <class Position, class Weight>
WeightSums weight_sums(std::size_t n, Position position, Weight weight)
{
    WeightSums s;
    for (std::size_t i = 0; i < n; ++i) {
        const double w = weight(i);
        s.weight += w;
        s.moment += static_cast<double>(position(i)) * w;
    }
    return s;
}

// Weighted mean position; nothing when the weights do not sum to more than
// 1e-19 (with any_sign: when |sum| <= 1e-19).
std::optional<double> mean_position(const WeightSums& s, bool any_sign)
{
    const bool usable = any_sign ? std::fabs(s.weight) > 1e-19 : s.weight > 1e-19;
    if (!usable) return std::nullopt;
    return s.moment / s.weight;
}

// Sample i of a float array, in double.
auto samples_of(const float* y)
{
    return [y](std::size_t i) { return static_cast<double>(y[i]); };
}

// Index positions counted from 1.
double position_from_one(std::size_t i)
{
    return static_cast<double>(i) + 1.0;
}

std::size_t count(int n)
{
    return n > 0 ? static_cast<std::size_t>(n) : 0;
}

}  // namespace

// ---- Integration ----------------------------------------------------------------

int Integrate(const float* y, int n, float step, float* result)
{
    if (!y || !result || n < 2) return 0;
    float sum = 0.0f;  // single precision throughout, as stored results expect
    for (int i = 0; i < n; ++i) sum += y[i];
    sum -= y[0] / 2.0f;
    sum -= y[n - 1] / 2.0f;
    *result = sum * step;
    return 1;
}

int IntegrateQO(const float* y, int n, float step, float* result)
{
    return Integrate(y, n, step, result);
}

float IntegrateQO_(const float* y, int n, float step, int absolute)
{
    if (!y || n < 2) return 0.0f;
    return static_cast<float>(trapezoid(count(n), step, absolute != 0, samples_of(y)));
}

float IntegrateKW(const float* y, const typ_wlinfo* range)
{
    const std::size_t m = grid_points(y, range);
    if (m < 2) return 0.0f;
    return static_cast<float>(trapezoid(m, range->step, false, samples_of(y)));
}

// ---- Centroids ------------------------------------------------------------------

float Centroid(const float* y, int n)
{
    if (!y) return -1.0f;
    // Positions are counted from 1 and the result shifted back by 1.
    const auto c = mean_position(weight_sums(count(n), position_from_one, samples_of(y)), true);
    return c ? static_cast<float>(*c - 1.0) : -1.0f;
}

double dCentroid(const double* y, int n)
{
    if (!y) return -1.0;
    const auto c = mean_position(
        weight_sums(count(n), position_from_one, [y](std::size_t i) { return y[i]; }), false);
    return c ? *c - 1.0 : -1.0;
}

float Centroid2(const float* x, const float* y, int n)
{
    if (!x || !y) return -1.0f;
    const auto c = mean_position(weight_sums(
                                     count(n), [x](std::size_t i) { return x[i]; }, samples_of(y)),
                                 false);
    return static_cast<float>(c.value_or(-1.0));
}

float CentroidKW(const float* y, const typ_wlinfo* range)
{
    const std::size_t m = grid_points(y, range);
    if (m < 1) return 0.0f;
    const typ_wlinfo grid = *range;
    const auto c = mean_position(
        weight_sums(m, [&grid](std::size_t i) { return grid_wavelength(grid, i); }, samples_of(y)),
        false);
    return static_cast<float>(c.value_or(-1.0));
}
