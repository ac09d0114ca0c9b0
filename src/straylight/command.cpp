// QoMathCmd: the text entry point of the stray-light batch commands.
#include "straylight/command.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

#include "common/barrier.hpp"
#include "common/text_io.hpp"
#include "qomath/command.h"
#include "qomath/filters.h"
#include "qomath/nvis.h"
#include "qomath/spectral_file.h"
#include "qomath/straylight.h"

namespace qomath::command {
namespace {

namespace fs = std::filesystem;
namespace sl = qomath::straylight;
using qomath::detail::guarded;

constexpr int kMode = 2;  // the commands split on blanks and commas
constexpr std::size_t kMessageMax = 4095;

bool is_separator(int mode, unsigned char c)
{
    if (mode & 2) return std::isspace(c) || c == ',';
    if (mode & 1) return c == ',';
    return std::isspace(c) != 0;
}

// Calls f(token) for each token until it returns true. Quotes toggle and are
// dropped; parentheses nest and are kept; an unmatched ")" is text.
template <class F>
void for_each_token(const char* line, int mode, std::string& tok, F&& f)
{
    tok.clear();
    bool quoted = false;
    int depth = 0;
    for (const char* p = line;; ++p) {
        const auto c = static_cast<unsigned char>(*p);
        if (c == 0) {
            if (!tok.empty()) f(tok);
            return;
        }
        if (c == '"') {
            quoted = !quoted;
            continue;
        }
        if (!quoted && depth == 0 && is_separator(mode, c)) {
            if (!tok.empty() && f(tok)) return;
            tok.clear();
            continue;
        }
        if (!quoted) {
            if (c == '(') ++depth;
            else if (c == ')' && depth > 0) --depth;
        }
        tok.push_back(static_cast<char>(c));
    }
}

bool starts_nocase(std::string_view tok, std::string_view key)
{
    if (tok.size() < key.size()) return false;
    for (std::size_t i = 0; i < key.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(tok[i])) !=
            std::tolower(static_cast<unsigned char>(key[i])))
            return false;
    return true;
}

bool equal_nocase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && starts_nocase(a, b);
}

void copy_cut(char* dst, int dst_size, std::string_view v)
{
    const std::size_t n = std::min(v.size(), static_cast<std::size_t>(dst_size - 1));
    std::memcpy(dst, v.data(), n);
    dst[n] = '\0';
}

// The keyword's value in a string of at most size - 1 characters.
std::string value_of(const char* line, const char* key, const char* def, int size = 1024)
{
    std::vector<char> v(static_cast<std::size_t>(size));
    keyword(kMode, v.data(), size, line, key, def);
    return v.data();
}

// Reads a keyword and reports it as "Using:key[value]".
std::string using_value(Context& ctx, const char* line, const char* key, const char* def,
                        int size = 1024)
{
    std::string v = value_of(line, key, def, size);
    ctx.printf("Using:%s[%s]\n", key, v.c_str());
    return v;
}

// "a:b:c" into numbers, each part like atof; a missing part is 0.
std::vector<double> split_numbers(const std::string& v, std::size_t parts)
{
    std::vector<double> out(parts, 0.0);
    std::size_t at = 0;
    for (std::size_t i = 0; i < parts && at <= v.size(); ++i) {
        const std::size_t colon = std::min(v.find(':', at), v.size());
        out[i] = text::parse_double(v.substr(at, colon - at).c_str());
        at = colon + 1;
    }
    return out;
}

using Record = std::unique_ptr<SpectralRecord2>;

// ReadSpectralFile2 into a fresh record; a file that is not 1024 points
// reads as -14, since every command works on the detector's pixels.
int load_pixels(const std::string& name, Record& rec)
{
    rec = std::make_unique<SpectralRecord2>();
    std::memset(rec.get(), 0, sizeof(SpectralRecord2));
    SpectralFileExtraInfo extra;
    const int st = ReadSpectralFile2(name.c_str(), rec.get(), &extra);
    if (st < 0) return st;
    if (rec->pointCount != static_cast<float>(sl::kPixels)) return -14;
    return st;
}

void save(Context& ctx, const std::string& name, SpectralRecord2& rec)
{
    const int st = WriteSpectralFile2(name.c_str(), &rec);
    if (st < 0) ctx.printf("outfile [%s] save failed: %d\n", name.c_str(), st);
}

// ---- Help texts: each line is one message ---------------------------------------------

constexpr const char* kCmdHelp[] = {
    "Available commands:\n",
    "SLinterpolate - Read stray light files from SLinterpolateinput and create interpolated files in SLinterpolateoutput.\n",
    "NVISab - compare two NVIS weighted input files.\n",
    "SDFMat - generate stray light correction matrices.\n",
    "Enter command name followed by '?' for additional details.\n",
    "Output from these commands is saved to QoMathCommandLineLog.txt\n",
};
constexpr const char* kSLinterpolateHelp[] = {
    "Available keyword=default:\n",
    "outnminterval=.2 - output nm interpolation interval\n",
    "vthreshold=.25 - centroid threshold as fraction of peak\n",
    "vmaxnmdelta=2.5 - validation max centroid to file delta\n",
    "vminwidth=2 - validation min width\n",
    "vmaxwidth=12 - validation max width\n",
};
constexpr const char* kNVISabHelp[] = {
    "Available keyword=default:\n",
    "nvis=nvisa.csv - nvis weighting file\n",
    "ina=ina.csv - input a: test file\n",
    "inb=inb.csv - input b: reference file\n",
    "escale=525:550 - energy scaling wavelength range\n",
    "escale=1000000:0 - energy scaling fixed factor\n",
};
constexpr const char* kSDFMatHelp[] = {"SDFMat config=name of configuration file\n"};

