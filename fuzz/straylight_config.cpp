// The stray-light generator configuration reader, from memory.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "straylight/straylight.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const qomath::straylight::Config c = qomath::straylight::parse_config(text);
    if (c.d_file.empty() || c.c_file.empty() || c.scan_folder.size() > 255) __builtin_trap();
    return 0;
}
