/*
 * QOMath — array arithmetic, integration and statistics.
 *
 * Small kernels over caller-owned arrays: element-wise arithmetic in place,
 * trapezoidal integration, centroids, differences, normalisation, extremes
 * and descriptive statistics. Arrays are `float` except in the functions whose
 * name starts with `d` and in MultiplyArrayConst, which work on `double`.
 * Nothing is allocated except by MomentsPlus, MomentsPlus2 and dMoments
 * (a sorted copy of the data).
 *
 * Status codes, per function as documented below:
 *    1  success
 *    0  nothing done: n too small or a null pointer (arithmetic, extremes),
 *       a vanishing divisor (DIVARRAYC, LineEquationCalc)
 *   -1  too few points or a null pointer (Differentiate, CumulativeSum,
 *       Histogram_, DistributionFunction, MaxArray, MinArray), a vanishing
 *       divisor (DivideArrayConst, NormalizeArray)
 *   -4  scratch memory could not be had (MomentsPlus, MomentsPlus2, dMoments)
 * Functions that return a physical value return 0 on bad input unless
 * documented otherwise (the centroids return -1 for a vanishing weight sum).
 *
 * Grids: a value array over a range record holds one value per point of
 * WLNumPts(range); point i lies at start + i * step (in float).
 */
#ifndef QOMATH_ARRAYS_H
#define QOMATH_ARRAYS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records ---------------------------------------------------------------
 * The statistics functions take a plain `float*` (or `double*`) and fill the
 * consecutive values of one of these records; pass the record's address
 * converted to that pointer type, or an array of at least that many values. */

/* Moments: 6 floats. */
typedef struct typ_moments {
    float mean;
    float adev;     /* average absolute deviation from the mean */
    float sdev;     /* standard deviation (n - 1 in the denominator) */
    float var;      /* variance, corrected two-pass */
    float skew;     /* skewness; 0 when the variance is 0 */
    float kurt;     /* excess kurtosis (minus 3); 0 when the variance is 0 */
} typ_moments;
QOMATH_STATIC_ASSERT(sizeof(typ_moments) == 6 * sizeof(float), typ_moments_is_six_floats);

/* MomentsPlus: 9 floats, the moments followed by three order statistics. */
typedef struct typ_moments_plus {
    float mean, adev, sdev, var, skew, kurt; /* as typ_moments */
    float minimum;
    float maximum;
    float median; /* Percentile at 50 of the sorted data */
} typ_moments_plus;
QOMATH_STATIC_ASSERT(sizeof(typ_moments_plus) == 9 * sizeof(float),
                     typ_moments_plus_is_nine_floats);

/* MomentsPlus2: 13 floats, typ_moments_plus followed by four more. */
typedef struct typ_moments_plus2 {
    float mean, adev, sdev, var, skew, kurt; /* as typ_moments */
    float minimum, maximum, median;          /* as typ_moments_plus */
    float lower_quartile; /* Percentile at 25 of the sorted data */
    float upper_quartile; /* Percentile at 75 of the sorted data */
    float rms;            /* sqrt(sum of a[i]^2 / n) */
    float sem;            /* standard error of the mean, sdev / sqrt(n) */
} typ_moments_plus2;
QOMATH_STATIC_ASSERT(sizeof(typ_moments_plus2) == 13 * sizeof(float),
                     typ_moments_plus2_is_thirteen_floats);

/* dMoments: 13 doubles, the layout of typ_moments_plus2 in double. */
typedef struct typ_dmoments {
    double mean, adev, sdev, var, skew, kurt;
    double minimum, maximum, median;
    double lower_quartile, upper_quartile, rms, sem;
} typ_dmoments;
QOMATH_STATIC_ASSERT(sizeof(typ_dmoments) == 13 * sizeof(double), typ_dmoments_is_thirteen_doubles);

