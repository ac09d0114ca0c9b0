/*
 * QOMath — photometric quantities and unit conversions.
 *
 * A spectrum in an absolute radiometric unit gives the matching photometric
 * quantity: the CIE 1931 y-bar (GetCIEData table 1, 360..830 nm by 1 nm)
 * times the spectrum on their common grid, integrated by the trapezoid rule,
 * times 683 lm/W and a unit factor.
 *
 *   function               spectrum in        result
 *   IlluminanceCalc        uW/cm^2/nm         illuminance, 4 units (lux base)
 *   LuminanceCalc          uW/cm^2/sr/nm      luminance, 8 units (nit base)
 *   LuminousIntensityCalc  W/sr/nm            candela
 *   LuminousFluxCalc       uW/nm              lumen
 *
 * uW/cm^2 to W/m^2 divides by 100, uW to W by 1,000,000.
 *
 * The weighting: the y-bar table and the spectrum are multiplied with
 * MultiplySpectralFiles2 (table first), that is on the common wavelengths of
 * WavelengthRangePrep, both resampled there with Interpolate2 (whose
 * process-wide cache these calls therefore use), and the product is
 * integrated with IntegrationDiscrete (0 as soon as the common grid stops
 * increasing). When the multiplication fails (for example fewer than 4
 * common points), the integral is 0. A spectrum that does not reach into
 * 360..830 nm has an integral of 0. Scratch is sized to the spectrum, so the
 * common grid has no fixed limit on its points. Wavelengths in nm,
 * increasing; arrays of n floats, caller-owned.
 *
 * Status codes of the four calculations:
 *    1  success
 *   -1  wavelengths or values null, n < 5, a wavelength or value that is
 *       NaN or infinite, or a result that overflows float;
 *       LuminousIntensityCalc and LuminousFluxCalc also for a null out
 *   -2  out null (IlluminanceCalc, LuminanceCalc)
 *   -4  scratch allocation failed
 * Every output is 0 unless the status is 1.
 *
 * Luminance units (index: name):
 *   0 "Nit"  1 "Stlib"  2 "Apostlib"  3 "Lambert"  4 "MilliLambert"
 *   5 "FootLambert"  6 "Candela/ft^2"  7 "Candela/Inch^2"
 * The spellings "Stlib" and "Apostlib" are the library's; hosts match them.
 *
 * Illuminance units (index: name):
 *   0 "FootCandle"  1 "Lux"  2 "Phot"  3 "MilliPhot"
 *
 * Conversion tables: the entry in row `to`, column `from` is the number of
 * `to` units in one `from` unit. The figures are the library's own rounded
 * ones, each stored as printed and not derived from the others, so a round
 * trip need not return exactly the value it started from (1 Candela/ft^2 =
 * 10.76 Nit, but 1 Nit = 0.0929 Candela/ft^2). Hosts compare against these
 * figures. pi and 1/pi are the nearest doubles of pi and 1/pi.
 *
 * Luminance (to \ from):
 *            Nit        Stlib     Apostlib   Lambert   MilliLambert FootLambert Cd/ft^2  Cd/Inch^2
 *   Nit      1          10000     1/pi       10000/pi  10/pi        3.426       10.76    1550
 *   Stlib    0.0001     1         0.0001/pi  1/pi      0.001/pi     0.0003426   0.001076 0.155
 *   Apostlib pi         10000 pi  1          10000     10           10.76       33.82    4869
 *   Lambert  0.0001 pi  pi        0.0001     1         0.001        0.001076    0.003382 0.4869
 *   MilliL.  0.1 pi     1000 pi   0.1        1000      1            1.076       3.382    486.9
 *   FootL.   0.2919     2919      0.0929     929       0.929        1           pi       452.4
 *   Cd/ft^2  0.0929     929       0.02957    295.7     0.2957       1/pi        1        144
 *   Cd/In^2  0.0006452  6.452     0.0002054  2.054     0.002054     0.00221     0.006944 1
 *
 * Illuminance (to \ from):
 *              FootCandle  Lux     Phot   MilliPhot
 *   FootCandle 1           0.0929  929    0.929
 *   Lux        10.76       1       10000  10
 *   Phot       0.001076    0.0001  1      0.001
 *   MilliPhot  1.076       0.1     1000   1
 *
 * IlluminanceCalc derives foot-candles from lux with the exact 0.09290304,
 * not the table's 0.0929; LuminanceCalc uses column Nit of the table.
 * Usable from C99 and C++.
 */
#ifndef QOMATH_PHOTOMETRY_H
#define QOMATH_PHOTOMETRY_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_LUMINANCE_UNITS 8
#define QOMATH_ILLUMINANCE_UNITS 4
/* Room the unit-name functions write into (the names fit with their NUL). */
#define QOMATH_LUMINANCE_NAME_SIZE 16
#define QOMATH_ILLUMINANCE_NAME_SIZE 15

/* Illuminance from spectral irradiance (uW/cm^2/nm). out[4]: FootCandle,
 * Lux, Phot, MilliPhot. With E the lux value (683 * integral, in float,
 * divided by 100): E * 0.09290304, E, E * 0.0001, E * 0.0001 * 1000. */
QOMATH_API int IlluminanceCalc(const float* wl, const float* irradiance, int n, float* out);
/* Luminance from spectral radiance (uW/cm^2/sr/nm). out[8], in luminance
 * unit order: L times column Nit of the table, L the nit value (683 *
 * integral, in float, divided by 100, rounded to float). */
QOMATH_API int LuminanceCalc(const float* wl, const float* radiance, int n, float* out);
/* Luminous intensity in candela from spectral radiant intensity (W/sr/nm):
 * *out = 683 * integral. *out is cleared first. */
QOMATH_API int LuminousIntensityCalc(const float* wl, const float* intensity, int n, float* out);
/* Luminous flux in lumen from spectral radiant flux (uW/nm):
 * *out = 683 * integral / 1000000. *out is cleared first. */
QOMATH_API int LuminousFluxCalc(const float* wl, const float* flux, int n, float* out);

/* Copies the name of luminance unit `unit` (0..7; any other index gives
 * "Undefined Name") into name, bounded by 16 bytes; the bytes after the
 * terminating NUL are left alone. Returns the status of the bounded copy:
 * 0 on success, 22 (EINVAL) when name is null. */
QOMATH_API int LuminanceUnitName(unsigned int unit, char* name);
/* The same for illuminance units (0..3), bounded by 15 bytes. */
QOMATH_API int IlluminanceUnitName(unsigned int unit, char* name);

/* value * table[to][from] (in double, returned as float). 0 when from or to
 * is not a unit index, value is not finite or the result overflows float. */
QOMATH_API float LuminanceUnitConversion(float value, unsigned int from, unsigned int to);
QOMATH_API float IlluminanceUnitConversion(float value, unsigned int from, unsigned int to);
/* out[k] = value * table[k][from] for every unit k (8 luminance, 4
 * illuminance). Returns 1; 0 with every out[k] = 0 when from is not a unit
 * index, value is not finite or a result overflows float; 0 when out is
 * null. */
QOMATH_API int LuminanceUnitsConvertAll(float value, unsigned int from, float* out);
QOMATH_API int IlluminanceUnitsConvertAll(float value, unsigned int from, float* out);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_PHOTOMETRY_H */
