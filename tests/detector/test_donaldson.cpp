// Donaldson matrices: a plain reflector under every CIE illuminant, one
// fluorescent cell worked by hand, the quantum-yield bound and energy
// balance, and unusable matrices.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "qomath/cie_tables.h"
#include "qomath/donaldson.h"

namespace {

using Vec = std::vector<float>;

struct Donaldson {  // both axes 380..770 nm, 10 nm: 40 x 40
    Vec ax, v;
    explicit Donaldson(float diag = 0.0f)
    {
        for (int k = 0; k < 40; ++k) ax.push_back(380.0f + 10.0f * float(k));
        v.assign(40 * 40, 0.0f);
        for (int k = 0; k < 40; ++k) v[size_t(k) * 41] = diag;
    }
    float& at(float mu, float lambda) { return v[size_t((mu - 380) / 10) * 40 + size_t((lambda - 380) / 10)]; }
    int factors(const Vec& wl, const Vec& s, float* t, float* r, float* f) const
    {
        return DonaldsonMatrix_RadianceFactor(ax.data(), 40, ax.data(), 40, v.data(), wl.data(), s.data(),
                                              int(wl.size()), t, r, f);
    }
};

struct Illuminant {
    Vec wl, s;
    explicit Illuminant(int selector)
    {
        typ_wlinfo r;
        s.resize(QOMATH_CIE_MAX_POINTS);
        EXPECT_EQ(GetCIEData(selector, s.data(), &r), 1);
        const int n = int((r.end - r.start) / r.step + 1.001f);
        s.resize(size_t(n));
        for (int k = 0; k < n; ++k) wl.push_back(r.start + float(k) * r.step);
    }
    float at(float w) const { return s[size_t((w - wl[0]) / (wl[1] - wl[0]) + 0.5f)]; }
};

TEST(Donaldson, DiagonalOnlyIsPlainReflectanceUnderEveryIlluminant)
{
    Donaldson m;
    for (int k = 0; k < 40; ++k) m.v[size_t(k) * 41] = 0.2f + 0.015f * float(k);  // a ramp 0.2..0.785
    for (int sel = 6; sel <= 10; ++sel) {
        const Illuminant il(sel);
        Vec t(42, -1.0f), r(40), f(40);
        ASSERT_EQ(m.factors(il.wl, il.s, t.data() + 1, r.data(), f.data()), 1) << sel;
        EXPECT_EQ(t[0], -1.0f);
        EXPECT_EQ(t[41], -1.0f);
        for (int k = 0; k < 40; ++k) {
            EXPECT_EQ(t[size_t(k) + 1], m.v[size_t(k) * 41]);
            EXPECT_EQ(r[size_t(k)], m.v[size_t(k) * 41]);
            EXPECT_EQ(f[size_t(k)], 0.0f);
        }
    }
    // A flat 50 % reflector: Y = 50 and the white's chromaticity; L* = 116 * 0.5^(1/3) - 16.
    const Donaldson grey(0.5f);
    const Illuminant d65(9);
    float xyz[3], xy[2], white_xy[2];
    typ_Lab lab;
    ASSERT_EQ(DonaldsonMatrix_Colour(grey.ax.data(), 40, grey.ax.data(), 40, grey.v.data(), d65.wl.data(),
                                     d65.s.data(), int(d65.wl.size()), xyz, xy, &lab), 1);
    const Donaldson white(1.0f);
    ASSERT_EQ(DonaldsonMatrix_Colour(white.ax.data(), 40, white.ax.data(), 40, white.v.data(), d65.wl.data(),
                                     d65.s.data(), int(d65.wl.size()), xyz + 0, white_xy, &lab), 1);
    EXPECT_NEAR(xyz[1], 100.0f, 1e-3f);
    EXPECT_NEAR(white_xy[0], 0.3127f, 2e-3f);  // D65 (on a 10 nm axis)
    ASSERT_EQ(DonaldsonMatrix_Colour(grey.ax.data(), 40, grey.ax.data(), 40, grey.v.data(), d65.wl.data(),
                                     d65.s.data(), int(d65.wl.size()), xyz, xy, &lab), 1);
    EXPECT_NEAR(xyz[1], 50.0f, 1e-3f);
    EXPECT_NEAR(xy[0], white_xy[0], 1e-6f);
    EXPECT_NEAR(xy[1], white_xy[1], 1e-6f);
    EXPECT_NEAR(lab.L, 116.0f * std::cbrt(0.5f) - 16.0f, 1e-3f);
    EXPECT_NEAR(lab.a, 0.0f, 1e-3f);
}

TEST(Donaldson, OneFluorescentCellByHand)
{
    // D(400, 500) = 0.002 / nm on a 10 nm axis: beta_L(500) = 0.002 * 10 * S(400) / S(500),
    // 0.02 under E and 0.02 * S_A(400) / S_A(500) under A; nothing anywhere else.
    Donaldson m(0.1f);
    m.at(400, 500) = 0.002f;
    for (int sel : {6, 10}) {
        const Illuminant il(sel);
        Vec t(40), f(40);
        ASSERT_EQ(m.factors(il.wl, il.s, t.data(), nullptr, f.data()), 1);
        const double expect = 0.02 * il.at(400) / il.at(500);
        for (int k = 0; k < 40; ++k) {
            const double fl = k == 12 ? expect : 0.0;
            EXPECT_NEAR(f[size_t(k)], fl, 1e-7) << sel << " " << k;
            EXPECT_NEAR(t[size_t(k)], 0.1 + fl, 1e-7);
        }
    }
    // Quantum yield of row 400: 0.002 * (500 / 400) * 10 / (1 - 0.1).
    Vec q(40, -1.0f);
    ASSERT_EQ(DonaldsonMatrix_Validate(m.ax.data(), 40, m.ax.data(), 40, m.v.data(), q.data()), 1);
    EXPECT_NEAR(q[2], 0.025 / 0.9, 1e-7);
    EXPECT_EQ(q[3], 0.0f);
}

TEST(Donaldson, EnergyIsNotCreated)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    for (int trial = 0; trial < 20; ++trial) {
        Donaldson m;
        for (int j = 0; j < 40; ++j) {
            const float refl = u(rng);
            m.v[size_t(j) * 41] = refl;
            double photons = 0.0;  // Stokes cells, then scaled to the largest allowed yield
            for (int i = j + 1; i < 40; ++i) photons += (m.v[size_t(j) * 40 + size_t(i)] = u(rng)) * (380.0 + 10 * i) / (380.0 + 10 * j) * 10.0;
            for (int i = j + 1; i < 40 && photons > 0; ++i) m.v[size_t(j) * 40 + size_t(i)] *= float((1.0 - refl) / photons * 0.999999);
        }
        Vec q(40);
        ASSERT_EQ(DonaldsonMatrix_Validate(m.ax.data(), 40, m.ax.data(), 40, m.v.data(), q.data()), 1) << trial;
        const Illuminant il(6 + trial % 5);
        Vec f(40), s(40);
        ASSERT_EQ(m.factors(il.wl, il.s, nullptr, nullptr, f.data()), 1);
        double emitted = 0.0, absorbed = 0.0;
        for (int k = 0; k < 40; ++k) {
            const double sk = il.at(m.ax[size_t(k)]), w = k == 0 || k == 39 ? 5.0 : 10.0;
            emitted += f[size_t(k)] * sk * w;
            absorbed += (1.0 - m.v[size_t(k) * 41]) * sk * w;
        }
        EXPECT_LE(emitted, absorbed * (1 + 1e-6)) << trial;
        // One more photon than allowed is refused.
        m.v[size_t(5) * 40 + 30] += 0.5f;
        EXPECT_EQ(DonaldsonMatrix_Validate(m.ax.data(), 40, m.ax.data(), 40, m.v.data(), q.data()), -5);
        EXPECT_GT(q[5], 1.0f);
    }
}