template <std::size_t N>
void print_lines(Context& ctx, const char* const (&lines)[N])
{
    for (const char* l : lines) ctx.print(l);
}

// ---- Commands -------------------------------------------------------------------------

void sl_mcorrect(Context& ctx, const char* line)
{
    const std::string in = using_value(ctx, line, "infile=", "slmin.csv");
    const std::string out = using_value(ctx, line, "outfile=", "slmout.csv");
    const std::string mat = using_value(ctx, line, "matrixfile=", "slmatrix.bin");
    const std::vector<double> blend = split_numbers(using_value(ctx, line, "blueblend=", "485:500"), 2);

    // Any load failure past the name check is -2: hosts test for that one code.
    int ms = sl::load_correction(*ctx.sl, mat.c_str());
    if (ms < 0 && mat.size() >= 3) ms = -2;
    if (ms < 0) ctx.printf("matrixfile [%s] load failed: %d\n", mat.c_str(), ms);
    Record rec;
    const int is = load_pixels(in, rec);
    if (is < 0) ctx.printf("infile [%s] load failed: %d\n", in.c_str(), is);
    if (ms < 0 || is < 0) return;
    // end < start is passed on as it is: no blend, C y everywhere.
    const int cs = sl::correct(*ctx.sl, rec->wavelengths, rec->values, sl::kPixels,
                               static_cast<float>(blend[0]), static_cast<float>(blend[1]));
    if (cs < 0) {
        ctx.printf("correction failed: %d\n", cs);
        return;
    }
    save(ctx, out, *rec);
}

void sl_rcorrect(Context& ctx, const char* line)
{
    const std::string in = using_value(ctx, line, "infile=", "slin.csv");
    const std::string out = using_value(ctx, line, "outfile=", "slout.csv");
    const std::string cal = using_value(ctx, line, "rcalfile=", "slrcal.csv");
    Record crec, rec;
    const int cs = load_pixels(cal, crec);
    if (cs < 0) ctx.printf("calfile [%s] load failed: %d\n", cal.c_str(), cs);
    const int is = load_pixels(in, rec);
    if (is < 0) ctx.printf("infile [%s] load failed: %d\n", in.c_str(), is);
    if (cs < 0 || is < 0) return;
    // The control value comes from the fixed text "ctl=0": always multiply.
    for (std::size_t i = 0; i < sl::kPixels; ++i) rec->values[i] *= crec->values[i];
    save(ctx, out, *rec);
}

void sl_filter(Context& ctx, const char* line)
{
    const std::string in = using_value(ctx, line, "infile=", "slin.csv");
    const std::string out = using_value(ctx, line, "outfile=", "slout.csv");
    const int ctl = text::parse_int(using_value(ctx, line, "ctl=", "0", 256).c_str());
    const std::vector<double> fp = split_numbers(using_value(ctx, line, "fp=", "0:0.5:65535.0"), 3);
    Record rec;
    const int is = load_pixels(in, rec);
    if (is < 0) {
        ctx.printf("infile [%s] load failed: %d\n", in.c_str(), is);
        return;
    }
    std::vector<double> y(rec->values, rec->values + sl::kPixels);
    // A control or parameters the filter refuses leave the values as read.
    SNFilter(y.data(), static_cast<int>(sl::kPixels), ctl, fp[0], fp[1], fp[2]);
    for (std::size_t i = 0; i < sl::kPixels; ++i) rec->values[i] = static_cast<float>(y[i]);
    save(ctx, out, *rec);
}

void sdf_mat(Context& ctx, const char* line)
{
    const std::string cfg = using_value(ctx, line, "config=", "", 512);
    std::string data;
    // The generator reports on its own listing, as GenerateSDFMatrix does; it
    // returns normally whatever the configuration holds.
    if (!sl::read_whole(cfg.c_str(), data)) {
        if (ctx.log) std::fputs("configuration file not opened\n", ctx.log);
        return;
    }
    sl::GenerateOptions opt;
    opt.log = ctx.log;
    sl::generate(*ctx.sl, sl::parse_config(data), opt);
}

fs::path drelog_folder(const std::string& path)
{
    const fs::path base(path);
    std::error_code ec;
    for (fs::directory_iterator it(base, ec), end; !ec && it != end; it.increment(ec))
        if (equal_nocase(it->path().filename().string(), "drelog") && it->is_directory(ec))
            return it->path();
    return base / "drelog";
}

