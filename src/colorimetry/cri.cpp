// Colour rendering indices: the test colour samples, the reference
// illuminant, the colours of the samples under both sources, and one
// per-sample index shared by every entry point.
//
// CRI_Calc works on the 5 nm samples through the library's tristimulus
// functions; CRI_DefaultCalc and its wavelength-array variant work on 2 nm
// copies of the samples and of the CIE 1931 colour-matching functions,
// derived here at compile time from the compiled-in tables.
#include "qomath/cri.h"

#include "colorimetry/cri.hpp"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <span>
#include <vector>

#include "colorimetry/daylight.hpp"
#include "common/barrier.hpp"
#include "numerics/interpolation.hpp"
#include "numerics/spectral_arith.hpp"
#include "numerics/resample.hpp"
#include "qomath/arrays.h"
#include "qomath/cct.h"
#include "qomath/chromaticity.h"
#include "qomath/grid.h"
#include "qomath/interpolation.h"
#include "qomath/spectral_arith.h"
#include "qomath/tristimulus.h"

namespace qomath::cri {

using colorimetry::Context;

namespace {

constexpr std::size_t kSamples = QOMATH_CRI_SAMPLES;
constexpr std::size_t kSamplePoints = QOMATH_CRI_SAMPLE_POINTS;
constexpr std::size_t kWorking = kWorkingPoints;
constexpr typ_wlinfo kSampleRange{360.0f, 830.0f, 5.0f};
constexpr typ_wlinfo kWorkingRange{kWorkingStart, kWorkingEnd, kWorkingStep};

// ---- Tables ------------------------------------------------------------------

constexpr double kSampleRows[][16] = {
#include "qomath_data/test_colour_samples_5nm.inc"
};
constexpr double kCmfRows[][4] = {
#include "qomath_data/cie1931_2deg_cmf_1nm.inc"
};
static_assert(std::size(kSampleRows) == kSamplePoints && kSampleRows[0][0] == 360.0 &&
              kSampleRows[kSamplePoints - 1][0] == 830.0);
static_assert(kCmfRows[0][0] == 360.0 && kCmfRows[std::size(kCmfRows) - 1][0] == 830.0);

// Slots 0..13 are samples 1..14; slots 14 and 15 both hold sample 15.
constexpr std::size_t column_of_slot(std::size_t slot)
{
    return std::min<std::size_t>(slot, 14) + 1;
}

using SampleCurve = std::array<float, kSamplePoints>;
using WorkingCurve = std::array<float, kWorking>;

constexpr auto kSamples5nm = [] {
    std::array<SampleCurve, kSamples> out{};
    for (std::size_t s = 0; s < kSamples; ++s)
        for (std::size_t i = 0; i < kSamplePoints; ++i)
            out[s][i] = static_cast<float>(kSampleRows[i][column_of_slot(s)]);
    return out;
}();
constexpr auto kSamples2nm = [] {
    std::array<WorkingCurve, kSamples> out{};
    for (std::size_t s = 0; s < kSamples; ++s) out[s] = on_working_grid(kSampleRows, column_of_slot(s));
    return out;
}();
constexpr std::array<WorkingCurve, 3> kCmf2nm{on_working_grid(kCmfRows, 1),
                                              on_working_grid(kCmfRows, 2),
                                              on_working_grid(kCmfRows, 3)};
constexpr auto kWorkingWavelengths = [] {
    WorkingCurve wl{};
    for (std::size_t i = 0; i < kWorking; ++i) wl[i] = working_wavelength(static_cast<int>(i));
    return wl;
}();

// Published spot values: sample 1 at 380 nm, sample 9 (the strong red) at
// 680 nm, sample 15 at 580 nm in both of its slots; y-bar(556 nm).
static_assert(kSamples5nm[0][4] == 0.219f && kSamples5nm[8][64] == 0.809f);
static_assert(kSamples5nm[14][44] == 0.285f && kSamples5nm[15][44] == 0.285f);
static_assert(kSamples2nm[0][10] == 0.219f && kSamples2nm[8][160] == 0.809f);
static_assert(kCmf2nm[1][98] == static_cast<float>(kCmfRows[196][2]));

// ---- Colour arithmetic -------------------------------------------------------

using Xyz = std::array<float, 3>;

// CIE 1960 chromaticity.
struct Chroma {
    double u = 0.0;
    double v = 0.0;
};

// u, v of X, Y, Z; false for a zero or non-finite denominator.
bool chromaticity(const Xyz& xyz, Chroma& out)
{
    std::array<float, 2> uv{};
    if (TristimulusXYZToCIE1960uv(xyz.data(), uv.data()) != 1) return false;
    out = {uv[0], uv[1]};
    return true;
}

// The von Kries parameters of a chromaticity; 0 where v vanishes.
double c_of(Chroma p)
{
    return std::fabs(p.v) < 1e-10 ? 0.0 : (4.0 - p.u - 10.0 * p.v) / p.v;
}
double d_of(Chroma p)
{
    return std::fabs(p.v) < 1e-10 ? 0.0 : (1.708 * p.v + 0.404 - 1.481 * p.u) / p.v;
}

// Quotient that is NaN, rather than a division by zero, when b is 0; the
// index check below turns it into a failure.
double ratio(double a, double b)
{
    return b == 0.0 ? std::numeric_limits<double>::quiet_NaN() : a / b;
}

// Carries a chromaticity seen under the test source over to the reference
// white (von Kries). A degenerate source gives NaN.
class Adaptation {
public:
    Adaptation(Chroma reference, Chroma test)
        : c_ratio_(ratio(c_of(reference), c_of(test))), d_ratio_(ratio(d_of(reference), d_of(test)))
    {
    }
    Chroma operator()(Chroma sample) const
    {
        const double c = c_ratio_ * c_of(sample);
        const double d = d_ratio_ * d_of(sample);
        const double den = 16.518 + 1.481 * c - d;
        return {ratio(10.872 + 0.404 * c - 4.0 * d, den), ratio(5.52, den)};
    }

private:
    double c_ratio_;
    double d_ratio_;
};

// A sample's chromaticity and lightness W* under one source.
struct SampleColour {
    Chroma uv;
    double w = 0.0;
};

// What distinguishes the entry points in the per-sample index.
struct Method {
    // CRI_Calc measures the adapted test samples from the test source's own,
    // unadapted chromaticity; CRI_DefaultCalc from the reference white.
    bool test_samples_from_own_white;
    // CRI_DefaultCalc forms the colour difference and the index in float.
    bool float_difference;
};

bool fits_float(double v)
{
    return std::fabs(v) <= static_cast<double>(FLT_MAX);  // false for NaN
}

// The special index 100 - 4.6 dE of one sample, from its colour under the
// reference and under the test source (not yet adapted). False when the
// index is not a finite number.
bool special_index(Chroma ref_white, Chroma test_white, const Adaptation& adapt, Method method,
                   const SampleColour& under_ref, const SampleColour& under_test, float& ri)
{
    const Chroma adapted = adapt(under_test.uv);
    const Chroma from = method.test_samples_from_own_white ? test_white : ref_white;
    const double ur = 13.0 * under_ref.w * (under_ref.uv.u - ref_white.u);
    const double vr = 13.0 * under_ref.w * (under_ref.uv.v - ref_white.v);
    const double uk = 13.0 * under_test.w * (adapted.u - from.u);
    const double vk = 13.0 * under_test.w * (adapted.v - from.v);
    const double du = uk - ur, dv = vk - vr, dw = under_test.w - under_ref.w;
    if (method.float_difference) {
        if (!fits_float(du) || !fits_float(dv) || !fits_float(dw)) return false;
        const auto fu = static_cast<float>(du), fv = static_cast<float>(dv),
                   fw = static_cast<float>(dw);
        ri = 100.0f - 4.6f * std::sqrt(fw * fw + fu * fu + fv * fv);
        return std::isfinite(ri);
    }
    const double index = 100.0 - 4.6 * std::sqrt(du * du + dv * dv + dw * dw);
    if (!fits_float(index)) return false;
    ri = static_cast<float>(index);
    return true;
}

// ---- Explicit reference (CRI_Calc) -------------------------------------------

constexpr int kProductFailed = -1;
constexpr int kReferenceFailed = -2;
constexpr int kTestFailed = -3;

// Product of a 5 nm sample with a source (MultiplySpectralFiles); it lies
// on the samples' 5 nm grid or a coarser one inside it.
struct Product {
    std::array<float, kSamplePoints + 1> values{};
    typ_wlinfo range{};
};

bool multiply(const SampleCurve& sample, const float* values, const typ_wlinfo* range,
              Product& out)
{
    return MultiplySpectralFiles(sample.data(), &kSampleRange, values, range, out.values.data(),
                                 &out.range) >= 1;
}

// Colour of a sample from its product with a source: X, Y, Z scaled to
// Y = 100, with the fixed lightness W* = 25 Y^0 - 17 = 8. The exponent 0 is
// what stored CRI_Calc results carry: the lightness difference vanishes and
// U*, V* scale by 13 x 8.
int explicit_sample_colour(const Product& product, int failure, SampleColour& out)
{
    Xyz xyz{};
    if (CalcTristimulusXYZ1931(product.values.data(), &product.range, xyz.data()) != 1)
        return failure;
    const double y = xyz[1];
    const double scale = std::fabs(y) < 1e-10 ? 0.0 : 100.0 / y;
    for (float& c : xyz) c = static_cast<float>(c * scale);
    if (!chromaticity(xyz, out.uv)) return kTestFailed;
    out.w = 25.0 * std::pow(static_cast<double>(xyz[1]), 0.0) - 17.0;
    return 1;
}

int explicit_reference(const float* ref_values, const typ_wlinfo* ref_range,
                       const float* test_values, const typ_wlinfo* test_range, float* ri,
                       int* warnings)
{
    std::fill_n(ri, kSamples, 0.0f);
    int* next_warning = warnings;
    const auto warn = [&](int code) {
        if (next_warning) *next_warning++ = code;
    };
    if (warnings) std::fill_n(warnings, QOMATH_CRI_WARNINGS, 0);
    if (ref_range && ref_range->step >= 10.0f) warn(1);
    if (test_range && test_range->step >= 10.0f) warn(2);

    Xyz ref_xyz{}, test_xyz{};
    if (CalcTristimulusXYZ1931(ref_values, ref_range, ref_xyz.data()) != 1) return kReferenceFailed;
    if (CalcTristimulusXYZ1931(test_values, test_range, test_xyz.data()) != 1) return kTestFailed;
    Chroma ref_white, test_white;
    if (!chromaticity(ref_xyz, ref_white) || !chromaticity(test_xyz, test_white)) return kTestFailed;

    // The difference of the squares, not their sum: hosts' warning lists
    // are built on this test.
    const double du = test_white.u - ref_white.u, dv = test_white.v - ref_white.v;
    if (std::fabs(du * du - dv * dv) > 0.0054) warn(3);

    const Adaptation adapt(ref_white, test_white);
    constexpr Method kMethod{true, false};
    for (std::size_t s = 0; s < kSamples; ++s) {
        Product with_ref, with_test;
        if (!multiply(kSamples5nm[s], ref_values, ref_range, with_ref) ||
            !multiply(kSamples5nm[s], test_values, test_range, with_test))
            return kProductFailed;
        SampleColour under_ref, under_test;
        int status = explicit_sample_colour(with_ref, kReferenceFailed, under_ref);
        if (status == 1) status = explicit_sample_colour(with_test, kTestFailed, under_test);
        if (status != 1) return status;
        if (!special_index(ref_white, test_white, adapt, kMethod, under_ref, under_test, ri[s]))
            return kTestFailed;
    }
    return 1;
}

// ---- Built reference (CRI_DefaultCalc and its variants) ----------------------

// Colours under one source: the source's own X, Y, Z and the samples'.
struct Scene {
    Xyz source{};
    std::array<Xyz, kSamples> samples{};
};

constexpr int kNoColour = 0;  // mapped to each entry point's own status

// The reference on the working grid, built for cct: CIE daylight for
// 5000..25000 K (both inclusive), otherwise a Planckian radiator. out needs
// room for kWorking + 1 values (the radiator's grid count is rounded up).
int built_reference(float cct, float* out, bool cie_constants = false)
{
    if (cct >= 5000.0f && cct <= 25000.0f)
        return DaylightSpectrumFromCCT(out, kWorkingPoints, cct, cie_constants);
    return BlackBodyCurve(cct, 0.36f, 0.83f, 0.002f, out);
}

// Steps shared by CRI_DefaultCalc and CRI_DefaultCalc2X once both scenes
// are known: indices, Ra and the distance flags into out.
int default_indices(const Scene& reference, const Scene& test, float cct, typ_cri_result& out)
{
    Chroma ref_white, test_white;
    if (!chromaticity(reference.source, ref_white) || !chromaticity(test.source, test_white))
        return kNoColour;
    const Adaptation adapt(ref_white, test_white);
    constexpr Method kMethod{false, true};
    const auto colour = [](const Xyz& sample, const Xyz& source, SampleColour& c) {
        // Relative luminance and a true cube root (the exponent literal as
        // stored results were computed with it).
        const double y = ratio(static_cast<double>(sample[1]) * 100.0, source[1]);
        c.w = 25.0 * std::pow(y, 0.333333333333) - 17.0;
        return chromaticity(sample, c.uv);
    };
    typ_cri_result r{};
    for (std::size_t s = 0; s < kSamples; ++s) {
        SampleColour under_ref, under_test;
        if (!colour(reference.samples[s], reference.source, under_ref) ||
            !colour(test.samples[s], test.source, under_test) ||
            !special_index(ref_white, test_white, adapt, kMethod, under_ref, under_test, r.ri[s]))
            return kNoColour;
    }
    float sum = 0.0f;
    for (std::size_t s = 0; s < 8; ++s) sum += r.ri[s];
    const float ra = sum * 0.125f;
    r.ra = ra > 0.0f ? ra : 0.0f;

    const double du = test_white.u - ref_white.u, dv = test_white.v - ref_white.v;
    if (std::sqrt(du * du + dv * dv) >= 0.04) {
        r.far_from_reference = r.far_from_reference_copy = 1;
    } else if (cct > 25000.0f) {
        r.above_25000_k = 1;
    }
    out = r;
    return 1;
}

// The trapezoid integrals of Integrate (float sums, same order) of the
// products weights[c][i] * curve[i], i < n, for the three colour-matching
// weights at once.
Xyz integrate_weighted(const std::array<std::array<float, kWorking + 1>, 3>& weights,
                       const float* curve, std::size_t n, float step)
{
    std::array<float, 3> sum{}, first{}, last{};
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t c = 0; c < 3; ++c) sum[c] += weights[c][i] * curve[i];
    Xyz out{};
    for (std::size_t c = 0; c < 3; ++c) {
        first[c] = weights[c][0] * curve[0];
        last[c] = weights[c][n - 1] * curve[n - 1];
        out[c] = (sum[c] - first[c] / 2.0f - last[c] / 2.0f) * step;
    }
    return out;
}

// The 2 nm samples resampled with Interpolate onto every whole nanometre
// of 360..830 nm, once, at first use. Interpolate's value at a wavelength
// depends only on that wavelength and the source grid, so for any product
// grid of whole nanometres these are exactly the values a per-call
// Interpolate would give, without its per-point Neville work.
constexpr std::size_t kWholeNm = 471;
using WholeNmTable = std::array<std::array<float, kWholeNm>, kSamples>;

const WholeNmTable& samples_at_whole_nm()
{
    static const WholeNmTable table = [] {
        WholeNmTable t{};
        typ_wlinfo from = kWorkingRange, to{kWorkingStart, kWorkingEnd, 1.0f};
        for (std::size_t s = 0; s < kSamples; ++s)
            Interpolate(const_cast<float*>(kSamples2nm[s].data()), &from, t[s].data(), &to);
        return t;
    }();
    return table;
}

// Sample `s` on the n points of grid into out, as Interpolate gives it:
// its equal-step shortcut first, then the whole-nanometre table when every
// point is a whole nanometre inside 360..830 nm, else Interpolate itself.
int sample_on_grid(std::size_t s, const typ_wlinfo& grid, std::size_t n, float* out)
{
    const float* source = kSamples2nm[s].data();
    if (numerics::copy_equal_step(source, kWorkingRange, out, grid)) return 1;
    const bool whole = n >= 4 && grid.start == std::trunc(grid.start) &&
                       grid.step == std::trunc(grid.step) && grid.start >= kWorkingStart &&
                       static_cast<float>(n - 1) * grid.step + grid.start <= kWorkingEnd;
    if (!whole) {
        typ_wlinfo from = kWorkingRange, to = grid;
        return Interpolate(const_cast<float*>(source), &from, out, &to);
    }
    const auto& row = samples_at_whole_nm()[s];
    const auto first = static_cast<std::size_t>(grid.start - kWorkingStart);
    const auto stride = static_cast<std::size_t>(grid.step);
    for (std::size_t i = 0; i < n; ++i) out[i] = row[first + i * stride];
    return 1;
}

// Scene of a source over an evenly spaced range: its products with the
// 2 nm colour-matching functions (MultiplySpectralFiles), integrated; the
// 2 nm samples resampled onto the products' grid (as Interpolate does),
// times the products, integrated.
int scene_on_range(const float* values, const typ_wlinfo* range, Scene& scene)
{
    // The products lie inside 360..830 nm at a step of at least 2 nm.
    std::array<std::array<float, kWorking + 1>, 3> products{};
    typ_wlinfo grid{};
    // The tables' resampling onto the product grid is kept per thread: a
    // host calling spectrum after spectrum on one grid resamples them once.
    thread_local std::array<spectral::TableOnGrid, 3> cmf_on_grid;
    for (std::size_t c = 0; c < 3; ++c) {
        const int status = spectral::multiply_by_table(values, range, kCmf2nm[c].data(), &kWorkingRange,
                                                       products[c].data(), &grid, cmf_on_grid[c]);
        if (status != 1) return status;
    }
    const int points = WLNumPts(&grid);
    if (points < 2 || points > kWorkingPoints) return -3;
    const auto n = static_cast<std::size_t>(points);

    std::array<float, kWorking + 1> ones{};
    std::fill_n(ones.begin(), n, 1.0f);
    scene.source = integrate_weighted(products, ones.data(), n, grid.step);

    std::array<float, kWorking + 1> sample{};
    for (std::size_t s = 0; s < kSamples; ++s) {
        const int status = sample_on_grid(s, grid, n, sample.data());
        if (status != 1) return status;
        scene.samples[s] = integrate_weighted(products, sample.data(), n, grid.step);
    }
    return 1;
}

int default_calc(const float* ref_values, const typ_wlinfo* ref_range, const float* test_values,
                 const typ_wlinfo* test_range, const float* cct, float* result)
{
    std::fill_n(result, QOMATH_CRI_RESULT_CELLS, 0.0f);
    if (!test_values || !test_range || !cct) return -1;

    std::array<float, kWorking + 1> reference{};
    int status = 1;
    if (ref_values && ref_range && WLNumPts(ref_range) >= 50) {
        typ_wlinfo from = *ref_range, to = kWorkingRange;
        status = Interpolate(const_cast<float*>(ref_values), &from, reference.data(), &to);
    } else {
        status = built_reference(*cct, reference.data());
    }
    if (status != 1) return status;

    Scene ref_scene, test_scene;
    if ((status = scene_on_range(test_values, test_range, test_scene)) != 1 ||
        (status = scene_on_range(reference.data(), &kWorkingRange, ref_scene)) != 1)
        return status;
    typ_cri_result r{};
    if (default_indices(ref_scene, test_scene, *cct, r) != 1) return -1;
    std::memcpy(result, &r, sizeof r);
    return 1;
}

// ---- Wavelength arrays (CRI_DefaultCalc2X) -----------------------------------

bool increasing(const float* wl, int n)
{
    for (int i = 0; i < n; ++i)
        if (!std::isfinite(wl[i]) || (i > 0 && !(wl[i - 1] < wl[i]))) return false;
    return true;
}


constexpr int kResampleFailed = -4;

// The reference on the working grid: the caller's when given with at least
// 50 increasing points, otherwise built for cct.
int reference_on_working_grid(const Context& ctx, const Curve& given, float cct, float* out)
{
    if (given.wl && given.values && given.n >= 50 && increasing(given.wl, given.n))
        return numerics::interpolate2(ctx.cache(), given.wl, given.values, given.n,
                                      kWorkingWavelengths.data(), out, kWorkingPoints) == 1
                   ? 1
                   : kResampleFailed;
    return built_reference(cct, out, ctx.constants == colorimetry::Constants::cie) == 1
               ? 1
               : kResampleFailed;
}

}  // namespace

