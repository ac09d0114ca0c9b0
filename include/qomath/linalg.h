/*
 * QOMath — linear algebra: product, Gauss-Jordan inversion, singular value
 * decomposition, LU decomposition and the process-wide loaded matrix.
 *
 * Two matrix conventions are in use:
 *  - flat matrices (MatrixMultiplication, MatrixGaussJordan, the VB_ entry
 *    points, the loaded matrix): row-major float arrays, element (r, c) at
 *    r * cols + c, indices from 0;
 *  - row-pointer matrices (SVDCMP, LUDCMP, LUBKSB): arrays of row pointers
 *    indexed from 1 (a[1..m][1..n]) and vectors indexed from 1, the classic
 *    numerical-methods convention. A caller passing p uses p[1..n].
 */
#ifndef QOMATH_LINALG_H
#define QOMATH_LINALG_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* C = A B for flat matrices. C is first zeroed over rowsB * colsB elements
 * (the element count of B, not of the product: size C for the larger of the
 * two). Sums in double. Returns 1; -1 when colsA != rowsB, a count is negative
 * or a pointer is null. */
QOMATH_API int MatrixMultiplication(float* A, int rowsA, int colsA, float* B, int rowsB,
                                    int colsB, float* C);
/* Gauss-Jordan elimination with full pivoting: a (n x n) is replaced by its
 * inverse, b (n x m) by the solutions of a X = b. Returns 1; -1 singular (a
 * and b then hold partial results); -3 scratch allocation failure; -4 a or b
 * null, n < 1 or m < 0. */
QOMATH_API int MatrixGaussJordan(float* a, int n, float* b, int m);
/* Singular value decomposition A = U W V^T (Golub-Kahan-Reinsch) of the
 * row-pointer matrix a[1..m][1..n]: a becomes U, w[1..n] the singular values
 * (non-negative, unsorted), v[1..n][1..n] the matrix V (not its transpose).
 * At most 30 QR iterations per value; values reached then stand (no error).
 * Nothing is done for m < 1, n < 1, a null pointer or row pointer, or when
 * scratch memory cannot be had. */
QOMATH_API void SVDCMP(float** a, int m, int n, float* w, float** v);
/* LU decomposition (Crout, implicit row scaling, partial pivoting) of the
 * row-pointer matrix a[1..n][1..n], in place. indx[1..n] records the row
 * permutation, *d is +1 or -1 by the parity of interchanges. A zero pivot is
 * replaced by 1e-20 so that the solve can go on.
 * Returns 1; -1 for null pointers (row pointers a[1..n] included) or n < 1;
 * -3 when a row is entirely zero (singular; a, indx and *d are untouched);
 * -4 when scratch memory cannot be had. */
QOMATH_API int LUDCMP(float** a, int n, int* indx, float* d);
/* Solves A x = b with the output of LUDCMP; b[1..n] is replaced by x.
 * Returns 1; -1 for null pointers (row pointers a[1..n] included) or n < 1;
 * -2 when an entry of indx[1..n] lies outside 1..n (b untouched). */
QOMATH_API int LUBKSB(float** a, int n, const int* indx, float* b);

/* ---- The loaded matrix ---------------------------------------------------
 * One process-wide row-major store of at most 500 floats for hosts that pass
 * no pointers. It is filled one row per MatrixLoad call (row 0 starts a new
 * matrix), stays alive until MatrixClear or the next row-0 load, and is read
 * by MatrixGetElement, VB_MatrixGaussJordan and VB_SVDCMP. Not thread-safe:
 * the host serialises calls to these functions. */

/* Copies cols floats from `row` into row rowIndex of the loaded matrix.
 * Returns 1; -1 rows < 1 or cols < 1; -2 row is null; -3 rows * cols > 500;
 * -4 rowIndex outside 0..rows-1; -5 no store fits (no row 0 was loaded since
 * the last clear, or the store was started with other dimensions);
 * -6 allocation failure. */
QOMATH_API int MatrixLoad(const float* row, int rows, int cols, int rowIndex);
/* Releases the loaded matrix. */
QOMATH_API void MatrixClear(void);
/* Element [row][col] of the loaded matrix, i.e. element row * cols + col of
 * the store; -9999933440.0f (bits 0xD01502B8) when there is no store or that
 * element lies outside it. */
QOMATH_API float MatrixGetElement(int row, int col);
/* Inverts the loaded n x n matrix into out (n * n floats); the loaded matrix
 * is unchanged. Element (r, c) is the one MatrixGetElement(r, c) reads, so a
 * larger loaded matrix gives its top-left n x n block. Returns 1; -1 bad size
 * (n < 1, n more than the loaded rows or columns), no loaded matrix, or out
 * null; -2 allocation failure; -3 singular (out then holds partial results). */
QOMATH_API int VB_MatrixGaussJordan(float* out, int n);
/* Decomposes the loaded m x n matrix with SVDCMP and writes, row-major, U
 * (m * n floats), then the n singular values, then V (n * n floats) into out,
 * which must hold m * n + n + n * n floats. The loaded matrix is unchanged;
 * as for VB_MatrixGaussJordan, a larger one gives its top-left m x n block.
 * Returns 1; -1 bad size (m < 1, n < 1, m more than the loaded rows, n more
 * than the loaded columns), no loaded matrix, or out null; -2 allocation
 * failure. */
QOMATH_API int VB_SVDCMP(float* out, int m, int n);

#define QOMATH_MATRIX_NO_ELEMENT (-9999933440.0f)

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* QOMATH_LINALG_H */
