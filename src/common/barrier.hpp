// The exception barrier of the exported interface.
//
// Every exported function runs its body through `guarded`: the C++ inside may
// allocate (std::vector scratch) and so throw std::bad_alloc, but nothing may
// cross into a C host. `guarded` turns any exception into the function's
// documented failure value (its allocation-failure status, or 0 for functions
// that return a physical value).
#pragma once

#include <utility>

namespace qomath::detail {

template <class R, class Body>
R guarded(R on_failure, Body&& body) noexcept
{
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return on_failure;
    }
}

// For the few exported functions that return nothing.
template <class Body>
void guarded(Body&& body) noexcept
{
    try {
        std::forward<Body>(body)();
    } catch (...) {
    }
}

}  // namespace qomath::detail
