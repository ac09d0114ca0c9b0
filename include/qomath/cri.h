/*
 * QOMath — colour rendering index.
 *
 * The CIE colour rendering indices of a test light source: the special
 * indices R1..R16 of the built-in test colour samples and the general index
 * Ra (the mean of R1..R8), with von Kries chromatic adaptation and the
 * CIE 1964 U*V*W* space, chromaticities in CIE 1960 u, v.
 *
 * Test colour samples (16 slots, spectral reflectance on 360..830 nm):
 *   slots 0..13   CIE test colour samples 1..14
 *   slots 14, 15  the fifteenth sample (a skin tone), stored twice
 * so R15 and R16 agree unless CRI_DefaultCalc2X is given samples of its own.
 *
 * Reference illuminant of CRI_DefaultCalc and its variants, unless the
 * caller supplies one: for 5000 <= cct <= 25000 K (both inclusive) CIE
 * daylight of that correlated colour temperature, otherwise a Planckian
 * radiator (BlackBodyCurve). The daylight chromaticity polynomial uses
 * rounded constants,
 *     4000 < T < 7000:   xD = 0.24 + 99/T + 3e6/T^2 - 4.6e9/T^3
 *     7000 < T < 25000:  xD = 0.23704 + 247/T + 1.9e6/T^2 - 2e9/T^3
 *     otherwise          xD = 0 (this includes exactly 7000 K and 25000 K)
 *     yD = 2.87 xD - 0.275 - 3.0 xD^2,
 * and stored results are built on these figures: a 6504 K reference lies at
 * x = 0.3094, not at the 0.3127 of D65 (so D65 itself rates Ra 98.7). The
 * reference built for exactly 7000 K or 25000 K (xD = 0) has no usable
 * colour, and those calls return their no-colour status.
 *
 * Like the tristimulus functions these go through the process-wide state of
 * the interpolators (see interpolation.h); the host serialises the calls.
 */
#ifndef QOMATH_CRI_H
#define QOMATH_CRI_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_CRI_SAMPLES 16       /* test colour samples, R1..R16 */
#define QOMATH_CRI_SAMPLE_POINTS 95 /* reflectance points on {360, 830, 5} */
#define QOMATH_CRI_WARNINGS 3       /* room CRI_Calc needs for its warning codes */
#define QOMATH_CRI_RESULT_CELLS 22  /* cells of the CRI_DefaultCalc result */

/*
 * The result record of CRI_DefaultCalc, CRI_DefaultCalc2 and
 * CRI_DefaultCalc2X: 22 four-byte cells, passed as float* (a typ_cri_result
 * may be passed as (float*)&record). All cells are cleared on entry, and a
 * failed call leaves them cleared.
 *   cells  0..15  R1..R16 (float), in sample slot order
 *   cell  16      Ra = (R1 + ... + R8) / 8 (float); 0 when that is not positive
 *   cells 17, 18  1 (int) when the test source is 0.04 or more from the
 *                 reference white in CIE 1960 u, v (the indices are then of
 *                 little meaning); both set together
 *   cell  19      1 (int) when that distance is below 0.04 and cct > 25000 K
 *   cells 20, 21  always 0
 */
typedef struct typ_cri_result {
    float ri[QOMATH_CRI_SAMPLES];
    float ra;
    int far_from_reference;        /* cell 17 */
    int far_from_reference_copy;   /* cell 18, always equal to cell 17 */
    int above_25000_k;             /* cell 19 */
    int reserved[2];               /* cells 20, 21 */
} typ_cri_result;
QOMATH_STATIC_ASSERT(sizeof(typ_cri_result) == QOMATH_CRI_RESULT_CELLS * 4,
                     typ_cri_result_is_22_cells);

/*
 * Copies the reflectance of test colour sample slot `sample` (0..15, see
 * above) into reflectance[0..94] and writes {360, 830, 5} into range.
 * An index below 0 or above 15 is replaced by 0. Returns the slot copied;
 * -1 (nothing written) when a pointer is null.
 */
QOMATH_API int GetCRITestColorData(int sample, float* reflectance, typ_wlinfo* range);

/*
 * Special indices of the test source (test_values over test_range) against
 * an explicit reference (ref_values over ref_range) into ri[0..15], slot
 * order. Tristimulus values as CalcTristimulusXYZ1931; each sample's colour
 * from the product (MultiplySpectralFiles) of its 5 nm reflectance with the
 * source, scaled to Y = 100.
 * Two properties stored results depend on:
 *  - W* = 25 Y^0 - 17 = 8 for every sample: the lightness difference is 0
 *    and U*, V* are 13 x 8 times the chromaticity differences;
 *  - the adapted test-sample chromaticities are measured from the test
 *    source's own (unadapted) u, v, the reference samples from the
 *    reference's.
 * Ri = 100 - 4.6 sqrt(dU*^2 + dV*^2), computed in double, stored as float.
 * warnings: room for 3 ints (may be null), cleared on entry, then filled
 * from its start with the codes that apply, in this order:
 *    1  the reference step is 10 nm or more
 *    2  the test step is 10 nm or more
 *    3  |du^2 - dv^2| > 0.0054 between the sources (the difference of the
 *       squares, not their sum)
 * ri is cleared on entry. Returns
 *    1  success
 *   -1  a spectral product failed, or ri is null (nothing written)
 *   -2  a tristimulus calculation under the reference failed (missing or
 *       invalid reference, fewer than 5 points)
 *   -3  a tristimulus calculation under the test source failed, a zero or
 *       non-finite u, v denominator (a dark source or sample), or an index
 *       that is not a finite number
 * A failure inside the sample loop returns with the indices of the slots
 * before it written.
 */
