// The summary calculations in the C++ layer, on a calculation context.
#pragma once

#include <span>

#include "colorimetry/context.hpp"

namespace qomath::summary {

// The colour of a transmittance or reflectance sample on the data's own
// sampling: the white (the perfect sample under the illuminant, Y = 100)
// and CIE 1976 L*, a*, b* relative to it.
struct ObjectColour {
    bool valid = false;
    float white[3] = {};
    float lab[3] = {};
};

// ColorimetricCalc on ctx: the same 48 results (result is cleared first) and
// statuses. On the data's
// sampling, transmittance and reflectance give X, Y, Z scaled so that the
// perfect sample has Y = 100 (and `object`, when given, is filled); on the
// compatible context they are plain integrals of sample times illuminant on
// the product's common grid, and `object` stays invalid.
int colorimetric(const colorimetry::Context& ctx, const float* wl, const float* v, int n, int unit,
                 int white, int illuminant, float* result, ObjectColour* object);

// RadiometryCalc on ctx: the same 16 results (cleared first) and statuses; the centroid and
// the line width follow ctx's sampling rule.
int radiometric(const colorimetry::Context& ctx, const float* wl, const float* v, int n,
                float band_start, float band_end, float* result);

// Finite values on finite, strictly increasing wavelengths.
bool finite_and_increasing(const float* wl, const float* v, int n);

// Trapezoid integral of the spectrum over [lo, hi] clipped to the data, the
// edge values on the straight line between the samples around them (the
// band integrals of RadiometryCalc). wl increases; 0 when nothing overlaps.
float band_integral(std::span<const float> wl, std::span<const float> v, float lo, float hi);

}  // namespace qomath::summary
