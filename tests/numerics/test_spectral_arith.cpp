// Arithmetic between spectra: common grids, the two division rules, the grid
// and array families against each other, trimming, hostile input.
#include "numerics/numerics_tests.hpp"

namespace {

using GridFn = decltype(&AddSpectralFiles);
using ArrayFn = decltype(&AddSpectralFiles2);
constexpr GridFn kGrid[] = {MultiplySpectralFiles, DivideSpectralFiles, SubtractSpectralFiles,
                            AddSpectralFiles};
constexpr ArrayFn kArray[] = {MultiplySpectralFiles2, DivideSpectralFiles2,
                              SubtractSpectralFiles2, AddSpectralFiles2};

struct Spectrum {
    typ_wlinfo r;
    Vec wl, v;
    int n() const { return static_cast<int>(wl.size()); }
};

// f sampled on an evenly spaced range, with its explicit wavelengths.
template <class F>
Spectrum spectrum(typ_wlinfo r, F f)
{
    Spectrum s{r, {}, {}};
    for (float w = r.start; w <= r.end + r.step / 2; w += r.step)
        s.wl.push_back(w), s.v.push_back(f(w));
    return s;
}

float expected(int op, float a, float b)
{
    return op == 0 ? a * b : op == 1 ? a / b : op == 2 ? a - b : a + b;
}

TEST(SpectralArith, FamiliesOnCommonGrids)
{
    Vec out(101), out2(303), wl2(303);
    typ_wlinfo r{};
    int n2 = 0;
    // 5 nm and 1 nm: the common grid is 400..700 by 5 (61 points, the end
    // snapped down from 702), on sample points of both, so results are exact.
    const Spectrum a = spectrum({380, 780, 5}, [](float w) { return w / 100; });
    const Spectrum b = spectrum({400, 702, 1}, [](float w) { return 2 + (w - 400) / 50; });
    for (int op = 0; op < 4; ++op) {
        ASSERT_EQ(kGrid[op](a.v.data(), &a.r, b.v.data(), &b.r, out.data(), &r), 1);
        ASSERT_EQ(kArray[op](a.wl.data(), a.v.data(), a.n(), b.wl.data(), b.v.data(), b.n(),
                             wl2.data(), out2.data(), &n2), 1);
        EXPECT_TRUE(r.start == 400 && r.end == 700 && r.step == 5);
        ASSERT_EQ(n2, 61);
        for (int i = 0; i < 61; ++i) {
            const float w = 400 + 5.0f * i;
            EXPECT_EQ(wl2[i], w);
            EXPECT_FLOAT_EQ(out[i], expected(op, w / 100, 2 + (w - 400) / 50)) << op << " " << w;
            EXPECT_EQ(out2[i], out[i]) << op << " " << w;
        }
    }
    // Off-sample points (4 nm and 3 nm, polynomials): the two interpolators
    // use different windows but both follow the polynomial.
    auto fa = [](float w) { return 1 + (w - 500) * (w - 500) / 1e4f; };
    auto fb = [](float w) { return 3 - w / 1000; };
    const Spectrum c = spectrum({380, 780, 4}, fa), d = spectrum({400, 700, 3}, fb);
    ASSERT_EQ(MultiplySpectralFiles(c.v.data(), &c.r, d.v.data(), &d.r, out.data(), &r), 1);
    ASSERT_EQ(MultiplySpectralFiles2(c.wl.data(), c.v.data(), 101, d.wl.data(), d.v.data(), 101,
                                     wl2.data(), out2.data(), &n2), 1);
    ASSERT_EQ(n2, 76);
    for (int i = 0; i < 76; ++i) {
        const float w = 400 + 4.0f * i;
        EXPECT_NEAR(out[i], fa(w) * fb(w), 2e-6f * out[i]) << w;
        EXPECT_NEAR(out2[i], out[i], 2e-6f * out[i]) << w;
    }
}

TEST(SpectralArith, IdenticalRangesAndDivisionRules)
{
    // Identical ranges: the plain point-by-point operation, also in place.
    const Vec a = {2, 0, 2, 1e-20f, 6, 1, 7}, b = {0, 0, 1e-10f, 0, 3, -4, 0.5f};
    const Spectrum s = spectrum({400, 430, 5}, [](float) { return 0.0f; });
    typ_wlinfo ro{};
    int n2 = 0;
    for (int op = 0; op < 4; ++op) {
        Vec out = a, out2(7), wl2(7);
        ASSERT_EQ(kGrid[op](out.data(), &s.r, b.data(), &s.r, out.data(), &ro), 1);
        ASSERT_EQ(kArray[op](s.wl.data(), a.data(), 7, s.wl.data(), b.data(), 7, wl2.data(),
                             out2.data(), &n2), 1);
        for (int i = 4; i < 7; ++i) {
            EXPECT_EQ(out[i], expected(op, a[i], b[i]));
            EXPECT_EQ(out2[i], out[i]);
        }
        if (op != 1) continue;
        // 2/0 (1e14 in place of infinity), 0/0, 2/1e-10, 1e-20/0; the array
        // family gives 0 for every divisor below 1e-9.
        EXPECT_EQ(out[0], 100000000376832.0f);
        EXPECT_EQ(out[1], 0.0f);
        EXPECT_FLOAT_EQ(out[2], 2e10f);
        EXPECT_EQ(out[3], 0.0f);
        EXPECT_EQ(out2[0] + out2[1] + out2[2] + out2[3], 0.0f);
    }
    // Too short to resample, but identical ranges need none.
    const typ_wlinfo three{400, 410, 5};
    Vec out(3);
    EXPECT_EQ(SubtractSpectralFiles(a.data(), &three, b.data(), &three, out.data(), &ro), 1);
    EXPECT_EQ(out[2], 2.0f - 1e-10f);
}

TEST(SpectralArith, FailuresAndHostileInput)
{
    const Spectrum a = spectrum({380, 500, 5}, [](float) { return 1.0f; });
    const Spectrum b = spectrum({500, 780, 5}, [](float) { return 1.0f; });
    Vec out(200, -7.0f), wl2(200);
    typ_wlinfo r{};
    auto add = [&](const typ_wlinfo* ra) {
        return AddSpectralFiles(a.v.data(), ra, a.v.data(), &a.r, out.data(), &r);
    };
    // Touching at one point: no overlap; the common range is written anyway.
    EXPECT_EQ(AddSpectralFiles(a.v.data(), &a.r, b.v.data(), &b.r, out.data(), &r), -1);
    EXPECT_TRUE(r.start == 500 && r.end == 500);
    const typ_wlinfo zero{380, 500, 0}, three{400, 410, 5}, nan{kNaN, 500, 5}, huge{0, 3e38f, 1};
    for (auto [range, status] : {std::pair{&zero, -2}, {&three, -3}, {&nan, -3}, {&huge, -3}})
        EXPECT_EQ(add(range), status) << range->start << " " << range->end << " " << range->step;
    EXPECT_TRUE(AddSpectralFiles(nullptr, &a.r, a.v.data(), &a.r, out.data(), &r) == -1 &&
                AddSpectralFiles(a.v.data(), &a.r, a.v.data(), &a.r, out.data(), nullptr) == -1);

    // Array family: range preparation (-1), A (-2) and B (-3) not resampled.
    const Vec w3 = {500, 600, 700}, down = {700, 600, 500, 400}, w2 = {500, 501, 900};
    const Vec coarse = {300, 400, 500, 600, 700, 800}, ones(200, 1.0f);
    int n = 0;
    auto add2 = [&](const Vec& wa, int na, const Vec& wb, int nb) {
        return AddSpectralFiles2(wa.data(), ones.data(), na, wb.data(), ones.data(), nb,
                                 wl2.data(), out.data(), &n);
    };
    EXPECT_TRUE(add2(a.wl, 2, w3, 3) == -1 && add2(a.wl, 25, down, 4) == -1);
    EXPECT_EQ(add2(b.wl, 57, w3, 3), -2);  // 3 common points
    EXPECT_EQ(n, 3);
    EXPECT_EQ(add2(coarse, 6, w2, 3), -3);  // B has 3 points
    EXPECT_EQ(n, 4);
    EXPECT_EQ(AddSpectralFiles2(nullptr, ones.data(), 6, w2.data(), ones.data(), 3, wl2.data(),
                                out.data(), &n), -1);
    EXPECT_EQ(out[0], -7.0f);  // no failure wrote a result
}

TEST(SpectralArith, TrimSnapsDownAndMovesInPlace)
{
    const typ_wlinfo r{380, 780, 5};
    Vec v(81);
    auto trim = [&](float s, float e) {
        for (int i = 0; i < 81; ++i) v[i] = float(i);
        const int status = TrimSpectralFile(v.data(), &r, &s, &e);
        return std::vector<float>{float(status), s, e};
    };
    EXPECT_EQ(trim(402, 698), (Vec{1, 400, 695}));
    for (int i = 0; i < 60; ++i) EXPECT_EQ(v[i], float(i + 4));
    EXPECT_EQ(v[60], 60.0f);  // beyond the kept values: untouched
    EXPECT_EQ(trim(300, 900), (Vec{1, 380, 780}));  // the range's own bounds
    EXPECT_EQ(v[80], 80.0f);
    EXPECT_TRUE(trim(500, 400)[0] == -2.0f && trim(kNaN, 400)[0] == -2.0f);

    float s = 400, e = 500;
    const typ_wlinfo back{780, 380, 5}, flat{380, 780, 0}, nanr{kNaN, 780, 5};
    for (const typ_wlinfo* bad : {&back, &flat, &nanr})
        EXPECT_EQ(TrimSpectralFile(v.data(), bad, &s, &e), -1);
    EXPECT_EQ(TrimSpectralFile(nullptr, &r, &s, &e), -1);
    EXPECT_EQ(v[0], 0.0f);
}

}  // namespace
