/*
 * QOMath — spectral text files: records, readers, writers and version converters.
 *
 * The spectral text file holds one measured spectrum as lines of single-byte
 * Windows-1252 text. Version 1.0 stores the values over an evenly spaced grid,
 * version 2.0 stores wavelength and value pairs.
 *
 * Version 1.0 (WriteSpectralFile; each line ends in the bytes CR LF):
 *    1  "1.0 [Quarvel Optronic Spectral File]"
 *    2  header text
 *    3  unit name
 *    4  infoCount ("%d"; always written, also when negative)
 *    5  the information lines (none when infoCount <= 0)
 *    6  range start ("%9.8f")
 *    7  range step  ("%9.8f")     -- note: step before end
 *    8  range end   ("%9.8f")
 *    9  one value a line ("%.8e"), as many as the grid has points
 *
 * Version 2.0 (WriteSpectralFile2; each line ends in LF):
 *    1  "2.0 [Quarvel Optronic Spectral File]"
 *    2  header text
 *    3  unit name
 *    4  infoCount ("%d"), only when infoCount >= 0 (see WriteSpectralFile2)
 *    5  the information lines
 *    6  first wavelength ("%.8f")
 *    7  number of points ("%.0f")
 *    8  last wavelength ("%.8f")
 *    9  one point a line: "%f, %.8e" (wavelength, comma, blank, value)
 *
 * An information line is a value, a blank and a bracketed tag, for example
 * "250 [Integration Time ms]".
 *
 * Reading: the first line must contain "[Quarvel Optronic Spectral File]";
 * the version is the number it starts with (atof). Lines are read with a
 * bounded read that stops at LF: at most 254 characters a line (255 or more
 * is a failure of that step, as is the end of the file), at most 49 for the
 * unit line. Files with LF, CR LF and CR CR LF line ends read alike: number
 * lines are read with atof/atoi semantics (stopping at the first character
 * that is not part of the number, 0 for text), text lines (header, unit name,
 * information lines) keep a trailing CR as part of their text.
 * A file name must be 2 to 512 characters long.
 *
 * Reader status codes (ReadSpectralFileVersion, ReadSpectralFile,
 * ReadSpectralFile2):
 *     1  success
 *    -1  file name length outside 2..512, or a null pointer
 *    -2  the file cannot be opened (missing, a folder, no permission)
 *    -3  no first line
 *    -4  the first line lacks "[Quarvel Optronic Spectral File]"
 *    -5  version below 1.0 (ReadSpectralFile) or below 2.0 (ReadSpectralFile2)
 *    -6  no header line (missing, or 255 characters and more)
 *    -7  no unit line (missing, or 50 characters and more)
 *    -8  no information count line, or a count of 51 and more
 *    -9  an information line missing, too long or empty
 *   -10  no first line of the grid (version 1.0: start; 2.0: first wavelength)
 *   -11  no second line of the grid (1.0: step; 2.0: number of points)
 *   -12  no third line of the grid (1.0: end; 2.0: last wavelength)
 *   -13  1.0: start >= end or step < 0.01;  2.0: first >= last wavelength
 *   -14  1.0: start < 0, step < 1e-7, step > end, or fewer than 2 or more
 *        than 4096 grid points;  2.0: number of points below 2 or above 4096
 *   -15  a data line missing or too long
 * Fields filled before a failure stay filled; the readers clear nothing else
 * of the record (ReadSpectralFile sets infoCount to 0 first, ReadSpectralFile2
 * zeroes the extra record). Nothing is written outside the record's fields.
 * A reader that runs out of memory for its stream reports -2.
 *
 * Writer status codes: 1 success; -1 the file cannot be created or written
 * (or a null pointer, a file name length outside 2..512, or no memory).
 * WriteSpectralFile, WriteSpectralFile2, WriteSpectralFile3 and
 * WriteSpectralFileInLegacyKW2x write the whole file to a temporary file
 * beside the target and put it in place only when every byte is written: on
 * -1 an existing file is left as it was. WriteSpectralFile2X appends to a log
 * in place.
 *
 * The writers change the caller's record in place: every CR and LF in the
 * header, the unit name and each written information line becomes a blank,
 * and each written information line is cut to 49 characters (a NUL in its
 * 50th byte). Do not pass one record to two calls at once.
 */
