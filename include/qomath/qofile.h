/*
 * QOMath — the CQOFile class: version 2.0 spectral files as strings and vectors.
 *
 * CQOFile loads a version 2.0 spectral text file (first line "2.0 [Quarvel
 * Optronic Spectral File]", header, unit name, the information-line count
 * and the lines, first wavelength, point count, last wavelength, then one
 * "wavelength,value" line a point) into standard strings and vectors of
 * doubles, and saves such files. QOReadSpectralFile is its C face: it loads
 * through CQOFile and copies the result into a SpectralRecord2.
 *
 * Lines are read with the same bounded read as the other spectral readers:
 * at most 254 characters before the LF; a longer line, or the end of the
 * file, fails that step. A CR before the LF stays in text lines.
 */
#ifndef QOMATH_QOFILE_H
#define QOMATH_QOFILE_H

#include "qomath/common.h"
#include "qomath/spectral_file.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Loads fileName with CQOFile::Load and, on success, copies it into rec:
 * infoCount and the information lines (each cut to 49 characters), header
 * (cut to 255) and unitName (cut to 49), each NUL-terminated; wavelengths and
 * values converted to float; pointCount = the number of points;
 * firstWavelength and lastWavelength = the first and last wavelength. The
 * reserved array is not touched, nor are unused information slots.
 *
 * When extra is not null, only averages, timestamp (cut to 63 characters),
 * integrationTimeMs and unitCode (ConvertUnitNameToNumber of the unit name)
 * are filled; its other fields are left as the caller set them.
 *
 * Returns whatever CQOFile::Load returns (1, or -1 to -15), and also:
 *   -1   rec is null (nothing is read)
 *   -8   the file holds more than 50 information lines
 *   -14  the file holds more than 4096 points
 * On any failure rec and extra are left untouched.
 */
QOMATH_API int QOReadSpectralFile(const char* fileName, SpectralRecord2* rec,
                                  SpectralFileExtraInfo* extra);

#ifdef __cplusplus
} /* extern "C" */

#include <string>
#include <vector>

/*
 * A version 2.0 spectral file held in standard strings and vectors. Copyable
 * member by member. Nothing is thrown: allocation failures become status
 * codes, and a copy that cannot be made leaves the target empty (as after
 * Init).
 */
class QOMATH_API CQOFile {
public:
    /* An empty object (calls Init). */
    CQOFile();
    CQOFile(const CQOFile& other);
    CQOFile& operator=(const CQOFile& other);
    ~CQOFile();

    /* Empties every string and vector and zeroes the counts, the averages and
     * the integration time. */
    void Init();

    /*
     * Loads a version 2.0 file. Init first; the name is remembered even when
     * the load fails, and whatever was read before a failure stays in the
     * object. Returns 1, or the code of the step that failed:
     *   -1   name null or shorter than 3 characters
     *   -2   the file cannot be opened (also a folder)
     *   -3   no first line          -4  first line lacks the marker
     *   -5   version (the number the first line starts with) below 2.0;
     *        any version from 2.0 up is read with the 2.0 layout
     *   -6   no header line         -7  no unit-name line
     *   -8   no count line, or a count of information lines larger than the
     *        file's size in bytes (no file holds more lines than bytes; this
     *        also catches negative counts)
     *   -9   an information line is missing
     *   -10  no first-wavelength line (the value is not used)
     *   -11  no point-count line    -12 no last-wavelength line (not used)
     *   -13  point count below 2, or larger than the file's size in bytes
     *        (a pipe or device, whose size is unknown, may announce up to
     *        2^24 lines of either kind)
     *   -14  a point line is missing
     *   -15  memory could not be had
     * The information count may exceed 50 and the point count 4096.
     *
     * Each information line is stored as read, then searched for the tags
     * "[Timestamp]", "[AVERAGES]" and "[Integration Time ms]", compared
     * case-sensitively; the text before a tag (see ParseInfoLine) sets the
     * time stamp, the averages (atoi) or the integration time (atof). Files
     * from the Kavri Wendo conversion write "[Averages]", which this reader
     * does not take: callers rely on both spellings staying exactly so.
     *
     * Point lines are scanned with "%lf,%lf": a line without a comma right
     * after the wavelength, or with text in place of a number, leaves the
     * value (or both) at 0.
     */
    int Load(const char* fileName);

    /*
     * Writes a version 2.0 file: the first line, header, unitName, the number
     * of info strings, each info string, wavelength[0], the number of points
     * (the size of wavelength), the last wavelength, then "wavelength,value"
     * a point; every item ends in LF. Numbers are written as a standard
     * stream writes a double by default (6 significant digits: 380, 0.123457,
     * 1e-07), independent of the locale. Texts are written as given (a null
     * header or unit name as an empty line); a line end inside one splits
     * its line.
     *
     * The file is written beside the target under a temporary name and
     * replaces the target only when every byte has been written; on any
     * failure an existing file is left as it was. Returns 1, or
     *   -1  name null or empty, the file cannot be created or written, or
     *       memory could not be had
     *   -2  wavelength is empty
     *   -3  spectral has fewer values than wavelength
     * (nothing is written on -2 and -3).
     */
    int Save(const char* fileName, const char* header, const char* unitName,
             const std::vector<double> wavelength, const std::vector<double> spectral,
             const std::vector<std::string> info);

    /* The texts of the last load; valid until the object changes. */
    const char* GetHeader();
    const char* GetUnitName();
    const char* GetTimeStamp();
    unsigned int GetAverages() const;
    double GetIntegrationTime_ms() const;
    /* Copies of the data; empty when memory could not be had. */
    std::vector<double> GetWavelength() const;
    std::vector<double> GetSpectral() const;
    /* The point count announced by the file. */
    unsigned int GetDataLength() const;
    /* The number of wavelengths held. */
    unsigned int GetWavelengthLength() const;
    /* The information-line count announced by the file. */
    unsigned int GetAdditionalInfoCount() const;
    /* Information line i; null when i >= the count, or when the line was
     * never stored (the count was refused by a failed load). */
    const char* GetAdditionLineInfo(unsigned int i);

private:
    /* The text before tag in line: empty when line does not contain tag; the
     * first p - 1 characters when tag starts at p (the value without its
     * separating blank); the whole line when tag starts at 0. Callers rely
     * on exactly this cut, so "3[AVERAGES]" gives an empty text. */
    std::string ParseInfoLine(const std::string line, const std::string tag);

    std::string fileName;
    std::string unitName;
    std::string header;
    unsigned int dataLength;
    std::vector<double> wavelength;
    std::vector<double> spectral;
    unsigned int additionalInfoCount;
    std::vector<std::string> additionalInfo;
    std::string timeStamp;
    unsigned int averages;
    double integrationTimeMs;
};

#endif /* __cplusplus */

#endif /* QOMATH_QOFILE_H */
