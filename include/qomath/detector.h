/*
 * QOMath — detector quality and detector arrays.
 *
 * f1primeCalculate rates a photometer or colorimeter head: the general
 * spectral mismatch index f1' of its relative spectral responsivity against
 * a CIE 1931 colour-matching function.
 *
 * The detector-array functions repair linear-array readings pixel by pixel
 * before they become spectra (listed or masked defective pixels take the mean
 * of their nearest good neighbours), make and tidy defect masks, and sort
 * points into quadrilateral bins.
 *
 * Process-wide state: the bin registry of Binning_*, one at a time, guarded
 * by its own mutex (the calls may come from several threads). Every other
 * function here keeps no state.
 */
#ifndef QOMATH_DETECTOR_H
#define QOMATH_DETECTOR_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Spectral mismatch index f1' ----------------------------------------- */

/* Target selectors (mode) of f1primeCalculate, with the target's grid. */
enum {
    QOMATH_F1_XBAR_SHORT = 0, /* x-bar from 360 to 505 nm, 1 nm */
    QOMATH_F1_XBAR_LONG = 1,  /* x-bar from 505 to 830 nm, 1 nm */
    QOMATH_F1_YBAR = 2,       /* y-bar, V(lambda), 360 to 830 nm, 1 nm */
    QOMATH_F1_ZBAR = 3        /* z-bar, 360 to 830 nm, 1 nm */
};

/*
 * f1' of a relative spectral responsivity (values over responsivity_range)
 * against the target of `mode`, calibrated with a source spectrum (values
 * over source_range).
 *
 * Source: when all three fields of *source_range are non-zero the record must
 * reach from 360 nm or below to 830 nm or above with a valid step and at
 * least 20 points (else -20). Otherwise a record of fewer than 20 points
 * selects CIE illuminant A (300..830 nm, 1 nm) and `source` may be null.
 * The source is resampled at 1 nm over the target's own range and scaled to
 * a maximum of 1.
 *
 * Common range: from the later start to the earlier end of responsivity and
 * target, with the step max(1, responsivity step); written to *common_range.
 * The responsivity is resampled onto it, scaled so that it gives the target's
 * signal for the source (A / B, the trapezoid integrals of target x source
 * and responsivity x source), and D = scaled - target.
 *   f1prime = step * sum |D[i] + D[i+1]| / 2  /  trapezoid integral of target.
 * The absolute value is taken of each interval's pair sum, not of each
 * sample: a deviation that alternates in sign from sample to sample cancels.
 * Hosts compare with earlier results, so this form stays.
 *
 * *warning: 0; 1 when the responsivity starts after the target's start; 2
 * when it ends before the target's end (2 wins when both hold).
 *
 * Returns
 *    1  f1prime written
 *   -1  mode above 3 (compared unsigned, so negative modes too)
 *   -2  scratch allocation failed
 *   -3  a null pointer (other than source with illuminant A), an unusable
 *       responsivity range, or fewer than 4 points shared with the target
 *   -4  the source could not be resampled, or it is zero everywhere
 *   -5  a spectral product failed
 *   -7  B below 1e-14 or not a number (f1prime stays 0)
 *  -20  source range given but unusable (see above)
 * *f1prime, *common_range and *warning are set to 0 on entry, so -1 and -20
 * leave every output 0.
 */
QOMATH_API int f1primeCalculate(const float* responsivity, const typ_wlinfo* responsivity_range,
                                int mode, const float* source, const typ_wlinfo* source_range,
                                float* f1prime, typ_wlinfo* common_range, int* warning);

/* ---- Bad pixels ------------------------------------------------------------ */

/* Entries in a bad-pixel list; entries outside 0..n-1 (e.g. -1) are unused. */
#define QOMATH_BADPIXEL_LIST_SIZE 20

/*
 * Each listed pixel p (0 <= p < n) takes the mean of its nearest pixels below
 * and above that are not in the list (either one alone at an end). Exactly
 * QOMATH_BADPIXEL_LIST_SIZE entries of badList are read; good pixels are never
 * changed, so the order of the list does not matter. Sums in double.
 * A listed pixel with no good pixel on either side becomes 0/0 = NaN in the
 * float and double variants (hosts test for NaN to see the array was all
 * bad); the 16-bit variant leaves it as it was and truncates the mean.
 * Returns 1; -1 when data or badList is null.
 */
QOMATH_API int DetectorArrayBadPixelSub(float* data, int n, const int* badList);
QOMATH_API int DetectorArrayBadPixelSubd(double* data, int n, const int* badList);
QOMATH_API int DetectorArrayBadPixelSubW(unsigned short* data, int n, const int* badList);

