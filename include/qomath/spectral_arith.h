/*
 * QOMath — arithmetic between two spectra and trimming.
 *
 * Two spectra are combined point by point (product, quotient, difference,
 * sum) once both lie on one common grid.
 *
 * Grid family (MultiplySpectralFiles, DivideSpectralFiles,
 * SubtractSpectralFiles, AddSpectralFiles): value arrays over range records.
 * The common range runs from the larger start to the smaller end with the
 * larger step; its end is snapped onto that grid,
 *     outRange->end = (count - 1) * step + start,
 * with count its point count (WLNumPts rule). outRange is written before any
 * check, so a failed call still leaves the common range there. Both inputs
 * are resampled onto it with Interpolate; identical ranges are combined
 * without resampling. out receives `count` values: give it room for as many
 * points as the shorter of the two ranges has. out may be valuesA or valuesB.
 * Status codes:
 *    1  success
 *   -1  no overlap (startA >= endB or startB >= endA), or a null pointer
 *       (nothing written)
 *   -2  a step (stepA, stepB or the common step) not above 1e-15
 *   -3  resampling an input onto the common range failed (Interpolate:
 *       fewer than 4 points in an input range or in the common range)
 *   -4  scratch allocation failed
 *
 * Array family (names ending in 2): explicit, increasing wavelength arrays.
 * The common wavelengths are those of WavelengthRangePrep (the points of the
 * coarser array inside the overlap); both inputs are resampled onto them
 * with Interpolate2. outWl and out need room for the larger of nA and nB
 * floats; *outN receives the count.
 * Status codes:
 *    1  success
 *   -1  WavelengthRangePrep failed (fewer than 3 points, wavelengths not
 *       increasing, overlap too short), or a null pointer
 *   -2  resampling A failed (any result of Interpolate2 other than 1, for
 *       example fewer than 4 common points)
 *   -3  resampling B failed
 *   -4  scratch allocation failed
 * On -2 and -3, outWl and *outN hold the common grid; out is not written.
 *
 * Division differs between the families, and callers rely on each rule:
 *   grid family:  A / B when |B| > 1e-19; else 0 when |A| < 1e-19, else
 *                 1e14 (the float 100000000376832) standing in for infinity;
 *   array family: 0 when |B| < 1e-9, else A / B.
 */
#ifndef QOMATH_SPECTRAL_ARITH_H
#define QOMATH_SPECTRAL_ARITH_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Grid family: out[i] = A[i] op B[i] on the common range (see above). */
QOMATH_API int MultiplySpectralFiles(const float* valuesA, const typ_wlinfo* rangeA,
                                     const float* valuesB, const typ_wlinfo* rangeB, float* out,
                                     typ_wlinfo* outRange);
QOMATH_API int DivideSpectralFiles(const float* valuesA, const typ_wlinfo* rangeA,
                                   const float* valuesB, const typ_wlinfo* rangeB, float* out,
                                   typ_wlinfo* outRange);
QOMATH_API int SubtractSpectralFiles(const float* valuesA, const typ_wlinfo* rangeA,
                                     const float* valuesB, const typ_wlinfo* rangeB, float* out,
                                     typ_wlinfo* outRange);
QOMATH_API int AddSpectralFiles(const float* valuesA, const typ_wlinfo* rangeA,
                                const float* valuesB, const typ_wlinfo* rangeB, float* out,
                                typ_wlinfo* outRange);

/* Array family: out[i] = A[i] op B[i] at outWl[i], i < *outN (see above). */
QOMATH_API int MultiplySpectralFiles2(const float* wlA, const float* valuesA, int nA,
                                      const float* wlB, const float* valuesB, int nB,
                                      float* outWl, float* out, int* outN);
QOMATH_API int DivideSpectralFiles2(const float* wlA, const float* valuesA, int nA,
                                    const float* wlB, const float* valuesB, int nB, float* outWl,
                                    float* out, int* outN);
QOMATH_API int SubtractSpectralFiles2(const float* wlA, const float* valuesA, int nA,
                                      const float* wlB, const float* valuesB, int nB,
                                      float* outWl, float* out, int* outN);
QOMATH_API int AddSpectralFiles2(const float* wlA, const float* valuesA, int nA,
                                 const float* wlB, const float* valuesB, int nB, float* outWl,
                                 float* out, int* outN);

/*
 * Cuts a spectrum over `range` to [*newStart, *newEnd] in place.
 * The start snaps down onto the grid: with k the point count of
 * (range.start, *newStart, step), it becomes (k - 1) * step + range.start
 * (range.start itself when *newStart <= range.start). The end snaps the same
 * way from the new start (range.end when *newEnd >= range.end). Both snapped
 * values are written back; values[0 .. m-1] receive the m kept values.
 * The range record itself is not changed.
 * Returns 1; -1 when range.start >= range.end, the range is invalid or a
 * pointer is null; -2 when *newStart >= *newEnd. Values are never read or
 * written beyond the range's own points.
 */
QOMATH_API int TrimSpectralFile(float* values, const typ_wlinfo* range, float* newStart,
                                float* newEnd);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_SPECTRAL_ARITH_H */
