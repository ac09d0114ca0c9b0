// FFT against the direct transform, shift, real bins, convolutions in one
// and two dimensions, MTF and the largest common factor.
#include "numerics/numerics_tests.hpp"

#include <complex>
#include <numbers>
#include <tuple>

#include "qomath/fft.h"

namespace {

using cd = std::complex<double>;
constexpr double kPi = std::numbers::pi;

// Direct transform in double of complex points x[0..2n-1].
std::vector<cd> direct_dft(const float* x, std::size_t n, int sign)
{
    std::vector<cd> out(n);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t k = 0; k < n; ++k)
            out[j] += cd(x[2 * k], x[2 * k + 1]) *
                      std::polar(1.0, sign * 2 * kPi * double(j * k % n) / double(n));
    return out;
}

TEST(FFTDiscrete, MatchesDirectDftRoundTripParsevalLinearity)
{
    // data[1..2nn] hold the points: data[0] and data[2nn+1] are the fences.
    std::vector<unsigned> sizes{6, 10, 48, 100};
    for (unsigned n = 8; n <= 1024; n *= 2) sizes.push_back(n);
    for (unsigned n : sizes) {
        const auto x = random_values(2 * n, n), y = random_values(2 * n, n + 1);
        for (int sign : {1, -1}) {
            Fenced<float> fenced(x);
            Vec& d = fenced.v;
            ASSERT_EQ(FFTDiscrete(d.data(), n, sign), 0);
            EXPECT_TRUE(fenced.intact());
            const auto ref = direct_dft(x.data(), n, sign);
            double peak = 0, err = 0, ex = 0, eX = 0;
            for (unsigned j = 0; j < n; ++j) {
                peak = std::max(peak, std::abs(ref[j]));
                err = std::max(err, std::abs(ref[j] - cd(d[1 + 2 * j], d[2 + 2 * j])));
                ex += std::norm(cd(x[2 * j], x[2 * j + 1]));
                eX += std::norm(cd(d[1 + 2 * j], d[2 + 2 * j]));
            }
            EXPECT_LE(err, 2e-6 * peak) << n;
            EXPECT_NEAR(eX, n * ex, 1e-5 * n * ex) << "Parseval " << n;

            // Linearity: T(2x + y) = 2 T(x) + T(y).
            Vec e(2 * n + 1, 0.0f), f(2 * n + 1, 0.0f);
            for (unsigned k = 0; k < 2 * n; ++k) e[k + 1] = 2 * x[k] + y[k], f[k + 1] = y[k];
            FFTDiscrete(e.data(), n, sign);
            FFTDiscrete(f.data(), n, sign);
            for (unsigned k = 1; k <= 2 * n; ++k) EXPECT_NEAR(e[k], 2 * d[k] + f[k], 4e-6 * peak);

            // The opposite sign undoes it, times n.
            ASSERT_EQ(FFTDiscrete(d.data(), n, -sign), 0);
            for (unsigned k = 0; k < 2 * n; ++k) EXPECT_NEAR(d[k + 1], n * x[k], 2e-6 * n) << n;
        }
    }
}

TEST(FFTDiscrete, RefusalsWriteNothing)
{
    struct Case { unsigned nn; int sign; bool null; int status; } cases[] = {
        {4, 1, false, 1}, {7, 1, false, 2}, {8, 0, false, 3}, {8, 2, false, 3}, {8, 1, true, 4}};
    Fenced<float> d(2 * 8 + 1, 1.0f);
    for (const Case& c : cases)
        EXPECT_EQ(FFTDiscrete(c.null ? nullptr : d.p(), c.nn, c.sign), c.status);
    EXPECT_TRUE(d.intact() && d.values() == Vec(17, 1.0f));
}

