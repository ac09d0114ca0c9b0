// Bad pixels (neighbours, ends, all bad, 16-bit sums, hostile lists, list
// against mask), defect masks, point in polygon and the bin registry.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <thread>
#include <tuple>
#include <vector>

#include "detector/binning.hpp"
#include "qomath/detector.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kGuard = -777.0f;

struct List {  // unused entries -1
    int v[QOMATH_BADPIXEL_LIST_SIZE];
    List(std::initializer_list<int> bad) { std::fill_n(v, 20, -1), std::copy(bad.begin(), bad.end(), v); }
};

// data 10, 20, 30, ... with guards on both sides; returns the n pixels.
std::vector<float> substituted(int n, const List& list)
{
    std::vector<float> buf(static_cast<size_t>(n) + 2, kGuard);
    for (int i = 0; i < n; ++i) buf[static_cast<size_t>(i) + 1] = 10.0f * static_cast<float>(i + 1);
    EXPECT_EQ(DetectorArrayBadPixelSub(buf.data() + 1, n, list.v), 1);
    EXPECT_EQ(buf.front(), kGuard);
    EXPECT_EQ(buf.back(), kGuard);
    return {buf.begin() + 1, buf.end() - 1};
}

TEST(BadPixels, NeighboursEndsAndHostileLists)
{
    using V = std::vector<float>;
    const struct { List list; V expected; } cases[] = {
        {{}, {10, 20, 30, 40, 50, 60}},
        {{3, 4}, {10, 20, 30, 45, 45, 60}},              // both from pixels 2 and 5
        {{4, 3, 3, -1, 6, INT_MIN, INT_MAX}, {10, 20, 30, 45, 45, 60}},
        {{0}, {20, 20, 30, 40, 50, 60}},                 // one side only
        {{5, 4}, {10, 20, 30, 40, 40, 40}},
    };
    for (const auto& c : cases) EXPECT_EQ(substituted(6, c.list), c.expected);
    // All bad: 0/0 in float and double, unchanged in 16 bits.
    const List all{0, 1, 2};
    for (float v : substituted(3, all)) EXPECT_TRUE(std::isnan(v));
    double d[3] = {1, 2, 3};
    EXPECT_EQ(DetectorArrayBadPixelSubd(d, 3, all.v), 1);
    EXPECT_TRUE(std::isnan(d[0]) && std::isnan(d[2]));
    unsigned short w[5] = {7, 7, 7, 65535, 65534};
    EXPECT_EQ(DetectorArrayBadPixelSubW(w, 3, all.v), 1);
    EXPECT_EQ(w[1], 7);
    // 16-bit sums do not wrap: (65535 + 65534) / 2 truncated.
    const List mid{1};
    unsigned short hi[3] = {65535, 0, 65534};
    EXPECT_EQ(DetectorArrayBadPixelSubW(hi, 3, mid.v), 1);
    EXPECT_EQ(hi[1], 65534);
    EXPECT_EQ(DetectorArrayBadPixelSub(nullptr, 3, mid.v), -1);
    EXPECT_EQ(DetectorArrayBadPixelSubW(hi, 3, nullptr), -1);
}

TEST(BadPixels, OldVariantCopiesTheLastPixelsNeighbourAsItStands)
{
    static typ_pixelarray_d rec;
    // {8, 9}: 8 takes 7 (nothing good above), then 9 copies that 7.
    // {9, 8}: 9 copies the unrepaired 8 first. Pixel 10 lies beyond n.
    for (const auto& [list, at8, at9] : {std::tuple{List{8, 9}, 7.0, 7.0}, std::tuple{List{9, 8}, 7.0, 8.0}}) {
        for (int i = 0; i < QOMATH_BADPIXEL_OLD_PIXELS; ++i) rec.values[i] = i;
        EXPECT_EQ(DetectorArrayBadPixelSubdOLD(&rec, 10, list.v), 1);
        EXPECT_EQ(rec.values[8], at8);
        EXPECT_EQ(rec.values[9], at9);
        EXPECT_EQ(rec.values[10], 10.0);
    }
    const List forward{8, 9};
    for (int n : {0, -1, 4097, INT_MIN}) EXPECT_EQ(DetectorArrayBadPixelSubdOLD(&rec, n, forward.v), 0);
}

TEST(BadPixels, MaskReplacementAgreesWithTheList)
{
    const List list{1, 2, 6, 9};
    std::vector<float> mask(10, 0.0f);
    for (int p : {1, 2, 6, 9}) mask[static_cast<size_t>(p)] = 1.0f;
    mask[6] = kNaN;  // anything not 0 is defective
    unsigned short a[10], b[10];
    for (unsigned short i = 0; i < 10; ++i) a[i] = b[i] = static_cast<unsigned short>(100 + 7 * i * i);
    EXPECT_EQ(DefectivePixelReplacement(a, 10, mask.data(), 10), 1);
    EXPECT_EQ(DetectorArrayBadPixelSubW(b, 10, list.v), 1);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(a[i], b[i]) << i;
    EXPECT_EQ(a[1], (100 + 163) / 2);
    EXPECT_EQ(DefectivePixelReplacement(a, 10, mask.data(), 9), -1);
    const float all[3] = {1, 1, 1};
    unsigned short c[3] = {1, 2, 3};
    EXPECT_EQ(DefectivePixelReplacement(c, 3, all, 3), 1);
    EXPECT_EQ(c[2], 3);  // no good pixel: unchanged
}

