#include "files/spectrum_reader.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "common/text_io.hpp"
#include "files/spectral_file.hpp"
#include "qomath/units.h"

namespace qomath::files {
namespace {

using text::parse_double;
using text::parse_number_exact;
using text::trim;

// The file cut into lines at LF, each without its CR; line i is number i + 1.
std::vector<std::string_view> split_lines(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const auto lf = text.find('\n');
        std::string_view line = text.substr(0, lf);
        while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.push_back(line);
        if (lf == std::string_view::npos) break;
        text.remove_prefix(lf + 1);
    }
    return lines;
}

std::string quoted(std::string_view s)
{
    constexpr std::size_t kShown = 40;
    std::string q = "'";
    for (const char c : s.substr(0, kShown)) q += c == '\t' ? std::string("\\t") : std::string(1, c);
    if (s.size() > kShown) q += "...";
    return q + "'";
}

std::string number_text(double v)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", v);
    return buf;
}

class Parser {
public:
    Parser(std::string_view text, std::vector<Problem>& problems)
        : lines_(split_lines(text)), problems_(problems)
    {
    }

    void error(int line, std::string what) { problems_.push_back({line, std::move(what), true}); }
    void warning(int line, std::string what) { problems_.push_back({line, std::move(what), false}); }

    std::size_t count() const { return lines_.size(); }
    std::string_view at(std::size_t i) const { return lines_[i]; }
    static int number(std::size_t i) { return static_cast<int>(i + 1); }

    // The next line, or an error naming what was expected there.
    bool next(std::size_t& i, std::string_view& line, const char* expected)
    {
        if (i >= lines_.size()) {
            error(number(i), std::string("the file ends where ") + expected + " should be");
            return false;
        }
        line = lines_[i++];
        return true;
    }

    bool number_line(std::size_t& i, const char* what, double& v)
    {
        std::string_view line;
        if (!next(i, line, what)) return false;
        if (!parse_number_exact(line, v) || !std::isfinite(v)) {
            error(number(i - 1), std::string(what) + " is not a number: " + quoted(line));
            return false;
        }
        return true;
    }

private:
    std::vector<std::string_view> lines_;
    std::vector<Problem>& problems_;
};

// The unit code of a spectral file's unit line by the library's rule (the
// first name it contains), or -1 when it contains none.
int unit_code_of_line(const std::string& unit)
{
    for (int code = 0; code < 7; ++code)
        if (unit.find(kUnitNameKeys[code]) != std::string::npos) return code;
    return -1;
}

// "wavelength,value" of a version 2.0 data line, both fields whole numbers.
bool parse_pair(std::string_view line, char separator, double& wl, double& v)
{
    const auto comma = line.find(separator);
    if (comma == std::string_view::npos) return false;
    return parse_number_exact(line.substr(0, comma), wl) &&
           parse_number_exact(line.substr(comma + 1), v);
}

// Two fields of plain text: comma, semicolon, tab or blanks between them.
bool parse_plain_pair(std::string_view line, double& wl, double& v)
{
    for (const char sep : {',', ';', '\t'})
        if (line.find(sep) != std::string_view::npos) return parse_pair(line, sep, wl, v);
    line = trim(line);
    const auto blank = line.find(' ');
    if (blank == std::string_view::npos) return false;
    return parse_number_exact(line.substr(0, blank), wl) &&
           parse_number_exact(line.substr(blank + 1), v);
}

void add_point(Parser& p, ParsedSpectrum& out, std::size_t line, double wl, double v)
{
    if (!std::isfinite(wl) || !std::isfinite(v)) {
        p.error(Parser::number(line), "a value is not finite (NaN or infinity)");
        return;
    }
    if (!out.wavelengths.empty() && !(static_cast<float>(wl) > out.wavelengths.back())) {
        p.error(Parser::number(line), "wavelength " + number_text(wl) +
                                          " nm does not increase on the one before it");
        return;
    }
    out.wavelengths.push_back(static_cast<float>(wl));
    out.values.push_back(static_cast<float>(v));
}

// Data lines from i on: version 1.0 takes one value a line on the grid,
// 2.0 and plain text take pairs. Blank lines at the end are fine; a blank
// line in the middle is not.
void read_data(Parser& p, ParsedSpectrum& out, std::size_t i, double start, double step,
               bool one_value, bool plain)
{
    std::size_t end = p.count();
    while (end > i && trim(p.at(end - 1)).empty()) --end;
    for (; i < end; ++i) {
        const std::string_view line = p.at(i);
        double wl = 0.0, v = 0.0;
        bool ok = false;
        if (one_value) {
            ok = parse_number_exact(line, v);
            wl = start + static_cast<double>(out.wavelengths.size()) * step;
        } else {
            ok = plain ? parse_plain_pair(line, wl, v) : parse_pair(line, ',', wl, v);
        }
        if (plain && !ok && out.wavelengths.empty() && trim(line).empty()) continue;
        if (plain && !ok && (trim(line).empty() || trim(line).front() == '#')) continue;
        if (!ok) {
            p.error(Parser::number(i),
                    std::string(one_value ? "not a value: " : "not 'wavelength,value': ") +
                        quoted(line));
            continue;
        }
        add_point(p, out, i, wl, v);
    }
}

bool same(double declared, float data)
{
    return std::fabs(declared - data) <= 1e-3 * std::max(1.0, std::fabs(declared));
}

