#include <memory>

#include "fuzz_file.hpp"
#include "qomath/qofile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* path = qomath::fuzz::input_file(data, size);
    if (!path) return 0;
    CQOFile file;
    if (file.Load(path) == 1) {
        CQOFile copy(file);
        (void)copy.GetAdditionLineInfo(0);
    }
    auto rec = std::make_unique<SpectralRecord2>();
    SpectralFileExtraInfo extra{};
    QOReadSpectralFile(path, rec.get(), &extra);
    return 0;
}
