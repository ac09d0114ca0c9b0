/*
 * QOMath — the CIE observer and illuminant tables and the spectrum loci.
 *
 * Tables served by GetCIEData (selector: content, range start..end step nm):
 *    0..2   CIE 1931 2° x-bar, y-bar, z-bar        360..830 1  (471 points)
 *    3..5   CIE 1964 10° x-bar, y-bar, z-bar       360..830 1  (471 points)
 *    6      CIE standard illuminant A              300..830 1  (531 points)
 *    7      CIE illuminant B                       320..770 5  (91 points)
 *    8      CIE illuminant C                       320..770 5  (91 points)
 *    9      CIE standard illuminant D65            300..830 1  (531 points)
 *   10      equal-energy spectrum E (all 1.0)      300..830 1  (531 points)
 * The caller provides room for 531 values (QOMATH_CIE_MAX_POINTS).
 *
 * Spectrum loci are chromaticity pairs x = X/(X+Y+Z), y = Y/(X+Y+Z) of the
 * observer tables, rounded to five decimals as the CIE publishes them: the
 * 1931 locus from 360 to 700 nm, the 1964 locus from 360 to 830 nm, both at
 * 1 nm, and a 0.1 nm 1931 locus (3401 pairs) interpolated from the 1 nm one
 * with the rule of CIE1931DiagramInterpolated.
 */
#ifndef QOMATH_CIE_TABLES_H
#define QOMATH_CIE_TABLES_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_CIE_MAX_POINTS 531
#define QOMATH_LOCUS1931_POINTS 341
#define QOMATH_LOCUS1964_POINTS 471
#define QOMATH_LOCUS1931_FINE_POINTS 3401

/* One point of a chromaticity chart, returned by value: {x, y, 0}. */
typedef struct typ_chartvalue {
    float x;
    float y;
    float z;
} typ_chartvalue;
QOMATH_STATIC_ASSERT(sizeof(typ_chartvalue) == 12, typ_chartvalue_is_three_floats);

/* Copies table `selector` (0..10, see above) into values and its grid into
 * range. Returns 1, or -1 (nothing written) for another selector or a null
 * pointer. */
QOMATH_API int GetCIEData(int selector, float* values, typ_wlinfo* range);

/* {360, 700, 1}: the grid of the 1931 locus. */
QOMATH_API typ_wlinfo GetCIE1931ChartWL(void);
/* {x, y, 0} of the 1931 locus at 360 + index nm, index 0..340. Any other
 * index gives {0, 0, 0}. */
QOMATH_API typ_chartvalue GetCIE1931ChartValue(int index);
/* which 0: the 1931 locus (341 pairs, {360, 700, 1});
 * which 1: the 1964 locus (471 pairs, {360, 830, 1}).
 * Returns 1, or -1 for another `which` or a null pointer. */
QOMATH_API int GetCIEUCSChartData(int which, float* x, float* y, typ_wlinfo* range);
/* The 0.1 nm 1931 locus: 3401 pairs, range {360, 700, 0.1}. Returns 1
 * (-1 only for a null pointer). */
QOMATH_API int GetCIE1931InterpolatedData(float* x, float* y, typ_wlinfo* range);
/* The same 3401 pairs with wavelengths[i] = i * 0.1 + 360 (in float) and
 * *n = 3401. Returns 1 (-1 only for a null pointer). */
QOMATH_API int GetCIE1931InterpolatedData2(float* x, float* y, float* wavelengths, int* n);
/* Rebuilds the 0.1 nm locus from the 1 nm locus into three arrays it
 * allocates with malloc (341 * 40 + 4 bytes each); the caller frees them with
 * free(). Point j (0..9) of nanometre block i is labelled
 * (float)(0.1 j + 10 i) + 360 — the label advances 10 nm per block, so the
 * labels run 360.0..360.9, 370.0..370.9, ... Hosts rely on these labels; use
 * GetCIE1931InterpolatedData2 for true wavelengths. The last point (700 nm)
 * is block 340, j = 0. range receives {360, 700, 0.1}.
 * Returns 1; -2 when an interpolation step fails (the arrays stay allocated
 * and belong to the caller); -4 when allocation fails or a pointer is null
 * (nothing is handed out). */
QOMATH_API int CIE1931DiagramInterpolated(float** wavelengths, float** x, float** y,
                                          typ_wlinfo* range);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CIE_TABLES_H */