void dre(Context& ctx, const char* line)
{
    const std::string path = using_value(ctx, line, "path=", "dretest");
    const fs::path folder = drelog_folder(path);
    std::string failed;
    const int st = load_dre(folder, ctx.dre, failed);
    if (st < 0) ctx.printf("infile [%s] load failed: %d\n", failed.c_str(), st);
    std::vector<std::string> warnings;
    if (!ctx.dre.empty()) merge_dre(ctx.dre, 65535.0f, folder, &warnings);
    for (const std::string& w : warnings) ctx.print(w);
    ctx.print("i,wlnm,scan,itms,wavg,wravg\n");
    for (std::size_t i = 0; i < ctx.dre.size(); ++i) {
        DreScan& s = ctx.dre[i];
        const float k = 1000.0f / s.it_ms;
        float wavg = 0, wravg = 0;
        for (std::size_t p = 0; p < sl::kPixels; ++p) {
            s.counts[p] *= k;
            wavg += s.counts[p];
            if (p >= 650 && p <= 899) wravg += s.counts[p];
        }
        wavg *= 0.0009765625f;
        wravg /= 250.0f;
        // Only the 30 s scans of a numbered series are listed; hosts read
        // the long exposures from this table and nothing else.
        if (s.it_ms != 30000.0f || static_cast<int>(s.scan) == 0) continue;
        // Hosts parse this row by its format as it has always been written; the
        // "0" flags beside a precision change nothing.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
        ctx.printf("%04.4d,%05.1f,%02.2d,%8.1f,%+e,%+e,%f,%f\n", static_cast<int>(i),
                   static_cast<double>(s.line_nm), static_cast<int>(s.scan),
                   static_cast<double>(s.it_ms), static_cast<double>(wavg),
                   static_cast<double>(wravg), static_cast<double>(s.line_nm),
                   static_cast<double>(wravg / wavg));
#pragma GCC diagnostic pop
    }
    ctx.dre.clear();
}


// ---- NVISab -----------------------------------------------------------------------------

// A spectrum of any length, as NVISab and SLC2 use them.
struct Curve {
    std::vector<float> wl, v;
};

int load_curve(const std::string& name, Curve& c)
{
    Record rec;
    rec = std::make_unique<SpectralRecord2>();
    std::memset(rec.get(), 0, sizeof(SpectralRecord2));
    SpectralFileExtraInfo extra;
    const int st = ReadSpectralFile2(name.c_str(), rec.get(), &extra);
    if (st < 0) return st;
    const auto n = static_cast<std::size_t>(std::clamp(rec->pointCount, 0.0f, 4096.0f));
    c.wl.assign(rec->wavelengths, rec->wavelengths + n);
    c.v.assign(rec->values, rec->values + n);
    return st;
}

// Linear between points, 0 outside.
double value_at(const Curve& c, double w, double shift = 0.0)
{
    const std::size_t n = c.wl.size();
    if (n == 0 || w < c.wl[0] + shift || w > c.wl[n - 1] + shift) return 0.0;
    std::size_t k = 1;
    while (k < n - 1 && c.wl[k] + shift < w) ++k;
    if (n == 1) return c.v[0];
    const double x0 = c.wl[k - 1] + shift, x1 = c.wl[k] + shift;
    const double t = x1 > x0 ? (w - x0) / (x1 - x0) : 1.0;
    return c.v[k - 1] + std::clamp(t, 0.0, 1.0) * (c.v[k] - c.v[k - 1]);
}

// Trapezoid over the curve's own points inside lo..hi.
double integral(const Curve& c, double lo, double hi)
{
    double sum = 0.0;
    for (std::size_t i = 1; i < c.wl.size(); ++i)
        if (c.wl[i - 1] >= lo && c.wl[i] <= hi)
            sum += 0.5 * (static_cast<double>(c.v[i]) + c.v[i - 1]) * (c.wl[i] - c.wl[i - 1]);
    return sum;
}

void scale(Curve& c, double k)
{
    for (float& v : c.v) v = static_cast<float>(v * k);
}

// [radiance, luminance fL, scaled radiance] of a curve against the table.
std::array<float, 3> nvis_of(const Curve& c, const Curve& table)
{
    std::array<float, 3> r{};
    NVIS_Compute(c.wl.data(), c.v.data(), static_cast<int>(c.wl.size()), table.wl.data(),
                 table.v.data(), static_cast<int>(table.wl.size()), 0.0f, r.data());
    return r;
}

