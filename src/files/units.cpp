// Measurement-unit names and codes, and the Kavri Wendo unit texts.
//
// Texts are Latin-1 bytes: "\xB5" is the micro sign, "\xB2" the superscript
// two. Nothing here allocates, so no exported function needs the exception
// barrier.
#include "qomath/units.h"

#include <iterator>

#include "files/spectral_file.hpp"

#include <cstddef>
#include <cstring>

namespace qomath::files {
namespace {

constexpr unsigned kUnitCodes = 7;
constexpr unsigned kKavriWendoCodes = 17;
constexpr std::size_t kSlotBytes = 50;

// Buffer size the name lookup assumes of its caller: 48 characters and a NUL.
constexpr std::size_t kNameOutBytes = 49;

using UnitTable = char[kUnitCodes][kSlotBytes];

// ---- Process-wide state --------------------------------------------------
//
// The seven unit tables are writable: hosts may patch a text through the
// pointer a getter returns, and every later caller then sees the new text.
// The three Kavri Wendo lookups each return their own static buffer, which
// the next call of the same function overwrites. None of this is locked; the
// host serialises these calls.

UnitTable g_unit_name = {
    "Counts", "Irradiance", "Radiant Intensity", "Radiant Flux",
    "Radiance", "Transmittance", "Reflectance"};

// Radiant intensity is in W/sr while the other radiometric units are in
// microwatts; displays and files rely on exactly these texts.
UnitTable g_short_unit = {
    "Counts", "\xB5W/cm\xB2", "W/sr", "\xB5W", "\xB5W/cm\xB2/sr", "unitless", "unitless"};

UnitTable g_integrated_name = {
    "Counts", "Irradiance (\xB5W/cm\xB2)", "Radiant Intensity (W/sr)",
    "Radiant Flux (\xB5W)", "Radiance (\xB5W/cm\xB2/sr)", "Transmittance (unitless)",
    "Reflectance (unitless)"};

UnitTable g_yaxis_unit = {
    "1/nm", "\xB5W/cm\xB2/nm", "W/sr/nm", "\xB5W/nm", "\xB5W/cm\xB2/sr/nm",
    "unitless", "unitless"};

// "Luminuous" is the spelling hosts display and compare against; radiance
// has no photometric unit text.
UnitTable g_photometric_yaxis = {
    "Counts/nm", "Illuminance (Lux/nm)", "Candelas (Lumens/sr/nm)",
    "Luminuous Flux (Lumens/nm)", "Luminance", "NA", "NA"};

UnitTable g_photometric_integrated = {
    "Counts", "Illuminance (Lux)", "Candelas (Lumens/sr)", "Luminuous Flux (Lumens)",
    "Luminance", "NA", "NA"};

char g_kw_full_name[100];
char g_kw_abbr[50];
char g_kw_abbr_micro[50];

// ---- Constant data ---------------------------------------------------------

constexpr const auto& kNameKeys = kUnitNameKeys;
static_assert(std::size(kUnitNameKeys) == kUnitCodes);

struct KavriWendoUnit {
    const char* full_name;
    const char* abbr;
    const char* abbr_micro;
};

constexpr KavriWendoUnit kKavriWendoUnits[kKavriWendoCodes] = {
    {"Unitless", "N/A", "N/A"},
    {"Raw A/D", "Counts", "Counts"},
    {"Raw Photo Current", "Amps", "Amps"},
    {"Radiant Flux", "microWatts", "\xB5Watts"},
    {"Radiance", "microWatts/(cm\xB2*nm*sr)", "\xB5W/(cm\xB2*nm*sr)"},
    {"Irradiance", "microWatts/(cm\xB2*nm)", "\xB5W/(cm\xB2*nm)"},
    {"Absolute Responsivity", "Amps/Watt", "Amps/Watt"},
    {"Absolute Responsivity\xB2", "Amps/(Watt/cm\xB2)", "Amps/(Watt/cm\xB2)"},
    {"Relative Responsivity", "N/A", "N/A"},
    {"Transmittance", "N/A", "N/A"},
    {"Reflectance", "N/A", "N/A"},
    {"% Transmittance", "N/A", "N/A"},
    {"% Reflectance", "N/A", "N/A"},
    {"Absorbance", "N/A", "N/A"},
    {"Standard Deviation", "N/A", "N/A"},
    {"Index of Refraction", "N/A", "N/A"},
    {"% Coefficient of Variance", "N/A", "N/A"}};

// ---- Helpers -----------------------------------------------------------------

bool unit_code_valid(int code)
{
    return static_cast<unsigned>(code) < kUnitCodes;  // negative codes fail too
}

// Copies at most size - 1 characters of src and a NUL. Reads no further than
// size - 1 bytes of src, so a patched slot without its NUL cannot be overrun.
void copy_bounded(char* dst, const char* src, std::size_t size)
{
    std::size_t n = 0;
    while (n + 1 < size && src[n] != '\0') ++n;
    std::memcpy(dst, src, n);
    dst[n] = '\0';
}

char* table_entry(UnitTable& table, int code)
{
    return unit_code_valid(code) ? table[code] : nullptr;
}

// Row of a Kavri Wendo code; every unknown code reads as "Unitless".
const KavriWendoUnit& kavri_wendo_unit(int code)
{
    const unsigned row = static_cast<unsigned>(code);
    return kKavriWendoUnits[row < kKavriWendoCodes ? row : 0];
}

template <std::size_t N>
char* fill_static(char (&buffer)[N], const char* text)
{
    copy_bounded(buffer, text, N);
    return buffer;
}

}  // namespace
}  // namespace qomath::files

using namespace qomath::files;

extern "C" {

QOMATH_API int ConvertUnitNameToNumber(const char* text)
{
    if (!text) return 0;
    for (unsigned code = 0; code < kUnitCodes; ++code)
        if (std::strstr(text, kNameKeys[code])) return static_cast<int>(code);
    return 0;  // unknown names count as counts
}

QOMATH_API int GetUnitNameFromNumber(int code, char* name, char* shortUnit, char* yAxisUnit)
{
    char* const outs[] = {name, shortUnit, yAxisUnit};
    for (char* out : outs)
        if (out) out[0] = '\0';
    if (!unit_code_valid(code)) return -1;

    const char* const texts[] = {g_unit_name[code], g_short_unit[code], g_yaxis_unit[code]};
    for (int i = 0; i < 3; ++i)
        if (outs[i]) copy_bounded(outs[i], texts[i], kNameOutBytes);
    return 1;
}

QOMATH_API char* GetUnitName(int code) { return table_entry(g_unit_name, code); }

QOMATH_API char* GetIntegratedUnitName(int code)
{
    return table_entry(g_integrated_name, code);
}

QOMATH_API char* GetUnitNameYaxis(int code) { return table_entry(g_yaxis_unit, code); }

QOMATH_API char* GetUnitNamePhotometricYaxis(int code)
{
    return table_entry(g_photometric_yaxis, code);
}

QOMATH_API char* GetIntegratedUnitNamePhotometricYaxis(int code)
{
    return table_entry(g_photometric_integrated, code);
}

QOMATH_API char* KWUnitFullName(int code)
{
    return fill_static(g_kw_full_name, kavri_wendo_unit(code).full_name);
}

QOMATH_API char* KWUnitAbbr(int code)
{
    return fill_static(g_kw_abbr, kavri_wendo_unit(code).abbr);
}

QOMATH_API char* KWUnitAbbr_(int code)
{
    return fill_static(g_kw_abbr_micro, kavri_wendo_unit(code).abbr_micro);
}

}  // extern "C"
