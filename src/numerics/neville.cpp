#include "numerics/neville.hpp"

#include <array>
#include <cmath>
#include <vector>

namespace qomath::numerics {

namespace {

// The tableau proper, on caller-provided correction arrays c and d (n each).
int neville_tableau(const float* xa, const float* ya, int n, float x, float& y, float& dy, float* c,
                    float* d)
{
    int ns = 0;  // nearest abscissa; the first of equal distances is kept
    float dif = std::fabs(x - xa[0]);
    for (int i = 0; i < n; ++i) {
        const float dift = std::fabs(x - xa[i]);
        if (dift < dif) {
            ns = i;
            dif = dift;
        }
        c[i] = ya[i];
        d[i] = ya[i];
    }
    y = ya[ns];
    if (n < 2) return 1;
    // From here ns counts the corrections taken on the lower side; starting
    // one below the nearest point mirrors the classic one-based formulation.
    --ns;
    for (int m = 1; m < n; ++m) {
        for (int i = 0; i < n - m; ++i) {
            const float ho = xa[i] - x;
            const float hp = xa[i + m] - x;
            const float w = c[i + 1] - d[i];
            float den = ho - hp;
            if (std::fabs(den) < 1e-18f) return 0;
            den = w / den;
            d[i] = hp * den;
            c[i] = ho * den;
        }
        dy = (2 * (ns + 1) < n - m) ? c[ns + 1] : d[ns--];
        y += dy;
    }
    return 1;
}

}  // namespace

int neville(std::span<const float> xa, std::span<const float> ya, float x, float& y, float& dy)
{
    const int n = static_cast<int>(xa.size() < ya.size() ? xa.size() : ya.size());
    if (n < 1) return 0;
    constexpr int kStackPoints = 7;
    if (n <= kStackPoints) {
        std::array<float, kStackPoints> c, d;
        return neville_tableau(xa.data(), ya.data(), n, x, y, dy, c.data(), d.data());
    }
    std::vector<float> c(static_cast<size_t>(n)), d(static_cast<size_t>(n));
    return neville_tableau(xa.data(), ya.data(), n, x, y, dy, c.data(), d.data());
}

}  // namespace qomath::numerics
