// Internal face of the interpolators, for callers that resample several
// spectra onto one grid (the three colour-matching functions, say).
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include <memory>

namespace qomath::numerics {

// The result cache of Interpolate2 (and the interpolation mode). The C
// exports share one process-wide instance, which hosts observe; internal
// callers that must not see or disturb it (the program's workers, say) own
// one each. Not safe to share between threads.
class Interpolate2State {
public:
    Interpolate2State();
    ~Interpolate2State();
    Interpolate2State(const Interpolate2State&) = delete;
    Interpolate2State& operator=(const Interpolate2State&) = delete;
    struct Data;
    Data& data() { return *data_; }

private:
    std::unique_ptr<Data> data_;
};

// The instance behind Interpolate2, InterpolationMethod and the colorimetry
// of the C exports.
Interpolate2State& process_interpolation_state();

// Interpolate2 on the given state. With constant_table, ySrc (and xSrc) are
// a table of static storage that never changes: its result is kept per
// destination grid and later calls copy it, with the same values, status and
// cache state as computing it again.
int interpolate2(Interpolate2State& state, const float* xSrc, const float* ySrc, int nSrc,
                 const float* xDst, float* yDst, int nDst, bool constant_table = false);

// Exactly what K consecutive Interpolate2 calls give, with the common source
// wavelengths xs and destination wavelengths xd and the value arrays ys[j]
// (each xs.size() long) into yd[j] (each xd.size() long): the same values,
// the same statuses, and the same cache state afterwards. The nearest-point
// search and the Neville tableaux are shared between the K arrays. With
// constant_tables the arrays are constant tables, resampled once per
// destination grid (see interpolate2).
// May throw std::bad_alloc (the cache grows) before any output is written.
template <std::size_t K>
void interpolate2_many(Interpolate2State& state, std::span<const float> xs,
                       const std::array<std::span<const float>, K>& ys, std::span<const float> xd,
                       const std::array<std::span<float>, K>& yd, std::array<int, K>& status,
                       bool constant_tables = false);

}  // namespace qomath::numerics
