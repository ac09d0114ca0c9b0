// Reading spectral text files of version 1.0 and 2.0 for the qomath program.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <qomath/qomath.h>

namespace qomath::cli {

// A status of our own beside the reader's codes: a file of a version above
// 2.0, which the library reads without its data.
inline constexpr int kStatusUnsupportedVersion = -100;

// The two records of the library, on the heap (they are large); reused from
// one file to the next.
struct Records {
    std::unique_ptr<SpectralRecord1> v1{new SpectralRecord1()};
    std::unique_ptr<SpectralRecord2> v2{new SpectralRecord2()};
};

// Reads path into recs: recs.v1 for a file of version 1.x, recs.v2 for 2.0
// (the other record is left as it was). version receives the file's version.
// Returns 1 or a reader status code (or kStatusUnsupportedVersion).
int read_records(const char* path, Records& recs, float& version);

// A spectrum, as read: texts in Windows-1252 without trailing blanks or CR.
struct Spectrum {
    float version = 0.0f;
    std::string header;
    std::string unit;
    int unit_code = 0;
    std::vector<std::string> info;
    std::vector<float> wavelengths;
    std::vector<float> values;
};

// Reads path into s (read_records, then the record's content).
int read_spectrum(const char* path, Records& recs, Spectrum& s);

// What a reader status code means, e.g. "not a spectral file: the first line
// lacks the marker".
const char* reader_status_meaning(int status);

// "status -4: not a spectral file: ..." (or "version 2.5 is not supported").
std::string describe_read_failure(int status, float version);

}  // namespace qomath::cli
