// What the numerics tests share: the headers, NaN, float vectors and grids.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "qomath/arrays.h"
#include "qomath/grid.h"
#include "qomath/interpolation.h"
#include "qomath/linalg.h"
#include "qomath/peaks.h"
#include "qomath/polyfit.h"
#include "qomath/spectral_arith.h"

using Vec = std::vector<float>;
inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// n points start + i * step, in float.
inline Vec grid(float start, float step, int n)
{
    Vec x;
    for (int i = 0; i < n; ++i) x.push_back(start + static_cast<float>(i) * step);
    return x;
}

// The points of a range record.
inline Vec points(const typ_wlinfo& r) { return grid(r.start, r.step, WLNumPts(&r)); }

// f at every x, worked in double.
template <class F>
Vec sample(const Vec& x, F f)
{
    Vec y;
    for (float v : x) y.push_back(static_cast<float>(f(static_cast<double>(v))));
    return y;
}
