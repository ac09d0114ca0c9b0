// qomath plot: an SVG of a spectrum beside the CIE 1931 chromaticity diagram
// with the sample's colour point.
//
// The diagram group <g id="chromaticity"> carries its mapping as data
// attributes: chromaticity x in [data-x-min, data-x-max] runs linearly from
// data-left to data-right, y in [data-y-min, data-y-max] from data-bottom up
// to data-top (SVG user units, no transform). The sample is the element
// id="sample"; its cx, cy follow that mapping.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <qomath/qomath.h>

#include "analysis.hpp"
#include "command.hpp"
#include "output.hpp"
#include "spectrum_io.hpp"
#include "text.hpp"

namespace qomath::cli {
namespace {

constexpr double kWidth = 1080, kHeight = 540;
// Spectrum panel.
constexpr double kSpLeft = 90, kSpRight = 530, kSpTop = 50, kSpBottom = 460;
// Chromaticity panel: x 0..0.8, y 0..0.9, one scale for both axes.
constexpr double kXMin = 0.0, kXMax = 0.8, kYMin = 0.0, kYMax = 0.9;
constexpr double kChLeft = 630, kChRight = 1030, kChTop = 30, kChBottom = 480;

double chart_x(double x) { return kChLeft + (x - kXMin) / (kXMax - kXMin) * (kChRight - kChLeft); }
double chart_y(double y) { return kChBottom - (y - kYMin) / (kYMax - kYMin) * (kChBottom - kChTop); }

std::string f4(double v)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.4f", v);
    return buf;
}

std::string label(double v)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", std::fabs(v) < 1e-12 ? 0.0 : v);
    return buf;
}

// A round step giving about `count` intervals over [lo, hi].
double nice_step(double lo, double hi, int count)
{
    const double raw = (hi - lo) / count;
    if (!(raw > 0)) return 1.0;
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double r = raw / mag;
    return (r < 1.5 ? 1 : r < 3 ? 2 : r < 7 ? 5 : 10) * mag;
}

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err,
                 "qomath plot: %s\nusage: qomath plot FILE -o OUT.svg [--white E|D65|A|C] "
                 "[--illuminant D65|A|C]\n",
                 what.c_str());
    return kExitUsage;
}

