#include "app/UsedFiles.h"

#include "app/Overwriting.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

fs::path WithSuffix(fs::path path, const char* suffix)
{
    path += suffix;
    return path;
}

} // namespace

UsedFiles FilesOf(const SolveOptions& options)
{
    UsedFiles files;
    files.read = {options.machine.file, options.toolpath.file};
    files.results = {options.output};
    files.interim = {PartialOf(options.output), CheckpointOf(options.output)};
    if (options.gcode) {
        files.read.emplace_back(options.dialect);
        files.results.push_back(*options.gcode);
    }
    if (options.summary) {
        files.results.push_back(*options.summary);
    }
    if (options.report) {
        files.results.push_back(*options.report);
    }
    return files;
}

UsedFiles FilesOf(const VerifyOptions& options)
{
    return {{options.machine.file, options.toolpath.file, options.table}, {}, {}};
}

fs::path PartialOf(const fs::path& table)
{
    return WithSuffix(table, ".partial");
}

fs::path CheckpointOf(const fs::path& table)
{
    return WithSuffix(table, ".resume");
}

void RefuseOverwriting(const UsedFiles& files)
{
    std::vector<fs::path> written = files.results;
    written.insert(written.end(), files.interim.begin(), files.interim.end());
    RefuseOverwriting(written, files.read);
}

} // namespace host
