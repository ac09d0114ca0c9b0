// Reading spectra for the qomath program: spectral text files of both
// versions and plain two-column text, from a file or standard input ("-"),
// with the library's strict reader.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "files/spectrum_reader.hpp"

namespace qomath::cli {

// A spectrum, as read: texts in Windows-1252 without trailing blanks or CR.
struct Spectrum {
    float version = 0.0f;  // 0 for plain text
    bool plain = false;
    std::string header;
    std::string unit;
    int unit_code = 0;
    std::vector<std::string> info;
    std::vector<float> wavelengths;
    std::vector<float> values;
};

// The name a path is reported under ("standard input" for "-").
std::string display_name(const std::string& path);

// The whole content of a file ("-": standard input) into data (reused);
// false with the reason.
bool read_file(const std::string& path, std::string& data, std::string& why);
// Parses a file's content (read_file) into s; messages as read_spectrum's.
bool parse_input(const std::string& path, std::string_view text, int plain_unit, Spectrum& s,
                 std::string& messages);

// Reads path ("-": standard input) into s. plain_unit is the unit code for
// plain two-column text (-1: none). Returns true when there was no error;
// messages receives one line per error or warning, "qomath: NAME:LINE: what"
// (warnings say "warning:").
bool read_spectrum(const std::string& path, int plain_unit, Spectrum& s, std::string& messages);

// read_spectrum with its messages printed on err.
bool read_spectrum(const std::string& path, int plain_unit, Spectrum& s, std::FILE* err);

// The spectral-file version a spectrum is written back in: 1 for 1.x, else 2.
int own_version(const Spectrum& s);

// Writes s as a spectral file of `version` (1 or 2) to path (empty:
// standard output `out`), safely. False, after a message on err naming
// `name` (and `failure` when s cannot take that version), when that or the
// write failed.
bool write_spectrum(const Spectrum& s, int version, const std::string& path, const std::string& name,
                    std::FILE* out, std::FILE* err, const char* failure = "cannot write");

}  // namespace qomath::cli
