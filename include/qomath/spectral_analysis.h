/*
 * QOMath — spectral analysis by measurement unit.
 *
 * One call gives every figure that applies to a spectrum of a given unit,
 * in a fixed record of 32-bit words: the counts of an array spectrometer,
 * the emitting units (irradiance, radiant intensity, radiant flux, radiance)
 * and transmittance or reflectance. The colorimetric and radiometric
 * figures are those of ColorimetricCalc and RadiometryCalc (summary.h), the
 * photometric ones those of IlluminanceCalc, LuminanceCalc,
 * LuminousIntensityCalc and LuminousFluxCalc (photometry.h): the same
 * numbers as those functions give.
 *
 * Units of the input (the measurement-unit codes of units.h): irradiance in
 * uW/cm^2/nm, radiance in uW/cm^2/sr/nm, radiant intensity in W/sr/nm,
 * radiant flux in uW/nm. "SI" integrals are in W/m^2, W/m^2/sr, W/sr and W.
 *
 * Status codes (the record's first word, and the return value):
 *     1  success
 *   -11  a null pointer, n < 2, a band with start >= end, or a record too
 *        small (SpectralAnalysis)
 *   -12  wavelengths not strictly increasing, or a value not finite
 *   -13  the data fall short of a block's range: the colorimetry cannot be
 *        found (the data do not reach into 370..820 nm) or the data do not
 *        cover 380..780 nm whole; every other word is still filled
 *   -14  memory could not be had
 * On -11, -12 and -14 every word but the status is 0. Words not named below
 * ("reserved") are 0.
 *
 * Options (null: the defaults): the band of RadiometryCalc's first result
 * (380..780 nm; 0 and 0 also give the default), the white point of the
 * dominant wavelength (QOMATH_WHITE_E), the illuminant of transmittance and
 * reflectance (1 D65, 2 A, 3 C; default D65) and the count at which an
 * array pixel is saturated (65535).
 *
 * None of these functions keeps state; they go through the process-wide
 * interpolation cache as ColorimetricCalc does.
 */
#ifndef QOMATH_SPECTRAL_ANALYSIS_H
#define QOMATH_SPECTRAL_ANALYSIS_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct typ_SpectralAnalysisOptions {
    float bandStart;  /* nm */
    float bandEnd;    /* nm */
    int white;        /* QOMATH_WHITE_E, _D65, _A, _C */
    int illuminant;   /* 1 D65, 2 A, 3 C */
    float saturation; /* counts */
} typ_SpectralAnalysisOptions;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisOptions) == 20, analysis_options_size);

/* Counts: 13 words. */
typedef struct typ_SpectralAnalysisCounts {
    int status;
    int points;
    float firstWavelength;  /* nm */
    float lastWavelength;   /* nm */
    float peakWavelength;   /* nm, first maximum */
    float peakValue;
    float minimum;
    float mean;
    float stdDeviation;     /* sample standard deviation (n - 1) */
    float centroid;         /* nm, RadiometryCalc's */
    float fwhm;             /* nm, RadiometryCalc's (0 when none) */
    float integral;         /* counts x nm, trapezoid over the data */
    int saturatedPoints;    /* values at or above the saturation count */
} typ_SpectralAnalysisCounts;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisCounts) == 13 * 4, analysis_counts_size);

/* The first 68 words of every emitting unit's record. */
typedef struct typ_SpectralAnalysisHead {
    int status;
    int points;
    int colorimetricStatus;    /* ColorimetricCalc's status */
    int radiometricStatus;     /* RadiometryCalc's status */
    float colorimetric[48];    /* ColorimetricCalc's result (QOMATH_CC_*) */
    float radiometric[16];     /* RadiometryCalc's result over the band (QOMATH_RC_*) */
} typ_SpectralAnalysisHead;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisHead) == 68 * 4, analysis_head_size);

/* The last 7 words of every emitting unit's record. */
typedef struct typ_SpectralAnalysisTail {
    float totalSI;      /* integral over the data, SI units */
    float visibleSI;    /* integral over 380..780 nm, SI units */
    float uvA;          /* 315..400 nm, SI units, over the part the data cover */
    float uvB;          /* 280..315 nm */
    float uvC;          /* 100..280 nm */
    float photons;      /* 400..700 nm, umol/s per the unit's geometry: umol/(s m^2)
                           for irradiance, umol/(s m^2 sr) for radiance,
                           umol/(s sr) for intensity, umol/s for flux */
    float efficacy;     /* luminous efficacy of radiation, lm/W: 683 times the
                           y-bar weighted integral over the total integral */
} typ_SpectralAnalysisTail;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisTail) == 7 * 4, analysis_tail_size);

/* Irradiance: 79 words. */
typedef struct typ_SpectralAnalysisIrradiance {
    typ_SpectralAnalysisHead head;
    float illuminance[4]; /* FootCandle, Lux, Phot, MilliPhot (IlluminanceCalc) */
    typ_SpectralAnalysisTail tail;
} typ_SpectralAnalysisIrradiance;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisIrradiance) == 79 * 4, analysis_irradiance_size);

