// The loaded-file registry: 100 process-wide slots of loaded spectral files
// with the analysis of their unit.
#include "qomath/registry.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "common/barrier.hpp"
#include "files/spectral_analysis.hpp"
#include "qomath/spectral_file.h"

namespace qomath::registry {
namespace {

using qomath::detail::guarded;

constexpr int kUnits = 7;
constexpr int kMaxWords = QOMATH_ANALYSIS_WORDS_RADIANCE;  // the largest record
constexpr int kMinPoints = 5;

// The y-axis unit texts the registry hands out: its own constant copy, so
// that a host patching the writable table of GetUnitNameYaxis does not
// change them.
constexpr const char* kYAxisUnits[kUnits] = {"1/nm",     "\xB5W/cm\xB2/nm", "W/sr/nm", "\xB5W/nm",
                                             "\xB5W/cm\xB2/sr/nm", "unitless", "unitless"};

// Any of the seven analysis records, as words.
struct alignas(4) AnalysisWords {
    std::array<std::uint32_t, kMaxWords> words;
};

struct Slot {
    std::unique_ptr<SpectralRecord2> record;
    std::unique_ptr<SpectralFileExtraInfo> extra;
    std::array<std::unique_ptr<AnalysisWords>, kUnits> analysis;
    bool loaded() const { return record != nullptr; }
};

struct Registry {
    std::mutex lock;
    std::array<Slot, QOMATH_REGISTRY_SLOTS> slots;
};

Registry& registry()
{
    static Registry r;
    return r;
}

// The slot of a handle in range (compared unsigned), or null.
Slot* slot_of(int handle)
{
    if (static_cast<unsigned>(handle) >= static_cast<unsigned>(QOMATH_REGISTRY_SLOTS)) return nullptr;
    return &registry().slots[static_cast<std::size_t>(handle)];
}

// A loaded slot, or null.
Slot* loaded(int handle)
{
    Slot* s = slot_of(handle);
    return s && s->loaded() ? s : nullptr;
}

void remove(Slot& s)
{
    s.record.reset();
    s.extra.reset();
    for (auto& a : s.analysis) a.reset();
}

int unit_of(const Slot& s)
{
    return s.extra ? s.extra->unitCode : -1;
}

// Analyses the slot for its unit into that unit's member, zeroed first.
int analyse(Slot& s)
{
    const int unit = unit_of(s);
    if (unit < 0 || unit >= kUnits) return -1;
    return guarded(-14, [&] {
        auto& member = s.analysis[static_cast<std::size_t>(unit)];
        if (!member) member = std::make_unique<AnalysisWords>();
        member->words.fill(0);
        const SpectralRecord2& r = *s.record;
        const int n = static_cast<int>(r.pointCount);
        return analysis::analyse(r.wavelengths, r.values, n, unit, member->words.data(), nullptr);
    });
}

template <class Record>
int get_analysis(int handle, Record* out, int unit)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    Slot* s = slot_of(handle);
    if (!s) return 0;
    if (!out) return -1;
    if (!s->loaded() || !s->analysis[static_cast<std::size_t>(unit)]) return -2;
    static_assert(sizeof(Record) <= sizeof(AnalysisWords));
    std::memcpy(out, s->analysis[static_cast<std::size_t>(unit)]->words.data(), sizeof(Record));
    return 1;
}

}  // namespace
}  // namespace qomath::registry

using namespace qomath::registry;

extern "C" {

int LoadAndSave_SpectralFile(const char* fileName)
{
    Registry& reg = registry();
    const std::lock_guard<std::mutex> hold(reg.lock);
    Slot* free = nullptr;
    for (Slot& s : reg.slots)
        if (!s.loaded()) {
            free = &s;
            break;
        }
    if (!free) return QOMATH_REGISTRY_FULL;
    const int made = guarded(QOMATH_REGISTRY_NO_MEMORY, [&] {
        free->record = std::make_unique<SpectralRecord2>();
        free->extra = std::make_unique<SpectralFileExtraInfo>();
        return 1;
    });
    if (made != 1) {
        remove(*free);
        return made;
    }
    const int st = ReadSpectralFile2(fileName, free->record.get(), free->extra.get());
    if (st != 1) {
        remove(*free);
        return st;
    }
    analyse(*free);  // a failing analysis keeps its status in its record
    return static_cast<int>(free - reg.slots.data());
}

int LoadAndSave_UpdateSpectralData(int handle, const float* wl, const float* values, int n)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    Slot* s = loaded(handle);
    if (!s) return -1;
    if (n < kMinPoints || n > QOMATH_SPECTRAL_MAX_POINTS) return -2;
    if (!wl || !values) return -3;
    SpectralRecord2& r = *s->record;
    std::memcpy(r.wavelengths, wl, sizeof(float) * static_cast<std::size_t>(n));
    std::memcpy(r.values, values, sizeof(float) * static_cast<std::size_t>(n));
    r.firstWavelength = wl[0];
    r.lastWavelength = wl[n - 1];
    r.pointCount = static_cast<float>(n);
    return analyse(*s);
}