void nvis_ab(Context& ctx, const char* line)
{
    const std::string nvis = using_value(ctx, line, "nvis=", "nvisa.csv");
    const std::vector<double> escale = split_numbers(using_value(ctx, line, "escale=", "525:550"), 2);
    const double dscale = text::parse_double(using_value(ctx, line, "dscale=", "0.2").c_str());
    const double nmshift = text::parse_double(using_value(ctx, line, "nmshift=", "-100.0").c_str());
    const std::vector<double> nmsum = split_numbers(using_value(ctx, line, "nmsum=", "518:675"), 2);
    const std::string ina = using_value(ctx, line, "ina=", "ina.csv");
    const std::string inb = using_value(ctx, line, "inb=", "inb.csv");
    const double lum = text::parse_double(using_value(ctx, line, "lum=", "0").c_str());

    Curve table, a, b;
    table.wl.resize(QOMATH_SPECTRAL_MAX_POINTS);
    table.v.resize(QOMATH_SPECTRAL_MAX_POINTS);
    const int ts = NVIS_GetData(nvis.c_str(), table.wl.data(), table.v.data(), QOMATH_SPECTRAL_MAX_POINTS);
    if (ts < 0) ctx.printf("nvis [%s] load failed: %d\n", nvis.c_str(), ts);
    table.wl.resize(static_cast<std::size_t>(std::max(ts, 0)));
    table.v.resize(table.wl.size());
    const int as = load_curve(ina, a);
    if (as < 0) ctx.printf("nvis [%s] load failed: %d\n", ina.c_str(), as);
    const int bs = load_curve(inb, b);
    if (bs < 0) ctx.printf("nvis [%s] load failed: %d\n", inb.c_str(), bs);
    if (ts < 0 || as < 0 || bs < 0) return;

    const Curve a_read = a;
    if (lum > 0) {
        for (Curve* c : {&a, &b}) {
            const float fl = nvis_of(*c, table)[1];
            if (fl > 0) scale(*c, lum / fl);
        }
    }
    if (escale[1] == 0.0) {
        scale(a, escale[0]);
    } else {
        const double ia = integral(a, escale[0], escale[1]);
        if (ia != 0.0) scale(a, integral(b, escale[0], escale[1]) / ia);
    }
    auto squared_difference = [&](double shift) {
        double sum = 0.0;
        for (std::size_t i = 0; i < b.wl.size(); ++i)
            if (b.wl[i] >= nmsum[0] && b.wl[i] <= nmsum[1]) {
                const double d = value_at(a, b.wl[i], shift) - b.v[i];
                sum += d * d;
            }
        return sum;
    };
    double shift = nmshift;
    if (nmshift <= -100.0) {
        // The search: -10..10 nm in dscale steps, the least squared difference wins.
        const double step = dscale > 0.001 ? dscale : 0.2;
        const int steps = static_cast<int>(20.0 / step + 1e-6);
        double best = squared_difference(-10.0);
        shift = -10.0;
        for (int k = 1; k <= steps; ++k) {
            const double s = -10.0 + k * step, d = squared_difference(s);
            if (d < best) best = d, shift = s;
        }
    }
    for (float& w : a.wl) w = static_cast<float>(w + shift);
    const float nvis_a = nvis_of(a, table)[0], nvis_b = nvis_of(b, table)[0];
    ctx.printf("shift=%fnm\n", shift);
    ctx.printf("NVISa radiance=%+e\n", static_cast<double>(nvis_a));
    ctx.printf("r%+e:%+e g%+e:%+e b%+e:%+e t%+e:%+e NVIS%+e\n", integral(a, 600, 700),
               integral(b, 600, 700), integral(a, 500, 600), integral(b, 500, 600),
               integral(a, 400, 500), integral(b, 400, 500), integral(a, nmsum[0], nmsum[1]),
               integral(b, nmsum[0], nmsum[1]), static_cast<double>(nvis_b));
    // Running integrals of a - b over nmsum on b's points: a as read, and a
    // as scaled and shifted.
    std::string csv = "nm,DeltaSUM,DeltaSUMScaled\n";
    double before = 0, after = 0, pw = 0, pd0 = 0, pd1 = 0;
    bool first = true;
    char row[128];
    for (std::size_t i = 0; i < b.wl.size(); ++i) {
        const double w = b.wl[i];
        if (w < nmsum[0] || w > nmsum[1]) continue;
        const double d0 = value_at(a_read, w) - b.v[i], d1 = value_at(a, w) - b.v[i];
        if (!first) {
            before += 0.5 * (d0 + pd0) * (w - pw);
            after += 0.5 * (d1 + pd1) * (w - pw);
        }
        first = false;
        pw = w, pd0 = d0, pd1 = d1;
        std::snprintf(row, sizeof row, "%f,%e,%e\n", w, before, after);
        csv += row;
    }
    if (!sl::write_file("nvisab.csv", csv)) ctx.printf("could not write output file [%s]\n", "nvisab.csv");
    ctx.print("out=nvisab.csv\n");
}

// ---- Folder commands ---------------------------------------------------------------------

// The regular ".csv" files (any case) of a folder, sorted by name bytes;
// false when the folder cannot be listed.
bool list_csv(const fs::path& folder, std::vector<fs::path>& files)
{
    files.clear();
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) return false;
    for (fs::directory_iterator end; it != end; it.increment(ec)) {
        if (ec) return false;
        if (it->is_regular_file(ec) && equal_nocase(it->path().extension().string(), ".csv"))
            files.push_back(it->path());
    }
    std::sort(files.begin(), files.end(),
              [](const fs::path& a, const fs::path& b) { return a.filename().string() < b.filename().string(); });
    return true;
}

