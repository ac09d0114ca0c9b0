// The command entry point from memory: keyword lookup over the line, and the
// dispatch of the help commands (and of anything that is not a command) into
// a buffer of fuzzed capacity. Commands that read or write files are not run.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <strings.h>
#include <string>
#include <vector>

#include "straylight/command.hpp"

namespace cm = qomath::command;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    const int cap = (data[0] | (data[1] << 8)) % 1200;
    const std::string line(reinterpret_cast<const char*>(data + 2), size - 2);
    const char* text = line.c_str();  // stops at the first NUL, as a C caller's would

    char value[64];
    for (const char* key : {"1", "2", "infile=", "blueblend=", "x"}) {
        std::memset(value, '#', sizeof value);
        const int st = cm::keyword(data[0] & 3, value, 32, text, key, "default");
        if (st < -1 || st > 1 || std::memchr(value, '\0', 32) == nullptr || value[32] != '#')
            __builtin_trap();
    }
    cm::keyword(2, value, static_cast<int>(sizeof value), text, "1", "");
    for (const char* runs_files : {"slmcorrect", "slrcorrect", "slfilter", "sdfmat", "dre",
                                   "nvisab", "slc2", "slinterpolate"})
        if (strcasecmp(value, runs_files) == 0) return 0;

    static qomath::straylight::State st;
    cm::Context ctx{&st, nullptr, {}, nullptr, 0, 0};
    std::vector<char> buf(static_cast<std::size_t>(cap) + 16, '#');
    cm::run(ctx, text, cap > 0 ? buf.data() : nullptr, cap);
    if (cap > 0 && std::strlen(buf.data()) >= static_cast<std::size_t>(cap)) __builtin_trap();
    for (std::size_t i = static_cast<std::size_t>(cap); i < buf.size(); ++i)
        if (buf[i] != '#') __builtin_trap();
    return 0;
}
