// The C++ face of the spectral mismatch index: the targets of
// f1primeCalculate, and f1' in its standard form for the program.
#pragma once

#include <span>

#include "qomath/common.h"

namespace qomath::detector {

// A target function on its 1 nm grid.
struct F1Target {
    typ_wlinfo range;
    std::span<const float> values;
};

// Target of mode 0..3 (x-bar short, x-bar long, y-bar, z-bar).
F1Target f1_target(int mode);

// f1' in the standard form (ISO/CIE 19476; CIE 179 for x-bar and z-bar):
//   f1' = integral |s*(l) - t(l)| dl / integral t(l) dl,
//   s*  = s * integral P t dl / integral P s dl,
// on the target's 1 nm grid by the trapezoid rule, the absolute value taken
// per sample. The responsivity s and the source P are sampled linearly from
// their points and count as 0 outside them; an empty source means CIE
// illuminant A.
struct F1Standard {
    int status = 0;          // 1; -1 bad input or no signal (B or target integral 0)
    double f1prime = 0.0;
    double scale = 0.0;      // A / B
    bool covers_start = false;  // the responsivity reaches the target's start
    bool covers_end = false;    // ... and its end
    bool source_covers = false; // the source spans the target (always for A)
};
F1Standard f1prime_standard(std::span<const float> wl, std::span<const float> responsivity,
                            int mode, std::span<const float> source_wl,
                            std::span<const float> source);

// Linear interpolation at x of increasing (wl, v); `outside` beyond the ends.
double linear_at(std::span<const float> wl, std::span<const float> v, double x, double outside);

}  // namespace qomath::detector
