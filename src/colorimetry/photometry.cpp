// Photometric quantities of a measured spectrum, and conversions between
// photometric units.
//
// Illuminance, luminance, luminous intensity and luminous flux share one
// weighting: y-bar times the spectrum on their common grid (the array-style
// spectral product), the trapezoid integral of that, times 683 lm/W. They
// differ only in the unit factors applied afterwards.
#include "qomath/photometry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <new>
#include <span>
#include <vector>

#include "colorimetry/cie_tables.hpp"
#include "colorimetry/photometry.hpp"
#include "colorimetry/tristimulus.hpp"
#include "common/barrier.hpp"
#include "qomath/grid.h"
#include "qomath/spectral_arith.h"

namespace qomath::photometry {
namespace {

using qomath::detail::guarded;

constexpr int kYbarSelector = 1;  // CIE 1931 2-degree y-bar
constexpr int kYbarPoints = 471;  // 360..830 nm by 1 nm
constexpr float kLumensPerWatt = 683.0f;
constexpr double kMicroWattsPerCm2InWattsPerM2 = 100.0;  // uW/cm^2 -> W/m^2 divides by 100
constexpr double kMicroWattsInWatts = 1000000.0;
constexpr std::size_t kNit = 0;
// One foot is 0.3048 m exactly. Lux to foot-candles uses this exact figure
// while the conversion table keeps its rounded 0.0929; callers see both.
constexpr double kFootCandlesPerLux = 0.09290304;

static_assert(std::all_of(kLuminanceNames.begin(), kLuminanceNames.end(),
                          [](std::string_view s) { return s.size() < kLuminanceNameSize; }) &&
              kUndefinedName.size() < kIlluminanceNameSize &&
              std::all_of(kIlluminanceNames.begin(), kIlluminanceNames.end(),
                          [](std::string_view s) { return s.size() < kIlluminanceNameSize; }));

// The y-bar table with its wavelengths start + i * step, built once from the
// table's range record.
struct YBar {
    std::array<float, kYbarPoints> wl{};
    std::span<const float> values;
    int count = 0;
};

const YBar& ybar()
{
    static const YBar table = [] {
        const cie::Table t = cie::table(kYbarSelector);
        YBar y;
        const int points = std::min({WLNumPts(&t.range), kYbarPoints,
                                     static_cast<int>(t.values.size())});
        for (int i = 0; i < points; ++i)
            y.wl[static_cast<std::size_t>(i)] =
                t.range.start + static_cast<float>(i) * t.range.step;
        y.values = t.values.first(static_cast<std::size_t>(points));
        y.count = points;
        return y;
    }();
    return table;
}

// 683 lm/W times the trapezoid integral of y-bar times the spectrum, in
// float. On the data's sampling that integral is the tristimulus Y of the
// same context, so a photometric value always agrees with the Y reported
// beside it; a spectrum without Y (out of reach) has none. On the compatible
// context the spectral product decides the common grid (the coarser of the
// two steps, so a line narrower than 1 nm is undersampled there, as hosts'
// stored values are); its status is not looked at: a failed product leaves
// the zeroed scratch, which integrates to 0. May throw std::bad_alloc.
float luminous_weighted(const colorimetry::Context& ctx, const float* wl, const float* values, int n)
{
    if (ctx.on_data()) {
        float Y = 0.0f;
        const int st = tristimulus::components(ctx, wl, values, n, tristimulus::Components::ybar1931, &Y);
        if (st == -4) throw std::bad_alloc();
        return st == 1 ? Y * kLumensPerWatt : 0.0f;
    }
    const YBar& y = ybar();
    // The product needs room for the longer of the two spectra; sized so,
    // the common grid has no fixed cap on its points.
    const auto room = static_cast<std::size_t>(std::max(n, y.count));
    std::vector<float> scratch(2 * room);
    float* const grid = scratch.data();
    float* const product = grid + room;
    int count = 0;
    MultiplySpectralFiles2(y.wl.data(), y.values.data(), y.count, wl, values, n, grid, product,
                           &count);
    // Without any overlap the common grid still has points, lying outside
    // one of the two spectra, and the product there is made of extrapolated
    // values. Such a spectrum has no luminous content at all.
    const bool overlap = wl[0] <= y.wl[static_cast<std::size_t>(y.count) - 1] &&
                         wl[n - 1] >= y.wl.front();  // false for NaN ends too
    if (!overlap) return 0.0f;
    return IntegrationDiscrete(grid, product, count) * kLumensPerWatt;
}

bool all_finite(std::span<const float> v)
{
    return std::all_of(v.begin(), v.end(), [](float x) { return std::isfinite(x); });
}

// The common frame of the four calculations. out has been cleared and is
// not null. `scale` turns 683 * integral (float) into out's units.
template <class Scale>
int photometric(const colorimetry::Context& ctx, const float* wl, const float* values, int n,
                std::span<float> out, Scale scale)
{
    if (!wl || !values || n < 5) return -1;
    // A NaN wavelength would end the common grid early and leave a partial
    // integral looking like a result.
    const auto count = static_cast<std::size_t>(n);
    if (!all_finite({wl, count}) || !all_finite({values, count})) return -1;
    return guarded(-4, [&] {
        scale(static_cast<double>(luminous_weighted(ctx, wl, values, n)), out);
        if (all_finite(out)) return 1;
        std::fill(out.begin(), out.end(), 0.0f);
        return -1;
    });
}

// A bounded copy: 0 on success, EINVAL for a null destination. Every text
// fits its bound (checked above).
int copy_name(std::string_view text, char* name)
{
    if (!name) return EINVAL;
    std::memcpy(name, text.data(), text.size());
    name[text.size()] = '\0';
    return 0;
}

template <std::size_t N>
int unit_name(const std::array<std::string_view, N>& names, unsigned int unit, char* name)
{
    return copy_name(unit < N ? names[unit] : kUndefinedName, name);
}

float finite_or_zero(double v)
{
    const auto f = static_cast<float>(v);
    return std::isfinite(f) ? f : 0.0f;
}

template <std::size_t N>
float convert(const UnitTable<N>& table, float value, unsigned int from, unsigned int to)
{
    if (from >= N || to >= N) return 0.0f;
    return finite_or_zero(static_cast<double>(value) * table[to][from]);
}

template <std::size_t N>
int convert_all(const UnitTable<N>& table, float value, unsigned int from, float* out)
{
    if (!out) return 0;
    const std::span<float> all(out, N);
    std::fill(all.begin(), all.end(), 0.0f);
    if (from >= N) return 0;
    for (std::size_t k = 0; k < N; ++k) all[k] = static_cast<float>(value * table[k][from]);
    if (all_finite(all)) return 1;
    std::fill(all.begin(), all.end(), 0.0f);
    return 0;
}

// Unit factors from 683 * integral to each function's outputs.
void to_illuminance(double weighted, std::span<float> o)
{
    const double lux = weighted / kMicroWattsPerCm2InWattsPerM2;
    o[0] = static_cast<float>(lux * kFootCandlesPerLux);
    o[1] = static_cast<float>(lux);
    o[2] = static_cast<float>(lux * 0.0001);
    o[3] = static_cast<float>(lux * 0.0001 * 1000);  // via phot
}

void to_luminance(double weighted, std::span<float> o)
{
    const auto nit = static_cast<float>(weighted / kMicroWattsPerCm2InWattsPerM2);
    for (std::size_t k = 0; k < o.size(); ++k) o[k] = static_cast<float>(nit * kLuminanceTable[k][kNit]);
}

void to_intensity(double weighted, std::span<float> o)
{
    o[0] = static_cast<float>(weighted);  // W/sr: no further factor
}

void to_flux(double weighted, std::span<float> o)
{
    o[0] = static_cast<float>(weighted / kMicroWattsInWatts);
}

}  // namespace

int photometric_value(const colorimetry::Context& ctx, int unit, const float* wl,
                      const float* values, int n, float* value)
{
    std::array<float, kLuminanceUnits> all{};
    int st = -1;
    *value = 0.0f;
    switch (unit) {
    case 1:
        st = photometric(ctx, wl, values, n, std::span(all.data(), kIlluminanceUnits), to_illuminance);
        *value = all[1];  // lux
        break;
    case 2: st = photometric(ctx, wl, values, n, std::span(all.data(), 1), to_intensity); *value = all[0]; break;
    case 3: st = photometric(ctx, wl, values, n, std::span(all.data(), 1), to_flux); *value = all[0]; break;
    case 4:
        st = photometric(ctx, wl, values, n, std::span(all.data(), kLuminanceUnits), to_luminance);
        *value = all[kNit];
        break;
    default: break;
    }
    return st;
}

}  // namespace qomath::photometry

