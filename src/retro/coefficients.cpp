// Coefficients of retroreflection (CIE 54.2): R_I, R_A, R_L and their relations.
#include <cmath>
#include <initializer_list>

#include "qomath/retro.h"

namespace {

bool finite(std::initializer_list<float> vs)
{
    for (float v : vs)
        if (!std::isfinite(v)) return false;
    return true;
}

// A finite ratio, or 0.
double ratio(double num, double den)
{
    const double r = num / den;
    return std::isfinite(r) ? r : 0.0;
}

// cos v for a viewing angle in [0, 90), or 0.
double cos_view(float v) { return v >= 0.0f && v < 90.0f ? std::cos(double(v) * 3.14159265358979323846 / 180.0) : 0.0; }

}  // namespace

double RETRO_COEFF_RI(float intensity_cd, float illuminance_lx)
{
    if (!finite({intensity_cd, illuminance_lx}) || intensity_cd < 0.0f || illuminance_lx <= 0.0f) return 0.0;
    return ratio(intensity_cd, illuminance_lx);
}

double RETRO_COEFF_RA(float intensity_cd, float illuminance_lx, float area_m2)
{
    if (!finite({area_m2}) || area_m2 <= 0.0f) return 0.0;
    return ratio(RETRO_COEFF_RI(intensity_cd, illuminance_lx), area_m2);
}

double RETRO_COEFF_RL(float luminance_cd_m2, float illuminance_lx)
{
    return 1000.0 * RETRO_COEFF_RI(luminance_cd_m2, illuminance_lx);  // same checks, L in place of I
}

double RETRO_RA_TO_RI(float ra, float area_m2)
{
    if (!finite({ra, area_m2}) || ra < 0.0f || area_m2 <= 0.0f) return 0.0;
    return double(ra) * area_m2;
}

double RETRO_RI_TO_RA(float ri, float area_m2)
{
    if (!finite({ri, area_m2}) || ri < 0.0f || area_m2 <= 0.0f) return 0.0;
    return ratio(ri, area_m2);
}

double RETRO_RA_TO_RL(float ra, float viewing_angle)
{
    const double c = cos_view(viewing_angle);
    if (!finite({ra}) || ra < 0.0f || c <= 0.0) return 0.0;
    return ratio(1000.0 * ra, c);
}

double RETRO_RL_TO_RA(float rl_mcd, float viewing_angle)
{
    const double c = cos_view(viewing_angle);
    if (!finite({rl_mcd}) || rl_mcd < 0.0f || c <= 0.0) return 0.0;
    return rl_mcd * c / 1000.0;
}
