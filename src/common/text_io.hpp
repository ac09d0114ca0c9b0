// Line input and whole-file output shared by the spectral-file readers and
// writers.
#pragma once

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace qomath::text {

// Buffer sizes of the line reads: a line holds at most kLineBuffer - 1
// characters before its LF, a unit line at most kUnitBuffer - 1.
inline constexpr std::size_t kLineBuffer = 255;
inline constexpr std::size_t kUnitBuffer = 50;
inline constexpr std::size_t kMinNameLength = 2;
inline constexpr std::size_t kMaxNameLength = 512;

// True when a file name has an acceptable length (2..512 characters).
bool name_length_ok(const char* name);

// Reads a text file line by line with a bounded read that stops at LF, as
// the spectral files have always been read: a line of cap - 1 characters
// fits, a longer one fails, and so does the end of the file. A CR before the
// LF stays in the line (files written on Windows, or with CR LF through a
// translating stream, end their lines in CR LF or CR CR LF); number parsing
// stops at it anyway, text lines keep it.
class LineReader {
public:
    explicit LineReader(const char* path);
    bool is_open() const { return in_.is_open(); }
    // Reads the next line into buf (cap bytes, NUL-terminated). False on a
    // line that does not fit, at the end of the file, or after a failure.
    bool read(char* buf, std::size_t cap);
    // The same into a string, with the default line bound.
    bool read(std::string& line);

private:
    std::ifstream in_;
};

// Creates or replaces a whole file safely: everything is written to a
// temporary file in the same folder, which replaces the target only when
// every byte has been written. Until commit() succeeds the target, if it
// exists, is untouched; a file that is not committed is removed. Through a
// symbolic link the link's final target is replaced and the link kept; an
// existing device, FIFO or socket is written in place (never replaced); a
// folder cannot be written (get() is null).
class ReplacingFile {
public:
    explicit ReplacingFile(const char* target);
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    // The stream to write to (text mode); null when the file could not be created.
    std::FILE* get() const { return file_; }
    // Flushes, closes and renames over the target. False on any failure.
    bool commit();

private:
    std::string target_;
    std::string temp_;
    std::FILE* file_ = nullptr;
    bool in_place_ = false;
};

// atof/atoi as the readers have always used them (leading blanks skipped,
// parsing stops at the first character that is not part of the number, 0
// for text), but quicker on the plain decimal numbers of the files.
double parse_double(const char* s);
int parse_int(const char* s);

// The text without leading and trailing blanks, tabs and CR.
std::string_view trim(std::string_view s);

// Strict number parsing for the program: the whole field (blanks around it
// aside) must be one decimal number; "nan" and "inf" parse and are left to
// the caller to refuse. False for anything else.
bool parse_number_exact(std::string_view s, double& value);

}  // namespace qomath::text
