#include <memory>

#include "fuzz_file.hpp"
#include "qomath/spectral_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* path = qomath::fuzz::input_file(data, size);
    if (!path) return 0;
    auto rec = std::make_unique<SpectralRecord1>();
    int first = 0;
    ReadSpectralFile(path, rec.get(), &first);
    float version = 0;
    ReadSpectralFileVersion(path, &version);
    return 0;
}
