// Pieces shared by the spectral-file readers, writers and converters.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "common/text_io.hpp"
#include "qomath/spectral_file.h"

namespace qomath::files {

inline constexpr int kMaxPoints = QOMATH_SPECTRAL_MAX_POINTS;
inline constexpr int kMaxInfo = QOMATH_SPECTRAL_MAX_INFO;
inline constexpr std::size_t kInfoSize = QOMATH_SPECTRAL_INFO_SIZE;
inline constexpr std::size_t kInfoChars = kInfoSize - 1;  // 49

// The marker every spectral file carries in its first line.
// Substrings that identify a unit name, tested in this order; the position is
// the code. "Irradiance" comes before "Radiance" so that irradiance texts are
// not taken for radiance. Kept apart from the writable unit tables: patching
// a display text does not change how names are parsed.
inline constexpr const char* kUnitNameKeys[7] = {
    "Counts", "Irradiance", "Radiant Intensity", "Radiant Flux",
    "Radiance", "Transmittance", "Reflectance"};

inline constexpr const char* kSpectralMarker = "[Quarvel Optronic Spectral File]";

// The tags that the Kavri Wendo conversion writes and reads back.
inline constexpr const char* kTimestampTag = "[Timestamp]";
inline constexpr const char* kExposureTag = "[Exposure Time]";
inline constexpr const char* kAveragesTag = "[Averages]";
inline constexpr const char* kCompensationTag = "[Integration Time Compensation]";

// How an information line lands in its 50-byte slot.
enum class InfoCopy {
    // At most 49 characters, the rest of the slot NUL-filled (version 1.0).
    Terminated,
    // At most 49 characters, then every NUL among the first 49 bytes becomes
    // a blank; the 50th byte is left as it was (version 2.0).
    BlankPadded,
};
void copy_info_line(char* slot, const char* line, InfoCopy mode);

// Length of a text field that may lack its NUL: at most size.
std::size_t field_length(const char* text, std::size_t size);

// Copies at most max_chars characters of a field of src_size bytes into dst
// and NUL-terminates it (dst holds max_chars + 1 bytes at least).
void copy_text(char* dst, std::size_t max_chars, const char* src, std::size_t src_size);

// Replaces every CR and LF of a text field (up to its NUL) by a blank.
void blank_line_breaks(char* text, std::size_t size);

// Number of points of a loop "for i = 0 while i < count" over a float count,
// limited to the 4096 a record holds; 0 for NaN and counts <= 0.
int points_below(float count);

// Number of grid points of a range, limited to the 4096 a record holds.
int grid_points(const typ_wlinfo& range);

// A file's text built in memory, then written in one go.
class TextOut {
public:
    TextOut() { text_.reserve(1 << 16); }
    void put(const char* s) { text_.append(s); }
    void put(const char* s, std::size_t n) { text_.append(s, n); }
    // A text field written up to its NUL, never beyond size bytes.
    void field(const char* s, std::size_t size) { put(s, field_length(s, size)); }
    // printf-style formatting.
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    void format(const char* fmt, ...);
    // The bytes of "%.*f" and "%.*e", without going through printf.
    void fixed(double v, int precision);
    void scientific(double v, int precision);
    const std::string& str() const { return text_; }
    // Writes everything; false on a write error.
    bool write(std::FILE* f) const;

private:
    std::string text_;
};

// Writes the text into a file opened with ReplacingFile and puts it in
// place: 1, or -1 when anything fails (the target is then left as it was).
int commit_text(text::ReplacingFile& file, const TextOut& text);

}  // namespace qomath::files