#ifndef QOMATH_SPECTRAL_FILE_H
#define QOMATH_SPECTRAL_FILE_H

#include <stddef.h>

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Capacities of the records. */
#define QOMATH_SPECTRAL_MAX_POINTS 4096
#define QOMATH_SPECTRAL_MAX_INFO 50
#define QOMATH_SPECTRAL_INFO_SIZE 50
#define QOMATH_SPECTRAL_UNIT_SIZE 50
#define QOMATH_SPECTRAL_HEADER_SIZE 256

/*
 * Version 1.0 record, caller-allocated (19208 bytes).
 *   offset     0  range      start, end, step of the grid (nm)
 *   offset    12  unitName   NUL-terminated, at most 49 characters
 *   offset    62  header     NUL-terminated, at most 255 characters
 *   offset   320  values     one value a grid point, index 0 at range.start
 *   offset 16704  infoCount  information lines in use (0..50)
 *   offset 16708  info       50 slots of 50 bytes, each NUL-terminated
 */
typedef struct SpectralRecord1 {
    typ_wlinfo range;
    char unitName[QOMATH_SPECTRAL_UNIT_SIZE];
    char header[QOMATH_SPECTRAL_HEADER_SIZE];
    float values[QOMATH_SPECTRAL_MAX_POINTS];
    int infoCount;
    char info[QOMATH_SPECTRAL_MAX_INFO][QOMATH_SPECTRAL_INFO_SIZE];
} SpectralRecord1;
QOMATH_STATIC_ASSERT(sizeof(SpectralRecord1) == 19208, spectral_record1_size);
QOMATH_STATIC_ASSERT(offsetof(SpectralRecord1, values) == 320, spectral_record1_values);
QOMATH_STATIC_ASSERT(offsetof(SpectralRecord1, infoCount) == 16704, spectral_record1_info_count);

/*
 * Version 2.0 record, caller-allocated (51976 bytes). Its first three fields
 * sit where the range of a version 1.0 record sits, but hold the first
 * wavelength, the last wavelength and the number of points (a whole number
 * held as a float, 2..4096).
 *   offset     0  firstWavelength, lastWavelength, pointCount
 *   offset    12  unitName   as in version 1.0
 *   offset    62  header     as in version 1.0
 *   offset   320  wavelengths
 *   offset 16704  values
 *   offset 33088  reserved   never read or written by these functions
 *   offset 49472  infoCount
 *   offset 49476  info
 */
typedef struct SpectralRecord2 {
    float firstWavelength;
    float lastWavelength;
    float pointCount;
    char unitName[QOMATH_SPECTRAL_UNIT_SIZE];
    char header[QOMATH_SPECTRAL_HEADER_SIZE];
    float wavelengths[QOMATH_SPECTRAL_MAX_POINTS];
    float values[QOMATH_SPECTRAL_MAX_POINTS];
    float reserved[QOMATH_SPECTRAL_MAX_POINTS];
    int infoCount;
    char info[QOMATH_SPECTRAL_MAX_INFO][QOMATH_SPECTRAL_INFO_SIZE];
} SpectralRecord2;
QOMATH_STATIC_ASSERT(sizeof(SpectralRecord2) == 51976, spectral_record2_size);
QOMATH_STATIC_ASSERT(offsetof(SpectralRecord2, wavelengths) == 320, spectral_record2_wavelengths);
QOMATH_STATIC_ASSERT(offsetof(SpectralRecord2, infoCount) == 49472, spectral_record2_info_count);

/*
 * Measurement conditions found in the information lines (ReadSpectralFile2,
 * QOReadSpectralFile), 152 bytes. Each has-flag is 1 when the quantity was in
 * the file. The double sits at offset 80, on its 8-byte boundary, on every
 * platform: alignPad and tailPad make the padding explicit and are zero.
 *   offset   0  unitCode                ConvertUnitNameToNumber(unit name)
 *   offset   4  averages                "[averages]"
 *   offset   8  integrationTimeMs       "[integration time ms]", "[integration time]"
 *   offset  12  timestamp               text before "[timestamp]" (<= 49 characters)
 *   offset  80  vexaLumicatorReference  1.0 unless read
 *   offset  88  hasVexaLumicatorReference
 *   offset  92  hasTemperature, temperatureC        "[temperature (\xB0c)]"
 *   offset 100  hasPulseWidth, pulseWidthMs         "[power supply pulse width ms]"
 *   offset 108  hasSupplyReadings, currentA, voltageV, powerW
 *                                      "[current (a)]", "[voltage (v)]", "[power (w)]"
 *   offset 124  hasThd, thdCurrentPercent, thdVoltagePercent
 *                                      "[thd-i (%)]", "[thd-v (%)]"
 *   offset 136  reserved (never written)
 *   offset 140  powerFactor, hasPowerFactor          "[power factor]"
 */