TEST(FFTDiscreteShift, CentresZeroFrequencyForEvenAndOddLengths)
{
    Vec even{0, 1, 2, 3, 4, 5}, odd{0, 1, 2, 3, 4};  // odd: numpy's fftshift
    ASSERT_EQ(FFTDiscreteShift(even.data(), 6) + FFTDiscreteShift(odd.data(), 5), 2);
    EXPECT_EQ(even, (Vec{3, 4, 5, 0, 1, 2}));
    EXPECT_EQ(odd, (Vec{3, 4, 0, 1, 2}));  // 0 lands at n/2
    EXPECT_EQ(FFTDiscreteShift(even.data(), 0) + FFTDiscreteShift(nullptr, 4), -2);
}

TEST(FFTDiscrete2, RealBinsAndMagnitudesMatchTheDirectDft)
{
    for (std::size_t n : {5, 6, 9, 64, 200}) {
        auto x = random_values(n, 7u), c = Vec(2 * n);
        for (std::size_t k = 0; k < n; ++k) c[2 * k] = x[k];
        const auto ref = direct_dft(c.data(), n, -1);
        Fenced<float> out(2 * (n / 2 + 1)), mag(n / 2 + 1);
        ASSERT_EQ(FFTDiscrete2(x.data(), int(n), out.p(), 0), 1);
        ASSERT_EQ(FFTDiscrete2(x.data(), int(n), mag.p(), 1), 1);
        for (std::size_t j = 0; j <= n / 2; ++j)
            EXPECT_TRUE(std::abs(cd(out[2 * j], out[2 * j + 1]) - ref[j]) < 1e-5 &&
                        std::fabs(mag[j] - std::abs(ref[j])) < 1e-5) << j;
        EXPECT_TRUE(out.intact() && mag.intact());
    }
    float x[4] = {}, o[6] = {};  // mode 2, n = 0, null
    EXPECT_EQ(FFTDiscrete2(x, 4, o, 2) + FFTDiscrete2(x, 0, o, 0) + FFTDiscrete2(nullptr, 4, o, 0),
              -3);
}

TEST(Convolution1d, HandValuesDelayCommutationAndFftProduct)
{
    float a2[] = {1, 2}, b2[] = {1, 1}, o3[3];
    EXPECT_TRUE(convolution_1d(a2, 2, b2, 2, o3, 3) == 1 && o3[0] == 1 && o3[1] == 3 && o3[2] == 2);

    const int na = 300, nb = 45, no = na + nb - 1;
    auto a = random_values(na, 1), b = random_values(nb, 2);
    // Delay: a delta at 7 shifts a by 7 exactly.
    Vec delta(10, 0.0f), shifted(na + 9);
    delta[7] = 1.0f;
    ASSERT_EQ(convolution_1d(a.data(), na, delta.data(), 10, shifted.data(), na + 9), 1);
    for (int k = 0; k < na + 9; ++k) EXPECT_EQ(shifted[k], k >= 7 && k < na + 7 ? a[k - 7] : 0.0f);

    Vec ab(no), ba(no), withnan(no);
    convolution_1d(a.data(), na, b.data(), nb, ab.data(), no);
    convolution_1d(b.data(), nb, a.data(), na, ba.data(), no);
    // Zero-padded FFT product, in the FFTDiscrete layout.
    const unsigned m = 512;  // >= no
    Vec fa(2 * m + 1, 0.0f), fb(2 * m + 1, 0.0f);
    for (int i = 0; i < na; ++i) fa[1 + 2 * i] = a[i], fb[1 + 2 * i] = i < nb ? b[i] : 0.0f;
    FFTDiscrete(fa.data(), m, 1);
    FFTDiscrete(fb.data(), m, 1);
    auto* pa = reinterpret_cast<std::complex<float>*>(fa.data() + 1);
    auto* pb = reinterpret_cast<std::complex<float>*>(fb.data() + 1);
    for (unsigned j = 0; j < m; ++j) pa[j] *= pb[j];
    FFTDiscrete(fa.data(), m, -1);
    std::vector<double> ad(a.begin(), a.end()), bd(b.begin(), b.end()), abd(no);
    ASSERT_EQ(convolution_1dD(ad.data(), na, bd.data(), nb, abd.data(), no), 1);
    for (int k = 0; k < no; ++k) {
        EXPECT_NEAR(ab[k], ba[k], 1e-5);
        EXPECT_NEAR(ab[k], fa[1 + 2 * k] / m, 1e-4);
        EXPECT_NEAR(abd[k], ab[k], 1e-5);
    }

    // A NaN reaches only the outputs whose sums hold it.
    a[100] = kNaN;
    convolution_1d(a.data(), na, b.data(), nb, withnan.data(), no);
    for (int k = 0; k < no; ++k)
        EXPECT_TRUE(k >= 100 && k < 100 + nb ? std::isnan(withnan[k]) : withnan[k] == ab[k]) << k;

    Fenced<float> out(3, 7.0f);  // nOut wrong, na < 1, null, na + nb - 1 beyond int
    for (auto [first, n1, n_out] :
         {std::tuple{a2, 2, 2}, {a2, 0, 1}, {(float*)nullptr, 2, 3}, {a2, 2147483647, 3}})
        EXPECT_EQ(convolution_1d(first, n1, b2, 2, out.p(), n_out), -1);
    EXPECT_TRUE(out.intact() && out[0] == 7.0f && out[2] == 7.0f);
}

