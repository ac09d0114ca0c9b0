// Number parsing and name lengths. Bounded line reads and safe whole-file
// replacement are exercised through the file readers and writers (tests/files).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "common/text_io.hpp"

namespace {

TEST(TextIo, NumbersParseAsAtofDoes)
{
    for (const char* s : {"380.00000000", "  1.23456789e+02\r", "-4.5e-3,7", "+12.5", "1e400",
                          "-1e400", "1e-320", "0x1p3", "inf", "-nan", "abc", "", "\t7", "+-1",
                          ".5", "5.", "1,2", "3 [Averages]", "2.0 [Quarvel Optronic Spectral File]"}) {
        const double want = std::atof(s), got = qomath::text::parse_double(s);
        if (std::isnan(want))
            EXPECT_TRUE(std::isnan(got)) << s;
        else
            EXPECT_EQ(got, want) << '"' << s << '"';
    }
    EXPECT_EQ(qomath::text::parse_int(" 42\r"), 42);
}

TEST(TextIo, NameLengths)
{
    for (std::size_t n : {1u, 2u, 512u, 513u})  // names of 2 to 512 characters
        EXPECT_EQ(qomath::text::name_length_ok(std::string(n, 'x').c_str()), n == 2 || n == 512) << n;
    EXPECT_FALSE(qomath::text::name_length_ok(nullptr));
}

}  // namespace
