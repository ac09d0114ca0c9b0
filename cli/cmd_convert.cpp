// qomath convert: a spectral file (or two-column text) as version 1.0 or 2.0.
#include <string>
#include <vector>

#include "command.hpp"
#include "output.hpp"
#include "spectrum_io.hpp"
#include "text.hpp"

namespace qomath::cli {
namespace {

int usage_error(std::FILE* err, const std::string& what)
{
    std::fprintf(err, "qomath convert: %s\nusage: qomath convert IN OUT --to 1|2 [--unit UNIT]\n",
                 what.c_str());
    return kExitUsage;
}

}  // namespace

int run_convert(std::span<char* const> args, std::FILE* out, std::FILE* err)
{
    std::vector<std::string> files;
    int to = 0;
    int plain_unit = -1;
    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string a, v;
        if (!read_option(args, i, {"--to", "--unit"}, a, v)) return usage_error(err, a + " needs a value");
        if (a == "--to") {
            if (v == "1" || v == "1.0")
                to = 1;
            else if (v == "2" || v == "2.0")
                to = 2;
            else
                return usage_error(err, "--to takes 1 or 2, not '" + v + "'");
        } else if (a == "--unit") {
            plain_unit = files::unit_code_of_name(v);
            if (plain_unit < 0) return usage_error(err, "unknown unit '" + v + "'");
        } else if (a.size() > 1 && a[0] == '-') {
            return usage_error(err, "unknown option '" + a + "'");
        } else {
            files.push_back(a);
        }
    }
    if (files.size() != 2) return usage_error(err, "give one input and one output file");
    if (to == 0) return usage_error(err, "say which version to write with --to 1 or --to 2");
    const std::string& in = files[0];
    const std::string outName = files[1] == "-" ? std::string() : files[1];
    if (is_an_input(outName, {in})) return usage_error(err, "the output is the input file");

    Spectrum s;
    if (!read_spectrum(in, plain_unit, s, err)) return kExitFailed;
    return write_spectrum(s, to, outName, display_name(in), out, err, "cannot convert") ? kExitOk : kExitFailed;
}

}  // namespace qomath::cli
