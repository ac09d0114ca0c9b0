// Dominant wavelength, excitation and colorimetric purity, the example spectrum.
#include "colorimetry/colour_tests.hpp"

#include <atomic>
#include <fstream>
#include <thread>

#include "colorimetry/cie_tables.hpp"

namespace {

namespace cie = qomath::cie;

struct Xy {
    float x, y;
};
constexpr Xy kE{0.3333f, 0.3333f}, kD65{0.3127f, 0.329f}, kA{0.4476f, 0.4074f};
Xy locus_nm(int nm)
{
    const typ_chartvalue p = GetCIE1931ChartValue(nm - 360);
    return {p.x, p.y};
}
Xy fine(int i) { return {cie::locus1931_fine_x()[size_t(i)], cie::locus1931_fine_y()[size_t(i)]}; }

struct Found {
    int status;
    float nm;
    Xy hit, sample, white;  // sample and white as the call left them
    float third;
    bool cleared() const { return nm == 0 && hit.x == 0 && hit.y == 0 && third == 0; }
};
using Fn = int (*)(float*, float*, float*, float*);
Found dominant(Xy s, Xy w, Fn fn = DominantWavelength2)
{
    float sa[2] = {s.x, s.y}, wa[2] = {w.x, w.y}, lp[3] = {7, 7, 7}, nm = 7;
    const int status = fn(sa, wa, lp, &nm);
    return {status, nm, {lp[0], lp[1]}, {sa[0], sa[1]}, {wa[0], wa[1]}, lp[2]};
}

// {status, excitation purity, colorimetric purity}
std::tuple<int, float, float> purity(Xy s, Xy w, Xy l)
{
    float r[8] = {s.y, w.y, l.y, s.x, w.x, l.x, 9, 9};
    const int status = ExcitationColorimetricPurity(r);
    return {status, r[6], r[7]};
}

// Sine of the angle between w->a and w->b (0 when on one line), and whether
// a and b lie on the same side of w.
double sine(Xy w, Xy a, Xy b)
{
    const double ux = a.x - w.x, uy = a.y - w.y, vx = b.x - w.x, vy = b.y - w.y;
    return std::fabs(ux * vy - uy * vx) / (std::hypot(ux, uy) * std::hypot(vx, vy));
}
bool same_side(Xy w, Xy a, Xy b)
{
    return (a.x - w.x) * (b.x - w.x) + (a.y - w.y) * (b.y - w.y) > 0;
}

}  // namespace

TEST(DominantWavelength, SpectralColoursGiveTheirOwnWavelength)
{
    // 360 nm lies just below the purple line's end, 699 and 700 nm on it.
    for (const Xy w : {kE, kD65, kA}) {
        for (int nm = 361; nm <= 698; ++nm) {
            const Xy l = locus_nm(nm);
            const Found f = dominant(l, w);
            ASSERT_EQ(f.status, 1) << nm;
            EXPECT_NEAR(f.nm, nm, 0.1) << nm;
            EXPECT_TRUE(std::fabs(f.hit.x - l.x) < 1e-6 && std::fabs(f.hit.y - l.y) < 1e-6) << nm;
            const auto [status, pe, pc] = purity(l, w, f.hit);
            EXPECT_TRUE(status == 1 && std::fabs(pe - 1) < 1e-5 && std::fabs(pc - 1) < 1e-5) << nm;
        }
        for (const int i : {3, 401, 1605, 1950, 2257, 3389})  // 0.1 nm points
            EXPECT_NEAR(dominant(fine(i), w).nm, 360.0 + 0.1 * i, 0.1) << i;
    }
    const Found f555 = dominant({0.33736f, 0.65885f}, {0.3333f, 0.3333f});
    EXPECT_TRUE(f555.status == 1 && std::fabs(f555.nm - 555) < 0.1) << f555.nm;
    for (const Fn fn : {DominantWavelength, DominantWavelengthExtended})
        EXPECT_EQ(dominant({0.35f, 0.2f}, kD65, fn).nm, dominant({0.35f, 0.2f}, kD65).nm);

    // From a spectrum: a narrow green line at 550 nm (sd 2 nm), seen from E.
    Spectrum g = grid(380, 780, 1, [](float w) { return std::exp(-std::pow(w - 550.0, 2) / 8); });
    EXPECT_NEAR(ComputeDominantWLoptions(g.wl.data(), g.v.data(), 401, 0), 550.0, 0.2);
    EXPECT_EQ(ComputeDominantWLoptions(g.wl.data(), g.v.data(), 401, 4), 0.0f);
}

