// Marshalling self-tests: the record layout they report against the
// compiler's, the documented transformations and the buffer limits.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>

#include "qomath/marshal.h"

namespace {

TEST(Marshal, ScalarsArrayAndDouble)
{
    int i = 5;
    float f = 0.25f;
    double d = 1e300;
    ASSERT_EQ(MarshalTestScalars(-7, 1.5f, -1e300, &i, &f, &d), 1);
    EXPECT_EQ(i, -2);
    EXPECT_EQ(f, 1.75f);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(MarshalTestScalars(1, 1, 1, &i, nullptr, &d), -1);
    EXPECT_EQ(i, -2);
    EXPECT_EQ(MarshalTestDouble(3, 0.5f, 0.125), 3.625);

    float v[7] = {-1, -1, -1, -1, -1, -1, -1};
    EXPECT_EQ(MarshalTestFloatArray(v + 1, 5), 15.0f);  // 1.5 * (0 + 1 + 2 + 3 + 4)
    EXPECT_EQ(v[0], -1.0f);
    EXPECT_EQ(v[4], 4.5f);
    EXPECT_EQ(v[6], -1.0f);
    EXPECT_EQ(MarshalTestFloatArray(v, 0), 0.0f);
    EXPECT_EQ(MarshalTestFloatArray(nullptr, 3), 0.0f);
}

TEST(Marshal, StringFitsOrIsCut)
{
    char out[8];
    int len = -1;
    std::memset(out, '#', sizeof out);
    EXPECT_EQ(MarshalTestString("ab9-z", out, 6, &len), 1);  // exactly fits with its NUL
    EXPECT_STREQ(out, "AB9-Z");
    EXPECT_EQ(out[6], '#');
    EXPECT_EQ(len, 5);
    EXPECT_EQ(MarshalTestString("abcdef", out, 4, &len), -2);
    EXPECT_STREQ(out, "ABC");
    EXPECT_EQ(len, 6);
    EXPECT_EQ(MarshalTestString("", out, 1, nullptr), 1);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(MarshalTestString("x", out, 0, nullptr), -1);
    EXPECT_EQ(MarshalTestString(nullptr, out, 8, nullptr), -1);
}

TEST(Marshal, RecordsReportTheCompilersLayout)
{
    typ_wlinfo r = {380.0f, 780.0f, 5.0f}, twin{};
    EXPECT_EQ(MarshalTestWLInfo(&r, &twin), 81);
    EXPECT_EQ(MarshalTestWLInfo(&twin, &twin), 161);  // the twin has half the step
    EXPECT_EQ(twin.step, 1.25f);
    EXPECT_EQ(MarshalTestWLInfo(&r, nullptr), -1);

    const int expected[] = {12,
                            int(sizeof(SpectralRecord2)),
                            int(offsetof(SpectralRecord2, unitName)),
                            int(offsetof(SpectralRecord2, header)),
                            320,
                            int(offsetof(SpectralRecord2, values)),
                            int(offsetof(SpectralRecord2, reserved)),
                            49472,
                            int(offsetof(SpectralRecord2, info))};
    int layout[QOMATH_MARSHAL_LAYOUT_ENTRIES + 1];
    std::fill_n(layout, QOMATH_MARSHAL_LAYOUT_ENTRIES + 1, -9);
    ASSERT_EQ(MarshalTestRecord2(nullptr, layout, QOMATH_MARSHAL_LAYOUT_ENTRIES + 1), 1);
    for (int k = 0; k < QOMATH_MARSHAL_LAYOUT_ENTRIES; ++k) EXPECT_EQ(layout[k], expected[k]) << k;
    EXPECT_EQ(layout[QOMATH_MARSHAL_LAYOUT_ENTRIES], -9);
    EXPECT_EQ(layout[QOMATH_MARSHAL_RECORD2_SIZE], 51976);
    EXPECT_EQ(layout[QOMATH_MARSHAL_VALUES_OFFSET], 16704);

    auto rec = std::make_unique<SpectralRecord2>();
    rec->pointCount = 3.0f;
    for (int k = 0; k < 4; ++k) rec->wavelengths[k] = 400.0f + float(k), rec->values[k] = -1.0f;
    std::fill_n(layout, 3, -9);
    ASSERT_EQ(MarshalTestRecord2(rec.get(), layout, 2), 1);
    EXPECT_EQ(layout[2], -9);
    EXPECT_EQ(rec->values[2], 804.0f);
    EXPECT_EQ(rec->values[3], -1.0f);
    EXPECT_EQ(rec->infoCount, 3);
    EXPECT_STREQ(rec->unitName, "Marshal");
    for (float bad : {0.0f, 2.5f, 4097.0f, -1.0f}) {
        rec->pointCount = bad;
        rec->infoCount = 0;
        EXPECT_EQ(MarshalTestRecord2(rec.get(), nullptr, 0), -2) << bad;
        EXPECT_EQ(rec->infoCount, 0);
    }
    EXPECT_EQ(MarshalTestRecord2(nullptr, nullptr, 9), -1);
}

}  // namespace
