// Arithmetic between spectra in the C++ layer.
#pragma once

#include <vector>

#include "qomath/common.h"

namespace qomath::spectral {

// A constant table resampled onto one grid (as Interpolate gives it).
struct TableOnGrid {
    const float* table = nullptr;
    typ_wlinfo grid{};
    int status = 0;
    std::vector<float> values;
};

// MultiplySpectralFiles(values, range, table, table_range, out, out_range)
// with the same values and statuses, for a table of static storage that
// never changes: its resampling onto the common grid is kept in `cache` and
// reused while the grid stays the same.
int multiply_by_table(const float* values, const typ_wlinfo* range, const float* table,
                      const typ_wlinfo* table_range, float* out, typ_wlinfo* out_range,
                      TableOnGrid& cache);

}  // namespace qomath::spectral
