// Wavelength range records, grid helpers, polynomial calibration, library info.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "qomath/grid.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

TEST(Grid, PointCountRule)
{
    const typ_wlinfo visible{380, 780, 5};
    EXPECT_EQ(WLNumPts(&visible), 81);
    const typ_wlinfo cie{360, 830, 1};
    EXPECT_EQ(WLNumPts(&cie), 471);
    // 340 / 0.1f is a hair under 3400: the 0.001 allowance keeps 3401 points.
    const typ_wlinfo fine{360, 700, 0.1f};
    EXPECT_EQ(WLNumPts(&fine), 3401);
    // A step that does not divide the span truncates.
    EXPECT_EQ(WLNumberPts(380, 781, 5), 81);
    EXPECT_EQ(WLNumberPts(400, 400, 1), 1);

    // Invalid records count 0 points.
    EXPECT_EQ(WLNumberPts(380, 780, 0), 0);
    EXPECT_EQ(WLNumberPts(380, 780, 1e-8f), 0);
    EXPECT_EQ(WLNumberPts(-1, 780, 5), 0);
    EXPECT_EQ(WLNumberPts(500, 400, 1), 0);
    EXPECT_EQ(WLNumberPts(0, 5, 6), 0);  // step > end
    EXPECT_EQ(WLNumPts(nullptr), 0);
    // Hostile values: NaN anywhere, or a count beyond any int.
    EXPECT_EQ(WLNumberPts(kNaN, 780, 5), 0);
    EXPECT_EQ(WLNumberPts(380, kNaN, 5), 0);
    EXPECT_EQ(WLNumberPts(380, 780, kNaN), 0);
    EXPECT_EQ(WLNumberPts(0, kInf, 1), 0);
    EXPECT_EQ(WLNumberPts(0, 3e38f, 1e-7f), 0);
}

TEST(Grid, StepSizeAndPosition)
{
    EXPECT_FLOAT_EQ(WLStepSize(380, 780, 81), 5.0f);
    EXPECT_EQ(WLStepSize(380, 780, 1), 0.0f);
    EXPECT_EQ(WLStepSize(780, 380, 81), 0.0f);
    EXPECT_EQ(WLStepSize(380, 380, 5), 0.0f);

    const typ_wlinfo r{380, 780, 5};
    EXPECT_EQ(WLArrayPosition(&r, 380), 0);
    EXPECT_EQ(WLArrayPosition(&r, 780), 80);
    EXPECT_EQ(WLArrayPosition(&r, 555), 35);
    EXPECT_EQ(WLArrayPosition(&r, 557.5f), 35);
    // A hair below a grid point belongs to the point before it.
    EXPECT_EQ(WLArrayPosition(&r, std::nextafter(385.0f, 0.0f)), 0);
    EXPECT_EQ(WLArrayPosition(&r, 379.99f), -1);
    EXPECT_EQ(WLArrayPosition(&r, 780.01f), -1);
    EXPECT_EQ(WLArrayPosition(&r, kNaN), -1);
    const typ_wlinfo bad{380, 780, 0};
    EXPECT_EQ(WLArrayPosition(&bad, 500), -1);
    EXPECT_EQ(WLArrayPosition(nullptr, 500), -1);
}

TEST(Grid, RoundoffCheckSnapsOnlyWithinHalfAPercent)
{
    float a = 500, b = 502;  // ratio 1.004
    EXPECT_EQ(RoundoffCheck(&a, &b), 1);
    EXPECT_EQ(a, 502.0f);
    a = 500, b = 503;  // ratio 1.006
    EXPECT_EQ(RoundoffCheck(&a, &b), 0);
    EXPECT_EQ(a, 500.0f);
    a = 500, b = 497.6f;  // ratio 0.9952
    EXPECT_EQ(RoundoffCheck(&a, &b), 1);
    a = 0, b = 0;
    EXPECT_EQ(RoundoffCheck(&a, &b), 0);
    a = -500, b = -502;  // same sign, ratio 1.004
    EXPECT_EQ(RoundoffCheck(&a, &b), 1);
    a = 500, b = -500;
    EXPECT_EQ(RoundoffCheck(&a, &b), 0);
    EXPECT_EQ(RoundoffCheck(nullptr, &b), 0);
    EXPECT_EQ(RoundoffCheck(&a, nullptr), 0);
}

