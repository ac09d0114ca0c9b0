// Measured-looking spectra shared by the benchmarks: 471 points at 1 nm from
// 360 nm (every wavelength a table point) or n points at 0.23 nm from 360 nm
// (almost none a table point).
#pragma once

#include <cmath>
#include <vector>

namespace qomath::bench {

struct Spectrum {
    std::vector<float> wl, v;
};

inline Spectrum spectrum(int n)
{
    const float step = n == 471 ? 1.0f : 0.23f;
    Spectrum s;
    for (int i = 0; i < n; ++i) {
        const float w = 360.0f + static_cast<float>(i) * step;
        s.wl.push_back(w);
        s.v.push_back(1.0f + 0.5f * std::sin(w / 37.0f));  // smooth, positive
    }
    return s;
}

}  // namespace qomath::bench
