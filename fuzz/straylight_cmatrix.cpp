// The stray-light C-matrix text reader, from memory: maxValues plus the
// documented room of a started line.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "straylight/straylight.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const int max = size > 0 ? data[0] % 64 : 0;
    std::vector<float> out(static_cast<std::size_t>(max) + qomath::straylight::kCmatrixOverrun);
    const int count = qomath::straylight::parse_cmatrix_text(text, out.data(), max);
    if (count < 0 || static_cast<std::size_t>(count) > out.size()) __builtin_trap();
    return 0;
}
