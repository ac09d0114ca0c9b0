// Bispectral fluorescence: validation of a Donaldson matrix, its radiance
// factors under an illuminant and the colour they give.
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/chromaticity.h"
#include "qomath/donaldson.h"
#include "qomath/interpolation.h"
#include "qomath/tristimulus.h"

namespace {

constexpr int kMaxAxis = 4096;
constexpr double kSameWl = 0.0001;

bool axis_ok(const float* a, int n)
{
    if (n < 2 || n > kMaxAxis) return false;
    for (int k = 0; k < n; ++k)
        if (!std::isfinite(a[k]) || (k > 0 && !(a[k] > a[k - 1]))) return false;
    return true;
}

// Cell widths: half the distance to each neighbour.
std::vector<double> widths(const float* a, int n)
{
    std::vector<double> w(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k)
        w[static_cast<std::size_t>(k)] =
            0.5 * (double(a[k < n - 1 ? k + 1 : k]) - double(a[k > 0 ? k - 1 : k]));
    return w;
}

// diag[i]: the excitation row of emission i; sets status -3 when one is missing.
std::vector<int> diagonal(const float* ex, int n_ex, const float* em, int n_em, int& status)
{
    std::vector<int> row(static_cast<std::size_t>(n_em), -1);
    int j = 0;
    for (int i = 0; i < n_em; ++i) {
        while (j < n_ex && double(ex[j]) < double(em[i]) - kSameWl) ++j;
        if (j == n_ex || std::fabs(double(ex[j]) - double(em[i])) > kSameWl) {
            status = -3;
            return row;
        }
        row[static_cast<std::size_t>(i)] = j;
    }
    return row;
}

struct Matrix {
    const float *ex, *em, *v;
    int n_ex, n_em;
    float at(int j, int i) const { return v[static_cast<std::size_t>(j) * static_cast<std::size_t>(n_em) + static_cast<std::size_t>(i)]; }
};

int validate(const Matrix& m, float* yields)
{
    if (yields)
        for (int j = 0; j < m.n_ex; ++j) yields[j] = 0.0f;
    if (!m.ex || !m.em || !m.v) return -1;
    if (!axis_ok(m.ex, m.n_ex) || !axis_ok(m.em, m.n_em)) return -2;
    int status = 1;
    const std::vector<int> row = diagonal(m.ex, m.n_ex, m.em, m.n_em, status);
    if (status != 1) return status;
    std::vector<int> col(static_cast<std::size_t>(m.n_ex), -1);  // emission cell of each excitation
    for (int i = 0; i < m.n_em; ++i) col[static_cast<std::size_t>(row[static_cast<std::size_t>(i)])] = i;
    for (int j = 0; j < m.n_ex; ++j)
        for (int i = 0; i < m.n_em; ++i)
            if (!std::isfinite(m.at(j, i)) || m.at(j, i) < 0.0f) return -4;
    const std::vector<double> dl = widths(m.em, m.n_em);
    for (int j = 0; j < m.n_ex; ++j) {
        const int c = col[static_cast<std::size_t>(j)];
        double photons = 0.0;
        for (int i = 0; i < m.n_em; ++i)
            if (i != c) photons += double(m.at(j, i)) * (double(m.em[i]) / double(m.ex[j])) * dl[static_cast<std::size_t>(i)];
        const double absorbed = c < 0 ? 1.0 : 1.0 - double(m.at(j, c));
        const double q = photons == 0.0 ? 0.0 : absorbed > 0.0 ? photons / absorbed : INFINITY;
        if (yields) yields[j] = static_cast<float>(q);
        if (q > 1.0 + 1e-6) status = -5;
    }
    return status;
}

int radiance_factors(const Matrix& m, const float* illum_wl, const float* illum, int n_illum, float* total,
                     float* reflected, float* fluorescent)
{
    for (float* out : {total, reflected, fluorescent})
        if (out)
            for (int i = 0; i < m.n_em && i < kMaxAxis; ++i) out[i] = 0.0f;
    const int status = validate(m, nullptr);
    if (status != 1) return status;
    if (!illum_wl || !illum || !axis_ok(illum_wl, n_illum) || double(illum_wl[0]) > double(m.ex[0]) + kSameWl ||
        double(illum_wl[n_illum - 1]) < double(m.ex[m.n_ex - 1]) - kSameWl)
        return -7;
    for (int k = 0; k < n_illum; ++k)
        if (!std::isfinite(illum[k])) return -7;
    int dummy = 1;
    const std::vector<int> row = diagonal(m.ex, m.n_ex, m.em, m.n_em, dummy);
    std::vector<float> s(static_cast<std::size_t>(m.n_ex));
    LinearInterpolation(const_cast<float*>(illum_wl), const_cast<float*>(illum), n_illum, const_cast<float*>(m.ex),
                        s.data(), m.n_ex);
    const std::vector<double> dmu = widths(m.ex, m.n_ex);
    for (int i = 0; i < m.n_em; ++i) {
        const int d = row[static_cast<std::size_t>(i)];
        const double s_em = s[static_cast<std::size_t>(d)];
        double excited = 0.0;
        for (int j = 0; j < m.n_ex; ++j)
            if (j != d) excited += double(m.at(j, i)) * s[static_cast<std::size_t>(j)] * dmu[static_cast<std::size_t>(j)];
        const double refl = m.at(d, i), fl = s_em > 0.0 ? excited / s_em : 0.0;
        if (reflected) reflected[i] = static_cast<float>(refl);
        if (fluorescent) fluorescent[i] = static_cast<float>(fl);
        if (total) total[i] = static_cast<float>(refl + fl);
    }
    return 1;
}

}  // namespace