typedef struct SpectralFileExtraInfo {
    int unitCode;
    int averages;
    float integrationTimeMs;
    char timestamp[64];
    int alignPad;
    double vexaLumicatorReference;
    int hasVexaLumicatorReference;
    int hasTemperature;
    float temperatureC;
    int hasPulseWidth;
    float pulseWidthMs;
    int hasSupplyReadings;
    float currentA;
    float voltageV;
    float powerW;
    int hasThd;
    float thdCurrentPercent;
    float thdVoltagePercent;
    int reserved;
    float powerFactor;
    int hasPowerFactor;
    int tailPad;
} SpectralFileExtraInfo;
QOMATH_STATIC_ASSERT(sizeof(SpectralFileExtraInfo) == 152, spectral_extra_size);
QOMATH_STATIC_ASSERT(offsetof(SpectralFileExtraInfo, vexaLumicatorReference) == 80,
                     spectral_extra_double_offset);
QOMATH_STATIC_ASSERT(offsetof(SpectralFileExtraInfo, hasPowerFactor) == 144,
                     spectral_extra_last_field);

/*
 * Kavri Wendo data record: one spectrum of a Kavri Wendo instrument file,
 * caller-allocated (16732 bytes). All texts NUL-terminated.
 *   offset     0  header        free header text (at most 255 characters)
 *   offset   256  date          measurement date text (at most 31 characters)
 *   offset   288  time          measurement time text (at most 31 characters)
 *   offset   320  unitCode      Kavri Wendo unit code 0..16 (see units.h)
 *   offset   324  range         start, end, step of the grid (nm)
 *   offset   336  values        one value a grid point
 *   offset 16720  exposureTime  exposure (integration) time in ms
 *   offset 16724  averages      number of scans averaged
 *   offset 16728  compensation  1 = integration time compensation on
 */
typedef struct KavriWendoRecord {
    char header[256];
    char date[32];
    char time[32];
    int unitCode;
    typ_wlinfo range;
    float values[QOMATH_SPECTRAL_MAX_POINTS];
    float exposureTime;
    int averages;
    int compensation;
} KavriWendoRecord;
QOMATH_STATIC_ASSERT(sizeof(KavriWendoRecord) == 16732, kavri_wendo_record_size);

/* The version number of a spectral file: *version = atof(first line).
 * Returns 1, or -1 (bad name length, null pointer), -2, -3, -4 (see above). */
QOMATH_API int ReadSpectralFileVersion(const char* fileName, float* version);

/*
 * Reads a file with the version 1.0 layout into rec. Any version >= 1.0 is
 * read so (a 2.5 file too); ask ReadSpectralFileVersion first when 2.0 files
 * may come. Information lines longer than 49 characters are cut to 49.
 * A negative information count is kept as read (no lines follow it).
 * When firstDataLine is not null it receives infoCount + 8, the 1-based line
 * number of the first value, once the grid has been checked.
 * Returns 1 or a reader status code (-1 .. -15, above).
 */
QOMATH_API int ReadSpectralFile(const char* fileName, SpectralRecord1* rec, int* firstDataLine);