// Sum, minimum, peak and NVIS radiance (0 without a table) of 1024 values.
std::array<double, 4> stats(const float* wl, const float* y, const Curve& table)
{
    double sum = 0, lo = y[0], hi = y[0];
    for (std::size_t i = 0; i < sl::kPixels; ++i) {
        sum += y[i];
        lo = std::min<double>(lo, y[i]);
        hi = std::max<double>(hi, y[i]);
    }
    float r[3] = {};
    if (!table.wl.empty())
        NVIS_Compute(wl, y, static_cast<int>(sl::kPixels), table.wl.data(), table.v.data(),
                     static_cast<int>(table.wl.size()), 0.0f, r);
    return {sum, lo, hi, r[0]};
}

bool load_table(Context& ctx, const std::string& name, Curve& table)
{
    table.wl.assign(QOMATH_SPECTRAL_MAX_POINTS, 0.0f);
    table.v.assign(QOMATH_SPECTRAL_MAX_POINTS, 0.0f);
    const int n = NVIS_GetData(name.c_str(), table.wl.data(), table.v.data(), QOMATH_SPECTRAL_MAX_POINTS);
    if (n < 0) ctx.printf("nvis [%s] load failed: %d\n", name.c_str(), n);
    table.wl.resize(static_cast<std::size_t>(std::max(n, 0)));
    table.v.resize(table.wl.size());
    return n >= 0;
}

void slc2(Context& ctx, const char* line)
{
    const std::string in = using_value(ctx, line, "in=", "");
    const std::string nvis = using_value(ctx, line, "nvis=", "");
    std::vector<fs::path> files;
    if (!list_csv(in, files) || files.empty()) {
        ctx.printf("Input folder/files not found: [%s]\n", in.c_str());
        return;
    }
    ctx.printf("input files read=%d\n", static_cast<int>(files.size()));
    Curve table;
    if (!nvis.empty()) load_table(ctx, nvis, table);
    if (!ctx.sl->loaded) {
        if (sl::load_correction(*ctx.sl, "slmatrix.bin") < 0) {
            ctx.printf("matrixfile [%s] load failed: %d\n", "slmatrix.bin", -2);
            return;
        }
    }
    std::error_code ec;
    fs::create_directories("slc2", ec);
    int written = 0;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        const std::string name = files[i].string();
        Record rec;
        const int st = load_pixels(name, rec);
        if (st < 0) {
            ctx.printf("infile [%s] load failed: %d\n", name.c_str(), st);
            continue;
        }
        const std::vector<float> fin(rec->values, rec->values + sl::kPixels);
        // The plain matrix correction, no blue blend (end < start).
        sl::correct(*ctx.sl, rec->wavelengths, rec->values, sl::kPixels, 1.0f, 0.0f);
        std::vector<float> frs(sl::kPixels);
        for (std::size_t p = 0; p < sl::kPixels; ++p) frs[p] = fin[p] - rec->values[p];
        const auto a = stats(rec->wavelengths, fin.data(), table);
        const auto r = stats(rec->wavelengths, frs.data(), table);
        const auto o = stats(rec->wavelengths, rec->values, table);
        ctx.printf("File [%s]\n    fin %e %+e %e %+e\n", name.c_str(), a[0], a[1], a[2], a[3]);
        ctx.printf("i=%d frs %e %+e %e %+e\n", static_cast<int>(i), r[0], r[1], r[2], r[3]);
        ctx.printf("    out %e %+e %e %+e\n", o[0], o[1], o[2], o[3]);
        const std::string out = (fs::path("slc2") / files[i].filename()).string();
        if (WriteSpectralFile2(out.c_str(), rec.get()) < 0) ctx.printf("could not write output file [%s]\n", out.c_str());
        else ++written;
        const std::chrono::duration<double> dt = std::chrono::steady_clock::now() - t0;
        ctx.printf("   ms=%d f=%f\n", static_cast<int>(dt.count() * 1000.0), dt.count());
    }
    ctx.printf("output files written=%d\n", written);
}

// ---- SLinterpolate ---------------------------------------------------------------------

struct LineScan {
    std::string name;
    Record rec;
    double nominal = 0, centroid = 0, peak = 0, line = 0;
    int width = 0;
    bool valid = false;
};

// The scan shifted along wavelength by `shift`, at pixel wavelength w.
double shifted_at(const SpectralRecord2& r, std::size_t n, double w, double shift)
{
    const float* x = r.wavelengths;
    const double u = w - shift;
    if (n == 0 || u < x[0] || u > x[n - 1]) return 0.0;
    const std::size_t k = std::max<std::size_t>(
        1, static_cast<std::size_t>(std::lower_bound(x, x + n, static_cast<float>(u)) - x));
    if (k >= n) return r.values[n - 1];
    const double t = x[k] > x[k - 1] ? (u - x[k - 1]) / (x[k] - x[k - 1]) : 1.0;
    return r.values[k - 1] + std::clamp(t, 0.0, 1.0) * (r.values[k] - r.values[k - 1]);
}

