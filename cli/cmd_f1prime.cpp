// qomath f1prime: the spectral mismatch index f1' of a detector head.
#include <cmath>
#include <string>
#include <vector>

#include "command.hpp"
#include "detector/f1prime.hpp"
#include "qomath/detector.h"
#include "spectrum_io.hpp"
#include "text.hpp"

namespace qomath::cli {
namespace {

constexpr const char* kUsage =
    "usage: qomath f1prime RESPONSIVITY_FILE [--target y|x-short|x-long|z] [--source FILE]\n"
    "                      [--json] [--compat]\n";

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err, "qomath f1prime: %s\n%s", what.c_str(), kUsage);
    return kExitUsage;
}

struct Target {
    const char* option;
    const char* name;
    int mode;
};
constexpr Target kTargets[] = {
    {"y", "y-bar (V(lambda))", QOMATH_F1_YBAR},
    {"x-short", "x-bar, short-wave lobe", QOMATH_F1_XBAR_SHORT},
    {"x-long", "x-bar, long-wave lobe", QOMATH_F1_XBAR_LONG},
    {"z", "z-bar", QOMATH_F1_ZBAR},
};

// The spectrum sampled linearly at every whole nm inside its range.
bool whole_nm(const Spectrum& s, std::vector<float>& values, typ_wlinfo& range)
{
    const double first = std::ceil(s.wavelengths.front());
    const double last = std::floor(s.wavelengths.back());
    if (!(last - first >= 3.0)) return false;
    values.clear();
    for (double x = first; x <= last; x += 1.0)
        values.push_back(static_cast<float>(detector::linear_at(s.wavelengths, s.values, x, 0.0)));
    range = {static_cast<float>(first), static_cast<float>(last), 1.0f};
    return true;
}

}  // namespace

int run_f1prime(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    std::vector<std::string> files;
    std::string source_path;
    const Target* target = &kTargets[0];
    bool json = false, compat = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a, v;
        if (!read_option(args, i, {"--target", "--source"}, a, v)) return usage_error(err, a + " needs a value");
        if (a == "--target") {
            target = nullptr;
            for (const Target& t : kTargets)
                if (v == t.option) target = &t;
            if (!target) return usage_error(err, "unknown target '" + v + "'");
        } else if (a == "--source") {
            source_path = v;
        } else if (a == "--json") {
            json = true;
        } else if (a == "--compat") {
            compat = true;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else {
            files.push_back(a);
        }
    }
    if (files.size() != 1) return usage_error(err, "give one responsivity file");
    if (files[0] == "-" && source_path == "-")
        return usage_error(err, "only one of the two files can be standard input");

    Spectrum resp, source;
    if (!read_spectrum(files[0], 0, resp, err)) return kExitFailed;
    if (!source_path.empty() && !read_spectrum(source_path, 0, source, err)) return kExitFailed;
    const std::string name = display_name(files[0]);
    const std::string source_name =
        source_path.empty() ? "CIE illuminant A" : display_name(source_path);

    const detector::F1Target t = detector::f1_target(target->mode);
    double f1 = 0.0;
    std::vector<std::string> warnings;
    if (compat) {
        std::vector<float> rv, sv;
        typ_wlinfo rr{}, sr{0.0f, 0.0f, 0.0f}, common{};
        if (!whole_nm(resp, rv, rr)) {
            std::fprintf(err, "qomath: %s: fewer than 4 whole-nm points\n", name.c_str());
            return kExitFailed;
        }
        if (!source_path.empty() && !whole_nm(source, sv, sr)) {
            std::fprintf(err, "qomath: %s: fewer than 4 whole-nm points\n", source_name.c_str());
            return kExitFailed;
        }
        float value = 0.0f;
        int warning = 0;
        const int status = f1primeCalculate(rv.data(), &rr, target->mode,
                                            sv.empty() ? nullptr : sv.data(), &sr, &value,
                                            &common, &warning);
        if (status != 1) {
            std::fprintf(err, "qomath: %s: f1primeCalculate failed with %d%s\n", name.c_str(),
                         status, status == -20 ? " (the source must span 360 to 830 nm)" : "");
            return kExitFailed;
        }
        f1 = value;
        if (warning)
            warnings.push_back("the responsivity does not cover the target; f1primeCalculate "
                               "integrates the deviation only where both are known");
    } else {
        const auto r = detector::f1prime_standard(resp.wavelengths, resp.values, target->mode,
                                                  source.wavelengths, source.values);
        if (r.status != 1) {
            std::fprintf(err, "qomath: %s: no signal from the %s under the source\n",
                         name.c_str(), target->name);
            return kExitFailed;
        }
        f1 = r.f1prime;
        if (!r.covers_start || !r.covers_end)
            warnings.push_back("the responsivity does not cover the target; it counts as 0 "
                               "where it is not given");
        if (!r.source_covers)
            warnings.push_back("the source does not cover the target; it counts as 0 where "
                               "it is not given");
    }

    const char* form = compat ? "f1primeCalculate" : "standard";
    const std::string range = number(t.range.start) + "-" + number(t.range.end) + " nm";
    const std::string data_range =
        number(resp.wavelengths.front()) + "-" + number(resp.wavelengths.back()) + " nm";
    if (json) {
        std::fprintf(out,
                     "{\"file\": %s, \"f1prime\": %s, \"percent\": %s, \"form\": \"%s\", "
                     "\"target\": \"%s\", \"target_range\": [%s, %s], \"source\": %s, "
                     "\"range\": [%s, %s], \"warnings\": [",
                     json_string(printable(cp1252_to_utf8(name))).c_str(), number(f1).c_str(),
                     number(f1 * 100.0).c_str(), form, target->option,
                     number(t.range.start).c_str(), number(t.range.end).c_str(),
                     json_string(printable(cp1252_to_utf8(source_name))).c_str(),
                     number(resp.wavelengths.front()).c_str(),
                     number(resp.wavelengths.back()).c_str());
        for (std::size_t i = 0; i < warnings.size(); ++i)
            std::fprintf(out, "%s%s", i ? ", " : "", json_string(warnings[i]).c_str());
        std::fputs("]}\n", out);
    } else {
        std::fprintf(out, "file      %s\n", printable(cp1252_to_utf8(name)).c_str());
        std::fprintf(out, "f1'       %s (%s %%)%s\n", number(f1, 6).c_str(),
                     number(f1 * 100.0, 6).c_str(), compat ? "  [f1primeCalculate, --compat]" : "");
        std::fprintf(out, "target    %s, %s\n", target->name, range.c_str());
        std::fprintf(out, "source    %s\n", printable(cp1252_to_utf8(source_name)).c_str());
        std::fprintf(out, "range     %s, %zu points\n", data_range.c_str(), resp.values.size());
        for (const std::string& w : warnings) std::fprintf(out, "warning: %s\n", w.c_str());
    }
    return std::ferror(out) ? kExitFailed : kExitOk;
}

}  // namespace qomath::cli
