// The summary calculations: every colorimetric, photometric and radiometric
// result of one spectrum in one call.
//
// Nothing here computes colour itself. Each result comes from one call of
// the function that owns it (tristimulus, chromaticity, CCT, dominant
// wavelength, CRI, photometry, peaks); this file validates the input, picks
// the illuminant or white point, routes the statuses and lays the results out.
//
// Both input forms share one path: a range record is laid out as wavelength
// arrays with WavelengthCreateArray and handed to the array form.
#include "qomath/summary.h"

#include "colorimetry/summary.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <span>
#include <vector>

#include "colorimetry/cri.hpp"
#include "colorimetry/photometry.hpp"
#include "colorimetry/tristimulus.hpp"
#include "common/barrier.hpp"
#include "qomath/arrays.h"
#include "qomath/cct.h"
#include "qomath/chromaticity.h"
#include "qomath/cie_tables.h"
#include "qomath/cri.h"
#include "qomath/dominant.h"
#include "qomath/grid.h"
#include "qomath/peaks.h"
#include "qomath/photometry.h"
#include "qomath/spectral_arith.h"
#include "qomath/tristimulus.h"

namespace qomath::summary {

using colorimetry::Context;
using qomath::detail::guarded;

namespace {

// Status codes of ColorimetricCalc (see summary.h).
constexpr int kOk = 1;
constexpr int kBadArgument = -1;
constexpr int kBadData = -2;
constexpr int kOutOfReach = -3;
constexpr int kNoMemory = -4;
constexpr int kNoColour = -5;
// RadiometryCalc
constexpr int kBadBand = -3;

constexpr int kMinColourPoints = 5;
constexpr int kMinRadiometryPoints = 2;
constexpr int kMaxRangePoints = 4096;  // what WavelengthCreateArray lays out
constexpr float kReachLow = 370.0f;    // the data must reach into 370..820 nm
constexpr float kReachHigh = 820.0f;

enum Unit { kCounts = 0, kIrradiance, kRadiantIntensity, kRadiantFlux, kRadiance,
            kTransmittance, kReflectance, kUnitCount };

// GetCIEData selectors of the illuminants.
constexpr int kTableA = 6;
constexpr int kTableC = 8;
constexpr int kTableD65 = 9;

// Illuminants of transmittance and reflectance, numbered as in summary.h.
constexpr int kIllumD65 = 1;
constexpr int kIllumA = 2;
constexpr int kIllumC = 3;
constexpr int kEmitting = -1;

constexpr float kOneThird = 1.0f / 3.0f;
constexpr float kAtWhite = 1e-5f;  // x and y this close to the white: no hue
constexpr float kNotFound = -1.0f;  // Centroid2 for a weight sum that is not positive

constexpr std::size_t kCriRa = 16;    // cell of Ra in the CRI_DefaultCalc result
constexpr std::size_t kCriReported = 15;  // R1..R15 are reported

struct Spectrum {
    std::vector<float> wl;
    std::vector<float> v;
    int n() const { return static_cast<int>(wl.size()); }
};

// A CIE illuminant with its own chromaticity.
struct Illuminant {
    Spectrum spd;
    float x = 0.0f;
    float y = 0.0f;
};

// Table `selector` of GetCIEData as wavelength and value arrays.
Spectrum table_spectrum(int selector)
{
    std::array<float, QOMATH_CIE_MAX_POINTS> values{};
    typ_wlinfo range{};
    Spectrum s;
    if (GetCIEData(selector, values.data(), &range) != 1) throw std::bad_alloc();
    const int n = std::min(WLNumPts(&range), QOMATH_CIE_MAX_POINTS);
    s.wl.resize(static_cast<std::size_t>(n));
    int made = 0;
    if (WavelengthCreateArray(&range, s.wl.data(), &made) != 1 || made != n) {
        throw std::bad_alloc();
    }
    s.v.assign(values.begin(), values.begin() + n);
    return s;
}

Illuminant make_illuminant(int selector)
{
    Illuminant il;
    il.spd = table_spectrum(selector);
    std::array<float, 3> XYZ{};
    std::array<float, 3> xyz{};
    // The tables are constant; the only way these can fail is a lack of
    // memory, reported as such. A throw leaves the cache below unbuilt, so
    // the next call tries again.
    if (CalcTristimulusXYZ1931_2(il.spd.wl.data(), il.spd.v.data(), il.spd.n(), XYZ.data()) != 1 ||
        TristimulusXYZTOCIE1931xyz(XYZ.data(), xyz.data()) != 1) {
        throw std::bad_alloc();
    }
    il.x = xyz[0];
    il.y = xyz[1];
    return il;
}

// D65, A and C, built once per process on first use.
struct Illuminants {
    Illuminant d65, a, c;
};

const Illuminants& illuminants()
{
    static const Illuminants cache{make_illuminant(kTableD65), make_illuminant(kTableA),
                                   make_illuminant(kTableC)};
    return cache;
}

const Illuminant& illuminant(int which)
{
    const Illuminants& all = illuminants();
    switch (which) {
    case kIllumA: return all.a;
    case kIllumC: return all.c;
    default: return all.d65;
    }
}


bool all_finite(std::span<const float> r)
{
    return std::all_of(r.begin(), r.end(), [](float f) { return std::isfinite(f); });
}

// A failing tristimulus call as a status of ColorimetricCalc: memory is
// memory, anything else means too little usable data in 370..820 nm.
int tristimulus_failure(int status)
{
    return status == -4 ? kNoMemory : kOutOfReach;
}

// The photometric value of the unit into *out (0 for units without one).
// Returns 1 or a status of ColorimetricCalc.
int photometric(const Context& ctx, const float* wl, const float* v, int n, int unit, float* out)
{
    *out = 0.0f;
    if (unit < kIrradiance || unit > kRadiance) return kOk;
    const int st = photometry::photometric_value(ctx, unit, wl, v, n, out);
    if (st == 1) return kOk;
    *out = 0.0f;
    // The input was checked: what is left is memory or an overflowing result.
    return st == -4 ? kNoMemory : kNoColour;
}

// Dominant (or complementary) wavelength and purities from `white`.
void dominant(const std::array<float, 3>& xyz, float white_x, float white_y, float* r)
{
    // A sample at the white has no direction, hence no dominant wavelength
    // (it would otherwise be a vertical line through a nudged white).
    if (std::fabs(xyz[0] - white_x) < kAtWhite && std::fabs(xyz[1] - white_y) < kAtWhite) return;
    std::array<float, 2> sample{xyz[0], xyz[1]};
    std::array<float, 2> white{white_x, white_y};
    std::array<float, 3> locus{};
    float wavelength = 0.0f;
    if (DominantWavelength2(sample.data(), white.data(), locus.data(), &wavelength) !=
            QOMATH_DOMINANT_FOUND ||
        !std::isfinite(wavelength) || wavelength == 0.0f) {
        return;
    }
    r[QOMATH_CC_DOMINANT_WL] = std::fabs(wavelength);
    r[QOMATH_CC_DOMINANT_KIND] = wavelength > 0.0f ? 1.0f : -1.0f;
    if (wavelength < 0.0f) return;  // no purity towards the purple line here
    // The sample and white as DominantWavelength2 used them (it may nudge x).
    typ_purity p{sample[1], white[1], locus[1], sample[0], white[0], locus[0], 0.0f, 0.0f};
    if (ExcitationColorimetricPurity(reinterpret_cast<float*>(&p)) == 1) {
        r[QOMATH_CC_EXCITATION_PURITY] = p.excitation_purity;
        r[QOMATH_CC_COLORIMETRIC_PURITY] = p.colorimetric_purity;
    }
}

// Ra and R1..R15 of an emitting source of correlated colour temperature cct.
int rendering(const Context& ctx, const float* wl, const float* v, int n, float cct, float* r)
{
    std::array<float, QOMATH_CRI_RESULT_CELLS> cells{};
    const int st = cri::default_calc2(ctx, nullptr, nullptr, 0, wl, v, n, cct, {}, {}, cells.data());
    if (st == -4) return kNoMemory;
    if (st != 1) return kOk;  // no indices for this source: they stay 0
    const std::span<const float> reported(cells.data(), kCriReported);
    if (!std::isfinite(cells[kCriRa]) || !all_finite(reported)) return kOk;
    r[QOMATH_CC_RA] = cells[kCriRa];
    std::copy(reported.begin(), reported.end(), r + QOMATH_CC_R1);
    return kOk;
}

// The illuminant on the sample's own wavelengths (interpolated through ctx's
// cache), 0 outside its table. Returns 1, or the interpolation's status.
int illuminant_on(const Context& ctx, const Spectrum& spd, const float* wl, int n,
                  std::vector<float>& out)
{
    out.assign(static_cast<std::size_t>(n), 0.0f);
    // The illuminants are built once per process and never change.
    const int st = numerics::interpolate2(ctx.cache(), spd.wl.data(), spd.v.data(), spd.n(), wl,
                                          out.data(), n, true);
    if (st != 1) return st;
    for (int i = 0; i < n; ++i)
        if (wl[i] < spd.wl.front() || wl[i] > spd.wl.back()) out[static_cast<std::size_t>(i)] = 0.0f;
    return 1;
}

// Everything but the white point of an already validated spectrum.
int colorimetry(const Context& ctx, const float* wl, const float* v, int n, int unit, int white,
                int illum, float* r, ObjectColour* object)
{
    const bool seen = unit == kTransmittance || unit == kReflectance;
    const float* cwl = wl;  // the spectrum whose colour is reported
    const float* cv = v;
    int cn = n;
    Spectrum product;
    std::array<float, 3> white_xyz{};  // the perfect sample, on the data's sampling
    std::vector<float> lit;            // the illuminant on the data's wavelengths
    if (seen && ctx.on_data()) {
        if (illum != kIllumA && illum != kIllumC) illum = kIllumD65;
        const int ist = illuminant_on(ctx, illuminant(illum).spd, wl, n, lit);
        if (ist == -4) return kNoMemory;
        if (ist != 1) return kOutOfReach;
        const int wst = tristimulus::components(ctx, wl, lit.data(), n,
                                                tristimulus::Components::xyz1931, white_xyz.data());
        if (wst != 1) return tristimulus_failure(wst);
        if (!(white_xyz[1] > 0.0f)) return kOutOfReach;
        product.wl.assign(wl, wl + n);
        product.v.resize(static_cast<std::size_t>(n));
        for (std::size_t i = 0; i < product.v.size(); ++i) product.v[i] = v[i] * lit[i];
        cwl = product.wl.data();
        cv = product.v.data();
    } else if (seen) {
        if (illum != kIllumA && illum != kIllumC) illum = kIllumD65;
        const Spectrum& spd = illuminant(illum).spd;
        const std::size_t room = static_cast<std::size_t>(std::max(n, spd.n()));
        product.wl.resize(room);
        product.v.resize(room);
        int m = 0;
        const int st = MultiplySpectralFiles2(wl, v, n, spd.wl.data(), spd.v.data(), spd.n(),
                                              product.wl.data(), product.v.data(), &m);
        if (st == -4) return kNoMemory;
        if (st != 1 || m < kMinColourPoints) return kOutOfReach;
        cwl = product.wl.data();
        cv = product.v.data();
        cn = m;
    }

    std::array<float, 3> XYZ{};
    std::array<float, 3> XYZ10{};
    int st = tristimulus::components(ctx, cwl, cv, cn, tristimulus::Components::xyz1931, XYZ.data());
    if (st != 1) return tristimulus_failure(st);
    st = tristimulus::components(ctx, cwl, cv, cn, tristimulus::Components::xyz1964, XYZ10.data());
    if (st != 1) return tristimulus_failure(st);
    if (seen && ctx.on_data()) {
        // Object colour: the perfect sample under the illuminant has Y = 100
        // and Y10 = 100, each observer scaled by its own white.
        std::array<float, 3> white10{};
        st = tristimulus::components(ctx, wl, lit.data(), n, tristimulus::Components::xyz1964,
                                     white10.data());
        if (st != 1 || !(white10[1] > 0.0f)) return tristimulus_failure(st);
        const double k10 = 100.0 / white10[1];
        for (float& c : XYZ10) c = static_cast<float>(c * k10);
        const double k = 100.0 / white_xyz[1];
        for (float& c : XYZ) c = static_cast<float>(c * k);
        for (float& c : white_xyz) c = static_cast<float>(c * k);
        if (object) {
            std::copy(white_xyz.begin(), white_xyz.end(), object->white);
            const std::array<float, 3> relative{XYZ[0] / 100.0f, XYZ[1] / 100.0f, XYZ[2] / 100.0f};
            object->valid = CalculateCIE1976Lab(relative.data(), nullptr, white_xyz.data(), nullptr,
                                                object->lab) == 1;
        }
    }

    std::array<float, 3> xyz{};
    std::array<float, 3> xyz10{};
    std::array<float, 2> uv{};
    std::array<float, 2> upvp{};
    std::array<float, 2> upvp10{};
    if (TristimulusXYZTOCIE1931xyz(XYZ.data(), xyz.data()) != 1 ||
        TristimulusXYZTOCIE1931xyz(XYZ10.data(), xyz10.data()) != 1 ||
        TristimulusXYZToCIE1960uv(XYZ.data(), uv.data()) != 1 ||
        TristimulusXYZToUCS1976uv(XYZ.data(), upvp.data()) != 1 ||
        TristimulusXYZToUCS1976uv(XYZ10.data(), upvp10.data()) != 1) {
        return kNoColour;
    }
    std::copy(XYZ.begin(), XYZ.end(), r + QOMATH_CC_X);
    std::copy(XYZ10.begin(), XYZ10.end(), r + QOMATH_CC_X10);
    r[QOMATH_CC_U] = uv[0];
    r[QOMATH_CC_V] = uv[1];
    r[QOMATH_CC_UP] = upvp[0];
    r[QOMATH_CC_VP] = upvp[1];
    std::copy(xyz.begin(), xyz.end(), r + QOMATH_CC_x);
    std::copy(xyz10.begin(), xyz10.end(), r + QOMATH_CC_x10);
    r[QOMATH_CC_UP10] = upvp10[0];
    r[QOMATH_CC_VP10] = upvp10[1];

    typ_cct cct{};
    if (CCTCalculate(uv.data(), reinterpret_cast<float*>(&cct)) == 1 && std::isfinite(cct.cct) &&
        std::isfinite(cct.duv)) {
        r[QOMATH_CC_CCT] = cct.cct;
        r[QOMATH_CC_DUV] = cct.duv;
    }

    if (white < QOMATH_WHITE_E || white > QOMATH_WHITE_C) white = QOMATH_WHITE_E;
    float wx = kOneThird;
    float wy = kOneThird;
    if (white != QOMATH_WHITE_E) {
        const Illuminant& w = illuminant(white == QOMATH_WHITE_D65 ? kIllumD65
                                         : white == QOMATH_WHITE_A ? kIllumA
                                                                   : kIllumC);
        wx = w.x;
        wy = w.y;
    }
    dominant(xyz, wx, wy, r);

    if (!seen && r[QOMATH_CC_CCT] > 0.0f) {
        st = rendering(ctx, wl, v, n, r[QOMATH_CC_CCT], r);
        if (st != kOk) return st;
    }
    st = photometric(ctx, wl, v, n, unit, r + QOMATH_CC_PHOTOMETRIC);
    if (st != kOk) return st;

    r[QOMATH_CC_UNIT] = static_cast<float>(unit);
    r[QOMATH_CC_WHITE] = static_cast<float>(white);
    r[QOMATH_CC_ILLUMINANT] = static_cast<float>(seen ? illum : kEmitting);
    return all_finite(std::span<const float>(r, QOMATH_CC_COUNT)) ? kOk : kNoColour;
}

}  // namespace

int colorimetric(const Context& ctx, const float* wl, const float* v, int n, int unit, int white,
                 int illum, float* r, ObjectColour* object)
{
    if (object) *object = ObjectColour{};
    std::fill(r, r + QOMATH_CC_COUNT, 0.0f);
    if (!wl || !v || unit < 0 || unit >= kUnitCount) return kBadArgument;
    if (n < kMinColourPoints || !finite_and_increasing(wl, v, n)) return kBadData;
    if (wl[n - 1] <= kReachLow || wl[0] >= kReachHigh) return kOutOfReach;
    const int st = guarded(kNoMemory, [&] {
        return colorimetry(ctx, wl, v, n, unit, white, illum, r, object);
    });
    if (st != kOk) {
        std::fill(r, r + QOMATH_CC_COUNT, 0.0f);
        if (object) *object = ObjectColour{};
    }
    return st;
}

namespace {

// The wavelengths of a range record of at least `min_points` points, or an
// empty vector for an invalid record (or one too long to lay out).
std::vector<float> range_wavelengths(const typ_wlinfo* range, int min_points)
{
    const int n = WLNumPts(range);
    if (n < min_points || n > kMaxRangePoints) return {};
    std::vector<float> wl(static_cast<std::size_t>(n));
    int made = 0;
    if (WavelengthCreateArray(range, wl.data(), &made) != 1 || made != n) return {};
    return wl;
}

// ---- Radiometry -------------------------------------------------------------

// The value of the spectrum at x, on the straight line between the samples
// that bracket it (the line the trapezoid rule integrates). wl[0] <= x <= wl[n-1].
float value_at(std::span<const float> wl, std::span<const float> v, float x)
{
    const auto hi = std::lower_bound(wl.begin(), wl.end(), x);
    const std::size_t j = static_cast<std::size_t>(hi - wl.begin());
    if (j < wl.size() && wl[j] == x) return v[j];
    const std::size_t i = j - 1;  // wl[i] < x < wl[j]
    const double t = (static_cast<double>(x) - wl[i]) / (static_cast<double>(wl[j]) - wl[i]);
    return static_cast<float>(v[i] + (static_cast<double>(v[j]) - v[i]) * t);
}

// Trapezoid integral of the spectrum over [lo, hi], clipped to the data:
// the edge values on the joining line, the samples strictly inside between.
float band_integral(std::span<const float> wl, std::span<const float> v, float lo, float hi,
                    std::vector<float>& bx, std::vector<float>& by)
{
    lo = std::max(lo, wl.front());
    hi = std::min(hi, wl.back());
    if (!(lo < hi)) return 0.0f;
    const auto first = std::upper_bound(wl.begin(), wl.end(), lo);  // > lo
    const auto last = std::lower_bound(first, wl.end(), hi);        // >= hi
    bx.assign(1, lo);
    by.assign(1, value_at(wl, v, lo));
    bx.insert(bx.end(), first, last);
    by.insert(by.end(), v.begin() + (first - wl.begin()), v.begin() + (last - wl.begin()));
    bx.push_back(hi);
    by.push_back(value_at(wl, v, hi));
    return IntegrationDiscrete(bx.data(), by.data(), static_cast<int>(bx.size()));
}

constexpr float kUvLow = 200.0f;
constexpr float kUvHigh = 380.0f;
constexpr float kVisibleHigh = 780.0f;
constexpr float kIrHigh = 1100.0f;

int radiometry(const Context& ctx, const float* wl, const float* v, int n, float lo, float hi,
               float* r)
{
    // Copies: the peak functions take non-const arrays.
    std::vector<float> x(wl, wl + n);
    std::vector<float> y(v, v + n);
    std::vector<float> bx;
    std::vector<float> by;
    bx.reserve(static_cast<std::size_t>(n) + 2);
    by.reserve(static_cast<std::size_t>(n) + 2);
    const std::span<const float> sx(x);
    const std::span<const float> sy(y);

    r[QOMATH_RC_BAND] = band_integral(sx, sy, lo, hi, bx, by);
    int k = -1;
    r[QOMATH_RC_PEAK_WL] = GetPeakWavelength2(x.data(), y.data(), n, &k);
    r[QOMATH_RC_PEAK_VALUE] = k >= 0 && k < n ? y[static_cast<std::size_t>(k)] : 0.0f;
    if (ctx.on_data()) {
        // integral(wl S) / integral(S), both by the trapezoid rule on the data.
        bx.clear();
        for (std::size_t i = 0; i < x.size(); ++i) bx.push_back(x[i] * y[i]);
        const double area = IntegrationDiscrete(x.data(), y.data(), n);
        const double moment = IntegrationDiscrete(x.data(), bx.data(), n);
        bx.clear();
        r[QOMATH_RC_CENTROID] = area > 1e-19 ? static_cast<float>(moment / area) : 0.0f;
    } else {
        const float centroid = Centroid2(x.data(), y.data(), n);
        r[QOMATH_RC_CENTROID] = centroid == kNotFound ? 0.0f : centroid;
    }
    // Between the interpolated half-maximum crossings, or from sample indices.
    const float fwhm = ctx.on_data() ? OLDFWHM(x.data(), y.data(), n)
                                     : ComputeFWHMoptions(x.data(), y.data(), n);
    r[QOMATH_RC_FWHM] = std::isfinite(fwhm) ? fwhm : 0.0f;
    r[QOMATH_RC_UV] = band_integral(sx, sy, kUvLow, kUvHigh, bx, by);
    r[QOMATH_RC_VISIBLE] = band_integral(sx, sy, kUvHigh, kVisibleHigh, bx, by);
    r[QOMATH_RC_IR] = band_integral(sx, sy, kVisibleHigh, kIrHigh, bx, by);
    r[QOMATH_RC_TOTAL] = IntegrationDiscrete(x.data(), y.data(), n);
    return all_finite(std::span<const float>(r, QOMATH_RC_COUNT)) ? kOk : kBadData;
}

}  // namespace

bool finite_and_increasing(const float* wl, const float* v, int n)
{
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(wl[i]) || !std::isfinite(v[i])) return false;
        if (i > 0 && !(wl[i] > wl[i - 1])) return false;
    }
    return true;
}

