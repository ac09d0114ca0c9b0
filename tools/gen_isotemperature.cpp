// Writes the isotemperature-line table of the colour-temperature search
// (801 lines, 0..800 mired) as CSV:
//   qomath_gen_isotemperature data/isotemperature_1mired.csv
// Columns i, u, v, t; the values are printed with 17 significant digits,
// which gives every double back exactly when the table is compiled in.
#include <cstdio>

#include "colorimetry/planck.hpp"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT.csv\n", argv[0]);
        return 2;
    }
    std::FILE* f = std::fopen(argv[1], "wb");
    if (!f) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(f, "i,u,v,t\n");
    for (int i = 0; i < qomath::cct::kLines; ++i) {
        const qomath::cct::LocusPoint p = qomath::cct::isotemperature_line(i);
        std::fprintf(f, "%d,%.17g,%.17g,%.17g\n", i, p.u, p.v, p.t);
    }
    if (std::fclose(f) != 0) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}
