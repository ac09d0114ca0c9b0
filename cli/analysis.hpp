// Shared by analyze and plot: the options that shape the colorimetry and the
// library calls that compute it.
#pragma once

#include <mutex>
#include <string_view>

#include <qomath/qomath.h>

#include "colorimetry/context.hpp"
#include "colorimetry/summary.hpp"
#include "numerics/interpolation.hpp"
#include "spectrum_io.hpp"

namespace qomath::cli {

struct CalcOptions {
    int white = QOMATH_WHITE_E;  // white point of the dominant wavelength
    int illuminant = 1;          // 1 D65, 2 A, 3 C: for transmittance and reflectance
    // false: every figure on the data's own sampling (the program's default);
    // true: exactly the numbers of the C functions ColorimetricCalc and
    // RadiometryCalc, grid rules and all.
    bool compat = false;
};

// Parses "E", "D65", "A", "C" (any case) into a QOMATH_WHITE_* code; -1 if none.
int parse_white(std::string_view s);
// Parses "D65", "A", "C" into 1, 2, 3; -1 if none.
int parse_illuminant(std::string_view s);
const char* white_name(int code);
const char* illuminant_name(int code);

struct Calculation {
    int cc_status = 0;
    float cc[QOMATH_CC_COUNT] = {};
    int rc_status = 0;
    float rc[QOMATH_RC_COUNT] = {};
    summary::ObjectColour object;  // transmittance and reflectance, data sampling only
    // Emitting units: TM-30 / CIE 224 and CIE 13.3 (ColorRenditionAnalysis),
    // alpha-opic quantities (AlphaOpicCalc) and, for irradiance and radiance,
    // the UV and blue-light figures (UVRadiationCalc).
    int cra_status = 0;
    float cra[QOMATH_CRA_COUNT] = {};
    int aopic_status = 0;
    float aopic[QOMATH_AOPIC_COUNT] = {};
    int uv_status = 0;
    float uv[QOMATH_UV_COUNT] = {};
};

// One per worker thread: the calculation context on the data's sampling
// with its own interpolation cache.
struct Calculator {
    numerics::Interpolate2State cache;
    colorimetry::Context context{colorimetry::Sampling::data, &cache};
};

// The compatible context goes through the library's process-wide
// interpolation cache: calculations on it hold this lock.
std::mutex& calculation_lock();

// The colorimetric and radiometric summaries of s (the C++ layer of
// ColorimetricCalc and RadiometryCalc) on the calculator's context, or on the
// compatible one with opt.compat.
void calculate(Calculator& calc, const Spectrum& s, const CalcOptions& opt, Calculation& out);

// What a ColorimetricCalc status means.
const char* colorimetry_status_meaning(int status);

// Is the unit an emitting source (counts and the radiometric units)?
inline bool is_emitter(int unit_code) { return unit_code >= 0 && unit_code <= 4; }

}  // namespace qomath::cli
