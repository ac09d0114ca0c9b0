// Retroreflection angle systems. Each system turns its angles into the
// illumination and observation axes in the retroreflector's own frame
// (x = datum axis D, z = reference axis R) and back; a conversion is one
// system's forward map followed by the other's inverse.
#include <array>
#include <cmath>
#include <initializer_list>

#include "qomath/retro.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kDeg = kPi / 180.0;
constexpr double kTiny = 1e-12;

struct V3 {
    double x, y, z;
};
V3 operator*(double s, V3 a) { return {s * a.x, s * a.y, s * a.z}; }
V3 operator+(V3 a, V3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
V3 operator-(V3 a, V3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(V3 a, V3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
V3 cross(V3 a, V3 b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
double norm(V3 a) { return std::sqrt(dot(a, a)); }
V3 unit(V3 a) { return (1.0 / norm(a)) * a; }

// Rotations by t radians about x, y, z, and their transposes (inverse).
V3 rot_x(double t, V3 v) { return {v.x, std::cos(t) * v.y - std::sin(t) * v.z, std::sin(t) * v.y + std::cos(t) * v.z}; }
V3 rot_y(double t, V3 v) { return {std::cos(t) * v.x + std::sin(t) * v.z, v.y, -std::sin(t) * v.x + std::cos(t) * v.z}; }
V3 rot_z(double t, V3 v) { return {std::cos(t) * v.x - std::sin(t) * v.y, std::sin(t) * v.x + std::cos(t) * v.y, v.z}; }

double wrap(double deg)  // to (-180, 180]
{
    double a = std::remainder(deg, 360.0);
    return a <= -180.0 ? a + 360.0 : a;
}
double angle_between(V3 a, V3 b) { return std::atan2(norm(cross(a, b)), dot(a, b)) / kDeg; }
double azimuth(V3 a) { return std::hypot(a.x, a.y) < kTiny ? 0.0 : std::atan2(a.y, a.x) / kDeg; }

struct Axes {
    V3 i, o;  // illumination and observation axes, retroreflector frame
};
using Angles = std::array<double, 4>;

// ---- CIE goniometer: body-to-laboratory M = Rx(beta1) Ry(beta2) Rz(epsilon + 90).
Axes cie_axes(const Angles& a)
{
    const double b1 = a[0] * kDeg, b2 = a[1] * kDeg, al = a[2] * kDeg, ep = (a[3] + 90.0) * kDeg;
    auto to_body = [&](V3 lab) { return rot_z(-ep, rot_y(-b2, rot_x(-b1, lab))); };
    return {to_body({0, 0, 1}), to_body({0, std::sin(al), std::cos(al)})};
}

Angles cie_angles(const Axes& g)
{
    const V3 r{0, 0, 1}, d{1, 0, 0};
    const V3 e3 = g.i;
    V3 up = g.o - dot(g.o, e3) * e3;  // observation side of the laboratory
    if (norm(up) < kTiny) {           // alpha 0 or 180: see the header
        up = -1.0 * (r - dot(r, e3) * e3);
        if (norm(up) < kTiny) up = d - dot(d, e3) * e3;
    }
    const V3 e2 = unit(up), e1 = cross(e2, e3);
    const double r1 = std::fmax(-1.0, std::fmin(1.0, e1.z)), r2 = e2.z, r3 = e3.z;
    const double b2 = std::asin(r1), b1 = std::hypot(r2, r3) < kTiny ? 0.0 : std::atan2(-r2, r3);
    // D in laboratory coordinates, undone by beta1 and beta2: Rz(epsilon + 90) x.
    const V3 v = rot_y(-b2, rot_x(-b1, V3{e1.x, e2.x, e3.x}));
    return {wrap(b1 / kDeg), b2 / kDeg, angle_between(g.i, g.o), wrap(std::atan2(v.y, v.x) / kDeg - 90.0)};
}

// ---- Intrinsic (beta, omega_s, alpha, gamma). u: in the plane of I and R,
// perpendicular to I, towards R (-dI/dbeta, defined also at beta 0 and 180).
V3 towards_r(double beta, double omega)
{
    return {-std::cos(beta) * std::cos(omega), -std::cos(beta) * std::sin(omega), std::sin(beta)};
}

Axes intrinsic_axes(const Angles& a)
{
    const double b = a[0] * kDeg, w = a[1] * kDeg, al = a[2] * kDeg, ga = a[3] * kDeg;
    const V3 i{std::sin(b) * std::cos(w), std::sin(b) * std::sin(w), std::cos(b)};
    const V3 u = towards_r(b, w);
    const V3 dir = std::cos(ga) * u + std::sin(ga) * cross(i, u);
    return {i, std::cos(al) * i + std::sin(al) * dir};
}

Angles intrinsic_angles(const Axes& g)
{
    const double beta = angle_between(V3{0, 0, 1}, g.i), omega = azimuth(g.i);
    const V3 u = towards_r(beta * kDeg, omega * kDeg);
    const V3 side = g.o - dot(g.o, g.i) * g.i;
    const double gamma = norm(side) < kTiny ? 0.0 : std::atan2(dot(cross(g.i, u), side), dot(u, side)) / kDeg;
    return {beta, omega, angle_between(g.i, g.o), wrap(gamma)};
}

// ---- Application (beta, alpha, gamma, omega_s): intrinsic reordered, omega_s negated.
Angles app_from_intrinsic(const Angles& a) { return {a[0], a[2], a[3], wrap(-a[1])}; }
Angles intrinsic_from_app(const Angles& a) { return {a[0], wrap(-a[3]), a[1], a[2]}; }
Axes app_axes(const Angles& a) { return intrinsic_axes(intrinsic_from_app(a)); }
Angles app_angles(const Axes& g) { return app_from_intrinsic(intrinsic_angles(g)); }

// ---- Road marking (illumination elevation, observation elevation, azimuth).
Axes road_axes(const Angles& a)
{
    const double e = a[0] * kDeg, o = a[1] * kDeg, p = a[2] * kDeg;
    return {{std::cos(e), 0, std::sin(e)}, {std::cos(o) * std::cos(p), std::cos(o) * std::sin(p), std::sin(o)}};
}

Angles road_angles(const Axes& g)
{
    auto elevation = [](V3 v) { return std::atan2(v.z, std::hypot(v.x, v.y)) / kDeg; };
    return {elevation(g.i), elevation(g.o), wrap(azimuth(g.o) - azimuth(g.i)), 0.0};
}

struct System {
    Axes (*axes)(const Angles&);
    Angles (*angles)(const Axes&);
    std::array<double, 4> low, high;  // accepted input ranges
};
const System kCie{cie_axes, cie_angles, {-180, -90, 0, -180}, {180, 90, 180, 180}};
const System kIntrinsic{intrinsic_axes, intrinsic_angles, {0, -180, 0, -180}, {180, 180, 180, 180}};
const System kApp{app_axes, app_angles, {0, 0, -180, -180}, {180, 180, 180, 180}};
const System kRoad{road_axes, road_angles, {0, 0, -180, 0}, {90, 90, 180, 0}};

int convert(const System& from, const System& to, std::array<float, 4> in, std::array<float*, 4> out, int n_out)
{
    for (int k = 0; k < n_out; ++k)
        if (out[k]) *out[k] = 0.0f;
    for (int k = 0; k < n_out; ++k)
        if (!out[k]) return -1;
    Angles a{};
    for (int k = 0; k < 4; ++k) {
        a[k] = in[k];
        if (!std::isfinite(in[k]) || a[k] < from.low[k] || a[k] > from.high[k]) return -2;
    }
    const Axes g = from.axes(a);
    // Float inputs put an axis on the surface up to about 1e-7 below it.
    if (&to == &kRoad && (g.i.z < -1e-6 || g.o.z < -1e-6)) return -3;
    const Angles r = to.angles(g);
    for (int k = 0; k < n_out; ++k) *out[k] = static_cast<float>(r[k]);
    return 1;
}

}  // namespace

int RETRO_CIE_TO_INTRINSIC(float beta1, float beta2, float alpha, float epsilon, float* beta, float* omega_s,
                           float* alpha_out, float* gamma)
{
    return convert(kCie, kIntrinsic, {beta1, beta2, alpha, epsilon}, {beta, omega_s, alpha_out, gamma}, 4);
}

int RETRO_INTRINSIC_TO_CIE(float beta, float omega_s, float alpha, float gamma, float* beta1, float* beta2,
                           float* alpha_out, float* epsilon)
{
    return convert(kIntrinsic, kCie, {beta, omega_s, alpha, gamma}, {beta1, beta2, alpha_out, epsilon}, 4);
}

int RETRO_CIE_TO_APPLICATION(float beta1, float beta2, float alpha, float epsilon, float* beta, float* alpha_out,
                             float* gamma, float* omega_s)
{
    return convert(kCie, kApp, {beta1, beta2, alpha, epsilon}, {beta, alpha_out, gamma, omega_s}, 4);
}

int RETRO_APPLICATION_TO_CIE(float beta, float alpha, float gamma, float omega_s, float* beta1, float* beta2,
                             float* alpha_out, float* epsilon)
{
    return convert(kApp, kCie, {beta, alpha, gamma, omega_s}, {beta1, beta2, alpha_out, epsilon}, 4);
}

int RETRO_APPLICATION_TO_INTRINSIC(float beta, float alpha, float gamma, float omega_s, float* beta_out,
                                   float* omega_s_out, float* alpha_out, float* gamma_out)
{
    return convert(kApp, kIntrinsic, {beta, alpha, gamma, omega_s}, {beta_out, omega_s_out, alpha_out, gamma_out}, 4);
}

int RETRO_INTRINSIC_TO_APPLICATION(float beta, float omega_s, float alpha, float gamma, float* beta_out,
                                   float* alpha_out, float* gamma_out, float* omega_s_out)
{
    return convert(kIntrinsic, kApp, {beta, omega_s, alpha, gamma}, {beta_out, alpha_out, gamma_out, omega_s_out}, 4);
}

int RETRO_ROADMARKING_TO_CIE(float illumination, float observation, float azimuth_deg, float* beta1, float* beta2,
                             float* alpha, float* epsilon)
{
    return convert(kRoad, kCie, {illumination, observation, azimuth_deg, 0.0f}, {beta1, beta2, alpha, epsilon}, 4);
}

int RETRO_CIE_TO_ROADMARKING(float beta1, float beta2, float alpha, float epsilon, float* illumination,
                             float* observation, float* azimuth_deg)
{
    return convert(kCie, kRoad, {beta1, beta2, alpha, epsilon}, {illumination, observation, azimuth_deg, nullptr}, 3);
}

int RETRO_ROADMARKING_ANGLES(float distance_m, float eye_height_m, float lamp_height_m, float* observation,
                             float* illumination)
{
    if (!observation || !illumination) return -1;
    *observation = *illumination = 0.0f;
    for (float v : {distance_m, eye_height_m, lamp_height_m})
        if (!std::isfinite(v)) return -2;
    if (!(distance_m > 0.0f) || eye_height_m < 0.0f || lamp_height_m < 0.0f) return -2;
    *observation = static_cast<float>(std::atan2(double(eye_height_m), double(distance_m)) / kDeg);
    *illumination = static_cast<float>(std::atan2(double(lamp_height_m), double(distance_m)) / kDeg);
    return 1;
}
