/*
 * QOMath — the text command entry point of the stray-light batch work.
 *
 * QoMathCmd(line, result, capacity) runs one command line and reports in
 * text: the buffer is emptied, then each message (at most 4095 characters)
 * is appended whole when length + its length < capacity and dropped
 * otherwise, so the text always ends in a NUL inside the capacity. The two
 * set texts ("no function specified", "invalid command [LINE]") replace
 * everything, cut to capacity - 1. With no buffer or a capacity below 1 the
 * command still runs and nothing is written. Always returns 0.
 *
 * Tokens: blanks and commas separate (a run of them is one); a double quote
 * toggles quoting and is dropped; "(" .. ")" nest and stay in the value (an
 * unclosed "(" runs to the end of the line, an unmatched ")" is text). A key
 * "name=" matches the first token that starts with it in any case; the rest
 * of the token, trailing blanks removed, is the value (cut to 1023
 * characters; 255 for SLinterpolate, ctl= and the command name, 511 for
 * config=). Command names compare whole, in any case.
 *
 * Commands: cmd?, SLinterpolate?, NVISab?, SDFMat? (help); SLMcorrect
 * (infile= outfile= matrixfile= blueblend=), SLRcorrect (infile= outfile=
 * rcalfile=), SLFilter (infile= outfile= ctl= fp=), SDFMat (config=), DRE
 * (path=), NVISab, SLC2 and SLinterpolate. Every corrected or filtered
 * spectral file holds 1024 points (another count is load failure -14).
 *   SLMcorrect: matrix name under 3 characters -1; missing, unreadable or
 *     not exactly 4,194,304 bytes -2. The correction runs only when both the
 *     matrix and the input loaded; end < start in blueblend= means no blend.
 *   DRE: reads PATH/drelog (the folder name in any case) "DRE0.csv",
 *     "DRE1.csv", ... up to the first missing one (at most 1024), spectral
 *     files of version 2.0 with "[Line Wavelength nm]", "[Integration Time
 *     ms]" and "[Scan Number]" lines, merges them with DREcontrol (saturation
 *     65535) and lists the 30000 ms scans.
 *   SLinterpolate: the scans of "slscans" (regular ".csv" files, any case,
 *     in name order; one wavelength calibration); a scan's nominal line is
 *     the number its file name starts with. mwaf > 1 boxcar-averages first;
 *     zfract >= 0 zeroes values under zfract x peak. The threshold width is
 *     the run of pixels around the peak at or above vthreshold x peak, the
 *     centroid is taken over them; a scan is valid with its centroid within
 *     vmaxnmdelta nm of its line and a width in vminwidth..vmaxwidth. Lines
 *     sit at the nominal values, at the centroids when usecentroid != 0. An
 *     output at L blends the two valid scans around L, each shifted along
 *     wavelength onto L (0 beyond its ends), by their distance to L; one
 *     every outnminterval nm from the first valid line to the last
 *     ("slinterpolate/%0.1f.csv") and one per pixel inside them
 *     ("slinterpolate1024/%04d.csv"); vscaleout > 0 sets each output's peak.
 *   NVISab: the table nvis= (NVIS_GetData), a = ina=, b = inb=. lum > 0
 *     scales both to that luminance (fL); escale=s:e scales a by the ratio
 *     of the integrals of b and a over s..e, or by s when e = 0; nmshift >
 *     -100 shifts a's wavelengths, otherwise the shift in -10..10 nm (dscale
 *     steps) with the least squared difference of a and b on b's points in
 *     nmsum wins. r, g, b, t: integrals of a and b over 600-700, 500-600,
 *     400-500 nm and nmsum; NVIS: b's NVIS radiance. "nvisab.csv": on b's
 *     points in nmsum, the running integral of a - b with a as read
 *     (DeltaSUM) and as scaled and shifted (DeltaSUMScaled).
 *   SLC2: corrects every file of in= with the loaded matrix ("slmatrix.bin"
 *     when none is), no blue blend, into "slc2/<name>"; fin, frs (the part
 *     removed) and out give sum, minimum, peak and NVIS radiance (0 without
 *     nvis=); each file timed with a steady clock.
 * The process-wide matrix slot of the stray-light family stays loaded from
 * one SLMcorrect to the next; no locking, the host serialises these calls.
 */
#ifndef QOMATH_COMMAND_H
#define QOMATH_COMMAND_H

#include "qomath/common.h"

#ifdef __cplusplus
extern "C" {
#endif

QOMATH_API int QoMathCmd(char* commandLine, char* result, int resultCapacity);

/* Merges scans of one line taken at several integration times: scans holds
 * count rows of `pixels` counts, timesMs their integration times. Per pixel
 * merged = (sum of counts) / (sum of seconds) over the scans whose count
 * there is below saturation; where every scan saturates, the shortest scan's
 * counts per second. Returns 1; 0 when some pixel saturated in every scan;
 * -1 null pointer, count < 1, pixels < 1 or a time <= 0. */
QOMATH_API int DREprocess(const float* scans, const float* timesMs, int count, int pixels,
                          float saturation, float* merged);

/* Reads the records of logFolder ("DRE0.csv" .. up to the first gap, as the
 * DRE command does), merges the scans of each line wavelength (in order of
 * first appearance) with DREprocess and writes logFolder/"redre.txt": a row
 * "nm,<line>,..." ("%.1f"), then per pixel the first record's wavelength and
 * one merged value per line ("%f,%e,..."). Returns the number of lines; 0 no
 * records; -1 no folder given; -2 the file cannot be written. */
QOMATH_API int DREcontrol(const char* logFolder, float saturation);

#ifdef __cplusplus
}
#endif

#endif /* QOMATH_COMMAND_H */
