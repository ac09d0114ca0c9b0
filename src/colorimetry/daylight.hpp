// CIE daylight of a given correlated colour temperature, on the 2 nm grid of
// the colour rendering calculation.
#pragma once

#include <array>
#include <cstddef>

namespace qomath::cri {

// The working grid {360, 830, 2} nm.
inline constexpr int kWorkingPoints = 236;
inline constexpr float kWorkingStart = 360.0f;
inline constexpr float kWorkingEnd = 830.0f;
inline constexpr float kWorkingStep = 2.0f;

// Wavelength of working-grid point i.
constexpr float working_wavelength(int i)
{
    return kWorkingStart + static_cast<float>(i) * kWorkingStep;
}

// Column `column` of a table (rows of {nm, value, ...} on an evenly spaced
// grid of whole nanometres covering 360..830 nm), linearly interpolated onto
// the working grid. Evaluated at compile time, so the compiled-in table stays
// the one source of the 2 nm copy.
template <std::size_t N, std::size_t C>
constexpr std::array<float, kWorkingPoints> on_working_grid(const double (&rows)[N][C],
                                                            std::size_t column)
{
    static_assert(N >= 2 && C >= 2);
    const double start = rows[0][0];
    const double step = rows[1][0] - rows[0][0];
    std::array<float, kWorkingPoints> out{};
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double t = (static_cast<double>(working_wavelength(static_cast<int>(i))) - start) / step;
        const auto k = static_cast<std::size_t>(t);
        const double f = t - static_cast<double>(k);
        out[i] = static_cast<float>(k + 1 < N ? rows[k][column] + f * (rows[k + 1][column] - rows[k][column])
                                              : rows[N - 1][column]);
    }
    return out;
}

// The daylight components S0, S1, S2 on the working grid: the published
// 5 nm components, linearly interpolated.
const std::array<float, kWorkingPoints>& daylight_component(int which);

// Component `which` (0 S0, 1 S1, 2 S2) at wavelength nm, linear between the
// published 5 nm values, 0 outside 300..830 nm.
double daylight_basis(int which, double nm);

// The chromaticity coefficients M1, M2 of daylight at cct (K): with the
// rounded constants the library's results are built on, or (cie) with the
// CIE's own polynomial (4000..7000 K and 7000..25000 K, bounds included).
struct DaylightWeights {
    double xd, yd, m1, m2;
};
DaylightWeights daylight_weights(double cct, bool cie = false);

// out[i] = S0[i] + M1 S1[i] + M2 S2[i] for i < min(n, kWorkingPoints).
// Returns 1.
int DaylightSpectrumFromCCT(float* out, int n, float cct, bool cie = false);

}  // namespace qomath::cri
