// The stray-light matrix generator: a folder of line scans to the SDF matrix
// D, the correction matrix C = (I + D)^-1 and "slmatrix.bin", with the
// summary files that instrument software has always written beside them.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "common/barrier.hpp"
#include "common/text_io.hpp"
#include "files/spectrum_reader.hpp"
#include "qomath/arrays.h"
#include "qomath/peaks.h"
#include "qomath/straylight.h"
#include "straylight/straylight.hpp"

namespace qomath::straylight {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point t0)
{
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

unsigned to_unsigned(float v)
{
    if (!std::isfinite(v) || v <= 0.0f) return 0;
    if (v >= 4294967295.0f) return std::numeric_limits<unsigned>::max();
    return static_cast<unsigned>(v);
}

int to_int(float v)
{
    if (!std::isfinite(v)) return 0;
    if (v >= 2147483647.0f) return std::numeric_limits<int>::max();
    if (v <= -2147483648.0f) return std::numeric_limits<int>::min();
    return static_cast<int>(v);
}

// One accepted scan of the folder.
struct Scan {
    std::string path;
    int peak = 0;            // first maximum, pixel
    double centroid = 0.0;   // pixel
    double interpolated = 0.0;
    float raw_max = 0.0f;
    double time = 0.0;       // integration or exposure time, 0 when absent
    double fwhm = 0.0;       // pixels, 0 when it cannot be measured
};

// Reads a scan: exactly 1024 finite values. False with the reason.
bool read_scan(const std::string& path, std::vector<float>& y, double& time, std::string& why)
{
    std::string data;
    if (!read_whole(path.c_str(), data)) {
        why = "cannot be read";
        return false;
    }
    files::ParsedSpectrum s;
    std::vector<files::Problem> problems;
    if (!files::parse_spectrum(data, -1, s, problems)) {
        int shown = 0;
        for (const files::Problem& p : problems)
            if (p.error && shown++ < 3) {
                if (!why.empty()) why += "; ";
                why += (p.line > 0 ? "line " + std::to_string(p.line) + ": " : std::string()) + p.what;
            }
        if (why.empty()) why = "not a spectral file";
        return false;
    }
    if (s.values.size() != kPixels) {
        why = std::to_string(s.values.size()) + " points, not 1024";
        return false;
    }
    for (const float v : s.values)
        if (!std::isfinite(v)) {
            why = "a value that is not a number";
            return false;
        }
    time = 0.0;
    for (const std::string& line : s.info)
        if (line.find("Integration Time") != std::string::npos ||
            line.find("Exposure Time") != std::string::npos) {
            time = text::parse_double(line.c_str());
            break;
        }
    y = std::move(s.values);
    return true;
}

// printf into a string.
void appendf(std::string& s, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
void appendf(std::string& s, const char* fmt, ...)
{
    char buf[1024];
    va_list ap;
    va_start(ap, fmt);
    const int k = std::vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    if (k > 0) s.append(buf, std::min<std::size_t>(static_cast<std::size_t>(k), sizeof buf - 1));
}

std::string in_dir(const std::string& dir, const std::string& name)
{
    return (fs::path(dir) / name).string();
}

}  // namespace

Config parse_config(std::string_view data)
{
    Config c;
    float num[17] = {};
    std::string texts[3];
    // The 256-character lines; a longer line comes in pieces, each a line.
    std::size_t pos = 0;
    for (int line = 1; line <= 23 && pos < data.size(); ++line) {
        std::size_t len = std::min<std::size_t>(255, data.size() - pos);
        const std::size_t lf = data.substr(pos, len).find('\n');
        if (lf != std::string_view::npos) len = lf + 1;
        std::string piece(data.substr(pos, len));
        pos += len;
        piece.resize(std::strlen(piece.c_str()));  // an embedded NUL ends the line
        const std::size_t eq = piece.find('=');
        std::string value = eq == std::string::npos ? std::string() : piece.substr(eq + 1);
        while (!value.empty() && (value.back() == '\n' || value.back() == '\r')) value.pop_back();
        if (line <= 17) {
            const double v = text::parse_double(value.c_str());
            num[line - 1] = std::abs(v) <= std::numeric_limits<float>::max() ? static_cast<float>(v) : 0.0f;
        } else if (line >= 21) {
            texts[line - 21] = value;
        }
    }
    c.inband_fixed = to_unsigned(num[0]);
    c.linear_fit = num[1] != 0.0f;
    c.fit_low = to_unsigned(num[2]);
    c.fit_high = to_unsigned(num[3]);
    c.noise_floor = num[4];
    c.max_left = to_unsigned(num[5]);
    c.max_right = to_unsigned(num[6]);
    c.median = num[7] != 0.0f;
    c.median_width = to_int(num[8]);
    c.boxcar = num[9] != 0.0f;
    c.boxcar_width = to_int(num[10]);
    c.convolution = num[11] != 0.0f;
    c.convolution_width = to_int(num[12]);
    c.spikes = num[13] != 0.0f;
    c.peak_threshold = num[14];
    c.cdf_threshold = num[15];
    c.end_columns = to_int(num[16]);
    c.scan_folder = texts[0];
    if (!texts[1].empty()) c.d_file = texts[1];
    if (!texts[2].empty()) c.c_file = texts[2];
    return c;
}

GenerateResult generate(State& st, const Config& cfg, const GenerateOptions& opt)
{
    GenerateResult res;
    std::FILE* log = opt.log;
    auto say = [&](const char* s) {
        if (log) std::fputs(s, log);
    };
    const auto t0 = Clock::now();

    // The folder, regular files in bytewise name order.
    const std::string folder = cfg.scan_folder.empty() ? std::string(".") : cfg.scan_folder;
    std::vector<std::string> names;
    {
        std::error_code ec;
        fs::directory_iterator it(folder, ec);
        if (ec) {
            say("FindFirstFile\n");
            res.status = -1;
            return res;
        }
        for (; it != fs::directory_iterator(); it.increment(ec)) {
            if (ec) break;
            std::error_code e2;
            if (it->is_regular_file(e2)) names.push_back(it->path().filename().string());
        }
        std::sort(names.begin(), names.end());
    }

    // Peaks of every accepted scan.
    text::ReplacingFile peaks_file(in_dir(opt.out_dir, "StrayLight_LocatePeakPixels.csv").c_str());
    if (!peaks_file.get()) {
        say("fpSummary not opened\n");
        res.status = -1;
        return res;
    }
    std::string listing = "File,Peak Pixel,Centroid Peak,Interpolated Peak\n";
    std::vector<Scan> scans;
    std::vector<float> y;
    for (const std::string& name : names) {
        if (name.find("csv") == std::string::npos) continue;
        Scan s;
        s.path = folder + "/" + name;
        std::string why;
        if (!read_scan(s.path, y, s.time, why)) {
            res.refused.push_back(s.path + ": " + why);
            if (log) std::fprintf(log, "Refused %s: %s\n", s.path.c_str(), why.c_str());
            continue;
        }
        s.peak = static_cast<int>(std::max_element(y.begin(), y.end()) - y.begin());
        s.raw_max = y[static_cast<std::size_t>(s.peak)];
        const int c0 = std::clamp(s.peak - 1, 0, static_cast<int>(kPixels) - 3);
        double three[3] = {y[c0], y[c0 + 1], y[c0 + 2]};
        s.centroid = c0 + dCentroid(three, 3);
        typ_wlinfo pixels{0.0f, static_cast<float>(kPixels - 1), 1.0f};
        s.interpolated = GetInterpolatedPeakWavelength(y.data(), &pixels);
        float level = 0, left = 0, right = 0;
        if (FWHM(y.data(), static_cast<int>(kPixels), &level, &left, &right) == 1) s.fwhm = right - left;
        appendf(listing, "%s,%d,%f,%f\n", s.path.c_str(), s.peak, s.centroid, s.interpolated);
        scans.push_back(std::move(s));
    }
    std::fputs(listing.c_str(), peaks_file.get());
    if (!peaks_file.commit()) {
        say("fpSummary not opened\n");
        res.status = -1;
        return res;
    }

    std::string input;
    appendf(input, "In-Band width fixed (pixels) %u\n", cfg.inband_fixed);
    appendf(input, "In-Band width Uses Linear Fit %d\n", cfg.linear_fit ? 1 : 0);
    appendf(input, "In-Band width Linear Fit Low Start %u\n", cfg.fit_low);
    appendf(input, "In-Band width Linear Fit High Start %u\n", cfg.fit_high);
    appendf(input, "Noise Floor (counts) %.0f\n", static_cast<double>(cfg.noise_floor));
    appendf(input, "Max Allowed Distance from Peak Left Side (pixels) %u\n", cfg.max_left);
    appendf(input, "Max Allowed Distance from Peak Right Side (pixels) %u\n", cfg.max_right);
    appendf(input, "Apply Median Filter %d\n", cfg.median ? 1 : 0);
    appendf(input, "Median Filter Width (pixels) %d\n", cfg.median_width);
    appendf(input, "Apply Boxcar Filter %d\n", cfg.boxcar ? 1 : 0);
    appendf(input, "Boxcar Filter Width %d\n", cfg.boxcar_width);
    appendf(input, "Apply Convolution Filter %d\n", cfg.convolution ? 1 : 0);
    appendf(input, "Convolution Filter Width (pixels) %d\n", cfg.convolution_width);
    appendf(input, "Remove Noise Spikes %d\n", cfg.spikes ? 1 : 0);
    appendf(input, "Peak Signal Threshold %f\n", static_cast<double>(cfg.peak_threshold));
    appendf(input, "CDF Noise Threshold %f\n", static_cast<double>(cfg.cdf_threshold));
    appendf(input, "DMatrix - End columns to remove %d\n", cfg.end_columns);
    if (!write_file(in_dir(opt.out_dir, "StrayLight_Input.txt").c_str(), input)) {
        say("StrayLight_Input.txt not written\n");
        res.status = -1;
        return res;
    }
    res.seconds_read = seconds_since(t0);
    if (scans.empty()) {
        res.status = 0;
        return res;
    }

    // Whole entries sorted by peak; equal peaks keep the listing order.
    std::stable_sort(scans.begin(), scans.end(), [](const Scan& a, const Scan& b) { return a.peak < b.peak; });
    double t_max = 0.0;
    for (const Scan& s : scans) t_max = std::max(t_max, s.time);

    // In-band width: fixed, or scaled along the least-squares line through
    // the FWHM of the scans peaking between the low and high start pixels.
    double fit_a = 0.0, fit_b = 0.0;
    bool fit = false;
    if (cfg.linear_fit) {
        double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
        for (const Scan& s : scans)
            if (s.fwhm > 0.0 && s.peak >= static_cast<long long>(cfg.fit_low) &&
                s.peak <= static_cast<long long>(cfg.fit_high)) {
                n += 1;
                sx += s.peak;
                sy += s.fwhm;
                sxx += static_cast<double>(s.peak) * s.peak;
                sxy += s.peak * s.fwhm;
            }
        const double det = n * sxx - sx * sx;
        if (n >= 2 && det != 0.0) {
            fit_b = (n * sxy - sx * sy) / det;
            fit_a = (sy - fit_b * sx) / n;
            fit = fit_a + fit_b * cfg.fit_low > 0.0;
        }
    }
    auto half_width = [&](int p) -> int {
        const int fixed = static_cast<int>(std::min<unsigned>(cfg.inband_fixed, kPixels));
        if (!fit) return fixed;
        const double r = fixed * (fit_a + fit_b * p) / (fit_a + fit_b * cfg.fit_low);
        if (!std::isfinite(r)) return fixed;
        return static_cast<int>(std::clamp(std::round(r), 1.0, static_cast<double>(kPixels)));
    };

    const auto t1 = Clock::now();
    std::string process = "pixel,closestFileIndex,closestFileIndex,SDFconversionSummary[closestFileIndex].fileName\n";
    if (init_matrix(st, kPixels) != 1) {
        res.status = -1;
        return res;
    }
    std::vector<double> lsf(kPixels), sdf(kPixels);
    int loaded = -1;
    bool loaded_ok = false;
    double scale = 1.0;
    for (int p = 0; p < static_cast<int>(kPixels); ++p) {
        if (opt.progress && p % 64 == 0) std::fprintf(opt.progress, "\rcolumns %4d/1024", p);
        // Closest eligible peak; on equal distances the lower peak.
        int best = -1;
        long long best_d = 0;
        for (std::size_t i = 0; i < scans.size(); ++i) {
            if (scans[i].raw_max < cfg.peak_threshold) continue;
            const long long d = std::llabs(static_cast<long long>(scans[i].peak) - p);
            if (best < 0 || d < best_d) {
                best = static_cast<int>(i);
                best_d = d;
            }
        }
        appendf(process, "%d,%d,%s,", p, best, best >= 0 ? scans[static_cast<std::size_t>(best)].path.c_str() : "");
        if (best < 0) {
            appendf(process, "Skipping %d\n", p);
            continue;
        }
        const Scan& s = scans[static_cast<std::size_t>(best)];
        if (best != loaded) {
            // The scan read again, as it was when the folder was listed.
            std::string why;
            double t = 0.0;
            loaded = best;
            loaded_ok = read_scan(s.path, y, t, why);
            scale = t > 0.0 && t_max > 0.0 ? t_max / t : 1.0;
        }
        if (!loaded_ok) {
            appendf(process, "Skipping %d\n", p);
            continue;
        }
        for (std::size_t i = 0; i < kPixels; ++i) lsf[i] = y[i] * scale;
        const int st_sdf = StrayLightGenerateSDF(
            lsf.data(), static_cast<int>(kPixels), p, half_width(p), cfg.max_left,
            static_cast<int>(std::min<unsigned>(cfg.max_right, std::numeric_limits<int>::max())),
            cfg.noise_floor, cfg.spikes, cfg.median, cfg.median_width, cfg.boxcar, cfg.boxcar_width,
            cfg.convolution, cfg.convolution_width, cfg.cdf_threshold, sdf.data());
        if (st_sdf == -2) {
            appendf(process, "Skipping %d\n", p);
            continue;
        }
        edit_matrix(st, static_cast<unsigned>(p), sdf.data(), kPixels);
        appendf(process, "%d\n", best);
    }
    if (opt.progress) std::fprintf(opt.progress, "\rcolumns 1024/1024\n");
    if (!write_file(in_dir(opt.out_dir, "StrayLightProcess.txt").c_str(), process)) {
        say("StrayLightProcess.txt not written\n");
        res.status = -1;
        return res;
    }
    res.seconds_columns = seconds_since(t1);

    // D without its end columns, then C = (I + D)^-1 smoothed along the diagonal.
    const auto t2 = Clock::now();
    std::vector<double> D(st.work), C(kMatrixValues);
    const std::size_t k = static_cast<std::size_t>(std::clamp(cfg.end_columns, 0, static_cast<int>(kPixels / 2)));
    for (std::size_t r = 0; r < kPixels; ++r)
        for (std::size_t c = 0; c < k; ++c) {
            D[r * kPixels + c] = 0.0;
            D[r * kPixels + kPixels - 1 - c] = 0.0;
        }
    std::string textm;
    format_sdf(D.data(), kPixels, textm);
    const std::string d_path = in_dir(opt.out_dir, cfg.d_file), c_path = in_dir(opt.out_dir, cfg.c_file);
    if (!write_file(d_path.c_str(), textm)) {
        if (log) std::fprintf(log, "%s not written\n", d_path.c_str());
        res.status = -1;
        return res;
    }
    const auto t3 = Clock::now();
    if (StrayLightGenerateCMatrix(D.data(), kPixels, C.data()) != 1) {
        res.status = -1;
        return res;
    }
    StrayLightSmoothColumns(C.data(), static_cast<int>(kPixels));
    res.seconds_invert = seconds_since(t3);
    format_sdf(C.data(), kPixels, textm);
    if (!write_file(c_path.c_str(), textm)) {
        if (log) std::fprintf(log, "%s not written\n", c_path.c_str());
        res.status = -1;
        return res;
    }
    // The binary file holds exactly the text file's values as read back.
    std::vector<float> cf(kMatrixValues + kCmatrixOverrun, 0.0f);
    parse_cmatrix_text(textm, cf.data(), static_cast<int>(kMatrixValues));
    const std::string bin = in_dir(opt.out_dir, opt.binary_name);
    if (!write_file(bin.c_str(), std::string_view(reinterpret_cast<const char*>(cf.data()), kMatrixBytes))) {
        if (log) std::fprintf(log, "%s not written\n", bin.c_str());
        res.status = -1;
        return res;
    }
    res.seconds_write = seconds_since(t2) - res.seconds_invert;
    res.status = 1;
    return res;
}

}  // namespace qomath::straylight

extern "C" void GenerateSDFMatrix(const char* configFile)
{
    namespace sl = qomath::straylight;
    qomath::detail::guarded([&] {
        std::string data;
        if (!configFile || !sl::read_whole(configFile, data)) {
            std::fputs("configuration file not opened\n", stdout);
            return;
        }
        sl::generate(sl::process_state(), sl::parse_config(data), sl::GenerateOptions{});
    });
}
