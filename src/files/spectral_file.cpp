// Spectral files: the pieces the readers and writers share, the conversions
// between the version 1.0 and 2.0 records, and the placeholder entry.
#include "files/spectral_file.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstring>

#include "common/text_io.hpp"
#include "qomath/grid.h"

namespace qomath::files {
using namespace qomath::text;

void copy_info_line(char* slot, const char* line, InfoCopy mode)
{
    std::strncpy(slot, line, kInfoChars);
    if (mode == InfoCopy::Terminated) {
        slot[kInfoChars] = '\0';
        return;
    }
    for (std::size_t i = 0; i < kInfoChars; ++i) {
        if (slot[i] == '\0') slot[i] = ' ';
    }
}

std::size_t field_length(const char* text, std::size_t size)
{
    const void* nul = std::memchr(text, '\0', size);
    return nul ? static_cast<std::size_t>(static_cast<const char*>(nul) - text) : size;
}

void copy_text(char* dst, std::size_t max_chars, const char* src, std::size_t src_size)
{
    const std::size_t n = std::min(max_chars, field_length(src, src_size));
    std::memcpy(dst, src, n);
    dst[n] = '\0';
}

void blank_line_breaks(char* text, std::size_t size)
{
    const std::size_t n = field_length(text, size);
    for (std::size_t i = 0; i < n; ++i) {
        if (text[i] == '\r' || text[i] == '\n') text[i] = ' ';
    }
}

int points_below(float count)
{
    if (!(count > 0.0f)) return 0;
    if (count >= static_cast<float>(kMaxPoints)) return kMaxPoints;
    return static_cast<int>(std::ceil(count));
}

int grid_points(const typ_wlinfo& range)
{
    return std::min(WLNumPts(&range), kMaxPoints);
}

void TextOut::format(const char* fmt, ...)
{
    char buf[512];
    std::va_list args;
    va_start(args, fmt);
    const int n = std::vsnprintf(buf, sizeof buf, fmt, args);
    va_end(args);
    if (n < 0) return;
    if (static_cast<std::size_t>(n) < sizeof buf) {
        text_.append(buf, static_cast<std::size_t>(n));
        return;
    }
    // Longer than the buffer (a %f of a huge number): format again in place.
    const std::size_t at = text_.size();
    text_.resize(at + static_cast<std::size_t>(n) + 1);
    va_start(args, fmt);
    std::vsnprintf(text_.data() + at, static_cast<std::size_t>(n) + 1, fmt, args);
    va_end(args);
    text_.resize(at + static_cast<std::size_t>(n));
}

// std::to_chars with a precision gives the bytes printf gives for the same
// conversion, at a fraction of the cost; the data lines use it.
void TextOut::fixed(double v, int precision)
{
    char buf[400];  // the longest double in %f with 8 decimals needs 320
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, precision);
    if (r.ec == std::errc()) {
        text_.append(buf, static_cast<std::size_t>(r.ptr - buf));
    } else {
        format("%.*f", precision, v);
    }
}

void TextOut::scientific(double v, int precision)
{
    char buf[64];
    const auto r =
        std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, precision);
    if (r.ec == std::errc()) {
        text_.append(buf, static_cast<std::size_t>(r.ptr - buf));
    } else {
        format("%.*e", precision, v);
    }
}

bool TextOut::write(std::FILE* f) const
{
    if (!f) return false;
    return std::fwrite(text_.data(), 1, text_.size(), f) == text_.size();
}

int commit_text(ReplacingFile& file, const TextOut& text)
{
    if (!text.write(file.get())) return -1;
    return file.commit() ? 1 : -1;
}

}  // namespace qomath::files

using namespace qomath::files;

extern "C" {

int FileConvertSpectralVersion1toVersion2(const SpectralRecord1* src, SpectralRecord2* dst)
{
    if (!src || !dst) return -1;
    const typ_wlinfo range = src->range;
    // WLNumPts is 0 for an invalid grid (start < 0, start > end, step < 1e-7,
    // step > end, or any NaN).
    const int n = WLNumPts(&range);
    if (n < 3 || n > kMaxPoints) return -1;

    dst->infoCount = src->infoCount;
    std::memcpy(dst->info, src->info, sizeof dst->info);
    std::memcpy(dst->unitName, src->unitName, sizeof dst->unitName);
    std::memcpy(dst->header, src->header, sizeof dst->header);
    for (int i = 0; i < n; ++i) {
        dst->wavelengths[i] = static_cast<float>(i) * range.step + range.start;
    }
    std::memcpy(dst->values, src->values, sizeof(float) * static_cast<std::size_t>(n));
    dst->firstWavelength = range.start;
    dst->lastWavelength = range.end;
    dst->pointCount = static_cast<float>(n);
    return 1;
}

int FileConvertSpectralVersion2toVersion1(SpectralRecord2* rec2, SpectralRecord1* rec1)
{
    if (!rec2 || !rec1) return -1;
    // The texts go from the version 1.0 record into the version 2.0 one,
    // before anything is checked: callers fill the texts of rec1 and read
    // them back from rec2.
    rec2->infoCount = rec1->infoCount;
    std::memcpy(rec2->info, rec1->info, sizeof rec2->info);
    std::memcpy(rec2->unitName, rec1->unitName, sizeof rec2->unitName);
    std::memcpy(rec2->header, rec1->header, sizeof rec2->header);

    const float count = rec2->pointCount;
    if (!(count >= 3.0f && count <= static_cast<float>(kMaxPoints))) return -1;
    const int n = points_below(count);
    rec1->range.start = rec2->firstWavelength;
    rec1->range.end = rec2->lastWavelength;
    // The wavelengths are taken to be evenly spaced: no resampling. (The
    // count is at least 3 here, so only the span can make the step 0.)
    const float span = rec2->lastWavelength - rec2->firstWavelength;
    rec1->range.step = span > 0.0f ? span / (count - 1.0f) : 0.0f;
    std::memcpy(rec1->values, rec2->values, sizeof(float) * static_cast<std::size_t>(n));
    return 1;
}

// One entry, exported under three names, for hosts that still import them.
int ReadSpectralFile3(const char*, ...)
{
    return 0;
}
int ReadBinarySpectralFile(const char*, ...) __attribute__((alias("ReadSpectralFile3")));
int WriteDataArrayToFile(const char*, ...) __attribute__((alias("ReadSpectralFile3")));

}  // extern "C"
