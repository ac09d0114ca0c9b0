// qomath straylight: build a correction matrix from a folder of line scans,
// and correct spectra with it.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include <unistd.h>

#include "command.hpp"
#include "output.hpp"
#include "spectrum_io.hpp"
#include "straylight/straylight.hpp"

namespace qomath::cli {
namespace {

namespace fs = std::filesystem;
namespace sl = qomath::straylight;

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err,
                 "qomath straylight: %s\n"
                 "usage: qomath straylight generate SCANDIR -o MATRIX [--config FILE] [--stage-times]\n"
                 "       qomath straylight correct MATRIX FILE... [-o DIR] [--blue-blend START:END]\n",
                 what.c_str());
    return kExitUsage;
}

// The settings when no configuration file is given.
sl::Config default_config()
{
    sl::Config c;
    c.inband_fixed = 8;
    c.max_left = c.max_right = 1023;
    return c;
}

int run_generate(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    std::string folder, matrix, config;
    bool times = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string a = args[i];
        if (a == "-o" || a == "--config") {
            if (i + 1 >= args.size()) return usage_error(err, a + " needs a value");
            (a == "-o" ? matrix : config) = args[++i];
        } else if (a == "--stage-times") {
            times = true;
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else if (folder.empty()) {
            folder = a;
        } else {
            return usage_error(err, "one scan folder only");
        }
    }
    if (folder.empty()) return usage_error(err, "no scan folder");
    if (matrix.empty()) return usage_error(err, "no -o MATRIX");
    if (fs::path(matrix).filename().empty()) return usage_error(err, "MATRIX names a folder");

    sl::Config cfg = default_config();
    if (!config.empty()) {
        std::string data;
        if (!sl::read_whole(config.c_str(), data)) {
            std::fprintf(err, "qomath: %s: cannot be read\n", config.c_str());
            return kExitFailed;
        }
        cfg = sl::parse_config(data);
    }
    cfg.scan_folder = folder;
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) {
        std::fprintf(err, "qomath: %s: not a folder that can be listed\n", folder.c_str());
        return kExitFailed;
    }
    sl::GenerateOptions opt;
    const fs::path m(matrix);
    opt.out_dir = m.has_parent_path() ? m.parent_path().string() : std::string(".");
    // The outputs beside MATRIX must not join (or replace) the scans.
    if (fs::equivalent(opt.out_dir, folder, ec) || is_an_input(matrix, {config}))
        return usage_error(err, "MATRIX must lie outside SCANDIR and not be the configuration file");
    opt.binary_name = m.filename().string();
    opt.log = nullptr;
    opt.progress = ::isatty(::fileno(err)) ? err : nullptr;
    sl::State state;
    const sl::GenerateResult r = sl::generate(state, cfg, opt);
    for (const std::string& why : r.refused) std::fprintf(err, "qomath: %s\n", why.c_str());
    if (times)
        std::fprintf(err, "stage times: read %.3f s, columns %.3f s, invert %.3f s, write %.3f s\n",
                     r.seconds_read, r.seconds_columns, r.seconds_invert, r.seconds_write);
    if (r.status == 0) {
        std::fprintf(err, "qomath: %s: no usable scan, no matrix written\n", folder.c_str());
        return kExitFailed;
    }
    if (r.status < 0) {
        std::fprintf(err, "qomath: the matrix files could not be written in %s\n", opt.out_dir.c_str());
        return kExitFailed;
    }
    std::fprintf(out, "%s written (%zu scans refused)\n", matrix.c_str(), r.refused.size());
    return r.refused.empty() ? kExitOk : kExitFailed;
}

int run_correct(std::span<char* const> args, std::FILE* err)
{
    std::string matrix, dir;
    std::vector<std::string> inputs;
    float start = 1.0f, end = 0.0f;  // no blend
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string a = args[i];
        if (a == "-o" || a == "--blue-blend") {
            if (i + 1 >= args.size()) return usage_error(err, a + " needs a value");
            const std::string v = args[++i];
            if (a == "-o") {
                dir = v;
                continue;
            }
            const std::size_t colon = v.find(':');
            char* e1 = nullptr;
            char* e2 = nullptr;
            const std::string s1 = v.substr(0, colon), s2 = colon == std::string::npos ? "" : v.substr(colon + 1);
            start = std::strtof(s1.c_str(), &e1);
            end = std::strtof(s2.c_str(), &e2);
            if (s1.empty() || s2.empty() || *e1 || *e2 || !std::isfinite(start) || !std::isfinite(end) || end < start)
                return usage_error(err, "--blue-blend takes START:END in nm, START <= END");
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else if (matrix.empty()) {
            matrix = a;
        } else {
            inputs.push_back(a);
        }
    }
    if (matrix.empty()) return usage_error(err, "no matrix file");
    if (inputs.empty()) return usage_error(err, "no spectrum to correct");
    auto output_of = [&](const std::string& in) {
        const fs::path p(in);
        const fs::path d = dir.empty() ? p.parent_path() / "corrected" : fs::path(dir);
        return (d / p.filename()).string();
    };
    std::vector<std::string> all = inputs;
    all.push_back(matrix);
    for (const std::string& in : inputs) {
        if (in == "-") return usage_error(err, "spectra are read from files, not standard input");
        if (is_an_input(output_of(in), all))
            return usage_error(err, "the output for " + in + " is an input");
    }

    sl::State state;
    const int ld = sl::load_correction(state, matrix.c_str());
    if (ld != 1) {
        std::fprintf(err, "qomath: %s: %s\n", matrix.c_str(),
                     ld == -2 ? "not a 1024 x 1024 matrix of finite floats (4,194,304 bytes)"
                              : "cannot be read");
        return kExitFailed;
    }
    bool failed = false;
    Spectrum s;
    for (const std::string& in : inputs) {
        if (!read_spectrum(in, -1, s, err)) {
            failed = true;
            continue;
        }
        if (s.values.size() != sl::kPixels) {
            std::fprintf(err, "qomath: %s: %zu points; the matrix corrects 1024\n", in.c_str(), s.values.size());
            failed = true;
            continue;
        }
        sl::correct(state, s.wavelengths.data(), s.values.data(), s.values.size(), start, end);
        const std::string o = output_of(in);
        std::error_code ec;
        fs::create_directories(fs::path(o).parent_path(), ec);
        if (!write_spectrum(s, own_version(s), o, in, nullptr, err)) failed = true;
    }
    return failed ? kExitFailed : kExitOk;
}

}  // namespace

int run_straylight(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    if (args.empty()) return usage_error(err, "generate or correct?");
    const std::string what = args[0];
    if (what == "generate") return run_generate(args.subspan(1), out, err);
    if (what == "correct") return run_correct(args.subspan(1), err);
    return usage_error(err, "unknown subcommand '" + what + "'");
}

}  // namespace qomath::cli
