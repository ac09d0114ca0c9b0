/*
 * QOMath — colour rendition and photobiology to today's standards.
 *
 * ColorRenditionAnalysis: ANSI/IES TM-30-20 and CIE 224:2017 (one method:
 * the CIE 1964 10-degree observer, the 99 colour evaluation samples, CIE
 * CAM02-UCS with L_A = 100 cd/m^2, Y_b = 20, average surround and complete
 * adaptation, Rf with the scaling factor 6.73, Rg from 16 hue bins), and
 * CIE 13.3 Ra and R1..R15 with the CIE's own daylight constants (the
 * compatible CRI_DefaultCalc keeps the library's rounded ones).
 *
 * The spectrum is given as wavelengths (nm, strictly increasing) and values
 * of any relative scale. For TM-30 / CIE 224 it is interpolated linearly onto
 * 1 nm over 380..780 nm (data at 1 nm pass unchanged); it must cover that
 * span. The reference illuminant: a Planckian radiator (c2 = 1.4388e-2 m K)
 * below 4000 K, CIE daylight (S0, S1, S2 linearly interpolated to 1 nm,
 * CIE chromaticity polynomial) above 5000 K, and between them the mix
 * (5000 - T)/1000 Planckian + (T - 4000)/1000 daylight of the two normalised
 * to Y10 = 100. T is the CCT of the spectrum (CCTCalculate, CIE 1960 u, v
 * of the 2-degree observer). Sums in double. CIE 13.3 works at its 5 nm
 * intervals: the data, linear between their samples, at every 5 nm they
 * cover within 360..830 nm.
 *
 * Status codes of the three functions:
 *    1  success
 *   -1  a null pointer or n < 2 (radiance flag outside 0..1 for the others)
 *   -2  wavelengths not strictly increasing or a value not finite
 *   -3  ColorRenditionAnalysis: the data do not cover 380..780 nm, or hold
 *       no light there
 *   -4  memory could not be had
 *   -5  ColorRenditionAnalysis: no correlated colour temperature in
 *       1000..25000 K (the results then hold only the CCT cells)
 * On any status but 1 the result cells are 0 unless said otherwise.
 */
#ifndef QOMATH_COLOUR_QUALITY_H
#define QOMATH_COLOUR_QUALITY_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- ColorRenditionAnalysis: QOMATH_CRA_COUNT floats ------------------------
 *   0   Rf, TM-30-20 / CIE 224:2017 fidelity index (0..100)
 *   1   Rg, TM-30 gamut index (100 = the reference's gamut)
 *   2   CCT used, K
 *   3   Duv
 *   4   reference: 0 Planckian, 1 CIE daylight, 2 the mix of both
 *   5   Ra, CIE 13.3 general colour rendering index, CIE constants
 *   6..20    R1..R15, CIE 13.3 special indices, CIE constants
 *   21..36   Rf,h1..Rf,h16, local fidelity of the hue bins
 *   37..52   Rcs,h1..Rcs,h16, local chroma shift (fraction, -0.1 = 10 % less)
 *   53..68   Rhs,h1..Rhs,h16, local hue shift (radians)
 *   69..167  Rf,CES1..Rf,CES99, fidelity of each colour evaluation sample
 *   168..199 test bin averages a', b' (CAM02-UCS), bin 1 first: a'1, b'1, a'2, ...
 *   200..231 reference bin averages a', b', likewise
 * Bin j (1..16) holds the samples whose hue under the reference lies in
 * [(j-1) 22.5, j 22.5) degrees. */
#define QOMATH_CRA_COUNT 232
#define QOMATH_CRA_RF 0
#define QOMATH_CRA_RG 1
#define QOMATH_CRA_CCT 2
#define QOMATH_CRA_DUV 3
#define QOMATH_CRA_REFERENCE 4
#define QOMATH_CRA_RA 5
#define QOMATH_CRA_R1 6
#define QOMATH_CRA_RF_H1 21
#define QOMATH_CRA_RCS_H1 37
#define QOMATH_CRA_RHS_H1 53
#define QOMATH_CRA_RF_CES1 69
#define QOMATH_CRA_TEST_BINS 168
#define QOMATH_CRA_REF_BINS 200

QOMATH_API int ColorRenditionAnalysis(const float* wavelengths, const float* values, int n,
                                      float* result);

/* ---- UVRadiationCalc: QOMATH_UV_COUNT floats -----------------------------------
 * From a spectral irradiance in uW/cm^2/nm (radiance = 0) or a spectral
 * radiance in uW/cm^2/sr/nm (radiance = 1); results in W/m^2 (per sr for a
 * radiance), integrated by the trapezoid rule over the part of each band
 * the data cover, weightings interpolated linearly:
 *   0  UV-C 100..280 nm     1  UV-B 280..315 nm     2  UV-A 315..400 nm
 *   3  ICNIRP actinic UV hazard effective irradiance E_s (S(lambda), 1 at
 *      270 nm, 210..400 nm)
 *   4  permissible daily exposure time, s: 30 J/m^2 / E_s (0 when E_s is 0)
 *   5  CIE erythemally weighted irradiance (ISO 17166 / CIE S 007)
 *   6  UV index: 40 m^2/W times cell 5
 *   7  IEC 62471 blue-light hazard weighted irradiance E_B (radiance L_B for
 *      a radiance), B(lambda) over 300..700 nm
 *   8  bands the data do not cover whole (they count as 0 where missing):
 *      1 UV-C, 2 UV-B, 4 UV-A, 8 actinic 210..400, 16 erythema 250..400,
 *      32 blue light 300..700
 *   9..11 reserved (0)
 * Cells 4 and 6 apply to irradiance; for a radiance they are 0. */
#define QOMATH_UV_COUNT 12

QOMATH_API int UVRadiationCalc(const float* wavelengths, const float* values, int n,
                               int radiance, float* result);

/* ---- AlphaOpicCalc (CIE S 026): QOMATH_AOPIC_COUNT floats ------------------------
 * From a spectral irradiance (radiance = 0) or radiance (1) in the units
 * above, the five action spectra (S-cone, M-cone, L-cone, rhodopic,
 * melanopic) interpolated linearly onto the data's wavelengths over
 * 380..780 nm, trapezoid over the data:
 *   0..4    alpha-opic irradiances, W/m^2 (radiances, W/m^2/sr)
 *   5..9    alpha-opic equivalent daylight (D65) illuminances, lx (luminances,
 *           cd/m^2): cell / K_alpha,v^D65 (0.8173, 1.4558, 1.6289, 1.4497,
 *           1.3262 mW/lm)
 *   10..14  alpha-opic daylight efficacy ratios (DER): (cell / illuminance)
 *           / K_alpha,v^D65
 *   15      illuminance, lx (luminance, cd/m^2): 683 lm/W times the y-bar
 *           weighted integral
 * The order in each group is S-cone, M-cone, L-cone, rhodopic, melanopic. */
#define QOMATH_AOPIC_COUNT 16
#define QOMATH_AOPIC_EDI 5
#define QOMATH_AOPIC_DER 10
#define QOMATH_AOPIC_MELANOPIC 4

QOMATH_API int AlphaOpicCalc(const float* wavelengths, const float* values, int n, int radiance,
                             float* result);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_COLOUR_QUALITY_H */
