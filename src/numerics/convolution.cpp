// Linear convolution in one and two dimensions, and the in-place centred
// convolution with edge rules.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "common/barrier.hpp"
#include "numerics/convolution.hpp"
#include "qomath/fft.h"

namespace {

// Sixteen bytes of T processed together (SSE2 on x86-64, NEON on AArch64).
template <class T>
struct Vec;
template <>
struct Vec<float> {
    using type = float __attribute__((vector_size(16)));
};
template <>
struct Vec<double> {
    using type = double __attribute__((vector_size(16)));
};

// Outputs per block: eight vectors, which stay in registers.
template <class T>
constexpr std::size_t lanes_of = 128 / sizeof(T);

template <class V, class T>
inline V load(const T* p)
{
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// out[k] = sum over i of a[i] * b[k - i], each sum in T and in increasing i.
// Outputs go in blocks of lanes_of<T> that run together in vector registers,
// reading a copy of b padded with lanes_of<T> - 1 zeros each side, so a lane
// whose b index lies outside b adds an exact 0. A non-finite a[i] (whose
// product with a padding zero would be NaN) is added lane by lane to the
// sums that hold it only. bpad holds nb + 2 (lanes_of<T> - 1) values.
template <class T>
void full_convolution(const T* a, std::size_t na, const T* b, std::size_t nb, T* out, T* bpad)
{
    using V = typename Vec<T>::type;
    constexpr std::size_t conv_lanes = lanes_of<T>;
    constexpr std::size_t W = sizeof(V) / sizeof(T), NV = conv_lanes / W, P = conv_lanes - 1;
    std::fill(bpad, bpad + P, T(0));
    std::copy(b, b + nb, bpad + P);
    std::fill(bpad + P + nb, bpad + 2 * P + nb, T(0));
    const std::size_t n_out = na + nb - 1;
    const bool all_finite = std::all_of(a, a + na, [](T x) { return std::isfinite(x); });
    for (std::size_t k0 = 0; k0 < n_out; k0 += conv_lanes) {
        const std::size_t lanes = std::min(conv_lanes, n_out - k0);
        const std::size_t i_lo = k0 + 1 > nb ? k0 + 1 - nb : 0;
        const std::size_t i_end = std::min(na - 1, k0 + lanes - 1) + 1;
        V v[NV] = {};
        for (std::size_t i = i_lo; i < i_end; ++i) {
            const T ai = a[i];
            if (!all_finite && !std::isfinite(ai)) {
                T acc[conv_lanes];
                std::memcpy(acc, v, sizeof v);
                for (std::size_t l = 0; l < lanes; ++l)
                    if (k0 + l >= i && k0 + l - i < nb) acc[l] += ai * b[k0 + l - i];
                std::memcpy(v, acc, sizeof v);
                continue;
            }
            const V av = V{} + ai;  // broadcast
            const T* bp = bpad + P + k0 - i;  // lane l reads b[k0 + l - i]
            // Unrolled with constant indices so that v stays in registers.
            [&]<std::size_t... J>(std::index_sequence<J...>) {
                ((v[J] += av * load<V>(bp + J * W)), ...);
            }(std::make_index_sequence<NV>{});
        }
        T acc[conv_lanes];
        std::memcpy(acc, v, sizeof v);
        std::copy(acc, acc + lanes, out + k0);
    }
}

template <class T>
int convolve_1d(const T* a, int na, const T* b, int nb, T* out, int n_out)
{
    if (!a || !b || !out || na < 1 || nb < 1) return -1;
    if (std::int64_t{na} + nb - 1 != n_out) return -1;
    return qomath::detail::guarded(-2, [&] {
        const std::size_t sa = static_cast<std::size_t>(na), sb = static_cast<std::size_t>(nb);
        auto bpad = std::unique_ptr<T[]>(new (std::nothrow) T[sb + 2 * (lanes_of<T> - 1)]);
        if (!bpad) return -2;
        full_convolution(a, sa, b, sb, out, bpad.get());
        return 1;
    });
}

}  // namespace

void qomath::numerics::convolve_full(const float* a, std::size_t na, const float* b,
                                     std::size_t nb, float* out)
{
    std::unique_ptr<float[]> bpad(new float[nb + 2 * (lanes_of<float> - 1)]);
    full_convolution(a, na, b, nb, out, bpad.get());
}

namespace {

// Index of x beyond 0..n-1 under an edge rule; -1 for a zero.
std::int64_t edge_index(std::int64_t i, std::int64_t n, int edges)
{
    if (i >= 0 && i < n) return i;
    if (edges == QOMATH_CONV_EDGE_REPEAT) return i < 0 ? 0 : n - 1;
    if (edges == QOMATH_CONV_EDGE_MIRROR) {
        if (n == 1) return 0;
        const std::int64_t period = 2 * (n - 1);
        std::int64_t m = i % period;
        if (m < 0) m += period;
        return m < n ? m : period - m;
    }
    return -1;
}

}  // namespace

using qomath::detail::guarded;

extern "C" {

int convolution_1d(float* a, int na, float* b, int nb, float* out, int nOut)
{
    return convolve_1d(a, na, b, nb, out, nOut);
}

int convolution_1dD(double* a, int na, double* b, int nb, double* out, int nOut)
{
    return convolve_1d(a, na, b, nb, out, nOut);
}

int convolution_2dD(double* img, int rows, int cols, double* kernel, int krows, int kcols,
                    double* out)
{
    if (!img || !kernel || !out || rows < 1 || cols < 1 || krows < 1 || kcols < 1) return -1;
    if (krows > rows || kcols > cols) return -1;
    if (static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(cols) >
        std::numeric_limits<std::size_t>::max() / sizeof(double))
        return -1;
    const std::int64_t R = rows, C = cols, KR = krows, KC = kcols, cr = KR / 2, cc = KC / 2;
    for (std::int64_t r = 0; r < R; ++r) {
        // Kernel rows u that keep r + cr - u inside the image.
        const std::int64_t u_lo = std::max<std::int64_t>(0, r + cr - (R - 1));
        const std::int64_t u_hi = std::min<std::int64_t>(KR - 1, r + cr);
        for (std::int64_t c = 0; c < C; ++c) {
            const std::int64_t v_lo = std::max<std::int64_t>(0, c + cc - (C - 1));
            const std::int64_t v_hi = std::min<std::int64_t>(KC - 1, c + cc);
            double sum = 0.0;
            for (std::int64_t u = u_lo; u <= u_hi; ++u) {
                const double* krow = kernel + u * KC;
                const double* irow = img + (r + cr - u) * C + (c + cc);
                for (std::int64_t v = v_lo; v <= v_hi; ++v) sum += krow[v] * irow[-v];
            }
            out[r * C + c] = sum;
        }
    }
    return 1;
}

int convolution(float* data, int n, const float* kernel, int nk, int edges, int normalise)
{
    if (!data || !kernel || n < 1 || nk < 1) return -1;
    if (edges != QOMATH_CONV_EDGE_ZERO && edges != QOMATH_CONV_EDGE_REPEAT &&
        edges != QOMATH_CONV_EDGE_MIRROR)
        return -1;
    double scale = 1.0;
    if (normalise) {
        double sum = 0.0;
        for (int j = 0; j < nk; ++j) sum += kernel[j];
        if (!(std::fabs(sum) > 1e-20)) return -1;
        scale = 1.0 / sum;
    }
    return guarded(-2, [&] {
        const std::size_t count = static_cast<std::size_t>(n);
        auto x = std::unique_ptr<float[]>(new (std::nothrow) float[count]);
        if (!x) return -2;
        std::copy(data, data + n, x.get());
        const std::int64_t N = n, K = nk, centre = K / 2;
        for (std::int64_t i = 0; i < N; ++i) {
            double sum = 0.0;
            for (std::int64_t j = 0; j < K; ++j) {
                const std::int64_t at = edge_index(i + centre - j, N, edges);
                if (at >= 0) sum += static_cast<double>(kernel[j]) * x[at];
            }
            data[i] = static_cast<float>(sum * scale);
        }
        return 1;
    });
}

}  // extern "C"