TEST(DominantWavelength, MixturesOfSpectralLightAndWhite)
{
    // Yl of light at nm plus Yw = 1 of white: in (x, y) the mixture lies
    // a / (a + b) of the way from the white to the locus, a = Yl / y_locus and
    // b = Yw / y_white (each part's X + Y + Z); its colorimetric purity is
    // Yl / (Yl + Yw).
    for (const int nm : {400, 470, 495, 510, 530, 560, 580, 620, 680}) {
        for (const double Yl : {0.02, 0.3, 1.0, 4.0}) {
            const Xy l = locus_nm(nm), w = kD65;
            const double a = Yl / l.y, b = 1.0 / w.y;
            const Xy s{static_cast<float>((a * l.x + b * w.x) / (a + b)),
                       static_cast<float>((a * l.y + b * w.y) / (a + b))};
            const Found f = dominant(s, w);
            ASSERT_EQ(f.status, 1) << nm << " " << Yl;
            EXPECT_NEAR(f.nm, nm, 0.1);
            const auto [status, pe, pc] = purity(s, w, f.hit);
            const double ratio =
                std::hypot(s.x - w.x, s.y - w.y) / std::hypot(l.x - w.x, l.y - w.y);
            EXPECT_NEAR(pe, ratio, 1e-5) << nm << " " << Yl;
            EXPECT_NEAR(pc, Yl / (Yl + 1.0), 1e-5) << nm << " " << Yl;
        }
    }
}

TEST(DominantWavelength, PurplesGiveTheComplementaryWavelengthNegated)
{
    for (const Xy s : {Xy{0.35f, 0.2f}, Xy{0.45f, 0.25f}, Xy{0.25f, 0.12f}, Xy{0.5f, 0.25f},
                       Xy{0.3127f, 0.2f}}) {
        const Found f = dominant(s, kD65);
        ASSERT_EQ(f.status, 1) << s.x << " " << s.y;
        EXPECT_TRUE(f.nm < -360 && f.nm > -700) << f.nm;
        // The hit is on the line through the two, beyond the white, and on
        // the locus at the complementary wavelength.
        EXPECT_LT(sine(f.white, f.hit, f.sample), 1e-5);
        EXPECT_FALSE(same_side(f.white, f.hit, f.sample));
        const double at = (-f.nm - 360.0) * 10.0, t = at - std::floor(at);
        const Xy a = fine(static_cast<int>(at)), b = fine(static_cast<int>(at) + 1);
        EXPECT_NEAR(f.hit.x, a.x + t * (b.x - a.x), 1e-4);
        EXPECT_NEAR(f.hit.y, a.y + t * (b.y - a.y), 1e-4);
        // Straight below the white: exchanged, the white's x moves down, the sample's up.
        EXPECT_TRUE(s.x != kD65.x || (std::fabs(f.white.x - (s.x - 1e-5)) < 3e-8 &&
                                      std::fabs(f.sample.x - (s.x + 1e-5)) < 3e-8));
    }
}

TEST(DominantWavelength, EdgeCasesAndHostileInput)
{
    // At the white, the nudge makes the line horizontal towards the blue-green
    // side: the hit is where the locus crosses y = 0.3333.
    const Found f = dominant(kE, kE);
    EXPECT_EQ(f.status, 1);
    EXPECT_FLOAT_EQ(f.sample.x, 0.3333f - 1e-5f);
    EXPECT_FLOAT_EQ(f.white.x, 0.3333f + 1e-5f);
    EXPECT_NEAR(f.hit.y, 0.3333, 1e-6);
    int i = 1200;  // 480 nm
    while (fine(i + 1).y <= 0.3333f) ++i;
    EXPECT_NEAR(f.nm, 360 + 0.1 * (i + (0.3333 - fine(i).y) / (fine(i + 1).y - fine(i).y)), 0.01);

    EXPECT_EQ(dominant({0.4f, 0.1f}, kD65).status, -1);  // below the purple line
    EXPECT_EQ(dominant(kD65, {0.8f, 0.3f}).status, -2);   // white right of the locus
    EXPECT_EQ(dominant(kD65, {0.5f, 0.1f}).status, -2);   // white below the purple line
    for (const Xy bad : {Xy{kNaN, 0.3f}, Xy{0.3f, kNaN}, Xy{kInf, 0.3f}, Xy{0.3f, -kInf}}) {
        const Found s = dominant(bad, kD65), w = dominant(kD65, bad);
        EXPECT_TRUE(s.status == -1 && s.cleared() && w.status == -2 && w.cleared());
    }
    float xy[2] = {0.35f, 0.5f}, wh[2] = {0.3127f, 0.329f}, lp[3] = {1, 1, 1}, nm = 1;
    EXPECT_TRUE(DominantWavelength2(nullptr, wh, lp, &nm) == -1 && lp[0] == 0 && nm == 0);
    EXPECT_EQ(DominantWavelength2(xy, nullptr, lp, &nm), -1);
    EXPECT_EQ(DominantWavelength2(xy, wh, nullptr, &nm), -1);
    EXPECT_EQ(DominantWavelength2(xy, wh, lp, nullptr), -1);

    // A sweep over and around the diagram: documented codes only; a hit lies
    // on the line, on the sample's side unless the wavelength is negative.
    for (const Xy w : {kE, kD65, kA, Xy{0.2f, 0.2f}}) {
        for (int ix = -2; ix <= 40; ++ix) {
            for (int iy = -2; iy <= 40; ++iy) {
                const Xy s{0.025f * static_cast<float>(ix), 0.025f * static_cast<float>(iy)};
                const Found g = dominant(s, w);
                const int st = g.status;
                ASSERT_TRUE(st == 1 || st == 0 || st == -1 || st == -90 || st == -91 || st == -92);
                if (st != 1) {
                    EXPECT_TRUE(g.cleared()) << s.x << " " << s.y;
                    continue;
                }
                EXPECT_TRUE(std::fabs(g.nm) >= 360 && std::fabs(g.nm) <= 700) << g.nm;
                EXPECT_LT(sine(g.white, g.hit, g.sample), 1e-5) << s.x << " " << s.y;
                EXPECT_EQ(g.nm > 0, same_side(g.white, g.hit, g.sample)) << s.x << " " << s.y;
            }
        }
    }
}