/* ArrayStatsBasic: 3 floats; dArrayStatsBasic: the same as 3 doubles. */
typedef struct typ_arraystats {
    float minimum;
    float maximum;
    float mean;
} typ_arraystats;
QOMATH_STATIC_ASSERT(sizeof(typ_arraystats) == 3 * sizeof(float), typ_arraystats_is_three_floats);

typedef struct typ_darraystats {
    double minimum;
    double maximum;
    double mean;
} typ_darraystats;
QOMATH_STATIC_ASSERT(sizeof(typ_darraystats) == 3 * sizeof(double),
                     typ_darraystats_is_three_doubles);

/* ---- Element-wise arithmetic, in place on the first array ------------------ */

/* a[i] *= c. Returns 1; 0 when n < 1 or a is null. */
QOMATH_API int MULTARRAYC(float* a, int n, float c);
/* a[i] *= c on doubles. Returns 1; 0 when n < 1 or a is null. */
QOMATH_API int MultiplyArrayConst(double* a, int n, double c);
/* a[i] /= c. Returns 1; 0 when n < 1, a is null or |c| < 1e-20 (or c is NaN). */
QOMATH_API int DIVARRAYC(float* a, int n, float c);
/* a[i] /= c. Returns 1; 0 when n < 1 or a is null; -1 when |c| < 1e-20
 * (or c is NaN). */
QOMATH_API int DivideArrayConst(float* a, int n, float c);
/* a[i] += b[i]. Returns 1; 0 when n < 1 or a pointer is null. (C++ callers
 * also have the row-sum overload declared at the end of this header.) */
QOMATH_API int ADDARRAYS(float* a, const float* b, int n);
/* a[i] -= b[i]. Returns as ADDARRAYS. */
QOMATH_API int SUBARRAYS(float* a, const float* b, int n);
/* a[i] *= b[i]. Returns as ADDARRAYS. */
QOMATH_API int MULTARRAYS(float* a, const float* b, int n);
/* flag 0: a[i] /= b[i] with no test of b (a zero divisor leaves the IEEE
 * infinity or NaN). Any other flag: nothing is divided. Returns 1; 0 when
 * n < 1 or a pointer is null (checked before the flag). */
QOMATH_API int DIVARRAYS(float* a, const float* b, int n, int flag);
/* a[i] = 1 / a[i] (in double) when |a[i]| > 1e-15, else 1e16 (stored as the
 * float 9999999198822400; NaN also gives it). Returns 1; 0 when n < 1 or a is
 * null. */
QOMATH_API int InvertArray(float* a, int n);
/* a[i] = e^a[i]. Returns 1 (also for n < 1); 0 when a is null and n >= 1. */
QOMATH_API int ExponentialArray(float* a, int n);
/* a[i] = ln(a[i]); a value with |a[i]| < 1e-9 is first replaced by 1e-9, so
 * larger negative values give NaN. Returns 1 (also for n < 1); 0 when a is
 * null and n >= 1. */
QOMATH_API int LogarithmArray(float* a, int n);
/* a[i] /= m, m the largest |a[i]|. Returns 1 (also for n < 1); -1 when
 * m < 1e-13 (nothing divided) or a is null. */
QOMATH_API int NormalizeArray(float* a, int n);
/* Forward difference in place, without division by a step:
 * a[i] = a[i+1] - a[i] for i < n-1, then a[n-1] = a[n-2] (the last
 * difference repeated). Returns 1; -1 when n < 5 or a is null. */
QOMATH_API int Differentiate(float* a, int n);
/* out[0] = a[0], out[i] = out[i-1] + a[i] (in float). out may be a.
 * Returns 1; -1 when n < 2 or a pointer is null. */
QOMATH_API int CumulativeSum(const float* a, int n, float* out);

/* ---- Reductions --------------------------------------------------------------- */

