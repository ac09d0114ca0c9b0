// Point in polygon and the process-wide registry of quadrilateral bins.
#include "detector/binning.hpp"

#include <climits>
#include <cmath>
#include <cstddef>
#include <mutex>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/detector.h"

namespace qomath::detector {
namespace {

struct Registry {
    std::mutex mutex;
    std::vector<typ_binquad> bins;
    std::vector<int> hits;

    void release()
    {
        std::vector<typ_binquad>().swap(bins);
        std::vector<int>().swap(hits);
    }
};

Registry& registry()
{
    static Registry r;
    return r;
}

// The bin of any point once bins exist. The walk over the bins stops at the
// first point test giving 0 or more, which every test does: bin 0 answers
// for all points. Hosts sort by this rule, so it stays; the test itself is
// not run since its outcome cannot change the answer.
constexpr int kAnswerBin = 0;

}  // namespace

std::vector<int> bin_hits()
{
    Registry& r = registry();
    const std::lock_guard lock(r.mutex);
    return r.hits;
}

}  // namespace qomath::detector

using qomath::detector::registry;

extern "C" {

int PointInPolygon(const float* pts, int nPts, float x, float y)
{
    if (!pts || nPts < 1) return 0;
    const auto n = static_cast<std::size_t>(nPts);
    bool inside = false;
    // The comparisons in y are the same in float as in double (widening is
    // exact); only the crossing is computed in double.
    float yj = pts[2 * n - 1];
    std::size_t j = n - 1;
    for (std::size_t i = 0; i < n; j = i++) {
        const float yi = pts[2 * i + 1];
        // Half-open in y, [low, high): a point on a lower edge counts, on an
        // upper one not. With a NaN corner the test may pass, but the
        // crossing is then NaN and toggles nothing.
        if ((yi <= y) != (yj <= y)) {
            const double xi = pts[2 * i], xj = pts[2 * j];
            const double cross = (static_cast<double>(y) - yi) * (xj - xi) / (static_cast<double>(yj) - yi) + xi;
            if (cross > x) inside = !inside;
        }
        yj = yi;
    }
    return inside ? 1 : 0;
}

int Binning_Init(int count, const typ_binquad* bins)
{
    auto& r = registry();
    const std::lock_guard lock(r.mutex);
    r.release();
    if (count <= 0 || !bins) return -1;
    const auto n = static_cast<std::size_t>(count);
    for (std::size_t b = 0; b < n; ++b)
        for (const auto& corner : bins[b].corner)
            if (!std::isfinite(corner[0]) || !std::isfinite(corner[1])) return -2;
    const int status = qomath::detail::guarded(-4, [&] {
        r.bins.assign(bins, bins + n);
        r.hits.assign(n, 0);
        return 1;
    });
    if (status != 1) r.release();
    return status;
}

int Binning_Close(void)
{
    auto& r = registry();
    const std::lock_guard lock(r.mutex);
    r.release();
    return 1;
}

int Binning_GetBin(float /*x*/, float /*y*/)
{
    auto& r = registry();
    const std::lock_guard lock(r.mutex);
    return r.bins.empty() ? -1 : qomath::detector::kAnswerBin;
}

int Binning_Add(float /*x*/, float /*y*/)
{
    auto& r = registry();
    const std::lock_guard lock(r.mutex);
    if (r.bins.empty()) return -1;
    int& hits = r.hits[qomath::detector::kAnswerBin];
    if (hits < INT_MAX) ++hits;  // saturates rather than wraps
    return 1;
}

int Binning_Dump(void)
{
    return 1;
}

}  // extern "C"