TEST(Grid, ZeroPadAddsOneStepBeyondEachBound)
{
    const typ_wlinfo in{400, 700, 10};
    std::vector<float> values(40, 0.0f);  // readable for as many points as the output has
    for (int i = 0; i < 31; ++i) values[static_cast<size_t>(i)] = static_cast<float>(i + 1);
    std::vector<float> out(3 + 37 + 8, -1.0f);
    typ_wlinfo out_range{380, 720, 0};
    ASSERT_EQ(ZeroPadSpectralData(values.data(), &in, out.data(), &out_range), 1);
    EXPECT_EQ(out_range.start, 370.0f);
    EXPECT_EQ(out_range.end, 730.0f);
    EXPECT_EQ(out_range.step, 10.0f);
    ASSERT_EQ(WLNumPts(&out_range), 37);
    // Three zeros (370, 380, 390), the data from 400 to 700, then zeros.
    for (int i = 0; i < 3; ++i) EXPECT_EQ(out[static_cast<size_t>(i)], 0.0f);
    for (int i = 0; i < 31; ++i) EXPECT_EQ(out[static_cast<size_t>(3 + i)], i + 1.0f);
    for (int i = 34; i < 37; ++i) EXPECT_EQ(out[static_cast<size_t>(i)], 0.0f);
    // Nothing was written past trunc(q_low) + points.
    for (size_t i = 40; i < out.size(); ++i) EXPECT_EQ(out[i], -1.0f);

    // Asking for exactly the input range still pads by one step each side.
    out_range = {400, 700, 0};
    ASSERT_EQ(ZeroPadSpectralData(values.data(), &in, out.data(), &out_range), 1);
    EXPECT_EQ(out_range.start, 390.0f);
    EXPECT_EQ(out_range.end, 710.0f);
    EXPECT_EQ(out[0], 0.0f);
    EXPECT_EQ(out[1], 1.0f);

    const typ_wlinfo flat{400, 700, 0};
    EXPECT_EQ(ZeroPadSpectralData(values.data(), &flat, out.data(), &out_range), -1);
    EXPECT_EQ(ZeroPadSpectralData(nullptr, &in, out.data(), &out_range), -1);
    // A requested start above the data would write before the output array.
    out_range = {450, 700, 0};
    EXPECT_EQ(ZeroPadSpectralData(values.data(), &in, out.data(), &out_range), -1);
}

TEST(Grid, TrapezoidIntegration)
{
    const float x[] = {400, 401, 403, 406};
    const float y[] = {1, 3, 3, 1};
    // 2 + 6 + 6
    EXPECT_FLOAT_EQ(IntegrationDiscrete(x, y, 4), 14.0f);
    EXPECT_EQ(IntegrationDiscrete(x, y, 1), 0.0f);
    EXPECT_EQ(IntegrationDiscrete(nullptr, y, 4), 0.0f);
    // A repeated wavelength gives 0, not the sum of the good intervals before it.
    const float xr[] = {400, 401, 401, 402};
    EXPECT_EQ(IntegrationDiscrete(xr, y, 4), 0.0f);

    // The double variant divides by the interval; on a 1 nm grid both agree.
    const double xd[] = {400, 401, 402, 403};
    const double yd[] = {1, 3, 3, 1};
    const float xf[] = {400, 401, 402, 403};
    EXPECT_DOUBLE_EQ(IntegrationDiscreteD(xd, yd, 4), 7.0);
    EXPECT_FLOAT_EQ(IntegrationDiscrete(xf, y, 4), 7.0f);
    const double xw[] = {400, 402, 404};
    const double yw[] = {2, 2, 2};
    EXPECT_DOUBLE_EQ(IntegrationDiscreteD(xw, yw, 3), 2.0);  // 2/2 + 2/2
    const double xrd[] = {400, 399, 401};
    EXPECT_EQ(IntegrationDiscreteD(xrd, yw, 3), 0.0);
    EXPECT_EQ(IntegrationDiscreteD(xd, nullptr, 4), 0.0);
}

TEST(Grid, PolynomialCalibration)
{
    // A typical array spectrometer: 340 nm at pixel 0, about 0.4 nm per pixel.
    const double c[] = {340.0, 0.4, -2e-5, 1e-9};
    auto wl = [&](double p) { return c[0] + c[1] * p + c[2] * p * p + c[3] * p * p * p; };
    EXPECT_DOUBLE_EQ(WavelengthForPixelFromPolyCal(c, 3, 0), 340.0);
    EXPECT_NEAR(WavelengthForPixelFromPolyCal(c, 3, 512), wl(512), 1e-9);
    EXPECT_NEAR(WavelengthForPixelFromPolyCal(c, 1, 512), 340.0 + 0.4 * 512, 1e-9);
    EXPECT_EQ(WavelengthForPixelFromPolyCal(c, 3, -1), 0.0);
    EXPECT_EQ(WavelengthForPixelFromPolyCal(c, -1, 5), 0.0);

    std::vector<float> arr(1024);
    EXPECT_EQ(WavelengthArrayFromPolyCal(c, 3, 1024, arr.data()), 1);
    EXPECT_FLOAT_EQ(arr[1023], static_cast<float>(wl(1023)));
    EXPECT_EQ(WavelengthArrayFromPolyCal(c, 3, 0, arr.data()), 1);

    // The pixel search and the calibration agree with each other.
    const int p = PixelFromWavelengthPolyCal(c, 3, 555.0, 1024);
    EXPECT_GE(WavelengthForPixelFromPolyCal(c, 3, p), 555.0);
    EXPECT_LT(WavelengthForPixelFromPolyCal(c, 3, p - 1), 555.0);
    EXPECT_EQ(PixelFromWavelengthPolyCal(c, 3, 200.0, 1024), 0);
    EXPECT_EQ(PixelFromWavelengthPolyCal(c, 3, 2000.0, 1024), 1023);
    EXPECT_EQ(PixelFromWavelengthPolyCal(c, 3, 500.0, 0), -1);
}

