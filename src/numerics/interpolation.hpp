// Internal face of the interpolators, for callers that resample several
// spectra onto one grid (the three colour-matching functions, say).
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace qomath::numerics {

// Exactly what K consecutive Interpolate2 calls give, with the common source
// wavelengths xs and destination wavelengths xd and the value arrays ys[j]
// (each xs.size() long) into yd[j] (each xd.size() long): the same values,
// the same statuses, and the same cache state afterwards. The nearest-point
// search and the Neville tableaux are shared between the K arrays.
// May throw std::bad_alloc (the cache grows) before any output is written.
template <std::size_t K>
void interpolate2_many(std::span<const float> xs, const std::array<std::span<const float>, K>& ys,
                       std::span<const float> xd, const std::array<std::span<float>, K>& yd,
                       std::array<int, K>& status);

}  // namespace qomath::numerics
