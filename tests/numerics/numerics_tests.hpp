// What the numerics tests share: the headers, NaN, float vectors, grids,
// random values and fenced arrays.
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
#include <utility>
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

// n uniform values in [lo, hi) from the seed.
inline Vec random_values(std::size_t n, unsigned seed, float lo = -1.0f, float hi = 1.0f)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> dist(lo, hi);
    Vec v(n);
    for (float& x : v) x = dist(gen);
    return v;
}

// Values with a fence on each side; intact() tells whether a call wrote
// outside [0, n).
template <class T = float>
struct Fenced {
    static constexpr T kFence = T(-12345);
    std::vector<T> v;
    explicit Fenced(std::vector<T> x) : v(std::move(x))
    {
        v.insert(v.begin(), kFence), v.push_back(kFence);
    }
    explicit Fenced(std::size_t n, T fill = T(0)) : Fenced(std::vector<T>(n, fill)) {}
    T* p() { return v.data() + 1; }
    T& operator[](std::size_t i) { return v[i + 1]; }
    std::vector<T> values() const { return {v.begin() + 1, v.end() - 1}; }
    bool intact() const { return v.front() == kFence && v.back() == kFence; }
};
