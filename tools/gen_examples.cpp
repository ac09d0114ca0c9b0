// Writes the example spectral files of examples/ with the library's own
// writers:
//   qomath_gen_examples OUT_FOLDER
//   illuminant_A_v1.txt       CIE illuminant A, version 1.0, irradiance, 360..830 nm at 1 nm
//   illuminant_D65_v2.txt     CIE illuminant D65, version 2.0, irradiance, 300..830 nm at 1 nm
//   white_led_v2.txt          a synthetic white LED (blue chip and phosphor), version 2.0,
//                             irradiance, 380..780 nm at 0.5 nm
//   red_filter_v2.txt         a red long-pass filter, version 2.0, transmittance, 380..780 nm at 2 nm
// The spectra are tables and smooth formulas only, so every platform writes
// the same bytes.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "qomath/cie_tables.h"
#include "qomath/grid.h"
#include "qomath/spectral_file.h"
#include "qomath/units.h"

namespace {

void set_text(char* field, std::size_t size, const char* text)
{
    std::snprintf(field, size, "%s", text);
}

template <class Record>
void set_info(Record& rec, std::initializer_list<const char*> lines)
{
    rec.infoCount = 0;
    for (const char* line : lines) set_text(rec.info[rec.infoCount++], sizeof rec.info[0], line);
}

int write_v1_table(const std::string& path, int selector, const char* header, typ_wlinfo cut)
{
    auto rec = std::make_unique<SpectralRecord1>();
    std::memset(rec.get(), 0, sizeof *rec);
    float table[QOMATH_CIE_MAX_POINTS];
    typ_wlinfo range{};
    if (GetCIEData(selector, table, &range) != 1) return 1;
    rec->range = cut;
    const int first = WLArrayPosition(&range, cut.start);
    for (int i = 0; i < WLNumPts(&cut); ++i) rec->values[i] = table[first + i];
    set_text(rec->header, sizeof rec->header, header);
    set_text(rec->unitName, sizeof rec->unitName, GetUnitName(1));
    set_info(*rec, {"2026-11-21 12:00:00 [Timestamp]", "1 [Averages]", "100.000000 [Integration Time ms]"});
    return WriteSpectralFile(path.c_str(), rec.get()) == 1 ? 0 : 1;
}

template <class Value>
int write_v2(const std::string& path, const char* header, int unit, float start, float step, int n,
             Value value, std::initializer_list<const char*> info)
{
    auto rec = std::make_unique<SpectralRecord2>();
    std::memset(rec.get(), 0, sizeof *rec);
    for (int i = 0; i < n; ++i) {
        rec->wavelengths[i] = start + static_cast<float>(i) * step;
        rec->values[i] = value(rec->wavelengths[i]);
    }
    rec->firstWavelength = rec->wavelengths[0];
    rec->lastWavelength = rec->wavelengths[n - 1];
    rec->pointCount = static_cast<float>(n);
    set_text(rec->header, sizeof rec->header, header);
    set_text(rec->unitName, sizeof rec->unitName, GetUnitName(unit));
    set_info(*rec, info);
    return WriteSpectralFile2(path.c_str(), rec.get()) == 1 ? 0 : 1;
}

double gauss(double x, double centre, double width)
{
    const double t = (x - centre) / width;
    return std::exp(-0.5 * t * t);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT_FOLDER\n", argv[0]);
        return 2;
    }
    const std::string dir = std::string(argv[1]) + "/";
    int failed = 0;
    failed += write_v1_table(dir + "illuminant_A_v1.txt", 6, "CIE standard illuminant A (relative spectral power)",
                             {360.0f, 830.0f, 1.0f});

    float d65[QOMATH_CIE_MAX_POINTS];
    typ_wlinfo d65_range{};
    GetCIEData(9, d65, &d65_range);
    failed += write_v2(dir + "illuminant_D65_v2.txt", "CIE standard illuminant D65 (relative spectral power)", 1,
                       300.0f, 1.0f, 531, [&](float w) { return d65[WLArrayPosition(&d65_range, w)]; },
                       {"2026-11-21 12:00:00 [Timestamp]", "1 [Averages]", "100.000000 [Integration Time ms]"});

    // Blue chip near 450 nm and a broad phosphor band near 560 nm, in
    // microwatts per square centimetre and nanometre at the detector.
    failed += write_v2(
        dir + "white_led_v2.txt", "White LED, 5000 K class (synthetic)", 1, 380.0f, 0.5f, 801,
        [](float w) {
            return static_cast<float>(1.8 * gauss(w, 451.0, 9.5) + 1.05 * gauss(w, 560.0, 48.0) +
                                      0.35 * gauss(w, 620.0, 40.0));
        },
        {"2026-11-21 12:05:00 [Timestamp]", "10 [Averages]", "25.000000 [Integration Time ms]",
         "24.9 [temperature (\xB0" "c)]", "0.350 [current (a)]", "2.95 [voltage (v)]"});

    // A long-pass edge at 600 nm on a small residual transmittance.
    failed += write_v2(
        dir + "red_filter_v2.txt", "Red long-pass filter, 3 mm (synthetic)", 5, 380.0f, 2.0f, 201,
        [](float w) { return static_cast<float>(0.002 + 0.9 / (1.0 + std::exp(-(w - 600.0) / 8.0))); },
        {"2026-11-21 12:10:00 [Timestamp]", "5 [Averages]"});
    return failed == 0 ? 0 : 1;
}
