#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "cli/run_qomath.hpp"
#include "files/scratch.hpp"

namespace {
qomath::test::Outcome run(const std::string& args) { return qomath::test::qomath(args); }
}  // namespace

TEST(CmdCli, ScriptLinesStatusAndUsage)
{
    const std::string script = scratch::put("run.txt",
                                            "# a comment\n\n"
                                            "SDFMat?\r\n"
                                            "  slfilter infile=no.csv fp=1\n"
                                            "cmd? x\n");
    const auto r = run("cmd --capacity 160 --script " + script);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "Using:1[SDFMat?]\nSDFMat config=name of configuration file\n"
                     "Using:1[slfilter]\nUsing:infile=[no.csv]\nUsing:outfile=[slout.csv]\n"
                     "Using:ctl=[0]\nUsing:fp=[1]\ninfile [no.csv] load failed: -2\n"
                     "Using:1[cmd?]\nAvailable commands:\nSLinterpolate - Read stray light files from "
                     "SLinterpolateinput and create interpolated files in SLinterpolateoutput.\n");
    struct Case {
        std::string args;
        int status;
        std::string out;
    } cases[] = {
        {"cmd \"\"", 1, "no function specified\n"},
        {"cmd --capacity=9 'SDFMat?'", 0, "\n"},
        {"cmd", 2, "qomath cmd: no command line\n"},
        {"cmd a b", 2, "qomath cmd: one command line (quote it)\n"},
        {"cmd --capacity 0 x", 2, "qomath cmd: --capacity takes a whole number 1..1073741824, not '0'\n"},
        {"cmd --script " + scratch::path("no.txt"), 1, "qomath cmd: cannot read '" + scratch::path("no.txt") + "'\n"},
    };
    for (const Case& c : cases) {
        const auto o = run(c.args);
        EXPECT_EQ(o.status, c.status) << c.args;
        EXPECT_EQ(o.out.substr(0, c.out.size()), c.out) << c.args;
    }
}
