// The constant CIE tables, as read-only spans for the rest of the library.
#pragma once

#include <span>

#include "qomath/common.h"

namespace qomath::cie {

// One spectral table on an evenly spaced grid.
struct Table {
    typ_wlinfo range;
    std::span<const float> values;  // one value per grid point
};

inline constexpr int kSelectorCount = 11;  // GetCIEData selectors 0..10
inline constexpr int kMaxPoints = 531;

// Tables 0..9 of GetCIEData. The equal-energy spectrum (10) has no stored
// values: its grid is equal_energy_range() and every value is 1.
Table table(int selector);
typ_wlinfo equal_energy_range();

// Spectrum loci rounded to five decimals, interleaved x, y, x, y, ...
std::span<const float> locus1931();  // 360..700 nm, 1 nm, 341 pairs
std::span<const float> locus1964();  // 360..830 nm, 1 nm, 471 pairs
// The stored 0.1 nm 1931 locus, 360..700 nm, 3401 pairs.
std::span<const float> locus1931_fine_x();
std::span<const float> locus1931_fine_y();

inline constexpr int kLocus1931Points = 341;
inline constexpr int kLocus1964Points = 471;
inline constexpr int kLocus1931FinePoints = 3401;

// The rule that makes the 0.1 nm locus from the 1 nm one (see
// CIE1931DiagramInterpolated). Writes kLocus1931FinePoints values to x and y.
// Returns 1, or -2 when an interpolation step fails.
int interpolate_fine_locus(std::span<float> x, std::span<float> y);

}  // namespace qomath::cie