void sl_interpolate(Context& ctx, const char* line)
{
    auto number = [&](const char* key, const char* def) {
        return text::parse_double(using_value(ctx, line, key, def, 256).c_str());
    };
    const double interval = number("outnminterval=", ".2");
    const double vthreshold = number("vthreshold=", ".25");
    const double vmaxnmdelta = number("vmaxnmdelta=", "2.5");
    const double zfract = number("zfract=", "-100");
    const double vminwidth = number("vminwidth=", "2");
    const double vmaxwidth = number("vmaxwidth=", "12");
    const int mwaf = static_cast<int>(number("mwaf=", "0"));
    const double vscaleout = number("vscaleout=", "-32000");
    const bool usecentroid = number("usecentroid=", "0") != 0.0;

    std::vector<fs::path> files;
    if (!list_csv("slscans", files) || files.empty()) {
        ctx.printf("Input folder/files not found: [%s]\n", "slscans");
        return;
    }
    std::vector<LineScan> scans;
    std::size_t n = 0;
    for (const fs::path& f : files) {
        LineScan s;
        s.name = f.string();
        Record rec = std::make_unique<SpectralRecord2>();
        std::memset(rec.get(), 0, sizeof(SpectralRecord2));
        SpectralFileExtraInfo extra;
        const int st = ReadSpectralFile2(s.name.c_str(), rec.get(), &extra);
        if (st < 0) {
            ctx.printf("infile [%s] load failed: %d\n", s.name.c_str(), st);
            continue;
        }
        const auto count = static_cast<std::size_t>(std::clamp(rec->pointCount, 0.0f, 4096.0f));
        if (!scans.empty() && (count != n || !std::equal(rec->wavelengths, rec->wavelengths + n,
                                                         scans.front().rec->wavelengths))) {
            ctx.printf("Input file does not match previous file calibration: [%s]\n", s.name.c_str());
            continue;
        }
        n = count;
        s.rec = std::move(rec);
        s.nominal = text::parse_double(f.filename().string().c_str());
        scans.push_back(std::move(s));
    }
    ctx.printf("input files read=%d\n", static_cast<int>(scans.size()));
    if (n < 2) return;

    ctx.print("nmNominal,nmCentroid,nmDelta,vPeak,ThresholdElementWidth\n");
    std::vector<const LineScan*> valid;
    for (LineScan& s : scans) {
        float* y = s.rec->values;
        const float* w = s.rec->wavelengths;
        if (mwaf > 1) BoxcarAveraging(y, static_cast<int>(n), mwaf);
        const std::size_t p = static_cast<std::size_t>(std::max_element(y, y + n) - y);
        s.peak = y[p];
        if (zfract >= 0)
            for (std::size_t i = 0; i < n; ++i)
                if (y[i] < zfract * s.peak) y[i] = 0.0f;
        const double level = vthreshold * s.peak;
        std::size_t lo = p, hi = p;
        while (lo > 0 && y[lo - 1] >= level) --lo;
        while (hi + 1 < n && y[hi + 1] >= level) ++hi;
        double sw = 0, sv = 0;
        for (std::size_t i = lo; i <= hi; ++i) sw += static_cast<double>(w[i]) * y[i], sv += y[i];
        s.centroid = sv != 0 ? sw / sv : w[p];
        s.width = static_cast<int>(hi - lo + 1);
        s.valid = s.peak > 0 && std::abs(s.centroid - s.nominal) <= vmaxnmdelta && s.width >= vminwidth &&
                  s.width <= vmaxwidth;
        s.line = usecentroid ? s.centroid : s.nominal;
        ctx.printf("%f,%f,%f,%f,%d\n", s.nominal, s.centroid, s.centroid - s.nominal, s.peak, s.width);
        if (s.valid) valid.push_back(&s);
    }
    std::sort(valid.begin(), valid.end(), [](const LineScan* a, const LineScan* b) { return a->line < b->line; });
    if (valid.size() < 2) {
        ctx.printf("outside interpolation range:[%s]\n", "slscans");
        ctx.printf("output files written=%d highest maximum=%f\n", 0, 0.0);
        return;
    }
    // An output at L blends the two valid scans around it, each moved onto L.
    const Record out_rec = std::make_unique<SpectralRecord2>(*valid.front()->rec);
    SpectralRecord2& out = *out_rec;
    int written = 0;
    double highest = 0;
    auto emit = [&](double L, const std::string& name) {
        std::size_t k = 1;
        while (k + 1 < valid.size() && valid[k]->line < L) ++k;
        const LineScan& a = *valid[k - 1];
        const LineScan& b = *valid[k];
        const double t = std::clamp((L - a.line) / (b.line - a.line), 0.0, 1.0);
        double peak = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const double w = out.wavelengths[i];
            out.values[i] = static_cast<float>((1 - t) * shifted_at(*a.rec, n, w, L - a.line) +
                                               t * shifted_at(*b.rec, n, w, L - b.line));
            peak = std::max<double>(peak, out.values[i]);
        }
        if (vscaleout > 0 && peak > 0)
            for (std::size_t i = 0; i < n; ++i) out.values[i] = static_cast<float>(out.values[i] * vscaleout / peak);
        highest = std::max(highest, vscaleout > 0 && peak > 0 ? vscaleout : peak);
        if (WriteSpectralFile2(name.c_str(), &out) < 0) ctx.printf("could not write output file [%s]\n", name.c_str());
        else ++written;
    };
    std::error_code ec;
    fs::create_directories("slinterpolate", ec);
    fs::create_directories("slinterpolate1024", ec);
    const double first = valid.front()->line, last = valid.back()->line;
    const double step = interval > 1e-3 ? interval : 0.2;
    char name[64];
    for (long k = 0; first + k * step <= last + 1e-9; ++k) {
        std::snprintf(name, sizeof name, "%0.1f.csv", first + k * step);
        emit(first + k * step, (fs::path("slinterpolate") / name).string());
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double w = out.wavelengths[i];
        if (w < first || w > last) continue;
        std::snprintf(name, sizeof name, "%04d.csv", static_cast<int>(i));
        emit(w, (fs::path("slinterpolate1024") / name).string());
    }
    ctx.printf("output files written=%d highest maximum=%f\n", written, highest);
}

