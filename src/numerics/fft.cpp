// Complex FFT (radix-4 on split real and imaginary arrays, twiddle tables
// per size built once), chirp-z for other sizes, and the exports built on it:
// FFTDiscrete, FFTDiscreteShift, FFTDiscrete2, MTF_1d, lcf.
#include "numerics/fft.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <numbers>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/fft.h"

namespace qomath::numerics {
namespace {

// Four floats processed together; the compiler maps these onto the
// baseline vector unit of the target (SSE2 on x86-64, NEON on AArch64).
using v4 = float __attribute__((vector_size(16)));

inline v4 load(const float* p)
{
    v4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void store(float* p, v4 v) { std::memcpy(p, &v, sizeof v); }

template <class T>
std::unique_ptr<T[]> scratch(std::size_t count)
{
    return std::unique_ptr<T[]>(new (std::nothrow) T[count]);
}

// Twiddle tables of one power-of-two size n = 2^log2n (n >= 8). After the
// first radix-4 pass (fused with the bit-reversed gather, length 4) an odd
// log2n takes one radix-2 pass of length 8, then radix-4 passes follow.
// Each pass of length L keeps q = L/4 (L/2 for radix 2) cosines and sines
// of the angles +2 pi k r / L, r = 1, 2, 3 (r = 1 for radix 2).
struct Plan {
    std::size_t n = 0;
    unsigned log2n = 0;
    std::vector<std::uint32_t> rev4;  // bit reversal of 4b, b = 0..n/4-1
    struct Pass {
        std::size_t length;
        std::size_t offset;  // into tw: c1, s1, c2, s2, c3, s3 of q each
    };
    std::vector<Pass> passes;
    std::vector<float> tw;

    explicit Plan(unsigned bits) : n(std::size_t{1} << bits), log2n(bits)
    {
        rev4.resize(n / 4);
        for (std::size_t b = 0; b < n / 4; ++b) {
            std::size_t i = 4 * b, r = 0;
            for (unsigned k = 0; k < bits; ++k) r |= ((i >> k) & 1u) << (bits - 1 - k);
            rev4[b] = static_cast<std::uint32_t>(r);
        }
        std::size_t length = 4;
        auto add_pass = [&](std::size_t len, int radix) {
            const std::size_t q = len / static_cast<std::size_t>(radix);
            const std::size_t off = tw.size();
            tw.resize(off + 2 * static_cast<std::size_t>(radix - 1) * q);
            for (int r = 1; r < radix; ++r) {
                float* c = &tw[off + 2 * static_cast<std::size_t>(r - 1) * q];
                float* s = c + q;
                for (std::size_t k = 0; k < q; ++k) {
                    // Reduce k r mod len exactly before forming the angle.
                    const std::size_t kr = (k * static_cast<std::size_t>(r)) % len;
                    const double a = 2.0 * std::numbers::pi * static_cast<double>(kr) /
                                     static_cast<double>(len);
                    c[k] = static_cast<float>(std::cos(a));
                    s[k] = static_cast<float>(std::sin(a));
                }
            }
            passes.push_back({len, off});
        };
        if (bits % 2 == 1) {
            length = 8;
            add_pass(8, 2);
        }
        while (length < n) {
            length *= 4;
            add_pass(length, 4);
        }
    }
};

const Plan& plan_for(unsigned log2n)
{
    static std::array<std::atomic<const Plan*>, 64> cache{};
    static std::array<std::unique_ptr<const Plan>, 64> owned;
    static std::mutex building;
    const Plan* p = cache[log2n].load(std::memory_order_acquire);
    if (p) return *p;
    std::lock_guard<std::mutex> lock(building);
    p = cache[log2n].load(std::memory_order_relaxed);
    if (!p) {
        owned[log2n] = std::make_unique<const Plan>(log2n);
        p = owned[log2n].get();
        cache[log2n].store(p, std::memory_order_release);
    }
    return *p;
}

// Gather in bit-reversed order fused with the length-4 pass. Block b holds
// the points 4b..4b+3 of the reordered sequence: x[r], x[r + n/2],
// x[r + n/4], x[r + 3n/4] with r = rev(4b); these are the sub-sequences
// 0, 2, 1, 3 of the length-4 transform.
template <bool Inverse>
void gather4(const float* x, const Plan& plan, float* re, float* im)
{
    const std::size_t n = plan.n, h = n / 2, qn = n / 4;
    // The top bits of b are the low bits of r: running them innermost, each
    // cache line of x is used up within a few steps and the writes form
    // eight sequential streams.
    const unsigned top = std::min(3u, plan.log2n - 2), low_bits = plan.log2n - 2 - top;
    for (std::size_t i = 0; i < qn; ++i) {
        const std::size_t b = ((i & ((std::size_t{1} << top) - 1)) << low_bits) | (i >> top);
        const std::size_t r = plan.rev4[b];
        const float a0r = x[2 * r], a0i = x[2 * r + 1];
        const float a2r = x[2 * (r + h)], a2i = x[2 * (r + h) + 1];
        const float a1r = x[2 * (r + qn)], a1i = x[2 * (r + qn) + 1];
        const float a3r = x[2 * (r + h + qn)], a3i = x[2 * (r + h + qn) + 1];
        const float t0r = a0r + a2r, t0i = a0i + a2i, t1r = a0r - a2r, t1i = a0i - a2i;
        const float t2r = a1r + a3r, t2i = a1i + a3i, dr = a1r - a3r, di = a1i - a3i;
        // t3 = (sign i) (a1 - a3)
        const float t3r = Inverse ? di : -di, t3i = Inverse ? -dr : dr;
        float* pr = re + 4 * b;
        float* pi = im + 4 * b;
        pr[0] = t0r + t2r, pi[0] = t0i + t2i;
        pr[1] = t1r + t3r, pi[1] = t1i + t3i;
        pr[2] = t0r - t2r, pi[2] = t0i - t2i;
        pr[3] = t1r - t3r, pi[3] = t1i - t3i;
    }
}

template <bool Inverse>
void pass2(float* re, float* im, std::size_t n, const float* c1, const float* s1)
{
    // Length 8: two halves of 4; E at 0, O at 4.
    const v4 c = load(c1), s = Inverse ? -load(s1) : load(s1);
    for (std::size_t base = 0; base < n; base += 8) {
        float* r = re + base;
        float* i = im + base;
        const v4 er = load(r), ei = load(i), orr = load(r + 4), oi = load(i + 4);
        const v4 tr = orr * c - oi * s, ti = orr * s + oi * c;
        store(r, er + tr), store(i, ei + ti);
        store(r + 4, er - tr), store(i + 4, ei - ti);
    }
}

inline void store_interleaved(float* x, v4 r, v4 i)
{
    store(x, __builtin_shufflevector(r, i, 0, 4, 1, 5));
    store(x + 4, __builtin_shufflevector(r, i, 2, 6, 3, 7));
}

// One radix-4 pass of the given length; with `out` (last pass only) the
// results go interleaved straight to the caller's array.
template <bool Inverse>
void pass4(float* re, float* im, std::size_t n, std::size_t length, const float* tw, float* out)
{
    const std::size_t q = length / 4;
    const float *C1 = tw, *S1 = tw + q, *C2 = tw + 2 * q, *S2 = tw + 3 * q, *C3 = tw + 4 * q,
                *S3 = tw + 5 * q;
    for (std::size_t base = 0; base < n; base += length) {
        float *r0 = re + base, *r1 = r0 + q, *r2 = r1 + q, *r3 = r2 + q;
        float *i0 = im + base, *i1 = i0 + q, *i2 = i1 + q, *i3 = i2 + q;
        for (std::size_t k = 0; k < q; k += 4) {
            const v4 c1 = load(C1 + k), c2 = load(C2 + k), c3 = load(C3 + k);
            v4 s1 = load(S1 + k), s2 = load(S2 + k), s3 = load(S3 + k);
            if constexpr (Inverse) s1 = -s1, s2 = -s2, s3 = -s3;
            // Quarters hold the sub-sequences 0, 2, 1, 3.
            const v4 a0r = load(r0 + k), a0i = load(i0 + k);
            const v4 br = load(r2 + k), bi = load(i2 + k);
            const v4 a1r = br * c1 - bi * s1, a1i = br * s1 + bi * c1;
            const v4 cr = load(r1 + k), ci = load(i1 + k);
            const v4 a2r = cr * c2 - ci * s2, a2i = cr * s2 + ci * c2;
            const v4 dr0 = load(r3 + k), di0 = load(i3 + k);
            const v4 a3r = dr0 * c3 - di0 * s3, a3i = dr0 * s3 + di0 * c3;
            const v4 t0r = a0r + a2r, t0i = a0i + a2i, t1r = a0r - a2r, t1i = a0i - a2i;
            const v4 t2r = a1r + a3r, t2i = a1i + a3i, dr = a1r - a3r, di = a1i - a3i;
            v4 t3r, t3i;
            if constexpr (Inverse) {
                t3r = di, t3i = -dr;
            } else {
                t3r = -di, t3i = dr;
            }
            if (out) {
                store_interleaved(out + 2 * k, t0r + t2r, t0i + t2i);
                store_interleaved(out + 2 * (k + q), t1r + t3r, t1i + t3i);
                store_interleaved(out + 2 * (k + 2 * q), t0r - t2r, t0i - t2i);
                store_interleaved(out + 2 * (k + 3 * q), t1r - t3r, t1i - t3i);
                continue;
            }
            store(r0 + k, t0r + t2r), store(i0 + k, t0i + t2i);
            store(r1 + k, t1r + t3r), store(i1 + k, t1i + t3i);
            store(r2 + k, t0r - t2r), store(i2 + k, t0i - t2i);
            store(r3 + k, t1r - t3r), store(i3 + k, t1i - t3i);
        }
    }
}

template <bool Inverse>
void run_pow2(float* x, const Plan& plan, float* re, float* im)
{
    const std::size_t n = plan.n;
    gather4<Inverse>(x, plan, re, im);
    // Passes up to `block` points run block by block while the block is in
    // the first-level cache; the longer ones over the whole array.
    constexpr std::size_t block = 2048;
    auto run = [&](const Plan::Pass& p, std::size_t at, std::size_t count) {
        if (p.length == 8 && plan.log2n % 2 == 1)
            pass2<Inverse>(re + at, im + at, count, &plan.tw[p.offset], &plan.tw[p.offset + 4]);
        else
            pass4<Inverse>(re + at, im + at, count, p.length, &plan.tw[p.offset],
                           p.length == n ? x : nullptr);
    };
    const std::size_t chunk = std::min(n, block);
    for (std::size_t at = 0; at < n; at += chunk)
        for (const Plan::Pass& p : plan.passes)
            if (p.length <= chunk) run(p, at, chunk);
    for (const Plan::Pass& p : plan.passes)
        if (p.length > chunk) run(p, 0, n);
    if (plan.passes.back().length == 8) {  // n = 8 ends on the radix-2 pass
        for (std::size_t k = 0; k < n; ++k) x[2 * k] = re[k], x[2 * k + 1] = im[k];
    }
}

bool fft_pow2(float* x, std::size_t n, int sign)
{
    auto buf = scratch<float>(2 * n);  // first, so that a size beyond memory builds no tables
    if (!buf) return false;
    const Plan& plan = plan_for(static_cast<unsigned>(std::countr_zero(n)));
    if (sign < 0)
        run_pow2<true>(x, plan, buf.get(), buf.get() + n);
    else
        run_pow2<false>(x, plan, buf.get(), buf.get() + n);
    return true;
}

// Direct sum in double for small sizes.
bool dft_direct(float* x, std::size_t n, int sign)
{
    auto buf = scratch<double>(4 * n);
    if (!buf) return false;
    double *c = buf.get(), *s = c + n, *out = s + n;
    for (std::size_t k = 0; k < n; ++k) {
        const double a = 2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
        c[k] = std::cos(a);
        s[k] = sign * std::sin(a);
    }
    for (std::size_t j = 0; j < n; ++j) {
        double sr = 0.0, si = 0.0;
        std::size_t jk = 0;
        for (std::size_t k = 0; k < n; ++k) {
            const double xr = x[2 * k], xi = x[2 * k + 1];
            sr += xr * c[jk] - xi * s[jk];
            si += xr * s[jk] + xi * c[jk];
            jk += j;
            if (jk >= n) jk -= n;
        }
        out[2 * j] = sr;
        out[2 * j + 1] = si;
    }
    for (std::size_t k = 0; k < 2 * n; ++k) x[k] = static_cast<float>(out[k]);
    return true;
}

// Chirp-z (Bluestein): jk = (j^2 + k^2 - (j-k)^2) / 2 turns the transform
// into a cyclic convolution of length m >= 2n - 1, a power of two.
bool dft_chirp(float* x, std::size_t n, int sign)
{
    std::size_t m = 8;
    while (m < 2 * n - 1) {
        if (m > std::numeric_limits<std::size_t>::max() / 8 / sizeof(float)) return false;
        m *= 2;
    }
    auto buf = scratch<float>(4 * m);
    auto chirp = scratch<double>(2 * n);
    if (!buf || !chirp) return false;
    float *a = buf.get(), *b = a + 2 * m;
    std::fill(a, a + 4 * m, 0.0f);
    for (std::size_t k = 0; k < n; ++k) {
        // w_k = e^{sign i pi k^2 / n}, k^2 reduced mod 2n first.
        // (k < 2^32 here, so k * k fits in 64 bits.)
        const std::uint64_t kk = k, k2 = (kk * kk) % (2 * std::uint64_t{n});
        const double ang = std::numbers::pi * static_cast<double>(k2) / static_cast<double>(n);
        const double wr = std::cos(ang), wi = sign * std::sin(ang);
        chirp[2 * k] = wr, chirp[2 * k + 1] = wi;
        const double xr = x[2 * k], xi = x[2 * k + 1];
        a[2 * k] = static_cast<float>(xr * wr - xi * wi);
        a[2 * k + 1] = static_cast<float>(xr * wi + xi * wr);
        // b holds conj(w) at l and at m - l.
        const std::size_t at = k > 0 ? m - k : 0;
        b[2 * k] = b[2 * at] = static_cast<float>(wr);
        b[2 * k + 1] = b[2 * at + 1] = static_cast<float>(-wi);
    }
    if (!fft_pow2(a, m, 1) || !fft_pow2(b, m, 1)) return false;
    for (std::size_t j = 0; j < m; ++j) {
        const float ar = a[2 * j], ai = a[2 * j + 1], br = b[2 * j], bi = b[2 * j + 1];
        a[2 * j] = ar * br - ai * bi;
        a[2 * j + 1] = ar * bi + ai * br;
    }
    if (!fft_pow2(a, m, -1)) return false;
    const double inv = 1.0 / static_cast<double>(m);
    for (std::size_t j = 0; j < n; ++j) {
        const double cr = a[2 * j] * inv, ci = a[2 * j + 1] * inv;
        const double wr = chirp[2 * j], wi = chirp[2 * j + 1];
        x[2 * j] = static_cast<float>(cr * wr - ci * wi);
        x[2 * j + 1] = static_cast<float>(cr * wi + ci * wr);
    }
    return true;
}

}  // namespace

bool dft(float* x, std::size_t n, int sign)
{
    if (n <= 1) return true;
    if (std::has_single_bit(n) && n >= 8) return fft_pow2(x, n, sign);
    if (n <= 64) return dft_direct(x, n, sign);
    return dft_chirp(x, n, sign);
}

}  // namespace qomath::numerics

using qomath::detail::guarded;
using qomath::numerics::dft;

extern "C" {

int FFTDiscrete(float* data, unsigned nn, int isign)
{
    if (nn < 5) return 1;
    if (nn % 2 != 0) return 2;
    if (isign != 1 && isign != -1) return 3;
    if (!data) return 4;
    // Even sizes that are not powers of two get the exact transform too, so
    // they never reach past data[2nn].
    if (std::uint64_t{nn} > std::numeric_limits<std::size_t>::max() / 2 / sizeof(float)) return 5;
    return guarded(5, [&] { return dft(data + 1, nn, isign) ? 0 : 5; });
}

int FFTDiscreteShift(float* data, int n)
{
    if (!data || n < 1) return -1;
    std::rotate(data, data + (n - n / 2), data + n);
    return 1;
}

int FFTDiscrete2(float* data, int n, float* out, int mode)
{
    if (!data || !out || n < 1 || (mode != 0 && mode != 1)) return -1;
    return guarded(-2, [&] {
        const std::size_t count = static_cast<std::size_t>(n);
        auto buf = std::unique_ptr<float[]>(new (std::nothrow) float[2 * count]);
        if (!buf) return -2;
        for (std::size_t k = 0; k < count; ++k) buf[2 * k] = data[k], buf[2 * k + 1] = 0.0f;
        if (!dft(buf.get(), count, -1)) return -2;
        const std::size_t bins = count / 2 + 1;
        for (std::size_t j = 0; j < bins; ++j) {
            if (mode == 0) {
                out[2 * j] = buf[2 * j];
                out[2 * j + 1] = buf[2 * j + 1];
            } else {
                out[j] = static_cast<float>(std::hypot(static_cast<double>(buf[2 * j]),
                                                       static_cast<double>(buf[2 * j + 1])));
            }
        }
        return 1;
    });
}

int MTF_1d(const float* in, int n, float step, float* out)
{
    if (!in || !out) return -1;
    if (n < 5) return -2;
    if (step < 1e-10f) return -3;
    return guarded(-4, [&] {
        const std::size_t count = static_cast<std::size_t>(n);
        auto s = std::unique_ptr<float[]>(new (std::nothrow) float[2 * count + 1]);
        if (!s) return -4;
        for (std::size_t i = 0; i + 1 < count; ++i) {
            s[2 * i] = in[i + 1] - in[i];
            s[2 * i + 1] = 0.0f;
        }
        s[2 * count - 2] = s[2 * count - 1] = s[2 * count] = 0.0f;
        // The transform is handed the array as laid out, so it works on the
        // floats s[1..2n], one later than the pairs: hosts' MTF curves carry
        // this shift and are compared against earlier results. Odd n: no
        // transform (status 2, not looked at).
        if (FFTDiscrete(s.get(), static_cast<unsigned>(n), 1) == 5) return -4;
        for (std::size_t k = 0; k < 2 * count; ++k)
            if (std::fabs(s[k]) > 1e10f) s[k] = std::copysign(1e10f, s[k]);
        for (std::size_t i = 0; i + 1 < count; ++i) {
            const double re = s[2 * i], im = s[2 * i + 1];
            out[i] = static_cast<float>(re * re + im * im);
        }
        return 1;
    });
}

float lcf(float a, float b, int decimals)
{
    if (!std::isfinite(a) || !std::isfinite(b)) return 0.0f;  // also ahead of the zero rules
    if (std::fabs(a) < 1e-15f) return b;
    if (std::fabs(b) < 1e-15f) return a;
    if (decimals > 10 || decimals < -10) return 0.0f;
    const double scale = std::pow(10.0, -decimals);
    const double fa = std::floor(a * scale), fb = std::floor(b * scale);
    constexpr double lo = std::numeric_limits<std::int32_t>::min();
    constexpr double hi = std::numeric_limits<std::int32_t>::max();
    if (fa < lo || fa > hi || fb < lo || fb > hi) return 0.0f;
    std::int64_t x = static_cast<std::int64_t>(fa), y = static_cast<std::int64_t>(fb);
    const double unit = std::pow(10.0, decimals);
    if (x == 0) return static_cast<float>(static_cast<double>(y) * unit);
    if (y == 0) return static_cast<float>(static_cast<double>(x) * unit);
    for (std::int64_t r = x % y; r != 0; r = x % y) {
        x = y;
        y = r;
    }
    return static_cast<float>(static_cast<double>(y) * unit);
}

}  // extern "C"
