// Writing spectral text files from the caller's records.
//
// Version 1.0 lines end in CR LF, put there by the writer itself; version 2.0
// lines end in LF. Both go through a text-mode stream, so on a system that
// translates line ends a version 1.0 file carries CR CR LF and a version 2.0
// file CR LF; the readers take all of these.
//
// Whole files are written beside the target and put in place only when
// complete (ReplacingFile). The measurement log of WriteSpectralFile2X is
// appended to in place.
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

#include "common/barrier.hpp"
#include "files/spectral_file.hpp"
#include "files/spectrum_reader.hpp"
#include "common/text_io.hpp"

namespace qomath::files {
using namespace qomath::text;
namespace {

using qomath::detail::guarded;

constexpr const char* kEolVersion1 = "\r\n";
constexpr const char* kEolVersion2 = "\n";

// A text field of the caller's record as one line: its CR and LF become
// blanks in the record itself, then it is written.
void put_text_line(TextOut& out, char* field, std::size_t size, const char* eol)
{
    blank_line_breaks(field, size);
    out.field(field, size);
    out.put(eol);
}

// The information count and lines. Each line is cut to 49 characters in the
// record (a NUL in its 50th byte) before it is cleaned and written.
template <class Record>
void put_info_block(TextOut& out, Record& rec, const char* eol)
{
    const int count = rec.infoCount > kMaxInfo ? kMaxInfo : rec.infoCount;
    out.format("%d%s", count, eol);
    for (int i = 0; i < count; ++i) {
        rec.info[i][kInfoChars] = '\0';
        put_text_line(out, rec.info[i], kInfoSize, eol);
    }
}

// "%f, %.8e" lines of the first n points.
void put_points(TextOut& out, const float* wavelengths, const float* values, int n,
                const char* eol)
{
    for (int i = 0; i < n; ++i) {
        out.fixed(wavelengths[i], 6);
        out.put(", ");
        out.scientific(values[i], 8);
        out.put(eol);
    }
}

int write_version1(const char* fileName, SpectralRecord1& rec)
{
    ReplacingFile file(fileName);
    if (!file.get()) return -1;
    const char* eol = kEolVersion1;
    TextOut out;
    out.put("1.0 ");
    out.put(kSpectralMarker);
    out.put(eol);
    put_text_line(out, rec.header, sizeof rec.header, eol);
    put_text_line(out, rec.unitName, sizeof rec.unitName, eol);
    put_info_block(out, rec, eol);
    // The grid lines go start, step, end.
    out.format("%9.8f%s", static_cast<double>(rec.range.start), eol);
    out.format("%9.8f%s", static_cast<double>(rec.range.step), eol);
    out.format("%9.8f%s", static_cast<double>(rec.range.end), eol);
    const int n = grid_points(rec.range);
    for (int i = 0; i < n; ++i) {
        out.scientific(rec.values[i], 8);
        out.put(eol);
    }
    return commit_text(file, out);
}

int write_version2(const char* fileName, SpectralRecord2& rec)
{
    ReplacingFile file(fileName);
    if (!file.get()) return -1;
    const char* eol = kEolVersion2;
    TextOut out;
    out.put("2.0 ");
    out.put(kSpectralMarker);
    out.put(eol);
    put_text_line(out, rec.header, sizeof rec.header, eol);
    put_text_line(out, rec.unitName, sizeof rec.unitName, eol);
    // Unlike version 1.0, a negative count writes neither the count nor any
    // line; such a file does not read back, and callers know it.
    if (rec.infoCount >= 0) put_info_block(out, rec, eol);
    out.format("%.8f%s", static_cast<double>(rec.firstWavelength), eol);
    out.format("%.0f%s", static_cast<double>(rec.pointCount), eol);
    out.format("%.8f%s", static_cast<double>(rec.lastWavelength), eol);
    put_points(out, rec.wavelengths, rec.values, points_below(rec.pointCount), eol);
    return commit_text(file, out);
}

int write_bare_list(const char* fileName, const SpectralRecord2& rec)
{
    ReplacingFile file(fileName);
    if (!file.get()) return -1;
    TextOut out;
    put_points(out, rec.wavelengths, rec.values, points_below(rec.pointCount), kEolVersion2);
    return commit_text(file, out);
}

bool file_exists(const char* fileName)
{
    std::FILE* probe = std::fopen(fileName, "r");
    if (!probe) return false;
    std::fclose(probe);
    return true;
}

int write_log_row(const char* fileName, const SpectralRecord2& rec, const float* colour,
                  int append)
{
    const bool existed = file_exists(fileName);
    const int n = points_below(rec.pointCount);
    TextOut out;
    // Only a new file gets the title row; one that is overwritten has none.
    if (!existed) {
        out.put("Date,Header,Units,");
        out.put("CIE1931_2deg_x,CIE1931y_2deg_y,CIE1931_10deg_x,CIE1931_10deg_y,");
        for (int i = 0; i < n; ++i) {
            out.fixed(rec.wavelengths[i], 6);
            out.put(",");
        }
        out.put("\n");
    }
    // Literal words stand in the first three columns, and the fourth colour
    // figure runs straight into the first value: the readers of these logs
    // take the row exactly so.
    out.put("DATE,HEADER,UNIT,");
    out.format("%.4f,%.4f,%.4f,%.4f", static_cast<double>(colour[37]),
               static_cast<double>(colour[38]), static_cast<double>(colour[40]),
               static_cast<double>(colour[41]));
    for (int i = 0; i < n; ++i) {
        out.scientific(rec.values[i], 8);
        out.put(",");
    }
    out.put("\n");

    std::FILE* f = std::fopen(fileName, existed && append ? "a" : "w");
    if (!f) return -1;
    const bool written = out.write(f) && std::fflush(f) == 0;
    const bool closed = std::fclose(f) == 0;
    return written && closed ? 1 : -1;
}

// A text of the program's spectrum as one line: line breaks become blanks,
// cut to `chars` characters as the record fields would cut it.
void put_text_line(TextOut& out, std::string_view text, std::size_t chars, const char* eol)
{
    std::string line(text.substr(0, chars));
    for (char& c : line)
        if (c == '\r' || c == '\n') c = ' ';
    out.put(line.c_str(), line.size());
    out.put(eol);
}

}  // namespace

bool format_spectral_text(const ParsedSpectrum& s, int version, std::string& text,
                          std::string& why)
{
    const std::size_t n = s.values.size();
    if (n < 2 || s.wavelengths.size() != n) {
        why = "fewer than 2 points";
        return false;
    }
    const char* eol = version == 1 ? kEolVersion1 : kEolVersion2;
    TextOut out;
    out.put(version == 1 ? "1.0 " : "2.0 ");
    out.put(kSpectralMarker);
    out.put(eol);
    put_text_line(out, s.header, kLineBuffer - 1, eol);
    put_text_line(out, s.unit, kUnitBuffer - 1, eol);
    out.format("%zu%s", s.info.size(), eol);
    for (const std::string& line : s.info) put_text_line(out, line, kInfoChars, eol);
    if (version == 1) {
        // An even grid: start, step, end, then the values alone.
        const double first = s.wavelengths.front();
        const double step = (static_cast<double>(s.wavelengths.back()) - first) / static_cast<double>(n - 1);
        for (std::size_t i = 0; i < n; ++i) {
            if (std::fabs(s.wavelengths[i] - (first + static_cast<double>(i) * step)) > 1e-3 * step + 1e-4) {
                char buf[120];
                std::snprintf(buf, sizeof buf,
                              "the wavelengths are not evenly spaced: %g nm at point %zu",
                              static_cast<double>(s.wavelengths[i]), i + 1);
                why = buf;
                return false;
            }
        }
        out.format("%9.8f%s", first, eol);
        out.format("%9.8f%s", step, eol);
        out.format("%9.8f%s", static_cast<double>(s.wavelengths.back()), eol);
        for (const float v : s.values) {
            out.scientific(v, 8);
            out.put(eol);
        }
    } else {
        out.format("%.8f%s", static_cast<double>(s.wavelengths.front()), eol);
        out.format("%zu%s", n, eol);
        out.format("%.8f%s", static_cast<double>(s.wavelengths.back()), eol);
        put_points(out, s.wavelengths.data(), s.values.data(), static_cast<int>(n), eol);
    }
    text = out.str();
    return true;
}

}  // namespace qomath::files

using namespace qomath::files;

extern "C" {

int WriteSpectralFile(const char* fileName, SpectralRecord1* rec)
{
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(-1, [&] { return write_version1(fileName, *rec); });
}

int WriteSpectralFile2(const char* fileName, SpectralRecord2* rec)
{
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(-1, [&] { return write_version2(fileName, *rec); });
}

int WriteSpectralFile3(const char* fileName, SpectralRecord2* rec)
{
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(-1, [&] { return write_bare_list(fileName, *rec); });
}

int WriteSpectralFile2X(const char* fileName, SpectralRecord2* rec, const float* colour,
                        int append)
{
    if (!name_length_ok(fileName) || !rec || !colour) return -1;
    return guarded(-1, [&] { return write_log_row(fileName, *rec, colour, append); });
}

}  // extern "C"
