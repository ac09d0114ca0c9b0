// qomath smooth: Savitzky-Golay, median or boxcar smoothing of spectra.
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include <qomath/filters.h>

#include "command.hpp"
#include "numerics/savgol.hpp"
#include "output.hpp"
#include "spectrum_io.hpp"
#include "text.hpp"

namespace qomath::cli {
namespace {

enum class Filter { savgol, median, boxcar };

struct Options {
    Filter filter = Filter::savgol;
    int window = 0;
    int order = 2;
    int plain_unit = -1;
    std::string output;  // -o, one input
    std::string suffix;  // --suffix, beside each input
};

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err,
                 "qomath smooth: %s\n"
                 "usage: qomath smooth --filter savgol|median|boxcar --window W [--order M]\n"
                 "                     [--unit UNIT] FILE... (-o OUT | --suffix S)\n",
                 what.c_str());
    return kExitUsage;
}

// Where the smoothed copy of `in` goes: OUT, or the input's name with the
// suffix before its extension ("lamp.txt" + "_s" = "lamp_s.txt").
std::string output_of(const std::string& in, const Options& opt)
{
    if (!opt.output.empty()) return opt.output;
    const std::filesystem::path p(in == "-" ? "stdin.txt" : in);
    std::filesystem::path out = p.parent_path() / (p.stem().string() + opt.suffix);
    return out.string() + p.extension().string();
}

// The filter over the values; 1, or the reason the file cannot be smoothed.
bool smooth(std::vector<float>& y, const Options& opt, std::string& why)
{
    const int n = static_cast<int>(y.size());
    int st = 1;
    if (opt.filter == Filter::savgol) {
        st = numerics::savgol_smooth(std::span<float>(y), opt.window / 2, opt.order);
    } else {
        // The running median and mean need 3 windows of data.
        if (3 * opt.window > n) st = -2;
        else st = MedianMeanFilter1d(y.data(), n, opt.window, opt.filter == Filter::median ? 0 : 1);
    }
    if (st == 1) return true;
    why = st == -3 || (opt.filter == Filter::savgol && st == -2)
              ? "out of memory"
              : "the window is too long for its " + std::to_string(n) + " points";
    return false;
}

std::string filter_line(const Options& opt)
{
    const std::string w = std::to_string(opt.window) + " points";
    switch (opt.filter) {
    case Filter::savgol: return "Smoothed: Savitzky-Golay, " + w + ", order " + std::to_string(opt.order);
    case Filter::median: return "Smoothed: running median, " + w;
    case Filter::boxcar: return "Smoothed: boxcar mean, " + w;
    }
    return {};
}

}  // namespace

int run_smooth(std::span<char* const> args, std::FILE* /*out*/, std::FILE* err)
{
    Options opt;
    std::vector<std::string> inputs;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a = args[i];
        std::string v;
        const bool takes = a == "--filter" || a == "--window" || a == "--order" || a == "--unit" ||
                           a == "-o" || a == "--suffix";
        if (takes) {
            if (i + 1 >= args.size()) return usage_error(err, a + " needs a value");
            v = args[++i];
        }
        char* end = nullptr;
        if (a == "--filter") {
            if (v == "savgol") opt.filter = Filter::savgol;
            else if (v == "median") opt.filter = Filter::median;
            else if (v == "boxcar") opt.filter = Filter::boxcar;
            else return usage_error(err, "--filter takes savgol, median or boxcar, not '" + v + "'");
        } else if (a == "--window" || a == "--order") {
            const long x = std::strtol(v.c_str(), &end, 10);
            if (v.empty() || *end != '\0' || x < 0 || x > 100001)
                return usage_error(err, a + " takes a whole number, not '" + v + "'");
            (a == "--window" ? opt.window : opt.order) = static_cast<int>(x);
        } else if (a == "--unit") {
            opt.plain_unit = files::unit_code_of_name(v);
            if (opt.plain_unit < 0) return usage_error(err, "unknown unit '" + v + "'");
        } else if (a == "-o") {
            opt.output = v;
        } else if (a == "--suffix") {
            opt.suffix = v;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else {
            inputs.push_back(a);
        }
    }
    if (inputs.empty()) return usage_error(err, "no input file");
    if (opt.window < 3 || opt.window % 2 == 0)
        return usage_error(err, "--window takes an odd number of points, 3 or more");
    if (opt.filter == Filter::savgol && opt.order >= opt.window)
        return usage_error(err, "--order must be below the window");
    if (opt.output.empty() == opt.suffix.empty())
        return usage_error(err, "give either -o OUT (one input) or --suffix S");
    if (!opt.output.empty() && inputs.size() != 1) return usage_error(err, "-o takes one input");
    for (const std::string& in : inputs)
        if (output_of(in, opt) == in || is_an_input(output_of(in, opt), inputs))
            return usage_error(err, "the output for " + display_name(in) + " is an input");

    bool failed = false;
    Spectrum s;
    for (const std::string& in : inputs) {
        if (!read_spectrum(in, opt.plain_unit, s, err)) {
            failed = true;
            continue;
        }
        std::string why;
        if (!smooth(s.values, opt, why)) {
            std::fprintf(err, "qomath: %s: cannot smooth (%s)\n", display_name(in).c_str(), why.c_str());
            failed = true;
            continue;
        }
        s.info.push_back(filter_line(opt));
        if (!write_spectrum(s, own_version(s), output_of(in, opt), display_name(in), nullptr, err))
            failed = true;
    }
    return failed ? kExitFailed : kExitOk;
}

}  // namespace qomath::cli
