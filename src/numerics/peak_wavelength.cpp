// CPeakWavelength: peak estimates of a line given as double vectors.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/linalg.h"
#include "qomath/peaks.h"
#include "qomath/polyfit.h"

using qomath::detail::guarded;

namespace {

using Vec = std::vector<double>;

int check_sizes(const Vec& wl, const Vec& v)
{
    if (wl.size() < 5 || v.size() < 5) return QOMATH_PEAK_TOO_FEW;
    if (wl.size() != v.size()) return QOMATH_PEAK_SIZE_MISMATCH;
    return QOMATH_PEAK_OK;
}

std::size_t first_maximum(const Vec& v)
{
    std::size_t k = 0;
    for (std::size_t i = 1; i < v.size(); ++i)
        if (v[i] > v[k]) k = i;
    return k;
}

// The line around its first maximum k: the smallest value of the spectrum,
// the height of the maximum above it, and the half-maximum core [lo, hi].
struct Line {
    std::size_t k = 0;
    double floor = 0.0;
    double height = 0.0;
    std::size_t lo = 0;
    std::size_t hi = 0;
};

// Checks shared by Centroid, PolyFit and Gaussian; fills line on success.
int locate_line(const Vec& wl, const Vec& v, Line& line)
{
    const int sizes = check_sizes(wl, v);
    if (sizes != QOMATH_PEAK_OK) return sizes;
    for (std::size_t i = 0; i < v.size(); ++i)
        if (!std::isfinite(v[i]) || !std::isfinite(wl[i])) return QOMATH_PEAK_NOT_FINITE;
    line.k = first_maximum(v);
    line.floor = *std::min_element(v.begin(), v.end());
    line.height = v[line.k] - line.floor;
    if (!(line.height > 1e-19)) return QOMATH_PEAK_NO_PEAK;
    const double half = 0.5 * line.height;
    line.lo = line.k;
    while (line.lo > 0 && v[line.lo - 1] - line.floor >= half) --line.lo;
    line.hi = line.k;
    while (line.hi + 1 < v.size() && v[line.hi + 1] - line.floor >= half) ++line.hi;
    return QOMATH_PEAK_OK;
}

// Solves (J^T J + damping) delta = J^T r for the four Gaussian parameters.
bool solve4(const double (&jtj)[4][4], const double (&jtr)[4], double lambda, double (&delta)[4])
{
    float a[16];
    float b[4];
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) a[r * 4 + c] = static_cast<float>(jtj[r][c]);
        a[r * 4 + r] = static_cast<float>(jtj[r][r] * (1.0 + lambda) + lambda * 1e-12);
        b[r] = static_cast<float>(jtr[r]);
    }
    if (MatrixGaussJordan(a, 4, b, 1) != 1) return false;
    for (int r = 0; r < 4; ++r) {
        delta[r] = b[r];
        if (!std::isfinite(delta[r])) return false;
    }
    return true;
}

// Model baseline + amplitude exp(-(u - centre)^2 / (2 sigma^2)), p = {b, a, c, s}.
double gaussian_chi2(const Vec& u, const Vec& y, const double (&p)[4])
{
    double chi2 = 0.0;
    for (std::size_t i = 0; i < u.size(); ++i) {
        const double d = (u[i] - p[2]) / p[3];
        const double r = y[i] - (p[0] + p[1] * std::exp(-0.5 * d * d));
        chi2 += r * r;
    }
    return chi2;
}

// The samples lo..hi of a fit window, with wavelengths in grid steps from
// the maximum k (keeps the fits well scaled whatever the grid step) and
// values as (v - floor) / height. False when the window has no positive step.
bool window_samples(const Vec& wl, const Vec& v, std::size_t lo, std::size_t hi, std::size_t k,
                    double floor, double height, Vec& u, Vec& y, double& step)
{
    step = (wl[hi] - wl[lo]) / static_cast<double>(hi - lo);
    if (!(step > 0.0)) return false;
    for (std::size_t i = lo; i <= hi; ++i) {
        u.push_back((wl[i] - wl[k]) / step);
        y.push_back((v[i] - floor) / height);
    }
    return true;
}

}  // namespace

int CPeakWavelength::Maximum(const Vec& wavelengths, const Vec& values, double& peakWavelength,
                             double& peakValue)
{
    const int sizes = check_sizes(wavelengths, values);
    if (sizes != QOMATH_PEAK_OK) return sizes;
    const std::size_t k = first_maximum(values);
    peakWavelength = wavelengths[k];
    peakValue = values[k];
    return QOMATH_PEAK_OK;
}

int CPeakWavelength::Centroid(const Vec& wavelengths, const Vec& values, double& peakWavelength)
{
    Line line;
    const int status = locate_line(wavelengths, values, line);
    if (status != QOMATH_PEAK_OK) return status;
    double weight = 0.0;
    double moment = 0.0;
    for (std::size_t i = line.lo; i <= line.hi; ++i) {
        // Weights fall to zero at the edges of the core, so where the core
        // happens to be cut by the sampling hardly moves the result.
        const double w = values[i] - line.floor - 0.5 * line.height;
        weight += w;
        moment += w * wavelengths[i];
    }
    peakWavelength = moment / weight;  // weight >= height / 2 > 0
    return QOMATH_PEAK_OK;
}

