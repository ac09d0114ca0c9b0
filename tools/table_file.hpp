// The common frame of the table generators: `TOOL OUT.csv` writes a header
// line and the rows, and reports a failed write by its exit status.
#pragma once

#include <cstdio>

namespace qomath::tools {

// rows(f) prints the data rows to f. Returns the process exit status.
template <class Rows>
int write_table(int argc, char** argv, const char* header, Rows rows)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT.csv\n", argv[0]);
        return 2;
    }
    std::FILE* f = std::fopen(argv[1], "wb");
    if (!f) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(f, "%s\n", header);
    rows(f);
    const bool failed = std::ferror(f) != 0;
    if (std::fclose(f) != 0 || failed) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}

}  // namespace qomath::tools
