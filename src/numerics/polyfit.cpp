// Polynomial tools: Neville interpolation, interpolating-polynomial
// coefficients, evaluation with derivatives, least-squares fits and the
// inverse of a calibration polynomial.
#include "qomath/polyfit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include "common/barrier.hpp"
#include "numerics/neville.hpp"

using qomath::detail::guarded;

namespace {

constexpr int kAllocFailure = -4;

// Horner evaluation of cof[0] + cof[1] x + ... + cof[n-1] x^(n-1), n >= 1, in
// float as callers' stored results expect.
float horner(const float* cof, int n, float x)
{
    float y = cof[n - 1];
    for (int j = n - 2; j >= 0; --j) y = y * x + cof[j];
    return y;
}

// Determinant of the 3 x 3 matrix with columns c0, c1, c2.
double det3(const double (&c0)[3], const double (&c1)[3], const double (&c2)[3])
{
    return c0[0] * (c1[1] * c2[2] - c1[2] * c2[1]) - c1[0] * (c0[1] * c2[2] - c0[2] * c2[1]) +
           c2[0] * (c0[1] * c1[2] - c0[2] * c1[1]);
}

}  // namespace

// ---- CPolyFit ----------------------------------------------------------------
// The members carry the exception barrier; the flat C wrappers below forward
// to them unchanged.

int CPolyFit::PolynomialInt(float* xa, float* ya, int n, float x, float* y, float* dy)
{
    return guarded(0, [&] {
        if (n < 1 || !xa || !ya || !y || !dy) return 0;
        const auto count = static_cast<std::size_t>(n);
        return qomath::numerics::neville({xa + 1, count}, {ya + 1, count}, x, *y, *dy);
    });
}

int CPolyFit::PolynomialCof(float* xa, float* ya, int n, float* cof)
{
    return guarded(kAllocFailure, [&] {
        if (n < 0) return 1;
        if (!xa || !ya || !cof) return 0;
        const std::size_t count = static_cast<std::size_t>(n) + 1;
        std::vector<float> xs(xa, xa + count);
        std::vector<float> ys(ya, ya + count);
        for (std::size_t j = 0; j < count; ++j) {
            const std::size_t left = count - j;  // points still in play
            // The value at 0 of the polynomial through the remaining points is
            // the next coefficient. A failing kernel leaves its partial value.
            float dy = 0.0f;
            qomath::numerics::neville({xs.data(), left}, {ys.data(), left}, 0.0f, cof[j], dy);
            // Divide out the constant term and drop the point nearest to 0.
            float xmin = 1.0e38f;
            std::size_t k = 0;  // when no |x| is below the bound, the first point goes
            for (std::size_t i = 0; i < left; ++i) {
                if (std::fabs(xs[i]) < xmin) {
                    xmin = std::fabs(xs[i]);
                    k = i;
                }
                if (xs[i] != 0.0f) ys[i] = (ys[i] - cof[j]) / xs[i];
            }
            xs.erase(xs.begin() + static_cast<std::ptrdiff_t>(k));
            ys.erase(ys.begin() + static_cast<std::ptrdiff_t>(k));
        }
        return 1;
    });
}

int CPolyFit::PolyVal(float* cof, int n, float x, float* y)
{
    return guarded(0, [&] {
        if (!y || (n >= 1 && !cof)) return 0;
        *y = n < 1 ? 0.0f : horner(cof, n, x);
        return 1;
    });
}

int CPolyFit::ddpoly(float* cof, int nc, float x, float* pd, int nd)
{
    return guarded(0, [&] {
        if (nc < 0 || nd < 0 || !cof || !pd) return 0;
        // Synthetic division carried nd times: pd[j] collects the j-th
        // derivative divided by j!.
        pd[0] = cof[nc];
        std::fill(pd + 1, pd + nd + 1, 0.0f);
        for (int i = nc - 1; i >= 0; --i) {
            const int nnd = std::min(nd, nc - i);
            for (int j = nnd; j >= 1; --j) pd[j] = pd[j] * x + pd[j - 1];
            pd[0] = pd[0] * x + cof[i];
        }
        float factorial = 1.0f;
        for (int i = 2; i <= nd; ++i) {
            factorial *= static_cast<float>(i);
            pd[i] *= factorial;
        }
        return 1;
    });
}

int CPolyFit::PolynomialValues(float* cof, int n, float x, float* y)
{
    return guarded(0, [&] {
        if (n < 1 || !cof || !y) return 0;
        *y = horner(cof, n, x);
        return 1;
    });
}

int CPolyFit::PolyFit2ndOrder(const std::vector<double>& x, const std::vector<double>& y,
                              double* cof)
{
    return guarded(-1, [&] {
        if (x.size() < 3 || y.size() < 3 || !cof) return -1;
        if (x.size() != y.size()) return -2;
        // Normal equations: sum x^(i+j) c_j = sum y x^i, i, j = 0..2.
        double s[5] = {};
        double t[3] = {};
        for (std::size_t k = 0; k < x.size(); ++k) {
            double p = 1.0;
            for (int i = 0; i < 5; ++i) {
                s[i] += p;
                if (i < 3) t[i] += y[k] * p;
                p *= x[k];
            }
        }
        const double c0[3] = {s[0], s[1], s[2]};
        const double c1[3] = {s[1], s[2], s[3]};
        const double c2[3] = {s[2], s[3], s[4]};
        const double det = det3(c0, c1, c2);
        if (std::fabs(det) < 1e-10) return -3;
        cof[0] = det3(t, c1, c2) / det;
        cof[1] = det3(c0, t, c2) / det;
        cof[2] = det3(c0, c1, t) / det;
        return 1;
    });
}

// ---- Flat wrappers ---------------------------------------------------------------

