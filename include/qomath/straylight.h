/*
 * QOMath — stray-light correction.
 *
 * The 2-D matrix record typ_matrix2d that the stray-light family shares with
 * the numerical toolkit is declared in qomath/interpolation.h, where the
 * functions that resample it live; this header includes it.
 */
#ifndef QOMATH_STRAYLIGHT_H
#define QOMATH_STRAYLIGHT_H

#include "qomath/interpolation.h"

#endif /* QOMATH_STRAYLIGHT_H */
