/*
 * QOMath — small conversions: Beer's law, optical density, inch and foot.
 *
 * Value functions take one float and return the converted value as a double;
 * as everywhere in the library a value function returns 0 on bad input (a
 * non-finite argument or one outside the stated domain). QOConvertArray
 * applies any of them to an array.
 *
 * Beer-Lambert law (decadic): absorbance A = -log10(T), T = 10^-A, with T the
 * internal transmittance as a fraction (1 = 100 %); A = epsilon * l * c with
 * the molar absorptivity epsilon in L mol^-1 cm^-1, the path length l in cm
 * and the concentration c in mol/L.
 * Optical density D of a neutral-density filter: the same decadic law on the
 * filter's transmission, T = 10^-D (an ND 0.3 filter passes 50.1 %).
 * Lengths: 1 inch = 2.54 cm and 1 foot = 0.3048 m exactly (international
 * yard and pound agreement, 1959).
 */
#ifndef QOMATH_CONVERSIONS_H
#define QOMATH_CONVERSIONS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A = -log10(T); T > 0 (values above 1, a gain, give a negative A). */
QOMATH_API double BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(float transmittance);
/* T = 10^-A; any finite A. */
QOMATH_API double BEERSLAW_ABSORBANCE_TO_TRANSMITTANCE(float absorbance);
/* A = epsilon * l * c; each argument finite and >= 0. */
QOMATH_API double BEERSLAW_ABSORBANCE(float molar_absorptivity, float path_length_cm,
                                      float concentration_mol_per_l);
/* c = A / (epsilon * l); A >= 0, epsilon * l > 0. */
QOMATH_API double BEERSLAW_CONCENTRATION(float absorbance, float molar_absorptivity,
                                         float path_length_cm);
/* T = 10^-D of a neutral-density filter; D finite. */
QOMATH_API double ND_TO_TRANSMISSION(float optical_density);
/* D = -log10(T); T > 0. */
QOMATH_API double TRANSMISSION_TO_ND(float transmission);
/* Lengths; any finite value. */
QOMATH_API double INCH_TO_CM(float inches);
QOMATH_API double CM_TO_INCH(float centimetres);
QOMATH_API double FOOT_TO_METRE(float feet);
QOMATH_API double METRE_TO_FOOT(float metres);

/* Conversions of QOConvertArray. */
enum {
    QOMATH_CONVERT_T_TO_ABSORBANCE = 0,
    QOMATH_CONVERT_ABSORBANCE_TO_T = 1,
    QOMATH_CONVERT_ND_TO_T = 2,
    QOMATH_CONVERT_T_TO_ND = 3,
    QOMATH_CONVERT_INCH_TO_CM = 4,
    QOMATH_CONVERT_CM_TO_INCH = 5,
    QOMATH_CONVERT_FOOT_TO_METRE = 6,
    QOMATH_CONVERT_METRE_TO_FOOT = 7
};

/*
 * out[i] = conversion `which` of in[i], i < n, as float; out may be in.
 * A value outside the conversion's domain gives 0 in its place and the
 * others are still converted.
 * Returns 1; 0 when some value was outside the domain; -1 for a null
 * pointer or n < 1 (nothing written); -2 for an unknown conversion.
 */
QOMATH_API int QOConvertArray(int which, const float* in, float* out, int n);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CONVERSIONS_H */
