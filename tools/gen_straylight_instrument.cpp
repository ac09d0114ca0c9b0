// A synthetic 1024-pixel array spectrometer with stray light, for the
// end-to-end checks of `qomath straylight`.
//
//   qomath_gen_straylight OUTDIR [--every K]
//
// The line-spread function of a line at pixel p: a Gaussian core (sigma 1.2
// pixels, sum 1) plus stray light of f(p) = 1 % (blue end) to 2 % (red end)
// of the line, all of it more than 8 pixels from the line: on each side an
// exponential tail (decay 90 pixels red of the line, 45 blue, the red side
// three times stronger) and a flat floor, each rising smoothly from zero
// over 6 pixels so that the tails have no edge.
//
// Writes OUTDIR/scans: a version 2.0 scan per pixel ("line_NNNN.csv"; with
// --every K only every K-th pixel), at integration times 100, 200 and 400 ms
// in turn (counts proportional to the time), two broken scans (1023 points;
// a NaN) and decoys the generator must pass over ("notes.txt",
// "summary.CSV", a folder "old.csv"); OUTDIR/spectra: measured test spectra
// (three lines and a broadband white LED) and OUTDIR/truth: the same without
// stray light (the cores alone).
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "files/spectrum_reader.hpp"
#include "straylight/straylight.hpp"

namespace {

namespace fs = std::filesystem;
constexpr int kN = 1024;
constexpr double kSigma = 1.2;

double wavelength(int i) { return 300.0 + 0.7 * i; }

// The stray light at distance d = pixel - line, per unit of stray signal
// (unnormalised).
double stray_shape(int d)
{
    const int a = std::abs(d);
    if (a <= 8) return 0.0;
    const double x = a - 8;
    const double rise = 1.0 - std::exp(-x / 6.0);
    const double tail = d > 0 ? 3.0 * std::exp(-x / 90.0) : std::exp(-x / 45.0);
    return rise * (tail + 0.02);
}

// The response of every pixel to a unit line at pixel p: core and stray.
void lsf(int p, std::vector<double>& core, std::vector<double>& stray)
{
    core.assign(kN, 0.0);
    stray.assign(kN, 0.0);
    double cs = 0.0, ss = 0.0;
    for (int i = 0; i < kN; ++i) {
        const double d = i - p;
        core[i] = std::exp(-d * d / (2 * kSigma * kSigma));
        cs += core[i];
    }
    // The Gaussian's full sum, so that cores cut by the detector's ends stay true.
    double full = 0.0;
    for (int d = -20; d <= 20; ++d) full += std::exp(-d * d / (2 * kSigma * kSigma));
    (void)cs;
    for (int i = 0; i < kN; ++i) core[i] /= full;
    for (int d = -2 * kN; d <= 2 * kN; ++d) ss += stray_shape(d);
    const double f = 0.01 + 0.01 * p / (kN - 1.0);
    for (int i = 0; i < kN; ++i) stray[i] = f * stray_shape(i - p) / ss;
}

bool write_spectrum(const fs::path& path, const std::string& header, double itime,
                    const std::vector<float>& values, int points)
{
    qomath::files::ParsedSpectrum s;
    s.header = header;
    s.unit = "Counts";
    char info[64];
    std::snprintf(info, sizeof info, "%.1f [Integration Time ms]", itime);
    s.info.push_back(info);
    for (int i = 0; i < points; ++i) {
        s.wavelengths.push_back(static_cast<float>(wavelength(i)));
        s.values.push_back(values[static_cast<std::size_t>(i)]);
    }
    std::string text, why;
    if (!qomath::files::format_spectral_text(s, 2, text, why)) return false;
    return qomath::straylight::write_file(path.string().c_str(), text);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: qomath_gen_straylight OUTDIR [--every K]\n");
        return 2;
    }
    int every = 1;
    if (argc == 4 && std::string(argv[2]) == "--every") every = std::max(1, std::atoi(argv[3]));
    const fs::path out = argv[1];
    for (const char* d : {"scans", "spectra", "truth", "scans/old.csv"}) fs::create_directories(out / d);

    std::vector<std::vector<double>> cores(kN), strays(kN);
    for (int p = 0; p < kN; ++p) lsf(p, cores[p], strays[p]);

    bool ok = true;
    const double times[] = {100.0, 200.0, 400.0};
    std::vector<float> y(kN + 1);
    for (int p = 0; p < kN; p += every) {
        const double t = times[p % 3];
        for (int i = 0; i < kN; ++i) y[i] = static_cast<float>(50000.0 * t / 400.0 * (cores[p][i] + strays[p][i]));
        char name[32];
        std::snprintf(name, sizeof name, "line_%04d.csv", p);
        ok &= write_spectrum(out / "scans" / name, "Line scan", t, y, kN);
    }
    ok &= write_spectrum(out / "scans" / "broken_1023.csv", "Short scan", 100.0, y, kN - 1);
    std::vector<float> bad = y;
    bad[77] = NAN;
    ok &= write_spectrum(out / "scans" / "broken_nan.csv", "Scan with NaN", 100.0, bad, kN);
    ok &= write_spectrum(out / "scans" / "notes.txt", "Not a scan", 100.0, y, kN);
    ok &= write_spectrum(out / "scans" / "summary.CSV", "Not a scan either", 100.0, y, kN);

    // Test spectra: x (per pixel) seen through the instrument, and its cores.
    auto emit = [&](const std::string& name, const std::vector<double>& x) {
        std::vector<float> measured(kN, 0.0f), truth(kN, 0.0f);
        std::vector<double> m(kN, 0.0), tr(kN, 0.0);
        for (int p = 0; p < kN; ++p) {
            if (x[p] == 0.0) continue;
            for (int i = 0; i < kN; ++i) {
                tr[i] += x[p] * cores[p][i];
                m[i] += x[p] * (cores[p][i] + strays[p][i]);
            }
        }
        for (int i = 0; i < kN; ++i) {
            measured[i] = static_cast<float>(m[i]);
            truth[i] = static_cast<float>(tr[i]);
        }
        ok &= write_spectrum(out / "spectra" / name, "Measured " + name, 100.0, measured, kN);
        ok &= write_spectrum(out / "truth" / name, "Stray-free " + name, 100.0, truth, kN);
    };
    for (const int p : {150, 512, 880}) {
        std::vector<double> x(kN, 0.0);
        x[p] = 40000.0;
        char name[32];
        std::snprintf(name, sizeof name, "line_%04d.txt", p);
        emit(name, x);
    }
    // A white LED: a blue emitter near 450 nm and a broad phosphor band.
    std::vector<double> led(kN);
    for (int i = 0; i < kN; ++i) {
        const double w = wavelength(i);
        led[i] = 800.0 * std::exp(-0.5 * std::pow((w - 450.0) / 10.0, 2)) +
                 500.0 * std::exp(-0.5 * std::pow((w - 570.0) / 55.0, 2)) + 20.0;
    }
    emit("white_led.txt", led);
    if (!ok) {
        std::fprintf(stderr, "qomath_gen_straylight: could not write everything in %s\n", argv[1]);
        return 1;
    }
    return 0;
}