int default_calc_arrays(const Context& ctx, const Curve& given_ref, const Curve& test, float cct,
                        const std::array<Curve, 2>& own_samples, float* result)
{
    const auto n = static_cast<std::size_t>(test.n);
    const std::span<const float> wl(test.wl, n);
    std::vector<float> scratch(6 * n);
    const auto part = [&](std::size_t k) { return std::span<float>(scratch).subspan(k * n, n); };
    const std::array<std::span<float>, 3> cmf{part(0), part(1), part(2)};
    const std::span<float> reference = part(3), sample = part(4), product = part(5);

    std::array<float, kWorking + 1> ref_working{};
    if (reference_on_working_grid(ctx, given_ref, cct, ref_working.data()) != 1)
        return kResampleFailed;
    // The 2 nm tables are constant: resampled once per test grid.
    const auto onto_test = [&](const float* xs, const float* ys, int count, std::span<float> out,
                               bool constant) {
        return numerics::interpolate2(ctx.cache(), xs, ys, count, test.wl, out.data(), test.n,
                                      constant) == 1;
    };
    if (!onto_test(kWorkingWavelengths.data(), ref_working.data(), kWorkingPoints, reference, false))
        return kResampleFailed;
    for (std::size_t c = 0; c < 3; ++c)
        if (!onto_test(kWorkingWavelengths.data(), kCmf2nm[c].data(), kWorkingPoints, cmf[c], true))
            return kResampleFailed;

    // X, Y, Z of a source (and of a sample under it) by the trapezoid rule
    // over the test wavelengths, IntegrationDiscrete's arithmetic for each
    // component. Beyond the tables the observer sees nothing, whatever the
    // extrapolated curves say there.
    for (std::size_t i = 1; i < n; ++i) product[i] = wl[i] - wl[i - 1];  // the steps
    // Reference and test at once: six independent sums per point.
    const auto xyz_of = [&](std::span<const float> la, std::span<const float> lb,
                            const float* reflectance, Xyz& xa, Xyz& xb) {
        std::array<double, 6> sum{};
        std::array<float, 6> previous{};
        for (std::size_t i = 0; i < n; ++i) {
            const bool inside = wl[i] >= kWorkingStart && wl[i] <= kWorkingEnd;
            const float r = reflectance ? reflectance[i] : 1.0f;
            for (std::size_t c = 0; c < 6; ++c) {
                const float light = c < 3 ? la[i] : lb[i];
                const float current = inside ? cmf[c % 3][i] * light * r : 0.0f;
                if (i > 0)
                    sum[c] += static_cast<double>(previous[c] + current) * 0.5 *
                              static_cast<double>(product[i]);
                previous[c] = current;
            }
        }
        for (std::size_t c = 0; c < 3; ++c) {
            xa[c] = static_cast<float>(sum[c]);
            xb[c] = static_cast<float>(sum[c + 3]);
        }
    };
    Scene ref_scene, test_scene;
    const std::span<const float> test_values(test.values, n);
    xyz_of(reference, test_values, nullptr, ref_scene.source, test_scene.source);
    for (std::size_t s = 0; s < kSamples; ++s) {
        const Curve own = s >= 14 ? own_samples[s - 14] : Curve{};
        const bool resampled =
            own.n > 0 ? onto_test(own.wl, own.values, own.n, sample, false)
                      : onto_test(kWorkingWavelengths.data(), kSamples2nm[s].data(),
                                  kWorkingPoints, sample, true);
        if (!resampled) return kResampleFailed;
        xyz_of(reference, test_values, sample.data(), ref_scene.samples[s], test_scene.samples[s]);
    }
    typ_cri_result r{};
    if (default_indices(ref_scene, test_scene, cct, r) != 1) return -5;
    std::memcpy(result, &r, sizeof r);
    return 1;
}

