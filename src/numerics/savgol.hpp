// Savitzky-Golay coefficients and smoothing of a span: the C++ layer under
// FilterSavgol and the program's smoothing.
#pragma once

#include <span>

namespace qomath::numerics {

// Coefficients by offset: coef[k + nl] weights the sample at offset k,
// k = -nl .. nr (coef holds nl + nr + 1 values), of the degree-m
// least-squares polynomial's ld-th coefficient. Returns 1; -1 for arguments
// FilterSavgol refuses (ld < 0, ld > m, nl < 0, nr < 0, nl + nr < m) or a
// coefficient that is not finite in float (coef then untouched); -2 when
// scratch memory cannot be had.
int savgol_coefficients(int nl, int nr, int ld, int m, std::span<float> coef);

// Smooths y in place with the degree-`order` polynomial over the centred
// window of 2 half + 1 points. Near the ends the windows are shortened and
// asymmetric: point i < half uses i points to its left and
// max(half, order - i) to its right (mirrored at the right end), so every
// output comes from a least-squares fit to real samples only and a
// polynomial of degree <= order passes unchanged, ends included.
// Returns 1; -1 when half < 0, order < 0, order > 2 half or y holds fewer
// than 2 half + 1 values (y untouched); -2 when scratch memory cannot be had.
int savgol_smooth(std::span<float> y, int half, int order);

}  // namespace qomath::numerics
