// Spectral analysis by measurement unit: the summary calculations, the
// photometric values and a few band figures of one spectrum, laid out in the
// record of its unit.
#include "qomath/spectral_analysis.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>
#include <span>
#include <vector>

#include "files/spectral_analysis.hpp"
#include "colorimetry/context.hpp"
#include "colorimetry/summary.hpp"
#include "common/barrier.hpp"
#include "numerics/interpolation.hpp"
#include "qomath/arrays.h"
#include "qomath/grid.h"
#include "qomath/photometry.h"
#include "qomath/summary.h"

namespace qomath::analysis {
namespace {

using qomath::detail::guarded;

constexpr int kOk = 1;
constexpr int kBadArgument = -11;
constexpr int kBadData = -12;
constexpr int kShort = -13;
constexpr int kNoMemory = -14;

constexpr float kVisibleLow = 380.0f;
constexpr float kVisibleHigh = 780.0f;
constexpr float kParLow = 400.0f;
constexpr float kParHigh = 700.0f;
constexpr double kPlanckTimesLight = 6.62607015e-34 * 299792458.0;  // h c, J m
constexpr double kAvogadro = 6.02214076e23;
constexpr double kLumensPerWatt = 683.0;

enum Unit { kCounts = 0, kIrradiance, kIntensity, kFlux, kRadiance, kTransmittance, kReflectance };

// Factor from the unit's integral to SI (W/m^2, W/m^2/sr, W/sr, W).
double si_factor(int unit)
{
    switch (unit) {
    case kIrradiance:
    case kRadiance: return 0.01;  // uW/cm^2 -> W/m^2
    case kFlux: return 1e-6;      // uW -> W
    default: return 1.0;          // W/sr
    }
}

struct Options {
    float band_start = kVisibleLow;
    float band_end = kVisibleHigh;
    int white = QOMATH_WHITE_E;
    int illuminant = 1;
    float saturation = 65535.0f;
};

Options options_of(const typ_SpectralAnalysisOptions* o)
{
    Options r;
    if (!o) return r;
    if (!(o->bandStart == 0.0f && o->bandEnd == 0.0f)) {
        r.band_start = o->bandStart;
        r.band_end = o->bandEnd;
    }
    r.white = o->white;
    r.illuminant = o->illuminant;
    r.saturation = o->saturation;
    return r;
}

// -11 for unusable arguments, -12 for unusable data, else 1.
int check(const float* wl, const float* v, int n, const Options& o)
{
    if (!wl || !v || n < 2 || !(o.band_start < o.band_end)) return kBadArgument;
    return summary::finite_and_increasing(wl, v, n) ? kOk : kBadData;
}

bool covers(const float* wl, int n, float lo, float hi)
{
    return wl[0] <= lo && wl[n - 1] >= hi;
}

float band(const float* wl, const float* v, int n, float lo, float hi)
{
    const auto m = static_cast<std::size_t>(n);
    return summary::band_integral({wl, m}, {v, m}, lo, hi);
}

// Photons of 400..700 nm in umol/s per the unit's geometry: the integral of
// S(l) l / (h c) over the band, S in SI units per nm.
float photons(const float* wl, const float* v, int n, int unit)
{
    std::vector<float> weighted(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) weighted[static_cast<std::size_t>(i)] = v[i] * wl[i];
    const double integral = band(wl, weighted.data(), n, kParLow, kParHigh);  // unit x nm^2
    const double per_second = integral * si_factor(unit) * 1e-9 / kPlanckTimesLight;
    return static_cast<float>(per_second / kAvogadro * 1e6);
}

// The head and tail words of an emitting unit; photometric values through fill.
// The frame every analysis shares: the record cleared, the input checked,
// the work run behind the barrier; after a failure other than -13 only the
// status word is left.
template <class Record, class Status, class Work>
int framed(Record* out, const float* wl, const float* v, int n,
           const typ_SpectralAnalysisOptions* opt, Status status, Work work)
{
    if (!out) return kBadArgument;
    std::memset(out, 0, sizeof *out);
    const Options o = options_of(opt);
    int st = check(wl, v, n, o);
    if (st == kOk) st = guarded(kNoMemory, [&] { return work(o); });
    if (st != kOk && st != kShort) std::memset(out, 0, sizeof *out);
    status(*out) = st;
    return st;
}

template <class Record, class Photometric>
int emitting(const float* wl, const float* v, int n, int unit, Record* out,
             const typ_SpectralAnalysisOptions* opt, Photometric fill)
{
    const auto status = [](Record& r) -> int& { return r.head.status; };
    return framed(out, wl, v, n, opt, status, [&](const Options& o) {
        typ_SpectralAnalysisHead& h = out->head;
        h.points = n;
        h.colorimetricStatus =
            ColorimetricCalc(wl, v, n, unit, o.white, o.illuminant, h.colorimetric);
        h.radiometricStatus = RadiometryCalc(wl, v, n, o.band_start, o.band_end, h.radiometric);
        if (h.colorimetricStatus == -4 || h.radiometricStatus == -4) return kNoMemory;
        fill(*out);
        typ_SpectralAnalysisTail& t = out->tail;
        const double si = si_factor(unit);
        const double total = IntegrationDiscrete(wl, v, n);
        t.totalSI = static_cast<float>(total * si);
        t.visibleSI = static_cast<float>(band(wl, v, n, kVisibleLow, kVisibleHigh) * si);
        t.uvA = static_cast<float>(band(wl, v, n, 315.0f, 400.0f) * si);
        t.uvB = static_cast<float>(band(wl, v, n, 280.0f, 315.0f) * si);
        t.uvC = static_cast<float>(band(wl, v, n, 100.0f, 280.0f) * si);
        t.photons = photons(wl, v, n, unit);
        // Y is the y-bar weighted integral of the values.
        const double y = h.colorimetric[QOMATH_CC_Y];
        t.efficacy = total > 0.0 ? static_cast<float>(kLumensPerWatt * y / total) : 0.0f;
        const bool short_of_range =
            h.colorimetricStatus == -3 || !covers(wl, n, kVisibleLow, kVisibleHigh);
        return short_of_range ? kShort : kOk;
    });
}

int counts(const float* wl, const float* v, int n, typ_SpectralAnalysisCounts* out,
           const typ_SpectralAnalysisOptions* opt)
{
    const auto status = [](typ_SpectralAnalysisCounts& r) -> int& { return r.status; };
    return framed(out, wl, v, n, opt, status, [&](const Options& o) {
        float rc[QOMATH_RC_COUNT];
        const int rs = RadiometryCalc(wl, v, n, o.band_start, o.band_end, rc);
        if (rs == -4) return kNoMemory;
        out->points = n;
        out->firstWavelength = wl[0];
        out->lastWavelength = wl[n - 1];
        out->peakWavelength = rc[QOMATH_RC_PEAK_WL];
        out->peakValue = rc[QOMATH_RC_PEAK_VALUE];
        out->centroid = rc[QOMATH_RC_CENTROID];
        out->fwhm = rc[QOMATH_RC_FWHM];
        out->integral = rc[QOMATH_RC_TOTAL];
        double sum = 0.0;
        float lo = v[0];
        int saturated = 0;
        for (int i = 0; i < n; ++i) {
            sum += v[i];
            lo = std::min(lo, v[i]);
            if (v[i] >= o.saturation) ++saturated;
        }
        const double mean = sum / n;
        double ss = 0.0;
        for (int i = 0; i < n; ++i) ss += (v[i] - mean) * (v[i] - mean);
        out->minimum = lo;
        out->mean = static_cast<float>(mean);
        out->stdDeviation = static_cast<float>(std::sqrt(ss / (n - 1)));
        out->saturatedPoints = saturated;
        return kOk;
    });
}

int average(const float* wl, const float* v, int n, float start, float end, float* avg)
{
    if (!avg) return kBadArgument;
    *avg = 0.0f;
    if (start == 0.0f && end == 0.0f) {
        start = kVisibleLow;
        end = kVisibleHigh;
    }
    Options o;
    o.band_start = start;
    o.band_end = end;
    const int st = check(wl, v, n, o);
    if (st != kOk) return st;
    return guarded(kNoMemory, [&] {
        *avg = static_cast<float>(band(wl, v, n, start, end) / (static_cast<double>(end) - start));
        return covers(wl, n, start, end) ? kOk : kShort;
    });
}

int reflect_transmit(const float* wl, const float* v, int n, int unit,
                     typ_SpectralAnalysisReflectTransmit* out,
                     const typ_SpectralAnalysisOptions* opt)
{
    const auto status = [](typ_SpectralAnalysisReflectTransmit& r) -> int& { return r.status; };
    return framed(out, wl, v, n, opt, status, [&](const Options& o) {
        out->points = n;
        out->colorimetricStatus =
            ColorimetricCalc(wl, v, n, unit, o.white, o.illuminant, out->colorimetric);
        if (out->colorimetricStatus == -4) return kNoMemory;
        // The object colour on the data's own sampling, with a cache of its own.
        numerics::Interpolate2State cache;
        const colorimetry::Context ctx{colorimetry::Sampling::data, &cache};
        float cc[QOMATH_CC_COUNT];
        summary::ObjectColour object;
        if (summary::colorimetric(ctx, wl, v, n, unit, o.white, o.illuminant, cc, &object) == 1 &&
            object.valid) {
            out->objectX = cc[QOMATH_CC_X];
            out->objectY = cc[QOMATH_CC_Y];
            out->objectZ = cc[QOMATH_CC_Z];
            out->L = object.lab[0];
            out->a = object.lab[1];
            out->b = object.lab[2];
        }
        const int a1 = average(wl, v, n, kVisibleLow, kVisibleHigh, &out->average380to780);
        average(wl, v, n, kParLow, kParHigh, &out->average400to700);
        const auto lo = std::min_element(v, v + n);
        const auto hi = std::max_element(v, v + n);
        out->minimum = *lo;
        out->minimumWavelength = wl[lo - v];
        out->maximum = *hi;
        out->maximumWavelength = wl[hi - v];
        return out->colorimetricStatus == -3 || a1 == kShort ? kShort : kOk;
    });
}

}  // namespace

// The unit's analysis into a record of its type; the registry calls this.
int analyse(const float* wl, const float* v, int n, int unit, void* out,
            const typ_SpectralAnalysisOptions* opt)
{
    switch (unit) {
    case kCounts: return counts(wl, v, n, static_cast<typ_SpectralAnalysisCounts*>(out), opt);
    case kIrradiance:
        return SpectralAnalysis_Irradiance(wl, v, n, static_cast<typ_SpectralAnalysisIrradiance*>(out), opt);
    case kIntensity:
        return SpectralAnalysis_RadiantIntensity(
            wl, v, n, static_cast<typ_SpectralAnalysisRadiantIntensity*>(out), opt);
    case kFlux:
        return SpectralAnalysis_RadiantFlux(wl, v, n, static_cast<typ_SpectralAnalysisRadiantFlux*>(out), opt);
    case kRadiance:
        return SpectralAnalysis_Radiance(wl, v, n, static_cast<typ_SpectralAnalysisRadiance*>(out), opt);
    case kTransmittance:
    case kReflectance:
        return reflect_transmit(wl, v, n, unit, static_cast<typ_SpectralAnalysisReflectTransmit*>(out), opt);
    default: return kBadArgument;
    }
}

int words_of(int unit)
{
    constexpr int kWords[] = {QOMATH_ANALYSIS_WORDS_COUNTS,          QOMATH_ANALYSIS_WORDS_IRRADIANCE,
                              QOMATH_ANALYSIS_WORDS_RADIANT_INTENSITY, QOMATH_ANALYSIS_WORDS_RADIANT_FLUX,
                              QOMATH_ANALYSIS_WORDS_RADIANCE,        QOMATH_ANALYSIS_WORDS_REFLECT_TRANSMIT,
                              QOMATH_ANALYSIS_WORDS_REFLECT_TRANSMIT};
    return unit >= 0 && unit <= kReflectance ? kWords[unit] : 0;
}

}  // namespace qomath::analysis

