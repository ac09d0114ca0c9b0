#include "numerics/neville.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace qomath::numerics {

namespace {

// Four float lanes: a vector register where the compiler offers one. Every
// lane does the same IEEE single-precision operations as the scalar code.
#if defined(__GNUC__) || defined(__clang__)
typedef float Lane4 __attribute__((vector_size(16)));
#else
struct Lane4 {
    float v[4];
    float& operator[](std::size_t i) { return v[i]; }
    float operator[](std::size_t i) const { return v[i]; }
    friend Lane4 operator-(Lane4 a, Lane4 b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2], a[3] - b[3]}; }
    friend Lane4 operator+(Lane4 a, Lane4 b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3]}; }
    friend Lane4 operator/(Lane4 a, float s) { return {a[0] / s, a[1] / s, a[2] / s, a[3] / s}; }
    friend Lane4 operator*(float s, Lane4 a) { return {s * a[0], s * a[1], s * a[2], s * a[3]}; }
};
#endif

// The lane type for K arrays: a plain float for one, four lanes for more.
template <std::size_t K>
struct LaneOf {
    static_assert(K <= 4);
    using type = Lane4;
    static type load(const std::array<const float*, K>& ya, int i)
    {
        type v{};
        for (std::size_t j = 0; j < 4; ++j) v[j] = ya[j < K ? j : 0][i];
        return v;
    }
    static float get(const type& v, std::size_t j) { return v[j]; }
};
template <>
struct LaneOf<1> {
    using type = float;
    static type load(const std::array<const float*, 1>& ya, int i) { return ya[0][i]; }
    static float get(const type& v, std::size_t) { return v; }
};

// The tableau proper, on caller-provided correction arrays c and d (n each).
template <std::size_t K>
int neville_tableau(const float* xa, const std::array<const float*, K>& ya, int n, float x,
                    std::array<float, K>& y_out, std::array<float, K>& dy_out,
                    typename LaneOf<K>::type* c, typename LaneOf<K>::type* d)
{
    using V = typename LaneOf<K>::type;
    int ns = 0;  // nearest abscissa; the first of equal distances is kept
    float dif = std::fabs(x - xa[0]);
    for (int i = 0; i < n; ++i) {
        const float dift = std::fabs(x - xa[i]);
        if (dift < dif) {
            ns = i;
            dif = dift;
        }
        c[i] = d[i] = LaneOf<K>::load(ya, i);
    }
    V y = c[ns];
    V dy{};
    bool dy_set = false;
    int status = 1;
    if (n >= 2) {
        // From here ns counts the corrections taken on the lower side;
        // starting one below the nearest point mirrors the classic one-based
        // formulation.
        --ns;
        for (int m = 1; m < n && status == 1; ++m) {
            for (int i = 0; i < n - m; ++i) {
                const float ho = xa[i] - x;
                const float hp = xa[i + m] - x;
                const float den = ho - hp;
                if (std::fabs(den) < 1e-18f) {
                    status = 0;  // y keeps the partial sum
                    break;
                }
                const V t = (c[i + 1] - d[i]) / den;
                d[i] = hp * t;
                c[i] = ho * t;
            }
            if (status != 1) break;
            dy = (2 * (ns + 1) < n - m) ? c[ns + 1] : d[ns--];
            dy_set = true;
            y = y + dy;
        }
    }
    for (std::size_t j = 0; j < K; ++j) {
        y_out[j] = LaneOf<K>::get(y, j);
        if (dy_set) dy_out[j] = LaneOf<K>::get(dy, j);
    }
    return status;
}

}  // namespace

template <std::size_t K>
int neville_many(std::span<const float> xa, const std::array<const float*, K>& ya, float x,
                 std::array<float, K>& y, std::array<float, K>& dy)
{
    using V = typename LaneOf<K>::type;
    const int n = static_cast<int>(xa.size());
    if (n < 1) return 0;
    constexpr int kStackPoints = 7;
    if (n <= kStackPoints) {
        V c[kStackPoints], d[kStackPoints];
        return neville_tableau<K>(xa.data(), ya, n, x, y, dy, c, d);
    }
    std::vector<V> c(static_cast<std::size_t>(n)), d(static_cast<std::size_t>(n));
    return neville_tableau<K>(xa.data(), ya, n, x, y, dy, c.data(), d.data());
}

