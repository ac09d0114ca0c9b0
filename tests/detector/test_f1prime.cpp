// f1': zero for the target itself under any source, a shifted y-bar against
// sums of the CIE table, the pair form against the standard form, bad input.
#include "colorimetry/colour_tests.hpp"

#include <climits>

#include "detector/f1prime.hpp"
#include "qomath/detector.h"

namespace {

// Table `selector` of GetCIEData (1 nm) and its range record.
Vec table(int selector, typ_wlinfo& r)
{
    const Spectrum s = cie(selector);
    r = {s.wl.front(), s.wl.back(), 1};
    return s.v;
}

struct Result { int status; float f1; typ_wlinfo common; int warning; };

Result run(const Vec& resp, typ_wlinfo r, int mode, const float* src, typ_wlinfo sr)
{
    Result x{0, -1.0f, {-1, -1, -1}, -1};
    x.status = f1primeCalculate(resp.data(), &r, mode, src, &sr, &x.f1, &x.common, &x.warning);
    return x;
}

TEST(F1Prime, TargetItselfAtAnyScaleIsZero)
{
    typ_wlinfo dr{};
    const Vec d65 = table(9, dr);
    const struct { int selector, mode; typ_wlinfo range; int skip; } cases[] = {
        {1, QOMATH_F1_YBAR, {360, 830, 1}, 0},
        {2, QOMATH_F1_ZBAR, {360, 830, 1}, 0},
        {0, QOMATH_F1_XBAR_SHORT, {360, 505, 1}, 0},
        {0, QOMATH_F1_XBAR_LONG, {505, 830, 1}, 145},
    };
    for (const auto& c : cases)
        for (const float scale : {1.0f, 7.5f})
            for (const bool own : {false, true}) {
                typ_wlinfo r{};
                const Vec full = table(c.selector, r);
                Vec resp(full.begin() + c.skip, full.begin() + c.skip + WLNumPts(&c.range));
                for (float& v : resp) v *= scale;
                const Result x = own ? run(resp, c.range, c.mode, d65.data(), dr)
                                     : run(resp, c.range, c.mode, nullptr, {0, 0, 0});
                EXPECT_EQ(x.status, 1) << c.mode;
                EXPECT_NEAR(x.f1, 0.0f, 2e-6f) << c.mode << " scale " << scale;
                EXPECT_EQ(x.warning, 0);
                EXPECT_EQ(x.common.start + x.common.end, c.range.start + c.range.end);
            }
}

// y-bar moved 3 nm towards the red under an equal-energy source. From the
// CIE table at 1 nm: sum y-bar(360..830) = 106.856917 and
// sum |y-bar(l - 3) - y-bar(l)| = 5.99920834 (y-bar taken as 0 below 360);
// A / B differs from 1 by 2e-8. Standard form: 5.99920834 / 106.856915.
// The library's form leaves out 360..362 (outside the common range) and sums
// pairs: 0.0561381619, worked the same way.
TEST(F1Prime, ShiftedYbarAgainstTableSums)
{
    typ_wlinfo r{};
    const Vec y = table(1, r);
    const Vec resp(y.begin(), y.begin() + 471);
    const Vec ones(471, 1.0f);
    const Result x = run(resp, {363, 833, 1}, QOMATH_F1_YBAR, ones.data(), {360, 830, 1});
    ASSERT_EQ(x.status, 1);
    EXPECT_NEAR(x.f1, 0.0561381619, 2e-7);
    EXPECT_EQ(x.warning, 1);
    EXPECT_EQ(x.common.start + x.common.end, 363.0f + 830.0f);

    Vec wl(471), swl(471);
    for (int i = 0; i < 471; ++i) swl[size_t(i)] = (wl[size_t(i)] = 363.0f + float(i)) - 3.0f;
    const auto s = qomath::detector::f1prime_standard(wl, resp, QOMATH_F1_YBAR, swl, ones);
    ASSERT_EQ(s.status, 1);
    EXPECT_NEAR(s.f1prime, 5.99920834 / 106.856915, 2e-7);
    EXPECT_TRUE(!s.covers_start && s.covers_end);
}

// A deviation of alternating sign cancels pair by pair in the library's form
// only; the standard form sees its full size, sum |e| / sum y-bar.
TEST(F1Prime, AlternatingDeviationCancelsInPairFormOnly)
{
    typ_wlinfo r{};
    Vec resp = table(1, r);
    const float e = 0.01f;
    Vec wl(resp.size());
    for (size_t i = 0; i < resp.size(); ++i) resp[i] += (i % 2 ? -e : e), wl[i] = 360.0f + float(i);
    const Result x = run(resp, r, QOMATH_F1_YBAR, nullptr, {0, 0, 0});
    ASSERT_EQ(x.status, 1);
    EXPECT_LT(x.f1, 1e-4f);
    const auto s = qomath::detector::f1prime_standard(wl, resp, QOMATH_F1_YBAR, {}, {});
    EXPECT_NEAR(s.f1prime, 470 * e / 106.856917, 2e-3);
}

TEST(F1Prime, BadInputNamedAndOutputsCleared)
{
    typ_wlinfo r{};
    const Vec y = table(1, r);
    const Vec zeros(600, 0.0f);
    Vec with_nan = y;
    with_nan[200] = kNaN;
    struct Case { Vec resp; typ_wlinfo rr; int mode; const float* src; typ_wlinfo sr; int status; };
    const Case cases[] = {
        {y, r, 4, nullptr, {0, 0, 0}, -1},
        {y, r, INT_MIN, nullptr, {0, 0, 0}, -1},
        {y, r, 2, zeros.data(), {380, 780, 5}, -20},     // does not span 360..830
        {y, r, 2, zeros.data(), {300, 830, kNaN}, -20},
        {y, r, 2, nullptr, {300, 830, 1}, -3},           // source given but null
        {y, r, 2, zeros.data(), {300, 830, 1}, -4},      // no signal in the source
        {zeros, r, 2, nullptr, {0, 0, 0}, -7},
        {with_nan, r, 2, nullptr, {0, 0, 0}, -7},
        {y, {900, 1370, 1}, 2, nullptr, {0, 0, 0}, -3},  // nothing shared
        {y, {380, 0, 1}, 2, nullptr, {0, 0, 0}, -3},     // unusable range
    };
    for (const auto& c : cases) {
        const Result x = run(c.resp, c.rr, c.mode, c.src, c.sr);
        EXPECT_EQ(x.status, c.status) << c.mode << " " << c.rr.start << " " << c.sr.step;
        EXPECT_EQ(x.f1, 0.0f);
        const float cleared = x.common.start + x.common.end + x.common.step + float(x.warning);
        EXPECT_TRUE(cleared == 0.0f || (c.status != -1 && c.status != -20)) << c.status;
    }
    float f = 1;
    typ_wlinfo common{}, none{0, 0, 0};
    EXPECT_EQ(f1primeCalculate(nullptr, &r, 2, nullptr, &none, &f, &common, nullptr), -3);
    EXPECT_EQ(f, 0.0f);
    // Warnings: a late start gives 1, an early end 2, both 2.
    for (const auto& [range, skip, warning] : {std::tuple{typ_wlinfo{380, 830, 1}, 20, 1},
                                               std::tuple{typ_wlinfo{360, 780, 1}, 0, 2},
                                               std::tuple{typ_wlinfo{380, 780, 1}, 20, 2}}) {
        const Vec part(y.begin() + skip, y.end());
        EXPECT_EQ(run(part, range, 2, nullptr, {0, 0, 0}).warning, warning);
    }
}

}  // namespace
