// Resampling a spectrum onto another grid: the cached polynomial
// interpolator every colorimetric calculation goes through, clamped linear
// interpolation, and the evenly spaced variant.
#include "qomath/interpolation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "common/barrier.hpp"
#include "numerics/interpolation.hpp"
#include "numerics/neville.hpp"
#include "numerics/resample.hpp"
#include "qomath/grid.h"

namespace qomath::numerics {

// The interpolation mode and the result cache of Interpolate2. The
// process-wide instance is unguarded (the host serialises these calls) and
// never released.
struct Interpolate2State::Data {
    bool linear = false;
    // The last call's counts, its source VALUES, its destination WAVELENGTHS
    // and its result. The buffers only grow.
    int n_src = 0;
    int n_dst = 0;
    std::vector<float> src_values;
    std::vector<float> dst_wavelengths;
    std::vector<float> result;

    bool holds(std::span<const float> y_src, std::span<const float> x_dst) const
    {
        return n_src == static_cast<int>(y_src.size()) && n_dst == static_cast<int>(x_dst.size()) &&
               std::equal(y_src.begin(), y_src.end(), src_values.begin()) &&
               std::equal(x_dst.begin(), x_dst.end(), dst_wavelengths.begin());
    }

    void remember_key(std::span<const float> y_src, std::span<const float> x_dst)
    {
        if (y_src.size() > src_values.size() || x_dst.size() > result.size()) {
            // Grow all three at once; on failure the old key stays intact.
            std::vector<float> v(std::max(y_src.size(), src_values.size()));
            std::vector<float> w(std::max(x_dst.size(), dst_wavelengths.size()));
            std::vector<float> r(w.size());
            src_values.swap(v);
            dst_wavelengths.swap(w);
            result.swap(r);
        }
        std::copy(y_src.begin(), y_src.end(), src_values.begin());
        std::copy(x_dst.begin(), x_dst.end(), dst_wavelengths.begin());
        n_src = static_cast<int>(y_src.size());
        n_dst = static_cast<int>(x_dst.size());
    }

    // Constant tables (the CIE functions, illuminants, test colours) already
    // resampled onto a destination grid, keyed on the grid's wavelengths and
    // the mode: values before the clamp, and the status of their call. At
    // most kGrids grids are kept, the least recently used going first.
    struct Table {
        const float* xs;
        const float* ys;
        std::size_t ns;
        int status;
        std::vector<float> values;   // as computed (what the cache's result holds)
        std::vector<float> clamped;  // as returned
    };
    struct Grid {
        std::vector<float> xd;
        bool linear = false;
        std::uint64_t used = 0;
        std::vector<Table> tables;
        const Table* find(std::span<const float> xs, std::span<const float> ys) const
        {
            for (const Table& t : tables)
                if (t.ys == ys.data() && t.xs == xs.data() && t.ns == ys.size()) return &t;
            return nullptr;
        }
    };
    static constexpr std::size_t kGrids = 4;
    std::vector<Grid> grids;
    std::uint64_t clock = 0;

