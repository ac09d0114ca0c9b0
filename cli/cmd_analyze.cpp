// qomath analyze: every colorimetric, photometric and radiometric figure of
// spectral files and two-column text, as a text report, CSV or JSON. Files
// are read, parsed and calculated in parallel, each worker with its own
// calculation context (see analysis.hpp); results come out in input order.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <qomath/qomath.h>

#include "analysis.hpp"
#include "command.hpp"
#include "output.hpp"
#include "spectrum_io.hpp"
#include "text.hpp"

namespace qomath::cli {
namespace {

enum class Format { text, csv, json, none };

struct Options {
    Format format = Format::text;
    int observer = 2;
    int plain_unit = -1;  // --unit, for plain two-column text
    unsigned jobs = 0;    // --jobs; 0: every core
    bool check_only = false;   // --check: read and parse, report nothing
    bool stage_times = false;  // --stage-times: where the time went, on standard error
    std::string output;   // -o; empty: standard output
    CalcOptions calc;
};

// One analysed file on its way to the output.
struct Result {
    std::string out;  // for standard output
    std::string err;  // for standard error
    bool failed = false;
    std::size_t index = SIZE_MAX;  // the input it holds, once complete
};

// ---- what applies ----------------------------------------------------------

struct Photometric {
    const char* quantity;
    const char* unit;
};

Photometric photometric_of(int unit_code)
{
    switch (unit_code) {
    case 1: return {"illuminance", "lx"};
    case 2: return {"luminous intensity", "cd"};
    case 3: return {"luminous flux", "lm"};
    case 4: return {"luminance", "cd/m^2"};
    default: return {nullptr, nullptr};
    }
}

// One analysed file, reduced to named values: each either a number, a text or
// absent (does not apply). The three formats print this list.
struct Field {
    const char* key;
    enum Kind { none, num, text } kind = none;
    double value = 0.0;
    std::string str;  // UTF-8
};

void put(std::vector<Field>& f, const char* key, double v) { f.push_back({key, Field::num, v, {}}); }
void put_text(std::vector<Field>& f, const char* key, std::string s)
{
    f.push_back({key, Field::text, 0.0, std::move(s)});
}
void put_none(std::vector<Field>& f, const char* key) { f.push_back({key, Field::none, 0.0, {}}); }
void put_if(std::vector<Field>& f, const char* key, bool applies, double v)
{
    if (applies)
        put(f, key, v);
    else
        put_none(f, key);
}

constexpr const char* kRfKeys[16] = {"rf_h1",  "rf_h2",  "rf_h3",  "rf_h4",  "rf_h5",  "rf_h6",
                                     "rf_h7",  "rf_h8",  "rf_h9",  "rf_h10", "rf_h11", "rf_h12",
                                     "rf_h13", "rf_h14", "rf_h15", "rf_h16"};
constexpr const char* kRcsKeys[16] = {"rcs_h1",  "rcs_h2",  "rcs_h3",  "rcs_h4",  "rcs_h5",  "rcs_h6",
                                      "rcs_h7",  "rcs_h8",  "rcs_h9",  "rcs_h10", "rcs_h11", "rcs_h12",
                                      "rcs_h13", "rcs_h14", "rcs_h15", "rcs_h16"};
constexpr const char* kEdiKeys[5] = {"s_cone_edi_lx", "m_cone_edi_lx", "l_cone_edi_lx",
                                     "rhodopic_edi_lx", "melanopic_edi_lx"};
constexpr const char* kRiKeys[15] = {"r1",  "r2",  "r3",  "r4",  "r5",  "r6",  "r7", "r8",
                                     "r9",  "r10", "r11", "r12", "r13", "r14", "r15"};

std::vector<Field> fields_of(const std::string& path, const Spectrum& s, const Calculation& c,
                             const Options& opt)
{
    std::vector<Field> f;
    f.reserve(72);
    const bool cc = c.cc_status == 1;
    const bool rc = c.rc_status == 1;
    const float* r = c.cc;
    const bool ten = opt.observer == 10;
    put_text(f, "file", path);
    put_if(f, "version", !s.plain, static_cast<double>(s.version));
    put_text(f, "header", cp1252_to_utf8(s.header));
    put_text(f, "unit", cp1252_to_utf8(s.unit));
    put(f, "unit_code", s.unit_code);
    put(f, "points", static_cast<double>(s.values.size()));
    put(f, "wl_first_nm", s.wavelengths.empty() ? 0.0 : static_cast<double>(s.wavelengths.front()));
    put(f, "wl_last_nm", s.wavelengths.empty() ? 0.0 : static_cast<double>(s.wavelengths.back()));
    put(f, "observer", opt.observer);
    put_text(f, "calculation", opt.calc.compat ? "compat" : "data");
    put_if(f, "x", cc, r[ten ? QOMATH_CC_x10 : QOMATH_CC_x]);
    put_if(f, "y", cc, r[ten ? QOMATH_CC_y10 : QOMATH_CC_y]);
    put_if(f, "u_prime", cc, r[ten ? QOMATH_CC_UP10 : QOMATH_CC_UP]);
    put_if(f, "v_prime", cc, r[ten ? QOMATH_CC_VP10 : QOMATH_CC_VP]);
    put_if(f, "tristimulus_x", cc, r[QOMATH_CC_X]);
    put_if(f, "tristimulus_y", cc, r[QOMATH_CC_Y]);
    put_if(f, "tristimulus_z", cc, r[QOMATH_CC_Z]);
    put_if(f, "tristimulus_x10", cc, r[QOMATH_CC_X10]);
    put_if(f, "tristimulus_y10", cc, r[QOMATH_CC_Y10]);
    put_if(f, "tristimulus_z10", cc, r[QOMATH_CC_Z10]);
    put_if(f, "cie1931_x", cc, r[QOMATH_CC_x]);
    put_if(f, "cie1931_y", cc, r[QOMATH_CC_y]);
    put_if(f, "cie1931_u_prime", cc, r[QOMATH_CC_UP]);
    put_if(f, "cie1931_v_prime", cc, r[QOMATH_CC_VP]);
    put_if(f, "cie1964_x", cc, r[QOMATH_CC_x10]);
    put_if(f, "cie1964_y", cc, r[QOMATH_CC_y10]);
    put_if(f, "cie1964_u_prime", cc, r[QOMATH_CC_UP10]);
    put_if(f, "cie1964_v_prime", cc, r[QOMATH_CC_VP10]);
    const bool cct = cc && r[QOMATH_CC_CCT] > 0.0f;
    put_if(f, "cct_k", cct, r[QOMATH_CC_CCT]);
    put_if(f, "duv", cct, r[QOMATH_CC_DUV]);
    const int kind = cc ? static_cast<int>(r[QOMATH_CC_DOMINANT_KIND]) : 0;
    put_if(f, "dominant_wavelength_nm", kind != 0, r[QOMATH_CC_DOMINANT_WL]);
    if (kind != 0)
        put_text(f, "dominant_kind", kind > 0 ? "dominant" : "complementary");
    else
        put_none(f, "dominant_kind");
    const bool object = cc && c.object.valid;
    put_if(f, "l_star", object, c.object.lab[0]);
    put_if(f, "a_star", object, c.object.lab[1]);
    put_if(f, "b_star", object, c.object.lab[2]);
    put_if(f, "excitation_purity", cc, r[QOMATH_CC_EXCITATION_PURITY]);
    put_if(f, "colorimetric_purity", cc, r[QOMATH_CC_COLORIMETRIC_PURITY]);
    put_text(f, "white_point", white_name(opt.calc.white));
    if (is_emitter(s.unit_code))
        put_none(f, "illuminant");
    else
        put_text(f, "illuminant", illuminant_name(opt.calc.illuminant));
    const bool cri = cct && is_emitter(s.unit_code);
    put_if(f, "ra", cri, r[QOMATH_CC_RA]);
    for (int i = 0; i < 15; ++i) put_if(f, kRiKeys[i], cri, r[QOMATH_CC_R1 + i]);
    const Photometric ph = photometric_of(s.unit_code);
    if (ph.quantity) {
        put_text(f, "photometric_quantity", ph.quantity);
        put_if(f, "photometric_value", cc, r[QOMATH_CC_PHOTOMETRIC]);
        put_text(f, "photometric_unit", ph.unit);
    } else {
        put_none(f, "photometric_quantity");
        put_none(f, "photometric_value");
        put_none(f, "photometric_unit");
    }
    const float* q = c.rc;
    put_if(f, "peak_wavelength_nm", rc, q[QOMATH_RC_PEAK_WL]);
    put_if(f, "peak_value", rc, q[QOMATH_RC_PEAK_VALUE]);
    put_if(f, "centroid_nm", rc, q[QOMATH_RC_CENTROID]);
    put_if(f, "fwhm_nm", rc && q[QOMATH_RC_FWHM] > 0.0f, q[QOMATH_RC_FWHM]);
    put_if(f, "integral_uv", rc, q[QOMATH_RC_UV]);
    put_if(f, "integral_visible", rc, q[QOMATH_RC_VISIBLE]);
    put_if(f, "integral_ir", rc, q[QOMATH_RC_IR]);
    put_if(f, "integral_total", rc, q[QOMATH_RC_TOTAL]);
    // Colour rendition to today's standards, photobiology.
    const bool cra = c.cra_status == 1;
    put_if(f, "ra_cie", cra, c.cra[QOMATH_CRA_RA]);
    put_if(f, "rf", cra, c.cra[QOMATH_CRA_RF]);
    put_if(f, "rg", cra, c.cra[QOMATH_CRA_RG]);
    for (int j = 0; j < 16; ++j) put_if(f, kRfKeys[j], cra, c.cra[QOMATH_CRA_RF_H1 + j]);
    for (int j = 0; j < 16; ++j) put_if(f, kRcsKeys[j], cra, c.cra[QOMATH_CRA_RCS_H1 + j]);
    const bool lux = c.aopic_status == 1 && s.unit_code == 1;
    for (int a = 0; a < 5; ++a) put_if(f, kEdiKeys[a], lux, c.aopic[QOMATH_AOPIC_EDI + a]);
    put_if(f, "melanopic_der", c.aopic_status == 1, c.aopic[QOMATH_AOPIC_DER + QOMATH_AOPIC_MELANOPIC]);
    const bool uv = c.uv_status == 1, irr = uv && s.unit_code == 1;
    put_if(f, "uv_c", uv, c.uv[0]);
    put_if(f, "uv_b", uv, c.uv[1]);
    put_if(f, "uv_a", uv, c.uv[2]);
    put_if(f, "actinic_uv", uv, c.uv[3]);
    put_if(f, "actinic_exposure_s", irr && c.uv[3] > 0.0f, c.uv[4]);
    put_if(f, "erythemal", uv, c.uv[5]);
    put_if(f, "uv_index", irr, c.uv[6]);
    put_if(f, "blue_light_hazard", uv, c.uv[7]);
    put(f, "colorimetry_status", c.cc_status);
    return f;
}

// ---- the three formats --------------------------------------------------------

std::string csv_header()
{
    // Built from an empty analysis, so the header always matches the rows.
    Options opt;
    const std::vector<Field> f = fields_of({}, Spectrum{}, Calculation{}, opt);
    std::string h;
    for (const Field& x : f) {
        if (!h.empty()) h.push_back(',');
        h += x.key;
    }
    h.push_back('\n');
    return h;
}

std::string csv_row(const std::vector<Field>& f)
{
    std::string row;
    bool first = true;
    for (const Field& x : f) {
        if (!first) row.push_back(',');
        first = false;
        if (x.kind == Field::num)
            row += number(x.value);
        else if (x.kind == Field::text)
            row += csv_field(x.str);
    }
    row.push_back('\n');
    return row;
}

std::string json_object(const std::vector<Field>& f, const Spectrum& s)
{
    std::string o = "  {";
    bool first = true;
    for (const Field& x : f) {
        if (!first) o += ", ";
        first = false;
        o += json_string(x.key);
        o += ": ";
        if (x.kind == Field::num) {
            const std::string v = number(x.value);
            o += v.empty() ? "null" : v;
        } else if (x.kind == Field::text) {
            o += json_string(x.str);
        } else {
            o += "null";
        }
        if (std::strcmp(x.key, "unit_code") == 0) {
            o += ", \"info\": [";
            for (std::size_t i = 0; i < s.info.size(); ++i) {
                if (i) o += ", ";
                o += json_string(cp1252_to_utf8(s.info[i]));
            }
            o += "]";
        }
    }
    o += "}";
    return o;
}

const Field* find(const std::vector<Field>& f, std::string_view key)
{
    for (const Field& x : f)
        if (key == x.key) return &x;
    return nullptr;
}

std::string fmt(const std::vector<Field>& f, std::string_view key, const char* format)
{
    const Field* x = find(f, key);
    if (!x || x->kind == Field::none) return "-";
    if (x->kind == Field::text) return printable(x->str);
    char buf[64];
    std::snprintf(buf, sizeof buf, format, x->value);
    return buf;
}

bool has(const std::vector<Field>& f, std::string_view key)
{
    const Field* x = find(f, key);
    return x && x->kind != Field::none;
}

std::string text_report(const std::vector<Field>& f, const Spectrum& s, const Calculation& c,
                        const Options& opt)
{
    std::string o;
    auto line = [&o](const char* label, const std::string& value) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "  %-22s ", label);
        o += buf;
        o += value;
        o += '\n';
    };
    o += "== " + display_name(find(f, "file")->str) + "\n";
    line("header", printable(cp1252_to_utf8(s.header)));
    line("unit", printable(cp1252_to_utf8(s.unit)) + " (code " + fmt(f, "unit_code", "%.0f") +
                     (s.plain ? "), two-column text" : "), file version " + fmt(f, "version", "%.1f")));
    line("points", fmt(f, "points", "%.0f") + ", " + fmt(f, "wl_first_nm", "%g") + " .. " +
                       fmt(f, "wl_last_nm", "%g") + " nm");
    line("calculation", opt.calc.compat
                            ? "compat: the C functions ColorimetricCalc and RadiometryCalc"
                            : "data: on the data's own sampling");
    for (std::size_t i = 0; i < s.info.size(); ++i)
        line(i == 0 ? "information" : "", printable(cp1252_to_utf8(s.info[i])));
    if (c.cc_status != 1) {
        line("colorimetry", std::string("none (status ") + std::to_string(c.cc_status) + ": " +
                                colorimetry_status_meaning(c.cc_status) + ")");
    } else {
        const char* obs = opt.observer == 10 ? "CIE 1964 10 deg" : "CIE 1931 2 deg";
        line("x, y", fmt(f, "x", "%.5f") + "  " + fmt(f, "y", "%.5f") + "   (" + obs + ")");
        line("u', v'", fmt(f, "u_prime", "%.5f") + "  " + fmt(f, "v_prime", "%.5f") + "   (" +
                           obs + ")");
        line("X, Y, Z", fmt(f, "tristimulus_x", "%.6g") + "  " + fmt(f, "tristimulus_y", "%.6g") +
                            "  " + fmt(f, "tristimulus_z", "%.6g") + "   (2 deg)");
        line("X10, Y10, Z10", fmt(f, "tristimulus_x10", "%.6g") + "  " +
                                  fmt(f, "tristimulus_y10", "%.6g") + "  " +
                                  fmt(f, "tristimulus_z10", "%.6g") + "   (10 deg)");
        if (opt.observer == 10)
            line("x, y (2 deg)", fmt(f, "cie1931_x", "%.5f") + "  " + fmt(f, "cie1931_y", "%.5f"));
        else
            line("x, y (10 deg)", fmt(f, "cie1964_x", "%.5f") + "  " + fmt(f, "cie1964_y", "%.5f"));
        if (!is_emitter(s.unit_code)) {
            line("seen under", std::string("illuminant ") + illuminant_name(opt.calc.illuminant) +
                                   (c.object.valid ? ", the perfect sample at Y = 100" : ""));
            if (has(f, "l_star"))
                line("L*, a*, b*", fmt(f, "l_star", "%.2f") + "  " + fmt(f, "a_star", "%.2f") +
                                       "  " + fmt(f, "b_star", "%.2f"));
        }
        line("CCT", has(f, "cct_k") ? fmt(f, "cct_k", "%.1f") + " K, Duv " + fmt(f, "duv", "%.5f")
                                    : std::string("-"));
        const std::string white = std::string(" (white ") + white_name(opt.calc.white) + ")";
        if (has(f, "dominant_wavelength_nm"))
            line(find(f, "dominant_kind")->str == "dominant" ? "dominant wavelength"
                                                             : "complementary wavelength",
                 fmt(f, "dominant_wavelength_nm", "%.1f") + " nm" + white);
        else
            line("dominant wavelength", "-" + white);
        line("purity", "excitation " + fmt(f, "excitation_purity", "%.4f") + ", colorimetric " +
                           fmt(f, "colorimetric_purity", "%.4f"));
        if (has(f, "ra")) {
            line("Ra", fmt(f, "ra", "%.1f") + " (the library's CRI_DefaultCalc2)");
            std::string ri;
            for (int i = 0; i < 15; ++i) {
                if (i == 8) {
                    line("R1..R8", ri);
                    ri.clear();
                }
                if (!ri.empty()) ri += ' ';
                ri += fmt(f, kRiKeys[i], "%.1f");
            }
            line("R9..R15", ri);
        }
        if (has(f, "rf"))
            line("TM-30 / CIE 224", "Rf " + fmt(f, "rf", "%.1f") + ", Rg " + fmt(f, "rg", "%.1f") +
                                        ";  CIE 13.3 Ra " + fmt(f, "ra_cie", "%.1f") +
                                        " (CIE constants)");
        if (has(f, "melanopic_edi_lx"))
            line("melanopic EDI", fmt(f, "melanopic_edi_lx", "%.6g") + " lx, DER " +
                                      fmt(f, "melanopic_der", "%.4f"));
        if (has(f, "actinic_uv"))
            line("UV, blue light", "UV-A " + fmt(f, "uv_a", "%.4g") + ", UV-B " + fmt(f, "uv_b", "%.4g") +
                                       ", actinic " + fmt(f, "actinic_uv", "%.4g") + ", B(l) " +
                                       fmt(f, "blue_light_hazard", "%.4g") + " (W/m^2" +
                                       (s.unit_code == 4 ? "/sr)" : ")"));
        if (has(f, "photometric_quantity"))
            line(find(f, "photometric_quantity")->str.c_str(),
                 fmt(f, "photometric_value", "%.6g") + " " + find(f, "photometric_unit")->str);
    }
    if (c.rc_status == 1) {
        line("peak", fmt(f, "peak_wavelength_nm", "%.2f") + " nm, value " +
                         fmt(f, "peak_value", "%.6g"));
        line("centroid", fmt(f, "centroid_nm", "%.2f") + " nm");
        line("FWHM", has(f, "fwhm_nm") ? fmt(f, "fwhm_nm", "%.2f") + " nm" : std::string("-"));
        line("integrals (value x nm)", "UV 200-380 " + fmt(f, "integral_uv", "%.6g") +
                                           ", visible 380-780 " +
                                           fmt(f, "integral_visible", "%.6g") + ", IR 780-1100 " +
                                           fmt(f, "integral_ir", "%.6g") + ", total " +
                                           fmt(f, "integral_total", "%.6g"));
    } else {
        line("radiometry", "none (status " + std::to_string(c.rc_status) + ")");
    }
    o += '\n';
    return o;
}

