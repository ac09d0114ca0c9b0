// Dominant wavelength, excitation and colorimetric purity, and the stored
// example spectrum.
//
// The search walks the 0.1 nm 1931 locus: a bounding box around the locus
// validates the inputs, a box on the far side of the sample narrows the
// stretch of locus the line can meet, the locus point nearest the line picks
// two candidate segments, and the segment hit nearest the white wins.
#include "qomath/dominant.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <span>

#include "colorimetry/cie_tables.hpp"
#include "qomath/chromaticity.h"
#include "qomath/tristimulus.h"

namespace qomath::dominant {

namespace {

struct Point {
    double x;
    double y;
};

Point point(const float* xy)
{
    return {xy[0], xy[1]};
}

// ---- The purple line -------------------------------------------------------
// From the 360 nm end (0.17556, 0.0053) to the 700 nm end (0.73469, 0.26531),
// with the coordinates, the slope and the direction held as floats.
constexpr double kBlueX = 0.17556f;
constexpr double kBlueY = 0.0053f;
constexpr double kRedX = 0.73469f;
constexpr double kRedY = 0.26531f;
constexpr double kPurpleSlope = 0.46502602100372314;  // 0.26001f / 0.55913f, in float
constexpr double kPurpleDx = 0.55913f;
constexpr double kPurpleDy = 0.26001f;
constexpr double kPurpleLength2 = 0.38023157362787074;  // kPurpleDx^2 + kPurpleDy^2

// On or above the purple line (false for NaN).
bool above_purple_line(Point p)
{
    return p.y >= kRedY - kRedX * kPurpleSlope + p.x * kPurpleSlope;
}

// Does the line from w through s meet the purple line between its ends, going
// down (s not above w)? The angle between the two lines must be a number, so
// a sample at the white never counts.
bool meets_purple_line(Point s, Point w)
{
    if (!(s.y <= w.y)) return false;
    const double vx = s.x - w.x;
    const double vy = s.y - w.y;
    const double cos_angle =
        (vx * kPurpleDx + vy * kPurpleDy) / std::sqrt((vx * vx + vy * vy) * kPurpleLength2);
    if (std::isnan(std::acos(cos_angle))) return false;
    // w + t v = blue end + u d, solved for t.
    const double cross = vx * kPurpleDy - vy * kPurpleDx;
    if (cross == 0.0) return false;  // parallel
    const double t = ((kBlueX - w.x) * kPurpleDy - (kBlueY - w.y) * kPurpleDx) / cross;
    const double x = w.x + t * vx;
    return x >= kBlueX && x <= kRedX;
}

// ---- The locus as searched -------------------------------------------------

struct Box {
    double x_min;
    double x_max;
    double y_min;
    double y_max;

    bool contains(double x, double y) const
    {
        return x >= x_min && x <= x_max && y >= y_min && y <= y_max;
    }
};

struct Locus {
    std::span<const float> x;
    std::span<const float> y;
    Box box;