TEST(Donaldson, UnusableMatricesAndIlluminants)
{
    Donaldson m(0.5f);
    const Illuminant a(6), b(7);  // B starts at 320 nm and ends at 770: enough
    float t[40];
    Vec ex = m.ax;
    Vec em{400, 405};  // 405 not on the excitation axis
    EXPECT_EQ(DonaldsonMatrix_Validate(ex.data(), 40, em.data(), 2, m.v.data(), nullptr), -3);
    EXPECT_EQ(DonaldsonMatrix_Validate(ex.data(), 1, ex.data(), 1, m.v.data(), nullptr), -2);
    ex[3] = ex[2];
    EXPECT_EQ(DonaldsonMatrix_Validate(ex.data(), 40, m.ax.data(), 40, m.v.data(), nullptr), -2);
    EXPECT_EQ(DonaldsonMatrix_Validate(nullptr, 40, m.ax.data(), 40, m.v.data(), nullptr), -1);
    for (float bad : {std::numeric_limits<float>::quiet_NaN(), -1e-3f}) {
        Donaldson h(0.5f);
        h.at(450, 600) = bad;
        t[0] = -1.0f;
        EXPECT_EQ(h.factors(a.wl, a.s, t, nullptr, nullptr), -4);
        EXPECT_EQ(t[0], 0.0f);  // cleared
    }
    EXPECT_EQ(m.factors(b.wl, b.s, t, nullptr, nullptr), 1);
    Vec short_wl(b.wl.begin(), b.wl.begin() + 80), short_s(b.s.begin(), b.s.begin() + 80);  // ends at 715 nm
    EXPECT_EQ(m.factors(short_wl, short_s, t, nullptr, nullptr), -7);
    float xyz[3], xy[2];
    typ_Lab lab;
    EXPECT_EQ(DonaldsonMatrix_Colour(m.ax.data(), 40, m.ax.data(), 40, m.v.data(), a.wl.data(), a.s.data(),
                                     int(a.wl.size()), xyz, nullptr, &lab), -8);
    EXPECT_EQ(DonaldsonMatrix_Colour(m.ax.data(), 40, m.ax.data(), 40, m.v.data(), a.wl.data(), a.s.data(), 1,
                                     xyz, xy, &lab), -7);
}

}  // namespace
