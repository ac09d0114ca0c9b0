// Reading spectral text files into the caller's records.
//
// Every reader goes through the same steps: the name, the stream, the first
// line with its marker and version, the header, the unit name, the
// information lines, the three grid lines and the data lines. Each step has
// its own status code, and a failing step leaves whatever the earlier steps
// filled in the record.
#include <cstring>

#include "common/barrier.hpp"
#include "files/spectral_file.hpp"
#include "common/text_io.hpp"
#include "qomath/grid.h"
#include "qomath/units.h"

namespace qomath::files {
using namespace qomath::text;
namespace {

using qomath::detail::guarded;

// Status of a reader whose stream could not be set up (also an allocation
// failure inside the call).
constexpr int kCannotOpen = -2;

// Opens the file and checks its first line: 1 with the version, or -2..-4.
int check_first_line(LineReader& in, double& version)
{
    if (!in.is_open()) return kCannotOpen;
    char line[kLineBuffer];
    if (!in.read(line, sizeof line)) return -3;
    if (!std::strstr(line, kSpectralMarker)) return -4;
    version = parse_double(line);
    return 1;
}

// Header (-6) and unit name (-7), straight into the record's fields.
template <class Record>
int read_header_and_unit(LineReader& in, Record& rec)
{
    static_assert(sizeof rec.header >= kLineBuffer);
    if (!in.read(rec.header, kLineBuffer)) return -6;
    if (!in.read(rec.unitName, kUnitBuffer)) return -7;
    return 1;
}

// The information count (-8) and lines (-9). on_line sees each line as read.
template <class Record, class OnLine>
int read_info_lines(LineReader& in, Record& rec, InfoCopy mode, OnLine on_line)
{
    char line[kLineBuffer];
    if (!in.read(line, sizeof line)) return -8;
    const int count = parse_int(line);
    if (count > kMaxInfo) return -8;
    rec.infoCount = count;
    for (int i = 0; i < count; ++i) {
        if (!in.read(line, sizeof line) || line[0] == '\0') return -9;
        copy_info_line(rec.info[i], line, mode);
        on_line(line);
    }
    return 1;
}

bool read_number(LineReader& in, double& value)
{
    char line[kLineBuffer];
    if (!in.read(line, sizeof line)) return false;
    value = parse_double(line);
    return true;
}

// A data line: wavelength, comma, value; a line without a comma has value 0.
void parse_point(const char* line, float& wavelength, float& value)
{
    wavelength = static_cast<float>(parse_double(line));
    const char* comma = std::strchr(line, ',');
    value = comma ? static_cast<float>(parse_double(comma + 1)) : 0.0f;
}

// ---- Measurement conditions in the information lines ------------------------

enum class TagKind { Timestamp, Averages, Number, Reference };

struct ConditionTag {
    const char* tag;  // searched in the lower-cased line
    TagKind kind;
    float SpectralFileExtraInfo::*value;
    int SpectralFileExtraInfo::*flag;
};

using X = SpectralFileExtraInfo;

// Tested in this order; the first tag found decides.
constexpr ConditionTag kConditionTags[] = {
    {"[timestamp]", TagKind::Timestamp, nullptr, nullptr},
    {"[averages]", TagKind::Averages, nullptr, nullptr},
    {"[integration time ms]", TagKind::Number, &X::integrationTimeMs, nullptr},
    {"[integration time]", TagKind::Number, &X::integrationTimeMs, nullptr},
    // Spelled with a capital L and compared with a lower-cased line, this tag
    // never matches: the reference stays 1.0 and its flag 0, as hosts expect.
    {"[vexaLumicator reference]", TagKind::Reference, nullptr, &X::hasVexaLumicatorReference},
    {"[temperature (\xB0" "c)]", TagKind::Number, &X::temperatureC, &X::hasTemperature},
    {"[power supply pulse width ms]", TagKind::Number, &X::pulseWidthMs, &X::hasPulseWidth},
    {"[current (a)]", TagKind::Number, &X::currentA, &X::hasSupplyReadings},
    {"[voltage (v)]", TagKind::Number, &X::voltageV, &X::hasSupplyReadings},
    {"[power (w)]", TagKind::Number, &X::powerW, &X::hasSupplyReadings},
    {"[thd-i (%)]", TagKind::Number, &X::thdCurrentPercent, &X::hasThd},
    {"[thd-v (%)]", TagKind::Number, &X::thdVoltagePercent, &X::hasThd},
    {"[power factor]", TagKind::Number, &X::powerFactor, &X::hasPowerFactor},
};

void read_condition(const char* line, SpectralFileExtraInfo& extra)
{
    // Only A-Z are lowered: the bytes of the code page above 0x7F, such as
    // the degree sign, stay as they are.
    char lower[kLineBuffer];
    std::size_t n = 0;
    for (; line[n] != '\0' && n + 1 < sizeof lower; ++n) {
        const char c = line[n];
        lower[n] = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    lower[n] = '\0';

    for (const ConditionTag& t : kConditionTags) {
        const char* at = std::strstr(lower, t.tag);
        if (!at) continue;
        switch (t.kind) {
        case TagKind::Timestamp: {
            // The line's first 49 characters, cut where the tag starts.
            const auto cut = static_cast<std::size_t>(at - lower);
            copy_text(extra.timestamp, cut < kInfoChars ? cut : kInfoChars, line, n);
            break;
        }
        case TagKind::Averages:
            extra.averages = parse_int(line);
            break;
        case TagKind::Number:
            extra.*t.value = static_cast<float>(parse_double(line));
            if (t.flag) extra.*t.flag = 1;
            break;
        case TagKind::Reference:
            extra.vexaLumicatorReference = parse_double(line);
            extra.*t.flag = 1;
            break;
        }
        return;
    }
}

int read_version1(const char* fileName, SpectralRecord1* rec, int* firstDataLine)
{
    LineReader in(fileName);
    if (!in.is_open()) return kCannotOpen;
    rec->infoCount = 0;
    double version = 0.0;
    if (const int s = check_first_line(in, version); s != 1) return s;
    if (version < 1.0) return -5;
    if (const int s = read_header_and_unit(in, *rec); s != 1) return s;
    if (const int s = read_info_lines(in, *rec, InfoCopy::Terminated, [](const char*) {}); s != 1)
        return s;

    // The grid lines come in the order start, step, end.
    double start = 0.0, step = 0.0, end = 0.0;
    if (!read_number(in, start)) return -10;
    rec->range.start = static_cast<float>(start);
    if (!read_number(in, step)) return -11;
    rec->range.step = static_cast<float>(step);
    if (!read_number(in, end)) return -12;
    rec->range.end = static_cast<float>(end);

    const typ_wlinfo r = rec->range;
    if (r.start >= r.end || r.step < 0.01f) return -13;
    const int n = WLNumPts(&r);  // 0 for start < 0, step < 1e-7 or step > end
    if (n < 2 || n > kMaxPoints) return -14;
    if (firstDataLine) *firstDataLine = rec->infoCount + 8;

    double v = 0.0;
    for (int i = 0; i < n; ++i) {
        if (!read_number(in, v)) return -15;
        rec->values[i] = static_cast<float>(v);
    }
    return 1;
}

int read_version2(const char* fileName, SpectralRecord2* rec, SpectralFileExtraInfo* extra)
{
    LineReader in(fileName);
    double version = 0.0;
    if (const int s = check_first_line(in, version); s != 1) return s;
    if (version < 2.0) return -5;
    if (const int s = read_header_and_unit(in, *rec); s != 1) return s;
    if (extra) {
        extra->unitCode = ConvertUnitNameToNumber(rec->unitName);
        extra->vexaLumicatorReference = 1.0;
        extra->hasTemperature = 0;
        extra->temperatureC = 0.0f;
    }
    const int s = read_info_lines(in, *rec, InfoCopy::BlankPadded, [extra](const char* line) {
        if (extra) read_condition(line, *extra);
    });
    if (s != 1) return s;

    // Later versions share the text block; only 2.0 has its data read here.
    if (version != 2.0) return 1;

    char line[kLineBuffer];
    if (!in.read(line, sizeof line)) return -10;
    rec->firstWavelength = static_cast<float>(parse_double(line));
    if (!in.read(line, sizeof line)) return -11;
    const int n = parse_int(line);
    rec->pointCount = static_cast<float>(n);
    if (!in.read(line, sizeof line)) return -12;
    rec->lastWavelength = static_cast<float>(parse_double(line));

    if (rec->firstWavelength >= rec->lastWavelength) return -13;
    if (n < 2 || n > kMaxPoints) return -14;
    for (int i = 0; i < n; ++i) {
        if (!in.read(line, sizeof line)) return -15;
        parse_point(line, rec->wavelengths[i], rec->values[i]);
    }
    return 1;
}

int read_version(const char* fileName, float* version)
{
    LineReader in(fileName);
    double v = 0.0;
    if (const int s = check_first_line(in, v); s != 1) return s;
    *version = static_cast<float>(v);
    return 1;
}

int read_bare_list(const char* fileName, SpectralRecord2* rec)
{
    LineReader in(fileName);
    if (!in.is_open()) return kCannotOpen;
    char line[kLineBuffer];
    int n = 0;
    while (n < kMaxPoints && in.read(line, sizeof line) && std::strlen(line) >= 3) {
        parse_point(line, rec->wavelengths[n], rec->values[n]);
        ++n;
    }
    rec->pointCount = static_cast<float>(n);
    if (n > 0) rec->lastWavelength = rec->wavelengths[n - 1];
    return 1;
}

}  // namespace
}  // namespace qomath::files

using namespace qomath::files;

extern "C" {

int ReadSpectralFileVersion(const char* fileName, float* version)
{
    if (!name_length_ok(fileName) || !version) return -1;
    return guarded(kCannotOpen, [&] { return read_version(fileName, version); });
}

int ReadSpectralFile(const char* fileName, SpectralRecord1* rec, int* firstDataLine)
{
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(kCannotOpen, [&] { return read_version1(fileName, rec, firstDataLine); });
}

int ReadSpectralFile2(const char* fileName, SpectralRecord2* rec, SpectralFileExtraInfo* extra)
{
    if (extra) std::memset(extra, 0, sizeof *extra);
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(kCannotOpen, [&] { return read_version2(fileName, rec, extra); });
}

int ReadSimpleSpectralFileIn(const char* fileName, SpectralRecord2* rec)
{
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(kCannotOpen, [&] { return read_bare_list(fileName, rec); });
}

}  // extern "C"