int LoadAndSave_GetSpectralData(int handle, float* wl, float* values, int* n, char* unitName)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    if (!wl || !values || !n) return 0;
    Slot* s = loaded(handle);
    if (!s) return -1;
    if (*n > QOMATH_SPECTRAL_MAX_POINTS) return -2;
    const SpectralRecord2& r = *s->record;
    const int count = static_cast<int>(r.pointCount);
    if (*n < count) return -3;
    *n = count;
    if (count > 0) {
        std::memcpy(wl, r.wavelengths, sizeof(float) * static_cast<std::size_t>(count));
        std::memcpy(values, r.values, sizeof(float) * static_cast<std::size_t>(count));
    }
    if (unitName) {
        std::memcpy(unitName, r.unitName, sizeof r.unitName);
        unitName[sizeof r.unitName - 1] = '\0';
    }
    return 1;
}

int LoadAndSave_DoAnalysis(int handle)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    Slot* s = slot_of(handle);
    if (!s) return -1;
    if (!s->loaded()) return -2;
    return analyse(*s);
}

int LoadAndSave_GetArrayLength(int handle)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    const Slot* s = loaded(handle);
    return s ? static_cast<int>(s->record->pointCount) : 0;
}

float* LoadAndSave_GetWavelengthPtr(int handle)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    Slot* s = loaded(handle);
    return s ? s->record->wavelengths : nullptr;
}

float* LoadAndSave_GetDataPtr(int handle)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    Slot* s = loaded(handle);
    return s ? s->record->values : nullptr;
}

int LoadAndSave_GetCountAnalysis(int handle, typ_SpectralAnalysisCounts* out)
{
    return get_analysis(handle, out, 0);
}
int LoadAndSave_GetIrradianceAnalysis(int handle, typ_SpectralAnalysisIrradiance* out)
{
    return get_analysis(handle, out, 1);
}
int LoadAndSave_GetRadiantIntensityAnalysis(int handle, typ_SpectralAnalysisRadiantIntensity* out)
{
    return get_analysis(handle, out, 2);
}
int LoadAndSave_GetRadiantFluxAnalysis(int handle, typ_SpectralAnalysisRadiantFlux* out)
{
    return get_analysis(handle, out, 3);
}
int LoadAndSave_GetRadianceAnalysis(int handle, typ_SpectralAnalysisRadiance* out)
{
    return get_analysis(handle, out, 4);
}
int LoadAndSave_GetTransmittanceAnalysis(int handle, typ_SpectralAnalysisReflectTransmit* out)
{
    return get_analysis(handle, out, 5);
}
int LoadAndSave_GetReflectanceAnalysis(int handle, typ_SpectralAnalysisReflectTransmit* out)
{
    return get_analysis(handle, out, 6);
}

int LoadAndSave_GetUnits(int handle)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    const Slot* s = loaded(handle);
    return s ? unit_of(*s) : -1;
}

int LoadAndSave_GetSpectralDataUnit(int handle, char* out)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    const Slot* s = loaded(handle);
    if (!s) return -1;
    if (!out) return 0;
    const int unit = unit_of(*s);
    if (unit < 0 || unit >= kUnits) return -1;
    // Without the NUL: hosts zero their buffer first.
    const char* text = kYAxisUnits[unit];
    std::memcpy(out, text, std::strlen(text));
    return 1;
}

void LoadAndSave_Remove(int handle)
{
    const std::lock_guard<std::mutex> hold(registry().lock);
    if (Slot* s = slot_of(handle)) remove(*s);
}

void LoadAndSave_Cleanup(void)
{
    Registry& reg = registry();
    const std::lock_guard<std::mutex> hold(reg.lock);
    for (Slot& s : reg.slots) remove(s);
}

}  // extern "C"
