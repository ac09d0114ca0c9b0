// The strict reader of the C++ layer and the program: spectral text files of
// both versions, of any length, and plain two-column text, parsed from memory.
//
// It follows the steps of the library's readers (marker and version, header,
// unit, information lines, grid, data) with their number and unit rules, but
// without their fixed capacities (4096 points, 50 information lines, 255
// characters a line), and it is strict where they are lenient: a line that
// does not parse, a declared count or range that disagrees with the data,
// wavelengths that do not increase, values that are not finite, an unknown
// unit, or an emission spectrum without any positive value are errors, each
// named with its line. Negative values are a warning (dark-subtracted noise).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qomath::files {

struct Problem {
    int line = 0;  // 1-based; 0 for the file as a whole
    std::string what;
    bool error = true;  // false: a warning
};

struct ParsedSpectrum {
    bool plain = false;     // two-column text without the spectral-file header
    double version = 0.0;   // 1.x or 2.0 for spectral files, 0 for plain text
    std::string header;     // texts as in the file (Windows-1252), without CR
    std::string unit;
    int unit_code = -1;
    std::vector<std::string> info;
    std::vector<float> wavelengths;
    std::vector<float> values;
};

// Unit code (0..6) of a unit name as the program accepts it after --unit:
// "counts", "irradiance", "radiant-intensity" (or "intensity"),
// "radiant-flux" (or "flux"), "radiance", "transmittance", "reflectance",
// any case, '_' or ' ' for '-'; -1 for anything else.
int unit_code_of_name(std::string_view name);
// The unit name of a code as the spectral files spell it ("Radiant Flux").
const char* unit_file_name(int code);

// Parses a whole file. plain_unit is the unit code for plain two-column text
// (-1: none given, which makes such text an error). Returns true when no
// error was found; problems receives every error and warning in line order.
bool parse_spectrum(std::string_view text, int plain_unit, ParsedSpectrum& out,
                    std::vector<Problem>& problems);

// The text of a spectral file of version 1 (an even grid, CR LF) or 2 (LF)
// holding s, formatted as the library's writers format their records but of
// any length: header and unit whole lines, information lines cut to 49
// characters. False, with the reason, for fewer than 2 points or, for
// version 1, wavelengths that are not evenly spaced.
bool format_spectral_text(const ParsedSpectrum& s, int version, std::string& text,
                          std::string& why);

}  // namespace qomath::files
