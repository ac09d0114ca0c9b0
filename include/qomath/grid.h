/*
 * QOMath — wavelength grids, library information and timing.
 *
 * Status codes of this family:
 *    1  success
 *    0  a count function met an invalid record
 *   -1  null pointer, invalid range record, too few points, wavelength off grid
 *   -2  wavelengths not increasing (WavelengthRangePrep),
 *       missing output array (WavelengthCreateArray)
 *   -3  common range too short (WavelengthRangePrep)
 * Functions returning a physical value return 0 on bad input.
 */
#ifndef QOMATH_GRID_H
#define QOMATH_GRID_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Number of points of a range record; 0 for an invalid record or a null pointer. */
QOMATH_API int WLNumPts(const typ_wlinfo* range);
/* The same rule on three loose values. */
QOMATH_API int WLNumberPts(float start, float end, float step);
/* (end - start) / (n - 1); 0 when end - start <= 0 or n < 2. */
QOMATH_API float WLStepSize(float start, float end, int n);
/* Index of the grid point at or below wavelength: trunc((wl - start) / step).
 * -1 when the record is invalid or empty or wl lies outside [start, end]. */
QOMATH_API int WLArrayPosition(const typ_wlinfo* range, float wavelength);
/* Snaps *a to *b when |a| > 1e-8 and b / a lies strictly inside (0.995, 1.005):
 * returns 1; otherwise leaves *a and returns 0. */
QOMATH_API int RoundoffCheck(float* a, const float* b);
/* Embeds values (over in_range) in a zero-filled grid reaching at least to the
 * start and end the caller puts in out_range, always one step beyond them.
 * out_range is rewritten; out_values receives WLNumPts(out_range) zeros, then
 * WLNumPts(out_range) values are copied from `values` starting at index
 * trunc(q_low) of out_values. Size both arrays accordingly: values must be
 * readable for WLNumPts(out_range) floats and out_values must hold
 * trunc(q_low) + WLNumPts(out_range) floats.
 * Returns 1, or -1 when in_range.step < 1e-12 or a pointer is null. */
QOMATH_API int ZeroPadSpectralData(const float* values, const typ_wlinfo* in_range,
                                   float* out_values, typ_wlinfo* out_range);
/* Trapezoid integral of y over x; 0 for null pointers, n < 2, or as soon as
 * the wavelengths stop increasing (not the partial sum). */
QOMATH_API float IntegrationDiscrete(const float* x, const float* y, int n);
/* Double variant whose terms are (y[i-1] + y[i]) / 2 DIVIDED by the interval;
 * equal to IntegrationDiscrete on a 1 nm grid. Stops like it and returns 0. */
QOMATH_API double IntegrationDiscreteD(const double* x, const double* y, int n);

/* Polynomial wavelength calibration: wavelength(pixel) = sum c[k] pixel^k,
 * k = 0..order, pixels numbered from 0. */
QOMATH_API double WavelengthForPixelFromPolyCal(const double* coeffs, int order, double pixel);
/* out[p] = wavelength of pixel p, p = 0..pixels-1. Always returns 1. */
QOMATH_API int WavelengthArrayFromPolyCal(const double* coeffs, int order, int pixels, float* out);
/* First pixel whose wavelength is >= wavelength (linear search, increasing
 * calibration assumed); pixels - 1 when none is. */
QOMATH_API int PixelFromWavelengthPolyCal(const double* coeffs, int order, double wavelength,
                                          int pixels);

/* Common range of two increasing wavelength arrays: writes the points of the
 * coarser array (ties go to wl_b) that lie inside it. out_wl needs room for
 * max(n_a, n_b) floats. Returns 1, -1 (fewer than 3 points or a null pointer),
 * -2 (an array does not increase from first to last), -3 (overlap too short). */
QOMATH_API int WavelengthRangePrep(const float* wl_a, int n_a, const float* wl_b, int n_b,
                                   float* out_wl, int* out_n);
/* out_wl[i] = i * step + start for the record's points (3 to 4096).
 * Returns 1, -1 (bad record or count), -2 (out_wl or out_n null). */
QOMATH_API int WavelengthCreateArray(const typ_wlinfo* range, float* out_wl, int* out_n);

/* Library information. */
/* "1.7.6", static storage. */
QOMATH_API const char* GetQOMathDLLversion(void);
/* Writes "1.7.6", the build date "May  3 2020" and time "15:27:32" into the
 * three caller buffers (each at least 25 bytes; at most 25 are written).
 * Returns the result of the last formatted write (8); -1 when a buffer is null. */
QOMATH_API int GetDllBuildInfo(char* version, char* date, char* time);
/* Always 1.0: lets a host check that the library loads and answers. */
QOMATH_API double MATHDLLCHECK(void);

/* Timing. */
/* Waits ms milliseconds: sleeps above 200 ms, busy-waits on the clock below. */
QOMATH_API void MathDelayMilliSeconds(unsigned int ms);
/* Seconds since midnight of the current UTC time, milliseconds as fraction. */
QOMATH_API double GetCurrentSystemTime(void);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_GRID_H */
