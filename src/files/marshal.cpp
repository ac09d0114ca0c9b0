// Self-tests a host calls to check its declarations of the library.
#include "qomath/marshal.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "qomath/grid.h"

int MarshalTestScalars(int i, float f, double d, int* int_io, float* float_io, double* double_io)
{
    if (!int_io || !float_io || !double_io) return -1;
    // Wrap-around in unsigned arithmetic: a host's overflow check, not ours.
    *int_io = static_cast<int>(static_cast<unsigned>(*int_io) + static_cast<unsigned>(i));
    *float_io += f;
    *double_io += d;
    return 1;
}

double MarshalTestDouble(int i, float f, double d) { return double(i) + double(f) + d; }

float MarshalTestFloatArray(float* values, int n)
{
    if (!values || n < 1) return 0.0f;
    float sum = 0.0f;
    for (int k = 0; k < n; ++k) {
        values[k] = static_cast<float>(k) * 1.5f;
        sum += values[k];
    }
    return sum;
}

int MarshalTestString(const char* in, char* out, int capacity, int* length)
{
    if (!in || !out || capacity < 1) return -1;
    const std::size_t len = std::strlen(in);
    if (length) *length = static_cast<int>(len);
    const std::size_t room = static_cast<std::size_t>(capacity) - 1;
    const std::size_t n = len < room ? len : room;
    for (std::size_t k = 0; k < n; ++k) {
        const char c = in[k];
        out[k] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    out[n] = '\0';
    return len <= room ? 1 : -2;
}

int MarshalTestWLInfo(const typ_wlinfo* in, typ_wlinfo* out)
{
    if (!in || !out) return -1;
    const typ_wlinfo r = *in;  // in and out may be one record
    *out = {r.start, r.end, r.step / 2.0f};
    return WLNumPts(&r);
}

int MarshalTestRecord2(SpectralRecord2* record, int* layout, int n_layout)
{
    if (!record && !layout) return -1;
    static constexpr int kLayout[QOMATH_MARSHAL_LAYOUT_ENTRIES] = {
        int(sizeof(typ_wlinfo)),
        int(sizeof(SpectralRecord2)),
        int(offsetof(SpectralRecord2, unitName)),
        int(offsetof(SpectralRecord2, header)),
        int(offsetof(SpectralRecord2, wavelengths)),
        int(offsetof(SpectralRecord2, values)),
        int(offsetof(SpectralRecord2, reserved)),
        int(offsetof(SpectralRecord2, infoCount)),
        int(offsetof(SpectralRecord2, info))};
    if (layout)
        for (int k = 0; k < n_layout && k < QOMATH_MARSHAL_LAYOUT_ENTRIES; ++k) layout[k] = kLayout[k];
    if (!record) return 1;
    const float count = record->pointCount;
    if (!(count >= 1.0f && count <= float(QOMATH_SPECTRAL_MAX_POINTS)) || std::floor(count) != count) return -2;
    const int n = static_cast<int>(count);
    for (int k = 0; k < n; ++k) record->values[k] = 2.0f * record->wavelengths[k];
    record->infoCount = n;
    std::strcpy(record->unitName, "Marshal");
    return 1;
}