    int last() const { return static_cast<int>(x.size()) - 1; }
    Point at(int i) const
    {
        const auto k = static_cast<std::size_t>(i);
        return {x[k], y[k]};
    }
    bool valid(Point p) const { return box.contains(p.x, p.y) && above_purple_line(p); }
};

// The box is a property of the constant table, so it is scanned once.
const Locus& locus()
{
    static const Locus searched = [] {
        Locus l{cie::locus1931_fine_x(), cie::locus1931_fine_y(), {9e19, 0.0, 9e19, 0.0}};
        for (std::size_t i = 0; i < l.x.size(); ++i) {
            l.box.x_min = std::min(l.box.x_min, static_cast<double>(l.x[i]));
            l.box.x_max = std::max(l.box.x_max, static_cast<double>(l.x[i]));
            l.box.y_min = std::min(l.box.y_min, static_cast<double>(l.y[i]));
            l.box.y_max = std::max(l.box.y_max, static_cast<double>(l.y[i]));
        }
        return l;
    }();
    return searched;
}

// ---- Lines -----------------------------------------------------------------

constexpr double kVerticalSlope = 1e19;
constexpr double kVanishing = 1e-19;

// y = slope x + intercept.
struct Line {
    double slope;
    double intercept;
};

Line line_through(Point a, Point b)
{
    const double dx = b.x - a.x;
    const double slope = std::fabs(dx) <= kVanishing ? kVerticalSlope : (b.y - a.y) / dx;
    return {slope, a.y - a.x * slope};
}

struct Hit {
    Point p;
    double distance2;  // from the white
    int segment;       // start index j on the locus
};

// Where the line meets the line of locus segment j; false when they are
// parallel.
bool meet_segment(const Locus& l, int j, Line line, Point white, Hit& hit)
{
    const Line seg = line_through(l.at(j), l.at(j + 1));
    if (std::fabs(seg.slope - line.slope) <= 1e-15) return false;
    const double x = (seg.intercept - line.intercept) / (line.slope - seg.slope);
    // y from the flatter of the two lines, which loses the least.
    const double y = std::fabs(line.slope) <= std::fabs(seg.slope)
                         ? line.slope * x + line.intercept
                         : seg.slope * x + seg.intercept;
    const double dx = x - white.x;
    const double dy = y - white.y;
    hit = {{x, y}, dx * dx + dy * dy, j};
    return true;
}

// NaN for a segment without x extent (the locus stands still from 699 to
// 700 nm): a hit there has no wavelength and fails the range check.
double wavelength_of(const Locus& l, const Hit& hit)
{
    const Point a = l.at(hit.segment);
    const double step = std::fabs(a.x - l.at(hit.segment + 1).x);
    if (!(step > kVanishing)) return std::numeric_limits<double>::quiet_NaN();
    return 360.0 + 0.1 * hit.segment + 0.1 * std::fabs(hit.p.x - a.x) / step;
}

void clear(float* locus_point, float* wavelength)
{
    locus_point[0] = locus_point[1] = locus_point[2] = 0.0f;
    *wavelength = 0.0f;
}

// Moves a float coordinate, in the caller's array.
void shift(float& v, double by)
{
    v = static_cast<float>(v + by);
}

// `complementary`: this call already is the search with sample and white
// exchanged for a purple, and does not branch again. Passed down instead of
// kept process-wide, so calls on several threads do not meet.
int search(float* sample, float* white, float* locus_point, float* wavelength,
           bool complementary)
{
    clear(locus_point, wavelength);
    const Locus& l = locus();
    if (!l.valid(point(sample))) return QOMATH_DOMINANT_BAD_SAMPLE;
    if (!l.valid(point(white))) return QOMATH_DOMINANT_BAD_WHITE;

    // A purple: report the complementary wavelength, negated. With the roles
    // exchanged the purple test fails, or (sample and white at one y) would
    // hold again; either way the exchanged search runs without it.
    if (!complementary && meets_purple_line(point(sample), point(white))) {
        const int status = search(white, sample, locus_point, wavelength, true);
        if (*wavelength != 0.0f) *wavelength = -*wavelength;  // a cleared 0 stays +0
        return status;
    }

    // Keep the line off the vertical. The moved values are written back:
    // callers read the adjusted chromaticities from their arrays.
    if (std::fabs(static_cast<double>(sample[0]) - white[0]) < 1e-5) {
        shift(sample[0], -1e-5);
        shift(white[0], 1e-5);
    }
    const Point s = point(sample);
    const Point w = point(white);
    const Line line = line_through(w, s);

    // The locus the line can meet lies on the far side of the sample.
    const Box far{s.x > w.x ? s.x - 0.001 : l.box.x_min - 0.001,
                  s.x > w.x ? l.box.x_max + 0.001 : s.x + 0.001,
                  s.y > w.y ? s.y - 0.001 : l.box.y_min - 0.001,
                  s.y > w.y ? l.box.y_max + 0.001 : s.y + 0.001};
    int first = -1;
    int last = -1;
    for (int i = 0; i <= l.last(); ++i) {
        if (far.contains(l.x[static_cast<std::size_t>(i)], l.y[static_cast<std::size_t>(i)])) {
            if (first < 0) first = i;
            last = i;
        }
    }
    if (first < 0) return QOMATH_DOMINANT_NOT_FOUND;
    if (last == first) last = std::min(first + 1, l.last());

    // The locus point nearest the line, measured along y; earlier ones win ties.
    int k = first;
    double best = 9.9e10;
    for (int i = first; i <= last; ++i) {
        const Point p = l.at(i);
        const double off = std::fabs(line.slope * p.x + line.intercept - p.y);
        if (off < best) {
            best = off;
            k = i;
        }
    }

    // The segments either side of it; the hit nearest the white is the locus.
    Hit found{};
    bool any = false;
    for (const int j : {std::max(k - 1, 0), k}) {
        Hit hit{};
        if (j + 1 > l.last() || !meet_segment(l, j, line, w, hit)) continue;
        if (!any || hit.distance2 < found.distance2) found = hit;
        any = true;
    }
    if (!any) return QOMATH_DOMINANT_NOT_FOUND;

    const double nm = wavelength_of(l, found);
    if (!(nm >= 360.0 && nm <= 700.0)) return QOMATH_DOMINANT_BAD_WAVELENGTH;
    // Judged as the caller receives them, in float.
    const auto as_float = [](double v) {
        return std::fabs(v) <= FLT_MAX ? static_cast<float>(v) : FLT_MAX;
    };
    const float hx = as_float(found.p.x);
    const float hy = as_float(found.p.y);
    if (!(hx >= l.box.x_min && hx <= l.box.x_max)) return QOMATH_DOMINANT_BAD_LOCUS_X;
    if (!(hy >= l.box.y_min && hy <= l.box.y_max)) return QOMATH_DOMINANT_BAD_LOCUS_Y;
    locus_point[0] = hx;
    locus_point[1] = hy;
    *wavelength = static_cast<float>(nm);
    return QOMATH_DOMINANT_FOUND;
}

// White points of ComputeDominantWLoptions, by option.
constexpr double kWhites[4][2] = {
    {1.0 / 3.0, 1.0 / 3.0},   // equal energy
    {0.31271, 0.32902},       // D65
    {0.44757, 0.40745},       // A
    {0.31006, 0.31616},       // C
};

// ---- The stored example spectrum -------------------------------------------

constexpr std::int32_t kWhiteLedRows[][1] = {
#include "qomath_data/white_led_raw_1024.inc"
};

constexpr std::int32_t largest(const std::int32_t (&rows)[QOMATH_WHITE_LED_SAMPLE_POINTS][1])
{
    std::int32_t m = rows[0][0];
    for (const auto& r : rows) m = std::max(m, r[0]);
    return m;
}
static_assert(std::size(kWhiteLedRows) == QOMATH_WHITE_LED_SAMPLE_POINTS);
static_assert(sizeof kWhiteLedRows == 4096);
static_assert(kWhiteLedRows[0][0] == 2157 && largest(kWhiteLedRows) == 53016);

}  // namespace

}  // namespace qomath::dominant

