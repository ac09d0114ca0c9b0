// Writes the 0.1 nm CIE 1931 spectrum locus (3401 points, 360..700 nm) made by
// the library's interpolation rule, with true wavelengths, as CSV:
//   qomath_gen_locus data/cie1931_locus_0p1nm.csv
// The values are printed with nine significant digits, which gives every
// float back exactly when the table is compiled in.
#include <cstdio>
#include <vector>

#include "colorimetry/cie_tables.hpp"
#include "table_file.hpp"

int main(int argc, char** argv)
{
    using namespace qomath::cie;
    std::vector<float> x(kLocus1931FinePoints), y(kLocus1931FinePoints);
    if (interpolate_fine_locus(x, y) != 1) {
        std::fprintf(stderr, "interpolation of the locus failed\n");
        return 1;
    }
    return qomath::tools::write_table(argc, argv, "nm,x,y", [&](std::FILE* f) {
        for (int i = 0; i < kLocus1931FinePoints; ++i)
            std::fprintf(f, "%.1f,%.9g,%.9g\n", 360.0 + i / 10.0, static_cast<double>(x[i]),
                         static_cast<double>(y[i]));
    });
}