void spectrum_panel(std::string& svg, const Spectrum& s)
{
    const double wl0 = s.wavelengths.front(), wl1 = s.wavelengths.back();
    double vmin = 0.0, vmax = 0.0;
    for (const float v : s.values) {
        vmin = std::min(vmin, static_cast<double>(v));
        vmax = std::max(vmax, static_cast<double>(v));
    }
    if (vmax <= vmin) vmax = vmin + 1.0;
    const double vstep = nice_step(vmin, vmax, 5);
    vmin = std::floor(vmin / vstep) * vstep;
    vmax = std::ceil(vmax / vstep) * vstep;
    auto px = [&](double wl) { return kSpLeft + (wl - wl0) / (wl1 - wl0) * (kSpRight - kSpLeft); };
    auto py = [&](double v) { return kSpBottom - (v - vmin) / (vmax - vmin) * (kSpBottom - kSpTop); };

    svg += "<g id=\"spectrum\" data-wl-min=\"" + label(wl0) + "\" data-wl-max=\"" + label(wl1) +
           "\" data-left=\"" + label(kSpLeft) + "\" data-right=\"" + label(kSpRight) + "\">\n";
    svg += "<rect x=\"" + label(kSpLeft) + "\" y=\"" + label(kSpTop) + "\" width=\"" +
           label(kSpRight - kSpLeft) + "\" height=\"" + label(kSpBottom - kSpTop) +
           "\" fill=\"none\" stroke=\"#444\"/>\n";
    // Wavelength axis.
    const double step = nice_step(wl0, wl1, 8);
    for (double t = std::ceil(wl0 / step) * step; t <= wl1 + 1e-9; t += step) {
        const std::string x = f4(px(t));
        svg += "<line x1=\"" + x + "\" y1=\"" + label(kSpBottom) + "\" x2=\"" + x + "\" y2=\"" +
               label(kSpBottom + 6) + "\" stroke=\"#444\"/>";
        svg += "<text x=\"" + x + "\" y=\"" + label(kSpBottom + 20) +
               "\" text-anchor=\"middle\" font-size=\"12\">" + label(t) + "</text>\n";
    }
    svg += "<text x=\"" + label((kSpLeft + kSpRight) / 2) + "\" y=\"" + label(kSpBottom + 42) +
           "\" text-anchor=\"middle\" font-size=\"13\">Wavelength (nm)</text>\n";
    // Value axis.
    for (double t = vmin; t <= vmax + vstep * 1e-6; t += vstep) {
        const std::string y = f4(py(t));
        svg += "<line x1=\"" + label(kSpLeft - 6) + "\" y1=\"" + y + "\" x2=\"" + label(kSpLeft) +
               "\" y2=\"" + y + "\" stroke=\"#444\"/>";
        svg += "<text x=\"" + label(kSpLeft - 9) + "\" y=\"" + y +
               "\" text-anchor=\"end\" dominant-baseline=\"middle\" font-size=\"12\">" +
               label(t) + "</text>\n";
    }
    std::string unit = cp1252_to_utf8(s.unit);
    const char* yaxis = GetUnitNameYaxis(s.unit_code);
    if (yaxis && *yaxis) unit += " (" + cp1252_to_utf8(yaxis) + ")";
    const double cy = (kSpTop + kSpBottom) / 2;
    svg += "<text id=\"unit-label\" x=\"24\" y=\"" + label(cy) + "\" transform=\"rotate(-90 24 " +
           label(cy) + ")\" text-anchor=\"middle\" font-size=\"13\">" + xml_escape(unit) +
           "</text>\n";
    svg += "<polyline fill=\"none\" stroke=\"#c03\" stroke-width=\"1.5\" points=\"";
    for (std::size_t i = 0; i < s.values.size(); ++i) {
        if (i) svg += ' ';
        svg += f4(px(s.wavelengths[i])) + "," + f4(py(s.values[i]));
    }
    svg += "\"/>\n";
    svg += "<text x=\"" + label(kSpLeft) + "\" y=\"" + label(kSpTop - 14) +
           "\" font-size=\"14\">" + xml_escape(printable(cp1252_to_utf8(s.header))) +
           "</text>\n</g>\n";
}

