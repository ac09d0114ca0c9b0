// Matrix-vector product and blocked LU inversion, baseline and AVX2 paths.
#include "numerics/dense_kernels.hpp"

#include <algorithm>
#include <cstring>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define QOMATH_X86_DISPATCH 1
#endif

namespace qomath::numerics {
namespace {

using std::size_t;

// ---- Matrix-vector product ---------------------------------------------------

void matvec_baseline(const float* m, const float* y, float* out, size_t rows, size_t n)
{
    for (size_t r = 0; r < rows; ++r) {
        const float* row = m + r * n;
        double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
        size_t c = 0;
        for (; c + 4 <= n; c += 4) {
            s0 += static_cast<double>(row[c]) * y[c];
            s1 += static_cast<double>(row[c + 1]) * y[c + 1];
            s2 += static_cast<double>(row[c + 2]) * y[c + 2];
            s3 += static_cast<double>(row[c + 3]) * y[c + 3];
        }
        for (; c < n; ++c) s0 += static_cast<double>(row[c]) * y[c];
        out[r] = static_cast<float>((s0 + s1) + (s2 + s3));
    }
}

// ---- Matrix product C += sign * A * B on packed panels ---------------------------

// Register tile of the micro-kernels and the cache blocks.
constexpr size_t kMR = 6;
constexpr size_t kNR = 8;
constexpr size_t kKC = 256;
constexpr size_t kMC = 96;   // multiple of kMR
constexpr size_t kNC = 512;  // multiple of kNR

struct PackBuffers {
    std::vector<double> a;  // kMC x kKC, in kMR-row panels
    std::vector<double> b;  // kKC x kNC, in kNR-column panels
    PackBuffers() : a(kMC * kKC), b(kKC * kNC) {}
};

// A block (m x k) into panels of kMR rows, each k steps of kMR values; rows
// past m are zero.
void pack_a(const double* A, size_t lda, size_t m, size_t k, double* dst)
{
    for (size_t i0 = 0; i0 < m; i0 += kMR) {
        const size_t mr = std::min(kMR, m - i0);
        for (size_t p = 0; p < k; ++p) {
            for (size_t r = 0; r < mr; ++r) dst[r] = A[(i0 + r) * lda + p];
            for (size_t r = mr; r < kMR; ++r) dst[r] = 0.0;
            dst += kMR;
        }
    }
}

// B block (k x n) into panels of kNR columns, each k rows of kNR values;
// columns past n are zero.
void pack_b(const double* B, size_t ldb, size_t k, size_t n, double* dst)
{
    for (size_t j0 = 0; j0 < n; j0 += kNR) {
        const size_t nr = std::min(kNR, n - j0);
        for (size_t p = 0; p < k; ++p) {
            const double* src = B + p * ldb + j0;
            for (size_t c = 0; c < nr; ++c) dst[c] = src[c];
            for (size_t c = nr; c < kNR; ++c) dst[c] = 0.0;
            dst += kNR;
        }
    }
}

// tile = Ap * Bp over k steps (kMR x kNR, row-major).
void micro_baseline(size_t k, const double* ap, const double* bp, double* tile)
{
    double acc[kMR][kNR] = {};
    for (size_t p = 0; p < k; ++p) {
        for (size_t r = 0; r < kMR; ++r) {
            const double a = ap[r];
            for (size_t c = 0; c < kNR; ++c) acc[r][c] += a * bp[c];
        }
        ap += kMR;
        bp += kNR;
    }
    std::memcpy(tile, acc, sizeof acc);
}

#ifdef QOMATH_X86_DISPATCH
__attribute__((target("avx2,fma"))) void micro_avx2(size_t k, const double* ap, const double* bp,
                                                    double* tile)
{
    __m256d c00 = _mm256_setzero_pd(), c01 = c00, c10 = c00, c11 = c00, c20 = c00, c21 = c00;
    __m256d c30 = c00, c31 = c00, c40 = c00, c41 = c00, c50 = c00, c51 = c00;
    for (size_t p = 0; p < k; ++p) {
        const __m256d b0 = _mm256_loadu_pd(bp);
        const __m256d b1 = _mm256_loadu_pd(bp + 4);
        __m256d a = _mm256_broadcast_sd(ap);
        c00 = _mm256_fmadd_pd(a, b0, c00);
        c01 = _mm256_fmadd_pd(a, b1, c01);
        a = _mm256_broadcast_sd(ap + 1);
        c10 = _mm256_fmadd_pd(a, b0, c10);
        c11 = _mm256_fmadd_pd(a, b1, c11);
        a = _mm256_broadcast_sd(ap + 2);
        c20 = _mm256_fmadd_pd(a, b0, c20);
        c21 = _mm256_fmadd_pd(a, b1, c21);
        a = _mm256_broadcast_sd(ap + 3);
        c30 = _mm256_fmadd_pd(a, b0, c30);
        c31 = _mm256_fmadd_pd(a, b1, c31);
        a = _mm256_broadcast_sd(ap + 4);
        c40 = _mm256_fmadd_pd(a, b0, c40);
        c41 = _mm256_fmadd_pd(a, b1, c41);
        a = _mm256_broadcast_sd(ap + 5);
        c50 = _mm256_fmadd_pd(a, b0, c50);
        c51 = _mm256_fmadd_pd(a, b1, c51);
        ap += kMR;
        bp += kNR;
    }
    _mm256_storeu_pd(tile + 0, c00);
    _mm256_storeu_pd(tile + 4, c01);
    _mm256_storeu_pd(tile + 8, c10);
    _mm256_storeu_pd(tile + 12, c11);
    _mm256_storeu_pd(tile + 16, c20);
    _mm256_storeu_pd(tile + 20, c21);
    _mm256_storeu_pd(tile + 24, c30);
    _mm256_storeu_pd(tile + 28, c31);
    _mm256_storeu_pd(tile + 32, c40);
    _mm256_storeu_pd(tile + 36, c41);
    _mm256_storeu_pd(tile + 40, c50);
    _mm256_storeu_pd(tile + 44, c51);
}

__attribute__((target("avx2,fma"))) void matvec_avx2(const float* m, const float* y, float* out,
                                                     size_t rows, size_t n)
{
    size_t r = 0;
    for (; r + 4 <= rows; r += 4) {
        const float* p0 = m + r * n;
        const float* p1 = p0 + n;
        const float* p2 = p1 + n;
        const float* p3 = p2 + n;
        __m256d a0 = _mm256_setzero_pd(), a1 = a0, a2 = a0, a3 = a0;
        __m256d b0 = a0, b1 = a0, b2 = a0, b3 = a0;
        size_t c = 0;
        for (; c + 8 <= n; c += 8) {
            const __m256d y0 = _mm256_cvtps_pd(_mm_loadu_ps(y + c));
            const __m256d y1 = _mm256_cvtps_pd(_mm_loadu_ps(y + c + 4));
            a0 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p0 + c)), y0, a0);
            b0 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p0 + c + 4)), y1, b0);
            a1 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p1 + c)), y0, a1);
            b1 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p1 + c + 4)), y1, b1);
            a2 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p2 + c)), y0, a2);
            b2 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p2 + c + 4)), y1, b2);
            a3 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p3 + c)), y0, a3);
            b3 = _mm256_fmadd_pd(_mm256_cvtps_pd(_mm_loadu_ps(p3 + c + 4)), y1, b3);
        }
        double s[4][4];
        _mm256_storeu_pd(s[0], _mm256_add_pd(a0, b0));
        _mm256_storeu_pd(s[1], _mm256_add_pd(a1, b1));
        _mm256_storeu_pd(s[2], _mm256_add_pd(a2, b2));
        _mm256_storeu_pd(s[3], _mm256_add_pd(a3, b3));
        const float* rowp[4] = {p0, p1, p2, p3};
        for (size_t i = 0; i < 4; ++i) {
            double t = (s[i][0] + s[i][1]) + (s[i][2] + s[i][3]);
            for (size_t cc = c; cc < n; ++cc) t += static_cast<double>(rowp[i][cc]) * y[cc];
            out[r + i] = static_cast<float>(t);
        }
    }
    if (r < rows) matvec_baseline(m + r * n, y, out + r, rows - r, n);
}
#endif