float band_integral(std::span<const float> wl, std::span<const float> v, float lo, float hi)
{
    std::vector<float> bx;
    std::vector<float> by;
    return band_integral(wl, v, lo, hi, bx, by);
}

int radiometric(const Context& ctx, const float* wl, const float* v, int n, float lo, float hi,
                float* r)
{
    std::fill(r, r + QOMATH_RC_COUNT, 0.0f);
    if (!wl || !v) return kBadArgument;
    if (n < kMinRadiometryPoints || !finite_and_increasing(wl, v, n)) return kBadData;
    if (!(lo < hi)) return kBadBand;
    const int st = guarded(kNoMemory, [&] { return radiometry(ctx, wl, v, n, lo, hi, r); });
    if (st != kOk) std::fill(r, r + QOMATH_RC_COUNT, 0.0f);
    return st;
}

}  // namespace qomath::summary

using namespace qomath::summary;
using qomath::colorimetry::compatible_context;

extern "C" {

QOMATH_API int ColorimetricCalc(const float* wavelengths, const float* values, int n, int unitCode,
                                int white, int illuminant, float* result)
{
    if (!result) return kBadArgument;
    std::fill(result, result + QOMATH_CC_COUNT, 0.0f);
    return colorimetric(compatible_context(), wavelengths, values, n, unitCode, white, illuminant,
                        result, nullptr);
}

QOMATH_API int ColorimetricCalc2(const float* values, const typ_wlinfo* range, int unitCode,
                                 int white, int illuminant, float* result)
{
    if (!result) return kBadArgument;
    std::fill(result, result + QOMATH_CC_COUNT, 0.0f);
    if (!values || !range || unitCode < 0 || unitCode >= kUnitCount) return kBadArgument;
    return qomath::detail::guarded(kNoMemory, [&] {
        const std::vector<float> wl = range_wavelengths(range, kMinColourPoints);
        if (wl.empty()) return kBadData;
        return colorimetric(compatible_context(), wl.data(), values, static_cast<int>(wl.size()),
                            unitCode, white, illuminant, result, nullptr);
    });
}

QOMATH_API int RadiometryCalc(const float* wavelengths, const float* values, int n, float bandStart,
                              float bandEnd, float* result)
{
    if (!result) return kBadArgument;
    std::fill(result, result + QOMATH_RC_COUNT, 0.0f);
    return radiometric(compatible_context(), wavelengths, values, n, bandStart, bandEnd, result);
}

QOMATH_API int RadiometryCalc2(const float* values, const typ_wlinfo* range, float bandStart,
                               float bandEnd, float* result)
{
    if (!result) return kBadArgument;
    std::fill(result, result + QOMATH_RC_COUNT, 0.0f);
    if (!values || !range) return kBadArgument;
    return qomath::detail::guarded(kNoMemory, [&] {
        // WavelengthCreateArray lays out 3 points or more.
        const std::vector<float> wl = range_wavelengths(range, 3);
        if (wl.empty()) return kBadData;
        return radiometric(compatible_context(), wl.data(), values, static_cast<int>(wl.size()),
                           bandStart, bandEnd, result);
    });
}

}  // extern "C"