TEST(Grid, RangePrepTakesTheCoarserGridOverTheCommonRange)
{
    std::vector<float> fine, coarse, out(1000);
    for (int w = 380; w <= 780; ++w) fine.push_back(static_cast<float>(w));
    for (int w = 380; w <= 780; w += 5) coarse.push_back(static_cast<float>(w));
    int n = 0;
    ASSERT_EQ(WavelengthRangePrep(fine.data(), static_cast<int>(fine.size()), coarse.data(),
                                  static_cast<int>(coarse.size()), out.data(), &n),
              1);
    EXPECT_EQ(n, 81);
    EXPECT_EQ(out[1], 385.0f);
    // Order does not matter for the winner.
    ASSERT_EQ(WavelengthRangePrep(coarse.data(), 81, fine.data(), 401, out.data(), &n), 1);
    EXPECT_EQ(n, 81);

    // Partial overlap: 5 nm grid 500..900 against the 1 nm grid 380..780.
    std::vector<float> red;
    for (int w = 500; w <= 900; w += 5) red.push_back(static_cast<float>(w));
    ASSERT_EQ(WavelengthRangePrep(fine.data(), 401, red.data(), 81, out.data(), &n), 1);
    EXPECT_EQ(n, 57);  // 500..780
    EXPECT_EQ(out[0], 500.0f);
    EXPECT_EQ(out[56], 780.0f);

    // Equal grids: the second array's points are written.
    const std::vector<float> a{400, 402, 404, 406};
    const std::vector<float> b{400, 402, 404.5f, 406};
    ASSERT_EQ(WavelengthRangePrep(a.data(), 4, b.data(), 4, out.data(), &n), 1);
    EXPECT_EQ(out[2], 404.5f);

    EXPECT_EQ(WavelengthRangePrep(a.data(), 2, b.data(), 4, out.data(), &n), -1);
    EXPECT_EQ(WavelengthRangePrep(nullptr, 4, b.data(), 4, out.data(), &n), -1);
    const std::vector<float> down{406, 404, 402, 400};
    EXPECT_EQ(WavelengthRangePrep(down.data(), 4, b.data(), 4, out.data(), &n), -2);
    // Overlap of a single point is too short.
    const std::vector<float> far{406, 408, 410, 412};
    EXPECT_EQ(WavelengthRangePrep(a.data(), 4, far.data(), 4, out.data(), &n), -3);
}

TEST(Grid, CreateArray)
{
    std::vector<float> wl(4096);
    int n = 0;
    const typ_wlinfo r{380, 780, 5};
    ASSERT_EQ(WavelengthCreateArray(&r, wl.data(), &n), 1);
    EXPECT_EQ(n, 81);
    EXPECT_EQ(wl[0], 380.0f);
    EXPECT_EQ(wl[80], 780.0f);
    const typ_wlinfo too_many{0, 4100, 1};
    EXPECT_EQ(WavelengthCreateArray(&too_many, wl.data(), &n), -1);
    const typ_wlinfo max{0, 4095, 1};
    EXPECT_EQ(WavelengthCreateArray(&max, wl.data(), &n), 1);
    EXPECT_EQ(n, 4096);
    const typ_wlinfo two{380, 381, 1};
    EXPECT_EQ(WavelengthCreateArray(&two, wl.data(), &n), -1);
    EXPECT_EQ(WavelengthCreateArray(nullptr, wl.data(), &n), -1);
    EXPECT_EQ(WavelengthCreateArray(&r, nullptr, &n), -2);
}

TEST(LibraryInfo, VersionAndBuildTexts)
{
    EXPECT_STREQ(GetQOMathDLLversion(), "1.7.6");
    char v[25], d[25], t[25];
    std::memset(d, 'x', sizeof d);
    EXPECT_EQ(GetDllBuildInfo(v, d, t), 8);
    EXPECT_STREQ(v, "1.7.6");
    EXPECT_STREQ(d, "May  3 2020");
    EXPECT_STREQ(t, "15:27:32");
    EXPECT_EQ(GetDllBuildInfo(nullptr, d, t), -1);
    EXPECT_EQ(MATHDLLCHECK(), 1.0);
}

TEST(LibraryInfo, ClockAndDelay)
{
    const double now = GetCurrentSystemTime();
    EXPECT_GE(now, 0.0);
    EXPECT_LT(now, 86400.0);
    // Milliseconds as the fraction: a whole number of milliseconds.
    EXPECT_NEAR(now * 1000.0, std::round(now * 1000.0), 1e-3);

    auto elapsed_ms = [](unsigned ms) {
        const double t0 = GetCurrentSystemTime();
        MathDelayMilliSeconds(ms);
        double dt = GetCurrentSystemTime() - t0;
        if (dt < 0) dt += 86400.0;
        return dt * 1000.0;
    };
    EXPECT_LT(elapsed_ms(0), 50.0);
    EXPECT_GE(elapsed_ms(20), 19.0);   // busy-waited
    EXPECT_GE(elapsed_ms(201), 200.0);  // slept
}

}  // namespace
