// The bin registry's hit counters, for tests and tools (the C interface has
// no reader for them).
#pragma once

#include <vector>

namespace qomath::detector {

// A copy of the hit counters, one per bin; empty with no registry.
std::vector<int> bin_hits();

}  // namespace qomath::detector
