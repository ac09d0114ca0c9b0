// The Neville interpolation kernel shared by the polynomial tools, the
// interpolators and the fine spectrum locus.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace qomath::numerics {

// Interpolates the polynomial through (xa[k], ya[k]), k = 0..n-1 (n = xa.size()),
// at x. y receives the value, dy the last correction. Returns 1; 0 when n < 1
// (y untouched) or two abscissae coincide (|difference| < 1e-18; y then holds
// the partial sum). Float arithmetic throughout: stored results depend on it.
// Allocates nothing for n <= 7.
int neville(std::span<const float> xa, std::span<const float> ya, float x, float& y, float& dy);

// The same for K ordinate arrays over one set of abscissae (ya[j] points to
// xa.size() values): y[j] and dy[j] are exactly what neville() gives for
// ya[j] alone; the shared work (nearest point, differences) is done once and
// the K tableaux run side by side.
template <std::size_t K>
int neville_many(std::span<const float> xa, const std::array<const float*, K>& ya, float x,
                 std::array<float, K>& y, std::array<float, K>& dy);

// One Neville problem of a batch: abscissae, K ordinate arrays, the point,
// and the results (y and dy as neville_many leaves them).
template <std::size_t K>
struct NevilleProblem {
    std::span<const float> xa;
    std::array<const float*, K> ya;
    float x;
    std::array<float, K> y;
    std::array<float, K> dy;
};

// Solves P problems at once: where all have the same point count (up to 7)
// their tableaux run in one loop so that the dependency chains overlap.
// Each result and status is exactly what neville_many gives for it alone.
template <std::size_t K, std::size_t P>
std::array<int, P> neville_group(const std::array<NevilleProblem<K>*, P>& group);

}  // namespace qomath::numerics
