#include "spectrum_io.hpp"

#include <cstdio>
#include <cstring>

#include "text.hpp"

namespace qomath::cli {

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

namespace {

std::string text_of(const char* field, std::size_t cap)
{
    return std::string(trim_right(std::string_view(field, strnlen(field, cap))));
}

}  // namespace

int read_spectrum(const char* path, Records& recs, Spectrum& s)
{
    const int st = read_records(path, recs, s.version);
    if (st != 1) return st;
    s.info.clear();
    s.wavelengths.clear();
    s.values.clear();
    if (s.version < 2.0f) {
        const SpectralRecord1& r = *recs.v1;
        s.header = text_of(r.header, sizeof r.header);
        s.unit = text_of(r.unitName, sizeof r.unitName);
        for (int i = 0; i < r.infoCount && i < QOMATH_SPECTRAL_MAX_INFO; ++i)
            s.info.push_back(text_of(r.info[i], sizeof r.info[i]));
        int n = WLNumPts(&r.range);
        if (n > QOMATH_SPECTRAL_MAX_POINTS) n = QOMATH_SPECTRAL_MAX_POINTS;
        s.wavelengths.resize(static_cast<std::size_t>(n));
        s.values.assign(r.values, r.values + n);
        for (int i = 0; i < n; ++i)
            s.wavelengths[static_cast<std::size_t>(i)] =
                r.range.start + static_cast<float>(i) * r.range.step;
    } else {
        const SpectralRecord2& r = *recs.v2;
        s.header = text_of(r.header, sizeof r.header);
        s.unit = text_of(r.unitName, sizeof r.unitName);
        for (int i = 0; i < r.infoCount && i < QOMATH_SPECTRAL_MAX_INFO; ++i)
            s.info.push_back(text_of(r.info[i], sizeof r.info[i]));
        int n = static_cast<int>(r.pointCount);
        if (n < 0) n = 0;
        if (n > QOMATH_SPECTRAL_MAX_POINTS) n = QOMATH_SPECTRAL_MAX_POINTS;
        s.wavelengths.assign(r.wavelengths, r.wavelengths + n);
        s.values.assign(r.values, r.values + n);
    }
    s.unit_code = ConvertUnitNameToNumber(s.unit.c_str());
    return 1;
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

}  // namespace qomath::cli