using Micro = void (*)(size_t, const double*, const double*, double*);

// C (m x n) += sign * A (m x k) * B (k x n); all row-major with their
// leading dimensions.
template <bool Subtract>
void gemm(Micro micro, PackBuffers& buf, size_t m, size_t n, size_t k, const double* A, size_t lda,
          const double* B, size_t ldb, double* C, size_t ldc)
{
    if (m == 0 || n == 0 || k == 0) return;
    double tile[kMR * kNR];
    for (size_t jc = 0; jc < n; jc += kNC) {
        const size_t nc = std::min(kNC, n - jc);
        for (size_t pc = 0; pc < k; pc += kKC) {
            const size_t kc = std::min(kKC, k - pc);
            pack_b(B + pc * ldb + jc, ldb, kc, nc, buf.b.data());
            for (size_t ic = 0; ic < m; ic += kMC) {
                const size_t mc = std::min(kMC, m - ic);
                pack_a(A + ic * lda + pc, lda, mc, kc, buf.a.data());
                for (size_t jr = 0; jr < nc; jr += kNR) {
                    const size_t nr = std::min(kNR, nc - jr);
                    const double* bp = buf.b.data() + jr * kc;
                    for (size_t ir = 0; ir < mc; ir += kMR) {
                        const size_t mr = std::min(kMR, mc - ir);
                        micro(kc, buf.a.data() + ir * kc, bp, tile);
                        for (size_t r = 0; r < mr; ++r) {
                            double* crow = C + (ic + ir + r) * ldc + jc + jr;
                            for (size_t c = 0; c < nr; ++c) {
                                if constexpr (Subtract) crow[c] -= tile[r * kNR + c];
                                else crow[c] += tile[r * kNR + c];
                            }
                        }
                    }
                }
            }
        }
    }
}

