// The calculation context: the compatible one is the C exports exactly, the
// data one agrees with itself, and caches never give one spectrum another's
// result.
#include "colorimetry/colour_tests.hpp"

#include "colorimetry/context.hpp"
#include "colorimetry/photometry.hpp"
#include "colorimetry/summary.hpp"
#include "colorimetry/tristimulus.hpp"

namespace {

using namespace qomath;
constexpr auto kYbar = tristimulus::Components::ybar1931;

// A lamp of a line at 450 nm on a slow wave, 380..780 nm, its grid shifted.
Spectrum lamp(float step, float shift = 0.0f)
{
    Spectrum s = grid(380, 780, step, [](float x) {
        return 1 + 0.5 * std::sin(x / 40.0) + std::exp(-0.5 * std::pow((x - 450) / 10.0, 2));
    });
    for (float& w : s.wl) w += shift;
    return s;
}

TEST(Context, CompatibleIsTheExportsAndRepeatsItself)
{
    // The resampled-table cache: the same grid again gives the same bits, and
    // Interpolate2's cache is left as computing would leave it (its last key
    // is z-bar on this grid, so asking for z-bar's values there hits it).
    const Spectrum a = lamp(5.0f);
    float first[3], again[3];
    ASSERT_EQ(CalcTristimulusXYZ1931_2(a.wl.data(), a.v.data(), a.n(), first), 1);
    Vec scratch(static_cast<size_t>(a.n()), 0.5f), out(scratch.size()), grid(a.wl);
    Interpolate2(grid.data(), scratch.data(), a.n(), grid.data(), out.data(), a.n());
    ASSERT_EQ(CalcTristimulusXYZ1931_2(a.wl.data(), a.v.data(), a.n(), again), 1);
    EXPECT_EQ(std::memcmp(first, again, sizeof first), 0);
    float cc1[QOMATH_CC_COUNT], cc2[QOMATH_CC_COUNT];
    ASSERT_EQ(ColorimetricCalc(a.wl.data(), a.v.data(), a.n(), 1, 0, 1, cc1), 1);
    ASSERT_EQ(summary::colorimetric(colorimetry::compatible_context(), a.wl.data(), a.v.data(),
                                    a.n(), 1, 0, 1, cc2, nullptr), 1);
    EXPECT_EQ(std::memcmp(cc1, cc2, sizeof cc1), 0);
}

TEST(Context, DataSamplingAgreesWithItselfOnEveryGrid)
{
    numerics::Interpolate2State cache;
    const colorimetry::Context ctx{colorimetry::Sampling::data, &cache};
    // Same values on shifted wavelengths right after each other: each gets
    // its own result (the caches key on the grid, not on the values).
    const Spectrum a = lamp(1.0f), b = lamp(1.0f, 2.0f);
    float ya = 0, yb = 0;
    ASSERT_EQ(tristimulus::components(ctx, a.wl.data(), a.v.data(), a.n(), kYbar, &ya), 1);
    ASSERT_EQ(tristimulus::components(ctx, b.wl.data(), b.v.data(), b.n(), kYbar, &yb), 1);
    EXPECT_NE(ya, yb);
    numerics::Interpolate2State fresh;
    const colorimetry::Context clean{colorimetry::Sampling::data, &fresh};
    float yb_fresh = 0;
    tristimulus::components(clean, b.wl.data(), b.v.data(), b.n(), kYbar, &yb_fresh);
    EXPECT_EQ(yb, yb_fresh);

    // Photometric values are 683 x factor x Y on any sampling.
    for (const float step : {0.1f, 1.0f, 5.0f}) {
        const Spectrum l = lamp(step);
        float Y = 0, lux = 0, cd = 0;
        ASSERT_EQ(tristimulus::components(ctx, l.wl.data(), l.v.data(), l.n(), kYbar, &Y), 1);
        ASSERT_EQ(photometry::photometric_value(ctx, 1, l.wl.data(), l.v.data(), l.n(), &lux), 1);
        ASSERT_EQ(photometry::photometric_value(ctx, 2, l.wl.data(), l.v.data(), l.n(), &cd), 1);
        EXPECT_FLOAT_EQ(lux, Y * 683.0f / 100.0f) << step;
        EXPECT_FLOAT_EQ(cd, Y * 683.0f) << step;
    }
}

}  // namespace
