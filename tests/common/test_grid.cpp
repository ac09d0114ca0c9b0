// Wavelength range records, grid helpers, polynomial calibration, library info.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <tuple>
#include <vector>

#include "qomath/grid.h"

namespace {

using Vec = std::vector<float>;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

auto fields(const typ_wlinfo& r) { return std::tuple(r.start, r.end, r.step); }

TEST(Grid, PointCountStepAndPosition)
{
    const struct { float start, end, step; int n; } cases[] = {
        {380, 780, 5, 81}, {360, 830, 1, 471}, {400, 400, 1, 1},
        {360, 700, 0.1f, 3401},  // 340 / 0.1f is a hair under 3400: the 0.001 allowance
        {380, 781, 5, 81},       // a step that does not divide the span truncates
        // Invalid records count 0 points: zero or tiny step, negative start,
        // reversed, step > end, NaN anywhere, a count beyond any int.
        {380, 780, 0, 0}, {380, 780, 1e-8f, 0}, {-1, 780, 5, 0}, {500, 400, 1, 0}, {0, 5, 6, 0},
        {kNaN, 780, 5, 0}, {380, kNaN, 5, 0}, {380, 780, kNaN, 0}, {0, kInf, 1, 0},
        {0, 3e38f, 1e-7f, 0}};
    for (const auto& c : cases) {
        const typ_wlinfo r{c.start, c.end, c.step};
        EXPECT_EQ(WLNumPts(&r), c.n) << c.start << " " << c.end << " " << c.step;
        EXPECT_EQ(WLNumberPts(c.start, c.end, c.step), c.n);
    }
    EXPECT_EQ(WLNumPts(nullptr), 0);
    EXPECT_FLOAT_EQ(WLStepSize(380, 780, 81), 5.0f);
    EXPECT_TRUE(WLStepSize(380, 780, 1) == 0.0f && WLStepSize(780, 380, 81) == 0.0f);

    // A hair below a grid point belongs to the point before it.
    const typ_wlinfo r{380, 780, 5}, bad{380, 780, 0};
    const std::pair<float, int> at[] = {{380, 0},  {780, 80},     {555, 35},     {557.5f, 35},
                                        {std::nextafter(385.0f, 0.0f), 0},
                                        {379.99f, -1}, {780.01f, -1}, {kNaN, -1}};
    for (auto [wl, i] : at) EXPECT_EQ(WLArrayPosition(&r, wl), i) << wl;
    EXPECT_TRUE(WLArrayPosition(&bad, 500) == -1 && WLArrayPosition(nullptr, 500) == -1);
}

TEST(Grid, RoundoffCheckSnapsOnlyWithinHalfAPercent)
{
    // {a, b, status, a afterwards}: ratios 1.004, 1.006, 0.9952, zero, same
    // sign negative, opposite signs.
    const float cases[][4] = {{500, 502, 1, 502}, {500, 503, 0, 500},       {500, 497.6f, 1, 497.6f},
                              {0, 0, 0, 0},       {-500, -502, 1, -502}, {500, -500, 0, 500}};
    for (const auto& c : cases) {
        float a = c[0];
        EXPECT_EQ(RoundoffCheck(&a, &c[1]), c[2]) << c[0] << " " << c[1];
        EXPECT_EQ(a, c[3]);
    }
    float a = 1;
    EXPECT_TRUE(RoundoffCheck(nullptr, &a) == 0 && RoundoffCheck(&a, nullptr) == 0);
}

TEST(Grid, ZeroPadAddsOneStepBeyondEachBound)
{
    const typ_wlinfo in{400, 700, 10};
    Vec values(40, 0.0f);  // readable for as many points as the output has
    for (int i = 0; i < 31; ++i) values[static_cast<size_t>(i)] = static_cast<float>(i + 1);
    Vec out(3 + 37 + 8, -1.0f);
    typ_wlinfo out_range{380, 720, 0};
    ASSERT_EQ(ZeroPadSpectralData(values.data(), &in, out.data(), &out_range), 1);
    EXPECT_EQ(fields(out_range), std::tuple(370.0f, 730.0f, 10.0f));
    ASSERT_EQ(WLNumPts(&out_range), 37);
    // Zeros at 370..390, the data from 400 to 700, zeros to 730 (and the
    // copied zero tail of the input), nothing written past trunc(q_low) + points.
    for (size_t i = 0; i < out.size(); ++i)
        EXPECT_EQ(out[i], i >= 40 ? -1.0f : i >= 3 && i < 34 ? float(i - 2) : 0.0f) << i;

    // Asking for exactly the input range still pads by one step each side.
    out_range = {400, 700, 0};
    ASSERT_EQ(ZeroPadSpectralData(values.data(), &in, out.data(), &out_range), 1);
    EXPECT_EQ(fields(out_range), std::tuple(390.0f, 710.0f, 10.0f));
    EXPECT_TRUE(out[0] == 0.0f && out[1] == 1.0f);

    // A flat record, a null pointer, or a requested start above the data
    // (which would write before the output array).
    const typ_wlinfo flat{400, 700, 0};
    EXPECT_TRUE(ZeroPadSpectralData(values.data(), &flat, out.data(), &out_range) == -1 &&
                ZeroPadSpectralData(nullptr, &in, out.data(), &out_range) == -1);
    out_range = {450, 700, 0};
    EXPECT_EQ(ZeroPadSpectralData(values.data(), &in, out.data(), &out_range), -1);
}

TEST(Grid, TrapezoidIntegration)
{
    const float x[] = {400, 401, 403, 406}, y[] = {1, 3, 3, 1};
    EXPECT_FLOAT_EQ(IntegrationDiscrete(x, y, 4), 14.0f);  // 2 + 6 + 6
    EXPECT_TRUE(IntegrationDiscrete(x, y, 1) == 0.0f && IntegrationDiscrete(nullptr, y, 4) == 0.0f);
    // A repeated wavelength gives 0, not the sum of the good intervals before it.
    const float xr[] = {400, 401, 401, 402};
    EXPECT_EQ(IntegrationDiscrete(xr, y, 4), 0.0f);

    // The double variant divides by the interval; on a 1 nm grid both agree.
    const double xd[] = {400, 401, 402, 403}, yd[] = {1, 3, 3, 1};
    EXPECT_DOUBLE_EQ(IntegrationDiscreteD(xd, yd, 4), 7.0);
    const double xw[] = {400, 402, 404}, yw[] = {2, 2, 2}, xrd[] = {400, 399, 401};
    EXPECT_DOUBLE_EQ(IntegrationDiscreteD(xw, yw, 3), 2.0);  // 2/2 + 2/2
    EXPECT_TRUE(IntegrationDiscreteD(xrd, yw, 3) == 0.0 && IntegrationDiscreteD(xd, nullptr, 4) == 0.0);
}

TEST(Grid, PolynomialCalibration)
{
    const double c[] = {340.0, 0.4, -2e-5, 1e-9};
    auto wl = [&](double p) { return c[0] + c[1] * p + c[2] * p * p + c[3] * p * p * p; };
    EXPECT_NEAR(WavelengthForPixelFromPolyCal(c, 3, 512), wl(512), 1e-9);
    EXPECT_NEAR(WavelengthForPixelFromPolyCal(c, 1, 512), 340.0 + 0.4 * 512, 1e-9);
    EXPECT_TRUE(WavelengthForPixelFromPolyCal(c, 3, -1) == 0.0 && WavelengthForPixelFromPolyCal(c, -1, 5) == 0.0);
    Vec arr(1024);
    EXPECT_EQ(WavelengthArrayFromPolyCal(c, 3, 1024, arr.data()), 1);
    EXPECT_FLOAT_EQ(arr[1023], static_cast<float>(wl(1023)));

    // The pixel search and the calibration agree with each other.
    const int p = PixelFromWavelengthPolyCal(c, 3, 555.0, 1024);
    EXPECT_GE(WavelengthForPixelFromPolyCal(c, 3, p), 555.0);
    EXPECT_LT(WavelengthForPixelFromPolyCal(c, 3, p - 1), 555.0);
    const struct { double wl; int n, pixel; } ends[] = {{200, 1024, 0}, {2000, 1024, 1023}, {500, 0, -1}};
    for (const auto& e : ends) EXPECT_EQ(PixelFromWavelengthPolyCal(c, 3, e.wl, e.n), e.pixel) << e.wl;
}

TEST(Grid, RangePrepTakesTheCoarserGridAndCreateArray)
{
    Vec fine, coarse, red, out(1000);
    for (int w = 380; w <= 780; ++w) fine.push_back(static_cast<float>(w));
    for (int w = 380; w <= 780; w += 5) coarse.push_back(static_cast<float>(w));
    for (int w = 500; w <= 900; w += 5) red.push_back(static_cast<float>(w));
    int n = 0;
    auto prep = [&](const Vec& a, int na, const Vec& b, int nb) {
        return WavelengthRangePrep(a.data(), na, b.data(), nb, out.data(), &n);
    };
    ASSERT_EQ(prep(fine, 401, coarse, 81), 1);
    EXPECT_TRUE(n == 81 && out[1] == 385.0f);
    ASSERT_EQ(prep(coarse, 81, fine, 401), 1);  // order does not matter for the winner
    EXPECT_EQ(n, 81);
    ASSERT_EQ(prep(fine, 401, red, 81), 1);
    EXPECT_EQ(n, 57);  // partial overlap, 500..780
    EXPECT_TRUE(out[0] == 500.0f && out[56] == 780.0f);

    // Equal grids: the second array's points are written.
    const Vec a{400, 402, 404, 406}, b{400, 402, 404.5f, 406}, down{406, 404, 402, 400}, far{406, 408, 410, 412};
    ASSERT_EQ(prep(a, 4, b, 4), 1);
    EXPECT_EQ(out[2], 404.5f);
    EXPECT_TRUE(prep(a, 2, b, 4) == -1 &&
                WavelengthRangePrep(nullptr, 4, b.data(), 4, out.data(), &n) == -1);
    EXPECT_EQ(prep(down, 4, b, 4), -2);
    EXPECT_EQ(prep(a, 4, far, 4), -3);  // an overlap of a single point is too short

    // A record's own points, 3 to 4096 of them.
    Vec wl(4096);
    const typ_wlinfo r{380, 780, 5}, max{0, 4095, 1}, too_many{0, 4100, 1}, two{380, 381, 1};
    ASSERT_EQ(WavelengthCreateArray(&r, wl.data(), &n), 1);
    EXPECT_TRUE(n == 81 && wl[0] == 380.0f && wl[80] == 780.0f);
    EXPECT_EQ(WavelengthCreateArray(&max, wl.data(), &n), 1);
    EXPECT_EQ(n, 4096);
    for (const typ_wlinfo* bad : {&too_many, &two, static_cast<const typ_wlinfo*>(nullptr)})
        EXPECT_EQ(WavelengthCreateArray(bad, wl.data(), &n), -1);
    EXPECT_EQ(WavelengthCreateArray(&r, nullptr, &n), -2);
}

TEST(LibraryInfo, VersionBuildTextsClockAndDelay)
{
    EXPECT_STREQ(GetQOMathDLLversion(), "1.7.6");
    char v[25], d[25], t[25];
    std::memset(d, 'x', sizeof d);
    EXPECT_EQ(GetDllBuildInfo(v, d, t), 8);
    EXPECT_EQ(std::tuple(std::string(v), std::string(d), std::string(t)),
              std::tuple("1.7.6", "May  3 2020", "15:27:32"));
    EXPECT_EQ(GetDllBuildInfo(nullptr, d, t), -1);
    EXPECT_EQ(MATHDLLCHECK(), 1.0);

    const double now = GetCurrentSystemTime();
    EXPECT_TRUE(now >= 0.0 && now < 86400.0) << now;
    // Milliseconds as the fraction: a whole number of milliseconds.
    EXPECT_NEAR(now * 1000.0, std::round(now * 1000.0), 1e-3);
    auto elapsed_ms = [](unsigned ms) {
        const double t0 = GetCurrentSystemTime();
        MathDelayMilliSeconds(ms);
        const double dt = GetCurrentSystemTime() - t0;
        return (dt < 0 ? dt + 86400.0 : dt) * 1000.0;
    };
    EXPECT_LT(elapsed_ms(0), 50.0);
    EXPECT_GE(elapsed_ms(20), 19.0);    // busy-waited
    EXPECT_GE(elapsed_ms(201), 200.0);  // slept
}

}  // namespace
