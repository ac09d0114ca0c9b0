/*
 * QOMath — marshalling self-tests for host programs.
 *
 * A host written in another language (VB, C#, LabVIEW, Python ctypes) calls
 * these with known arguments and compares what comes back with what it
 * expects, before it trusts its own declarations of the library: argument
 * order and size, calling convention, by-value against by-reference,
 * floating-point return values, strings and record packing. Each function
 * transforms its input in a documented way, so an echo that merely leaves a
 * buffer untouched does not pass for success. None keeps state.
 */
#ifndef QOMATH_MARSHAL_H
#define QOMATH_MARSHAL_H

#include "qomath/common.h"
#include "qomath/spectral_file.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Scalars by value and by reference: on return
 *   *int_io = *int_io + i,  *float_io = *float_io + f,  *double_io = *double_io + d
 * (float sum in float, double sum in double), so a host passing 0 in each
 * reads back its by-value arguments. Returns 1; -1 when a pointer is null
 * (nothing written).
 */
QOMATH_API int MarshalTestScalars(int i, float f, double d, int* int_io, float* float_io,
                                  double* double_io);
/* A double returned in the floating-point register: i + f + d (in double). */
QOMATH_API double MarshalTestDouble(int i, float f, double d);
/*
 * values[k] = k * 1.5 for k < n; returns their sum, 0.75 * n * (n - 1)
 * (summed in float); 0 when values is null or n < 1 (nothing written).
 */
QOMATH_API float MarshalTestFloatArray(float* values, int n);
/*
 * Copies the NUL-terminated text `in` into out (a buffer of `capacity`
 * bytes) with ASCII letters a..z turned upper-case, other bytes unchanged,
 * and writes the full length of the text to *length (when length is not
 * null).
 * Returns 1; -2 when the text does not fit (out holds its first
 * capacity - 1 bytes and a NUL); -1 when in or out is null or capacity < 1
 * (nothing written).
 */
QOMATH_API int MarshalTestString(const char* in, char* out, int capacity, int* length);
/*
 * Reads a wavelength range record and writes its halved-step twin:
 * out = {in.start, in.end, in.step / 2}. Returns the point count the library
 * sees in *in (WLNumPts, 0 for an invalid record); -1 when a pointer is null.
 */
QOMATH_API int MarshalTestWLInfo(const typ_wlinfo* in, typ_wlinfo* out);

/* Entries of the layout array of MarshalTestRecord2, in this order. */
enum {
    QOMATH_MARSHAL_WLINFO_SIZE = 0,   /* sizeof(typ_wlinfo): 12 */
    QOMATH_MARSHAL_RECORD2_SIZE,      /* sizeof(SpectralRecord2): 51976 */
    QOMATH_MARSHAL_UNITNAME_OFFSET,   /* 12 */
    QOMATH_MARSHAL_HEADER_OFFSET,     /* 62 */
    QOMATH_MARSHAL_WAVELENGTHS_OFFSET,/* 320 */
    QOMATH_MARSHAL_VALUES_OFFSET,     /* 16704 */
    QOMATH_MARSHAL_RESERVED_OFFSET,   /* 33088 */
    QOMATH_MARSHAL_INFOCOUNT_OFFSET,  /* 49472 */
    QOMATH_MARSHAL_INFO_OFFSET,       /* 49476 */
    QOMATH_MARSHAL_LAYOUT_ENTRIES     /* 9 */
};

/*
 * Record layout as the library sees it: writes the first min(n_layout, 9)
 * entries listed above into layout (none when layout is null or n_layout < 1).
 * When record is not null it also reads the record and answers through it:
 * with n = record->pointCount (a whole number 1..4096),
 *   record->values[k] = 2 * record->wavelengths[k] for k < n,
 *   record->infoCount = n, record->unitName = "Marshal".
 * A host that packs the record differently finds the values off its own
 * fields. Returns 1; -2 when pointCount is not a whole number in 1..4096
 * (the record untouched); -1 when layout and record are both null.
 */
QOMATH_API int MarshalTestRecord2(SpectralRecord2* record, int* layout, int n_layout);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_MARSHAL_H */