// ---- the batch --------------------------------------------------------------

// Time spent in each stage, summed over the files of a worker.
struct StageTimes {
    double read = 0, parse = 0, calculate = 0, format = 0;
    StageTimes& operator+=(const StageTimes& o)
    {
        read += o.read, parse += o.parse, calculate += o.calculate, format += o.format;
        return *this;
    }
};

class Stopwatch {
public:
    double lap()
    {
        const auto now = std::chrono::steady_clock::now();
        const double s = std::chrono::duration<double>(now - last_).count();
        last_ = now;
        return s;
    }

private:
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

struct Worker {
    Calculator calculator;
    std::string buffer;  // the file's bytes, reused from file to file
    Spectrum s;
    Calculation calc;
    StageTimes times;
};

void analyse(const std::string& path, Result& it, Worker& w, const Options& opt)
{
    it.out.clear();
    it.err.clear();
    it.failed = false;
    Stopwatch clock;
    std::string why;
    const bool read = read_file(path, w.buffer, why);
    w.times.read += clock.lap();
    if (!read) {
        it.err = "qomath: " + display_name(path) + ": cannot read (" + why + ")\n";
        it.failed = true;
        return;
    }
    const bool parsed = parse_input(path, w.buffer, opt.plain_unit, w.s, it.err);
    w.times.parse += clock.lap();
    if (!parsed) {
        it.failed = true;
        return;
    }
    if (opt.check_only) return;
    calculate(w.calculator, w.s, opt.calc, w.calc);
    w.times.calculate += clock.lap();
    if (w.calc.cc_status != 1)
        it.err += "qomath: " + display_name(path) + ": no colorimetry (status " +
                  std::to_string(w.calc.cc_status) + ": " +
                  colorimetry_status_meaning(w.calc.cc_status) + ")\n";
    const std::vector<Field> f = fields_of(path, w.s, w.calc, opt);
    switch (opt.format) {
    case Format::csv: it.out = csv_row(f); break;
    case Format::json: it.out = json_object(f, w.s); break;
    case Format::text: it.out = text_report(f, w.s, w.calc, opt); break;
    case Format::none: break;
    }
    w.times.format += clock.lap();
}

// Expands folders into their regular files, sorted by name. A folder that
// cannot be listed is an error message in errors.
std::vector<std::string> expand(const std::vector<std::string>& args, std::vector<std::string>& errors)
{
    namespace fs = std::filesystem;
    std::vector<std::string> items;
    for (const std::string& a : args) {
        std::error_code ec;
        if (a == "-" || !fs::is_directory(fs::path(a), ec)) {
            items.push_back(a);
            continue;
        }
        std::vector<std::string> names;
        fs::directory_iterator it(fs::path(a), ec), end;
        for (; !ec && it != end; it.increment(ec)) {
            std::error_code e2;
            if (it->is_regular_file(e2)) names.push_back(it->path().filename().string());
        }
        if (ec) {
            errors.push_back("qomath: " + printable(a) + ": cannot list the folder (" +
                             ec.message() + ")\n");
            continue;
        }
        std::sort(names.begin(), names.end());
        const std::string dir = (a.empty() || a.back() == '/') ? a : a + "/";
        for (std::string& n : names) items.push_back(dir + n);
    }
    return items;
}

// A progress line on standard error when it is a terminal: files done, files
// per second and the time left, at most five times a second.
class Progress {
public:
    Progress(std::FILE* err, std::size_t total)
        : err_(err), total_(total), on_(total > 1 && isatty(fileno(err))),
          start_(std::chrono::steady_clock::now()), last_(start_)
    {
    }
    void done(std::size_t count)
    {
        if (!on_) return;
        const auto now = std::chrono::steady_clock::now();
        if (count < total_ && now - last_ < std::chrono::milliseconds(200)) return;
        last_ = now;
        const double seconds = std::chrono::duration<double>(now - start_).count();
        const double rate = seconds > 0 ? static_cast<double>(count) / seconds : 0.0;
        const double left = rate > 0 ? static_cast<double>(total_ - count) / rate : 0.0;
        std::fprintf(err_, "\r\033[Kqomath analyze: %zu/%zu files, %.0f files/s, %.0f s left", count,
                     total_, rate, left);
        std::fflush(err_);
        shown_ = true;
    }
    void clear()
    {
        if (shown_) std::fputs("\r\033[K", err_);
        shown_ = false;
    }

private:
    std::FILE* err_;
    std::size_t total_;
    bool on_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_, last_;
};

constexpr std::string_view kUsageLine =
    "usage: qomath analyze [--csv | --json] [--observer 2|10] [--white E|D65|A|C]\n"
    "                      [--illuminant D65|A|C] [--unit UNIT] [--compat] [-o OUT]\n"
    "                      [--jobs N] [--check] [--stage-times] FILE|FOLDER|-...\n";

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err, "qomath analyze: %s\n%.*s", what.c_str(), static_cast<int>(kUsageLine.size()),
                 kUsageLine.data());
    return kExitUsage;
}

}  // namespace