// ---- Blocked inversion ------------------------------------------------------------

constexpr size_t kNB = 96;  // block of the factorisation and the inverses

void lu_invert_blocked(double* a, size_t n, Micro micro)
{
    PackBuffers buf;
    auto at = [&](size_t r, size_t c) -> double& { return a[r * n + c]; };

    // LU, right-looking: Crout on each panel of kNB columns, the panel's rows
    // of U, then the trailing update by one matrix product.
    for (size_t k0 = 0; k0 < n; k0 += kNB) {
        const size_t k1 = std::min(n, k0 + kNB);
        for (size_t c = k0; c < k1; ++c) {
            for (size_t r = c; r < n; ++r) {
                double s = at(r, c);
                for (size_t t = k0; t < c; ++t) s -= at(r, t) * at(t, c);
                at(r, c) = s;
            }
            const double d = at(c, c);
            for (size_t j = c + 1; j < k1; ++j) {
                double s = at(c, j);
                for (size_t t = k0; t < c; ++t) s -= at(c, t) * at(t, j);
                at(c, j) = s / d;
            }
        }
        if (k1 == n) break;
        for (size_t c = k0; c < k1; ++c) {
            double* row = &at(c, 0);
            for (size_t t = k0; t < c; ++t) {
                const double l = row[t];
                const double* urow = &at(t, 0);
                for (size_t j = k1; j < n; ++j) row[j] -= l * urow[j];
            }
            const double inv = 1.0 / row[c];
            for (size_t j = k1; j < n; ++j) row[j] = row[j] * inv;
        }
        gemm<true>(micro, buf, n - k1, n - k1, k1 - k0, &at(k1, k0), n, &at(k0, k1), n, &at(k1, k1), n);
    }

    std::vector<double> X(n * n, 0.0), Y(n * n, 0.0);  // L^-1 and U^-1
    // L^-1 by block columns: X_ij = L_ii^-1 (delta_ij - sum over j <= k < i of L_ik X_kj).
    for (size_t j0 = 0; j0 < n; j0 += kNB) {
        const size_t j1 = std::min(n, j0 + kNB);
        for (size_t i0 = j0; i0 < n; i0 += kNB) {
            const size_t i1 = std::min(n, i0 + kNB);
            double* T = &X[i0 * n + j0];
            if (i0 == j0)
                for (size_t d = i0; d < i1; ++d) X[d * n + d] = 1.0;
            gemm<true>(micro, buf, i1 - i0, j1 - j0, i0 - j0, &at(i0, j0), n, &X[j0 * n + j0], n, T, n);
            for (size_t r = 0; r < i1 - i0; ++r) {
                double* xr = T + r * n;
                for (size_t t = 0; t < r; ++t) {
                    const double l = at(i0 + r, i0 + t);
                    const double* xt = T + t * n;
                    for (size_t c = 0; c < j1 - j0; ++c) xr[c] -= l * xt[c];
                }
                const double inv = 1.0 / at(i0 + r, i0 + r);
                for (size_t c = 0; c < j1 - j0; ++c) xr[c] *= inv;
            }
        }
    }
    // U^-1 by block rows from the last: Y_ij = U_ii^-1 (delta_ij - sum over i < k <= j of U_ik Y_kj).
    const size_t nblocks = (n + kNB - 1) / kNB;
    for (size_t bi = nblocks; bi-- > 0;) {
        const size_t i0 = bi * kNB, i1 = std::min(n, i0 + kNB);
        for (size_t j0 = i0; j0 < n; j0 += kNB) {
            const size_t j1 = std::min(n, j0 + kNB);
            double* T = &Y[i0 * n + j0];
            if (i0 == j0)
                for (size_t d = i0; d < i1; ++d) Y[d * n + d] = 1.0;
            gemm<true>(micro, buf, i1 - i0, j1 - j0, j1 - i1, &at(i0, i1), n,
                       &Y[i1 * n + j0], n, T, n);
            for (size_t r = i1 - i0; r-- > 0;) {
                double* yr = T + r * n;
                for (size_t t = r + 1; t < i1 - i0; ++t) {
                    const double u = at(i0 + r, i0 + t);
                    const double* yt = T + t * n;
                    for (size_t c = 0; c < j1 - j0; ++c) yr[c] -= u * yt[c];
                }
            }
        }
    }
    // A^-1 = U^-1 L^-1: block (i, j) sums over k >= max(i, j) only.
    std::fill(a, a + n * n, 0.0);
    for (size_t i0 = 0; i0 < n; i0 += kNB) {
        const size_t i1 = std::min(n, i0 + kNB);
        for (size_t j0 = 0; j0 < n; j0 += kNB) {
            const size_t j1 = std::min(n, j0 + kNB);
            const size_t k0 = std::max(i0, j0);
            gemm<false>(micro, buf, i1 - i0, j1 - j0, n - k0, &Y[i0 * n + k0], n, &X[k0 * n + j0], n,
                        &at(i0, j0), n);
        }
    }
}

}  // namespace

