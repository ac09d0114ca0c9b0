// Bounded line reads, number parsing and safe whole-file replacement.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "common/text_io.hpp"

namespace {

namespace fs = std::filesystem;
using qomath::text::LineReader;
using qomath::text::ReplacingFile;

fs::path scratch(const std::string& name)
{
    const fs::path dir = fs::temp_directory_path() / ("qomath-text-io-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    return dir / name;
}

void put(const fs::path& p, const std::string& bytes)
{
    std::ofstream(p, std::ios::binary) << bytes;
}

std::string get(const fs::path& p)
{
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(TextIo, LineReadsAreBoundedAndKeepCarriageReturns)
{
    const fs::path p = scratch("lines.txt");
    put(p, std::string(254, 'a') + "\n" + std::string(255, 'b') + "\nnext\n");
    {
        LineReader r(p.c_str());
        char buf[qomath::text::kLineBuffer];
        ASSERT_TRUE(r.read(buf, sizeof buf));
        EXPECT_EQ(std::string(buf), std::string(254, 'a'));
        EXPECT_FALSE(r.read(buf, sizeof buf));  // 255 characters do not fit
        EXPECT_FALSE(r.read(buf, sizeof buf));  // and the reader stays failed
    }
    put(p, "one\r\ntwo\r\r\nlast");
    {
        LineReader r(p.c_str());
        std::string line;
        ASSERT_TRUE(r.read(line));
        EXPECT_EQ(line, "one\r");
        ASSERT_TRUE(r.read(line));
        EXPECT_EQ(line, "two\r\r");
        ASSERT_TRUE(r.read(line));  // no LF at the end: still a line
        EXPECT_EQ(line, "last");
        EXPECT_FALSE(r.read(line));
    }
    // A unit line of 49 characters fits its 50-byte field, one of 50 does not.
    put(p, std::string(49, 'u') + "\n" + std::string(50, 'u') + "\n");
    {
        LineReader r(p.c_str());
        char unit[qomath::text::kUnitBuffer];
        EXPECT_TRUE(r.read(unit, sizeof unit));
        EXPECT_FALSE(r.read(unit, sizeof unit));
    }
    EXPECT_FALSE(LineReader(scratch("missing.txt").c_str()).is_open());
    EXPECT_FALSE(LineReader(p.parent_path().c_str()).is_open());  // a folder
    EXPECT_FALSE(LineReader(nullptr).is_open());

    for (std::size_t n : {1u, 2u, 512u, 513u})  // names of 2 to 512 characters
        EXPECT_EQ(qomath::text::name_length_ok(std::string(n, 'x').c_str()), n == 2 || n == 512) << n;
    EXPECT_FALSE(qomath::text::name_length_ok(nullptr));
    fs::remove_all(p.parent_path());
}

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

TEST(TextIo, ReplacingFileLeavesTheTargetAloneUntilCommitted)
{
    const fs::path p = scratch("target.txt");
    put(p, "old contents");
    {
        ReplacingFile f(p.c_str());
        ASSERT_NE(f.get(), nullptr);
        std::fputs("new contents", f.get());
        EXPECT_EQ(get(p), "old contents");  // not yet
    }  // not committed: dropped
    EXPECT_EQ(get(p), "old contents");
    {
        ReplacingFile f(p.c_str());
        std::fputs("new contents", f.get());
        EXPECT_TRUE(f.commit());
    }
    EXPECT_EQ(get(p), "new contents");
    // No temporary file is left behind beside the target.
    int leftovers = 0;
    for (const auto& e : fs::directory_iterator(p.parent_path()))
        leftovers += e.path().filename().string().rfind("target.txt.", 0) == 0 ? 1 : 0;
    EXPECT_EQ(leftovers, 0);

    // A folder in the way, or a folder that does not exist: no success.
    const fs::path dir = scratch("a-folder");
    fs::create_directories(dir);
    {
        ReplacingFile f(dir.c_str());
        if (f.get()) std::fputs("x", f.get());
        EXPECT_FALSE(f.commit());
    }
    EXPECT_TRUE(fs::is_directory(dir));
    EXPECT_EQ(ReplacingFile((dir / "no" / "such" / "file").c_str()).get(), nullptr);
    fs::remove_all(p.parent_path());
}

}  // namespace
