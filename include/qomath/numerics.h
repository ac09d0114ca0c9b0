/*
 * QOMath — numerical toolkit: polynomial tools and linear algebra.
 *
 * Two matrix conventions are in use:
 *  - flat matrices (MatrixMultiplication, MatrixGaussJordan, the VB_ entry
 *    points, the loaded matrix): row-major float arrays, element (r, c) at
 *    r * cols + c, indices from 0;
 *  - row-pointer matrices (SVDCMP, LUDCMP, LUBKSB): arrays of row pointers
 *    indexed from 1 (a[1..m][1..n]) and vectors indexed from 1, the classic
 *    numerical-methods convention. A caller passing p uses p[1..n].
 * The Neville kernel (PolInt, CPolyFit::PolynomialInt) also counts from 1.
 */
#ifndef QOMATH_NUMERICS_H
#define QOMATH_NUMERICS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Polynomial tools ------------------------------------------------- */

/* Neville interpolation through xa[1..n], ya[1..n] at x: *y the value, *dy
 * the last correction (an error estimate). Returns 1; 0 when n < 1 or a
 * pointer is null (*y untouched), when two abscissae coincide
 * (|difference| < 1e-18; *y then holds the partial result), or when scratch
 * memory cannot be had. */
QOMATH_API int PolInt(float* xa, float* ya, int n, float x, float* y, float* dy);
/* Coefficients cof[0..n] (increasing powers) of the polynomial of degree n
 * through the n + 1 points xa[0..n], ya[0..n]. Returns 1 (also for n < 0,
 * when nothing is written); 0 when a pointer is null; -4 when scratch memory
 * cannot be had. */
QOMATH_API int PolCof(float* xa, float* ya, int n, float* cof);
/* *y = cof[0] + cof[1] x + ... + cof[n-1] x^(n-1) (n coefficients, Horner,
 * in float). Returns 1; 0 when n < 1 or a pointer is null (*y untouched). */
QOMATH_API int PolynomialValue(float* cof, int n, float x, float* y);

/* Least-squares line y = a + b x over n points (single precision, no checks
 * on equal abscissae). Returns 1; 0 when n < 1 or a pointer is null. */
QOMATH_API int fitLinear(float* x, float* y, int n, float* a, float* b);
/* Least-squares polynomial of the given order (normal equations, Gaussian
 * elimination with partial pivoting). The order fitted is
 * m = min(order, n - 1, 25); cof[0..m] and *usedOrder = m. Coefficients below
 * 1e-15 in magnitude are stored as 0. Returns 1 (also for n = 0, when only
 * cof[0] and *usedOrder are cleared); -1 for null pointers; -4 when scratch
 * memory cannot be had. */
QOMATH_API int RegressionPolyFit(const float* x, const float* y, int n, int order, float* cof,
                                 int* usedOrder);
/* sum_{i=0..order} cof[i] x^i (sum in double). *y is cleared, then receives
 * the value, which is also returned; 0 for order < 0 or cof null. y may be
 * null. */
QOMATH_API float RegressionGetY(const float* cof, int order, float x, float* y);
/* Inverse of a calibration polynomial: the abscissa at which it gives y.
 * n < 1 gives 0. n == 2 or |cof[2]| < 1e-15: linear path (y - cof[0]) / cof[1]
 * (0 when |cof[1]| <= 1e-10), *x not written. Any other n (1 and 3 and more
 * alike; hosts pass the coefficient count and depend on exactly this test):
 * the quadratic root (sqrt(D) - cof[1]) / (2 cof[2]) with
 * D = cof[1]^2 - 4 cof[2] (cof[0] - y); 0 when D <= 0 or the root is <= 0;
 * otherwise the root is stored in *x and returned. *x is cleared first; x may
 * be null. 0 also when cof is null. */
QOMATH_API double RegressionGetXWLCal(const float* cof, int n, float* x, float y);

/* ---- Linear algebra --------------------------------------------------- */

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

#include <vector>

/* Polynomial tools as a class. The object holds no data; every operation is a
 * plain computation on the caller's arrays, so the members are static and may
 * also be called through an instance. */
class QOMATH_API CPolyFit {
public:
    /* Neville interpolation; see PolInt. */
    static int PolynomialInt(float* xa, float* ya, int n, float x, float* y, float* dy);
    /* Interpolating-polynomial coefficients; see PolCof. */
    static int PolynomialCof(float* xa, float* ya, int n, float* cof);
    /* *y = polynomial of the n coefficients cof[0..n-1] at x (Horner); 1.
     * For n < 1, *y = 0. 0 when y is null, or cof is null and n >= 1. */
    static int PolyVal(float* cof, int n, float x, float* y);
    /* Value and derivatives of the polynomial of degree nc (coefficients
     * cof[0..nc]) at x: pd[0] the value, pd[1..nd] the first to nd-th
     * derivatives (pd holds nd + 1 floats). Returns 1; 0 when nc < 0, nd < 0
     * or a pointer is null. */
    static int ddpoly(float* cof, int nc, float x, float* pd, int nd);
    /* As PolyVal, but 0 (*y untouched) when n < 1; see PolynomialValue. */
    static int PolynomialValues(float* cof, int n, float x, float* y);
    /* Least-squares quadratic y = cof[0] + cof[1] x + cof[2] x^2.
     * Returns 1; -1 fewer than 3 points in either vector, or cof null;
     * -2 sizes differ (tested after -1); -3 |determinant of the normal
     * equations| < 1e-10. */
    static int PolyFit2ndOrder(const std::vector<double>& x, const std::vector<double>& y,
                               double* cof);
};

#endif /* __cplusplus */

#endif /* QOMATH_NUMERICS_H */
