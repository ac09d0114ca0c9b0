// Descriptive statistics: moments, the normal-distribution fraction, the
// shared quicksort, percentile, histogram and cumulative distribution.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/arrays.h"

using qomath::detail::guarded;

namespace {

constexpr int kAllocFailure = -4;

// Quicksort of a[left..right] (Hoare partition around the middle element).
// It recurses into the smaller part and loops over the larger, so the depth
// stays logarithmic. The scans stop at elements that are not strictly on the
// wrong side of the pivot, which keeps them inside the range even when NaN
// breaks the ordering.
template <class T>
void quicksort(T* a, int left, int right)
{
    while (left < right) {
        const T pivot = a[left + (right - left) / 2];
        int i = left;
        int j = right;
        while (i <= j) {
            while (a[i] < pivot) ++i;
            while (pivot < a[j]) --j;
            if (i <= j) {
                std::swap(a[i], a[j]);
                ++i;
                --j;
            }
        }
        if (j - left < right - i) {
            quicksort(a, left, j);
            left = i;
        } else {
            quicksort(a, i, right);
            right = j;
        }
    }
}

// Percentile of ascending data, pct in 0..100, any count >= 1:
// i = trunc(pct / 100 * (n-1)); odd n gives sorted[i], even n the mean of
// sorted[i] and sorted[i+1] whatever the fraction (at i = n-1 the last value
// pairs with itself).
template <class T>
T percentile_of_sorted(std::span<const T> sorted, double pct)
{
    const std::size_t n = sorted.size();
    const auto i = static_cast<std::size_t>(pct / 100.0 * static_cast<double>(n - 1));
    if (n % 2 == 1) return sorted[i];
    const std::size_t j = std::min(i + 1, n - 1);
    return static_cast<T>((static_cast<double>(sorted[i]) + sorted[j]) / 2.0);
}

// Layout of the moments record and its extensions (see arrays.h).
enum Field : std::size_t {
    kMean,
    kAdev,
    kSdev,
    kVar,
    kSkew,
    kKurt,
    kMomentFields,  // end of the moments record
    kMinimum = kMomentFields,
    kMaximum,
    kMedian,
    kPlusFields,  // end of the MomentsPlus record
    kLowerQuartile = kPlusFields,
    kUpperQuartile,
    kRms,
    kSem,
    kAllFields  // end of the MomentsPlus2 / dMoments record
};

// The moments record of non-empty data into rec[0..5]. The mean is summed in
// the data's own precision, the deviations in double.
template <class T>
void moments(std::span<const T> a, T* rec)
{
    std::fill_n(rec, kMomentFields, T{0});
    rec[kMean] = a[0];
    const std::size_t count = a.size();
    if (count == 1) return;

    T sum = 0;
    for (T v : a) sum += v;
    const T mean = sum / static_cast<T>(count);
    double s = 0.0, adev = 0.0, s2 = 0.0, s3 = 0.0, s4 = 0.0;
    for (T v : a) {
        const double d = static_cast<double>(v) - static_cast<double>(mean);
        const double d2 = d * d;
        s += d;
        adev += std::fabs(d);
        s2 += d2;
        s3 += d2 * d;
        s4 += d2 * d2;
    }
    const auto n = static_cast<double>(count);
    // The correction term s^2/n can exceed s2 by rounding on constant data.
    const double var = std::max(0.0, (s2 - s * s / n) / (n - 1.0));
    const double sdev = std::sqrt(var);
    rec[kMean] = mean;
    rec[kAdev] = static_cast<T>(adev / n);
    rec[kVar] = static_cast<T>(var);
    rec[kSdev] = static_cast<T>(sdev);
    if (var != 0.0) {
        rec[kSkew] = static_cast<T>(s3 / (n * var * sdev));
        rec[kKurt] = static_cast<T>(s4 / (n * var * var) - 3.0);
    }
}

// Moments with order statistics, RMS and standard error: the first `fields`
// values of the full record go to rec. The caller's data stay in place.
template <class T>
int moments_extended(const T* a, int n, T* rec, std::size_t fields)
{
    return guarded(kAllocFailure, [&] {
        if (!a || !rec || n < 1) return 1;
        const std::span<const T> data(a, static_cast<std::size_t>(n));
        std::vector<T> sorted(data.begin(), data.end());
        quicksort(sorted.data(), 0, n - 1);
        const std::span<const T> ordered(sorted);

        T full[kAllFields];
        moments(data, full);
        full[kMinimum] = ordered.front();
        full[kMaximum] = ordered.back();
        full[kMedian] = percentile_of_sorted(ordered, 50.0);
        full[kLowerQuartile] = percentile_of_sorted(ordered, 25.0);
        full[kUpperQuartile] = percentile_of_sorted(ordered, 75.0);
        double squares = 0.0;
        for (T v : data) squares += static_cast<double>(v) * static_cast<double>(v);
        const auto count = static_cast<double>(n);
        full[kRms] = static_cast<T>(std::sqrt(squares / count));
        full[kSem] = static_cast<T>(static_cast<double>(full[kSdev]) / std::sqrt(count));
        std::copy_n(full, fields, rec);
        return 1;
    });
}

}  // namespace

