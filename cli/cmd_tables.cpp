// qomath tables: what the library carries, with a sum per table so that two
// builds (or a build and the published tables) can be compared at a glance.
#include <vector>

#include <qomath/qomath.h>

#include "command.hpp"

namespace qomath::cli {
namespace {

double sum(const std::vector<float>& v, int n)
{
    double s = 0.0;
    for (int i = 0; i < n; ++i) s += static_cast<double>(v[static_cast<std::size_t>(i)]);
    return s;
}

void row(std::FILE* out, const char* id, const char* name, const typ_wlinfo& r, int n,
         const char* what, double total)
{
    std::fprintf(out, "%-4s %-34s %6g %6g %5g %6d  %-9s %.6f\n", id, name,
                 static_cast<double>(r.start), static_cast<double>(r.end),
                 static_cast<double>(r.step), n, what, total);
}

}  // namespace

int run_tables(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    if (!args.empty()) {
        std::fprintf(err, "qomath tables: unexpected argument '%s'\n", args[0]);
        return kExitUsage;
    }
    static const char* const kNames[] = {
        "CIE 1931 2 deg observer, x-bar",  "CIE 1931 2 deg observer, y-bar",
        "CIE 1931 2 deg observer, z-bar",  "CIE 1964 10 deg observer, x-bar",
        "CIE 1964 10 deg observer, y-bar", "CIE 1964 10 deg observer, z-bar",
        "CIE standard illuminant A",       "CIE illuminant B",
        "CIE illuminant C",                "CIE standard illuminant D65",
        "equal-energy spectrum E",
    };
    std::fprintf(out, "%-4s %-34s %6s %6s %5s %6s  %-9s %s\n", "sel", "table", "start", "end",
                 "step", "points", "sum of", "value");
    std::vector<float> values(QOMATH_CIE_MAX_POINTS);
    for (int sel = 0; sel < 11; ++sel) {
        typ_wlinfo r{};
        if (GetCIEData(sel, values.data(), &r) != 1) {
            std::fprintf(err, "qomath tables: table %d is missing\n", sel);
            return kExitFailed;
        }
        const int n = WLNumPts(&r);
        char id[8];
        std::snprintf(id, sizeof id, "%d", sel);
        row(out, id, kNames[sel], r, n, "values", sum(values, n));
    }

    std::vector<float> x(QOMATH_LOCUS1931_FINE_POINTS), y(QOMATH_LOCUS1931_FINE_POINTS);
    static const char* const kLoci[] = {"CIE 1931 spectrum locus", "CIE 1964 spectrum locus"};
    for (int which = 0; which < 2; ++which) {
        typ_wlinfo r{};
        GetCIEUCSChartData(which, x.data(), y.data(), &r);
        const int n = WLNumPts(&r);
        row(out, "-", kLoci[which], r, n, "x", sum(x, n));
        row(out, "", "", r, n, "y", sum(y, n));
    }
    typ_wlinfo r{};
    GetCIE1931InterpolatedData(x.data(), y.data(), &r);
    const int n = WLNumPts(&r);
    row(out, "-", "CIE 1931 spectrum locus, 0.1 nm", r, n, "x", sum(x, n));
    row(out, "", "", r, n, "y", sum(y, n));
    return kExitOk;
}

}  // namespace qomath::cli
