/*
 * QOMath — chromaticity coordinates and colour difference.
 *
 * Tristimulus values X, Y, Z become CIE 1931 x, y, z, CIE 1960 u, v or
 * CIE 1976 u', v'; pairs convert between the systems; CIE 1976 L*u*v* and
 * L*a*b* and two colour differences (CIE 1976 Euclidean and CIEDE2000) are
 * computed from them.
 *
 * Two families:
 *  - array functions read and write small float arrays and return an int:
 *       1  success
 *      -1  zero denominator, or a null pointer; the outputs are then left
 *          untouched. A denominator that is not finite (NaN or infinite
 *          input, overflow of a float sum) counts as zero.
 *  - scalar functions (upper-case names) take floats and return one double,
 *    for hosts that cannot pass pointers. The denominator is formed in float
 *    and a zero (or non-finite) denominator returns 0.0. The quotient is
 *    formed in double.
 * The array functions compute in double and store float results; their
 * denominators are formed in double, except the x, y, z sum, which is a float.
 *
 * Reference: the 1960 u equals the 1976 u'; the 1976 v' is 1.5 times the
 * 1960 v.
 */
#ifndef QOMATH_CHROMATICITY_H
#define QOMATH_CHROMATICITY_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* CIE 1976 L*, a*, b*, in this order. */
typedef struct typ_Lab {
    float L;
    float a;
    float b;
} typ_Lab;
QOMATH_STATIC_ASSERT(sizeof(typ_Lab) == 12, typ_Lab_is_three_floats);

/* ---- Array family ---------------------------------------------------------
 * XYZ points at three floats X, Y, Z; a pair at two floats. */

/* xyz[0..2] = X / S, Y / S, Z / S with S = X + Y + Z summed in float.
 * -1 when |S| <= 1e-15. */
QOMATH_API int TristimulusXYZTOCIE1931xyz(const float* XYZ, float* xyz);
/* uv[0..1] = 4X / D, 6Y / D with D = X + 15Y + 3Z (CIE 1960 u, v).
 * -1 when D == 0. */
QOMATH_API int TristimulusXYZToCIE1960uv(const float* XYZ, float* uv);
/* uv[0..1] = 4X / D, 9Y / D with D = X + 15Y + 3Z (CIE 1976 u', v').
 * -1 when D == 0. */
QOMATH_API int TristimulusXYZToUCS1976uv(const float* XYZ, float* uv);
/* From u', v': xy[0..1] = 27u' / E, 12v' / E with E = 18u' - 48v' + 36, and
 * xy[2] = 0 (the caller provides three floats). -1 when E == 0. */
QOMATH_API int UCS1976uvToCIE1931xy(const float* uv, float* xy);
/* From x, y: uv[0..1] = 4x / F, 9y / F with F = 12y - 2x + 3 (u', v').
 * -1 when F == 0. */
QOMATH_API int CIE1931xyToUCS1976uv(const float* xy, float* uv);
/* From x, y: uv[0..1] = 4x / F, 6y / F with F = 12y - 2x + 3 (1960 u, v).
 * -1 when F == 0. */
QOMATH_API int CIE1931xyToUCS1960uv(const float* xy, float* uv);

/* ---- Scalar family: 0.0 for a zero denominator ------------------------- */

