// Tristimulus values against sums worked here from the CIE tables, the
// wavelength limits, the normalising constant, and hostile input.
#include "colorimetry/colour_tests.hpp"

namespace {

// Trapezoid sum of s times table `cmf`, 0 outside 360..830 nm, for a grid of
// whole nanometres (where the table points lie).
double worked(const Spectrum& s, int cmf)
{
    const Spectrum t = cie(cmf);
    auto p = [&](size_t i) {
        const float w = s.wl[i];
        return w < 360 || w > 830 ? 0.0 : double(t.v[size_t(std::lround(w - 360))] * s.v[i]);
    };
    double sum = 0;
    for (size_t i = 1; i < s.wl.size(); ++i) sum += (p(i - 1) + p(i)) / 2 * (s.wl[i] - s.wl[i - 1]);
    return sum;
}

TEST(Tristimulus, IlluminantsAgainstWorkedSums)
{
    // x, y of A and D65 with both observers, as the CIE gives them.
    const struct { int table; float x, y, x10, y10; } cases[] = {
        {6, 0.44758f, 0.40745f, 0.45117f, 0.40594f}, {9, 0.31272f, 0.32903f, 0.31382f, 0.33098f}};
    for (const auto& c : cases) {
        const Spectrum s = cie(c.table);  // 300..830 nm by 1 nm
        float xyz[3], xyz10[3], one = -1;
        ASSERT_EQ(CalcTristimulusXYZ1931_2(s.wl.data(), s.v.data(), s.n(), xyz), 1);
        ASSERT_EQ(CalcTristimulusXYZ1964_2(s.wl.data(), s.v.data(), s.n(), xyz10), 1);
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(xyz[k], worked(s, k), 2e-6 * worked(s, k)) << c.table << " " << k;
            EXPECT_NEAR(xyz10[k], worked(s, 3 + k), 2e-6 * worked(s, 3 + k));
            // The triples are the single components, bit for bit.
            EXPECT_TRUE(CalcTristimulusXYZ(s.wl.data(), s.v.data(), s.n(), k, &one) == 1 && one == xyz[k]);
            EXPECT_TRUE(CalcTristimulusXYZ(s.wl.data(), s.v.data(), s.n(), 3 + k, &one) == 1 &&
                        one == xyz10[k]);
        }
        const float sum = xyz[0] + xyz[1] + xyz[2], sum10 = xyz10[0] + xyz10[1] + xyz10[2];
        EXPECT_NEAR(xyz[0] / sum, c.x, 2e-4);
        EXPECT_NEAR(xyz[1] / sum, c.y, 2e-4);
        EXPECT_NEAR(xyz10[0] / sum10, c.x10, 2e-4);
        EXPECT_NEAR(xyz10[1] / sum10, c.y10, 2e-4);

        const Spectrum s5 = cie(c.table, 5, 380, 780);
        const typ_wlinfo r5{380, 780, 5};
        float xyz5[3], g5[3];
        ASSERT_EQ(CalcTristimulusXYZ1931_2(s5.wl.data(), s5.v.data(), s5.n(), xyz5), 1);
        ASSERT_EQ(CalcTristimulusXYZ1931(s5.v.data(), &r5, g5), 1);
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(xyz5[k], worked(s5, k), 2e-6 * worked(s5, k));
            EXPECT_NEAR(g5[k], xyz5[k], 1e-6 * xyz5[k]);
        }
    }
}

TEST(Tristimulus, FlatAndIrregularSpectra)
{
    // Y of a flat spectrum is the trapezoid area of y-bar.
    const Spectrum s = flat(360, 830, 1);
    float xyz[3], xi[3], y = 0;
    ASSERT_EQ(CalcTristimulusXYZ1931_2(s.wl.data(), s.v.data(), s.n(), xyz), 1);
    EXPECT_NEAR(xyz[1], 106.86f, 0.01f);

    // Irregular steps of 0.4 to 2.1 nm reaching past both ends of the tables.
    Spectrum irr;
    const float steps[] = {0.7f, 1.3f, 0.4f, 2.1f, 0.9f};
    for (float w = 352.3f; w < 838; w += steps[irr.wl.size() % 5]) irr.wl.push_back(w);
    irr.v.assign(irr.wl.size(), 1.0f);
    ASSERT_EQ(CalcTristimulusXYZ1931_2(irr.wl.data(), irr.v.data(), irr.n(), xi), 1);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(xi[k], xyz[k], 2e-3 * xyz[k]) << k;

    // 300..900 nm: samples outside 360..830 nm count 0, however large.
    Spectrum wide = flat(300, 900, 1);
    for (size_t i = 0; i < wide.wl.size(); ++i) wide.v[i] = wide.wl[i] < 360 || wide.wl[i] > 830 ? 1e6f : 1;
    ASSERT_EQ(CalcTristimulusXYZ(wide.wl.data(), wide.v.data(), wide.n(), 1, &y), 1);
    EXPECT_NEAR(y, worked(wide, 1), 1e-6 * y);
}

