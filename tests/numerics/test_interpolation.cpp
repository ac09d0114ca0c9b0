// The cached polynomial interpolator, linear interpolation and the evenly
// spaced variant.
#include "numerics/numerics_tests.hpp"

#include "numerics/interpolation.hpp"
#include "numerics/neville.hpp"

namespace {

// Every test starts from polynomial mode and an empty-looking cache: a call
// on data no other test uses.
class Interp : public ::testing::Test {
protected:
    void SetUp() override
    {
        InterpolationMethod(0);
        Vec xs{1, 2, 3, 4, 5}, ys{-123.25f, 2, 3, 4, 5}, xd{1.5f, 2.5f, 3.5f, 4.5f}, yd(4);
        Interpolate2(xs.data(), ys.data(), 5, xd.data(), yd.data(), 4);
    }
    static int interp2(Vec xs, Vec ys, Vec xd, Vec& yd)
    {
        yd.resize(xd.size());
        return Interpolate2(xs.data(), ys.data(), static_cast<int>(xs.size()), xd.data(), yd.data(),
                            static_cast<int>(xd.size()));
    }
};

// The rule written out plainly: nearest point by a full scan, the exact-match
// test, then Neville through points lo+1 .. hi.
float reference_point(const Vec& xs, const Vec& ys, float x)
{
    size_t k = 0;
    double best = 99999999.9;
    for (size_t j = 0; j < xs.size(); ++j) {
        const double d = std::fabs(static_cast<double>(x) - xs[j]);
        if (d < best) best = d, k = j;
    }
    if (best < 0.0001) return ys[k];
    const size_t lo = k >= 3 ? k - 3 : 0, hi = std::min(k + 3, xs.size() - 1);
    float y = 0, dy = 0;
    qomath::numerics::neville({xs.data() + lo + 1, hi - lo}, {ys.data() + lo + 1, hi - lo}, x, y, dy);
    return y;
}

TEST_F(Interp, PolynomialPathFollowsTheNearestPointWindow)
{
    // An irregular grid and a quintic: the six-point window reproduces it in
    // the interior; near the start fewer points take part.
    Vec xs, ys, xd, yd;
    for (float w = 380.0f; xs.size() < 40; w += 0.7f + 0.3f * static_cast<float>(xs.size() % 3))
        xs.push_back(w);
    auto poly = [](double x) {
        const double t = (x - 400.0) / 20.0;
        return 2.0 + t - 0.5 * t * t + 0.1 * t * t * t - 0.01 * t * t * t * t + 0.002 * std::pow(t, 5);
    };
    for (float x : xs) ys.push_back(static_cast<float>(poly(x)));
    for (float x = 386.05f; x < 405.0f; x += 0.37f) xd.push_back(x);
    ASSERT_EQ(interp2(xs, ys, xd, yd), 1);
    for (size_t i = 0; i < xd.size(); ++i) {
        EXPECT_NEAR(yd[i], poly(xd[i]), 2e-4) << xd[i];
        EXPECT_EQ(yd[i], reference_point(xs, ys, xd[i])) << xd[i];
    }

    // A destination within 0.0001 nm of a source point gets its value exactly.
    ASSERT_EQ(interp2(xs, ys, {xs[5] + 0.00005f, xs[6], xs[7] - 0.00009f, xs[30]}, yd), 1);
    EXPECT_EQ(yd, (Vec{ys[5], ys[6], ys[7], ys[30]}));

    // Sample 0 enters only through that exact match: between the first two
    // source points it has no influence.
    Vec ys2 = ys, y1, y2;
    ys2[0] = 1000.0f;
    const Vec left{xs[0], xs[0] + 0.25f, xs[0] + 0.5f, xs[1] - 0.1f};
    interp2(xs, ys, left, y1);
    interp2(xs, ys2, left, y2);
    EXPECT_EQ(y2[0], 1000.0f);
    EXPECT_EQ(Vec(y1.begin() + 1, y1.end()), Vec(y2.begin() + 1, y2.end()));
}

TEST_F(Interp, FastNearestSearchAgreesWithAFullScan)
{
    // Ties half-way between source points go to the lower index; far and
    // NaN destinations fall back to point 0, as a full scan does.
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> step(0.05f, 3.0f), val(0.0f, 10.0f);
    for (int round = 0; round < 20; ++round) {
        Vec xs, ys, xd, yd;
        for (float w = 300.0f + val(rng); xs.size() < 60; w += (round % 2) ? 1.0f : step(rng))
            xs.push_back(w), ys.push_back(val(rng));
        for (size_t i = 0; i + 1 < 60; ++i) xd.push_back(0.5f * (xs[i] + xs[i + 1]));
        for (int i = 0; i < 40; ++i) xd.push_back(xs.front() - 5.0f + val(rng) * 20.0f);
        xd.push_back(1e12f);
        xd.push_back(kNaN);
        interp2(xs, ys, xd, yd);
        for (size_t i = 0; i + 1 < xd.size(); ++i)
            EXPECT_EQ(yd[i], std::max(reference_point(xs, ys, xd[i]), 0.0f)) << round << " " << xd[i];
    }
}

TEST_F(Interp, CacheIsKeyedOnSourceValuesAndDestinationOnly)
{
    const Vec xs{400, 410, 420, 430, 440, 450}, ys{1, 4, 9, 16, 25, 36};
    const Vec xd{405, 415, 425, 435}, shifted{500, 510, 520, 530, 540, 550};
    Vec first, again, ys2 = ys, five;
    ASSERT_EQ(interp2(xs, ys, xd, first), 1);

    // Other source wavelengths, or another mode, with the same values and
    // destination: the earlier result comes back unchanged.
    ASSERT_EQ(interp2(shifted, ys, xd, again), 1);
    EXPECT_EQ(again, first);
    InterpolationMethod(1);
    ASSERT_EQ(interp2(xs, ys, xd, again), 1);
    EXPECT_EQ(again, first);
    InterpolationMethod(0);

    // A changed value, a changed destination or a changed count recomputes.
    ys2[3] = 17;
    interp2(xs, ys2, xd, again);
    EXPECT_NE(again, first);
    interp2(shifted, ys, xd, again);  // now really computed on the shifted grid
    EXPECT_NE(again, first);
    interp2(xs, ys, {405, 415, 425, 435, 445}, five);
    EXPECT_FLOAT_EQ(five[4], 30.25f);  // ((445 - 390) / 10)^2

    // Linear mode, on a fresh key, is LinearInterpolation.
    EXPECT_EQ(InterpolationMethod(7), 1);
    Vec lin, ref(4), xq{401, 416, 433, 449}, xc = xs, yc = ys;
    ASSERT_EQ(interp2(xs, ys, xq, lin), 1);
    LinearInterpolation(xc.data(), yc.data(), 6, xq.data(), ref.data(), 4);
    EXPECT_EQ(lin, ref);
    EXPECT_FLOAT_EQ(lin[0], 1.3f);
    EXPECT_EQ(InterpolationMethod(-3), 1);
    EXPECT_EQ(InterpolationMethod(0), 0);
}

TEST_F(Interp, NonNegativeClampAndShortInput)
{
    // A sharp line on a zero base: the polynomial undershoots beside it.
    Vec xs = grid(500, 1, 20), ys(20, 0.0f), xd, yd;
    ys[10] = 100.0f;
    for (float x = 500.5f; x < 519.0f; x += 1.0f) xd.push_back(x);
    interp2(xs, ys, xd, yd);
    EXPECT_GE(*std::min_element(yd.begin(), yd.end()), 0.0f);
    EXPECT_GT(yd[9], 50.0f);
    // With one negative source value the clamp is off and the undershoot shows.
    ys[0] = -1e-3f;
    interp2(xs, ys, xd, yd);
    EXPECT_LT(*std::min_element(yd.begin(), yd.end()), -1.0f);

    // Three source points: -1, only the clamp runs (and only without
    // negative sources).
    Vec out{-1, 2, -3, 4}, x3{1, 2, 3}, y3{1, 2, 3}, xq{1.5f, 2, 2.5f, 3};
    EXPECT_EQ(Interpolate2(x3.data(), y3.data(), 3, xq.data(), out.data(), 4), -1);
    EXPECT_EQ(out, (Vec{0, 2, 0, 4}));
    out = {-1, 2, -3, 4};
    y3[1] = -2;
    EXPECT_EQ(Interpolate2(x3.data(), y3.data(), 3, xq.data(), out.data(), 4), -1);
    EXPECT_EQ(out, (Vec{-1, 2, -3, 4}));
    EXPECT_EQ(Interpolate2(xs.data(), ys.data(), 20, xq.data(), out.data(), 3), -1);
    EXPECT_EQ(Interpolate2(nullptr, ys.data(), 20, xq.data(), out.data(), 4), -1);

    // Coincident source wavelengths around a point: the Neville status 0.
    const Vec twice{400, 401, 402, 402, 404, 405, 406, 407};
    EXPECT_EQ(interp2(twice, {1, 2, 3, 4, 5, 6, 7, 8}, {402.5f, 403.2f, 403.4f, 403.6f}, yd), 0);
}

TEST_F(Interp, SeveralArraysAtOnceAreConsecutiveCalls)
{
    Vec xs, a, b, c, xd;
    for (int i = 0; i < 50; ++i) {
        const float x = 400.0f + 1.7f * static_cast<float>(i);
        xs.push_back(x);
        a.push_back(std::sin(x / 9.0f));  // has negative values: no clamp
        b.push_back(1.0f + std::cos(x / 7.0f));
        c.push_back(static_cast<float>(i % 5));
    }
    for (float x = 395.0f; x < 490.0f; x += 0.61f) xd.push_back(x);
    const size_t n = xd.size();
    Vec ya(n), yb(n), yc(n), ra, rb, rc, other(xs), stale;
    auto batch = [&] {
        std::array<int, 3> st{};
        qomath::numerics::interpolate2_many<3>(qomath::numerics::process_interpolation_state(),
            xs, {std::span<const float>(a), std::span<const float>(b), std::span<const float>(c)}, xd,
            {std::span<float>(ya), std::span<float>(yb), std::span<float>(yc)}, st);
        return st;
    };
    const auto st = batch();
    const int sa = interp2(xs, a, xd, ra), sb = interp2(xs, b, xd, rb), sc = interp2(xs, c, xd, rc);
    EXPECT_EQ(st, (std::array<int, 3>{sa, sb, sc}));
    EXPECT_TRUE(ya == ra && yb == rb && yc == rc);

    // Afterwards the cache holds the last array's key, as after three calls;
    // a cached first array comes back stale from the batch as well.
    batch();
    for (float& x : other) x += 3.0f;
    interp2(other, c, xd, stale);
    EXPECT_EQ(stale, yc);
    interp2(other, a, xd, stale);
    batch();
    EXPECT_EQ(ya, stale);
    EXPECT_EQ(yb, rb);
}

TEST(Interpolation, LinearInterpolationEndsAndUnsortedData)
{
    // Constant beyond both ends; no interval holds a NaN: the last value.
    Vec xs{400, 410, 420, 430}, ys{1, 3, 2, 6};
    Vec xd{390, 400, 405, 410.00005f, 425, 430, 440, kNaN}, yd(xd.size());
    EXPECT_EQ(LinearInterpolation(xs.data(), ys.data(), 4, xd.data(), yd.data(), 8), 1);
    EXPECT_EQ(yd, (Vec{1, 1, 2, 3, 4, 6, 6, 6}));
    // Unsorted source: the first interval that holds x wins: [400, 420] for
    // 415 and 405, only [410, 430] for 425.
    Vec xu{400, 420, 410, 430}, yu{1, 5, 2, 8}, q{415, 425, 405};
    EXPECT_EQ(LinearInterpolation(xu.data(), yu.data(), 4, q.data(), yd.data(), 3), 1);
    EXPECT_EQ(Vec(yd.begin(), yd.begin() + 3), (Vec{4.0f, 6.5f, 2.0f}));
    EXPECT_EQ(LinearInterpolation(xs.data(), ys.data(), 4, xd.data(), yd.data(), 0), 1);
    EXPECT_EQ(LinearInterpolation(nullptr, ys.data(), 4, xd.data(), yd.data(), 3), -1);
}

TEST(Interpolation, EvenlySpacedGrids)
{
    // A cubic on 380..780 step 5 resampled to 1 nm: exact up to rounding.
    typ_wlinfo src{380, 780, 5}, dst{400, 700, 1}, inside{400, 700, 5}, offset{382.5f, 682.5f, 5};
    auto cubic = [](float x) {
        const float t = (x - 500.0f) / 100.0f;
        return 3.0f + t + 2.0f * t * t - t * t * t;
    };
    Vec ys, yd(301), copy(61), far(13, -7.0f);
    for (int i = 0; i < 81; ++i) ys.push_back(cubic(380.0f + 5.0f * static_cast<float>(i)));
    ASSERT_EQ(Interpolate(ys.data(), &src, yd.data(), &dst), 1);
    for (int i = 0; i < 301; ++i) EXPECT_NEAR(yd[size_t(i)], cubic(400.0f + float(i)), 2e-5f);

    // Equal steps with the destination inside: a plain copy; starting less
    // than a step into the source copies the samples unshifted.
    ASSERT_EQ(Interpolate(ys.data(), &src, copy.data(), &inside), 1);
    EXPECT_EQ(Vec(copy.begin(), copy.end()), Vec(ys.begin() + 4, ys.begin() + 65));
    ASSERT_EQ(Interpolate(ys.data(), &src, copy.data(), &offset), 1);
    EXPECT_EQ(Vec(copy.begin(), copy.end()), Vec(ys.begin(), ys.begin() + 61));

    // Beyond the source the window shrinks: two points (a line), one point,
    // then none, and the caller's values stay.
    typ_wlinfo wide{770, 830, 5};
    ASSERT_EQ(Interpolate(ys.data(), &src, far.data(), &wide), 1);
    EXPECT_EQ(far[2], ys[80]);
    EXPECT_FLOAT_EQ(far[3], 2.0f * ys[80] - ys[79]);
    EXPECT_EQ(far[4], ys[80]);
    for (size_t i = 5; i < 13; ++i) EXPECT_EQ(far[i], -7.0f);

    typ_wlinfo tiny{400, 410, 5}, bad{400, 700, 0};  // three points; invalid
    EXPECT_EQ(Interpolate(ys.data(), &tiny, yd.data(), &dst), -1);
    EXPECT_EQ(Interpolate(ys.data(), &src, yd.data(), &tiny), -1);
    EXPECT_EQ(Interpolate(ys.data(), &bad, yd.data(), &dst), -1);
    EXPECT_EQ(Interpolate(nullptr, &src, yd.data(), &dst), -1);
}

}  // namespace
