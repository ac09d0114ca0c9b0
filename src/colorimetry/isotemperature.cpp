// The Planckian locus in CIE 1960 (u, v) and the isotemperature lines of the
// colour-temperature search, one mired apart.
#include <cstddef>

#include "colorimetry/cie_tables.hpp"
#include "colorimetry/planck.hpp"

namespace qomath::cct {

namespace {

constexpr double kC2 = 1.4388e-2;  // m K

// Robertson's line at infinite temperature.
constexpr LocusPoint kLine0{0.18006, 0.26352, -0.24341};

}  // namespace

LocusPoint planckian_locus(double mired)
{
    const cie::Table xbar = cie::table(0);
    const cie::Table ybar = cie::table(1);
    const cie::Table zbar = cie::table(2);
    const double temperature = 1e6 / mired;
    // X, Y, Z and their logarithmic temperature derivatives T dX/dT, ...
    double X = 0, Y = 0, Z = 0, dX = 0, dY = 0, dZ = 0;
    for (std::size_t k = 0; k < xbar.values.size(); ++k) {
        const double wl = (static_cast<double>(xbar.range.start) +
                           static_cast<double>(k) * static_cast<double>(xbar.range.step)) *
                          1e-9;
        const double b = planck(1.0, kC2, wl, temperature);
        const double db = b * planck_log_slope(kC2, wl, temperature);
        X += xbar.values[k] * b;
        Y += ybar.values[k] * b;
        Z += zbar.values[k] * b;
        dX += xbar.values[k] * db;
        dY += ybar.values[k] * db;
        dZ += zbar.values[k] * db;
    }
    const double D = X + 15 * Y + 3 * Z;
    const double dD = dX + 15 * dY + 3 * dZ;
    // u = 4X / D, v = 6Y / D; the common factor 1 / D^2 of du and dv cancels.
    const double du = 4 * (dX * D - X * dD);
    const double dv = 6 * (dY * D - Y * dD);
    return {4 * X / D, 6 * Y / D, -du / dv};
}

LocusPoint isotemperature_line(int i)
{
    return i == 0 ? kLine0 : planckian_locus(static_cast<double>(i));
}

}  // namespace qomath::cct
