// qomath convert: a spectral file of version 1.0 as 2.0 and back.
#include <cmath>
#include <cstdio>
#include <memory>
#include <cstring>
#include <string>
#include <vector>

#include <qomath/qomath.h>

#include "command.hpp"
#include "output.hpp"
#include "spectrum_io.hpp"
#include "text.hpp"

namespace qomath::cli {
namespace {

// The library's own records and readers: conversion keeps every field the
// records hold, texts, grid and all.
// A status of our own beside the reader's codes: a file of a version above
// 2.0, which the library reads without its data.
inline constexpr int kStatusUnsupportedVersion = -100;

// The two records of the library, on the heap (they are large); reused from
// one file to the next.
struct Records {
    std::unique_ptr<SpectralRecord1> v1{new SpectralRecord1()};
    std::unique_ptr<SpectralRecord2> v2{new SpectralRecord2()};
};

int read_records(const char* path, Records& recs, float& version)
{
    version = 0.0f;
    int st = ReadSpectralFileVersion(path, &version);
    if (st != 1) return st;
    if (version < 1.0f) return -5;
    if (version < 2.0f) {
        std::memset(recs.v1.get(), 0, sizeof(SpectralRecord1));
        return ReadSpectralFile(path, recs.v1.get(), nullptr);
    }
    if (version != 2.0f) return kStatusUnsupportedVersion;
    std::memset(recs.v2.get(), 0, sizeof(SpectralRecord2));
    return ReadSpectralFile2(path, recs.v2.get(), nullptr);
}

const char* reader_status_meaning(int status)
{
    switch (status) {
    case 1: return "success";
    case -1: return "bad file name (length outside 2..512 characters)";
    case -2: return "cannot open the file (missing, a folder, or no permission)";
    case -3: return "empty file: no first line";
    case -4: return "not a spectral file: the first line lacks the marker";
    case -5: return "version too low";
    case -6: return "no header line (missing, or 255 characters and more)";
    case -7: return "no unit line (missing, or 50 characters and more)";
    case -8: return "no information count line, or a count above 50";
    case -9: return "an information line is missing, too long or empty";
    case -10: return "the first line of the wavelength grid is missing";
    case -11: return "the second line of the wavelength grid is missing";
    case -12: return "the third line of the wavelength grid is missing";
    case -13: return "the wavelength grid does not increase";
    case -14: return "invalid wavelength grid (point count outside 2..4096)";
    case -15: return "a data line is missing or too long";
    case kStatusUnsupportedVersion: return "unsupported version";
    default: return "unknown failure";
    }
}

std::string describe_read_failure(int status, float version)
{
    char buf[200];
    if (status == kStatusUnsupportedVersion)
        std::snprintf(buf, sizeof buf, "version %g is not supported (1.x and 2.0 are)",
                      static_cast<double>(version));
    else
        std::snprintf(buf, sizeof buf, "status %d: %s", status, reader_status_meaning(status));
    return buf;
}


int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err,
                 "qomath convert: %s\nusage: qomath convert IN OUT --to 1|2\n", what.c_str());
    return kExitUsage;
}

// Removes trailing blanks and CR from a NUL-terminated field in place (the
// readers keep the CR of CR LF files and pad information lines with blanks).
void trim_field(char* field, std::size_t cap)
{
    std::size_t n = strnlen(field, cap);
    if (n == cap) {
        field[cap - 1] = '\0';
        n = cap - 1;
    }
    while (n > 0 && (field[n - 1] == ' ' || field[n - 1] == '\r' || field[n - 1] == '\t'))
        field[--n] = '\0';
}

void trim_texts(char* unit, char* header, int info_count, char (*info)[QOMATH_SPECTRAL_INFO_SIZE])
{
    trim_field(unit, QOMATH_SPECTRAL_UNIT_SIZE);
    trim_field(header, QOMATH_SPECTRAL_HEADER_SIZE);
    for (int i = 0; i < info_count && i < QOMATH_SPECTRAL_MAX_INFO; ++i)
        trim_field(info[i], QOMATH_SPECTRAL_INFO_SIZE);
}

}  // namespace

