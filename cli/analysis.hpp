// Shared by analyze and plot: the options that shape the colorimetry and the
// library calls that compute it.
#pragma once

#include <mutex>
#include <string_view>

#include <qomath/qomath.h>

#include "spectrum_io.hpp"

namespace qomath::cli {

struct CalcOptions {
    int white = QOMATH_WHITE_E;  // white point of the dominant wavelength
    int illuminant = 1;          // 1 D65, 2 A, 3 C: for transmittance and reflectance
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
};

// The library keeps process-wide state on the way through the colorimetry
// (the interpolation cache), so every calculation takes this lock.
std::mutex& calculation_lock();

// ColorimetricCalc and RadiometryCalc of s, under calculation_lock().
void calculate(const Spectrum& s, const CalcOptions& opt, Calculation& out);

// What a ColorimetricCalc status means.
const char* colorimetry_status_meaning(int status);

// Is the unit an emitting source (counts and the radiometric units)?
inline bool is_emitter(int unit_code) { return unit_code >= 0 && unit_code <= 4; }

}  // namespace qomath::cli
