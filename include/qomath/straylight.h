/*
 * QOMath — stray-light correction.
 *
 * The matrix method: the line-spread function (LSF) of a pixel, outside its
 * in-band region and divided by its in-band sum, is the pixel's spectral
 * stray-light distribution (SDF); the SDFs of all pixels, one per column,
 * make the n x n matrix D, and a measured pixel vector y is corrected by
 * C y with C = (I + D)^-1. Matrices are dense and row-major (element (r, c)
 * at r * n + c): double while built, float in the C-matrix files.
 *
 * State: one process-wide working matrix (StrayLightInitializeMatrix ..
 * StrayLightDeleteMatrix) and the noise generator of the synthetic LSF; no
 * locking, the host serialises these calls. Everything else is re-entrant.
 * Pointers are not checked for null.
 *
 * Files (numbers always in the "C" format, lines end in LF; every file is
 * written to a temporary file beside the target and renamed over it when
 * complete, and a failure after the file was opened returns the open-failure
 * code):
 *   LSF file        "%d\n" peak pixel, "%d\n" count n, n lines "%f\n".
 *   SDF matrix      n rows of n "%e" values separated by ",", each row ending "\n".
 *   C-matrix text   s = trunc(sqrt(count)) rows of s values, "%f," and the
 *                   last "%f\n".
 *   C-matrix binary ("slmatrix.bin"): no header, little-endian IEEE 754 floats,
 *                   row-major; the correction uses 1024 x 1024 = 4,194,304 bytes.
 * Readers read the file whole and parse it in memory with the fixed line
 * buffers their files have always been read with: a line longer than the
 * buffer is read in pieces, each piece counting as a line.
 */
#ifndef QOMATH_STRAYLIGHT_H
#define QOMATH_STRAYLIGHT_H

#include "qomath/interpolation.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- LSF and SDF ------------------------------------------------------------------ */

/* Zeroes out[0..n-1], then writes out[0..1023] whatever n is (the synthetic
 * detector has 1024 pixels; out must hold 1024): for x = k - peakPixel,
 * exp(-x^2 / (2 sa^2)) / sqrt(2 pi sa^2) + 2 exp(-x^2 / (2 sb^2)) / sqrt(2 pi sb^2)
 * + r / 3.2767e7, with r from the library's own 15-bit generator (0..32767,
 * the same sequence on every platform). Returns 1. */
QOMATH_API int StrayLightGenerateSyntheticLSF(double* out, unsigned n, unsigned peakPixel,
                                              double sigmaA, double sigmaB);

/* One LSF to one SDF column, p = peakPixel, h = inBandHalfWidth:
 *  1. LSFsmoothConvolution(lsf, n, applyConvolution, convolutionWidth,
 *     convolutionThreshold) in place (its result is not used);
 *  2. a float copy; points i < p - maxLeft and i > p + maxRight zeroed
 *     (compared signed: a window reaching past pixel 0 zeroes nothing there);
 *  3. applyBoxcar: BoxcarAveraging(boxcarWidth); a width it refuses leaves
 *     the copy as it was;
 *  4. removeSpikes: for i = 1 .. n-2 rising, a point between two zeros
 *     becomes 0;
 *  5. applyMedian > 0: MedianMeanFilter1d(medianWidth, 0), refusals likewise;
 *  6. noiseFloor > 0: points <= noiseFloor become 0;
 *  7. S = sum of i = p-h .. p+h-1 inside 0..n-1 (the upper end exclusive);
 *     sdfOut is zeroed; S < 1e-10 returns -2;
 *  8. sdfOut[i] = copy[i] / S (double), then 0 over p-h .. p+h-1. Returns 1. */
QOMATH_API int StrayLightGenerateSDF(double* lsf, int n, int peakPixel, int inBandHalfWidth,
                                     unsigned maxLeft, int maxRight, double noiseFloor,
                                     int removeSpikes, int applyMedian, int medianWidth,
                                     int applyBoxcar, int boxcarWidth, int applyConvolution,
                                     int convolutionWidth, double convolutionThreshold,
                                     double* sdfOut);

/* ---- The working matrix -------------------------------------------------------------- */

/* Replaces the working matrix by n x n zeros. Returns 1; 0 when the memory
 * cannot be had (no matrix then). */
QOMATH_API int StrayLightInitializeMatrix(unsigned n);
/* Releases the working matrix (nothing when there is none). */
QOMATH_API void StrayLightDeleteMatrix(void);
/* Copies the n x n working matrix to dst, or with no matrix sets dst[0] = 0.
 * Returns dst. */
QOMATH_API double* StrayLightCopyMatrix(double* dst);
/* Stores values[0..n-1] as column `column`. Returns 1; -1 no matrix;
 * -2 column > size; -3 n != size. A column equal to the size passes the
 * test, as it always has, and stores nothing (returns 1). */
QOMATH_API int StrayLightEditMatrix(unsigned column, double* values, unsigned n);

/* ---- The correction matrix -------------------------------------------------------- */

/* D (n x n) becomes I + D in the caller's array; C = (I + D)^-1 by LU
 * without pivoting, in double (I + D is diagonally dominant in use; a zero
 * pivot is not tested). Returns 1 (also for n = 0); 0 when scratch memory
 * cannot be had. */
QOMATH_API int StrayLightGenerateCMatrix(double* D, unsigned n, double* C);
/* Rows 1..1022, columns 1..1022 of the 1024 x 1024 m become the mean of
 * (r-1, c-1), (r, c), (r+1, c+1) of the original; the border becomes 0.
 * Returns 1; -1 (nothing done) unless n = 1024. */
