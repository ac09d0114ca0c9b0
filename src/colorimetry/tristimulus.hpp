// Tristimulus values in the C++ layer, on a calculation context.
#pragma once

#include "colorimetry/context.hpp"

namespace qomath::tristimulus {

enum class Components {
    xyz1931,   // X, Y, Z of the CIE 1931 2-degree observer (3 values)
    xyz1964,   // X10, Y10, Z10 of the CIE 1964 10-degree observer (3 values)
    ybar1931,  // Y alone (1 value)
};

// The trapezoid integrals over the data's wavelengths of the colour-matching
// functions, interpolated onto them through ctx's cache, times the values:
// what CalcTristimulusXYZ1931_2 and its kin compute, with their statuses.
int components(const colorimetry::Context& ctx, const float* wl, const float* values, int n,
               Components which, float* out);

}  // namespace qomath::tristimulus
