// Colour rendering in the C++ layer, on a calculation context.
#pragma once

#include "colorimetry/context.hpp"

namespace qomath::cri {

// A spectrum on explicit wavelengths (absent when n is 0).
struct Curve {
    const float* wl = nullptr;
    const float* values = nullptr;
    int n = 0;
};

// CRI_DefaultCalc2X on ctx: the same checks, statuses and result cells.
int default_calc2(const colorimetry::Context& ctx, const float* ref_wl, const float* ref_values,
                  int ref_n, const float* test_wl, const float* test_values, int test_n, float cct,
                  const Curve& sample15, const Curve& sample16, float* result);

}  // namespace qomath::cri
