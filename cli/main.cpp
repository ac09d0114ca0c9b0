// qomath — the command-line face of the QOMath library.
#include <cstring>
#include <span>
#include <string_view>

#include "command.hpp"

namespace qomath::cli {
namespace {

constexpr Command kCommands[] = {
    {"version", "print the library version block",
     "usage: qomath version\n\n"
     "Prints the library version, its build date and time and its description.\n",
     run_version},
    {"tables", "list the CIE tables the library carries",
     "usage: qomath tables\n\n"
     "Lists every CIE table served by the library (observers, illuminants and\n"
     "spectrum loci) with its wavelength range, point count and the sum of its\n"
     "values, a quick check that two builds carry the same numbers.\n",
     run_tables},
    {"analyze", "colorimetry, photometry and radiometry of spectra",
     "usage: qomath analyze [--csv | --json] [--observer 2|10] [--white E|D65|A|C]\n"
     "                      [--illuminant D65|A|C] [--unit UNIT] [--compat] [-o OUT]\n"
     "                      [--jobs N] [--check] [--stage-times] FILE|FOLDER|-...\n\n"
     "Analyses spectral text files of version 1.0 and 2.0 (any length) and plain\n"
     "two-column text (wavelength, value; comma, semicolon, tab or blanks; an\n"
     "optional header row) with --unit; - reads standard input; a folder stands\n"
     "for every regular file in it, in name order. Files are analysed in\n"
     "parallel and reported in the order given.\n\n"
     "For each file: header, unit, points and range; X Y Z and X10 Y10 Z10, x y\n"
     "and u' v', CCT and Duv, dominant (or complementary) wavelength and the\n"
     "purities, Ra and R1..R15 for light sources, the photometric value of the\n"
     "unit (illuminance, luminous intensity, luminous flux or luminance), the\n"
     "object colour (Y = 100 for the perfect sample, L* a* b*) of transmittance\n"
     "and reflectance, peak, centroid, FWHM and the UV, visible, IR and total\n"
     "integrals. Everything is computed on the data's own sampling, unless\n"
     "--compat asks for the numbers of the library's C summary functions.\n\n"
     "options:\n"
     "  --csv               one row per file after a header row\n"
     "  --json              an array of objects, one per file (UTF-8)\n"
     "  --observer 2|10     whose x, y, u', v' head the report (default 2)\n"
     "  --white E|D65|A|C   white point of the dominant wavelength (default E)\n"
     "  --illuminant D65|A|C  light under which transmittance and reflectance\n"
     "                      are seen (default D65)\n"
     "  --unit UNIT         what the values of two-column text are: counts,\n"
     "                      irradiance, radiant-intensity, radiant-flux, radiance,\n"
     "                      transmittance, reflectance\n"
     "  --compat            the numbers of ColorimetricCalc and RadiometryCalc\n"
     "                      exactly (their grid rules), for comparing with hosts\n"
     "  -o OUT              write the report to OUT (replaced only when complete)\n"
     "  --jobs N            analyse on N threads (default: every core); the\n"
     "                      output is the same for every N\n"
     "  --check             read and check the files only: errors and warnings,\n"
     "                      no report\n"
     "  --stage-times       where the time went (list, read, parse, calculate,\n"
     "                      format, write) on standard error\n\n"
     "A figure that does not apply is empty in CSV and null in JSON. A file that\n"
     "cannot be read, or holds a line that does not parse, a count or range that\n"
     "disagrees with its data, wavelengths that do not increase, NaN or\n"
     "infinity, an unknown unit or an emission spectrum without signal, is named\n"
     "with its line on standard error, and the others are still analysed.\n"
     "Negative values are a warning.\n"
     "Exit status: 0 all files analysed, 1 some failed, 2 usage error.\n",
     run_analyze},
    {"convert", "convert a spectrum to a spectral file of version 1.0 or 2.0",
     "usage: qomath convert IN OUT --to 1|2 [--unit UNIT]\n\n"
     "Reads IN (a spectral file of version 1.0 or 2.0, or two-column text with\n"
     "--unit; - for standard input) and writes OUT (- for standard output) in\n"
     "version 1.0 (an even wavelength grid; the wavelengths of IN must be evenly\n"
     "spaced) or 2.0 (wavelength and value pairs), of any length. Header, unit\n"
     "and information lines are kept. OUT is replaced only when complete, never\n"
     "when it is IN.\n"
     "Exit status: 0 written, 1 read, conversion or write failed, 2 usage error.\n",
     run_convert},
    {"plot", "draw a spectrum and its colour point as SVG",
     "usage: qomath plot FILE -o OUT.svg [--white E|D65|A|C] [--illuminant D65|A|C]\n"
     "                   [--unit UNIT] [--compat] [--tm30]\n\n"
     "Writes an SVG: the spectrum on a wavelength axis beside the CIE 1931\n"
     "chromaticity diagram (spectrum locus, purple line, Planckian locus from\n"
     "1000 K to 20000 K with 2000, 3000, 4000, 6500 and 10000 K marked) and the\n"
     "sample's x, y as the circle id=\"sample\".\n\n"
     "The group id=\"chromaticity\" states its mapping in data attributes: x in\n"
     "[data-x-min, data-x-max] maps linearly onto [data-left, data-right] and y\n"
     "in [data-y-min, data-y-max] onto [data-bottom, data-top] (SVG user units).\n"
     "With --tm30 it draws instead the ANSI/IES TM-30 colour vector graphic of a\n"
     "light source: the reference's 16 hue-bin averages on the unit circle, an\n"
     "arrow to each test average (scaled by that bin's reference chroma; the\n"
     "group id=\"cvg\" states the mapping in data-cx, data-cy, data-scale), the\n"
     "test gamut as a polygon, Rf and Rg.\n"
     "OUT is replaced only when the picture is complete.\n"
     "Exit status: 0 written, 1 read or write failed (or no colour point), 2 usage.\n",
     run_plot},
    {"f1prime", "spectral mismatch index f1' of a detector head",
     "usage: qomath f1prime RESPONSIVITY_FILE [--target y|x-short|x-long|z] [--source FILE]\n"
     "                      [--json] [--compat]\n\n"
     "Reads a relative spectral responsivity (a spectral file of version 1.0 or\n"
     "2.0 or two-column text, any sampling; - reads standard input) and prints\n"
     "its f1' against a CIE 1931 colour-matching function (default y, V(lambda);\n"
     "x-short and x-long are the two lobes of x-bar, 360-505 and 505-830 nm):\n\n"
     "  f1' = integral |s*(l) - t(l)| dl / integral t(l) dl\n\n"
     "with s* the responsivity scaled to give the target's signal for the\n"
     "source, on a 1 nm grid (linear between the file's points), the absolute\n"
     "value taken per sample (ISO/CIE 19476; CIE 179 for x-bar and z-bar).\n"
     "The source is CIE illuminant A unless --source names a spectrum. Where the\n"
     "responsivity or the source does not cover the target they count as 0, and\n"
     "a warning says so.\n\n"
     "options:\n"
     "  --target T     y, x-short, x-long or z\n"
     "  --source FILE  the calibration source (default CIE illuminant A)\n"
     "  --json         one JSON object\n"
     "  --compat       the number of the library's f1primeCalculate instead (whole-nm\n"
     "                 points; absolute value of each interval's pair sum)\n"
     "Prints f1' as a fraction and in %, the target, the source and the data's\n"
     "range. Exit status: 0 done, 1 a file could not be read or gave no signal,\n"
     "2 usage error (unknown target or option).\n",
     run_f1prime},
    {"lines", "argon and mercury calibration lines, listed or simulated",
     "usage: qomath lines argon|mercury [--json] [--simulate FWHM [--step NM] [-o FILE]]\n\n"
     "Lists the lamp's lines (wavelength in nm, relative intensity), or with\n"
     "--simulate a line spectrum: a Gaussian of the given FWHM (nm) for each\n"
     "line with its intensity as peak, from 3 FWHM below the first line to 3\n"
     "FWHM above the last, every --step nm (default 0.1). The spectrum goes to\n"
     "standard output as two columns (or JSON), or with -o FILE into a spectral\n"
     "file of version 2.0, unit Counts (replaced only when complete; - for\n"
     "standard output).\n"
     "Exit status: 0 done, 1 the file could not be written, 2 usage error\n"
     "(unknown lamp, FWHM or step not above 0).\n",
     run_lines},
    {"smooth", "smooth spectra: Savitzky-Golay, running median or boxcar",
     "usage: qomath smooth --filter savgol|median|boxcar --window W [--order M]\n"
     "                     [--unit UNIT] FILE... (-o OUT | --suffix S)\n\n"
     "Smooths each spectrum (a spectral file of either version, or two-column\n"
     "text with --unit) with a centred window of W points, W odd:\n"
     "  savgol   Savitzky-Golay, a least-squares polynomial of order M (default\n"
     "           2) over each window, shortened and one-sided at the ends, so a\n"
     "           polynomial of order M passes unchanged\n"
     "  median   running median (removes spikes; the ends repeat the end values)\n"
     "  boxcar   running mean (the ends repeat the end values)\n"
     "The result keeps the input's version, header, unit, wavelengths and\n"
     "information lines, with one more line naming the filter. -o OUT writes\n"
     "the one input's result to OUT; --suffix S writes each beside its input\n"
     "(lamp.txt -> lampS.txt). An output is replaced only when complete and\n"
     "never when it is an input (usage error).\n"
     "A window longer than a file's data fails that file; the others go on.\n"
     "Exit status: 0 all smoothed, 1 some failed, 2 usage error.\n",
     run_smooth},
    {"straylight", "stray-light matrices from line scans, and their correction",
     "usage: qomath straylight generate SCANDIR -o MATRIX [--config FILE] [--stage-times]\n"
     "       qomath straylight correct MATRIX FILE... [-o DIR] [--blue-blend START:END]\n\n"
     "generate: builds the correction matrix of a 1024-pixel array spectrometer\n"
     "from SCANDIR, one spectral file per monochromatic line (names containing\n"
     "\"csv\", 1024 points each): each pixel takes the scan peaking nearest to\n"
     "it, scaled to the longest integration time, as its stray-light column;\n"
     "C = (I + D)^-1 is written in binary to MATRIX (1024 x 1024 floats), with\n"
     "the summaries (StrayLight_LocatePeakPixels.csv, StrayLight_Input.txt,\n"
     "StrayLightProcess.txt) and D and C as text beside it. --config FILE takes\n"
     "the generator's configuration file (its scan folder is SCANDIR); without\n"
     "it, an in-band half width of 8 pixels and no filters. Progress goes to\n"
     "standard error when it is a terminal; --stage-times reports where the\n"
     "time went.\n"
     "Exit status: 0 written; 1 scans were refused (each named; the matrix is\n"
     "built from the rest), no scan is usable (no matrix) or a write failed;\n"
     "2 usage error.\n\n"
     "correct: corrects each FILE (a spectral file of 1024 points) with MATRIX:\n"
     "C y, negative results handed to their neighbours, and with --blue-blend\n"
     "the measured values kept up to START nm, blended linearly up to END nm.\n"
     "Each result keeps its input's version, header, unit and information\n"
     "lines and goes to DIR (default: corrected/ beside each input), replaced\n"
     "only when complete and never over an input. A matrix that is not\n"
     "4,194,304 bytes of finite floats is refused.\n"
     "Exit status: 0 all corrected, 1 the matrix or a file failed, 2 usage error.\n",
     run_straylight},
    {"cmd", "run a line of the library's command entry point (QoMathCmd)",
     "usage: qomath cmd [--capacity N] \"LINE\"\n"
     "       qomath cmd [--capacity N] --script FILE\n\n"
     "Runs LINE as QoMathCmd does and prints the text it gives, then a newline;\n"
     "\"cmd?\" lists the commands. --script runs each line of FILE in turn (blank\n"
     "lines and lines starting with # are skipped) in one context, so a matrix\n"
     "loaded by SLMcorrect stays loaded. --capacity sets the size of the text\n"
     "buffer in bytes (default 1048576); longer texts lose whole messages. The\n"
     "matrix generator of SDFMat reports on standard error.\n"
     "Exit status: 0 done, 1 a text reports a failure, 2 usage error.\n",
     run_cmd},
};

void print_usage(std::FILE* out)
{
    std::fputs("usage: qomath COMMAND [ARGS...]\n"
               "       qomath COMMAND --help\n"
               "       qomath --version\n\ncommands:\n",
               out);
    for (const Command& c : kCommands)
        std::fprintf(out, "  %-10.*s %.*s\n", static_cast<int>(c.name.size()), c.name.data(),
                     static_cast<int>(c.summary.size()), c.summary.data());
}

const Command* find(std::string_view name)
{
    for (const Command& c : kCommands)
        if (c.name == name) return &c;
    return nullptr;
}

bool asks_for_help(std::span<char* const> args)
{
    for (const char* a : args)
        if (std::strcmp(a, "--help") == 0 || std::strcmp(a, "-h") == 0) return true;
    return false;
}

}  // namespace
}  // namespace qomath::cli

int main(int argc, char** argv)
{
    using namespace qomath::cli;
    const std::span<char* const> words(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0));
    if (words.empty()) {
        print_usage(stderr);
        return kExitUsage;
    }
    const std::string_view first = words[0];
    if (first == "--help" || first == "-h" || first == "help") {
        if (first == "help" && words.size() > 1) {
            if (const Command* c = find(words[1])) {
                std::fwrite(c->usage.data(), 1, c->usage.size(), stdout);
                return kExitOk;
            }
        }
        print_usage(stdout);
        return kExitOk;
    }
    if (first == "--version") {
        print_version_block(stdout);
        return kExitOk;
    }
    const Command* cmd = find(first);
    if (!cmd) {
        std::fprintf(stderr, "qomath: unknown command '%s'\n\n", words[0]);
        print_usage(stderr);
        return kExitUsage;
    }
    const auto args = words.subspan(1);
    if (asks_for_help(args)) {
        std::fwrite(cmd->usage.data(), 1, cmd->usage.size(), stdout);
        return kExitOk;
    }
    return cmd->run(args, stdout, stderr);
}