/* X / (X + Y + Z) */
QOMATH_API double TRISTIMULUSXYZ_TO_CIE1931X(float X, float Y, float Z);
/* Y / (X + Y + Z) */
QOMATH_API double TRISTIMULUSXYZ_TO_CIE1931Y(float X, float Y, float Z);
/* Z / (X + Y + Z) */
QOMATH_API double TRISTIMULUSXYZ_TO_CIE1931Z(float X, float Y, float Z);
/* 4X / (X + 15Y + 3Z): the 1960 u and the 1976 u' (one function, two names). */
QOMATH_API double TRISTIMULUSXYZ_TO_CIE1960U(float X, float Y, float Z);
QOMATH_API double TRISTIMULUSXYZ_TO_UCS1976U(float X, float Y, float Z);
/* 6Y / (X + 15Y + 3Z) */
QOMATH_API double TRISTIMULUSXYZ_TO_CIE1960V(float X, float Y, float Z);
/* 9Y / (X + 15Y + 3Z) */
QOMATH_API double TRISTIMULUSXYZ_TO_UCS1976V(float X, float Y, float Z);
/* 27u' / (18u' - 48v' + 36) */
QOMATH_API double UCS1976UV_TO_CIE1931X(float u, float v);
/* 12v' / (18u' - 48v' + 36) */
QOMATH_API double UCS1976UV_TO_CIE1931Y(float u, float v);
/* 4x / (12y - 2x + 3): the 1960 u and the 1976 u' (one function, two names). */
QOMATH_API double CIE1931XY_TO_UCS1960U(float x, float y);
QOMATH_API double CIE1931XY_TO_UCS1976U(float x, float y);
/* 6y / (12y - 2x + 3) */
QOMATH_API double CIE1931XY_TO_UCS1960V(float x, float y);
/* 9y / (12y - 2x + 3) */
QOMATH_API double CIE1931XY_TO_UCS1976V(float x, float y);

/* ---- Colour spaces and differences -------------------------------------- */

/* CIE 1976 L*u*v* into luv[0..2].
 * XYZ: the sample, with Y already relative to the white (Y / Yn, so the white
 * itself has Y = 1); uv: the sample's u', v'; XYZ_white: only its Y is looked
 * at, as a validity test; uv_white: the white's u', v'.
 * L* = 116 Y^(1/3) - 16 when Y > 0.008856 (Y compared as a float, so
 * Y = 0.008856f takes the other branch), else 903.3 Y;
 * u* = 13 L* (u' - u'n), v* = 13 L* (v' - v'n).
 * Returns 1; -1 when the white's Y < 1e-15 or a value used is not finite
 * (luv is then cleared to 0), or when a pointer is null (nothing written). */
QOMATH_API int CalculateCIE1976Luv(const float* XYZ, const float* uv, const float* XYZ_white,
                                   const float* uv_white, float* luv);
/* CIE 1976 L*a*b* into lab[0..2].
 * XYZ: the sample, already divided by the white's Yn; XYZ_white: the white,
 * which enters only through Xn / Yn and Zn / Yn. uv and uv_white are not used
 * and may be null; they keep the argument list of CalculateCIE1976Luv.
 * With tx = X / (Xn / Yn), ty = Y, tz = Z / (Zn / Yn) and
 * f(t) = t^(1/3) when t >= 0.008856, else 7.787 t + 16/116:
 * L* = 116 f(ty) - 16, a* = 500 (f(tx) - f(ty)), b* = 200 (f(ty) - f(tz)).
 * Returns 1; -1 when Xn, Yn or Zn < 1e-15 or an input is not finite (lab is
 * then cleared to 0), or when XYZ, XYZ_white or lab is null (nothing
 * written). */
QOMATH_API int CalculateCIE1976Lab(const float* XYZ, const float* uv, const float* XYZ_white,
                                   const float* uv_white, float* lab);
/* CIE 1976 colour difference sqrt(dL*^2 + da*^2 + db*^2); 0 when a pointer
 * is null. */
QOMATH_API float CalculateDeltaE(const typ_Lab* first, const typ_Lab* second);
/* CIEDE2000 difference (kL = kC = kH = 1) of (L1, a1, b1) and (L2, a2, b2)
 * into *delta_e, with two properties hosts' stored results depend on:
 *  - a* is scaled by the fixed factor 1 + 0.5 (1 - sqrt(1.6338827203088156e-25))
 *    = 1.4999999999998 for every input, instead of 1 + G computed from the
 *    samples' mean chroma;
 *  - when the hue angles are more than 180 degrees apart, 360 degrees is
 *    always added to their sum before halving (never subtracted).
 * Returns 1; -1 when delta_e is null, an input is not finite or the
 * difference overflows a float (*delta_e untouched). */
QOMATH_API int GetDeltaE(float L1, float a1, float b1, float L2, float a2, float b2,
                         float* delta_e);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CHROMATICITY_H */