int DonaldsonMatrix_Validate(const float* excitation, int n_ex, const float* emission, int n_em, const float* values,
                             float* yields)
{
    if (yields && (n_ex < 1 || n_ex > kMaxAxis)) yields = nullptr;
    return qomath::detail::guarded(-6, [&] { return validate({excitation, emission, values, n_ex, n_em}, yields); });
}

int DonaldsonMatrix_RadianceFactor(const float* excitation, int n_ex, const float* emission, int n_em,
                                   const float* values, const float* illum_wl, const float* illum, int n_illum,
                                   float* total, float* reflected, float* fluorescent)
{
    return qomath::detail::guarded(-6, [&] {
        return radiance_factors({excitation, emission, values, n_ex, n_em}, illum_wl, illum, n_illum, total,
                                reflected, fluorescent);
    });
}

int DonaldsonMatrix_Colour(const float* excitation, int n_ex, const float* emission, int n_em, const float* values,
                           const float* illum_wl, const float* illum, int n_illum, float* XYZ, float* xy, typ_Lab* lab)
{
    if (!XYZ || !xy || !lab) return -8;
    XYZ[0] = XYZ[1] = XYZ[2] = xy[0] = xy[1] = 0.0f;
    *lab = typ_Lab{};
    return qomath::detail::guarded(-6, [&] {
        const Matrix m{excitation, emission, values, n_ex, n_em};
        const int n = n_em >= 2 && n_em <= kMaxAxis ? n_em : 0;
        std::vector<float> beta(static_cast<std::size_t>(n)), s(static_cast<std::size_t>(n));
        const int status = radiance_factors(m, illum_wl, illum, n_illum, beta.data(), nullptr, nullptr);
        if (status != 1) return status;
        LinearInterpolation(const_cast<float*>(illum_wl), const_cast<float*>(illum), n_illum, const_cast<float*>(emission),
                            s.data(), n);
        for (int i = 0; i < n; ++i) beta[static_cast<std::size_t>(i)] *= s[static_cast<std::size_t>(i)];
        float sample[3], white[3], xyz[3];
        if (CalcTristimulusXYZ1931_2(emission, beta.data(), n, sample) != 1 ||
            CalcTristimulusXYZ1931_2(emission, s.data(), n, white) != 1 || !(white[1] > 0.0f))
            return -8;
        const float rel[3] = {sample[0] / white[1], sample[1] / white[1], sample[2] / white[1]};
        const float ref[3] = {white[0] / white[1], 1.0f, white[2] / white[1]};
        float lab3[3];
        if (CalculateCIE1976Lab(rel, nullptr, ref, nullptr, lab3) != 1) return -8;
        const float out[3] = {100.0f * rel[0], 100.0f * rel[1], 100.0f * rel[2]};
        if (TristimulusXYZTOCIE1931xyz(out, xyz) == 1) xy[0] = xyz[0], xy[1] = xyz[1];
        for (int k = 0; k < 3; ++k) XYZ[k] = out[k];
        *lab = typ_Lab{lab3[0], lab3[1], lab3[2]};
        return 1;
    });
}