/* Sum of a[0..n-1], accumulated in double; 0 when n < 1 or a is null. */
QOMATH_API float SumArray(const float* a, int n);
/* Sum / n accumulated in float; 0 when n < 2 or a is null (one value gives 0). */
QOMATH_API float MEANARRAY(const float* a, int n);
/* Index of the largest value, the LAST of equal maxima. *max is written only
 * when an element after a[0] reaches the best so far: when a[0] is the
 * unique maximum (or n == 1) *max keeps what the caller put there.
 * Returns the index (0 for n == 1); -1 when n < 1 or a pointer is null. */
QOMATH_API int MaxArray(const float* a, int n, float* max);
/* The same for the smallest value: the last of equal minima, *min written
 * only when an element after a[0] is <= the best so far. */
QOMATH_API int MinArray(const float* a, int n, float* min);
/* rec receives a typ_arraystats: minimum, maximum, mean (accumulated in
 * double). Returns 1; 0 when n < 1 or a pointer is null. */
QOMATH_API int ArrayStatsBasic(const float* a, int n, float* rec);
/* As ArrayStatsBasic on doubles; rec receives a typ_darraystats. */
QOMATH_API int dArrayStatsBasic(const double* a, int n, double* rec);
/* slope * x + intercept, in double. */
QOMATH_API double LineEquation(float slope, float intercept, float x);
/* Line through (x1, y1), (x2, y2): *slope = (y2 - y1) / (x2 - x1) and
 * *second = (y2 - y1) - slope * (x2 - x1). *second is NOT the intercept: it
 * is zero up to rounding, and hosts read it as such. Returns 1; 0 when
 * |x2 - x1| < 1e-8 (or NaN) or a pointer is null (nothing written). */
QOMATH_API int LineEquationCalc(float x1, float x2, float y1, float y2, float* slope,
                                float* second);
/* k! in 32-bit int arithmetic, wrapping on overflow (13! already wraps);
 * 1 for k = 0; -1 for k < 0. */
QOMATH_API int factorial(int k);

/* ---- Integration and centroids -------------------------------------------- */

/* Trapezoid rule on a step: *result = (y[0] + ... + y[n-1] - y[0]/2 -
 * y[n-1]/2) * step, accumulated in float. Returns 1; 0 when n < 2 or a
 * pointer is null (*result untouched). */
QOMATH_API int Integrate(const float* y, int n, float step, float* result);
/* The same as Integrate, under a second name. */
QOMATH_API int IntegrateQO(const float* y, int n, float step, float* result);
/* step * sum over i < n-1 of (y[i] + y[i+1]) / 2, in double. With
 * absolute != 0 each pair sum is taken as |y[i] + y[i+1]| (the area of the
 * rectified trapezoids). 0 when n < 2 or y is null. */
QOMATH_API float IntegrateQO_(const float* y, int n, float step, int absolute);
/* Trapezoid rule over the WLNumPts(range) values of y with range->step, in
 * double. 0 for a null pointer, an invalid range or fewer than 2 points. */
QOMATH_API float IntegrateKW(const float* y, const typ_wlinfo* range);
/* Index centroid: (sum of (i+1) * y[i]) / (sum of y[i]) - 1, in double.
 * -1 when |sum of y| <= 1e-19 (also for n < 1 or a null pointer). */
QOMATH_API float Centroid(const float* y, int n);
/* As Centroid on doubles, but -1 whenever the sum of y is not above 1e-19
 * (a negative sum too). */
QOMATH_API double dCentroid(const double* y, int n);
/* sum of x[i] * y[i] / sum of y[i], in double; -1 when the sum of y is not
 * above 1e-19 (also for n < 1 or a null pointer). */
QOMATH_API float Centroid2(const float* x, const float* y, int n);
/* Wavelength centroid of y over its range grid: sum of wl[i] * y[i] / sum of
 * y[i] with wl[i] = start + i * step, as Centroid2 on the generated
 * wavelengths. -1 when the sum of y is not above 1e-19; 0 for a null pointer
 * or an invalid range. */
QOMATH_API float CentroidKW(const float* y, const typ_wlinfo* range);

/* ---- Statistics ----------------------------------------------------------- */

