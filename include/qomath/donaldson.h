/*
 * QOMath — bispectral fluorescence: the Donaldson matrix.
 *
 * A fluorescent sample (whitened paper, day-glo safety colours) is measured
 * bispectrally: D(mu, lambda) is the radiance factor at emission wavelength
 * lambda for excitation at mu. The matrix is passed as two axes and a
 * row-major value array:
 *   excitation[j], j < n_ex   mu in nm, strictly increasing
 *   emission[i],   i < n_em   lambda in nm, strictly increasing; each must
 *                             lie on the excitation axis (within 0.0001 nm)
 *   values[j * n_em + i]      D(mu_j, lambda_i)
 * The cells with mu_j = lambda_i form the reflected diagonal (dimensionless
 * radiance factor); the others are fluorescent radiance factors per nm of
 * excitation (nm^-1). Axis sizes are 2..4096.
 *
 * Under an illuminant of relative spectral power S the total radiance factor
 * follows the bispectral formula (CIE 182:2007, ASTM E2153):
 *   beta_T(lambda) = beta_R(lambda) + beta_L(lambda)
 *   beta_R(lambda) = D(lambda, lambda)
 *   beta_L(lambda) = sum over mu != lambda of D(mu, lambda) S(mu) dmu / S(lambda)
 * with dmu the width of an excitation cell: half the distance to each
 * neighbour (half an interval at the ends), so the step on an even axis.
 * The illuminant is given as wavelength and value arrays (any of GetCIEData's
 * illuminants will do), interpolated linearly onto the excitation axis, which
 * it must span.
 *
 * Quantum-yield bound: a sample emits at most one photon for each photon it
 * absorbs. For excitation mu_j with the absorbed part a_j = 1 - D(mu_j, mu_j)
 * (1 where mu_j has no emission cell, below the emission axis):
 *   q_j = sum over i, lambda_i != mu_j, of D(mu_j, lambda_i) (lambda_i / mu_j) dlambda_i / a_j <= 1
 * (dlambda the emission cell widths). Since Stokes emission (lambda > mu)
 * carries less energy per photon, the radiant energy emitted never exceeds
 * the energy absorbed. DonaldsonMatrix_Validate rejects a matrix whose q_j
 * exceeds 1 + 1e-6.
 */
#ifndef QOMATH_DONALDSON_H
#define QOMATH_DONALDSON_H

#include "qomath/common.h"
#include "qomath/chromaticity.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Checks a matrix and writes the quantum yield q_j of each excitation row into
 * yields[0..n_ex-1] (when yields is not null; 0 for a row without emission).
 * Returns
 *    1  a usable matrix
 *   -1  a null axis or value pointer
 *   -2  an axis size outside 2..4096, or an axis not finite and strictly increasing
 *   -3  an emission wavelength not on the excitation axis
 *   -4  a value not finite, a negative fluorescent cell or a negative diagonal
 *   -5  a quantum yield above 1 (yields are written)
 *   -6  scratch allocation failed
 * yields are set to 0 on entry.
 */
QOMATH_API int DonaldsonMatrix_Validate(const float* excitation, int n_ex, const float* emission, int n_em,
                                        const float* values, float* yields);

/*
 * Total, reflected and fluorescent radiance factors over the emission axis
 * (n_em floats each; any of the three may be null) under the illuminant
 * (illum_wl, illum), n_illum >= 2 points. Where S(lambda) <= 0 the
 * fluorescent part is undefined and set to 0.
 * Returns 1; the status of DonaldsonMatrix_Validate (-1..-5) for an unusable
 * matrix; -7 when the illuminant is null, has fewer than 2 points, does not
 * increase strictly or does not span the excitation axis; -6 scratch
 * allocation failed. The outputs are cleared on entry.
 */
QOMATH_API int DonaldsonMatrix_RadianceFactor(const float* excitation, int n_ex, const float* emission, int n_em,
                                              const float* values, const float* illum_wl, const float* illum,
                                              int n_illum, float* total, float* reflected, float* fluorescent);

/*
 * Colour of the sample under the illuminant, CIE 1931 observer: XYZ[0..2]
 * relative to the perfect reflecting diffuser under the same illuminant
 * (Y = 100 for it), computed by CalcTristimulusXYZ1931_2 on the emission axis
 * for S beta_T and for S; xy[0..1] the chromaticity (TristimulusXYZTOCIE1931xyz);
 * lab the CIELAB coordinates against that white (CalculateCIE1976Lab).
 * The emission axis needs at least 5 points reaching into 370..820 nm.
 * Returns 1; the statuses of DonaldsonMatrix_RadianceFactor; -8 when a
 * result pointer is null or the tristimulus or colour calculation fails.
 * Results are cleared on entry.
 */
QOMATH_API int DonaldsonMatrix_Colour(const float* excitation, int n_ex, const float* emission, int n_em,
                                      const float* values, const float* illum_wl, const float* illum, int n_illum,
                                      float* XYZ, float* xy, typ_Lab* lab);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_DONALDSON_H */
