/*
 * QOMath — interpolation and resampling.
 *
 * A spectrum is a wavelength array (nm, increasing) with a value array, or a
 * value array over a range record. Every function writes only the caller's
 * output arrays and returns an int status.
 *
 * Process-wide state (not thread-safe; the host serialises these calls):
 *  - the interpolation mode set by InterpolationMethod (polynomial at start);
 *  - the result cache of Interpolate2, keyed on the counts, the source VALUES
 *    and the destination WAVELENGTHS. The source wavelengths and the mode are
 *    not part of the key: a call that differs from the previous one only in
 *    xSrc, or in the mode, gets the previous result. Hosts rely on this.
 */
#ifndef QOMATH_INTERPOLATION_H
#define QOMATH_INTERPOLATION_H

#include "qomath/common.h"
#include "qomath/straylight.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Resamples (xSrc, ySrc) onto xDst. Polynomial mode: the value at a source
 * wavelength within 0.0001 nm is copied; elsewhere Neville interpolation of
 * degree up to 5 through the points around the nearest source point, also
 * beyond the ends (extrapolation). Linear mode: LinearInterpolation.
 * When no source value is negative, negative results are set to 0.
 * Returns 1; 0 when a Neville step met coincident wavelengths; -1 when
 * nSrc < 4 or nDst < 4 (nothing interpolated; negative yDst values are still
 * zeroed when no source value is negative) or a pointer is null;
 * -4 when the cache cannot be allocated. */
QOMATH_API int Interpolate2(float* xSrc, float* ySrc, int nSrc, float* xDst, float* yDst, int nDst);
/* Linear interpolation with constant extension beyond both ends. Always 1
 * (-1 for a null pointer). */
QOMATH_API int LinearInterpolation(float* xSrc, float* ySrc, int nSrc, float* xDst, float* yDst,
                                   int nDst);
/* Sets the mode of Interpolate2: 0 polynomial, anything else linear.
 * Returns (mode != 0). */
QOMATH_API int InterpolationMethod(int mode);
/* Resamples between two evenly spaced grids with the Neville kernel (no
 * cache, no clamp, mode ignored). Equal steps with dst inside src copy.
 * Returns 1; -1 when either range has fewer than 4 points or a pointer is null. */
QOMATH_API int Interpolate(float* ySrc, typ_wlinfo* src, float* yDst, typ_wlinfo* dst);
/* Evenly spaced resampling with adaptive-order Newton interpolation.
 * dst->end is rewritten to start + (points - 1) * step.
 * Returns 1; -1 bad range or fewer than 6 destination points; -2 allocation failure. */
QOMATH_API int InterpolateVB(float* ySrc, typ_wlinfo* src, float* yDst, typ_wlinfo* dst);
/* Band-averaging resampling onto xDst (mode must be 0). Bands reaching
 * outside the source give 0. Returns 1; -1 for mode != 0, counts outside
 * 5..2048 or a null pointer. */
QOMATH_API int QoMathSpectralResample(int mode, float* xSrc, float* ySrc, int nSrc, float* xDst,
                                      float* yDst, int nDst);
/* Builds the grid start, start + step, ... (trunc((end - start) / step + 1.5)
 * points, count stored in *nDst first) in xDst and resamples onto it.
 * Returns -1 for start <= 0, start >= end or step <= 0; -2 when the grid is
 * longer than nDstMax; else the result of QoMathSpectralResample. */
QOMATH_API int QoMathSpectralResampleRangedInterval(int mode, float* xSrc, float* ySrc, int nSrc,
                                                    float* xDst, float* yDst, int nDstMax,
                                                    int* nDst, float start, float end,
                                                    float step);
/* Lagrange interpolation of degree `order` (at most 5) around the nearest
 * source point. Returns 1; -1 nSrc < 5 or nDst < 5; -2 order > 5;
 * -3 xSrc[0] > xDst[0]; -4 xDst[nDst-1] > xSrc[nSrc-1]; -5 a result is NaN
 * (earlier results stay written). */
QOMATH_API int InterpolateVectorLagrange(float* xSrc, float* ySrc, int nSrc, float* xDst,
                                         float* yDst, int nDst, int order);
/* The Lagrange polynomial through the n points at x0; 0 when n < 1. */
QOMATH_API float InterpolateLagrangePolynomial(float* x, float* y, int n, float x0);
/* Resamples src onto the axes already set in dst (rows, rowWl, cols, colWl)
 * along both axes with the Lagrange rule. Returns 1; -1 source axes under 5
 * points; -2 destination axes under 5; -3 order > 5; -4 destination first row
 * wavelength below the source's; -5 destination last row wavelength above the
 * source's; -6 destination last column wavelength above the source's. */
QOMATH_API int InterpolateMatrixLagrange(typ_matrix2d* src, typ_matrix2d* dst, int order);
/* Validation only: 1 when range is valid with at least 3 points, else -1. */
QOMATH_API int InterpolateLinearArrayToPolyArray(int unused, typ_wlinfo* range);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_INTERPOLATION_H */
