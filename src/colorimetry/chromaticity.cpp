// Chromaticity coordinates, CIE 1976 L*u*v* and L*a*b*, colour differences.
//
// The projective transforms between X, Y, Z and the chromaticity systems are
// written once below: a denominator, formed in the precision the caller's
// family asks for, and numerators that divide by it in double.
#include "qomath/chromaticity.h"

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace {

// ---- Denominators ----------------------------------------------------------
// Each term is a separate statement so that no compiler fuses the float
// variants into a multiply-add: the scalar family's zero test depends on the
// plain float rounding.

// X + Y + Z
template <class T>
T xyz_sum(T X, T Y, T Z)
{
    return X + Y + Z;
}

// X + 15Y + 3Z
template <class T>
T ucs_denominator(T X, T Y, T Z)
{
    const T y = T(15) * Y;
    const T z = T(3) * Z;
    return X + y + z;
}

// 18u' - 48v' + 36
template <class T>
T uv_to_xy_denominator(T u, T v)
{
    const T a = T(18) * u;
    const T b = T(48) * v;
    return a - b + T(36);
}

// 12y - 2x + 3
template <class T>
T xy_to_uv_denominator(T x, T y)
{
    const T a = T(12) * y;
    const T b = T(2) * x;
    return a - b + T(3);
}

// ---- Numerators, each over its denominator --------------------------------

double share(double part, double sum) { return part / sum; }  // x, y or z
// 1960 u and 1976 u' coincide.
double u_from_XYZ(double X, double d) { return 4.0 * X / d; }
double v1960_from_XYZ(double Y, double d) { return 6.0 * Y / d; }
double v1976_from_XYZ(double Y, double d) { return 9.0 * Y / d; }
double x_from_uv(double u, double e) { return 27.0 * u / e; }
double y_from_uv(double v, double e) { return 12.0 * v / e; }
double u_from_xy(double x, double f) { return 4.0 * x / f; }
double v1960_from_xy(double y, double f) { return 6.0 * y / f; }
double v1976_from_xy(double y, double f) { return 9.0 * y / f; }

// A NaN or infinite denominator comes only from non-finite input or an
// overflowing float sum; it is refused like a zero one.
template <class T>
bool usable(T d)
{
    return d != T(0) && std::isfinite(d);
}

constexpr int kFailure = -1;  // zero denominator, null pointer, non-finite input

bool finite(float v)
{
    return std::isfinite(v);
}

// ---- Scalar family: float denominator, double quotient, 0.0 when zero -----

template <class Numerator>
double scalar_XYZ(float X, float Y, float Z, Numerator numerator, double top)
{
    const float d = ucs_denominator<float>(X, Y, Z);
    return usable(d) ? numerator(top, d) : 0.0;
}

double scalar_xyz(float part, float X, float Y, float Z)
{
    const float s = xyz_sum<float>(X, Y, Z);
    return usable(s) ? share(part, s) : 0.0;
}

template <class Numerator>
double scalar_uv(float u, float v, Numerator numerator, double top)
{
    const float e = uv_to_xy_denominator<float>(u, v);
    return usable(e) ? numerator(top, e) : 0.0;
}

template <class Numerator>
double scalar_xy(float x, float y, Numerator numerator, double top)
{
    const float f = xy_to_uv_denominator<float>(x, y);
    return usable(f) ? numerator(top, f) : 0.0;
}

// ---- Array family: double denominators, float results ---------------------

template <class VNumerator>
int array_XYZ_to_uv(const float* XYZ, float* uv, VNumerator v_numerator)
{
    if (!XYZ || !uv) return kFailure;
    const double d = ucs_denominator<double>(XYZ[0], XYZ[1], XYZ[2]);
    if (!usable(d)) return kFailure;
    uv[0] = static_cast<float>(u_from_XYZ(XYZ[0], d));
    uv[1] = static_cast<float>(v_numerator(XYZ[1], d));
    return QOMATH_SUCCESS;
}

template <class VNumerator>
int array_xy_to_uv(const float* xy, float* uv, VNumerator v_numerator)
{
    if (!xy || !uv) return kFailure;
    const double f = xy_to_uv_denominator<double>(xy[0], xy[1]);
    if (!usable(f)) return kFailure;
    uv[0] = static_cast<float>(u_from_xy(xy[0], f));
    uv[1] = static_cast<float>(v_numerator(xy[1], f));
    return QOMATH_SUCCESS;
}

// ---- L*a*b* and L*u*v* --------------------------------------------------

constexpr double kLabLinearBelow = 0.008856;

double lab_f(double t)
{
    return t >= kLabLinearBelow ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0;
}

void clear3(float* out)
{
    out[0] = out[1] = out[2] = 0.0f;
}

// ---- CIEDE2000 ---------------------------------------------------------

constexpr double kPi = std::numbers::pi;
constexpr double kTwoPi = 2.0 * std::numbers::pi;

constexpr double rad(double degrees)
{
    return degrees * kPi / 180.0;
}

// The a* scale of this library's CIEDE2000: 1 + G with G frozen at the
// value 0.5 (1 - sqrt(1.6338827203088156e-25)), i.e. 1.4999999999998, for
// every pair. Hosts compare against differences computed this way, so the
// factor does not follow the samples' chroma.
double a_star_factor()
{
    return 1.0 + 0.5 * (1.0 - std::sqrt(1.6338827203088156e-25));
}

struct Primed {
    double C;  // C'
    double h;  // h' in [0, 2 pi)
};

Primed primed(double a, double b)
{
    const double ap = a * a_star_factor();
    double h = std::atan2(b, ap);
    if (h < 0.0) h += kTwoPi;
    return {std::sqrt(ap * ap + b * b), h};
}

double ciede2000(double L1, double a1, double b1, double L2, double a2, double b2)
{
    const Primed p1 = primed(a1, b1);
    const Primed p2 = primed(a2, b2);

    double dh = p2.h - p1.h;  // into (-pi, pi]
    if (dh > kPi)
        dh -= kTwoPi;
    else if (dh <= -kPi)
        dh += kTwoPi;
    // Hue mean: when the two hues lie more than pi apart the sum always gains
    // 2 pi, also when it already exceeds 2 pi. Stored results depend on this.
    double hue_sum = p1.h + p2.h;
    if (std::fabs(p2.h - p1.h) > kPi) hue_sum += kTwoPi;
    const double H = hue_sum / 2.0;

    const double dL = L2 - L1;
    const double dC = p2.C - p1.C;
    const double dH = 2.0 * std::sqrt(p1.C * p2.C) * std::sin(dh / 2.0);
    const double C = (p1.C + p2.C) / 2.0;
    const double L50 = (L1 + L2) / 2.0 - 50.0;

    const double SL = 1.0 + 0.015 * L50 * L50 / std::sqrt(20.0 + L50 * L50);
    const double SC = 1.0 + 0.045 * C;
    const double T = 1.0 - 0.17 * std::cos(H - rad(30)) + 0.24 * std::cos(2.0 * H) +
                     0.32 * std::cos(3.0 * H + rad(6)) - 0.20 * std::cos(4.0 * H - rad(63));
    const double SH = 1.0 + 0.015 * C * T;

    const double x = (H - rad(275)) / rad(25);
    const double d_theta = rad(30) * std::exp(-x * x);
    // 2 sqrt(C^7 / (C^7 + 25^7)), written so that C^7 cannot overflow.
    const double RC = C > 0.0 ? 2.0 / std::sqrt(1.0 + std::pow(25.0 / C, 7)) : 0.0;
    const double RT = -std::sin(2.0 * d_theta) * RC;

    const double l = dL / SL, c = dC / SC, h = dH / SH;
    // The sum is mathematically >= 0 (|RT| < 2); the clamp absorbs rounding.
    return std::sqrt(std::fmax(0.0, l * l + c * c + h * h + RT * c * h));
}

}  // namespace