bool path_available(SimdPath p)
{
    if (p == SimdPath::baseline) return true;
#ifdef QOMATH_X86_DISPATCH
    static const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    return avx2;
#else
    return false;
#endif
}

SimdPath best_path()
{
    return path_available(SimdPath::avx2) ? SimdPath::avx2 : SimdPath::baseline;
}

void matvec(const float* m, const float* y, float* out, size_t rows, size_t n, SimdPath path)
{
#ifdef QOMATH_X86_DISPATCH
    if (path == SimdPath::avx2 && path_available(path)) return matvec_avx2(m, y, out, rows, n);
#else
    (void)path;
#endif
    matvec_baseline(m, y, out, rows, n);
}

void matvec(const float* m, const float* y, float* out, size_t rows, size_t n)
{
    matvec(m, y, out, rows, n, best_path());
}

void lu_invert(double* a, size_t n, SimdPath path)
{
    Micro micro = micro_baseline;
#ifdef QOMATH_X86_DISPATCH
    if (path == SimdPath::avx2 && path_available(path)) micro = micro_avx2;
#else
    (void)path;
#endif
    if (n > 0) lu_invert_blocked(a, n, micro);
}

void lu_invert(double* a, size_t n)
{
    lu_invert(a, n, best_path());
}

void lu_invert_plain(double* a, size_t n)
{
    if (n == 0) return;
    auto at = [&](size_t r, size_t c) -> double& { return a[r * n + c]; };
    // Row 0 of U, then column i of L and row i of U.
    for (size_t j = 1; j < n; ++j) at(0, j) /= at(0, 0);
    for (size_t i = 1; i < n; ++i) {
        for (size_t j = i; j < n; ++j) {
            double s = at(j, i);
            for (size_t k = 0; k < i; ++k) s -= at(j, k) * at(k, i);
            at(j, i) = s;
        }
        if (i == n - 1) break;
        for (size_t j = i + 1; j < n; ++j) {
            double s = at(i, j);
            for (size_t k = 0; k < i; ++k) s -= at(i, k) * at(k, j);
            at(i, j) = s / at(i, i);
        }
    }
    // L^-1 in place, column by column.
    for (size_t j = 0; j < n; ++j) {
        at(j, j) = 1.0 / at(j, j);
        for (size_t i = j + 1; i < n; ++i) {
            double s = 0.0;
            for (size_t k = j; k < i; ++k) s += at(i, k) * at(k, j);
            at(i, j) = -s / at(i, i);
        }
    }
    // U^-1 in place (unit diagonal, not stored), from the last column back.
    for (size_t j = n; j-- > 1;) {
        for (size_t i = j; i-- > 0;) {
            double s = at(i, j);
            for (size_t k = i + 1; k < j; ++k) s += at(i, k) * at(k, j);
            at(i, j) = -s;
        }
    }
    // U^-1 L^-1 row by row: element (i, j) sums over k >= max(i, j).
    for (size_t i = 0; i < n; ++i) {
        for (size_t j = 0; j < n; ++j) {
            const size_t k0 = std::max(i, j);
            double s = k0 == i ? at(i, j) : at(i, j) * at(j, j);
            for (size_t k = k0 + 1; k < n; ++k) s += at(i, k) * at(k, j);
            at(i, j) = s;
        }
    }
}

}  // namespace qomath::numerics
