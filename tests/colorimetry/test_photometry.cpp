// Photometric quantities against y-bar areas worked from the CIE table, unit
// factors worked from pi, the foot and the inch, the tables and names as
// printed, and hostile input.
#include "colorimetry/colour_tests.hpp"

#include "colorimetry/photometry.hpp"

namespace {

constexpr double kPi = std::numbers::pi, kFt2 = 0.3048 * 0.3048, kIn2 = 0.0254 * 0.0254;
// Nits in one nit, stilb, apostilb, lambert, millilambert, foot-lambert,
// cd/ft^2, cd/in^2; lux in one foot-candle, lux, phot, milliphot.
const double kNits[8] = {1, 1e4, 1 / kPi, 1e4 / kPi, 10 / kPi,
                         1 / (kPi * kFt2), 1 / kFt2, 1 / kIn2};
const double kLuxes[4] = {1 / kFt2, 1, 1e4, 10};

// Trapezoid area of y-bar over its points every `every` nm from 360 nm.
double ybar_area(int every)
{
    const Vec y = cie(1).v;
    double area = 0;
    for (int i = every; i <= 470; i += every) area += (y[i - every] + y[i]) / 2.0 * every;
    return area;
}

using Calc = int (*)(const float*, const float*, int, float*);
const struct { Calc calc; int units, null_out; } kCalcs[] = {
    {IlluminanceCalc, 4, -2}, {LuminanceCalc, 8, -2}, {LuminousIntensityCalc, 1, -1},
    {LuminousFluxCalc, 1, -1}};

TEST(PhotometryCalc, FlatSpectrumGivesYbarAreaInEveryUnit)
{
    const double area = ybar_area(1), lux = 683 * area / 100;
    EXPECT_NEAR(area, 106.857, 0.001);
    std::vector<double> want[4] = {{}, {}, {683 * area}, {683 * area / 1e6}};
    for (double x : kLuxes) want[0].push_back(lux / x);
    for (double x : kNits) want[1].push_back(lux / x);
    const double tolerance[4] = {1e-6, 2e-4, 1e-6, 1e-6};  // luminance: four-digit factors
    for (const float step : {1.0f, 0.5f, 0.25f}) {  // finer spectra: weighted on the table's grid
        const Spectrum s = flat(360, 830, step);
        for (int q = 0; q < 4; ++q) {
            float out[8];
            ASSERT_EQ(kCalcs[q].calc(s.wl.data(), s.v.data(), s.n(), out), 1);
            for (int k = 0; k < kCalcs[q].units; ++k)
                EXPECT_NEAR(out[k], want[q][k], tolerance[q] * out[k]) << q << " " << k;
        }
    }
    // A coarser spectrum reaching past the table: weighted on its own points
    // inside 360..830 nm.
    const Spectrum s5 = flat(300, 900, 5, 2);
    float cd = 0;
    ASSERT_EQ(LuminousIntensityCalc(s5.wl.data(), s5.v.data(), s5.n(), &cd), 1);
    EXPECT_NEAR(cd, 2 * 683 * ybar_area(5), 1e-6 * cd);
}

TEST(PhotometryCalc, EdgeCasesAndHostileInput)
{
    // Every output cleared, nothing written beyond the units.
    auto expect_all = [](const Spectrum& t, int want, const char* what, int n = 0) {
        for (const auto& c : kCalcs) {
            float out[9] = {7, 7, 7, 7, 7, 7, 7, 7, 7};
            EXPECT_EQ(c.calc(t.wl.data(), t.v.data(), n ? n : t.n(), out), want) << what;
            for (int k = 0; k < 9; ++k) EXPECT_EQ(out[k], k < c.units ? 0.0f : 7.0f) << what;
        }
    };
    const Spectrum s = flat(360, 830, 1);
    expect_all(s, -1, "too short", 4);
    expect_all(s, -1, "negative count", -3);
    expect_all(flat(900, 1000, 1), 1, "above the table");
    expect_all(flat(200, 300, 1), 1, "below the table");
    expect_all(flat(900, 1000, 0.5f), 1, "above, finer than the table");
    expect_all(flat(300, 1100, 200), 1, "too coarse: two common points");
    expect_all(flat(360, 830, 1, 3e38f), -1, "overflow");
    Spectrum bad = s;
    bad.wl[200] = bad.wl[199];  // a repeated wavelength stops the integral
    expect_all(bad, 1, "repeated wavelength");
    bad.wl[200] = kNaN;
    expect_all(bad, -1, "NaN wavelength");
    bad = s;
    bad.v[100] = kNaN;
    expect_all(bad, -1, "NaN value");
    for (const auto& c : kCalcs) {
        float out[8];
        EXPECT_EQ(c.calc(s.wl.data(), s.v.data(), s.n(), nullptr), c.null_out);
        EXPECT_EQ(c.calc(nullptr, s.v.data(), s.n(), out), -1);
        EXPECT_EQ(c.calc(s.wl.data(), nullptr, s.n(), out), -1);
    }
}

TEST(PhotometryUnits, NamesByteForByte)
{
    // Every byte of a buffer of exactly the bound: the text, its NUL, then
    // untouched bytes.
    auto expect_name = [](int (*name)(unsigned, char*), unsigned u, size_t size, const char* text) {
        std::vector<char> buf(size, 'x');
        EXPECT_EQ(name(u, buf.data()), 0);
        std::string want = std::string(text) + '\0';
        want.resize(size, 'x');
        EXPECT_EQ(std::string(buf.begin(), buf.end()), want) << u;
    };
    const char* lum[] = {"Nit",          "Stlib",       "Apostlib",     "Lambert",
                         "MilliLambert", "FootLambert", "Candela/ft^2", "Candela/Inch^2"};
    const char* ill[] = {"FootCandle", "Lux", "Phot", "MilliPhot"};
    for (unsigned u = 0; u < 8; ++u) expect_name(LuminanceUnitName, u, 16, lum[u]);
    for (unsigned u = 0; u < 4; ++u) expect_name(IlluminanceUnitName, u, 15, ill[u]);
    for (unsigned u : {8u, 4000000000u}) expect_name(LuminanceUnitName, u, 16, "Undefined Name");
    for (unsigned u : {4u, 4000000000u}) expect_name(IlluminanceUnitName, u, 15, "Undefined Name");
    EXPECT_EQ(LuminanceUnitName(0, nullptr), 22);
    EXPECT_EQ(IlluminanceUnitName(9, nullptr), 22);
}

// Every conversion against its ratio worked by hand, within the four-digit
// rounding; the round trip back; the all-units variant against the single.
template <std::size_t N>
void expect_conversions(float (*one)(float, unsigned, unsigned),
                        int (*all)(float, unsigned, float*), const double (&per)[N])
{
    const float v = 37.5f;
    float out[N];
    for (unsigned from = 0; from < N; ++from) {
        ASSERT_EQ(all(v, from, out), 1);
        for (unsigned to = 0; to < N; ++to) {
            EXPECT_EQ(out[to], one(v, from, to));
            EXPECT_NEAR(out[to], v * per[from] / per[to], 5e-4 * out[to]) << from << "->" << to;
            EXPECT_NEAR(one(out[to], to, from), v, 1e-3 * v);
        }
    }
    // Bad input gives nothing but zeros: an index past the units, NaN, overflow.
    const auto big = static_cast<unsigned>(std::max_element(per, per + N) - per);
    const auto small = static_cast<unsigned>(std::min_element(per, per + N) - per);
    for (const auto& [value, from] : {std::pair{1.0f, unsigned(N)}, {kNaN, 0u}, {3e38f, big}}) {
        std::fill_n(out, N, 7.0f);
        EXPECT_EQ(all(value, from, out), 0);
        for (float x : out) EXPECT_EQ(x, 0.0f);
        EXPECT_EQ(one(value, from, small), 0.0f);
    }
    EXPECT_EQ(all(1, 4000000000u, out), 0);
    EXPECT_EQ(one(1, 0, N), 0.0f);
    EXPECT_EQ(all(1, 0, nullptr), 0);
}

TEST(PhotometryUnits, TablesAndConversions)
{
    using namespace qomath::photometry;
    const double p = kPi, ip = std::numbers::inv_pi;  // the nearest doubles of pi and 1/pi
    const double lum[8][8] = {
        {1, 10000, ip, 10000 / p, 10 / p, 3.426, 10.76, 1550},
        {0.0001, 1, 0.0001 / p, ip, 0.001 / p, 0.0003426, 0.001076, 0.155},
        {p, 10000 * p, 1, 10000, 10, 10.76, 33.82, 4869},
        {0.0001 * p, p, 0.0001, 1, 0.001, 0.001076, 0.003382, 0.4869},
        {0.1 * p, 1000 * p, 0.1, 1000, 1, 1.076, 3.382, 486.9},
        {0.2919, 2919, 0.0929, 929, 0.929, 1, p, 452.4},
        {0.0929, 929, 0.02957, 295.7, 0.2957, ip, 1, 144},
        {0.0006452, 6.452, 0.0002054, 2.054, 0.002054, 0.00221, 0.006944, 1}};
    const double ill[4][4] = {{1, 0.0929, 929, 0.929}, {10.76, 1, 10000, 10},
                              {0.001076, 0.0001, 1, 0.001}, {1.076, 0.1, 1000, 1}};
    for (int to = 0; to < 8; ++to)
        for (int from = 0; from < 8; ++from) {
            EXPECT_EQ(kLuminanceTable[to][from], lum[to][from]) << to << " " << from;
            EXPECT_TRUE(to > 3 || from > 3 || kIlluminanceTable[to][from] == ill[to][from]);
        }
    expect_conversions(LuminanceUnitConversion, LuminanceUnitsConvertAll, kNits);
    expect_conversions(IlluminanceUnitConversion, IlluminanceUnitsConvertAll, kLuxes);
    EXPECT_EQ(LuminanceUnitConversion(1, 6, 0), 10.76f);
    EXPECT_EQ(LuminanceUnitConversion(1, 0, 6), 0.0929f);
    EXPECT_EQ(LuminanceUnitConversion(1, 8, 0), 0.0f);
    EXPECT_FLOAT_EQ(LuminanceUnitConversion(3e38f, 0, 1), 3e34f);
}

}  // namespace
