// The stray-light files: LSF, SDF matrix, C matrix in text and binary, and
// the loading of a binary C matrix for the correction. Readers take the file
// whole and parse it in memory; writers go through the safe replace.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/barrier.hpp"
#include "common/text_io.hpp"
#include "qomath/straylight.h"
#include "straylight/straylight.hpp"

using qomath::detail::guarded;

namespace qomath::straylight {
namespace {

// The file's lines as a bounded line read gives them: at most cap - 1
// characters, up to and including an LF; a longer line comes in pieces,
// each of which the readers take as a line. The piece is NUL-terminated
// (an embedded NUL ends its text, as it would in a C string).
class Pieces {
public:
    Pieces(std::string_view data, std::size_t cap) : data_(data), buf_(cap) {}
    char* next()
    {
        if (pos_ >= data_.size()) return nullptr;
        const std::size_t room = buf_.size() - 1;
        std::size_t len = std::min(room, data_.size() - pos_);
        const void* lf = std::memchr(data_.data() + pos_, '\n', len);
        if (lf) len = static_cast<std::size_t>(static_cast<const char*>(lf) - (data_.data() + pos_)) + 1;
        std::memcpy(buf_.data(), data_.data() + pos_, len);
        buf_[len] = '\0';
        pos_ += len;
        return buf_.data();
    }

private:
    std::string_view data_;
    std::vector<char> buf_;
    std::size_t pos_ = 0;
};

// printf's "%f" and "%e" in the "C" format whatever locale the host has set.
void append_fixed(std::string& s, double v)
{
    char buf[400];
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, 6);
    s.append(buf, r.ptr);
}

void append_sci(std::string& s, double v)
{
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, 6);
    s.append(buf, r.ptr);
}

void append_int(std::string& s, long long v)
{
    char buf[32];
    const int k = std::snprintf(buf, sizeof buf, "%lld", v);
    s.append(buf, static_cast<std::size_t>(k));
}

}  // namespace

bool read_prefix(const char* path, std::string& data, std::size_t max_bytes)
{
    std::error_code ec;
    if (!path || std::filesystem::is_directory(path, ec)) return false;
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    data.clear();
    char buf[65536];
    while (data.size() < max_bytes) {
        in.read(buf, static_cast<std::streamsize>(std::min(sizeof buf, max_bytes - data.size())));
        const auto got = in.gcount();
        if (got <= 0) break;
        data.append(buf, static_cast<std::size_t>(got));
    }
    return !in.bad();
}

bool read_whole(const char* path, std::string& data)
{
    return read_prefix(path, data, static_cast<std::size_t>(-1));
}

bool write_file(const char* path, std::string_view bytes)
{
    text::ReplacingFile f(path);
    if (!f.get()) return false;
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), f.get()) != bytes.size()) return false;
    return f.commit();
}

int parse_lsf(std::string_view data, double* out, unsigned* n, unsigned* peak, unsigned max_values)
{
    Pieces lines(data, 25);
    const char* line = lines.next();
    if (!line) return -2;
    *peak = static_cast<unsigned>(text::parse_int(line));
    line = lines.next();
    if (!line) return -3;
    *n = static_cast<unsigned>(text::parse_int(line));
    for (unsigned count = 0; count < max_values && (line = lines.next()) != nullptr; ++count)
        out[count] = text::parse_double(line);
    return 1;
}

int parse_sdf(std::string_view data, double* m, unsigned n)
{
    Pieces lines(data, 30000);
    const std::size_t N = n;
    for (std::size_t r = 0; r < N; ++r) {
        char* p = lines.next();
        if (!p) break;  // rows the file lacks stay as they were
        double* row = m + r * N;
        for (std::size_t k = 0; k < N; ++k) {
            // atof at the current place (the field ends at the next ","),
            // then past that ","; with none left the row ends in zeros.
            char* comma = std::strchr(p, ',');
            if (comma) *comma = '\0';
            row[k] = text::parse_double(p);
            if (comma) {
                *comma = ',';
                p = comma + 1;
            } else {
                p += std::strlen(p);
            }
        }
    }
    return 1;
}

int parse_cmatrix_text(std::string_view data, float* out, int max_values)
{
    Pieces lines(data, 25000);
    int count = 0;
    char field[50];
    std::size_t len = 0;
    auto flush = [&] {
        if (len == 0) return;  // empty fields are skipped
        field[len] = '\0';
        out[count++] = static_cast<float>(text::parse_double(field));
        len = 0;
    };
    // maxValues is looked at before each line only: a started line is read
    // to its end (callers leave room for kCmatrixOverrun more values).
    while (count < max_values) {
        const char* p = lines.next();
        if (!p) break;
        for (; *p; ++p) {
            if (*p == ',' || *p == '\r' || *p == '\n') flush();
            else if (len < 49) field[len++] = *p;  // characters past the 49th are dropped
        }
        flush();
    }
    return count;
}

void format_lsf(const double* lsf, unsigned n, int peak, std::string& text)
{
    text.clear();
    append_int(text, peak);
    text += '\n';
    append_int(text, static_cast<int>(n));
    text += '\n';
    for (unsigned i = 0; i < n; ++i) {
        append_fixed(text, lsf[i]);
        text += '\n';
    }
}

