// qomath — the command-line face of the QOMath library.
#include <cstring>
#include <span>
#include <string_view>

#include "command.hpp"

namespace qomath::cli {
namespace {

constexpr Command kCommands[] = {
    {"version", "print the library version block",
     "usage: qomath version\n\n"
     "Prints the library version, its build date and time and its description.\n",
     run_version},
    {"tables", "list the CIE tables the library carries",
     "usage: qomath tables\n\n"
     "Lists every CIE table served by the library (observers, illuminants and\n"
     "spectrum loci) with its wavelength range, point count and the sum of its\n"
     "values, a quick check that two builds carry the same numbers.\n",
     run_tables},
};

void print_usage(std::FILE* out)
{
    std::fputs("usage: qomath COMMAND [ARGS...]\n"
               "       qomath COMMAND --help\n"
               "       qomath --version\n\ncommands:\n",
               out);
    for (const Command& c : kCommands)
        std::fprintf(out, "  %-10.*s %.*s\n", static_cast<int>(c.name.size()), c.name.data(),
                     static_cast<int>(c.summary.size()), c.summary.data());
}

const Command* find(std::string_view name)
{
    for (const Command& c : kCommands)
        if (c.name == name) return &c;
    return nullptr;
}

bool asks_for_help(std::span<char* const> args)
{
    for (const char* a : args)
        if (std::strcmp(a, "--help") == 0 || std::strcmp(a, "-h") == 0) return true;
    return false;
}

}  // namespace
}  // namespace qomath::cli

int main(int argc, char** argv)
{
    using namespace qomath::cli;
    const std::span<char* const> words(argv + 1, static_cast<std::size_t>(argc > 0 ? argc - 1 : 0));
    if (words.empty()) {
        print_usage(stderr);
        return kExitUsage;
    }
    const std::string_view first = words[0];
    if (first == "--help" || first == "-h" || first == "help") {
        if (first == "help" && words.size() > 1) {
            if (const Command* c = find(words[1])) {
                std::fwrite(c->usage.data(), 1, c->usage.size(), stdout);
                return kExitOk;
            }
        }
        print_usage(stdout);
        return kExitOk;
    }
    if (first == "--version") {
        print_version_block(stdout);
        return kExitOk;
    }
    const Command* cmd = find(first);
    if (!cmd) {
        std::fprintf(stderr, "qomath: unknown command '%s'\n\n", words[0]);
        print_usage(stderr);
        return kExitUsage;
    }
    const auto args = words.subspan(1);
    if (asks_for_help(args)) {
        std::fwrite(cmd->usage.data(), 1, cmd->usage.size(), stdout);
        return kExitOk;
    }
    return cmd->run(args, stdout, stderr);
}
