// Library information: version and build texts.
#include <cstdio>

#include "qomath/grid.h"

namespace {
constexpr const char* kVersion = "1.7.6";
// The build texts are those of the released library; hosts compare them
// verbatim, so a rebuild keeps them.
constexpr const char* kBuildDate = "May  3 2020";
constexpr const char* kBuildTime = "15:27:32";
constexpr std::size_t kInfoBufferSize = 25;
}  // namespace

extern "C" {

const char* GetQOMathDLLversion(void)
{
    return kVersion;
}

int GetDllBuildInfo(char* version, char* date, char* time)
{
    if (!version || !date || !time) return -1;
    std::snprintf(version, kInfoBufferSize, "%s", kVersion);
    std::snprintf(date, kInfoBufferSize, "%s", kBuildDate);
    return std::snprintf(time, kInfoBufferSize, "%s", kBuildTime);
}

double MATHDLLCHECK(void)
{
    return 1.0;
}

}  // extern "C"