/* Moments of a[0..n-1] into rec (a typ_moments), two-pass with the
 * corrected variance (sum of d^2 - (sum of d)^2 / n) / (n - 1), d the
 * deviations from the mean (the mean is summed in float, the deviations in
 * double). n == 1 gives mean a[0] and zeros. Returns 1; for n < 1 or a null
 * pointer nothing is written (still 1). */
QOMATH_API int Moments(const float* a, int n, float* rec);
/* As Moments, with rec a typ_moments_plus: the moments, then minimum,
 * maximum and median. The median is Percentile at 50 of a sorted copy; for
 * one or two values it is their mean. The caller's data are not reordered.
 * Returns 1 (nothing written for n < 1 or a null pointer); -4 when the
 * sorted copy cannot be allocated (nothing written). */
QOMATH_API int MomentsPlus(const float* a, int n, float* rec);
/* As MomentsPlus, with rec a typ_moments_plus2: further the lower and upper
 * quartiles (Percentile at 25 and 75 of the sorted copy; the mean for one or
 * two values), the root mean square and the standard error of the mean.
 * Returns as MomentsPlus. */
QOMATH_API int MomentsPlus2(const float* a, int n, float* rec);
/* MomentsPlus2 on doubles, every step in double; rec a typ_dmoments.
 * Returns as MomentsPlus. */
QOMATH_API int dMoments(const double* a, int n, double* rec);
/* Fraction (0..1) of a normal distribution within +-z standard deviations:
 * erf(z / sqrt(2)) by its Maclaurin series cut after exactly 12 terms, in
 * double. Accurate to 1e-6 up to |z| = 2; beyond, the cut shows (z = 3 gives
 * 0.9869 for 0.9973, z = 4 a negative value). Host tables were made with
 * these values. Odd in z. */
QOMATH_API float StdDevToPercent(float z);
/* Sorts a[left..right] ascending in place (quicksort). Nothing happens for a
 * null pointer or left >= right. NaN values end up somewhere in between;
 * the sort stays within a[left..right] whatever the data. */
QOMATH_API void QSort(float* a, int left, int right);
/* Percentile of ascending data (sort them first, e.g. with QSort).
 * *pct is clamped to 0..100 and written back; i = trunc(pct / 100 * (n-1)).
 * Odd n: sorted[i]. Even n: (sorted[i] + sorted[i+1]) / 2 whatever the
 * fraction (at 100 the pair is the last value with itself).
 * 0 when n < 3, a pointer is null or *pct is NaN (*pct then untouched). */
QOMATH_API float Percentile(const float* sorted, int n, float* pct);
/* Histogram of a[0..n-1] over [min, max] in max(bins, 10) equal bins:
 * a is sorted in place (the caller's data are reordered), counts[b] is the
 * number of values in bin b (a value on the edge between two bins counts in
 * the lower one) and centres[b] the bin centre. counts and centres must hold
 * max(bins, 10) values. When all values are equal (bin width < 1e-19)
 * counts and centres are not written. Returns 1; -1 when n < 10 or a
 * pointer is null. */
QOMATH_API int Histogram_(float* a, int n, int* counts, int bins, float* centres);
/* Sorts a ascending and replaces it by the normalised cumulative sum of the
 * absolute values: a[0] = |a[0]|, a[i] = |a[i]| + a[i-1], then every value is
 * divided by the last when that is above 0 (the last becomes 1).
 * Returns 1; -1 when n < 10 or a is null. */
QOMATH_API int DistributionFunction(float* a, int n);

#ifdef __cplusplus
} /* extern "C" */

/* Row sums (C++ overload of ADDARRAYS): out[0..n-1] is zeroed, then
 * out[i] = sum of rows[i][0..m-1] (in float). Returns 1; 0 when n < 1,
 * m < 1, or rows, out or any rows[i] is null (nothing written). */
QOMATH_API int ADDARRAYS(float** rows, float* out, int n, int m);
#endif

#endif /* QOMATH_ARRAYS_H */
