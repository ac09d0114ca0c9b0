// The readers take file names: each input is written to one scratch file per
// process, which the harness hands to the reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace qomath::fuzz {

// The scratch file, removed again when the fuzzer exits.
struct ScratchFile {
    std::string path = "/tmp/qomath-fuzz-" + std::to_string(::getpid()) + ".txt";
    ~ScratchFile() { std::remove(path.c_str()); }
};

inline const char* input_file(const std::uint8_t* data, std::size_t size)
{
    static const ScratchFile scratch;
    const std::string& path = scratch.path;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return nullptr;
    if (size) std::fwrite(data, 1, size, f);
    std::fclose(f);
    return path.c_str();
}

}  // namespace qomath::fuzz
