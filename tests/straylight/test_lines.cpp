// Calibration-lamp lines: the tables by hand, the simulated spectrum's cells,
// hostile types and pointers, and the spectrum built once under threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "qomath/lines.h"

namespace {

TEST(Lines, TablesCountsSumsAndHostileCalls)
{
    // Intensities summed by hand from the lamp tables.
    const struct { int type, count; float sum, first, last; } lamps[] = {
        {QOMATH_LAMP_ARGON, 19, 9960, 696.5f, 965.8f}, {QOMATH_LAMP_MERCURY, 10, 4350, 253.7f, 579.1f}};
    for (const auto& l : lamps) {
        std::vector<float> wl(22, -1.0f), in(22, -1.0f);
        int count = 0;
        EXPECT_EQ(GetTransitionLineList(l.type, wl.data() + 1, in.data() + 1, &count), 1);
        ASSERT_EQ(count, l.count);
        EXPECT_EQ(wl[0], -1.0f);
        EXPECT_EQ(wl[static_cast<size_t>(count) + 1] + in[static_cast<size_t>(count) + 1], -2.0f);
        float sum = 0;
        for (int i = 1; i <= count; ++i) sum += in[static_cast<size_t>(i)];
        EXPECT_EQ(sum, l.sum);
        EXPECT_TRUE(std::is_sorted(wl.begin() + 1, wl.begin() + count + 1));
        EXPECT_EQ(wl[1] + wl[static_cast<size_t>(count)], l.first + l.last);
        EXPECT_EQ(GetTransitionLineList(l.type, nullptr, in.data(), &count) + GetTransitionLineList(l.type, wl.data(), in.data(), nullptr), 0);
    }
    for (int type : {2, 3, -1, INT_MIN, INT_MAX}) {
        float wl = -1, in = -1;
        int count = -1;
        EXPECT_EQ(GetTransitionLineList(type, &wl, &in, &count), type);
        EXPECT_EQ(wl + in + static_cast<float>(count), -3.0f);
    }
}

// Cells worked by hand: 696.6f is 696.59998, so trunc(x * 10) = 6965 puts it
// in the cell of the 696.5 nm line; 253.7f is 253.69999 (cell 2536), so the
// 253.7 nm line sits in the cell of 253.6; 738.5 is exact (cell 7385, empty).
TEST(Lines, SimulatedSpectrumCells)
{
    const float inf = std::numeric_limits<float>::infinity();
    const struct { float wl, value; } cases[] = {
        {696.5f, 300},  {696.6f, 300},  {696.7f, 0},    {738.4f, 300},  {738.5f, 0},
        {253.6f, 1000}, {253.7f, 1000}, {253.79f, 1000}, {253.8f, 0},   {365.0f, 600},
        {579.1f, 60},   {965.8f, 700},  {500.0f, 0},    {249.9f, 0},    {1700.1f, 0},
        {1700.0f, 0},   {-300.0f, 0},   {inf, 0},       {-inf, 0},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (const auto& c : cases) EXPECT_EQ(GenerateSimulatedTransitionLines(c.wl), c.value) << c.wl;
}

TEST(Lines, SpectrumBuiltOnceUnderThreads)
{
    std::vector<std::vector<float>> seen(4);
    std::vector<std::thread> threads;
    for (auto& s : seen)
        threads.emplace_back([&s] {
            for (int i = 0; i < 2000; ++i) s.push_back(GenerateSimulatedTransitionLines(696.0f + 0.1f * static_cast<float>(i)));
        });
    for (auto& t : threads) t.join();
    for (const auto& s : seen) EXPECT_EQ(s, seen[0]);
    EXPECT_EQ(seen[0][5], 300.0f);  // 696.5 nm

}

}  // namespace
