// Marshalling self-tests: the layout they report against the compiler's, the
// string buffer limits and refused records (the C and Python hosts call the rest).
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

#include "qomath/marshal.h"

namespace {

TEST(Marshal, LayoutStringsAndRecords)
{
    int layout[4] = {0, 0, 0, -9};  // the C and Python hosts check every entry
    ASSERT_EQ(MarshalTestRecord2(nullptr, layout, 3), 1);
    EXPECT_TRUE(layout[1] == int(sizeof(SpectralRecord2)) && layout[2] == int(offsetof(SpectralRecord2, unitName)) && layout[3] == -9);
    char out[8] = "#######";
    int len = -1;
    EXPECT_EQ(MarshalTestString("ab9-z", out, 6, &len), 1);  // fits exactly with its NUL
    EXPECT_TRUE(std::string(out) == "AB9-Z" && out[6] == '#');
    EXPECT_EQ(MarshalTestString("abcdef", out, 4, &len), -2);
    EXPECT_TRUE(std::string(out) == "ABC" && len == 6);
    EXPECT_EQ(MarshalTestString("x", out, 0, nullptr), -1);
    auto rec = std::make_unique<SpectralRecord2>();
    for (float bad : {0.0f, 2.5f, 4097.0f}) {
        rec->pointCount = bad;
        EXPECT_TRUE(MarshalTestRecord2(rec.get(), nullptr, 0) == -2 && rec->infoCount == 0) << bad;
    }
    int i = 5;
    EXPECT_TRUE(MarshalTestScalars(1, 1, 1, &i, nullptr, nullptr) == -1 && i == 5);
}

}  // namespace
