#include "analysis.hpp"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>

namespace qomath::cli {
namespace {

std::string upper(std::string_view s)
{
    std::string u(s);
    for (char& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return u;
}

}  // namespace

int parse_white(std::string_view s)
{
    const std::string u = upper(s);
    if (u == "E") return QOMATH_WHITE_E;
    if (u == "D65") return QOMATH_WHITE_D65;
    if (u == "A") return QOMATH_WHITE_A;
    if (u == "C") return QOMATH_WHITE_C;
    return -1;
}

int parse_illuminant(std::string_view s)
{
    const std::string u = upper(s);
    if (u == "D65") return 1;
    if (u == "A") return 2;
    if (u == "C") return 3;
    return -1;
}

const char* white_name(int code)
{
    switch (code) {
    case QOMATH_WHITE_E: return "E";
    case QOMATH_WHITE_D65: return "D65";
    case QOMATH_WHITE_A: return "A";
    case QOMATH_WHITE_C: return "C";
    default: return "?";
    }
}

const char* illuminant_name(int code)
{
    switch (code) {
    case 1: return "D65";
    case 2: return "A";
    case 3: return "C";
    default: return "?";
    }
}

std::mutex& calculation_lock()
{
    static std::mutex m;
    return m;
}

void calculate(Calculator& calc, const Spectrum& s, const CalcOptions& opt, Calculation& out)
{
    const int n = static_cast<int>(s.values.size());
    const float first = s.wavelengths.empty() ? 0.0f : s.wavelengths.front();
    const float last = s.wavelengths.empty() ? 0.0f : s.wavelengths.back();
    const colorimetry::Context& ctx = opt.compat ? colorimetry::compatible_context() : calc.context;
    std::fill(std::begin(out.cc), std::end(out.cc), 0.0f);
    std::fill(std::begin(out.rc), std::end(out.rc), 0.0f);
    // The compatible context shares the library's process-wide interpolation
    // cache; a worker's own context needs no lock.
    std::unique_lock<std::mutex> hold(calculation_lock(), std::defer_lock);
    if (opt.compat) hold.lock();
    out.cc_status = summary::colorimetric(ctx, s.wavelengths.data(), s.values.data(), n,
                                          s.unit_code, opt.white, opt.illuminant, out.cc,
                                          &out.object);
    out.rc_status = summary::radiometric(ctx, s.wavelengths.data(), s.values.data(), n, first,
                                         last, out.rc);
    out.cra_status = out.aopic_status = out.uv_status = 0;
    if (is_emitter(s.unit_code))
        out.cra_status = ColorRenditionAnalysis(s.wavelengths.data(), s.values.data(), n, out.cra);
    if (s.unit_code >= 1 && s.unit_code <= 4) {
        const int radiance = s.unit_code == 4 ? 1 : 0;
        out.aopic_status = AlphaOpicCalc(s.wavelengths.data(), s.values.data(), n, radiance, out.aopic);
        if (s.unit_code == 1 || s.unit_code == 4)
            out.uv_status = UVRadiationCalc(s.wavelengths.data(), s.values.data(), n, radiance, out.uv);
    }
}

const char* colorimetry_status_meaning(int status)
{
    switch (status) {
    case 1: return "success";
    case -1: return "bad arguments";
    case -2: return "fewer than 5 points";
    case -3: return "the data do not reach into 370..820 nm";
    case -4: return "out of memory";
    case -5: return "the spectrum has no colour";
    default: return "unknown failure";
    }
}

}  // namespace qomath::cli
