/*
 * QOMath — correlated colour temperature and the Planckian radiator.
 *
 * CCTCalculate finds the correlated colour temperature of a CIE 1960 (u, v)
 * chromaticity and its signed distance from the Planckian locus by walking a
 * table of 801 isotemperature lines one mired apart (line i at i mired, so
 * line 0 is infinite temperature and line 800 is 1250 K), interpolating in
 * temperature between the two lines that bracket the sample. Each line
 * passes through the Planckian locus (c2 = 1.4388e-2 m K, CIE 1931 2-degree
 * observer summed at 1 nm from 360 to 830 nm) with the slope t of the
 * isotemperature line there; line 0 is Robertson's (u 0.18006, v 0.26352,
 * t -0.24341).
 *
 * The radiator functions take wavelengths in micrometres and use
 * c1 = 37418.32 W um^4 cm^-2 and c2 = 14387.86 um K.
 */
#ifndef QOMATH_CCT_H
#define QOMATH_CCT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Result of CCTCalculate: six floats in this order. CCTCalculate takes a
 * float pointer to six floats; a typ_cct may be passed as (float*)&record. */
typedef struct typ_cct {
    float cct;     /* correlated colour temperature, K */
    float mired;   /* 1e6 / cct */
    float steps;   /* |duv| / 0.000353 (just-noticeable steps); -1 when not computed */
    float duv;     /* signed distance from the locus in (u, v); negative when
                      the sample lies below it (locus v greater than sample v) */
    float u_locus; /* CIE 1960 u of the nearest locus point */
    float v_locus; /* CIE 1960 v of the nearest locus point */
} typ_cct;
QOMATH_STATIC_ASSERT(sizeof(typ_cct) == 6 * sizeof(float), typ_cct_is_six_floats);

/* Status codes of CCTCalculate. On every failure the record keeps its
 * cleared values: all 0 and steps = -1. */
enum {
    QOMATH_CCT_OUTSIDE_TABLE = -1,     /* u < 0.18006 or v < 0.26352 (the point of the
                                          first line), u or v not finite, or a null pointer */
    QOMATH_CCT_FIRST_LINE_NORM = -2,   /* the first line has a zero norm sqrt(1 + t^2) */
    QOMATH_CCT_LINE_NORM = -3,         /* another line has a zero norm; with -2 reserved:
                                          the built-in table never has one */
    QOMATH_CCT_ON_LINE = -4,           /* the sample lies on a line (|distance| < 1e-12) */
    QOMATH_CCT_NO_BRACKET = -5,        /* no line up to 800 mired changes side: redder
                                          than 1250 K */
    QOMATH_CCT_DEGENERATE = -6,        /* the bracketing distances differ by < 1e-9 */
    QOMATH_CCT_ZERO_MIRED_UPPER = -7,  /* the redder bracketing line is at 0 mired */
    QOMATH_CCT_ZERO_MIRED_LOWER = -8   /* the bluer bracketing line is at 0 mired: the
                                          sample is hotter than 1e6 K */
};

/* Correlated colour temperature of uv[0..1] (CIE 1960 u, v) into result[0..5]
 * (layout typ_cct). The walk goes through the lines from 0 mired upwards and
 * stops at the first that lies on the other side of the sample; the signed
 * distance to a line is ((v - v_i) - t_i (u - u_i)) / sqrt(1 + t_i^2), taken
 * with the opposite sign for lines of positive slope (past the top of the
 * locus near 616 mired), so that it keeps its sign from one line to the next.
 * With f = d(i-1) / (d(i-1) - d(i)) the result is interpolated linearly in
 * temperature between the two lines (1/mired = (1/M_i - 1/M_{i-1}) f +
 * 1/M_{i-1}, |mired| clamped to 1e-6..1e9), and the locus point linearly in
 * u and v; duv is the distance to that point, negative when the locus point
 * has the larger v, and steps = |duv| / 0.000353.
 * The six outputs are cleared first (steps = -1). When the bracketing
 * distances differ by less than 1e-7 only cct and mired are written (steps
 * stays -1, the rest 0) and 1 is returned. Nothing is written when result is
 * null. */
