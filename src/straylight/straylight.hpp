// The C++ layer of the stray-light family: its state object, the file
// parsers over memory (shared by the exported readers, the program and the
// fuzz harnesses), the correction and the matrix generator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace qomath::straylight {

inline constexpr std::size_t kPixels = 1024;
inline constexpr std::size_t kMatrixValues = kPixels * kPixels;
inline constexpr std::size_t kMatrixBytes = kMatrixValues * sizeof(float);
// Values a C-matrix text read may store beyond its maxValues: a started
// 25,000-character line is finished, and it holds at most 12,500 values.
inline constexpr std::size_t kCmatrixOverrun = 12500;

// Everything the family keeps between calls. The exported functions use the
// process-wide object; internal callers may keep their own.
struct State {
    // Working matrix (StrayLightInitializeMatrix and companions).
    std::vector<double> work;
    unsigned size = 0;
    bool has_matrix = false;
    // Correction matrix slot: 1024 x 1024 floats once loaded.
    std::vector<float> correction;
    bool loaded = false;
    // Scratch of the correction, kept so that it allocates once.
    std::vector<float> corrected;
    // Noise of the synthetic LSF: the 15-bit linear congruential generator
    // (multiplier 214013, increment 2531011, bits 16..30), seed 1, so that
    // every platform draws the same sequence.
    std::uint32_t noise_seed = 1;
    int next_noise()
    {
        noise_seed = noise_seed * 214013u + 2531011u;
        return static_cast<int>((noise_seed >> 16) & 0x7fffu);
    }
};

State& process_state();

// The working matrix of a state: the bodies of StrayLightInitializeMatrix and
// StrayLightEditMatrix, same results.
int init_matrix(State& st, unsigned n);
int edit_matrix(State& st, unsigned column, const double* values, unsigned n);

// ---- Correction ----------------------------------------------------------------------

// Loads a binary C matrix into the state's slot (freed first). 1; -1 the
// name is shorter than 3 characters or the file cannot be read; -2 the file
// is not exactly 4,194,304 bytes or holds NaN or infinity (slot left empty).
int load_correction(State& st, const char* path);

// y (1024 pixel values over wavelengths wl) is corrected in place: C y,
// values below 0 redistributed to neighbours (floor 0), then the blue blend
// when end >= start (wl <= start keeps the measured value, wl >= end takes
// the corrected one, linear between). 1; -1 no matrix loaded or n != 1024.
int correct(State& st, const float* wl, float* y, std::size_t n, float blend_start,
            float blend_end);

// ---- Files in memory ------------------------------------------------------------------

// Each returns what its exported reader returns, from the file's bytes.
int parse_lsf(std::string_view data, double* out, unsigned* n, unsigned* peak, unsigned max_values);
int parse_sdf(std::string_view data, double* m, unsigned n);
int parse_cmatrix_text(std::string_view data, float* out, int max_values);

// Whole file into data; false when it cannot be opened or read.
bool read_whole(const char* path, std::string& data);
// At most max_bytes of it.
bool read_prefix(const char* path, std::string& data, std::size_t max_bytes);

// Writers: the text of each format (numbers in the "C" format).
void format_lsf(const double* lsf, unsigned n, int peak, std::string& text);
void format_sdf(const double* m, std::size_t n, std::string& text);
// s = trunc(sqrt(count)) rows of s values.
std::size_t format_cmatrix_text(const float* m, std::size_t count, std::string& text);
// bytes to path through the safe replace; false on any failure.
bool write_file(const char* path, std::string_view bytes);

// ---- The generator --------------------------------------------------------------------

struct Config {
    unsigned inband_fixed = 0;
    bool linear_fit = false;
    unsigned fit_low = 0, fit_high = 0;
    float noise_floor = 0.0f;
    unsigned max_left = 0, max_right = 0;
    bool median = false;
    int median_width = 0;
    bool boxcar = false;
    int boxcar_width = 0;
    bool convolution = false;
    int convolution_width = 0;
    bool spikes = false;
    float peak_threshold = 0.0f;
    float cdf_threshold = 0.0f;
    int end_columns = 0;
    std::string scan_folder;
    std::string d_file = "StrayLight_SDFMatrix.txt";
    std::string c_file = "StrayLight_CMatrix.txt";
};

// The configuration text: 256-character lines, the value after the first
// "="; lines 1..17 numbers ("%f"; missing or unparsable: 0), 18..20 not
// used, 21..23 the scan folder and the D and C text file names.
Config parse_config(std::string_view data);

struct GenerateOptions {
    std::string out_dir = ".";             // summaries and matrices go here
    std::string binary_name = "slmatrix.bin";
    std::FILE* log = stdout;               // the process listing
    std::FILE* progress = nullptr;         // a pixel counter, when given
};

struct GenerateResult {
    int status = 0;                   // 1 matrix written; 0 no usable scan; -1 failure
    std::vector<std::string> refused; // scans left out, "name: why"
    double seconds_read = 0, seconds_columns = 0, seconds_invert = 0, seconds_write = 0;
};

GenerateResult generate(State& st, const Config& cfg, const GenerateOptions& opt);

}  // namespace qomath::straylight
