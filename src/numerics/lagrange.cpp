// Lagrange interpolation: the polynomial through a set of points, resampling
// of a spectrum, and resampling of a 2-D matrix along both of its axes.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "common/barrier.hpp"
#include "numerics/resample.hpp"
#include "qomath/interpolation.h"

namespace qomath::numerics {
namespace {

constexpr int kMaxOrder = 5;
constexpr int kMinAxisPoints = 5;
constexpr std::size_t kMaxStencil = kMaxOrder + 1;

// The Lagrange basis polynomial of node i at x0: the product over j != i of
// (x0 - x[j]) / (x[i] - x[j]). Each factor is formed in float, the product in
// double; stored results depend on this mix.
double lagrange_basis(std::span<const float> x, std::size_t i, float x0)
{
    double product = 1.0;
    for (std::size_t j = 0; j < x.size(); ++j)
        if (j != i) product *= static_cast<double>((x0 - x[j]) / (x[i] - x[j]));
    return product;
}

// The value at x0 of the polynomial through (x[i], y[i]), summed in double.
float lagrange(std::span<const float> x, std::span<const float> y, float x0)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
        sum += static_cast<double>(y[i]) * lagrange_basis(x, i, x0);
    return static_cast<float>(sum);
}

// The Lagrange rule at one destination wavelength: which samples take part
// and with what weights. apply() gives the same float as lagrange() on the
// same window, bit for bit.
struct Stencil {
    std::size_t first = 0;
    std::size_t count = 0;
    std::array<double, kMaxStencil> weight{};

    float apply(std::span<const float> y) const
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < count; ++i)
            sum += static_cast<double>(y[first + i]) * weight[i];
        return static_cast<float>(sum);
    }
};

// A source axis with the window rule of the Lagrange resamplers. Requires
// 0 <= order <= kMaxOrder and at least order + 1 wavelengths.
class LagrangeAxis {
public:
    LagrangeAxis(std::span<const float> x, int order)
        : x_(x), order_(order), increasing_(strictly_increasing(x))
    {
    }

    Stencil stencil(float x0) const
    {
        Stencil s;
        s.first = window_start(nearest(x0));
        s.count = static_cast<std::size_t>(order_) + 1;
        const auto window = x_.subspan(s.first, s.count);
        for (std::size_t i = 0; i < s.count; ++i) s.weight[i] = lagrange_basis(window, i, x0);
        return s;
    }

private:
    double distance(std::size_t j, float x0) const
    {
        return std::fabs(static_cast<double>(x0) - static_cast<double>(x_[j]));
    }

    // The nearest wavelength; the first of equal distances wins.
    std::size_t nearest(float x0) const
    {
        std::size_t k = 0;
        if (increasing_) {
            k = static_cast<std::size_t>(std::lower_bound(x_.begin(), x_.end(), x0) - x_.begin());
            if (k == x_.size() || (k > 0 && distance(k - 1, x0) <= distance(k, x0))) --k;
            while (k > 0 && distance(k - 1, x0) == distance(k, x0)) --k;
            return k;
        }
        double best = distance(0, x0);
        for (std::size_t j = 1; j < x_.size(); ++j) {
            const double d = distance(j, x0);
            if (d < best) {
                best = d;
                k = j;
            }
        }
        return k;
    }

    // First of the order + 1 samples around the nearest one, k.
    std::size_t window_start(std::size_t k) const
    {
        const int n = static_cast<int>(x_.size());
        int first = static_cast<int>(k) - order_ / 2;
        // A window that would start at index 1 starts at 0 as well; stored
        // results were made with this window.
        if (first < 2) first = 0;
        // A window ending on the last-but-one sample, or beyond, is moved to
        // end on the last one.
        if (n - 1 <= order_ + 1 + first) first = n - order_ - 1;
        return static_cast<std::size_t>(first);
    }

    std::span<const float> x_;
    int order_;
    bool increasing_;
};

bool valid_order(int order)
{
    return order >= 0 && order <= kMaxOrder;
}

// Axis counts within 5..1024 and a value block that fits the record.
bool axes_fit(const typ_matrix2d& m)
{
    const auto axis_ok = [](int n) { return n >= kMinAxisPoints && n <= QOMATH_MATRIX2D_MAX_AXIS; };
    return axis_ok(m.rows) && axis_ok(m.cols) && m.rows * m.cols <= QOMATH_MATRIX2D_CAPACITY;
}