TEST(Convolution2dD, UnitKernelCentredDeltaAndSeparableKernel)
{
    const int R = 9, C = 11;
    const auto f = random_values(R * C, 3);
    std::vector<double> img(f.begin(), f.end());
    Fenced<double> out(R * C);
    double k1[] = {2.5};
    ASSERT_EQ(convolution_2dD(img.data(), R, C, k1, 1, 1, out.p()), 1);
    for (int i = 0; i < R * C; ++i) EXPECT_EQ(out[i], 2.5 * img[i]);
    for (int kr : {3, 4}) {  // even sizes centre at krows/2 too
        std::vector<double> delta(kr * 5, 0.0);
        delta[(kr / 2) * 5 + 2] = 1.0;
        ASSERT_EQ(convolution_2dD(img.data(), R, C, delta.data(), kr, 5, out.p()), 1);
        for (int i = 0; i < R * C; ++i) EXPECT_EQ(out[i], img[i]);
    }
    // Separable kernel u (rows) x v (cols) = a row pass with v, then a column
    // pass with u, each through the centred 1-D `convolution` (zero edges).
    const float u[] = {1, 2, 3}, v[] = {0.5f, -1, 2, 0.25f};
    std::vector<double> kern(3 * 4);
    for (int i = 0; i < 12; ++i) kern[i] = u[i / 4] * v[i % 4];
    ASSERT_EQ(convolution_2dD(img.data(), R, C, kern.data(), 3, 4, out.p()), 1);
    Vec pass(f), col(R);
    for (int r = 0; r < R; ++r) ASSERT_EQ(convolution(&pass[r * C], C, v, 4, 0, 0), 1);
    for (int c = 0; c < C; ++c) {
        for (int r = 0; r < R; ++r) col[r] = pass[r * C + c];
        convolution(col.data(), R, u, 3, 0, 0);
        for (int r = 0; r < R; ++r) EXPECT_NEAR(out[r * C + c], col[r], 1e-5);
    }
    EXPECT_TRUE(out.intact());
    Fenced<double> bad(4, 9.0);  // kernel taller, wider, empty image, null kernel
    for (auto [r, c, kr, kc, k] : {std::tuple{2, 2, 3, 1, kern.data()}, {2, 2, 1, 3, kern.data()},
                                   {0, 2, 1, 1, kern.data()}, {2, 2, 1, 1, (double*)nullptr}})
        EXPECT_EQ(convolution_2dD(img.data(), r, c, k, kr, kc, bad.p()), -1);
    EXPECT_TRUE(bad.intact() && bad[0] == 9.0 && bad[3] == 9.0);
}

