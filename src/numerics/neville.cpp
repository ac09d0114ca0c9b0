#include "numerics/neville.hpp"

#include <cmath>
#include <vector>

namespace qomath::numerics {

namespace {

template <std::size_t K>
using Row = std::array<float, K>;

// The tableau proper, on caller-provided correction rows c and d (n each).
template <std::size_t K>
int neville_tableau(const float* xa, const std::array<const float*, K>& ya, int n, float x,
                    Row<K>& y, Row<K>& dy, Row<K>* c, Row<K>* d)
{
    int ns = 0;  // nearest abscissa; the first of equal distances is kept
    float dif = std::fabs(x - xa[0]);
    for (int i = 0; i < n; ++i) {
        const float dift = std::fabs(x - xa[i]);
        if (dift < dif) {
            ns = i;
            dif = dift;
        }
        for (std::size_t j = 0; j < K; ++j) c[i][j] = d[i][j] = ya[j][i];
    }
    for (std::size_t j = 0; j < K; ++j) y[j] = ya[j][ns];
    if (n < 2) return 1;
    // From here ns counts the corrections taken on the lower side; starting
    // one below the nearest point mirrors the classic one-based formulation.
    --ns;
    for (int m = 1; m < n; ++m) {
        for (int i = 0; i < n - m; ++i) {
            const float ho = xa[i] - x;
            const float hp = xa[i + m] - x;
            const float den = ho - hp;
            if (std::fabs(den) < 1e-18f) return 0;
            for (std::size_t j = 0; j < K; ++j) {
                const float t = (c[i + 1][j] - d[i][j]) / den;
                d[i][j] = hp * t;
                c[i][j] = ho * t;
            }
        }
        const bool upper = 2 * (ns + 1) < n - m;
        for (std::size_t j = 0; j < K; ++j) {
            dy[j] = upper ? c[ns + 1][j] : d[ns][j];
            y[j] += dy[j];
        }
        if (!upper) --ns;
    }
    return 1;
}

}  // namespace

template <std::size_t K>
int neville_many(std::span<const float> xa, const std::array<const float*, K>& ya, float x,
                 std::array<float, K>& y, std::array<float, K>& dy)
{
    const int n = static_cast<int>(xa.size());
    if (n < 1) return 0;
    constexpr int kStackPoints = 7;
    if (n <= kStackPoints) {
        std::array<Row<K>, kStackPoints> c, d;
        return neville_tableau<K>(xa.data(), ya, n, x, y, dy, c.data(), d.data());
    }
    std::vector<Row<K>> c(static_cast<std::size_t>(n)), d(static_cast<std::size_t>(n));
    return neville_tableau<K>(xa.data(), ya, n, x, y, dy, c.data(), d.data());
}

template int neville_many<1>(std::span<const float>, const std::array<const float*, 1>&, float,
                             std::array<float, 1>&, std::array<float, 1>&);
template int neville_many<3>(std::span<const float>, const std::array<const float*, 3>&, float,
                             std::array<float, 3>&, std::array<float, 3>&);

int neville(std::span<const float> xa, std::span<const float> ya, float x, float& y, float& dy)
{
    const std::size_t n = xa.size() < ya.size() ? xa.size() : ya.size();
    std::array<float, 1> y1{y}, dy1{dy};
    const int status = neville_many<1>(xa.first(n), {ya.data()}, x, y1, dy1);
    // Only what the kernel wrote goes back (y stays untouched when n < 1).
    if (n >= 1) {
        y = y1[0];
        dy = dy1[0];
    }
    return status;
}

}  // namespace qomath::numerics
