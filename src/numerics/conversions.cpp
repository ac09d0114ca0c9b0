// Beer's law, optical density and length conversions.
#include "qomath/conversions.h"

#include <cmath>
#include <initializer_list>

namespace {

constexpr double kCmPerInch = 2.54;
constexpr double kMetrePerFoot = 0.3048;

bool finite(float v) { return std::isfinite(v); }

double decadic_from_fraction(float t) { return finite(t) && t > 0.0f ? -std::log10(double(t)) : 0.0; }
double fraction_from_decadic(float d)
{
    // 10^-d overflows a float below d = -38.5; such a "transmittance" is no value.
    const double t = finite(d) ? std::pow(10.0, -double(d)) : 0.0;
    return std::isfinite(static_cast<float>(t)) ? t : 0.0;
}
double scaled(float v, double factor) { return finite(v) ? double(v) * factor : 0.0; }

}  // namespace

double BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE(float transmittance) { return decadic_from_fraction(transmittance); }
double BEERSLAW_ABSORBANCE_TO_TRANSMITTANCE(float absorbance) { return fraction_from_decadic(absorbance); }
double ND_TO_TRANSMISSION(float optical_density) { return fraction_from_decadic(optical_density); }
double TRANSMISSION_TO_ND(float transmission) { return decadic_from_fraction(transmission); }

double BEERSLAW_ABSORBANCE(float molar_absorptivity, float path_length_cm, float concentration_mol_per_l)
{
    for (float v : {molar_absorptivity, path_length_cm, concentration_mol_per_l})
        if (!finite(v) || v < 0.0f) return 0.0;
    const double a = double(molar_absorptivity) * path_length_cm * concentration_mol_per_l;
    return std::isfinite(a) ? a : 0.0;
}

double BEERSLAW_CONCENTRATION(float absorbance, float molar_absorptivity, float path_length_cm)
{
    if (!finite(absorbance) || absorbance < 0.0f || !finite(molar_absorptivity) || !finite(path_length_cm))
        return 0.0;
    const double el = double(molar_absorptivity) * path_length_cm;
    return molar_absorptivity > 0.0f && path_length_cm > 0.0f && el > 1e-20 ? absorbance / el : 0.0;
}

double INCH_TO_CM(float inches) { return scaled(inches, kCmPerInch); }
double CM_TO_INCH(float centimetres) { return scaled(centimetres, 1.0 / kCmPerInch); }
double FOOT_TO_METRE(float feet) { return scaled(feet, kMetrePerFoot); }
double METRE_TO_FOOT(float metres) { return scaled(metres, 1.0 / kMetrePerFoot); }

int QOConvertArray(int which, const float* in, float* out, int n)
{
    using Fn = double (*)(float);
    static constexpr Fn kFns[] = {BEERSLAW_TRANSMITTANCE_TO_ABSORBANCE, BEERSLAW_ABSORBANCE_TO_TRANSMITTANCE,
                                  ND_TO_TRANSMISSION,  TRANSMISSION_TO_ND,
                                  INCH_TO_CM,          CM_TO_INCH,
                                  FOOT_TO_METRE,       METRE_TO_FOOT};
    if (!in || !out || n < 1) return -1;
    if (which < 0 || which >= int(sizeof kFns / sizeof kFns[0])) return -2;
    const bool logarithm = which == QOMATH_CONVERT_T_TO_ABSORBANCE || which == QOMATH_CONVERT_T_TO_ND;
    const bool power = which == QOMATH_CONVERT_ABSORBANCE_TO_T || which == QOMATH_CONVERT_ND_TO_T;
    int status = 1;
    for (int i = 0; i < n; ++i) {
        const float v = in[i];
        const double r = kFns[which](v);
        // A 0 result is genuine for T = 1 or a length of 0; it marks bad input
        // for a logarithm of v <= 0, an overflowing power or a length beyond float.
        const bool bad = !finite(v) || (logarithm && v <= 0.0f) || (power && r == 0.0 && v < 0.0f) ||
                         !finite(static_cast<float>(r));
        if (bad) status = 0;
        out[i] = bad ? 0.0f : static_cast<float>(r);
    }
    return status;
}
