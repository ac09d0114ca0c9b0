/*
 * QOMath — peak, centroid and line-width analysis.
 *
 * Peaks are located on a value array with either a wavelength array of the
 * same length or a wavelength range record. Line widths are measured on
 * sample indices: a crossing is a fractional index i + t (t in [0, 1)
 * between samples i and i + 1); ComputeFWHMoptions converts a width to
 * wavelength units.
 *
 * Computations run in double; results are stored as float. None of these
 * functions keeps state between calls.
 */
#ifndef QOMATH_PEAKS_H
#define QOMATH_PEAKS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Peak position ---------------------------------------------------------- */

/* Wavelength of the first maximum of the WLNumPts(range) values of y:
 * range->start + k * range->step, k the lowest index among equal maxima
 * (strict greater-than scan; NaN values are skipped). 0 for a null pointer,
 * an invalid range or values that are all NaN. */
QOMATH_API float GetPeakWavelength(float* y, typ_wlinfo* range);
/* x[k] for the first maximum k of y[0..n-1] (lowest index among equal
 * maxima); k is written through the fourth argument when it is not null.
 * NaN values are skipped. 0 (and k = -1) when n < 1, x or y is null or
 * every value is NaN. */
QOMATH_API float GetPeakWavelength2(float* x, float* y, int n, int* k);
/* Sub-sample peak of the WLNumPts(range) values of y: the vertex of the
 * parabola through the first maximum and its two neighbours (the three
 * samples at that end when the maximum is the first or last sample), whose
 * coefficients come from CPolyFit::PolynomialCof on indices relative to the
 * maximum. Returns the wavelength of the vertex; -2 when the parabola opens
 * upwards or is a line (no maximum), or its vertex lies outside the three
 * samples; 0 for a null pointer, an invalid range, fewer than 3 points or
 * a failed fit (including NaN among the three samples). */
QOMATH_API float GetInterpolatedPeakWavelength(float* y, typ_wlinfo* range);

/* ---- Line width ------------------------------------------------------------- */

/* Status codes of LineWidthCalc and FWHM. */
enum {
    QOMATH_LINEWIDTH_OK = 1,
    QOMATH_LINEWIDTH_TOO_FEW = -1,      /* n < 10, or a null pointer */
    QOMATH_LINEWIDTH_PEAK_LOW = -2,     /* peak index < 3 */
    QOMATH_LINEWIDTH_PEAK_HIGH = -3,    /* peak index > n - 3 */
    QOMATH_LINEWIDTH_FLAT_LEFT = -4,    /* |step| at the left crossing <= 1e-19 (or NaN) */
    QOMATH_LINEWIDTH_FLAT_RIGHT = -5,   /* |step| after the right crossing <= 1e-19 (or NaN) */
    QOMATH_LINEWIDTH_OUTSIDE = -6       /* pct outside 10..90, or a crossing outside the array */
};

/*
 * Width of the line of y[0..n-1] at pct percent of its maximum.
 *   level  pct / 100 * maximum (the maximum found by MaxArray, so the LAST
 *          of equal maxima, index p)
 *   left   fractional index of the left crossing: the first sample i below
 *          the level walking down from p, left = i + (level - y[i]) /
 *          (y[i+1] - y[i])
 *   right  j = the first sample below the level walking up from p,
 *          right = j + (level - y[j]) / (y[j-1] - y[j])
 * The right edge ADDS its fraction to j, so it lies between j and j + 1
 * rather than between j - 1 and j, and a width right - left is larger by up
 * to one sample than the geometric one. All widths of the library, and the
 * results hosts have stored, are measured this way. Likewise the flatness
 * test on the right (-5) looks at y[j+1] - y[j], not at the pair the formula
 * uses.
 * *left and *right are cleared on entry (when the pointers are valid).
 * Codes are checked in this order: -1 (a null pointer, when nothing is
 * written, or n < 10), -2, -3, -6 for pct outside 10..90 (NaN included);
 * *level is then written; then the left crossing: -6 when no sample below
 * the level lies left of the peak, -4; *left is then written; then the
 * right crossing: -6 when none lies right of the peak before the last
 * sample or y[j-1] == y[j], -5; last -6 when left < 0, right >= n - 1 or
 * either is not a number. Every -6 after the pct test leaves both edges 0.
 * Returns 1 otherwise.
 */
