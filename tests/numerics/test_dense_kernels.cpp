#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "numerics/dense_kernels.hpp"

using namespace qomath::numerics;

namespace {

std::vector<SimdPath> paths()
{
    std::vector<SimdPath> p{SimdPath::baseline};
    if (path_available(SimdPath::avx2)) p.push_back(SimdPath::avx2);
    return p;
}

// I + D with D a stray-light-like matrix: small positive values, each column
// summing to about 0.02.
std::vector<double> i_plus_d(std::size_t n, unsigned seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(0.0, 0.04 / static_cast<double>(n));
    std::vector<double> a(n * n);
    for (double& v : a) v = u(gen);
    for (std::size_t i = 0; i < n; ++i) a[i * n + i] += 1.0;
    return a;
}

// max |A B - I| (i-k-j order).
double residual(const std::vector<double>& A, const std::vector<double>& B, std::size_t n)
{
    std::vector<double> row(n);
    double worst = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        std::fill(row.begin(), row.end(), 0.0);
        for (std::size_t k = 0; k < n; ++k) {
            const double a = A[i * n + k];
            for (std::size_t j = 0; j < n; ++j) row[j] += a * B[k * n + j];
        }
        row[i] -= 1.0;
        for (const double v : row) worst = std::max(worst, std::abs(v));
    }
    return worst;
}

TEST(DenseKernels, SmallInversesWorkedByHand)
{
    // [[2,1],[1,3]]^-1 = [[3,-1],[-1,2]] / 5 (det 5); the tridiagonal
    // [[4,1,0],[1,4,1],[0,1,4]] has det 56 and adjugate [[15,-4,1],[-4,16,-4],[1,-4,15]].
    const std::vector<double> a2{2, 1, 1, 3}, inv2{0.6, -0.2, -0.2, 0.4};
    const std::vector<double> a3{4, 1, 0, 1, 4, 1, 0, 1, 4};
    std::vector<double> inv3{15, -4, 1, -4, 16, -4, 1, -4, 15};
    for (double& v : inv3) v /= 56.0;
    for (const SimdPath p : paths()) {
        for (const auto& [a, want, n] : {std::tuple{a2, inv2, 2u}, std::tuple{a3, inv3, 3u}}) {
            std::vector<double> b = a, c = a;
            lu_invert(b.data(), n, p);
            lu_invert_plain(c.data(), n);
            for (std::size_t k = 0; k < want.size(); ++k) {
                EXPECT_NEAR(b[k], want[k], 1e-15) << "n " << n << " k " << k;
                EXPECT_NEAR(c[k], want[k], 1e-15) << "n " << n << " k " << k;
            }
        }
    }
}

TEST(DenseKernels, BlockedInverseMatchesPlainAndInvertsBothWays)
{
#ifdef __OPTIMIZE__
    const std::vector<std::size_t> sizes{1024, 301};
#else
    const std::vector<std::size_t> sizes{301, 97};  // unoptimised (sanitizer) builds
#endif
    for (const std::size_t n : sizes) {
        const std::vector<double> a = i_plus_d(n, static_cast<unsigned>(n));
        std::vector<double> plain = a;
        lu_invert_plain(plain.data(), n);
        for (const SimdPath p : paths()) {
            std::vector<double> c = a;
            lu_invert(c.data(), n, p);
            double diff = 0.0;
            for (std::size_t k = 0; k < c.size(); ++k) diff = std::max(diff, std::abs(c[k] - plain[k]));
            EXPECT_LE(diff, 1e-9) << "n " << n << " path " << static_cast<int>(p);
            if (n == sizes.front()) {
                EXPECT_LE(residual(a, c, n), 1e-10);
                EXPECT_LE(residual(c, a, n), 1e-10);
            }
        }
    }
}

TEST(DenseKernels, MatvecSumsInDoubleOnEveryPath)
{
    // 1e8 + 1 - 1e8 per row is lost in float sums, kept in double; odd sizes
    // exercise the tails. Sentinels after the output stay.
    for (const std::size_t n : {3u, 7u, 13u, 1024u}) {
        const std::size_t rows = n + 3;
        std::vector<float> m(rows * n, 0.0f), y(n, 1.0f);
        for (std::size_t r = 0; r < rows; ++r) {
            m[r * n] = 1e8f;
            m[r * n + (n - 1) / 2] += 1.0f + static_cast<float>(r);
            m[r * n + n - 1] -= 1e8f;
        }
        for (const SimdPath p : paths()) {
            std::vector<float> out(rows + 2, -7.0f);
            matvec(m.data(), y.data(), out.data(), rows, n, p);
            for (std::size_t r = 0; r < rows; ++r)
                EXPECT_EQ(out[r], 1.0f + static_cast<float>(r));
            EXPECT_EQ(out[rows], -7.0f);
            EXPECT_EQ(out[rows + 1], -7.0f);
        }
    }
}

}  // namespace
