// CQOFile: version 2.0 spectral files as strings and vectors, and
// QOReadSpectralFile, which loads through it into a SpectralRecord2.
#include "qomath/qofile.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "common/barrier.hpp"
#include "common/text_io.hpp"
#include "qomath/units.h"

using qomath::detail::guarded;
using qomath::text::LineReader;
using qomath::text::parse_double;
using qomath::text::parse_int;
using qomath::text::ReplacingFile;

namespace {

constexpr int kNoMemory = -15;
constexpr char kMarker[] = "[Quarvel Optronic Spectral File]";
constexpr char kFirstLine[] = "2.0 [Quarvel Optronic Spectral File]";

// Room in a SpectralRecord2.
constexpr unsigned kRecordInfoLines = QOMATH_SPECTRAL_MAX_INFO;
constexpr unsigned kRecordPoints = QOMATH_SPECTRAL_MAX_POINTS;

// How many lines the file can hold at most: one per byte, since every line
// but the last ends in an LF and the last has at least one character. Counts
// above this are refused before anything is allocated for them. A stream
// whose size is unknown (a pipe, a device) gets a fixed budget instead.
std::uintmax_t line_budget(const char* name)
{
    constexpr std::uintmax_t kUnknownSize = std::uintmax_t{1} << 24;
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(name, ec);
    return ec ? kUnknownSize : size;
}

// Copies at most cap - 1 bytes of text and a NUL into a field of cap bytes.
void copy_text(char* field, std::size_t cap, const char* text)
{
    const std::size_t n = std::min(std::strlen(text), cap - 1);
    std::memcpy(field, text, n);
    field[n] = '\0';
}

// ---- Save output --------------------------------------------------------------

bool put_bytes(std::FILE* f, std::string_view s)
{
    return s.empty() || std::fwrite(s.data(), 1, s.size(), f) == s.size();
}

bool put_line(std::FILE* f, std::string_view s)
{
    return put_bytes(f, s) && std::fputc('\n', f) != EOF;
}

// A double as an ostream writes it by default ("%g", 6 significant digits),
// but in the "C" format whatever locale the host has set.
bool put_number(std::FILE* f, double v)
{
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 6);
    return put_bytes(f, std::string_view(buf, static_cast<std::size_t>(r.ptr - buf)));
}

// (fprintf rather than the integer to_chars, whose inline digit table would
// otherwise be exported from the library.)
bool put_count(std::FILE* f, std::size_t n)
{
    return std::fprintf(f, "%zu\n", n) > 0;
}

}  // namespace

// ---- Construction and copies ------------------------------------------------------

CQOFile::CQOFile() : dataLength(0), additionalInfoCount(0), averages(0), integrationTimeMs(0.0)
{
    Init();
}

CQOFile::CQOFile(const CQOFile& other) : CQOFile()
{
    *this = other;
}

CQOFile& CQOFile::operator=(const CQOFile& other)
{
    if (this == &other) return *this;
    const bool copied = guarded(false, [&] {
        fileName = other.fileName;
        unitName = other.unitName;
        header = other.header;
        dataLength = other.dataLength;
        wavelength = other.wavelength;
        spectral = other.spectral;
        additionalInfoCount = other.additionalInfoCount;
        additionalInfo = other.additionalInfo;
        timeStamp = other.timeStamp;
        averages = other.averages;
        integrationTimeMs = other.integrationTimeMs;
        return true;
    });
    if (!copied) Init();
    return *this;
}

CQOFile::~CQOFile() = default;

void CQOFile::Init()
{
    fileName.clear();
    unitName.clear();
    header.clear();
    dataLength = 0;
    // Swapping with empty vectors also gives back the memory of a large file.
    std::vector<double>().swap(wavelength);
    std::vector<double>().swap(spectral);
    additionalInfoCount = 0;
    std::vector<std::string>().swap(additionalInfo);
    timeStamp.clear();
    averages = 0;
    integrationTimeMs = 0.0;
}

// ---- Load -----------------------------------------------------------------------

std::string CQOFile::ParseInfoLine(const std::string line, const std::string tag)
{
    return guarded(std::string(), [&] {
        const std::size_t p = line.find(tag);
        if (p == std::string::npos) return std::string();
        // The value stands before the tag with one blank between them; a tag
        // at the very start gives the whole line. Callers rely on this cut.
        if (p == 0) return line;
        return line.substr(0, p - 1);
    });
}

int CQOFile::Load(const char* name)
{
    return guarded(kNoMemory, [&]() -> int {
        Init();
        if (name) fileName = name;
        if (!name || std::strlen(name) < 3) return -1;
        LineReader in(name);
        if (!in.is_open()) return -2;
        const std::uintmax_t budget = line_budget(name);

        std::string line;
        if (!in.read(line)) return -3;
        if (line.find(kMarker) == std::string::npos) return -4;
        if (parse_double(line.c_str()) < 2.0) return -5;
        if (!in.read(header)) return -6;
        if (!in.read(unitName)) return -7;

        if (!in.read(line)) return -8;
        // A negative count turns into a huge unsigned one and is refused
        // with the absurd ones.
        additionalInfoCount = static_cast<unsigned int>(parse_int(line.c_str()));
        if (additionalInfoCount > budget) return -8;
        additionalInfo.resize(additionalInfoCount);
        for (unsigned int i = 0; i < additionalInfoCount; ++i) {
            if (!in.read(additionalInfo[i])) return -9;
            // The tags are matched case-sensitively, so "[Averages]" from
            // converted Kavri Wendo files is not taken; callers rely on it.
            const std::string& info = additionalInfo[i];
            std::string value = ParseInfoLine(info, "[Timestamp]");
            if (!value.empty()) timeStamp = value;
            value = ParseInfoLine(info, "[AVERAGES]");
            if (!value.empty()) averages = static_cast<unsigned int>(parse_int(value.c_str()));
            value = ParseInfoLine(info, "[Integration Time ms]");
            if (!value.empty()) integrationTimeMs = parse_double(value.c_str());
        }

        if (!in.read(line)) return -10;  // first wavelength: not used
        if (!in.read(line)) return -11;
        const int announced = parse_int(line.c_str());
        dataLength = static_cast<unsigned int>(announced);
        if (!in.read(line)) return -12;  // last wavelength: not used
        if (announced < 2 || static_cast<std::uintmax_t>(announced) > budget) return -13;
        wavelength.resize(dataLength);
        spectral.resize(dataLength);
        for (unsigned int i = 0; i < dataLength; ++i) {
            if (!in.read(line)) return -14;
            // A line without the comma or with text in place of a number
            // leaves what is missing at 0.
            std::sscanf(line.c_str(), "%lf,%lf", &wavelength[i], &spectral[i]);
        }
        return 1;
    });
}

