/*
 * QOMath — smoothing and noise filters.
 *
 * In-place filters over one caller-owned value array: Savitzky-Golay
 * coefficients and a fixed 7-point Savitzky-Golay smoother, median and mean
 * filters, clipping, percentile and dip filters, a wavelength-region scaler,
 * the redistribution of values below a floor and a signal-to-noise filter
 * for array-spectrometer counts.
 *
 * Indexing: FilterSavgol writes c[1..np] (indexed from 1, c[0] untouched);
 * every other function works on y[0..n-1].
 *
 * Status codes, per function as documented below:
 *    1  success
 *    0  QOSmoothArray: nothing done (null pointer, n < 7, no scratch memory)
 *   -1  null pointer or a count or setting out of range (see each function)
 *   -2  window out of range (MedianFilter1d, MedianMeanFilter1d, BoxcarAveraging),
 *       or scratch memory could not be had (FilterSavgol, the noise filters,
 *       MedianFilterReplacement1d, SNFilter), or the sum of the values lies
 *       below n times the floor (QoMathFilterDistributeNegativeValues)
 *   -3  scratch memory could not be had (MedianFilter1d, MedianMeanFilter1d,
 *       BoxcarAveraging)
 * Nothing is written on any refusal. Every count product (3w, 2w, n + 2w,
 * nl + nr + 1) is checked without overflowing.
 *
 * NaN: no value causes a stray access; outputs whose window holds no NaN are
 * unaffected by NaN elsewhere; a median window holding NaN gives NaN.
 */
#ifndef QOMATH_FILTERS_H
#define QOMATH_FILTERS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Savitzky-Golay ------------------------------------------------------ */

/* Savitzky-Golay coefficients (it does not filter data): the least-squares
 * polynomial of degree m over the window of nl points left and nr points
 * right of a sample, evaluated as its ld-th coefficient (ld = 0 smooths;
 * ld > 0 gives the ld-th polynomial coefficient per sample, that is the ld-th
 * derivative divided by ld!, with no ld! factor).
 * c[1..np] is zeroed, then filled in wrap-around order: offset 0 at c[1],
 * offsets -1 .. -nl at c[2] .. c[nl+1], offsets +1 .. +nr at c[np] ..
 * c[np-nr+1]. c must hold np + 1 floats. The normal equations are summed in
 * float and solved with LUDCMP/LUBKSB.
 * Returns 1; -1 when c is null, np < nl+nr+1, nl < 0, nr < 0, ld > m,
 * nl+nr < m, ld < 0, or a coefficient is not finite in float (c untouched);
 * -2 when scratch memory cannot be had.
 * Example: np = 5, nl = nr = 2, ld = 0, m = 2 gives (17, 12, -3, -3, 12)/35. */
QOMATH_API int FilterSavgol(float* c, int np, int nl, int nr, int ld, int m);

/* 7-point cubic Savitzky-Golay smoothing of y[0..n-1] with fixed
 * coefficients: interior (-2, 3, 6, 7, 6, 3, -2)/21, the first and last three
 * points from the end-point cubic fits over the first and last 7 samples, so
 * that a cubic passes unchanged, ends included.
 * Returns 1; 0 when y is null, n < 7 or scratch memory cannot be had. */
QOMATH_API int QOSmoothArray(float* y, int n);

/* ---- Median and mean ------------------------------------------------------ */

/* Running median over w samples (the element w/2 of the sorted window).
 * The array is padded with w - 1 copies of y[0] before y[1..n-2] and w - 1
 * copies of y[n-1] after; output i is the median of padded[i .. i+w-1].
 * For w = 3 the window is centred; for larger w it lags behind the sample
 * (w = 5: output i is the median of the window centred on input i - 1).
 * Hosts align their spectra to this lag: keep it. No feedback (outputs are
 * written while the padded copy is read).
 * Returns 1; -1 when y is null or n < 3; -2 when w < 3 or w > n;
 * -3 when scratch memory cannot be had. */
QOMATH_API int MedianFilter1d(float* y, int n, int w);

/* Running median (flag 0) or mean (any other flag) over w samples.
 * Output i uses y[i - w/2 .. i + w/2] for odd w (centred) and
 * y[i - w/2 + 1 .. i + w/2] for even w, the ends extended with copies of
 * y[0] and y[n-1]. The median is element w/2 of the sorted window; the mean
 * is the window's sum in double divided by w, 0 when the sum's magnitude is
 * not above 1e-15 (so also 0 for a window holding NaN). No feedback.
 * Returns 1; -1 when y is null or n < 5; -2 when w < 1 or 3w > n;
 * -3 when scratch memory cannot be had. */
QOMATH_API int MedianMeanFilter1d(float* y, int n, int w, int flag);

/* Replaces one half of y by the median of all values (element n/2 of a
 * sorted copy): with mode 1 the first n/2 values, with any other mode the
 * last n/2 (indices n - n/2 .. n-1). The rest is untouched.
 * Returns 1; -1 when y is null or n < 3; -2 when scratch memory cannot be had.
 * Example: {5, 1, 3, 2}, mode 1 gives {3, 3, 3, 2}. */
