// Peak position, line width and line shape on float arrays.
#include "qomath/peaks.h"

#include <cmath>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/arrays.h"
#include "qomath/grid.h"
#include "qomath/polyfit.h"

using qomath::detail::guarded;

namespace {

// Index of the first maximum (strict greater-than, NaN skipped); -1 when
// every value is NaN.
int first_maximum(const float* y, int n)
{
    int k = -1;
    for (int i = 0; i < n; ++i) {
        if (std::isnan(y[i])) continue;
        if (k < 0 || y[i] > y[k]) k = i;
    }
    return k;
}

// Centre of the three-sample window around index k of an n-sample array
// (n >= 3): k itself, moved inwards at the ends.
int window_centre(int k, int n)
{
    if (k < 1) return 1;
    if (k > n - 2) return n - 2;
    return k;
}

// Vertex of the parabola through (x3[i], y3[i]), i = 0..2.
// 1 with vertex/value set; -2 no maximum within [x3[0], x3[2]]; 0 fit failed.
int parabola_vertex(float* x3, float* y3, double& vertex, double& value)
{
    float cof[3] = {0.0f, 0.0f, 0.0f};
    if (CPolyFit::PolynomialCof(x3, y3, 2, cof) != 1) return 0;
    if (!std::isfinite(cof[0]) || !std::isfinite(cof[1]) || !std::isfinite(cof[2])) return 0;
    const double a = cof[2];
    const double b = cof[1];
    if (!(a < 0.0)) return -2;
    const double t = -b / (2.0 * a);
    if (t < x3[0] || t > x3[2]) return -2;
    vertex = t;
    value = cof[0] + t * (b + t * a);
    return 1;
}

// Reset of both edges on a crossing that falls outside the array.
int outside(float* left, float* right)
{
    *left = 0.0f;
    *right = 0.0f;
    return QOMATH_LINEWIDTH_OUTSIDE;
}


}  // namespace

