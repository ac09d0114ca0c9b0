#include "common/text_io.hpp"

#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#if defined(_WIN32)
#include <process.h>
#define QOMATH_GETPID _getpid
#else
#include <unistd.h>
#define QOMATH_GETPID getpid
#endif

namespace qomath::text {

bool name_length_ok(const char* name)
{
    if (!name) return false;
    const std::size_t n = std::strlen(name);
    return n >= kMinNameLength && n <= kMaxNameLength;
}

LineReader::LineReader(const char* path)
{
    if (!path) return;
    // A folder opens as a stream on some systems; it has no lines to give.
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) return;
    in_.open(path, std::ios::in);
}

bool LineReader::read(char* buf, std::size_t cap)
{
    if (!in_.is_open() || !in_.good() || cap == 0) return false;
    // istream::getline stores at most cap - 1 characters and consumes the LF;
    // a line that does not fit sets failbit, and so does an empty read at the
    // end of the file. A last line without LF is still a line.
    in_.getline(buf, static_cast<std::streamsize>(cap));
    return !in_.fail();
}

bool LineReader::read(std::string& line)
{
    char buf[kLineBuffer];
    if (!read(buf, sizeof buf)) return false;
    line.assign(buf);
    return true;
}

namespace {
std::atomic<unsigned> g_temp_counter{0};
}

ReplacingFile::ReplacingFile(const char* target) : target_(target ? target : "")
{
    if (target_.empty()) return;
    // The temporary file sits beside the target so that the final rename
    // stays on one file system.
    // (snprintf rather than std::to_string: the latter's helpers would join
    // the library's exported names.)
    char suffix[64];
    std::snprintf(suffix, sizeof suffix, ".qomath-%ld-%u.tmp", static_cast<long>(QOMATH_GETPID()),
                  g_temp_counter.fetch_add(1));
    temp_ = target_ + suffix;
    file_ = std::fopen(temp_.c_str(), "w");
}

ReplacingFile::~ReplacingFile()
{
    if (file_) {
        std::fclose(file_);
        std::remove(temp_.c_str());
    }
}

bool ReplacingFile::commit()
{
    if (!file_) return false;
    const bool written = std::fflush(file_) == 0 && std::ferror(file_) == 0;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    std::error_code ec;
    if (written && closed) {
        std::filesystem::rename(temp_, target_, ec);
        if (!ec) return true;
    }
    std::remove(temp_.c_str());
    return false;
}

double parse_double(const char* s)
{
    const char* p = s;
    while (*p == ' ' || *p == '\t' || *p == '\n' || *p == '\v' || *p == '\f' || *p == '\r') ++p;
    const char* q = *p == '+' ? p + 1 : p;
    double v = 0.0;
    const char* end = q + std::strlen(q);
    const auto r = std::from_chars(q, end, v, std::chars_format::general);
    // Plain decimals take the quick path; hexadecimal numbers, inf, nan and
    // values out of range are left to the C library for its exact answers.
    if (r.ec == std::errc() && (r.ptr == end || (*r.ptr != 'x' && *r.ptr != 'X'))) {
        if (q != p && *q == '-') return std::atof(s);  // "+-1" is no number
        return v;
    }
    return std::atof(s);
}

int parse_int(const char* s)
{
    return std::atoi(s);
}

}  // namespace qomath::text
