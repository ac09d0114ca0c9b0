// NVIS weighting of a spectral radiance (MIL-STD-3009).
#include <algorithm>
#include <cmath>

#include "common/barrier.hpp"
#include "qomath/nvis.h"
#include "qomath/photometry.h"

namespace {

constexpr double kBandLow = 450.0, kBandHigh = 930.0;
constexpr double kCdPerFootLambert = 3.4263;  // 0.1 fL = 0.34263 cd/m^2

// The response at w: linear between table points, 0 outside the table.
double response_at(const float* rnm, const float* g, int rn, double w)
{
    if (w < rnm[0] || w > rnm[rn - 1]) return 0.0;
    const float* hi = std::lower_bound(rnm, rnm + rn, static_cast<float>(w));
    if (hi == rnm) return g[0];
    if (hi == rnm + rn) return g[rn - 1];
    const auto k = hi - rnm;
    const double x0 = rnm[k - 1], x1 = rnm[k];
    const double t = x1 > x0 ? (w - x0) / (x1 - x0) : 1.0;
    return g[k - 1] + t * (g[k] - g[k - 1]);
}

}  // namespace

extern "C" int NVIS_Compute(const float* nm, const float* radiance, int n, const float* rnm,
                            const float* response, int rn, float luminance, float* result)
{
    if (!rnm || !response || rn < 2 || !nm || !radiance || n < 2 || !result) return -1;
    return qomath::detail::guarded(-1, [&] {
        double sum = 0.0;
        double prev_w = 0, prev_v = 0;
        bool have_prev = false;
        for (int i = 0; i < n; ++i) {
            const double w = nm[i];
            if (w < kBandLow || w > kBandHigh) {
                have_prev = false;
                continue;
            }
            const double v = response_at(rnm, response, rn, w) * radiance[i];
            if (have_prev) sum += 0.5 * (v + prev_v) * (w - prev_w);
            prev_w = w;
            prev_v = v;
            have_prev = true;
        }
        float lum[8] = {};
        LuminanceCalc(nm, radiance, n, lum);
        const double fl = lum[0] / kCdPerFootLambert;  // lum[0]: nit
        const double s = luminance > 0.0f && fl > 0.0 ? luminance / fl : 1.0;
        result[0] = static_cast<float>(sum);
        result[1] = static_cast<float>(fl);
        result[2] = static_cast<float>(sum * s);
        return 1;
    });
}
