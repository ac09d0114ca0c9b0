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
    const int expected[] = {12, 51976, int(offsetof(SpectralRecord2, unitName)), int(offsetof(SpectralRecord2, header)),
                            320, 16704, int(offsetof(SpectralRecord2, reserved)), 49472,
                            int(offsetof(SpectralRecord2, info)), -9};
    int layout[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0, -9};
    ASSERT_EQ(MarshalTestRecord2(nullptr, layout, 10), 1);
    for (int k = 0; k < 10; ++k) EXPECT_EQ(layout[k], expected[k]) << k;

    char out[8] = "#######";
    int len = -1;
    EXPECT_EQ(MarshalTestString("ab9-z", out, 6, &len), 1);  // fits exactly with its NUL
    EXPECT_STREQ(out, "AB9-Z");
    EXPECT_EQ(out[6], '#');
    EXPECT_EQ(MarshalTestString("abcdef", out, 4, &len), -2);
    EXPECT_TRUE(std::string(out) == "ABC" && len == 6);
    EXPECT_EQ(MarshalTestString("x", out, 0, nullptr), -1);

    auto rec = std::make_unique<SpectralRecord2>();
    for (float bad : {0.0f, 2.5f, 4097.0f}) {
        rec->pointCount = bad;
        EXPECT_EQ(MarshalTestRecord2(rec.get(), nullptr, 0), -2) << bad;
        EXPECT_EQ(rec->infoCount, 0);
    }
    int i = 5;
    float f = 0;
    EXPECT_EQ(MarshalTestScalars(1, 1, 1, &i, &f, nullptr), -1);
    EXPECT_EQ(i, 5);
    EXPECT_EQ(MarshalTestFloatArray(nullptr, 3), 0.0f);
}

}  // namespace
