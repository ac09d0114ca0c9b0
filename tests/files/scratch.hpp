// Scratch files for the file tests: one folder per process, removed at the end.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace scratch {

namespace fs = std::filesystem;

inline const fs::path& folder()
{
    static const fs::path dir = fs::temp_directory_path() / ("qomath-files-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    return dir;
}

struct RemoveFolder : ::testing::Environment {
    void TearDown() override { fs::remove_all(folder()); }
};
inline auto* const g_cleanup = ::testing::AddGlobalTestEnvironment(new RemoveFolder);

// A name inside the folder; an absolute path stays as it is.
inline std::string path(const std::string& name) { return (folder() / name).string(); }

inline std::string put(const std::string& name, const std::string& bytes)
{
    const std::string p = path(name);
    std::ofstream(p, std::ios::binary | std::ios::trunc) << bytes;
    return p;
}

inline std::string get(const std::string& p)
{
    std::ifstream in(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Runs f with files limited to 4096 bytes, standing in for a full disk.
template <class F>
void with_small_disk(F f)
{
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    f();
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, old_handler);
}

}  // namespace scratch
