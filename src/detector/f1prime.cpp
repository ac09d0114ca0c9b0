// Spectral mismatch index f1' of a detector against a CIE 1931 colour-matching
// function: the exported calculation and the standard form of the program.
#include "detector/f1prime.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "colorimetry/cie_tables.hpp"
#include "common/barrier.hpp"
#include "numerics/trapezoid.hpp"
#include "qomath/arrays.h"
#include "qomath/detector.h"
#include "qomath/grid.h"
#include "qomath/interpolation.h"
#include "qomath/spectral_arith.h"

namespace qomath::detector {
namespace {

constexpr int kSelXbar = 0, kSelYbar = 1, kSelZbar = 2, kSelIllumA = 6;
constexpr int kMinSourcePoints = 20;

// The interpolators take read-only inputs through non-const pointers and
// never write them.
float* readonly(const float* p)
{
    return const_cast<float*>(p);
}

double trapezoid_of(const float* v, std::size_t m, double step)
{
    if (m < 2) return 0.0;
    return numerics::trapezoid(m, step, false, [&](std::size_t i) { return v[i]; });
}

// Steps 2 to 9 once the arguments are known good. Outputs were cleared.
int calculate(const float* resp, typ_wlinfo resp_range, int mode, const float* source,
              typ_wlinfo source_range, bool use_caller_source, float& f1prime,
              typ_wlinfo& common_out, int& warning)
{
    const F1Target target = f1_target(mode);
    typ_wlinfo target_range = target.range;
    const int n_target = WLNumPts(&target_range);

    typ_wlinfo common{std::max(resp_range.start, target_range.start),
                      std::min(resp_range.end, target_range.end),
                      std::max(1.0f, resp_range.step)};
    common_out = common;
    if (resp_range.start > target_range.start) warning = 1;
    if (resp_range.end < target_range.end) warning = 2;
    const int n_common = WLNumPts(&common);
    if (n_common < 4) return -3;
    // The products run on the snapped common grid.
    common.end = static_cast<float>(n_common - 1) * common.step + common.start;

    const auto room = static_cast<std::size_t>(std::max(n_common, n_target) + 1);
    std::vector<float> target_values(target.values.begin(), target.values.end());
    std::vector<float> resp_common(room), src(room), product(room), diff(room);

    if (Interpolate(readonly(resp), &resp_range, resp_common.data(), &common) != 1) return -3;

    // The source at 1 nm over the target's own range, peak 1.
    typ_wlinfo src_range = source_range;
    const float* src_values = source;
    if (!use_caller_source) {
        const cie::Table a = cie::table(kSelIllumA);
        src_range = a.range;
        src_values = a.values.data();
    }
    if (Interpolate(readonly(src_values), &src_range, src.data(), &target_range) != 1) return -4;
    if (NormalizeArray(src.data(), n_target) != 1) return -4;

    typ_wlinfo out_range{};
    if (MultiplySpectralFiles(target_values.data(), &target_range, src.data(), &target_range,
                              product.data(), &out_range) != 1)
        return -5;
    const double a = trapezoid_of(product.data(), static_cast<std::size_t>(WLNumPts(&out_range)),
                                  out_range.step);
    if (MultiplySpectralFiles(resp_common.data(), &common, src.data(), &target_range,
                              product.data(), &out_range) != 1)
        return -5;
    const double b = trapezoid_of(product.data(), static_cast<std::size_t>(WLNumPts(&out_range)),
                                  out_range.step);
    if (!(b >= 1e-14)) return -7;

    const double scale = a / b;
    for (int i = 0; i < n_common; ++i)
        resp_common[static_cast<std::size_t>(i)] =
            static_cast<float>(resp_common[static_cast<std::size_t>(i)] * scale);
    if (SubtractSpectralFiles(resp_common.data(), &common, target_values.data(), &target_range,
                              diff.data(), &out_range) != 1)
        return -5;
    // |D[i] + D[i+1]| per interval, not |D| per sample: hosts compare with
    // numbers made this way.
    const double numerator =
        numerics::trapezoid(static_cast<std::size_t>(WLNumPts(&out_range)), out_range.step, true,
                            [&](std::size_t i) { return diff[i]; });
    const double denominator = trapezoid_of(target_values.data(),
                                            static_cast<std::size_t>(n_target), target_range.step);
    if (denominator >= 1e-14) f1prime = static_cast<float>(numerator / denominator);
    return 1;
}

}  // namespace

F1Target f1_target(int mode)
{
    const cie::Table xbar = cie::table(kSelXbar);
    switch (mode) {
    case QOMATH_F1_XBAR_SHORT: return {{360.0f, 505.0f, 1.0f}, xbar.values.first(146)};
    case QOMATH_F1_XBAR_LONG: return {{505.0f, 830.0f, 1.0f}, xbar.values.subspan(145, 326)};
    case QOMATH_F1_YBAR: return {cie::table(kSelYbar).range, cie::table(kSelYbar).values};
    default: return {cie::table(kSelZbar).range, cie::table(kSelZbar).values};
    }
}

double linear_at(std::span<const float> wl, std::span<const float> v, double x, double outside)
{
    if (wl.empty() || !(x >= wl.front()) || !(x <= wl.back())) return outside;
    const auto it = std::lower_bound(wl.begin(), wl.end(), static_cast<float>(x));
    const auto k = static_cast<std::size_t>(it - wl.begin());
    if (k == 0 || static_cast<double>(wl[k]) == x) return v[k];
    const double x0 = wl[k - 1], x1 = wl[k];
    return v[k - 1] + (v[k] - static_cast<double>(v[k - 1])) * (x - x0) / (x1 - x0);
}

F1Standard f1prime_standard(std::span<const float> wl, std::span<const float> responsivity,
                            int mode, std::span<const float> source_wl,
                            std::span<const float> source)
{
    F1Standard r;
    if (mode < 0 || mode > 3 || wl.size() < 2 || wl.size() != responsivity.size() ||
        source_wl.size() != source.size())
        return r.status = -1, r;
    const F1Target t = f1_target(mode);
    const cie::Table a_table = cie::table(kSelIllumA);
    const bool own_source = !source.empty();
    const std::size_t m = t.values.size();
    r.covers_start = wl.front() <= t.range.start;
    r.covers_end = wl.back() >= t.range.end;
    r.source_covers = !own_source || (source_wl.front() <= t.range.start &&
                                      source_wl.back() >= t.range.end);

    std::vector<double> s(m), p(m);
    for (std::size_t i = 0; i < m; ++i) {
        const double x = static_cast<double>(t.range.start) + static_cast<double>(i);
        s[i] = linear_at(wl, responsivity, x, 0.0);
        p[i] = own_source
                   ? linear_at(source_wl, source, x, 0.0)
                   : a_table.values[static_cast<std::size_t>(x - a_table.range.start)];
    }
    const auto integral = [&](auto f) { return numerics::trapezoid(m, 1.0, false, f); };
    const double a = integral([&](std::size_t i) { return p[i] * t.values[i]; });
    const double b = integral([&](std::size_t i) { return p[i] * s[i]; });
    const double target_area = integral([&](std::size_t i) { return double{t.values[i]}; });
    if (!(std::fabs(b) >= 1e-300) || !std::isfinite(a / b)) return r.status = -1, r;
    r.scale = a / b;
    const double deviation =
        integral([&](std::size_t i) { return std::fabs(r.scale * s[i] - t.values[i]); });
    r.f1prime = deviation / target_area;
    r.status = 1;
    return r;
}

}  // namespace qomath::detector

