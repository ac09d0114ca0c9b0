/*
 * QOMath — summary calculations: every colorimetric, photometric and
 * radiometric result of one spectrum in one call.
 *
 * Colorimetric result array (QOMATH_CC_COUNT floats), by index:
 *   0..2   X, Y, Z, CIE 1931 2 degree observer (plain integrals, no k)
 *   3..5   X10, Y10, Z10, CIE 1964 10 degree observer
 *   6, 7   CIE 1960 u, v (2 degree)
 *   8, 9   CIE 1976 u', v' (2 degree)
 *   10     correlated colour temperature, K (0 when it cannot be found)
 *   11     Duv, signed distance from the Planckian locus in (u, v)
 *   12     dominant wavelength, nm, or the complementary wavelength for
 *          purples (0 when neither can be found)
 *   13     1 dominant, -1 complementary, 0 none
 *   14     excitation purity (0..1)
 *   15     colorimetric purity (0..1)
 *   16     general colour rendering index Ra
 *   17..31 special colour rendering indices R1..R15
 *   32     photometric value for the unit: illuminance (lx) for irradiance,
 *          luminance (cd/m^2) for radiance, luminous intensity (cd) for
 *          radiant intensity, luminous flux (lm) for radiant flux; 0 otherwise
 *   33     the unit code used (0..6)
 *   34     the white point of the dominant wavelength: 0 E, 1 D65, 2 A, 3 C
 *   35     the illuminant under which transmittance or reflectance was seen:
 *          1 D65, 2 A, 3 C; -1 for an emitting source
 *   36     reserved (0)
 *   37, 38 x, y (2 degree)       -- WriteSpectralFile2X reads 37, 38, 40, 41
 *   39     z (2 degree)
 *   40, 41 x10, y10 (10 degree)
 *   42     z10
 *   43, 44 u'10, v'10 (10 degree)
 *   45..47 reserved (0)
 * Indices whose quantity does not apply (CRI of a transmittance, say) hold 0.
 *
 * How the results are found, one library call each:
 *   X, Y, Z and X10, Y10, Z10  CalcTristimulusXYZ1931_2, CalcTristimulusXYZ1964_2
 *   chromaticities             TristimulusXYZTOCIE1931xyz, TristimulusXYZToCIE1960uv,
 *                              TristimulusXYZToUCS1976uv
 *   CCT, Duv                   CCTCalculate on the 1960 u, v; both 0 when it fails
 *   dominant wavelength        DominantWavelength2 from the selected white;
 *                              index 12 holds its magnitude, index 13 its kind.
 *                              The purities (ExcitationColorimetricPurity with
 *                              the locus point found) are given for a dominant
 *                              wavelength only: 0 for a complementary one, whose
 *                              locus point lies on the far side of the white.
 *                              None (all 0) for a sample within 1e-5 of the
 *                              white in both x and y.
 *   CRI                        CRI_DefaultCalc2 (the wavelength-array form of
 *                              CRI_DefaultCalc) with the CCT found, the reference
 *                              built from it; emitting units (0..4) only, and all
 *                              0 when there is no CCT or the indices cannot be had
 *                              (CCT outside 1000..30000 K, fewer than 10 points).
 *   photometric value          IlluminanceCalc (lux), LuminanceCalc (nit),
 *                              LuminousIntensityCalc, LuminousFluxCalc
 * White points: E is x = y = 1/3; D65, A and C are the chromaticities of the
 * CIE tables of GetCIEData through CalcTristimulusXYZ1931_2, worked out once
 * per process. Any other `white` value means E.
 * Transmittance (5) and reflectance (6): the sample times the illuminant
 * (MultiplySpectralFiles2: on the coarser of the two grids within their
 * overlap; illuminant C stops at 770 nm), and the colorimetry of that
 * product. X, Y, Z are then the plain integrals of the product, not scaled
 * to Y = 100.
 * The range-record form ColorimetricCalc2 lays the record out as wavelength
 * arrays with WavelengthCreateArray and takes the same path, so both forms
 * give identical results for the same data.
 * Like the functions underneath, these use the process-wide interpolation
 * cache: the host serialises the calls.
 */
#ifndef QOMATH_SUMMARY_H
#define QOMATH_SUMMARY_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_CC_COUNT 48
#define QOMATH_CC_X 0
#define QOMATH_CC_Y 1
#define QOMATH_CC_Z 2
#define QOMATH_CC_X10 3
#define QOMATH_CC_Y10 4
#define QOMATH_CC_Z10 5
#define QOMATH_CC_U 6
#define QOMATH_CC_V 7
#define QOMATH_CC_UP 8
#define QOMATH_CC_VP 9
#define QOMATH_CC_CCT 10
#define QOMATH_CC_DUV 11
#define QOMATH_CC_DOMINANT_WL 12
#define QOMATH_CC_DOMINANT_KIND 13
#define QOMATH_CC_EXCITATION_PURITY 14
#define QOMATH_CC_COLORIMETRIC_PURITY 15
#define QOMATH_CC_RA 16
#define QOMATH_CC_R1 17 /* R1..R15 at 17..31 */
#define QOMATH_CC_PHOTOMETRIC 32
#define QOMATH_CC_UNIT 33
#define QOMATH_CC_WHITE 34
#define QOMATH_CC_ILLUMINANT 35
#define QOMATH_CC_x 37
#define QOMATH_CC_y 38
#define QOMATH_CC_z 39
#define QOMATH_CC_x10 40
#define QOMATH_CC_y10 41
#define QOMATH_CC_z10 42
#define QOMATH_CC_UP10 43
#define QOMATH_CC_VP10 44