using namespace qomath;

extern "C" {

int DominantWavelength2(float* sample, float* white, float* locus_point, float* wavelength)
{
    if (locus_point) locus_point[0] = locus_point[1] = locus_point[2] = 0.0f;
    if (wavelength) *wavelength = 0.0f;
    if (!sample || !white || !locus_point || !wavelength) return QOMATH_DOMINANT_BAD_SAMPLE;
    return dominant::search(sample, white, locus_point, wavelength, false);
}

int DominantWavelength(float* sample, float* white, float* locus_point, float* wavelength)
{
    return DominantWavelength2(sample, white, locus_point, wavelength);
}

int DominantWavelengthExtended(float* sample, float* white, float* locus_point,
                               float* wavelength)
{
    return DominantWavelength2(sample, white, locus_point, wavelength);
}

int ExcitationColorimetricPurity(float* record)
{
    if (!record) return -1;
    // Both results read 0 after a call that computes nothing.
    record[6] = record[7] = 0.0f;
    for (int i = 0; i < 6; ++i)
        if (!std::isfinite(record[i])) return QOMATH_NOTHING;
    const double y = record[0], y_white = record[1], y_locus = record[2];
    const double x = record[3], x_white = record[4], x_locus = record[5];
    if (std::fabs(y_locus - y_white) < 1e-19 || std::fabs(x_locus - x_white) < 1e-19 ||
        std::fabs(y) < 1e-19)
        return QOMATH_NOTHING;
    // Signed differences, not magnitudes, pick the ratio: stored purities
    // were computed this way and hosts compare against them.
    const double pe = (y - y_white) > (x - x_white) ? (y - y_white) / (y_locus - y_white)
                                                    : (x - x_white) / (x_locus - x_white);
    const double pc = y_locus * pe / y;
    if (!(std::fabs(pe) <= FLT_MAX && std::fabs(pc) <= FLT_MAX)) return QOMATH_NOTHING;
    record[6] = static_cast<float>(pe);
    record[7] = static_cast<float>(pc);
    return QOMATH_SUCCESS;
}

float ComputeDominantWLoptions(float* x, float* y, int n, int option)
{
    if (!x || !y || option < 0 || option > 3) return 0.0f;
    float XYZ[3] = {0.0f, 0.0f, 0.0f};
    if (CalcTristimulusXYZ1931_2(x, y, n, XYZ) != 1) return 0.0f;
    float xyz[3] = {0.0f, 0.0f, 0.0f};
    if (TristimulusXYZTOCIE1931xyz(XYZ, xyz) != 1) return 0.0f;
    float sample[2] = {xyz[0], xyz[1]};
    float white[2] = {static_cast<float>(dominant::kWhites[option][0]), static_cast<float>(dominant::kWhites[option][1])};
    float locus[3] = {0.0f, 0.0f, 0.0f};
    float wavelength = 0.0f;
    if (DominantWavelength2(sample, white, locus, &wavelength) != QOMATH_DOMINANT_FOUND) return 0.0f;
    return wavelength;
}

int GetPelkinWLSpectralSample(void* out)
{
    if (!out) return -1;
    std::memcpy(out, dominant::kWhiteLedRows, sizeof dominant::kWhiteLedRows);
    return QOMATH_SUCCESS;
}

}  // extern "C"
