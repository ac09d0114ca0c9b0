#include "numerics/numerics_tests.hpp"

#include <bit>
#include <cstdint>

namespace {

// Row-major m x n matrix in [-1, 1]; n is added to the diagonal when dominant.
Vec random_matrix(int m, int n, unsigned seed, bool dominant = false)
{
    Vec a = random_values(static_cast<std::size_t>(m * n), seed);
    for (int i = 0; dominant && i < n; ++i) a[i * n + i] += static_cast<float>(n);
    return a;
}

// A flat matrix seen through row pointers indexed from 1.
struct OneBased {
    Vec data;
    std::vector<float*> ptr;
    OneBased(int m, int n, const Vec& flat = {})
        : data((m + 1) * (n + 1)), ptr(m + 1)
    {
        for (int r = 0; r <= m; ++r) ptr[r] = &data[r * (n + 1)];
        for (size_t k = 0; k < flat.size(); ++k) ptr[k / n + 1][k % n + 1] = flat[k];
    }
    float& operator()(int r, int c) { return ptr[r][c]; }
};

TEST(Matrix, MultiplicationAndGaussJordan)
{
    float a[] = {1, 2, 3, 4, 5, 6}, b[] = {7, 8, 9, 10, 11, 12}, c[6] = {-1, -1, -1, -1, -1, -1};
    EXPECT_EQ(MatrixMultiplication(a, 2, 3, b, 3, 2, c), 1);
    EXPECT_EQ(Vec(c, c + 6), (Vec{58, 64, 139, 154, 0, 0}));  // cleared as B
    EXPECT_EQ(MatrixMultiplication(a, 2, 3, b, 2, 3, c), -1);
    EXPECT_EQ(MatrixMultiplication(a, 2, 3, b, 3, -2, c), -1);
    EXPECT_EQ(MatrixMultiplication(a, 2, 3, b, 3, 2, nullptr), -1);

    float m[] = {4, 7, 2, 6}, rhs[] = {1, 2};
    EXPECT_EQ(MatrixGaussJordan(m, 2, rhs, 1), 1);
    const float inv_and_x[] = {0.6f, -0.7f, -0.2f, 0.4f, -0.8f, 0.6f};
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(i < 4 ? m[i] : rhs[i - 4], inv_and_x[i], 1e-6f) << i;

    float s[] = {1, 2, 2, 4}, nan[] = {NAN, NAN, NAN, NAN};  // a zero pivot; no pivot at all
    EXPECT_TRUE(MatrixGaussJordan(s, 2, rhs, 1) == -1 && MatrixGaussJordan(nan, 2, rhs, 0) == -1);
    EXPECT_TRUE(MatrixGaussJordan(nullptr, 2, rhs, 1) == -4 && MatrixGaussJordan(m, 2, nullptr, 1) == -4);
    EXPECT_TRUE(MatrixGaussJordan(m, 0, rhs, 1) == -4 && MatrixGaussJordan(m, 2, rhs, -1) == -4);

    for (int n : {1, 3, 8, 33, 64}) {
        auto am = random_matrix(n, n, 17u + static_cast<unsigned>(n), true);
        const auto bm = random_matrix(n, 2, 5u);
        auto inv = am, x = bm;
        Vec prod(n * n), ax(n * 2);
        ASSERT_EQ(MatrixGaussJordan(inv.data(), n, x.data(), 2), 1);
        ASSERT_EQ(MatrixMultiplication(am.data(), n, n, inv.data(), n, n, prod.data()), 1);
        ASSERT_EQ(MatrixMultiplication(am.data(), n, n, x.data(), n, 2, ax.data()), 1);
        for (int k = 0; k < n * n; ++k) EXPECT_NEAR(prod[k], k % (n + 1) ? 0.0f : 1.0f, 1e-5f);
        for (int k = 0; k < n * 2; ++k) EXPECT_NEAR(ax[k], bm[k], 1e-5f) << n;
    }
}

// A = U W V^T, V^T V = I, and U^T U = I over the columns with w > 0.
void expect_svd_of(const Vec& a, int m, int n, OneBased& u,
                   const Vec& w, OneBased& v)
{
    const double tol = 2e-5 * std::max(m, n);
    for (int r = 1; r <= m; ++r)
        for (int c = 1; c <= n; ++c) {
            double s = 0;
            for (int k = 1; k <= n; ++k) s += u(r, k) * w[k] * v(c, k);
            EXPECT_NEAR(s, a[(r - 1) * n + c - 1], tol) << m << "x" << n;
        }
    for (int i = 1; i <= n; ++i) {
        EXPECT_GE(w[i], 0.0f);
        for (int j = 1; j <= n; ++j) {
            double vv = 0, uu = 0;
            for (int k = 1; k <= n; ++k) vv += v(k, i) * v(k, j);
            for (int k = 1; k <= m; ++k) uu += u(k, i) * u(k, j);
            EXPECT_NEAR(vv, i == j, tol);
            EXPECT_NEAR(w[i] > 1e-4f && w[j] > 1e-4f ? uu : i == j, i == j, tol);
        }
    }
}

TEST(SVD, ReconstructsSquareTallAndRankDeficient)
{
    for (auto [m, n] : {std::pair{1, 1}, {4, 4}, {20, 20}, {9, 3}, {40, 12}, {5, 4}}) {
        auto a = random_matrix(m, n, 100u + static_cast<unsigned>(m * n));
        const bool rank2 = m == 5;  // rank 2: row r = r * row 0 + row 1 for r >= 2
        for (int k = 2 * n; rank2 && k < m * n; ++k)
            a[k] = static_cast<float>(k / n) * a[k % n] + a[n + k % n];
        OneBased u(m, n, a), v(n, n);
        Vec w(n + 1);
        SVDCMP(u.ptr.data(), m, n, w.data(), v.ptr.data());
        expect_svd_of(a, m, n, u, w, v);
        EXPECT_EQ(std::count_if(w.begin() + 1, w.end(), [](float s) { return s < 1e-5f; }), rank2 ? 2 : 0);
    }
    // diag(3, -2): singular values 3 and 2, the sign moved into V.
    OneBased d(2, 2, {3, 0, 0, -2}), dv(2, 2);
    Vec dw(3);
    SVDCMP(d.ptr.data(), 2, 2, dw.data(), dv.ptr.data());
    EXPECT_FLOAT_EQ(std::max(dw[1], dw[2]), 3.0f);
    EXPECT_FLOAT_EQ(std::min(dw[1], dw[2]), 2.0f);
    float* nullRows[3] = {};
    SVDCMP(nullRows, 2, 2, dw.data(), dv.ptr.data());  // nothing done, no crash
    SVDCMP(d.ptr.data(), 0, 2, dw.data(), dv.ptr.data());
}

TEST(LU, DecomposeAndSolve)
{
    for (int n : {1, 2, 7, 30}) {
        const auto a = random_matrix(n, n, 41u + static_cast<unsigned>(n), true);
        const auto b = random_matrix(n, 1, 3u);
        OneBased lu(n, n, a);
        std::vector<int> indx(n + 1);
        Vec x(n + 1);
        std::copy(b.begin(), b.end(), x.begin() + 1);
        float d = 0;
        ASSERT_EQ(LUDCMP(lu.ptr.data(), n, indx.data(), &d), 1);
        ASSERT_EQ(LUBKSB(lu.ptr.data(), n, indx.data(), x.data()), 1);
        EXPECT_EQ(std::fabs(d), 1.0f);
        for (int i = 0; i < n; ++i) {
            double s = 0;
            for (int j = 0; j < n; ++j) s += a[i * n + j] * x[j + 1];
            EXPECT_NEAR(s, b[i], 1e-5) << n;
        }
    }
    // One interchange: d = -1; [[0,1],[1,0]] x = (2, 5) gives x = (5, 2).
    OneBased p(2, 2, {0, 1, 1, 0}), s(2, 2, {1, 2, 2, 4}), zr(2, 2, {1, 2, 0, 0});
    int indx[3] = {}, bad[3] = {0, 1, 7};
    float d = 0, x[] = {0, 2, 5};
    ASSERT_EQ(LUDCMP(p.ptr.data(), 2, indx, &d), 1);
    EXPECT_EQ(d, -1.0f);
    ASSERT_EQ(LUBKSB(p.ptr.data(), 2, indx, x), 1);
    EXPECT_TRUE(x[1] == 5.0f && x[2] == 2.0f);
    EXPECT_EQ(LUDCMP(s.ptr.data(), 2, indx, &d), 1);  // singular: a tiny pivot, no failure
    EXPECT_EQ(LUDCMP(zr.ptr.data(), 2, indx, &d), -3);
    EXPECT_TRUE(LUDCMP(nullptr, 2, indx, &d) == -1 && LUDCMP(zr.ptr.data(), 0, indx, &d) == -1);
    EXPECT_EQ(LUBKSB(p.ptr.data(), 2, bad, x), -2);
    EXPECT_EQ(LUBKSB(p.ptr.data(), 2, indx, nullptr), -1);
}

TEST(LoadedMatrix, LifeCycle)
{
    MatrixClear();  // as in a fresh process: no store, QOMATH_MATRIX_NO_ELEMENT
    EXPECT_EQ(std::bit_cast<std::uint32_t>(MatrixGetElement(0, 0)), 0xD01502B8u);

    const float r0[] = {1, 2, 3}, r1[] = {4, 5, 6};
    EXPECT_EQ(MatrixLoad(r1, 2, 3, 1), -5);  // no row 0 yet
    EXPECT_EQ(MatrixLoad(r0, 2, 3, 0), 1);
    EXPECT_EQ(MatrixGetElement(1, 2), 0.0f);  // row 0 starts a zeroed store
    EXPECT_EQ(MatrixLoad(r1, 2, 3, 1), 1);
    EXPECT_EQ(MatrixGetElement(1, 2), 6.0f);
    EXPECT_EQ(MatrixGetElement(0, 4), 5.0f);  // indices address the row-major store
    for (auto [r, c] : {std::pair{2, 0}, {0, -1}, {-2147483647, -2147483647}})
        EXPECT_EQ(MatrixGetElement(r, c), QOMATH_MATRIX_NO_ELEMENT) << r << " " << c;

    // Checked in this order: counts, pointer, capacity, row index.
    EXPECT_EQ(MatrixLoad(nullptr, 0, 3, 9), -1);
    EXPECT_EQ(MatrixLoad(nullptr, 30, 30, 9), -2);
    EXPECT_TRUE(MatrixLoad(r0, 30, 30, 9) == -3 && MatrixLoad(r0, 50000, 50000, 0) == -3);
    EXPECT_TRUE(MatrixLoad(r0, 20, 25, 20) == -4 && MatrixLoad(r0, 2, 3, -1) == -4);
    EXPECT_EQ(MatrixLoad(r0, 3, 2, 1), -5);  // not the shape row 0 started
    EXPECT_EQ(MatrixGetElement(1, 0), 4.0f);  // failures leave the matrix alone

    MatrixClear();
    EXPECT_EQ(MatrixGetElement(0, 0), QOMATH_MATRIX_NO_ELEMENT);
    EXPECT_EQ(MatrixLoad(r1, 2, 3, 1), -5);
}

TEST(LoadedMatrix, VBEntryPointsMatchPointerVersions)
{
    const auto a = random_matrix(3, 3, 99u, true);
    for (int r = 0; r < 3; ++r) ASSERT_EQ(MatrixLoad(&a[r * 3], 3, 3, r), 1);
    Vec out(9), ref = a;
    float none[1] = {};
    ASSERT_EQ(MatrixGaussJordan(ref.data(), 3, none, 0), 1);
    EXPECT_EQ(VB_MatrixGaussJordan(out.data(), 3), 1);
    EXPECT_EQ(out, ref);
    EXPECT_EQ(VB_MatrixGaussJordan(out.data(), 2), 1);  // the top-left 2 x 2 block
    EXPECT_EQ(MatrixGetElement(1, 1), a[4]);            // the loaded matrix is unchanged
    EXPECT_TRUE(VB_MatrixGaussJordan(out.data(), 4) == -1 && VB_MatrixGaussJordan(nullptr, 3) == -1);

    // Tall, wide and square blocks: U, w, V exactly as SVDCMP gives them.
    for (auto [m, n] : {std::pair{3, 2}, {2, 3}, {3, 3}}) {
        Vec block, want, got(m * n + n + n * n, -7.0f);
        for (int k = 0; k < m * n; ++k) block.push_back(a[k / n * 3 + k % n]);
        OneBased u(m, n, block), v(n, n);
        Vec w(n + 1);
        SVDCMP(u.ptr.data(), m, n, w.data(), v.ptr.data());
        expect_svd_of(block, m, n, u, w, v);
        for (int k = 0; k < m * n; ++k) want.push_back(u(k / n + 1, k % n + 1));
        want.insert(want.end(), w.begin() + 1, w.end());
        for (int k = 0; k < n * n; ++k) want.push_back(v(k / n + 1, k % n + 1));
        EXPECT_EQ(VB_SVDCMP(got.data(), m, n), 1);
        EXPECT_EQ(got, want) << m << "x" << n;
    }
    EXPECT_TRUE(VB_SVDCMP(out.data(), 4, 3) == -1 && VB_SVDCMP(out.data(), 3, 0) == -1);

    const float s0[] = {1, 2}, s1[] = {2, 4};
    ASSERT_EQ(MatrixLoad(s0, 2, 2, 0), 1);
    ASSERT_EQ(MatrixLoad(s1, 2, 2, 1), 1);
    EXPECT_EQ(VB_MatrixGaussJordan(out.data(), 2), -3);
    MatrixClear();
    EXPECT_TRUE(VB_MatrixGaussJordan(out.data(), 2) == -1 && VB_SVDCMP(out.data(), 2, 2) == -1);
}

}  // namespace