void chart_panel(std::string& svg, bool has_sample, double sx, double sy)
{
    svg += "<g id=\"chromaticity\" data-x-min=\"" + label(kXMin) + "\" data-x-max=\"" +
           label(kXMax) + "\" data-y-min=\"" + label(kYMin) + "\" data-y-max=\"" + label(kYMax) +
           "\" data-left=\"" + label(kChLeft) + "\" data-right=\"" + label(kChRight) +
           "\" data-top=\"" + label(kChTop) + "\" data-bottom=\"" + label(kChBottom) + "\">\n";
    svg += "<rect x=\"" + label(kChLeft) + "\" y=\"" + label(kChTop) + "\" width=\"" +
           label(kChRight - kChLeft) + "\" height=\"" + label(kChBottom - kChTop) +
           "\" fill=\"none\" stroke=\"#444\"/>\n";
    for (int i = 0; i <= 8; ++i) {
        const double x = i * 0.1;
        const std::string px = f4(chart_x(x));
        svg += "<line x1=\"" + px + "\" y1=\"" + label(kChTop) + "\" x2=\"" + px + "\" y2=\"" +
               label(kChBottom + 5) + "\" stroke=\"#ddd\"/>";
        svg += "<text x=\"" + px + "\" y=\"" + label(kChBottom + 19) +
               "\" text-anchor=\"middle\" font-size=\"11\">" + label(x) + "</text>\n";
    }
    for (int i = 0; i <= 9; ++i) {
        const double y = i * 0.1;
        const std::string py = f4(chart_y(y));
        svg += "<line x1=\"" + label(kChLeft - 5) + "\" y1=\"" + py + "\" x2=\"" +
               label(kChRight) + "\" y2=\"" + py + "\" stroke=\"#ddd\"/>";
        svg += "<text x=\"" + label(kChLeft - 8) + "\" y=\"" + py +
               "\" text-anchor=\"end\" dominant-baseline=\"middle\" font-size=\"11\">" +
               label(y) + "</text>\n";
    }
    svg += "<text x=\"" + label((kChLeft + kChRight) / 2) + "\" y=\"" + label(kChBottom + 40) +
           "\" text-anchor=\"middle\" font-size=\"13\">x (CIE 1931)</text>\n";
    svg += "<text x=\"" + label(kChLeft - 36) + "\" y=\"" + label((kChTop + kChBottom) / 2) +
           "\" font-size=\"13\" text-anchor=\"middle\" transform=\"rotate(-90 " +
           label(kChLeft - 36) + " " + label((kChTop + kChBottom) / 2) + ")\">y</text>\n";

    // Spectrum locus and the purple line.
    std::vector<float> lx(QOMATH_LOCUS1931_FINE_POINTS), ly(QOMATH_LOCUS1931_FINE_POINTS);
    typ_wlinfo r{};
    if (GetCIEUCSChartData(0, lx.data(), ly.data(), &r) == 1) {
        const int n = WLNumPts(&r);
        svg += "<polyline id=\"spectrum-locus\" fill=\"none\" stroke=\"#000\" points=\"";
        for (int i = 0; i < n; ++i) {
            if (i) svg += ' ';
            svg += f4(chart_x(lx[static_cast<std::size_t>(i)])) + "," +
                   f4(chart_y(ly[static_cast<std::size_t>(i)]));
        }
        svg += "\"/>\n";
        const auto last = static_cast<std::size_t>(n - 1);
        svg += "<line id=\"purple-line\" x1=\"" + f4(chart_x(lx[0])) + "\" y1=\"" +
               f4(chart_y(ly[0])) + "\" x2=\"" + f4(chart_x(lx[last])) + "\" y2=\"" +
               f4(chart_y(ly[last])) + "\" stroke=\"#909\" stroke-dasharray=\"4 3\"/>\n";
        for (int wl = 460; wl <= 620; wl += 20) {
            const int i = static_cast<int>(std::lround((wl - r.start) / r.step));
            if (i < 0 || i >= n) continue;
            const auto k = static_cast<std::size_t>(i);
            const bool left = wl < 510;
            svg += "<circle cx=\"" + f4(chart_x(lx[k])) + "\" cy=\"" + f4(chart_y(ly[k])) +
                   "\" r=\"1.8\"/><text x=\"" + f4(chart_x(lx[k]) + (left ? -6 : 6)) + "\" y=\"" +
                   f4(chart_y(ly[k])) + "\" font-size=\"10\" dominant-baseline=\"middle\"" +
                   (left ? " text-anchor=\"end\"" : "") + ">" + std::to_string(wl) + "</text>\n";
        }
    }

    // Planckian locus, 1000 K to 20000 K, evenly in reciprocal temperature.
    constexpr int kSteps = 160;
    std::vector<float> temps(kSteps + 1), px(kSteps + 1), py(kSteps + 1);
    for (int i = 0; i <= kSteps; ++i) {
        const double mired = 1000.0 + (50.0 - 1000.0) * i / kSteps;
        temps[static_cast<std::size_t>(i)] = static_cast<float>(1e6 / mired);
    }
    temps.front() = 1000.0f;
    temps.back() = 20000.0f;
    {
        const std::lock_guard<std::mutex> hold(calculation_lock());
        if (BlackBodyLocus(0, temps.data(), kSteps + 1, px.data(), py.data()) == 1) {
            svg += "<polyline id=\"planckian-locus\" fill=\"none\" stroke=\"#e60\" "
                   "stroke-width=\"1.2\" points=\"";
            for (std::size_t i = 0; i < temps.size(); ++i) {
                if (i) svg += ' ';
                svg += f4(chart_x(px[i])) + "," + f4(chart_y(py[i]));
            }
            svg += "\"/>\n";
        }
        for (const float t : {2000.0f, 3000.0f, 4000.0f, 6500.0f, 10000.0f}) {
            float xyz[3], xy[3], uv[2], uvp[2];
            if (BlackBodyToCIEUCS(t, xyz, xy, uv, uvp) != 1) continue;
            const std::string cx = f4(chart_x(xy[0])), cy = f4(chart_y(xy[1]));
            svg += "<circle class=\"temperature\" data-kelvin=\"" + label(t) + "\" cx=\"" + cx +
                   "\" cy=\"" + cy + "\" r=\"2.5\" fill=\"#e60\"/><text x=\"" + cx + "\" y=\"" +
                   f4(chart_y(xy[1]) - 8) + "\" font-size=\"10\" text-anchor=\"middle\">" +
                   label(t) + " K</text>\n";
        }
    }

    if (has_sample) {
        svg += "<circle id=\"sample\" cx=\"" + f4(chart_x(sx)) + "\" cy=\"" + f4(chart_y(sy)) +
               "\" r=\"5\" fill=\"none\" stroke=\"#06c\" stroke-width=\"2\" data-x=\"" + f4(sx) +
               "\" data-y=\"" + f4(sy) + "\"/>\n";
        svg += "<text x=\"" + f4(chart_x(sx) + 8) + "\" y=\"" + f4(chart_y(sy) + 14) +
               "\" font-size=\"11\" fill=\"#06c\">x " + f4(sx) + ", y " + f4(sy) + "</text>\n";
    }
    svg += "</g>\n";
}

