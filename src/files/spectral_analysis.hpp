// The analysis by unit for the registry.
#pragma once

#include "qomath/spectral_analysis.h"

namespace qomath::analysis {

// The analysis of unit code 0..6 into `out`, a record of that unit's type
// (words_of(unit) words). Returns its status; -11 for another code.
int analyse(const float* wl, const float* v, int n, int unit, void* out,
            const typ_SpectralAnalysisOptions* opt);
// The record size of a unit code in 32-bit words; 0 outside 0..6.
int words_of(int unit);

}  // namespace qomath::analysis