    Grid& grid(std::span<const float> xd)
    {
        Grid* lru = nullptr;
        for (Grid& g : grids) {
            if (g.linear == linear && g.xd.size() == xd.size() &&
                std::equal(xd.begin(), xd.end(), g.xd.begin())) {
                g.used = ++clock;
                return g;
            }
            if (!lru || g.used < lru->used) lru = &g;
        }
        if (grids.size() < kGrids) lru = &grids.emplace_back();
        lru->xd.assign(xd.begin(), xd.end());
        lru->linear = linear;
        lru->tables.clear();
        lru->used = ++clock;
        return *lru;
    }
};

namespace {

std::span<const float> cspan(const float* p, int n)
{
    return {p, static_cast<std::size_t>(n)};
}
std::span<float> mspan(float* p, int n)
{
    return {p, static_cast<std::size_t>(n)};
}

double distance(float a, float b)
{
    return std::fabs(static_cast<double>(a) - static_cast<double>(b));
}

// Index of the source wavelength nearest to x: the lowest index among equal
// distances, and 0 when nothing is nearer than 99999999.9 (a NaN, say).
// On an increasing grid the two neighbours of x decide; otherwise every
// point is looked at.
std::size_t nearest(std::span<const float> xs, bool increasing, float x, std::size_t& hint)
{
    constexpr double kFar = 99999999.9;
    if (!increasing) {
        std::size_t k = 0;
        double best = kFar;
        for (std::size_t j = 0; j < xs.size(); ++j) {
            const double d = distance(x, xs[j]);
            if (d < best) {
                best = d;
                k = j;
            }
        }
        return k;
    }
    // The first wavelength above x: destinations usually rise, so walk a few
    // steps on from the last answer before falling back to bisection.
    std::size_t above = hint;
    bool found = false;
    if (above <= xs.size() && (above == 0 || xs[above - 1] <= x)) {
        for (int steps = 0; steps < 8 && above < xs.size() && xs[above] <= x; ++steps) ++above;
        found = above == xs.size() || xs[above] > x;
    }
    if (!found) above = static_cast<std::size_t>(std::upper_bound(xs.begin(), xs.end(), x) - xs.begin());
    hint = above;
    std::size_t k = above == 0 ? 0 : above - 1;
    if (k + 1 < xs.size() && distance(x, xs[k + 1]) < distance(x, xs[k])) ++k;
    // Rounding can make far neighbours tie; the scan keeps the first of them.
    while (k > 0 && distance(x, xs[k - 1]) == distance(x, xs[k])) --k;
    return distance(x, xs[k]) < kFar ? k : 0;
}

// The polynomial path of Interpolate2 for K value arrays at once. Returns the
// status of the last Neville call (1 when every point sat on a source
// wavelength); it is the same for every array, since only the wavelengths
// decide it.
template <std::size_t K>
int interpolate_polynomial(std::span<const float> xs, const std::array<std::span<const float>, K>& ys,
                           std::span<const float> xd, const std::array<std::span<float>, K>& yd)
{
    const bool increasing = strictly_increasing(xs);
    const std::size_t last = xs.size() - 1;
    std::size_t hint = 0;
    int status = 1;
    // Points that need the kernel are solved a group at a time, in point order.
    constexpr std::size_t kGroup = 4;
    std::array<NevilleProblem<K>, kGroup> pending;
    std::array<std::size_t, kGroup> pending_at;
    std::size_t waiting = 0;
    auto store = [&](const NevilleProblem<K>& pr, std::size_t i) {
        for (std::size_t j = 0; j < K; ++j) yd[j][i] = pr.y[j];
    };
    auto flush_singly = [&] {
        for (std::size_t p = 0; p < waiting; ++p) {
            NevilleProblem<K>& pr = pending[p];
            status = neville_many<K>(pr.xa, pr.ya, pr.x, pr.y, pr.dy);
            store(pr, pending_at[p]);
        }
        waiting = 0;
    };
    for (std::size_t i = 0; i < xd.size(); ++i) {
        const float x = xd[i];
        const std::size_t k = nearest(xs, increasing, x, hint);
        if (distance(x, xs[k]) < 0.0001) {
            for (std::size_t j = 0; j < K; ++j) yd[j][i] = ys[j][k];
            continue;
        }
        // The window lo+1 .. hi around k: in the interior the six points
        // k-2 .. k+3; near the start sample 0 takes part only through the
        // exact-match test above. Stored results depend on this window.
        const std::size_t lo = k >= 3 ? k - 3 : 0;
        const std::size_t hi = std::min(k + 3, last);
        NevilleProblem<K>& pr = pending[waiting];
        pr.xa = xs.subspan(lo + 1, hi - lo);
        pr.x = x;
        for (std::size_t j = 0; j < K; ++j) {
            pr.ya[j] = ys[j].data() + lo + 1;
            pr.y[j] = yd[j][i];  // what a failing kernel leaves in place
        }
        pending_at[waiting++] = i;
        if (waiting == kGroup) {
            std::array<NevilleProblem<K>*, kGroup> group;
            for (std::size_t p = 0; p < kGroup; ++p) group[p] = &pending[p];
            status = neville_group<K, kGroup>(group).back();
            for (std::size_t p = 0; p < kGroup; ++p) store(pending[p], pending_at[p]);
            waiting = 0;
        }
    }
    flush_singly();
    return status;
}

// Index j of the first interval with xs[j] <= x <= xs[j+1], or -1 when none.
std::ptrdiff_t first_interval(std::span<const float> xs, bool increasing, float x)
{
    if (increasing) {
        if (!(x >= xs.front() && x <= xs.back())) return -1;
        const auto at = std::lower_bound(xs.begin(), xs.end(), x);
        return std::max<std::ptrdiff_t>(at - xs.begin() - 1, 0);
    }
    for (std::size_t j = 0; j + 1 < xs.size(); ++j)
        if (xs[j] <= x && x <= xs[j + 1]) return static_cast<std::ptrdiff_t>(j);
    return -1;
}

void interpolate_linear(std::span<const float> xs, std::span<const float> ys,
                        std::span<const float> xd, std::span<float> yd)
{
    const bool increasing = strictly_increasing(xs);
    for (std::size_t i = 0; i < xd.size(); ++i) {
        const float x = xd[i];
        if (x < xs.front()) {
            yd[i] = ys.front();  // constant extension at both ends
            continue;
        }
        if (x > xs.back()) {
            yd[i] = ys.back();
            continue;
        }
        const std::ptrdiff_t jj = first_interval(xs, increasing, x);
        if (jj < 0 || xs.size() < 2) {
            yd[i] = ys.back();  // unsorted data: no interval holds x
            continue;
        }
        const auto j = static_cast<std::size_t>(jj);
        if (std::fabs(x - xs[j]) < 0.0001f)
            yd[i] = ys[j];
        else if (std::fabs(x - xs[j + 1]) < 0.0001f)
            yd[i] = ys[j + 1];
        else
            yd[i] = ys[j] + (x - xs[j]) / (xs[j + 1] - xs[j]) * (ys[j + 1] - ys[j]);
    }
}

void clamp_negative(std::span<const float> ys, std::span<float> yd)
{
    // A spectrum with no negative value never gains one by interpolation.
    if (std::any_of(ys.begin(), ys.end(), [](float v) { return v < 0.0f; })) return;
    for (float& v : yd)
        if (v < 0.0f) v = 0.0f;
}

}  // namespace

Interpolate2State::Interpolate2State() : data_(std::make_unique<Data>()) {}
Interpolate2State::~Interpolate2State() = default;

Interpolate2State& process_interpolation_state()
{
    static Interpolate2State state;
    return state;
}

template <std::size_t K>
void interpolate2_many(Interpolate2State& st, std::span<const float> xs,
                       const std::array<std::span<const float>, K>& ys, std::span<const float> xd,
                       const std::array<std::span<float>, K>& yd, std::array<int, K>& status,
                       bool constant_tables)
{
    Interpolate2State::Data& cache = st.data();
    if (xs.size() < 4 || xd.size() < 4) {
        // Too few points: nothing is interpolated, but the clamp still runs.
        for (std::size_t j = 0; j < K; ++j) {
            clamp_negative(ys[j], yd[j]);
            status[j] = -1;
        }
        return;
    }
    if (K > 1 && cache.holds(ys[0], xd)) {
        // The first array is a cache hit (possibly a result computed on other
        // source wavelengths): take the calls one by one.
        for (std::size_t j = 0; j < K; ++j) {
            std::array<int, 1> one{};
            interpolate2_many<1>(st, xs, {ys[j]}, xd, {yd[j]}, one, constant_tables);
            status[j] = one[0];
        }
        return;
    }
    using Grid = Interpolate2State::Data::Grid;
    Grid* grid = nullptr;
    if (constant_tables && !cache.holds(ys[0], xd)) {
        grid = &cache.grid(xd);
        std::array<const Interpolate2State::Data::Table*, K> known{};
        bool all = true;
        for (std::size_t j = 0; j < K; ++j) all = all && (known[j] = grid->find(xs, ys[j])) != nullptr;
        if (all) {
            // What the calls would compute, and the key and result they
            // would leave behind.
            cache.remember_key(ys[K - 1], xd);
            for (std::size_t j = 0; j < K; ++j) {
                std::copy(known[j]->clamped.begin(), known[j]->clamped.end(), yd[j].begin());
                status[j] = known[j]->status;
            }
            std::copy(known[K - 1]->values.begin(), known[K - 1]->values.end(), cache.result.begin());
            return;
        }
    }
    if (K == 1 && cache.holds(ys[0], xd)) {
        // The key is the source values and the destination wavelengths only:
        // a call that differs in xSrc or in the mode gets the previous
        // result. Hosts rely on this.
        std::copy_n(cache.result.begin(), xd.size(), yd[0].begin());
        status[0] = 1;
    } else {
        // Each call would store its key before computing; the last one stays.
        cache.remember_key(ys[K - 1], xd);
        int computed = 1;
        if (cache.linear)
            for (std::size_t j = 0; j < K; ++j) interpolate_linear(xs, ys[j], xd, yd[j]);
        else
            computed = interpolate_polynomial<K>(xs, ys, xd, yd);
        for (std::size_t j = 0; j < K; ++j) {
            // A later array equal to the one before it would have hit the
            // cache: same values, status 1.
            const bool hit = j > 0 && std::equal(ys[j].begin(), ys[j].end(), ys[j - 1].begin());
            status[j] = hit ? 1 : computed;
        }
        std::copy(yd[K - 1].begin(), yd[K - 1].end(), cache.result.begin());
        if (grid)
            for (std::size_t j = 0; j < K; ++j)
                if (!grid->find(xs, ys[j]))
                    grid->tables.push_back({xs.data(), ys[j].data(), ys[j].size(), status[j],
                                            std::vector<float>(yd[j].begin(), yd[j].end()), {}});
    }
    for (std::size_t j = 0; j < K; ++j) clamp_negative(ys[j], yd[j]);
    if (grid)
        for (auto& t : grid->tables)
            for (std::size_t j = 0; j < K; ++j)
                if (t.ys == ys[j].data() && t.clamped.empty()) t.clamped.assign(yd[j].begin(), yd[j].end());
}

template void interpolate2_many<1>(Interpolate2State&, std::span<const float>,
                                   const std::array<std::span<const float>, 1>&, std::span<const float>,
                                   const std::array<std::span<float>, 1>&, std::array<int, 1>&, bool);
template void interpolate2_many<3>(Interpolate2State&, std::span<const float>,
                                   const std::array<std::span<const float>, 3>&, std::span<const float>,
                                   const std::array<std::span<float>, 3>&, std::array<int, 3>&, bool);

int interpolate2(Interpolate2State& state, const float* xSrc, const float* ySrc, int nSrc,
                 const float* xDst, float* yDst, int nDst, bool constant_table)
{
    return qomath::detail::guarded(-4, [&] {
        if (!xSrc || !ySrc || !xDst || !yDst) return -1;
        std::array<int, 1> status{};
        interpolate2_many<1>(state, cspan(xSrc, std::max(nSrc, 0)), {cspan(ySrc, std::max(nSrc, 0))},
                             cspan(xDst, std::max(nDst, 0)), {mspan(yDst, std::max(nDst, 0))},
                             status, constant_table);
        return status[0];
    });
}

}  // namespace qomath::numerics