using namespace qomath::analysis;

extern "C" {

int SpectralAnalysis_Counts(const float* wl, const float* values, int n,
                            typ_SpectralAnalysisCounts* out, const typ_SpectralAnalysisOptions* options)
{
    return counts(wl, values, n, out, options);
}

int SpectralAnalysis_Irradiance(const float* wl, const float* values, int n,
                                typ_SpectralAnalysisIrradiance* out,
                                const typ_SpectralAnalysisOptions* options)
{
    return emitting(wl, values, n, kIrradiance, out, options, [&](typ_SpectralAnalysisIrradiance& r) {
        IlluminanceCalc(wl, values, n, r.illuminance);
    });
}

int SpectralAnalysis_RadiantIntensity(const float* wl, const float* values, int n,
                                      typ_SpectralAnalysisRadiantIntensity* out,
                                      const typ_SpectralAnalysisOptions* options)
{
    return emitting(wl, values, n, kIntensity, out, options,
                    [&](typ_SpectralAnalysisRadiantIntensity& r) {
                        LuminousIntensityCalc(wl, values, n, &r.candela);
                    });
}

int SpectralAnalysis_RadiantFlux(const float* wl, const float* values, int n,
                                 typ_SpectralAnalysisRadiantFlux* out,
                                 const typ_SpectralAnalysisOptions* options)
{
    return emitting(wl, values, n, kFlux, out, options, [&](typ_SpectralAnalysisRadiantFlux& r) {
        LuminousFluxCalc(wl, values, n, &r.lumen);
        r.meanSphericalCandela = static_cast<float>(r.lumen / (4.0 * std::numbers::pi));
    });
}

int SpectralAnalysis_Radiance(const float* wl, const float* values, int n,
                              typ_SpectralAnalysisRadiance* out, const typ_SpectralAnalysisOptions* options)
{
    return emitting(wl, values, n, kRadiance, out, options, [&](typ_SpectralAnalysisRadiance& r) {
        LuminanceCalc(wl, values, n, r.luminance);
    });
}

int SpectralAnalysis_ReflectTransmit(const float* wl, const float* values, int n,
                                     typ_SpectralAnalysisReflectTransmit* out,
                                     const typ_SpectralAnalysisOptions* options)
{
    return reflect_transmit(wl, values, n, kTransmittance, out, options);
}

int SpectralAnalysis(const float* wl, const float* values, int n, int unitCode, void* out,
                     int outWords, const typ_SpectralAnalysisOptions* options)
{
    const int words = words_of(unitCode);
    if (!out || words == 0 || outWords < words) return kBadArgument;
    return analyse(wl, values, n, unitCode, out, options);
}

int SpectralAnalysis_AverageReflectance(const float* wl, const float* values, int n, float start,
                                        float end, float* result)
{
    return average(wl, values, n, start, end, result);
}

}  // extern "C"
