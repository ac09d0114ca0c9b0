// Kavri Wendo records: conversion to and from the version 1.0 spectral
// record, and the legacy Kavri Wendo 2.x text file.
#include <cstdio>
#include <cstring>
#include <memory>

#include "common/barrier.hpp"
#include "files/spectral_file.hpp"
#include "common/text_io.hpp"
#include "qomath/units.h"

namespace qomath::files {
using namespace qomath::text;
namespace {

using qomath::detail::guarded;

constexpr const char* kLegacyTitle = "Conversion from KW3.x to KW2.x File Format";

// Kavri Wendo unit code of each measurement-unit code (0..6). Radiant
// intensity has no Kavri Wendo unit and becomes 0, "Unitless".
constexpr int kKavriWendoUnit[] = {1, 5, 0, 3, 4, 9, 10};

const char* spectral_unit_name(int kavri_wendo_unit)
{
    switch (kavri_wendo_unit) {
    case 5: return "Irradiance";
    case 3: return "Radiant Flux";
    default: return "counts";
    }
}

void copy_values(float* dst, const float* src, const typ_wlinfo& range)
{
    std::memcpy(dst, src, sizeof(float) * static_cast<std::size_t>(grid_points(range)));
}

// Date and time from the text before "[Timestamp]": the separating blank is
// dropped, and the first blank splits date from time.
void read_timestamp(const char* line, const char* tag, KavriWendoRecord& kw)
{
    std::size_t len = static_cast<std::size_t>(tag - line);
    if (len > 0 && line[len - 1] == ' ') --len;
    const void* blank = std::memchr(line, ' ', len);
    const std::size_t date_len =
        blank ? static_cast<std::size_t>(static_cast<const char*>(blank) - line) : len;
    copy_text(kw.date, sizeof kw.date - 1, line, date_len);
    if (blank) {
        copy_text(kw.time, sizeof kw.time - 1, line + date_len + 1, len - date_len - 1);
    }
}

void read_info(const char* line, KavriWendoRecord& kw)
{
    if (const char* tag = std::strstr(line, kTimestampTag)) {
        read_timestamp(line, tag, kw);
    } else if (std::strstr(line, kExposureTag)) {
        kw.exposureTime = static_cast<float>(parse_double(line));
    } else if (std::strstr(line, kAveragesTag)) {
        kw.averages = parse_int(line);
    } else if (std::strstr(line, kCompensationTag)) {
        kw.compensation = std::strncmp(line, "True", 4) == 0 ? 1 : 0;
    }
}

void to_kavri_wendo(const SpectralRecord1& rec, KavriWendoRecord& kw)
{
    std::memset(&kw, 0, sizeof kw);
    copy_text(kw.header, sizeof kw.header - 1, rec.header, sizeof rec.header);
    const int unit = ConvertUnitNameToNumber(rec.unitName);
    kw.unitCode = unit >= 0 && unit < 7 ? kKavriWendoUnit[unit] : 0;
    kw.range = rec.range;
    copy_values(kw.values, rec.values, kw.range);
    const int count = rec.infoCount > kMaxInfo ? kMaxInfo : rec.infoCount;
    for (int i = 0; i < count; ++i) {
        char line[kInfoSize + 1];
        copy_text(line, kInfoSize, rec.info[i], kInfoSize);
        read_info(line, kw);
    }
}

int write_legacy(const char* fileName, const SpectralRecord1& rec)
{
    ReplacingFile file(fileName);
    if (!file.get()) return -1;
    auto kw = std::make_unique<KavriWendoRecord>();
    to_kavri_wendo(rec, *kw);
    blank_line_breaks(kw->header, sizeof kw->header);
    blank_line_breaks(kw->date, sizeof kw->date);
    blank_line_breaks(kw->time, sizeof kw->time);

    TextOut out;
    out.put(kLegacyTitle);
    out.put("\n");
    out.format("%s\n%s\n%s\n", kw->header, kw->date, kw->time);
    out.format("%d\n", kw->unitCode);
    out.format("%f\n", static_cast<double>(kw->exposureTime));
    out.format("%d\n", kw->averages);
    out.put(kw->compensation ? "True\n" : "False\n");
    const typ_wlinfo r = kw->range;
    out.format("%9.8f\n%9.8f\n%9.8f\n", static_cast<double>(r.start), static_cast<double>(r.end),
               static_cast<double>(r.step));
    const int n = grid_points(r);
    out.format("%d\n", n);
    for (int i = 0; i < n; ++i) {
        out.fixed(static_cast<float>(i) * r.step + r.start, 6);
        out.put(", ");
        out.scientific(kw->values[i], 8);
        out.put("\n");
    }
    return commit_text(file, out);
}

}  // namespace
}  // namespace qomath::files

using namespace qomath::files;

extern "C" {

int ConvertKavriWendoToSpectralFormat(const KavriWendoRecord* kw, SpectralRecord1* rec)
{
    if (!kw || !rec) return -1;
    std::memset(rec, 0, sizeof *rec);
    copy_text(rec->header, sizeof rec->header - 1, kw->header, sizeof kw->header);
    std::strcpy(rec->unitName, spectral_unit_name(kw->unitCode));
    rec->range = kw->range;
    copy_values(rec->values, kw->values, rec->range);

    // Each line is cut to 49 characters by the bounded print.
    const int date_len = static_cast<int>(field_length(kw->date, sizeof kw->date));
    const int time_len = static_cast<int>(field_length(kw->time, sizeof kw->time));
    rec->infoCount = 4;
    std::snprintf(rec->info[0], kInfoSize, "%.*s %.*s %s", date_len, kw->date, time_len, kw->time,
                  kTimestampTag);
    std::snprintf(rec->info[1], kInfoSize, "%f %s", static_cast<double>(kw->exposureTime),
                  kExposureTag);
    std::snprintf(rec->info[2], kInfoSize, "%d %s", kw->averages, kAveragesTag);
    std::snprintf(rec->info[3], kInfoSize, "%s %s", kw->compensation ? "True" : "False",
                  kCompensationTag);
    return 1;
}

int ConvertSpectralFormatToKavriWendo(const SpectralRecord1* rec, KavriWendoRecord* kw)
{
    if (!rec || !kw) return -1;
    to_kavri_wendo(*rec, *kw);
    return 1;
}

int WriteSpectralFileInLegacyKW2x(const char* fileName, const SpectralRecord1* rec)
{
    if (!name_length_ok(fileName) || !rec) return -1;
    return guarded(-1, [&] { return write_legacy(fileName, *rec); });
}

}  // extern "C"