QOMATH_API int LineWidthCalc(float* y, int n, float pct, float* level, float* left,
                             float* right);
/* LineWidthCalc at pct = 50. */
QOMATH_API int FWHM(float* y, int n, float* level, float* left, float* right);
/* Full width at half maximum of (x, y) in wavelength units:
 * (right - left) from FWHM, times (x[hi] - x[lo]) / (hi - lo) with
 * hi = ceil(right), lo = floor(left), the mean step over the samples that
 * bracket the line. 0 when FWHM gives anything but 1, for a null pointer,
 * or when hi <= lo. */
QOMATH_API float ComputeFWHMoptions(float* x, float* y, int n);
/* The earlier width rule: full width at half maximum of (x, y) in
 * wavelength units, between the geometric half-maximum crossings on both
 * sides of the first maximum, each placed by linear interpolation in x
 * between the two samples that bracket it. The level is half the maximum
 * (no baseline is taken off). 0 when n < 3, a pointer is null, the maximum
 * is not positive or not a number, or a side never falls below the level. */
QOMATH_API float OLDFWHM(float* x, float* y, int n);

/* ---- Line shape ------------------------------------------------------------- */

/* Results of EdgeOrSlit. */
enum {
    QOMATH_SHAPE_NEITHER = 0,        /* the mid level is crossed other than once or twice */
    QOMATH_SHAPE_SLIT = 1,           /* a line: low, high, low */
    QOMATH_SHAPE_RISING_EDGE = 2,    /* a step from low to high */
    QOMATH_SHAPE_FALLING_EDGE = 3,   /* a step from high to low */
    QOMATH_SHAPE_TOO_FEW = -1,       /* n < 10 or y null */
    QOMATH_SHAPE_FLAT = -2           /* max - min <= 1e-19, or a value is not finite */
};
/*
 * Classifies the scan y[0..n-1] as the image of a slit (a line) or of an
 * edge (a step). The mid level is (min + max) / 2; the samples are read as
 * above or below it (a sample equal to it counts as below) and the changes
 * between the two are counted. Two changes with both ends below give a
 * slit; one change gives an edge, rising when the first sample is below.
 */
QOMATH_API int EdgeOrSlit(float* y, int n);


/* ---- All peak estimates at once --------------------------------------------- */

/* Results of PeakWlAllCalculations. Each estimate carries its own status;
 * its values are 0 unless that status is 1. */
typedef struct typ_peakresults {
    int peak_index;             /* first maximum, from GetPeakWavelength2; -1
                                   when every value is NaN */
    float peak_wavelength;      /* x[peak_index] */
    float peak_value;           /* y[peak_index] */
    int parabola_status;        /* 1; -2 no maximum in the fit; 0 fit failed */
    float parabola_wavelength;  /* vertex of the parabola through the maximum and
                                   its neighbours (as GetInterpolatedPeakWavelength,
                                   on the x array) */
    float parabola_value;       /* the parabola at its vertex */
    int gaussian_status;        /* the status of CPeakWavelength::Gaussian */
    float gaussian_wavelength;  /* centre of the fitted Gaussian */
    float gaussian_amplitude;
    float gaussian_sigma;
    float gaussian_fwhm;
    float gaussian_baseline;
} typ_peakresults;
QOMATH_STATIC_ASSERT(sizeof(typ_peakresults) == 48, typ_peakresults_is_twelve_words);

/* Peak of (x, y) by the three estimates of typ_peakresults. *out is cleared
 * first. Returns 1 (whatever the parabola and Gaussian statuses); -1 when
 * n < 1 or a pointer is null (nothing written); -6 when scratch memory
 * cannot be had. */