struct Entry {
    std::string_view name;
    void (*run)(Context&, const char*);
};

}  // namespace

// ---- Output -----------------------------------------------------------------------------

void Context::print(std::string_view msg)
{
    msg = msg.substr(0, kMessageMax);
    if (!buf || cap < 1) return;
    if (static_cast<long long>(len) + static_cast<long long>(msg.size()) >= cap) return;
    std::memcpy(buf + len, msg.data(), msg.size());
    len += static_cast<int>(msg.size());
    buf[len] = '\0';
}

void Context::printf(const char* fmt, ...)
{
    char work[kMessageMax + 1];
    va_list ap;
    va_start(ap, fmt);
    const int n = std::vsnprintf(work, sizeof work, fmt, ap);
    va_end(ap);
    if (n > 0) print(std::string_view(work, std::min<std::size_t>(static_cast<std::size_t>(n), kMessageMax)));
}

void Context::set(std::string_view text)
{
    if (!buf || cap < 1) return;
    const std::size_t n = std::min(text.size(), static_cast<std::size_t>(cap - 1));
    std::memcpy(buf, text.data(), n);
    buf[n] = '\0';
    len = static_cast<int>(n);
}

Context& process_context()
{
    static Context ctx{&sl::process_state(), stdout, {}, nullptr, 0, 0};
    return ctx;
}

// ---- Keyword lookup ----------------------------------------------------------------------

int keyword(int mode, char* dst, int dst_size, const char* line, const char* key, const char* def)
{
    if (!dst) return -1;
    dst[0] = '\0';
    if (dst_size < 2 || !def) return -1;
    copy_cut(dst, dst_size, def);
    if (!key || !line) return -1;
    std::string tok;
    bool found = false;
    std::string_view value;
    if (std::isdigit(static_cast<unsigned char>(key[0]))) {
        int want = std::atoi(key);
        if (want < 1) return -1;
        for_each_token(line, mode, tok, [&](const std::string& t) {
            if (--want > 0) return false;
            found = true;
            value = t;
            return true;
        });
    } else {
        const std::string_view k(key);
        for_each_token(line, mode, tok, [&](const std::string& t) {
            if (!starts_nocase(t, k)) return false;
            found = true;
            value = std::string_view(t).substr(k.size());
            if (!value.empty() && value.front() == '=') value.remove_prefix(1);
            return true;
        });
    }
    if (!found) return 0;
    while (!value.empty() && std::isspace(static_cast<unsigned char>(value.back()))) value.remove_suffix(1);
    copy_cut(dst, dst_size, value);
    return 1;
}

// ---- Dispatch ----------------------------------------------------------------------------

void run(Context& ctx, const char* line, char* result, int capacity)
{
    ctx.buf = result;
    ctx.cap = capacity;
    ctx.len = 0;
    if (result && capacity >= 1) result[0] = '\0';
    if (!line) line = "";
    const std::string name = value_of(line, "1", "", 256);
    ctx.printf("Using:%s[%s]\n", "1", name.c_str());

    static constexpr Entry kTable[] = {
        {"cmd?", [](Context& c, const char*) { print_lines(c, kCmdHelp); }},
        {"SLinterpolate?", [](Context& c, const char*) { print_lines(c, kSLinterpolateHelp); }},
        {"SLinterpolate", sl_interpolate},
        {"SLC2", slc2},
        {"SLMcorrect", sl_mcorrect},
        {"SLRcorrect", sl_rcorrect},
        {"SLFilter", sl_filter},
        {"DRE", dre},
        {"NVISab", nvis_ab},
        {"NVISab?", [](Context& c, const char*) { print_lines(c, kNVISabHelp); }},
        {"SDFMat", sdf_mat},
        {"SDFMat?", [](Context& c, const char*) { print_lines(c, kSDFMatHelp); }},
    };
    if (name.empty()) {
        ctx.set("no function specified");
        return;
    }
    for (const Entry& e : kTable)
        if (equal_nocase(name, e.name)) {
            e.run(ctx, line);
            return;
        }
    std::string text = "invalid command [";
    text += line;
    text += ']';
    ctx.set(text);
}

// ---- DRE ---------------------------------------------------------------------------------

