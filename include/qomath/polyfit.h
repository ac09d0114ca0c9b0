/*
 * QOMath — polynomial tools: Neville interpolation, interpolating-polynomial
 * coefficients, evaluation with derivatives, least-squares fits and the
 * inverse of a calibration polynomial.
 *
 * The Neville kernel (PolInt, CPolyFit::PolynomialInt) takes arrays indexed
 * from 1, the classic numerical-methods convention: a caller passing p uses
 * p[1..n]. Coefficient arrays run in increasing powers.
 */
#ifndef QOMATH_POLYFIT_H
#define QOMATH_POLYFIT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#endif /* QOMATH_POLYFIT_H */
