// Defective pixels of linear detector arrays: replacement by the mean of the
// nearest good neighbours, tidying of defect masks, and a defect mask made
// from a dark or flat-field reading.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "qomath/detector.h"

namespace {

constexpr int kList = QOMATH_BADPIXEL_LIST_SIZE;

bool listed(const int* list, int j)
{
    for (int k = 0; k < kList; ++k)
        if (list[k] == j) return true;
    return false;
}

// Sum and count of the nearest unlisted pixels below and above p.
template <class T>
void neighbours(const T* data, int n, const int* list, int p, double& sum, int& found)
{
    sum = 0.0;
    found = 0;
    for (int j = p; j >= 0; --j)
        if (!listed(list, j)) {
            sum += static_cast<double>(data[j]);
            ++found;
            break;
        }
    for (int j = p; j < n; ++j)
        if (!listed(list, j)) {
            sum += static_cast<double>(data[j]);
            ++found;
            break;
        }
}

// Float and double: with no good pixel at all the pixel becomes 0/0 = NaN;
// hosts look for that NaN.
template <class T>
int substitute_real(T* data, int n, const int* list)
{
    if (!data || !list) return -1;
    for (int slot = 0; slot < kList; ++slot) {
        const int p = list[slot];
        if (p < 0 || p >= n) continue;
        double sum;
        int found;
        neighbours(data, n, list, p, sum, found);
        data[p] = static_cast<T>(found ? sum / found : std::nan(""));
    }
    return 1;
}

bool near_zero(float m)
{
    return std::fabs(m) < 0.001f;
}

// Median of v[0..m-1] (m >= 1), reordering v.
float median_of(float* v, std::size_t m)
{
    const std::size_t h = m / 2;
    std::nth_element(v, v + h, v + m);
    const float upper = v[h];
    if (m % 2) return upper;
    const float lower = *std::max_element(v, v + h);
    return static_cast<float>((static_cast<double>(lower) + upper) * 0.5);
}

}  // namespace

extern "C" {

int DetectorArrayBadPixelSub(float* data, int n, const int* badList)
{
    return substitute_real(data, n, badList);
}

int DetectorArrayBadPixelSubd(double* data, int n, const int* badList)
{
    return substitute_real(data, n, badList);
}

int DetectorArrayBadPixelSubW(unsigned short* data, int n, const int* badList)
{
    if (!data || !badList) return -1;
    for (int slot = 0; slot < kList; ++slot) {
        const int p = badList[slot];
        if (p < 0 || p >= n) continue;
        double sum;
        int found;
        neighbours(data, n, badList, p, sum, found);
        if (found) data[p] = static_cast<unsigned short>(sum / found);  // truncated
    }
    return 1;
}

int DetectorArrayBadPixelSubdOLD(typ_pixelarray_d* data, int n, const int* badList)
{
    if (!data || !badList) return -1;
    if (n < 1 || n > QOMATH_BADPIXEL_OLD_PIXELS) return 0;
    double* v = data->values;
    for (int slot = 0; slot < kList; ++slot) {
        const int p = badList[slot];
        if (p < 0 || p >= n) continue;
        if (p == n - 1 && n >= 2) {
            // The earlier rule for the last pixel: a copy of its neighbour as
            // it stands now, listed or not. Old hosts' files were made so.
            v[p] = v[n - 2];
            continue;
        }
        double sum;
        int found;
        neighbours(v, n, badList, p, sum, found);
        v[p] = found ? sum / found : std::nan("");
    }
    return 1;
}

int DefectivePixelReplacement(unsigned short* counts, int n, const float* mask, int nMask)
{
    if (!counts || !mask || n != nMask) return -1;
    // Runs of defective pixels share their two good neighbours, which never
    // change: one pass over the runs.
    int i = 0;
    while (i < n) {
        if (mask[i] == 0.0f) {
            ++i;
            continue;
        }
        int end = i;
        while (end < n && mask[end] != 0.0f) ++end;
        double sum = 0.0;
        int found = 0;
        if (i > 0) {
            sum += counts[i - 1];
            ++found;
        }
        if (end < n) {
            sum += counts[end];
            ++found;
        }
        if (found) {
            const auto v = static_cast<unsigned short>(sum / found);
            std::fill(counts + i, counts + end, v);
        }
        i = end;
    }
    return 1;
}

int DetectorRemoveSingleBad(float* mask, int n)
{
    if (!mask || n < 5) return -1;
    if (near_zero(mask[1])) mask[0] = 0.0f;
    if (near_zero(mask[n - 2])) mask[n - 1] = 0.0f;
    // In place and upwards: a pixel cleared here counts as good for the next.
    for (int i = 1; i < n - 1; ++i)
        if (near_zero(mask[i - 1]) && near_zero(mask[i + 1])) mask[i] = 0.0f;
    return 1;
}

int DetectorCreateBadPixelMap(const float* data, int n, float* map)
{
    if (!data || !map || n < 5) return -1;
    constexpr int h = QOMATH_BADPIXEL_HALF_WINDOW;
    constexpr int width = 2 * h + 1;
    std::array<float, width> window{};
    std::array<float, width> spread{};
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(data[i])) {
            map[i] = 1.0f;
            continue;
        }
        const int lo = std::clamp(i - h, 0, std::max(n - width, 0));
        const int hi = std::min(lo + width, n);
        std::size_t m = 0;
        for (int j = lo; j < hi; ++j)
            if (std::isfinite(data[j])) window[m++] = data[j];
        const float med = median_of(window.data(), m);
        for (std::size_t k = 0; k < m; ++k)
            spread[k] = std::fabs(window[k] - med);
        const double mad = median_of(spread.data(), m);
        const double limit = QOMATH_BADPIXEL_MAD_LIMIT * QOMATH_BADPIXEL_MAD_SCALE * mad;
        map[i] = std::fabs(static_cast<double>(data[i]) - med) > limit ? 1.0f : 0.0f;
    }
    return 1;
}

}  // extern "C"
