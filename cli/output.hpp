// Where the program's output goes. Every file it writes is written through
// the library's ReplacingFile (a temporary file beside the target, renamed
// over it only when complete; through a link its target is replaced and the
// link kept; a device or FIFO is written in place), and standard output is
// checked for write errors like any file.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "common/text_io.hpp"

namespace qomath::cli {

class Sink {
public:
    // path empty: standard output (`out`).
    Sink(std::FILE* out, const std::string& path);
    // Null when the file could not be created.
    std::FILE* file() const { return file_; }
    // Completes the output: commits the file or flushes standard output.
    // False, with a message on err, when anything failed; an uncommitted
    // file leaves the target as it was.
    bool finish(std::FILE* err);
    // The message for a file that could not be created.
    std::string open_failure() const;

private:
    std::string path_;
    std::unique_ptr<text::ReplacingFile> replacing_;
    std::FILE* file_ = nullptr;
    int open_errno_ = 0;
};

// True when writing `out` would write over one of `inputs` (the same file,
// also through links); "-" and missing files never match.
bool is_an_input(const std::string& out, const std::vector<std::string>& inputs);

}  // namespace qomath::cli
