// Prints a digest of the joint table of each bundled sample: every build type and compiler must
// print the same.
//
//   table_digest SAMPLES                 prints the digests
//   table_digest SAMPLES --expect FILE   also compares them with the stored ones (exit 1 when they
//                                        differ, 77 when they are not comparable)

#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <vector>

#include <unistd.h>

#include "app/SolveCommand.h"
#include "digest/Digest.h"

namespace
{

namespace fs = std::filesystem;

struct Sample
{
    const char* machine;
    const char* toolpath;
    const char* toolLink; // of a URDF, else null
    const char* partLink;
};

constexpr Sample kSamples[] = {
    {"trunnion-ac.toml", "dome-over-the-top.cl", nullptr, nullptr},
    {"head-table-bc.toml", "impeller-blade.cl", nullptr, nullptr},
    {"head-head-ca.toml", "turbine-ring.cl", nullptr, nullptr},
    {"nutating-bc.toml", "pocket-tilted-walls.cl", nullptr, nullptr},
    {"mill-turn-bc.toml", "cylinder-engraving.cl", nullptr, nullptr},
    {"arm-positioner.urdf", "bowl-trimming.cl", "spindle_nose", "part"},
};

std::string TableOf(const fs::path& samples, const Sample& sample, const fs::path& scratch)
{
    host::SolveOptions options;
    options.machine.file = samples / "machines" / sample.machine;
    options.toolpath.file = samples / "toolpaths" / sample.toolpath;
    if (sample.toolLink != nullptr) {
        options.machine.links = {sample.toolLink, sample.partLink};
    }
    options.output = scratch;
    options.isQuiet = true;
    std::ostringstream out;
    std::ostringstream err;
    if (host::Solve(options, out, err) != host::kExitOk) {
        throw std::runtime_error(std::string(sample.toolpath) + " failed: " + err.str());
    }
    std::ifstream in(scratch, std::ios::binary);
    std::string table{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    fs::remove(scratch);
    return table;
}

int Run(const std::vector<std::string>& arguments)
{
    if (arguments.size() != 1 && (arguments.size() != 3 || arguments[1] != "--expect")) {
        throw std::runtime_error("table_digest: give SAMPLES, and --expect FILE to compare");
    }
    const fs::path scratch =
        fs::temp_directory_path() / ("trunnion-digest-" + std::to_string(::getpid()) + ".csv");
    std::ostringstream library;
    test::PrintLine(library, "C library functions", test::LibraryFunctions());
    std::ostringstream tables;
    for (const Sample& sample : kSamples) {
        test::Digest digest;
        digest.Add(TableOf(arguments[0], sample, scratch));
        test::PrintLine(tables, sample.toolpath, digest.Value());
    }
    std::cout << library.str() << tables.str();
    return arguments.size() == 3 ? test::Compare(library.str(), tables.str(), arguments[2].c_str())
                                 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 2;
    }
}
