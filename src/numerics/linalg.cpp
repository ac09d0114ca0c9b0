// Dense float linear algebra: product, Gauss-Jordan inversion, singular value
// decomposition, LU decomposition, and the process-wide loaded matrix.
#include "qomath/linalg.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "common/barrier.hpp"

using qomath::detail::guarded;

namespace {

using std::size_t;

// ---- Gauss-Jordan ------------------------------------------------------------

enum class Solve { ok, singular };

// Full-pivoting Gauss-Jordan elimination on flat row-major matrices: a (n x n)
// becomes its inverse, b (n x m) the solutions. n >= 1, m >= 0; b may be null
// when m == 0. Throws std::bad_alloc for the pivot bookkeeping.
Solve gauss_jordan(float* a, int n, float* b, int m)
{
    const auto nn = static_cast<size_t>(n);
    const auto mm = static_cast<size_t>(m);
    auto A = [&](size_t r, size_t c) -> float& { return a[r * nn + c]; };
    auto B = [&](size_t r, size_t c) -> float& { return b[r * mm + c]; };

    std::vector<size_t> indxc(nn), indxr(nn);
    std::vector<int> ipiv(nn, 0);
    for (size_t i = 0; i < nn; ++i) {
        // Largest remaining element among rows and columns not yet pivoted.
        float big = 0.0f;
        size_t irow = nn, icol = nn;
        for (size_t j = 0; j < nn; ++j) {
            if (ipiv[j] == 1) continue;
            for (size_t k = 0; k < nn; ++k) {
                if (ipiv[k] == 0) {
                    if (std::fabs(A(j, k)) >= big) {
                        big = std::fabs(A(j, k));
                        irow = j;
                        icol = k;
                    }
                } else if (ipiv[k] > 1) {
                    return Solve::singular;
                }
            }
        }
        if (icol == nn) return Solve::singular;  // only NaN left
        ++ipiv[icol];
        if (irow != icol) {
            for (size_t l = 0; l < nn; ++l) std::swap(A(irow, l), A(icol, l));
            for (size_t l = 0; l < mm; ++l) std::swap(B(irow, l), B(icol, l));
        }
        indxr[i] = irow;
        indxc[i] = icol;
        if (A(icol, icol) == 0.0f) return Solve::singular;
        const double pivinv = 1.0 / static_cast<double>(A(icol, icol));
        A(icol, icol) = 1.0f;
        for (size_t l = 0; l < nn; ++l) A(icol, l) = static_cast<float>(A(icol, l) * pivinv);
        for (size_t l = 0; l < mm; ++l) B(icol, l) = static_cast<float>(B(icol, l) * pivinv);
        for (size_t ll = 0; ll < nn; ++ll) {
            if (ll == icol) continue;
            const float dum = A(ll, icol);
            A(ll, icol) = 0.0f;
            for (size_t l = 0; l < nn; ++l) A(ll, l) -= A(icol, l) * dum;
            for (size_t l = 0; l < mm; ++l) B(ll, l) -= B(icol, l) * dum;
        }
    }
    // Undo the column interchanges in reverse order.
    for (size_t l = nn; l-- > 0;) {
        if (indxr[l] == indxc[l]) continue;
        for (size_t k = 0; k < nn; ++k) std::swap(A(k, indxr[l]), A(k, indxc[l]));
    }
    return Solve::ok;
}

// ---- Singular value decomposition ----------------------------------------------

// sqrt(a^2 + b^2) without destructive overflow or underflow.
float pythag(float a, float b)
{
    const float absa = std::fabs(a), absb = std::fabs(b);
    if (absa > absb) {
        const float r = absb / absa;
        return static_cast<float>(absa * std::sqrt(1.0 + r * r));
    }
    if (absb == 0.0f) return 0.0f;
    const float r = absa / absb;
    return static_cast<float>(absb * std::sqrt(1.0 + r * r));
}

float sign_of(float a, float b) { return b >= 0.0f ? std::fabs(a) : -std::fabs(a); }

// True when x is negligible next to anorm in float.
bool negligible(float x, float anorm) { return static_cast<float>(std::fabs(x) + anorm) == anorm; }

// Golub-Kahan-Reinsch on row-pointer matrices indexed from 1: a[1..m][1..n]
// becomes U, w[1..n] the singular values, v[1..n][1..n] the matrix V.
// Throws std::bad_alloc (before touching a) for its one work vector.
void svd(float** a, int m, int n, float* w, float** v)
{
    std::vector<float> rv1(static_cast<size_t>(n) + 1, 0.0f);
    float g = 0.0f, scale = 0.0f, anorm = 0.0f, s = 0.0f, f = 0.0f, h = 0.0f;
    int l = 0;

    // Householder reduction to bidiagonal form.
    for (int i = 1; i <= n; ++i) {
        l = i + 1;
        rv1[static_cast<size_t>(i)] = scale * g;
        g = s = scale = 0.0f;
        if (i <= m) {
            for (int k = i; k <= m; ++k) scale += std::fabs(a[k][i]);
            if (scale != 0.0f) {
                for (int k = i; k <= m; ++k) {
                    a[k][i] /= scale;
                    s += a[k][i] * a[k][i];
                }
                f = a[i][i];
                g = -sign_of(std::sqrt(s), f);
                h = f * g - s;
                a[i][i] = f - g;
                for (int j = l; j <= n; ++j) {
                    s = 0.0f;
                    for (int k = i; k <= m; ++k) s += a[k][i] * a[k][j];
                    f = s / h;
                    for (int k = i; k <= m; ++k) a[k][j] += f * a[k][i];
                }
                for (int k = i; k <= m; ++k) a[k][i] *= scale;
            }
        }
        w[i] = scale * g;
        g = s = scale = 0.0f;
        if (i <= m && i != n) {
            for (int k = l; k <= n; ++k) scale += std::fabs(a[i][k]);
            if (scale != 0.0f) {
                for (int k = l; k <= n; ++k) {
                    a[i][k] /= scale;
                    s += a[i][k] * a[i][k];
                }
                f = a[i][l];
                g = -sign_of(std::sqrt(s), f);
                h = f * g - s;
                a[i][l] = f - g;
                for (int k = l; k <= n; ++k) rv1[static_cast<size_t>(k)] = a[i][k] / h;
                for (int j = l; j <= m; ++j) {
                    s = 0.0f;
                    for (int k = l; k <= n; ++k) s += a[j][k] * a[i][k];
                    for (int k = l; k <= n; ++k) a[j][k] += s * rv1[static_cast<size_t>(k)];
                }
                for (int k = l; k <= n; ++k) a[i][k] *= scale;
            }
        }
        anorm = std::max(anorm, std::fabs(w[i]) + std::fabs(rv1[static_cast<size_t>(i)]));
    }

    // Accumulation of the right-hand transformations.
    for (int i = n; i >= 1; --i) {
        if (i < n) {
            if (g != 0.0f) {
                // Double division avoids a possible underflow.
                for (int j = l; j <= n; ++j) v[j][i] = (a[i][j] / a[i][l]) / g;
                for (int j = l; j <= n; ++j) {
                    s = 0.0f;
                    for (int k = l; k <= n; ++k) s += a[i][k] * v[k][j];
                    for (int k = l; k <= n; ++k) v[k][j] += s * v[k][i];
                }
            }
            for (int j = l; j <= n; ++j) v[i][j] = v[j][i] = 0.0f;
        }
        v[i][i] = 1.0f;
        g = rv1[static_cast<size_t>(i)];
        l = i;
    }

    // Accumulation of the left-hand transformations.
    for (int i = std::min(m, n); i >= 1; --i) {
        l = i + 1;
        g = w[i];
        for (int j = l; j <= n; ++j) a[i][j] = 0.0f;
        if (g != 0.0f) {
            g = static_cast<float>(1.0 / g);
            for (int j = l; j <= n; ++j) {
                s = 0.0f;
                for (int k = l; k <= m; ++k) s += a[k][i] * a[k][j];
                f = (s / a[i][i]) * g;
                for (int k = i; k <= m; ++k) a[k][j] += f * a[k][i];
            }
            for (int j = i; j <= m; ++j) a[j][i] *= g;
        } else {
            for (int j = i; j <= m; ++j) a[j][i] = 0.0f;
        }
        ++a[i][i];
    }

    // Diagonalisation of the bidiagonal form: implicitly shifted QR, at most
    // 30 sweeps per singular value; after the 30th the values reached stand.
    auto rv = [&](int i) -> float& { return rv1[static_cast<size_t>(i)]; };
    for (int k = n; k >= 1; --k) {
        for (int its = 1; its <= 30; ++its) {
            bool cancel = true;
            int nm = 0;
            for (l = k; l >= 1; --l) {
                nm = l - 1;
                // rv1[1] is always zero, so the split test ends at l == 1
                // (also for NaN input) and w[0] is never read.
                if (l == 1 || negligible(rv(l), anorm)) {
                    cancel = false;
                    break;
                }
                if (negligible(w[nm], anorm)) break;
            }
            if (cancel) {
                // Cancellation of rv1[l] when w[l-1] is negligible.
                float c = 0.0f;
                s = 1.0f;
                for (int i = l; i <= k; ++i) {
                    f = s * rv(i);
                    rv(i) = c * rv(i);
                    if (negligible(f, anorm)) break;
                    g = w[i];
                    h = pythag(f, g);
                    w[i] = h;
                    h = static_cast<float>(1.0 / h);
                    c = g * h;
                    s = -f * h;
                    for (int j = 1; j <= m; ++j) {
                        const float y = a[j][nm], z = a[j][i];
                        a[j][nm] = y * c + z * s;
                        a[j][i] = z * c - y * s;
                    }
                }
            }
            float z = w[k];
            if (l == k) {  // converged: make the value non-negative
                if (z < 0.0f) {
                    w[k] = -z;
                    for (int j = 1; j <= n; ++j) v[j][k] = -v[j][k];
                }
                break;
            }
            // Shift from the bottom 2 x 2 minor.
            float x = w[l];
            nm = k - 1;
            float y = w[nm];
            g = rv(nm);
            h = rv(k);
            f = static_cast<float>(((y - z) * (y + z) + (g - h) * (g + h)) / (2.0 * h * y));
            g = pythag(f, 1.0f);
            f = ((x - z) * (x + z) + h * ((y / (f + sign_of(g, f))) - h)) / x;
            // Next QR transformation.
            float c = 1.0f;
            s = 1.0f;
            for (int j = l; j <= nm; ++j) {
                const int i = j + 1;
                g = rv(i);
                y = w[i];
                h = s * g;
                g = c * g;
                z = pythag(f, h);
                rv(j) = z;
                c = f / z;
                s = h / z;
                f = x * c + g * s;
                g = g * c - x * s;
                h = y * s;
                y *= c;
                for (int jj = 1; jj <= n; ++jj) {
                    const float vx = v[jj][j], vz = v[jj][i];
                    v[jj][j] = vx * c + vz * s;
                    v[jj][i] = vz * c - vx * s;
                }
                z = pythag(f, h);
                w[j] = z;  // rotation can be arbitrary when z == 0
                if (z != 0.0f) {
                    z = static_cast<float>(1.0 / z);
                    c = f * z;
                    s = h * z;
                }
                f = c * g + s * y;
                x = c * y - s * g;
                for (int jj = 1; jj <= m; ++jj) {
                    const float ay = a[jj][j], az = a[jj][i];
                    a[jj][j] = ay * c + az * s;
                    a[jj][i] = az * c - ay * s;
                }
            }
            rv(l) = 0.0f;
            rv(k) = f;
            w[k] = x;
        }
    }
}

// A matrix indexed from 1 through row pointers, on one contiguous store with a
// padding row and column (index 0), for the row-pointer kernels.
class OneBased {
public:
    OneBased(int rows, int cols)
        : stride_(static_cast<size_t>(cols) + 1),
          data_((static_cast<size_t>(rows) + 1) * stride_, 0.0f),
          rows_(static_cast<size_t>(rows) + 1)
    {
        for (size_t r = 0; r < rows_.size(); ++r) rows_[r] = data_.data() + r * stride_;
    }
    float** rows() { return rows_.data(); }
    float& operator()(size_t r, size_t c) { return data_[r * stride_ + c]; }

private:
    size_t stride_;
    std::vector<float> data_;
    std::vector<float*> rows_;
};

bool rows_present(float* const* p, int count)
{
    return std::all_of(p + 1, p + count + 1, [](const float* row) { return row != nullptr; });
}

// ---- The loaded matrix -------------------------------------------------------------

constexpr int kLoadedCapacity = 500;

// The process-wide matrix of MatrixLoad. The host serialises calls to the
// functions that use it.
struct LoadedMatrix {
    std::vector<float> store;  // rows * cols floats, row-major; empty: none loaded
    int rows = 0;
    int cols = 0;