void parse_spectral_file(Parser& p, ParsedSpectrum& out)
{
    std::size_t i = 1;
    out.version = parse_double(std::string(p.at(0)).c_str());
    const bool v1 = out.version >= 1.0 && out.version < 2.0;
    if (!v1 && out.version != 2.0) {
        p.error(1, "version " + number_text(out.version) + " is not supported (1.x and 2.0 are)");
        return;
    }
    std::string_view line;
    if (!p.next(i, line, "the header line")) return;
    out.header = line;
    if (!p.next(i, line, "the unit line")) return;
    out.unit = std::string(trim(line));
    out.unit_code = unit_code_of_line(out.unit);
    if (out.unit_code < 0) p.error(Parser::number(i - 1), "unknown unit " + quoted(out.unit));
    double info = 0.0;
    if (!p.number_line(i, "the information line count", info)) return;
    if (info < 0 || info != std::floor(info)) {
        p.error(Parser::number(i - 1), "the information line count is not a whole number");
        return;
    }
    for (double k = 0; k < info; ++k) {
        if (!p.next(i, line, "an information line")) return;
        out.info.emplace_back(trim(line));
    }
    double a = 0.0, b = 0.0, c = 0.0;
    if (v1) {
        // start, step, end
        if (!p.number_line(i, "the first wavelength", a) || !p.number_line(i, "the step", b) ||
            !p.number_line(i, "the last wavelength", c))
            return;
        if (!(b > 0.0) || !(c > a)) {
            p.error(Parser::number(i - 1), "the wavelength grid does not increase");
            return;
        }
        const double declared = std::trunc((c - a) / b + 1.001);
        read_data(p, out, i, a, b, true, false);
        if (static_cast<double>(out.values.size()) != declared)
            p.error(0, "the grid declares " + number_text(declared) + " points, the data has " +
                           std::to_string(out.values.size()));
        return;
    }
    // first wavelength, point count, last wavelength
    if (!p.number_line(i, "the first wavelength", a) || !p.number_line(i, "the point count", b) ||
        !p.number_line(i, "the last wavelength", c))
        return;
    const std::size_t first_data = i;
    read_data(p, out, i, 0.0, 0.0, false, false);
    if (b != static_cast<double>(out.values.size()))
        p.error(Parser::number(first_data - 2), "the file declares " + number_text(b) +
                                                    " points, the data has " +
                                                    std::to_string(out.values.size()));
    else if (!out.wavelengths.empty() &&
             (!same(a, out.wavelengths.front()) || !same(c, out.wavelengths.back())))
        p.error(Parser::number(first_data - 3),
                "the declared range " + number_text(a) + ".." + number_text(c) +
                    " nm is not the data's " + number_text(out.wavelengths.front()) + ".." +
                    number_text(out.wavelengths.back()) + " nm");
}

}  // namespace

int unit_code_of_name(std::string_view name)
{
    std::string key;
    for (const char ch : name) {
        const char c = ch == '_' || ch == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
        key += c;
    }
    constexpr std::pair<const char*, int> kNames[] = {
        {"counts", 0},        {"irradiance", 1},   {"radiant-intensity", 2}, {"intensity", 2},
        {"radiant-flux", 3},  {"flux", 3},         {"radiance", 4},          {"transmittance", 5},
        {"reflectance", 6}};
    for (const auto& [n, code] : kNames)
        if (key == n) return code;
    return -1;
}

const char* unit_file_name(int code)
{
    return code >= 0 && code < 7 ? kUnitNameKeys[code] : "";
}

bool parse_spectrum(std::string_view text, int plain_unit, ParsedSpectrum& out,
                    std::vector<Problem>& problems)
{
    out = ParsedSpectrum{};
    const std::size_t before = problems.size();
    Parser p(text, problems);
    if (p.count() == 0 || (p.count() == 1 && trim(p.at(0)).empty())) {
        p.error(0, "the file is empty");
        return false;
    }
    if (p.at(0).find(kSpectralMarker) != std::string_view::npos) {
        parse_spectral_file(p, out);
    } else {
        out.plain = true;
        out.unit_code = plain_unit;
        if (plain_unit < 0) {
            p.error(0, "not a spectral file; as two-column text it needs --unit");
            return false;
        }
        out.unit = unit_file_name(plain_unit);
        // An optional header row: a first line that is not two numbers.
        double wl = 0.0, v = 0.0;
        const bool header = !parse_plain_pair(p.at(0), wl, v);
        if (header) out.header = std::string(trim(p.at(0)));
        read_data(p, out, header ? 1 : 0, 0.0, 0.0, false, true);
    }
    const bool emitting = out.unit_code >= 0 && out.unit_code <= 4;
    const auto negative = std::count_if(out.values.begin(), out.values.end(), [](float v) { return v < 0.0f; });
    const bool any_positive = std::any_of(out.values.begin(), out.values.end(), [](float v) { return v > 0.0f; });
    if (out.values.size() < 2 && std::none_of(problems.begin() + static_cast<std::ptrdiff_t>(before), problems.end(),
                                              [](const Problem& x) { return x.error; }))
        p.error(0, "fewer than 2 data points");
    else if (emitting && !any_positive && !out.values.empty())
        p.error(0, "no positive signal in an emission spectrum");
    if (negative > 0)
        p.warning(0, std::to_string(negative) + " negative value" + (negative > 1 ? "s" : "") +
                         " (kept as they are)");
    std::stable_sort(problems.begin() + static_cast<std::ptrdiff_t>(before), problems.end(),
                     [](const Problem& x, const Problem& y) {
                         return (x.line == 0 ? 1 << 30 : x.line) < (y.line == 0 ? 1 << 30 : y.line);
                     });
    return std::none_of(problems.begin() + static_cast<std::ptrdiff_t>(before), problems.end(),
                        [](const Problem& x) { return x.error; });
}

}  // namespace qomath::files
