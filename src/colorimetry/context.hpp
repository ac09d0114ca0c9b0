// The calculation context of the C++ layer: which sampling rule and which
// interpolation cache a calculation uses.
//
// The C exports and the program share every algorithm; they differ only in
// these parameters. The exports run on the compatible context (each
// function's own grid rule, the process-wide Interpolate2 cache hosts
// observe); the program runs on the data's own sampling with a cache per
// worker.
#pragma once

#include "numerics/interpolation.hpp"

namespace qomath::colorimetry {

enum class Sampling {
    // As the C exports: photometric values and object colours on the common
    // grid of the spectral product (the coarser of the two steps), the
    // centroid as a sum over samples, the line width from sample indices,
    // object colours as plain integrals of sample times illuminant.
    compatible,
    // On the data's own wavelengths: every table interpolated onto them and
    // integrated by the trapezoid rule over the data; the centroid as
    // integral(wl S) / integral(S); the line width between the interpolated
    // half-maximum crossings; object colours normalised to Y = 100 for the
    // perfect sample under the illuminant.
    data,
};

// Which published constants the calculation uses where the library's own
// results were built on rounded ones (the CIE daylight chromaticity
// polynomial of the colour rendering reference).
enum class Constants {
    compatible,  // the rounded figures stored results carry
    cie,         // the CIE's own
};

struct Context {
    Sampling sampling = Sampling::compatible;
    // Null: the process-wide cache of Interpolate2.
    numerics::Interpolate2State* interpolation = nullptr;
    Constants constants = Constants::compatible;

    numerics::Interpolate2State& cache() const
    {
        return interpolation ? *interpolation : numerics::process_interpolation_state();
    }
    bool on_data() const { return sampling == Sampling::data; }
};

// The context of the C exports.
inline const Context& compatible_context()
{
    static const Context c{};
    return c;
}

}  // namespace qomath::colorimetry