// ---- Save -----------------------------------------------------------------------

int CQOFile::Save(const char* name, const char* headerText, const char* unitText,
                  const std::vector<double> wl, const std::vector<double> values,
                  const std::vector<std::string> info)
{
    return guarded(-1, [&]() -> int {
        if (!name || !*name) return -1;
        if (wl.empty()) return -2;
        if (values.size() < wl.size()) return -3;
        ReplacingFile out(name);
        std::FILE* f = out.get();
        if (!f) return -1;

        bool ok = put_line(f, kFirstLine) && put_line(f, headerText ? headerText : "") &&
                  put_line(f, unitText ? unitText : "") && put_count(f, info.size());
        for (std::size_t i = 0; ok && i < info.size(); ++i) ok = put_line(f, info[i]);
        ok = ok && put_number(f, wl.front()) && put_line(f, "") && put_count(f, wl.size()) &&
             put_number(f, wl.back()) && put_line(f, "");
        for (std::size_t i = 0; ok && i < wl.size(); ++i)
            ok = put_number(f, wl[i]) && put_bytes(f, ",") && put_number(f, values[i]) &&
                 put_line(f, "");
        // Unless every byte went out, the temporary file is dropped and an
        // existing file stays as it was.
        return ok && out.commit() ? 1 : -1;
    });
}

// ---- Getters ----------------------------------------------------------------------

const char* CQOFile::GetHeader() { return header.c_str(); }
const char* CQOFile::GetUnitName() { return unitName.c_str(); }
const char* CQOFile::GetTimeStamp() { return timeStamp.c_str(); }
unsigned int CQOFile::GetAverages() const { return averages; }
double CQOFile::GetIntegrationTime_ms() const { return integrationTimeMs; }

std::vector<double> CQOFile::GetWavelength() const
{
    return guarded(std::vector<double>(), [&] { return wavelength; });
}

std::vector<double> CQOFile::GetSpectral() const
{
    return guarded(std::vector<double>(), [&] { return spectral; });
}

unsigned int CQOFile::GetDataLength() const { return dataLength; }

unsigned int CQOFile::GetWavelengthLength() const
{
    return static_cast<unsigned int>(wavelength.size());
}

unsigned int CQOFile::GetAdditionalInfoCount() const { return additionalInfoCount; }

const char* CQOFile::GetAdditionLineInfo(unsigned int i)
{
    if (i >= additionalInfoCount || i >= additionalInfo.size()) return nullptr;
    return additionalInfo[i].c_str();
}

// ---- C face -------------------------------------------------------------------------

extern "C" QOMATH_API int QOReadSpectralFile(const char* fileName, SpectralRecord2* rec,
                                             SpectralFileExtraInfo* extra)
{
    return guarded(kNoMemory, [&]() -> int {
        if (!rec) return -1;
        CQOFile file;
        const int status = file.Load(fileName);
        if (status != 1) return status;

        // The record has 50 information slots and room for 4096 points; a
        // file with more is refused with the codes the C readers give for
        // such counts, before anything is written.
        const unsigned int infoCount = file.GetAdditionalInfoCount();
        const unsigned int points = file.GetDataLength();
        if (infoCount > kRecordInfoLines) return -8;
        if (points > kRecordPoints) return -14;

        const std::vector<double> wl = file.GetWavelength();
        const std::vector<double> values = file.GetSpectral();
        if (wl.size() != points || values.size() != points) return kNoMemory;

        rec->infoCount = static_cast<int>(infoCount);
        for (unsigned int i = 0; i < infoCount; ++i)
            copy_text(rec->info[i], sizeof rec->info[i], file.GetAdditionLineInfo(i));
        copy_text(rec->header, sizeof rec->header, file.GetHeader());
        copy_text(rec->unitName, sizeof rec->unitName, file.GetUnitName());
        for (unsigned int i = 0; i < points; ++i) {
            rec->wavelengths[i] = static_cast<float>(wl[i]);
            rec->values[i] = static_cast<float>(values[i]);
        }
        rec->pointCount = static_cast<float>(points);
        rec->firstWavelength = static_cast<float>(wl.front());
        rec->lastWavelength = static_cast<float>(wl.back());

        if (extra) {
            extra->averages = static_cast<int>(file.GetAverages());
            copy_text(extra->timestamp, sizeof extra->timestamp, file.GetTimeStamp());
            extra->integrationTimeMs = static_cast<float>(file.GetIntegrationTime_ms());
            extra->unitCode = ConvertUnitNameToNumber(file.GetUnitName());
        }
        return 1;
    });
}
