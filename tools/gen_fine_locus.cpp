// Writes the 0.1 nm CIE 1931 spectrum locus (3401 points, 360..700 nm) made by
// the library's interpolation rule, with true wavelengths, as CSV:
//   qomath_gen_locus data/cie1931_locus_0p1nm.csv
// The values are printed with nine significant digits, which gives every
// float back exactly when the table is compiled in.
#include <cstdio>
#include <vector>

#include "colorimetry/cie_tables.hpp"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT.csv\n", argv[0]);
        return 2;
    }
    using namespace qomath::cie;
    std::vector<float> x(kLocus1931FinePoints), y(kLocus1931FinePoints);
    if (interpolate_fine_locus(x, y) != 1) {
        std::fprintf(stderr, "interpolation of the locus failed\n");
        return 1;
    }
    std::FILE* f = std::fopen(argv[1], "wb");
    if (!f) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(f, "nm,x,y\n");
    for (int i = 0; i < kLocus1931FinePoints; ++i)
        std::fprintf(f, "%.1f,%.9g,%.9g\n", 360.0 + i / 10.0, static_cast<double>(x[i]),
                     static_cast<double>(y[i]));
    if (std::fclose(f) != 0) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}