extern "C" {

int PolInt(float* xa, float* ya, int n, float x, float* y, float* dy)
{
    return CPolyFit::PolynomialInt(xa, ya, n, x, y, dy);
}

int PolCof(float* xa, float* ya, int n, float* cof)
{
    return CPolyFit::PolynomialCof(xa, ya, n, cof);
}

int PolynomialValue(float* cof, int n, float x, float* y)
{
    return CPolyFit::PolynomialValues(cof, n, x, y);
}

// ---- Least squares and regression ----------------------------------------------

int fitLinear(float* x, float* y, int n, float* a, float* b)
{
    return guarded(0, [&] {
        if (n < 1 || !x || !y || !a || !b) return 0;
        // Single precision throughout; equal abscissae give a NaN slope.
        const float count = static_cast<float>(n);
        float sx = 0.0f, sy = 0.0f;
        for (int i = 0; i < n; ++i) {
            sx += x[i];
            sy += y[i];
        }
        const float mean = sx / count;
        float st2 = 0.0f, slope = 0.0f;
        for (int i = 0; i < n; ++i) {
            const float t = x[i] - mean;
            st2 += t * t;
            slope += t * y[i];
        }
        slope /= st2;
        *b = slope;
        *a = (sy - sx * slope) / count;
        return 1;
    });
}

int RegressionPolyFit(const float* x, const float* y, int n, int order, float* cof, int* usedOrder)
{
    return guarded(kAllocFailure, [&] {
        if (!x || !y || !cof || !usedOrder) return -1;
        constexpr int kMaxOrder = 25;
        cof[0] = 0.0f;
        *usedOrder = 0;
        const int m = n < 1 ? -1 : std::min({order, n - 1, kMaxOrder});
        if (m < 0) return 1;

        // Power sums: S[k] = sum x^k for k <= 2m, T[k] = sum y x^k for k <= m.
        // (Sums up to the requested order would be formed and never used.)
        const auto dim = static_cast<std::size_t>(m) + 1;
        std::vector<double> s(2 * dim - 1, 0.0);
        std::vector<double> t(dim, 0.0);
        for (int i = 0; i < n; ++i) {
            const double xi = x[i], yi = y[i];
            double p = 1.0;
            for (std::size_t k = 0; k < s.size(); ++k) {
                s[k] += p;
                if (k < dim) t[k] += yi * p;
                p *= xi;
            }
        }
        // Augmented system (m + 1) x (m + 2), row-major.
        const std::size_t width = dim + 1;
        std::vector<double> a(dim * width);
        for (std::size_t i = 0; i < dim; ++i) {
            for (std::size_t j = 0; j < dim; ++j) a[i * width + j] = s[i + j];
            a[i * width + dim] = t[i];
        }
        // Forward elimination with partial pivoting (first of equal maxima
        // kept). A zero pivot is not tested for: it yields non-finite values.
        for (std::size_t c = 0; c < dim; ++c) {
            std::size_t pivot = c;
            for (std::size_t r = c + 1; r < dim; ++r)
                if (std::fabs(a[r * width + c]) > std::fabs(a[pivot * width + c])) pivot = r;
            if (pivot != c)
                std::swap_ranges(a.begin() + static_cast<std::ptrdiff_t>(c * width),
                                 a.begin() + static_cast<std::ptrdiff_t>((c + 1) * width),
                                 a.begin() + static_cast<std::ptrdiff_t>(pivot * width));
            for (std::size_t r = c + 1; r < dim; ++r) {
                const double f = a[r * width + c] / a[c * width + c];
                for (std::size_t j = c; j < width; ++j) a[r * width + j] -= f * a[c * width + j];
            }
        }
        // Back-substitution; coefficients below 1e-15 in magnitude count as 0.
        std::vector<double> coef(dim, 0.0);
        for (std::size_t i = dim; i-- > 0;) {
            double sum = a[i * width + dim];
            for (std::size_t j = i + 1; j < dim; ++j) sum -= a[i * width + j] * coef[j];
            double c = sum / a[i * width + i];
            if (std::fabs(c) < 1e-15) c = 0.0;
            coef[i] = c;
            cof[i] = static_cast<float>(c);
        }
        *usedOrder = m;
        return 1;
    });
}

float RegressionGetY(const float* cof, int order, float x, float* y)
{
    return guarded(0.0f, [&] {
        if (y) *y = 0.0f;
        if (order < 0 || !cof) return 0.0f;
        double sum = 0.0;
        for (int i = 0; i <= order; ++i) sum += static_cast<double>(cof[i]) * std::pow(x, i);
        const auto value = static_cast<float>(sum);
        if (y) *y = value;
        return value;
    });
}

double RegressionGetXWLCal(const float* cof, int n, float* x, float y)
{
    return guarded(0.0, [&] {
        if (x) *x = 0.0f;
        if (n < 1 || !cof) return 0.0;
        // Hosts pass the coefficient count and depend on exactly this test:
        // n == 2 is a line, while 1 and 3 or more take the quadratic path.
        // cof[2] is not read when n == 2.
        const double c0 = cof[0], c1 = cof[1];
        if (n == 2 || std::fabs(static_cast<double>(cof[2])) < 1e-15) {
            if (std::fabs(c1) > 1e-10) return (y - c0) / c1;
            return 0.0;
        }
        const double c2 = cof[2];
        const double disc = c1 * c1 - 4.0 * c2 * (c0 - y);
        if (disc <= 0.0) return 0.0;
        // Only this root is a calibration answer.
        const double root = (std::sqrt(disc) - c1) / (2.0 * c2);
        if (root <= 0.0) return 0.0;
        if (x) *x = static_cast<float>(root);
        return root;
    });
}

}  // extern "C"