int default_calc2(const Context& ctx, const float* ref_wl, const float* ref_values, int ref_n,
                  const float* test_wl, const float* test_values, int test_n, float cct,
                  const Curve& sample15, const Curve& sample16, float* result)
{
    if (result) std::fill_n(result, QOMATH_CRI_RESULT_CELLS, 0.0f);
    if (!(cct >= 1000.0f && cct <= 30000.0f)) return -1;
    if (!result || !test_wl || !test_values || test_n < 10 || !increasing(test_wl, test_n))
        return -2;
    const std::array<Curve, 2> own{sample15, sample16};
    for (const Curve& c : own) {
        if (c.n <= 0) continue;
        // A sample of the caller's must cover the whole colorimetric range.
        if (!c.wl || !c.values || c.n < 4 || !increasing(c.wl, c.n) ||
            c.wl[0] > kWorkingStart || c.wl[c.n - 1] < kWorkingEnd)
            return -3;
    }
    return qomath::detail::guarded(kResampleFailed, [&] {
        return default_calc_arrays(ctx, Curve{ref_wl, ref_values, ref_n},
                                   Curve{test_wl, test_values, test_n}, cct, own, result);
    });
}

}  // namespace qomath::cri

using namespace qomath::cri;
using qomath::detail::guarded;

