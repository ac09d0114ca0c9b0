// Boxcar, clipping, percentile and dip filters, the region scaler, the
// redistribution of values below a floor and the signal-to-noise filter.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/arrays.h"
#include "qomath/filters.h"

using qomath::detail::guarded;

namespace {

// A sorted copy of y[0..n-1] (QSort: NaN-safe).
std::vector<float> sorted_copy(const float* y, int n)
{
    std::vector<float> s(y, y + n);
    QSort(s.data(), 0, n - 1);
    return s;
}

}  // namespace

extern "C" {

int BoxcarAveraging(float* y, int n, int w)
{
    if (!y) return -1;
    if (w < 2 || w > 10) return -2;
    if (n < 1) return 1;
    return guarded(-3, [&] {
        const std::vector<double> d(y, y + n);
        const int h = w / 2;
        auto three = [&](int i) { y[i] = static_cast<float>((d[i - 1] + d[i] + d[i + 1]) / 3.0); };
        // 3-point means next to the ends; y[0] and y[n-1] stay. When n <= 2h
        // the two ranges meet and cover 1..n-2; they never leave the array.
        for (int i = 1; i <= std::min(h - 1, n - 2); ++i) three(i);
        for (int i = std::max(n - h, 1); i <= n - 2; ++i) three(i);
        // 2h + 1 points: an even w averages w + 1, as hosts' smoothing
        // widths have always meant.
        for (int i = h; i <= n - h - 1; ++i) {
            double sum = 0.0;
            for (int j = i - h; j <= i + h; ++j) sum += d[j];
            y[i] = static_cast<float>(sum / (2 * h + 1));
        }
        return 1;
    });
}

int BroadbandNoiseFilter1d(float* y, int n, int w)
{
    if (!y || w < 2 || n < 2 * std::int64_t{w}) return -1;
    return guarded(-2, [&] {
        const std::vector<float> c(y, y + n);
        std::vector<float> win(static_cast<std::size_t>(w));
        const float *lowest = win.data(), *highest = lowest + (w - 1);
        for (int i = 0; i < n; ++i) {
            // The window stops at n - 2w, so the last w samples never lie in
            // one: stored results of this filter depend on that window rule.
            const int s = std::min(i, n - 2 * w);
            std::copy(c.begin() + s, c.begin() + s + w, win.begin());
            QSort(win.data(), 0, w - 1);
            if (y[i] == *lowest) y[i] = lowest[1];
            if (y[i] == *highest) y[i] = highest[-1];
        }
        return 1;
    });
}

int MedianFilterReplacement1d(float* y, int n, int mode)
{
    if (!y || n < 3) return -1;
    return guarded(-2, [&] {
        const int h = n / 2;
        const float median = sorted_copy(y, n)[static_cast<std::size_t>(h)];
        if (mode == 1)
            std::fill(y, y + h, median);
        else
            std::fill(y + n - h, y + n, median);
        return 1;
    });
}

int BandlimitedNoiseFilter1d(float* y, int n, int pct)
{
    if (!y || n < 5) return -1;
    return guarded(-2, [&] {
        // trunc(pct / 100 * n) in double: 25 on 12 values is index 3.
        const double at = std::trunc(pct / 100.0 * n);
        const std::size_t idx = static_cast<std::size_t>(std::clamp(at, 0.0, n - 1.0));
        const float threshold = sorted_copy(y, n)[idx];
        for (int i = 0; i < n; ++i)
            if (y[i] <= threshold) y[i] = 0.0f;
        return 1;
    });
}

int OscillationFilter(float* y, int n)
{
    if (!y || n < 5) return -1;
    // In place on purpose: a filled value takes part in the next test, which
    // is how hosts' dip-filled spectra were made.
    for (int i = 1; i <= n - 2; ++i)
        if (y[i - 1] > y[i] && y[i + 1] > y[i]) y[i] = (y[i - 1] + y[i + 1]) / 2;
    return 1;
}

int QoMathFilterScaleWlRegion(int mode, float* y, float* x, int n, float lo, float hi,
                              float factor)
{
    if (mode != 0 || !y || !x) return -1;
    for (int i = 0; i < n; ++i)
        if (lo <= x[i] && x[i] <= hi) y[i] *= factor;
    return 1;
}

int QoMathFilterDistributeNegativeValues(const float* wl, float* y, int n, float floor)
{
    if (!wl || !y || n < 1) return -1;
    double total = 0.0;
    for (int i = 0; i < n; ++i) total += y[i];
    if (total < static_cast<double>(n) * floor) return -2;
    const double f = floor;
    for (int i = 0; i < n; ++i) {
        if (!(y[i] < floor)) continue;
        double need = f - y[i];
        y[i] = floor;
        // Walk outwards, the nearer wavelength first (the lower index on a
        // tie), taking from values above the floor down to the floor at most.
        int l = i - 1, r = i + 1;
        while (need > 0.0 && (l >= 0 || r < n)) {
            int j;
            if (l < 0)
                j = r++;
            else if (r >= n)
                j = l--;
            else if (static_cast<double>(wl[r]) - wl[i] < static_cast<double>(wl[i]) - wl[l])
                j = r++;
            else
                j = l--;
            if (!(y[j] > floor)) continue;
            const double spare = static_cast<double>(y[j]) - f;
            if (spare <= need) {
                need -= spare;
                y[j] = floor;
            } else {
                y[j] = static_cast<float>(y[j] - need);
                need = 0.0;
            }
        }
    }
    return 1;
}

int SNFilter(double* y, int n, int control, double p1, double p2, double p3)
{
    if (!y || n < 7 || (control != 0 && control != 1)) return -1;
    if (!(p2 >= 0.0 && p2 <= 1.0) || !std::isfinite(p1) || !std::isfinite(p3)) return -1;
    if (p3 <= 0.0) p3 = 65535.0;
    if (p3 <= p1) return -1;
    return guarded(-2, [&] {
        const std::size_t count = static_cast<std::size_t>(n);
        // Smooth curve: 7-point quadratic Savitzky-Golay where the window
        // holds no saturated value, the value itself elsewhere.
        std::vector<double> s(y, y + n);
        static constexpr double c[7] = {-2, 3, 6, 7, 6, 3, -2};
        for (std::size_t i = 3; i + 3 < count; ++i) {
            double sum = 0.0;
            bool saturated = false;
            for (std::size_t j = 0; j < 7; ++j) {
                sum += c[j] * y[i + j - 3];
                saturated = saturated || y[i + j - 3] >= p3;
            }
            if (!saturated) s[i] = sum / 21.0;
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (!(y[i] < p3) || !std::isfinite(s[i])) continue;
            const double signal = std::max(s[i] - p1, 0.0);
            const double sigma = std::sqrt(signal + 1.0);
            double b = p2;
            if (control == 0) {
                const double snr = signal / sigma;
                b = std::fabs(y[i] - s[i]) > 5.0 * sigma ? 0.0 : p2 / (1.0 + snr * snr / 100.0);
            }
            y[i] += b * (s[i] - y[i]);
        }
        return 1;
    });
}

}  // extern "C"