QOMATH_API int MedianFilterReplacement1d(float* y, int n, int mode);

/* Running mean of width w = 2..10 over h = w/2 samples each side (2h + 1
 * points, so an even w averages w + 1 points), read from a double copy (no
 * feedback). y[0] and y[n-1] are never changed; points 1 .. h-1 and
 * n-h .. n-2 get 3-point means. When n <= 2h every point 1 .. n-2 gets its
 * 3-point mean.
 * Returns 1 (also for n < 1, nothing done); -1 when y is null; -2 when w is
 * outside 2..10; -3 when scratch memory cannot be had. */
QOMATH_API int BoxcarAveraging(float* y, int n, int w);

/* ---- Noise and dip filters ------------------------------------------------ */

/* Clips single extreme samples against a forward window of w samples of a
 * copy of y: the window of output i starts at min(i, n - 2w), so the window
 * stops moving near the end and the last w samples never lie in a window
 * (callers' records depend on this exact window rule). When y[i] equals the
 * window minimum it becomes the second smallest window value; then, when it
 * equals the window maximum, the second largest.
 * Returns 1; -1 when y is null, w < 2 or n < 2w; -2 when scratch memory
 * cannot be had. */
QOMATH_API int BroadbandNoiseFilter1d(float* y, int n, int w);

/* Sets to 0 every value less than or equal to the threshold, the element
 * min(n-1, max(0, trunc(pct / 100.0 * n))) (in double) of a sorted copy.
 * Returns 1; -1 when y is null or n < 5; -2 when scratch memory cannot be had.
 * Example: pct 25 on 12 values takes sorted element 3. */
QOMATH_API int BandlimitedNoiseFilter1d(float* y, int n, int pct);

/* Fills single-sample dips: for i = 1 .. n-2 in increasing order, in place,
 * when y[i-1] > y[i] < y[i+1], y[i] = (y[i-1] + y[i+1]) / 2. A filled value
 * takes part in the next test. Peaks are left alone.
 * Returns 1; -1 when y is null or n < 5. Example: {3, 1, 3, 0, 3} becomes
 * {3, 3, 3, 3, 3}. */
QOMATH_API int OscillationFilter(float* y, int n);

/* ---- Region scaling and floors -------------------------------------------- */

/* y[i] *= factor for every i with lo <= x[i] <= hi (values before
 * wavelengths). Returns 1; -1 when mode != 0 or a pointer is null. */
QOMATH_API int QoMathFilterScaleWlRegion(int mode, float* y, float* x, int n, float lo,
                                         float hi, float factor);

/* Lifts every value below `floor` to it and takes the deficit from the
 * values above the floor nearest in wavelength (both sides, ends included;
 * the nearer by |wl[j] - wl[i]| first, the lower index on a tie), never
 * pushing a donor below the floor. The sum of the values is kept (to float
 * rounding). wl must be increasing; it is only read. Values are handled in
 * increasing index; NaN values neither give nor take. With no value below
 * the floor y is left bit-identical. The command tool passes floor 0.
 * Returns 1; -1 when a pointer is null or n < 1; -2 (y unchanged) when the
 * sum of the values is below n * floor. */
QOMATH_API int QoMathFilterDistributeNegativeValues(const float* wl, float* y, int n,
                                                    float floor);

/* Signal-to-noise filter for counts of a 16-bit array spectrometer.
 *   p1  dark level in counts (the signal above it is Poisson, variance =
 *       counts above p1 plus 1 count of read and quantisation noise)
 *   p2  strength, 0..1 (0 leaves y unchanged; 1 smooths the noisiest points
 *       fully)
 *   p3  saturation level in counts; values at or above it are left
 *       unchanged; p3 <= 0 means 65535
 * A smooth curve s (7-point quadratic Savitzky-Golay; near saturated points
 * and at the ends the value itself) is formed; each value moves towards it,
 * y[i] += b (s[i] - y[i]) with
 *   control 0 (adaptive): b = p2 / (1 + (snr / 10)^2), snr = (s - p1) / sigma,
 *             so points far above the noise (peaks) are kept and the noisy
 *             low-signal regions are smoothed; and b = 0 where |y - s| exceeds
 *             5 sigma (a genuine feature, not noise);
 *   control 1 (uniform): b = p2 everywhere.
 * The command tool calls it with control 0 and p = (0, 0.5, 65535).
 * A quadratic (and anything the 7-point quadratic keeps) passes unchanged.
 * Returns 1; -1 when y is null, n < 7, control is not 0 or 1, p2 is outside
 * 0..1, p1 or p3 is not finite or p3 <= p1; -2 when scratch memory cannot be
 * had. */
QOMATH_API int SNFilter(double* y, int n, int control, double p1, double p2, double p3);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_FILTERS_H */
