#include "spectrum_io.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "text.hpp"

namespace qomath::cli {
namespace {

// The whole content of a file or of standard input; false with errno's text.
bool slurp(const std::string& path, std::string& data, std::string& why)
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
    char buf[1 << 16];
    std::size_t got = 0;
    while ((got = std::fread(buf, 1, sizeof buf, f)) > 0) data.append(buf, got);
    const bool ok = !std::ferror(f);
    if (!ok) why = std::strerror(errno);
    if (f != stdin) std::fclose(f);
    return ok;
}

}  // namespace

std::string display_name(const std::string& path)
{
    return path == "-" ? std::string("standard input") : printable(path);
}

bool read_spectrum(const std::string& path, int plain_unit, Spectrum& s, std::string& messages)
{
    s = Spectrum{};
    std::string data;
    std::string why;
    const std::string name = display_name(path);
    if (!slurp(path, data, why)) {
        messages += "qomath: " + name + ": cannot read (" + why + ")\n";
        return false;
    }
    files::ParsedSpectrum p;
    std::vector<files::Problem> problems;
    const bool ok = files::parse_spectrum(data, plain_unit, p, problems);
    for (const files::Problem& x : problems) {
        messages += "qomath: " + name;
        if (x.line > 0) messages += ":" + std::to_string(x.line);
        messages += x.error ? ": " : ": warning: ";
        messages += printable(cp1252_to_utf8(x.what)) + "\n";
    }
    s.version = static_cast<float>(p.version);
    s.plain = p.plain;
    s.header = std::string(trim_right(p.header));
    s.unit = std::string(trim_right(p.unit));
    s.unit_code = p.unit_code < 0 ? 0 : p.unit_code;
    for (const std::string& i : p.info) s.info.emplace_back(trim_right(i));
    s.wavelengths = std::move(p.wavelengths);
    s.values = std::move(p.values);
    return ok;
}

bool read_spectrum(const std::string& path, int plain_unit, Spectrum& s, std::FILE* err)
{
    std::string messages;
    const bool ok = read_spectrum(path, plain_unit, s, messages);
    std::fputs(messages.c_str(), err);
    return ok;
}

}  // namespace qomath::cli
