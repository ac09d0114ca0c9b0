// Running median and mean: the sliding kernels, MedianFilter1d and
// MedianMeanFilter1d.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "common/barrier.hpp"
#include "numerics/sliding.hpp"
#include "qomath/filters.h"

namespace qomath::numerics {

void sliding_order(std::span<const float> src, std::size_t w, std::size_t k,
                   std::span<float> out)
{
    if (out.empty()) return;
    // NaN is kept in the sorted window as +infinity and counted apart; any
    // count makes the output NaN, so the stand-in never shows.
    constexpr float inf = std::numeric_limits<float>::infinity();
    auto key = [](float v) { return std::isnan(v) ? inf : v; };
    std::size_t nans = 0;
    std::vector<float> win(w);
    for (std::size_t j = 0; j < w; ++j) {
        nans += std::isnan(src[j]) ? 1 : 0;
        win[j] = key(src[j]);
    }
    std::sort(win.begin(), win.end());
    float* const s = win.data();
    for (std::size_t i = 0;; ++i) {
        out[i] = nans ? std::numeric_limits<float>::quiet_NaN() : s[k];
        if (i + 1 == out.size()) break;
        const float leaving = src[i], entering = src[i + w];
        nans = nans - (std::isnan(leaving) ? 1 : 0) + (std::isnan(entering) ? 1 : 0);
        const float old = key(leaving), v = key(entering);
        if (old == v) continue;
        std::size_t p = static_cast<std::size_t>(std::lower_bound(s, s + w, old) - s);
        if (v > old) {
            while (p + 1 < w && s[p + 1] < v) {
                s[p] = s[p + 1];
                ++p;
            }
        } else {
            while (p > 0 && s[p - 1] > v) {
                s[p] = s[p - 1];
                --p;
            }
        }
        s[p] = v;
    }
}

void sliding_mean(std::span<const float> src, std::size_t w, std::span<float> out)
{
    if (out.empty()) return;
    const std::size_t len = out.size() + w - 1;
    std::vector<double> prefix(len), suffix(len);
    for (std::size_t start = 0; start < len; start += w) {
        const std::size_t end = std::min(start + w, len);
        double run = 0.0;
        for (std::size_t j = start; j < end; ++j) prefix[j] = run += src[j];
        run = 0.0;
        for (std::size_t j = end; j-- > start;) suffix[j] = run += src[j];
    }
    const double dw = static_cast<double>(w);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const std::size_t last = i + w - 1;
        const double sum = i % w == 0 ? prefix[last] : suffix[i] + prefix[last];
        out[i] = std::fabs(sum) > 1e-15 ? static_cast<float>(sum / dw) : 0.0f;
    }
}

}  // namespace qomath::numerics

using qomath::detail::guarded;

extern "C" {

int MedianFilter1d(float* y, int n, int w)
{
    if (!y || n < 3) return -1;
    if (w < 3 || w > n) return -2;
    return guarded(-3, [&] {
        const auto count = static_cast<std::size_t>(n), pad = static_cast<std::size_t>(w) - 1;
        // w - 1 copies of y[0], y[1..n-2], w - 1 copies of y[n-1]: n + 2w - 4.
        // The padding of w - 1 (not w/2) makes windows beyond 3 lag behind
        // the sample; hosts align their spectra to that lag.
        std::vector<float> padded(count + 2 * pad - 2);
        std::fill_n(padded.begin(), pad, y[0]);
        std::copy(y + 1, y + n - 1, padded.begin() + static_cast<std::ptrdiff_t>(pad));
        std::fill(padded.end() - static_cast<std::ptrdiff_t>(pad), padded.end(), y[n - 1]);
        const std::size_t ww = pad + 1;
        qomath::numerics::sliding_order(padded, ww, ww / 2, std::span<float>(y, count));
        return 1;
    });
}

int MedianMeanFilter1d(float* y, int n, int w, int flag)
{
    if (!y || n < 5) return -1;
    if (w < 1 || 3 * std::int64_t{w} > n) return -2;
    return guarded(-3, [&] {
        const std::size_t count = static_cast<std::size_t>(n), ww = static_cast<std::size_t>(w);
        // y[i] at w-1+i; w-1 copies of y[0] before, w copies of y[n-1] after.
        std::vector<float> padded(count + 2 * ww);
        std::fill_n(padded.begin(), ww - 1, y[0]);
        std::copy(y, y + n, padded.begin() + static_cast<std::ptrdiff_t>(ww - 1));
        std::fill(padded.begin() + static_cast<std::ptrdiff_t>(ww - 1 + count), padded.end(),
                  y[n - 1]);
        // Output i reads padded[i + w/2 .. i + w/2 + w - 1]: centred for odd
        // w, y[i - w/2 + 1 .. i + w/2] for even w.
        const std::span<const float> src(padded.data() + ww / 2, count + ww - 1);
        if (flag == 0)
            qomath::numerics::sliding_order(src, ww, ww / 2, std::span<float>(y, count));
        else
            qomath::numerics::sliding_mean(src, ww, std::span<float>(y, count));
        return 1;
    });
}

}  // extern "C"
