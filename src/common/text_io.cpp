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

namespace {

// Where writing to `target` lands: the end of its chain of symbolic links
// (so that the link survives and its target is replaced), or the name itself.
std::filesystem::path final_target(const std::filesystem::path& target)
{
    namespace fs = std::filesystem;
    fs::path p = target;
    for (int hops = 0; hops < 40; ++hops) {
        std::error_code ec;
        if (!fs::is_symlink(fs::symlink_status(p, ec))) break;
        const fs::path link = fs::read_symlink(p, ec);
        if (ec) break;
        p = link.is_absolute() ? link : p.parent_path() / link;
    }
    return p;
}

}  // namespace

ReplacingFile::ReplacingFile(const char* target)
{
    namespace fs = std::filesystem;
    if (!target || !*target) return;
    std::error_code ec;
    const fs::path final = final_target(fs::path(target));
    target_ = final.string();
    const fs::file_status st = fs::status(final, ec);
    if (fs::exists(st)) {
        if (fs::is_directory(st)) return;
        if (!fs::is_regular_file(st)) {
            // A device, FIFO or socket is written in place, never replaced
            // by a regular file.
            in_place_ = true;
            file_ = std::fopen(target_.c_str(), "w");
            return;
        }
    }
    // The temporary file sits beside the target so that the final rename
    // stays on one file system.
    // (snprintf rather than std::to_string: the latter's helpers would join
    // the library's exported names.)
    char suffix[64];
    std::snprintf(suffix, sizeof suffix, ".qomath-%ld-%u.tmp", static_cast<long>(QOMATH_GETPID()),
                  g_temp_counter.fetch_add(1));
    temp_ = target_ + suffix;
    file_ = std::fopen(temp_.c_str(), "w");
    // A replaced file keeps its permissions.
    if (file_ && fs::is_regular_file(st)) fs::permissions(temp_, st.permissions(), ec);
}

ReplacingFile::~ReplacingFile()
{
    if (file_) {
        std::fclose(file_);
        if (!in_place_) std::remove(temp_.c_str());
    }
}

bool ReplacingFile::commit()
{
    if (!file_) return false;
    const bool written = std::fflush(file_) == 0 && std::ferror(file_) == 0;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (in_place_) return written && closed;
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

std::string_view trim(std::string_view s)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    const auto first = s.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return s.substr(first, s.find_last_not_of(blanks) - first + 1);
}

bool parse_number_exact(std::string_view s, double& value)
{
    s = trim(s);
    if (!s.empty() && s.front() == '+') s.remove_prefix(1);
    if (s.empty() || s.front() == '+') return false;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), value, std::chars_format::general);
    return r.ec == std::errc() && r.ptr == s.data() + s.size();
}

}  // namespace qomath::text
