// A long batch runs in bounded memory: the program's peak resident size for
// 20,000 files stays far below what holding every result would need.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

TEST(Batch, TwentyThousandFilesInBoundedMemory)
{
#ifdef QOMATH_TESTS_SANITIZED
    GTEST_SKIP() << "the sanitizers' shadow memory would be measured";
#endif
    const fs::path dir = fs::temp_directory_path() / ("qomath-batch-" + std::to_string(getpid()));
    fs::create_directories(dir);
    constexpr int kFiles = 20000;
    for (int f = 0; f < kFiles; ++f) {
        char name[32];
        std::snprintf(name, sizeof name, "s%05d.txt", f);
        std::ofstream o(dir / name, std::ios::binary);
        o << "2.0 [Quarvel Optronic Spectral File]\nline " << f << "\nIrradiance\n0\n380\n9\n780\n";
        for (int i = 0; i < 9; ++i) o << 380 + 50 * i << "," << 1 + (f + i) % 7 << "\n";
    }
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        dup2(null, 2);
        execl(QOMATH_CLI_PATH, "qomath", "analyze", "--json", dir.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    ASSERT_EQ(wait4(pid, &status, 0, &usage), pid);
    fs::remove_all(dir);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // About 2 KB of JSON a file: 40 MB if results were kept; the list of
    // names and the window of results stay well under that.
    EXPECT_LT(usage.ru_maxrss, 30 * 1024) << "peak resident KB";
}

}  // namespace