int Moments(const float* a, int n, float* rec)
{
    if (a && rec && n >= 1) moments(std::span<const float>(a, static_cast<std::size_t>(n)), rec);
    return 1;
}

int MomentsPlus(const float* a, int n, float* rec)
{
    return moments_extended(a, n, rec, kPlusFields);
}

int MomentsPlus2(const float* a, int n, float* rec)
{
    return moments_extended(a, n, rec, kAllFields);
}

int dMoments(const double* a, int n, double* rec)
{
    return moments_extended(a, n, rec, kAllFields);
}

float StdDevToPercent(float z)
{
    // erf(x), x = z / sqrt(2), by exactly 12 terms of its Maclaurin series.
    // The truncation is part of the result: host tables were made with it.
    const double x = static_cast<double>(z) / std::numbers::sqrt2;
    double power = x;         // x^(2k+1)
    double k_factorial = 1.0; // k!
    double sum = 0.0;
    for (int k = 0; k < 12; ++k) {
        const double term = power / ((2.0 * k + 1.0) * k_factorial);
        sum += (k % 2 == 0) ? term : -term;
        power *= x * x;
        k_factorial *= k + 1.0;
    }
    return static_cast<float>(2.0 * std::numbers::inv_sqrtpi * sum);
}

void QSort(float* a, int left, int right)
{
    if (!a || left < 0 || left >= right) return;
    quicksort(a, left, right);
}

float Percentile(const float* sorted, int n, float* pct)
{
    if (!sorted || !pct || n < 3 || std::isnan(*pct)) return 0.0f;
    *pct = std::clamp(*pct, 0.0f, 100.0f);
    return percentile_of_sorted(std::span<const float>(sorted, static_cast<std::size_t>(n)),
                                static_cast<double>(*pct));
}

int Histogram_(float* a, int n, int* counts, int bins, float* centres)
{
    if (!a || !counts || !centres || n < 10) return -1;
    bins = std::max(bins, 10);
    quicksort(a, 0, n - 1);  // the caller's data are reordered
    const double low = a[0];
    const double width = (static_cast<double>(a[n - 1]) - low) / bins;
    if (!(width >= 1e-19)) return 1;  // one value (or NaN at an end): nothing to bin

    const std::span<int> tally(counts, static_cast<std::size_t>(bins));
    std::fill(tally.begin(), tally.end(), 0);
    // The bin cursor carries over from one value to the next; bins are closed
    // intervals, and coming from below the cursor stops at the first that
    // holds the value, so a value on an edge counts in the lower bin. It never
    // leaves 0..bins-1, even for values rounding puts beyond the end or NaN.
    int b = 0;
    for (float v : std::span<const float>(a, static_cast<std::size_t>(n))) {
        for (;;) {
            const double lower = low + b * width;
            const double upper = low + (b + 1) * width;
            if (v >= lower && v <= upper) break;
            if (v < upper) {
                if (b == 0) break;
                --b;
            } else {
                if (b == bins - 1) break;
                ++b;
            }
        }
        ++tally[static_cast<std::size_t>(b)];
    }
    for (int i = 0; i < bins; ++i) centres[i] = static_cast<float>(low + i * width + width / 2.0);
    return 1;
}

int DistributionFunction(float* a, int n)
{
    if (!a || n < 10) return -1;
    quicksort(a, 0, n - 1);
    const std::span<float> values(a, static_cast<std::size_t>(n));
    values[0] = std::fabs(values[0]);
    for (std::size_t i = 1; i < values.size(); ++i)
        values[i] = std::fabs(values[i]) + values[i - 1];
    const float total = values.back();
    if (total > 0.0f)
        for (float& v : values) v /= total;
    return 1;
}
