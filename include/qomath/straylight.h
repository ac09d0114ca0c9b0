/*
 * QOMath — stray-light correction: records shared with the numerical toolkit.
 */
#ifndef QOMATH_STRAYLIGHT_H
#define QOMATH_STRAYLIGHT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_MATRIX2D_MAX_AXIS 1024
/* Number of values the record holds; rows * cols must not exceed it. */
#define QOMATH_MATRIX2D_CAPACITY 543251

/*
 * A 2-D matrix over two wavelength axes (for example excitation by emission),
 * 2,181,204 bytes, the size hosts allocate and write to disk.
 *   rows, rowWl[0..rows-1]: the row count and the row wavelengths (nm, increasing)
 *   cols, colWl[0..cols-1]: the column count and the column wavelengths
 *   values: element (r, c) at values[r * cols + c], row-major
 */
typedef struct typ_matrix2d {
    int rows;
    float rowWl[QOMATH_MATRIX2D_MAX_AXIS];
    int cols;
    float colWl[QOMATH_MATRIX2D_MAX_AXIS];
    float values[QOMATH_MATRIX2D_CAPACITY];
} typ_matrix2d;
QOMATH_STATIC_ASSERT(sizeof(typ_matrix2d) == 2181204, typ_matrix2d_size);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_STRAYLIGHT_H */
