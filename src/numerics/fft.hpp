// Complex discrete Fourier transform on interleaved float data, shared by
// the FFT exports, MTF_1d and the tools.
#pragma once

#include <cstddef>

namespace qomath::numerics {

// In place: x[0..2n-1] holds n complex points (real, imaginary); afterwards
// X_j = sum over k of x_k e^{sign 2 pi i jk / n} (sign +1 or -1), not
// normalised. Any n >= 1: powers of two from 8 on run the radix-4 transform,
// small sizes a direct sum in double, the others the chirp-z transform over
// a power of two. Returns false when scratch memory cannot be had (nothing
// written then); may throw std::bad_alloc while building twiddle tables.
bool dft(float* x, std::size_t n, int sign);

}  // namespace qomath::numerics
