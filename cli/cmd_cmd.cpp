// qomath cmd: the library's command entry point from the shell.
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "command.hpp"
#include "straylight/command.hpp"

namespace qomath::cli {
namespace {

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err,
                 "qomath cmd: %s\n"
                 "usage: qomath cmd [--capacity N] \"LINE\"\n"
                 "       qomath cmd [--capacity N] --script FILE\n",
                 what.c_str());
    return kExitUsage;
}

// Texts by which a command reports that a step failed.
bool reports_failure(const std::string& text)
{
    for (const char* mark : {"failed: ", "invalid command [", "no function specified",
                             "Input folder/files not found", "could not write output file"})
        if (text.find(mark) != std::string::npos) return true;
    return false;
}

}  // namespace

int run_cmd(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    long capacity = 1L << 20;
    std::string script;
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string name, value;
        if (!read_option(args, i, {"--capacity", "--script"}, name, value))
            return usage_error(err, name + " needs a value");
        if (name == "--capacity") {
            char* end = nullptr;
            errno = 0;
            capacity = std::strtol(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || errno != 0 || capacity < 1 || capacity > (1L << 30))
                return usage_error(err, "--capacity takes a whole number 1..1073741824, not '" + value + "'");
        } else if (name == "--script") {
            script = value;
        } else if (name.size() > 1 && name[0] == '-' && name[1] == '-') {
            return usage_error(err, "unknown option '" + name + "'");
        } else {
            lines.push_back(name);
        }
    }
    if (!script.empty() && !lines.empty()) return usage_error(err, "a script or a line, not both");
    if (script.empty() && lines.empty()) return usage_error(err, "no command line");
    if (lines.size() > 1) return usage_error(err, "one command line (quote it)");
    if (!script.empty()) {
        std::ifstream in(script, std::ios::binary);
        if (!in) {
            std::fprintf(err, "qomath cmd: cannot read '%s'\n", script.c_str());
            return kExitFailed;
        }
        for (std::string l; std::getline(in, l);) {
            if (!l.empty() && l.back() == '\r') l.pop_back();
            const auto first = l.find_first_not_of(" \t");
            if (first == std::string::npos || l[first] == '#') continue;
            lines.push_back(l);
        }
    }
    // One context for the whole script: a matrix loaded by one line serves the next.
    straylight::State state;
    command::Context ctx{&state, err, {}, nullptr, 0, 0};
    std::vector<char> buf(static_cast<std::size_t>(capacity));
    int status = kExitOk;
    for (const std::string& l : lines) {
        command::run(ctx, l.c_str(), buf.data(), static_cast<int>(capacity));
        const std::string text(buf.data());
        std::fputs(text.c_str(), out);
        if (text.empty() || text.back() != '\n') std::fputc('\n', out);
        if (reports_failure(text)) status = kExitFailed;
    }
    return status;
}

}  // namespace qomath::cli