TEST(Convolution, EdgeRulesAndNormalisation)
{
    // By hand on {1, 2, 4} with {1, 1, 1} normalised to thirds: zero edges
    // 3, 7, 6; repeat (1 1 2 4 4) 4, 7, 10; mirror (2 1 2 4 2) 5, 7, 8.
    const float box[] = {1, 1, 1}, expect[3][3] = {{3, 7, 6}, {4, 7, 10}, {5, 7, 8}};
    for (int edges = 0; edges < 3; ++edges) {
        float d[] = {1, 2, 4};
        ASSERT_EQ(convolution(d, 3, box, 3, edges, 1), 1);
        for (int i = 0; i < 3; ++i) EXPECT_FLOAT_EQ(d[i], expect[edges][i] / 3);
    }
    float d[] = {1, 2, 4};
    const float zero_sum[] = {1, -1};
    EXPECT_EQ(convolution(d, 3, zero_sum, 2, 0, 1), -1);
    EXPECT_EQ(convolution(d, 3, box, 3, 3, 0), -1);
    EXPECT_EQ(convolution(d, 3, box, 0, 0, 0), -1);
    EXPECT_EQ(d[0], 1.0f);
}

TEST(MTF1d, StepEdgeByHandOddLengthClampAndRefusals)
{
    // Step at 3 of 8 points: the difference is a delta at pair 2, which the
    // one-float shift makes the transform read as i at point 1, giving
    // X_j = i e^{i pi j / 4}; out[i] = (Im X_{i-1})^2 + (Re X_i)^2.
    // Odd n: no transform; squared (clamped) differences, n - 1 values.
    const float step[] = {0, 0, 0, 1, 1, 1, 1, 1}, tri[] = {0, 1, 3, 6, 10, 15, 2e12f};
    const float expect[] = {0, 1.5f, 1.5f, 0.5f, 0.5f, 1.5f, 1.5f}, sq[] = {1, 4, 9, 16, 25, 1e20f};
    Fenced<float> out(7), o7(6);
    ASSERT_EQ(MTF_1d(step, 8, 1.0f, out.p()) + MTF_1d(tri, 7, 0.5f, o7.p()), 2);
    for (int i = 0; i < 7; ++i) EXPECT_NEAR(out[i], expect[i], 1e-6) << i;
    for (int i = 0; i < 6; ++i) EXPECT_FLOAT_EQ(o7[i], sq[i]);
    EXPECT_TRUE(out.intact() && o7.intact());

    Fenced<float> none(8, 3.0f);  // null in, null out, n < 5, step < 1e-10
    const int rc[] = {MTF_1d(nullptr, 8, 1.0f, none.p()), MTF_1d(step, 8, 1.0f, nullptr),
                      MTF_1d(step, 4, 1.0f, none.p()), MTF_1d(step, 8, 1e-11f, none.p())};
    EXPECT_TRUE(rc[0] == -1 && rc[1] == -1 && rc[2] == -2 && rc[3] == -3);
    EXPECT_TRUE(none.intact() && none[0] == 3.0f);
}

TEST(Lcf, DecimalGridEuclidAndRefusals)
{
    constexpr float inf = std::numeric_limits<float>::infinity();
    struct Case { float a, b; int dec; float expect; } cases[] = {
        {0.5f, 0.75f, -2, 0.25f}, {6, 3, 0, 3}, {0, 3, 0, 3}, {3, 0, 0, 3}, {12, 18, 0, 6},
        {18, 12, 0, 6}, {7, 5, 0, 1}, {3, 0.4f, 0, 3}, {120, 45, 1, 40}, {6, 3, 11, 0},
        {std::nanf(""), 3, 0, 0}, {0, inf, 0, 0}, {1e10f, 3, 0, 0}};
    for (const Case& c : cases) EXPECT_FLOAT_EQ(lcf(c.a, c.b, c.dec), c.expect) << &c - cases;
}

}  // namespace
