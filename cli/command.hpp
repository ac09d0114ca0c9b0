// The qomath program's subcommands. Each lives in its own file and is listed
// once in the table in main.cpp.
#pragma once

#include <cstdio>
#include <span>
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

int run_version(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_tables(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_analyze(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_convert(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_plot(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_f1prime(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_lines(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_smooth(std::span<char* const> args, std::FILE* out, std::FILE* err);
int run_straylight(std::span<char* const> args, std::FILE* out, std::FILE* err);

// Prints the version block of the library.
void print_version_block(std::FILE* out);

}  // namespace qomath::cli
