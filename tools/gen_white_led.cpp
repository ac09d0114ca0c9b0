// Writes the example raw spectrum that GetPelkinWLSpectralSample hands out:
//   qomath_gen_white_led data/white_led_raw_1024.csv
// A synthetic white LED (blue die near 451 nm, yellow phosphor hump near
// 565 nm) seen by a 1024-pixel silicon array (300 nm + 0.75 nm per pixel),
// in raw counts: a dark offset, the emission weighted by the silicon
// response, shot noise and read noise. The offset is set so that pixel 0
// reads 2157 and the amplitude so that the largest count is 53016.
//
// Only integer arithmetic, IEEE +, -, *, / and sqrt are used (no exp or pow,
// whose last bits differ between C libraries), so every platform writes the
// same file.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "table_file.hpp"

namespace {

constexpr int kPixels = 1024;
constexpr long long kFirstValue = 2157;
constexpr long long kLargestValue = 53016;

// A smooth bump with compact support: (1 - t^2)^4 for |t| < 1, with its own
// half-width on each side of the centre.
double bump(double nm, double centre, double left, double right)
{
    const double t = (nm - centre) / (nm < centre ? left : right);
    if (t <= -1.0 || t >= 1.0) return 0.0;
    const double u = 1.0 - t * t;
    const double u2 = u * u;
    return u2 * u2;
}

// Relative response of a silicon array: low in the ultraviolet, highest in
// the deep red, falling towards the band gap.
double silicon_response(double nm)
{
    const double t = (nm - 720.0) / 300.0;
    const double d = 1.0 + t * t;
    return 1.0 / (d * d);
}

// splitmix64: a fixed seed gives a fixed stream everywhere.
struct Random {
    std::uint64_t state = 0x51A7E5EEDULL;

    std::uint64_t next()
    {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    // Standard normal, approximately: the sum of twelve uniforms less 6.
    double normal()
    {
        double s = 0.0;
        for (int i = 0; i < 12; ++i) s += uniform();
        return s - 6.0;
    }
};

struct Model {
    std::vector<double> shape;  // noise-free signal, largest value 1
    std::vector<double> shot;   // standard normal draws, per pixel
    std::vector<double> read;
};

Model model()
{
    Model m;
    Random rng;
    for (int i = 0; i < kPixels; ++i) {
        const double nm = 300.0 + 0.75 * i;
        const double blue = bump(nm, 451.0, 22.0, 30.0);
        const double phosphor = 0.38 * bump(nm, 565.0, 110.0, 170.0);
        m.shape.push_back((blue + phosphor) * silicon_response(nm));
        m.shot.push_back(rng.normal());
        m.read.push_back(rng.normal());
    }
    const double top = *std::max_element(m.shape.begin(), m.shape.end());
    for (double& s : m.shape) s /= top;
    return m;
}

// Counts above the dark offset at amplitude a (the noise-free peak height).
std::vector<long long> signal(const Model& m, double a)
{
    std::vector<long long> out;
    for (int i = 0; i < kPixels; ++i) {
        const double mean = a * m.shape[static_cast<std::size_t>(i)];
        const double shot = 0.5 * std::sqrt(mean) * m.shot[static_cast<std::size_t>(i)];
        const double read = 4.0 * m.read[static_cast<std::size_t>(i)];
        out.push_back(std::llround(mean + shot + read));
    }
    return out;
}

}  // namespace

int main(int argc, char** argv)
{
    const Model m = model();
    // Pixel 0 sees no light, so the offset follows from its read noise alone.
    const long long offset = kFirstValue - signal(m, 0.0)[0];
    const auto largest = [&](double a) {
        const auto s = signal(m, a);
        return offset + *std::max_element(s.begin(), s.end());
    };
    // The largest count climbs one by one with the amplitude: bisect for the
    // lowest amplitude that reaches the target.
    double lo = 0.5 * kLargestValue, hi = 2.0 * kLargestValue;
    for (int i = 0; i < 200 && lo < hi; ++i) {
        const double mid = 0.5 * (lo + hi);
        if (mid <= lo || mid >= hi) break;
        (largest(mid) >= kLargestValue ? hi : lo) = mid;
    }
    const auto counts = signal(m, hi);
    if (offset + counts[0] != kFirstValue || largest(hi) != kLargestValue) {
        std::fprintf(stderr, "could not place the first and largest values\n");
        return 1;
    }

    return qomath::tools::write_table(argc, argv, "counts", [&](std::FILE* f) {
        for (const long long c : counts) std::fprintf(f, "%lld\n", offset + c);
    });
}