/* Radiant intensity: 76 words. */
typedef struct typ_SpectralAnalysisRadiantIntensity {
    typ_SpectralAnalysisHead head;
    float candela;        /* LuminousIntensityCalc */
    typ_SpectralAnalysisTail tail;
} typ_SpectralAnalysisRadiantIntensity;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisRadiantIntensity) == 76 * 4, analysis_intensity_size);

/* Radiant flux: 80 words. */
typedef struct typ_SpectralAnalysisRadiantFlux {
    typ_SpectralAnalysisHead head;
    float lumen;                /* LuminousFluxCalc */
    float meanSphericalCandela; /* lumen / (4 pi) */
    float reserved[3];
    typ_SpectralAnalysisTail tail;
} typ_SpectralAnalysisRadiantFlux;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisRadiantFlux) == 80 * 4, analysis_flux_size);

/* Radiance: 83 words. */
typedef struct typ_SpectralAnalysisRadiance {
    typ_SpectralAnalysisHead head;
    float luminance[8];   /* the 8 units of LuminanceCalc, Nit first */
    typ_SpectralAnalysisTail tail;
} typ_SpectralAnalysisRadiance;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisRadiance) == 83 * 4, analysis_radiance_size);

/* Transmittance and reflectance: 75 words. */
typedef struct typ_SpectralAnalysisReflectTransmit {
    int status;
    int points;
    int colorimetricStatus;
    float colorimetric[48];  /* ColorimetricCalc under the illuminant */
    float objectX, objectY, objectZ; /* on the data's sampling, Y = 100 for the
                                        perfect sample under the illuminant */
    float L, a, b;           /* CIE 1976 L*a*b* against that white */
    float average380to780;   /* band integral / band width (values' own unit) */
    float average400to700;
    float minimum;
    float minimumWavelength; /* nm, first */
    float maximum;
    float maximumWavelength; /* nm, first */
    float reserved[12];
} typ_SpectralAnalysisReflectTransmit;
QOMATH_STATIC_ASSERT(sizeof(typ_SpectralAnalysisReflectTransmit) == 75 * 4, analysis_rt_size);

/* Word counts of the seven records, by unit code 0..6. */
#define QOMATH_ANALYSIS_WORDS_COUNTS 13
#define QOMATH_ANALYSIS_WORDS_IRRADIANCE 79
#define QOMATH_ANALYSIS_WORDS_RADIANT_INTENSITY 76
#define QOMATH_ANALYSIS_WORDS_RADIANT_FLUX 80
#define QOMATH_ANALYSIS_WORDS_RADIANCE 83
#define QOMATH_ANALYSIS_WORDS_REFLECT_TRANSMIT 75

QOMATH_API int SpectralAnalysis_Counts(const float* wl, const float* values, int n,
                                       typ_SpectralAnalysisCounts* out,
                                       const typ_SpectralAnalysisOptions* options);
QOMATH_API int SpectralAnalysis_Irradiance(const float* wl, const float* values, int n,
                                           typ_SpectralAnalysisIrradiance* out,
                                           const typ_SpectralAnalysisOptions* options);
QOMATH_API int SpectralAnalysis_RadiantIntensity(const float* wl, const float* values, int n,
                                                 typ_SpectralAnalysisRadiantIntensity* out,
                                                 const typ_SpectralAnalysisOptions* options);
QOMATH_API int SpectralAnalysis_RadiantFlux(const float* wl, const float* values, int n,
                                            typ_SpectralAnalysisRadiantFlux* out,
                                            const typ_SpectralAnalysisOptions* options);
QOMATH_API int SpectralAnalysis_Radiance(const float* wl, const float* values, int n,
                                         typ_SpectralAnalysisRadiance* out,
                                         const typ_SpectralAnalysisOptions* options);
/* Transmittance and reflectance alike (values as fractions 0..1 or in
 * percent: the object colour scales with them). */
QOMATH_API int SpectralAnalysis_ReflectTransmit(const float* wl, const float* values, int n,
                                                typ_SpectralAnalysisReflectTransmit* out,
                                                const typ_SpectralAnalysisOptions* options);

/* The analysis of unitCode (0..6) into out, a record of at least outWords
 * words (the word counts above). Returns the analysis' status; -11 for a
 * null out, an unknown unit code or outWords below the record's size (out
 * untouched then). */
QOMATH_API int SpectralAnalysis(const float* wl, const float* values, int n, int unitCode,
                                void* out, int outWords,
                                const typ_SpectralAnalysisOptions* options);

/* Mean of the values over [start, end] nm: the band integral (clipped to
 * the data, edges interpolated) divided by end - start. start = end = 0
 * means 380..780 nm. Returns 1; -11 null pointer, n < 2, start >= end;
 * -12 wavelengths not increasing or a value not finite; -13 the data do
 * not cover the band whole (the covered part's integral over the whole width
 * is still given). */
QOMATH_API int SpectralAnalysis_AverageReflectance(const float* wl, const float* values, int n,
                                                   float start, float end, float* average);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_SPECTRAL_ANALYSIS_H */