TEST(DominantWavelength, ThreadsKeepTheirOwnComplementarySearch)
{
    const Xy samples[] = {{0.35f, 0.2f}, {0.2f, 0.6f}, {0.45f, 0.25f}, {0.6f, 0.35f}};
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            const Found first = dominant(samples[t], kD65);
            for (int n = 0; n < 400; ++n)
                mismatches += dominant(samples[t], kD65).nm != first.nm || first.status != 1;
        });
    for (auto& th : threads) th.join();
    EXPECT_EQ(mismatches.load(), 0);
}

TEST(DominantPurity, SignedDifferencesPickTheRatio)
{
    // Below and left of the white, y moves more, yet (y - y_w) = -0.15 is not
    // above (x - x_w) = -0.05: the x ratio 0.05 / 0.1, and pc = 0.1 * 0.5 / 0.15.
    auto [status, pe, pc] = purity({0.25f, 0.15f}, {0.3f, 0.3f}, {0.2f, 0.1f});
    EXPECT_TRUE(status == 1 && std::fabs(pe - 0.5) < 1e-6 && std::fabs(pc - 1 / 3.0) < 1e-6);
    // Above and right: 0.15 > 0.05 takes the y ratio 0.15 / 0.2; pc = 0.5 * 0.75 / 0.45.
    std::tie(status, pe, pc) = purity({0.35f, 0.45f}, {0.3f, 0.3f}, {0.4f, 0.5f});
    EXPECT_TRUE(std::fabs(pe - 0.75) < 1e-6 && std::fabs(pc - 0.5 * 0.75 / 0.45) < 1e-6);

    // x_locus = x_white, y_locus = y_white, y = 0, NaN, infinity, overflow.
    const Xy bad[][3] = {{{0.3f, 0.4f}, {0.3f, 0.3f}, {0.3f, 0.6f}},
                         {{0.4f, 0.3f}, {0.3f, 0.3f}, {0.6f, 0.3f}},
                         {{0.3f, 0.0f}, {0.2f, 0.3f}, {0.6f, 0.1f}},
                         {{kNaN, 0.4f}, {0.3f, 0.3f}, {0.6f, 0.5f}},
                         {{0.3f, kInf}, {0.3f, 0.3f}, {0.6f, 0.5f}},
                         {{3e38f, 0.4f}, {0.0f, 0.3f}, {1e-18f, 0.5f}}};
    for (const auto& b : bad) {
        std::tie(status, pe, pc) = purity(b[0], b[1], b[2]);
        EXPECT_TRUE(status == 0 && pe == 0 && pc == 0) << b[0].x << " " << b[0].y;
    }
    EXPECT_EQ(ExcitationColorimetricPurity(nullptr), -1);
}

TEST(DominantSample, StoredWhiteLedSpectrum)
{
    std::vector<std::int32_t> v(QOMATH_WHITE_LED_SAMPLE_POINTS + 1, -7);
    EXPECT_EQ(GetPelkinWLSpectralSample(v.data()), 1);
    EXPECT_EQ(v.back(), -7);  // 4096 bytes, no more
    v.pop_back();
    const auto peak = std::max_element(v.begin(), v.end());
    EXPECT_TRUE(v.front() == 2157 && *peak == 53016);
    EXPECT_LT(peak - v.begin(), 300);  // the blue die, before the phosphor hump
    std::ifstream csv(QOMATH_DATA_DIR "/white_led_raw_1024.csv");
    std::vector<std::int32_t> stored;
    for (std::string line; std::getline(csv, line);)
        if (line != "counts") stored.push_back(std::stoi(line));
    EXPECT_EQ(stored, v);
    EXPECT_EQ(GetPelkinWLSpectralSample(nullptr), -1);
}
