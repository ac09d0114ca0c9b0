// The C++ layer of the command tool: its context (output buffer and DRE scan
// table), the keyword lookup and the dispatcher. QoMathCmd runs on the
// process-wide context; the program and tests keep their own.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "straylight/straylight.hpp"

namespace qomath::command {

// One scan record of a DRE log folder.
struct DreScan {
    std::string name;  // file name, as the warnings print it
    float line_nm = 0, it_ms = 0, scan = 0;
    std::vector<float> wl, counts;  // 1024 each
};

struct Context {
    straylight::State* sl = nullptr;  // holds the correction-matrix slot
    std::FILE* log = stdout;          // the matrix generator's listing
    std::vector<DreScan> dre;         // the DRE scan table
    // Output buffer state, reset by each run.
    char* buf = nullptr;
    int cap = 0;
    int len = 0;

    // Appends msg (cut to 4095 characters) whole when len + size < cap.
    void print(std::string_view msg);
    void printf(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    // Replaces the text: exactly text, cut to cap - 1.
    void set(std::string_view text);
};

Context& process_context();

// The keyword lookup of the commands. mode bit 1: blanks and commas
// separate; else bit 0: commas only; 0: blanks only. A key starting with a
// digit is a position (1 = first token). dst gets the default, or the value
// found (trailing blanks removed, cut to dst_size - 1).
// 1 found; 0 not found; -1 bad arguments (dst null, dst_size < 2, a null
// default, key or line, a position below 1).
int keyword(int mode, char* dst, int dst_size, const char* line, const char* key, const char* def);

// Runs one command line, reporting into result[0..capacity-1].
void run(Context& ctx, const char* line, char* result, int capacity);

// DRE records of a log folder: "DRE0.csv" .. up to the first missing file
// (at most 1024). 1; or the reader's failure code (-14: not 1024 points),
// with failed naming the file; the records before it stay loaded.
int load_dre(const std::filesystem::path& folder, std::vector<DreScan>& out, std::string& failed);
// Merges the scans of each line into folder/"redre.txt"; warnings get one
// text per line whose shortest scan saturates. The line count; -2 not written.
int merge_dre(const std::vector<DreScan>& scans, float saturation,
              const std::filesystem::path& folder, std::vector<std::string>* warnings);

}  // namespace qomath::command