    bool present() const { return !store.empty(); }
    // Element (r, c) is store[r * cols + c]; null when that lies outside.
    const float* find(int r, int c) const
    {
        const long long i = static_cast<long long>(r) * cols + c;
        if (i < 0 || i >= static_cast<long long>(store.size())) return nullptr;
        return &store[static_cast<size_t>(i)];
    }
    // At least r rows and c columns are loaded (r, c >= 1).
    bool holds(int r, int c) const
    {
        return present() && r >= 1 && c >= 1 && r <= rows && c <= cols;
    }
    float at(size_t r, size_t c) const { return store[r * static_cast<size_t>(cols) + c]; }
};

LoadedMatrix g_loaded;

}  // namespace

extern "C" {

int MatrixMultiplication(float* A, int rowsA, int colsA, float* B, int rowsB, int colsB, float* C)
{
    return guarded(-1, [&] {
        if (colsA != rowsB || rowsA < 0 || colsA < 0 || colsB < 0 || !A || !B || !C) return -1;
        const auto ra = static_cast<size_t>(rowsA), ca = static_cast<size_t>(colsA),
                   cb = static_cast<size_t>(colsB);
        // Hosts size C for the element count of B as well as of the product:
        // that many elements are cleared first.
        std::fill_n(C, static_cast<size_t>(rowsB) * cb, 0.0f);
        for (size_t i = 0; i < ra; ++i) {
            for (size_t j = 0; j < cb; ++j) {
                double sum = 0.0;
                for (size_t k = 0; k < ca; ++k)
                    sum += static_cast<double>(A[i * ca + k]) * static_cast<double>(B[k * cb + j]);
                C[i * cb + j] = static_cast<float>(sum);
            }
        }
        return 1;
    });
}

int MatrixGaussJordan(float* a, int n, float* b, int m)
{
    return guarded(-3, [&] {
        if (!a || !b || n < 1 || m < 0) return -4;
        return gauss_jordan(a, n, b, m) == Solve::ok ? 1 : -1;
    });
}

void SVDCMP(float** a, int m, int n, float* w, float** v)
{
    guarded([&] {
        if (!a || !w || !v || m < 1 || n < 1 || !rows_present(a, m) || !rows_present(v, n)) return;
        svd(a, m, n, w, v);
    });
}

int LUDCMP(float** a, int n, int* indx, float* d)
{
    return guarded(-4, [&] {
        if (!a || !indx || !d || n < 1 || !rows_present(a, n)) return -1;
        constexpr float kTiny = 1.0e-20f;
        std::vector<float> vv(static_cast<size_t>(n) + 1);  // implicit row scaling
        for (int i = 1; i <= n; ++i) {
            float big = 0.0f;
            for (int j = 1; j <= n; ++j) big = std::max(big, std::fabs(a[i][j]));
            if (big == 0.0f) return -3;
            vv[static_cast<size_t>(i)] = static_cast<float>(1.0 / big);
        }
        *d = 1.0f;
        for (int j = 1; j <= n; ++j) {
            for (int i = 1; i < j; ++i) {
                float sum = a[i][j];
                for (int k = 1; k < i; ++k) sum -= a[i][k] * a[k][j];
                a[i][j] = sum;
            }
            float big = 0.0f;
            int imax = j;
            for (int i = j; i <= n; ++i) {
                float sum = a[i][j];
                for (int k = 1; k < j; ++k) sum -= a[i][k] * a[k][j];
                a[i][j] = sum;
                const float dum = vv[static_cast<size_t>(i)] * std::fabs(sum);
                if (dum >= big) {
                    big = dum;
                    imax = i;
                }
            }
            if (j != imax) {
                for (int k = 1; k <= n; ++k) std::swap(a[imax][k], a[j][k]);
                *d = -*d;
                vv[static_cast<size_t>(imax)] = vv[static_cast<size_t>(j)];
            }
            indx[j] = imax;
            // A zero pivot becomes tiny so that the solve goes on.
            if (a[j][j] == 0.0f) a[j][j] = kTiny;
            if (j != n) {
                const auto dum = static_cast<float>(1.0 / a[j][j]);
                for (int i = j + 1; i <= n; ++i) a[i][j] *= dum;
            }
        }
        return 1;
    });
}

int LUBKSB(float** a, int n, const int* indx, float* b)
{
    return guarded(-1, [&] {
        if (!a || !indx || !b || n < 1 || !rows_present(a, n)) return -1;
        const auto inRange = [n](int p) { return p >= 1 && p <= n; };
        if (!std::all_of(indx + 1, indx + n + 1, inRange)) return -2;
        // Forward substitution, skipping the leading zeros of b.
        int ii = 0;
        for (int i = 1; i <= n; ++i) {
            const int ip = indx[i];
            float sum = b[ip];
            b[ip] = b[i];
            if (ii != 0) {
                for (int j = ii; j <= i - 1; ++j) sum -= a[i][j] * b[j];
            } else if (sum != 0.0f) {
                ii = i;
            }
            b[i] = sum;
        }
        for (int i = n; i >= 1; --i) {
            float sum = b[i];
            for (int j = i + 1; j <= n; ++j) sum -= a[i][j] * b[j];
            b[i] = sum / a[i][i];
        }
        return 1;
    });
}

int MatrixLoad(const float* row, int rows, int cols, int rowIndex)
{
    return guarded(-6, [&] {
        if (rows < 1 || cols < 1) return -1;
        if (!row) return -2;
        if (static_cast<long long>(rows) * cols > kLoadedCapacity) return -3;
        if (rowIndex < 0 || rowIndex > rows - 1) return -4;
        if (rowIndex == 0) {
            g_loaded = LoadedMatrix{};
            g_loaded.store.assign(static_cast<size_t>(rows * cols), 0.0f);
            g_loaded.rows = rows;
            g_loaded.cols = cols;
        }
        // Rows after the first must continue the matrix that row 0 started.
        if (!g_loaded.present() || g_loaded.rows != rows || g_loaded.cols != cols) return -5;
        std::copy_n(row, cols, &g_loaded.store[static_cast<size_t>(rowIndex * cols)]);
        return 1;
    });
}

void MatrixClear(void)
{
    guarded([] { g_loaded = LoadedMatrix{}; });
}

float MatrixGetElement(int row, int col)
{
    return guarded(QOMATH_MATRIX_NO_ELEMENT, [&] {
        const float* element = g_loaded.find(row, col);
        return element ? *element : QOMATH_MATRIX_NO_ELEMENT;
    });
}

int VB_MatrixGaussJordan(float* out, int n)
{
    return guarded(-2, [&] {
        if (!out || !g_loaded.holds(n, n)) return -1;
        const auto nn = static_cast<size_t>(n);
        for (size_t r = 0; r < nn; ++r)
            for (size_t c = 0; c < nn; ++c) out[r * nn + c] = g_loaded.at(r, c);
        return gauss_jordan(out, n, nullptr, 0) == Solve::ok ? 1 : -3;
    });
}

int VB_SVDCMP(float* out, int m, int n)
{
    return guarded(-2, [&] {
        if (!out || !g_loaded.holds(m, n)) return -1;
        const auto mm = static_cast<size_t>(m), nn = static_cast<size_t>(n);
        OneBased a(m, n), v(n, n);
        std::vector<float> w(nn + 1);
        for (size_t r = 1; r <= mm; ++r)
            for (size_t c = 1; c <= nn; ++c) a(r, c) = g_loaded.at(r - 1, c - 1);
        svd(a.rows(), m, n, w.data(), v.rows());
        // out: U (m x n), then w (n), then V (n x n), row-major.
        for (size_t r = 1; r <= mm; ++r)
            for (size_t c = 1; c <= nn; ++c) *out++ = a(r, c);
        out = std::copy(w.begin() + 1, w.end(), out);
        for (size_t r = 1; r <= nn; ++r)
            for (size_t c = 1; c <= nn; ++c) *out++ = v(r, c);
        return 1;
    });
}

}  // extern "C"
