#include "output.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "text.hpp"

namespace qomath::cli {

Sink::Sink(std::FILE* out, const std::string& path) : path_(path)
{
    if (path.empty()) {
        file_ = out;
        return;
    }
    errno = 0;
    replacing_ = std::make_unique<text::ReplacingFile>(path.c_str());
    file_ = replacing_->get();
    open_errno_ = errno;
}

std::string Sink::open_failure() const
{
    std::error_code ec;
    const char* why = std::filesystem::is_directory(path_, ec) ? "it is a folder"
                      : open_errno_ != 0                      ? std::strerror(open_errno_)
                                                              : "cannot create it";
    return "qomath: " + printable(path_) + ": cannot write (" + why + ")\n";
}

bool Sink::finish(std::FILE* err)
{
    if (!file_) {
        std::fputs(open_failure().c_str(), err);
        return false;
    }
    if (!replacing_) {
        errno = 0;
        if (std::fflush(file_) == 0 && !std::ferror(file_)) return true;
        std::fprintf(err, "qomath: cannot write to standard output (%s)\n",
                     errno ? std::strerror(errno) : "write error");
        return false;
    }
    errno = 0;
    file_ = nullptr;
    if (replacing_->commit()) return true;
    std::fprintf(err, "qomath: %s: cannot write (%s); nothing was changed\n", printable(path_).c_str(),
                 errno ? std::strerror(errno) : "write error");
    return false;
}

bool is_an_input(const std::string& out, const std::vector<std::string>& inputs)
{
    namespace fs = std::filesystem;
    std::error_code ec;
    if (out.empty() || out == "-" || !fs::exists(out, ec)) return false;
    for (const std::string& in : inputs) {
        if (in == "-") continue;
        if (fs::equivalent(out, in, ec) && !ec) return true;
        // A folder given as input holds its files.
        if (fs::is_directory(in, ec) && fs::equivalent(fs::path(out).parent_path().empty() ? fs::path(".") : fs::path(out).parent_path(), in, ec) && !ec) {
            std::error_code e2;
            if (fs::is_regular_file(out, e2)) return true;
        }
    }
    return false;
}

}  // namespace qomath::cli
