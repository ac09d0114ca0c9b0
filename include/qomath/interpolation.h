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

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_MATRIX2D_MAX_AXIS 1024
/* Number of values the record holds; rows * cols must not exceed it. */
#define QOMATH_MATRIX2D_CAPACITY 543251

/*
 * A 2-D matrix over two wavelength axes (for example excitation by emission),
 * 2,181,204 bytes, the size hosts allocate and write to disk.
 *   rows, rowWl[0..rows-1]: the row count and the row wavelengths (nm, increasing)
 *   cols, colWl[0..cols-1]: the column count and the column wavelengths
 *   values: element (r, c) at values[r * cols + c], row-major
 */
typedef struct typ_matrix2d {
    int rows;
    float rowWl[QOMATH_MATRIX2D_MAX_AXIS];
    int cols;
    float colWl[QOMATH_MATRIX2D_MAX_AXIS];
    float values[QOMATH_MATRIX2D_CAPACITY];
} typ_matrix2d;
QOMATH_STATIC_ASSERT(sizeof(typ_matrix2d) == 2181204, typ_matrix2d_size);

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
/* Resamples between two evenly spaced grids with an adaptive-order Newton
 * series.
 * Shortcut first (the one of Interpolate): when dst has more than 3 points,
 * the steps are equal, dst starts less than one step after src->start
 * (trunc((dst->start - src->start) / step) * step < 1e-6) and ends inside
 * src, the samples are copied, yDst[i] = ySrc[i0 + i], dst is left as it is
 * and 1 is returned.
 * Otherwise dst->end is rewritten to start + (points - 1) * step, and for
 * each of the WLNumPts(dst) points x = start + i * step the samples of src
 * nearest to x (min(srcPoints, 6) of them) are taken in order of distance,
 * the lower wavelength first when two are equally near (near the ends of
 * src they lie on one side of x). Their Newton divided-difference terms are
 * added while each is smaller in magnitude than the one before (the first
 * against 9e20); the first term that is not is left out. Computed in double,
 * stored as float; beyond src the series extrapolates and, far out, settles
 * on a low order. ySrc and yDst may be the same array.
 * Returns 1; -1 for a null pointer, an invalid src or a dst with fewer than
 * 6 points (nothing written); -2 when the result buffer cannot be allocated
 * (dst unchanged). */
QOMATH_API int InterpolateVB(float* ySrc, typ_wlinfo* src, float* yDst, typ_wlinfo* dst);
/* Band-averaging resampling of (xSrc, ySrc) onto xDst; mode must be 0.
 * Point i stands for the band from halfway to its left neighbour to halfway
 * to its right one (at the ends the one existing half-width is used on both
 * sides). Band edges become fractional source indices; sample k stands for
 * the index interval [k, k + 1) (so a linear spectrum comes out shifted by
 * half a source interval). A band narrower than one source interval gives
 * the linear interpolation at its centre; a wider one the average of the
 * samples it covers, weighted by the covered fraction of each. A band that
 * starts exactly on xSrc[0] leaves sample 0 out of the sum but still counts
 * its width. Bands reaching outside the source (below xSrc[0], or up to or
 * beyond xSrc[nSrc-1]) give 0; in particular the first and last destination
 * points of a grid spanning exactly the source range give 0. yDst must not
 * overlap ySrc.
 * Returns 1; -1 for mode != 0, nSrc or nDst outside 5..2048 or a null
 * pointer (nothing written). */
QOMATH_API int QoMathSpectralResample(int mode, float* xSrc, float* ySrc, int nSrc, float* xDst,
                                      float* yDst, int nDst);
/* Builds the grid xDst[i] = start + i * step of trunc((end - start) / step
 * + 1.5) points (the last may lie up to half a step beyond end), then
 * resamples onto it with QoMathSpectralResample: 380..780 step 5 gives 81
 * points. The count is stored in *nDst before anything else (INT_MAX when
 * it does not fit an int).
 * Returns -1 for start <= 0, start >= end, step <= 0 (NaN included) or a
 * null nDst (nothing written), or a null xDst (count written); -2 when the
 * count exceeds nDstMax (count written, xDst untouched); else the result of
 * QoMathSpectralResample for the grid (which is -1 for fewer than 5 or more
 * than 2048 points, after the grid is written). */
QOMATH_API int QoMathSpectralResampleRangedInterval(int mode, float* xSrc, float* ySrc, int nSrc,
                                                    float* xDst, float* yDst, int nDstMax,
                                                    int* nDst, float start, float end,
                                                    float step);
/* Lagrange interpolation of degree `order` (0..5) on increasing xSrc.
 * For each destination x: k = the nearest source index (the first of equal
 * distances); the window of order + 1 samples starts at first = k - order / 2
 * (integer division), except that a first below 2 (0 or 1) becomes 0, and
 * when nSrc - 1 <= order + 1 + first the window is moved to end on the last
 * sample; the value is InterpolateLagrangePolynomial over that window.
 * Returns 1; -1 for nSrc < 5, nDst < 5, nSrc < order + 1 or a null pointer;
 * -2 for order outside 0..5; -3 for xSrc[0] > xDst[0]; -4 for
 * xDst[nDst-1] > xSrc[nSrc-1] (all of these write nothing); -5 when a
 * result is NaN: the earlier results stay written, that point and the later
 * ones are left untouched. */
QOMATH_API int InterpolateVectorLagrange(float* xSrc, float* ySrc, int nSrc, float* xDst,
                                         float* yDst, int nDst, int order);
/* The value at x0 of the Lagrange polynomial through the n points (x[i], y[i]):
 * sum of y[i] times the product over j != i of (x0 - x[j]) / (x[i] - x[j]),
 * each factor in float, products and sum in double, rounded to float.
 * 0 when n < 1 or a pointer is null. */
QOMATH_API float InterpolateLagrangePolynomial(float* x, float* y, int n, float x0);
/* Resamples the values of src onto the axes already set in dst (rows, rowWl,
 * cols, colWl): every source column onto the destination row wavelengths,
 * then every resulting row onto the destination column wavelengths, each
 * with the rule of InterpolateVectorLagrange (degree `order`). src is copied
 * first, so src and dst may be the same record. The first destination column
 * wavelength is not checked: columns below the source's first are
 * extrapolated.
 * Returns 1; -1 for a null src, src axes with fewer than 5 or more than 1024
 * points or rows * cols above QOMATH_MATRIX2D_CAPACITY, and (checked after
 * the order) src axes with fewer than order + 1 points; -2 for a null dst or
 * dst axes outside the same limits; -3 order outside 0..5; -4 destination first
 * row wavelength below the source's; -5 destination last row wavelength
 * above the source's; -6 destination last column wavelength above the
 * source's; 0 when the scratch memory cannot be allocated. dst is written
 * only on success. */
QOMATH_API int InterpolateMatrixLagrange(typ_matrix2d* src, typ_matrix2d* dst, int order);
/* Validation only: 1 when range is a valid record with at least 3 points,
 * else -1 (null included). Computes nothing else. */
QOMATH_API int InterpolateLinearArrayToPolyArray(int unused, typ_wlinfo* range);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_INTERPOLATION_H */
