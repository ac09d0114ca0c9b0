// Dense kernels of the stray-light correction: the float matrix-vector
// product with double sums, and the inversion of a matrix by LU decomposition
// without pivoting (L with its diagonal, U with a unit diagonal) followed by
// the two triangular inverses and their product U^-1 L^-1.
//
// Each kernel has a baseline path (any x86-64 or other CPU) and, on x86, an
// AVX2 + FMA path chosen at run time; both are kept and tested.
#pragma once

#include <cstddef>

namespace qomath::numerics {

enum class SimdPath { baseline = 0, avx2 = 1 };

// The fastest path this CPU runs.
SimdPath best_path();
// True when this CPU can run the path.
bool path_available(SimdPath p);

// out[r] = sum over c of m[r * n + c] * y[c] for r < rows, summed in double
// and stored as float. out must not overlap m or y. No allocation.
void matvec(const float* m, const float* y, float* out, std::size_t rows, std::size_t n);
void matvec(const float* m, const float* y, float* out, std::size_t rows, std::size_t n,
            SimdPath path);

// a (n x n, row-major) becomes its inverse: LU without pivoting and without a
// zero-pivot test (callers pass diagonally dominant matrices), the triangular
// inverses and U^-1 L^-1, blocked over a matrix product kernel. Two n x n
// scratch matrices are taken; throws std::bad_alloc when they cannot be had.
void lu_invert(double* a, std::size_t n);
void lu_invert(double* a, std::size_t n, SimdPath path);

// The same steps element by element, in the order the method is written
// (row 0 of U, then column i of L and row i of U for each i, L^-1 by
// columns, U^-1 from the last column back, the product row by row), in
// place and without scratch. Slow (n^3 with poor locality); the reference
// the blocked kernel is held to.
void lu_invert_plain(double* a, std::size_t n);

}  // namespace qomath::numerics
