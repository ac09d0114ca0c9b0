// Stray-light building blocks: synthetic and smoothed LSFs, SDF columns, the
// working matrix, the correction matrix and its clean-ups, the blue blend and
// the correction of a spectrum.
#include "qomath/straylight.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "common/barrier.hpp"
#include "numerics/dense_kernels.hpp"
#include "qomath/fft.h"
#include "qomath/filters.h"
#include "straylight/straylight.hpp"

using qomath::detail::guarded;
namespace sl = qomath::straylight;

namespace qomath::straylight {

State& process_state()
{
    static State state;
    return state;
}

int init_matrix(State& st, unsigned n)
{
    st.work.clear();
    st.work.shrink_to_fit();
    st.has_matrix = false;
    st.size = 0;
    return guarded(0, [&] {
        st.work.assign(static_cast<std::size_t>(n) * n, 0.0);
        st.size = n;
        st.has_matrix = true;
        return 1;
    });
}

int edit_matrix(State& st, unsigned column, const double* values, unsigned n)
{
    if (!st.has_matrix) return -1;
    // Only column > size is refused; hosts pass column == size and expect 1.
    if (column > st.size) return -2;
    if (n != st.size) return -3;
    if (column == st.size) return 1;
    for (std::size_t k = 0; k < n; ++k) st.work[k * n + column] = values[k];
    return 1;
}

int correct(State& st, const float* wl, float* y, std::size_t n, float blend_start, float blend_end)
{
    if (!st.loaded || n != kPixels || st.correction.size() != kMatrixValues) return -1;
    return guarded(-1, [&] {
        st.corrected.resize(kPixels);
        float* c = st.corrected.data();
        numerics::matvec(st.correction.data(), y, c, kPixels, kPixels);
        // Sums below 0 are refused by the filter and leave C y as it is.
        QoMathFilterDistributeNegativeValues(wl, c, static_cast<int>(kPixels), 0.0f);
        if (blend_end - blend_start >= 0.0f) {
            const float span = blend_end - blend_start;
            for (std::size_t i = 0; i < kPixels; ++i) {
                if (wl[i] <= blend_start) continue;  // the blue end keeps the measured value
                if (wl[i] >= blend_end) {
                    y[i] = c[i];
                } else {
                    const float t = std::min(1.0f, (wl[i] - blend_start) / span);
                    y[i] = (1.0f - t) * y[i] + t * c[i];
                }
            }
        } else {
            std::copy(c, c + kPixels, y);
        }
        return 1;
    });
}

}  // namespace qomath::straylight

namespace {

using std::size_t;

bool is_1024(int n) { return n == static_cast<int>(sl::kPixels); }

}  // namespace

