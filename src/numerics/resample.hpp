// Helpers shared by the resamplers of the numerical toolkit.
#pragma once

#include <cstddef>
#include <span>

#include "qomath/common.h"

namespace qomath::numerics {

// True when every wavelength is above the one before it (NaN makes it false).
// The resamplers search increasing axes by bisection and fall back to a
// linear scan otherwise, with the same result on increasing data.
inline bool strictly_increasing(std::span<const float> x)
{
    for (std::size_t i = 1; i < x.size(); ++i)
        if (!(x[i - 1] < x[i])) return false;
    return true;
}

// The shortcut of the evenly spaced resamplers. When dst has more than 3
// points, both records have the same step, i0 = trunc((dst.start - src.start)
// / step) and the tail (src.end - dst.end) / step are both >= 0,
// i0 * step < 1e-6 and trunc(tail) * step + dst.end - src.end < 1e-6, it
// copies yDst[i] = ySrc[i0 + i] for every dst point and returns true. The
// offset test is on i0 * step, so a dst that starts a fraction of a step into
// src copies the samples unshifted; stored spectra were made this way.
// Returns false (nothing written) otherwise, or when the copy would read
// past the end of src. ySrc and yDst may be the same array.
bool copy_equal_step(const float* ySrc, const typ_wlinfo& src, float* yDst, const typ_wlinfo& dst);

}  // namespace qomath::numerics
