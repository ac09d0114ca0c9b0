/*
 * QOMath — the loaded-file registry.
 *
 * A host that cannot hold the large spectral records itself loads version
 * 2.0 spectral files into the library and refers to each by a handle 0..99.
 * Each slot keeps the file's SpectralRecord2, its SpectralFileExtraInfo and
 * the analysis of its unit (spectral_analysis.h), recomputed when the data
 * are replaced.
 *
 * The 100 slots are process-wide. One lock is held through every
 * LoadAndSave_* call (the analysis included), so calls from several host
 * threads do not corrupt the table; a host still owns the order of its
 * calls. Pointers handed out by LoadAndSave_GetWavelengthPtr and
 * LoadAndSave_GetDataPtr stay valid until their slot is removed (by
 * LoadAndSave_Remove or LoadAndSave_Cleanup); call LoadAndSave_Cleanup
 * before unloading the library.
 *
 * Handles are compared as unsigned numbers: -1 and INT_MIN are out of range
 * like 100. "Out of range" answers below apply to free slots too, except
 * where a function says otherwise.
 */
#ifndef QOMATH_REGISTRY_H
#define QOMATH_REGISTRY_H

#include "qomath/common.h"
#include "qomath/spectral_analysis.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QOMATH_REGISTRY_SLOTS 100
#define QOMATH_REGISTRY_FULL (-1000)
#define QOMATH_REGISTRY_NO_MEMORY (-1001)

/* Reads a version 2.0 file (ReadSpectralFile2, records zeroed first) into
 * the lowest free slot and analyses it for its unit. Returns the handle;
 * -1000 when all 100 slots are in use; -1001 when memory could not be had
 * (the slot stays free); otherwise the reader's negative status (the slot
 * stays free). A file of a later version (2.5, say) loads with 0 points;
 * its analysis then holds only its failure status. */
QOMATH_API int LoadAndSave_SpectralFile(const char* fileName);

/* Replaces the slot's data (n points; the first and last wavelength and the
 * point count follow) and analyses it again. Returns the analysis' status;
 * -1 handle outside 0..99 or slot not loaded; -2 n outside 5..4096; -3 a
 * null array. The data are unchanged on -1, -2 and -3. */
QOMATH_API int LoadAndSave_UpdateSpectralData(int handle, const float* wl, const float* values,
                                              int n);

/* Copies the data: *n is the capacity in, the point count out; exactly
 * count wavelengths and values are written, and the unit name (50 bytes,
 * skipped when unitName is null). Returns 1; 0 wl, values or n null; -1
 * handle out of range or slot not loaded; -2 capacity > 4096; -3 capacity
 * below the count (nothing written). */
QOMATH_API int LoadAndSave_GetSpectralData(int handle, float* wl, float* values, int* n,
                                           char* unitName);

/* Analyses the slot again. Returns the analysis' status; -1 handle out of
 * range or unit code above 6; -2 slot not loaded; -14 memory. */
QOMATH_API int LoadAndSave_DoAnalysis(int handle);

/* The point count; 0 out of range or free. */
QOMATH_API int LoadAndSave_GetArrayLength(int handle);
/* The slot's own arrays; null out of range or free. */
QOMATH_API float* LoadAndSave_GetWavelengthPtr(int handle);
QOMATH_API float* LoadAndSave_GetDataPtr(int handle);

/* Copies the slot's analysis of one unit whole (13, 79, 76, 80, 83, 75 and
 * 75 words). Returns 1 (also when the analysis failed: its record then
 * holds only its status); 0 handle out of range; -1 out null; -2 the slot
 * holds no such analysis (free, or another unit). */
QOMATH_API int LoadAndSave_GetCountAnalysis(int handle, typ_SpectralAnalysisCounts* out);
QOMATH_API int LoadAndSave_GetIrradianceAnalysis(int handle, typ_SpectralAnalysisIrradiance* out);
QOMATH_API int LoadAndSave_GetRadiantIntensityAnalysis(int handle,
                                                       typ_SpectralAnalysisRadiantIntensity* out);
QOMATH_API int LoadAndSave_GetRadiantFluxAnalysis(int handle, typ_SpectralAnalysisRadiantFlux* out);
QOMATH_API int LoadAndSave_GetRadianceAnalysis(int handle, typ_SpectralAnalysisRadiance* out);
QOMATH_API int LoadAndSave_GetTransmittanceAnalysis(int handle,
                                                    typ_SpectralAnalysisReflectTransmit* out);
QOMATH_API int LoadAndSave_GetReflectanceAnalysis(int handle,
                                                  typ_SpectralAnalysisReflectTransmit* out);

/* The slot's unit code 0..6; -1 out of range or free. */
QOMATH_API int LoadAndSave_GetUnits(int handle);

/* Copies the y-axis unit text of the slot's unit ("1/nm", "\xB5W/cm\xB2/nm",
 * ...; the library's constant table, not the writable one of
 * GetUnitNameYaxis) into out WITHOUT a terminating NUL: zero the buffer
 * first (hosts do). Returns 1; -1 out of range or free; 0 out null. */
QOMATH_API int LoadAndSave_GetSpectralDataUnit(int handle, char* out);

/* Frees the slot; out-of-range handles are ignored. */
QOMATH_API void LoadAndSave_Remove(int handle);
/* Frees every slot. */
QOMATH_API void LoadAndSave_Cleanup(void);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_REGISTRY_H */
