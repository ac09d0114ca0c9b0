/*
 * QOMath — CIE tristimulus values.
 *
 * A tristimulus value is the plain trapezoid integral over wavelength of the
 * spectrum times a colour-matching function: no 683 lm/W and no k factor are
 * applied. Integration runs in double; the stored result is the absolute
 * value, as float. Triples are written X, Y, Z into three consecutive floats.
 *
 * Colour-matching selector: 0, 1, 2 = x-bar, y-bar, z-bar of the CIE 1931
 * 2-degree observer; 3, 4, 5 = those of the CIE 1964 10-degree observer
 * (tables on 360..830 nm, 1 nm).
 *
 * Status codes of the array-style functions (CalcTristimulusXYZ and the two
 * triples ending in _2):
 *    1  success; also when the wavelengths are found not to increase
 *       (a repeated or decreasing wavelength, or NaN): the result is then 0
 *   -1  null pointer, or a selector outside 0..5
 *   -2  fewer than 5 points
 *   -3  no data inside 370..820 nm: last wavelength <= 370 or first >= 820
 *   -4  scratch allocation failed
 *   -5  resampling the colour-matching table with Interpolate2 failed
 *
 * Status codes of the range-record triples (CalcTristimulusXYZ1931, ...1964):
 *    1  success
 *   -1  null pointer
 *   -2  fewer than 5 points in the range record (or an invalid record)
 *   -3  scratch allocation failed
 *   -4  the product of spectrum and table (MultiplySpectralFiles) failed
 *
 * Outputs are cleared on entry (after the pointer checks), so a failed call
 * leaves 0 behind; a triple that fails at one component keeps the components
 * before it and leaves the later ones at 0.
 *
 * Resampling goes through Interpolate2 and so through its process-wide cache
 * (see interpolation.h): these functions are not safe to call from several
 * threads at once.
 */
#ifndef QOMATH_TRISTIMULUS_H
#define QOMATH_TRISTIMULUS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * One tristimulus component of the spectrum (wavelengths[i], values[i]),
 * i < n, with the given colour-matching selector. The table is resampled
 * onto the spectrum's wavelengths with Interpolate2; samples outside
 * 360..830 nm (bounds included) contribute 0. The data must reach into
 * 370..820 nm, a span kept narrower than the table's on purpose.
 */
QOMATH_API int CalcTristimulusXYZ(const float* wavelengths, const float* values, int n,
                                  int selector, float* result);
/* X, Y, Z with the 1931 observer (selectors 0, 1, 2 in that order),
 * stopping at the first status other than 1. */
QOMATH_API int CalcTristimulusXYZ1931_2(const float* wavelengths, const float* values, int n,
                                        float* xyz);
/* X10, Y10, Z10 with the 1964 observer (selectors 3, 4, 5). */
QOMATH_API int CalcTristimulusXYZ1964_2(const float* wavelengths, const float* values, int n,
                                        float* xyz);

/*
 * X, Y, Z of values over an evenly spaced range, 1931 observer. Each
 * component multiplies the spectrum with the table by MultiplySpectralFiles
 * and integrates the product over its own range:
 * step * sum of (p[i] + p[i+1]) / 2.
 */
QOMATH_API int CalcTristimulusXYZ1931(const float* values, const typ_wlinfo* range, float* xyz);
/* The same with the 1964 observer. */
QOMATH_API int CalcTristimulusXYZ1964(const float* values, const typ_wlinfo* range, float* xyz);

/*
 * Normalising constant k = 100 / integral of values times y-bar, with the
 * 1964 y-bar-10 for observer 0 and the 1931 y-bar for any other value.
 * The product comes from MultiplySpectralFiles (its status is not checked)
 * and is summed by the trapezoid rule over a window shifted one sample up:
 * samples up to one step above the last grid point at or below 830 nm take
 * part, those beyond the product counting as 0, and a product starting at
 * 360 nm is summed from its second sample. For a flat spectrum on
 * 360..830 nm, k is 100 over the y-bar area from 361 to 831 nm (831 nm
 * counting as 0). Hosts' reference whites are built on this sum.
 * A spectrum that gives a zero sum yields an infinite k.
 * Returns 1; -1 (k left 0) when a pointer is null.
 */
QOMATH_API int CalcTristimulusK(const float* values, const typ_wlinfo* range, int observer,
                                float* k);

/*
 * The CIE 1931 X, Y, Z of table `selector` of GetCIEData (0..10) taken as a
 * spectrum on its own grid: selector 1 gives the values of y-bar itself, its
 * Y being the integral of y-bar squared.
 * Returns 1, -1 for a selector outside 0..10 or a null xyz (xyz untouched),
 * or the first failing status of CalcTristimulusXYZ.
 */
QOMATH_API int GetCIEDataTristimulus(int selector, float* xyz);

/* Integral over wavelength of a spectrum weighted by a CIE colour-matching
 * function: y holds WLNumPts(range) values over range; selector 0..5 picks
 * x-bar, y-bar, z-bar of the 1931 2-degree observer (0..2) or of the 1964
 * 10-degree observer (3..5), the 1 nm tables on 360..830 nm of GetCIEData.
 * Each grid point is weighted by the table at its wavelength (linear between
 * the whole nanometres; exactly the table value on a whole-nanometre grid)
 * and by 0 outside 360..830 nm; the weighted values are summed by the
 * trapezoid rule with range->step, in double. With a spectrum on
 * {360, 830, 1} this is the plain tristimulus integral of that component.
 * 0 for a null pointer, an invalid range, fewer than 2 points or a selector
 * outside 0..5. */
QOMATH_API float Integrate_CIE(const float* y, const typ_wlinfo* range, int selector);
/* As Integrate_CIE with each trapezoid taken by its absolute value, like
 * IntegrateQO_ with absolute != 0: the area of the rectified weighted
 * spectrum. Equal to Integrate_CIE for a spectrum that is nowhere negative. */
QOMATH_API float IntegrateAbsolute_CIE(const float* y, const typ_wlinfo* range, int selector);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_TRISTIMULUS_H */