TEST(Tristimulus, LimitsCountsAndBadInput)
{
    float y;
    auto y_of = [&y](const Vec& wl, int selector = 1) {
        const Vec v(wl.size(), 1.0f);
        y = 99;
        return CalcTristimulusXYZ(wl.data(), v.data(), static_cast<int>(wl.size()), selector, &y);
    };
    // The data must reach into 370..820 nm, with at least 5 points and a
    // selector 0..5; every failure leaves 0.
    const Spectrum five = flat(500, 504, 1);
    const struct { Vec wl; int selector, status; } cases[] = {
        {{366, 367, 368, 369, 370.0f}, 1, -3}, {{366, 367, 368, 369, 370.5f}, 1, 1},
        {{820.0f, 821, 822, 823, 824}, 1, -3}, {{819.5f, 821, 822, 823, 824}, 1, 1},
        {{500, 501, 502, 503}, 1, -2},         {five.wl, 6, -1}, {five.wl, -1, -1}};
    for (const auto& c : cases) {
        EXPECT_EQ(y_of(c.wl, c.selector), c.status) << c.wl[0] << " selector " << c.selector;
        EXPECT_EQ(y > 0, c.status == 1);
    }
    EXPECT_EQ(y_of(five.wl), 1);
    EXPECT_NEAR(y, worked(five, 1), 1e-6);
    // A repeated or falling wavelength, or NaN: no colour, but success.
    for (float third : {501.0f, 499.0f, std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_EQ(y_of({500, 501, third, 503, 504}), 1);
        EXPECT_EQ(y, 0.0f);
    }

    const float *w = five.wl.data(), *v = five.v.data();
    float xyz[3];
    EXPECT_EQ(CalcTristimulusXYZ(nullptr, v, 5, 1, &y), -1);
    EXPECT_EQ(CalcTristimulusXYZ(w, v, 5, 1, nullptr), -1);

    // A wavelength far beyond the table defeats the resampling: -5, and as
    // after a lone x-bar call, Interpolate2's cache holds the x-bar result
    // (a call with other source wavelengths gets it back, status 1).
    Vec far = {500, 501, 502, 503, 1e12f}, got(5);
    Spectrum xbar = cie(0);
    EXPECT_EQ(CalcTristimulusXYZ1931_2(far.data(), v, 5, xyz), -5);
    for (float& wl : xbar.wl) wl += 3;
    EXPECT_EQ(Interpolate2(xbar.wl.data(), xbar.v.data(), 471, far.data(), got.data(), 5), 1);
    EXPECT_EQ(got[0], xbar.v[140]);  // x-bar at 500 nm on the true grid

    // Evenly spaced: a 4-point record (every component cleared), null pointers.
    const typ_wlinfo four{400, 415, 5};
    xyz[0] = xyz[1] = xyz[2] = 5;
    EXPECT_EQ(CalcTristimulusXYZ1964(v, &four, xyz), -2);
    EXPECT_EQ(xyz[0] + xyz[1] + xyz[2], 0.0f);
    EXPECT_EQ(CalcTristimulusXYZ1931(nullptr, &four, xyz), -1);
    EXPECT_EQ(CalcTristimulusXYZ1931(v, &four, nullptr), -1);
}

TEST(Tristimulus, NormalisingConstantIsShiftedOneSample)
{
    // Flat 1.0 on 360..830: the sum covers 361..831 nm, 831 counting 0.
    const typ_wlinfo r{360, 830, 1};
    const Vec ones(471, 1.0f), dark(471, 0.0f);
    float k = 0;
    for (int observer : {1, 0, 7}) {
        const Spectrum ybar = cie(observer == 0 ? 4 : 1);
        double area = ybar.v[470] / 2.0;
        for (size_t i = 2; i <= 470; ++i) area += (ybar.v[i - 1] + ybar.v[i]) / 2.0;
        EXPECT_EQ(CalcTristimulusK(ones.data(), &r, observer, &k), 1);
        EXPECT_FLOAT_EQ(k, float(100.0 / area)) << observer;
    }
    // Starting above 360 nm nothing is skipped at the start, but the half
    // sample after the last one still counts (as 0).
    const Spectrum d5 = cie(9, 5, 380, 780);
    const typ_wlinfo r5{380, 780, 5};
    const double area = worked(d5, 1) + 2.5 * (cie(1).v[420] * d5.v[80]);
    EXPECT_EQ(CalcTristimulusK(d5.v.data(), &r5, 1, &k), 1);
    EXPECT_FLOAT_EQ(k, float(100.0 / area));

    // No light, or no overlap with the table: an infinite k.
    const typ_wlinfo ir{900, 1000, 1};
    EXPECT_TRUE(CalcTristimulusK(dark.data(), &r, 1, &k) == 1 && std::isinf(k));
    EXPECT_TRUE(CalcTristimulusK(dark.data(), &ir, 1, &k) == 1 && std::isinf(k));
    EXPECT_EQ(CalcTristimulusK(nullptr, &r, 1, &k), -1);
    EXPECT_EQ(k, 0.0f);
    EXPECT_EQ(CalcTristimulusK(dark.data(), &r, 1, nullptr), -1);
}

TEST(Tristimulus, CieDataTakenAsSpectra)
{
    // Every table, equal energy included, is the array triple on its grid.
    float xyz[3], direct[3];
    for (int sel = 0; sel <= 10; ++sel) {
        const Spectrum s = sel == 10 ? flat(300, 830, 1) : cie(sel);
        ASSERT_EQ(CalcTristimulusXYZ1931_2(s.wl.data(), s.v.data(), s.n(), direct), 1);
        ASSERT_EQ(GetCIEDataTristimulus(sel, xyz), 1) << sel;
        for (int k = 0; k < 3; ++k) EXPECT_EQ(xyz[k], direct[k]) << sel;
    }
    xyz[0] = 4;
    EXPECT_TRUE(GetCIEDataTristimulus(11, xyz) == -1 && GetCIEDataTristimulus(-1, xyz) == -1 &&
                GetCIEDataTristimulus(1, nullptr) == -1);
    EXPECT_EQ(xyz[0], 4.0f);  // untouched
}

TEST(Tristimulus, CieWeightedIntegralsOnRangeRecords)
{
    // A flat spectrum on the tables' own grid integrates y-bar itself.
    const Spectrum ybar = cie(1);
    const typ_wlinfo table = {360.0f, 830.0f, 1.0f};
    const int n = ybar.n();
    const Vec flat(ybar.wl.size(), 1.0f);
    const float y_area = Integrate_CIE(flat.data(), &table, 1);
    EXPECT_NEAR(y_area, IntegrationDiscrete(ybar.wl.data(), ybar.v.data(), n), 1e-3f);
    EXPECT_NEAR(IntegrateAbsolute_CIE(flat.data(), &table, 1), y_area, 1e-4f);

    // The same flat spectrum at 5 nm samples the table at those wavelengths;
    // a 0.5 nm grid interpolates between them. Both land close to 1 nm.
    // Nothing counts outside 360..830 nm.
    const typ_wlinfo coarse = {300.0f, 900.0f, 5.0f}, fine = {360.0f, 830.0f, 0.5f};
    const typ_wlinfo uv = {300.0f, 359.0f, 1.0f};
    const Vec ones(2000, 1.0f);
    EXPECT_NEAR(Integrate_CIE(ones.data(), &coarse, 1), y_area, 0.05f);
    EXPECT_NEAR(Integrate_CIE(ones.data(), &fine, 1), y_area, 0.05f);
    EXPECT_EQ(Integrate_CIE(ones.data(), &uv, 0), 0.0f);

    // Sign: a negated spectrum negates the integral, the rectified one does not.
    const Vec neg(n, -2.0f);
    const float z_area = Integrate_CIE(flat.data(), &table, 2);
    EXPECT_NEAR(Integrate_CIE(neg.data(), &table, 2), -2.0f * z_area, 1e-3f);
    EXPECT_NEAR(IntegrateAbsolute_CIE(neg.data(), &table, 2), 2.0f * z_area, 1e-3f);
    EXPECT_TRUE(Integrate_CIE(flat.data(), &table, 6) == 0.0f &&
                Integrate_CIE(flat.data(), &table, -1) == 0.0f);
    EXPECT_EQ(IntegrateAbsolute_CIE(nullptr, &table, 1), 0.0f);
}

}  // namespace