std::vector<Stencil> stencils(const LagrangeAxis& axis, std::span<const float> targets)
{
    std::vector<Stencil> out;
    out.reserve(targets.size());
    for (const float x0 : targets) out.push_back(axis.stencil(x0));
    return out;
}

// Resamples the values of `source` onto the axes of `dst`: first every
// source column onto the destination rows, then every resulting row onto
// the destination columns. Axes and order are validated by the caller.
void resample_matrix(const typ_matrix2d& source, typ_matrix2d& dst, int order)
{
    // A private copy of the whole record: dst may be the source record.
    const auto src = std::make_unique<const typ_matrix2d>(source);
    const auto src_rows = static_cast<std::size_t>(src->rows);
    const auto src_cols = static_cast<std::size_t>(src->cols);
    const auto dst_rows = static_cast<std::size_t>(dst.rows);
    const auto dst_cols = static_cast<std::size_t>(dst.cols);

    const LagrangeAxis row_axis({src->rowWl, src_rows}, order);
    const LagrangeAxis col_axis({src->colWl, src_cols}, order);
    const auto row_stencils = stencils(row_axis, {dst.rowWl, dst_rows});
    const auto col_stencils = stencils(col_axis, {dst.colWl, dst_cols});

    // Along the row axis: partial(r, c) for destination row r, source column
    // c. Each column is summed over the stencil in the order apply() uses.
    std::vector<float> partial(dst_rows * src_cols);
    std::vector<double> sum(src_cols);
    const std::span<const float> values(src->values, src_rows * src_cols);
    for (std::size_t r = 0; r < dst_rows; ++r) {
        const Stencil& s = row_stencils[r];
        std::fill(sum.begin(), sum.end(), 0.0);
        for (std::size_t i = 0; i < s.count; ++i) {
            const auto row = values.subspan((s.first + i) * src_cols, src_cols);
            for (std::size_t c = 0; c < src_cols; ++c)
                sum[c] += static_cast<double>(row[c]) * s.weight[i];
        }
        std::transform(sum.begin(), sum.end(), partial.begin() + static_cast<std::ptrdiff_t>(r * src_cols),
                       [](double v) { return static_cast<float>(v); });
    }

    // Along the column axis.
    for (std::size_t r = 0; r < dst_rows; ++r) {
        const std::span<const float> row(partial.data() + r * src_cols, src_cols);
        float* out = dst.values + r * dst_cols;
        for (std::size_t c = 0; c < dst_cols; ++c) out[c] = col_stencils[c].apply(row);
    }
}

}  // namespace
}  // namespace qomath::numerics

using qomath::detail::guarded;
using namespace qomath::numerics;

extern "C" {

int InterpolateVectorLagrange(float* xSrc, float* ySrc, int nSrc, float* xDst, float* yDst,
                              int nDst, int order)
{
    if (!xSrc || !ySrc || !xDst || !yDst || nSrc < kMinAxisPoints || nDst < kMinAxisPoints)
        return -1;
    if (!valid_order(order)) return -2;
    if (nSrc < order + 1) return -1;
    if (xSrc[0] > xDst[0]) return -3;
    if (xDst[nDst - 1] > xSrc[nSrc - 1]) return -4;

    const auto ns = static_cast<std::size_t>(nSrc);
    const LagrangeAxis axis({xSrc, ns}, order);
    const std::span<const float> ys(ySrc, ns);
    for (int i = 0; i < nDst; ++i) {
        const float v = axis.stencil(xDst[i]).apply(ys);
        if (std::isnan(v)) return -5;  // this point and the rest stay untouched
        yDst[i] = v;
    }
    return 1;
}

float InterpolateLagrangePolynomial(float* x, float* y, int n, float x0)
{
    if (!x || !y || n < 1) return 0.0f;
    const auto count = static_cast<std::size_t>(n);
    return lagrange({x, count}, {y, count}, x0);
}

int InterpolateMatrixLagrange(typ_matrix2d* src, typ_matrix2d* dst, int order)
{
    return guarded(0, [&] {
        if (!src || !axes_fit(*src)) return -1;
        if (!dst || !axes_fit(*dst)) return -2;
        if (!valid_order(order)) return -3;
        if (src->rows < order + 1 || src->cols < order + 1) return -1;
        if (dst->rowWl[0] < src->rowWl[0]) return -4;
        if (dst->rowWl[dst->rows - 1] > src->rowWl[src->rows - 1]) return -5;
        if (dst->colWl[dst->cols - 1] > src->colWl[src->cols - 1]) return -6;
        resample_matrix(*src, *dst, order);
        return 1;
    });
}

}  // extern "C"
