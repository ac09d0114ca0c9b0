// The stray-light LSF file reader, from memory: at most maxValues values
// into a buffer of exactly that size.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "straylight/straylight.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const unsigned max = size > 0 ? data[0] % 64 : 0;
    std::vector<double> out(max);
    unsigned n = 0, peak = 0;
    qomath::straylight::parse_lsf(text, out.data(), &n, &peak, max);
    return 0;
}
