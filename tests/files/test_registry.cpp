// The analysis by unit against the functions it reports, figures worked by
// hand, and the registry's slot lifecycle, hostile handles and threads.
#include "colorimetry/colour_tests.hpp"

#include <climits>
#include <sstream>
#include <thread>

#include "files/scratch.hpp"
#include "qomath/registry.h"
#include "qomath/units.h"

namespace {

TEST(SpectralAnalysis, EmittingUnitsAgreeWithTheirFunctionsAndHandFigures)
{
    // 1 uW/cm^2/nm over 380..780 nm.
    const Spectrum f = flat(380, 780, 1);
    typ_SpectralAnalysisIrradiance e;
    ASSERT_EQ(SpectralAnalysis_Irradiance(f.wl.data(), f.v.data(), f.n(), &e, nullptr), 1);
    float cc[QOMATH_CC_COUNT], lux[4];
    ASSERT_EQ(ColorimetricCalc(f.wl.data(), f.v.data(), f.n(), 1, 0, 1, cc), 1);
    ASSERT_EQ(IlluminanceCalc(f.wl.data(), f.v.data(), f.n(), lux), 1);
    EXPECT_EQ(std::memcmp(e.head.colorimetric, cc, sizeof cc), 0);
    EXPECT_EQ(std::memcmp(e.illuminance, lux, sizeof lux), 0);
    EXPECT_EQ(e.head.points, 401);
    // 400 nm x 0.01 W/m^2/nm = 4 W/m^2; none of it UV-B or UV-C; UV-A 380..400 nm.
    EXPECT_NEAR(e.tail.totalSI, 4.0f, 1e-5f);
    EXPECT_NEAR(e.tail.uvA, 0.2f, 1e-6f);
    EXPECT_EQ(e.tail.uvB, 0.0f);
    // Photons 400..700 nm: 0.01 W/m^2/nm x (700^2 - 400^2)/2 nm^2 x 1e-9 / (h c)
    // = 8.30632e18 /s/m^2 = 13.7930 umol/s/m^2.
    EXPECT_NEAR(e.tail.photons, 13.7930f, 1e-3f);
    EXPECT_NEAR(e.tail.efficacy, 683.0f * cc[QOMATH_CC_Y] / 400.0f, 1e-3f);

    // Flux: lumen and lm / 4 pi; radiance: the 8 luminance units.
    typ_SpectralAnalysisRadiantFlux fl;
    ASSERT_EQ(SpectralAnalysis(f.wl.data(), f.v.data(), f.n(), 3, &fl, 80, nullptr), 1);
    EXPECT_NEAR(fl.meanSphericalCandela, fl.lumen / (4 * M_PI), 1e-9);
    typ_SpectralAnalysisRadiance ra;
    float nit[8];
    ASSERT_EQ(SpectralAnalysis(f.wl.data(), f.v.data(), f.n(), 4, &ra, 83, nullptr), 1);
    ASSERT_EQ(LuminanceCalc(f.wl.data(), f.v.data(), f.n(), nit), 1);
    EXPECT_EQ(std::memcmp(ra.luminance, nit, sizeof nit), 0);

    // Data short of 380..780 nm: -13, the rest filled.
    const Spectrum part = flat(400, 700, 1);
    EXPECT_EQ(SpectralAnalysis_Irradiance(part.wl.data(), part.v.data(), part.n(), &e, nullptr), -13);
    EXPECT_EQ(e.head.status, -13);
    EXPECT_GT(e.illuminance[1], 0.0f);
    // Hostile input: status only, every other word 0; a small record is refused untouched.
    Vec bad = f.v;
    bad[7] = NAN;
    EXPECT_EQ(SpectralAnalysis_Irradiance(f.wl.data(), bad.data(), f.n(), &e, nullptr), -12);
    EXPECT_EQ(e.head.status, -12);
    EXPECT_EQ(e.tail.totalSI, 0.0f);
    EXPECT_EQ(SpectralAnalysis_Irradiance(nullptr, f.v.data(), f.n(), &e, nullptr), -11);
    const typ_SpectralAnalysisOptions backwards{500, 400, 0, 1, 65535};
    EXPECT_EQ(SpectralAnalysis_Irradiance(f.wl.data(), f.v.data(), f.n(), &e, &backwards), -11);
    float small[80];
    std::fill(small, small + 80, 7.0f);
    EXPECT_EQ(SpectralAnalysis(f.wl.data(), f.v.data(), f.n(), 4, small, 80, nullptr), -11);
    EXPECT_EQ(small[0], 7.0f);
    EXPECT_EQ(SpectralAnalysis(f.wl.data(), f.v.data(), f.n(), 7, small, 80, nullptr), -11);
}

TEST(SpectralAnalysis, CountsAndObjectsByHand)
{
    // 10 points 500..509 nm: 1 2 ... 10 with two saturated values.
    Vec wl, v;
    for (int i = 0; i < 10; ++i) wl.push_back(500.0f + i), v.push_back(static_cast<float>(i + 1));
    const typ_SpectralAnalysisOptions opt{0, 0, 0, 1, 9.0f};
    typ_SpectralAnalysisCounts c;
    ASSERT_EQ(SpectralAnalysis_Counts(wl.data(), v.data(), 10, &c, &opt), 1);
    EXPECT_EQ(c.saturatedPoints, 2);
    EXPECT_FLOAT_EQ(c.mean, 5.5f);
    EXPECT_NEAR(c.stdDeviation, 3.02765f, 1e-5f);  // sqrt(82.5 / 9)
    EXPECT_EQ(c.minimum, 1.0f);
    EXPECT_EQ(c.peakWavelength, 509.0f);
    EXPECT_FLOAT_EQ(c.integral, 49.5f);  // trapezoid: 55 - (1 + 10) / 2

    // A 50 % neutral sample: Y = 50, L* = 116 * 0.5^(1/3) - 16 = 76.0693, averages 0.5.
    const Spectrum half = flat(380, 780, 5, 0.5f);
    typ_SpectralAnalysisReflectTransmit rt;
    ASSERT_EQ(SpectralAnalysis(half.wl.data(), half.v.data(), half.n(), 6, &rt, 75, nullptr), 1);
    EXPECT_NEAR(rt.objectY, 50.0f, 1e-3f);
    EXPECT_NEAR(rt.L, 76.0693f, 1e-3f);
    EXPECT_NEAR(rt.a, 0.0f, 1e-2f);
    EXPECT_NEAR(rt.average380to780, 0.5f, 1e-6f);
    EXPECT_NEAR(rt.average400to700, 0.5f, 1e-6f);
    EXPECT_EQ(rt.minimumWavelength, 380.0f);
    float avg = 0;
    EXPECT_EQ(SpectralAnalysis_AverageReflectance(half.wl.data(), half.v.data(), half.n(), 0, 0, &avg), 1);
    EXPECT_FLOAT_EQ(avg, 0.5f);
    // Half the band covered: -13, the integral over the whole width.
    EXPECT_EQ(SpectralAnalysis_AverageReflectance(half.wl.data(), half.v.data(), half.n(), 580, 980, &avg), -13);
    EXPECT_NEAR(avg, 0.25f, 1e-6f);
}

// A spectral file of `points` points from 380 nm in the scratch folder.
std::string spectral(const char* name, const char* unit, int points, const char* version = "2.0")
{
    std::ostringstream f;
    f << version << " [Quarvel Optronic Spectral File]\nh\n" << unit << "\n0\n380\n" << points
      << "\n" << 380 + points - 1 << "\n";
    for (int i = 0; i < points; ++i) f << 380 + i << "," << 1.0 + 0.001 * i << "\n";
    return scratch::put(name, f.str());
}

TEST(Registry, SlotLifecycleAndHostileHandles)
{
    LoadAndSave_Cleanup();
    const std::string irr = spectral("irr.txt", "Irradiance", 401);
    const std::string refl = spectral("refl.txt", "Reflectance", 401);
    ASSERT_EQ(LoadAndSave_SpectralFile(irr.c_str()), 0);
    ASSERT_EQ(LoadAndSave_SpectralFile(refl.c_str()), 1);
    EXPECT_EQ(LoadAndSave_GetUnits(0), 1);
    EXPECT_EQ(LoadAndSave_GetArrayLength(0), 401);
    // Only the unit's own analysis is there, copied whole.
    typ_SpectralAnalysisIrradiance e;
    typ_SpectralAnalysisCounts c;
    typ_SpectralAnalysisReflectTransmit r;
    EXPECT_EQ(LoadAndSave_GetIrradianceAnalysis(0, &e), 1);
    EXPECT_EQ(e.head.status, 1);
    EXPECT_EQ(LoadAndSave_GetCountAnalysis(0, &c), -2);
    EXPECT_EQ(LoadAndSave_GetReflectanceAnalysis(1, &r), 1);
    EXPECT_EQ(LoadAndSave_GetTransmittanceAnalysis(1, &r), -2);
    EXPECT_EQ(LoadAndSave_GetIrradianceAnalysis(0, nullptr), -1);
    // The y-axis text without its NUL, from the constant table.
    char unit[16];
    std::memset(unit, 'x', sizeof unit);
    ASSERT_EQ(LoadAndSave_GetSpectralDataUnit(0, unit), 1);
    EXPECT_EQ(std::string(unit, 9), "\xB5W/cm\xB2/nm");
    EXPECT_EQ(unit[9], 'x');
    EXPECT_STREQ(GetUnitNameYaxis(1), "\xB5W/cm\xB2/nm");

    // Copies: exactly count values, capacity rules in order.
    Vec wl(402, -7.0f), v(402, -7.0f);
    int n = 100;
    EXPECT_EQ(LoadAndSave_GetSpectralData(0, wl.data(), v.data(), &n, nullptr), -3);
    EXPECT_EQ(wl[0], -7.0f);
    n = 4097;
    EXPECT_EQ(LoadAndSave_GetSpectralData(0, wl.data(), v.data(), &n, nullptr), -2);
    n = 402;
    ASSERT_EQ(LoadAndSave_GetSpectralData(0, wl.data(), v.data(), &n, nullptr), 1);
    EXPECT_EQ(n, 401);
    EXPECT_EQ(wl[400], 780.0f);
    EXPECT_EQ(wl[401], -7.0f);
    EXPECT_EQ(LoadAndSave_GetSpectralData(0, wl.data(), nullptr, &n, nullptr), 0);

    // Updates: refused ones change nothing; a new one is analysed again.
    EXPECT_EQ(LoadAndSave_UpdateSpectralData(0, wl.data(), v.data(), 4), -2);
    EXPECT_EQ(LoadAndSave_UpdateSpectralData(0, wl.data(), v.data(), 4097), -2);
    EXPECT_EQ(LoadAndSave_UpdateSpectralData(0, nullptr, v.data(), 10), -3);
    EXPECT_EQ(LoadAndSave_GetArrayLength(0), 401);
    for (float& x : v) x = 2.0f;
    ASSERT_EQ(LoadAndSave_UpdateSpectralData(0, wl.data(), v.data(), 401), 1);
    ASSERT_EQ(LoadAndSave_GetIrradianceAnalysis(0, &e), 1);
    EXPECT_NEAR(e.tail.totalSI, 8.0f, 1e-4f);
    EXPECT_EQ(LoadAndSave_GetDataPtr(0)[5], 2.0f);

    // Handles out of range, also as unsigned, and free slots.
    for (const int h : {100, -1, INT_MIN, 50}) {
        EXPECT_EQ(LoadAndSave_GetArrayLength(h), 0) << h;
        EXPECT_EQ(LoadAndSave_GetWavelengthPtr(h), nullptr) << h;
        EXPECT_EQ(LoadAndSave_GetUnits(h), -1) << h;
        EXPECT_EQ(LoadAndSave_GetSpectralDataUnit(h, unit), -1) << h;
        EXPECT_EQ(LoadAndSave_UpdateSpectralData(h, wl.data(), v.data(), 10), -1) << h;
        EXPECT_EQ(LoadAndSave_DoAnalysis(h), h == 50 ? -2 : -1) << h;
        EXPECT_EQ(LoadAndSave_GetCountAnalysis(h, &c), h == 50 ? -2 : 0) << h;
        LoadAndSave_Remove(h);
    }

    // A later version loads without data; its analysis holds its failure.
    const std::string v25 = spectral("v25.txt", "Counts", 10, "2.5");
    ASSERT_EQ(LoadAndSave_SpectralFile(v25.c_str()), 2);
    EXPECT_EQ(LoadAndSave_GetArrayLength(2), 0);
    ASSERT_EQ(LoadAndSave_GetCountAnalysis(2, &c), 1);
    EXPECT_EQ(c.status, -11);
    // Reader failures leave the slot free; the table fills at 100.
    EXPECT_EQ(LoadAndSave_SpectralFile(scratch::path("none.txt").c_str()), -2);
    for (int h = 3; h < 100; ++h) ASSERT_EQ(LoadAndSave_SpectralFile(irr.c_str()), h);
    EXPECT_EQ(LoadAndSave_SpectralFile(irr.c_str()), QOMATH_REGISTRY_FULL);
    LoadAndSave_Remove(7);
    EXPECT_EQ(LoadAndSave_SpectralFile(irr.c_str()), 7);
    LoadAndSave_Cleanup();
    EXPECT_EQ(LoadAndSave_GetArrayLength(0), 0);
    EXPECT_EQ(LoadAndSave_SpectralFile(irr.c_str()), 0);
    LoadAndSave_Cleanup();
}

TEST(Registry, ThreadsDoNotCorruptTheSlots)
{
    LoadAndSave_Cleanup();
    const std::string irr = spectral("irr.txt", "Irradiance", 401);
    std::vector<std::thread> pool;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t)
        pool.emplace_back([&, t] {
            for (int k = 0; k < 20; ++k) {
                const int h = LoadAndSave_SpectralFile(irr.c_str());
                typ_SpectralAnalysisIrradiance e;
                if (h < 0 || LoadAndSave_GetIrradianceAnalysis(h, &e) != 1 || e.head.points != 401)
                    ++failures[static_cast<std::size_t>(t)];
                LoadAndSave_Remove(h);
            }
        });
    for (std::thread& th : pool) th.join();
    EXPECT_EQ(failures, std::vector<int>(4, 0));
    EXPECT_EQ(LoadAndSave_GetArrayLength(0), 0);
}

}  // namespace
