/*
 * QOMath — dominant wavelength and purity.
 *
 * The dominant wavelength of a colour is where the straight line from a
 * white point through the sample's CIE 1931 (x, y) meets the spectrum locus,
 * searched on the 0.1 nm CIE 1931 locus (3401 points, 360..700 nm; see
 * GetCIE1931InterpolatedData). For a purple, whose line from the white meets
 * the purple line instead, the complementary wavelength is reported as a
 * negative number: the locus is met on the far side of the white, as if
 * sample and white were exchanged.
 *
 * Valid chromaticities lie inside the bounding box of the locus
 * (x_min <= x <= x_max, y_min <= y <= y_max) and on or above the purple
 * line from (0.17556, 0.0053) to (0.73469, 0.26531):
 *     y >= 0.26531 - 0.73469 s + x s,  s = 0.46502602100372314.
 * NaN and infinite coordinates are never valid. Nothing more is checked: a
 * sample inside the box but outside the spectrum locus is searched like any
 * other, and what the line meets beyond it is no dominant wavelength in the
 * usual sense.
 *
 * A sample is a purple when it does not lie above the white and the line
 * through both meets the purple line between its ends. The whole line
 * counts, not only the part beyond the sample; for whites with
 * y > 0.26531 the two readings agree. The ends of the locus fall on the
 * edge: its 360 nm point (y = 0.00529) lies just below the purple line and
 * is not valid, its 699 and 700 nm points lie on it and count as purples.
 *
 * All functions compute in double and store float results. None keeps state
 * between calls; all may run on several threads at once.
 */
#ifndef QOMATH_DOMINANT_H
#define QOMATH_DOMINANT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Status codes of DominantWavelength2 (and its two other names). */
enum {
    QOMATH_DOMINANT_FOUND = 1,          /* the locus was met */
    QOMATH_DOMINANT_NOT_FOUND = 0,      /* no locus segment meets the line */
    QOMATH_DOMINANT_BAD_SAMPLE = -1,    /* sample not valid, or a null pointer */
    QOMATH_DOMINANT_BAD_WHITE = -2,     /* white point not valid */
    QOMATH_DOMINANT_BAD_WAVELENGTH = -90, /* the hit lies beyond 360..700 nm */
    QOMATH_DOMINANT_BAD_LOCUS_X = -91,  /* the hit's x lies outside the locus box */
    QOMATH_DOMINANT_BAD_LOCUS_Y = -92   /* the hit's y lies outside the locus box */
};

/*
 * Dominant wavelength of sample (x, y) seen from white (x, y).
 *   locus_point  three floats: the (x, y) where the line meets the locus,
 *                then 0
 *   wavelength   the dominant wavelength in nm, 360..700; for a purple the
 *                complementary wavelength, negated (-700..-360), with
 *                locus_point on the complementary side
 * Both outputs are cleared on entry, so every status other than 1 leaves
 * 0 behind.
 *
 * When the two x values differ by less than 1e-5, the sample's x is moved
 * down by 1e-5 and the white's x up by 1e-5, in the caller's arrays: hosts
 * read the adjusted values back, and the move keeps the line from being
 * vertical. For a purple the roles are exchanged, so then the white moves
 * down and the sample up.
 *
 * The line meets the locus at segment j (points j, j + 1 of the 0.1 nm
 * locus); the wavelength is 360 + 0.1 j + 0.1 |x_hit - x_j| / |x_j - x_j+1|.
 * The locus does not move between 699 and 700 nm: a hit on a segment there
 * has no wavelength and gives -90.
 *
 * Returns QOMATH_DOMINANT_* above: 1 found, 0 not found (no locus point on
 * the far side of the sample, or no segment meets the line; outputs 0), -1 when
 * the sample is not valid or any pointer is null, -2 when the white is not
 * valid, -90, -91, -92 when the hit fails its checks (outputs cleared).
 */
QOMATH_API int DominantWavelength2(float* sample, float* white, float* locus_point,
                                   float* wavelength);
/* DominantWavelength2 under its two older names. */
QOMATH_API int DominantWavelength(float* sample, float* white, float* locus_point,
                                  float* wavelength);
QOMATH_API int DominantWavelengthExtended(float* sample, float* white, float* locus_point,
                                          float* wavelength);

/*
 * Layout of the eight floats ExcitationColorimetricPurity works on: the
 * sample, the white and the locus point of DominantWavelength2 (y values
 * first, then x values), then the two results.
 */
typedef struct typ_purity {
    float y;
    float y_white;
    float y_locus;
    float x;
    float x_white;
    float x_locus;
    float excitation_purity;   /* output */
    float colorimetric_purity; /* output */
} typ_purity;
QOMATH_STATIC_ASSERT(sizeof(typ_purity) == 32, typ_purity_is_eight_floats);

/*
 * Excitation and colorimetric purity from record[0..5] (the first six fields
 * of typ_purity, in that order) into record[6] and record[7]:
 *   pe = (y - y_white) / (y_locus - y_white)  when (y - y_white) > (x - x_white)
 *        (x - x_white) / (x_locus - x_white)  otherwise
 *   pc = y_locus * pe / y
 * The choice compares the signed differences, not their magnitudes; stored
 * results depend on that, so a sample below and left of the white takes the
 * x ratio even when y moves more.
 * Returns 1; 0 (both results 0) when |y_locus - y_white|, |x_locus - x_white|
 * or |y| is below 1e-19, when an input is not finite or when a result does
 * not fit a float; -1 for a null pointer.
 */
QOMATH_API int ExcitationColorimetricPurity(float* record);

/* Dominant wavelength of the spectrum (x, y) seen from the white point
 * selected by option: 0 equal energy (1/3, 1/3), 1 D65 (0.31271, 0.32902),
 * 2 A (0.44757, 0.40745), 3 C (0.31006, 0.31616), the numbering of the
 * QOMATH_WHITE_* values of summary.h. CIE 1931 X, Y, Z by
 * CalcTristimulusXYZ1931_2, then x, y, then DominantWavelength2. Returns
 * the wavelength in nm (negative for the complementary wavelength of a
 * purple); 0 for a null pointer, an unknown option, or when any of the
 * three steps fails. Goes through the interpolation cache, as the
 * tristimulus functions do. */
QOMATH_API float ComputeDominantWLoptions(float* x, float* y, int n, int option);

#define QOMATH_WHITE_LED_SAMPLE_POINTS 1024

/*
 * Copies the stored example spectrum, 1024 signed 32-bit raw detector
 * counts (4096 bytes), to out. It is test data for hosts' display and peak
 * code, not a measurement: a synthetic raw spectrum of a white LED
 * (blue die and yellow phosphor) on a 1024-pixel silicon array, with the
 * array's dark offset and noise; first value 2157, largest 53016.
 * Returns 1; -1 (nothing written) for a null pointer.
 */
QOMATH_API int GetPelkinWLSpectralSample(void* out);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_DOMINANT_H */