extern "C" {

int GetCRITestColorData(int sample, float* reflectance, typ_wlinfo* range)
{
    if (!reflectance || !range) return -1;
    const int slot = sample < 0 || sample >= static_cast<int>(kSamples) ? 0 : sample;
    const SampleCurve& curve = kSamples5nm[static_cast<std::size_t>(slot)];
    std::copy(curve.begin(), curve.end(), reflectance);
    *range = kSampleRange;
    return slot;
}

int CRI_Calc(const float* ref_values, const typ_wlinfo* ref_range, const float* test_values,
             const typ_wlinfo* test_range, float* ri, int* warnings)
{
    if (!ri) return kProductFailed;
    return guarded(kProductFailed, [&] {
        return explicit_reference(ref_values, ref_range, test_values, test_range, ri, warnings);
    });
}

int CRI_DefaultCalc(const float* ref_values, const typ_wlinfo* ref_range,
                    const float* test_values, const typ_wlinfo* test_range, const float* cct,
                    float* result)
{
    if (!result) return -1;
    return guarded(-4, [&] {
        return default_calc(ref_values, ref_range, test_values, test_range, cct, result);
    });
}

int CRI_DefaultCalc2X(const float* ref_wl, const float* ref_values, int ref_n,
                      const float* test_wl, const float* test_values, int test_n, float cct,
                      const float* sample15_wl, const float* sample15_values, int sample15_n,
                      const float* sample16_wl, const float* sample16_values, int sample16_n,
                      float* result)
{
    return default_calc2(qomath::colorimetry::compatible_context(), ref_wl, ref_values, ref_n,
                         test_wl, test_values, test_n, cct,
                         Curve{sample15_wl, sample15_values, sample15_n},
                         Curve{sample16_wl, sample16_values, sample16_n}, result);
}

int CRI_DefaultCalc2(const float* ref_wl, const float* ref_values, int ref_n,
                     const float* test_wl, const float* test_values, int test_n, float cct,
                     float* result)
{
    return CRI_DefaultCalc2X(ref_wl, ref_values, ref_n, test_wl, test_values, test_n, cct,
                             nullptr, nullptr, 0, nullptr, nullptr, 0, result);
}

}  // extern "C"