using namespace qomath::photometry;
using qomath::colorimetry::compatible_context;

extern "C" {

int IlluminanceCalc(const float* wl, const float* irradiance, int n, float* out)
{
    if (out) std::fill_n(out, kIlluminanceUnits, 0.0f);
    if (!wl || !irradiance || n < 5) return -1;
    if (!out) return -2;
    return photometric(compatible_context(), wl, irradiance, n, std::span(out, kIlluminanceUnits),
                       to_illuminance);
}

int LuminanceCalc(const float* wl, const float* radiance, int n, float* out)
{
    if (out) std::fill_n(out, kLuminanceUnits, 0.0f);
    if (!wl || !radiance || n < 5) return -1;
    if (!out) return -2;
    return photometric(compatible_context(), wl, radiance, n, std::span(out, kLuminanceUnits),
                       to_luminance);
}

int LuminousIntensityCalc(const float* wl, const float* intensity, int n, float* out)
{
    if (!out) return -1;
    *out = 0.0f;
    return photometric(compatible_context(), wl, intensity, n, std::span(out, 1), to_intensity);
}

int LuminousFluxCalc(const float* wl, const float* flux, int n, float* out)
{
    if (!out) return -1;
    *out = 0.0f;
    return photometric(compatible_context(), wl, flux, n, std::span(out, 1), to_flux);
}

int LuminanceUnitName(unsigned int unit, char* name)
{
    return unit_name(kLuminanceNames, unit, name);
}

int IlluminanceUnitName(unsigned int unit, char* name)
{
    return unit_name(kIlluminanceNames, unit, name);
}

float LuminanceUnitConversion(float value, unsigned int from, unsigned int to)
{
    return convert(kLuminanceTable, value, from, to);
}

float IlluminanceUnitConversion(float value, unsigned int from, unsigned int to)
{
    return convert(kIlluminanceTable, value, from, to);
}

int LuminanceUnitsConvertAll(float value, unsigned int from, float* out)
{
    return convert_all(kLuminanceTable, value, from, out);
}

int IlluminanceUnitsConvertAll(float value, unsigned int from, float* out)
{
    return convert_all(kIlluminanceTable, value, from, out);
}

}  // extern "C"
