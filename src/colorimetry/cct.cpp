// Correlated colour temperature by a walk over isotemperature lines one
// mired apart, and the Planckian radiator: its spectrum, peak wavelength,
// band exitance and colour.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <numbers>
#include <span>

#include "colorimetry/planck.hpp"
#include "common/barrier.hpp"
#include "qomath/cct.h"
#include "qomath/chromaticity.h"
#include "qomath/tristimulus.h"

namespace qomath::cct {

namespace {

// Rows {i, u, v, t}: the locus point and isotemperature slope at i mired.
constexpr double kRows[][4] = {
#include "qomath_data/isotemperature_1mired.inc"
};

// Line i sits at i mired, and every line has a usable norm sqrt(1 + t^2):
// the search never meets a degenerate line (codes -2 and -3).
template <std::size_t N>
constexpr bool lines_usable(const double (&rows)[N][4])
{
    for (std::size_t i = 0; i < N; ++i) {
        const double t = rows[i][3];
        if (rows[i][0] != static_cast<double>(i) || !(t - t == 0) || !(1 + t * t >= 1e-24))
            return false;
    }
    return true;
}
static_assert(std::size(kRows) == kLines && lines_usable(kRows));

// The search's view of a line: its locus point and the unit normal (a, b)
// that gives the signed distance a (v - v_i) - b (u - u_i) of a sample, that
// is ((v - v_i) - t (u - u_i)) / sqrt(1 + t^2). The slope runs through
// infinity at the top of the locus (near 616 mired), where it turns from large
// negative to large positive; the normals of lines with positive slope are
// turned round so that the distance keeps its sign past that line.
struct Line {
    double u, v, a, b;
};

// Built once, on first use.
const std::array<Line, kLines>& search_lines()
{
    static const std::array<Line, kLines> lines = [] {
        std::array<Line, kLines> out{};
        for (std::size_t i = 0; i < out.size(); ++i) {
            const double t = kRows[i][3];
            const double side = t > 0 ? -1.0 : 1.0;
            const double norm = std::sqrt(1 + t * t);
            out[i] = {kRows[i][1], kRows[i][2], side / norm, side * t / norm};
        }
        return out;
    }();
    return lines;
}

inline double distance(const Line& l, double u, double v)
{
    return l.a * (v - l.v) - l.b * (u - l.u);
}

constexpr double kStepUnit = 0.000353;  // a just-noticeable step in (u, v)

// The walk; `out` is already cleared.
int search(double u, double v, float* out)
{
    if (!std::isfinite(u) || !std::isfinite(v) || u < kRows[0][1] || v < kRows[0][2]) return -1;
    const auto& lines = search_lines();
    double d_prev = distance(lines[0], u, v);
    int i = 1;
    double d = 0;
    for (;; ++i) {
        if (i == kLines) return -5;  // redder than the last line
        d = distance(lines[static_cast<std::size_t>(i)], u, v);
        if (std::fabs(d) < 1e-12) return -4;
        if (d_prev * d < 0) break;  // the sample lies between lines i - 1 and i
        d_prev = d;
    }
    const double gap = d_prev - d;
    const double m_hi = kRows[i][0];
    const double m_lo = kRows[i - 1][0];
    if (std::fabs(gap) < 1e-9) return -6;
    if (m_hi < 1e-9) return -7;
    if (m_lo < 1e-9) return -8;  // between lines 0 and 1: hotter than 1e6 K
    const double f = d_prev / gap;
    // Interpolation in temperature, not in mired.
    double mired = 1 / ((1 / m_hi - 1 / m_lo) * f + 1 / m_lo);
    mired = std::clamp(std::fabs(mired), 1e-6, 1e9);
    out[0] = static_cast<float>(1e6 / mired);
    out[1] = static_cast<float>(mired);
    if (std::fabs(gap) < 1e-7) return 1;

    const double u_locus = kRows[i - 1][1] + (kRows[i][1] - kRows[i - 1][1]) * f;
    const double v_locus = kRows[i - 1][2] + (kRows[i][2] - kRows[i - 1][2]) * f;
    const double dist = std::sqrt((u - u_locus) * (u - u_locus) + (v - v_locus) * (v - v_locus));
    out[2] = static_cast<float>(dist / kStepUnit);
    out[3] = static_cast<float>(v_locus > v ? -dist : dist);
    out[4] = static_cast<float>(u_locus);
    out[5] = static_cast<float>(v_locus);
    return 1;
}

// ---- The radiator --------------------------------------------------------

constexpr double kC1 = 37418.32;  // W um^4 cm^-2
constexpr double kC2 = 14387.86;  // um K
constexpr int kMaxCurveSteps = 9998;

bool temperature_in_range(float t)
{
    return t > 0.0f && t <= 100000.0f;
}

// BlackBodyCurve into out, which has room for `room` values.
int radiator_curve(float temperature, float start, float end, float step, float* out,
                   std::size_t room)
{
    if (!(start < end)) return -1;
    if (!(step > 0.0f)) return -2;
    if (!out) return -3;
    if (!temperature_in_range(temperature)) return -5;
    const double steps = std::ceil((static_cast<double>(end) - static_cast<double>(start)) /
                                   static_cast<double>(step));
    if (!(steps <= kMaxCurveSteps) || static_cast<std::size_t>(steps) + 1 > room) return -4;
    const int n = static_cast<int>(steps);
    const double t = temperature;
    for (int i = 0; i <= n; ++i) {
        const float wl = start + static_cast<float>(i) * step;
        // No exitance at a wavelength of zero (the limit of the formula) or below.
        out[i] = wl > 0.0f ? static_cast<float>(planck(kC1, kC2, wl, t)) : 0.0f;
    }
    return 1;
}

// e^-z p(z), 0 where e^-z underflows (p grows only as a power of z).
template <class Poly>
double decayed(double z, Poly p)
{
    return z > 700.0 ? 0.0 : std::exp(-z) * p(z);
}

// Sum over k of [e^(-k x2) p(k x2) - e^(-k x1) p(k x1)] / k^4, stopped when a
// term is no more than 1e-8 of the running sum, or after a million terms
// (reached only for bands far into the long-wave tail, x below about 1e-4).
template <class Poly>
double band_series(double x1, double x2, Poly p)
{
    constexpr int kMaxTerms = 1000000;
    double sum = 0;
    for (int k = 1; k <= kMaxTerms; ++k) {
        const double kk = k;
        const double term = (decayed(kk * x2, p) - decayed(kk * x1, p)) / (kk * kk * kk * kk);
        sum += term;
        if (!(std::fabs(term) > 1e-8 * std::fabs(sum))) break;
    }
    return sum;
}

bool band_usable(float temperature, float wl_1, float wl_2)
{
    return std::isfinite(temperature) && temperature > 0.0f && std::isfinite(wl_1) &&
           wl_1 > 0.0f && std::isfinite(wl_2) && wl_1 < wl_2;
}

}  // namespace

std::span<const double[4]> isotemperature_table()
{
    return kRows;
}

}  // namespace qomath::cct

