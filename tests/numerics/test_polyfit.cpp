#include "numerics/numerics_tests.hpp"

#include "numerics/neville.hpp"

namespace {

TEST(PolyFit, NevilleWrapperCountsFromOne)
{
    // Element 0 is a decoy: the kernel reads xa[1..n], ya[1..n] of 1 + x + x^2.
    float xa[] = {1000.0f, 0.0f, 1.0f, 2.0f};
    float ya[] = {-1000.0f, 1.0f, 3.0f, 7.0f};
    float y = 0.0f, dy = 0.0f, yk = 0.0f, dyk = 0.0f;
    EXPECT_EQ(CPolyFit::PolynomialInt(xa, ya, 3, 1.5f, &y, &dy), 1);
    EXPECT_FLOAT_EQ(y, 4.75f);
    qomath::numerics::neville({xa + 1, 3}, {ya + 1, 3}, 1.5f, yk, dyk);
    EXPECT_EQ(y, yk);
    EXPECT_EQ(dy, dyk);
    EXPECT_EQ(PolInt(xa, ya, 3, -0.5f, &y, &dy), 1);
    EXPECT_FLOAT_EQ(y, 0.75f);

    y = 42.0f;  // no points or null pointers: 0, *y untouched
    EXPECT_TRUE(PolInt(xa, ya, 0, 1.0f, &y, &dy) == 0 && PolInt(nullptr, ya, 3, 1.0f, &y, &dy) == 0);
    EXPECT_EQ(y, 42.0f);
    float same[] = {0.0f, 1.0f, 1.0f, 2.0f};
    EXPECT_EQ(PolInt(same, ya, 3, 1.5f, &y, &dy), 0);
}

TEST(PolyFit, CoefficientsAndEvaluation)
{
    float xa[] = {0.0f, 1.0f, 2.0f}, ya[] = {1.0f, 3.0f, 7.0f};
    float cof[4] = {};
    EXPECT_EQ(CPolyFit::PolynomialCof(xa, ya, 2, cof), 1);
    for (float c : {cof[0], cof[1], cof[2]}) EXPECT_NEAR(c, 1.0f, 1e-6f);

    // A cubic sampled away from 0 and unsorted: 2 - x + 0.5 x^2 + 0.25 x^3.
    float want[] = {2.0f, -1.0f, 0.5f, 0.25f};
    float xc[] = {3.0f, -1.0f, 1.0f, 2.0f}, yc[4];
    for (int i = 0; i < 4; ++i) EXPECT_EQ(PolynomialValue(want, 4, xc[i], &yc[i]), 1);
    EXPECT_EQ(yc[0], 10.25f);
    EXPECT_EQ(PolCof(xc, yc, 3, cof), 1);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(cof[i], want[i], 1e-5f) << i;
    EXPECT_EQ(xc[0], 3.0f);  // the caller's points are left alone
    cof[0] = 5.0f;
    EXPECT_EQ(PolCof(xc, yc, -1, cof), 1);  // nothing to do
    EXPECT_EQ(cof[0], 5.0f);
    EXPECT_EQ(PolCof(nullptr, yc, 3, cof), 0);

    // PolyVal gives 0 for no coefficients; PolynomialValues refuses them.
    float y = 7.0f;
    EXPECT_EQ(CPolyFit::PolyVal(want, 3, 2.0f, &y), 1);  // only cof[0..2]
    EXPECT_EQ(y, 2.0f);
    EXPECT_EQ(CPolyFit::PolyVal(nullptr, 0, 2.0f, &y), 1);
    EXPECT_EQ(y, 0.0f);
    y = 7.0f;
    EXPECT_EQ(CPolyFit::PolynomialValues(want, 0, 2.0f, &y), 0);
    EXPECT_EQ(y, 7.0f);
    EXPECT_EQ(CPolyFit::PolyVal(want, 3, 2.0f, nullptr), 0);

    // ddpoly: p = 1 - 2x + 3x^2 + 4x^3 at 2 is 41; p' = 58, p'' = 54, p''' = 24.
    float p[] = {1.0f, -2.0f, 3.0f, 4.0f}, pd[6] = {-1, -1, -1, -1, -1, -1};
    EXPECT_EQ(CPolyFit::ddpoly(p, 3, 2.0f, pd, 4), 1);
    EXPECT_EQ(Vec(pd, pd + 6), (Vec{41, 58, 54, 24, 0, -1}));  // pd[5]: beyond
    EXPECT_EQ(CPolyFit::ddpoly(p, 3, -1.0f, pd, 1), 1);
    EXPECT_TRUE(pd[0] == 2.0f && pd[1] == 4.0f);
    EXPECT_TRUE(CPolyFit::ddpoly(p, -1, 2.0f, pd, 2) == 0 && CPolyFit::ddpoly(p, 3, 2.0f, pd, -1) == 0);
}

TEST(LeastSquares, LineQuadraticAndPolynomials)
{
    float lx[] = {0, 1, 2}, ly[] = {0, 1, 1};
    float a = 0, b = 0;
    EXPECT_EQ(fitLinear(lx, ly, 3, &a, &b), 1);  // a = 1/6, b = 1/2
    EXPECT_FLOAT_EQ(a, 1.0f / 6.0f);
    EXPECT_FLOAT_EQ(b, 0.5f);
    EXPECT_TRUE(fitLinear(lx, ly, 0, &a, &b) == 0 && fitLinear(lx, nullptr, 3, &a, &b) == 0);

    // Readings 1, 0, 1, 1 at -1, 0, 0, 1: the quadratic 0.5 + 0.5 x^2.
    double dcof[3] = {};
    EXPECT_EQ(CPolyFit::PolyFit2ndOrder({-1, 0, 0, 1}, {1, 0, 1, 1}, dcof), 1);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(dcof[i], i == 1 ? 0.0 : 0.5, 1e-12) << i;
    EXPECT_EQ(CPolyFit::PolyFit2ndOrder({1, 2}, {1, 2, 3}, dcof), -1);
    EXPECT_EQ(CPolyFit::PolyFit2ndOrder({1, 2, 3}, {1, 2, 3, 4}, dcof), -2);
    EXPECT_EQ(CPolyFit::PolyFit2ndOrder({2, 2, 2}, {1, 2, 3}, dcof), -3);
    EXPECT_EQ(CPolyFit::PolyFit2ndOrder({1, 2, 3}, {1, 2, 3}, nullptr), -1);

    // Polynomials of any order: a cubic is recovered from 12 of its points.
    const float want[] = {1.5f, -0.25f, 0.125f, -0.0625f};
    Vec x = grid(-2, 0.25f, 40), y;
    for (float v : x) y.push_back(RegressionGetY(want, 3, v, nullptr));
    float cof[30] = {};
    int used = -1;
    EXPECT_EQ(RegressionPolyFit(x.data(), y.data(), 12, 3, cof, &used), 1);
    EXPECT_EQ(used, 3);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(cof[i], want[i], 1e-5f) << i;

    // The order is capped by the points available and at 25.
    EXPECT_EQ(RegressionPolyFit(x.data(), y.data(), 3, 5, cof, &used), 1);
    EXPECT_EQ(used, 2);
    EXPECT_EQ(RegressionPolyFit(x.data(), y.data(), 40, 1000, cof, &used), 1);
    EXPECT_EQ(used, 25);

    // The slope 1e-20 is below 1e-15 and stored as exactly 0.
    float xs[] = {0, 1, 2}, ys[] = {0, 1e-20f, 2e-20f};
    EXPECT_EQ(RegressionPolyFit(xs, ys, 3, 1, cof, &used), 1);
    EXPECT_EQ(cof[1], 0.0f);

    cof[0] = 4;  // no points: cof[0] and *usedOrder cleared, success
    used = 4;
    EXPECT_EQ(RegressionPolyFit(xs, ys, 0, 2, cof, &used), 1);
    EXPECT_EQ(cof[0], 0.0f);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(RegressionPolyFit(xs, ys, -7, -2147483647 - 1, cof, &used), 1);
    EXPECT_EQ(RegressionPolyFit(nullptr, ys, 3, 1, cof, &used), -1);
}

TEST(Regression, GetYAndItsInverse)
{
    const float cof[] = {1.0f, 2.0f, 3.0f};
    float y = -1;
    EXPECT_FLOAT_EQ(RegressionGetY(cof, 2, 2.0f, &y), 17.0f);
    EXPECT_FLOAT_EQ(y, 17.0f);
    EXPECT_EQ(RegressionGetY(cof, -1, 2.0f, &y), 0.0f);
    EXPECT_EQ(y, 0.0f);  // cleared

    // The quadratic path inverts GetY for every coefficient count but 2.
    const float cal[] = {-300.0f, 1.2f, 2e-4f};
    for (float px : {10.0f, 250.0f, 1023.0f}) {
        for (int n : {1, 3, 4}) {
            float got = -1;
            const double r = RegressionGetXWLCal(cal, n, &got, RegressionGetY(cal, 2, px, nullptr));
            EXPECT_NEAR(r, px, 1e-3 * px) << n;
            EXPECT_EQ(got, static_cast<float>(r));
        }
    }
    // n == 2 is the line (y - c0) / c1 whatever cof[2] holds; *x only cleared.
    float x = -1;
    EXPECT_NEAR(RegressionGetXWLCal(cal, 2, &x, 0.0f), 250.0, 1e-4);
    EXPECT_EQ(x, 0.0f);
    const float line[] = {2.0f, 0.0f}, flat[] = {1.0f, 4.0f, 1e-16f};
    EXPECT_EQ(RegressionGetXWLCal(line, 2, &x, 5.0f), 0.0);
    EXPECT_DOUBLE_EQ(RegressionGetXWLCal(flat, 3, &x, 9.0f), 2.0);  // negligible cof[2]

    const float bowl[] = {1.0f, 0.0f, 1.0f}, through0[] = {5.0f, 1.0f, 1.0f};
    EXPECT_EQ(RegressionGetXWLCal(bowl, 3, &x, 0.5f), 0.0);      // D < 0
    EXPECT_EQ(RegressionGetXWLCal(through0, 3, &x, 5.0f), 0.0);  // root 0
    EXPECT_TRUE(RegressionGetXWLCal(cal, 0, &x, 5.0f) == 0.0 &&
                RegressionGetXWLCal(nullptr, 3, &x, 5.0f) == 0.0);
}

}  // namespace