extern "C" {

// ---- Array family ----------------------------------------------------------

int TristimulusXYZTOCIE1931xyz(const float* XYZ, float* xyz)
{
    if (!XYZ || !xyz) return kFailure;
    const float s = xyz_sum<float>(XYZ[0], XYZ[1], XYZ[2]);
    if (!(std::fabs(static_cast<double>(s)) > 1e-15) || !finite(s)) return kFailure;
    for (int i = 0; i < 3; ++i) xyz[i] = static_cast<float>(share(XYZ[i], s));
    return QOMATH_SUCCESS;
}

int TristimulusXYZToCIE1960uv(const float* XYZ, float* uv)
{
    return array_XYZ_to_uv(XYZ, uv, v1960_from_XYZ);
}

int TristimulusXYZToUCS1976uv(const float* XYZ, float* uv)
{
    return array_XYZ_to_uv(XYZ, uv, v1976_from_XYZ);
}

int UCS1976uvToCIE1931xy(const float* uv, float* xy)
{
    if (!uv || !xy) return kFailure;
    const double e = uv_to_xy_denominator<double>(uv[0], uv[1]);
    if (!usable(e)) return kFailure;
    xy[0] = static_cast<float>(x_from_uv(uv[0], e));
    xy[1] = static_cast<float>(y_from_uv(uv[1], e));
    xy[2] = 0.0f;  // not z: hosts read a cleared third value
    return QOMATH_SUCCESS;
}

int CIE1931xyToUCS1976uv(const float* xy, float* uv)
{
    return array_xy_to_uv(xy, uv, v1976_from_xy);
}

int CIE1931xyToUCS1960uv(const float* xy, float* uv)
{
    return array_xy_to_uv(xy, uv, v1960_from_xy);
}

// ---- Scalar family ---------------------------------------------------------

double TRISTIMULUSXYZ_TO_CIE1931X(float X, float Y, float Z)
{
    return scalar_xyz(X, X, Y, Z);
}

double TRISTIMULUSXYZ_TO_CIE1931Y(float X, float Y, float Z)
{
    return scalar_xyz(Y, X, Y, Z);
}

double TRISTIMULUSXYZ_TO_CIE1931Z(float X, float Y, float Z)
{
    return scalar_xyz(Z, X, Y, Z);
}

double TRISTIMULUSXYZ_TO_CIE1960U(float X, float Y, float Z)
{
    return scalar_XYZ(X, Y, Z, u_from_XYZ, X);
}

double TRISTIMULUSXYZ_TO_UCS1976U(float X, float Y, float Z)
{
    return TRISTIMULUSXYZ_TO_CIE1960U(X, Y, Z);
}

double TRISTIMULUSXYZ_TO_CIE1960V(float X, float Y, float Z)
{
    return scalar_XYZ(X, Y, Z, v1960_from_XYZ, Y);
}

double TRISTIMULUSXYZ_TO_UCS1976V(float X, float Y, float Z)
{
    return scalar_XYZ(X, Y, Z, v1976_from_XYZ, Y);
}

double UCS1976UV_TO_CIE1931X(float u, float v)
{
    return scalar_uv(u, v, x_from_uv, u);
}

double UCS1976UV_TO_CIE1931Y(float u, float v)
{
    return scalar_uv(u, v, y_from_uv, v);
}

double CIE1931XY_TO_UCS1960U(float x, float y)
{
    return scalar_xy(x, y, u_from_xy, x);
}

double CIE1931XY_TO_UCS1976U(float x, float y)
{
    return CIE1931XY_TO_UCS1960U(x, y);
}

double CIE1931XY_TO_UCS1960V(float x, float y)
{
    return scalar_xy(x, y, v1960_from_xy, y);
}

double CIE1931XY_TO_UCS1976V(float x, float y)
{
    return scalar_xy(x, y, v1976_from_xy, y);
}

// ---- Colour spaces and differences -----------------------------------------

int CalculateCIE1976Luv(const float* XYZ, const float* uv, const float* XYZ_white,
                        const float* uv_white, float* luv)
{
    if (!XYZ || !uv || !XYZ_white || !uv_white || !luv) return kFailure;
    clear3(luv);
    // The white's Y only guards the call; the sample's Y is already Y / Yn.
    if (!(static_cast<double>(XYZ_white[1]) >= 1e-15) || !finite(XYZ_white[1]))
        return kFailure;
    const float Y = XYZ[1];
    if (!finite(Y) || !finite(uv[0]) || !finite(uv[1]) || !finite(uv_white[0]) ||
        !finite(uv_white[1]))
        return kFailure;
    // Compared as the float it is: Y = 0.008856f stays on the linear branch.
    const double L = Y > 0.008856f ? 116.0 * std::cbrt(static_cast<double>(Y)) - 16.0
                                   : 903.3 * static_cast<double>(Y);
    luv[0] = static_cast<float>(L);
    luv[1] = static_cast<float>(13.0 * L * (static_cast<double>(uv[0]) - uv_white[0]));
    luv[2] = static_cast<float>(13.0 * L * (static_cast<double>(uv[1]) - uv_white[1]));
    return QOMATH_SUCCESS;
}

int CalculateCIE1976Lab(const float* XYZ, const float* /*uv*/, const float* XYZ_white,
                        const float* /*uv_white*/, float* lab)
{
    if (!XYZ || !XYZ_white || !lab) return kFailure;
    clear3(lab);
    for (int i = 0; i < 3; ++i) {
        if (!(static_cast<double>(XYZ_white[i]) >= 1e-15) || !finite(XYZ_white[i]) ||
            !finite(XYZ[i]))
            return kFailure;
    }
    // The sample is already divided by Yn; the white enters only through its
    // chromaticity ratios.
    const double Yn = XYZ_white[1];
    const double fx = lab_f(XYZ[0] / (XYZ_white[0] / Yn));
    const double fy = lab_f(XYZ[1]);
    const double fz = lab_f(XYZ[2] / (XYZ_white[2] / Yn));
    lab[0] = static_cast<float>(116.0 * fy - 16.0);
    lab[1] = static_cast<float>(500.0 * (fx - fy));
    lab[2] = static_cast<float>(200.0 * (fy - fz));
    return QOMATH_SUCCESS;
}

float CalculateDeltaE(const typ_Lab* first, const typ_Lab* second)
{
    if (!first || !second) return 0.0f;
    const double dL = static_cast<double>(first->L) - second->L;
    const double da = static_cast<double>(first->a) - second->a;
    const double db = static_cast<double>(first->b) - second->b;
    return static_cast<float>(std::sqrt(dL * dL + da * da + db * db));
}

int GetDeltaE(float L1, float a1, float b1, float L2, float a2, float b2, float* delta_e)
{
    if (!delta_e) return kFailure;
    for (float v : {L1, a1, b1, L2, a2, b2})
        if (!finite(v)) return kFailure;
    const float d = static_cast<float>(ciede2000(L1, a1, b1, L2, a2, b2));
    if (!finite(d)) return kFailure;
    *delta_e = d;
    return QOMATH_SUCCESS;
}

}  // extern "C"