void format_sdf(const double* m, std::size_t n, std::string& text)
{
    text.clear();
    text.reserve(n * n * 14);
    for (std::size_t r = 0; r < n; ++r) {
        for (std::size_t c = 0; c < n; ++c) {
            if (c) text += ',';
            append_sci(text, m[r * n + c]);
        }
        text += '\n';
    }
}

std::size_t format_cmatrix_text(const float* m, std::size_t count, std::string& text)
{
    const auto s = static_cast<std::size_t>(std::sqrt(static_cast<double>(count)));
    text.clear();
    text.reserve(s * s * 10);
    for (std::size_t r = 0; r < s; ++r)
        for (std::size_t c = 0; c < s; ++c) {
            append_fixed(text, m[r * s + c]);
            text += c + 1 < s ? ',' : '\n';
        }
    return s * s;
}

int load_correction(State& st, const char* path)
{
    st.correction.clear();
    st.loaded = false;
    if (!path || std::strlen(path) < 3) return -1;
    return guarded(-1, [&] {
        std::string data;
        if (!read_prefix(path, data, kMatrixBytes + 1)) return -1;
        if (data.size() != kMatrixBytes) return -2;
        st.correction.resize(kMatrixValues);
        std::memcpy(st.correction.data(), data.data(), kMatrixBytes);
        for (const float v : st.correction)
            if (!std::isfinite(v)) {
                st.correction.clear();
                return -2;
            }
        st.loaded = true;
        return 1;
    });
}

}  // namespace qomath::straylight

namespace sl = qomath::straylight;

extern "C" {

int StrayLightSaveLSFFile(double* lsf, unsigned n, int peakPixel, const char* path)
{
    return guarded(-1, [&] {
        std::string text;
        sl::format_lsf(lsf, n, peakPixel, text);
        return sl::write_file(path, text) ? 1 : -1;
    });
}

int StrayLightReadLSFFile(double* out, unsigned* n, unsigned* peakPixel, const char* path,
                          unsigned maxValues)
{
    return guarded(-1, [&] {
        std::string data;
        if (!sl::read_whole(path, data)) return -1;
        return sl::parse_lsf(data, out, n, peakPixel, maxValues);
    });
}

int StrayLightSaveSDFMatrixFile(double* m, unsigned n, const char* path)
{
    return guarded(-1, [&] {
        std::string text;
        sl::format_sdf(m, n, text);
        return sl::write_file(path, text) ? 1 : -1;
    });
}

int StrayLightReadSDFMatrixFile(double* m, unsigned* nOut, const char* path, unsigned n)
{
    return guarded(-1, [&] {
        std::string data;
        if (!sl::read_whole(path, data)) return -1;
        *nOut = n;
        return sl::parse_sdf(data, m, n);
    });
}

int StrayLightReadCmatrixFile(float* out, const char* path, int maxValues, int binary)
{
    return guarded(-1, [&] {
        std::string data;
        if (binary) {
            const std::size_t want = maxValues > 0 ? static_cast<std::size_t>(maxValues) * sizeof(float) : 0;
            if (!sl::read_prefix(path, data, want)) return -1;
            const std::size_t got = data.size() / sizeof(float);
            std::memcpy(out, data.data(), got * sizeof(float));
            return static_cast<int>(got);
        }
        if (!sl::read_whole(path, data)) return -1;
        return sl::parse_cmatrix_text(data, out, maxValues);
    });
}

int StrayLightWriteCmatrixFile(float* m, int count, const char* path, int binary)
{
    if (count < 1) return 0;
    return guarded(-1, [&] {
        if (binary) {
            const std::string_view bytes(reinterpret_cast<const char*>(m),
                                         static_cast<std::size_t>(count) * sizeof(float));
            return sl::write_file(path, bytes) ? count : -1;
        }
        std::string text;
        const std::size_t written = sl::format_cmatrix_text(m, static_cast<std::size_t>(count), text);
        return sl::write_file(path, text) ? static_cast<int>(written) : -1;
    });
}

int StrayLightCSVfileToBinary(const char* csvPath, const char* binPath)
{
    return guarded(-1, [&] {
        // Zeroed, where the old conversion wrote whatever the buffer held.
        std::vector<float> buf(sl::kMatrixValues + sl::kCmatrixOverrun, 0.0f);
        const int total = static_cast<int>(sl::kMatrixValues);
        if (StrayLightReadCmatrixFile(buf.data(), csvPath, total, 0) <= 0) return -1;
        if (StrayLightWriteCmatrixFile(buf.data(), total, binPath, 1) <= 0) return -2;
        return 1;
    });
}

int StrayLightBinaryfileToCSV(const char* binPath, const char* csvPath)
{
    return guarded(-1, [&] {
        std::vector<float> buf(sl::kMatrixValues, 0.0f);
        const int total = static_cast<int>(sl::kMatrixValues);
        if (StrayLightReadCmatrixFile(buf.data(), binPath, total, 1) <= 0) return -1;
        if (StrayLightWriteCmatrixFile(buf.data(), total, csvPath, 0) <= 0) return -2;
        return 1;
    });
}

}  // extern "C"
