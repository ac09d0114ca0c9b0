// What the colour tests share: the headers, NaN, spectra and the CIE tables as spectra.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

#include "qomath/arrays.h"
#include "qomath/cct.h"
#include "qomath/chromaticity.h"
#include "qomath/cie_tables.h"
#include "qomath/cri.h"
#include "qomath/dominant.h"
#include "qomath/grid.h"
#include "qomath/interpolation.h"
#include "qomath/peaks.h"
#include "qomath/photometry.h"
#include "qomath/summary.h"
#include "qomath/tristimulus.h"

using Vec = std::vector<float>;
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInf = std::numeric_limits<float>::infinity();

struct Spectrum {
    Vec wl, v;
    int n() const { return static_cast<int>(wl.size()); }
};

// f(w) at start, start + step, .. end.
template <class F>
Spectrum grid(float start, float end, float step, F f)
{
    Spectrum s;
    for (int i = 0; start + static_cast<float>(i) * step <= end + 1e-3f; ++i) {
        s.wl.push_back(start + static_cast<float>(i) * step);
        s.v.push_back(static_cast<float>(f(s.wl.back())));
    }
    return s;
}

inline Spectrum flat(float start, float end, float step, float value = 1)
{
    return grid(start, end, step, [value](float) { return value; });
}

// Table `selector` of GetCIEData on its own grid, every `every`-th point
// from `from` nm to `to` nm.
inline Spectrum cie(int selector, int every = 1, float from = 0, float to = 1e4f)
{
    Vec values(QOMATH_CIE_MAX_POINTS);
    typ_wlinfo r{};
    EXPECT_EQ(GetCIEData(selector, values.data(), &r), 1);
    Spectrum s;
    for (int i = 0; r.start + static_cast<float>(i) * r.step <= r.end; i += every) {
        const float w = r.start + static_cast<float>(i) * r.step;
        if (w >= from && w <= to) s.wl.push_back(w), s.v.push_back(values[static_cast<size_t>(i)]);
    }
    return s;
}
