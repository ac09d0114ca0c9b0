// Unit names and codes: the Latin-1 tables, name matching, the writable
// slots, the Kavri Wendo static buffers and buffer bounds.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

#include "qomath/units.h"

namespace {

// name, short unit, integrated, y-axis, photometric y-axis, photometric integrated
const char* const kUnits[7][6] = {
    {"Counts", "Counts", "Counts", "1/nm", "Counts/nm", "Counts"},
    {"Irradiance", "\xB5W/cm\xB2", "Irradiance (\xB5W/cm\xB2)", "\xB5W/cm\xB2/nm", "Illuminance (Lux/nm)", "Illuminance (Lux)"},
    {"Radiant Intensity", "W/sr", "Radiant Intensity (W/sr)", "W/sr/nm", "Candelas (Lumens/sr/nm)", "Candelas (Lumens/sr)"},
    {"Radiant Flux", "\xB5W", "Radiant Flux (\xB5W)", "\xB5W/nm", "Luminuous Flux (Lumens/nm)", "Luminuous Flux (Lumens)"},
    {"Radiance", "\xB5W/cm\xB2/sr", "Radiance (\xB5W/cm\xB2/sr)", "\xB5W/cm\xB2/sr/nm", "Luminance", "Luminance"},
    {"Transmittance", "unitless", "Transmittance (unitless)", "unitless", "NA", "NA"},
    {"Reflectance", "unitless", "Reflectance (unitless)", "unitless", "NA", "NA"}};

const char* const kKavriWendo[17][3] = {
    {"Unitless", "N/A", "N/A"}, {"Raw A/D", "Counts", "Counts"}, {"Raw Photo Current", "Amps", "Amps"},
    {"Radiant Flux", "microWatts", "\xB5Watts"}, {"Radiance", "microWatts/(cm\xB2*nm*sr)", "\xB5W/(cm\xB2*nm*sr)"},
    {"Irradiance", "microWatts/(cm\xB2*nm)", "\xB5W/(cm\xB2*nm)"}, {"Absolute Responsivity", "Amps/Watt", "Amps/Watt"},
    {"Absolute Responsivity\xB2", "Amps/(Watt/cm\xB2)", "Amps/(Watt/cm\xB2)"},
    {"Relative Responsivity", "N/A", "N/A"}, {"Transmittance", "N/A", "N/A"}, {"Reflectance", "N/A", "N/A"},
    {"% Transmittance", "N/A", "N/A"}, {"% Reflectance", "N/A", "N/A"}, {"Absorbance", "N/A", "N/A"},
    {"Standard Deviation", "N/A", "N/A"}, {"Index of Refraction", "N/A", "N/A"},
    {"% Coefficient of Variance", "N/A", "N/A"}};

using Getter = char* (*)(int);
constexpr Getter kGetters[] = {GetUnitName, GetIntegratedUnitName, GetUnitNameYaxis,
                               GetUnitNamePhotometricYaxis, GetIntegratedUnitNamePhotometricYaxis};
constexpr int kGetterColumn[] = {0, 2, 3, 4, 5};

TEST(UnitsTables, BytesRoundTripsAndBadCodes)
{
    EXPECT_EQ(std::strlen(GetUnitNameYaxis(4)), 12u);  // the micro and square signs are one byte each
    for (int code = 0; code < 7; ++code) {
        for (int g = 0; g < 5; ++g)
            EXPECT_STREQ(kGetters[g](code), kUnits[code][kGetterColumn[g]]) << code << '/' << g;
        char name[49], unit[49], yaxis[49];
        ASSERT_EQ(GetUnitNameFromNumber(code, name, unit, yaxis), 1);
        EXPECT_STREQ(name, kUnits[code][0]);
        EXPECT_STREQ(unit, kUnits[code][1]);
        EXPECT_STREQ(yaxis, kUnits[code][3]);
        EXPECT_EQ(ConvertUnitNameToNumber(name), code);
        EXPECT_EQ(ConvertUnitNameToNumber(GetIntegratedUnitName(code)), code);
    }
    for (int bad : {7, -1, INT_MIN, INT_MAX}) {
        for (Getter g : kGetters) EXPECT_EQ(g(bad), nullptr) << bad;
        char name[49] = "x", unit[49] = "x", yaxis[49] = "x";
        EXPECT_EQ(GetUnitNameFromNumber(bad, name, unit, yaxis), -1);
        for (const char* out : {name, unit, yaxis}) EXPECT_STREQ(out, "");
    }
    char unit[49];
    EXPECT_EQ(GetUnitNameFromNumber(1, nullptr, unit, nullptr), 1);
    EXPECT_STREQ(unit, "\xB5W/cm\xB2");
}

TEST(UnitsTables, NameMatchingIsOrderedCaseSensitiveSubstring)
{
    // "Radiant  Flux": inner spacing must match.
    for (const auto& [text, code] : {std::pair{"counts", 0}, {"radiance", 0}, {"Total Radiance", 4},
                                     {"Radiance or Irradiance", 1}, {"  Reflectance\t", 6}, {"Radiant  Flux", 0},
                                     {"Luminuous Flux (Lumens)", 0}, {"", 0}})
        EXPECT_EQ(ConvertUnitNameToNumber(text), code) << text;
    EXPECT_EQ(ConvertUnitNameToNumber(nullptr), 0);
}

TEST(UnitsTables, SlotsAreSharedAndCopiesStayBounded)
{
    char* slot = GetUnitName(4);
    char saved[50];
    std::memcpy(saved, slot, sizeof saved);
    std::memset(slot, 'x', 50);  // a host may even drop the NUL
    EXPECT_EQ(GetUnitName(4), slot);
    char out[3][64];
    std::memset(out, '#', sizeof out);
    ASSERT_EQ(GetUnitNameFromNumber(4, out[0], out[1], out[2]), 1);
    EXPECT_EQ(std::string(out[0]), std::string(48, 'x'));
    EXPECT_EQ(out[0][49], '#');
    EXPECT_EQ(ConvertUnitNameToNumber("Radiance"), 4);  // parsing does not follow patched texts
    std::memcpy(slot, saved, sizeof saved);
    EXPECT_STREQ(GetUnitName(4), "Radiance");
}

TEST(UnitsKavriWendo, RowsFallbackAndStaticBuffers)
{
    for (int code = 0; code < 17; ++code) {
        EXPECT_STREQ(KWUnitFullName(code), kKavriWendo[code][0]) << code;
        EXPECT_STREQ(KWUnitAbbr(code), kKavriWendo[code][1]) << code;
        EXPECT_STREQ(KWUnitAbbr_(code), kKavriWendo[code][2]) << code;
    }
    for (int bad : {17, -3, INT_MIN}) {
        EXPECT_STREQ(KWUnitFullName(bad), "Unitless");
        EXPECT_STREQ(KWUnitAbbr(bad), "N/A");
        EXPECT_STREQ(KWUnitAbbr_(bad), "N/A");
    }
    char* first = KWUnitAbbr(3);
    char* micro = KWUnitAbbr_(3);
    EXPECT_NE(first, micro);
    EXPECT_EQ(KWUnitAbbr(5), first);  // same buffer, text replaced
    EXPECT_STREQ(first, "microWatts/(cm\xB2*nm)");
    EXPECT_STREQ(micro, "\xB5Watts");
}

}  // namespace
