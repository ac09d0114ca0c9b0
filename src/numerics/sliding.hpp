// Sliding-window order statistic and mean: the one kernel under
// MedianFilter1d, MedianMeanFilter1d and the program's median and boxcar.
#pragma once

#include <cstddef>
#include <span>

namespace qomath::numerics {

// out[i] = element k (0-based) of the ascending sort of src[i .. i+w-1],
// for i = 0 .. out.size()-1; NaN when that window holds a NaN. Equal to
// sorting every window, at O(w) per step: one sorted window is kept and the
// leaving value is replaced by the entering one. Needs 1 <= w, k < w and
// src.size() >= out.size() + w - 1; out must not overlap src.
// Throws std::bad_alloc when its window cannot be had.
void sliding_order(std::span<const float> src, std::size_t w, std::size_t k,
                   std::span<float> out);

// out[i] = (sum of src[i .. i+w-1] in double) / w, 0 when the sum's
// magnitude is not above 1e-15. Sums are formed from block prefix and
// suffix sums, so every sum holds only values of its own window (a NaN or a
// huge value elsewhere does not leak in). Same size rules as sliding_order.
void sliding_mean(std::span<const float> src, std::size_t w, std::span<float> out);

}  // namespace qomath::numerics
