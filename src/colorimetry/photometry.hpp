// The photometric unit tables and names, for the library and its tests.
#pragma once

#include <array>
#include <cstddef>
#include <numbers>
#include <string_view>

#include "colorimetry/context.hpp"

namespace qomath::photometry {

inline constexpr std::size_t kLuminanceUnits = 8;
inline constexpr std::size_t kIlluminanceUnits = 4;

// table[to][from]: the number of `to` units in one `from` unit.
template <std::size_t N>
using UnitTable = std::array<std::array<double, N>, N>;

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kInvPi = std::numbers::inv_pi;

// The library's own rounded figures, each as printed; they are not derived
// from one another (10.76 one way, 0.0929 the other), and hosts compare
// against exactly these values.
inline constexpr UnitTable<kLuminanceUnits> kLuminanceTable{{
    // Nit, Stlib, Apostlib, Lambert, MilliLambert, FootLambert, Candela/ft^2, Candela/Inch^2
    {1, 10000, kInvPi, 10000 / kPi, 10 / kPi, 3.426, 10.76, 1550},  // Nit
    {0.0001, 1, 0.0001 / kPi, kInvPi, 0.001 / kPi, 0.0003426, 0.001076, 0.155},  // Stlib
    {kPi, 10000 * kPi, 1, 10000, 10, 10.76, 33.82, 4869},  // Apostlib
    {0.0001 * kPi, kPi, 0.0001, 1, 0.001, 0.001076, 0.003382, 0.4869},  // Lambert
    {0.1 * kPi, 1000 * kPi, 0.1, 1000, 1, 1.076, 3.382, 486.9},  // MilliLambert
    {0.2919, 2919, 0.0929, 929, 0.929, 1, kPi, 452.4},  // FootLambert
    {0.0929, 929, 0.02957, 295.7, 0.2957, kInvPi, 1, 144},  // Candela/ft^2
    {0.0006452, 6.452, 0.0002054, 2.054, 0.002054, 0.00221, 0.006944, 1},  // Candela/Inch^2
}};

inline constexpr UnitTable<kIlluminanceUnits> kIlluminanceTable{{
    // FootCandle, Lux, Phot, MilliPhot
    {1, 0.0929, 929, 0.929},  // FootCandle
    {10.76, 1, 10000, 10},  // Lux
    {0.001076, 0.0001, 1, 0.001},  // Phot
    {1.076, 0.1, 1000, 1},  // MilliPhot
}};

// "Stlib" and "Apostlib" are spelt so on purpose: hosts match these texts.
inline constexpr std::array<std::string_view, kLuminanceUnits> kLuminanceNames{
    "Nit",         "Stlib",       "Apostlib",     "Lambert",
    "MilliLambert", "FootLambert", "Candela/ft^2", "Candela/Inch^2"};
inline constexpr std::array<std::string_view, kIlluminanceUnits> kIlluminanceNames{
    "FootCandle", "Lux", "Phot", "MilliPhot"};
inline constexpr std::string_view kUndefinedName = "Undefined Name";

// The bounds of the name copies (16 and 15 bytes).
inline constexpr std::size_t kLuminanceNameSize = 16;
inline constexpr std::size_t kIlluminanceNameSize = 15;

// The photometric value of a spectrum of radiometric unit code `unit`
// (1 irradiance in uW/cm^2/nm -> lux, 2 radiant intensity in W/sr/nm -> cd,
// 3 radiant flux in uW/nm -> lm, 4 radiance in uW/cm^2/sr/nm -> cd/m^2):
// 683 lm/W times the luminous integral times the unit's factor, as
// IlluminanceCalc, LuminousIntensityCalc, LuminousFluxCalc and
// LuminanceCalc give it on ctx. Returns their status (1; -1 bad input or a
// result that is not finite; -4 memory); *value is 0 unless 1.
int photometric_value(const colorimetry::Context& ctx, int unit, const float* wl,
                      const float* values, int n, float* value);

}  // namespace qomath::photometry