TEST(BadPixels, MasksTidiedAndMadeFromReadings)
{
    std::vector<float> m = {1, 0, 1, 0, 1};
    EXPECT_EQ(DetectorRemoveSingleBad(m.data(), 5), 1);
    EXPECT_EQ(m, std::vector<float>(5, 0.0f));
    m = {1, 1, 0, 1, 0.0005f, 1, 1};  // pairs stay, an isolated one goes
    EXPECT_EQ(DetectorRemoveSingleBad(m.data(), 7), 1);
    EXPECT_EQ(m, (std::vector<float>{1, 1, 0, 0, 0.0005f, 1, 1}));
    EXPECT_EQ(DetectorRemoveSingleBad(m.data(), 4), -1);

    // A dark reading of 97..103 counts with a hot pixel (10), a NaN (30) and a
    // dead pixel at the end (63); the map has guards on both sides.
    std::vector<float> dark(64), map(66, kGuard), expected(66, 0.0f);
    for (size_t i = 0; i < dark.size(); ++i) dark[i] = static_cast<float>(97 + (i * 37) % 7);
    dark[10] = 180.0f, dark[30] = kNaN, dark[63] = 0.0f;
    expected[0] = expected[65] = kGuard, expected[11] = expected[31] = expected[64] = 1.0f;
    EXPECT_EQ(DetectorCreateBadPixelMap(dark.data(), 64, map.data() + 1), 1);
    EXPECT_EQ(map, expected);
    EXPECT_EQ(DetectorCreateBadPixelMap(dark.data(), 4, map.data()), -1);
}

TEST(Polygon, EdgesVerticesOrientationAndLattice)
{
    const float ccw[] = {0, 0, 1, 0, 1, 1, 0, 1};
    const float cw[] = {0, 0, 0, 1, 1, 1, 1, 0};
    const struct { float x, y; int in; } pts[] = {
        {0.5f, 0.5f, 1}, {1.5f, 0.5f, 0}, {0.5f, 0, 1}, {0.5f, 1, 0},  // lower in, upper out
        {0, 0.5f, 1}, {1, 0.5f, 0}, {0, 0, 1}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0},
        {kNaN, 0.5f, 0}, {0.5f, kNaN, 0},
    };
    for (const auto& p : pts) {
        EXPECT_EQ(PointInPolygon(ccw, 4, p.x, p.y), p.in) << p.x << "," << p.y;
        EXPECT_EQ(PointInPolygon(cw, 4, p.x, p.y), p.in) << p.x << "," << p.y;
    }
    for (int n : {0, 1, 2, -1}) EXPECT_EQ(PointInPolygon(ccw, n, 0.5f, 0.5f), 0) << n;
    EXPECT_EQ(PointInPolygon(nullptr, 4, 0.5f, 0.5f), 0);
    // A concave U of integer corners, area 6 * 5 - 2 * 3 = 24: the half-open
    // rule counts each lattice point of its closure's lower left exactly once.
    const float u[] = {0, 0, 6, 0, 6, 5, 4, 5, 4, 2, 2, 2, 2, 5, 0, 5};
    int inside = 0;
    for (int x = -1; x <= 7; ++x)
        for (int y = -1; y <= 6; ++y) inside += PointInPolygon(u, 8, static_cast<float>(x), static_cast<float>(y));
    EXPECT_EQ(inside, 24);
}

TEST(Binning, RegistryLifecycleAndTheBinZeroRule)
{
    const typ_binquad bins[3] = {{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}},
                                 {{{5, 5}, {6, 5}, {6, 6}, {5, 6}}},
                                 {{{2, 2}, {2, 2}, {2, 2}, {2, 2}}}};  // zero area
    EXPECT_EQ(Binning_Init(3, bins), 1);
    EXPECT_EQ(Binning_GetBin(5.5f, 5.5f), 0);  // inside bin 1, still bin 0
    EXPECT_EQ(Binning_GetBin(kNaN, kNaN), 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] { for (int i = 0; i < 1000; ++i) Binning_Add(5.5f, 5.5f); });
    for (auto& t : threads) t.join();
    EXPECT_EQ(qomath::detector::bin_hits(), (std::vector<int>{4000, 0, 0}));
    EXPECT_EQ(Binning_Dump(), 1);

    typ_binquad bad = bins[0];
    bad.corner[2][1] = kNaN;
    using Q = const typ_binquad*;
    for (const auto& [count, b, status] : {std::tuple{0, Q{bins}, -1}, {-1, Q{bins}, -1}, {INT_MIN, Q{bins}, -1},
                                           {1, Q{nullptr}, -1}, {1, Q{&bad}, -2}}) {
        ASSERT_EQ(Binning_Init(3, bins), 1);
        EXPECT_EQ(Binning_Init(count, b), status);
        EXPECT_EQ(Binning_GetBin(0.5f, 0.5f), -1);  // the old registry is gone
        EXPECT_EQ(Binning_Add(0.5f, 0.5f), -1);
    }
    EXPECT_EQ(Binning_Init(1, bins), 1);
    EXPECT_EQ(Binning_Close(), 1);
    EXPECT_EQ(Binning_GetBin(0.5f, 0.5f), -1);
    EXPECT_TRUE(qomath::detector::bin_hits().empty());
}

}  // namespace