// The TM-30 colour vector graphic: the reference bin averages on the unit
// circle, the test averages scaled by the same per-bin reference chroma,
// an arrow from each reference point to its test point. The group
// id="cvg" states its mapping: a normalised (a', b') lands at
// (data-cx + data-scale a', data-cy - data-scale b').
void cvg_panel(std::string& svg, const Calculation& c)
{
    constexpr double cx = 600, cy = 270, scale = 200;
    svg += "<g id=\"cvg\" data-cx=\"" + label(cx) + "\" data-cy=\"" + label(cy) +
           "\" data-scale=\"" + label(scale) + "\">\n";
    svg += "<circle cx=\"" + label(cx) + "\" cy=\"" + label(cy) + "\" r=\"" + label(scale) +
           "\" fill=\"none\" stroke=\"#000\" stroke-width=\"1.5\"/>\n";
    for (double k : {0.8, 1.2})
        svg += "<circle cx=\"" + label(cx) + "\" cy=\"" + label(cy) + "\" r=\"" + label(k * scale) +
               "\" fill=\"none\" stroke=\"#bbb\" stroke-dasharray=\"4 4\"/>\n";
    std::string polygon;
    for (int j = 0; j < 16; ++j) {
        const float* t = c.cra + QOMATH_CRA_TEST_BINS + 2 * j;
        const float* r = c.cra + QOMATH_CRA_REF_BINS + 2 * j;
        const double cr = std::hypot(r[0], r[1]);
        if (!(cr > 0)) continue;
        const double x1 = cx + scale * r[0] / cr, y1 = cy - scale * r[1] / cr;
        const double x2 = cx + scale * t[0] / cr, y2 = cy - scale * t[1] / cr;
        char arrow[256];
        std::snprintf(arrow, sizeof arrow,
                      "<line class=\"arrow\" data-bin=\"%d\" x1=\"%s\" y1=\"%s\" x2=\"%s\" y2=\"%s\" "
                      "stroke=\"#c00\" stroke-width=\"2\" marker-end=\"url(#head)\"/>\n",
                      j + 1, f4(x1).c_str(), f4(y1).c_str(), f4(x2).c_str(), f4(y2).c_str());
        svg += arrow;
        if (!polygon.empty()) polygon += ' ';
        polygon += f4(x2);
        polygon += ',';
        polygon += f4(y2);
    }
    svg += "<polygon id=\"test-gamut\" points=\"" + polygon +
           "\" fill=\"none\" stroke=\"#c00\" stroke-width=\"1\"/>\n</g>\n";
    char indices[160];
    std::snprintf(indices, sizeof indices,
                  "<text x=\"40\" y=\"60\" font-size=\"22\">Rf %.0f</text>\n"
                  "<text x=\"40\" y=\"90\" font-size=\"22\">Rg %.0f</text>\n",
                  static_cast<double>(c.cra[QOMATH_CRA_RF]), static_cast<double>(c.cra[QOMATH_CRA_RG]));
    svg += indices;
    svg += "<text x=\"40\" y=\"120\" font-size=\"13\">CCT " + label(std::round(c.cra[QOMATH_CRA_CCT])) +
           " K (ANSI/IES TM-30-20, CIE 224:2017)</text>\n";
}

}  // namespace

