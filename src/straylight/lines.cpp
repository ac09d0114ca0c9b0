// Calibration-lamp emission lines: the two tables and the simulated line
// spectrum on a 0.1 nm grid.
#include "qomath/lines.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace {

constexpr float kArgon[][2] = {
#include "qomath_data/argon_lines.inc"
};
constexpr float kMercury[][2] = {
#include "qomath_data/mercury_lines.inc"
};
static_assert(std::size(kArgon) == QOMATH_ARGON_LINES);
static_assert(std::size(kMercury) == QOMATH_MERCURY_LINES);

constexpr double kFirst = 250.0;
constexpr double kLast = 1700.0;
constexpr std::size_t kPoints = 14501;  // 250.0 .. 1700.0 nm, 0.1 nm

// The 0.1 nm cell of a float wavelength: the product in double, so no float
// rounding comes between the value and its truncation.
long long cell(float nm)
{
    return static_cast<long long>(std::trunc(static_cast<double>(nm) * 10.0));
}

using Spectrum = std::array<float, kPoints>;

Spectrum build_spectrum()
{
    Spectrum s{};
    for (std::size_t i = 0; i < kPoints; ++i) {
        const auto g = static_cast<float>(static_cast<double>(i) * 0.1 + kFirst);
        const long long key = cell(g);
        for (const auto& line : kArgon)
            if (cell(line[0]) == key) s[i] = line[1];
        for (const auto& line : kMercury)  // after argon: mercury wins a tie
            if (cell(line[0]) == key) s[i] = line[1];
    }
    return s;
}

// Built once, on first use; the initialisation of a local static is
// thread-safe. Equal to a fresh build on every call.
const Spectrum& spectrum()
{
    static const Spectrum s = build_spectrum();
    return s;
}

template <std::size_t N>
void copy_lines(const float (&table)[N][2], float* wavelengths, float* intensities, int* count)
{
    for (std::size_t i = 0; i < N; ++i) {
        wavelengths[i] = table[i][0];
        intensities[i] = table[i][1];
    }
    *count = static_cast<int>(N);
}

}  // namespace

extern "C" {

int GetTransitionLineList(int type, float* wavelengths, float* intensities, int* count)
{
    if (static_cast<unsigned>(type) > 1u) return type;
    if (!wavelengths || !intensities || !count) return 0;
    if (type == QOMATH_LAMP_ARGON)
        copy_lines(kArgon, wavelengths, intensities, count);
    else
        copy_lines(kMercury, wavelengths, intensities, count);
    return 1;
}

float GenerateSimulatedTransitionLines(float wavelength)
{
    if (!(wavelength >= kFirst && wavelength <= kLast)) return 0.0f;  // NaN too
    const auto w = static_cast<float>(std::trunc(static_cast<double>(wavelength) * 10.0) / 10.0);
    // trunc((w - 250) / 0.1): dividing by -0.1 and negating gives the same.
    const double t = std::trunc((static_cast<double>(w) - kFirst) / 0.1);
    if (t < 0.0) return 0.0f;
    const auto index = static_cast<std::size_t>(t);
    return index < kPoints ? spectrum()[index] : 0.0f;
}

}  // extern "C"
