// The full linear convolution kernel shared by convolution_1d and the
// Savitzky-Golay smoother.
#pragma once

#include <cstddef>

namespace qomath::numerics {

// out[k] = sum over i of a[i] * b[k - i] for k = 0 .. na+nb-2, each sum in
// float in increasing i; na, nb >= 1, out does not overlap a or b. Throws
// std::bad_alloc when its scratch copy of b cannot be had.
void convolve_full(const float* a, std::size_t na, const float* b, std::size_t nb, float* out);

}  // namespace qomath::numerics
