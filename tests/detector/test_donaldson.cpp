// Donaldson matrices: a plain reflector under every CIE illuminant, one
// fluorescent cell by hand, energy not created, unusable input.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "qomath/cie_tables.h"
#include "qomath/donaldson.h"

namespace {

using Vec = std::vector<float>;

struct Illuminant {  // table `selector` of GetCIEData
    Vec wl, s = Vec(QOMATH_CIE_MAX_POINTS);
    explicit Illuminant(int selector)
    {
        typ_wlinfo r;
        EXPECT_EQ(GetCIEData(selector, s.data(), &r), 1);
        for (float w = r.start; w <= r.end + 0.01f; w += r.step) wl.push_back(w);
        s.resize(wl.size());
    }
    float at(float w) const { return s[size_t((w - wl[0]) / (wl[1] - wl[0]) + 0.5f)]; }
};

struct Matrix {  // both axes 380..770 nm, 10 nm
    Vec ax, v = Vec(1600);
    explicit Matrix(float diag) { for (int k = 0; k < 40; ++k) ax.push_back(380.0f + 10.0f * float(k)), v[size_t(k) * 41] = diag; }
#define ARGS(il) ax.data(), 40, ax.data(), 40, v.data(), il.wl.data(), il.s.data(), int(il.wl.size())
    int factors(const Illuminant& il, float* t, float* r, float* f) const { return DonaldsonMatrix_RadianceFactor(ARGS(il), t, r, f); }
    int colour(const Illuminant& il, float* xyz, float* xy, typ_Lab* lab) const { return DonaldsonMatrix_Colour(ARGS(il), xyz, xy, lab); }
    int validate(float* q, int n_em = 40) const { return DonaldsonMatrix_Validate(ax.data(), 40, ax.data(), n_em, v.data(), q); }
};

TEST(Donaldson, DiagonalOnlyIsPlainReflectanceUnderEveryIlluminant)
{
    Matrix m(0.0f);
    for (int k = 0; k < 40; ++k) m.v[size_t(k) * 41] = 0.2f + 0.015f * float(k);
    for (int sel = 6; sel <= 10; ++sel) {
        Vec t(42, -1.0f), r(40), f(40, -1.0f);
        ASSERT_EQ(m.factors(Illuminant(sel), t.data() + 1, r.data(), f.data()), 1) << sel;
        EXPECT_TRUE(t[0] == -1.0f && t[41] == -1.0f);
        for (int k = 0; k < 40; ++k)
            EXPECT_TRUE(t[size_t(k) + 1] == m.v[size_t(k) * 41] && r[size_t(k)] == t[size_t(k) + 1] && f[size_t(k)] == 0.0f);
    }
    // A flat 50 % reflector: Y = 50, the white's chromaticity, L* = 116 * 0.5^(1/3) - 16.
    float xyz[3], xy[2], white[2];
    typ_Lab lab;
    ASSERT_TRUE(Matrix(1.0f).colour(Illuminant(9), xyz, white, &lab) == 1 && Matrix(0.5f).colour(Illuminant(9), xyz, xy, &lab) == 1);
    EXPECT_TRUE(std::fabs(xyz[1] - 50.0f) < 1e-3f && std::fabs(white[0] - 0.3127f) < 2e-3f);  // D65
    EXPECT_TRUE(std::fabs(xy[0] - white[0]) + std::fabs(xy[1] - white[1]) < 1e-6f);
    EXPECT_NEAR(lab.L, 116.0f * std::cbrt(0.5f) - 16.0f, 1e-3f);
}

TEST(Donaldson, OneFluorescentCellByHand)
{
    // D(400, 500) = 0.002 / nm, 10 nm cells: beta_L(500) = 0.002 * 10 * S(400) / S(500).
    Matrix m(0.1f);
    m.v[2 * 40 + 12] = 0.002f;
    for (int sel : {6, 10}) {
        const Illuminant il(sel);
        Vec t(40), f(40);
        ASSERT_EQ(m.factors(il, t.data(), nullptr, f.data()), 1);
        for (int k = 0; k < 40; ++k) {
            const double fl = k == 12 ? 0.02 * il.at(400) / il.at(500) : 0.0;
            EXPECT_TRUE(std::fabs(f[size_t(k)] - fl) < 1e-7 && std::fabs(t[size_t(k)] - 0.1 - fl) < 1e-7) << sel << " " << k;
        }
    }
    Vec q(40, -1.0f);  // row 400: 0.002 * (500 / 400) * 10 / (1 - 0.1)
    ASSERT_EQ(m.validate(q.data()), 1);
    EXPECT_TRUE(std::fabs(q[2] - 0.025 / 0.9) < 1e-7 && q[3] == 0.0f);
}

TEST(Donaldson, EnergyIsNotCreated)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int trial = 0; trial < 10; ++trial) {
        Matrix m(0.0f);
        for (int j = 0; j < 40; ++j) {  // Stokes cells at random, scaled to the full quantum yield
            float* row = m.v.data() + j * 40;
            double photons = 0.0;
            row[j] = u(rng);
            for (int i = j + 1; i < 40; ++i) photons += (row[i] = u(rng)) * (38.0 + i) / (38.0 + j) * 10.0;
            for (int i = j + 1; i < 40; ++i) row[i] *= float((1.0 - row[j]) / photons * 0.999999);
        }
        Vec q(40), f(40);
        const Illuminant il(6 + trial % 5);
        ASSERT_TRUE(m.validate(q.data()) == 1 && m.factors(il, nullptr, nullptr, f.data()) == 1);
        double emitted = 0.0, absorbed = 0.0;
        for (int k = 0; k < 40; ++k) {
            const double w = il.at(m.ax[size_t(k)]) * (k == 0 || k == 39 ? 5.0 : 10.0);
            emitted += f[size_t(k)] * w, absorbed += (1.0 - m.v[size_t(k) * 41]) * w;
        }
        EXPECT_LE(emitted, absorbed) << trial;
        m.v[5 * 40 + 30] += 0.5f;  // more photons out than in
        EXPECT_TRUE(m.validate(q.data()) == -5 && q[5] > 1.0f);
    }
}

TEST(Donaldson, UnusableInput)
{
    Matrix m(0.5f);
    const Vec em{400, 405};  // 405 nm is no excitation wavelength
    EXPECT_EQ(DonaldsonMatrix_Validate(m.ax.data(), 40, em.data(), 2, m.v.data(), nullptr), -3);
    EXPECT_EQ(m.validate(nullptr, 1) + DonaldsonMatrix_Validate(nullptr, 40, m.ax.data(), 40, m.v.data(), nullptr), -3);
    float t[40], xyz[3];
    typ_Lab lab;
    Illuminant b(7);  // cut at 715 nm, short of the axis
    b.wl.resize(80);
    EXPECT_EQ(m.factors(b, t, nullptr, nullptr), -7);
    EXPECT_EQ(m.colour(Illuminant(6), xyz, nullptr, &lab), -8);
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), -1e-3f}) {
        m.v[7 * 40 + 20] = bad;
        t[0] = -1.0f;
        EXPECT_TRUE(m.factors(Illuminant(6), t, nullptr, nullptr) == -4 && t[0] == 0.0f);  // cleared
    }
}

}  // namespace
