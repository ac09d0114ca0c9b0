// Colour rendition (TM-30-20 / CIE 224:2017, CIE 13.3 with the CIE's
// constants) and photobiological weightings (ICNIRP actinic UV, CIE
// erythema, IEC 62471 blue-light hazard, CIE S 026 alpha-opic).
#include "qomath/colour_quality.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

#include "colorimetry/cie_tables.hpp"
#include "colorimetry/context.hpp"
#include "colorimetry/cri.hpp"
#include "colorimetry/daylight.hpp"
#include "colorimetry/summary.hpp"
#include "colorimetry/tristimulus.hpp"
#include "common/barrier.hpp"
#include "qomath/cct.h"
#include "qomath/chromaticity.h"
#include "qomath/cri.h"
#include "qomath/grid.h"

namespace qomath::quality {
namespace {

using qomath::detail::guarded;

constexpr int kOk = 1;
constexpr int kBadArgument = -1;
constexpr int kBadData = -2;
constexpr int kNoCover = -3;
constexpr int kNoMemory = -4;
constexpr int kNoCct = -5;

// ---- Tables on 380..780 nm at 1 nm -------------------------------------------

constexpr int kPoints = 401;
constexpr double kFirst = 380.0;
constexpr std::size_t kSamples = 99;
constexpr std::size_t kBins = 16;

constexpr double kCesRows[][kSamples + 1] = {
#include "qomath_data/cie224_ces99_1nm.inc"
};
static_assert(std::size(kCesRows) == kPoints && kCesRows[0][0] == 380.0 && kCesRows[0][1] == 0.6359);

constexpr double kAlphaRows[][6] = {
#include "qomath_data/cie_s026_alpha_opic_1nm.inc"
};
static_assert(std::size(kAlphaRows) == kPoints && kAlphaRows[0][0] == 380.0);

constexpr double kBlueRows[][2] = {
#include "qomath_data/iec62471_blue_light_hazard_5nm.inc"
};
static_assert(kBlueRows[0][0] == 380.0 && kBlueRows[11][1] == 1.0 && kBlueRows[12][1] == 1.0);

// The alpha-opic efficacies of luminous radiation of D65, W/lm.
constexpr std::array<double, 5> kAlphaD65{0.8173e-3, 1.4558e-3, 1.6289e-3, 1.4497e-3, 1.3262e-3};
constexpr double kKm = 683.0;

// The CIE 1964 10-degree functions on 380..780 nm and the products with
// each sample, built once.
struct Tables {
    std::array<std::array<double, kPoints>, 3> cmf10{};
    // [point][sample][component]: one point's 297 weights side by side, so
    // the sums over points run for every sample at once.
    std::vector<double> weighted;
};

const Tables& tables()
{
    static const Tables t = [] {
        Tables r;
        for (std::size_t c = 0; c < 3; ++c) {
            const std::span<const float> v = cie::table(3 + static_cast<int>(c)).values;
            for (std::size_t i = 0; i < kPoints; ++i) r.cmf10[c][i] = v[i + 20];  // from 360 nm
        }
        r.weighted.resize(kSamples * 3 * kPoints);
        for (std::size_t s = 0; s < kSamples; ++s)
            for (std::size_t c = 0; c < 3; ++c)
                for (std::size_t i = 0; i < kPoints; ++i)
                    r.weighted[(i * kSamples + s) * 3 + c] = kCesRows[i][s + 1] * r.cmf10[c][i];
        return r;
    }();
    return t;
}

// ---- Input checks and resampling ---------------------------------------------

int check(const float* wl, const float* v, int n)
{
    if (!wl || !v || n < 2) return kBadArgument;
    return summary::finite_and_increasing(wl, v, n) ? kOk : kBadData;
}

// The spectrum at x, linear between its samples; 0 outside.
double linear_at(const float* wl, const float* v, int n, double x)
{
    if (x < wl[0] || x > wl[n - 1]) return 0.0;
    const auto hi = static_cast<std::size_t>(std::lower_bound(wl, wl + n, static_cast<float>(x)) - wl);
    if (hi < static_cast<std::size_t>(n) && static_cast<double>(wl[hi]) == x) return v[hi];
    const std::size_t lo = hi - 1;
    const double f = (x - wl[lo]) / (static_cast<double>(wl[hi]) - wl[lo]);
    return v[lo] + f * (static_cast<double>(v[hi]) - v[lo]);
}

// A 1 nm table (first column nm from 380) at x, linear; 0 outside.
template <std::size_t C>
double table_at(const double (&rows)[kPoints][C], std::size_t column, double x)
{
    const double t = x - kFirst;
    if (!(t >= 0.0 && t <= kPoints - 1)) return 0.0;
    const auto k = std::min(static_cast<std::size_t>(t), static_cast<std::size_t>(kPoints - 2));
    return rows[k][column] + (t - static_cast<double>(k)) * (rows[k + 1][column] - rows[k][column]);
}

// ---- CIE CAM02-UCS ----------------------------------------------------------------

struct Ucs {
    double j, a, b;
};

// CIECAM02 under L_A = 100 cd/m^2, Y_b = 20, average surround (F = 1,
// c = 0.69, Nc = 1) and complete adaptation (D = 1), then CAM02-UCS.
class Cam02 {
public:
    explicit Cam02(const std::array<double, 3>& white)
    {
        constexpr double la = 100.0, yb = 20.0;
        const double k = 1.0 / (5.0 * la + 1.0), k4 = k * k * k * k;
        fl_ = 0.2 * k4 * (5.0 * la) + 0.1 * (1.0 - k4) * (1.0 - k4) * std::cbrt(5.0 * la);
        n_ = yb / white[1];
        z_ = 1.48 + std::sqrt(n_);
        nbb_ = 0.725 * std::pow(1.0 / n_, 0.2);
        const std::array<double, 3> rgbw = cat02(white);
        for (std::size_t i = 0; i < 3; ++i) gain_[i] = white[1] / rgbw[i];
        const std::array<double, 3> aw = adapted(white);
        aw_ = (2.0 * aw[0] + aw[1] + aw[2] / 20.0 - 0.305) * nbb_;
    }

