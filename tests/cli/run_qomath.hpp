// Runs the qomath program as a user would and collects what it prints.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace qomath::test {

struct Outcome {
    int status;
    std::string out;
};

// Standard error joins standard output unless merge_stderr is false (then it
// is dropped).
inline Outcome qomath(const std::string& args, bool merge_stderr = true)
{
    std::string cmd = QOMATH_CLI_PATH;
    cmd.append(" ").append(args).append(merge_stderr ? " 2>&1" : " 2>/dev/null");
    std::FILE* p = popen(cmd.c_str(), "r");
    if (!p) return {-1, ""};
    std::string out;
    std::array<char, 4096> buf;
    std::size_t n;
    while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
    const int st = pclose(p);
    return {WIFEXITED(st) ? WEXITSTATUS(st) : -1, out};
}

}  // namespace qomath::test
