/*
 * QOMath — NVIS weighting (night-vision imaging system compatibility).
 *
 * The NVIS radiance of a spectral radiance N(lambda) against a relative response
 * G(lambda) follows MIL-STD-3009: NVISR = G_max integral of G(lambda) S N(lambda) dlambda over 450..930 nm,
 * with G_max = 1, the trapezoid rule over the data's own wavelengths inside
 * that band, and G linearly interpolated onto them (0 outside the table).
 * S is 1, or the factor that brings the spectrum's luminance to the one asked
 * (luminances in foot-lambert: 0.1 fL = 0.34263 cd/m^2, the luminance from
 * 683 integral of V N as LuminanceCalc gives it, radiance in uW/cm^2/sr/nm).
 * QOMath ships no response table: the caller supplies the curve (class A or
 * B, or a measured goggle response).
 */
#ifndef QOMATH_NVIS_H
#define QOMATH_NVIS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads a response table: a two-column CSV (nm, relative response; an
 * optional header line; commas, semicolons, tabs or blanks between) or a
 * version 2.0 spectral file. The response is normalised to a peak of 1.
 * Returns the number of points; -1 no file given (null or empty name, null
 * arrays, capacity < 2); -2 the file cannot be opened; -3 no usable table
 * (fewer than 2 rows, wavelengths not increasing, no positive peak, NaN);
 * -4 more rows than capacity. */
QOMATH_API int NVIS_GetData(const char* file, float* nm, float* response, int capacity);

/* result[3]: NVIS radiance, luminance (fL), NVIS radiance scaled by S.
 * luminance > 0 asks S = luminance / the spectrum's luminance (1 when that
 * is 0). Returns 1; -1 when no table was given (null array, rn < 2) or the
 * data are unusable (null array, n < 2). */
QOMATH_API int NVIS_Compute(const float* nm, const float* radiance, int n, const float* rnm,
                            const float* response, int rn, float luminance, float* result);

/* NVIS_GetData(file) and NVIS_Compute in one call: its result, or the
 * reader's negative code. */
QOMATH_API int QoMathNVISFromSpectralData(const float* nm, const float* values, int n,
                                          const char* file, float luminance, float* result);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_NVIS_H */
