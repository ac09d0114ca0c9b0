// Element-wise arithmetic in place on caller arrays, and the reductions:
// sums, means, extremes, basic statistics, the two-point line, factorial.
#include "qomath/arrays.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <span>

namespace {

// The caller's n values, or an empty view when the array is unusable.
template <class T>
std::span<T> view(T* a, int n)
{
    if (!a || n < 1) return {};
    return {a, static_cast<std::size_t>(n)};
}

template <class T>
int scale(T* a, int n, T c)
{
    const auto values = view(a, n);
    if (values.empty()) return 0;
    for (T& v : values) v *= c;
    return 1;
}

// a[i] /= c; `vanishing` is the status for |c| < 1e-20 (NaN included).
int divide_by(float* a, int n, float c, int vanishing)
{
    const auto values = view(a, n);
    if (values.empty()) return 0;
    if (!(std::fabs(static_cast<double>(c)) >= 1e-20)) return vanishing;
    for (float& v : values) v /= c;
    return 1;
}

// a[i] = op(a[i], b[i]).
template <class Op>
int pairwise(float* a, const float* b, int n, Op op)
{
    const auto values = view(a, n);
    if (values.empty() || !b) return 0;
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = op(values[i], b[i]);
    return 1;
}

// Index of the extreme of a non-empty array: a later element replaces the
// best so far when `reaches(element, best)`, so with >= (or <=) the last of
// equal extremes wins.
template <class T, class Reaches>
std::size_t extreme_index(std::span<const T> a, Reaches reaches)
{
    std::size_t best = 0;
    for (std::size_t i = 1; i < a.size(); ++i)
        if (reaches(a[i], a[best])) best = i;
    return best;
}

// MaxArray / MinArray. The extreme is written only when an element after
// a[0] took the lead: hosts pass a variable they preset and read it back, and
// rely on it being left alone when a[0] wins.
template <class Reaches>
int extreme(const float* a, int n, float* out, Reaches reaches)
{
    const auto values = view(a, n);
    if (values.empty() || !out) return -1;
    const std::size_t best = extreme_index(values, reaches);
    if (best > 0) *out = values[best];
    return static_cast<int>(best);
}

template <class T>
int stats_basic(const T* a, int n, T* rec)
{
    const auto values = view(a, n);
    if (values.empty() || !rec) return 0;
    double sum = 0.0;
    for (T v : values) sum += static_cast<double>(v);
    rec[0] = values[extreme_index(values, std::less_equal<T>{})];
    rec[1] = values[extreme_index(values, std::greater_equal<T>{})];
    rec[2] = static_cast<T>(sum / static_cast<double>(values.size()));
    return 1;
}

}  // namespace

// ---- Element-wise arithmetic ----------------------------------------------------

int MULTARRAYC(float* a, int n, float c)
{
    return scale(a, n, c);
}

int MultiplyArrayConst(double* a, int n, double c)
{
    return scale(a, n, c);
}

int DIVARRAYC(float* a, int n, float c)
{
    return divide_by(a, n, c, 0);
}

int DivideArrayConst(float* a, int n, float c)
{
    return divide_by(a, n, c, -1);
}

int ADDARRAYS(float* a, const float* b, int n)
{
    return pairwise(a, b, n, std::plus<float>{});
}

int SUBARRAYS(float* a, const float* b, int n)
{
    return pairwise(a, b, n, std::minus<float>{});
}

int MULTARRAYS(float* a, const float* b, int n)
{
    return pairwise(a, b, n, std::multiplies<float>{});
}

int DIVARRAYS(float* a, const float* b, int n, int flag)
{
    if (!a || !b || n < 1) return 0;
    // A non-zero flag turns the call into a successful no-op; hosts use it to
    // switch the division off without changing the call.
    if (flag != 0) return 1;
    // No test of the divisor: a zero gives the IEEE infinity or NaN.
    return pairwise(a, b, n, std::divides<float>{});
}

int InvertArray(float* a, int n)
{
    const auto values = view(a, n);
    if (values.empty()) return 0;
    // The stand-in for 1/0 is this exact float (1e16 rounded down), which
    // hosts compare against.
    constexpr float kHuge = 9999999198822400.0f;
    for (float& v : values) {
        const double d = v;
        v = std::fabs(d) > 1e-15 ? static_cast<float>(1.0 / d) : kHuge;
    }
    return 1;
}