int load_dre(const fs::path& folder, std::vector<DreScan>& out, std::string& failed)
{
    out.clear();
    for (int n = 0; n < 1024; ++n) {
        std::string fname = "DRE";
        fname += std::to_string(n);
        fname += ".csv";
        const fs::path file = folder / fname;
        std::error_code ec;
        if (!fs::exists(file, ec)) break;
        Record rec;
        const int st = load_pixels(file.string(), rec);
        if (st < 0) {
            failed = file.string();
            return st;
        }
        DreScan s;
        s.name = file.string();
        for (int i = 0; i < std::min(rec->infoCount, QOMATH_SPECTRAL_MAX_INFO); ++i) {
            std::string info(rec->info[i], strnlen(rec->info[i], QOMATH_SPECTRAL_INFO_SIZE));
            std::transform(info.begin(), info.end(), info.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
            const auto v = static_cast<float>(text::parse_double(info.c_str()));
            if (info.find("[line wavelength nm]") != std::string::npos) s.line_nm = v;
            else if (info.find("[integration time ms]") != std::string::npos) s.it_ms = v;
            else if (info.find("[scan number]") != std::string::npos) s.scan = v;
        }
        s.wl.assign(rec->wavelengths, rec->wavelengths + sl::kPixels);
        s.counts.assign(rec->values, rec->values + sl::kPixels);
        out.push_back(std::move(s));
    }
    return 1;
}

int merge_dre(const std::vector<DreScan>& scans, float saturation, const fs::path& folder,
              std::vector<std::string>* warnings)
{
    std::vector<float> lines;
    for (const DreScan& s : scans)
        if (std::find(lines.begin(), lines.end(), s.line_nm) == lines.end()) lines.push_back(s.line_nm);
    std::vector<std::vector<float>> merged;
    for (const float ln : lines) {
        std::vector<float> rows, times;
        const DreScan* shortest = nullptr;
        for (const DreScan& s : scans) {
            if (s.line_nm != ln) continue;
            rows.insert(rows.end(), s.counts.begin(), s.counts.end());
            times.push_back(s.it_ms);
            if (!shortest || s.it_ms < shortest->it_ms) shortest = &s;
        }
        std::vector<float> m(sl::kPixels, 0.0f);
        DREprocess(rows.data(), times.data(), static_cast<int>(times.size()),
                   static_cast<int>(sl::kPixels), saturation, m.data());
        const float peak = *std::max_element(shortest->counts.begin(), shortest->counts.end());
        if (warnings && peak >= saturation) {
            char w[kMessageMax + 1];
            std::snprintf(w, sizeof w, "WARNING: [%s] least max=%f ITms=%f\n", shortest->name.c_str(),
                          static_cast<double>(peak), static_cast<double>(shortest->it_ms));
            warnings->push_back(w);
        }
        merged.push_back(std::move(m));
    }
    text::ReplacingFile f((folder / "redre.txt").string().c_str());
    if (!f.get()) return -2;
    std::fputs("nm", f.get());
    for (const float ln : lines) std::fprintf(f.get(), ",%.1f", static_cast<double>(ln));
    std::fputc('\n', f.get());
    for (std::size_t p = 0; p < sl::kPixels; ++p) {
        std::fprintf(f.get(), "%f", static_cast<double>(scans.front().wl[p]));
        for (const auto& m : merged) std::fprintf(f.get(), ",%e", static_cast<double>(m[p]));
        std::fputc('\n', f.get());
    }
    return f.commit() ? static_cast<int>(lines.size()) : -2;
}

}  // namespace qomath::command

namespace cm = qomath::command;

extern "C" {

int QoMathCmd(char* commandLine, char* result, int resultCapacity)
{
    return qomath::detail::guarded(0, [&] {
        cm::run(cm::process_context(), commandLine, result, resultCapacity);
        return 0;
    });
}

int DREprocess(const float* scans, const float* timesMs, int count, int pixels, float saturation,
               float* merged)
{
    if (!scans || !timesMs || !merged || count < 1 || pixels < 1) return -1;
    int shortest = 0;
    for (int k = 0; k < count; ++k) {
        if (!(timesMs[k] > 0.0f)) return -1;
        if (timesMs[k] < timesMs[shortest]) shortest = k;
    }
    int status = 1;
    const auto np = static_cast<std::size_t>(pixels);
    for (std::size_t p = 0; p < np; ++p) {
        double counts = 0, seconds = 0;
        for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
            const float v = scans[k * np + p];
            if (v >= saturation) continue;
            counts += v;
            seconds += timesMs[k] / 1000.0;
        }
        if (seconds > 0) {
            merged[p] = static_cast<float>(counts / seconds);
        } else {
            // Saturated everywhere: the shortest scan's rate is the best there is.
            merged[p] = static_cast<float>(scans[static_cast<std::size_t>(shortest) * np + p] /
                                           (timesMs[shortest] / 1000.0));
            status = 0;
        }
    }
    return status;
}

int DREcontrol(const char* logFolder, float saturation)
{
    if (!logFolder) return -1;
    return qomath::detail::guarded(-2, [&] {
        std::vector<cm::DreScan> scans;
        std::string failed;
        cm::load_dre(logFolder, scans, failed);
        if (scans.empty()) return 0;
        return cm::merge_dre(scans, saturation, logFolder, nullptr);
    });
}

}  // extern "C"