/* White points of the dominant wavelength. */
#define QOMATH_WHITE_E 0
#define QOMATH_WHITE_D65 1
#define QOMATH_WHITE_A 2
#define QOMATH_WHITE_C 3

/* Every colorimetric result of a spectrum given as wavelength and value
 * arrays (n points, increasing wavelengths) in the unit unitCode (0..6).
 * white selects the white point of the dominant wavelength (QOMATH_WHITE_*).
 * For transmittance (5) and reflectance (6) the colour is that of the sample
 * under `illuminant` (1 D65, 2 A, 3 C; any other value means D65).
 * result receives QOMATH_CC_COUNT floats (cleared first, unless it is null).
 * Returns
 *    1  success: every result is a finite number
 *   -1  null pointer or unit code outside 0..6
 *   -2  fewer than 5 points, wavelengths that do not strictly increase, or a
 *       wavelength or value that is not finite
 *   -3  the data do not reach into 370..820 nm (for transmittance and
 *       reflectance: too little overlap with the illuminant)
 *   -4  allocation failure
 *   -5  the spectrum has no colour (X + Y + Z, or X10 + Y10 + Z10, is 0), or
 *       a result overflows a float
 * On every failure the result holds only zeros. */
QOMATH_API int ColorimetricCalc(const float* wavelengths, const float* values, int n, int unitCode,
                                int white, int illuminant, float* result);
/* The same for a value array over a range record (WLNumPts(range) values).
 * An invalid record, or one of more than 4096 points, gives -2. */
QOMATH_API int ColorimetricCalc2(const float* values, const typ_wlinfo* range, int unitCode,
                                 int white, int illuminant, float* result);

/*
 * Radiometric result array (QOMATH_RC_COUNT floats), by index:
 *   0  integral of the spectrum over [bandStart, bandEnd] (trapezoid rule;
 *      the unit's value times nm)
 *   1  peak wavelength, nm (first maximum)
 *   2  peak value
 *   3  centroid wavelength, nm (value-weighted mean over the whole spectrum)
 *   4  full width at half maximum, nm (0 when it cannot be measured)
 *   5  ultraviolet integral, 200..380 nm
 *   6  visible integral, 380..780 nm
 *   7  infrared integral, 780..1100 nm
 *   8  integral over the whole spectrum
 *   9..15 reserved (0)
 * Band integrals cover the part of the band the spectrum reaches. Every
 * integral is the trapezoid rule (IntegrationDiscrete), that is the exact
 * integral of the spectrum joined point to point by straight lines; a band
 * edge that falls between two samples is given the value of that line there,
 * so adjacent bands add up to the integral over their union (UV + visible +
 * IR is the integral over 200..1100 nm). A band the spectrum does not reach
 * gives 0.
 * Peak: GetPeakWavelength2; FWHM: ComputeFWHMoptions; centroid: Centroid2
 * (0 when the values do not sum to a positive number).
 */
#define QOMATH_RC_COUNT 16
#define QOMATH_RC_BAND 0
#define QOMATH_RC_PEAK_WL 1
#define QOMATH_RC_PEAK_VALUE 2
#define QOMATH_RC_CENTROID 3
#define QOMATH_RC_FWHM 4
#define QOMATH_RC_UV 5
#define QOMATH_RC_VISIBLE 6
#define QOMATH_RC_IR 7
#define QOMATH_RC_TOTAL 8

/* Radiometric results of a spectrum given as wavelength and value arrays.
 * Returns
 *    1  success: every result is a finite number
 *   -1  null pointer
 *   -2  fewer than 2 points, wavelengths that do not strictly increase, a
 *       wavelength or value that is not finite, or values so large that an
 *       integral overflows a float
 *   -3  bandStart >= bandEnd (or either is NaN); infinite edges are allowed
 *       and stand for the ends of the data
 *   -4  allocation failure
 * result is cleared first (unless it is null) and holds only zeros after a
 * failure. */
QOMATH_API int RadiometryCalc(const float* wavelengths, const float* values, int n, float bandStart,
                              float bandEnd, float* result);
/* The same for a value array over a range record (WLNumPts(range) values,
 * laid out as wavelengths with WavelengthCreateArray). An invalid record, or
 * one of fewer than 3 or more than 4096 points, gives -2. */
QOMATH_API int RadiometryCalc2(const float* values, const typ_wlinfo* range, float bandStart,
                               float bandEnd, float* result);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_SUMMARY_H */
