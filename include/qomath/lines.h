/*
 * QOMath — emission lines of calibration lamps.
 *
 * Wavelength (nm, to 0.1 nm) and relative intensity of the lines of an argon
 * and a mercury lamp, for checking a wavelength calibration or simulating a
 * line scan. The tables are constant; both functions are safe to call from
 * several threads.
 */
#ifndef QOMATH_LINES_H
#define QOMATH_LINES_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Lamp types of GetTransitionLineList. */
enum {
    QOMATH_LAMP_ARGON = 0,  /* 19 lines, 696.5 .. 965.8 nm */
    QOMATH_LAMP_MERCURY = 1 /* 10 lines, 253.7 .. 579.1 nm */
};
#define QOMATH_ARGON_LINES 19
#define QOMATH_MERCURY_LINES 10

/*
 * Writes the lines of lamp `type` in increasing wavelength and their count.
 * The arrays must hold QOMATH_ARGON_LINES or QOMATH_MERCURY_LINES values.
 * Returns 1 for types 0 and 1; 0, nothing written, when a pointer is null.
 * Any other type (compared unsigned, so negative ones too) writes nothing
 * and returns the type itself; hosts test for that echo.
 */
QOMATH_API int GetTransitionLineList(int type, float* wavelengths, float* intensities, int* count);

/*
 * The relative intensity of a lamp line in the 0.1 nm cell of `wavelength`,
 * else 0, from a simulated spectrum on 250.0 .. 1700.0 nm in 0.1 nm steps.
 * The wavelength is cut to one decimal, w = trunc(wavelength * 10) / 10
 * (stored as float). Grid point i lies at g = (float)(i * 0.1 + 250.0); it
 * holds the intensity of the argon line, then (winning a tie) the mercury
 * line, whose trunc(nm * 10) equals trunc(g * 10), products taken in double
 * from the float values. The answer is point trunc((w - 250.0) / 0.1).
 * Values not exactly representable may thus fall into the neighbouring cell;
 * hosts depend on these cells. 0 outside 250..1700 nm and for NaN.
 */
QOMATH_API float GenerateSimulatedTransitionLines(float wavelength);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_LINES_H */