QOMATH_API int CRI_Calc(const float* ref_values, const typ_wlinfo* ref_range,
                        const float* test_values, const typ_wlinfo* test_range, float* ri,
                        int* warnings);

/*
 * Indices of the test source (test_values over test_range), whose
 * correlated colour temperature is *cct (K), into result (22 cells, see
 * typ_cri_result). The work runs on the 2 nm grid {360, 830, 2} with 2 nm
 * copies of the samples and of the CIE 1931 colour-matching functions.
 * Reference: ref_values over ref_range when both are given and ref_range is
 * valid with at least 50 points (resampled onto the 2 nm grid with
 * Interpolate); otherwise built from *cct (see the top of this header).
 * The test spectrum is multiplied with each colour-matching function
 * (MultiplySpectralFiles) and the products are integrated with Integrate;
 * the samples are resampled onto the products' grid with Interpolate.
 * W* = 25 (100 Y / Y_source)^0.333333333333 - 17, and both the adapted test
 * samples and the reference samples are measured from the reference white.
 * dE and Ri are computed in float. Returns
 *    1  success
 *   -1  a null test_values, test_range, cct or result (nothing written when
 *       result is null); no overlap of the test range with 360..830 nm; or a
 *       source or sample without colour (zero u, v denominator) or an index
 *       that is not a finite number (for instance from negative spectra)
 *   -2  the test step is not above 1e-15
 *   -3  the test range shares fewer than 4 points with the 2 nm grid
 *   -4  scratch memory could not be allocated
 *   -5  the Planckian reference was needed and *cct is <= 0, > 100000 or
 *       not a number
 */
QOMATH_API int CRI_DefaultCalc(const float* ref_values, const typ_wlinfo* ref_range,
                               const float* test_values, const typ_wlinfo* test_range,
                               const float* cct, float* result);

/*
 * CRI_DefaultCalc on explicit wavelength arrays. The fourteen arguments
 * follow CRI_DefaultCalc: an optional reference, the test source, its
 * correlated colour temperature, then two optional test colour samples:
 *    1 ref_wl, 2 ref_values, 3 ref_n
 *        optional reference spectrum; used when both arrays are given,
 *        ref_n >= 50 and the wavelengths increase; otherwise the reference
 *        is built from cct as in CRI_DefaultCalc. It is resampled onto the
 *        2 nm grid, like the built one.
 *    4 test_wl, 5 test_values, 6 test_n
 *        the test source: test_n points, wavelengths strictly increasing.
 *        All integrals run over these wavelengths (trapezoid rule, as
 *        IntegrationDiscrete); the colour-matching functions, the reference
 *        and the samples are resampled onto them with Interpolate2 (the
 *        colour-matching functions count as 0 outside 360..830 nm).
 *    7 cct
 *        correlated colour temperature of the test source, K.
 *    8 sample15_wl, 9 sample15_values, 10 sample15_n
 *        optional reflectance that replaces slot 14 (R15); used when given
 *        with sample15_n > 0.
 *   11 sample16_wl, 12 sample16_values, 13 sample16_n
 *        optional reflectance that replaces slot 15 (R16), likewise.
 *   14 result
 *        22 cells, as CRI_DefaultCalc.
 * Without the optional samples the built-in slots are used, so R15 = R16.
 * Returns
 *    1  success
 *   -1  cct < 1000 or cct > 30000 (or not a number)
 *   -2  test_n below 10, test wavelengths that do not strictly increase or
 *       are not finite, or a null test_wl, test_values or result (nothing
 *       written when result is null)
 *   -3  an optional sample given with a positive count starts above 360 nm
 *       or ends below 830 nm, has null arrays, fewer than 4 points or
 *       wavelengths that do not strictly increase
 *   -4  scratch memory could not be allocated, or a resampling failed
 *   -5  a source or sample without colour (zero u, v denominator), or an
 *       index that is not a finite number
 */
QOMATH_API int CRI_DefaultCalc2X(const float* ref_wl, const float* ref_values, int ref_n,
                                 const float* test_wl, const float* test_values, int test_n,
                                 float cct, const float* sample15_wl,
                                 const float* sample15_values, int sample15_n,
                                 const float* sample16_wl, const float* sample16_values,
                                 int sample16_n, float* result);

/* CRI_DefaultCalc2X without the optional samples (arguments 8..13 zero). */
QOMATH_API int CRI_DefaultCalc2(const float* ref_wl, const float* ref_values, int ref_n,
                                const float* test_wl, const float* test_values, int test_n,
                                float cct, float* result);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CRI_H */