extern "C" {

int StrayLightGenerateSyntheticLSF(double* out, unsigned n, unsigned peakPixel, double sigmaA,
                                   double sigmaB)
{
    sl::State& st = sl::process_state();
    std::fill(out, out + n, 0.0);
    const double two_pi = 6.283185307179586;
    const double na = std::sqrt(two_pi * sigmaA * sigmaA), nb = std::sqrt(two_pi * sigmaB * sigmaB);
    for (int k = 0; k < 1024; ++k) {
        const long long x = static_cast<long long>(k) - static_cast<long long>(peakPixel);
        const double x2 = static_cast<double>(x * x);
        out[k] = std::exp(-x2 / (2.0 * sigmaA * sigmaA)) / na +
                 2.0 * std::exp(-x2 / (2.0 * sigmaB * sigmaB)) / nb + st.next_noise() / 3.2767e7;
    }
    return 1;
}

int StrayLightGenerateSDF(double* lsf, int n, int peakPixel, int inBandHalfWidth, unsigned maxLeft,
                          int maxRight, double noiseFloor, int removeSpikes, int applyMedian,
                          int medianWidth, int applyBoxcar, int boxcarWidth, int applyConvolution,
                          int convolutionWidth, double convolutionThreshold, double* sdfOut)
{
    return guarded(-2, [&] {
        LSFsmoothConvolution(lsf, n > 0 ? static_cast<unsigned>(n) : 0u, applyConvolution,
                             static_cast<unsigned>(convolutionWidth), convolutionThreshold);
        if (n < 1) return -2;
        std::vector<float> w(lsf, lsf + n);
        const long long p = peakPixel;
        const long long lo = p - static_cast<long long>(maxLeft);
        const long long hi = p + static_cast<long long>(maxRight);
        for (long long i = 0; i < n; ++i)
            if (i < lo || i > hi) w[static_cast<size_t>(i)] = 0.0f;
        if (applyBoxcar) BoxcarAveraging(w.data(), n, boxcarWidth);
        if (removeSpikes && n - 1 >= 2)
            for (int i = 1; i <= n - 2; ++i)
                if (w[i - 1] == 0.0f && w[i + 1] == 0.0f) w[i] = 0.0f;
        if (applyMedian > 0) MedianMeanFilter1d(w.data(), n, medianWidth, 0);
        if (noiseFloor > 0.0)
            for (float& v : w)
                if (v <= noiseFloor) v = 0.0f;
        const long long h = inBandHalfWidth;
        const long long b0 = std::max(0LL, p - h), b1 = std::min<long long>(n, p + h);
        double s = 0.0;
        for (long long i = b0; i < b1; ++i) s += w[static_cast<size_t>(i)];
        std::fill(sdfOut, sdfOut + n, 0.0);
        if (s < 1e-10) return -2;
        for (int i = 0; i < n; ++i) sdfOut[i] = w[i] / s;
        for (long long i = b0; i < b1; ++i) sdfOut[i] = 0.0;
        return 1;
    });
}

int StrayLightInitializeMatrix(unsigned n)
{
    return sl::init_matrix(sl::process_state(), n);
}

void StrayLightDeleteMatrix(void)
{
    sl::State& st = sl::process_state();
    st.work.clear();
    st.work.shrink_to_fit();
    st.has_matrix = false;
    st.size = 0;
}

double* StrayLightCopyMatrix(double* dst)
{
    const sl::State& st = sl::process_state();
    if (st.has_matrix) std::copy(st.work.begin(), st.work.end(), dst);
    else dst[0] = 0.0;
    return dst;
}

int StrayLightEditMatrix(unsigned column, double* values, unsigned n)
{
    return sl::edit_matrix(sl::process_state(), column, values, n);
}

int StrayLightGenerateCMatrix(double* D, unsigned n, double* C)
{
    const size_t nn = n;
    for (size_t i = 0; i < nn; ++i) D[i * nn + i] += 1.0;
    if (n == 0) return 1;
    return guarded(0, [&] {
        std::vector<double> a(D, D + nn * nn);
        qomath::numerics::lu_invert(a.data(), nn);
        std::copy(a.begin(), a.end(), C);
        return 1;
    });
}

int StrayLightSmoothColumns(double* m, int n)
{
    if (!is_1024(n)) return -1;
    return guarded(-1, [&] {
        const size_t N = sl::kPixels;
        std::vector<double> r(N * N, 0.0);
        for (size_t i = 1; i < N - 1; ++i)
            for (size_t c = 1; c < N - 1; ++c)
                r[i * N + c] = (m[(i - 1) * N + c - 1] + m[i * N + c] + m[(i + 1) * N + c + 1]) / 3.0;
        std::copy(r.begin(), r.end(), m);
        return 1;
    });
}

int StrayLightAverageAdjacentColumns(double* m, int n)
{
    if (!is_1024(n)) return -1;
    const size_t N = sl::kPixels;
    for (size_t c = 1; c < N - 1; ++c)
        for (size_t i = 1; i < N - 1; ++i)
            m[i * N + c] = (m[(i - 1) * N + c - 1] + m[i * N + c] + m[(i + 1) * N + c + 1]) / 3.0;
    return 1;
}

int StrayLightFillInBlankColumns(double* m, int n)
{
    if (!is_1024(n)) return -1;
    const size_t N = sl::kPixels;
    for (size_t o = 0; o + 2 < N; ++o) {
        double s0 = 0.0, s1 = 0.0, s2 = 0.0;
        for (size_t i = 0; i + 2 < N; ++i) {
            s0 += m[i * N + o];
            s1 += m[(i + 1) * N + o + 1];
            s2 += m[(i + 2) * N + o + 2];
        }
        if (s1 == 0.0 && s0 != 0.0 && s2 != 0.0)
            for (size_t i = 0; i + 2 < N; ++i)
                m[(i + 1) * N + o + 1] = (m[i * N + o] + m[(i + 2) * N + o + 2]) * 0.5;
    }
    return 1;
}

int StrayLightFilter(float* m, int n, int boxcarWidth)
{
    if (n < 1) return 1;
    return guarded(1, [&] {
        const size_t N = static_cast<size_t>(n);
        std::vector<float> row(N), mask(N);
        for (size_t i = 0; i < N; ++i) {
            float* r = m + i * N;
            std::copy(r, r + N, row.begin());
            for (size_t j = 0; j < N; ++j) mask[j] = row[j] >= 0.0f ? 1.0f : 0.0f;
            BoxcarAveraging(row.data(), n, boxcarWidth);
            for (size_t j = 0; j < N; ++j) r[j] = mask[j] * row[j];
            r[i] = 1.0f;
        }
        return 1;
    });
}

void StrayLightBlueBlend(int /*unused*/, float* out, int n, float* a, float* b, float* wavelength,
                         float blendStart, float blendEnd)
{
    if (n < 1 || blendEnd - blendStart < 0.0f) return;
    for (int i = 0; i < n; ++i) {
        // "<= start" is tested first: at start == end a point there takes a.
        if (wavelength[i] <= blendStart) {
            out[i] = a[i];
        } else if (wavelength[i] >= blendEnd) {
            out[i] = b[i];
        } else {
            const float t = std::min(1.0f, (wavelength[i] - blendStart) / (blendEnd - blendStart));
            out[i] = b[i] * t + (1.0f - t) * a[i];
        }
    }
}

}  // extern "C"

int LSFsmoothConvolution(double* const lsf, unsigned int n, int enable, unsigned int width,
                         double threshold)
{
    if (enable == 0) return 1;
    if (width < 2 || width > n / 2) return -1;
    return guarded(-2, [&] {
        const size_t N = n, W = width;
        std::vector<double> mask(N);
        for (size_t i = 0; i < N; ++i) mask[i] = lsf[i] > threshold ? 1.0 : 0.0;
        std::vector<double> kernel(W, 1.0 / static_cast<double>(W));
        // The copy starts at the second point: smoothed point i averages
        // lsf[i + 3 - w .. i + 2], the alignment every stored matrix has.
        std::vector<double> padded(N + 2 * W, 0.0);
        for (size_t k = 0; k + 1 < N; ++k) padded[W + k] = lsf[k + 1];
        const size_t nout = N + 2 * W + W - 1;
        std::vector<double> conv(nout);
        if (convolution_1dD(padded.data(), static_cast<int>(N + 2 * W), kernel.data(),
                            static_cast<int>(W), conv.data(), static_cast<int>(nout)) != 1)
            return -3;
        for (size_t i = 0; i < N; ++i)
            if (mask[i] == 0.0) lsf[i] = conv[i + W + 1];
        return 1;
    });
}

int StrayLightSingleLine(double* const out, int n, int /*unused1*/, int /*unused2*/)
{
    if (n > 0) std::fill(out, out + n, 0.0);
    return 1;
}