int ExponentialArray(float* a, int n)
{
    if (n < 1) return 1;
    if (!a) return 0;
    for (float& v : view(a, n)) v = static_cast<float>(std::exp(static_cast<double>(v)));
    return 1;
}

int LogarithmArray(float* a, int n)
{
    if (n < 1) return 1;
    if (!a) return 0;
    for (float& v : view(a, n)) {
        double d = v;
        if (std::fabs(d) < 1e-9) d = 1e-9;
        v = static_cast<float>(std::log(d));
    }
    return 1;
}

int NormalizeArray(float* a, int n)
{
    if (n < 1) return 1;
    if (!a) return -1;
    const auto values = view(a, n);
    double m = 0.0;
    for (float v : values) m = std::max(m, std::fabs(static_cast<double>(v)));
    if (m < 1e-13) return -1;
    for (float& v : values) v = static_cast<float>(v / m);
    return 1;
}

int Differentiate(float* a, int n)
{
    if (!a || n < 5) return -1;
    for (int i = 0; i < n - 1; ++i) a[i] = a[i + 1] - a[i];
    a[n - 1] = a[n - 2];
    return 1;
}

int CumulativeSum(const float* a, int n, float* out)
{
    if (!a || !out || n < 2) return -1;
    out[0] = a[0];
    for (int i = 1; i < n; ++i) out[i] = out[i - 1] + a[i];
    return 1;
}

int ADDARRAYS(float** rows, float* out, int n, int m)
{
    if (!rows || !out || n < 1 || m < 1) return 0;
    const std::span<float*> row_list(rows, static_cast<std::size_t>(n));
    if (std::find(row_list.begin(), row_list.end(), nullptr) != row_list.end()) return 0;
    std::fill_n(out, n, 0.0f);
    for (std::size_t i = 0; i < row_list.size(); ++i)
        for (float v : std::span<const float>(row_list[i], static_cast<std::size_t>(m)))
            out[i] += v;
    return 1;
}

// ---- Reductions -----------------------------------------------------------------

float SumArray(const float* a, int n)
{
    double sum = 0.0;
    for (float v : view(a, n)) sum += v;
    return static_cast<float>(sum);
}

float MEANARRAY(const float* a, int n)
{
    if (!a || n < 2) return 0.0f;
    float sum = 0.0f;
    for (float v : view(a, n)) sum += v;
    return sum / static_cast<float>(n);
}

int MaxArray(const float* a, int n, float* max_out)
{
    return extreme(a, n, max_out, std::greater_equal<float>{});
}

int MinArray(const float* a, int n, float* min_out)
{
    return extreme(a, n, min_out, std::less_equal<float>{});
}

int ArrayStatsBasic(const float* a, int n, float* rec)
{
    return stats_basic(a, n, rec);
}

int dArrayStatsBasic(const double* a, int n, double* rec)
{
    return stats_basic(a, n, rec);
}

double LineEquation(float slope, float intercept, float x)
{
    return static_cast<double>(slope) * x + intercept;
}

int LineEquationCalc(float x1, float x2, float y1, float y2, float* slope, float* second)
{
    if (!slope || !second) return 0;
    const double dx = static_cast<double>(x2) - x1;
    if (!(std::fabs(dx) >= 1e-8)) return 0;
    const double dy = static_cast<double>(y2) - y1;
    const double s = dy / dx;
    *slope = static_cast<float>(s);
    // Not the intercept: the rise left over after the slope, zero up to
    // rounding. Hosts read this value as it is.
    *second = static_cast<float>(dy - s * dx);
    return 1;
}

int factorial(int k)
{
    if (k < 0) return -1;
    // 32-bit wrap-around, computed unsigned to keep it defined. From 34! on
    // the product holds 2^32 and stays 0, so the loop can stop there.
    unsigned int product = 1;
    for (int i = 2; i <= k && product != 0; ++i) product *= static_cast<unsigned int>(i);
    return static_cast<int>(product);
}