int run_convert(std::span<char* const> args, std::FILE* /*out*/, std::FILE* err)
{
    std::vector<std::string> files;
    int to = 0;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string a = args[i];
        if (a == "--to" || a.rfind("--to=", 0) == 0) {
            std::string v;
            if (a == "--to") {
                if (i + 1 >= args.size()) return usage_error(err, "--to needs a value");
                v = args[++i];
            } else {
                v = a.substr(5);
            }
            if (v == "1" || v == "1.0")
                to = 1;
            else if (v == "2" || v == "2.0")
                to = 2;
            else
                return usage_error(err, "--to takes 1 or 2, not '" + v + "'");
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else {
            files.push_back(a);
        }
    }
    if (files.size() != 2) return usage_error(err, "give one input and one output file");
    if (to == 0) return usage_error(err, "say which version to write with --to 1 or --to 2");
    const std::string& in = files[0];
    const std::string& outName = files[1];
    if (is_an_input(outName, {in})) return usage_error(err, "the output is the input file");

    Records recs;
    float version = 0.0f;
    const int st = read_records(in.c_str(), recs, version);
    if (st != 1) {
        std::fprintf(err, "qomath: %s: cannot read (%s)\n", printable(in).c_str(),
                     describe_read_failure(st, version).c_str());
        return kExitFailed;
    }
    SpectralRecord1& r1 = *recs.v1;
    SpectralRecord2& r2 = *recs.v2;
    const bool from_v1 = version < 2.0f;
    if (from_v1) trim_texts(r1.unitName, r1.header, r1.infoCount, r1.info);
    else trim_texts(r2.unitName, r2.header, r2.infoCount, r2.info);

    if (to == 2 && from_v1) {
        std::memset(&r2, 0, sizeof r2);
        if (FileConvertSpectralVersion1toVersion2(&r1, &r2) != 1) {
            std::fprintf(err, "qomath: %s: cannot convert (the grid needs 3 to 4096 points)\n",
                         printable(in).c_str());
            return kExitFailed;
        }
    } else if (to == 1 && !from_v1) {
        const int n = static_cast<int>(r2.pointCount);
        if (n < 3 || n > QOMATH_SPECTRAL_MAX_POINTS) {
            std::fprintf(err, "qomath: %s: cannot convert (version 1.0 needs 3 to 4096 points)\n",
                         printable(in).c_str());
            return kExitFailed;
        }
        // Version 1.0 holds an even grid: refuse wavelengths that are not.
        const double first = r2.wavelengths[0];
        const double step = (static_cast<double>(r2.wavelengths[n - 1]) - first) / (n - 1);
        for (int i = 0; i < n; ++i) {
            if (std::fabs(r2.wavelengths[i] - (first + i * step)) > 1e-3 * step + 1e-4) {
                std::fprintf(err,
                             "qomath: %s: cannot convert (the wavelengths are not evenly "
                             "spaced: %g nm at point %d)\n",
                             printable(in).c_str(), static_cast<double>(r2.wavelengths[i]), i + 1);
                return kExitFailed;
            }
        }
        // The converter copies the texts from the version 1.0 record into
        // the version 2.0 one: fill the version 1.0 record's texts first.
        std::memset(&r1, 0, sizeof r1);
        r1.infoCount = r2.infoCount;
        std::memcpy(r1.info, r2.info, sizeof r1.info);
        std::memcpy(r1.unitName, r2.unitName, sizeof r1.unitName);
        std::memcpy(r1.header, r2.header, sizeof r1.header);
        if (FileConvertSpectralVersion2toVersion1(&r2, &r1) != 1) {
            std::fprintf(err, "qomath: %s: cannot convert\n", printable(in).c_str());
            return kExitFailed;
        }
    }
    if (to == 2 && r2.infoCount < 0) r2.infoCount = 0;  // else the file could not be read back
    const int wst = to == 1 ? WriteSpectralFile(outName.c_str(), &r1)
                            : WriteSpectralFile2(outName.c_str(), &r2);
    if (wst != 1) {
        std::fprintf(err, "qomath: %s: cannot write (status %d)\n", printable(outName).c_str(),
                     wst);
        return kExitFailed;
    }
    return kExitOk;
}

}  // namespace qomath::cli