int CPeakWavelength::PolyFit(const Vec& wavelengths, const Vec& values, double& peakWavelength)
{
    return guarded(static_cast<int>(QOMATH_PEAK_NO_MEMORY), [&] {
        Line line;
        const int status = locate_line(wavelengths, values, line);
        if (status != QOMATH_PEAK_OK) return status;
        const std::size_t n = values.size();
        const std::size_t k = line.k;
        std::size_t lo = std::max(line.lo, k >= 7 ? k - 7 : 0);
        std::size_t hi = std::min(line.hi, k + 7);
        if (lo + 1 > k) lo = k >= 1 ? k - 1 : 0;
        if (hi < k + 1) hi = std::min(k + 1, n - 1);
        if (hi - lo < 2) {  // at an end of the array: three samples from that end
            if (lo == 0) hi = 2;
            else lo = hi - 2;
        }
        Vec u;
        Vec y;
        double step = 0.0;
        if (!window_samples(wavelengths, values, lo, hi, k, 0.0, 1.0, u, y, step))
            return static_cast<int>(QOMATH_PEAK_FIT_FAILED);
        double cof[3] = {0.0, 0.0, 0.0};
        if (CPolyFit::PolyFit2ndOrder(u, y, cof) != 1 || !(cof[2] < 0.0))
            return static_cast<int>(QOMATH_PEAK_FIT_FAILED);
        const double vertex = -cof[1] / (2.0 * cof[2]);
        if (!(vertex >= u.front() && vertex <= u.back())) return static_cast<int>(QOMATH_PEAK_FIT_FAILED);
        peakWavelength = wavelengths[k] + vertex * step;
        return static_cast<int>(QOMATH_PEAK_OK);
    });
}

int CPeakWavelength::Gaussian(const Vec& wavelengths, const Vec& values, double& peakWavelength,
                              double& amplitude, double& sigma, double& fwhm, double& baseline,
                              double& rmsResidual, double& rSquared)
{
    return guarded(static_cast<int>(QOMATH_PEAK_NO_MEMORY), [&] {
        Line line;
        const int status = locate_line(wavelengths, values, line);
        if (status != QOMATH_PEAK_OK) return status;
        const std::size_t n = values.size();
        const std::size_t k = line.k;
        const std::size_t core = std::max(k - line.lo, line.hi - k);
        const std::size_t reach = std::max<std::size_t>(3 * core, 3);
        const std::size_t lo = k >= reach ? k - reach : 0;
        const std::size_t hi = std::min(k + reach, n - 1);
        if (hi - lo + 1 < 5) return static_cast<int>(QOMATH_PEAK_NO_PEAK);
        // Fit in samples from the maximum and in units of the line height.
        Vec u;
        Vec y;
        double step = 0.0;
        if (!window_samples(wavelengths, values, lo, hi, k, line.floor, line.height, u, y, step))
            return static_cast<int>(QOMATH_PEAK_FIT_FAILED);
        const double base0 = *std::min_element(y.begin(), y.end());
        double p[4] = {base0, 1.0 - base0, 0.0,
                       std::max(static_cast<double>(line.hi - line.lo + 1) / 2.3548, 0.3)};
        double chi2 = gaussian_chi2(u, y, p);
        double lambda = 1e-3;
        bool converged = false;
        for (int iter = 0; iter < 200 && !converged; ++iter) {
            double jtj[4][4] = {};
            double jtr[4] = {};
            for (std::size_t i = 0; i < u.size(); ++i) {
                const double d = (u[i] - p[2]) / p[3];
                const double e = std::exp(-0.5 * d * d);
                const double r = y[i] - (p[0] + p[1] * e);
                const double g[4] = {1.0, e, p[1] * e * d / p[3], p[1] * e * d * d / p[3]};
                for (int a = 0; a < 4; ++a) {
                    jtr[a] += g[a] * r;
                    for (int b = 0; b < 4; ++b) jtj[a][b] += g[a] * g[b];
                }
            }
            // Raise the damping until a step lowers the residual; a step that
            // cannot be improved at the largest damping means the minimum.
            for (;;) {
                double delta[4];
                double trial[4];
                bool better = false;
                if (solve4(jtj, jtr, lambda, delta)) {
                    for (int a = 0; a < 4; ++a) trial[a] = p[a] + delta[a];
                    if (trial[3] != 0.0) {
                        const double trial_chi2 = gaussian_chi2(u, y, trial);
                        if (trial_chi2 <= chi2) {
                            converged = chi2 - trial_chi2 <= 1e-14 * chi2 + 1e-300;
                            std::copy(trial, trial + 4, p);
                            chi2 = trial_chi2;
                            lambda = std::max(lambda / 10.0, 1e-12);
                            better = true;
                        }
                    }
                }
                if (better) break;
                lambda *= 10.0;
                if (lambda > 1e12) {
                    converged = true;
                    break;
                }
            }
        }
        p[3] = std::fabs(p[3]);
        const double centre = wavelengths[k] + p[2] * step;
        if (!converged || !(p[1] > 0.0) || !(p[3] > 0.0) || !std::isfinite(centre) ||
            centre < wavelengths[lo] || centre > wavelengths[hi])
            return static_cast<int>(QOMATH_PEAK_FIT_FAILED);

        double mean = 0.0;
        for (double v : y) mean += v;
        mean /= static_cast<double>(y.size());
        double total = 0.0;
        for (double v : y) total += (v - mean) * (v - mean);

        peakWavelength = centre;
        amplitude = p[1] * line.height;
        sigma = p[3] * step;
        fwhm = 2.0 * std::sqrt(2.0 * std::log(2.0)) * sigma;
        baseline = p[0] * line.height + line.floor;
        rmsResidual = std::sqrt(chi2 / static_cast<double>(y.size())) * line.height;
        rSquared = total > 0.0 ? 1.0 - chi2 / total : 1.0;
        return static_cast<int>(QOMATH_PEAK_OK);
    });
}
