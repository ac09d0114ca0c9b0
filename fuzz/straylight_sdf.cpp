// The stray-light SDF matrix reader, from memory: n x n values into a
// buffer of exactly that size.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "straylight/straylight.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const unsigned n = size > 0 ? data[0] % 40 : 0;
    std::vector<double> m(static_cast<std::size_t>(n) * n);
    qomath::straylight::parse_sdf(text, m.data(), n);
    return 0;
}