/*
 * Reads a version 2.0 file into rec; extra (may be null) is zeroed and then
 * receives the unit code and the measurement conditions of the information
 * lines.
 *
 * Each information line is copied as its first 49 characters, and the slot's
 * first 49 bytes are then blank-padded (every NUL among them becomes a
 * blank); the 50th byte is not written, so pass a zeroed record.
 *
 * Tags are searched in a lower-cased copy of each information line, in this
 * order, the first hit deciding; the value is the number the line starts
 * with: "[timestamp]" (the timestamp is the line's first 49 characters, cut
 * where the tag starts, so it keeps the blank before the tag), "[averages]",
 * "[integration time ms]" or "[integration time]", "[vexaLumicator
 * reference]", "[temperature (\xB0c)]", "[power supply pulse width ms]",
 * "[current (a)]", "[voltage (v)]", "[power (w)]", "[thd-i (%)]",
 * "[thd-v (%)]", "[power factor]". The vexaLumicator tag holds capitals and so
 * never matches a lower-cased line: vexaLumicatorReference stays 1.0 and its
 * flag 0, which is what hosts of this library expect.
 *
 * Only a file of version exactly 2.0 has its data read: a higher version
 * returns 1 after the information lines, leaving the grid fields and arrays
 * as they were. A data line without a comma has the value 0.
 * Returns 1 or a reader status code (-1 .. -15, above).
 */
QOMATH_API int ReadSpectralFile2(const char* fileName, SpectralRecord2* rec,
                                 SpectralFileExtraInfo* extra);

/*
 * Reads a bare two-column list (as WriteSpectralFile3 writes it): each line a
 * wavelength, a comma and a value (no comma: value 0). Reading stops at the
 * end of the file, at a line shorter than 3 characters, at a line of 255
 * characters and more, or after 4096 points. Then pointCount = the number of
 * points read and, when it is at least 1, lastWavelength = the last
 * wavelength; firstWavelength and the texts are not set.
 * Returns 1; -1 bad name length or null pointer; -2 cannot open.
 */
QOMATH_API int ReadSimpleSpectralFileIn(const char* fileName, SpectralRecord2* rec);

/*
 * Writes rec as a version 1.0 file (lines end in CR LF). The information
 * count is written as it stands (a count above 50 as 50, the lines the
 * record holds); the values stop at the grid's point count, and at 4096.
 * Returns 1; -1 (see the writer status codes).
 */
QOMATH_API int WriteSpectralFile(const char* fileName, SpectralRecord1* rec);

/*
 * Writes rec as a version 2.0 file (lines end in LF). The count line and the
 * information lines are written only when infoCount >= 0 (a count above 50
 * as 50): with a negative count the file has neither, and the readers cannot
 * read it back; callers rely on version 1.0 and 2.0 differing so. Points are
 * written while i < pointCount (none when pointCount <= 0, at most 4096).
 * Returns 1; -1 (see the writer status codes).
 */
QOMATH_API int WriteSpectralFile2(const char* fileName, SpectralRecord2* rec);

/*
 * Writes only the data lines of version 2.0 ("%f, %.8e" for i < pointCount,
 * at most 4096): a bare two-column list with no header lines. The record is
 * not changed.
 * Returns 1; -1 (see the writer status codes).
 */
QOMATH_API int WriteSpectralFile3(const char* fileName, SpectralRecord2* rec);

/*
 * Adds one row to a comma-separated measurement log. An existing file is
 * appended to when append is non-zero, else overwritten; a missing file is
 * created. Only a file that did not exist gets the title row
 *   "Date,Header,Units,CIE1931_2deg_x,CIE1931y_2deg_y,CIE1931_10deg_x,CIE1931_10deg_y,"
 *   then "%f," for each wavelength, then LF
 * (an overwritten file has none). The data row is
 *   "DATE,HEADER,UNIT," then "%.4f,%.4f,%.4f,%.4f" of colour[37], colour[38],
 *   colour[40], colour[41] (CIE 1931 x, y and CIE 1964 x, y as ColorimetricCalc
 *   stores them), then "%.8e," for each value, then LF.
 * The row carries these literal words, not the record's texts, and no comma
 * stands between the fourth colour figure and the first value: readers of
 * these logs expect exactly this row. Points: i < pointCount, at most 4096.
 * colour must hold at least 42 floats.
 * Returns 1; -1 the file cannot be opened or written, or a null pointer.
 */
QOMATH_API int WriteSpectralFile2X(const char* fileName, SpectralRecord2* rec, const float* colour,
                                   int append);

/*
 * Version 1.0 to 2.0. src.range must be valid (start >= 0, start <= end,
 * step >= 1e-7, step <= end) with 3 to 4096 points. dst receives infoCount,
 * the 50 information slots, the unit name, the header, wavelengths[i] =
 * i * step + start (in float), the values, firstWavelength = start,
 * lastWavelength = end and pointCount = the number of points.
 * Returns 1; -1 invalid grid or null pointer (dst unchanged).
 */
