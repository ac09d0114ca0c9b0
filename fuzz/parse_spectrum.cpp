// The program's strict reader, fed from memory: as a spectral file, as
// two-column text of every unit, and back through the writer.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "files/spectrum_reader.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const int unit = size > 0 ? data[0] % 8 - 1 : -1;  // -1 (none) .. 6
    qomath::files::ParsedSpectrum s;
    std::vector<qomath::files::Problem> problems;
    if (qomath::files::parse_spectrum(text, unit, s, problems)) {
        std::string out, why;
        for (const int version : {1, 2})
            if (qomath::files::format_spectral_text(s, version, out, why)) {
                qomath::files::ParsedSpectrum back;
                problems.clear();
                qomath::files::parse_spectrum(out, unit, back, problems);
            }
    }
    return 0;
}
