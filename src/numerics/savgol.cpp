// Savitzky-Golay: coefficients (FilterSavgol), the fixed 7-point cubic
// smoother (QOSmoothArray) and smoothing of a span.
#include "numerics/savgol.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

#include "common/barrier.hpp"
#include "numerics/convolution.hpp"
#include "qomath/filters.h"
#include "qomath/linalg.h"

namespace qomath::numerics {

int savgol_coefficients(int nl, int nr, int ld, int m, std::span<float> coef)
{
    if (nl < 0 || nr < 0 || ld < 0 || ld > m || std::int64_t{nl} + nr < m) return -1;
    if (coef.size() != static_cast<std::size_t>(std::int64_t{nl} + nr + 1)) return -1;
    const std::size_t mm = static_cast<std::size_t>(m) + 1;
    if (mm > 46340) return -2;  // (m+1)^2 floats stay far inside int and size_t
    // Normal matrix indexed from 1 for LUDCMP: rows 1..m+1 of m+2 floats.
    std::vector<float> store((mm + 1) * (mm + 1), 0.0f), b(mm + 1, 0.0f);
    std::vector<float*> rows(mm + 1);
    std::vector<int> indx(mm + 1, 0);
    for (std::size_t r = 0; r <= mm; ++r) rows[r] = &store[r * (mm + 1)];

    // Moment sums s[p] = [p == 0] + sum_{k=1..nr} k^p + sum_{k=1..nl} (-k)^p,
    // powers in double, sums in float, in that order for every p.
    const std::size_t np2 = 2 * static_cast<std::size_t>(m) + 1;
    std::vector<float> s(np2, 0.0f);
    s[0] = 1.0f;
    auto add_powers = [&](int count, double sign) {
        for (int k = 1; k <= count; ++k) {
            double pw = 1.0;
            for (std::size_t p = 0; p < np2; ++p) {
                s[p] += pw;
                pw *= sign * k;
            }
        }
    };
    add_powers(nr, 1.0);
    add_powers(nl, -1.0);
    for (int p = 0; p <= 2 * m; ++p) {
        const int mx = std::min(p, 2 * m - p);
        for (int q = -mx; q <= mx; q += 2) rows[1 + (p + q) / 2][1 + (p - q) / 2] = s[p];
    }
    float d = 0.0f;
    const int lu = LUDCMP(rows.data(), m + 1, indx.data(), &d);
    if (lu == -4) return -2;
    if (lu != 1) return -1;
    b[static_cast<std::size_t>(ld) + 1] = 1.0f;
    if (LUBKSB(rows.data(), m + 1, indx.data(), b.data()) != 1) return -1;

    std::vector<float> out(coef.size());
    for (int k = -nl; k <= nr; ++k) {
        float sum = b[1], fac = 1.0f;
        for (std::size_t j = 1; j < mm; ++j) {
            fac *= static_cast<float>(k);
            sum += b[j + 1] * fac;
        }
        if (!std::isfinite(sum)) return -1;
        out[static_cast<std::size_t>(k + nl)] = sum;
    }
    std::copy(out.begin(), out.end(), coef.begin());
    return 1;
}

int savgol_smooth(std::span<float> y, int half, int order)
{
    if (half < 0 || order < 0 || order > 2 * std::int64_t{half}) return -1;
    const std::size_t n = y.size(), h = static_cast<std::size_t>(half);
    if (n < 2 * h + 1) return -1;
    return detail::guarded(-2, [&] {
        const std::size_t taps = 2 * h + 1;
        std::vector<float> coef(taps), flipped(taps), full(n + taps - 1);
        if (int rc = savgol_coefficients(half, half, 0, order, coef); rc != 1) return rc;
        // Interior: a convolution with the flipped coefficients; output i
        // sits at full[i + h].
        std::reverse_copy(coef.begin(), coef.end(), flipped.begin());
        convolve_full(y.data(), n, flipped.data(), taps, full.data());
        // Ends: shortened windows from the left, mirrored at the right
        // (smoothing coefficients of (a, b) are those of (b, a) reversed).
        std::vector<float> head(h), tail(h), ec(taps + static_cast<std::size_t>(order));
        for (std::size_t i = 0; i < h; ++i) {
            const int nl = static_cast<int>(i);
            const int nr = std::max(half, order - nl);
            std::span<float> c(ec.data(), static_cast<std::size_t>(nl + nr + 1));
            if (int rc = savgol_coefficients(nl, nr, 0, order, c); rc != 1) return rc;
            double lsum = 0.0, rsum = 0.0;
            for (std::size_t j = 0; j < c.size(); ++j) {
                lsum += static_cast<double>(c[j]) * y[j];              // offset j - i from i
                rsum += static_cast<double>(c[j]) * y[n - 1 - j];      // mirrored from n-1-i
            }
            head[i] = static_cast<float>(lsum);
            tail[i] = static_cast<float>(rsum);
        }
        for (std::size_t i = h; i + h < n; ++i) y[i] = full[i + h];
        for (std::size_t i = 0; i < h; ++i) {
            y[i] = head[i];
            y[n - 1 - i] = tail[i];
        }
        return 1;
    });
}

}  // namespace qomath::numerics

using qomath::detail::guarded;

extern "C" {

int FilterSavgol(float* c, int np, int nl, int nr, int ld, int m)
{
    if (!c) return -1;
    if (std::int64_t{np} < std::int64_t{nl} + nr + 1 || nl < 0 || nr < 0 || ld > m ||
        std::int64_t{nl} + nr < m || ld < 0)
        return -1;
    return guarded(-2, [&] {
        std::vector<float> coef(static_cast<std::size_t>(nl) + static_cast<std::size_t>(nr) + 1);
        if (int rc = qomath::numerics::savgol_coefficients(nl, nr, ld, m, coef); rc != 1) return rc;
        // ld > 0 gives the ld-th polynomial coefficient itself (no ld!
        // factor): callers scale derivatives themselves.
        std::fill(c + 1, c + 1 + np, 0.0f);
        // Wrap-around order from index 1: offset k at c[((np - k) mod np) + 1].
        for (int k = -nl; k <= nr; ++k)
            c[((np - k) % np) + 1] = coef[static_cast<std::size_t>(k + nl)];
        return 1;
    });
}

int QOSmoothArray(float* y, int n)
{
    if (!y || n < 7) return 0;
    return guarded(0, [&] {
        const std::size_t count = static_cast<std::size_t>(n);
        std::vector<float> out(count);
        static constexpr float end[3][7] = {{39, 8, -4, -4, 1, 4, -2},
                                            {8, 19, 16, 6, -4, -7, 4},
                                            {-4, 16, 19, 12, 2, -4, 1}};
        for (std::size_t r = 0; r < 3; ++r) {
            double head = 0.0, tail = 0.0;
            for (std::size_t j = 0; j < 7; ++j) {
                head += end[r][j] * static_cast<double>(y[j]);
                tail += end[r][j] * static_cast<double>(y[count - 1 - j]);
            }
            out[r] = static_cast<float>(head / 42.0);
            out[count - 1 - r] = static_cast<float>(tail / 42.0);
        }
        // The outer weight 0.09523811 is 2/21 as hosts' smoothed data have it.
        for (std::size_t i = 3; i + 3 < count; ++i)
            out[i] = (y[i - 2] + y[i + 2]) / 7.0f - (y[i - 3] + y[i + 3]) * 0.09523811f +
                     (y[i - 1] + y[i + 1]) / 3.5f + y[i] / 3.0f;
        std::copy(out.begin(), out.end(), y);
        return 1;
    });
}

}  // extern "C"