QOMATH_API int FileConvertSpectralVersion1toVersion2(const SpectralRecord1* src,
                                                     SpectralRecord2* dst);

/*
 * Version 2.0 to 1.0. The text fields go the other way: infoCount, the 50
 * information slots, the unit name and the header are copied FROM rec1 INTO
 * rec2, always. Callers fill the texts of the version 1.0 record first and
 * rely on this direction. Then, unless rec2.pointCount lies outside 3..4096
 * (-1), rec1.range = {first, last, (last - first) / (pointCount - 1)} and
 * rec1.values[i] = rec2.values[i] for i < pointCount. The version 2.0
 * wavelengths are taken to be evenly spaced (no resampling).
 * Returns 1; -1 point count out of range or null pointer.
 */
QOMATH_API int FileConvertSpectralVersion2toVersion1(SpectralRecord2* rec2, SpectralRecord1* rec1);

/*
 * Placeholders kept for hosts that import them: one entry under three names
 * that does nothing with its arguments and returns 0.
 */
QOMATH_API int ReadSpectralFile3(const char* fileName, ...);
QOMATH_API int ReadBinarySpectralFile(const char* fileName, ...);
QOMATH_API int WriteDataArrayToFile(const char* fileName, ...);

/*
 * Kavri Wendo record to version 1.0 record. rec is zeroed, then: header = the
 * Kavri Wendo header (at most 255 characters); unitName = "Irradiance" for
 * Kavri Wendo unit code 5, "Radiant Flux" for 3, otherwise "counts" (lower
 * case); range = the Kavri Wendo range; one value a grid point (at most
 * 4096; none for an invalid range); infoCount = 4 with the lines
 *   "%s %s [Timestamp]"                    date, time
 *   "%f [Exposure Time]"                   exposure time
 *   "%d [Averages]"                        averages
 *   "%s [Integration Time Compensation]"   "True" or "False"
 * each cut to 49 characters.
 * Returns 1; -1 null pointer.
 */
QOMATH_API int ConvertKavriWendoToSpectralFormat(const KavriWendoRecord* kw, SpectralRecord1* rec);

/*
 * Version 1.0 record to Kavri Wendo record, the reverse of the above. kw is
 * zeroed, then: header = rec.header; unitCode from the measurement-unit code
 * of rec.unitName (ConvertUnitNameToNumber): counts 1 (Raw A/D), irradiance 5,
 * radiant intensity 0 (no Kavri Wendo unit), radiant flux 3, radiance 4,
 * transmittance 9, reflectance 10; range = rec.range; one value a grid point
 * (at most 4096; none for an invalid range). The information lines in use
 * fill the remaining fields by their tags (case-sensitive, as the conversion
 * above writes them): "[Timestamp]" gives date and time (the text before the
 * tag, split at its first blank), "[Exposure Time]" the exposure time,
 * "[Averages]" the averages, "[Integration Time Compensation]" the flag (1 when
 * the text is "True"). Other lines are dropped.
 * Returns 1; -1 null pointer.
 */
QOMATH_API int ConvertSpectralFormatToKavriWendo(const SpectralRecord1* rec, KavriWendoRecord* kw);

/*
 * Writes rec as a Kavri Wendo 2.x text file, converting it first as
 * ConvertSpectralFormatToKavriWendo does (rec itself is not changed; CR and
 * LF in the texts are written as blanks). One item a line, each line ending
 * in LF:
 *    1  "Conversion from KW3.x to KW2.x File Format"
 *    2  header text
 *    3  date text
 *    4  time text
 *    5  Kavri Wendo unit code ("%d")
 *    6  exposure time in ms ("%f")
 *    7  averages ("%d")
 *    8  integration time compensation ("True" or "False")
 *    9  start wavelength ("%9.8f")
 *   10  end wavelength ("%9.8f")
 *   11  step ("%9.8f")
 *   12  number of points n ("%d", 0 for an invalid range, at most 4096)
 *   13  n lines: wavelength and value, "%f, %.8e" (wavelength = i * step + start)
 * Returns 1; -1 (see the writer status codes).
 */
QOMATH_API int WriteSpectralFileInLegacyKW2x(const char* fileName, const SpectralRecord1* rec);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_SPECTRAL_FILE_H */