using namespace qomath::detector;

extern "C" int f1primeCalculate(const float* responsivity, const typ_wlinfo* responsivity_range,
                                int mode, const float* source, const typ_wlinfo* source_range,
                                float* f1prime, typ_wlinfo* common_range, int* warning)
{
    if (f1prime) *f1prime = 0.0f;
    if (common_range) *common_range = typ_wlinfo{0.0f, 0.0f, 0.0f};
    if (warning) *warning = 0;
    if (static_cast<unsigned>(mode) > 3u) return -1;

    bool use_caller_source = false;
    if (source_range) {
        const typ_wlinfo s = *source_range;
        const int points = WLNumPts(&s);
        if (s.start != 0.0f && s.end != 0.0f && s.step != 0.0f) {
            // A record given in full must span every target with a usable grid.
            if (s.start > 360.0f || s.end < 830.0f || points < kMinSourcePoints) return -20;
            use_caller_source = true;
        } else {
            use_caller_source = points >= kMinSourcePoints;
        }
    }
    if (!responsivity || !responsivity_range || !source_range || !f1prime || !common_range ||
        !warning || (use_caller_source && !source))
        return -3;
    const typ_wlinfo resp_range = *responsivity_range;
    if (WLNumPts(&resp_range) < 4) return -3;

    return qomath::detail::guarded(-2, [&] {
        return calculate(responsivity, resp_range, mode, source, *source_range,
                         use_caller_source, *f1prime, *common_range, *warning);
    });
}