extern "C" {

float GetPeakWavelength(float* y, typ_wlinfo* range)
{
    if (!y || !range) return 0.0f;
    const int n = WLNumPts(range);
    if (n < 1) return 0.0f;
    const int k = first_maximum(y, n);
    if (k < 0) return 0.0f;
    return range->start + static_cast<float>(k) * range->step;
}

float GetPeakWavelength2(float* x, float* y, int n, int* k)
{
    if (k) *k = -1;
    if (!x || !y || n < 1) return 0.0f;
    const int best = first_maximum(y, n);
    if (k) *k = best;
    return best < 0 ? 0.0f : x[best];
}

float GetInterpolatedPeakWavelength(float* y, typ_wlinfo* range)
{
    if (!y || !range) return 0.0f;
    const int n = WLNumPts(range);
    if (n < 3) return 0.0f;
    const int k = first_maximum(y, n);
    if (k < 0) return 0.0f;
    const int c = window_centre(k, n);
    float xs[3] = {-1.0f, 0.0f, 1.0f};
    float ys[3] = {y[c - 1], y[c], y[c + 1]};
    double t = 0.0;
    double value = 0.0;
    const int status = parabola_vertex(xs, ys, t, value);
    if (status != 1) return static_cast<float>(status);
    return static_cast<float>(range->start + (c + t) * static_cast<double>(range->step));
}

int LineWidthCalc(float* y, int n, float pct, float* level, float* left, float* right)
{
    if (!y || !level || !left || !right) return QOMATH_LINEWIDTH_TOO_FEW;
    *left = 0.0f;
    *right = 0.0f;
    if (n < 10) return QOMATH_LINEWIDTH_TOO_FEW;
    float max = y[0];  // MaxArray leaves it alone when y[0] is the unique maximum
    const int p = MaxArray(y, n, &max);
    if (p < 3) return QOMATH_LINEWIDTH_PEAK_LOW;
    if (p > n - 3) return QOMATH_LINEWIDTH_PEAK_HIGH;
    if (!(pct >= 10.0f && pct <= 90.0f)) return QOMATH_LINEWIDTH_OUTSIDE;
    const float lv = static_cast<float>(static_cast<double>(pct) / 100.0 * max);
    *level = lv;

    int i = p;
    while (i >= 0 && !(y[i] < lv)) --i;
    if (i < 0) return outside(left, right);
    const double step_left = static_cast<double>(y[i + 1]) - y[i];
    if (!(std::fabs(step_left) > 1e-19)) return QOMATH_LINEWIDTH_FLAT_LEFT;
    *left = static_cast<float>(i + (static_cast<double>(lv) - y[i]) / step_left);

    int j = p;
    while (j < n && !(y[j] < lv)) ++j;
    if (j >= n - 1) return outside(left, right);
    // The flatness test looks at the sample after j while the edge formula
    // uses the one before it, and the fraction is added to j: every width of
    // the library, and what hosts have stored, is measured with this edge.
    const double step_after = static_cast<double>(y[j + 1]) - y[j];
    if (!(std::fabs(step_after) > 1e-19)) return QOMATH_LINEWIDTH_FLAT_RIGHT;
    const double step_before = static_cast<double>(y[j - 1]) - y[j];
    if (step_before == 0.0) return outside(left, right);
    *right = static_cast<float>(j + (static_cast<double>(lv) - y[j]) / step_before);

    if (!(*left >= 0.0f) || !(*right < static_cast<float>(n - 1))) return outside(left, right);
    return QOMATH_LINEWIDTH_OK;
}

int FWHM(float* y, int n, float* level, float* left, float* right)
{
    return LineWidthCalc(y, n, 50.0f, level, left, right);
}

float ComputeFWHMoptions(float* x, float* y, int n)
{
    if (!x || !y) return 0.0f;
    float level = 0.0f;
    float left = 0.0f;
    float right = 0.0f;
    if (LineWidthCalc(y, n, 50.0f, &level, &left, &right) != QOMATH_LINEWIDTH_OK) return 0.0f;
    if (left < 0.0f) left = 0.0f;
    if (right < 0.0f || right >= static_cast<float>(n)) right = 0.0f;
    const int hi = static_cast<int>(std::ceil(right));
    const int lo = static_cast<int>(std::floor(left));
    if (hi <= lo) return 0.0f;
    const double mean_step = (static_cast<double>(x[hi]) - x[lo]) / (hi - lo);
    return static_cast<float>(mean_step * (static_cast<double>(right) - left));
}

float OLDFWHM(float* x, float* y, int n)
{
    if (!x || !y || n < 3) return 0.0f;
    const int k = first_maximum(y, n);
    if (k < 0 || !(y[k] > 0.0f) || !std::isfinite(y[k])) return 0.0f;
    const double half = 0.5 * y[k];

    int i = k;
    while (i >= 0 && !(y[i] < half)) --i;
    int j = k;
    while (j < n && !(y[j] < half)) ++j;
    if (i < 0 || j >= n) return 0.0f;
    const double x_left =
        x[i] + (half - y[i]) / (static_cast<double>(y[i + 1]) - y[i]) * (static_cast<double>(x[i + 1]) - x[i]);
    const double x_right =
        x[j] + (half - y[j]) / (static_cast<double>(y[j - 1]) - y[j]) * (static_cast<double>(x[j - 1]) - x[j]);
    const double width = x_right - x_left;
    return std::isfinite(width) ? static_cast<float>(width) : 0.0f;
}

int EdgeOrSlit(float* y, int n)
{
    if (!y || n < 10) return QOMATH_SHAPE_TOO_FEW;
    double lo = y[0];
    double hi = y[0];
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(y[i])) return QOMATH_SHAPE_FLAT;
        if (y[i] < lo) lo = y[i];
        if (y[i] > hi) hi = y[i];
    }
    if (!(hi - lo > 1e-19)) return QOMATH_SHAPE_FLAT;
    const double mid = 0.5 * (lo + hi);
    int changes = 0;
    for (int i = 1; i < n; ++i)
        if ((y[i] > mid) != (y[i - 1] > mid)) ++changes;
    const bool first_high = y[0] > mid;
    const bool last_high = y[n - 1] > mid;
    if (changes == 2 && !first_high && !last_high) return QOMATH_SHAPE_SLIT;
    if (changes == 1) return first_high ? QOMATH_SHAPE_FALLING_EDGE : QOMATH_SHAPE_RISING_EDGE;
    return QOMATH_SHAPE_NEITHER;
}

int PeakWlAllCalculations(float* x, float* y, int n, typ_peakresults* out)
{
    if (!x || !y || !out || n < 1) return -1;
    *out = typ_peakresults{};
    return guarded(static_cast<int>(QOMATH_PEAK_NO_MEMORY), [&] {
        int k = -1;
        out->peak_wavelength = GetPeakWavelength2(x, y, n, &k);
        out->peak_index = k;
        if (k < 0) return 1;
        out->peak_value = y[k];

        if (n >= 3) {
            const int c = window_centre(k, n);
            float xs[3] = {x[c - 1] - x[c], 0.0f, x[c + 1] - x[c]};
            float ys[3] = {y[c - 1], y[c], y[c + 1]};
            double t = 0.0;
            double value = 0.0;
            out->parabola_status = parabola_vertex(xs, ys, t, value);
            if (out->parabola_status == 1) {
                out->parabola_wavelength = static_cast<float>(x[c] + t);
                out->parabola_value = static_cast<float>(value);
            }
        }

        const std::vector<double> wl(x, x + n);
        const std::vector<double> values(y, y + n);
        double centre = 0.0, amplitude = 0.0, sigma = 0.0, width = 0.0, baseline = 0.0, rms = 0.0,
               r2 = 0.0;
        CPeakWavelength fit;
        out->gaussian_status =
            fit.Gaussian(wl, values, centre, amplitude, sigma, width, baseline, rms, r2);
        if (out->gaussian_status == QOMATH_PEAK_OK) {
            out->gaussian_wavelength = static_cast<float>(centre);
            out->gaussian_amplitude = static_cast<float>(amplitude);
            out->gaussian_sigma = static_cast<float>(sigma);
            out->gaussian_fwhm = static_cast<float>(width);
            out->gaussian_baseline = static_cast<float>(baseline);
        }
        return 1;
    });
}

}  // extern "C"