using namespace qomath::numerics;
using qomath::detail::guarded;


extern "C" {

int Interpolate2(float* xSrc, float* ySrc, int nSrc, float* xDst, float* yDst, int nDst)
{
    return interpolate2(process_interpolation_state(), xSrc, ySrc, nSrc, xDst, yDst, nDst);
}

int LinearInterpolation(float* xSrc, float* ySrc, int nSrc, float* xDst, float* yDst, int nDst)
{
    if (nDst < 1) return 1;
    if (!xSrc || !ySrc || !xDst || !yDst || nSrc < 1) return -1;
    interpolate_linear(cspan(xSrc, nSrc), cspan(ySrc, nSrc), cspan(xDst, nDst), mspan(yDst, nDst));
    return 1;
}

int InterpolationMethod(int mode)
{
    Interpolate2State::Data& state = process_interpolation_state().data();
    state.linear = mode != 0;
    return state.linear ? 1 : 0;
}

int Interpolate(float* ySrc, typ_wlinfo* src, float* yDst, typ_wlinfo* dst)
{
    if (!ySrc || !src || !yDst || !dst) return -1;
    const int n_dst = WLNumPts(dst);
    const int n_src = WLNumPts(src);
    const float step = src->step;
    if (copy_equal_step(ySrc, *src, yDst, *dst)) return 1;
    if (n_src < 4 || n_dst < 4) return -1;

    const auto ys = cspan(ySrc, n_src);
    const int last = n_src - 1;
    for (int i = 0; i < n_dst; ++i) {
        const float x = static_cast<float>(i) * dst->step + dst->start;
        const float t = (x - src->start) / step;
        if (!(std::fabs(t) < 1e9f)) continue;  // no sample anywhere near
        const int k = static_cast<int>(t);
        if (t == static_cast<float>(k) && k >= 0 && k <= last) {
            yDst[i] = ySrc[k];
            continue;
        }
        // The window of Interpolate2 (points lo+1 .. hi) on rebuilt source
        // wavelengths. Far beyond the end the window is empty and yDst[i]
        // keeps what the caller had there.
        const int lo = std::max(k - 3, 0);
        const int hi = std::min(k + 3, last);
        if (hi - lo < 1) continue;
        std::array<float, 6> xw{};
        const auto count = static_cast<std::size_t>(hi - lo);
        for (std::size_t j = 0; j < count; ++j)
            xw[j] = static_cast<float>(lo + 1 + static_cast<int>(j)) * step + src->start;
        float dy = 0.0f;
        neville(std::span<const float>(xw.data(), count), ys.subspan(static_cast<std::size_t>(lo + 1), count),
                x, yDst[i], dy);
    }
    return 1;
}

}  // extern "C"
