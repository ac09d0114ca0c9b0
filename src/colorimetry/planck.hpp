// The Planckian radiator and the isotemperature-line table built on its
// locus. One formula for the spectral exitance serves both the radiator
// functions and the locus behind the table.
#pragma once

#include <cmath>
#include <span>

namespace qomath::cct {

// Spectral exitance c1 / (wl^5 (e^x - 1)) with x = c2 / (wl T), in the units
// c1, c2 and wl are given in. 0 where e^x overflows.
inline double planck(double c1, double c2, double wl, double temperature)
{
    const double x = c2 / (wl * temperature);
    const double wl2 = wl * wl;
    return c1 / (wl2 * wl2 * wl * std::expm1(x));
}

// d ln B / d ln T of the exitance above at the same point: x e^x / (e^x - 1).
inline double planck_log_slope(double c2, double wl, double temperature)
{
    const double x = c2 / (wl * temperature);
    return x / -std::expm1(-x);
}

// A point of the Planckian locus in CIE 1960 (u, v) and the slope t = dv/du
// of the isotemperature line through it (the negative reciprocal of the
// locus slope there).
struct LocusPoint {
    double u;
    double v;
    double t;
};

// The isotemperature-line table: line i at i mired, i = 0..800.
inline constexpr int kLines = 801;

// The locus at reciprocal temperature `mired` (> 0): the radiator with
// c2 = 1.4388e-2 m K summed over the CIE 1931 2-degree observer at 1 nm from
// 360 to 830 nm; the slope from the derivative of those sums with respect to
// temperature.
LocusPoint planckian_locus(double mired);

// Line i (0..800) as the table is generated: line 0, at infinite
// temperature, is Robertson's first row; every other line lies on the locus
// at i mired.
LocusPoint isotemperature_line(int i);

// The stored table compiled into the library: rows {i, u, v, t}.
std::span<const double[4]> isotemperature_table();

}  // namespace qomath::cct
