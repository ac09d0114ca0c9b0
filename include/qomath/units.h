/*
 * QOMath — measurement units: names, codes and the unit tables.
 *
 * All texts are single-byte Windows-1252 / Latin-1: the micro sign is the
 * byte 0xB5 and the superscript two the byte 0xB2 (never UTF-8). Below they
 * are written as "\xB5" and "\xB2".
 *
 * Measurement-unit code (int), 0 to 6, and its seven tables. Each table is a
 * writable array of 7 fixed 50-byte NUL-terminated slots indexed by the code.
 *
 *  code  unit name            short unit        integrated name
 *  0     "Counts"             "Counts"          "Counts"
 *  1     "Irradiance"         "\xB5W/cm\xB2"    "Irradiance (\xB5W/cm\xB2)"
 *  2     "Radiant Intensity"  "W/sr"            "Radiant Intensity (W/sr)"
 *  3     "Radiant Flux"       "\xB5W"           "Radiant Flux (\xB5W)"
 *  4     "Radiance"           "\xB5W/cm\xB2/sr" "Radiance (\xB5W/cm\xB2/sr)"
 *  5     "Transmittance"      "unitless"        "Transmittance (unitless)"
 *  6     "Reflectance"        "unitless"        "Reflectance (unitless)"
 *
 *  code  y-axis unit          photometric y-axis            photometric integrated
 *  0     "1/nm"               "Counts/nm"                   "Counts"
 *  1     "\xB5W/cm\xB2/nm"    "Illuminance (Lux/nm)"        "Illuminance (Lux)"
 *  2     "W/sr/nm"            "Candelas (Lumens/sr/nm)"     "Candelas (Lumens/sr)"
 *  3     "\xB5W/nm"           "Luminuous Flux (Lumens/nm)"  "Luminuous Flux (Lumens)"
 *  4     "\xB5W/cm\xB2/sr/nm" "Luminance"                   "Luminance"
 *  5     "unitless"           "NA"                          "NA"
 *  6     "unitless"           "NA"                          "NA"
 *
 * Radiant intensity is in W/sr while the other radiometric units are in
 * microwatts, and the photometric texts of radiance carry no unit. The
 * spelling "Luminuous" is part of the texts hosts display and match on.
 *
 * Kavri Wendo unit code (int), 0 to 16: full name / abbreviation / abbreviation
 * with the micro sign.
 *
 *  0  "Unitless"                  "N/A"                           "N/A"
 *  1  "Raw A/D"                   "Counts"                        "Counts"
 *  2  "Raw Photo Current"         "Amps"                          "Amps"
 *  3  "Radiant Flux"              "microWatts"                    "\xB5Watts"
 *  4  "Radiance"                  "microWatts/(cm\xB2*nm*sr)"     "\xB5W/(cm\xB2*nm*sr)"
 *  5  "Irradiance"                "microWatts/(cm\xB2*nm)"        "\xB5W/(cm\xB2*nm)"
 *  6  "Absolute Responsivity"     "Amps/Watt"                     "Amps/Watt"
 *  7  "Absolute Responsivity\xB2" "Amps/(Watt/cm\xB2)"            "Amps/(Watt/cm\xB2)"
 *  8  "Relative Responsivity"     "N/A"                           "N/A"
 *  9  "Transmittance"             "N/A"                           "N/A"
 *  10 "Reflectance"               "N/A"                           "N/A"
 *  11 "% Transmittance"           "N/A"                           "N/A"
 *  12 "% Reflectance"             "N/A"                           "N/A"
 *  13 "Absorbance"                "N/A"                           "N/A"
 *  14 "Standard Deviation"        "N/A"                           "N/A"
 *  15 "Index of Refraction"       "N/A"                           "N/A"
 *  16 "% Coefficient of Variance" "N/A"                           "N/A"
 *
 * The two code sets differ: Kavri Wendo 5 is irradiance and 3 radiant flux,
 * the measurement-unit code has irradiance 1 and radiant flux 3.
 *
 * Code tests are unsigned: a negative code is out of range.
 */
#ifndef QOMATH_UNITS_H
#define QOMATH_UNITS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Measurement-unit code of a unit name: the first of "Counts" (0),
 * "Irradiance" (1), "Radiant Intensity" (2), "Radiant Flux" (3), "Radiance"
 * (4), "Transmittance" (5), "Reflectance" (6) that text contains
 * (case-sensitive substring, tested in that order). No match, and a null
 * text, give 0 (counts). So "Irradiance (\xB5W/cm\xB2)" is 1, a text holding
 * both "Irradiance" and "Radiance" is 1, and lower-case "counts" or
 * "radiance" is 0.
 */
QOMATH_API int ConvertUnitNameToNumber(const char* text);

/*
 * Copies the unit name, the short unit and the y-axis unit of code into the
 * three buffers (each at least 49 bytes; at most 48 characters plus the NUL
 * are written). All three are first set to "", so they are empty on failure
 * too. A null buffer is skipped.
 * Returns 1; -1 when code is outside 0..6.
 */
QOMATH_API int GetUnitNameFromNumber(int code, char* name, char* shortUnit, char* yAxisUnit);

/*
 * Pointers into the writable 50-byte table slots of code (see the tables
 * above); null when code is outside 0..6. The caller must not free them.
 * Writing through a pointer changes that text for every later caller in the
 * process (including GetUnitNameFromNumber); keep the slot NUL-terminated
 * within its 50 bytes.
 */
QOMATH_API char* GetUnitName(int code);
QOMATH_API char* GetIntegratedUnitName(int code);
QOMATH_API char* GetUnitNameYaxis(int code);
QOMATH_API char* GetUnitNamePhotometricYaxis(int code);
QOMATH_API char* GetIntegratedUnitNamePhotometricYaxis(int code);

/*
 * Kavri Wendo unit texts. Each function copies the row of code (row 0 for a
 * code outside 0..16) into its own static buffer and returns that buffer:
 * KWUnitFullName 100 bytes, KWUnitAbbr and KWUnitAbbr_ 50 bytes each. The
 * next call of the same function overwrites the text; concurrent calls of the
 * same function race. Never null.
 */
QOMATH_API char* KWUnitFullName(int code);
QOMATH_API char* KWUnitAbbr(int code);
QOMATH_API char* KWUnitAbbr_(int code);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_UNITS_H */
