#include <qomath/qomath.h>

#include "command.hpp"

namespace qomath::cli {

void print_version_block(std::FILE* out)
{
    char version[32], date[32], time[32];
    GetDllBuildInfo(version, date, time);
    std::fprintf(out,
                 "QOMath %s\n"
                 "Math and File I/O operations\n"
                 "Build date: %s\n"
                 "Build time: %s\n",
                 version, date, time);
}

int run_version(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    if (!args.empty()) {
        std::fprintf(err, "qomath version: unexpected argument '%s'\n", args[0]);
        return kExitUsage;
    }
    print_version_block(out);
    return kExitOk;
}

}  // namespace qomath::cli
