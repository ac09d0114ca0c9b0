// qomath lines: the argon and mercury calibration lines, listed or simulated.
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "command.hpp"
#include "files/spectrum_reader.hpp"
#include "output.hpp"
#include "qomath/lines.h"
#include "text.hpp"

namespace qomath::cli {
namespace {

constexpr const char* kUsage =
    "usage: qomath lines argon|mercury [--json] [--simulate FWHM [--step NM] [-o FILE]]\n";
constexpr double kMaxPoints = 10e6;

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err, "qomath lines: %s\n%s", what.c_str(), kUsage);
    return kExitUsage;
}

// A positive, finite number, or NaN.
double positive(const std::string& text)
{
    char* end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(v) || !(v > 0.0)) return NAN;
    return v;
}

// The sum of the lamp's lines as Gaussians of the given FWHM, the peak of
// each its relative intensity, at the wavelength x.
// (d / fwhm squared, not d squared / fwhm squared: no 0 * infinity for the
// narrowest widths.)
double lines_at(const std::vector<double>& wl, const std::vector<float>& in, double fwhm, double x)
{
    const double k = 4.0 * std::log(2.0);
    double sum = 0.0;
    for (std::size_t i = 0; i < wl.size(); ++i) {
        const double d = (x - wl[i]) / fwhm;
        sum += in[i] * std::exp(-k * d * d);
    }
    return sum;
}

}  // namespace

int run_lines(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    std::string lamp, fwhm_text, step_text, out_path;
    bool json = false, simulate = false, has_step = false, has_out = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a, v;
        if (!read_option(args, i, {"--simulate", "--step", "-o"}, a, v)) return usage_error(err, a + " needs a value");
        if (a == "--json") {
            json = true;
        } else if (a == "--simulate") {
            simulate = true;
            fwhm_text = v;
        } else if (a == "--step") {
            has_step = true;
            step_text = v;
        } else if (a == "-o") {
            has_out = true;
            out_path = v;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else if (lamp.empty()) {
            lamp = a;
        } else {
            return usage_error(err, "give one lamp");
        }
    }
    int type = -1;
    if (lamp == "argon") type = QOMATH_LAMP_ARGON;
    if (lamp == "mercury") type = QOMATH_LAMP_MERCURY;
    if (type < 0) return usage_error(err, lamp.empty() ? "name a lamp" : "unknown lamp '" + lamp + "'");
    if ((has_step || has_out) && !simulate) return usage_error(err, "--step and -o go with --simulate");
    if (has_out && json) return usage_error(err, "-o writes a spectral file; leave out --json");

    std::vector<float> wl(QOMATH_ARGON_LINES), in(QOMATH_ARGON_LINES);
    int count = 0;
    GetTransitionLineList(type, wl.data(), in.data(), &count);
    wl.resize(static_cast<std::size_t>(count));
    in.resize(static_cast<std::size_t>(count));

    if (!simulate) {
        if (json) {
            std::fprintf(out, "{\"lamp\": \"%s\", \"lines\": [", lamp.c_str());
            for (std::size_t i = 0; i < wl.size(); ++i)
                std::fprintf(out, "%s{\"nm\": %s, \"intensity\": %s}", i ? ", " : "",
                             number(wl[i], 6).c_str(), number(in[i], 6).c_str());
            std::fputs("]}\n", out);
        } else {
            std::fprintf(out, "# %s lines: wavelength (nm), relative intensity\n", lamp.c_str());
            for (std::size_t i = 0; i < wl.size(); ++i)
                std::fprintf(out, "%.1f\t%s\n", static_cast<double>(wl[i]), number(in[i], 6).c_str());
        }
        return std::ferror(out) ? kExitFailed : kExitOk;
    }

    const double fwhm = positive(fwhm_text);
    if (std::isnan(fwhm)) return usage_error(err, "--simulate takes a FWHM above 0 nm, not '" + fwhm_text + "'");
    const double step = has_step ? positive(step_text) : 0.1;
    if (std::isnan(step)) return usage_error(err, "--step takes a step above 0 nm, not '" + step_text + "'");
    // The tables give 0.1 nm; the floats' rounding stays out of the grid.
    std::vector<double> nominal;
    for (const float w : wl) nominal.push_back(std::round(static_cast<double>(w) * 10.0) / 10.0);
    const double first = nominal.front() - 3.0 * fwhm;
    const double span = nominal.back() + 3.0 * fwhm - first;
    const double points = std::floor(span / step + 1e-9) + 1.0;
    if (!(points <= kMaxPoints) || !(first + span < 1e30))
        return usage_error(err, "more than 10 million points: choose a larger --step");

    files::ParsedSpectrum s;
    s.version = 2.0;
    s.header = "Simulated " + lamp + " lines, FWHM " + number(fwhm, 6) + " nm";
    s.unit = "Counts";
    s.unit_code = 0;
    const auto n = static_cast<std::size_t>(points);
    s.wavelengths.reserve(n);
    s.values.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double x = first + static_cast<double>(i) * step;
        s.wavelengths.push_back(static_cast<float>(x));
        s.values.push_back(static_cast<float>(lines_at(nominal, in, fwhm, x)));
    }

    // Printed wavelengths come from the grid in double, not from the floats.
    const auto at = [&](std::size_t i) { return first + static_cast<double>(i) * step; };
    if (has_out) {
        std::string text, why;
        if (!files::format_spectral_text(s, 2, text, why)) {
            std::fprintf(err, "qomath lines: %s\n", why.c_str());
            return kExitFailed;
        }
        Sink sink(out, out_path == "-" ? std::string() : out_path);
        if (sink.file()) std::fwrite(text.data(), 1, text.size(), sink.file());
        return sink.finish(err) ? kExitOk : kExitFailed;
    }
    if (json) {
        std::fprintf(out, "{\"lamp\": \"%s\", \"fwhm\": %s, \"step\": %s, \"points\": [", lamp.c_str(),
                     number(fwhm).c_str(), number(step).c_str());
        for (std::size_t i = 0; i < n; ++i)
            std::fprintf(out, "%s[%s, %s]", i ? ", " : "", number(at(i)).c_str(),
                         number(s.values[i], 7).c_str());
        std::fputs("]}\n", out);
    } else {
        for (std::size_t i = 0; i < n; ++i)
            std::fprintf(out, "%s\t%s\n", number(at(i)).c_str(), number(s.values[i], 7).c_str());
    }
    return std::ferror(out) ? kExitFailed : kExitOk;
}

}  // namespace qomath::cli
