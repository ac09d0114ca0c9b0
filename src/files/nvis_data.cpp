// The NVIS response table reader, and spectrum-to-NVIS in one call.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "common/barrier.hpp"
#include "qomath/nvis.h"
#include "qomath/spectral_file.h"

namespace {

constexpr int kTableMax = QOMATH_SPECTRAL_MAX_POINTS;

// The first two numbers of a line (comma, semicolon, tab or blanks between).
bool two_numbers(const std::string& line, double& a, double& b)
{
    const char* p = line.c_str();
    char* end = nullptr;
    a = std::strtod(p, &end);
    if (end == p) return false;
    p = end + std::strspn(end, " \t,;");
    b = std::strtod(p, &end);
    return end != p;
}

int read_table(const char* file, std::vector<float>& nm, std::vector<float>& g, int capacity)
{
    std::ifstream in(file, std::ios::binary);
    if (!in) return -2;
    std::string first;
    std::getline(in, first);
    if (first.find("[Quarvel Optronic Spectral File]") != std::string::npos) {
        auto rec = std::make_unique<SpectralRecord2>();
        std::memset(rec.get(), 0, sizeof(SpectralRecord2));
        SpectralFileExtraInfo extra;
        if (ReadSpectralFile2(file, rec.get(), &extra) < 0) return -3;
        const int n = static_cast<int>(rec->pointCount);
        if (n > capacity) return -4;
        nm.assign(rec->wavelengths, rec->wavelengths + n);
        g.assign(rec->values, rec->values + n);
        return n;
    }
    in.seekg(0);
    std::string line;
    double a = 0, b = 0;
    while (std::getline(in, line)) {
        if (!two_numbers(line, a, b)) {
            if (nm.empty()) continue;  // the header, and blank lines before the data
            break;
        }
        if (static_cast<int>(nm.size()) >= capacity) return -4;
        nm.push_back(static_cast<float>(a));
        g.push_back(static_cast<float>(b));
    }
    return static_cast<int>(nm.size());
}

}  // namespace

extern "C" {

int NVIS_GetData(const char* file, float* nm, float* response, int capacity)
{
    if (!file || !*file || !nm || !response || capacity < 2) return -1;
    return qomath::detail::guarded(-2, [&] {
        std::vector<float> w, g;
        const int n = read_table(file, w, g, capacity);
        if (n < 0) return n;
        if (n < 2) return -3;
        float peak = 0;
        for (int i = 0; i < n; ++i) {
            if (!std::isfinite(w[i]) || !std::isfinite(g[i])) return -3;
            if (i > 0 && w[i] <= w[i - 1]) return -3;
            peak = std::max(peak, g[i]);
        }
        if (!(peak > 0)) return -3;
        for (int i = 0; i < n; ++i) {
            nm[i] = w[i];
            response[i] = g[i] / peak;
        }
        return n;
    });
}

int QoMathNVISFromSpectralData(const float* nm, const float* values, int n, const char* file,
                               float luminance, float* result)
{
    return qomath::detail::guarded(-2, [&] {
        std::vector<float> rnm(kTableMax), g(kTableMax);
        const int rn = NVIS_GetData(file, rnm.data(), g.data(), kTableMax);
        if (rn < 0) return rn;
        return NVIS_Compute(nm, values, n, rnm.data(), g.data(), rn, luminance, result);
    });
}

}  // extern "C"
