// The 0.1 nm spectrum locus, interpolated from the 1 nm one.
#include <algorithm>
#include <cstdlib>

#include "colorimetry/cie_tables.hpp"
#include "numerics/neville.hpp"
#include "qomath/cie_tables.h"

namespace qomath::cie {

namespace {

// The five locus points that carry the interpolation in nanometre block i.
// They are centred on the block where that works. y is interpolated as a
// polynomial in x, so the five x values must run one way, and the point where
// x turns from falling to rising (504 nm, where y is a steep function of x)
// may only be in the window when the block itself ends there: a window that
// straddles or merely touches the turn makes the polynomial swing off the
// locus. Otherwise the window moves by one or two points. It stays inside
// 360..699 nm: the rounded locus has the same x (0.73469) at 699 and 700 nm,
// and no polynomial in x passes through two points with one abscissa; the
// last block is flat in x and lands on the 699 nm point anyway.
constexpr int kWindow = 5;
constexpr int kLastWindowStart = kLocus1931Points - 1 - kWindow;  // 695 nm

bool turns_at(const float* lx, int k)
{
    return k > 0 && k < kLocus1931Points - 1 &&
           (lx[k] - lx[k - 1]) * (lx[k + 1] - lx[k]) <= 0.0f;
}

bool usable(const float* lx, int start, int block)
{
    bool rising = true, falling = true;
    for (int k = start + 1; k < start + kWindow; ++k) {
        rising = rising && lx[k] > lx[k - 1];
        falling = falling && lx[k] < lx[k - 1];
    }
    if (!rising && !falling) return false;
    for (int k = start; k < start + kWindow; ++k)
        if (k != block && k != block + 1 && turns_at(lx, k)) return false;
    return true;
}

int window_start(const float* lx, int block)
{
    // Centred first, then shifted by one or two points, always holding the
    // block's own two locus points.
    const int offsets[] = {2, 1, 3, 0};
    for (int off : offsets) {
        const int s = std::clamp(block - off, 0, kLastWindowStart);
        if (usable(lx, s, block)) return s;
    }
    return std::clamp(block - 2, 0, kLastWindowStart);
}

}  // namespace

int interpolate_fine_locus(std::span<float> x, std::span<float> y)
{
    const auto pairs = locus1931();
    float lx[kLocus1931Points];
    float ly[kLocus1931Points];
    for (int i = 0; i < kLocus1931Points; ++i) {
        lx[i] = pairs[2 * static_cast<std::size_t>(i)];
        ly[i] = pairs[2 * static_cast<std::size_t>(i) + 1];
    }
    std::size_t k = 0;
    for (int block = 0; block < kLocus1931Points - 1; ++block) {
        // Ten x values a tenth of the way apart towards the next nanometre;
        // y follows by 5-point polynomial interpolation in x.
        const float dx = (lx[block + 1] - lx[block]) / 10.0f;
        const int s = window_start(lx, block);
        const std::span<const float> wx(lx + s, kWindow);
        const std::span<const float> wy(ly + s, kWindow);
        for (int j = 0; j < 10; ++j, ++k) {
            float dy = 0.0f;
            x[k] = lx[block] + static_cast<float>(j) * dx;
            if (numerics::neville(wx, wy, x[k], y[k], dy) != 1) return -2;
        }
    }
    x[k] = lx[kLocus1931Points - 1];
    y[k] = ly[kLocus1931Points - 1];
    return 1;
}

}  // namespace qomath::cie

extern "C" int CIE1931DiagramInterpolated(float** wavelengths, float** x, float** y,
                                          typ_wlinfo* range)
{
    using namespace qomath;
    if (!wavelengths || !x || !y || !range) return -4;
    *range = {360.0f, 700.0f, 0.1f};
    // The arrays are the caller's, to be released with free(); their size is
    // the one hosts have always been handed.
    constexpr std::size_t kBytes = 341 * 40 + 4;
    static_assert(kBytes / sizeof(float) >= cie::kLocus1931FinePoints);
    float* w = static_cast<float*>(std::malloc(kBytes));
    float* px = static_cast<float*>(std::malloc(kBytes));
    float* py = static_cast<float*>(std::malloc(kBytes));
    if (!w || !px || !py) {
        std::free(w);
        std::free(px);
        std::free(py);
        return -4;
    }
    *wavelengths = w;
    *x = px;
    *y = py;
    // Point j of block i is labelled (0.1 j + 10 i) + 360: the label moves
    // 10 nm per block. Hosts plot against exactly these labels.
    for (int k = 0; k < cie::kLocus1931FinePoints; ++k) {
        const int block = k / 10;
        const int j = k % 10;
        w[k] = static_cast<float>(0.1 * j + 10.0 * block) + 360.0f;
    }
    return cie::interpolate_fine_locus({px, cie::kLocus1931FinePoints},
                                       {py, cie::kLocus1931FinePoints});
}