QOMATH_API int PeakWlAllCalculations(float* x, float* y, int n, typ_peakresults* out);

#ifdef __cplusplus
} /* extern "C" */

#include <vector>

/*
 * Status codes of the CPeakWavelength members. Each member checks, in this
 * order: -1 fewer than 5 elements in either vector; -2 sizes differ; then
 * (all but Maximum) -5 a value or wavelength that is not finite, -3 no peak
 * to work on, -4 the estimate failed; -6 scratch memory could not be had.
 * Outputs are written only on success.
 */
enum {
    QOMATH_PEAK_OK = 1,
    QOMATH_PEAK_TOO_FEW = -1,
    QOMATH_PEAK_SIZE_MISMATCH = -2,
    QOMATH_PEAK_NO_PEAK = -3,
    QOMATH_PEAK_FIT_FAILED = -4,
    QOMATH_PEAK_NOT_FINITE = -5,
    QOMATH_PEAK_NO_MEMORY = -6
};

/*
 * Peak estimates of a line given as wavelengths and values. The object holds
 * no data.
 *
 * Windows. Centroid, PolyFit and Gaussian work around the first maximum k
 * (strict greater-than scan). The half-maximum core is the run of samples
 * around k whose value, less the smallest value of the spectrum, is at
 * least half of (maximum - smallest). "No peak" (-3) means that the maximum
 * does not exceed the smallest value by more than 1e-19.
 */
class QOMATH_API CPeakWavelength {
public:
    /* First largest value (strict greater-than scan): peakWavelength =
     * wavelengths[k], peakValue = values[k]. Returns 1, -1 or -2. */
    int Maximum(const std::vector<double>& wavelengths, const std::vector<double>& values,
                double& peakWavelength, double& peakValue);
    /* Weighted mean wavelength over the half-maximum core, each sample
     * weighted by its height above the half-maximum level (value - smallest
     * value - (maximum - smallest) / 2): an offset does not pull the result
     * and the weights vanish at the edges of the core. Returns 1, -1, -2,
     * -5, -3. */
    int Centroid(const std::vector<double>& wavelengths, const std::vector<double>& values,
                 double& peakWavelength);
    /* Vertex of the least-squares parabola (CPolyFit::PolyFit2ndOrder, on
     * wavelengths relative to the maximum's) over the half-maximum core,
     * widened to at least one sample on each side of k (shifted inwards at
     * the ends of the array) and cut to at most 7 samples on each side.
     * -4 when the fit is singular, opens upwards, or its vertex lies outside
     * the window. */
    int PolyFit(const std::vector<double>& wavelengths, const std::vector<double>& values,
                double& peakWavelength);
    /*
     * Least-squares fit of baseline + amplitude exp(-(w - centre)^2 /
     * (2 sigma^2)) by Levenberg-Marquardt (at most 200 iterations; the 4 x 4
     * steps solved by MatrixGaussJordan). The window is centred on k and
     * reaches three half-maximum core half-widths to each side (at least
     * 3 samples each side), cut by the ends of the array; it must hold at
     * least 5 samples (-3 otherwise). The start values come from the
     * maximum, the smallest value in the window and the core width.
     *   peakWavelength  the fitted centre
     *   amplitude       height above the baseline
     *   sigma           standard deviation, > 0
     *   fwhm            2 sqrt(2 ln 2) sigma
     *   baseline        constant offset
     *   rmsResidual     root mean square of the residuals over the window
     *   rSquared        1 - residual sum of squares / total sum of squares
     * -4 when the fit does not converge, the amplitude is not positive, or
     * the centre leaves the window.
     */
    int Gaussian(const std::vector<double>& wavelengths, const std::vector<double>& values,
                 double& peakWavelength, double& amplitude, double& sigma, double& fwhm,
                 double& baseline, double& rmsResidual, double& rSquared);
};

#endif /* __cplusplus */

#endif /* QOMATH_PEAKS_H */
