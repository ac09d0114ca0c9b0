// The qomath program's subcommands. Each lives in its own file and is listed
// once in the table in main.cpp.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace qomath::cli {

// Exit statuses shared by every subcommand.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

struct Command {
    std::string_view name;
    std::string_view summary;  // one line for the command list
    std::string_view usage;    // full --help text
    // args holds the words after the command name; --help never reaches here.
    int (*run)(std::span<char* const> args, std::FILE* out, std::FILE* err);
};

// Reads the option at args[i] into name and value: "--name=value" in one
// word, or for the options listed in takes_value the next word (i moves on
// to it). Returns false when such an option has no next word.
inline bool read_option(std::span<char* const> args, std::size_t& i,
                        std::initializer_list<std::string_view> takes_value, std::string& name,
                        std::string& value)
{
    name = args[i];
    value.clear();
    const auto eq = name.find('=');
    if (name.rfind("--", 0) == 0 && eq != std::string::npos) {
        value = name.substr(eq + 1);
        name.resize(eq);
        return true;
    }
    for (const std::string_view t : takes_value)
        if (name == t) {
            if (i + 1 >= args.size()) return false;
            value = args[++i];
        }
    return true;
}

int run_version(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_tables(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_analyze(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_convert(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_plot(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_f1prime(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_lines(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_smooth(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_straylight(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_cmd(std::span<char* const> args, std::FILE* out, std::FILE* err);

// Prints the version block of the library.
void print_version_block(std::FILE* out);

}  // namespace qomath::cli