namespace {

// The tableaux of a group in one loop. Returns false, with outputs unwritten,
// when any meets coincident abscissae; the caller then solves them one by
// one for the exact partial results.
template <std::size_t K, std::size_t P>
bool joint_tableau(const std::array<NevilleProblem<K>*, P>& pr, int n)
{
    using V = typename LaneOf<K>::type;
    constexpr int kMax = 7;
    V c[P][kMax], d[P][kMax], y[P], dy[P];
    int ns[P];
    for (std::size_t p = 0; p < P; ++p) {
        const float* xa = pr[p]->xa.data();
        const float x = pr[p]->x;
        ns[p] = 0;
        float dif = std::fabs(x - xa[0]);
        for (int i = 0; i < n; ++i) {
            const float dift = std::fabs(x - xa[i]);
            if (dift < dif) {
                ns[p] = i;
                dif = dift;
            }
            c[p][i] = d[p][i] = LaneOf<K>::load(pr[p]->ya, i);
        }
        y[p] = c[p][ns[p]];
        --ns[p];
    }
    for (int m = 1; m < n; ++m) {
        for (int i = 0; i < n - m; ++i) {
            for (std::size_t p = 0; p < P; ++p) {
                const float ho = pr[p]->xa[static_cast<std::size_t>(i)] - pr[p]->x;
                const float hp = pr[p]->xa[static_cast<std::size_t>(i + m)] - pr[p]->x;
                const float den = ho - hp;
                if (std::fabs(den) < 1e-18f) return false;
                const V t = (c[p][i + 1] - d[p][i]) / den;
                d[p][i] = hp * t;
                c[p][i] = ho * t;
            }
        }
        for (std::size_t p = 0; p < P; ++p) {
            dy[p] = (2 * (ns[p] + 1) < n - m) ? c[p][ns[p] + 1] : d[p][ns[p]--];
            y[p] = y[p] + dy[p];
        }
    }
    for (std::size_t p = 0; p < P; ++p)
        for (std::size_t j = 0; j < K; ++j) {
            pr[p]->y[j] = LaneOf<K>::get(y[p], j);
            pr[p]->dy[j] = LaneOf<K>::get(dy[p], j);
        }
    return true;
}

}  // namespace

template <std::size_t K, std::size_t P>
std::array<int, P> neville_group(const std::array<NevilleProblem<K>*, P>& group)
{
    const std::size_t n = group[0]->xa.size();
    const bool same = std::all_of(group.begin(), group.end(),
                                  [n](const NevilleProblem<K>* pr) { return pr->xa.size() == n; });
    std::array<int, P> status;
    if (same && n >= 2 && n <= 7 && joint_tableau<K, P>(group, static_cast<int>(n))) {
        status.fill(1);
        return status;
    }
    for (std::size_t p = 0; p < P; ++p) {
        NevilleProblem<K>& pr = *group[p];
        status[p] = neville_many<K>(pr.xa, pr.ya, pr.x, pr.y, pr.dy);
    }
    return status;
}

template std::array<int, 4> neville_group<1, 4>(const std::array<NevilleProblem<1>*, 4>&);
template std::array<int, 4> neville_group<3, 4>(const std::array<NevilleProblem<3>*, 4>&);

template int neville_many<1>(std::span<const float>, const std::array<const float*, 1>&, float,
                             std::array<float, 1>&, std::array<float, 1>&);
template int neville_many<3>(std::span<const float>, const std::array<const float*, 3>&, float,
                             std::array<float, 3>&, std::array<float, 3>&);

int neville(std::span<const float> xa, std::span<const float> ya, float x, float& y, float& dy)
{
    const std::size_t n = xa.size() < ya.size() ? xa.size() : ya.size();
    std::array<float, 1> y1{y}, dy1{dy};
    const int status = neville_many<1>(xa.first(n), {ya.data()}, x, y1, dy1);
    y = y1[0];
    dy = dy1[0];
    return status;
}

}  // namespace qomath::numerics