QOMATH_API int CCTCalculate(const float* uv, float* result);

/* Wavelength of peak exitance of a Planckian radiator, in metres:
 * 1.9864775901806078e-25 / (T * 6.856665e-23). -1.0 when T <= 0 or
 * T > 100000 (or T not finite). */
QOMATH_API float WeinDisplacementLaw(float temperature);

/* Spectral exitance c1 / (lambda^5 (exp(c2 / (lambda T)) - 1)) of a
 * Planckian radiator at n + 1 wavelengths lambda = wl_start + i * wl_step
 * (um, computed in float), n = ceil((wl_end - wl_start) / wl_step), into
 * out[0..n]; 0 at wavelengths of 0 or below. Returns
 *    1  success
 *   -1  wl_start >= wl_end (or a wavelength not finite)
 *   -2  wl_step <= 0 (or not finite)
 *   -3  out is null
 *   -4  more than 9998 steps (n > 9998)
 *   -5  T <= 0 or T > 100000 (or not finite)
 * Nothing is written on failure. */
QOMATH_API int BlackBodyCurve(float temperature, float wl_start, float wl_end, float wl_step,
                              float* out);

/* Radiant exitance (W cm^-2) of a Planckian radiator between wl_1 and wl_2
 * (um): with x1 = c2 / (T wl_1), x2 = c2 / (T wl_2) and
 * P(z) = ((z + 3) z + 6) z + 6, T^4 * 2.77939069262783e-13 * pi times the
 * sum over k >= 1 of [e^(-k x2) P(k x2) - e^(-k x1) P(k x1)] / k^4, stopped
 * when a term is at most 1e-8 of the sum (or after a million terms).
 * 0 when wl_1 >= wl_2, or when T or a wavelength is not positive and
 * finite. */
QOMATH_API float WattFlux(float temperature, float wl_1, float wl_2);

/* Temperature derivative of the band exitance of WattFlux: the same series
 * with Q(z) = (((z + 4) z + 12) z + 24) z + 24 in place of P, times
 * (c1 / c2^4) T^3. 0 in the same cases as WattFlux. */
QOMATH_API float WattDerivative(float temperature, float wl_1, float wl_2);

/* Colour of a Planckian radiator: its spectrum from 0.36 to 0.83 um in
 * 0.001 um steps, taken as a spectrum on 360..830 nm at 1 nm, gives
 * X, Y, Z (CIE 1931 2 degree) into xyz_tristimulus[0..2], x, y, z into
 * xyz_chromaticity[0..2], CIE 1960 u, v into uv_1960[0..1] and CIE 1976
 * u', v' into uv_1976[0..1]. The outputs are cleared first; those computed
 * before a failure are kept. Returns
 *    1  success
 *   -1  the radiator curve failed (temperature out of range)
 *   -2  the tristimulus calculation failed, or an output pointer is null
 *       (then nothing is written)
 *   -3  |X + Y + Z| <= 1e-15
 *   -4  zero denominator of u, v
 *   -5  zero denominator of u', v' */
QOMATH_API int BlackBodyToCIEUCS(float temperature, float* xyz_tristimulus, float* xyz_chromaticity,
                                 float* uv_1960, float* uv_1976);

/* Planckian locus at temperatures[0..n-1]: for each, BlackBodyToCIEUCS, then
 * the pair of the chosen system into first[k], second[k]:
 *   system 0: x, y; 1: CIE 1960 u, v; 2: CIE 1976 u', v'.
 * Any other system value writes nothing (the temperatures are still
 * checked). Returns 1, -99 when n < 1 (or a pointer is null), or the first
 * failure of BlackBodyToCIEUCS (the pairs before it are written). */
QOMATH_API int BlackBodyLocus(int system, const float* temperatures, int n, float* first,
                              float* second);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_CCT_H */