int run_plot(std::span<char* const> args, std::FILE* /*out*/, std::FILE* err)
{
    std::string in, outName;
    CalcOptions calc;
    int plain_unit = -1;
    bool tm30 = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a = args[i];
        std::string value;
        const bool takes = a == "-o" || a == "--output" || a == "--white" || a == "--illuminant" ||
                           a == "--unit";
        if (takes) {
            if (i + 1 >= args.size()) return usage_error(err, "option '" + a + "' needs a value");
            value = args[++i];
        }
        if (a == "-o" || a == "--output") {
            outName = value;
        } else if (a == "--unit") {
            plain_unit = files::unit_code_of_name(value);
            if (plain_unit < 0) return usage_error(err, "unknown unit '" + value + "'");
        } else if (a == "--compat") {
            calc.compat = true;
        } else if (a == "--white") {
            calc.white = parse_white(value);
            if (calc.white < 0) return usage_error(err, "--white takes E, D65, A or C");
        } else if (a == "--illuminant") {
            calc.illuminant = parse_illuminant(value);
            if (calc.illuminant < 0) return usage_error(err, "--illuminant takes D65, A or C");
        } else if (a == "--tm30") {
            tm30 = true;
        } else if (a.size() > 1 && a[0] == '-' && a != "--compat") {
            return usage_error(err, "unknown option '" + a + "'");
        } else if (a == "--compat") {
            calc.compat = true;
        } else if (in.empty()) {
            in = a;
        } else {
            return usage_error(err, "give one input file");
        }
    }
    if (in.empty()) return usage_error(err, "no input file");
    if (outName.empty()) return usage_error(err, "no output file (-o OUT.svg)");

    if (is_an_input(outName, {in})) return usage_error(err, "the output is the input file");
    Spectrum s;
    if (!read_spectrum(in, plain_unit, s, err)) return kExitFailed;
    Calculator calculator;
    Calculation c;
    calculate(calculator, s, calc, c);
    if (tm30 && c.cra_status != 1) {
        std::fprintf(err, "qomath: %s: no TM-30 figures (status %d)\n", display_name(in).c_str(),
                     c.cra_status);
        return kExitFailed;
    }
    const bool has_sample = c.cc_status == 1;
    if (!has_sample)
        std::fprintf(err, "qomath: %s: no colour point (status %d: %s)\n", display_name(in).c_str(),
                     c.cc_status, colorimetry_status_meaning(c.cc_status));

    std::string svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    svg += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + label(kWidth) + "\" height=\"" +
           label(kHeight) + "\" viewBox=\"0 0 " + label(kWidth) + " " + label(kHeight) +
           "\" font-family=\"sans-serif\">\n";
    svg += "<title>" + xml_escape(display_name(in)) + "</title>\n";
    svg += "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    if (tm30) {
        svg += "<defs><marker id=\"head\" markerWidth=\"8\" markerHeight=\"8\" refX=\"6\" "
               "refY=\"3\" orient=\"auto\"><path d=\"M0,0 L6,3 L0,6 z\" fill=\"#c00\"/></marker></defs>\n";
        cvg_panel(svg, c);
    } else {
        spectrum_panel(svg, s);
        chart_panel(svg, has_sample, has_sample ? c.cc[QOMATH_CC_x] : 0.0,
                    has_sample ? c.cc[QOMATH_CC_y] : 0.0);
    }
    svg += "</svg>\n";

    // Written whole or not at all: a failed plot leaves an older picture as it was.
    Sink sink(nullptr, outName);
    if (sink.file()) std::fwrite(svg.data(), 1, svg.size(), sink.file());
    if (!sink.finish(err)) return kExitFailed;
    return has_sample ? kExitOk : kExitFailed;
}

}  // namespace qomath::cli