QOMATH_API int StrayLightSmoothColumns(double* m, int n);
/* A blank column o+1 (the sum of m(i, o+1), i = 1..1022, is 0 while those of
 * m(i, o), i = 0..1021, and m(i, o+2), i = 2..1023, are not) is filled along
 * the diagonal: m(i+1, o+1) = (m(i, o) + m(i+2, o+2)) / 2, i = 0..1021, for
 * o = 0..1021 in turn. Returns 1; -1 unless n = 1024. */
QOMATH_API int StrayLightFillInBlankColumns(double* m, int n);
/* The three-point diagonal mean of StrayLightSmoothColumns, in place:
 * columns 1..1022 outer, rows 1..1022 inner, so (r-1, c-1) is already
 * averaged; the border is kept. Returns 1; -1 unless n = 1024. */
QOMATH_API int StrayLightAverageAdjacentColumns(double* m, int n);
/* Row by row of the float n x n m: values below 0 become 0, the others the
 * row's BoxcarAveraging(boxcarWidth) (the row as it was when the width is
 * refused); then m(i, i) = 1. Returns 1. */
QOMATH_API int StrayLightFilter(float* m, int n, int boxcarWidth);
/* out[i] = a[i] where wl[i] <= start, b[i] where wl[i] >= end, else
 * b t + (1 - t) a with t = (wl[i] - start) / (end - start) (at most 1).
 * Nothing when n < 1 or end < start; at start = end a point at start takes
 * a. The first argument is not read. */
QOMATH_API void StrayLightBlueBlend(int unused, float* out, int n, float* a, float* b,
                                    float* wavelength, float blendStart, float blendEnd);

/* ---- Files --------------------------------------------------------------------------- */

/* Returns 1; -1 when the file cannot be opened or written. */
QOMATH_API int StrayLightSaveLSFFile(double* lsf, unsigned n, int peakPixel, const char* path);
/* Reads with 25-character lines: line 1 (atoi) to *peakPixel, line 2 (atoi)
 * to *n (reported, not enforced), then one value (atof) a line into out
 * while fewer than maxValues are stored. Returns 1; -1 open failure; -2 no
 * first line; -3 no second line. */
QOMATH_API int StrayLightReadLSFFile(double* out, unsigned* n, unsigned* peakPixel,
                                     const char* path, unsigned maxValues);
/* Returns 1; -1 when the file cannot be opened or written. */
QOMATH_API int StrayLightSaveSDFMatrixFile(double* m, unsigned n, const char* path);
/* *nOut = n; up to n rows (30,000-character lines), n values each: atof at
 * the current place, which then moves past the next ","; a short row ends in
 * zeros, rows the file lacks stay untouched. m holds n x n. Returns 1;
 * -1 open failure. */
QOMATH_API int StrayLightReadSDFMatrixFile(double* m, unsigned* nOut, const char* path, unsigned n);
/* binary 0: 25,000-character lines; values end at ",", CR or LF (and at the
 * end of a line); characters past the 49th of a value are dropped; empty
 * fields skipped; atof into the next float. maxValues is tested before each
 * line only, so a started line is finished: out needs room for maxValues +
 * 12,500 floats. binary != 0: up to maxValues floats.
 * Returns the count read; -1 open failure. */
QOMATH_API int StrayLightReadCmatrixFile(float* out, const char* path, int maxValues, int binary);
/* binary 0: s = trunc(sqrt(count)), s rows of s values, returns s^2;
 * binary != 0: all count floats, returns count. 0 when s < 1 (no file);
 * -1 open or write failure. */
QOMATH_API int StrayLightWriteCmatrixFile(float* m, int count, const char* path, int binary);
/* 1024 x 1024 conversions over a zeroed buffer: read 1,048,576 values in the
 * one form (count <= 0: -1), write 1,048,576 in the other (<= 0: -2).
 * Returns 1. */
QOMATH_API int StrayLightCSVfileToBinary(const char* csvPath, const char* binPath);
QOMATH_API int StrayLightBinaryfileToCSV(const char* binPath, const char* csvPath);

/* ---- The generator ------------------------------------------------------------------- */

/* Builds the matrices from the configuration file's folder of line scans and
 * writes them, with the summary files, into the current folder: the SDF
 * matrix D and the smoothed C as text, and C as "slmatrix.bin". Progress and
 * failures go to standard output. */
QOMATH_API void GenerateSDFMatrix(const char* configFile);

#ifdef __cplusplus
}

/* Exported with C++ linkage under these signatures. */

/* Smooths the low part of lsf: points at or below threshold become the mean
 * of `width` points of a copy shifted by one (width 3: (lsf[i] + lsf[i+1] +
 * lsf[i+2]) / 3, lsf[0] and points past the end counting 0).
 * Returns 1 (also when enable = 0, at once); -1 width < 2 or > n/2;
 * -2 no memory; -3 the convolution failed. */
QOMATH_API int LSFsmoothConvolution(double* const lsf, unsigned int n, int enable,
                                    unsigned int width, double threshold);
/* Zeroes out[0..n-1]; returns 1 (the last two arguments are not used). */
QOMATH_API int StrayLightSingleLine(double* const out, int n, int unused1, int unused2);
#endif

#endif /* QOMATH_STRAYLIGHT_H */
