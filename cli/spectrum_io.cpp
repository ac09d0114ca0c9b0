#include "spectrum_io.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cstdint>
#include <filesystem>

#include "output.hpp"
#include "text.hpp"

namespace qomath::cli {
bool read_file(const std::string& path, std::string& data, std::string& why)
{
    std::error_code ec;
    if (path != "-" && std::filesystem::is_directory(path, ec)) {
        why = "is a folder";
        return false;
    }
    std::FILE* f = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
    if (!f) {
        why = std::strerror(errno);
        return false;
    }
    data.clear();
    // A regular file in one read of its size; standard input and anything
    // that grows in pieces.
    const auto size = path == "-" ? std::uintmax_t{0} : std::filesystem::file_size(path, ec);
    std::size_t got = 0;
    if (!ec && size > 0 && size < (std::uintmax_t{1} << 32)) {
        data.resize(static_cast<std::size_t>(size));
        got = std::fread(data.data(), 1, data.size(), f);
        data.resize(got);
    }
    if (got == data.size() && !std::ferror(f)) {
        char buf[1 << 16];
        while ((got = std::fread(buf, 1, sizeof buf, f)) > 0) data.append(buf, got);
    }
    const bool ok = !std::ferror(f);
    if (!ok) why = std::strerror(errno);
    if (f != stdin) std::fclose(f);
    return ok;
}

std::string display_name(const std::string& path)
{
    return path == "-" ? std::string("standard input") : printable(path);
}

bool parse_input(const std::string& path, std::string_view text, int plain_unit, Spectrum& s,
                 std::string& messages)
{
    files::ParsedSpectrum p;
    std::vector<files::Problem> problems;
    const bool ok = files::parse_spectrum(text, plain_unit, p, problems);
    const std::string name = display_name(path);
    for (const files::Problem& x : problems) {
        messages += "qomath: ";
        messages += name;
        if (x.line > 0) {
            messages += ':';
            messages += std::to_string(x.line);
        }
        messages += x.error ? ": " : ": warning: ";
        messages += printable(cp1252_to_utf8(x.what));
        messages += '\n';
    }
    s.version = static_cast<float>(p.version);
    s.plain = p.plain;
    s.header = std::string(trim_right(p.header));
    s.unit = std::string(trim_right(p.unit));
    s.unit_code = p.unit_code < 0 ? 0 : p.unit_code;
    s.info.clear();
    for (const std::string& i : p.info) s.info.emplace_back(trim_right(i));
    s.wavelengths = std::move(p.wavelengths);
    s.values = std::move(p.values);
    return ok;
}

bool read_spectrum(const std::string& path, int plain_unit, Spectrum& s, std::string& messages)
{
    std::string data;
    std::string why;
    if (!read_file(path, data, why)) {
        messages += "qomath: " + display_name(path) + ": cannot read (" + why + ")\n";
        return false;
    }
    return parse_input(path, data, plain_unit, s, messages);
}

bool read_spectrum(const std::string& path, int plain_unit, Spectrum& s, std::FILE* err)
{
    std::string messages;
    const bool ok = read_spectrum(path, plain_unit, s, messages);
    std::fputs(messages.c_str(), err);
    return ok;
}

int own_version(const Spectrum& s)
{
    return s.version >= 1.0f && s.version < 2.0f ? 1 : 2;
}

bool write_spectrum(const Spectrum& s, int version, const std::string& path, const std::string& name,
                    std::FILE* out, std::FILE* err, const char* failure)
{
    files::ParsedSpectrum p;
    p.header = s.header;
    p.unit = s.unit;
    p.info = s.info;
    p.wavelengths = s.wavelengths;
    p.values = s.values;
    std::string text, why;
    if (!files::format_spectral_text(p, version, text, why)) {
        std::fprintf(err, "qomath: %s: %s (%s)\n", name.c_str(), failure, why.c_str());
        return false;
    }
    Sink sink(out, path);
    if (sink.file()) std::fwrite(text.data(), 1, text.size(), sink.file());
    return sink.finish(err);
}

}  // namespace qomath::cli