using namespace qomath;

extern "C" {

int CCTCalculate(const float* uv, float* result)
{
    if (!result) return -1;
    std::fill_n(result, 6, 0.0f);
    result[2] = -1.0f;
    if (!uv) return -1;
    return cct::search(uv[0], uv[1], result);
}

float WeinDisplacementLaw(float temperature)
{
    if (!cct::temperature_in_range(temperature)) return -1.0f;
    return static_cast<float>(1.9864775901806078e-25 /
                              (static_cast<double>(temperature) * 6.856665e-23));
}

int BlackBodyCurve(float temperature, float wl_start, float wl_end, float wl_step, float* out)
{
    return cct::radiator_curve(temperature, wl_start, wl_end, wl_step, out,
                               cct::kMaxCurveSteps + 1);
}

float WattFlux(float temperature, float wl_1, float wl_2)
{
    if (!cct::band_usable(temperature, wl_1, wl_2)) return 0.0f;
    const double t = temperature;
    const double sum = cct::band_series(cct::kC2 / (t * wl_1), cct::kC2 / (t * wl_2),
                                        [](double z) { return ((z + 3) * z + 6) * z + 6; });
    return static_cast<float>(t * t * t * t * 2.77939069262783e-13 * std::numbers::pi * sum);
}

float WattDerivative(float temperature, float wl_1, float wl_2)
{
    if (!cct::band_usable(temperature, wl_1, wl_2)) return 0.0f;
    const double t = temperature;
    const double diff =
        cct::band_series(cct::kC2 / (t * wl_1), cct::kC2 / (t * wl_2),
                         [](double z) { return (((z + 4) * z + 12) * z + 24) * z + 24; });
    const double c2_4 = cct::kC2 * cct::kC2 * cct::kC2 * cct::kC2;
    return static_cast<float>(cct::kC1 / c2_4 * t * t * t * diff);
}

int BlackBodyToCIEUCS(float temperature, float* xyz_tristimulus, float* xyz_chromaticity,
                      float* uv_1960, float* uv_1976)
{
    if (!xyz_tristimulus || !xyz_chromaticity || !uv_1960 || !uv_1976) return -2;
    return detail::guarded(-2, [&] {
        std::fill_n(xyz_tristimulus, 3, 0.0f);
        std::fill_n(xyz_chromaticity, 3, 0.0f);
        std::fill_n(uv_1960, 2, 0.0f);
        std::fill_n(uv_1976, 2, 0.0f);
        // 0.36 to 0.83 um in 0.001 um steps, read as the 1 nm grid 360..830 nm.
        constexpr std::size_t kPoints = 471;
        std::array<float, kPoints> curve{};
        if (cct::radiator_curve(temperature, 0.36f, 0.83f, 0.001f, curve.data(), kPoints) != 1)
            return -1;
        const typ_wlinfo grid{360.0f, 830.0f, 1.0f};
        if (CalcTristimulusXYZ1931(curve.data(), &grid, xyz_tristimulus) != 1) return -2;
        if (TristimulusXYZTOCIE1931xyz(xyz_tristimulus, xyz_chromaticity) != 1) return -3;
        if (TristimulusXYZToCIE1960uv(xyz_tristimulus, uv_1960) != 1) return -4;
        if (TristimulusXYZToUCS1976uv(xyz_tristimulus, uv_1976) != 1) return -5;
        return 1;
    });
}

int BlackBodyLocus(int system, const float* temperatures, int n, float* first, float* second)
{
    if (n < 1 || !temperatures || !first || !second) return -99;
    return detail::guarded(-2, [&] {
        for (int k = 0; k < n; ++k) {
            float tristimulus[3], xyz[3], uv[2], uv76[2];
            const int status = BlackBodyToCIEUCS(temperatures[k], tristimulus, xyz, uv, uv76);
            if (status != 1) return status;
            const float* pair = system == 0 ? xyz : system == 1 ? uv : system == 2 ? uv76 : nullptr;
            if (pair) {
                first[k] = pair[0];
                second[k] = pair[1];
            }
        }
        return 1;
    });
}

}  // extern "C"