/* The record of the earlier double variant: a fixed array of 4096 pixels. */
#define QOMATH_BADPIXEL_OLD_PIXELS 4096
typedef struct typ_pixelarray_d {
    double values[QOMATH_BADPIXEL_OLD_PIXELS];
} typ_pixelarray_d;
QOMATH_STATIC_ASSERT(sizeof(typ_pixelarray_d) == 32768, typ_pixelarray_d_size);

/*
 * The earlier double variant on a record: the rule of DetectorArrayBadPixelSubd,
 * except that a listed last pixel (n - 1) takes values[n - 2] as it stands at
 * that moment (already repaired when n - 2 came earlier in the list).
 * Returns 1; 0 when n is outside 1..4096; -1 for a null pointer.
 */
QOMATH_API int DetectorArrayBadPixelSubdOLD(typ_pixelarray_d* data, int n, const int* badList);

/*
 * Each pixel with mask[i] != 0 (NaN included) takes trunc(mean) of the counts
 * of its nearest pixels below and above with mask == 0; with neither, it is
 * left as it was. Returns 1; -1 when a pointer is null or n != nMask.
 */
QOMATH_API int DefectivePixelReplacement(unsigned short* counts, int n, const float* mask,
                                         int nMask);

/*
 * Clears isolated defects from a mask, "near zero" meaning |m| < 0.001:
 * mask[0] = 0 when mask[1] is near zero, mask[n-1] = 0 when mask[n-2] is,
 * then upwards in place every inner mask[i] whose two neighbours are near
 * zero. Returns 1; -1 when mask is null or n < 5.
 */
QOMATH_API int DetectorRemoveSingleBad(float* mask, int n);

/* Rule of DetectorCreateBadPixelMap. */
#define QOMATH_BADPIXEL_HALF_WINDOW 4 /* neighbourhood: 2 * 4 + 1 pixels */
#define QOMATH_BADPIXEL_MAD_LIMIT 6.0 /* limit in scaled MADs */
#define QOMATH_BADPIXEL_MAD_SCALE 1.4826 /* MAD to standard deviation, normal noise */

/*
 * The defect mask of a dark or flat-field reading: map[i] = 1 when data[i] is
 * not finite or lies more than LIMIT * SCALE * MAD from the median of its
 * neighbourhood, else 0. The neighbourhood is the 2 * HALF_WINDOW + 1 pixels
 * centred on i, moved inwards at the ends, without non-finite values; MAD is
 * the median absolute deviation from that median. Where most of a
 * neighbourhood reads the same value, MAD is 0 and any pixel off that value
 * is marked. The map suits DefectivePixelReplacement and
 * DetectorRemoveSingleBad. map must not overlap data.
 * Returns 1; -1 when a pointer is null or n < 5.
 */
QOMATH_API int DetectorCreateBadPixelMap(const float* data, int n, float* map);

/* ---- Point in polygon and bins ------------------------------------------- */

/*
 * Even-odd crossing rule over the polygon pts[0..2*nPts-1] = x0, y0, x1, y1,
 * ... (closed from the last corner back to the first), in double. An edge
 * counts when y lies in [y_low, y_high) of the edge, and a crossing strictly
 * right of x toggles: points on a lower or left edge are inside, on an upper
 * or right edge outside. Horizontal edges never count; 1 or 2 corners and
 * NaN coordinates therefore give 0.
 * Returns 1 inside, 0 outside, 0 for a null pointer or nPts < 1.
 */
QOMATH_API int PointInPolygon(const float* pts, int nPts, float x, float y);

/* A bin: four corners in order around its outline, 32 bytes. */
typedef struct typ_binquad {
    float corner[4][2]; /* (x, y) of each corner */
} typ_binquad;
QOMATH_STATIC_ASSERT(sizeof(typ_binquad) == 32, typ_binquad_size);

/*
 * Replaces the bin registry by a copy of bins[0..count-1] with zeroed hit
 * counters. Any earlier registry is released first, also when the call
 * fails. Bins of zero area are accepted.
 * Returns 1; -1 when count <= 0 or bins is null; -2 when a corner is not
 * finite; -4 when memory runs out (the registry is then empty).
 */
QOMATH_API int Binning_Init(int count, const typ_binquad* bins);
/* Releases the registry. Returns 1. */
QOMATH_API int Binning_Close(void);
/*
 * The bin of a point: the first bin whose point test gives 0 or more. The
 * test gives 0 or 1, so that is bin 0 for every point (also NaN) whenever a
 * registry exists; hosts count on this. -1 when there are no bins.
 */
QOMATH_API int Binning_GetBin(float x, float y);
/* Counts the point into the bin of Binning_GetBin: 1, or -1 with no bins. */
QOMATH_API int Binning_Add(float x, float y);
/* Does nothing; returns 1. */
QOMATH_API int Binning_Dump(void);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_DETECTOR_H */