int run_analyze(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    Options opt;
    std::vector<std::string> paths;
    bool options_done = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a = args[i];
        if (options_done || a.size() < 2 || a[0] != '-') {
            paths.push_back(a);
            continue;
        }
        if (a == "--") {
            options_done = true;
            continue;
        }
        std::string value;
        const bool takes_value = a.rfind("--observer", 0) == 0 || a.rfind("--white", 0) == 0 ||
                                 a.rfind("--illuminant", 0) == 0 || a.rfind("--unit", 0) == 0 ||
                                 a == "-o" || a.rfind("--output", 0) == 0 ||
                                 a.rfind("--jobs", 0) == 0 || a == "-j";
        if (takes_value) {
            const auto eq = a.find('=');
            if (eq != std::string::npos) {
                value = a.substr(eq + 1);
                a.resize(eq);
            } else if (i + 1 < args.size()) {
                value = args[++i];
            } else {
                return usage_error(err, "option '" + a + "' needs a value");
            }
        }
        if (a == "--csv") {
            opt.format = Format::csv;
        } else if (a == "--compat") {
            opt.calc.compat = true;
        } else if (a == "--check") {
            opt.check_only = true;
        } else if (a == "--stage-times") {
            opt.stage_times = true;
        } else if (a == "--jobs" || a == "-j") {
            char* end = nullptr;
            const long j = std::strtol(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || j < 1 || j > 1024)
                return usage_error(err, "--jobs takes a number of threads from 1 to 1024");
            opt.jobs = static_cast<unsigned>(j);
        } else if (a == "-o" || a == "--output") {
            if (value.empty()) return usage_error(err, "-o needs a file name");
            opt.output = value == "-" ? std::string() : value;
        } else if (a == "--unit") {
            opt.plain_unit = files::unit_code_of_name(value);
            if (opt.plain_unit < 0)
                return usage_error(err, "--unit takes counts, irradiance, radiant-intensity, "
                                        "radiant-flux, radiance, transmittance or reflectance, "
                                        "not '" + value + "'");
        } else if (a == "--json") {
            opt.format = Format::json;
        } else if (a == "--text") {
            opt.format = Format::text;
        } else if (a == "--observer") {
            if (value == "2")
                opt.observer = 2;
            else if (value == "10")
                opt.observer = 10;
            else
                return usage_error(err, "--observer takes 2 or 10, not '" + value + "'");
        } else if (a == "--white") {
            opt.calc.white = parse_white(value);
            if (opt.calc.white < 0)
                return usage_error(err, "--white takes E, D65, A or C, not '" + value + "'");
        } else if (a == "--illuminant") {
            opt.calc.illuminant = parse_illuminant(value);
            if (opt.calc.illuminant < 0)
                return usage_error(err, "--illuminant takes D65, A or C, not '" + value + "'");
        } else {
            return usage_error(err, "unknown option '" + a + "'");
        }
    }
    if (paths.empty()) return usage_error(err, "no file given");
    if (is_an_input(opt.output, paths))
        return usage_error(err, "the output " + printable(opt.output) + " is one of the inputs");
    Sink sink(out, opt.output);
    if (!sink.file()) {
        std::fputs(sink.open_failure().c_str(), err);
        return kExitFailed;
    }
    out = sink.file();

    Stopwatch wall;
    std::vector<std::string> list_errors;
    const std::vector<std::string> items = expand(paths, list_errors);
    const double list_seconds = wall.lap();
    bool failed = !list_errors.empty();
    for (const std::string& e : list_errors) std::fputs(e.c_str(), err);

    // Workers take the files in order and may run at most `window` files
    // ahead of the output, so a batch of any length holds at most `window`
    // results at once (besides the list of names).
    const std::size_t n = items.size();
    unsigned cores = opt.jobs ? opt.jobs : std::thread::hardware_concurrency();
    if (cores == 0) cores = 2;
    const std::size_t nthreads = std::max<std::size_t>(1, std::min<std::size_t>(cores, n));
    const std::size_t window = 16 * nthreads;
    std::vector<Result> ring(window);
    std::mutex m;
    std::condition_variable ready_cv, room_cv;
    std::size_t printed = 0;
    std::atomic<std::size_t> next{0};
    StageTimes total_times;
    auto work = [&]() {
        auto w = std::make_unique<Worker>();
        struct Merge {
            std::unique_ptr<Worker>& w;
            std::mutex& m;
            StageTimes& total;
            ~Merge()
            {
                const std::lock_guard<std::mutex> lock(m);
                total += w->times;
            }
        } merge{w, m, total_times};
        for (;;) {
            const std::size_t i = next.fetch_add(1);
            if (i >= n) break;
            {
                std::unique_lock<std::mutex> lock(m);
                room_cv.wait(lock, [&] { return i < printed + window; });
            }
            Result& r = ring[i % window];
            analyse(items[i], r, *w, opt);
            {
                const std::lock_guard<std::mutex> lock(m);
                r.index = i;
            }
            ready_cv.notify_all();
        }
    };
    std::vector<std::thread> pool;
    pool.reserve(nthreads);
    for (std::size_t t = 0; t < nthreads; ++t) pool.emplace_back(work);

    Progress progress(err, n);
    double write_seconds = 0;
    if (opt.check_only) opt.format = Format::none;
    if (opt.format == Format::csv) {
        const std::string h = csv_header();
        std::fwrite(h.data(), 1, h.size(), out);
    }
    if (opt.format == Format::json) std::fputs("[\n", out);
    bool first_object = true;
    for (std::size_t i = 0; i < n; ++i) {
        Result& it = ring[i % window];
        {
            std::unique_lock<std::mutex> lock(m);
            ready_cv.wait(lock, [&] { return it.index == i; });
        }
        if (!it.err.empty()) {
            progress.clear();
            std::fputs(it.err.c_str(), err);
        }
        if (it.failed) {
            failed = true;
        } else {
            if (opt.format == Format::json) {
                if (!first_object) std::fputs(",\n", out);
                first_object = false;
            }
            Stopwatch w;
            std::fwrite(it.out.data(), 1, it.out.size(), out);
            write_seconds += w.lap();
        }
        {
            const std::lock_guard<std::mutex> lock(m);
            printed = i + 1;
        }
        room_cv.notify_all();
        progress.done(i + 1);
    }
    progress.clear();
    if (opt.format == Format::json) std::fputs(first_object ? "]\n" : "\n]\n", out);
    for (std::thread& t : pool) t.join();
    if (opt.stage_times) {
        const double elapsed = wall.lap() + list_seconds;
        std::fprintf(err,
                     "qomath analyze: %zu files in %.3f s on %zu threads: %.0f files/s\n"
                     "  stage seconds (summed over threads): list %.3f, read %.3f, parse %.3f, "
                     "calculate %.3f, format %.3f, write %.3f\n",
                     n, elapsed, nthreads, elapsed > 0 ? static_cast<double>(n) / elapsed : 0.0,
                     list_seconds, total_times.read, total_times.parse, total_times.calculate,
                     total_times.format, write_seconds);
    }
    if (!sink.finish(err)) failed = true;
    return failed ? kExitFailed : kExitOk;
}

}  // namespace qomath::cli
