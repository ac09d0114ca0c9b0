// Writes the isotemperature-line table of the colour-temperature search
// (801 lines, 0..800 mired) as CSV:
//   qomath_gen_isotemperature data/isotemperature_1mired.csv
// Columns i, u, v, t; the values are printed with 17 significant digits,
// which gives every double back exactly when the table is compiled in.
#include <cstdio>

#include "colorimetry/planck.hpp"
#include "table_file.hpp"

int main(int argc, char** argv)
{
    return qomath::tools::write_table(argc, argv, "i,u,v,t", [](std::FILE* f) {
        for (int i = 0; i < qomath::cct::kLines; ++i) {
            const qomath::cct::LocusPoint p = qomath::cct::isotemperature_line(i);
            std::fprintf(f, "%d,%.17g,%.17g,%.17g\n", i, p.u, p.v, p.t);
        }
    });
}