    Ucs operator()(const std::array<double, 3>& xyz) const
    {
        const std::array<double, 3> r = adapted(xyz);
        const double a = r[0] - 12.0 * r[1] / 11.0 + r[2] / 11.0;
        const double b = (r[0] + r[1] - 2.0 * r[2]) / 9.0;
        double h = std::atan2(b, a);
        if (h < 0) h += 2.0 * std::numbers::pi;
        const double et = 0.25 * (std::cos(h + 2.0) + 3.8);
        const double achromatic = (2.0 * r[0] + r[1] + r[2] / 20.0 - 0.305) * nbb_;
        const double j = 100.0 * std::pow(std::max(achromatic / aw_, 0.0), 0.69 * z_);
        const double t = (50000.0 / 13.0 * nbb_ * et * std::hypot(a, b)) /
                         (r[0] + r[1] + 21.0 / 20.0 * r[2]);
        const double c = std::pow(t, 0.9) * std::sqrt(j / 100.0) * std::pow(1.64 - std::pow(0.29, n_), 0.73);
        const double m = c * std::pow(fl_, 0.25);
        const double mp = std::log(1.0 + 0.0228 * m) / 0.0228;
        return {1.7 * j / (1.0 + 0.007 * j), mp * std::cos(h), mp * std::sin(h)};
    }

private:
    static std::array<double, 3> cat02(const std::array<double, 3>& x)
    {
        return {0.7328 * x[0] + 0.4296 * x[1] - 0.1624 * x[2],
                -0.7036 * x[0] + 1.6975 * x[1] + 0.0061 * x[2],
                0.0030 * x[0] + 0.0136 * x[1] + 0.9834 * x[2]};
    }
    // Adapted (D = 1), to Hunt-Pointer-Estevez cone space, compressed.
    std::array<double, 3> adapted(const std::array<double, 3>& xyz) const
    {
        std::array<double, 3> c = cat02(xyz);
        for (std::size_t i = 0; i < 3; ++i) c[i] *= gain_[i];
        // Inverse CAT02, then HPE.
        const std::array<double, 3> x{1.096124 * c[0] - 0.278869 * c[1] + 0.182745 * c[2],
                                      0.454369 * c[0] + 0.473533 * c[1] + 0.072098 * c[2],
                                      -0.009628 * c[0] - 0.005698 * c[1] + 1.015326 * c[2]};
        const std::array<double, 3> p{0.38971 * x[0] + 0.68898 * x[1] - 0.07868 * x[2],
                                      -0.22981 * x[0] + 1.18340 * x[1] + 0.04641 * x[2], x[2]};
        std::array<double, 3> out{};
        for (std::size_t i = 0; i < 3; ++i) {
            const double f = std::pow(fl_ * std::fabs(p[i]) / 100.0, 0.42);
            out[i] = std::copysign(400.0 * f / (f + 27.13), p[i]) + 0.1;
        }
        return out;
    }
    double fl_ = 0, n_ = 0, z_ = 0, nbb_ = 0, aw_ = 0;
    std::array<double, 3> gain_{};
};

// ---- TM-30 / CIE 224 ------------------------------------------------------------

double fidelity(double mean_de)
{
    return 10.0 * std::log(std::exp((100.0 - 6.73 * mean_de) / 10.0) + 1.0);
}

using Spd = std::array<double, kPoints>;

std::array<double, 3> white_of(const Spd& s)
{
    const Tables& t = tables();
    std::array<double, 3> w{};
    for (std::size_t c = 0; c < 3; ++c)
        for (std::size_t i = 0; i < kPoints; ++i) w[c] += s[i] * t.cmf10[c][i];
    return w;
}

// The reference of temperature cct; kind 0 Planckian, 1 daylight, 2 mix.
Spd reference(double cct, int& kind)
{
    Spd planck{}, day{};
    constexpr double kC2 = 1.4388e-2;
    if (cct <= 5000.0)
        for (std::size_t i = 0; i < kPoints; ++i) {
            const double wl = (kFirst + static_cast<double>(i)) * 1e-9, wl2 = wl * wl;
            planck[i] = 1.0 / (wl2 * wl2 * wl * std::expm1(kC2 / (wl * cct)));
        }
    if (cct >= 4000.0) {
        const cri::DaylightWeights dw = cri::daylight_weights(std::min(cct, 25000.0), true);
        for (std::size_t i = 0; i < kPoints; ++i) {
            const double nm = kFirst + static_cast<double>(i);
            day[i] = cri::daylight_basis(0, nm) + dw.m1 * cri::daylight_basis(1, nm) +
                     dw.m2 * cri::daylight_basis(2, nm);
        }
    }
    if (cct < 4000.0) {
        kind = 0;
        return planck;
    }
    if (cct > 5000.0) {
        kind = 1;
        return day;
    }
    kind = 2;
    const double kp = 100.0 / white_of(planck)[1], kd = 100.0 / white_of(day)[1];
    const double m = (cct - 4000.0) / 1000.0;
    Spd mix{};
    for (std::size_t i = 0; i < kPoints; ++i) mix[i] = (1.0 - m) * kp * planck[i] + m * kd * day[i];
    return mix;
}

// CAM02-UCS of the 99 samples under the test source and under the
// reference, both in one pass over the sample tables.
void samples_under(const Spd& test, const Spd& ref, std::array<Ucs, kSamples>& t,
                   std::array<Ucs, kSamples>& u)
{
    const Tables& tab = tables();
    std::array<double, 3> wt = white_of(test), wr = white_of(ref);
    const double kt = 100.0 / wt[1], kr = 100.0 / wr[1];
    for (std::size_t c = 0; c < 3; ++c) wt[c] *= kt, wr[c] *= kr;
    const Cam02 cam_t(wt), cam_r(wr);
    constexpr std::size_t kCells = kSamples * 3;
    std::array<double, kCells> st{}, sr{};
    const double* w = tab.weighted.data();
    for (std::size_t i = 0; i < kPoints; ++i, w += kCells) {
        const double a = test[i], b = ref[i];
        for (std::size_t k = 0; k < kCells; ++k) {
            st[k] += a * w[k];
            sr[k] += b * w[k];
        }
    }
    for (std::size_t n = 0; n < kSamples; ++n) {
        t[n] = cam_t({st[3 * n] * kt, st[3 * n + 1] * kt, st[3 * n + 2] * kt});
        u[n] = cam_r({sr[3 * n] * kr, sr[3 * n + 1] * kr, sr[3 * n + 2] * kr});
    }
}

double polygon_area(const std::array<double, 2 * kBins>& p)
{
    double twice = 0.0;
    for (std::size_t j = 0; j < kBins; ++j) {
        const std::size_t k = (j + 1) % kBins;
        twice += p[2 * j] * p[2 * k + 1] - p[2 * k] * p[2 * j + 1];
    }
    return 0.5 * std::fabs(twice);
}

void tm30(const Spd& test, double cct, float* r)
{
    int kind = 0;
    const Spd ref = reference(cct, kind);
    r[QOMATH_CRA_REFERENCE] = static_cast<float>(kind);
    std::array<Ucs, kSamples> t{}, u{};
    samples_under(test, ref, t, u);
    std::array<double, kBins> de_sum{}, count{};
    std::array<double, 2 * kBins> tb{}, rb{};
    double de_total = 0.0;
    for (std::size_t n = 0; n < kSamples; ++n) {
        const double de = std::sqrt((t[n].j - u[n].j) * (t[n].j - u[n].j) +
                                    (t[n].a - u[n].a) * (t[n].a - u[n].a) +
                                    (t[n].b - u[n].b) * (t[n].b - u[n].b));
        r[QOMATH_CRA_RF_CES1 + n] = static_cast<float>(fidelity(de));
        de_total += de;
        double h = std::atan2(u[n].b, u[n].a) * 180.0 / std::numbers::pi;
        if (h < 0) h += 360.0;
        const auto bin = std::min(static_cast<std::size_t>(h / 22.5), kBins - 1);
        de_sum[bin] += de;
        count[bin] += 1.0;
        tb[2 * bin] += t[n].a, tb[2 * bin + 1] += t[n].b;
        rb[2 * bin] += u[n].a, rb[2 * bin + 1] += u[n].b;
    }
    r[QOMATH_CRA_RF] = static_cast<float>(fidelity(de_total / kSamples));
    for (std::size_t j = 0; j < kBins; ++j) {
        if (count[j] == 0) continue;
        for (std::size_t c = 0; c < 2; ++c) tb[2 * j + c] /= count[j], rb[2 * j + c] /= count[j];
        r[QOMATH_CRA_RF_H1 + j] = static_cast<float>(fidelity(de_sum[j] / count[j]));
        // Shifts along and across the reference average's hue direction,
        // relative to its chroma.
        const double theta = std::atan2(rb[2 * j + 1], rb[2 * j]);
        const double cr = std::hypot(rb[2 * j], rb[2 * j + 1]);
        const double da = tb[2 * j] - rb[2 * j], db = tb[2 * j + 1] - rb[2 * j + 1];
        r[QOMATH_CRA_RCS_H1 + j] = static_cast<float>((da * std::cos(theta) + db * std::sin(theta)) / cr);
        r[QOMATH_CRA_RHS_H1 + j] = static_cast<float>((-da * std::sin(theta) + db * std::cos(theta)) / cr);
        r[QOMATH_CRA_TEST_BINS + 2 * j] = static_cast<float>(tb[2 * j]);
        r[QOMATH_CRA_TEST_BINS + 2 * j + 1] = static_cast<float>(tb[2 * j + 1]);
        r[QOMATH_CRA_REF_BINS + 2 * j] = static_cast<float>(rb[2 * j]);
        r[QOMATH_CRA_REF_BINS + 2 * j + 1] = static_cast<float>(rb[2 * j + 1]);
    }
    r[QOMATH_CRA_RG] = static_cast<float>(100.0 * polygon_area(tb) / polygon_area(rb));
}

int rendition(const float* wl, const float* v, int n, float* r)
{
    if (wl[0] > kFirst || wl[n - 1] < kFirst + kPoints - 1) return kNoCover;
    Spd test{};
    for (std::size_t i = 0; i < kPoints; ++i) test[i] = linear_at(wl, v, n, kFirst + static_cast<double>(i));
    if (!(white_of(test)[1] > 0.0)) return kNoCover;

    // CCT and Duv of the data (CIE 1960 u, v of the 2-degree observer), on
    // the data's own sampling.
    // A cache per thread: the constant tables are resampled once per grid.
    thread_local numerics::Interpolate2State cache;
    const colorimetry::Context ctx{colorimetry::Sampling::data, &cache, colorimetry::Constants::cie};
    std::array<float, 3> xyz{};
    if (tristimulus::components(ctx, wl, v, n, tristimulus::Components::xyz1931, xyz.data()) != 1)
        return kNoCover;
    std::array<float, 2> uv{};
    typ_cct cct{};
    if (TristimulusXYZToCIE1960uv(xyz.data(), uv.data()) != 1 ||
        CCTCalculate(uv.data(), reinterpret_cast<float*>(&cct)) != 1 || !(cct.cct >= 1000.0f) ||
        !(cct.cct <= 25000.0f))
        return kNoCct;
    r[QOMATH_CRA_CCT] = cct.cct;
    r[QOMATH_CRA_DUV] = cct.duv;
    tm30(test, cct.cct, r);

    // CIE 13.3 with the CIE's daylight constants, at its 5 nm intervals:
    // the data (linear between its samples) at every 5 nm they cover.
    std::array<float, 95> wl5{}, v5{};
    int n5 = 0;
    for (double nm = std::ceil(std::max(360.0, static_cast<double>(wl[0])) / 5.0) * 5.0;
         nm <= std::min(830.0, static_cast<double>(wl[n - 1])) && n5 < 95; nm += 5.0, ++n5) {
        wl5[static_cast<std::size_t>(n5)] = static_cast<float>(nm);
        v5[static_cast<std::size_t>(n5)] = static_cast<float>(linear_at(wl, v, n, nm));
    }
    std::array<float, QOMATH_CRI_RESULT_CELLS> cells{};
    if (cri::default_calc2(ctx, nullptr, nullptr, 0, wl5.data(), v5.data(), n5, cct.cct, {}, {},
                           cells.data()) == 1) {
        r[QOMATH_CRA_RA] = cells[16];
        std::copy_n(cells.begin(), 15, r + QOMATH_CRA_R1);
    }
    return kOk;
}

// ---- Weightings -------------------------------------------------------------------

double actinic(double nm)  // ICNIRP (2004) S(lambda), 1 at 270 nm
{
    if (nm < 210.0 || nm > 400.0) return 0.0;
    if (nm <= 270.0) return std::pow(0.959, 270.0 - nm);
    if (nm <= 300.0) return 1.0 - 0.36 * std::pow((nm - 270.0) / 20.0, 1.64);
    return 0.3 * std::pow(0.736, nm - 300.0) + std::pow(10.0, 2.0 - 0.0163 * nm);
}

double erythema(double nm)  // ISO 17166 / CIE S 007 reference action spectrum
{
    if (nm < 250.0 || nm > 400.0) return 0.0;
    if (nm <= 298.0) return 1.0;
    if (nm <= 328.0) return std::pow(10.0, 0.094 * (298.0 - nm));
    return std::pow(10.0, 0.015 * (140.0 - nm));
}

double blue_light(double nm)  // IEC 62471 B(lambda): 0.01 below its table (Table 4.1)
{
    if (nm < 300.0 || nm > 700.0) return 0.0;
    if (nm < 380.0) return 0.01;
    if (nm <= 500.0) {
        const double t = (nm - 380.0) / 5.0;
        const auto k = std::min(static_cast<std::size_t>(t), std::size(kBlueRows) - 2);
        return kBlueRows[k][1] + (t - static_cast<double>(k)) * (kBlueRows[k + 1][1] - kBlueRows[k][1]);
    }
    if (nm <= 600.0) return std::pow(10.0, (450.0 - nm) / 50.0);
    return 0.001;
}

// Integral over [lo, hi] of values times weight, clipped to the data, in the
// values' units x nm.
template <class Weight>
double weighted_band(const float* wl, const float* v, int n, double lo, double hi, Weight w,
                     std::vector<float>& scratch)
{
    scratch.resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) scratch[static_cast<std::size_t>(i)] = static_cast<float>(v[i] * w(wl[i]));
    const auto m = static_cast<std::size_t>(n);
    return summary::band_integral({wl, m}, {scratch.data(), m}, static_cast<float>(lo), static_cast<float>(hi));
}

int uv(const float* wl, const float* v, int n, bool radiance, float* r)
{
    std::vector<float> scratch;
    constexpr double kSi = 0.01;  // uW/cm^2 -> W/m^2
    const auto one = [](double) { return 1.0; };
    struct Band {
        double lo, hi;
        int flag;
    };
    constexpr Band kBands[] = {{100, 280, 1}, {280, 315, 2}, {315, 400, 4}, {210, 400, 8}, {250, 400, 16},
                               {300, 700, 32}};
    int missing = 0;
    for (const Band& b : kBands)
        if (wl[0] > b.lo || wl[n - 1] < b.hi) missing |= b.flag;
    r[0] = static_cast<float>(weighted_band(wl, v, n, 100, 280, one, scratch) * kSi);
    r[1] = static_cast<float>(weighted_band(wl, v, n, 280, 315, one, scratch) * kSi);
    r[2] = static_cast<float>(weighted_band(wl, v, n, 315, 400, one, scratch) * kSi);
    const double es = weighted_band(wl, v, n, 210, 400, actinic, scratch) * kSi;
    r[3] = static_cast<float>(es);
    const double er = weighted_band(wl, v, n, 250, 400, erythema, scratch) * kSi;
    r[5] = static_cast<float>(er);
    if (!radiance) {
        r[4] = es > 0.0 ? static_cast<float>(30.0 / es) : 0.0f;
        r[6] = static_cast<float>(40.0 * er);
    }
    r[7] = static_cast<float>(weighted_band(wl, v, n, 300, 700, blue_light, scratch) * kSi);
    r[8] = static_cast<float>(missing);
    return kOk;
}

// y-bar and the five action spectra at each of a grid's wavelengths,
// linear between their 1 nm values, 0 outside their tables.
std::vector<std::array<double, 6>> alpha_weights(const float* wl, int n)
{
    const std::span<const float> ybar = cie::table(1).values;  // 360..830 nm, 1 nm
    std::vector<std::array<double, 6>> w(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const double nm = wl[i];
        std::array<double, 6>& x = w[static_cast<std::size_t>(i)];
        if (nm >= 360.0 && nm <= 830.0) {
            const double t = nm - 360.0;
            const auto k = std::min(static_cast<std::size_t>(t), std::size_t{469});
            x[5] = ybar[k] + (t - static_cast<double>(k)) * (static_cast<double>(ybar[k + 1]) - ybar[k]);
        }
        for (std::size_t a = 0; a < 5; ++a) x[a] = table_at(kAlphaRows, a + 1, nm);
    }
    return w;
}

int alpha_opic(const float* wl, const float* v, int n, float* r)
{
    // The weights are kept per thread for the last grid: spectra of one
    // instrument come on one grid. Then one trapezoid pass over the data.
    thread_local std::vector<float> grid;
    thread_local std::vector<std::array<double, 6>> weights;
    if (grid.size() != static_cast<std::size_t>(n) || !std::equal(grid.begin(), grid.end(), wl)) {
        weights = alpha_weights(wl, n);
        grid.assign(wl, wl + n);
    }
    constexpr double kSi = 0.01;
    std::array<double, 6> sum{}, previous{};
    for (int i = 0; i < n; ++i) {
        const std::array<double, 6>& w = weights[static_cast<std::size_t>(i)];
        const double half_step = i > 0 ? 0.5 * (static_cast<double>(wl[i]) - wl[i - 1]) : 0.0;
        for (std::size_t a = 0; a < 6; ++a) {
            const double current = v[i] * w[a];
            sum[a] += (previous[a] + current) * half_step;
            previous[a] = current;
        }
    }
    const double illuminance = kKm * sum[5] * kSi;
    r[15] = static_cast<float>(illuminance);
    for (std::size_t a = 0; a < 5; ++a) {
        const double e = sum[a] * kSi;
        r[a] = static_cast<float>(e);
        r[QOMATH_AOPIC_EDI + a] = static_cast<float>(e / kAlphaD65[a]);
        r[QOMATH_AOPIC_DER + a] = illuminance > 0.0 ? static_cast<float>(e / illuminance / kAlphaD65[a]) : 0.0f;
    }
    return kOk;
}

template <class Work>
int run(const float* wl, const float* v, int n, float* r, std::size_t cells, Work work)
{
    if (!r) return kBadArgument;
    std::fill_n(r, cells, 0.0f);
    int st = check(wl, v, n);
    if (st == kOk) st = guarded(kNoMemory, work);
    if (st != kOk && st != kNoCct) std::fill_n(r, cells, 0.0f);
    return st;
}

}  // namespace
}  // namespace qomath::quality

using namespace qomath::quality;

extern "C" {

int ColorRenditionAnalysis(const float* wavelengths, const float* values, int n, float* result)
{
    return run(wavelengths, values, n, result, QOMATH_CRA_COUNT,
               [&] { return rendition(wavelengths, values, n, result); });
}

int UVRadiationCalc(const float* wavelengths, const float* values, int n, int radiance, float* result)
{
    if (radiance != 0 && radiance != 1) {
        if (result) std::fill_n(result, QOMATH_UV_COUNT, 0.0f);
        return kBadArgument;
    }
    return run(wavelengths, values, n, result, QOMATH_UV_COUNT,
               [&] { return uv(wavelengths, values, n, radiance == 1, result); });
}

int AlphaOpicCalc(const float* wavelengths, const float* values, int n, int radiance, float* result)
{
    if (radiance != 0 && radiance != 1) {
        if (result) std::fill_n(result, QOMATH_AOPIC_COUNT, 0.0f);
        return kBadArgument;
    }
    return run(wavelengths, values, n, result, QOMATH_AOPIC_COUNT,
               [&] { return alpha_opic(wavelengths, values, n, result); });
}

}  // extern "C"
