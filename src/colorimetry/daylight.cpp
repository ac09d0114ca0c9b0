// CIE daylight of a given correlated colour temperature: the chromaticity
// polynomial in 1/T, the weights M1, M2 and the spectrum S0 + M1 S1 + M2 S2
// on the 2 nm working grid of the colour rendering calculation.
#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "colorimetry/daylight.hpp"

namespace qomath::cri {
namespace {

constexpr double kBasisRows[][4] = {
#include "qomath_data/daylight_S0_S1_S2_5nm.inc"
};
static_assert(kBasisRows[0][0] <= 360.0 && kBasisRows[std::size(kBasisRows) - 1][0] >= 830.0);

constexpr std::array<std::array<float, kWorkingPoints>, 3> kBasis{
    on_working_grid(kBasisRows, 1), on_working_grid(kBasisRows, 2),
    on_working_grid(kBasisRows, 3)};
// Published spot values: S0 at 360, 400 and 440 nm, S1 and S2 at 360 nm.
static_assert(kBasis[0][0] == 61.5f && kBasis[0][20] == 94.8f && kBasis[0][40] == 113.9f);
static_assert(kBasis[1][0] == 38.0f && kBasis[2][0] == 5.3f);

}  // namespace

const std::array<float, kWorkingPoints>& daylight_component(int which)
{
    return kBasis[static_cast<std::size_t>(std::clamp(which, 0, 2))];
}

double daylight_basis(int which, double nm)
{
    constexpr std::size_t kRows = std::size(kBasisRows);
    const double start = kBasisRows[0][0];
    const double step = kBasisRows[1][0] - start;
    const double t = (nm - start) / step;
    if (!(t >= 0.0 && t <= static_cast<double>(kRows - 1))) return 0.0;
    const auto k = std::min(static_cast<std::size_t>(t), kRows - 2);
    const auto c = static_cast<std::size_t>(std::clamp(which, 0, 2)) + 1;
    return kBasisRows[k][c] + (t - static_cast<double>(k)) * (kBasisRows[k + 1][c] - kBasisRows[k][c]);
}

DaylightWeights daylight_weights(double cct, bool cie)
{
    // The CIE polynomials with their constants rounded as below. Results
    // computed with this library (and the references hosts compare against)
    // carry exactly these figures, so they are not to be refined. Exactly
    // 7000 K and 25000 K lie in neither interval and give xD = 0,
    // like every temperature outside them.
    const double t = cct;
    DaylightWeights w{};
    if (cie) {
        if (t >= 4000.0 && t <= 7000.0)
            w.xd = -4.6070e9 / (t * t * t) + 2.9678e6 / (t * t) + 0.09911e3 / t + 0.244063;
        else if (t > 7000.0 && t <= 25000.0)
            w.xd = -2.0064e9 / (t * t * t) + 1.9018e6 / (t * t) + 0.24748e3 / t + 0.237040;
    } else if (t > 4000.0 && t < 7000.0) {
        w.xd = 0.24 + 99.0 / t + 3e6 / (t * t) - 4.6e9 / (t * t * t);
    } else if (t > 7000.0 && t < 25000.0) {
        w.xd = 0.23704 + 247.0 / t + 1.9e6 / (t * t) - 2e9 / (t * t * t);
    }
    w.yd = 2.87 * w.xd - 0.275 - 3.0 * w.xd * w.xd;
    const double m = 0.0241 + 0.2562 * w.xd - 0.7341 * w.yd;
    w.m1 = (5.9114 * w.yd - 1.3515 - 1.7703 * w.xd) / m;
    w.m2 = (0.03 - 31.4424 * w.xd + 30.0717 * w.yd) / m;
    return w;
}

int DaylightSpectrumFromCCT(float* out, int n, float cct, bool cie)
{
    const DaylightWeights w = daylight_weights(cct, cie);
    const int count = std::clamp(n, 0, kWorkingPoints);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        out[i] = static_cast<float>(static_cast<double>(kBasis[0][i]) +
                                    w.m1 * static_cast<double>(kBasis[1][i]) +
                                    w.m2 * static_cast<double>(kBasis[2][i]));
    return 1;
}

}  // namespace qomath::cri
