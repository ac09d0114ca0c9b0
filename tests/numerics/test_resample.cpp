// Band averaging, evenly spaced Newton resampling and Lagrange interpolation.
#include "numerics/numerics_tests.hpp"

namespace {

TEST(ResampleBand, StatusConstantsAndLines)
{
    auto xs = grid(400, 1, 301), xd = grid(400, 10, 31);  // xd spans exactly the source range
    auto flat = sample(xs, [](double) { return 2.5; });
    auto line = sample(xs, [](double x) { return 0.5 * x - 100.0; });
    Vec yd(60, -7.0f);
    auto run = [&](Vec& ys, Vec& x, int mode = 0, int ns = 301, int nd = 0) {
        return QoMathSpectralResample(mode, xs.data(), ys.data(), ns, x.data(), yd.data(),
                                      nd ? nd : static_cast<int>(x.size()));
    };
    EXPECT_TRUE(run(flat, xd, 1) == -1 && run(flat, xd, 0, 4) == -1 && run(flat, xd, 0, 301, 2049) == -1);
    EXPECT_EQ(QoMathSpectralResample(0, nullptr, flat.data(), 301, xd.data(), yd.data(), 31), -1);
    EXPECT_EQ(yd[0], -7.0f);

    // Bands [395, 405] and [695, 705] reach outside the source: 0. Band
    // [400, 410] leaves sample 0 out of the sum, yet still counts its width.
    ASSERT_EQ(run(flat, xd), 1);
    for (size_t i = 0; i <= 30; ++i) EXPECT_FLOAT_EQ(yd[i], i % 30 ? 2.5f : 0.0f) << i;
    auto wide = grid(405, 10, 20);
    ASSERT_EQ(run(flat, wide), 1);
    EXPECT_FLOAT_EQ(yd[0], 2.25f);

    // Bands narrower than a source interval: linear interpolation, exact.
    // Wider bands a whole number of source intervals wide: sample k covers
    // [x_k, x_k + 1), so a line comes out exactly half an interval late.
    auto fine = grid(450.1f, 0.8f, 60), coarse = grid(405, 5, 55);
    ASSERT_EQ(run(line, fine), 1);
    for (size_t i = 0; i < 60; ++i) EXPECT_NEAR(yd[i], 0.5 * fine[i] - 100.0, 2e-5) << i;
    ASSERT_EQ(run(line, coarse), 1);
    for (size_t i = 0; i < 55; ++i) EXPECT_NEAR(yd[i], 0.5 * (coarse[i] - 0.5) - 100.0, 2e-5) << i;

    xd[3] = kNaN;
    xd[7] = 300;
    xs[100] = kNaN;
    EXPECT_EQ(run(flat, xd), 1);  // unsorted and NaN wavelengths: no crash
}

TEST(ResampleBand, ConservesTheIntegralOnIntegerRatioGrids)
{
    auto xs = grid(400, 1, 201);
    auto ys = sample(xs, [](double x) { return 1.0 + std::sin(x / 7.0) + (x - 480) * (x - 480) / 900; });
    double covered = 0.0;  // samples 8 .. 191 in full
    for (size_t k = 8; k < 192; ++k) covered += ys[k];
    for (const float step : {4.0f, 5.0f}) {
        // Centres 410 .. 590: bands from index 8 (step 4) or 7.5 (step 5) on.
        auto xd = grid(410, step, static_cast<int>(180 / step) + 1);
        Vec yd(xd.size());
        const int nd = static_cast<int>(xd.size());
        ASSERT_EQ(QoMathSpectralResample(0, xs.data(), ys.data(), 201, xd.data(), yd.data(), nd), 1);
        double total = 0.0;
        for (float v : yd) total += step * v;
        const double halves = step == 5.0f ? 0.5 * (ys[7] + ys[192]) : 0.0;
        EXPECT_NEAR(total, covered + halves, 1e-5 * covered) << step;
    }
}

TEST(ResampleRanged, BuildsTheGridThenResamples)
{
    auto xs = grid(360, 1, 471);
    auto ys = sample(xs, [](double) { return 3.0; });
    Vec xd(100, -1.0f), yd(100);
    int n = 0;
    auto call = [&](int mode, int max, float start, float end, float step) {
        return QoMathSpectralResampleRangedInterval(mode, xs.data(), ys.data(), 471, xd.data(),
                                                    yd.data(), max, &n, start, end, step);
    };
    EXPECT_EQ(call(0, 80, 380, 780, 5), -2);
    EXPECT_EQ(n, 81);  // reported although it does not fit; xd untouched
    EXPECT_EQ(xd[0], -1.0f);
    EXPECT_EQ(call(0, 100, 380, 780, 5), 1);
    EXPECT_EQ(xd[80], 780.0f);
    EXPECT_FLOAT_EQ(yd[40], 3.0f);
    EXPECT_EQ(call(0, 100, 380, 3e30f, 1e-30f), -2);
    EXPECT_EQ(n, std::numeric_limits<int>::max());
    // Invalid grids, and grids the resample refuses (mode 1, 3 points).
    const float bad[][4] = {{0, 780, 5, 0},    {780, 780, 5, 0}, {380, 780, 0, 0}, {380, 780, kNaN, 0},
                            {kNaN, 780, 5, 0}, {380, 780, 5, 1}, {380, 390, 5, 0}};
    for (const auto& b : bad) EXPECT_EQ(call(int(b[3]), 100, b[0], b[1], b[2]), -1) << b[0] << " " << b[3];
}

TEST(ResampleVB, NewtonSeriesOnEvenGrids)
{
    typ_wlinfo src{380, 780, 5}, dst{381.3f, 700, 2.1f};
    const auto gauss = [](double x) { return std::exp(-std::pow((x - 550) / 40, 2)); };
    auto ys = sample(grid(380, 5, 81), gauss);
    Vec yd(200, -9.0f);
    ASSERT_EQ(InterpolateVB(ys.data(), &src, yd.data(), &dst), 1);
    EXPECT_FLOAT_EQ(dst.end, 381.3f + 151 * 2.1f);  // 152 points
    // Within a tenth of linear interpolation's error; the series stops early
    // where a term happens to be small (at the inflections).
    for (size_t i = 0; i < 152; ++i) EXPECT_NEAR(yd[i], gauss(381.3 + 2.1 * double(i)), 4e-4) << i;
    EXPECT_EQ(yd[152], -9.0f);

    // y = (x - 4.5)^3 at the midpoint 4.5: the lower sample comes first
    // (-0.125); the second term, 0.25 * 0.5, is as large and stays out.
    typ_wlinfo unit{0, 9, 1}, mid{4.5f, 7, 0.5f};
    auto odd = sample(grid(0, 1, 10), [](double x) { return std::pow(x - 4.5, 3); });
    ASSERT_EQ(InterpolateVB(odd.data(), &unit, yd.data(), &mid), 1);
    EXPECT_EQ(yd[0], -0.125f);
    // Nodes 4, 5, then 3 before 6 (equally near): 6, 8, 10 lie on a line, the
    // third term is 0 and the next one stays out: 9.
    Vec kink{1, 2, 4, 6, 8, 10, 16, 30, 50, 80};
    ASSERT_EQ(InterpolateVB(kink.data(), &unit, yd.data(), &mid), 1);
    EXPECT_EQ(yd[0], 9.0f);

    typ_wlinfo same{380, 395, 5};  // equal steps, inside src: a copy, 4 points enough
    ASSERT_EQ(InterpolateVB(ys.data(), &src, yd.data(), &same), 1);
    EXPECT_EQ(yd[3], ys[3]);
    typ_wlinfo half{380, 780, 2.5f};  // in place, on the source array itself
    ys.resize(161);
    ASSERT_EQ(InterpolateVB(ys.data(), &src, ys.data(), &half), 1);
    EXPECT_NEAR(ys[1], gauss(382.5), 2e-4);

    typ_wlinfo short_dst{400, 410, 2.5f}, bad{400, 300, 1}, two{400, 401, 1};  // 5 points; invalid
    EXPECT_EQ(InterpolateVB(kink.data(), &src, yd.data(), &short_dst), -1);
    EXPECT_EQ(InterpolateVB(kink.data(), &bad, yd.data(), &dst), -1);
    EXPECT_EQ(InterpolateVB(nullptr, &src, yd.data(), &dst), -1);
    EXPECT_EQ(InterpolateLinearArrayToPolyArray(0, &src), 1);
    for (typ_wlinfo* r : {&two, &bad, static_cast<typ_wlinfo*>(nullptr)})
        EXPECT_EQ(InterpolateLinearArrayToPolyArray(0, r), -1);
}

TEST(Lagrange, PolynomialValuesWindowsAndStatusCodes)
{
    float px[] = {0, 1, 2}, py[] = {1, 3, 7};  // 1 + x + x^2
    EXPECT_FLOAT_EQ(InterpolateLagrangePolynomial(px, py, 3, 1.5f), 4.75f);
    EXPECT_EQ(InterpolateLagrangePolynomial(px, py, 1, 9.0f), 1.0f);
    EXPECT_TRUE(InterpolateLagrangePolynomial(px, py, 0, 1.5f) == 0.0f &&
                InterpolateLagrangePolynomial(nullptr, py, 3, 1.5f) == 0.0f);

    // Uneven grid; a polynomial of degree <= order is reproduced.
    Vec xs, xd = grid(401.7f, 3.1f, 90), yd(90);
    for (int i = 0; i < 40; ++i) xs.push_back(400.0f + 7.5f * float(i) + (i % 3 == 1 ? 2.0f : 0.0f));
    for (int order = 0; order <= 5; ++order) {
        const auto p = [order](double x) {
            const double u = (x - 550) / 100;
            return 2 + std::pow(u, order) - 0.5 * std::pow(u, order > 0 ? order - 1 : 0);
        };
        auto ys = sample(xs, p);
        ASSERT_EQ(InterpolateVectorLagrange(xs.data(), ys.data(), 40, xd.data(), yd.data(), 90, order), 1);
        for (size_t i = 0; i < 90; ++i) EXPECT_NEAR(yd[i], p(xd[i]), 2e-5) << order << " " << i;
    }

    // The window: order 3 around nearest index 10 starts at 9 (bit for bit the
    // polynomial over xs[9..12]); near index 1 or 2 it starts at 0; a window
    // ending on the last-but-one sample (35..38) or beyond ends on the last.
    auto ys = sample(xs, [](double x) { return std::sin(x / 11); });
    float at[] = {xs[10] + 0.3f, xs[1] + 0.2f, xs[2] - 0.1f, xs[36] + 0.1f, xs[39] - 0.01f}, got[5];
    ASSERT_EQ(InterpolateVectorLagrange(xs.data(), ys.data(), 40, at, got, 5, 3), 1);
    const int first[] = {9, 0, 0, 36, 36};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(got[i], InterpolateLagrangePolynomial(&xs[first[i]], &ys[first[i]], 4, at[i])) << i;
    ASSERT_EQ(InterpolateVectorLagrange(xs.data(), ys.data(), 40, at, got, 5, 0), 1);
    EXPECT_EQ(got[1], ys[0]);  // nearest index 1 reads sample 0 at order 0

    // Status codes on y = x: {nSrc, nDst, order, status}; 5 samples cannot
    // carry degree 5; then destinations beyond either end, and a NaN sample.
    xs = grid(400, 5, 20);
    ys = xs;
    xd = grid(410, 7, 10);
    yd.assign(10, -1.0f);
    auto call = [&](int ns, int nd, int order) {
        return InterpolateVectorLagrange(xs.data(), ys.data(), ns, xd.data(), yd.data(), nd, order);
    };
    const int codes[][4] = {{20, 10, 6, -2}, {20, 10, -1, -2}, {4, 10, 3, -1}, {20, 4, 3, -1}, {5, 5, 5, -1}};
    for (const auto& c : codes) EXPECT_EQ(call(c[0], c[1], c[2]), c[3]) << c[0] << " " << c[1] << " " << c[2];
    EXPECT_EQ(InterpolateVectorLagrange(nullptr, ys.data(), 20, xd.data(), yd.data(), 10, 3), -1);
    xd[0] = 399.9f;
    EXPECT_EQ(call(20, 10, 3), -3);
    xd[0] = 410;
    xd[9] = 495.1f;
    EXPECT_EQ(call(20, 10, 3), -4);
    EXPECT_EQ(yd[0], -1.0f);
    xd[9] = 473;
    ys[12] = kNaN;  // xs[12] = 460 enters the window (9..12) of 452
    EXPECT_EQ(call(20, 10, 3), -5);
    EXPECT_FLOAT_EQ(yd[5], 445.0f);
    EXPECT_EQ(yd[6], -1.0f);
}

std::unique_ptr<typ_matrix2d> matrix(int rows, float row0, float row_step, int cols, float col0,
                                     float col_step)
{
    auto m = std::make_unique<typ_matrix2d>();
    m->rows = rows;
    m->cols = cols;
    for (int r = 0; r < rows; ++r) m->rowWl[r] = row0 + row_step * static_cast<float>(r);
    for (int c = 0; c < cols; ++c) m->colWl[c] = col0 + col_step * static_cast<float>(c);
    return m;
}

TEST(LagrangeMatrix, SeparablePolynomialsAndTheVectorRule)
{
    // (1 + u + u^2) (2 - v^3): degree 2 along rows, 3 along columns.
    const auto f = [](double r, double c) {
        const double u = (r - 300) / 50, v = (c - 500) / 80;
        return (1 + u + u * u) * (2 - v * v * v);
    };
    auto src = matrix(30, 250, 4, 40, 400, 5);
    for (int r = 0; r < 30; ++r)
        for (int c = 0; c < 40; ++c) src->values[r * 40 + c] = float(f(src->rowWl[r], src->colWl[c]));
    auto dst = matrix(17, 251.5f, 6.5f, 23, 390, 8.3f);  // columns start below the source's
    ASSERT_EQ(InterpolateMatrixLagrange(src.get(), dst.get(), 3), 1);
    for (int r = 0; r < 17; ++r)
        for (int c = 0; c < 23; ++c)
            EXPECT_NEAR(dst->values[r * 23 + c], f(dst->rowWl[r], dst->colWl[c]), 1e-4) << r << " " << c;

    // On the source's own rows each row is, bit for bit, the vector rule.
    auto same_rows = matrix(30, 250, 4, 23, 401, 8.3f);
    ASSERT_EQ(InterpolateMatrixLagrange(src.get(), same_rows.get(), 2), 1);
    Vec row(23);
    for (int r = 0; r < 30; ++r) {
        float* values = &src->values[r * 40];
        ASSERT_EQ(InterpolateVectorLagrange(src->colWl, values, 40, same_rows->colWl, row.data(), 23, 2), 1);
        EXPECT_EQ(Vec(&same_rows->values[r * 23], &same_rows->values[r * 23 + 23]), row) << r;
    }

    // In place onto its own axes: the values come back.
    auto copy = std::make_unique<typ_matrix2d>(*src);
    ASSERT_EQ(InterpolateMatrixLagrange(src.get(), src.get(), 5), 1);
    for (int i = 0; i < 30 * 40; ++i) EXPECT_NEAR(src->values[i], copy->values[i], 1e-4) << i;
}

TEST(LagrangeMatrix, StatusCodesAndHostileRecords)
{
    auto src = matrix(10, 300, 10, 10, 500, 10), dst = matrix(5, 300, 20, 5, 500, 20);
    dst->values[0] = -3.0f;
    EXPECT_EQ(InterpolateMatrixLagrange(nullptr, dst.get(), 3), -1);
    EXPECT_EQ(InterpolateMatrixLagrange(src.get(), nullptr, 3), -2);
    EXPECT_EQ(InterpolateMatrixLagrange(src.get(), dst.get(), 6), -3);
    EXPECT_EQ(InterpolateMatrixLagrange(src.get(), dst.get(), -1), -3);
    // Axis counts under 5, over 1024, negative, or a value block beyond the record.
    const int hostile[][2] = {{4, 10}, {10, 4}, {1025, 10}, {10, -7}, {1000, 1000}, {2147483647, 2147483647}};
    for (const auto& h : hostile) {
        auto junk = matrix(5, 300, 20, 5, 500, 20);
        junk->rows = h[0], junk->cols = h[1];
        EXPECT_EQ(InterpolateMatrixLagrange(junk.get(), dst.get(), 3), -1) << h[0] << "x" << h[1];
        EXPECT_EQ(InterpolateMatrixLagrange(src.get(), junk.get(), 3), -2) << h[0] << "x" << h[1];
    }
    src->rows = 5;
    EXPECT_EQ(InterpolateMatrixLagrange(src.get(), dst.get(), 5), -1);  // 5 rows, degree 5
    src->rows = 10;
    // Destination axes beyond the source's: first row, last row, last column.
    const struct { float* axis; float value; int status; } beyond[] = {
        {&dst->rowWl[0], 299, -4}, {&dst->rowWl[4], 391, -5}, {&dst->colWl[4], 591, -6}};
    for (const auto& b : beyond) {
        const float kept = *b.axis;
        *b.axis = b.value;
        EXPECT_EQ(InterpolateMatrixLagrange(src.get(), dst.get(), 3), b.status);
        *b.axis = kept;
    }
    EXPECT_EQ(dst->values[0], -3.0f);
    dst->colWl[2] = kNaN;  // not caught by the axis checks: NaN values, no harm
    EXPECT_EQ(InterpolateMatrixLagrange(src.get(), dst.get(), 3), 1);
}

}  // namespace
