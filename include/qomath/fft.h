/*
 * QOMath — Fourier transform, convolution, modulation transfer function and
 * the decimal greatest common factor `lcf`.
 *
 * Indexing: FFTDiscrete works on data[1..2nn] (indexed from 1: complex point
 * k is data[2k+1] + i data[2k+2], k = 0..nn-1; data[0] and data beyond 2nn
 * are never touched). Every other function works from index 0. Complex
 * arrays are interleaved (real, imaginary).
 *
 * Sign convention: isign +1 computes X_j = sum_k x_k e^{+2 pi i jk/n},
 * isign -1 computes e^{-2 pi i jk/n} (numpy's fft); no normalisation.
 *
 * Nothing is written on any refusal. Count products (2nn, na + nb - 1,
 * rows * cols) are checked without overflowing.
 */
#ifndef QOMATH_FFT_H
#define QOMATH_FFT_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* In-place complex transform of nn points in data[1..2nn] (see above).
 * Powers of two run a radix-4 transform on per-size twiddle tables built
 * once per process (thread-safe); an even nn that is not a power of two
 * gets the exact transform of nn points as well (chirp-z).
 * Returns, checked in this order: 1 when nn < 5; 2 when nn is odd; 3 when
 * isign is neither 1 nor -1; 4 when data is null; 5 when scratch memory
 * cannot be had; else 0 (done).
 * A forward then inverse transform multiplies by nn. */
QOMATH_API int FFTDiscrete(float* data, unsigned nn, int isign);

/* Rotates data[0..n-1] (n floats) so that element 0 lands at index n/2:
 * out[i] = in[(i + n - n/2) mod n]. Even n swaps the halves; odd n follows
 * numpy's fftshift. For the output of FFTDiscrete pass data + 1 and 2nn,
 * which centres zero frequency on complex point nn/2.
 * Returns 1; -1 when data is null or n < 1. */
QOMATH_API int FFTDiscreteShift(float* data, int n);

/* Transform of the real data[0..n-1] with the e^{-2 pi i jk/n} sign, any
 * n >= 1; data are only read.
 *   mode 0: out[0 .. 2(n/2)+1] = the n/2 + 1 bins j = 0..n/2 interleaved
 *           (real, imaginary), numpy's rfft;
 *   mode 1: out[0 .. n/2] = their magnitudes.
 * Returns 1; -1 when a pointer is null, n < 1 or mode is not 0 or 1;
 * -2 when scratch memory cannot be had. */
QOMATH_API int FFTDiscrete2(float* data, int n, float* out, int mode);

/* Full linear convolution, out[k] = sum over i of a[i] * b[k - i] for
 * k = 0 .. na+nb-2 (numpy's convolve), sums in float in increasing i.
 * out must not overlap a or b.
 * Returns 1; -1 when a pointer is null, na < 1, nb < 1 or
 * nOut != na + nb - 1; -2 when scratch memory (a padded copy of b) cannot be
 * had. */
QOMATH_API int convolution_1d(float* a, int na, float* b, int nb, float* out, int nOut);
/* The same on doubles, sums in double. */
QOMATH_API int convolution_1dD(double* a, int na, double* b, int nb, double* out, int nOut);

/* Two-dimensional convolution of a row-major image (rows x cols) with a
 * row-major kernel (krows x kcols), the kernel flipped as in 1-D and centred
 * at (krows/2, kcols/2):
 *   out[r][c] = sum over u, v of kernel[u][v] * img[r + krows/2 - u][c + kcols/2 - v],
 * out rows x cols like the image. Edges: pixels outside the image count as
 * 0 (the centred part of the full linear convolution), so a separable kernel
 * gives the same as its two 1-D passes everywhere. Sums in double.
 * out must not overlap img or kernel.
 * Returns 1; -1 when a pointer is null, a size is below 1, the kernel is
 * larger than the image either way, or rows * cols exceeds the address range. */
QOMATH_API int convolution_2dD(double* img, int rows, int cols, double* kernel, int krows,
                               int kcols, double* out);

/* Edge rules of `convolution`. */
enum {
    QOMATH_CONV_EDGE_ZERO = 0,   /* values beyond the ends are 0 */
    QOMATH_CONV_EDGE_REPEAT = 1, /* the end values repeat */
    QOMATH_CONV_EDGE_MIRROR = 2  /* mirrored about the end samples: ... y2 y1 | y0 y1 y2 ... */
};

/* In-place convolution of data[0..n-1] with a centred kernel[0..nk-1]:
 *   data[i] = sum over j of kernel[j] * x[i + nk/2 - j]
 * (the kernel flipped and centred at nk/2, as convolution_2dD), where x
 * beyond the ends follows `edges` (QOMATH_CONV_EDGE_*). With normalise != 0
 * the kernel is first divided by its sum, so a constant passes unchanged.
 * Sums in double.
 * Returns 1; -1 when a pointer is null, n < 1, nk < 1, edges is unknown or
 * normalise is set and the kernel sum's magnitude is not above 1e-20;
 * -2 when scratch memory cannot be had. */
QOMATH_API int convolution(float* data, int n, const float* kernel, int nk, int edges,
                           int normalise);

/* Squared transfer magnitude of an edge spread, as hosts have always
 * received it:
 *  1. the input is differentiated: complex point i = (in[i+1] - in[i], 0)
 *     for i = 0..n-2, point n-1 = (0, 0);
 *  2. FFTDiscrete(isign 1, nn = n) is applied with the array handed over as
 *     it is, so the transform takes the floats one later than the pairs
 *     were laid out (scratch of 2n + 1 floats keeps this inside); for odd n
 *     no transform happens;
 *  3. each float beyond +-1e10 is clamped to +-1e10;
 *  4. out[i] = re^2 + im^2 of point i, i = 0..n-2 (n - 1 values, squared,
 *     not normalised).
 * Odd n therefore gives out[i] = the clamped (in[i+1] - in[i])^2. step is
 * only validated; the frequency of out[i] is i / (n * step) cycles per unit
 * of step.
 * Returns 1; -1 when in or out is null; -2 when n < 5; -3 when
 * step < 1e-10; -4 when scratch memory cannot be had. */
QOMATH_API int MTF_1d(const float* in, int n, float step, float* out);

/* Greatest common factor of a and b on the decimal grid 10^decimals:
 * both are scaled by 10^-decimals and floored to integers, then Euclid's
 * algorithm runs on the remainders; the result is 10^decimals times the
 * last divisor (the divisor itself when the first remainder is 0:
 * lcf(6, 3, 0) = 3). lcf(0.5, 0.75, -2) = 0.25.
 * 0 when a value is NaN or infinite (checked first); then |a| < 1e-15
 * returns b and |b| < 1e-15 returns a (as given); 0 when |decimals| > 10 or
 * a scaled floor lies beyond 32-bit range; a value that floors to 0 makes
 * the other floor the answer. */
QOMATH_API float lcf(float a, float b, int decimals);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_FFT_H */
